// The sorting and selection kernels in the data order (undefined last), the heap sort's
// documented outcomes and the comparators.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <tuple>

#include "data/support.h"
#include "stats/data/data.h"

namespace {

// Random values from a small range (many ties), about a fifth of them undefined.
std::vector<VexaFloat> RandomData(std::mt19937& rng, int n) {
  std::vector<VexaFloat> v;
  for (int i = 0; i < n; ++i)
    v.push_back(rng() % 5 == 0 ? VexaFloatUndefined() : VexaFloat(static_cast<int>(rng() % 20)));
  return v;
}

std::vector<VexaFloat> Sorted(std::vector<VexaFloat> v) {
  std::sort(v.begin(), v.end(),
            [](const VexaFloat& x, const VexaFloat& y) { return STATS_DataGreater_MP(y, x); });
  return v;
}

// Weights that name the value they travel with: value * 1000 + original position.
std::vector<VexaFloat> Tags(const std::vector<VexaFloat>& v) {
  std::vector<VexaFloat> w;
  for (size_t i = 0; i < v.size(); ++i)
    w.push_back(IsVexaFloatUndefined(v[i]) ? VexaFloat(-1) : v[i] * 1000 + static_cast<int>(i));
  return w;
}

bool TagsFollow(const std::vector<VexaFloat>& v, const std::vector<VexaFloat>& w) {
  for (size_t i = 0; i < v.size(); ++i) {
    if (IsVexaFloatUndefined(v[i]) ? w[i] != -1 : FloatToInt(w[i]) / 1000 != FloatToInt(v[i]))
      return false;
  }
  return true;
}

TEST(SortData, SortsInTheDataOrderAndCarriesWeights) {
  std::mt19937 rng(7);
  for (int trial = 0; trial < 300; ++trial) {
    const int n = trial % 70;
    std::vector<VexaFloat> v = RandomData(rng, n), w = Tags(v);
    const std::string expected = Texts(Sorted(v).data(), n);
    std::vector<VexaFloat> plain = v;
    STATS_SortData_MP(plain.data(), n);
    ASSERT_EQ(Texts(plain.data(), n), expected) << Texts(v.data(), n);
    STATS_SortData_MP(v.data(), w.data(), n);
    ASSERT_EQ(Texts(v.data(), n), expected);
    ASSERT_TRUE(TagsFollow(v, w));
  }
}

TEST(SortData, ShortRunsAreInsertionSortedAndStable) {
  // Five or fewer: the quicksort returns at once.
  std::vector<VexaFloat> a = Floats({"5", "4", "3", "2", "1"});
  STATS_QuickSort_MP(a.data(), 0, 4);
  EXPECT_EQ(Texts(a.data(), 5), "[5., 4., 3., 2., 1.]");
  std::vector<VexaFloat> v = Floats({"2", "1", "2", "U", "1"}),
                         w = Floats({"1", "2", "3", "4", "5"});
  STATS_SortData_MP(v.data(), w.data(), 5);
  EXPECT_EQ(Texts(v.data(), 5), "[1., 1., 2., 2., U]");
  EXPECT_EQ(Texts(w.data(), 5), "[2., 5., 1., 3., 4.]");
}

TEST(QuickSort, StaysWithinItsRange) {
  // Sentinels beside the range: the downward scan may reach lo with its double step.
  std::mt19937 rng(3);
  for (int trial = 0; trial < 200; ++trial) {
    const int n = 6 + trial % 40;
    std::vector<VexaFloat> v = RandomData(rng, n + 2);
    v.front() = VexaFloat(1000);
    v.back() = VexaFloat(-1000);
    std::vector<VexaFloat> inside(v.begin() + 1, v.end() - 1);
    STATS_QuickSort_MP(v.data(), 1, n);
    EXPECT_TRUE(v.front() == 1000 && v.back() == -1000);
    std::vector<VexaFloat> after(v.begin() + 1, v.end() - 1);
    ASSERT_EQ(Texts(Sorted(after).data(), n), Texts(Sorted(inside).data(), n));
  }
}

TEST(QuickSelect, EveryRankAndBothEnds) {
  std::mt19937 rng(11);
  for (int trial = 0; trial < 100; ++trial) {
    const int n = 1 + trial % 30;
    std::vector<VexaFloat> v = RandomData(rng, n), s = Sorted(v);
    for (int k = 0; k < n; ++k) {
      std::vector<VexaFloat> a = v;
      VexaFloat x = STATS_QuickSelect_MP(a.data(), n, k);
      ASSERT_EQ(Texts(&x, 1), Texts(&s[k], 1));
      for (int i = 0; i < n; ++i)
        ASSERT_FALSE(i < k ? STATS_DataGreater_MP(a[i], x) : STATS_DataGreater_MP(x, a[i]));
      std::vector<VexaFloat> b = v, w = Tags(v);
      VexaFloat y = STATS_QuickSelect_MP(b.data(), w.data(), n, k);
      ASSERT_EQ(Texts(&y, 1), Texts(&s[k], 1));
      ASSERT_TRUE(TagsFollow(b, w));
    }
  }
  std::vector<VexaFloat> one = Floats({"7"});
  EXPECT_EQ(Text(STATS_QuickSelect_MP(one.data(), 1, 0)), "7.");
  std::vector<VexaFloat> pair = Floats({"U", "2"});
  EXPECT_EQ(Text(STATS_QuickSelect_MP(pair.data(), 2, 0)), "2.");
  EXPECT_EQ(Texts(pair.data(), 2), "[2., U]");
  // only the weighted form clamps its index
  std::vector<VexaFloat> v = Floats({"4", "9", "1", "6"}), w = Floats({"0", "0", "0", "0"});
  EXPECT_EQ(Text(STATS_QuickSelect_MP(v.data(), w.data(), 4, -3)), "1.");
  EXPECT_EQ(Text(STATS_QuickSelect_MP(v.data(), w.data(), 4, 6)), "9.");
}

TEST(HeapSort, FirstChildRuleOutcomes) {
  auto heapSorted = [](std::vector<VexaFloat> v) {
    std::vector<VexaFloat> w = v;
    STATS_HeapSort_MP(v.data(), w.data(), static_cast<int>(v.size()));
    EXPECT_EQ(Texts(v.data(), static_cast<int>(v.size())),
              Texts(w.data(), static_cast<int>(v.size())));
    return Texts(v.data(), static_cast<int>(v.size()));
  };
  EXPECT_EQ(heapSorted(Floats({"4", "3", "2", "1", "0", "5"})), "[0., 1., 2., 3., 5., 4.]");
  EXPECT_EQ(heapSorted(Floats({"7", "6", "5", "4", "3", "2", "1"})),
            "[1., 2., 3., 4., 5., 6., 7.]");
  EXPECT_EQ(heapSorted({}), "[]");
  std::vector<int> p = {0, 1, 2, 3, 4, 5};
  int unsorted = 0;
  do {
    std::vector<VexaFloat> v(p.begin(), p.end());
    if (heapSorted(v) != "[0., 1., 2., 3., 4., 5.]") ++unsorted;
  } while (std::next_permutation(p.begin(), p.end()));
  EXPECT_EQ(unsorted, 30);
}

template <class T>
int Compare(int (*f)(const char*, const char*), T a, T b) {
  char x[sizeof(T)], y[sizeof(T)];
  std::memcpy(x, &a, sizeof a);
  std::memcpy(y, &b, sizeof b);
  return f(x, y);
}

TEST(Comparators, EachElementTypeMissingValuesLast) {
  EXPECT_EQ(Compare<uint8_t>(STATS_NumericCompareINTEGER8_MP, 0xFF, 0x01), -1);
  EXPECT_EQ(Compare<int16_t>(STATS_NumericCompareINTEGER16_MP, 300, 300), 0);
  EXPECT_EQ(Compare<int32_t>(STATS_NumericCompareINTEGER32_MP, 5, -5), 1);
  EXPECT_EQ(Compare<int64_t>(STATS_NumericCompareINTEGER64_MP, -1, 1), -1);
  EXPECT_EQ(Compare<int64_t>(STATS_NumericCompareINTEGER64_MP, int64_t(1) << 32, 1), 1);
  auto f64 = STATS_NumericCompareFLOAT64_MP;
  const std::tuple<double, double, int> f64Rows[] = {
      {NAN, 1.0, 1}, {1.0, NAN, -1}, {NAN, NAN, 1}, {0.1, 0.2, -1}};
  for (const auto& [a, b, r] : f64Rows) EXPECT_EQ(Compare<double>(f64, a, b), r) << a << " " << b;
  EXPECT_EQ(Compare<float>(STATS_NumericCompareFLOAT32_MP, 0.5f, 0.5f), 0);
  EXPECT_EQ(Compare<float>(STATS_NumericCompareFLOAT32_MP, NAN, 0.5f), 1);
  auto dag = STATS_NumericCompareALGEB_MP;
  ALGEB u = F("U").Handle(), half = vexa::NewRational(vexa::NewInteger(1), vexa::NewInteger(2));
  EXPECT_EQ(Compare<ALGEB>(dag, half, F("0.5").Handle()), 0);
  EXPECT_EQ(Compare<ALGEB>(dag, vexa::NewInteger(2), half), 1);
  EXPECT_EQ(Compare<ALGEB>(dag, half, u), -1);
  EXPECT_EQ(Compare<ALGEB>(dag, u, half), 1);
  EXPECT_EQ(Compare<ALGEB>(dag, u, u), 1);
  EXPECT_EQ(ErrorOf([&] { Compare<ALGEB>(dag, vexa::NewName("y_unassigned"), half); }),
            "unable to evaluate y_unassigned to floating-point");

  const std::pair<int, int (*)(const char*, const char*)> chosen[] = {
      {RTABLE_INTEGER8, STATS_NumericCompareINTEGER8_MP},
      {RTABLE_FLOAT32, STATS_NumericCompareFLOAT32_MP},
      {RTABLE_DAG, dag},
      {RTABLE_COMPLEX, nullptr},
      {RTABLE_CXDAG, nullptr}};
  for (const auto& [type, f] : chosen) EXPECT_EQ(STATS_NumericComparator_MP(type), f) << type;
}

}  // namespace
