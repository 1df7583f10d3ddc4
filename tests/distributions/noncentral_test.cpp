// The noncentral distributions' workers: deviates against the same deviates 20 digits wider,
// binned goodness of fit of 10^5 variates of each law and of the exact Poisson draw beneath
// them, and the procedure form of the chi-square sample.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "frame/support.h"
#include "stats/distributions/distributions.h"
#include "stats/random/random_stream.h"

extern "C" ALGEB STATS_VexaNonCentralChiSquareRandomSample_MP(VexaKernelVector kv, ALGEB args);

namespace {

using Law = std::function<VexaFloat(const VexaFloat&)>;

VexaFloat V(const char* text) {
  return VexaFloatFromString(text);
}

// The deviate as its entry point gives it: searched at Digits + 3, rounded to Digits.
VexaFloat AtDigits(const Law& deviate, const VexaFloat& p, int digits) {
  VexaDigitsScope scope(digits);
  VexaFloat x;
  {
    VexaDigitsScope wide(digits + 3);
    x = deviate(p);
  }
  return x + VexaFloat(0.0);
}

TEST(NonCentral, DeviatesAreWithinOneUlp) {
  const VexaKernelVector kv = Kv();
  struct Row {
    const char* name;
    Law deviate;
  } rows[] = {
      {"chi-square(4, 3)",
       [kv](const VexaFloat& p) { return STATS_NonCentralChiSquareDeviate_MP(kv, p, 4, 3); }},
      {"chi-square(0.5, 900)",
       [kv](const VexaFloat& p) { return STATS_NonCentralChiSquareDeviate_MP(kv, p, 0.5, 900); }},
      {"F(3, 7, 5)",
       [kv](const VexaFloat& p) { return STATS_NonCentralFRatioDeviate_MP(kv, p, 3, 7, 5); }},
      {"beta(2, 3, 4)",
       [kv](const VexaFloat& p) { return STATS_NonCentralBetaDeviate_MP(kv, p, 2, 3, 4); }},
  };
  for (const Row& r : rows) {
    for (int digits : {10, 30, 100}) {
      for (const char* p : {"0.001", "0.3", "0.975"}) {
        const VexaFloat x = AtDigits(r.deviate, V(p), digits);
        const VexaFloat wide = AtDigits(r.deviate, V(p), digits + 20);
        VexaDigitsScope scope(digits + 30);
        const VexaFloat ulp =
            pow(VexaFloat(10.0), floor(log(fabs(wide)) / log(VexaFloat(10.0))) - (digits - 1));
        EXPECT_LE(fabs(x - wide), ulp) << r.name << " at p = " << p << ", Digits " << digits << ": "
                                       << Text(x) << " vs " << Text(wide);
      }
    }
    EXPECT_EQ(r.deviate(0), 0) << r.name;
  }
  EXPECT_EQ(ErrorOf([&] { STATS_NonCentralBetaDeviate_MP(kv, V("1.5"), 2, 3, 4); }),
            "invalid value for the tail probability: 1.5");
  EXPECT_TRUE(IsVexaFloatInfinity(STATS_NonCentralChiSquareDeviate_MP(kv, 1, 4, 3)));
}

// Pearson's statistic of counts against cell probabilities (summing to 1), and its critical
// value at level 10^-4 by the Wilson-Hilferty approximation.
double Pearson(const std::vector<int>& counts, const std::vector<double>& probabilities, int n) {
  double s = 0;
  for (size_t i = 0; i < counts.size(); ++i) {
    const double e = n * probabilities[i];
    s += (counts[i] - e) * (counts[i] - e) / e;
  }
  return s;
}

double Critical(int df) {
  const double a = 2.0 / (9 * df);
  return df * std::pow(1 - a + 3.719 * std::sqrt(a), 3);
}

// Draws n variates into the cells cut by edges and compares them with cdf at the edges.
double GoodnessOfFit(const std::function<VexaFloat()>& draw, const Law& cdf,
                     const std::vector<double>& edges, int n) {
  std::vector<int> counts(edges.size() + 1, 0);
  for (int i = 0; i < n; ++i) {
    const double x = vexa::FloatToDouble(draw());
    ++counts[std::upper_bound(edges.begin(), edges.end(), x) - edges.begin()];
  }
  std::vector<double> probabilities;
  double previous = 0;
  for (double e : edges) {
    const double f = vexa::FloatToDouble(cdf(VexaFloat(e)));
    probabilities.push_back(f - previous);
    previous = f;
  }
  probabilities.push_back(1 - previous);
  return Pearson(counts, probabilities, n);
}

// Edges at the quantiles k / cells of a continuous cdf, by bisection in double on [lo, hi].
std::vector<double> Edges(const Law& cdf, double lo, double hi, int cells) {
  std::vector<double> edges;
  for (int k = 1; k < cells; ++k) {
    double a = lo, b = hi;
    for (int i = 0; i < 50; ++i) {
      const double m = (a + b) / 2;
      (vexa::FloatToDouble(cdf(VexaFloat(m))) < static_cast<double>(k) / cells ? a : b) = m;
    }
    edges.push_back((a + b) / 2);
  }
  return edges;
}

TEST(NonCentral, VariatesFollowTheirDistributions) {
  VexaDigitsScope digits(15);
  const VexaKernelVector kv = Kv();
  const int kCells = 40;
  struct Row {
    const char* name;
    std::function<VexaFloat()> draw;
    Law cdf;
    double lo, hi;
    int n;
  } rows[] = {
      {"chi-square(4, 3)", [kv] { return STATS_NonCentralChiSquareRandomVariate_MP(kv, 4, 3, 0); },
       [kv](const VexaFloat& x) { return STATS_NonCentralChiSquareProbability_MP(kv, x, 4, 3); }, 0,
       100, 100000},
      {"chi-square(0.7, 60)",  // the Poisson count by PTRS
       [kv] { return STATS_NonCentralChiSquareRandomVariate_MP(kv, V("0.7"), 60, 0); },
       [kv](const VexaFloat& x) {
         return STATS_NonCentralChiSquareProbability_MP(kv, x, V("0.7"), 60);
       },
       0, 300, 100000},
      {"chi-square(4, 3) by inversion",
       [kv] { return STATS_NonCentralChiSquareRandomVariate_MP(kv, 4, 3, 1); },
       [kv](const VexaFloat& x) { return STATS_NonCentralChiSquareProbability_MP(kv, x, 4, 3); }, 0,
       100, 2000},
      {"F(3, 7, 5)", [kv] { return STATS_NonCentralFRatioRandomVariate_MP(kv, 3, 7, 5); },
       [kv](const VexaFloat& x) { return STATS_NonCentralFRatioProbability_MP(kv, x, 3, 7, 5); }, 0,
       1000, 100000},
      {"beta(2, 0.5, 12)", [kv] { return STATS_NonCentralBetaRandomVariate_MP(kv, 2, 0.5, 12); },
       [kv](const VexaFloat& x) { return STATS_NonCentralBetaProbability_MP(kv, x, 2, 0.5, 12); },
       0, 1, 100000},
      {"t(5, 1)", [kv] { return STATS_NonCentralStudentTRandomVariate_MP(kv, 5, 1); },
       [kv](const VexaFloat& x) { return STATS_NonCentralStudentTProbability_MP(kv, x, 5, 1); },
       -100, 100, 100000},
      {"t(2.5, -3)", [kv] { return STATS_NonCentralStudentTRandomVariate_MP(kv, 2.5, -3); },
       [kv](const VexaFloat& x) { return STATS_NonCentralStudentTProbability_MP(kv, x, 2.5, -3); },
       -1000, 100, 100000},
  };
  vexa::SeedRandom(2718);
  for (const Row& r : rows) {
    const int cells = r.n >= 100000 ? kCells : 10;
    const std::vector<double> edges = Edges(r.cdf, r.lo, r.hi, cells);
    EXPECT_LT(GoodnessOfFit(r.draw, r.cdf, edges, r.n), Critical(cells - 1)) << r.name;
  }
}

// The exact Poisson draw below and above the switch to PTRS, against the library's masses.
TEST(NonCentral, ExactPoissonCountsFollowTheirDistribution) {
  VexaDigitsScope digits(15);
  const VexaKernelVector kv = Kv();
  vexa::SeedRandom(31);
  for (const char* mean : {"3.5", "250", "40000"}) {
    const VexaFloat mu = V(mean);
    const double m = vexa::FloatToDouble(mu), sd = std::sqrt(m);
    std::vector<double> edges;  // cells of about a third of a standard deviation
    const double step = std::max(1.0, std::floor(sd / 3));
    for (double k = std::max(0.0, std::floor(m - 3 * sd)); k < m + 3 * sd; k += step)
      edges.push_back(k + 0.5);
    const double value = GoodnessOfFit(
        [&] { return VexaFloat(static_cast<double>(STATS_PoissonExactVariate_MP(mu))); },
        [&](const VexaFloat& x) { return STATS_PoissonProbability_MP(kv, x, mu); }, edges, 100000);
    EXPECT_LT(value, Critical(static_cast<int>(edges.size()))) << "mean " << mean;
  }
  EXPECT_EQ(STATS_PoissonExactVariate_MP(0), 0);
}

// Each element of the six-argument sample solves F(x) = u for the uniform u drawn for it.
TEST(NonCentral, ProcedureSampleSolvesForEachUniform) {
  const VexaKernelVector kv = Kv();
  auto entry = STATS_VexaNonCentralChiSquareRandomSample_MP;
  ALGEB cdf = vexa::NewNativeProcedure("F", [](vexa::Kernel*, ALGEB args) {
    const VexaFloat x(VexaExpseqSelect(Kv(), args, 1));
    return STATS_NonCentralChiSquareProbability_MP(Kv(), x, 4, 3).Handle();
  });
  ALGEB zero =
      vexa::NewNativeProcedure("L", [](vexa::Kernel*, ALGEB) { return vexa::NewInteger(0); });
  ALGEB far =
      vexa::NewNativeProcedure("U", [](vexa::Kernel*, ALGEB) { return vexa::NewInteger(200); });
  vexa::SeedRandom(5);
  ALGEB sample = entry(kv, vexa::NewExpseq({vexa::NewInteger(4), vexa::NewInteger(4),
                                            vexa::NewInteger(3), cdf, zero, far}));
  const VexaFloat* x = static_cast<const VexaFloat*>(RTableDataBlock(kv, sample));
  vexa::SeedRandom(5);
  for (int i = 0; i < 4; ++i) {
    const VexaFloat u = STATS_VexaRandomStream_MP::NextDouble();
    const VexaFloat f = STATS_NonCentralChiSquareProbability_MP(kv, x[i], 4, 3);
    EXPECT_LT(fabs(f - u), V("1e-8")) << i << ": " << Text(x[i]);
  }
}

}  // namespace
