// VexaFloat: construction, the four operations and comparisons with their special values
// (undefined propagates and is unordered; infinities follow the IEEE rules), and the
// integer-valued functions floor, ceil and FloatToInt.
#include <climits>
#include <cmath>
#include <cstring>

#include "float/decimal.h"
#include "float/float_node.h"
#include "host/error.h"

using vexa::AsFloatNode;
using vexa::FloatKind;
using vexa::FloatNode;
using vexa::KindOf;

namespace vexa {

VexaFloat FloatFromHandle(ALGEB e) {
  return VexaFloat(e);
}

VexaFloat FloatFromMpz(const mpz_t mantissa, int64_t exponent, int digits) {
  mpz_t m;
  mpz_init_set(m, mantissa);
  ALGEB r = RoundToNode(m, exponent, digits);
  mpz_clear(m);
  return VexaFloat(r);
}

void FloatToMpz(const VexaFloat& x, mpz_t mantissa, int64_t* exponent) {
  const FloatNode* n = AsFloatNode(x.Handle());
  mpz_t view;
  MantissaView(view, n);
  mpz_set(mantissa, view);
  *exponent = n->exponent;
}

namespace {

ALGEB FromInteger(long long v, int digits) {
  static_assert(sizeof(long) == sizeof(long long), "a long long fits an mpz_set_si");
  mpz_t m;
  mpz_init(m);
  mpz_set_si(m, static_cast<long>(v));
  ALGEB r = RoundToNode(m, 0, digits);
  mpz_clear(m);
  return r;
}

ALGEB FromUnsigned(unsigned long long v, int digits) {
  mpz_t m;
  mpz_init(m);
  mpz_set_ui(m, static_cast<unsigned long>(v));
  ALGEB r = RoundToNode(m, 0, digits);
  mpz_clear(m);
  return r;
}

ALGEB FromDouble(double x, int digits) {
  return DoubleToNode(x, digits);
}

// A result node as a VexaFloat without the constructor's check of the handle: the value is
// one handle wide and trivially copyable, so a copy of an operand takes the handle's bytes.
inline VexaFloat Wrap(const VexaFloat& operand, ALGEB node) {
  static_assert(sizeof(VexaFloat) == sizeof(ALGEB), "a VexaFloat is one handle");
  VexaFloat r = operand;
  std::memcpy(static_cast<void*>(&r), &node, sizeof node);
  return r;
}

inline const FloatNode* N(const VexaFloat& x) {
  return AsFloatNode(x.Handle());
}

inline ALGEB Special(FloatKind k) {
  return SpecialFloatNode(k);
}

ALGEB Infinity(bool negative) {
  return Special(negative ? kMinusInfinity : kPlusInfinity);
}

// Sign of a value: -1, 0, 1 (infinities included); undefined gives 0.
int SignOf(const FloatNode* n) {
  switch (KindOf(n)) {
    case kPlusInfinity:
      return 1;
    case kMinusInfinity:
      return -1;
    case kUndefined:
      return 0;
    default:
      return n->size > 0 ? 1 : (n->size < 0 ? -1 : 0);
  }
}

ALGEB Add(const FloatNode* a, const FloatNode* b, bool subtract) {
  FloatKind ka = KindOf(a), kb = KindOf(b);
  if (ka == kUndefined || kb == kUndefined) return Special(kUndefined);
  if (ka == kFinite && kb == kFinite) return AddFinite(a, b, subtract, CurrentDigits());
  int sa = ka == kFinite ? 0 : SignOf(a);
  int sb = kb == kFinite ? 0 : SignOf(b) * (subtract ? -1 : 1);
  if (sa != 0 && sb != 0 && sa != sb) return Special(kUndefined);
  return Infinity((sa != 0 ? sa : sb) < 0);
}

ALGEB Mul(const FloatNode* a, const FloatNode* b) {
  FloatKind ka = KindOf(a), kb = KindOf(b);
  if (ka == kUndefined || kb == kUndefined) return Special(kUndefined);
  if (ka == kFinite && kb == kFinite) return MulFinite(a, b, CurrentDigits());
  int s = SignOf(a) * SignOf(b);
  if (s == 0) return Special(kUndefined);  // infinity * 0
  return Infinity(s < 0);
}

ALGEB Div(const FloatNode* a, const FloatNode* b) {
  FloatKind ka = KindOf(a), kb = KindOf(b);
  if (ka == kUndefined || kb == kUndefined) return Special(kUndefined);
  if (ka != kFinite && kb != kFinite) return Special(kUndefined);
  if (kb != kFinite) return Special(kFinite);  // finite / infinity
  int sb = SignOf(b);
  if (ka != kFinite) return Infinity(SignOf(a) * (sb < 0 ? -1 : 1) < 0);
  if (sb == 0) {
    int sa = SignOf(a);
    if (sa == 0) return Special(kUndefined);
    return Infinity(sa < 0);
  }
  return DivFinite(a, b, CurrentDigits());
}

// Three-way comparison; 2 when unordered.
int Compare(const FloatNode* a, const FloatNode* b) {
  FloatKind ka = KindOf(a), kb = KindOf(b);
  if (ka == kUndefined || kb == kUndefined) return 2;
  if (ka == kFinite && kb == kFinite) return CompareFinite(a, b);
  auto rank = [](const FloatNode* n) {
    FloatKind k = KindOf(n);
    return k == kPlusInfinity ? 1 : (k == kMinusInfinity ? -1 : 0);
  };
  int ra = rank(a), rb = rank(b);
  return ra == rb ? 0 : (ra < rb ? -1 : 1);
}

}  // namespace
}  // namespace vexa

