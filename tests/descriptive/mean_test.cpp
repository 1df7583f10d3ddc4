// Means of every kind, trimmed and winsorized means against their brute-force definitions,
// moments, expected values and deviations, weighted against unweighted, and the messages of
// their entry points.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "descriptive/support.h"
#include "stats/descriptive/descriptive.h"

namespace {

using vexa::NewInteger;
using vexa::NewList;
using vexa::Print;

std::string Mean(ALGEB data, ALGEB weights, int type, bool ignore = false) {
  return Print(Call(STATS_VexaMean_MP, {data, weights, Bool(ignore), NewInteger(type)}));
}

// n random decimals of three places in (0, 10], so that sums at Digits 30 are exact.
std::vector<VexaFloat> RandomData(std::mt19937& rng, int n) {
  std::uniform_int_distribution<int> d(1, 10000);
  std::vector<VexaFloat> v;
  for (int i = 0; i < n; ++i) v.push_back(VexaFloat(d(rng)) / VexaFloat(1000));
  return v;
}

TEST(Mean, FourKindsRoundedOnce) {
  VexaDigitsScope digits(10);
  ALGEB data = SfloatRTable({"1", "2", "4"});
  EXPECT_EQ(Mean(data, NoWeights(), 2), "1.714285714");  // 12/7
  EXPECT_EQ(Mean(data, NoWeights(), 3), "2.645751311");  // sqrt(7)
  for (int type : {0, 4, -1}) EXPECT_EQ(Mean(data, NoWeights(), type), "2.333333333");
  // the logarithms are rounded before they are summed: within a few units of the last place
  EXPECT_LT(fabs(VexaFloat(Call(STATS_VexaMean_MP, {SfloatRTable({"2", "8"}), NoWeights(),
                                                    Bool(false), NewInteger(1)})) -
                 VexaFloat(4)),
            VexaFloat(1e-8));
  {
    VexaDigitsScope wide(30);
    EXPECT_EQ(Mean(data, NoWeights(), 2), "1.71428571428571428571428571429");
  }
  // weights 2 and 1 are the data 1, 1, 2
  EXPECT_EQ(Mean(SfloatRTable({"1", "2"}), SfloatRTable({"2", "1"}), 2), "1.2");
  EXPECT_EQ(Mean(SfloatRTable({"1", "2"}), SfloatRTable({"2", "1"}), 0), "1.333333333");
  // missing data: kept they make the mean undefined, dropped they are not counted
  ALGEB missing = SfloatRTable({"1", "U", "3"});
  EXPECT_EQ(Mean(missing, NoWeights(), 0), "Float(undefined)");
  EXPECT_EQ(Mean(missing, NoWeights(), 0, true), "2.");
  EXPECT_EQ(Mean(missing, SfloatRTable({"1", "1", "3"}), 0, true), "2.5");
  EXPECT_EQ(Print(missing), "Array(1 .. 3, [1., Float(undefined), 3.], datatype = sfloat)");
  EXPECT_EQ(Mean(SfloatRTable({}), NoWeights(), 0), "Float(undefined)");
}

TEST(Mean, UnitWeightsAgreeWithTheSimpleForms) {
  VexaDigitsScope digits(20);
  std::mt19937 rng(11);
  for (int n : {1, 7, 50}) {
    std::vector<VexaFloat> x = RandomData(rng, n), ones(n, VexaFloat(1));
    for (int type = 0; type <= 3; ++type) {
      const auto t = static_cast<STATS_MEAN_TYPE_MP>(type);
      EXPECT_EQ(Text(STATS_WeightedMean_MP(Kv(), x.data(), ones.data(), n, t)),
                Text(STATS_SimpleMean_MP(Kv(), x.data(), n, t)));
    }
    int orders[3] = {1, 2, 5};
    VexaFloat simple[3], weighted[3];
    STATS_Moment_MP(simple, x.data(), nullptr, n, orders, 3, VexaFloat(3));
    STATS_Moment_MP(weighted, x.data(), ones.data(), n, orders, 3, VexaFloat(3));
    for (int j = 0; j < 3; ++j) EXPECT_EQ(Text(weighted[j]), Text(simple[j]));
    EXPECT_EQ(Text(STATS_AbsoluteDeviation_MP(x.data(), ones.data(), n, VexaFloat(5))),
              Text(STATS_AbsoluteDeviation_MP(x.data(), nullptr, n, VexaFloat(5))));
    VexaFloat (*root)(VexaFloat) = [](VexaFloat y) { return sqrt(y); };
    EXPECT_EQ(Text(STATS_ExpectedValue_MP(root, x.data(), ones.data(), n)),
              Text(STATS_ExpectedValue_MP(root, x.data(), nullptr, n)));
  }
}

// The simple cut rule on the sorted data s: lo = [n pl / 100 + 1/2], hi likewise; s[lo ..
// hi - 1] kept when lo + hi = n, one fewer at the top otherwise.
TEST(TrimmedMean, SimpleFormsMatchTheirDefinitionsOnRandomData) {
  VexaDigitsScope digits(30);
  std::mt19937 rng(7);
  std::uniform_int_distribution<int> percent(0, 100);
  for (int trial = 0; trial < 200; ++trial) {
    // every fourth trial: symmetric cuts of whole elements
    const bool whole = trial % 4 == 0;
    const int n = whole ? 20 * (1 + trial % 3) : 1 + trial % 23;
    int pl = whole ? 5 * (percent(rng) % 10) : percent(rng), pu = whole ? 100 - pl : percent(rng);
    if (pl > pu) std::swap(pl, pu);
    std::vector<VexaFloat> x = RandomData(rng, n), s = x;
    std::sort(s.begin(), s.end(), [](const VexaFloat& a, const VexaFloat& b) { return a < b; });
    const int lo = (n * pl + 50) / 100, hi = (n * pu + 50) / 100;
    const int top = lo + hi == n ? hi : hi - 1;
    const VexaFloat lower = VexaFloat(pl) / VexaFloat(100), upper = VexaFloat(pu) / VexaFloat(100);
    std::vector<VexaFloat> a = x, b = x;
    const VexaFloat t =
        STATS_TrimmedMean_MP(Kv(), a.data(), nullptr, n, lower, upper, STATS_MEAN_ARITHMETIC_MP);
    const VexaFloat w =
        STATS_WinsorizedMean_MP(Kv(), b.data(), nullptr, n, lower, upper, STATS_MEAN_ARITHMETIC_MP);
    const std::string where =
        "n " + std::to_string(n) + ", " + std::to_string(pl) + " .. " + std::to_string(pu);
    if (top <= lo) {
      EXPECT_TRUE(IsVexaFloatUndefined(t) && IsVexaFloatUndefined(w)) << where;
      continue;
    }
    VexaFloat trimmed, winsorized;
    for (int i = lo; i < top; ++i) trimmed += s[i];
    for (int i = 0; i < n; ++i) winsorized += s[std::min(std::max(i, lo), top - 1)];
    EXPECT_EQ(Text(t), Text(trimmed / VexaFloat(top - lo))) << where;
    EXPECT_EQ(Text(w), Text(winsorized / VexaFloat(n))) << where;
  }
}

// Weighted cuts against unit cells: with integer weights each datum is w cells of weight 1,
// and the trimmed mean is the integral of the quantile function over [a, b] = [lower W,
// upper W] divided by b - a; winsorized, the parts below a and above b take the values of the
// first and last cells that reach into [a, b].
TEST(TrimmedMean, WeightedFormsMatchUnitCellsOnRandomData) {
  VexaDigitsScope digits(40);
  std::mt19937 rng(29);
  std::uniform_int_distribution<int> percent(0, 100), weight(0, 4);
  for (int trial = 0; trial < 100; ++trial) {
    const int n = 1 + trial % 13;
    int pl = percent(rng), pu = percent(rng);
    if (pl > pu) std::swap(pl, pu);
    std::vector<VexaFloat> x = RandomData(rng, n), w(n), cells;
    for (int i = 0; i < n; ++i) w[i] = VexaFloat(i == 0 ? 1 + weight(rng) : weight(rng));
    std::vector<std::pair<VexaFloat, int>> sorted;
    for (int i = 0; i < n; ++i) sorted.push_back({x[i], FloatToInt(w[i])});
    std::sort(sorted.begin(), sorted.end(),
              [](const auto& p, const auto& q) { return p.first < q.first; });
    for (const auto& p : sorted) cells.insert(cells.end(), p.second, p.first);
    const VexaFloat total(static_cast<int>(cells.size()));
    const VexaFloat lower = VexaFloat(pl) / VexaFloat(100), upper = VexaFloat(pu) / VexaFloat(100);
    const VexaFloat a = lower * total, b = upper * total;
    VexaFloat integral, first, last;
    bool reached = false;
    for (size_t j = 0; j < cells.size(); ++j) {
      const VexaFloat lo = VexaFloat(static_cast<int>(j)), hi = lo + VexaFloat(1);
      const VexaFloat from = lo > a ? lo : a, to = hi < b ? hi : b;
      if (!(to > from)) continue;
      integral += cells[j] * (to - from);
      if (!reached) first = cells[j];
      reached = true;
      last = cells[j];
    }
    std::vector<VexaFloat> x1 = x, w1 = w, x2 = x, w2 = w;
    const VexaFloat t =
        STATS_TrimmedMean_MP(Kv(), x1.data(), w1.data(), n, lower, upper, STATS_MEAN_ARITHMETIC_MP);
    const VexaFloat m = STATS_WinsorizedMean_MP(Kv(), x2.data(), w2.data(), n, lower, upper,
                                                STATS_MEAN_ARITHMETIC_MP);
    const std::string where = "trial " + std::to_string(trial);
    if (!reached) {
      EXPECT_TRUE(IsVexaFloatUndefined(t) && IsVexaFloatUndefined(m)) << where;
      continue;
    }
    EXPECT_EQ(Text(t), Text(integral / (b - a))) << where;
    EXPECT_EQ(Text(m), Text((integral + a * first + (total - b) * last) / total)) << where;
  }
}

TEST(TrimmedMean, CutPointsAndBoundaryWeights) {
  VexaDigitsScope digits(10);
  auto trimmed = [](ALGEB (*entry)(VexaKernelVector, ALGEB), ALGEB data, const char* lo,
                    const char* hi, ALGEB weights) {
    return Print(Call(entry, {data, Num(lo), Num(hi), weights, Bool(false), NewInteger(0)}));
  };
  // n = 10, lo = 0, hi = 9: the block is s[0 .. 7], one fewer at the top
  ALGEB data = SfloatRTable({"100", "8", "0", "7", "1", "6", "2", "5", "3", "4"});
  EXPECT_EQ(trimmed(STATS_VexaTrimmedMean_MP, data, "0", "90", NoWeights()), "3.5");
  EXPECT_EQ(trimmed(STATS_VexaWinsorizedMean_MP, data, "0", "90", NoWeights()), "4.2");
  // lo = 1, hi = 9: s[0] becomes s[1], s[9] becomes s[8]
  EXPECT_EQ(trimmed(STATS_VexaWinsorizedMean_MP, data, "10", "90", NoWeights()), "4.5");
  EXPECT_EQ(Print(data),  // the caller's data are left alone
            "Array(1 .. 10, [100., 8., 0., 7., 1., 6., 2., 5., 3., 4.], datatype = sfloat)");
  EXPECT_EQ(trimmed(STATS_VexaTrimmedMean_MP, data, "50", "50", NoWeights()), "Float(undefined)");
  // weight cut at 30 % of 4 falls inside the second element, which keeps 0.8 of its weight
  ALGEB four = SfloatRTable({"4", "2", "3", "1"}), ones = SfloatRTable({"1", "1", "1", "1"});
  EXPECT_EQ(trimmed(STATS_VexaTrimmedMean_MP, four, "30", "100", ones), "3.071428571");  // 8.6/2.8
  EXPECT_EQ(trimmed(STATS_VexaWinsorizedMean_MP, four, "30", "100", ones), "2.75");      // 2,2,3,4
  EXPECT_EQ(trimmed(STATS_VexaTrimmedMean_MP, four, "0", "100", SfloatRTable({"1", "3", "0", "0"})),
            "2.5");
}

TEST(Moment, OrdersOriginsAndProcedures) {
  VexaDigitsScope digits(10);
  ALGEB data = SfloatRTable({"1", "2", "3", "4"});
  auto moment = [&](ALGEB order, const char* origin, ALGEB weights = nullptr) {
    return Print(Call(STATS_VexaMoment_MP,
                      {data, order, Num(origin), weights ? weights : NoWeights(), Bool(false)}));
  };
  EXPECT_EQ(moment(NewList({NewInteger(1), NewInteger(2), NewInteger(3)}), "0"), "[2.5, 7.5, 25.]");
  EXPECT_EQ(moment(NewList({NewInteger(2), NewInteger(3)}), "2.5"), "[1.25, 0.]");
  EXPECT_EQ(moment(NewInteger(0), "0"), "1.");  // a single order is not checked
  EXPECT_EQ(moment(NewInteger(1), "0", SfloatRTable({"0", "0", "0", "2"})), "4.");

  int calls = 0;
  ALGEB square = CountingProc(&calls, [](ALGEB args) {
    ALGEB x = vexa::Op(args, 1);
    return vexa::Multiply(x, x);
  });
  EXPECT_EQ(Print(Call(STATS_VexaExpectedValue_MP, {square, data, NoWeights(), Bool(false)})),
            "7.5");
  EXPECT_EQ(calls, 4);
  EXPECT_EQ(Print(Call(STATS_VexaAbsoluteDeviation_MP,
                       {data, Num("2"), SfloatRTable({"1", "1", "1", "5"}), Bool(false)})),
            "1.5");
  ALGEB skewed = SfloatRTable({"100", "1", "4", "3", "2"});
  EXPECT_EQ(Print(Call(STATS_VexaMedianDeviation_MP, {skewed, NoWeights(), Bool(false)})), "1.");
  EXPECT_EQ(Print(skewed), "Array(1 .. 5, [100., 1., 4., 3., 2.], datatype = sfloat)");
  EXPECT_EQ(Print(Call(STATS_VexaMedianDeviation_MP,
                       {SfloatRTable({"U", "U"}), NoWeights(), Bool(true)})),
            "Float(undefined)");
}

TEST(MeanEntryPoints, Messages) {
  ALGEB d = SfloatRTable({"1", "2"});
  const std::string seq = Print(d);
  const std::pair<ALGEB (*)(VexaKernelVector, ALGEB), const char*> counts[] = {
      {STATS_VexaMean_MP, "expected 4 arguments"},
      {STATS_VexaWinsorizedMean_MP, "expected 6 arguments"},
      {STATS_VexaMoment_MP, "VexaMoment expects 5 arguments"},
      {STATS_VexaExpectedValue_MP, "VexaExpectedValue expects 4 arguments"},
      {STATS_VexaAbsoluteDeviation_MP, "VexaAbsoluteDeviation expects 4 arguments"},
      {STATS_VexaMedianDeviation_MP, "VexaAbsoluteDeviation expects 3 arguments"}};
  for (const auto& row : counts)
    EXPECT_EQ(ErrorOf([&] { Call(row.first, {d}); }),
              std::string(row.second) + ", received: " + seq);

  auto trim = [&](ALGEB lo, ALGEB hi) {
    return ErrorOf([&] {
      Call(STATS_VexaTrimmedMean_MP, {d, lo, hi, NoWeights(), Bool(false), NewInteger(0)});
    });
  };
  const std::string between = " percentile) to be a numeric constant between 0 and 100, received: ";
  EXPECT_EQ(trim(Num("-1"), Num("50")), "expected second argument (lower" + between + "-1.");
  EXPECT_EQ(trim(Num("0"), Num("100.5")), "expected third argument (upper" + between + "100.5");
  EXPECT_EQ(trim(Num("0"), Num("U")),
            "expected third argument (upper" + between + "Float(undefined)");
  EXPECT_EQ(trim(NewInteger(60), Num("40")),
            "the value of lower percentile is expected to be smaller than the value of upper "
            "percentile, received: 60, 40.");
  EXPECT_EQ(trim(vexa::NewName("p"), Num("40")), "unable to evaluate p to floating-point");

  auto moment = [&](ALGEB order) {
    return ErrorOf([&] { Call(STATS_VexaMoment_MP, {d, order, Num("0"), NoWeights(), Bool(0)}); });
  };
  EXPECT_EQ(moment(NewList({NewInteger(1), NewInteger(0)})),
            "expected: list of positive integers, received [1, 0]");
  EXPECT_EQ(moment(Num("1.5")),
            "expected: numeric constant or a list of numeric constants between 0 and 1, received "
            "1.5");
  EXPECT_EQ(ErrorOf([&] {
              Call(STATS_VexaExpectedValue_MP, {d, d, NoWeights(), Bool(false)});
            }),
            "VexaExpectedValue expects a procedure as its first parameter, received: " + seq);
}

}  // namespace
