// The binomial and Poisson distribution functions P(X <= k): ours next to Boost.Math's cdf,
// at a small and at a very large parameter (n = 10^9 trials, mean 10^6), where both are
// incomplete beta and gamma functions of large shapes.
#include <boost/math/distributions/binomial.hpp>
#include <boost/math/distributions/poisson.hpp>

#include "bench/peers/peers.h"
#include "vexa/nag.h"

namespace {

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
}

}  // namespace

int main(int argc, char** argv) {
  RegisterDiscrete();
  return peers::Main(argc, argv);
}
