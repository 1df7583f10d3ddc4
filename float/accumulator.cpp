// The running sum on limbs. With the sum's mantissa M at exactly Digits digits and exponent
// e, an addend m 10^f with f <= e splits into q = floor(m / 10^(e-f)) and a remainder r: the
// exact sum is (M +- q) 10^e +- r 10^f, so one division by a power of ten below 2^64 and one
// limb addition give the sum, and r against half of 10^(e-f) gives the rounding (one more
// digit when M + q reaches 10^Digits). Anything else (a zero or special sum, a sign change,
// cancellation, an addend far above the sum or far below its last digit) takes the float
// addition itself, so every partial sum is the one that addition rounds.
#include "vexa/accumulator.h"

#include <gmp.h>

#include <array>
#include <cstring>

#include "float/decimal.h"
#include "float/float_node.h"
#include "float/pow10.h"

using vexa::AsFloatNode;
using vexa::FloatNode;

namespace {

using vexa::u128;

// Exponents this far inside the float range cannot overflow or underflow in a few steps.
constexpr int64_t kSafeExponent = vexa::kMaxExponent / 16;

// q = floor(a / 10^k) over n limbs (q may be a), 1 <= k <= 19; returns a mod 10^k.
uint64_t DivRemPow10(uint64_t* q, const uint64_t* a, int n, int k) {
  uint64_t r = 0;  // below 10^k, so (r, a[i]) is below 10^k 2^64
  for (int i = n - 1; i >= 0; --i) q[i] = vexa::DivRemPow10((u128(r) << 64) | a[i], k, &r);
  return r;
}

// r = a + b over n limbs; returns the carry.
inline uint64_t AddN(uint64_t* r, const uint64_t* a, const uint64_t* b, int n) {
  uint64_t carry = 0;
  for (int i = 0; i < n; ++i) {
    const u128 s = static_cast<u128>(a[i]) + b[i] + carry;
    r[i] = static_cast<uint64_t>(s);
    carry = static_cast<uint64_t>(s >> 64);
  }
  return carry;
}

// r = a - b over n limbs; returns the borrow.
inline uint64_t SubN(uint64_t* r, const uint64_t* a, const uint64_t* b, int n) {
  uint64_t borrow = 0;
  for (int i = 0; i < n; ++i) {
    const uint64_t x = a[i], y = b[i];
    const uint64_t d = x - y - borrow;
    borrow = (x < y) || (x == y && borrow) ? 1 : 0;
    r[i] = d;
  }
  return borrow;
}

// r += 1 over n limbs; returns the carry.
inline uint64_t Increment(uint64_t* r, int n) {
  for (int i = 0; i < n; ++i)
    if (++r[i] != 0) return 0;
  return 1;
}

inline int CompareN(const uint64_t* a, const uint64_t* b, int n) {
  for (int i = n - 1; i >= 0; --i)
    if (a[i] != b[i]) return a[i] < b[i] ? -1 : 1;
  return 0;
}

// 10^k into n limbs (zero-padded), by factors of at most 10^19; false if it does not fit.
bool PowerOfTen(uint64_t* out, int n, int k) {
  std::memset(out, 0, sizeof(uint64_t) * n);
  out[0] = 1;
  for (; k > 0; k -= 19)
    if (mpn_mul_1(out, out, n, vexa::kPow10[k < 19 ? k : 19]) != 0) return false;
  return true;
}

}  // namespace

VexaFloatAccumulator::VexaFloatAccumulator() : digits_(VexaDigits()), limbs_(0) {
  // limbs enough for 10^(digits + 1) and for a sum of two numbers below it
  const int n = static_cast<int>((digits_ + 1) * 3.3219280948873623 / 64) + 1;
  if (n < kLimbs && PowerOfTen(above_, n, digits_ + 1)) {
    limbs_ = n;
    PowerOfTen(high_, n, digits_);
    PowerOfTen(low_, n, digits_ - 1);
  }
}

VexaFloat VexaFloatAccumulator::Value() const {
  switch (state_) {
    case kZero:
      return VexaFloat();
    case kFloat:
      return value_;
    default: {
      mpz_t view;
      mpz_roinit_n(view, mantissa_, negative_ ? -limbs_ : limbs_);
      return vexa::FloatFromMpz(view, exponent_, 0);
    }
  }
}

