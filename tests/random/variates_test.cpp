// The variates of the gamma family and of the laws built on it: binned goodness of fit of
// 10^5 draws against the library's distribution functions, and sample moments at Digits 50
// against mpmath's values.
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
using Distribution = std::function<VexaFloat(const VexaFloat& x)>;

VexaFloat V(const char* text) {
  return VexaFloatFromString(text);
}

constexpr int kBins = 30;
// Chi-square with 29 degrees of freedom: exceeded with probability 10^-4.
constexpr double kCritical = 66.15;

std::vector<double> Draw(const Variate& draw, int n) {
  std::vector<double> xs;
  for (int i = 0; i < n; ++i) xs.push_back(vexa::FloatToDouble(draw()));
  return xs;
}

// Pearson's statistic of n draws over kBins cells whose edges are quantiles of an independent
// pilot sample and whose probabilities come from the distribution function F.
double ChiSquareStatistic(const Variate& draw, const Distribution& F, int n) {
  std::vector<double> pilot = Draw(draw, 3000), edges;
  std::sort(pilot.begin(), pilot.end());
  for (int k = 1; k < kBins; ++k) edges.push_back(pilot[k * pilot.size() / kBins]);
  std::vector<double> p;
  double below = 0;
  for (double e : edges) {
    const double next = vexa::FloatToDouble(F(e));
    p.push_back(next - below);
    below = next;
  }
  p.push_back(1 - below);
  std::vector<int> counts(kBins, 0);
  for (double x : Draw(draw, n))
    ++counts[std::upper_bound(edges.begin(), edges.end(), x) - edges.begin()];
  double s = 0;
  for (int k = 0; k < kBins; ++k) s += (counts[k] - n * p[k]) * (counts[k] - n * p[k]) / (n * p[k]);
  return s;
}

TEST(Variates, FollowTheirDistributions) {
  VexaDigitsScope digits(10);
  const VexaKernelVector kv = Kv();
  // The laws without a library distribution function, through the gamma, chi-square and
  // normal ones: |x - a| / b = (2 G)^(c/2) for the error law; a chi with three degrees for
  // Maxwell's; P(X <= x) = P(Y >= exp(-(x - a) / b)) for Moyal's with Y a chi-square with one
  // degree; Phi(r (x/mu - 1)) + exp(2 lambda/mu) Phi(-r (x/mu + 1)), r = sqrt(lambda/x), for
  // the inverse Gaussian.
  auto error = [kv](const VexaFloat& x, double a, double b, double c) {
    const VexaFloat s = VexaFloat(c) / 2;
    const VexaFloat g = STATS_GammaProbability_MP(kv, pow(fabs(x - a) / b, 1 / s) / 2, s, 1);
    return x < a ? (1 - g) / 2 : (1 + g) / 2;
  };
  auto inverseGaussian = [kv](const VexaFloat& x, double mu, double lambda) {
    const VexaFloat r = sqrt(lambda / x);
    return STATS_NormalProbability_MP(kv, r * (x / mu - 1), 0, 1) +
           exp(2 * lambda / VexaFloat(mu)) *
               STATS_NormalProbability_MP(kv, -r * (x / mu + 1), 0, 1);
  };
  struct Row {
    const char* name;
    Variate draw;
    Distribution F;
  } rows[] = {
      {"Gamma(2.5, 2)", [kv] { return STATS_GammaRandomVariate_MP(kv, 2.5, 2); },
       [kv](const VexaFloat& x) { return STATS_GammaProbability_MP(kv, x, 2.5, 2); }},
      {"Gamma(0.3, 1)", [kv] { return STATS_GammaRandomVariate_MP(kv, 0.3, 1); },
       [kv](const VexaFloat& x) { return STATS_GammaProbability_MP(kv, x, 0.3, 1); }},
      {"ChiSquare(3)", [kv] { return STATS_ChiSquareRandomVariate_MP(kv, 3); },
       [kv](const VexaFloat& x) { return STATS_ChiSquareProbability_MP(kv, x, 3); }},
      {"Beta(0.7, 2.5)", [kv] { return STATS_BetaRandomVariate_MP(kv, 0.7, 2.5); },
       [kv](const VexaFloat& x) { return STATS_BetaProbability_MP(kv, x, 0.7, 2.5); }},
      {"FRatio(3, 7)", [kv] { return STATS_FRatioRandomVariate_MP(kv, 3, 7); },
       [kv](const VexaFloat& x) { return STATS_FRatioProbability_MP(kv, x, 3, 7); }},
      {"StudentT(2.5)", [kv] { return STATS_StudentTRandomVariate_MP(kv, 2.5); },
       [kv](const VexaFloat& x) { return STATS_StudentTProbability_MP(kv, x, 2.5); }},
      {"Error(1, 2, 1.5)", [kv] { return STATS_ErrorRandomVariate_MP(kv, 1, 2, 1.5); },
       [&](const VexaFloat& x) { return error(x, 1, 2, 1.5); }},
      {"Maxwell(2)", [kv] { return STATS_MaxwellRandomVariate_MP(kv, 2); },
       [kv](const VexaFloat& x) { return STATS_ChiSquareProbability_MP(kv, x * x / 4, 3); }},
      {"Moyal(1, 0.5)", [kv] { return STATS_MoyalRandomVariate_MP(kv, 1, 0.5); },
       [kv](const VexaFloat& x) {
         return 1 - STATS_ChiSquareProbability_MP(kv, exp(-(x - 1) / 0.5), 1);
       }},
      {"InverseGaussian(1.5, 2)",
       [kv] { return STATS_InverseGaussianRandomVariate_MP(kv, 1.5, 2); },
       [&](const VexaFloat& x) { return inverseGaussian(x, 1.5, 2); }},
  };
  vexa::SeedRandom(1729);
  for (const Row& r : rows) EXPECT_LT(ChiSquareStatistic(r.draw, r.F, 100000), kCritical) << r.name;
}

// Means of 5000 draws at Digits 50 within five standard errors, variances within 30% (about
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
  const int n = 5000;
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
    EXPECT_LT(fabs(variance / sigma2 - 1), 0.3) << r.key << " variance " << Text(variance);
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
