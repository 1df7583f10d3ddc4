// Decimal float arithmetic: nodes, correctly rounded + - * / and sqrt, exact comparison,
// rounding to Digits with ties to even. Mantissas of up to 18 digits at Digits <= 18 run
// on machine integers with 128-bit intermediates; everything else on GMP's mpn layer over
// stack buffers. Rounding divides by 10^k as 2^k 5^k: a shift, then a division by the
// smaller 5^k; one decimal digit (the common case of a sum) is a division by 5 done as a
// Hensel division, since 5 divides 2^64 - 1.
#include "float/decimal.h"
#include "float/pow10.h"

#include <gc.h>
#include <gmp.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "float/float_node.h"
#include "host/error.h"
#include "host/node_pool.h"

namespace vexa {

int gDigits = 10;

namespace {

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
  void* p = AllocAtomicPooled(bytes);
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
    InitCollector();
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

const mpz_t& Pow5Cached(unsigned long k) {
  static mpz_t cache[kCachedPowers];
  static unsigned long filled = 0;
  for (; filled <= k; ++filled) {
    mpz_init(cache[filled]);
    mpz_ui_pow_ui(cache[filled], 5, filled);
  }
  return cache[k];
}

// base^k, cached below kCachedPowers; above, the last one asked for is kept (valid until
// the next call for another exponent).
const mpz_t& PowerOf(unsigned base, unsigned long k) {
  if (k < kCachedPowers) return base == 10 ? Pow10Cached(k) : Pow5Cached(k);
  static mpz_t last[2];
  static unsigned long lastK[2] = {0, 0};
  int i = base == 10 ? 0 : 1;
  if (lastK[i] == 0) mpz_init(last[i]);
  if (lastK[i] != k) {
    mpz_ui_pow_ui(last[i], base, k);
    lastK[i] = k;
  }
  return last[i];
}

// ---- limb kernels ----

// Limb scratch on the stack, or from malloc when large (limbs hold no handles).
class LimbBuffer {
 public:
  explicit LimbBuffer(size_t n)
      : p_(n <= kInline ? local_ : static_cast<mp_limb_t*>(std::malloc(n * sizeof(mp_limb_t)))) {
    if (p_ == nullptr) throw std::bad_alloc();
  }
  ~LimbBuffer() {
    if (p_ != local_) std::free(p_);
  }
  LimbBuffer(const LimbBuffer&) = delete;
  LimbBuffer& operator=(const LimbBuffer&) = delete;
  mp_limb_t* get() { return p_; }

