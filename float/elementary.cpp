// Elementary functions of decimal floats. Each is evaluated on an Arb ball at a binary
// precision a little above Digits, and the ball is rounded to Digits decimal digits; when
// its two ends round differently the precision is doubled (Ziv's strategy), so the result
// is the correctly rounded value. Integral powers are computed exactly when that is cheap.
#include <arb.h>
#include <arb_hypgeom.h>
#include <flint/fmpz.h>

#include <cmath>
#include <cstring>
#include <functional>

#include "float/decimal.h"
#include "float/float_node.h"
#include "host/error.h"

namespace vexa {
namespace {

constexpr double kLog2Of10 = 3.3219280948873623;
constexpr double kLog10Of2 = 0.30102999566398120;

inline const FloatNode* N(const VexaFloat& x) {
  return AsFloatNode(x.Handle());
}

struct Ball {
  arb_t v;
  Ball() { arb_init(v); }
  ~Ball() { arb_clear(v); }
  Ball(const Ball&) = delete;
  Ball& operator=(const Ball&) = delete;
};

struct Fmpz {
  fmpz_t v;
  Fmpz() { fmpz_init(v); }
  ~Fmpz() { fmpz_clear(v); }
  Fmpz(const Fmpz&) = delete;
  Fmpz& operator=(const Fmpz&) = delete;
};

// 10^k (k of either sign) multiplied into r.
void ScaleByPow10(arb_t r, int64_t k, slong prec) {
  if (k == 0) return;
  Ball p;
  arb_ui_pow_ui(p.v, 10, static_cast<ulong>(k > 0 ? k : -k), prec);
  if (k > 0)
    arb_mul(r, r, p.v, prec);
  else
    arb_div(r, r, p.v, prec);
}

// A ball enclosing the exact value of a finite float.
void ToBall(arb_t r, const FloatNode* n, slong prec) {
  mpz_t view;
  MantissaView(view, n);
  Fmpz m;
  fmpz_set_mpz(m.v, view);
  arb_set_fmpz(r, m.v);
  ScaleByPow10(r, n->exponent, prec);
}

// Decimal position of the top digit: |x| < 10^Top(x) and |x| >= 10^(Top(x)-1).
int64_t Top(const FloatNode* n) {
  mpz_t view;
  MantissaView(view, n);
  return n->exponent + DecimalDigits(view);
}

// floor(k log10(2)) to within one for every exponent: in double precision the estimate
// drifts by more than the placement loop below corrects once |k| passes about 10^16.
int64_t FloorTimesLog10Of2(int64_t k) {
  const __int128 log10Of2 = static_cast<__int128>(30102999566398119LL) * 1000 + 521;  // e-20
  __int128 p = static_cast<__int128>(k) * log10Of2;
  const __int128 scale = static_cast<__int128>(100000000000000000LL) * 1000;  // 10^20
  __int128 q = p / scale;
  if (p % scale != 0 && p < 0) --q;
  return static_cast<int64_t>(q);
}

// Rounds the ball to `digits` digits if both its ends give the same result. Each end is
// rounded in its own decade (the ball may straddle a power of ten, as sin(x) does for tiny
// x); rounding is monotone, so every value in the ball then rounds alike. With `tieToEven`
// ends that round to two neighbours are taken as the exact tie between them.
bool RoundBall(const arb_t y, int digits, slong prec, ALGEB* out, bool tieToEven = false) {
  if (arb_is_zero(y)) {
    *out = SpecialFloatNode(kFinite);
    return true;
  }
  if (!arb_is_finite(y) || arb_contains_zero(y)) return false;
  slong e2 = arf_abs_bound_lt_2exp_si(arb_midref(y));
  int64_t e10 = FloorTimesLog10Of2(e2 - 1);
  Fmpz lowLimit, highLimit;
  fmpz_ui_pow_ui(lowLimit.v, 10, static_cast<ulong>(digits - 1));
  fmpz_mul_ui(highLimit.v, lowLimit.v, 10);
  arf_t lowArf, highArf, lo, hi;
  arf_init(lowArf);
  arf_init(highArf);
  arf_init(lo);
  arf_init(hi);
  arf_set_fmpz(lowArf, lowLimit.v);
  arf_set_fmpz(highArf, highLimit.v);
  Ball z;
  bool placed = false;
  // place the upper end of |y| * 10^(digits - 1 - e10) in [10^(digits-1), 10^digits)
  for (int i = 0; i < 6 && !placed; ++i) {
    arb_abs(z.v, y);
    ScaleByPow10(z.v, digits - 1 - e10, prec);
    arb_get_ubound_arf(hi, z.v, prec);
    if (arf_cmp(hi, highArf) >= 0)
      ++e10;
    else if (arf_cmp(hi, lowArf) < 0)
      --e10;
    else
      placed = true;
  }
  bool decided = false;
  if (placed) {
    arb_get_lbound_arf(lo, z.v, prec);
    Fmpz a, b;
    arf_get_fmpz(b.v, hi, ARF_RND_NEAR);
    bool sameDecade = arf_cmp(lo, lowArf) >= 0;
    if (sameDecade) {
      arf_get_fmpz(a.v, lo, ARF_RND_NEAR);
    } else {
      // a decade down the lower end agrees only if it rounds up to the power of ten
      arf_mul_ui(lo, lo, 10, ARF_PREC_EXACT, ARF_RND_DOWN);
      arf_get_fmpz(a.v, lo, ARF_RND_NEAR);
      if (fmpz_equal(a.v, highLimit.v)) fmpz_set(a.v, lowLimit.v);
    }
    if (tieToEven && sameDecade && !fmpz_equal(a.v, b.v)) {
      Fmpz next;
      fmpz_add_ui(next.v, a.v, 1);
      if (fmpz_equal(next.v, b.v)) {
        if (fmpz_is_even(b.v))
          fmpz_set(a.v, b.v);
        else
          fmpz_set(b.v, a.v);
      }
    }
    if (fmpz_equal(a.v, b.v)) {
      if (arf_sgn(arb_midref(y)) < 0) fmpz_neg(a.v, a.v);
      mpz_t m;
      mpz_init(m);
      fmpz_get_mpz(m, a.v);
      *out = RoundToNode(m, e10 - digits + 1, digits);
      mpz_clear(m);
      decided = true;
    }
  }
  arf_clear(lowArf);
  arf_clear(highArf);
  arf_clear(lo);
  arf_clear(hi);
  return decided;
}

using BallFunction = std::function<void(arb_t, slong)>;

// Ziv's loop: evaluate at growing precision until the decimal rounding is decided.
// A ball that stays non-finite means the function is undefined there.
VexaFloat Ziv(const BallFunction& f, slong extraBits) {
  int digits = CurrentDigits();
  slong prec = static_cast<slong>(digits * kLog2Of10) + 24 + extraBits;
  const slong start = prec;
  Ball y;
  ALGEB out;
  for (int iter = 0;; ++iter) {
    f(y.v, prec);
    if (RoundBall(y.v, digits, prec, &out)) return VexaFloat(out);
    bool finite = arb_is_finite(y.v);
    if (!finite && prec > 8 * start) return VexaFloatUndefined();
    if (iter >= 12) {
      // Still undecided after the precision grew 4096-fold: the value is an exact tie
      // (a power such as x^(1/2) ending in a 5 just past Digits), which goes to even.
      if (RoundBall(y.v, digits, prec, &out, true)) return VexaFloat(out);
      return VexaFloatUndefined();
    }
    prec *= 2;
  }
}

// Bits lost to argument reduction when |x| is large.
slong MagnitudeBits(const FloatNode* n) {
  int64_t t = Top(n);
  return t > 0 ? static_cast<slong>(t * kLog2Of10) + 8 : 0;
}

// One node for 1, made once: it is compared with on every call of log and pow.
const VexaFloat& ExactOne() {
  static const VexaFloat one(NewSmallFloatNode(1, 0));
  return one;
}

bool IsZero(const FloatNode* n) {
  return KindOf(n) == kFinite && n->size == 0;
}
bool IsNegative(const FloatNode* n) {
  return KindOf(n) == kMinusInfinity || (KindOf(n) == kFinite && n->size < 0);
}

VexaFloat Unary(const VexaFloat& x, void (*f)(arb_t, const arb_t, slong), slong extra) {
  const FloatNode* n = N(x);
  return Ziv(
      [&](arb_t y, slong prec) {
        ToBall(y, n, prec);
        f(y, y, prec);
      },
      extra);
}

void ArbLog10(arb_t y, const arb_t x, slong prec) {
  Ball t;
  arb_log(y, x, prec);
  arb_log_ui(t.v, 10, prec);
  arb_div(y, y, t.v, prec);
}
void ArbSin(arb_t y, const arb_t x, slong prec) {
  arb_sin(y, x, prec);
}
void ArbCos(arb_t y, const arb_t x, slong prec) {
  arb_cos(y, x, prec);
}

// Integer value of a finite float, if it is one and fits in a long.
bool AsLong(const FloatNode* n, long* v) {
  if (KindOf(n) != kFinite || n->exponent < 0) return false;
  mpz_t m;
  MantissaView(m, n);
  if (Top(n) > 18) return false;
  mpz_t t;
  mpz_init(t);
  MulPow10(t, m, static_cast<unsigned long>(n->exponent));
  *v = mpz_get_si(t);
  mpz_clear(t);
  return true;
}

// log10|x| of a finite nonzero float in double precision (good to about 1e-15 of the
// larger of its integer part and 1).
double Log10AbsDouble(const FloatNode* n) {
  mpz_t m;
  MantissaView(m, n);
  long e2;
  double d = mpz_get_d_2exp(&e2, m);
  return std::log10(std::fabs(d)) + e2 * kLog10Of2 + static_cast<double>(n->exponent);
}

// The sign of log10|x| and log10 of its size, for |x| != 1, accurate even when x lies
// within 10^-digits of 1 (the working precision covers every digit of x).
void Log10OfLog10Abs(const FloatNode* n, int* sign, double* size) {
  mpz_t m;
  MantissaView(m, n);
  slong prec = static_cast<slong>(DecimalDigits(m) * kLog2Of10) + 64;
  Ball b;
  ToBall(b.v, n, prec);
  arb_abs(b.v, b.v);
  ArbLog10(b.v, b.v, prec);
  *sign = arf_sgn(arb_midref(b.v));
  arb_abs(b.v, b.v);
  ArbLog10(b.v, b.v, prec);
  *size = arf_get_d(arb_midref(b.v), ARF_RND_NEAR);
}

bool IsIntegral(const FloatNode* n) {
  return KindOf(n) == kFinite && n->exponent >= 0;
}
bool IsOddIntegral(const FloatNode* n) {
  return IsIntegral(n) && n->exponent == 0 && (n->limbs[0] & 1) == 1 && n->size != 0;
}

// x^k for an integer k whose exact result has a modest number of digits.
VexaFloat ExactPower(const FloatNode* x, long k) {
  mpz_t m, p;
  MantissaView(m, x);
  mpz_init(p);
  unsigned long ak = static_cast<unsigned long>(k < 0 ? -k : k);
  mpz_pow_ui(p, m, ak);
  int64_t e = x->exponent * static_cast<int64_t>(ak);
  if (k >= 0) {
    VexaFloat r(RoundToNode(p, e, CurrentDigits()));
    mpz_clear(p);
    return r;
  }
  ALGEB denominator = RoundToNode(p, e, 0);
  mpz_clear(p);
  return VexaFloat(DivFinite(N(ExactOne()), AsFloatNode(denominator), CurrentDigits()));
}

VexaFloat PowSpecial(const FloatNode* x, const FloatNode* y, bool* handled);

VexaFloat Pow(const VexaFloat& xv, const VexaFloat& yv) {
  const FloatNode* x = N(xv);
  const FloatNode* y = N(yv);
  bool handled = false;
  VexaFloat special = PowSpecial(x, y, &handled);
  if (handled) return special;
  // finite x != 0, finite y != 0, x != 1
  bool negate = false;
  if (x->size < 0) {
    if (!IsIntegral(y)) return VexaFloatUndefined();
    negate = IsOddIntegral(y);
  }
  long k;
  mpz_t mx;
  MantissaView(mx, x);
  int64_t xDigits = DecimalDigits(mx);
  if (AsLong(y, &k) && (xDigits == 1 && x->limbs[0] == 1)) {
    // (+-10^e)^k is exact at any size
    int64_t e = x->exponent * k;
    if (e > kMaxExponent) return VexaFloatInfinity(negate ? -1 : 1);
    if (e < -kMaxExponent) return VexaFloat();
    return VexaFloat(NewSmallFloatNode(negate ? -1 : 1, e));
  }
  if (AsLong(y, &k) && xDigits * std::labs(k) <= 4L * CurrentDigits() + 200)
    return ExactPower(x, k);
  // Decimal exponent of the result, |y log10|x||. log10|x| comes from a ball precise
  // enough for x near 1; far beyond the exponent range the result is infinity or zero.
  int logSign;
  double logLogX;
  Log10OfLog10Abs(x, &logSign, &logLogX);
  double logResultExponent = logLogX + Log10AbsDouble(y);
  if (logResultExponent > 17.5) {  // 3e17, well past kMaxExponent
    bool big = (logSign > 0) == !IsNegative(y);
    if (big) return VexaFloatInfinity(negate ? -1 : 1);
    return VexaFloat();
  }
  slong extra =
      static_cast<slong>(std::log2(std::pow(10.0, logResultExponent) * kLog2Of10 + 1)) + 8;
  VexaFloat r = Ziv(
      [&](arb_t res, slong prec) {
        Ball bx, by;
        ToBall(bx.v, x, prec);
        arb_abs(bx.v, bx.v);
        ToBall(by.v, y, prec);
        arb_pow(res, bx.v, by.v, prec);
      },
      extra);
  return negate ? -r : r;
}

VexaFloat PowSpecial(const FloatNode* x, const FloatNode* y, bool* handled) {
  *handled = true;
  FloatKind kx = KindOf(x), ky = KindOf(y);
  if (kx == kUndefined || ky == kUndefined) return VexaFloatUndefined();
  if (IsZero(y)) return ExactOne();
  if (kx == kFinite && CompareFinite(x, N(ExactOne())) == 0) return ExactOne();
  if (ky != kFinite) {
    if (kx != kFinite) return ky == kPlusInfinity ? VexaFloatInfinity(1) : VexaFloat();
    VexaFloat ax = fabs(VexaFloat(reinterpret_cast<ALGEB>(const_cast<FloatNode*>(x))));
    int c = CompareFinite(N(ax), N(ExactOne()));
    if (c == 0) return ExactOne();
    bool grows = (c > 0) == (ky == kPlusInfinity);
    return grows ? VexaFloatInfinity(1) : VexaFloat();
  }
  if (IsZero(x)) return IsNegative(y) ? VexaFloatInfinity(1) : VexaFloat();
  if (kx == kPlusInfinity) return IsNegative(y) ? VexaFloat() : VexaFloatInfinity(1);
  if (kx == kMinusInfinity) {
    if (!IsIntegral(y)) return VexaFloatUndefined();
    if (IsNegative(y)) return VexaFloat();
    return VexaFloatInfinity(IsOddIntegral(y) ? -1 : 1);
  }
  *handled = false;
  return VexaFloat();
}

VexaFloat Exp(const VexaFloat& x) {
  const FloatNode* n = N(x);
  switch (KindOf(n)) {
    case kUndefined:
      return x;
    case kPlusInfinity:
      return x;
    case kMinusInfinity:
      return VexaFloat();
    default:
      break;
  }
  if (n->size == 0) return ExactOne();
  if (Top(n) > 18) return IsNegative(n) ? VexaFloat() : VexaFloatInfinity(1);
  return Unary(x, arb_exp, MagnitudeBits(n));
}

VexaFloat Log(const VexaFloat& x, void (*f)(arb_t, const arb_t, slong)) {
  const FloatNode* n = N(x);
  switch (KindOf(n)) {
    case kUndefined:
    case kMinusInfinity:
      return VexaFloatUndefined();
    case kPlusInfinity:
      return x;
    default:
      break;
  }
  if (n->size == 0) return VexaFloatInfinity(-1);
  if (n->size < 0) return VexaFloatUndefined();
  if (CompareFinite(n, N(ExactOne())) == 0) return VexaFloat();
  if (f == ArbLog10 && n->size == 1 && n->limbs[0] == 1) return VexaFloat(n->exponent);
  return Unary(x, f, 0);
}

// sin, cos, tan, arctan and friends: finite arguments only, with their fixed points at 0.
VexaFloat Trig(const VexaFloat& x, void (*f)(arb_t, const arb_t, slong), bool oddFunction) {
  const FloatNode* n = N(x);
  if (KindOf(n) != kFinite) return VexaFloatUndefined();
  if (n->size == 0) return oddFunction ? VexaFloat() : ExactOne();
  return Unary(x, f, MagnitudeBits(n));
}

VexaFloat Arctan(const VexaFloat& x) {
  const FloatNode* n = N(x);
  if (KindOf(n) == kUndefined) return x;
  if (KindOf(n) != kFinite) {
    VexaFloat halfPi = Ziv(
        [](arb_t y, slong prec) {
          arb_const_pi(y, prec);
          arb_mul_2exp_si(y, y, -1);
        },
        0);
    return KindOf(n) == kMinusInfinity ? -halfPi : halfPi;
  }
  if (n->size == 0) return VexaFloat();
  return Unary(x, arb_atan, 0);
}

VexaFloat ArcsinOrArccos(const VexaFloat& x, bool sine) {
  const FloatNode* n = N(x);
  if (KindOf(n) != kFinite) return VexaFloatUndefined();
  if (fabs(x) > ExactOne()) return VexaFloatUndefined();
  if (sine && n->size == 0) return VexaFloat();
  if (!sine && CompareFinite(n, N(ExactOne())) == 0) return VexaFloat();
  return Unary(x, sine ? arb_asin : arb_acos, 0);
}

VexaFloat Hyperbolic(const VexaFloat& x, void (*f)(arb_t, const arb_t, slong), int kind) {
  const FloatNode* n = N(x);
  FloatKind k = KindOf(n);
  if (k == kUndefined) return x;
  if (k != kFinite) {
    if (kind == 1) return VexaFloatInfinity(1);                           // cosh
    if (kind == 2) return k == kPlusInfinity ? ExactOne() : -ExactOne();  // tanh
    return x;                                                             // sinh
  }
  if (n->size == 0) return kind == 1 ? ExactOne() : VexaFloat();
  if (kind != 2 && Top(n) > 18)
    return kind == 1 || !IsNegative(n) ? VexaFloatInfinity(1) : VexaFloatInfinity(-1);
  return Unary(x, f, MagnitudeBits(n));
}

VexaFloat Erf(const VexaFloat& x, bool complement) {
  const FloatNode* n = N(x);
  FloatKind k = KindOf(n);
  if (k == kUndefined) return x;
  if (k == kPlusInfinity) return complement ? VexaFloat() : ExactOne();
  if (k == kMinusInfinity) return complement ? VexaFloat(2) : -ExactOne();
  if (n->size == 0) return complement ? ExactOne() : VexaFloat();
  if (complement && !IsNegative(n) && Top(n) > 10) return VexaFloat();  // erfc underflows
  return Unary(x, complement ? arb_hypgeom_erfc : arb_hypgeom_erf, 0);
}

VexaFloat Gamma(const VexaFloat& x, bool logarithm) {
  const FloatNode* n = N(x);
  FloatKind k = KindOf(n);
  if (k == kUndefined || k == kMinusInfinity) return VexaFloatUndefined();
  if (k == kPlusInfinity) return x;
  if (IsIntegral(n) && !(n->size > 0)) return VexaFloatUndefined();  // poles
  if (logarithm && IsNegative(n)) return VexaFloatUndefined();
  if (!logarithm && Top(n) > 17) return IsNegative(n) ? VexaFloatUndefined() : VexaFloatInfinity(1);
  return Unary(x, logarithm ? arb_hypgeom_lgamma : arb_hypgeom_gamma, MagnitudeBits(n));
}

}  // namespace
}  // namespace vexa

