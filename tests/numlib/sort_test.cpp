// Sorting and ranking: the placement of undefined values in both directions, stability under
// a comparison that calls two missing values "after" each other, a negative stride, and the
// failures.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "vexa/nag.h"

namespace {

std::string Sorted(std::vector<std::string> texts, Nag_SortOrder order, int* code) {
  std::vector<VexaFloat> v;
  for (const auto& t : texts) v.push_back(t == "U" ? VexaFloatUndefined() : VexaFloatFromString(t));
  NagError fail;
  VexaMP_m01cac(v.data(), v.size(), order, &fail);
  *code = fail.code;
  std::string s;
  for (const VexaFloat& x : v) s += (s.empty() ? "" : " ") + VexaFloatToString(x);
  return s;
}

// Doubles with NaN last; two NaNs compare as 1 either way.
int CompareDoubles(const char* a, const char* b) {
  double x, y;
  std::memcpy(&x, a, sizeof x);
  std::memcpy(&y, b, sizeof y);
  if (std::isnan(x)) return 1;
  if (std::isnan(y) || x < y) return -1;
  return x == y ? 0 : 1;
}

std::vector<size_t> Ranks(const double* start, size_t n, ptrdiff_t stride, Nag_SortOrder order,
                          int* code) {
  std::vector<size_t> ranks(n, 99);
  NagError fail;
  VexaMP_m01dsc(start, n, stride, CompareDoubles, order, ranks.data(), &fail);
  *code = fail.code;
  return ranks;
}

TEST(Sorting, RealsAndRanksInBothDirections) {
  int code;
  EXPECT_EQ(Sorted({"3", "U", "1.5", "2", "-7"}, Nag_Ascending, &code),
            "-7. 1.5 2. 3. Float(undefined)");
  EXPECT_EQ(Sorted({"3", "U", "1.5", "2", "-7"}, Nag_Descending, &code),
            "Float(undefined) 3. 2. 1.5 -7.");
  EXPECT_EQ(Sorted({"2", "1"}, static_cast<Nag_SortOrder>(0), &code), "2. 1.");
  EXPECT_EQ(code, NE_BAD_PARAM);

  const double x[] = {NAN, 2, 1, NAN, 2, -1};
  using R = std::vector<size_t>;
  EXPECT_EQ(Ranks(x, 6, sizeof(double), Nag_Ascending, &code), (R{4, 2, 1, 5, 3, 0}));
  EXPECT_EQ(Ranks(x, 6, sizeof(double), Nag_Descending, &code), (R{0, 2, 4, 1, 3, 5}));
  // From the end backwards: element i is x[5 - i].
  EXPECT_EQ(Ranks(x + 5, 6, -static_cast<ptrdiff_t>(sizeof(double)), Nag_Ascending, &code),
            (R{0, 2, 4, 1, 3, 5}));
  EXPECT_EQ(code, NE_NOERROR);
  EXPECT_EQ(Ranks(x, 6, 0, Nag_Ascending, &code), R(6, 99));
  EXPECT_EQ(code, NE_INT_ARG_CONS);
}

}  // namespace
