// The binomial and Poisson deviates (the smallest k with P(X <= k) >= p) next to Boost.Math's
// quantiles under the policy that rounds the integer result up, which is the same definition.
#include <boost/math/distributions/binomial.hpp>
#include <boost/math/distributions/poisson.hpp>

#include "bench/peers/peers.h"

namespace {

using RoundUp = boost::math::policies::policy<
    boost::math::policies::discrete_quantile<boost::math::policies::integer_round_up>>;

VexaFloat BinomialDeviate(VexaKernelVector kv, const VexaFloat& p, const VexaFloat& n,
                          const VexaFloat& q) {
  return VexaFloat(STATS_BinomialDeviate_MP(kv, p, STATS_DoubleToInteger_MP(n), q));
}

VexaFloat PoissonDeviate(VexaKernelVector kv, const VexaFloat& p, const VexaFloat& lambda) {
  return VexaFloat(STATS_PoissonDeviate_MP(kv, p, lambda));
}

void RegisterDiscrete() {
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