 private:
  static constexpr size_t kInline = 160;
  mp_limb_t local_[kInline];
  mp_limb_t* p_;
};

// Limbs enough for a number of `digits` decimal digits times 10^k (10^19 < 2^64).
inline size_t LimbsFor(int64_t limbs, int64_t k) {
  return static_cast<size_t>(limbs + k / 19 + 3);
}

inline mp_size_t Normalized(const mp_limb_t* m, mp_size_t n) {
  while (n > 0 && m[n - 1] == 0) --n;
  return n;
}

// floor(log10(2) * 2^64): floor(bits * log10 2) is exact with it for any size here.
constexpr uint64_t kLog10Of2 = 0x4d104d427de7fbccULL;

// Decimal digits of the n-limb m (top limb nonzero): t = floor(bits log10 2) is the count
// or one short of it, decided by one comparison with 10^t.
int64_t LimbDigits(const mp_limb_t* m, mp_size_t n) {
  if (n == 1) return DigitsU64(m[0]);
  uint64_t bits = static_cast<uint64_t>(n) * 64 - __builtin_clzll(m[n - 1]);
  int64_t t = static_cast<int64_t>((static_cast<u128>(bits) * kLog10Of2) >> 64);
  const mpz_t& p = PowerOf(10, static_cast<unsigned long>(t));
  mp_size_t pn = p->_mp_size;
  if (n != pn) return t + (n > pn);
  mp_limb_t top = p->_mp_d[n - 1];
  if (m[n - 1] != top) return t + (m[n - 1] > top);
  return t + (mpn_cmp(m, p->_mp_d, n - 1) >= 0);
}

// Bounds on the decimal digits of the n-limb m (top limb nonzero) from its bit length.
inline int64_t DigitsAtMost(const mp_limb_t* m, mp_size_t n) {
  uint64_t bits = static_cast<uint64_t>(n) * 64 - __builtin_clzll(m[n - 1]);
  return static_cast<int64_t>((static_cast<u128>(bits) * kLog10Of2) >> 64) + 1;
}
inline int64_t DigitsAtLeast(const mp_limb_t* m, mp_size_t n) {
  uint64_t bits = static_cast<uint64_t>(n) * 64 - __builtin_clzll(m[n - 1]);
  return static_cast<int64_t>((static_cast<u128>(bits - 1) * kLog10Of2) >> 64) + 1;
}

// m mod 5 from the sum of the limbs, as 2^64 = 1 (mod 5); m mod 10 with the parity.
unsigned Mod5(const mp_limb_t* m, mp_size_t n) {
  u128 s = 0;
  for (mp_size_t i = 0; i < n; ++i) s += m[i];
  return static_cast<unsigned>((static_cast<uint64_t>(s) % 5 + static_cast<uint64_t>(s >> 64) % 5) %
                               5);
}
unsigned Mod10(const mp_limb_t* m, mp_size_t n) {
  unsigned r5 = Mod5(m, n);
  return (r5 & 1) == (m[0] & 1) ? r5 : r5 + 5;
}

// q = m / 10 for m divisible by 10 (q may be m); returns q mod 5. The quotient is (m / 2)
// / 5, m / 2 read a limb at a time. With b = (2^64 - 1) / 5, 1/5 is -b (1 + 2^64 + ...)
// 2-adically, so each quotient limb is a running difference of the limbs of (m / 2) b: the
// carry chain is one subtraction per limb.
unsigned DivExact10(mp_limb_t* q, const mp_limb_t* m, mp_size_t n) {
  constexpr mp_limb_t b = ~mp_limb_t(0) / 5;
  mp_limb_t h = 0;
  u128 sum = 0;
  auto step = [&](mp_size_t i, mp_limb_t w) {
    u128 p = static_cast<u128>(w) * b;
    mp_limb_t lo = static_cast<mp_limb_t>(p), hi = static_cast<mp_limb_t>(p >> 64);
    mp_limb_t borrow = h < lo;
    h -= lo;
    q[i] = h;
    sum += h;
    h = h - hi - borrow;
  };
  for (mp_size_t i = 0; i + 1 < n; ++i) step(i, (m[i] >> 1) | (m[i + 1] << 63));
  step(n - 1, m[n - 1] >> 1);
  return static_cast<unsigned>(
      (static_cast<uint64_t>(sum) % 5 + static_cast<uint64_t>(sum >> 64) % 5) % 5);
}

// dst = src * 10^k (dst apart from src, LimbsFor(n, k) limbs); returns the normalized size.
// Room: n + (k log2(5) / 64 + 1) + k / 64 + 1 limbs, below n + k / 19 + 3.
mp_size_t ScaleByPow10(mp_limb_t* dst, const mp_limb_t* src, mp_size_t n, int64_t k) {
  if (k == 0) {
    mpn_copyi(dst, src, n);
    return n;
  }
  if (k < 20) {
    dst[n] = mpn_mul_1(dst, src, n, kPow10[k]);
    return Normalized(dst, n + 1);
  }
  // src 5^k 2^k: the product with 5^k has 30% fewer limbs than with 10^k; the shift is
  // done in place from the top down
  const mpz_t& p = PowerOf(5, static_cast<unsigned long>(k));
  mp_size_t pn = p->_mp_size;
  mp_size_t w = static_cast<mp_size_t>(k / 64);
  unsigned b = static_cast<unsigned>(k % 64);
  if (n >= pn)
    mpn_mul(dst, src, n, p->_mp_d, pn);
  else
    mpn_mul(dst, p->_mp_d, pn, src, n);
  mp_size_t len = n + pn;
  if (b != 0) {
    dst[len + w] = mpn_lshift(dst + w, dst, len, b);
  } else {
    if (w != 0) std::memmove(dst + w, dst, sizeof(mp_limb_t) * static_cast<size_t>(len));
    dst[len + w] = 0;
  }
  std::fill(dst, dst + w, mp_limb_t(0));
  return Normalized(dst, len + w + 1);
}

// 5^k for 27 < k <= 55 shifted to two limbs with the top bit set, and its reciprocal
// floor((2^192 - 1) / d) - 2^64 for the 3/2 division step (Möller and Granlund, 2011,
// Algorithm 5), made once.
struct Pow5Reciprocal {
  mp_limb_t d1, d0;
  unsigned shift;
  mp_limb_t v;
};
const Pow5Reciprocal& Pow5TwoLimbReciprocal(int64_t k) {
  static const std::array<Pow5Reciprocal, 56> table = [] {
    std::array<Pow5Reciprocal, 56> t{};
    mpz_t d, q, top;
    mpz_init(d);
    mpz_init(q);
    mpz_init(top);
    mpz_ui_pow_ui(top, 2, 192);
    mpz_sub_ui(top, top, 1);
    for (int i = 28; i <= 55; ++i) {
      mpz_ui_pow_ui(d, 5, static_cast<unsigned long>(i));
      unsigned shift = static_cast<unsigned>(128 - mpz_sizeinbase(d, 2));
      mpz_mul_2exp(d, d, shift);
      mpz_tdiv_q(q, top, d);  // in [2^64, 2^65): d is no power of two
      mpz_clrbit(q, 64);
      t[static_cast<size_t>(i)] = {mpz_getlimbn(d, 1), mpz_getlimbn(d, 0), shift,
                                   mpz_getlimbn(q, 0)};
    }
    mpz_clear(d);
    mpz_clear(q);
    mpz_clear(top);
    return t;
  }();
  return table[static_cast<size_t>(k)];
}

// q = floor(s / 5^k) (mn >= 2 limbs of q; s is shifted in place), for 27 < k <= 55;
// returns the remainder. Each quotient limb is one 3/2 step with the stored reciprocal.
u128 DivPow5Two(mp_limb_t* q, mp_limb_t* s, mp_size_t mn, int64_t k) {
  const Pow5Reciprocal& c = Pow5TwoLimbReciprocal(k);
  const u128 d = (static_cast<u128>(c.d1) << 64) | c.d0;
  mp_limb_t top = c.shift != 0 ? mpn_lshift(s, s, mn, c.shift) : 0;
  u128 r = (static_cast<u128>(top) << 64) | s[mn - 1];
  mp_limb_t high = 0;
  if (r >= d) {
    r -= d;
    high = 1;
  }
  for (mp_size_t i = mn - 2; i >= 0; --i) {
    mp_limb_t n2 = static_cast<mp_limb_t>(r >> 64), n1 = static_cast<mp_limb_t>(r);
    u128 qq = static_cast<u128>(c.v) * n2 + r;
    mp_limb_t q1 = static_cast<mp_limb_t>(qq >> 64), q0 = static_cast<mp_limb_t>(qq);
    mp_limb_t r1 = n1 - q1 * c.d1;
    r = ((static_cast<u128>(r1) << 64) | s[i]) - static_cast<u128>(c.d0) * q1 - d;
    ++q1;
    if (static_cast<mp_limb_t>(r >> 64) >= q0) {
      --q1;
      r += d;
    }
    if (__builtin_expect(r >= d, 0)) {
      ++q1;
      r -= d;
    }
    q[i] = q1;
  }
  q[mn - 1] = high;
  return r >> c.shift;
}

// q = floor(m / 10^k) into m, for k >= 20 and m >= 10^k; returns whether to round q up
// (sticky: the value lies above m by less than a unit). With m = 2^k M + r2 and
// M = 5^k q + r5, the remainder is 2^k r5 + r2, which against half of 10^k is
// 2 r5 + (bit k-1 of m) against 5^k, the bits below k - 1 breaking a tie.
bool DivPow10Large(mp_limb_t* m, mp_size_t* n, int64_t k, bool sticky) {
  mp_size_t o = static_cast<mp_size_t>(k / 64);
  unsigned sh = static_cast<unsigned>(k % 64);
  mp_size_t tl = static_cast<mp_size_t>((k - 1) / 64);
  unsigned tb = static_cast<unsigned>((k - 1) % 64);
  bool half = (m[tl] >> tb) & 1;
  bool below = sticky || (m[tl] & ((mp_limb_t(1) << tb) - 1)) != 0;
  for (mp_size_t i = 0; i < tl && !below; ++i) below = m[i] != 0;
  mp_size_t mn = *n - o;
  LimbBuffer shifted(static_cast<size_t>(mn));
  mp_limb_t* s = shifted.get();
  if (sh != 0)
    mpn_rshift(s, m + o, mn, sh);
  else
    mpn_copyi(s, m + o, mn);
  mn = Normalized(s, mn);
  const mpz_t& p = PowerOf(5, static_cast<unsigned long>(k));
  mp_size_t pn = p->_mp_size;
  LimbBuffer rem(static_cast<size_t>(pn));
  mp_limb_t* r = rem.get();
  if (pn == 2) {  // 27 < k <= 55, Digits near 50
    u128 r5 = DivPow5Two(m, s, mn, k);
    *n = Normalized(m, mn);
    u128 c = ((static_cast<u128>(p->_mp_d[1]) << 64) | p->_mp_d[0]) >> 1;  // (5^k - 1) / 2
    return r5 > c || (r5 == c && half && (below || (m[0] & 1)));
  }
  mpn_tdiv_qr(m, r, 0, s, mn, p->_mp_d, pn);
  *n = Normalized(m, mn - pn + 1);
  int c = mpn_lshift(r, r, pn, 1) != 0 ? 1 : 0;
  r[0] |= half;
  if (c == 0) c = mpn_cmp(r, p->_mp_d, pn);
  return c > 0 || (c == 0 && (below || (m[0] & 1)));
}

ALGEB FinishSmall(bool negative, uint64_t m, int64_t e);
ALGEB RoundSmall(bool negative, u128 m, int64_t e, int digits);

// Node for (-1)^negative m 10^e, m = mp[0..n) (scratch): trailing zeros stripped, the
// exponent range checked.
ALGEB FinishLimbs(bool negative, mp_limb_t* mp, mp_size_t n, int64_t e) {
  n = Normalized(mp, n);
  if (n == 0) return SpecialFloatNode(kFinite);
  if (n == 1 && mp[0] <= INT64_MAX) return FinishSmall(negative, mp[0], e);
  unsigned r5 = (mp[0] & 1) == 0 ? Mod5(mp, n) : 1;
  for (int stripped = 0; (mp[0] & 1) == 0 && r5 == 0; ++stripped) {
    if (stripped == 8) {  // many zeros: remove them all at once
      mpz_t view, q, ten;
      mpz_roinit_n(view, mp, n);
      mpz_init(q);
      mpz_init_set_ui(ten, 10);
      e += static_cast<int64_t>(mpz_remove(q, view, ten));
      n = static_cast<mp_size_t>(mpz_size(q));
      mpn_copyi(mp, q->_mp_d, n);
      mpz_clear(q);
      mpz_clear(ten);
      break;
    }
    r5 = DivExact10(mp, mp, n);
    n = Normalized(mp, n);
    ++e;
  }
  if (n == 1 && mp[0] <= INT64_MAX) return FinishSmall(negative, mp[0], e);
  if (e > kMaxExponent - 20 * static_cast<int64_t>(n) || e < -kMaxExponent) {
    int64_t top = e + LimbDigits(mp, n);
    if (top > kMaxExponent) return SpecialFloatNode(negative ? kMinusInfinity : kPlusInfinity);
    if (top < -kMaxExponent) return SpecialFloatNode(kFinite);
  }
  ALGEB node = AllocFloat(static_cast<int>(n));
  FloatNode* f = reinterpret_cast<FloatNode*>(node);
  f->header = MakeHeader(kFloatNode, kFinite);
  f->size = negative ? -static_cast<int32_t>(n) : static_cast<int32_t>(n);
  f->exponent = e;
  for (mp_size_t i = 0; i < n; ++i) f->limbs[i] = mp[i];
  return node;
}

// Rounds (-1)^negative (m + s) 10^e to `digits` digits, ties to even, m = mp[0..n) (scratch,
// n limbs suffice for the result). When `sticky`, s is some amount strictly between 0 and 1
// and m has more than `digits` digits; otherwise s = 0. digits <= 0 keeps m as it is.
ALGEB RoundLimbs(bool negative, mp_limb_t* mp, mp_size_t n, int64_t e, int digits, bool sticky) {
  n = Normalized(mp, n);
  if (n == 0) return SpecialFloatNode(kFinite);
  if (!sticky && digits > 0 && digits <= kSmallDigits && n <= 2) {
    u128 v = mp[0];
    if (n == 2) v |= static_cast<u128>(mp[1]) << 64;
    return RoundSmall(negative, v, e, digits);
  }
  if (digits <= 0) return FinishLimbs(negative, mp, n, e);
  int64_t d = LimbDigits(mp, n);
  if (d <= digits) return FinishLimbs(negative, mp, n, e);
  int64_t k = d - digits;
  bool up;
  if (k == 1) {
    unsigned r = Mod10(mp, n);
    mpn_sub_1(mp, mp, n, r);
    DivExact10(mp, mp, n);
    up = r > 5 || (r == 5 && (sticky || (mp[0] & 1)));
    n = Normalized(mp, n);
  } else if (k < 20) {
    mp_limb_t p = kPow10[k], half = p / 2;
    mp_limb_t r = mpn_divrem_1(mp, 0, mp, n, p);
    up = r > half || (r == half && (sticky || (mp[0] & 1)));
    n = Normalized(mp, n);
  } else {
    up = DivPow10Large(mp, &n, k, sticky);
  }
  if (up) {
    mp_limb_t carry = mpn_add_1(mp, mp, n, 1);
    if (carry != 0) mp[n++] = carry;
  }
  return FinishLimbs(negative, mp, n, e + k);
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
  return LimbDigits(a->_mp_d, static_cast<mp_size_t>(mpz_size(a)));
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

ALGEB FinishSmall(bool negative, uint64_t m, int64_t e) {
  if (m == 0) return SpecialFloatNode(kFinite);
  while ((m & 1) == 0 && m % 10 == 0) {
    m /= 10;
    ++e;
  }
  if (e > kMaxExponent - 20 || e < -kMaxExponent) {
    int64_t top = e + DigitsU64(m);
    if (top > kMaxExponent) return SpecialFloatNode(negative ? kMinusInfinity : kPlusInfinity);
    if (top < -kMaxExponent) return SpecialFloatNode(kFinite);
  }
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
    q = DivRemPow10(m, k, &r);
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
  return RoundLimbs(mpz_sgn(m) < 0, m->_mp_d, static_cast<mp_size_t>(mpz_size(m)), e, digits,
                    false);
}

// x = m 2^e2 with m odd: an integer when e2 >= 0, else m 5^-e2 10^e2, exact in decimal.
ALGEB DoubleToNode(double x, int digits) {
  if (std::isnan(x)) return SpecialFloatNode(kUndefined);
  if (std::isinf(x)) return SpecialFloatNode(x > 0 ? kPlusInfinity : kMinusInfinity);
  if (x == 0) return SpecialFloatNode(kFinite);
  uint64_t bits;
  std::memcpy(&bits, &x, sizeof bits);
  bool negative = bits >> 63;
  int biased = static_cast<int>((bits >> 52) & 0x7ff);
  uint64_t m = bits & ((uint64_t(1) << 52) - 1);
  if (biased != 0) m |= uint64_t(1) << 52;
  int e2 = (biased != 0 ? biased : 1) - 1075;
  int zeros = __builtin_ctzll(m);
  m >>= zeros;
  e2 += zeros;
  if (e2 >= 0) {
    mp_limb_t limbs[18] = {};  // m 2^e2 < 2^1024
    int w = e2 / 64, b = e2 % 64;
    limbs[w] = m << b;
    if (b != 0) limbs[w + 1] = m >> (64 - b);
    return RoundLimbs(negative, limbs, w + 2, 0, digits, false);
  }
  if (digits > 0 && digits <= kSmallDigits && e2 >= -127) {
    // x 10^j = m 10^j 2^e2 with j giving at least digits + 1 integer digits: its floor and a
    // sticky digit for the bits shifted out, all within 128 bits, then one rounding.
    // floor(v log10 2) is taken low by at most one, which only adds a digit.
    int lead = 64 - __builtin_clzll(m) + e2 - 1;  // x >= 2^lead
    int j = digits - ((lead * 1233) >> 12);
    if (j >= 0 && j <= 21) {
      u128 p = static_cast<u128>(m) * kPow10U128[static_cast<size_t>(j)];  // < 2^123
      u128 q = p >> -e2;
      bool sticky = (p & ((static_cast<u128>(1) << -e2) - 1)) != 0;
      if (q >= kPow10U128[static_cast<size_t>(digits)])
        return RoundSmall(negative, q * 10 + (sticky ? 1 : 0), -j - 1, digits);
    }
  }
  const mpz_t& p = PowerOf(5, static_cast<unsigned long>(-e2));
  mp_size_t pn = p->_mp_size;
  mp_limb_t limbs[42];  // 5^1074 m < 2^2548
  limbs[pn] = mpn_mul_1(limbs, p->_mp_d, pn, m);
  return RoundLimbs(negative, limbs, pn + 1, e2, digits, false);
}

ALGEB ShortestDoubleToNode(double x) {
  if (std::isnan(x)) return SpecialFloatNode(kUndefined);
  if (std::isinf(x)) return SpecialFloatNode(x > 0 ? kPlusInfinity : kMinusInfinity);
  if (x == 0) return SpecialFloatNode(kFinite);
  // the shortest text: "-0.00123", "53165205877497296" or "1.5e-300"
  char text[40];
  const char* end = std::to_chars(text, text + sizeof text, x).ptr;
  const char* c = text;
  bool negative = *c == '-';
  if (negative) ++c;
  uint64_t m = 0;
  int significant = 0;
  int64_t fraction = -1;  // digits after the point, once it is seen
  for (; c < end && *c != 'e'; ++c) {
    if (*c == '.') {
      fraction = 0;
      continue;
    }
    m = m * 10 + static_cast<uint64_t>(*c - '0');
    significant += m != 0;
    if (fraction >= 0) ++fraction;
  }
  if (significant > 19)
    return VexaFloatFromString(std::string(text, static_cast<size_t>(end - text))).Handle();
  int64_t power = 0;
  if (c < end) {
    for (const char* d = c + 2; d < end; ++d) power = power * 10 + (*d - '0');
    if (c[1] == '-') power = -power;
  }
  return FinishSmall(negative, m, power - (fraction > 0 ? fraction : 0));
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

// The sum rounded to digits > 0 on limbs. When one operand lies wholly below the other's
// digits and at least three places below the rounding position, only its sign matters: it
// stands for a sticky amount below the other scaled to digits + 3 places. Digit counts
// bounded from bit lengths suffice to see that (a near miss takes the exact path).
ALGEB AddLimbs(const FloatNode* a, const FloatNode* b, bool subtract, int digits) {
  bool negA = a->size < 0, negB = (b->size < 0) != subtract;
  const mp_limb_t* pa = a->limbs;
  const mp_limb_t* pb = b->limbs;
  mp_size_t la = negA ? -a->size : a->size, lb = b->size < 0 ? -b->size : b->size;
  int64_t ea = a->exponent, eb = b->exponent;
  // with exponents this close the exact sum costs about as much as the test
  int passes = ea - eb > digits + 40 || eb - ea > digits + 40 ? 2 : 0;
  for (int pass = 0; pass < passes; ++pass) {
    int64_t t = std::min<int64_t>(ea, ea + DigitsAtLeast(pa, la) - digits - 3);
    if (eb + DigitsAtMost(pb, lb) <= t) {
      LimbBuffer buf(LimbsFor(la, ea - t));
      mp_size_t n = ScaleByPow10(buf.get(), pa, la, ea - t);
      if (negA != negB) mpn_sub_1(buf.get(), buf.get(), n, 1);
      return RoundLimbs(negA, buf.get(), n, t, digits, true);
    }
    std::swap(negA, negB);
    std::swap(pa, pb);
    std::swap(la, lb);
    std::swap(ea, eb);
  }
  // exact sum at the lower exponent: the operand with the higher one is scaled
  if (ea < eb) {
    std::swap(negA, negB);
    std::swap(pa, pb);
    std::swap(la, lb);
    std::swap(ea, eb);
  }
  LimbBuffer scaled(ea == eb ? 0 : LimbsFor(la, ea - eb));
  const mp_limb_t* x = pa;
  mp_size_t lx = la;
  if (ea != eb) {
    lx = ScaleByPow10(scaled.get(), pa, la, ea - eb);
    x = scaled.get();
  }
  const mp_limb_t* y = pb;
  mp_size_t ly = lb;
  bool negX = negA, negY = negB;
  if (lx < ly || (lx == ly && mpn_cmp(x, y, lx) < 0)) {
    std::swap(negX, negY);
    LimbBuffer sum(static_cast<size_t>(ly) + 1);
    mp_limb_t* r = sum.get();
    if (negX == negY)
      r[ly] = mpn_add(r, y, ly, x, lx);
    else
      r[ly] = mpn_sub(r, y, ly, x, lx);
    return RoundLimbs(negX, r, ly + 1, eb, digits, false);
  }
  LimbBuffer sum(static_cast<size_t>(lx) + 1);
  mp_limb_t* r = sum.get();
  if (negX == negY)
    r[lx] = mpn_add(r, x, lx, y, ly);
  else
    r[lx] = mpn_sub(r, x, lx, y, ly);
  return RoundLimbs(negX, r, lx + 1, eb, digits, false);
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
    if (d == 0) {  // |ma + mb| < 2 10^18: no rounding when below 10^digits
      int64_t s = ma + mb;
      uint64_t u = s < 0 ? 0 - static_cast<uint64_t>(s) : static_cast<uint64_t>(s);
      if (u < kPow10[digits]) return FinishSmall(s < 0, u, eb);
      return RoundSmall(s < 0, u, eb, digits);
    }
    if (d <= 19) {
      __int128 s = static_cast<__int128>(ma) * static_cast<__int128>(kPow10[d]) + mb;
      bool neg = s < 0;
      return RoundSmall(neg, static_cast<u128>(neg ? -s : s), eb, digits);
    }
  }
  if (digits > 0) return AddLimbs(a, b, subtract, digits);
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
  mp_size_t la = a->size < 0 ? -a->size : a->size, lb = b->size < 0 ? -b->size : b->size;
  const mp_limb_t* pa = a->limbs;
  const mp_limb_t* pb = b->limbs;
  LimbBuffer product(static_cast<size_t>(la + lb));
  if (pa == pb)
    mpn_sqr(product.get(), pa, la);
  else if (la >= lb)
    mpn_mul(product.get(), pa, la, pb, lb);
  else
    mpn_mul(product.get(), pb, lb, pa, la);
  return RoundLimbs((a->size < 0) != (b->size < 0), product.get(), la + lb,
                    a->exponent + b->exponent, digits, false);
}

namespace {

// From this divisor size on, GMP's quotient-only division (mpz_tdiv_q, an approximate
// quotient corrected to the floor) costs clearly less than quotient and remainder.
constexpr mp_size_t kQuotientOnlyLimbs = 8;

// floor(|a| 10^k / |b|) with at least digits + 2 digits, rounded with a sticky remainder.
// The remainder matters only when the j >= 2 discarded digits could be exactly half a unit,
// 5 10^(j-1), which needs q = 0 or 50 (mod 100); then null is returned and the caller
// divides exactly.
ALGEB DivQuotientOnly(bool negative, const mp_limb_t* pa, mp_size_t la, const mp_limb_t* pb,
                      mp_size_t lb, int64_t e, int64_t k, int digits) {
  LimbBuffer numerator(LimbsFor(la, k));
  mpz_t num, den, q;
  mpz_roinit_n(num, numerator.get(), ScaleByPow10(numerator.get(), pa, la, k));
  mpz_roinit_n(den, pb, lb);
  mpz_init(q);
  mpz_tdiv_q(q, num, den);
  mp_size_t qn = static_cast<mp_size_t>(mpz_size(q));
  ALGEB r = nullptr;
  mp_limb_t last = mpn_mod_1(q->_mp_d, qn, 100);
  if (last != 0 && last != 50) r = RoundLimbs(negative, q->_mp_d, qn, e - k, digits, true);
  mpz_clear(q);
  return r;
}

// The quotient rounded to digits > 0: q = floor(|a| 10^k / |b|) with k chosen so that q has
// `digits` or digits + 1 digits. With digits + 1 it is rounded with the remainder as sticky;
// with exactly `digits`, twice the remainder against |b| decides.
ALGEB DivLimbs(const FloatNode* a, const FloatNode* b, int digits) {
  bool negative = (a->size < 0) != (b->size < 0);
  mp_size_t la = a->size < 0 ? -a->size : a->size, lb = b->size < 0 ? -b->size : b->size;
  const mp_limb_t* pb = b->limbs;
  int64_t k = digits + LimbDigits(pb, lb) - LimbDigits(a->limbs, la);
  if (lb >= kQuotientOnlyLimbs) {
    ALGEB r = DivQuotientOnly(negative, a->limbs, la, pb, lb, a->exponent - b->exponent,
                              std::max<int64_t>(k + 2, 0), digits);
    if (r != nullptr) return r;
  }
  if (k < 0) k = 0;  // a has many more digits: q has more than digits + 1, still rounded below
  LimbBuffer numerator(LimbsFor(la, k));
  mp_limb_t* num = numerator.get();
  mp_size_t nn = ScaleByPow10(num, a->limbs, la, k);
  LimbBuffer quotient(static_cast<size_t>(nn - lb + 2)), remainder(static_cast<size_t>(lb));
  mp_limb_t* q = quotient.get();
  mp_limb_t* r = remainder.get();
  mpn_tdiv_qr(q, r, 0, num, nn, pb, lb);
  mp_size_t qn = Normalized(q, nn - lb + 1);
  bool inexact = Normalized(r, lb) != 0;
  int64_t e = a->exponent - b->exponent - k;
  if (LimbDigits(q, qn) > digits) return RoundLimbs(negative, q, qn, e, digits, inexact);
  if (inexact) {
    int c = mpn_lshift(r, r, lb, 1) != 0 ? 1 : mpn_cmp(r, pb, lb);
    if (c > 0 || (c == 0 && (q[0] & 1))) {
      mp_limb_t carry = mpn_add_1(q, q, qn, 1);
      if (carry != 0) q[qn++] = carry;
    }
  }
  return FinishLimbs(negative, q, qn, e);
}

}  // namespace

ALGEB DivFinite(const FloatNode* a, const FloatNode* b, int digits) {
  if (a->size == 0) return SpecialFloatNode(kFinite);
  bool negative = (a->size < 0) != (b->size < 0);
  if (digits > 0 && digits <= kSmallDigits && IsSmall(a) && IsSmall(b)) {
    // q = floor(a 10^k / b) with digits or digits + 1 digits, as in DivLimbs; below
    // 10^19 < 2^64, so one hardware division gives it and the remainder
    uint64_t ua = a->limbs[0], ub = b->limbs[0];
    int k = digits + DigitsU64(ub) - DigitsU64(ua);
    if (k >= 0 && k <= 19) {
      uint64_t r, q = DivRem128(static_cast<u128>(ua) * kPow10[k], ub, &r);
      int64_t e = a->exponent - b->exponent - k;
      bool up;
      if (q >= kPow10[digits]) {
        uint64_t last = q % 10;
        q /= 10;
        ++e;
        up = last > 5 || (last == 5 && (r != 0 || (q & 1)));
      } else {
        up = r != 0 && (2 * r > ub || (2 * r == ub && (q & 1)));
      }
      return FinishSmall(negative, q + up, e);
    }
  }
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
  if (digits > 0) return DivLimbs(a, b, digits);
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
