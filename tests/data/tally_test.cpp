// Tallies against a brute-force count on random data that fall on the boundaries, the bin
// rules at the ends, the tally and frequency entry points, counts and the float conversion.
#include <gtest/gtest.h>

#include <random>

#include "descriptive/support.h"
#include "stats/data/data.h"

namespace {

using vexa::NewInteger;
using vexa::NewList;
using vexa::NewRange;
using vexa::Print;

// Data k/8 on a grid that hits every boundary; range j runs from j/4 to j/4 + K/4 in bins of
// 1/4 = 2/8, so the bin of k is found in integers: (k - 2j) / 2, the top end in the last bin.
TEST(Tally, MatchesABruteForceCountOnRandomData) {
  VexaDigitsScope digits(10);
  std::mt19937 rng(3);
  for (int trial = 0; trial < 40; ++trial) {
    const int K = 1 + trial % 6, S = 1 + trial % 3, n = 60;
    std::uniform_int_distribution<int> grid(-4, 2 * K + 2 * S + 4);
    std::vector<int> k(n);
    std::vector<VexaFloat> x(n), w(n);
    for (int i = 0; i < n; ++i) {
      k[i] = grid(rng);
      x[i] = VexaFloat(k[i]) / VexaFloat(8);
      w[i] = VexaFloat(i + 1);
    }
    x[0] = VexaFloatUndefined();
    std::vector<VexaFloat> bounds;
    for (int j = 0; j < S; ++j)
      for (int i = 0; i <= K; ++i) bounds.push_back(VexaFloat(j + i) / VexaFloat(4));
    std::vector<int> expected(S * K, 0), counts(S * K, -1);
    std::vector<long> weightSums(S * K, 0);
    for (int i = 1; i < n; ++i)
      for (int j = 0; j < S; ++j) {
        const int u = k[i] - 2 * j;  // in eighths from the range's lower end
        if (u < 0 || u > 2 * K) continue;
        const int bin = j * K + std::min(u / 2, K - 1);
        ++expected[bin];
        weightSums[bin] += i + 1;
      }
    std::vector<VexaFloat> sums(S * K);
    STATS_SimpleTallyInto_MP(counts.data(), x.data(), n, bounds.data(), S, K);
    STATS_WeightedTallyInto_MP(sums.data(), x.data(), w.data(), n, bounds.data(), S, K);
    EXPECT_EQ(counts, expected) << "K " << K << ", S " << S;
    for (int b = 0; b < S * K; ++b) EXPECT_EQ(Text(sums[b]), Text(VexaFloat(weightSums[b])));
  }
}

TEST(Tally, BinsClosedBelowAndTheLastClosedAbove) {
  VexaDigitsScope digits(10);
  auto tally = [](ALGEB data, ALGEB weights, ALGEB ranges, int K, bool ignore = false) {
    return Print(
        Call(STATS_VexaTallyInto_MP, {data, weights, Bool(ignore), ranges, NewInteger(K)}));
  };
  ALGEB data = SfloatRTable({"0", "0.5", "1", "-0.0000000001"});
  EXPECT_EQ(tally(data, NoWeights(), NewList({NewRange(NewInteger(0), NewInteger(1))}), 2),
            "[0. .. 0.5 = 1, 0.5 .. 1. = 2]");
  // overlapping ranges count a datum in each; weights give float sums
  EXPECT_EQ(
      tally(data, SfloatRTable({"1", "2", "4", "8"}),
            NewList({NewRange(NewInteger(0), NewInteger(1)), NewRange(Num("0.5"), NewInteger(2))}),
            1),
      "[0. .. 1. = 7., 0.5 .. 2. = 6.]");
  ALGEB wide = SfloatRTable({"-1e100", "U", "3"});
  VexaFloat* w = static_cast<VexaFloat*>(RTableDataBlock(Kv(), wide));
  w[0] = VexaFloatInfinity(-1);
  w[2] = VexaFloatInfinity(1);
  ALGEB everything =
      NewList({NewRange(VexaFloatInfinity(-1).Handle(), VexaFloatInfinity(1).Handle())});
  EXPECT_EQ(tally(wide, NoWeights(), everything, 1, true),
            "[Float(-infinity) .. Float(infinity) = 2]");
  EXPECT_EQ(ErrorOf([&] { tally(wide, NoWeights(), everything, 2); }),
            "unable to split the range Float(-infinity) .. Float(infinity)");

  EXPECT_EQ(ErrorOf([&] { Call(STATS_VexaTallyInto_MP, {data}); }),
            "expected 5 arguments, received: " + Print(data));
  EXPECT_EQ(ErrorOf([&] { tally(data, NoWeights(), NewRange(NewInteger(0), NewInteger(1)), 2); }),
            "expected 4th argument to be of type list(range), received: 0 .. 1");
  EXPECT_EQ(
      ErrorOf([&] {
        tally(data, NoWeights(), NewList({NewRange(NewInteger(0), NewInteger(1)), Num("3")}), 2);
      }),
      "invalid argument; expected a positive integer or a list of ranges, received: [0 .. 1, "
      "3.]");
  EXPECT_EQ(ErrorOf([&] { tally(data, NoWeights(), NewList({}), 0); }),
            "invalid argument; expected a positive integer or a list of ranges, received: 0");

  auto frequency = [&](ALGEB range, ALGEB weights) {
    return Print(
        Call(STATS_VexaFrequencyData_MP, {data, weights, Bool(false), range, NewInteger(2)}));
  };
  EXPECT_EQ(frequency(NewRange(NewInteger(0), NewInteger(1)), NoWeights()),
            "[Array(1 .. 2, [0., 0.5], datatype = sfloat), Array(1 .. 2, [0.5, 1.], datatype = "
            "sfloat), Array(1 .. 2, [1., 2.], datatype = sfloat)]");
  EXPECT_EQ(ErrorOf([&] { frequency(NewList({}), NoWeights()); }),
            "expected 4th argument to be of type range, received: []");
}

TEST(Count, DataMissingDataAndFloats) {
  ALGEB data = SfloatRTable({"1", "U", "3"});
  auto count = [&](ALGEB weights, int ignore) {
    return Print(Call(STATS_VexaCount_MP, {data, weights, NewInteger(ignore)}));
  };
  for (int ignore : {0, 1, 2}) EXPECT_EQ(count(NoWeights(), ignore), ignore == 1 ? "2" : "3");
  EXPECT_EQ(count(SfloatRTable({"0.5", "2", "U"}), 0), "Float(undefined)");
  EXPECT_EQ(count(SfloatRTable({"0.5", "2", "U"}), 1), "0.5");
  EXPECT_EQ(Print(Call(STATS_VexaCountMissing_MP, {data, NoWeights()})), "1");
  EXPECT_EQ(Print(Call(STATS_VexaCountMissing_MP, {data, SfloatRTable({"1", "2.5", "4"})})), "2.5");
  EXPECT_EQ(ErrorOf([&] { Call(STATS_VexaCount_MP, {data}); }),
            "expected 3 arguments, received: " + Print(data));
  EXPECT_EQ(ErrorOf([&] { Call(STATS_VexaCountMissing_MP, {data}); }),
            "expected 2 arguments, received: " + Print(data));

  RTableData d[3] = {};
  for (int i = 0; i < 3; ++i) d[i].int32 = 10 * i - 5;
  ALGEB integers = MakeRTable(RTABLE_INTEGER32, RTABLE_RECT, 0, {d[0], d[1], d[2]});
  EXPECT_EQ(Print(Call(STATS_VexaEvaluateToFloat_MP, {integers})),
            "Array(0 .. 2, [-5., 5., 15.], datatype = sfloat)");
  EXPECT_EQ(ErrorOf([&] {
              Call(STATS_VexaEvaluateToFloat_MP, {integers, integers});
            }),
            "expected one argument, received: " + Print(integers) + ", " + Print(integers));
}

}  // namespace
