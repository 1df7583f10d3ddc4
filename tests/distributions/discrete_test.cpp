// The discrete distributions: probabilities against exact and mpmath references, deviates
// inverting their probabilities, the iteration limit, the closed forms and their deliberate
// asymmetries, goodness of fit of the variates at a fixed seed, and the empirical entries.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
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

// Each law by name, its parameters in a.
VexaFloat Probability(const std::string& law, const VexaFloat& x, const Args& a) {
  if (law == "Binomial") return STATS_BinomialProbability_MP(Kv(), x, L(a[0]), a[1]);
  if (law == "Hypergeometric")
    return STATS_HypergeometricProbability_MP(Kv(), x, L(a[0]), L(a[1]), L(a[2]));
  if (law == "Poisson") return STATS_PoissonProbability_MP(Kv(), x, a[0]);
  if (law == "NegativeBinomial") return STATS_NegativeBinomialProbability_MP(Kv(), x, a[0], a[1]);
  if (law == "Geometric") return STATS_GeometricProbability_MP(Kv(), x, a[0]);
  if (law == "DiscreteUniform")
    return STATS_DiscreteUniformProbability_MP(Kv(), x, L(a[0]), L(a[1]));
  if (law == "Bernoulli") return x < 0 ? VexaFloat(0) : x < 1 ? 1 - a[0] : VexaFloat(1);
  ADD_FAILURE() << law;
  return 0;
}

long Deviate(const std::string& law, const VexaFloat& p, const Args& a) {
  if (law == "Binomial") return STATS_BinomialDeviate_MP(Kv(), p, L(a[0]), a[1]);
  if (law == "Hypergeometric")
    return STATS_HypergeometricDeviate_MP(Kv(), p, L(a[0]), L(a[1]), L(a[2]));
  if (law == "Poisson") return STATS_PoissonDeviate_MP(Kv(), p, a[0]);
  if (law == "NegativeBinomial") return STATS_NegativeBinomialDeviate_MP(Kv(), p, a[0], a[1]);
  if (law == "Geometric") return STATS_GeometricDeviate_MP(Kv(), p, a[0]);
  if (law == "DiscreteUniform") return STATS_DiscreteUniformDeviate_MP(Kv(), p, L(a[0]), L(a[1]));
  if (law == "Bernoulli") return STATS_BernoulliDeviate_MP(Kv(), p, a[0]);
  ADD_FAILURE() << law;
  return 0;
}

VexaFloat Variate(const std::string& law, const Args& a) {
  if (law == "Binomial") return STATS_BinomialRandomVariate_MP(Kv(), L(a[0]), a[1]);
  if (law == "Hypergeometric")
    return STATS_HypergeometricRandomVariate_MP(Kv(), L(a[0]), L(a[1]), L(a[2]));
  if (law == "Poisson") return STATS_PoissonRandomVariate_MP(Kv(), a[0]);
  if (law == "NegativeBinomial") return STATS_NegativeBinomialRandomVariate_MP(Kv(), a[0], a[1]);
  if (law == "Geometric") return STATS_GeometricRandomVariate_MP(Kv(), a[0]);
  if (law == "DiscreteUniform")
    return STATS_DiscreteUniformRandomVariate_MP(Kv(), L(a[0]), L(a[1]));
  if (law == "Bernoulli") return STATS_BernoulliRandomVariate_MP(Kv(), a[0]);
  ADD_FAILURE() << law;
  return 0;
}

std::string Name(const std::string& law, const Args& a) {
  std::string name = law;
  for (const VexaFloat& x : a) name += " " + Text(x);
  return name;
}

TEST(DiscreteDistributions, ProbabilitiesMatchReferenceValues) {
  int cases = 0;
  for (const vexa_test::Case& c : vexa_test::ReadCases("discrete_distributions.txt")) {
    VexaDigitsScope digits(c.digits);
    Args args;
    for (size_t i = 1; i < c.args.size(); ++i) args.push_back(F(c.args[i]));
    const std::string law = c.op.substr(0, c.op.size() - std::string("Probability").size());
    const VexaFloat got = Probability(law, F(c.args[0]), args);
    EXPECT_EQ(Text(got), Text(F(c.expected) + VexaFloat(0))) << "line " << c.line << " " << c.op;
    ++cases;
  }
  EXPECT_EQ(cases, 50);
}

