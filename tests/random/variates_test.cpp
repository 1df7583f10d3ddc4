// The variates of the gamma family and of the laws built on it: binned goodness of fit of
// 10^5 draws against quantiles from the library (mpmath's for the inverse Gaussian), and
// sample moments at Digits 50 against mpmath's values.
#include "stats/random/variates.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "frame/support.h"
#include "reference.h"
#include "stats/distributions/distributions.h"

namespace {

using Variate = std::function<VexaFloat()>;
using Quantile = std::function<VexaFloat(const VexaFloat& p)>;

VexaFloat V(const char* text) {
  return VexaFloatFromString(text);
}

constexpr int kBins = 50;
// Chi-square with 49 degrees of freedom: exceeded with probability 10^-4.
constexpr double kCritical = 93.2;

// Pearson's statistic of n draws over kBins cells of equal probability, given the 49 inner
// edges in increasing order.
double ChiSquareStatistic(const Variate& draw, int n, const std::vector<double>& edges) {
  std::vector<int> counts(kBins, 0);
  for (int i = 0; i < n; ++i) {
    const double x = vexa::FloatToDouble(draw());
    ++counts[std::upper_bound(edges.begin(), edges.end(), x) - edges.begin()];
  }
  const double expected = static_cast<double>(n) / kBins;
  double s = 0;
  for (int c : counts) s += (c - expected) * (c - expected) / expected;
  return s;
}

std::vector<double> Edges(const Quantile& q) {
  std::vector<double> edges;
  for (int k = 1; k < kBins; ++k) edges.push_back(vexa::FloatToDouble(q(VexaFloat(k) / kBins)));
  return edges;
}

TEST(Variates, FollowTheirDistributions) {
  VexaDigitsScope digits(15);
  const VexaKernelVector kv = Kv();
  // Quantiles of the laws without a library deviate, through gamma and chi-square quantiles.
  auto errorQuantile = [kv](const VexaFloat& p, double a, double b, double c) {
    const VexaFloat s = VexaFloat(c) / 2, q = p < 0.5 ? 1 - 2 * p : 2 * p - 1;
    if (q == 0) return VexaFloat(a);
    const VexaFloat z = b * pow(2 * STATS_GammaDeviate_MP(kv, q, s, 1), s);
    return p < 0.5 ? a - z : a + z;
  };
  std::vector<double> inverseGaussian;
  for (const vexa_test::Case& c : vexa_test::ReadCases("variates.txt"))
    if (c.op == "InverseGaussianQuantile") inverseGaussian.push_back(std::stod(c.expected));
  ASSERT_EQ(inverseGaussian.size(), kBins - 1u);

  struct Row {
    const char* name;
    Variate draw;
    std::vector<double> edges;
  } rows[] = {
      {"Gamma(2.5, 2)", [kv] { return STATS_GammaRandomVariate_MP(kv, 2.5, 2); },
       Edges([kv](const VexaFloat& p) { return STATS_GammaDeviate_MP(kv, p, 2.5, 2); })},
      {"Gamma(0.3, 1)", [kv] { return STATS_GammaRandomVariate_MP(kv, 0.3, 1); },
       Edges([kv](const VexaFloat& p) { return STATS_GammaDeviate_MP(kv, p, 0.3, 1); })},
      {"ChiSquare(3)", [kv] { return STATS_ChiSquareRandomVariate_MP(kv, 3); },
       Edges([kv](const VexaFloat& p) { return STATS_ChiSquareDeviate_MP(kv, p, 3); })},
      {"Beta(0.7, 2.5)", [kv] { return STATS_BetaRandomVariate_MP(kv, 0.7, 2.5); },
       Edges([kv](const VexaFloat& p) { return STATS_BetaDeviate_MP(kv, p, 0.7, 2.5); })},
      {"FRatio(3, 7)", [kv] { return STATS_FRatioRandomVariate_MP(kv, 3, 7); },
       Edges([kv](const VexaFloat& p) { return STATS_FRatioDeviate_MP(kv, p, 3, 7); })},
      {"StudentT(2.5)", [kv] { return STATS_StudentTRandomVariate_MP(kv, 2.5); },
       Edges([kv](const VexaFloat& p) { return STATS_StudentTDeviate_MP(kv, p, 2.5); })},
      {"Error(1, 2, 1.5)", [kv] { return STATS_ErrorRandomVariate_MP(kv, 1, 2, 1.5); },
       Edges([&](const VexaFloat& p) { return errorQuantile(p, 1, 2, 1.5); })},
      {"Error(0, 1, 0.4)", [kv] { return STATS_ErrorRandomVariate_MP(kv, 0, 1, 0.4); },
       Edges([&](const VexaFloat& p) { return errorQuantile(p, 0, 1, 0.4); })},
      {"Maxwell(2)", [kv] { return STATS_MaxwellRandomVariate_MP(kv, 2); },
       Edges([kv](const VexaFloat& p) { return 2 * sqrt(STATS_ChiSquareDeviate_MP(kv, p, 3)); })},
      // P(X <= x) = P(Y >= exp(-(x - a) / b)) for Y chi-square with one degree
      {"Moyal(1, 0.5)", [kv] { return STATS_MoyalRandomVariate_MP(kv, 1, 0.5); },
       Edges([kv](const VexaFloat& p) {
         return 1 - 0.5 * log(STATS_ChiSquareDeviate_MP(kv, 1 - p, 1));
       })},
      {"InverseGaussian(1.5, 2)",
       [kv] { return STATS_InverseGaussianRandomVariate_MP(kv, 1.5, 2); }, inverseGaussian},
  };
  vexa::SeedRandom(1729);
  for (const Row& r : rows)
    EXPECT_LT(ChiSquareStatistic(r.draw, 100000, r.edges), kCritical) << r.name;
}

// Means of 10^4 draws at Digits 50 within five standard errors, variances within 25% (about
// five standard errors at the largest kurtosis tested); every draw carries more digits than a
// double holds, and one seed gives one sample.
TEST(Variates, MomentsAtFiftyDigits) {
  VexaDigitsScope digits(50);
  const VexaKernelVector kv = Kv();
  std::map<std::string, VexaFloat> means, variances;
  for (const vexa_test::Case& c : vexa_test::ReadCases("variates.txt")) {
    std::string key;
    for (const std::string& a : c.args) key += a + " ";
    if (c.op == "Mean") means[key] = V(c.expected.c_str());
    if (c.op == "Variance") variances[key] = V(c.expected.c_str());
  }
  using Worker = VexaFloat (*)(VexaKernelVector, const VexaFloat*);
  struct Row {
    const char* key;
    Worker worker;
    std::vector<double> parameters;
  } rows[] = {
      {"Gamma 2.5 2 ", STATS_GammaRandomVariate_MP, {2.5, 2}},
      {"Gamma 0.3 1 ", STATS_GammaRandomVariate_MP, {0.3, 1}},
      {"ChiSquare 3 ", STATS_ChiSquareRandomVariate_MP, {3}},
      {"Beta 0.7 2.5 ", STATS_BetaRandomVariate_MP, {0.7, 2.5}},
      {"StudentT 5 ", STATS_StudentTRandomVariate_MP, {5}},
      {"FRatio 3 20 ", STATS_FRatioRandomVariate_MP, {3, 20}},
      {"Error 1 2 1.5 ", STATS_ErrorRandomVariate_MP, {1, 2, 1.5}},
      {"InverseGaussian 1.5 2 ", STATS_InverseGaussianRandomVariate_MP, {1.5, 2}},
      {"Maxwell 2 ", STATS_MaxwellRandomVariate_MP, {2}},
      {"Moyal 1 0.5 ", STATS_MoyalRandomVariate_MP, {1, 0.5}},
  };
  const int n = 10000;
  vexa::SeedRandom(31);
  for (const Row& r : rows) {
    ASSERT_TRUE(means.count(r.key) && variances.count(r.key)) << r.key;
    VexaFloat p[5];
    for (size_t i = 0; i < r.parameters.size(); ++i) p[i] = r.parameters[i];
    VexaFloat sum, squares;
    int short_ = 0;
    for (int i = 0; i < n; ++i) {
      const VexaFloat x = r.worker(kv, p);
      sum += x;
      squares += x * x;
      if (VexaFloat(vexa::FloatToDouble(x)) == x) ++short_;
    }
    const VexaFloat mean = sum / n, variance = (squares - n * mean * mean) / (n - 1);
    const VexaFloat& mu = means[r.key];
    const VexaFloat& sigma2 = variances[r.key];
    EXPECT_LT(fabs(mean - mu), 5 * sqrt(sigma2 / n)) << r.key << " mean " << Text(mean);
    EXPECT_LT(fabs(variance / sigma2 - 1), 0.25) << r.key << " variance " << Text(variance);
    EXPECT_EQ(short_, 0) << r.key;
    // reproducible under one seed
    vexa::SeedRandom(5);
    const VexaFloat first = r.worker(kv, p);
    vexa::SeedRandom(5);
    EXPECT_EQ(r.worker(kv, p), first) << r.key;
  }
}

// Parameters outside the laws' domains are refused before anything is drawn.
TEST(Variates, InvalidParametersRaise) {
  const VexaKernelVector kv = Kv();
  struct Row {
    std::function<void()> call;
    const char* error;
  } rows[] = {
      {[kv] { STATS_GammaRandomVariate_MP(kv, 0, 1); },
       "the shape must be positive and finite, received: 0."},
      {[kv] { STATS_GammaRandomVariate_MP(kv, 1, -2); },
       "the scale must be positive and finite, received: -2."},
      {[kv] { STATS_BetaRandomVariate_MP(kv, 1, VexaFloatUndefined()); },
       "the second shape must be positive and finite, received: Float(undefined)"},
      {[kv] { STATS_StudentTRandomVariate_MP(kv, VexaFloatInfinity(1)); },
       "the degrees of freedom must be positive and finite, received: Float(infinity)"},
      {[kv] { STATS_FRatioRandomVariate_MP(kv, -1, 1); },
       "the numerator degrees of freedom must be positive and finite, received: -1."},
      {[kv] { STATS_ErrorRandomVariate_MP(kv, 0, 1, 0); },
       "the shape must be positive and finite, received: 0."},
      {[kv] { STATS_InverseGaussianRandomVariate_MP(kv, 0, 1); },
       "the mean must be positive and finite, received: 0."},
      {[kv] { STATS_MoyalRandomVariate_MP(kv, VexaFloatInfinity(-1), 1); },
       "the location must be finite, received: Float(-infinity)"},
  };
  const vexa::RandomCounts before = vexa::RandomDrawn();
  for (const Row& r : rows) EXPECT_EQ(ErrorOf(r.call), r.error);
  EXPECT_EQ(vexa::RandomDrawn().words, before.words);
}

}  // namespace
