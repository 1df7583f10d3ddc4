// The noncentral chi-square, F, beta and Student t distributions: our probabilities and
// deviates next to Boost.Math's noncentral cdf and quantile.
#include <boost/math/distributions/non_central_beta.hpp>
#include <boost/math/distributions/non_central_chi_squared.hpp>
#include <boost/math/distributions/non_central_f.hpp>
#include <boost/math/distributions/non_central_t.hpp>

#include "bench/peers/peers.h"

namespace {

void RegisterNoncentral() {
  using boost::math::non_central_beta_distribution;
  using boost::math::non_central_chi_squared_distribution;
  using boost::math::non_central_f_distribution;
  using boost::math::non_central_t_distribution;
  const auto chiCdf = [](const auto& x, const auto& nu, const auto& lambda) {
    using T = std::decay_t<decltype(x)>;
    return cdf(non_central_chi_squared_distribution<T>(nu, lambda), x);
  };
  const auto chiQuantile = [](const auto& p, const auto& nu, const auto& lambda) {
    using T = std::decay_t<decltype(p)>;
    return quantile(non_central_chi_squared_distribution<T>(nu, lambda), p);
  };
  peers::Register<3>("ncchisq(4,3).cdf(5)", {"5", "4", "3"},
                     STATS_NonCentralChiSquareProbability_MP, chiCdf);
  peers::Register<3>("ncchisq(10,1000).cdf(1000)", {"1000", "10", "1000"},
                     STATS_NonCentralChiSquareProbability_MP, chiCdf);
  peers::Register<3>("ncchisq(4,3).quantile(0.9)", {"0.9", "4", "3"},
                     STATS_NonCentralChiSquareDeviate_MP, chiQuantile);

  const auto fCdf = [](const auto& x, const auto& nu1, const auto& nu2, const auto& lambda) {
    using T = std::decay_t<decltype(x)>;
    return cdf(non_central_f_distribution<T>(nu1, nu2, lambda), x);
  };
  const auto fQuantile = [](const auto& p, const auto& nu1, const auto& nu2, const auto& lambda) {
    using T = std::decay_t<decltype(p)>;
    return quantile(non_central_f_distribution<T>(nu1, nu2, lambda), p);
  };
  peers::Register<4>("ncF(3,7,5).cdf(2)", {"2", "3", "7", "5"},
                     STATS_NonCentralFRatioProbability_MP, fCdf);
  peers::Register<4>("ncF(3,7,5).quantile(0.9)", {"0.9", "3", "7", "5"},
                     STATS_NonCentralFRatioDeviate_MP, fQuantile);

  const auto betaCdf = [](const auto& x, const auto& a, const auto& b, const auto& lambda) {
    using T = std::decay_t<decltype(x)>;
    return cdf(non_central_beta_distribution<T>(a, b, lambda), x);
  };
  const auto betaQuantile = [](const auto& p, const auto& a, const auto& b, const auto& lambda) {
    using T = std::decay_t<decltype(p)>;
    return quantile(non_central_beta_distribution<T>(a, b, lambda), p);
  };
  peers::Register<4>("ncbeta(2,3,4).cdf(0.3)", {"0.3", "2", "3", "4"},
                     STATS_NonCentralBetaProbability_MP, betaCdf);
  peers::Register<4>("ncbeta(2,3,4).quantile(0.9)", {"0.9", "2", "3", "4"},
                     STATS_NonCentralBetaDeviate_MP, betaQuantile);

  const auto tCdf = [](const auto& x, const auto& nu, const auto& delta) {
    using T = std::decay_t<decltype(x)>;
    return cdf(non_central_t_distribution<T>(nu, delta), x);
  };
  peers::Register<3>("nct(5,1).cdf(1.5)", {"1.5", "5", "1"}, STATS_NonCentralStudentTProbability_MP,
                     tCdf);
  peers::Register<3>("nct(5,1).cdf(-1.5)", {"-1.5", "5", "1"},
                     STATS_NonCentralStudentTProbability_MP, tCdf);
  peers::Register<3>("nct(10,5).cdf(-1)", {"-1", "10", "5"}, STATS_NonCentralStudentTProbability_MP,
                     tCdf);
}

}  // namespace

int main(int argc, char** argv) {
  RegisterNoncentral();
  return peers::Main(argc, argv);
}
