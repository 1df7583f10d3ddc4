// Decimal float arithmetic: nodes, correctly rounded + - * / and sqrt, exact comparison,
// rounding to Digits with ties to even. Mantissas of up to 18 digits at Digits <= 18 run
// on machine integers with 128-bit intermediates; everything else on GMP.
#include "float/decimal.h"

#include <gc.h>
#include <gmp.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <cstring>
#include <vector>

#include "float/float_node.h"
#include "host/error.h"

namespace vexa {

namespace {

int gDigits = 10;

constexpr uint64_t kPow10[20] = {1ULL,
                                 10ULL,
                                 100ULL,
                                 1000ULL,
                                 10000ULL,
                                 100000ULL,
                                 1000000ULL,
                                 10000000ULL,
                                 100000000ULL,
                                 1000000000ULL,
                                 10000000000ULL,
                                 100000000000ULL,
                                 1000000000000ULL,
                                 10000000000000ULL,
                                 100000000000000ULL,
                                 1000000000000000ULL,
                                 10000000000000000ULL,
                                 100000000000000000ULL,
                                 1000000000000000000ULL,
                                 10000000000000000000ULL};
constexpr uint64_t kSmallLimit = 1000000000000000000ULL;  // 10^18
constexpr int kSmallDigits = 18;

using u128 = unsigned __int128;

constexpr std::array<u128, 39> MakePow10U128() {
  std::array<u128, 39> p{};
  p[0] = 1;
  for (int i = 1; i < 39; ++i) p[i] = p[i - 1] * 10;
  return p;
}
constexpr std::array<u128, 39> kPow10U128 = MakePow10U128();

// Decimal digits of v (1 for zero) in constant time: t = floor(bits * log10(2)) is the
// count or one short of it. v | 1 has the same count, as every power of ten above 1 is even.
int DigitsU64(uint64_t v) {
  uint64_t w = v | 1;
  int t = ((64 - __builtin_clzll(w)) * 1233) >> 12;
  return t + (w >= kPow10[t]);
}

int DigitsU128(u128 v) {
  uint64_t hi = static_cast<uint64_t>(v >> 64);
  if (hi == 0) return DigitsU64(static_cast<uint64_t>(v));
  int t = ((128 - __builtin_clzll(hi)) * 1233) >> 12;
  return t + (v >= kPow10U128[t]);
}

// 128-by-64 division whose quotient fits in 64 bits (hi(n) < d).
inline uint64_t DivRem128(u128 n, uint64_t d, uint64_t* rem) {
#if defined(__x86_64__)
  uint64_t q, r;
  uint64_t hi = static_cast<uint64_t>(n >> 64), lo = static_cast<uint64_t>(n);
  __asm__("divq %4" : "=a"(q), "=d"(r) : "a"(lo), "d"(hi), "rm"(d) : "cc");
  *rem = r;
  return q;
#else
  *rem = static_cast<uint64_t>(n % d);
  return static_cast<uint64_t>(n / d);
#endif
}

ALGEB gUndefined, gPlusInfinity, gMinusInfinity, gZero;

ALGEB AllocFloat(int limbs) {
  size_t bytes = offsetof(FloatNode, limbs) + sizeof(mp_limb_t) * (limbs > 0 ? limbs : 1);
  CheckInterrupt();
  void* p = GC_MALLOC_ATOMIC(bytes);
  if (p == nullptr) throw std::bad_alloc();
  return static_cast<ALGEB>(p);
}

ALGEB MakeSpecial(FloatKind kind) {
  ALGEB e = AllocFloat(1);
  FloatNode* n = reinterpret_cast<FloatNode*>(e);
  n->header = MakeHeader(kFloatNode, kind);
  n->size = 0;
  n->exponent = 0;
  n->limbs[0] = 0;
  return e;
}

struct Specials {
  Specials() {
    GC_INIT();
    gUndefined = MakeSpecial(kUndefined);
    gPlusInfinity = MakeSpecial(kPlusInfinity);
    gMinusInfinity = MakeSpecial(kMinusInfinity);
    gZero = MakeSpecial(kFinite);
    GC_add_roots(&gUndefined, &gZero + 1);
  }
};
const Specials& EnsureSpecials() {
  static Specials specials;
  return specials;
}

// Powers of ten as GMP integers, cached up to a size where computing them is cheap anyway.
// A static array, so that its limbs stay reachable from static data for leak checkers.
constexpr unsigned long kCachedPowers = 4096;
const mpz_t& Pow10Cached(unsigned long k) {
  static mpz_t cache[kCachedPowers];
  static unsigned long filled = 0;
  for (; filled <= k; ++filled) {
    mpz_init(cache[filled]);
    mpz_ui_pow_ui(cache[filled], 10, filled);
  }
  return cache[k];
}

}  // namespace

void Pow10(mpz_t r, unsigned long k) {
  if (k < kCachedPowers)
    mpz_set(r, Pow10Cached(k));
  else
    mpz_ui_pow_ui(r, 10, k);
}

void MulPow10(mpz_t r, const mpz_t a, unsigned long k) {
  if (k < 20) {
    mpz_mul_ui(r, a, kPow10[k]);
  } else if (k < kCachedPowers) {
    mpz_mul(r, a, Pow10Cached(k));
  } else {
    mpz_t p;
    mpz_init(p);
    mpz_ui_pow_ui(p, 10, k);
    mpz_mul(r, a, p);
    mpz_clear(p);
  }
}

int64_t DecimalDigits(const mpz_t a) {
  if (mpz_sgn(a) == 0) return 1;
  if (mpz_size(a) == 1) return DigitsU64(mpz_getlimbn(a, 0));
  int64_t n = static_cast<int64_t>(mpz_sizeinbase(a, 10));
  // sizeinbase may overstate by one
  if (n < static_cast<int64_t>(kCachedPowers)) {
    if (mpz_cmpabs(a, Pow10Cached(n - 1)) < 0) --n;
  } else {
    mpz_t p;
    mpz_init(p);
    mpz_ui_pow_ui(p, 10, n - 1);
    if (mpz_cmpabs(a, p) < 0) --n;
    mpz_clear(p);
  }
  return n;
}

ALGEB SpecialFloatNode(FloatKind kind) {
  EnsureSpecials();
  switch (kind) {
    case kUndefined:
      return gUndefined;
    case kPlusInfinity:
      return gPlusInfinity;
    case kMinusInfinity:
      return gMinusInfinity;
    default:
      return gZero;
  }
}

ALGEB NewSmallFloatNode(int64_t mantissa, int64_t exponent) {
  if (mantissa == 0) return SpecialFloatNode(kFinite);
  ALGEB e = AllocFloat(1);
  FloatNode* n = reinterpret_cast<FloatNode*>(e);
  n->header = MakeHeader(kFloatNode, kFinite);
  n->size = mantissa < 0 ? -1 : 1;
  n->exponent = exponent;
  n->limbs[0] = mantissa < 0 ? 0 - static_cast<uint64_t>(mantissa) : mantissa;
  return e;
}

ALGEB NewFloatNode(const mpz_t mantissa, int64_t exponent) {
  int size = mantissa->_mp_size;
  if (size == 0) return SpecialFloatNode(kFinite);
  int limbs = size < 0 ? -size : size;
  ALGEB e = AllocFloat(limbs);
  FloatNode* n = reinterpret_cast<FloatNode*>(e);
  n->header = MakeHeader(kFloatNode, kFinite);
  n->size = size;
  n->exponent = exponent;
  std::memcpy(n->limbs, mantissa->_mp_d, sizeof(mp_limb_t) * limbs);
  return e;
}

// Rounds |m| * 10^e (sign s) to `digits` digits, ties to even, strips trailing zeros and
// checks the exponent range. digits <= 0 keeps every digit.
namespace {

// Scratch integers reused across calls, so that the GMP paths do not allocate each time.
struct Scratch {
  mpz_t v;
  Scratch() { mpz_init(v); }
  ~Scratch() { mpz_clear(v); }
};
thread_local Scratch gRemainder, gProduct;

ALGEB FinishSmall(bool negative, uint64_t m, int64_t e) {
  if (m == 0) return SpecialFloatNode(kFinite);
  while (m % 10 == 0) {
    m /= 10;
    ++e;
  }
  int64_t top = e + DigitsU64(m);
  if (top > kMaxExponent) return SpecialFloatNode(negative ? kMinusInfinity : kPlusInfinity);
  if (top < -kMaxExponent) return SpecialFloatNode(kFinite);
  return NewSmallFloatNode(negative ? -static_cast<int64_t>(m) : static_cast<int64_t>(m), e);
}

// Round a non-negative 128-bit mantissa to `digits` digits (digits <= 18).
ALGEB RoundSmall(bool negative, u128 m, int64_t e, int digits) {
  int n = DigitsU128(m);
  if (n <= digits) return FinishSmall(negative, static_cast<uint64_t>(m), e);
  int k = n - digits;  // 1 <= k <= 38
  uint64_t q;
  bool up;
  if (k <= 19 && static_cast<uint64_t>(m >> 64) < kPow10[k]) {
    uint64_t r;
    q = DivRem128(m, kPow10[k], &r);
    uint64_t half = kPow10[k] / 2;
    up = r > half || (r == half && (q & 1));
  } else {
    u128 p = 1;
    for (int i = 0; i < k; ++i) p *= 10;
    q = static_cast<uint64_t>(m / p);
    u128 r = m % p;
    u128 half = p / 2;
    up = r > half || (r == half && (q & 1));
  }
  if (up) ++q;
  return FinishSmall(negative, q, e + k);
}

}  // namespace

ALGEB RoundToNode(mpz_t m, int64_t e, int digits) {
  if (mpz_sgn(m) == 0) return SpecialFloatNode(kFinite);
  if (mpz_size(m) <= 2) {
    u128 v = mpz_getlimbn(m, 0);
    if (mpz_size(m) == 2) v |= static_cast<u128>(mpz_getlimbn(m, 1)) << 64;
    if (digits > 0 && digits <= kSmallDigits) return RoundSmall(mpz_sgn(m) < 0, v, e, digits);
    if ((v >> 64) == 0 && v < kSmallLimit && (digits <= 0 || digits >= kSmallDigits))
      return FinishSmall(mpz_sgn(m) < 0, static_cast<uint64_t>(v), e);
  }
  int64_t n = DecimalDigits(m);
  if (digits > 0 && n > digits) {
    int64_t k = n - digits;
    mpz_t big;
    const mpz_t* p = &big;
    if (k < static_cast<int64_t>(kCachedPowers)) {
      p = &Pow10Cached(k);
    } else {
      mpz_init(big);
      Pow10(big, k);
    }
    mpz_t& r = gRemainder.v;
    int sign = mpz_sgn(m);
    mpz_abs(m, m);
    mpz_tdiv_qr(m, r, m, *p);
    mpz_mul_2exp(r, r, 1);
    int c = mpz_cmp(r, *p);
    if (c > 0 || (c == 0 && mpz_odd_p(m))) mpz_add_ui(m, m, 1);
    if (sign < 0) mpz_neg(m, m);
    e += k;
    if (p == &big) mpz_clear(big);
  }
  if (mpz_divisible_ui_p(m, 10)) {
    mpz_t ten;
    mpz_init_set_ui(ten, 10);
    e += static_cast<int64_t>(mpz_remove(m, m, ten));
    mpz_clear(ten);
  }
  int64_t top = e + DecimalDigits(m);
  if (top > kMaxExponent) return SpecialFloatNode(mpz_sgn(m) < 0 ? kMinusInfinity : kPlusInfinity);
  if (top < -kMaxExponent) return SpecialFloatNode(kFinite);
  return NewFloatNode(m, e);
}

int CurrentDigits() {
  return gDigits;
}

int SetDigits(int digits) {
  int old = gDigits;
  if (digits < 1) digits = 1;
  if (digits > VEXA_MAX_DIGITS) digits = VEXA_MAX_DIGITS;
  gDigits = digits;
  return old;
}

// Is the node's mantissa a machine integer below 10^18?
inline bool IsSmall(const FloatNode* n) {
  return n->size >= -1 && n->size <= 1 && n->limbs[0] < kSmallLimit;
}
inline int64_t SmallValue(const FloatNode* n) {
  return n->size == 0 ? 0 : (n->size < 0 ? -static_cast<int64_t>(n->limbs[0]) : n->limbs[0]);
}
// |mantissa| of a node of at most two limbs.
inline u128 Magnitude128(const FloatNode* n) {
  u128 m = n->size == 0 ? 0 : n->limbs[0];
  if (n->size == 2 || n->size == -2) m |= static_cast<u128>(n->limbs[1]) << 64;
  return m;
}

// ---- arithmetic on finite nodes ----

namespace {

// Exact sum ma * 10^ea + mb * 10^eb into m * 10^e. When the smaller operand lies wholly
// below every digit of the larger and at least three places below the rounding position,
// it only decides the rounding direction: a sticky unit one place further down stands in
// for it, so huge exponent gaps cost nothing.
void AddExact(mpz_t m, int64_t* e, const mpz_t ma, int64_t ea, const mpz_t mb, int64_t eb,
              int digits) {
  int64_t topA = ea + DecimalDigits(ma), topB = eb + DecimalDigits(mb);
  if (topA < topB) {
    AddExact(m, e, mb, eb, ma, ea, digits);
    return;
  }
  if (digits > 0) {
    int64_t t = std::min<int64_t>(ea, topA - digits - 3);
    if (topB <= t) {
      MulPow10(m, ma, static_cast<unsigned long>(ea - t + 1));
      if (mpz_sgn(mb) > 0)
        mpz_add_ui(m, m, 1);
      else
        mpz_sub_ui(m, m, 1);
      *e = t - 1;
      return;
    }
  }
  if (ea >= eb) {
    MulPow10(m, ma, static_cast<unsigned long>(ea - eb));
    mpz_add(m, m, mb);
    *e = eb;
  } else {
    MulPow10(m, mb, static_cast<unsigned long>(eb - ea));
    mpz_add(m, m, ma);
    *e = ea;
  }
}

}  // namespace

ALGEB AddFinite(const FloatNode* a, const FloatNode* b, bool subtract, int digits) {
  if (b->size == 0) return RoundNode(a, digits);
  if (a->size == 0) return subtract ? NegateNode(b, digits) : RoundNode(b, digits);
  if (digits <= kSmallDigits && IsSmall(a) && IsSmall(b)) {
    int64_t ma = SmallValue(a), mb = SmallValue(b);
    if (subtract) mb = -mb;
    int64_t ea = a->exponent, eb = b->exponent;
    if (ea < eb) {
      std::swap(ma, mb);
      std::swap(ea, eb);
    }
    int64_t d = ea - eb;
    if (d <= 19) {
      __int128 s = static_cast<__int128>(ma) * static_cast<__int128>(kPow10[d]) + mb;
      bool neg = s < 0;
      return RoundSmall(neg, static_cast<u128>(neg ? -s : s), eb, digits);
    }
  }
  mpz_t m, ma, mb, nb;
  mpz_init(m);
  MantissaView(ma, a);
  MantissaView(mb, b);
  mpz_init(nb);
  if (subtract)
    mpz_neg(nb, mb);
  else
    mpz_set(nb, mb);
  int64_t e;
  AddExact(m, &e, ma, a->exponent, nb, b->exponent, digits);
  ALGEB r = RoundToNode(m, e, digits);
  mpz_clear(m);
  mpz_clear(nb);
  return r;
}

ALGEB MulFinite(const FloatNode* a, const FloatNode* b, int digits) {
  if (a->size == 0 || b->size == 0) return SpecialFloatNode(kFinite);
  if (digits <= kSmallDigits && IsSmall(a) && IsSmall(b)) {
    u128 p = static_cast<u128>(a->limbs[0]) * b->limbs[0];
    return RoundSmall((a->size < 0) != (b->size < 0), p, a->exponent + b->exponent, digits);
  }
  mpz_t ma, mb;
  mpz_t& m = gProduct.v;
  MantissaView(ma, a);
  MantissaView(mb, b);
  mpz_mul(m, ma, mb);
  return RoundToNode(m, a->exponent + b->exponent, digits);
}

ALGEB DivFinite(const FloatNode* a, const FloatNode* b, int digits) {
  if (a->size == 0) return SpecialFloatNode(kFinite);
  bool negative = (a->size < 0) != (b->size < 0);
  if (digits <= kSmallDigits && IsSmall(a) && IsSmall(b)) {
    // q = a * 10^k / b with at least digits + 2 digits, plus a sticky digit
    uint64_t ua = a->limbs[0], ub = b->limbs[0];
    int k = digits + 2 + DigitsU64(ub) - DigitsU64(ua);
    if (k < 0) k = 0;
    if (k <= 19) {
      u128 n = static_cast<u128>(ua) * kPow10[k];
      u128 q = n / ub;
      bool sticky = (n % ub) != 0;
      q = q * 10 + (sticky ? 1 : 0);
      return RoundSmall(negative, q, a->exponent - b->exponent - k - 1, digits);
    }
  }
  mpz_t q, r, ma, mb;
  mpz_init(q);
  mpz_init(r);
  MantissaView(ma, a);
  MantissaView(mb, b);
  int64_t k = 0;
  if (digits > 0) {
    k = digits + 2 + DecimalDigits(mb) - DecimalDigits(ma);
    if (k < 0) k = 0;
  } else {
    k = 2 * (DecimalDigits(ma) + DecimalDigits(mb)) + 20;
  }
  MulPow10(q, ma, static_cast<unsigned long>(k));
  mpz_abs(q, q);
  mpz_t ub;
  mpz_roinit_n(ub, b->limbs, b->size < 0 ? -b->size : b->size);
  mpz_tdiv_qr(q, r, q, ub);
  mpz_mul_ui(q, q, 10);
  if (mpz_sgn(r) != 0) mpz_add_ui(q, q, 1);
  if (negative) mpz_neg(q, q);
  ALGEB res = RoundToNode(q, a->exponent - b->exponent - k - 1, digits);
  mpz_clear(q);
  mpz_clear(r);
  return res;
}

ALGEB SqrtFinite(const FloatNode* a, int digits) {
  if (a->size == 0) return SpecialFloatNode(kFinite);
  if (a->size < 0) return SpecialFloatNode(kUndefined);
  mpz_t m, r, ma;
  mpz_init(m);
  mpz_init(r);
  MantissaView(ma, a);
  // m * 10^e with e even and m holding at least 2 * digits + 4 digits
  int64_t e = a->exponent;
  int64_t n = DecimalDigits(ma);
  int64_t shift = 2 * digits + 4 - n;
  if (shift < 0) shift = 0;
  if ((e - shift) % 2 != 0) ++shift;
  MulPow10(m, ma, static_cast<unsigned long>(shift));
  e -= shift;
  mpz_sqrtrem(m, r, m);
  mpz_mul_ui(m, m, 10);
  if (mpz_sgn(r) != 0) mpz_add_ui(m, m, 1);
  ALGEB res = RoundToNode(m, e / 2 - 1, digits);
  mpz_clear(m);
  mpz_clear(r);
  return res;
}

ALGEB RoundNode(const FloatNode* a, int digits) {
  if (KindOf(a) != kFinite || a->size == 0)
    return reinterpret_cast<ALGEB>(const_cast<FloatNode*>(a));
  if (IsSmall(a) && (digits >= kSmallDigits || a->limbs[0] < kPow10[digits]))
    return reinterpret_cast<ALGEB>(const_cast<FloatNode*>(a));
  mpz_t m, ma;
  MantissaView(ma, a);
  if (digits >= DecimalDigits(ma)) return reinterpret_cast<ALGEB>(const_cast<FloatNode*>(a));
  mpz_init_set(m, ma);
  ALGEB r = RoundToNode(m, a->exponent, digits);
  mpz_clear(m);
  return r;
}

ALGEB NegateNode(const FloatNode* a, int digits) {
  switch (KindOf(a)) {
    case kPlusInfinity:
      return SpecialFloatNode(kMinusInfinity);
    case kMinusInfinity:
      return SpecialFloatNode(kPlusInfinity);
    case kUndefined:
      return SpecialFloatNode(kUndefined);
    default:
      break;
  }
  if (a->size == 0) return SpecialFloatNode(kFinite);
  mpz_t m, ma;
  MantissaView(ma, a);
  mpz_init(m);
  mpz_neg(m, ma);
  ALGEB r = RoundToNode(m, a->exponent, digits);
  mpz_clear(m);
  return r;
}

// Exact three-way comparison of finite values.
int CompareFinite(const FloatNode* a, const FloatNode* b) {
  int sa = a->size > 0 ? 1 : (a->size < 0 ? -1 : 0);
  int sb = b->size > 0 ? 1 : (b->size < 0 ? -1 : 0);
  if (sa != sb) return sa < sb ? -1 : 1;
  if (sa == 0) return 0;
  if (IsSmall(a) && IsSmall(b)) {
    int64_t ta = a->exponent + DigitsU64(a->limbs[0]);
    int64_t tb = b->exponent + DigitsU64(b->limbs[0]);
    if (ta != tb) return (ta < tb ? -1 : 1) * sa;
    // same top position: exponent difference is below 19
    u128 x = a->limbs[0], y = b->limbs[0];
    if (a->exponent > b->exponent)
      x *= kPow10[a->exponent - b->exponent];
    else
      y *= kPow10[b->exponent - a->exponent];
    return (x == y ? 0 : (x < y ? -1 : 1)) * sa;
  }
  if (a->size >= -2 && a->size <= 2 && b->size >= -2 && b->size <= 2) {
    // Up to two limbs: the same in 128-bit integers. With equal top positions the scaled
    // mantissa has the other's digit count, so below 39 digits it cannot overflow.
    u128 x = Magnitude128(a), y = Magnitude128(b);
    if (a->exponent == b->exponent) return (x == y ? 0 : (x < y ? -1 : 1)) * sa;
    int da = DigitsU128(x), db = DigitsU128(y);
    int64_t ta = a->exponent + da, tb = b->exponent + db;
    if (ta != tb) return (ta < tb ? -1 : 1) * sa;
    if (da <= 38 && db <= 38) {
      if (a->exponent > b->exponent)
        x *= kPow10U128[a->exponent - b->exponent];
      else
        y *= kPow10U128[b->exponent - a->exponent];
      return (x == y ? 0 : (x < y ? -1 : 1)) * sa;
    }
  }
  mpz_t ma, mb;
  MantissaView(ma, a);
  MantissaView(mb, b);
  int64_t ta = a->exponent + DecimalDigits(ma);
  int64_t tb = b->exponent + DecimalDigits(mb);
  if (ta != tb) return (ta < tb ? -1 : 1) * sa;
  mpz_t x;
  mpz_init(x);
  int c;
  if (a->exponent > b->exponent) {
    MulPow10(x, ma, static_cast<unsigned long>(a->exponent - b->exponent));
    c = mpz_cmp(x, mb);
  } else {
    MulPow10(x, mb, static_cast<unsigned long>(b->exponent - a->exponent));
    c = mpz_cmp(ma, x);
  }
  mpz_clear(x);
  return c < 0 ? -1 : (c > 0 ? 1 : 0);
}

}  // namespace vexa
