// Sorting, ordering, ranking, trimming and winsorizing of host arrays of every data type
// against brute force; shuffling by goodness of fit; sharpening against mpmath.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <sstream>

#include "data/support.h"
#include "stats/data/data.h"
#include "stats/descriptive/descriptive.h"
#include "tests/reference.h"

namespace {

struct Kind {
  int dataType;
  int storage;
  const char* elementType;
};

// Every data type with a comparator; the generic one also sparse and as sfloat.
const Kind kKinds[] = {
    {RTABLE_DAG, RTABLE_RECT, nullptr},       {RTABLE_DAG, RTABLE_RECT, "sfloat"},
    {RTABLE_DAG, RTABLE_SPARSE, nullptr},     {RTABLE_INTEGER8, RTABLE_RECT, nullptr},
    {RTABLE_INTEGER16, RTABLE_RECT, nullptr}, {RTABLE_INTEGER32, RTABLE_RECT, nullptr},
    {RTABLE_INTEGER64, RTABLE_RECT, nullptr}, {RTABLE_FLOAT64, RTABLE_RECT, nullptr},
    {RTABLE_FLOAT32, RTABLE_RECT, nullptr},
};

// Random elements from a few values, so that ties are common. Equal values of different form
// (1/2, 0.5 and 0.50; 0. and -0.) show whether an order is stable; NaN and undefined are
// missing.
RTableData RandomElement(std::mt19937& rng, const Kind& k) {
  RTableData d;
  std::memset(&d, 0, sizeof d);
  const int r = static_cast<int>(rng() % 8);
  const double reals[8] = {-1.5, 0.0, -0.0, 0.1, 2.25, NAN, 1e300, -7.0};
  switch (k.dataType) {
    case RTABLE_INTEGER8:
      d.int8 = static_cast<int8_t>(r == 0 ? -128 : r == 1 ? 127 : r - 4);
      break;
    case RTABLE_INTEGER16:
      d.int16 = static_cast<int16_t>(r == 0 ? -32768 : r * 1000 - 3000);
      break;
    case RTABLE_INTEGER32:
      d.int32 = r == 0 ? INT32_MIN : r == 1 ? INT32_MAX : r - 4;
      break;
    case RTABLE_INTEGER64:
      d.int64 = r == 0 ? INT64_MIN : r == 1 ? (int64_t{1} << 32) : r - 4;
      break;
    case RTABLE_FLOAT64:
      d.float64 = reals[r];
      break;
    case RTABLE_FLOAT32:
      d.float32 = static_cast<float>(r == 6 ? 3e38 : reals[r]);
      break;
    default: {
      const char* floats[8] = {"0.5", "0.50", "U", "-3", "2.", "1e-40", "0.5", "U"};
      if (k.elementType != nullptr || r % 4 != 0)
        d.dag = F(floats[r]).Handle();
      else  // exact values beside the floats
        d.dag = r == 0 ? vexa::NewRational(vexa::NewInteger(1), vexa::NewInteger(2))
                       : vexa::NewName("undefined");
    }
  }
  return d;
}

// The brute-force key of an element: missing or its exact value (at the test's Digits).
struct Key {
  bool missing;
  VexaFloat value;
};

Key KeyOf(const Kind& k, const RTableData& d) {
  switch (k.dataType) {
    case RTABLE_INTEGER8:
      return {false, VexaFloat(d.int8)};
    case RTABLE_INTEGER16:
      return {false, VexaFloat(d.int16)};
    case RTABLE_INTEGER32:
      return {false, VexaFloat(d.int32)};
    case RTABLE_INTEGER64:
      return {false, VexaFloat(static_cast<long long>(d.int64))};
    case RTABLE_FLOAT64:
      return {std::isnan(d.float64), VexaFloat(d.float64)};
    case RTABLE_FLOAT32:
      return {std::isnan(d.float32), VexaFloat(static_cast<double>(d.float32))};
  }
  if (vexa::IsName(d.dag)) return {true, VexaFloat()};
  const VexaFloat x(d.dag);
  return {IsVexaFloatUndefined(x), x};
}

bool KeyLess(const Key& a, const Key& b) {
  if (a.missing != b.missing) return b.missing;
  return !a.missing && a.value < b.value;
}

RTableData At(ALGEB rt, M_INT i) {
  M_INT index[1] = {RTableLowerBound(Kv(), rt, 1) + i};
  return RTableSelect(Kv(), rt, index);
}

bool SameElement(const RTableData& a, const RTableData& b, int width) {
  return std::memcmp(&a, &b, width) == 0;
}

std::vector<M_INT> Integers(ALGEB rt) {
  std::vector<M_INT> v;
  for (M_INT i = 0; i < RTableNumElements(Kv(), rt); ++i) v.push_back(At(rt, i).int32);
  return v;
}

ALGEB Call(ALGEB (*entry)(VexaKernelVector, ALGEB), const std::vector<ALGEB>& args) {
  return entry(Kv(), vexa::NewExpseq(args));
}

ALGEB Bool(bool b) {
  return b ? vexa::True() : vexa::False();
}

TEST(Arrange, SortOrderAndRankAgreeWithBruteForceOnEveryDataType) {
  VexaDigitsScope digits(40);  // keys of 64-bit integers exact
  std::mt19937 rng(11);
  for (const Kind& kind : kKinds) {
    const int width = STATS_RTableDataSize_MP(Kv(), kind.dataType);
    for (int trial = 0; trial < 40; ++trial) {
      const int n = trial % 25;
      std::vector<RTableData> values;
      for (int i = 0; i < n; ++i) values.push_back(RandomElement(rng, kind));
      ALGEB a = MakeRTable(kind.dataType, kind.storage, 0, values, kind.elementType);
      std::vector<Key> keys;
      for (const RTableData& d : values) keys.push_back(KeyOf(kind, d));
      const std::string where =
          "data type " + std::to_string(kind.dataType) + ", trial " + std::to_string(trial);
      for (bool ignore : {false, true}) {
        std::vector<int> kept;
        for (int i = 0; i < n; ++i)
          if (!(ignore && keys[i].missing)) kept.push_back(i);
        std::vector<int> up = kept, down = kept;
        std::stable_sort(up.begin(), up.end(),
                         [&](int i, int j) { return KeyLess(keys[i], keys[j]); });
        std::stable_sort(down.begin(), down.end(), [&](int i, int j) {
          if (keys[i].missing != keys[j].missing) return keys[i].missing;
          return !keys[i].missing && keys[j].value < keys[i].value;
        });
        for (bool descending : {false, true}) {
          ALGEB sorted = Call(STATS_VexaSort_MP, {a, Bool(ignore), Bool(descending)});
          const std::vector<int>& expect = descending ? down : up;
          ASSERT_EQ(RTableNumElements(Kv(), sorted), static_cast<M_INT>(expect.size())) << where;
          RTableSettings s;
          RTableGetSettings(Kv(), &s, sorted);
          ASSERT_EQ(s.data_type, kind.dataType);
          for (size_t r = 0; r < expect.size(); ++r)
            ASSERT_TRUE(SameElement(At(sorted, r), values[expect[r]], width))
                << where << ", place " << r << (descending ? " descending" : "");
        }
        std::vector<M_INT> positions;
        for (int p : up) positions.push_back(p + 1);
        ASSERT_EQ(Integers(Call(STATS_VexaOrderByRank_MP, {a, Bool(ignore)})), positions) << where;

        // Ranks by counting among the kept: below, tied (missing values never tie) and tied
        // before; average, minimum, maximum and first, the forms of ties 1 to 4.
        std::vector<std::vector<M_INT>> ranks(5);
        for (int i : kept) {
          int below = 0, tied = 0, tiedBefore = 0;
          for (int j : kept) {
            const bool tie =
                i == j || (!keys[i].missing && !keys[j].missing && keys[i].value == keys[j].value);
            below += KeyLess(keys[j], keys[i]) || (keys[i].missing && keys[j].missing && j < i);
            tied += tie;
            tiedBefore += tie && j < i;
          }
          ranks[2].push_back(below + 1);
          ranks[3].push_back(below + tied);
          ranks[4].push_back(below + tiedBefore + 1);
        }
        for (int ties = 2; ties <= 4; ++ties)
          EXPECT_EQ(Integers(Call(STATS_VexaRank_MP, {a, Bool(ignore), vexa::NewInteger(ties)})),
                    ranks[ties])
              << where << ", ties " << ties;
        ALGEB average = Call(STATS_VexaRank_MP, {a, Bool(ignore), vexa::NewInteger(1)});
        for (size_t i = 0; i < kept.size(); ++i)
          EXPECT_EQ(At(average, i).float64, (ranks[2][i] + ranks[3][i]) / 2.0) << where;
      }
    }
  }
}

// Exact decimals of a few digits: at Digits 30 every mean below is exact, whatever the order
// of summation, so the means of the trimmed and winsorized arrays must equal the library's
// trimmed and winsorized means.
TEST(Arrange, TrimAndWinsorizeKeepTheTrimmedMeansBlockInOrder) {
  VexaDigitsScope digits(30);
  std::mt19937 rng(5);
  const std::pair<int, int> cuts[] = {{0, 100}, {10, 90},   {25, 75}, {5, 60}, {50, 50},
                                      {0, 0},   {100, 100}, {33, 34}, {20, 20}};
  const Kind kinds[] = {{RTABLE_DAG, RTABLE_RECT, "sfloat"},
                        {RTABLE_INTEGER32, RTABLE_RECT, nullptr},
                        {RTABLE_FLOAT64, RTABLE_SPARSE, nullptr}};
  ALGEB none = SfloatRTable({});
  for (const Kind& kind : kinds) {
    for (int trial = 0; trial < 30; ++trial) {
      const int n = 1 + trial % 17;
      std::vector<RTableData> values(n);
      std::vector<VexaFloat> data;  // the defined values, in order
      for (RTableData& d : values) {
        const int v = static_cast<int>(rng() % 9) - 4;
        if (kind.dataType == RTABLE_DAG) d.dag = VexaFloat(v * 0.25).Handle();
        if (kind.dataType == RTABLE_INTEGER32) d.int32 = v;
        if (kind.dataType == RTABLE_FLOAT64) d.float64 = v == 4 ? NAN : v * 0.5;
        if (!(kind.dataType == RTABLE_FLOAT64 && v == 4))
          data.push_back(RTableDataToDouble(Kv(), d, kind.dataType));
      }
      ALGEB a = MakeRTable(kind.dataType, kind.storage, 1, values, kind.elementType);
      for (const auto& [lower, upper] : cuts) {
        const std::string where = "type " + std::to_string(kind.dataType) + ", n " +
                                  std::to_string(n) + ", cuts " + std::to_string(lower) + ".." +
                                  std::to_string(upper);
        ALGEB p = vexa::NewInteger(lower), q = vexa::NewInteger(upper), yes = vexa::True();
        ALGEB trimmed = Call(STATS_VexaTrim_MP, {a, p, q, yes});
        ALGEB winsorized = Call(STATS_VexaWinsorize_MP, {a, p, q, yes});
        const VexaFloat mean =
            VexaFloat(Call(STATS_VexaTrimmedMean_MP, {a, p, q, none, yes, vexa::NewInteger(0)}));
        const VexaFloat wmean =
            VexaFloat(Call(STATS_VexaWinsorizedMean_MP, {a, p, q, none, yes, vexa::NewInteger(0)}));
        const M_INT k = RTableNumElements(Kv(), trimmed);
        // Missing values dropped, the trimmed elements a subsequence of the data.
        STATS_Vector_MP t(Kv(), trimmed), w(Kv(), winsorized);
        size_t j = 0;
        for (M_INT i = 0; i < k; ++i) {
          while (j < data.size() && data[j] != t.data()[i]) ++j;
          ASSERT_LT(j++, data.size()) << where << ": not a subsequence";
        }
        ASSERT_EQ(RTableNumElements(Kv(), winsorized), static_cast<M_INT>(data.size())) << where;
        if (k == 0) {
          EXPECT_TRUE(IsVexaFloatUndefined(mean)) << where;
          continue;
        }
        EXPECT_EQ(Text(STATS_SimpleMean_MP(Kv(), t.data(), static_cast<int>(k),
                                           STATS_MEAN_ARITHMETIC_MP)),
                  Text(mean))
            << where;
        EXPECT_EQ(Text(STATS_SimpleMean_MP(Kv(), w.data(), static_cast<int>(data.size()),
                                           STATS_MEAN_ARITHMETIC_MP)),
                  Text(wmean))
            << where;
      }
    }
  }
}

// All 120 orders of five elements, 120 * 200 shuffles at a fixed seed: chi-square with 119
// degrees of freedom below its 0.999 quantile, 172.4 (mpmath); anything but a permutation
// lands in a cell of its own. The same seed repeats a shuffle exactly.
TEST(Arrange, ShuffleIsUniformOverAllPermutationsAndReproducible) {
  std::vector<RTableData> values(5);
  for (int i = 0; i < 5; ++i) values[i].int8 = static_cast<int8_t>(i);
  ALGEB a = MakeRTable(RTABLE_INTEGER8, RTABLE_RECT, 1, values);
  VexaRandomSeed(Kv(), 2024);
  std::vector<int> counts(3125, 0);  // by the five values read as base-5 digits
  for (int d = 0; d < 120 * 200; ++d) {
    ALGEB s = Call(STATS_VexaShuffle_MP, {a});
    int code = 0;
    for (M_INT i = 0; i < 5; ++i) code = code * 5 + At(s, i).int8;
    ++counts[code];
  }
  double chi2 = 0;
  int cells = 0;
  for (int c : counts) {
    cells += c > 0;
    if (c > 0) chi2 += (c - 200.0) * (c - 200.0) / 200.0;
  }
  EXPECT_EQ(cells, 120);
  EXPECT_LT(chi2, 172.4) << chi2;

  ALGEB sample = SfloatRTable({"1", "2", "3", "U", "5", "6", "7", "8"});
  auto shuffled = [&](unsigned seed) {
    VexaRandomSeed(Kv(), seed);
    return Texts(STATS_Vector_MP(Kv(), Call(STATS_VexaShuffle_MP, {sample})).data(), 8);
  };
  EXPECT_EQ(shuffled(77), shuffled(77));
  EXPECT_EQ(Texts(STATS_Vector_MP(Kv(), sample).data(), 8), "[1., 2., 3., U, 5., 6., 7., 8.]");
}

std::vector<std::string> Split(const std::string& text) {
  std::vector<std::string> v;
  std::istringstream in(text);
  for (std::string t; std::getline(in, t, ',');) v.push_back(t);
  return v;
}

TEST(Arrange, SharpenAgreesWithMpmath) {
  const auto cases = vexa_test::ReadCases("sharpen.txt");
  ASSERT_GE(cases.size(), 40u);
  for (const auto& c : cases) {
    VexaDigitsScope digits(c.digits);
    ALGEB data = SfloatRTable(Split(c.args[0]));
    ALGEB weights = SfloatRTable(c.args[1] == "-" ? std::vector<std::string>() : Split(c.args[1]));
    ALGEB out = Call(STATS_VexaSharpen_MP, {data, weights, F(c.args[2]).Handle()});
    const VexaFloat got(At(out, std::stoi(c.args[3])).dag);
    EXPECT_LE(vexa_test::UlpError(c, got, F(c.expected)), 1)
        << "line " << c.line << ": " << Text(got);
  }
}

}  // namespace
