// Order keys: for x <= y the key of y is never clearly below the key of x, over neighbours
// that differ in the last of up to 80 digits, across powers of ten, signs, the clamp and the
// special values; and values far apart get keys far apart.
#include "vexa/float_key.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "vexa/float.h"

namespace {

TEST(FloatKey, NeverContradictsTheOrder) {
  std::mt19937_64 rng(8);
  std::vector<VexaFloat> v = {VexaFloatInfinity(-1),          VexaFloat(),
                              VexaFloatInfinity(1),           VexaFloatUndefined(),
                              VexaFloatFromString("1e300"),   VexaFloatFromString("-1e300"),
                              VexaFloatFromString("9.99e299")};
  for (int i = 0; i < 3000; ++i) {
    std::string m(1 + rng() % 80, '9');
    for (auto& c : m)
      if (rng() % 3) c = static_cast<char>('0' + rng() % 10);
    m[0] = static_cast<char>('1' + rng() % 9);
    const long e = static_cast<long>(rng() % 601) - 300 - static_cast<long>(m.size()) / 2;
    const VexaFloat x = VexaFloatFromString((rng() % 2 ? "-" : "") + m + "e" + std::to_string(e));
    const VexaFloat ulp = VexaFloatFromString("1e" + std::to_string(e));
    v.insert(v.end(), {x, x + ulp, x - ulp});
  }
  VexaDigitsScope exact(200);
  std::sort(v.begin(), v.end(), [](const VexaFloat& x, const VexaFloat& y) {
    return IsVexaFloatUndefined(y) ? !IsVexaFloatUndefined(x) : x < y;
  });
  for (size_t i = 0; i < v.size(); ++i) {
    for (size_t j = i + 1; j < std::min(v.size(), i + 6); ++j) {
      const uint64_t ki = VexaFloatKey(v[i]), kj = VexaFloatKey(v[j]);
      if (ki != kVexaFloatNoKey && kj != kVexaFloatNoKey) {
        ASSERT_FALSE(VexaFloatKeyLess(kj, ki))
            << VexaFloatToString(v[i]) << " " << VexaFloatToString(v[j]);
      }
    }
  }
  EXPECT_TRUE(VexaFloatKeyLess(VexaFloatKey(VexaFloat(1)), VexaFloatKey(VexaFloat(1.000001))));
  EXPECT_TRUE(VexaFloatKeyLess(VexaFloatKey(VexaFloat(-3)), VexaFloatKey(VexaFloat(-2.99999))));
  EXPECT_EQ(VexaFloatKey(VexaFloatFromString("1e400")), kVexaFloatNoKey);
}

}  // namespace
