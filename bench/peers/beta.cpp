// The beta, Student t and F distributions, all incomplete-beta based: our probabilities and
// deviates next to Boost.Math's cdf and quantile, at moderate parameters.
#include <boost/math/distributions/beta.hpp>
#include <boost/math/distributions/fisher_f.hpp>
#include <boost/math/distributions/students_t.hpp>

#include "bench/peers/peers.h"

namespace {

struct BetaCase {
  const char* name;
  const char* x;
  const char* a;
  const char* b;
};

void RegisterBeta() {
  using boost::math::beta_distribution;
  using boost::math::fisher_f_distribution;
  using boost::math::students_t_distribution;
  const auto betaCdf = [](const auto& x, const auto& a, const auto& b) {
    using T = std::decay_t<decltype(x)>;
    return cdf(beta_distribution<T>(a, b), x);
  };
  const auto betaQuantile = [](const auto& p, const auto& a, const auto& b) {
    using T = std::decay_t<decltype(p)>;
    return quantile(beta_distribution<T>(a, b), p);
  };
  const BetaCase cdfs[] = {{"beta(2.5,3.5).cdf(0.4)", "0.4", "2.5", "3.5"},
                           {"beta(12,8).cdf(0.7)", "0.7", "12", "8"}};
  const BetaCase quantiles[] = {{"beta(2.5,3.5).quantile(0.9)", "0.9", "2.5", "3.5"},
                                {"beta(12,8).quantile(0.05)", "0.05", "12", "8"}};
  for (const BetaCase& c : cdfs) {
    peers::Register<3>(c.name, {c.x, c.a, c.b}, STATS_BetaProbability_MP, betaCdf);
  }
  for (const BetaCase& c : quantiles) {
    peers::Register<3>(c.name, {c.x, c.a, c.b}, STATS_BetaDeviate_MP, betaQuantile);
  }

  peers::Register<2>("t(10).cdf(2)", {"2", "10"}, STATS_StudentTProbability_MP,
                     [](const auto& x, const auto& nu) {
                       using T = std::decay_t<decltype(x)>;
                       return cdf(students_t_distribution<T>(nu), x);
                     });
  peers::Register<2>("t(10).quantile(0.975)", {"0.975", "10"}, STATS_StudentTDeviate_MP,
                     [](const auto& p, const auto& nu) {
                       using T = std::decay_t<decltype(p)>;
                       return quantile(students_t_distribution<T>(nu), p);
                     });
  peers::Register<3>("F(5,10).cdf(2.5)", {"2.5", "5", "10"}, STATS_FRatioProbability_MP,
                     [](const auto& x, const auto& nu1, const auto& nu2) {
                       using T = std::decay_t<decltype(x)>;
                       return cdf(fisher_f_distribution<T>(nu1, nu2), x);
                     });
  peers::Register<3>("F(5,10).quantile(0.95)", {"0.95", "5", "10"}, STATS_FRatioDeviate_MP,
                     [](const auto& p, const auto& nu1, const auto& nu2) {
                       using T = std::decay_t<decltype(p)>;
                       return quantile(fisher_f_distribution<T>(nu1, nu2), p);
                     });
}

}  // namespace

int main(int argc, char** argv) {
  RegisterBeta();
  return peers::Main(argc, argv);
}