using namespace vexa;

VexaFloat::VexaFloat() : handle_(Special(kFinite)) {}
VexaFloat::VexaFloat(double x) : handle_(FromDouble(x, CurrentDigits())) {}
VexaFloat::VexaFloat(int x) : handle_(FromInteger(x, CurrentDigits())) {}
VexaFloat::VexaFloat(long x) : handle_(FromInteger(x, CurrentDigits())) {}
VexaFloat::VexaFloat(long long x) : handle_(FromInteger(x, CurrentDigits())) {}
VexaFloat::VexaFloat(unsigned x) : handle_(FromUnsigned(x, CurrentDigits())) {}
VexaFloat::VexaFloat(unsigned long x) : handle_(FromUnsigned(x, CurrentDigits())) {}
VexaFloat::VexaFloat(unsigned long long x) : handle_(FromUnsigned(x, CurrentDigits())) {}

VexaFloat::VexaFloat(ALGEB e) {
  if (IsFloatNode(e)) {
    handle_ = e;
  } else if (e != nullptr && IsImmediate(e)) {
    handle_ = FromInteger(static_cast<long long>(reinterpret_cast<intptr_t>(e) >> 1), 0);
  } else {
    handle_ = HostNumericToFloat(e).handle_;
  }
}

VexaFloat& VexaFloat::operator+=(const VexaFloat& b) {
  return *this = *this + b;
}
VexaFloat& VexaFloat::operator-=(const VexaFloat& b) {
  return *this = *this - b;
}
VexaFloat& VexaFloat::operator*=(const VexaFloat& b) {
  return *this = *this * b;
}
VexaFloat& VexaFloat::operator/=(const VexaFloat& b) {
  return *this = *this / b;
}

VexaFloat operator+(const VexaFloat& a, const VexaFloat& b) {
  return Wrap(a, Add(N(a), N(b), false));
}
VexaFloat operator-(const VexaFloat& a, const VexaFloat& b) {
  return Wrap(a, Add(N(a), N(b), true));
}
VexaFloat operator*(const VexaFloat& a, const VexaFloat& b) {
  return Wrap(a, Mul(N(a), N(b)));
}
VexaFloat operator/(const VexaFloat& a, const VexaFloat& b) {
  return Wrap(a, Div(N(a), N(b)));
}
VexaFloat operator-(const VexaFloat& a) {
  return VexaFloat(NegateNode(N(a), CurrentDigits()));
}

bool operator==(const VexaFloat& a, const VexaFloat& b) {
  return Compare(N(a), N(b)) == 0;
}
bool operator!=(const VexaFloat& a, const VexaFloat& b) {
  return Compare(N(a), N(b)) != 0;
}
bool operator<(const VexaFloat& a, const VexaFloat& b) {
  return Compare(N(a), N(b)) == -1;
}
bool operator<=(const VexaFloat& a, const VexaFloat& b) {
  int c = Compare(N(a), N(b));
  return c == -1 || c == 0;
}
bool operator>(const VexaFloat& a, const VexaFloat& b) {
  return Compare(N(a), N(b)) == 1;
}
bool operator>=(const VexaFloat& a, const VexaFloat& b) {
  int c = Compare(N(a), N(b));
  return c == 1 || c == 0;
}

