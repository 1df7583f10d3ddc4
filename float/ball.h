// Arb balls and decimal floats, for routines of libvexa that compute on balls (the
// elementary functions, the numerical library). A float goes in exactly; a ball comes out
// as the correctly rounded float once the ball decides the rounding (Ziv's strategy).
#ifndef VEXA_FLOAT_BALL_H
#define VEXA_FLOAT_BALL_H

#include <arb.h>
#include <flint/fmpz.h>

#include <functional>

#include "float/float_node.h"

namespace vexa {

constexpr double kLog2Of10 = 3.3219280948873623;

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

// 1 - z.
inline void OneMinusBall(arb_t r, const arb_t z, slong prec) {
  arb_sub_ui(r, z, 1, prec);
  arb_neg(r, r);
}

// 10^k (k of either sign) multiplied into r.
void ScaleByPow10(arb_t r, int64_t k, slong prec);

// A ball enclosing the exact value of a finite float (an exact ball when the float's
// exponent is not negative).
void ToBall(arb_t r, const FloatNode* n, slong prec);
inline void ToBall(arb_t r, const VexaFloat& x, slong prec) {
  ToBall(r, AsFloatNode(x.Handle()), prec);
}

// Decimal position of the top digit of a finite nonzero float: 10^(Top-1) <= |x| < 10^Top.
int64_t Top(const FloatNode* n);

// Rounds y to `digits` decimal digits into *out when every point of the ball rounds alike;
// false when the ball is too wide to decide (or contains zero without being zero). With
// tieToEven, ends that round to adjacent values are taken as the exact tie between them.
bool RoundBall(const arb_t y, int digits, slong prec, ALGEB* out, bool tieToEven = false);

// f(y, prec) evaluated at growing precision (starting at Digits * log2(10) + 24 +
// extraBits bits, doubling) until the rounding to the current Digits is decided. A ball
// that stays non-finite gives undefined.
using BallFunction = std::function<void(arb_t, slong)>;
VexaFloat Ziv(const BallFunction& f, slong extraBits);

}  // namespace vexa

#endif
