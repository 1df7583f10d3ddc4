// VexaFloat: the host's decimal multiprecision float. A value is an integer mantissa times
// a power of ten, or undefined, +infinity or -infinity. Every operation rounds its result
// to VexaDigits() significant digits, ties to even; operands are used exactly.
#ifndef VEXA_FLOAT_H
#define VEXA_FLOAT_H

#include <string>
#include <type_traits>

#include "vexa/handle.h"

class VexaFloat {
 public:
  VexaFloat();  // zero
  VexaFloat(double x);  // the double's exact binary value, rounded
  VexaFloat(int x);
  VexaFloat(long x);
  VexaFloat(long long x);
  VexaFloat(unsigned x);
  VexaFloat(unsigned long x);
  VexaFloat(unsigned long long x);
  // Any numeric host value: a float as it is, an integer exactly, a rational rounded.
  // Anything else raises a host error.
  explicit VexaFloat(ALGEB e);
  VexaFloat(const VexaFloat&) = default;
  VexaFloat& operator=(const VexaFloat&) = default;
  VexaFloat& operator=(double x) { return *this = VexaFloat(x); }
  ~VexaFloat() = default;

  // The host float node this value wraps; it can be handed to the host as it is.
  ALGEB Handle() const { return handle_; }

  VexaFloat& operator+=(const VexaFloat& b);
  VexaFloat& operator-=(const VexaFloat& b);
  VexaFloat& operator*=(const VexaFloat& b);
  VexaFloat& operator/=(const VexaFloat& b);

 private:
  ALGEB handle_;
};

VexaFloat operator+(const VexaFloat& a, const VexaFloat& b);
VexaFloat operator-(const VexaFloat& a, const VexaFloat& b);
VexaFloat operator*(const VexaFloat& a, const VexaFloat& b);
VexaFloat operator/(const VexaFloat& a, const VexaFloat& b);
VexaFloat operator-(const VexaFloat& a);

// Comparisons are exact. Undefined is unordered: every comparison with it is false,
// except != which is true (as for an IEEE NaN).
bool operator==(const VexaFloat& a, const VexaFloat& b);
bool operator!=(const VexaFloat& a, const VexaFloat& b);
bool operator<(const VexaFloat& a, const VexaFloat& b);
bool operator<=(const VexaFloat& a, const VexaFloat& b);
bool operator>(const VexaFloat& a, const VexaFloat& b);
bool operator>=(const VexaFloat& a, const VexaFloat& b);

// Mixed operands (double, long, int, ...) are converted exactly and then combined, so that
// x > 0.5 never means x > 0.
#define VEXA_MIXED_OP(R, OP)                                                      \
  template <class T, class = std::enable_if_t<std::is_arithmetic<T>::value>>      \
  inline R operator OP(const VexaFloat& a, T b) { return a OP VexaFloat(b); }     \
  template <class T, class = std::enable_if_t<std::is_arithmetic<T>::value>>      \
  inline R operator OP(T a, const VexaFloat& b) { return VexaFloat(a) OP b; }
VEXA_MIXED_OP(VexaFloat, +)
VEXA_MIXED_OP(VexaFloat, -)
VEXA_MIXED_OP(VexaFloat, *)
VEXA_MIXED_OP(VexaFloat, /)
VEXA_MIXED_OP(bool, ==)
VEXA_MIXED_OP(bool, !=)
VEXA_MIXED_OP(bool, <)
VEXA_MIXED_OP(bool, <=)
VEXA_MIXED_OP(bool, >)
VEXA_MIXED_OP(bool, >=)
#undef VEXA_MIXED_OP

VexaFloat exp(const VexaFloat& x);
VexaFloat log(const VexaFloat& x);  // log(0) = -infinity; negative: undefined
VexaFloat sqrt(const VexaFloat& x);  // negative: undefined
VexaFloat floor(const VexaFloat& x);
VexaFloat ceil(const VexaFloat& x);
VexaFloat fabs(const VexaFloat& x);
VexaFloat pow(const VexaFloat& x, const VexaFloat& y);
VexaFloat pow(const VexaFloat& x, double y);
VexaFloat pow(double x, const VexaFloat& y);
VexaFloat Sign(const VexaFloat& a, const VexaFloat& b);  // |a| with the sign of b

int FloatToInt(const VexaFloat& x);  // toward zero, saturating; undefined gives 0
int VexaDigits();
// The host function of that name at x: "sin", "cos", "tan", "arctan", "arcsin", "arccos",
// "sinh", "cosh", "tanh", "exp", "ln", "log", "log10", "sqrt", "abs", "erf", "erfc",
// "GAMMA", "lnGAMMA". An unknown name raises a host error.
VexaFloat VexaEvalf1(const char* name, const VexaFloat& x);
bool VexaHasEvalf1(const char* name);

VexaFloat VexaFloatPi();  // pi, correctly rounded
VexaFloat VexaFloatUndefined();
VexaFloat VexaFloatInfinity(int sign);
bool IsVexaFloatUndefined(const VexaFloat& x);
bool IsVexaFloatInfinity(const VexaFloat& x);  // +infinity only
bool IsVexaFloatNegativeInfinity(const VexaFloat& x);

// Working precision, in significant decimal digits (1 to VEXA_MAX_DIGITS). The host's
// Digits assignment calls VexaSetDigits; it returns the previous value.
enum { VEXA_MAX_DIGITS = 1000000 };
int VexaSetDigits(int digits);

// Decimal text. Reading takes every digit as written (no rounding) and accepts
// [+-]digits[.digits][(e|E)[+-]digits], ".5", "5.", and Float(undefined),
// Float(infinity), Float(-infinity). Malformed text throws std::invalid_argument.
VexaFloat VexaFloatFromString(const std::string& text);
// All stored digits: "3.", "0.975", "1.2e-21", "Float(undefined)". Reads back exactly.
std::string VexaFloatToString(const VexaFloat& x);

// Rounds x to the given number of digits (evalf(x, n) of a float).
VexaFloat VexaFloatRound(const VexaFloat& x, int digits);

// Sets Digits for the lifetime of the scope and restores it after.
class VexaDigitsScope {
 public:
  explicit VexaDigitsScope(int digits) : saved_(VexaSetDigits(digits)) {}
  ~VexaDigitsScope() { VexaSetDigits(saved_); }
  VexaDigitsScope(const VexaDigitsScope&) = delete;
  VexaDigitsScope& operator=(const VexaDigitsScope&) = delete;

 private:
  int saved_;
};

#endif
