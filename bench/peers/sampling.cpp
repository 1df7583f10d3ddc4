// Random samples through our entry points (normal and exponential by the ziggurat, in the
// library's variant and with _EnvStatisticsExactSampling, and the uniform sample for scale)
// next to MPFR's exact normal sampler mpfr_nrandom and Boost.Random's normal distribution over
// MPFR, at Digits 15 and 50. The counter per_variate is the CPU time of one variate.
// With --quality it prints instead what the switch changes: the Kolmogorov-Smirnov distance
// of 10^6 normal variates from the normal law, their share below -4, and the share of negative
// exponential variates.
#include <dlfcn.h>
#include <gmp.h>
#include <mpfr.h>

#include <algorithm>
#include <boost/random/mersenne_twister.hpp>
#include <boost/random/normal_distribution.hpp>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "bench/peers/peers.h"

namespace {

constexpr long kSize = 1000000;
using Entry = ALGEB (*)(VexaKernelVector, ALGEB);

Entry Find(const std::string& name) {
  return reinterpret_cast<Entry>(dlsym(RTLD_DEFAULT, ("STATS_Vexa" + name + "_MP").c_str()));
}

void SetExact(bool on) {
  VexaKernelVector kv = peers::Kernel();
  ALGEB name = ToVexaName(kv, "_EnvStatisticsExactSampling", 1);
  if (on)
    VexaAssign(kv, name, ToVexaBoolean(kv, 1));
  else
    vexa::Unassign(name);
}

ALGEB Sample(const std::string& law, long n, const std::vector<long>& params) {
  std::vector<ALGEB> args = {vexa::NewInteger(n)};
  for (long p : params) args.push_back(vexa::NewInteger(p));
  return Find(law + "RandomSample")(peers::Kernel(), vexa::NewExpseq(args));
}

void PerVariate(benchmark::State& state, long n) {
  state.counters["per_variate"] =
      benchmark::Counter(static_cast<double>(n) * static_cast<double>(state.iterations()),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void RunOurs(benchmark::State& state, int digits, const std::string& law,
             const std::vector<long>& params, bool exact) {
  VexaDigitsScope scope(digits);
  SetExact(exact);
  Sample(law, 10, params);  // tables built outside the timing
  for (auto _ : state) benchmark::DoNotOptimize(Sample(law, kSize, params));
  PerVariate(state, kSize);
  SetExact(false);
}

// The binomial sample of 10^6 variates with 10^6 trials and success probability 0.3 (BTRD).
void RunBinomial(benchmark::State& state, int digits) {
  VexaDigitsScope scope(digits);
  auto sample = [](long n) {
    return Find("BinomialRandomSample")(
        peers::Kernel(), vexa::NewExpseq({vexa::NewInteger(n), vexa::NewInteger(1000000),
                                          vexa::NewFloat(VexaFloatFromString("0.3"))}));
  };
  for (auto _ : state) benchmark::DoNotOptimize(sample(kSize));
  PerVariate(state, kSize);
}

void RunMpfr(benchmark::State& state, int digits) {
  mpfr_t x;
  mpfr_init2(x, peers::ArbBits(digits));
  gmp_randstate_t random;
  gmp_randinit_default(random);
  gmp_randseed_ui(random, 1);
  for (auto _ : state)
    for (long i = 0; i < kSize; ++i) mpfr_nrandom(x, random, MPFR_RNDN);
  PerVariate(state, kSize);
  gmp_randclear(random);
  mpfr_clear(x);
}

// Boost.Random over MPFR; at 50 digits a smaller sample, as each variate takes tens of us.
template <unsigned Digits>
void RunBoost(benchmark::State& state, long n) {
  using T = peers::BoostFloat<Digits>;
  boost::random::mt19937 engine(1);
  boost::random::normal_distribution<T> normal(0, 1);
  for (auto _ : state)
    for (long i = 0; i < n; ++i) {
      T x = normal(engine);
      benchmark::DoNotOptimize(x);
    }
  PerVariate(state, n);
}

void Register() {
  for (int digits : {15, 50}) {
    const std::string suffix = "/" + std::to_string(digits);
    auto ours = [&](const std::string& name, const std::string& law, std::vector<long> params,
                    bool exact) {
      benchmark::RegisterBenchmark(("ours/" + name + suffix).c_str(), [=](benchmark::State& s) {
        RunOurs(s, digits, law, params, exact);
      })->Unit(benchmark::kMillisecond);
    };
    ours("uniform.sample(1e6)", "Uniform", {0, 1}, false);
    ours("normal.sample(1e6)", "Normal", {0, 1}, false);
    ours("exponential.sample(1e6)", "Exponential", {1}, false);
    ours("normal.sample(1e6).exact", "Normal", {0, 1}, true);
    ours("exponential.sample(1e6).exact", "Exponential", {1}, true);
    benchmark::RegisterBenchmark(("ours/binomial(1e6,0.3).sample(1e6)" + suffix).c_str(),
                                 [=](benchmark::State& s) { RunBinomial(s, digits); })
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("mpfr/nrandom(1e6)" + suffix).c_str(), [=](benchmark::State& s) {
      RunMpfr(s, digits);
    })->Unit(benchmark::kMillisecond);
  }
  benchmark::RegisterBenchmark("boost/normal(1e6)/15", [](benchmark::State& s) {
    RunBoost<15>(s, kSize);
  })->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark("boost/normal(1e4)/50", [](benchmark::State& s) {
    RunBoost<50>(s, 10000);
  })->Unit(benchmark::kMillisecond);
}

std::vector<double> Doubles(ALGEB sample) {
  const VexaFloat* x = static_cast<const VexaFloat*>(RTableDataBlock(peers::Kernel(), sample));
  std::vector<double> out;
  for (M_INT i = 0; i < RTableNumElements(peers::Kernel(), sample); ++i)
    out.push_back(vexa::FloatToDouble(x[i]));
  return out;
}

int Quality() {
  VexaDigitsScope scope(15);
  std::printf("%-28s %12s %12s %12s\n", "10^6 variates at Digits 15", "KS normal", "normal < -4",
              "exp < 0");
  for (bool exact : {false, true}) {
    SetExact(exact);
    vexa::SeedRandom(1);
    std::vector<double> z = Doubles(Sample("Normal", kSize, {0, 1}));
    std::sort(z.begin(), z.end());
    double d = 0, n = static_cast<double>(z.size());
    for (size_t i = 0; i < z.size(); ++i) {
      double f = 0.5 * std::erfc(-z[i] / std::sqrt(2.0));
      d = std::max({d, f - i / n, (i + 1) / n - f});
    }
    std::vector<double> e = Doubles(Sample("Exponential", kSize, {1}));
    double negative =
        static_cast<double>(std::count_if(e.begin(), e.end(), [](double x) { return x < 0; })) / n;
    double below = static_cast<double>(std::lower_bound(z.begin(), z.end(), -4.0) - z.begin()) / n;
    std::printf("%-28s %12.5f %12.6f %12.5f\n", exact ? "exact sampling" : "default", d, below,
                negative);
  }
  SetExact(false);
  std::printf("(the 0.1%% critical KS distance for 10^6 points is %.5f; P(Z < -4) = %.6f)\n",
              1.95 / std::sqrt(1e6), 0.5 * std::erfc(4 / std::sqrt(2.0)));
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i)
    if (std::strcmp(argv[i], "--quality") == 0) return Quality();
  Register();
  return peers::Main(argc, argv);
}
