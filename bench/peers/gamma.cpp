// The gamma (shape a, scale b) and chi-square distributions: our probabilities and deviates
// next to Boost.Math's cdf and quantile, at moderate parameters and at shapes of 10^8 and 10^9.
#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/gamma.hpp>

#include "bench/peers/peers.h"

namespace {

struct GammaCase {
  const char* name;
  const char* x;
  const char* a;
  const char* b;
};

void RegisterGamma() {
  using boost::math::chi_squared_distribution;
  using boost::math::gamma_distribution;
  const auto gammaCdf = [](const auto& x, const auto& a, const auto& b) {
    using T = std::decay_t<decltype(x)>;
    return cdf(gamma_distribution<T>(a, b), x);
  };
  const auto gammaQuantile = [](const auto& p, const auto& a, const auto& b) {
    using T = std::decay_t<decltype(p)>;
    return quantile(gamma_distribution<T>(a, b), p);
  };
  const GammaCase cdfs[] = {{"gamma(2.5,1.5).cdf(3)", "3", "2.5", "1.5"},
                            {"gamma(12,0.5).cdf(7)", "7", "12", "0.5"},
                            {"gamma(1e9,1).cdf(1.00003e9)", "1000030000", "1000000000", "1"}};
  const GammaCase quantiles[] = {{"gamma(2.5,1.5).quantile(0.9)", "0.9", "2.5", "1.5"},
                                 {"gamma(12,0.5).quantile(0.05)", "0.05", "12", "0.5"},
                                 {"gamma(1e9,1).quantile(0.3)", "0.3", "1000000000", "1"}};
  for (const GammaCase& c : cdfs) {
    peers::Register<3>(c.name, {c.x, c.a, c.b}, STATS_GammaProbability_MP, gammaCdf);
  }
  for (const GammaCase& c : quantiles) {
    peers::Register<3>(c.name, {c.x, c.a, c.b}, STATS_GammaDeviate_MP, gammaQuantile);
  }

  peers::Register<2>("chisq(5).cdf(9)", {"9", "5"}, STATS_ChiSquareProbability_MP,
                     [](const auto& x, const auto& nu) {
                       using T = std::decay_t<decltype(x)>;
                       return cdf(chi_squared_distribution<T>(nu), x);
                     });
  peers::Register<2>("chisq(2e8).cdf(2.0004e8)", {"200040000", "200000000"},
                     STATS_ChiSquareProbability_MP, [](const auto& x, const auto& nu) {
                       using T = std::decay_t<decltype(x)>;
                       return cdf(chi_squared_distribution<T>(nu), x);
                     });
  peers::Register<2>("chisq(5).quantile(0.95)", {"0.95", "5"}, STATS_ChiSquareDeviate_MP,
                     [](const auto& p, const auto& nu) {
                       using T = std::decay_t<decltype(p)>;
                       return quantile(chi_squared_distribution<T>(nu), p);
                     });
}

}  // namespace

int main(int argc, char** argv) {
  RegisterGamma();
  return peers::Main(argc, argv);
}