void VexaFloatAccumulator::Add(const VexaFloat& x) {
  if (state_ != kLimbSum || !AddLimbs(x)) AddFloat(x);
}

void VexaFloatAccumulator::AddFloat(const VexaFloat& x) {
  Load(Value() + x);
}

// The sum as limbs of exactly Digits digits when it is finite, nonzero and small enough.
void VexaFloatAccumulator::Load(const VexaFloat& v) {
  const FloatNode* node = AsFloatNode(v.Handle());
  state_ = kFloat;
  value_ = v;
  if (vexa::KindOf(node) != vexa::kFinite) return;
  if (node->size == 0) {
    state_ = kZero;
    return;
  }
  if (limbs_ == 0) return;
  mpz_t view, m;
  vexa::MantissaView(view, node);
  const int64_t d = vexa::DecimalDigits(view);
  if (d > digits_) return;
  mpz_init(m);
  vexa::MulPow10(m, view, static_cast<unsigned long>(digits_ - d));
  mpz_abs(m, m);
  std::memset(mantissa_, 0, sizeof mantissa_);
  mpz_export(mantissa_, nullptr, -1, sizeof(uint64_t), 0, 0, m);
  mpz_clear(m);
  negative_ = node->size < 0;
  exponent_ = node->exponent - (digits_ - d);
  state_ = kLimbSum;
}

// The common case on limbs; false (nothing changed) when the float addition must decide.
bool VexaFloatAccumulator::AddLimbs(const VexaFloat& x) {
  const FloatNode* node = AsFloatNode(x.Handle());
  if (vexa::KindOf(node) != vexa::kFinite) return false;
  if (node->size == 0) return true;  // the sum has Digits digits already
  const int n = limbs_;
  const int lx = node->size < 0 ? -node->size : node->size;
  const int64_t ex = node->exponent;
  if (lx > n || ex < -kSafeExponent || ex > kSafeExponent || exponent_ < -kSafeExponent ||
      exponent_ > kSafeExponent)
    return false;
  // |x| = q + r / unit in units of 10^exponent_
  uint64_t q[kLimbs + 1] = {};
  uint64_t r = 0, unit = 1;
  const int64_t k = exponent_ - ex;
  if (k > 0) {
    if (k > 19) return false;
    r = DivRemPow10(q, node->limbs, lx, static_cast<int>(k));
    unit = vexa::kPow10[k];
  } else if (k == 0) {
    std::memcpy(q, node->limbs, sizeof(uint64_t) * lx);
  } else {
    if (k < -19) return false;
    q[lx] = mpn_mul_1(q, node->limbs, lx, vexa::kPow10[-k]);
    if (lx == n && q[n] != 0) return false;
  }
  uint64_t t[kLimbs];
  if ((node->size < 0) == negative_) {
    if (AddN(t, mantissa_, q, n) != 0) return false;
  } else {
    // |sum| - |x| = (M - q - 1) + (unit - r) / unit when r > 0; a sign change goes the slow way
    if (SubN(t, mantissa_, q, n) != 0) return false;
    if (r > 0) {
      static const uint64_t one[kLimbs] = {1};
      if (SubN(t, t, one, n) != 0) return false;
      r = unit - r;
    }
  }
  int64_t e = exponent_;
  bool up;
  if (CompareN(t, high_, n) < 0) {
    if (CompareN(t, low_, n) < 0) return false;  // cancellation: digits below 10^e count
    const uint64_t half = unit / 2;
    up = r > half || (r == half && r != 0 && (t[0] & 1));
  } else {
    if (CompareN(t, above_, n) >= 0) return false;
    const unsigned digit = static_cast<unsigned>(DivRemPow10(t, t, n, 1));
    ++e;
    up = digit > 5 || (digit == 5 && (r != 0 || (t[0] & 1)));
  }
  if (up) {
    Increment(t, n);
    if (CompareN(t, high_, n) == 0) {
      std::memcpy(t, low_, sizeof(uint64_t) * n);
      ++e;
    }
  }
  std::memcpy(mantissa_, t, sizeof(uint64_t) * n);
  exponent_ = e;
  return true;
}
