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

#include "float/ball.h"
#include "float/decimal.h"
#include "float/float_node.h"
#include "host/error.h"

namespace vexa {
namespace {

constexpr double kLog10Of2 = 0.30102999566398120;

inline const FloatNode* N(const VexaFloat& x) {
  return AsFloatNode(x.Handle());
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
  if (xDigits == 1 && x->limbs[0] == 1 && x->exponent == 0)  // (-1)^y with y beyond a long
    return negate ? -ExactOne() : ExactOne();
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