using namespace vexa;

VexaFloat exp(const VexaFloat& x) {
  return Exp(x);
}
VexaFloat log(const VexaFloat& x) {
  return Log(x, arb_log);
}
VexaFloat pow(const VexaFloat& x, const VexaFloat& y) {
  return Pow(x, y);
}
VexaFloat pow(const VexaFloat& x, double y) {
  return Pow(x, ExactFloatFromDouble(y));
}
VexaFloat pow(double x, const VexaFloat& y) {
  return Pow(ExactFloatFromDouble(x), y);
}

VexaFloat VexaFloatPi() {
  return Ziv([](arb_t y, slong prec) { arb_const_pi(y, prec); }, 0);
}

namespace {

struct NamedFunction {
  const char* name;
  std::function<VexaFloat(const VexaFloat&)> f;
};

const NamedFunction kFunctions[] = {
    {"sin", [](const VexaFloat& x) { return Trig(x, ArbSin, true); }},
    {"cos", [](const VexaFloat& x) { return Trig(x, ArbCos, false); }},
    {"tan", [](const VexaFloat& x) { return Trig(x, arb_tan, true); }},
    {"arctan", Arctan},
    {"arcsin", [](const VexaFloat& x) { return ArcsinOrArccos(x, true); }},
    {"arccos", [](const VexaFloat& x) { return ArcsinOrArccos(x, false); }},
    {"sinh", [](const VexaFloat& x) { return Hyperbolic(x, arb_sinh, 0); }},
    {"cosh", [](const VexaFloat& x) { return Hyperbolic(x, arb_cosh, 1); }},
    {"tanh", [](const VexaFloat& x) { return Hyperbolic(x, arb_tanh, 2); }},
    {"exp", Exp},
    {"ln", [](const VexaFloat& x) { return Log(x, arb_log); }},
    {"log", [](const VexaFloat& x) { return Log(x, arb_log); }},
    {"log10", [](const VexaFloat& x) { return Log(x, ArbLog10); }},
    {"sqrt", [](const VexaFloat& x) { return sqrt(x); }},
    {"abs", [](const VexaFloat& x) { return fabs(x); }},
    {"erf", [](const VexaFloat& x) { return Erf(x, false); }},
    {"erfc", [](const VexaFloat& x) { return Erf(x, true); }},
    {"GAMMA", [](const VexaFloat& x) { return Gamma(x, false); }},
    {"lnGAMMA", [](const VexaFloat& x) { return Gamma(x, true); }},
};

const NamedFunction* FindFunction(const char* name) {
  for (const NamedFunction& f : kFunctions)
    if (std::strcmp(f.name, name) == 0) return &f;
  return nullptr;
}

}  // namespace

bool VexaHasEvalf1(const char* name) {
  return FindFunction(name) != nullptr;
}

VexaFloat VexaEvalf1(const char* name, const VexaFloat& x) {
  const NamedFunction* f = FindFunction(name);
  if (f == nullptr) Raise(std::string("no numeric evaluation is known for ") + name);
  return f->f(x);
}
