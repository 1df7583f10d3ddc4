// Arithmetic on host numbers. Integers and rationals combine exactly through GMP (with a
// machine-word fast path for immediates); a float operand makes the result a float at the
// current Digits; complex values combine part by part.
#include <algorithm>
#include <climits>
#include <cmath>

#include "float/float_node.h"
#include "host/nodes.h"

namespace vexa {

namespace {

bool IsComplex(ALGEB e) {
  return HasType(e, kComplexNode);
}
ALGEB Re(ALGEB e) {
  return IsComplex(e) ? AsSeq(e)->items[0] : e;
}
ALGEB Im(ALGEB e) {
  return IsComplex(e) ? AsSeq(e)->items[1] : NewInteger(0);
}

void CheckNumber(ALGEB e, const char* op) {
  if (!IsNumeric(e) && !IsComplex(e))
    RaiseFormatted(std::string("unable to ") + op + " a non-numeric value: %1", e);
}

// An exact zero imaginary part collapses to the real part.
ALGEB MakeComplex(ALGEB re, ALGEB im) {
  if (IsExact(im) && IsZero(im)) return re;
  return NewComplex(re, im);
}

VexaFloat ToFloat(ALGEB e) {
  if (IsFloatNode(e)) return FloatFromHandle(e);
  return ExactToFloat(e, IsInteger(e) ? 0 : VexaDigits());
}

enum class Op { kAdd, kSub, kMul, kDiv };

// log2 |m| (m not zero).
double Log2Abs(const mpz_t m) {
  long exponent;
  double d = mpz_get_d_2exp(&exponent, m);
  return static_cast<double>(exponent) + std::log2(std::fabs(d));
}

// Refuses a result of about `bits` bits (numerator or denominator) before computing it.
void CheckResultBits(double bits) {
  if (bits > kMaxIntegerDigits * 3.3219280948873623)
    Raise("integer too large (more than " + std::to_string(kMaxIntegerDigits) + " digits)");
}

ALGEB ExactOp(ALGEB a, ALGEB b, Op op) {
  if (IsImmediate(a) && IsImmediate(b)) {
    long long x = ImmediateValue(a), y = ImmediateValue(b), r;
    bool overflow = false;
    switch (op) {
      case Op::kAdd:
        overflow = __builtin_add_overflow(x, y, &r);
        break;
      case Op::kSub:
        overflow = __builtin_sub_overflow(x, y, &r);
        break;
      case Op::kMul:
        overflow = __builtin_mul_overflow(x, y, &r);
        break;
      case Op::kDiv:
        overflow = true;  // through mpq
        break;
    }
    if (!overflow) return NewInteger(r);
  }
  mpq_t x, y;
  mpq_inits(x, y, nullptr);
  ExactToMpq(a, x);
  ExactToMpq(b, y);
  if (op == Op::kMul || op == Op::kDiv) {
    size_t n = mpz_sizeinbase(mpq_numref(x), 2) + mpz_sizeinbase(mpq_numref(y), 2);
    size_t d = mpz_sizeinbase(mpq_denref(x), 2) + mpz_sizeinbase(mpq_denref(y), 2);
    if (op == Op::kDiv) {
      n = mpz_sizeinbase(mpq_numref(x), 2) + mpz_sizeinbase(mpq_denref(y), 2);
      d = mpz_sizeinbase(mpq_denref(x), 2) + mpz_sizeinbase(mpq_numref(y), 2);
    }
    try {
      CheckResultBits(static_cast<double>(std::max(n, d)) - 2);
    } catch (...) {
      mpq_clears(x, y, nullptr);
      throw;
    }
  }
  if (op == Op::kDiv && mpq_sgn(y) == 0) {
    mpq_clears(x, y, nullptr);
    Raise("numeric exception: division by zero");
  }
  switch (op) {
    case Op::kAdd:
      mpq_add(x, x, y);
      break;
    case Op::kSub:
      mpq_sub(x, x, y);
      break;
    case Op::kMul:
      mpq_mul(x, x, y);
      break;
    case Op::kDiv:
      mpq_div(x, x, y);
      break;
  }
  ALGEB r = ExactFromMpq(x);
  mpq_clears(x, y, nullptr);
  return r;
}

ALGEB RealOp(ALGEB a, ALGEB b, Op op) {
  if (IsExact(a) && IsExact(b)) return ExactOp(a, b, op);
  VexaFloat x = ToFloat(a), y = ToFloat(b);
  switch (op) {
    case Op::kAdd:
      return (x + y).Handle();
    case Op::kSub:
      return (x - y).Handle();
    case Op::kMul:
      return (x * y).Handle();
    case Op::kDiv:
      return (x / y).Handle();
  }
  return nullptr;
}

// An exact rational root: r with r^q = x, when there is one (x >= 0 or q odd).
bool ExactRoot(ALGEB x, unsigned long q, ALGEB* out) {
  mpq_t v;
  mpq_init(v);
  ExactToMpq(x, v);
  bool negative = mpq_sgn(v) < 0;
  bool ok = !(negative && q % 2 == 0);
  if (ok) {
    mpq_abs(v, v);
    ok = mpz_root(mpq_numref(v), mpq_numref(v), q) != 0 &&
         mpz_root(mpq_denref(v), mpq_denref(v), q) != 0;
    if (negative) mpq_neg(v, v);
    if (ok) *out = ExactFromMpq(v);
  }
  mpq_clear(v);
  return ok;
}

ALGEB ExactIntegerPower(ALGEB base, ALGEB exponent) {
  mpz_t e;
  mpz_init(e);
  IntegerToMpz(exponent, e);
  mpq_t b;
  mpq_init(b);
  ExactToMpq(base, b);
  bool unit = mpz_cmpabs_ui(mpq_numref(b), 1) == 0 && mpz_cmp_ui(mpq_denref(b), 1) == 0;
  bool zero = mpq_sgn(b) == 0;
  bool negativeExponent = mpz_sgn(e) < 0;
  if (zero && negativeExponent) {
    mpz_clear(e);
    mpq_clear(b);
    Raise("numeric exception: division by zero");
  }
  mpz_abs(e, e);
  if (!unit && !zero) {
    // the result's numerator and denominator have about |e| log2 |.| bits each
    double bits = mpz_fits_ulong_p(e)
                      ? mpz_get_d(e) * std::max(Log2Abs(mpq_numref(b)), Log2Abs(mpq_denref(b)))
                      : HUGE_VAL;
    if (bits > kMaxIntegerDigits * 3.3219280948873623) {
      mpz_clear(e);
      mpq_clear(b);
      CheckResultBits(bits);
    }
  }
  unsigned long k = mpz_get_ui(e);
  if (unit && mpq_sgn(b) < 0) k = k % 2 == 0 ? 2 : 1;
  mpz_pow_ui(mpq_numref(b), mpq_numref(b), k);
  mpz_pow_ui(mpq_denref(b), mpq_denref(b), k);
  if (negativeExponent) mpq_inv(b, b);
  ALGEB r = ExactFromMpq(b);
  mpz_clear(e);
  mpq_clear(b);
  return r;
}

}  // namespace

namespace {

// a + b or a - b, complex values part by part.
ALGEB Additive(ALGEB a, ALGEB b, Op op, const char* verb) {
  CheckNumber(a, verb);
  CheckNumber(b, verb);
  if (IsComplex(a) || IsComplex(b))
    return MakeComplex(RealOp(Re(a), Re(b), op), RealOp(Im(a), Im(b), op));
  return RealOp(a, b, op);
}

}  // namespace

ALGEB Add(ALGEB a, ALGEB b) {
  return Additive(a, b, Op::kAdd, "add");
}
ALGEB Subtract(ALGEB a, ALGEB b) {
  return Additive(a, b, Op::kSub, "subtract");
}

ALGEB Multiply(ALGEB a, ALGEB b) {
  CheckNumber(a, "multiply");
  CheckNumber(b, "multiply");
  if (IsComplex(a) || IsComplex(b)) {
    ALGEB re = Subtract(Multiply(Re(a), Re(b)), Multiply(Im(a), Im(b)));
    ALGEB im = Add(Multiply(Re(a), Im(b)), Multiply(Im(a), Re(b)));
    return MakeComplex(re, im);
  }
  return RealOp(a, b, Op::kMul);
}

ALGEB Divide(ALGEB a, ALGEB b) {
  CheckNumber(a, "divide");
  CheckNumber(b, "divide");
  if (IsComplex(a) || IsComplex(b)) {
    // (a / b) = a * conj(b) / |b|^2
    ALGEB norm = Add(Multiply(Re(b), Re(b)), Multiply(Im(b), Im(b)));
    ALGEB num = Multiply(a, MakeComplex(Re(b), Negate(Im(b))));
    return MakeComplex(Divide(Re(num), norm), Divide(Im(num), norm));
  }
  return RealOp(a, b, Op::kDiv);
}

// -x with every digit of x kept: a sign change loses nothing, so -1.2345678901234 typed at
// Digits 10 is the number written.
static VexaFloat NegateFloat(const VexaFloat& x) {
  if (IsVexaFloatUndefined(x)) return x;
  if (IsVexaFloatInfinity(x)) return VexaFloatInfinity(-1);
  if (IsVexaFloatNegativeInfinity(x)) return VexaFloatInfinity(1);
  mpz_t m;
  int64_t e;
  mpz_init(m);
  FloatToMpz(x, m, &e);
  mpz_neg(m, m);
  VexaFloat r = FloatFromMpz(m, e, 0);
  mpz_clear(m);
  return r;
}

ALGEB Negate(ALGEB a) {
  CheckNumber(a, "negate");
  if (IsComplex(a)) return MakeComplex(Negate(Re(a)), Negate(Im(a)));
  if (IsFloatNode(a)) return NegateFloat(FloatFromHandle(a)).Handle();
  return ExactOp(NewInteger(0), a, Op::kSub);
}

ALGEB Power(ALGEB base, ALGEB exponent) {
  CheckNumber(base, "raise");
  CheckNumber(exponent, "raise");
  if (IsComplex(base) || IsComplex(exponent)) {
    if (!IsInteger(exponent) || !FitsInt64(exponent) || IntegerValue(exponent) < 0 ||
        IntegerValue(exponent) > 1000000)
      RaiseFormatted("unable to raise the complex value %1 to a power", base);
    ALGEB r = NewInteger(1);
    for (long long k = IntegerValue(exponent); k > 0; --k) r = Multiply(r, base);
    return r;
  }
  if (IsExact(base) && IsInteger(exponent)) return ExactIntegerPower(base, exponent);
  if (IsExact(base) && IsRational(exponent)) {
    ALGEB q = AsSeq(exponent)->items[1];
    ALGEB root;
    if (FitsInt64(q) && IntegerValue(q) <= 1000 && ExactRoot(base, IntegerValue(q), &root))
      return ExactIntegerPower(root, AsSeq(exponent)->items[0]);
    return NewPower(base, exponent);
  }
  return pow(ToFloat(base), ToFloat(exponent)).Handle();
}

namespace {

// The exact rational value of a number (a finite float: mantissa times a power of ten).
void ToMpq(ALGEB e, mpq_t out) {
  if (!IsFloatNode(e)) return ExactToMpq(e, out);
  mpz_t m, t;
  mpz_inits(m, t, nullptr);
  int64_t ex;
  FloatToMpz(FloatFromHandle(e), m, &ex);
  mpz_ui_pow_ui(t, 10, static_cast<unsigned long>(ex < 0 ? -ex : ex));
  mpz_set(mpq_numref(out), m);
  mpz_set_ui(mpq_denref(out), 1);
  if (ex >= 0)
    mpz_mul(mpq_numref(out), mpq_numref(out), t);
  else
    mpz_set(mpq_denref(out), t);
  mpq_canonicalize(out);
  mpz_clears(m, t, nullptr);
}

}  // namespace

int Compare(ALGEB a, ALGEB b) {
  if (!IsNumeric(a)) RaiseFormatted("cannot determine if %1 is a real number to compare", a);
  if (!IsNumeric(b)) RaiseFormatted("cannot determine if %1 is a real number to compare", b);
  if (IsImmediate(a) && IsImmediate(b)) {
    long long x = ImmediateValue(a), y = ImmediateValue(b);
    return x < y ? -1 : x > y ? 1 : 0;
  }
  if (IsFloatNode(a) || IsFloatNode(b)) {
    VexaFloat x = IsFloatNode(a) ? FloatFromHandle(a) : ExactToFloat(a, 0);
    VexaFloat y = IsFloatNode(b) ? FloatFromHandle(b) : ExactToFloat(b, 0);
    bool bothFloats = IsFloatNode(a) && IsFloatNode(b);
    if (bothFloats || IsVexaFloatUndefined(x) || IsVexaFloatUndefined(y) ||
        IsVexaFloatInfinity(x) || IsVexaFloatInfinity(y) || IsVexaFloatNegativeInfinity(x) ||
        IsVexaFloatNegativeInfinity(y) || IsInteger(IsFloatNode(a) ? b : a)) {
      if (x < y) return -1;
      if (x > y) return 1;
      return x == y ? 0 : 2;
    }
    // A rational against a finite float: exactly, through the float's mantissa and exponent,
    // unless the float's exponent is so large that the two are far apart anyway.
    const FloatNode* f = AsFloatNode(IsFloatNode(a) ? a : b);
    if (f->exponent > 100000 || f->exponent < -100000) {
      VexaDigitsScope wide(60);
      VexaFloat p = ToFloat(a), q = ToFloat(b);
      return p < q ? -1 : p > q ? 1 : 0;
    }
  }
  mpq_t p, q;
  mpq_inits(p, q, nullptr);
  ToMpq(a, p);
  ToMpq(b, q);
  int c = mpq_cmp(p, q);
  mpq_clears(p, q, nullptr);
  return c < 0 ? -1 : c > 0 ? 1 : 0;
}

bool IsZero(ALGEB e) {
  if (e == nullptr) return false;
  if (IsImmediate(e)) return ImmediateValue(e) == 0;
  if (IsFloatNode(e)) return KindOf(AsFloatNode(e)) == kFinite && AsFloatNode(e)->size == 0;
  return false;
}

int Sign(ALGEB e) {
  if (IsImmediate(e)) return ImmediateValue(e) < 0 ? -1 : ImmediateValue(e) > 0;
  return Compare(e, NewInteger(0));
}

}  // namespace vexa
