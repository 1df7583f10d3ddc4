// The standard normal distribution: tail probabilities through erfc and erf, deviates
// through Arb's inverse error functions, each correctly rounded by Ziv's loop. Every
// argument handed to erfcinv or erfinv is an exact decimal (1 - p, 2p and 1 - 2p are formed
// without rounding), so that no tail loses digits.
#include <arb_hypgeom.h>

#include "numlib/quantile.h"

namespace vexa {
namespace {

const slong kExtraBits = 10;

// y = sign * sqrt(2) * erfcinv(w) (inverse = false) or sign * sqrt(2) * erfinv(w).
VexaFloat ScaledInverse(const VexaFloat& w, bool complementary, int sign) {
  return Ziv(
      [&](arb_t y, slong prec) {
        Ball s;
        ToBall(y, w, prec);
        if (complementary)
          arb_hypgeom_erfcinv(y, y, prec);
        else
          arb_hypgeom_erfinv(y, y, prec);
        arb_sqrt_ui(s.v, 2, prec);
        arb_mul(y, y, s.v, prec);
        if (sign < 0) arb_neg(y, y);
      },
      kExtraBits);
}

// The x with P(X >= x) = q.
VexaFloat UpperDeviate(const VexaFloat& q) {
  if (q < 0.25) return ScaledInverse(Twice(q), true, 1);
  if (q > 0.75) return ScaledInverse(Twice(OneMinus(q)), true, -1);
  return ScaledInverse(OneMinus(Twice(q)), false, 1);
}

}  // namespace
}  // namespace vexa

using namespace vexa;

VexaFloat VexaMP_g01eac(Nag_TailProbability tail, VexaFloat x, NagError* fail) {
  const char* routine = "VexaMP_g01eac";
  Succeed(fail);
  if (!CheckTail(fail, routine, tail) || !CheckFinite(fail, routine, "x", x)) return 0;
  return Ziv(
      [&](arb_t y, slong prec) {
        Ball s;
        ToBall(y, x, prec);
        arb_sqrt_ui(s.v, 2, prec);
        arb_div(y, y, s.v, prec);
        switch (tail) {
          case Nag_LowerTail:  // erfc(-x / sqrt 2) / 2
            arb_neg(y, y);
            arb_hypgeom_erfc(y, y, prec);
            arb_mul_2exp_si(y, y, -1);
            break;
          case Nag_UpperTail:
            arb_hypgeom_erfc(y, y, prec);
            arb_mul_2exp_si(y, y, -1);
            break;
          case Nag_TwoTailSignif:  // erfc(|x| / sqrt 2)
            arb_abs(y, y);
            arb_hypgeom_erfc(y, y, prec);
            break;
          default:  // erf(|x| / sqrt 2)
            arb_abs(y, y);
            arb_hypgeom_erf(y, y, prec);
            break;
        }
      },
      kExtraBits);
}

VexaFloat VexaMP_g01fac(Nag_TailProbability tail, VexaFloat p, NagError* fail) {
  const char* routine = "VexaMP_g01fac";
  Succeed(fail);
  if (!CheckTail(fail, routine, tail) || !CheckProbability(fail, routine, p)) return 0;
  switch (tail) {
    case Nag_LowerTail:
      return UpperDeviate(OneMinus(p));
    case Nag_UpperTail:
      return UpperDeviate(p);
    case Nag_TwoTailSignif:  // P(|X| >= x) = erfc(x / sqrt 2)
      return p > 0.5 ? ScaledInverse(OneMinus(p), false, 1) : ScaledInverse(p, true, 1);
    default:  // P(|X| <= x) = erf(x / sqrt 2)
      return p > 0.5 ? ScaledInverse(OneMinus(p), true, 1) : ScaledInverse(p, false, 1);
  }
}
