// Shared machinery of the continuous probability and deviate routines: argument checks,
// exact decimal complements, double-precision starting values and the inversion of a ball
// tail function (Halley's method in log y, the root enclosed by Newton's interval operator).
#ifndef VEXA_NUMLIB_QUANTILE_H
#define VEXA_NUMLIB_QUANTILE_H

#include <arb.h>

#include <functional>

#include "float/ball.h"
#include "numlib/failure.h"
#include "vexa/nag.h"

namespace vexa {

// ---- Argument checks: each fills *fail and returns false when the argument is bad. ----
bool CheckTail(NagError* fail, const char* routine, Nag_TailProbability tail);
bool CheckFinite(NagError* fail, const char* routine, const char* name, const VexaFloat& v);
// 0 < v <= most (most 0: no upper bound)
bool CheckPositive(NagError* fail, const char* routine, const char* name, const VexaFloat& v,
                   long most);
// 0 < p < 1
bool CheckProbability(NagError* fail, const char* routine, const VexaFloat& p);
// v >= 0
bool CheckNonNegative(NagError* fail, const char* routine, const char* name, const VexaFloat& v);

// ---- Exact decimal arithmetic on probabilities. ----
VexaFloat OneMinus(const VexaFloat& p);  // 1 - p, every digit kept
VexaFloat Half(const VexaFloat& p);      // p / 2, every digit kept
VexaFloat Twice(const VexaFloat& p);     // 2 p, every digit kept
double LogOf(const VexaFloat& p);        // log p in double (p > 0, any exponent)
// The nearest double; 0 or +-HUGE_VAL beyond the double range.
double ToDouble(const VexaFloat& v);

// ---- Double-precision starting values. ----
// The standard normal z with P(Z > z) = exp(logQ) (logQ <= log 1/2 gives z >= 0; any logQ < 0).
double NormalUpperDeviate(double logQ);
double LogGamma(double a);
// Largest shape parameter (and half the largest degrees of freedom) of the beta-family
// routines; above it the gamma routines take Temme's expansion (large_gamma.cpp).
constexpr long kMaxShape = 1000000;

// The regularized incomplete gamma functions P(a, x), Q(a, x) and beta function I_z(a, b)
// (zc = 1 - z given exactly) as balls, each keeping its relative accuracy in the tails.
void RegularizedGammaLower(arb_t res, const arb_t a, const arb_t x, slong prec);
void RegularizedGammaUpper(arb_t res, const arb_t a, const arb_t x, slong prec);
void RegularizedBetaLower(arb_t res, const arb_t a, const arb_t b, const arb_t z, const arb_t zc,
                          slong prec);
// Q(a, a lambda) (upper) or P(a, a lambda) for a shape a > kMaxShape, and the density of
// a lambda with respect to lambda. Beyond the float range the smaller tail is 0.
bool LargeGammaTail(arb_t res, const arb_t a, const arb_t lambda, bool upper, slong prec);
void LargeGammaDensity(arb_t res, const arb_t a, const arb_t lambda, slong prec);

// The results of a family's tails as balls: y = tail at the point z, at prec bits.
using BallTail = std::function<void(arb_t y, const arb_t z, slong prec)>;

// A tail probability T(y) of a distribution on y > 0 (below ymax), to be solved for T(y) = t.
// The answer is x = y * scale, or x = 1 - y when reflected (y then measures the distance
// from 1, so that x near 1 keeps its digits).
struct Inversion {
  BallTail tail;     // T(y)
  BallTail density;  // |dT/dy| >= 0
  // y (log |dT/dy|)'(y) at y = e^u, in double: Halley's correction (Newton without it)
  std::function<double(double u)> logSlope;
  // log T(e^u) and log |dT/du| = log(y |dT/dy|) at y = e^u in double (optional): the first
  // steps then cost nothing; a value that is not finite sends them to the ball functions.
  // (The density is taken in u so that log y and the log density, each as large as 10^17
  // for a tiny shape, never meet in a double.)
  std::function<double(double u)> logTailD, logDensityD;
  bool upper = false;  // T decreases with y
  double ymax = 0;     // support bound of y (0: unbounded)
  bool reflect = false;
  VexaFloat scale = VexaFloat(1);
  // log2 of the width of u = log y over which T changes (below 0 for a law much narrower than
  // its distance from 0): the iteration counts its correct bits in that width.
  double logWidth = 0;
};

// The correctly rounded x with T(y(x)) = t (0 < t < 1), starting from y = exp(logGuess).
// False (with fail filled, naming the caller's probability p) if the iteration cannot be
// brought to converge.
bool Invert(const Inversion& inv, const VexaFloat& t, double logGuess, VexaFloat* x,
            const VexaFloat& p, NagError* fail, const char* routine);

// The requested tail from the two one-sided tails: lower, upper, 2 min(lower, upper) and
// |lower - upper| = 1 - 2 min(lower, upper).
VexaFloat OneSidedTail(Nag_TailProbability tail, const BallFunction& lower,
                       const BallFunction& upper);

}  // namespace vexa

#endif
