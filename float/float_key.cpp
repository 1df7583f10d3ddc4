// The order key of a float: its top two limbs as a double, scaled by the remaining limbs
// and by the power of ten. Five roundings of 2^-53 and dropped limbs below 2^-64 keep the
// double within 2^-50 of the value, so that for x >= y the key of y can exceed that of x by
// at most 2^-49 of it: 16 doubles.
#include "vexa/float_key.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <string>

#include "float/float_node.h"

namespace {

constexpr double kClamp = 1e300;
constexpr int kMaxPower = 300;

// 10^e correctly rounded (read from its decimal text), for |e| <= kMaxPower.
std::array<double, 2 * kMaxPower + 1> MakePowersOfTen() {
  std::array<double, 2 * kMaxPower + 1> t{};
  for (int e = -kMaxPower; e <= kMaxPower; ++e)
    t[e + kMaxPower] = std::strtod(("1e" + std::to_string(e)).c_str(), nullptr);
  return t;
}
const std::array<double, 2 * kMaxPower + 1> kPowersOfTen = MakePowersOfTen();

constexpr double kTwo64 = 18446744073709551616.0;
constexpr double kTwo64Powers[3] = {1.0, kTwo64, kTwo64* kTwo64};  // for the dropped limbs

// The bits of a double as an integer in the order of the doubles (+0 and -0 apart).
uint64_t Ordered(double v) {
  uint64_t b;
  std::memcpy(&b, &v, sizeof b);
  return b >> 63 ? ~b : b | (uint64_t(1) << 63);
}

}  // namespace

uint64_t VexaFloatKey(const VexaFloat& x) {
  const vexa::FloatNode* n = vexa::AsFloatNode(x.Handle());
  switch (vexa::KindOf(n)) {
    case vexa::kUndefined:
    case vexa::kPlusInfinity:
      return Ordered(kClamp);
    case vexa::kMinusInfinity:
      return Ordered(-kClamp);
    default:
      break;
  }
  if (n->size == 0) return Ordered(0.0);
  const int limbs = n->size < 0 ? -n->size : n->size;
  if (limbs > 4 || n->exponent < -kMaxPower || n->exponent > kMaxPower) return kVexaFloatNoKey;
  double m = static_cast<double>(n->limbs[limbs - 1]);
  if (limbs > 1)
    m = (m * kTwo64 + static_cast<double>(n->limbs[limbs - 2])) * kTwo64Powers[limbs - 2];
  double v = m * kPowersOfTen[n->exponent + kMaxPower];  // at least 1e-300; may overflow
  if (v > kClamp) v = kClamp;
  return Ordered(n->size < 0 ? -v : v);
}
