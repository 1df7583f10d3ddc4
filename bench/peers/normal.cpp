// The normal distribution: our probability at 1.96 and deviate at 0.975 next to Boost.Math,
// and for orientation the bare Arb calls they rest on, erfc at -1.96 sqrt(1/2) and erfcinv
// at 0.05, at 171 and 669 bits.
#include <arb_hypgeom.h>

#include <boost/math/distributions/normal.hpp>

#include "bench/peers/peers.h"

namespace {

using ArbFunction = void (*)(arb_t res, const arb_t x, slong prec);

// Times f(res, x, prec) on x = p / q * sqrt(1/2)^k, made once at the working precision.
void RunArb(benchmark::State& state, int digits, ArbFunction f, slong p, slong q, int k) {
  const slong prec = peers::ArbBits(digits);
  arb_t x, half, res;
  arb_init(x);
  arb_init(half);
  arb_init(res);
  arb_set_si(x, p);
  arb_div_si(x, x, q, prec);
  arb_set_d(half, 0.5);
  arb_sqrt(half, half, prec);
  for (int i = 0; i < k; ++i) arb_mul(x, x, half, prec);
  for (auto _ : state) f(res, x, prec);
  state.counters["bits"] = static_cast<double>(prec);
  arb_clear(x);
  arb_clear(half);
  arb_clear(res);
}

void RegisterNormal() {
  using boost::math::normal_distribution;
  peers::Register<3>("normal.cdf(1.96)", {"1.96", "0", "1"}, STATS_NormalProbability_MP,
                     [](const auto& x, const auto& mu, const auto& sigma) {
                       using T = std::decay_t<decltype(x)>;
                       return cdf(normal_distribution<T>(mu, sigma), x);
                     });
  peers::Register<3>("normal.quantile(0.975)", {"0.975", "0", "1"}, STATS_NormalDeviate_MP,
                     [](const auto& p, const auto& mu, const auto& sigma) {
                       using T = std::decay_t<decltype(p)>;
                       return quantile(normal_distribution<T>(mu, sigma), p);
                     });
  for (int digits : peers::kDigits) {
    const std::string suffix = "/" + std::to_string(digits);
    benchmark::RegisterBenchmark(
        ("arb/erfc(-1.96*sqrt(0.5))" + suffix).c_str(),
        [=](benchmark::State& state) { RunArb(state, digits, arb_hypgeom_erfc, -196, 100, 1); })
        ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark(
        ("arb/erfcinv(0.05)" + suffix).c_str(),
        [=](benchmark::State& state) { RunArb(state, digits, arb_hypgeom_erfcinv, 5, 100, 0); })
        ->Unit(benchmark::kMicrosecond);
  }
}

}  // namespace

int main(int argc, char** argv) {
  RegisterNormal();
  return peers::Main(argc, argv);
}