// A deviate and its probability: P(d - 1) < p <= P(d).
TEST(DiscreteDistributions, DeviatesInvertProbabilities) {
  struct Row {
    const char* law;
    Args params;
    long lowest;  // the smallest point of the support
  };
  const std::vector<Row> rows = {
      {"Binomial", {40, F("0.3")}, 0},     {"Binomial", {1000000, F("0.01")}, 0},
      {"Poisson", {F("0.4")}, 0},          {"Poisson", {250}, 0},
      {"Hypergeometric", {60, 25, 30}, 0}, {"NegativeBinomial", {F("3.5"), F("0.2")}, 0},
      {"Geometric", {F("0.15")}, 0},       {"DiscreteUniform", {-3, 7}, -3},
  };
  for (int digits : {10, 40}) {
    VexaDigitsScope scope(digits);
    for (const Row& r : rows) {
      for (const char* text :
           {"1e-9", "0.001", "0.05", "0.2", "0.5", "0.61", "0.9", "0.999", "0.9999999"}) {
        const VexaFloat p = F(text);
        const long d = Deviate(r.law, p, r.params);
        SCOPED_TRACE(Name(r.law, r.params) + " p " + text + " d " + std::to_string(d));
        // Below the support the library-backed laws refuse the point.
        if (d > r.lowest) {
          EXPECT_LT(Probability(r.law, VexaFloat(d - 1), r.params), p);
        }
        EXPECT_GE(Probability(r.law, VexaFloat(d), r.params), p);
      }
    }
  }
}