VexaFloat sqrt(const VexaFloat& x) {
  const FloatNode* n = N(x);
  switch (KindOf(n)) {
    case kFinite:
      return VexaFloat(SqrtFinite(n, CurrentDigits()));
    case kPlusInfinity:
      return x;
    default:
      return VexaFloatUndefined();
  }
}

VexaFloat fabs(const VexaFloat& x) {
  const FloatNode* n = N(x);
  if (KindOf(n) == kMinusInfinity) return VexaFloatInfinity(1);
  if (KindOf(n) != kFinite) return x;
  return VexaFloat(n->size < 0 ? NegateNode(n, CurrentDigits()) : RoundNode(n, CurrentDigits()));
}

VexaFloat Sign(const VexaFloat& a, const VexaFloat& b) {
  if (IsVexaFloatUndefined(b)) return VexaFloatUndefined();
  VexaFloat m = fabs(a);
  return SignOf(N(b)) < 0 ? -m : m;
}

namespace {

// floor (toward -infinity) or ceil of a finite value, exactly, then rounded.
VexaFloat IntegerPart(const VexaFloat& x, bool up) {
  const FloatNode* n = N(x);
  if (KindOf(n) != kFinite || n->exponent >= 0) return VexaFloat(RoundNode(n, CurrentDigits()));
  mpz_t m, q, p;
  MantissaView(m, n);
  mpz_init(q);
  mpz_init(p);
  if (-n->exponent > DecimalDigits(m) + 1) {
    // |x| < 1
    mpz_set_si(q, up ? (n->size > 0 ? 1 : 0) : (n->size < 0 ? -1 : 0));
  } else {
    Pow10(p, static_cast<unsigned long>(-n->exponent));
    if (up)
      mpz_cdiv_q(q, m, p);
    else
      mpz_fdiv_q(q, m, p);
  }
  VexaFloat r(RoundToNode(q, 0, CurrentDigits()));
  mpz_clear(q);
  mpz_clear(p);
  return r;
}

}  // namespace

VexaFloat floor(const VexaFloat& x) {
  return IntegerPart(x, false);
}
VexaFloat ceil(const VexaFloat& x) {
  return IntegerPart(x, true);
}

int FloatToInt(const VexaFloat& x) {
  const FloatNode* n = N(x);
  switch (KindOf(n)) {
    case kUndefined:
      return 0;
    case kPlusInfinity:
      return INT_MAX;
    case kMinusInfinity:
      return INT_MIN;
    default:
      break;
  }
  if (n->size == 0) return 0;
  mpz_t m, q;
  MantissaView(m, n);
  int64_t top = n->exponent + DecimalDigits(m);
  if (top > 10) return n->size > 0 ? INT_MAX : INT_MIN;
  if (top <= 0) return 0;
  mpz_init(q);
  if (n->exponent >= 0) {
    MulPow10(q, m, static_cast<unsigned long>(n->exponent));
  } else {
    mpz_t p;
    mpz_init(p);
    Pow10(p, static_cast<unsigned long>(-n->exponent));
    mpz_tdiv_q(q, m, p);
    mpz_clear(p);
  }
  long v = mpz_fits_slong_p(q) ? mpz_get_si(q) : (mpz_sgn(q) > 0 ? LONG_MAX : LONG_MIN);
  mpz_clear(q);
  if (v > INT_MAX) return INT_MAX;
  if (v < INT_MIN) return INT_MIN;
  return static_cast<int>(v);
}

int VexaDigits() {
  return CurrentDigits();
}
int VexaSetDigits(int digits) {
  return SetDigits(digits);
}

VexaFloat VexaFloatUndefined() {
  return VexaFloat(Special(kUndefined));
}
VexaFloat VexaFloatInfinity(int sign) {
  return VexaFloat(Infinity(sign < 0));
}
bool IsVexaFloatUndefined(const VexaFloat& x) {
  return KindOf(N(x)) == kUndefined;
}
bool IsVexaFloatInfinity(const VexaFloat& x) {
  return KindOf(N(x)) == kPlusInfinity;
}
bool IsVexaFloatNegativeInfinity(const VexaFloat& x) {
  return KindOf(N(x)) == kMinusInfinity;
}

VexaFloat VexaFloatRound(const VexaFloat& x, int digits) {
  return VexaFloat(RoundNode(N(x), digits));
}

namespace vexa {

VexaFloat ExactFloatFromDouble(double x) {
  return VexaFloat(FromDouble(x, 0));
}

}  // namespace vexa
