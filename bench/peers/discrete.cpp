// The binomial and Poisson laws next to Boost.Math: distribution functions P(X <= k) at a
// small and at a very large parameter (n = 10^9 trials, mean 10^6, where both are incomplete
// beta and gamma functions of large shapes), and deviates (the smallest k with P(X <= k) >= p)
// beside Boost's quantiles under the policy that rounds the integer result up, which is the
// same definition.
#include <boost/math/distributions/binomial.hpp>
#include <boost/math/distributions/poisson.hpp>

#include "bench/peers/peers.h"
#include "vexa/nag.h"

namespace {

using RoundUp = boost::math::policies::policy<
    boost::math::policies::discrete_quantile<boost::math::policies::integer_round_up>>;

VexaFloat BinomialLower(VexaKernelVector, VexaFloat n, VexaFloat p, VexaFloat k) {
  VexaFloat le, gt, eq;
  NagError fail;
  VexaMP_g01bjc(FloatToInt(n), p, FloatToInt(k), &le, &gt, &eq, &fail);
  return le;
}

VexaFloat PoissonLower(VexaKernelVector, VexaFloat lambda, VexaFloat k) {
  VexaFloat le, gt, eq;
  NagError fail;
  VexaMP_g01bkc(lambda, FloatToInt(k), &le, &gt, &eq, &fail);
  return le;
}

VexaFloat BinomialDeviate(VexaKernelVector kv, const VexaFloat& p, const VexaFloat& n,
                          const VexaFloat& q) {
  return VexaFloat(STATS_BinomialDeviate_MP(kv, p, STATS_DoubleToInteger_MP(n), q));
}

VexaFloat PoissonDeviate(VexaKernelVector kv, const VexaFloat& p, const VexaFloat& lambda) {
  return VexaFloat(STATS_PoissonDeviate_MP(kv, p, lambda));
}

void RegisterDiscrete() {
  const auto binomialCdf = [](const auto& n, const auto& p, const auto& k) {
    using T = std::decay_t<decltype(p)>;
    return cdf(boost::math::binomial_distribution<T>(n, p), k);
  };
  const auto poissonCdf = [](const auto& lambda, const auto& k) {
    using T = std::decay_t<decltype(lambda)>;
    return cdf(boost::math::poisson_distribution<T>(lambda), k);
  };
  peers::Register<3>("binomial(20,0.3).cdf(6)", {"20", "0.3", "6"}, BinomialLower, binomialCdf);
  peers::Register<3>("binomial(1e9,0.5).cdf(5e8)", {"1000000000", "0.5", "500000000"},
                     BinomialLower, binomialCdf);
  peers::Register<2>("poisson(2.5).cdf(3)", {"2.5", "3"}, PoissonLower, poissonCdf);
  peers::Register<2>("poisson(1e6).cdf(1e6)", {"1000000", "1000000"}, PoissonLower, poissonCdf);

  const auto binomialQuantile = [](const auto& p, const auto& n, const auto& q) {
    using T = std::decay_t<decltype(p)>;
    return quantile(boost::math::binomial_distribution<T, RoundUp>(n, q), p);
  };
  const auto poissonQuantile = [](const auto& p, const auto& lambda) {
    using T = std::decay_t<decltype(p)>;
    return quantile(boost::math::poisson_distribution<T, RoundUp>(lambda), p);
  };
  peers::Register<3>("binomial(1000,0.3).quantile(0.9)", {"0.9", "1000", "0.3"}, BinomialDeviate,
                     binomialQuantile);
  peers::Register<3>("binomial(40,0.3).quantile(0.05)", {"0.05", "40", "0.3"}, BinomialDeviate,
                     binomialQuantile);
  peers::Register<2>("poisson(3.5).quantile(0.9)", {"0.9", "3.5"}, PoissonDeviate,
                     poissonQuantile);
  peers::Register<2>("poisson(250).quantile(0.05)", {"0.05", "250"}, PoissonDeviate,
                     poissonQuantile);
}

}  // namespace

int main(int argc, char** argv) {
  RegisterDiscrete();
  return peers::Main(argc, argv);
}
