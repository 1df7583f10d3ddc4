// Quantile, order statistic and median workers: each method at the ends and in between, the
// weighted form, and agreement with the textbook sample quantiles of Hyndman and Fan.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "data/support.h"
#include "stats/data/data.h"
#include "stats/descriptive/descriptive.h"

namespace {

std::string Quantile(std::vector<std::string> data, const std::string& p, int method) {
  std::vector<VexaFloat> d = Floats(data);
  VexaFloat prob = F(p), out;
  STATS_SimpleQuantile_MP(&out, d.data(), &prob, static_cast<int>(d.size()), 1,
                          static_cast<STATS_QUANTILE_TYPE_MP>(method));
  return Text(out);
}

TEST(SimpleQuantile, EachMethodAtTheEndsAndBetween) {
  VexaDigitsScope digits(10);
  const std::vector<std::string> s = {"40", "10", "50", "30", "20"};
  // p = 0.3, n = 5: positions 1.5, 2, 1.5, 2, 1.8, 2.2, 1.9333333333, 1.95
  const char* between[] = {"20.", "20.", "15.", "20.", "18.", "22.", "19.33333333", "19.5"};
  for (int method = 1; method <= 8; ++method) {
    EXPECT_EQ(Quantile(s, "0", method), "10.") << method;
    EXPECT_EQ(Quantile(s, "1", method), "50.") << method;
    EXPECT_EQ(Quantile(s, "0.3", method), between[method - 1]) << method;
  }
  const std::vector<std::string> four = {"4", "1", "3", "2"};
  // methods outside 1 .. 8 act as method 1
  for (int method : {0, 1, 2, 9}) {
    EXPECT_EQ(Quantile(four, "0.5", method), "2.") << method;
    EXPECT_EQ(Quantile(four, "0.6", method), method == 2 ? "2." : "3.") << method;
  }
  // decimal positions are exact: 10 * 0.7 is 7, not a little above it
  EXPECT_EQ(Quantile({"1", "2", "3", "4", "5", "6", "7", "8", "9", "10"}, "0.7", 1), "7.");
}

TEST(WeightedQuantile, PositionsInUnitsOfWeight) {
  auto weighted = [](std::vector<std::string> data, std::vector<std::string> weights,
                     const std::string& p, int method) {
    std::vector<VexaFloat> d = Floats(data), w = Floats(weights);
    VexaFloat prob = F(p), out;
    STATS_WeightedQuantile_MP(&out, d.data(), w.data(), &prob, static_cast<int>(d.size()), 1,
                              static_cast<STATS_QUANTILE_TYPE_MP>(method));
    return Text(out);
  };
  EXPECT_EQ(weighted({"30", "10", "20"}, {"5", "1", "1"}, "0.5", 1), "30.");
  for (int method : {1, 5})
    EXPECT_EQ(weighted({"3", "1", "2"}, {"1", "1", "1"}, "0.5", method), "2.");
  EXPECT_EQ(weighted({"3", "1", "2"}, {"1", "1", "1"}, "1", 3), "3.");
  // the fraction is that of x itself: x = 0.5 + 4 * 0.3 = 1.7
  EXPECT_EQ(weighted({"3", "1", "2", "4"}, {"1", "1", "1", "1"}, "0.3", 4), "1.7");
}

TEST(OrderStatisticAndMedian, AgreeWithTheSortedData) {
  std::mt19937 rng(5);
  for (int trial = 0; trial < 40; ++trial) {
    const int n = 1 + trial;
    std::vector<VexaFloat> d;
    for (int i = 0; i < n; ++i) d.push_back(VexaFloat(static_cast<int>(rng() % 50)));
    std::vector<VexaFloat> s = d;
    std::sort(s.begin(), s.end(), [](const VexaFloat& x, const VexaFloat& y) { return x < y; });
    std::vector<int> ranks;
    for (int i = 0; i < 6; ++i) ranks.push_back(1 + static_cast<int>(rng() % n));
    ranks.push_back(ranks.back());
    std::vector<VexaFloat> out(ranks.size()), a = d;
    STATS_OrderStatistic_MP(out.data(), a.data(), nullptr, ranks.data(), n,
                            static_cast<int>(ranks.size()));
    for (size_t i = 0; i < ranks.size(); ++i) ASSERT_TRUE(out[i] == s[ranks[i] - 1]);
    a = d;
    VexaFloat median = n % 2 ? s[n / 2] : (s[n / 2 - 1] + s[n / 2]) / 2;
    ASSERT_TRUE(STATS_SimpleMedian_MP(a.data(), n) == median) << n;
  }
  std::vector<VexaFloat> d = Floats({"3", "1", "2"}), w = Floats({"1", "1", "1"});
  EXPECT_EQ(Text(STATS_Median_MP(d.data(), w.data(), 3)), "2.");
  EXPECT_TRUE(IsVexaFloatUndefined(STATS_SimpleMedian_MP(d.data(), 0)));
}

TEST(SimpleQuantile, ManyProbabilitiesOfALargeSampleAgreeWithOneAtATime) {
  // Large enough for the keyed selection: ties, missing values, sorted and constant data.
  const int n = 70000;
  std::mt19937 rng(17);
  std::vector<VexaFloat> ties, sorted, constant(n, VexaFloat(3));
  for (int i = 0; i < n; ++i) {
    ties.push_back(rng() % 100 == 0 ? VexaFloatUndefined()
                                    : VexaFloat(static_cast<int>(rng() % 500)));
    sorted.push_back(VexaFloat(i / 7));
  }
  std::vector<VexaFloat> probs = Floats({"0.5", "0", "0.001", "0.25", "0.75", "0.99", "1", "0.1"});
  for (int i = 0; i < 20; ++i) probs.push_back(VexaFloat(static_cast<int>(rng() % 10001)) / 10000);
  const int m = static_cast<int>(probs.size());
  for (const auto* data : {&ties, &sorted, &constant}) {
    for (int method : {1, 6}) {
      const auto type = static_cast<STATS_QUANTILE_TYPE_MP>(method);
      std::vector<VexaFloat> a = *data, out(m);
      STATS_SimpleQuantile_MP(out.data(), a.data(), probs.data(), n, m, type);
      for (int j = 0; j < m; ++j) {
        std::vector<VexaFloat> b = *data;
        VexaFloat one;
        STATS_SimpleQuantile_MP(&one, b.data(), &probs[j], n, 1, type);
        ASSERT_EQ(Texts(&out[j], 1), Texts(&one, 1)) << "p " << Text(probs[j]);
      }
    }
  }
}

TEST(SelectOrderStatistics, LargeArraysAgreeWithTheSortedData) {
  // Keys cannot tell apart values that differ in the 40th digit, nor infinities from
  // undefined values or from each other; an exponent beyond the keys' range turns them off.
  std::mt19937_64 rng(31);
  auto value = [&](int style) -> VexaFloat {
    std::string m = std::to_string(rng() % 1000000000000ULL) +
                    "1234567890123456789012345678901234" + std::to_string(rng() % 3);
    switch (style) {
      case 0:
        return F((rng() % 2 ? "-" : "") + m + "e-" + std::to_string(30 + rng() % 3));
      case 1:
        return VexaFloat(static_cast<int>(rng() % 5) - 2);
      case 2:
        return rng() % 3 == 0   ? VexaFloatUndefined()
               : rng() % 2 == 0 ? VexaFloatInfinity(1)
                                : VexaFloatInfinity(-1);
      default:
        return F(m + "e400");
    }
  };
  const int n = 6000;
  for (int styles : {2, 3, 4}) {
    std::vector<VexaFloat> d;
    for (int i = 0; i < n; ++i) d.push_back(value(rng() % 40 == 0 ? styles - 1 : 0));
    std::vector<VexaFloat> s = d;
    STATS_SortData_MP(s.data(), n);
    const std::vector<int> ranks = {0, 1, 17, n / 3, n / 2, n / 2 + 1, n - 150, n - 2, n - 1};
    STATS_SelectOrderStatistics_MP(d.data(), n, ranks.data(), static_cast<int>(ranks.size()));
    for (int r : ranks) {
      ASSERT_EQ(Text(d[r]), Text(s[r])) << "styles " << styles << ", rank " << r;
      for (int i = 0; i < n; ++i)
        ASSERT_FALSE(i < r ? STATS_DataGreater_MP(d[i], d[r]) : STATS_DataGreater_MP(d[r], d[i]))
            << "styles " << styles << ", rank " << r << ", element " << i;
    }
  }
}

// Hyndman and Fan's Q_i(p) = (1 - g) s[j] + g s[j + 1], j = floor(n p + m), g = n p + m - j,
// for their types 4 to 9; type 1 takes s[j] when g = 0 and s[j + 1] otherwise, type 3 the
// nearest order statistic.
VexaFloat Textbook(const std::vector<VexaFloat>& s, const VexaFloat& p, int method) {
  const int n = static_cast<int>(s.size());
  const VexaFloat one(1);
  const VexaFloat m[] = {VexaFloat(0), VexaFloat(0),   VexaFloat(-0.5),
                         VexaFloat(0), VexaFloat(0.5), p,
                         one - p,      (p + 1) / 3,    p / 4 + VexaFloat(3) / 8};
  const VexaFloat h = n * p + m[method];
  const int j = FloatToInt(floor(h));
  const VexaFloat g = h - j;
  if (method == 1) return g == 0 ? s[j - 1] : s[j];
  if (method == 2) return s[j];  // ties (g = 0) are not drawn
  return (one - g) * s[j - 1] + g * s[j];
}

TEST(SimpleQuantile, AgreesWithTheTextbookAwayFromTheEnds) {
  std::mt19937 rng(2024);
  for (int trial = 0; trial < 60; ++trial) {
    const int n = 20 + static_cast<int>(rng() % 60);
    std::vector<VexaFloat> d;
    {
      VexaDigitsScope digits(30);
      for (int i = 0; i < n; ++i) d.push_back(VexaFloat(static_cast<int>(rng() % 2000)) / 100);
    }
    std::vector<VexaFloat> s = d;
    std::sort(s.begin(), s.end(), [](const VexaFloat& x, const VexaFloat& y) { return x < y; });
    std::vector<VexaFloat> probs;
    for (int i = 0; i < 5; ++i)
      probs.push_back(VexaFloat(100 + static_cast<int>(rng() % 801)) / 1000);
    for (int method = 1; method <= 8; ++method) {
      std::vector<VexaFloat> out(probs.size()), a = d;
      {
        VexaDigitsScope digits(30);
        STATS_SimpleQuantile_MP(out.data(), a.data(), probs.data(), n, 5,
                                static_cast<STATS_QUANTILE_TYPE_MP>(method));
      }
      VexaDigitsScope digits(50);
      for (int i = 0; i < 5; ++i) {
        if (method == 2 && (n * probs[i] - 0.5) == floor(n * probs[i] - 0.5)) continue;
        VexaFloat expected = Textbook(s, probs[i], method);
        ASSERT_TRUE(fabs(out[i] - expected) <= VexaFloatFromString("1e-25"))
            << "method " << method << " n " << n << " p " << Text(probs[i]) << ": " << Text(out[i])
            << " vs " << Text(expected);
      }
    }
  }
}

}  // namespace
