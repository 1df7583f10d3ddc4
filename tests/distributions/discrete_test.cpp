// The discrete distributions: probabilities against exact and mpmath references, deviates
// inverting their probabilities, the iteration limit, the closed forms and their deliberate
// asymmetries, goodness of fit of the variates at a fixed seed, and the empirical entries.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "data/support.h"
#include "reference.h"
#include "stats/descriptive/descriptive.h"
#include "stats/distributions/distributions.h"
#include "stats/random/random_stream.h"

extern "C" {
ALGEB STATS_VexaEmpiricalDeviate_MP(VexaKernelVector kv, ALGEB args);
ALGEB STATS_VexaEmpiricalRandomVariate_MP(VexaKernelVector kv, ALGEB args);
ALGEB STATS_VexaEmpiricalRandomSample_MP(VexaKernelVector kv, ALGEB args);
ALGEB STATS_VexaBinomialRandomSample_MP(VexaKernelVector kv, ALGEB args);
}

namespace {

using Args = std::vector<VexaFloat>;
using vexa::Print;

long L(const VexaFloat& x) {
  return STATS_DoubleToInteger_MP(x);
}

const std::map<std::string, std::function<VexaFloat(const Args&)>> kProbabilities = {
    {"BinomialProbability",
     [](const Args& a) { return STATS_BinomialProbability_MP(Kv(), a[0], L(a[1]), a[2]); }},
    {"HypergeometricProbability",
     [](const Args& a) {
       return STATS_HypergeometricProbability_MP(Kv(), a[0], L(a[1]), L(a[2]), L(a[3]));
     }},
    {"PoissonProbability",
     [](const Args& a) { return STATS_PoissonProbability_MP(Kv(), a[0], a[1]); }},
    {"NegativeBinomialProbability",
     [](const Args& a) { return STATS_NegativeBinomialProbability_MP(Kv(), a[0], a[1], a[2]); }},
};

TEST(DiscreteDistributions, ProbabilitiesMatchReferenceValues) {
  int cases = 0;
  for (const vexa_test::Case& c : vexa_test::ReadCases("discrete_distributions.txt")) {
    VexaDigitsScope digits(c.digits);
    Args args;
    for (const std::string& a : c.args) args.push_back(F(a));
    const VexaFloat got = kProbabilities.at(c.op)(args);
    EXPECT_EQ(Text(got), Text(F(c.expected) + VexaFloat(0))) << "line " << c.line << " " << c.op;
    ++cases;
  }
  EXPECT_EQ(cases, 50);
}

// A deviate and its probability: P(d - 1) < p <= P(d).
struct Law {
  std::string name;
  long lowest;  // the smallest point of the support
  std::function<long(const VexaFloat&)> deviate;
  std::function<VexaFloat(long)> probability;
};

std::vector<Law> Laws() {
  return {
      {"binomial 40 0.3", 0,
       [](const VexaFloat& p) { return STATS_BinomialDeviate_MP(Kv(), p, 40, F("0.3")); },
       [](long k) { return STATS_BinomialProbability_MP(Kv(), VexaFloat(k), 40, F("0.3")); }},
      {"binomial 10^6 0.01", 0,
       [](const VexaFloat& p) { return STATS_BinomialDeviate_MP(Kv(), p, 1000000, F("0.01")); },
       [](long k) { return STATS_BinomialProbability_MP(Kv(), VexaFloat(k), 1000000, F("0.01")); }},
      {"poisson 0.4", 0,
       [](const VexaFloat& p) { return STATS_PoissonDeviate_MP(Kv(), p, F("0.4")); },
       [](long k) { return STATS_PoissonProbability_MP(Kv(), VexaFloat(k), F("0.4")); }},
      {"poisson 250", 0,
       [](const VexaFloat& p) { return STATS_PoissonDeviate_MP(Kv(), p, F("250")); },
       [](long k) { return STATS_PoissonProbability_MP(Kv(), VexaFloat(k), F("250")); }},
      {"hypergeometric 60 25 30", 0,
       [](const VexaFloat& p) { return STATS_HypergeometricDeviate_MP(Kv(), p, 60, 25, 30); },
       [](long k) { return STATS_HypergeometricProbability_MP(Kv(), VexaFloat(k), 60, 25, 30); }},
      {"negative binomial 3.5 0.2", 0,
       [](const VexaFloat& p) {
         return STATS_NegativeBinomialDeviate_MP(Kv(), p, F("3.5"), F("0.2"));
       },
       [](long k) {
         return STATS_NegativeBinomialProbability_MP(Kv(), VexaFloat(k), F("3.5"), F("0.2"));
       }},
      {"geometric 0.15", 0,
       [](const VexaFloat& p) { return STATS_GeometricDeviate_MP(Kv(), p, F("0.15")); },
       [](long k) { return STATS_GeometricProbability_MP(Kv(), VexaFloat(k), F("0.15")); }},
      {"discrete uniform -3 7", -3,
       [](const VexaFloat& p) { return STATS_DiscreteUniformDeviate_MP(Kv(), p, -3, 7); },
       [](long k) { return STATS_DiscreteUniformProbability_MP(Kv(), VexaFloat(k), -3, 7); }},
  };
}

TEST(DiscreteDistributions, DeviatesInvertProbabilities) {
  for (int digits : {10, 40}) {
    VexaDigitsScope scope(digits);
    for (const Law& law : Laws()) {
      for (const char* text :
           {"1e-9", "0.001", "0.05", "0.2", "0.5", "0.61", "0.9", "0.999", "0.9999999"}) {
        const VexaFloat p = F(text);
        const long d = law.deviate(p);
        // Below the support the library-backed laws refuse the point.
        if (d > law.lowest) {
          EXPECT_LT(law.probability(d - 1), p) << law.name << " p " << text << " d " << d;
        }
        EXPECT_GE(law.probability(d), p) << law.name << " p " << text << " d " << d;
      }
    }
  }
}

TEST(DiscreteDistributions, EdgesOfTheSearches) {
  VexaDigitsScope digits(10);
  // Range guards: the library would refuse these parameters (L > N) if it were called.
  EXPECT_EQ(Text(STATS_HypergeometricProbability_MP(Kv(), F("-0.5"), 3, 4, 2)), "0.");
  EXPECT_EQ(Text(STATS_HypergeometricProbability_MP(Kv(), F("2.5"), 3, 4, 2)), "1.");
  EXPECT_EQ(Text(STATS_HypergeometricProbability_MP(Kv(), F("4.5"), 3, 4, 9)), "1.");
  EXPECT_EQ(STATS_HypergeometricDeviate_MP(Kv(), VexaFloat(1.0), 3, 4, 2), 2);
  EXPECT_EQ(STATS_HypergeometricDeviate_MP(Kv(), VexaFloat(1.0), 60, 25, 30), 25);
  // The floor of a fractional point; the Poisson probability truncates instead.
  EXPECT_EQ(STATS_BinomialProbability_MP(Kv(), F("2.7"), 10, F("0.3")),
            STATS_BinomialProbability_MP(Kv(), VexaFloat(2), 10, F("0.3")));
  EXPECT_EQ(STATS_PoissonProbability_MP(Kv(), F("-0.5"), F("2")),
            STATS_PoissonProbability_MP(Kv(), VexaFloat(0), F("2")));
  // lambda below 1: the search starts its right end at 1, not at the left barrier 0.
  EXPECT_EQ(STATS_PoissonDeviate_MP(Kv(), F("0.5"), F("0.4")), 0);
  EXPECT_EQ(STATS_PoissonDeviate_MP(Kv(), F("0.95"), F("0.4")), 2);
  // The library's own failure reaches the host.
  EXPECT_NE(ErrorOf([] { STATS_BinomialProbability_MP(Kv(), F("2"), 10, F("1.5")); }), "no error");
}

// _EnvStatisticsIterations bounds the binomial, Poisson and hypergeometric searches; the
// negative binomial keeps its 100.
TEST(DiscreteDistributions, IterationLimitFromTheHost) {
  VexaDigitsScope digits(10);
  ALGEB name = ToVexaName(Kv(), "_EnvStatisticsIterations", 1);
  EXPECT_EQ(STATS_DiscreteIterationLimit_MP(Kv()), 100);
  VexaAssign(Kv(), name, ToVexaInteger(Kv(), 500));
  EXPECT_EQ(STATS_DiscreteIterationLimit_MP(Kv()), 500);
  VexaAssign(Kv(), name, ToVexaInteger(Kv(), 3));
  const std::string exceeded = "maximum number of iterations exceeded in discrete root finding.";
  EXPECT_EQ(ErrorOf([] { STATS_BinomialDeviate_MP(Kv(), F("0.5"), 1000, F("0.3")); }), exceeded);
  EXPECT_EQ(ErrorOf([] { STATS_HypergeometricDeviate_MP(Kv(), F("0.5"), 1000, 500, 400); }),
            exceeded);
  EXPECT_EQ(ErrorOf([] { STATS_PoissonDeviate_MP(Kv(), F("0.5"), F("1000")); }), exceeded);
  EXPECT_EQ(STATS_NegativeBinomialDeviate_MP(Kv(), F("0.5"), F("1"), F("0.001")), 692);
  vexa::Unassign(name);
  EXPECT_EQ(STATS_BinomialDeviate_MP(Kv(), F("0.5"), 1000, F("0.3")), 300);
}

TEST(DiscreteDistributions, ClosedForms) {
  VexaDigitsScope digits(10);
  const VexaFloat q = F("0.3");
  // Bernoulli: the mass, and the deviate's test p > 1 - q against the variate's u <= q.
  EXPECT_EQ(Text(STATS_BernoulliProbability_MP(Kv(), 0, q)), "0.7");
  EXPECT_EQ(Text(STATS_BernoulliProbability_MP(Kv(), 1, q)), "0.3");
  EXPECT_EQ(Text(STATS_BernoulliProbability_MP(Kv(), 2, q)), "0.");
  EXPECT_EQ(STATS_BernoulliDeviate_MP(Kv(), F("0.7"), q), 0);
  EXPECT_EQ(STATS_BernoulliDeviate_MP(Kv(), F("0.7000000001"), q), 1);
  EXPECT_EQ(STATS_GeometricDeviate_MP(Kv(), VexaFloat(0.0), q), 0);
  EXPECT_EQ(Text(STATS_GeometricProbability_MP(Kv(), F("-1"), q)), "0.");
  EXPECT_EQ(Text(STATS_GeometricProbability_MP(Kv(), F("-2"), q)), "-0.428571429");
  EXPECT_EQ(Text(STATS_GeometricProbability_MP(Kv(), F("1.5"), q)), "0.51");
  EXPECT_EQ(STATS_DiscreteUniformDeviate_MP(Kv(), VexaFloat(0.0), 3, 7), 3);
  EXPECT_EQ(STATS_DiscreteUniformDeviate_MP(Kv(), VexaFloat(1.0), 3, 7), 7);
  EXPECT_EQ(Text(STATS_DiscreteUniformProbability_MP(Kv(), F("4.5"), 3, 7)), "0.4");
  EXPECT_EQ(Text(STATS_DiscreteUniformProbability_MP(Kv(), F("2.9"), 3, 7)), "0.");
  EXPECT_EQ(Text(STATS_DiscreteUniformProbability_MP(Kv(), F("7.1"), 3, 7)), "1.");
}

// Pearson's statistic of the draws against the law's distribution function F, over at most
// 80 cells of equal width between the least and the greatest draw (the outer ones open), neighbours
// pooled until each expects 10 draws; compared with the chi-square quantile at 1 - 10^-6.
void ExpectFits(const std::string& name, std::vector<long> draws,
                const std::function<VexaFloat(long)>& cdf, long maxCells = 80) {
  std::sort(draws.begin(), draws.end());
  const long lo = draws.front(), hi = draws.back();
  const double n = static_cast<double>(draws.size());
  const long stride = std::max(1L, (hi - lo + 1) / maxCells);
  double statistic = 0, expected = 0, observed = 0, previousF = 0, previousCount = 0;
  int cells = 0;
  for (long cut = lo + stride - 1;; cut += stride) {
    const bool last = cut >= hi;
    const double f = last ? 1.0 : std::stod(Text(cdf(cut) + VexaFloat(0)));
    const double count =
        last ? n : std::upper_bound(draws.begin(), draws.end(), cut) - draws.begin();
    expected += (f - previousF) * n;
    observed += count - previousCount;
    previousF = f;
    previousCount = count;
    if ((expected >= 10 && (1 - f) * n >= 10) || last) {
      statistic += (observed - expected) * (observed - expected) / std::max(expected, 1e-9);
      ++cells;
      expected = observed = 0;
    }
    if (last) break;
  }
  ASSERT_GE(cells, 2) << name;
  const double bound = std::stod(
      Text(STATS_ChiSquareDeviate_MP(Kv(), F("0.999999"), VexaFloat(cells - 1)) + VexaFloat(0)));
  EXPECT_LT(statistic, bound) << name << ": " << cells << " cells";
  std::printf("[discrete] %s: chi-square %.1f on %d degrees of freedom (bound %.1f)\n",
              name.c_str(), statistic, cells - 1, bound);
}

std::vector<long> Draw(int n, const std::function<VexaFloat()>& variate) {
  std::vector<long> out;
  out.reserve(n);
  for (int i = 0; i < n; ++i) out.push_back(L(variate()));
  return out;
}

TEST(DiscreteDistributions, BinomialVariatesFitAndRepeat) {
  VexaDigitsScope digits(15);
  vexa::SeedRandom(2026);
  struct Case {
    long n;
    const char* q;
    int draws;
    long cells;  // each cell costs a distribution function of up to sd sqrt(Digits) terms
  };
  for (const Case& c :
       {Case{20, "0.3", 100000, 80}, Case{1000, "0.3", 100000, 80},
        Case{1000000, "0.3", 100000, 40}, Case{150, "0.93", 100000, 80},
        Case{1000000000, "0.0000000045", 20000, 80}, Case{1000000000, "0.3", 20000, 16}}) {
    const VexaFloat q = F(c.q);
    const auto draws = Draw(c.draws, [&] { return STATS_BinomialRandomVariate_MP(Kv(), c.n, q); });
    ExpectFits(
        "binomial " + std::to_string(c.n) + " " + c.q, draws,
        [&](long k) { return STATS_BinomialProbability_MP(Kv(), VexaFloat(k), c.n, q); }, c.cells);
  }
  VexaDigitsScope wide(50);
  const auto draws =
      Draw(20000, [] { return STATS_BinomialRandomVariate_MP(Kv(), 500, F("0.4")); });
  ExpectFits("binomial 500 0.4 at Digits 50", draws, [](long k) {
    return STATS_BinomialProbability_MP(Kv(), VexaFloat(k), 500, F("0.4"));
  });
  // The sample entry, set up once, draws what as many variate calls draw.
  for (const char* q : {"0.3", "0.999", "0.004"}) {
    vexa::SeedRandom(77);
    ALGEB sample = STATS_VexaBinomialRandomSample_MP(
        Kv(), vexa::NewExpseq({vexa::NewInteger(6), vexa::NewInteger(1000000), F(q).Handle()}));
    const VexaFloat* block = static_cast<const VexaFloat*>(RTableDataBlock(Kv(), sample));
    vexa::SeedRandom(77);
    for (int i = 0; i < 6; ++i)
      EXPECT_EQ(Text(block[i]), Text(STATS_BinomialRandomVariate_MP(Kv(), 1000000, F(q)))) << q;
  }
  EXPECT_EQ(Text(STATS_BinomialRandomVariate_MP(Kv(), 12, VexaFloat(1.0))), "12.");
  EXPECT_EQ(Text(STATS_BinomialRandomVariate_MP(Kv(), 12, VexaFloat(0.0))), "0.");
  EXPECT_EQ(ErrorOf([] { STATS_BinomialRandomVariate_MP(Kv(), 12, F("1.5")); }),
            "expected a success probability between 0 and 1, received 1.5");
}

TEST(DiscreteDistributions, SearchAndClosedFormVariatesFit) {
  VexaDigitsScope digits(10);
  vexa::SeedRandom(31);
  const int n = 100000;
  const VexaFloat lambda = F("6.5"), r = F("2.5"), q = F("0.4");
  auto poisson = Draw(n, [&] { return STATS_PoissonRandomVariate_MP(Kv(), lambda); });
  ExpectFits("poisson 6.5", poisson,
             [&](long k) { return STATS_PoissonProbability_MP(Kv(), VexaFloat(k), lambda); });
  auto hyper = Draw(n, [] { return STATS_HypergeometricRandomVariate_MP(Kv(), 50, 20, 15); });
  ExpectFits("hypergeometric 50 20 15", hyper, [](long k) {
    return STATS_HypergeometricProbability_MP(Kv(), VexaFloat(k), 50, 20, 15);
  });
  auto negative = Draw(n, [&] { return STATS_NegativeBinomialRandomVariate_MP(Kv(), r, q); });
  ExpectFits("negative binomial 2.5 0.4", negative, [&](long k) {
    return STATS_NegativeBinomialProbability_MP(Kv(), VexaFloat(k), r, q);
  });
  auto geometric = Draw(n, [&] { return STATS_GeometricRandomVariate_MP(Kv(), q); });
  ExpectFits("geometric 0.4", geometric,
             [&](long k) { return STATS_GeometricProbability_MP(Kv(), VexaFloat(k), q); });
  auto uniform = Draw(n, [] { return STATS_DiscreteUniformRandomVariate_MP(Kv(), -2, 9); });
  ExpectFits("discrete uniform -2 9", uniform,
             [](long k) { return STATS_DiscreteUniformProbability_MP(Kv(), VexaFloat(k), -2, 9); });
  auto bernoulli = Draw(n, [&] { return STATS_BernoulliRandomVariate_MP(Kv(), q); });
  ExpectFits("bernoulli 0.4", bernoulli, [&](long k) { return k == 0 ? 1 - q : VexaFloat(1); });
}

// Empirical entries over host arrays: the method-1 quantile of the data left after missing
// values, weighted or not; the flag decides whether the caller's array is worked on.
TEST(DiscreteDistributions, EmpiricalEntries) {
  VexaDigitsScope digits(10);
  auto call = [](ALGEB (*entry)(VexaKernelVector, ALGEB), const std::vector<ALGEB>& args) {
    return entry(Kv(), vexa::NewExpseq(args));
  };
  auto flag = [](bool b) { return ToVexaBoolean(Kv(), b); };
  ALGEB data = SfloatRTable({"4", "1", "U", "3", "2"}), full = SfloatRTable({"4", "1", "3", "2"});
  ALGEB none = SfloatRTable({});
  const std::string before = Print(data);
  EXPECT_EQ(
      Print(call(STATS_VexaEmpiricalDeviate_MP, {F("0.5").Handle(), data, none, flag(false)})),
      "2.");
  EXPECT_EQ(Print(data), before);
  // In place only when nothing is missing: the caller's array is then reordered.
  EXPECT_EQ(
      Print(call(STATS_VexaEmpiricalDeviate_MP, {F("0.51").Handle(), data, none, flag(true)})),
      "3.");
  EXPECT_EQ(Print(data), before);
  const std::string fullBefore = Print(full);
  EXPECT_EQ(
      Print(call(STATS_VexaEmpiricalDeviate_MP, {F("0.51").Handle(), full, none, flag(true)})),
      "3.");
  EXPECT_NE(Print(full), fullBefore);
  EXPECT_EQ(Print(call(STATS_VexaEmpiricalDeviate_MP,
                       {F("0.5").Handle(), SfloatRTable({"U"}), none, flag(false)})),
            "Float(undefined)");
  EXPECT_EQ(ErrorOf([&] {
              call(STATS_VexaEmpiricalDeviate_MP, {F("1.5").Handle(), data, none, flag(false)});
            }),
            "expected: numeric constant between 0 and 1, received 1.5");

  // Unweighted draws: each of the four values a quarter of the time.
  vexa::SeedRandom(5);
  ALGEB sample =
      call(STATS_VexaEmpiricalRandomSample_MP, {vexa::NewInteger(4000), data, none, flag(false)});
  const VexaFloat* block = static_cast<const VexaFloat*>(RTableDataBlock(Kv(), sample));
  std::map<std::string, int> counts;
  for (int i = 0; i < 4000; ++i) counts[Text(block[i])]++;
  EXPECT_EQ(counts.size(), 4u);
  for (const char* v : {"1.", "2.", "3.", "4."}) EXPECT_NEAR(counts[v], 1000, 120) << v;

  // Weighted: the deviate is the weighted method-1 quantile of the descriptive statistics
  // (missing points dropped with their weights), and each draw that quantile at one uniform.
  ALGEB points = SfloatRTable({"30", "10", "U", "20"}),
        weights = SfloatRTable({"2", "1", "5", "1"});
  auto quantile = [&](const VexaFloat& p) {
    return Print(call(STATS_VexaQuantile_MP,
                      {points, p.Handle(), weights, flag(true), vexa::NewInteger(1), flag(false)}));
  };
  for (const char* p : {"0", "0.1", "0.5", "0.6", "1"})
    EXPECT_EQ(
        Print(call(STATS_VexaEmpiricalDeviate_MP, {F(p).Handle(), points, weights, flag(false)})),
        quantile(F(p)))
        << p;
  vexa::SeedRandom(8);
  sample = call(STATS_VexaEmpiricalRandomSample_MP,
                {vexa::NewInteger(20), points, weights, flag(false)});
  block = static_cast<const VexaFloat*>(RTableDataBlock(Kv(), sample));
  vexa::SeedRandom(8);
  for (int i = 0; i < 20; ++i)
    EXPECT_EQ(Text(block[i]), quantile(STATS_VexaRandomStream_MP::NextDouble())) << i;
  vexa::SeedRandom(8);
  EXPECT_EQ(Print(call(STATS_VexaEmpiricalRandomVariate_MP, {points, weights, flag(true)})),
            Text(block[0]));
}

}  // namespace
