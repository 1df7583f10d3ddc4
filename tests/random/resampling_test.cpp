// The alias urn, the uniform index rule and the bootstrap entry points.
#include "stats/random/resampling.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>

#include "descriptive/support.h"
#include "stats/descriptive/descriptive.h"
#include "stats/random/random_stream.h"

namespace {

using Stream = STATS_VexaRandomStream_MP;

ALGEB I(long long v) {
  return vexa::NewInteger(v);
}

// Message prefixes of the host errors an entry point raises, one call per row.
void ExpectErrors(ALGEB (*entry)(VexaKernelVector, ALGEB),
                  const std::vector<std::pair<std::vector<ALGEB>, std::string>>& rows) {
  for (const auto& r : rows)
    EXPECT_EQ(ErrorOf([&] { Call(entry, r.first); }).rfind(r.second, 0), 0u) << r.second;
}

TEST(AliasUrn, Tables) {
  const struct {
    int N;
    std::vector<std::string> weights, probabilities;
    std::vector<int> aliases;
  } cases[] = {{3, {"1", "1", "2"}, {"0.75", "0.75", "1"}, {2, 2, 2}},
               {4, {"1", "1", "2"}, {"1", "1", "1", "0"}, {0, 1, 2, 2}},  // position 3 empty
               {2, {"3", "1"}, {"1", "0.5"}, {0, 0}}};
  for (const auto& c : cases) {
    std::vector<VexaFloat> w = Floats(c.weights);
    STATS_AliasUrnGenerator_MP urn(c.N, static_cast<int>(w.size()), w.data());
    for (int j = 0; j < c.N; ++j) {
      EXPECT_TRUE(urn.Probability(j) == F(c.probabilities[j])) << c.N << " " << j;
      EXPECT_EQ(urn.Alias(j), c.aliases[j]) << c.N << " " << j;
    }
  }
  // uneven weights, rounding leftovers included: each index's own part of its bucket and the
  // rest of every bucket naming it as alias add up to its weight's share
  std::vector<VexaFloat> w = Floats({"1", "2", "4", "0", "0.3", "7.7", "1e-3"});
  STATS_AliasUrnGenerator_MP urn(7, 7, w.data());
  std::vector<double> share(7, 0.0);
  for (int j = 0; j < 7; ++j) {
    const double p = std::min(std::stod(Text(urn.Probability(j))), 1.0);
    share[j] += p / 7;
    share[urn.Alias(j)] += (1 - p) / 7;
  }
  for (int j = 0; j < 7; ++j) EXPECT_NEAR(share[j], std::stod(Text(w[j])) / 15.001, 1e-9) << j;
}

// Each draw replayed from the host's words: the top 32 - shift bits, redrawn until below the
// range. The urn keeps one bit more than the range needs; the index rule the fewest bits with
// 2^31 - 1 shifted alike at most n - 1.
TEST(AliasUrn, DrawsTakeTheirBitsFromTheHostWords) {
  const struct {
    uint64_t n;
    int urnShift, indexShift;
  } cases[] = {{1, 31, 31}, {2, 30, 30},    {3, 29, 30},    {4, 29, 29},
               {5, 28, 29}, {1000, 21, 22}, {1024, 21, 21}, {1025, 20, 21}};
  for (const auto& c : cases) {
    std::vector<VexaFloat> w(c.n, VexaFloat(1));  // every bucket full: it answers itself
    STATS_AliasUrnGenerator_MP urn(static_cast<int>(c.n), static_cast<int>(c.n), w.data());
    for (int seed = 1; seed <= 20; ++seed) {
      vexa::SeedRandom(seed);
      const uint32_t drawn = urn.Next(), index = Stream::NextIndex(c.n);
      const uint32_t after = Stream::NextInteger();
      vexa::SeedRandom(seed);
      uint32_t k;
      do k = VexaRandomInt32(Kv()) >> c.urnShift;
      while (k >= c.n);
      VexaRandomSoftwareFloat01(Kv());
      EXPECT_EQ(drawn, k) << c.n;
      do k = VexaRandomInt32(Kv()) >> c.indexShift;
      while (k >= c.n);
      EXPECT_EQ(index, k) << c.n;
      EXPECT_EQ(after, VexaRandomInt32(Kv())) << c.n;
    }
  }
}

TEST(AliasUrn, FrequenciesOfAMillionDrawsFollowTheWeights) {
  const std::vector<double> weights = {0, 1, 2.5, 0.5, 3, 7, 1, 1, 4, 0.25};
  std::vector<VexaFloat> w(weights.begin(), weights.end());
  STATS_AliasUrnGenerator_MP urn(10, 10, w.data());
  vexa::SeedRandom(2024);
  const int draws = 1000000;
  std::vector<long> counts(10, 0);
  for (int i = 0; i < draws; ++i) ++counts[urn.Next()];
  EXPECT_EQ(counts[0], 0);  // a zero weight is never drawn
  double chi2 = 0;
  for (int j = 1; j < 10; ++j) {
    const double expected = draws * weights[j] / 20.25;
    chi2 += (counts[j] - expected) * (counts[j] - expected) / expected;
  }
  EXPECT_LT(chi2, 26.12);  // 9 cells, 8 degrees of freedom: the 0.999 quantile
}

TEST(AliasUrnSample, IndicesInAnIntegerArray) {
  ALGEB out = Call(STATS_VexaAliasUrnSample_MP, {I(500), SfloatRTable({"0", "1", "0", "3"})});
  RTableSettings s;
  RTableGetSettings(Kv(), &s, out);
  EXPECT_EQ(s.data_type, RTABLE_INTEGER32);
  ASSERT_EQ(RTableNumElements(Kv(), out), 500);
  const auto* k = static_cast<const INTEGER32*>(RTableDataBlock(Kv(), out));
  for (int i = 0; i < 500; ++i) ASSERT_TRUE(k[i] == 1 || k[i] == 3) << k[i];
  ExpectErrors(STATS_VexaAliasUrnSample_MP,
               {{{Num("2.5"), NoWeights()}, "invalid sample length, expected positive integer"},
                {{I(3), NoWeights()}, "expected: non-empty array of weights"}});
}

// An rtable 1 .. n of data type dt whose elements are distinct in every byte they have.
ALGEB TypedArray(int dt, int n) {
  std::vector<RTableData> d(n);
  for (int i = 0; i < n; ++i) {
    const long long v = 1000003LL * (i + 1);
    switch (dt) {
      case RTABLE_DAG:
        d[i].dag = I(v);
        break;
      case RTABLE_CXDAG:
        d[i].cxdag = {I(v), I(-v)};
        break;
      case RTABLE_INTEGER8:
        d[i].int8 = static_cast<INTEGER8>(i + 1);
        break;
      case RTABLE_INTEGER16:
        d[i].int16 = static_cast<INTEGER16>(300 * (i + 1));
        break;
      case RTABLE_INTEGER32:
        d[i].int32 = static_cast<INTEGER32>(v);
        break;
      case RTABLE_INTEGER64:
        d[i].int64 = v << 20;
        break;
      case RTABLE_FLOAT64:
        d[i].float64 = v + 0.5;
        break;
      case RTABLE_COMPLEX:
        d[i].complexf64 = {v + 0.25, -0.5 * v};
        break;
      case RTABLE_FLOAT32:
        d[i].float32 = static_cast<float>(i + 1) + 0.5f;
        break;
    }
  }
  return MakeRTable(dt, RTABLE_RECT, 1, d);
}

TEST(BootstrapSample, CopiesWholeElementsOfEveryDataType) {
  for (int dt = 0; dt < RTABLE_NUM_DATATYPES; ++dt) {
    ALGEB A = TypedArray(dt, 7);
    vexa::SeedRandom(17 + dt);
    ALGEB out = Call(STATS_VexaBootstrapSample_MP, {A, I(3), I(4), NoWeights()});
    RTableSettings s;
    RTableGetSettings(Kv(), &s, out);
    EXPECT_EQ(s.data_type, dt);
    EXPECT_EQ(RTableUpperBound(Kv(), out, 1) * 10 + RTableUpperBound(Kv(), out, 2), 34);
    const size_t width = RTableElementWidth(Kv(), dt);
    const char* from = static_cast<const char*>(RTableDataBlock(Kv(), A));
    const char* to = static_cast<const char*>(RTableDataBlock(Kv(), out));
    vexa::SeedRandom(17 + dt);
    for (int i = 0; i < 12; ++i)
      EXPECT_EQ(std::memcmp(to + i * width, from + Stream::NextIndex(7) * width, width), 0) << dt;
  }
}

TEST(BootstrapSample, WeightsEmptyResultsAndFailures) {
  ALGEB A = TypedArray(RTABLE_FLOAT64, 4);
  ALGEB out =
      Call(STATS_VexaBootstrapSample_MP, {A, I(5), I(2), SfloatRTable({"0", "0", "2", "0"})});
  for (int i = 0; i < 10; ++i)  // only element 3 has weight
    EXPECT_EQ(static_cast<const double*>(RTableDataBlock(Kv(), out))[i], 3000009.5);
  vexa::SeedRandom(9);  // no rows: an empty array, and no draw made
  EXPECT_EQ(
      RTableNumElements(Kv(), Call(STATS_VexaBootstrapSample_MP, {A, I(0), I(3), NoWeights()})), 0);
  const uint32_t next = VexaRandomInt32(Kv());
  vexa::SeedRandom(9);
  EXPECT_EQ(next, VexaRandomInt32(Kv()));
  ExpectErrors(STATS_VexaBootstrapSample_MP,
               {{{A, I(1), I(1), I(0)}, "expected: one-dimensional array, received 0"},
                {{A, I(2), I(2), SfloatRTable({"1", "2"})},
                 "data array and weights array must have the same number of elements"},
                {{NoWeights(), I(2), I(2), NoWeights()}, "expected: non-empty data array"}});
}

// A statistic procedure: the arithmetic mean of the sfloat array it is given.
ALGEB MeanProc(int* calls) {
  return CountingProc(calls, [](ALGEB args) {
    ALGEB a = vexa::Op(args, 1);
    return vexa::NewFloat(STATS_Mean_MP(Kv(), static_cast<VexaFloat*>(RTableDataBlock(Kv(), a)),
                                        nullptr, static_cast<int>(RTableNumElements(Kv(), a)),
                                        STATS_MEAN_ARITHMETIC_MP));
  });
}

TEST(BootstrapStatistic, MeansOfResamplesCentreOnTheSampleMeanAndSpreadByItsError) {
  VexaDigitsScope digits(15);
  std::vector<std::string> data;
  double sum = 0, sum2 = 0;
  for (int i = 0; i < 200; ++i) {
    const double v = (i * 37 % 101) / 8.0;  // exact in three decimals
    data.push_back(std::to_string(v));
    sum += v;
    sum2 += v * v;
  }
  const double mean = sum / 200, se2 = (sum2 / 200 - mean * mean) / 200;
  int calls = 0;
  const int R = 4000;
  vexa::SeedRandom(77);
  ALGEB out = Call(STATS_VexaBootstrapStatistic_MP,
                   {SfloatRTable(data), NoWeights(), MeanProc(&calls), I(200), I(R)});
  EXPECT_EQ(calls, R);
  double bsum = 0, bsum2 = 0;
  for (int i = 0; i < R; ++i) {
    const double v = std::stod(Text(static_cast<const VexaFloat*>(RTableDataBlock(Kv(), out))[i]));
    bsum += v;
    bsum2 += v * v;
  }
  const double bmean = bsum / R;
  EXPECT_NEAR(bmean, mean, 4 * std::sqrt(se2 / R));
  EXPECT_NEAR((bsum2 / R - bmean * bmean) / se2, 1.0, 0.1);

  // weighted: only the weighted point is drawn, whatever the resample size
  out = Call(
      STATS_VexaBootstrapStatistic_MP,
      {SfloatRTable({"1", "2", "3"}), SfloatRTable({"0", "1", "0"}), MeanProc(&calls), I(5), I(3)});
  for (int i = 0; i < 3; ++i)
    EXPECT_TRUE(static_cast<const VexaFloat*>(RTableDataBlock(Kv(), out))[i] == 2) << i;
  ExpectErrors(STATS_VexaBootstrapStatistic_MP,
               {{{SfloatRTable({"1", "2"}), NoWeights(), MeanProc(&calls), I(3), I(2)},
                 "invalid resample size, expected: integer between 0 and 2, received: 3"}});
}

TEST(BootstrapStatisticRV, StatisticOfEachGeneratedValue) {
  int made = 0, summarised = 0;
  ALGEB G = CountingProc(&made, [&](ALGEB args) {
    return vexa::NewFloat(VexaFloat(vexa::Op(args, 1)) * VexaFloat(made));
  });
  ALGEB P = CountingProc(
      &summarised, [](ALGEB args) { return vexa::NewFloat(VexaFloat(vexa::Op(args, 1)) + 1); });
  ALGEB out = Call(STATS_VexaBootstrapStatisticRV_MP, {G, P, Num("0.5"), I(3)});
  const auto* y = static_cast<const VexaFloat*>(RTableDataBlock(Kv(), out));
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(y[i] == F("0.5") * (i + 1) + 1) << i;
}

TEST(Progress, ReportsThroughTheInfoChannelWhenAsked) {
  std::FILE* out = std::tmpfile();
  vexa::SetInfoStream(out);
  ALGEB infolevel = vexa::NewName("infolevel");
  STATS_Progress_MP(Kv(), "bootstrap", 10, "replicates", 0.0).Update(1);  // not asked for
  vexa::AssignIndexed(infolevel, {vexa::NewName("Statistics")}, I(1));
  STATS_Progress_MP(Kv(), "bootstrap", 10000, "replicates", 0.0).Update(4000);
  STATS_Progress_MP(Kv(), "bootstrap", 10, "replicates", 3600.0).Update(5);  // not yet due
  vexa::SetInfoStream(stdout);
  vexa::TableRemove(vexa::Lookup(infolevel), vexa::NewName("Statistics"));
  std::rewind(out);
  char buf[256] = {0};
  const size_t n = std::fread(buf, 1, sizeof buf - 1, out);
  std::fclose(out);
  EXPECT_EQ(std::string(buf, n), "Statistics: bootstrap: 4000 of 10000 replicates\n");
}

}  // namespace