// The range guards (the library would refuse L > N if it were called), the floor of a fractional
// point (the Poisson probability truncates), the search ends, and the closed forms with the
// Bernoulli deviate's test p > 1 - q against the variate's u <= q.
TEST(DiscreteDistributions, EdgesOfTheSearchesAndClosedForms) {
  VexaDigitsScope digits(10);
  const VexaFloat q = F("0.3");
  struct Row {
    const char* law;
    const char* at;
    Args params;
    const char* want;  // a probability, or a deviate when it has no point
  };
  for (const Row& r : std::vector<Row>{
           {"Hypergeometric", "-0.5", {3, 4, 2}, "0."},
           {"Hypergeometric", "2.5", {3, 4, 2}, "1."},
           {"Hypergeometric", "4.5", {3, 4, 9}, "1."},
           {"Hypergeometric", "1", {3, 4, 2}, "2"},
           {"Hypergeometric", "1", {60, 25, 30}, "25"},
           {"Geometric", "-1", {q}, "0."},
           {"Geometric", "-2", {q}, "-0.428571429"},
           {"Geometric", "1.5", {q}, "0.51"},
           {"Geometric", "0", {q}, "0"},
           {"DiscreteUniform", "4.5", {3, 7}, "0.4"},
           {"DiscreteUniform", "2.9", {3, 7}, "0."},
           {"DiscreteUniform", "7.1", {3, 7}, "1."},
           {"DiscreteUniform", "0", {3, 7}, "3"},
           {"DiscreteUniform", "1", {3, 7}, "7"},
           {"Bernoulli", "0.7", {q}, "0"},
           {"Bernoulli", "0.7000000001", {q}, "1"},
           // lambda below 1: the search starts its right end at 1, not at the left barrier 0
           {"Poisson", "0.5", {F("0.4")}, "0"},
           {"Poisson", "0.95", {F("0.4")}, "2"}}) {
    const bool deviate = std::string(r.want).find('.') == std::string::npos;
    EXPECT_EQ(deviate ? std::to_string(Deviate(r.law, F(r.at), r.params))
                      : Text(Probability(r.law, F(r.at), r.params)),
              r.want)
        << r.law << " at " << r.at;
  }
  EXPECT_EQ(Probability("Binomial", F("2.7"), {10, q}), Probability("Binomial", 2, {10, q}));
  EXPECT_EQ(Probability("Poisson", F("-0.5"), {2}), Probability("Poisson", 0, {2}));
  EXPECT_EQ(Text(STATS_BernoulliProbability_MP(Kv(), 0, q)), "0.7");
  EXPECT_EQ(Text(STATS_BernoulliProbability_MP(Kv(), 1, q)), "0.3");
  EXPECT_EQ(Text(STATS_BernoulliProbability_MP(Kv(), 2, q)), "0.");
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

// Pearson's statistic of n draws against the law's distribution function, over at most maxCells
// cells of equal width between the least and the greatest draw (the outer ones open), neighbours
// pooled until each expects 10 draws; compared with the chi-square quantile at 1 - 10^-6.
void ExpectFits(const std::string& law, const Args& params, int n, long maxCells = 80) {
  const std::string name = Name(law, params) + " at Digits " + std::to_string(VexaDigits());
  std::vector<long> draws;
  for (int i = 0; i < n; ++i) draws.push_back(L(Variate(law, params)));
  std::sort(draws.begin(), draws.end());
  const long lo = draws.front(), hi = draws.back();
  const long stride = std::max(1L, (hi - lo + 1) / maxCells);
  double statistic = 0, expected = 0, observed = 0, previousF = 0, previousCount = 0;
  int cells = 0;
  for (long cut = lo + stride - 1;; cut += stride) {
    const bool last = cut >= hi;
    const double f =
        last ? 1.0 : std::stod(Text(Probability(law, VexaFloat(cut), params) + VexaFloat(0)));
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

TEST(DiscreteDistributions, BinomialVariatesFitAndRepeat) {
  vexa::SeedRandom(2026);
  struct Case {
    long n;
    const char* q;
    int draws;
    long cells;  // each cell costs a distribution function of up to sd sqrt(Digits) terms
    int digits;
  };
  for (const Case& c : {Case{20, "0.3", 100000, 80, 15}, Case{1000, "0.3", 100000, 80, 15},
                        Case{1000000, "0.3", 100000, 40, 15}, Case{150, "0.93", 100000, 80, 15},
                        Case{1000000000, "0.0000000045", 20000, 80, 15},
                        Case{1000000000, "0.3", 20000, 16, 15}, Case{500, "0.4", 20000, 80, 50}}) {
    VexaDigitsScope digits(c.digits);
    ExpectFits("Binomial", {VexaFloat(c.n), F(c.q)}, c.draws, c.cells);
  }
  VexaDigitsScope digits(50);
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
  const VexaFloat q = F("0.4");
  ExpectFits("Poisson", {F("6.5")}, 100000);
  ExpectFits("Hypergeometric", {50, 20, 15}, 100000);
  ExpectFits("NegativeBinomial", {F("2.5"), q}, 100000);
  ExpectFits("Geometric", {q}, 100000);
  ExpectFits("DiscreteUniform", {-2, 9}, 100000);
  ExpectFits("Bernoulli", {q}, 100000);
}

// Empirical entries over host arrays: the method-1 quantile of the data left after missing
// values, weighted or not; the flag decides whether the caller's array is worked on.
TEST(DiscreteDistributions, EmpiricalEntries) {
  VexaDigitsScope digits(10);
  auto call = [](ALGEB (*entry)(VexaKernelVector, ALGEB), const std::vector<ALGEB>& args) {
    return entry(Kv(), vexa::NewExpseq(args));
  };
  auto flag = [](bool b) { return ToVexaBoolean(Kv(), b); };
  ALGEB none = SfloatRTable({});
  auto deviate = [&](const char* p, ALGEB data, ALGEB weights, bool inPlace) {
    return Print(
        call(STATS_VexaEmpiricalDeviate_MP, {F(p).Handle(), data, weights, flag(inPlace)}));
  };
  ALGEB data = SfloatRTable({"4", "1", "U", "3", "2"}), full = SfloatRTable({"4", "1", "3", "2"});
  const std::string before = Print(data), fullBefore = Print(full);
  EXPECT_EQ(deviate("0.5", data, none, false), "2.");
  // In place only when nothing is missing: the caller's array is then reordered.
  EXPECT_EQ(deviate("0.51", data, none, true), "3.");
  EXPECT_EQ(Print(data), before);
  EXPECT_EQ(deviate("0.51", full, none, true), "3.");
  EXPECT_NE(Print(full), fullBefore);
  EXPECT_EQ(deviate("0.5", SfloatRTable({"U"}), none, false), "Float(undefined)");
  EXPECT_EQ(ErrorOf([&] { deviate("1.5", data, none, false); }),
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
    EXPECT_EQ(deviate(p, points, weights, false), quantile(F(p))) << p;
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
