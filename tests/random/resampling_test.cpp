// The alias urn, the uniform index rule and the bootstrap entry points.
#include "stats/random/resampling.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

#include "descriptive/support.h"
#include "stats/descriptive/descriptive.h"
#include "stats/random/random_stream.h"

namespace {

using Stream = STATS_VexaRandomStream_MP;

// Every index's share of the urn, from its tables: its own part of its bucket and the
// remainder of every bucket that names it as alias, over N.
std::vector<double> Shares(const STATS_AliasUrnGenerator_MP& urn) {
  const int N = urn.Size();
  std::vector<double> share(N, 0.0);
  for (int j = 0; j < N; ++j) {
    const double p = std::stod(Text(urn.Probability(j)));
    share[j] += std::min(p, 1.0) / N;
    share[urn.Alias(j)] += (1.0 - std::min(p, 1.0)) / N;
  }
  return share;
}

TEST(AliasUrn, TablesOfSmallUrns) {
  struct Case {
    int N, M;
    std::vector<std::string> weights, probabilities;
    std::vector<int> aliases;
  } cases[] = {
      {3, 3, {"1", "1", "2"}, {"0.75", "0.75", "1."}, {2, 2, 2}},
      {4, 3, {"1", "1", "2"}, {"1.", "1.", "1.", "0."}, {0, 1, 2, 2}},  // position 3 is empty
      {1, 1, {"5"}, {"1."}, {0}},
      {2, 2, {"3", "1"}, {"1.", "0.5"}, {0, 0}},
  };
  for (const auto& c : cases) {
    std::vector<VexaFloat> w = Floats(c.weights);
    STATS_AliasUrnGenerator_MP urn(c.N, c.M, w.data());
    for (int j = 0; j < c.N; ++j) {
      EXPECT_TRUE(urn.Probability(j) == F(c.probabilities[j])) << c.N << " " << j;
      EXPECT_EQ(urn.Alias(j), c.aliases[j]) << c.N << " " << j;
    }
  }
  // shares of uneven weights, leftovers from rounding included, match the weights
  std::vector<VexaFloat> w = Floats({"1", "2", "4", "0", "0.3", "7.7", "1e-3"});
  VexaFloat total = 0;
  for (const auto& x : w) total = total + x;
  STATS_AliasUrnGenerator_MP urn(7, 7, w.data());
  const std::vector<double> share = Shares(urn);
  for (int j = 0; j < 7; ++j) EXPECT_NEAR(share[j], std::stod(Text(w[j] / total)), 1e-9) << j;
  urn.Reset(0, 0, nullptr);
  EXPECT_EQ(urn.Size(), 0);
}

// Each draw of the urn and of the index rule, replayed from the host's words: the top
// 32 - shift bits of a word, redrawn until below the range.
TEST(AliasUrn, DrawsTakeTheirBitsFromTheHostWords) {
  struct Case {
    uint64_t n;
    int urnShift, indexShift;  // urn: one bit more than n - 1 needs; index: minimal-bits rule
  } cases[] = {{1, 31, 31}, {2, 30, 30},    {3, 29, 30},    {4, 29, 29},
               {5, 28, 29}, {1000, 21, 22}, {1024, 21, 21}, {1025, 20, 21}};
  for (const auto& c : cases) {
    std::vector<VexaFloat> w(c.n, VexaFloat(1));
    STATS_AliasUrnGenerator_MP urn(static_cast<int>(c.n), static_cast<int>(c.n), w.data());
    for (int seed = 1; seed <= 20; ++seed) {
      vexa::SeedRandom(seed);
      const int drawn = urn.Next();
      const uint32_t index = Stream::NextIndex(c.n);
      const uint32_t after = Stream::NextInteger();
      vexa::SeedRandom(seed);
      uint32_t k;
      do k = VexaRandomInt32(Kv()) >> c.urnShift;
      while (k >= c.n);
      VexaRandomSoftwareFloat01(Kv());  // every bucket is full: its own index
      EXPECT_EQ(drawn, static_cast<int>(k)) << c.n;
      do k = VexaRandomInt32(Kv()) >> c.indexShift;
      while (k >= c.n);
      EXPECT_EQ(index, k) << c.n;
      EXPECT_EQ(after, VexaRandomInt32(Kv())) << c.n;
    }
  }
  // ranges of 2^31 and more keep all 32 bits
  vexa::SeedRandom(5);
  const uint32_t whole = Stream::NextIndex(uint64_t{1} << 32);
  vexa::SeedRandom(5);
  EXPECT_EQ(whole, VexaRandomInt32(Kv()));
}

TEST(AliasUrn, FrequenciesOfAMillionDrawsFollowTheWeights) {
  const std::vector<std::string> texts = {"0", "1", "2.5", "0.5", "3", "7", "1", "1", "4", "0.25"};
  std::vector<VexaFloat> w = Floats(texts);
  double total = 0;
  for (const auto& t : texts) total += std::stod(t);
  STATS_AliasUrnGenerator_MP urn(10, 10, w.data());
  vexa::SeedRandom(2024);
  const int draws = 1000000;
  std::vector<long> counts(10, 0);
  for (int i = 0; i < draws; ++i) ++counts[urn.Next()];
  EXPECT_EQ(counts[0], 0);  // a zero weight is never drawn
  double chi2 = 0;
  for (int j = 1; j < 10; ++j) {
    const double expected = draws * std::stod(texts[j]) / total;
    chi2 += (counts[j] - expected) * (counts[j] - expected) / expected;
  }
  EXPECT_LT(chi2, 26.12);  // 9 cells, 8 degrees of freedom: the 0.999 quantile
}

TEST(AliasUrnSample, IndicesInAnIntegerArray) {
  vexa::SeedRandom(3);
  ALGEB out = Call(STATS_VexaAliasUrnSample_MP,
                   {vexa::NewInteger(2000), SfloatRTable({"0", "1", "0", "3"})});
  RTableSettings s;
  RTableGetSettings(Kv(), &s, out);
  EXPECT_EQ(s.data_type, RTABLE_INTEGER32);
  ASSERT_EQ(RTableNumElements(Kv(), out), 2000);
  const auto* k = static_cast<const INTEGER32*>(RTableDataBlock(Kv(), out));
  int threes = 0;
  for (int i = 0; i < 2000; ++i) {
    ASSERT_TRUE(k[i] == 1 || k[i] == 3) << k[i];
    threes += k[i] == 3;
  }
  EXPECT_NEAR(threes, 1500, 100);

  EXPECT_EQ(RTableNumElements(
                Kv(), Call(STATS_VexaAliasUrnSample_MP, {vexa::NewInteger(0), NoWeights()})),
            0);
  const struct {
    std::vector<ALGEB> args;
    std::string message;
  } failures[] = {
      {{vexa::NewInteger(3)}, "expected 2 arguments, received: 3"},
      {{Num("2.5"), SfloatRTable({"1"})},
       "invalid sample length, expected positive integer, received: 2.5"},
      {{vexa::NewInteger(3), NoWeights()}, "expected: non-empty array of weights, received "},
  };
  for (const auto& f : failures)
    EXPECT_EQ(ErrorOf([&] { Call(STATS_VexaAliasUrnSample_MP, f.args); }).rfind(f.message, 0), 0u)
        << f.message;
}

// A one-dimensional rectangular rtable of data type dt holding the bytes of values 1 .. n
// (as that type stores them), distinct and recognisable.
ALGEB TypedArray(int dt, int n) {
  std::vector<RTableData> d(n);
  for (int i = 0; i < n; ++i) {
    const long long v = 1000003LL * (i + 1);
    switch (dt) {
      case RTABLE_DAG:
        d[i].dag = vexa::NewInteger(v);
        break;
      case RTABLE_CXDAG:
        d[i].cxdag = {vexa::NewInteger(v), vexa::NewInteger(-v)};
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
  const int n = 7, rows = 3, cols = 4;
  for (int dt = 0; dt < RTABLE_NUM_DATATYPES; ++dt) {
    ALGEB A = TypedArray(dt, n);
    vexa::SeedRandom(17 + dt);
    ALGEB out = Call(STATS_VexaBootstrapSample_MP,
                     {A, vexa::NewInteger(rows), vexa::NewInteger(cols), NoWeights()});
    RTableSettings s;
    RTableGetSettings(Kv(), &s, out);
    EXPECT_EQ(s.data_type, dt);
    EXPECT_EQ(RTableNumDimensions(Kv(), out), 2);
    EXPECT_EQ(RTableUpperBound(Kv(), out, 1), rows);
    EXPECT_EQ(RTableUpperBound(Kv(), out, 2), cols);
    // element i of the output is element NextIndex(n) of A, bytes and all
    const size_t width = RTableElementWidth(Kv(), dt);
    const char* from = static_cast<const char*>(RTableDataBlock(Kv(), A));
    const char* to = static_cast<const char*>(RTableDataBlock(Kv(), out));
    vexa::SeedRandom(17 + dt);
    for (int i = 0; i < rows * cols; ++i) {
      const uint32_t k = Stream::NextIndex(n);
      EXPECT_EQ(std::memcmp(to + i * width, from + k * width, width), 0) << dt << " " << i;
    }
  }
}

TEST(BootstrapSample, WeightsEmptyResultsAndFailures) {
  ALGEB A = TypedArray(RTABLE_FLOAT64, 4);
  ALGEB out = Call(STATS_VexaBootstrapSample_MP, {A, vexa::NewInteger(5), vexa::NewInteger(2),
                                                  SfloatRTable({"0", "0", "2", "0"})});
  const auto* x = static_cast<const double*>(RTableDataBlock(Kv(), out));
  for (int i = 0; i < 10; ++i) EXPECT_EQ(x[i], 3000009.5);  // only element 3 has weight

  // no rows: an empty array, and no draw made
  vexa::SeedRandom(9);
  out = Call(STATS_VexaBootstrapSample_MP,
             {A, vexa::NewInteger(0), vexa::NewInteger(3), NoWeights()});
  EXPECT_EQ(RTableNumElements(Kv(), out), 0);
  EXPECT_EQ(RTableUpperBound(Kv(), out, 2), 3);
  const uint32_t next = VexaRandomInt32(Kv());
  vexa::SeedRandom(9);
  EXPECT_EQ(next, VexaRandomInt32(Kv()));

  RTableSettings s;
  RTableGetDefaults(Kv(), &s);
  s.num_dimensions = 2;
  M_INT bounds[4] = {1, 2, 1, 2};
  ALGEB square = RTableCreate(Kv(), &s, nullptr, bounds);
  RTableData one;
  one.dag = vexa::NewInteger(1);
  ALGEB sparse = MakeRTable(RTABLE_DAG, RTABLE_SPARSE, 1, {one});
  const struct {
    std::vector<ALGEB> args;
    std::string message;
  } failures[] = {
      {{A, vexa::NewInteger(1), vexa::NewInteger(1)}, "expected 4 arguments, received: "},
      {{square, vexa::NewInteger(1), vexa::NewInteger(1), NoWeights()},
       "expected: one-dimensional array, received "},
      {{A, vexa::NewInteger(1), vexa::NewInteger(1), vexa::NewInteger(0)},
       "expected: one-dimensional array, received 0"},
      {{sparse, vexa::NewInteger(1), vexa::NewInteger(1), NoWeights()},
       "input array must have rectangular storage type"},
      {{A, vexa::NewInteger(2), vexa::NewInteger(2), SfloatRTable({"1", "2"})},
       "data array and weights array must have the same number of elements"},
      {{NoWeights(), vexa::NewInteger(2), vexa::NewInteger(2), NoWeights()},
       "expected: non-empty data array, received "},
  };
  for (const auto& f : failures)
    EXPECT_EQ(ErrorOf([&] { Call(STATS_VexaBootstrapSample_MP, f.args); }).rfind(f.message, 0), 0u)
        << f.message;
}

// A statistic procedure: the arithmetic mean of the sfloat array it is given.
ALGEB MeanProc(int* calls) {
  return CountingProc(calls, [](ALGEB args) {
    ALGEB a = vexa::Op(args, 1);
    auto* x = static_cast<VexaFloat*>(RTableDataBlock(Kv(), a));
    const int n = static_cast<int>(RTableNumElements(Kv(), a));
    return vexa::NewFloat(STATS_Mean_MP(Kv(), x, nullptr, n, STATS_MEAN_ARITHMETIC_MP));
  });
}

TEST(BootstrapStatistic, MeansOfResamplesCentreOnTheSampleMean) {
  VexaDigitsScope digits(15);
  // 200 values; their mean and variance in doubles
  std::vector<std::string> data;
  double sum = 0, sum2 = 0;
  for (int i = 0; i < 200; ++i) {
    const double v = std::fmod(i * 37.0, 101.0) / 8.0;
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.3f", v);
    data.push_back(buf);
    sum += v;
    sum2 += v * v;
  }
  const double mean = sum / 200, variance = sum2 / 200 - mean * mean;
  int calls = 0;
  const int R = 4000;
  vexa::SeedRandom(77);
  ALGEB out =
      Call(STATS_VexaBootstrapStatistic_MP, {SfloatRTable(data), NoWeights(), MeanProc(&calls),
                                             vexa::NewInteger(200), vexa::NewInteger(R)});
  EXPECT_EQ(calls, R);
  const auto* m = static_cast<const VexaFloat*>(RTableDataBlock(Kv(), out));
  double bsum = 0, bsum2 = 0;
  for (int i = 0; i < R; ++i) {
    const double v = std::stod(Text(m[i]));
    bsum += v;
    bsum2 += v * v;
  }
  const double bmean = bsum / R, bvar = bsum2 / R - bmean * bmean;
  // the bootstrap means: centre the sample mean, spread variance / n
  EXPECT_NEAR(bmean, mean, 4 * std::sqrt(variance / 200 / R));
  EXPECT_NEAR(bvar / (variance / 200), 1.0, 0.1);

  // weighted: only the weighted points are drawn
  ALGEB one = Call(STATS_VexaBootstrapStatistic_MP,
                   {SfloatRTable({"1", "2", "3"}), SfloatRTable({"0", "1", "0"}), MeanProc(&calls),
                    vexa::NewInteger(5), vexa::NewInteger(3)});
  for (int i = 0; i < 3; ++i)
    EXPECT_TRUE(static_cast<const VexaFloat*>(RTableDataBlock(Kv(), one))[i] == 2) << i;
  calls = 0;
  EXPECT_EQ(RTableNumElements(Kv(), Call(STATS_VexaBootstrapStatistic_MP,
                                         {SfloatRTable({"1"}), NoWeights(), MeanProc(&calls),
                                          vexa::NewInteger(1), vexa::NewInteger(-2)})),
            0);
  EXPECT_EQ(calls, 0);
  EXPECT_EQ(ErrorOf([&] {
              Call(STATS_VexaBootstrapStatistic_MP,
                   {SfloatRTable({"1", "2"}), NoWeights(), MeanProc(&calls), vexa::NewInteger(3),
                    vexa::NewInteger(2)});
            }),
            "invalid resample size, expected: integer between 0 and 2, received: 3");
}

TEST(BootstrapStatisticRV, StatisticOfEachGeneratedValue) {
  int made = 0, summarised = 0;
  ALGEB G = CountingProc(&made, [&](ALGEB args) {
    return vexa::NewFloat(VexaFloat(vexa::Op(args, 1)) * VexaFloat(made));
  });
  ALGEB P = CountingProc(
      &summarised, [](ALGEB args) { return vexa::NewFloat(VexaFloat(vexa::Op(args, 1)) + 1); });
  ALGEB out = Call(STATS_VexaBootstrapStatisticRV_MP, {G, P, Num("0.5"), vexa::NewInteger(3)});
  const auto* y = static_cast<const VexaFloat*>(RTableDataBlock(Kv(), out));
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(y[i] == F("0.5") * (i + 1) + 1) << i;
  EXPECT_EQ(ErrorOf([&] {
              Call(STATS_VexaBootstrapStatisticRV_MP, {G, P});
            }).rfind("expected 4 arguments, received: ", 0),
            0u);
}

TEST(Progress, ReportsThroughTheInfoChannelWhenAsked) {
  std::FILE* out = std::tmpfile();
  vexa::SetInfoStream(out);
  ALGEB infolevel = vexa::NewName("infolevel");
  STATS_Progress_MP quiet(Kv(), "bootstrap", 10, "replicates", 0.0);
  quiet.Update(1);  // infolevel not set: nothing shown
  vexa::AssignIndexed(infolevel, {vexa::NewName("Statistics")}, vexa::NewInteger(1));
  STATS_Progress_MP now(Kv(), "bootstrap", 10000, "replicates", 0.0);
  now.Update(4000);
  STATS_Progress_MP later(Kv(), "bootstrap", 10, "replicates", 3600.0);
  later.Update(5);  // not yet due
  vexa::SetInfoStream(stdout);
  vexa::TableRemove(vexa::Lookup(infolevel), vexa::NewName("Statistics"));
  std::rewind(out);
  char buf[256] = {0};
  const size_t n = std::fread(buf, 1, sizeof buf - 1, out);
  std::fclose(out);
  EXPECT_EQ(std::string(buf, n), "Statistics: bootstrap: 4000 of 10000 replicates\n");
}

}  // namespace
