// The standard normal distribution: tail probabilities through erfc and erf, deviates
// through Arb's inverse error functions, each correctly rounded by Ziv's loop. Every
// argument handed to erfcinv or erfinv is an exact decimal (1 - p, 2p and 1 - 2p are formed
// without rounding), so that no tail loses digits.
#include <arb_hypgeom.h>

#include <algorithm>
#include <cmath>

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

// erfc over the ball z. Far out Arb's erfc of an inexact ball loses every bit (the spread
// erfc(m - r) / erfc(m + r) ~ exp(4 m r) outgrows the ball), so there the two ends, each an
// exact point, are evaluated and joined: erfc is decreasing.
void Erfc(arb_t y, const arb_t z, slong prec) {
  if (arb_is_exact(z) || arf_cmpabs_2exp_si(arb_midref(z), 8) < 0) {
    arb_hypgeom_erfc(y, z, prec);
    return;
  }
  Ball lo, hi;
  arf_t end;
  arf_init(end);
  arb_get_lbound_arf(end, z, prec);
  arb_set_arf(lo.v, end);
  arb_get_ubound_arf(end, z, prec);
  arb_set_arf(hi.v, end);
  arf_clear(end);
  arb_hypgeom_erfc(lo.v, lo.v, prec);
  arb_hypgeom_erfc(hi.v, hi.v, prec);
  arb_union(y, lo.v, hi.v, prec);
}

}  // namespace
}  // namespace vexa

using namespace vexa;

VexaFloat VexaMP_g01eac(Nag_TailProbability tail, VexaFloat x, NagError* fail) {
  const char* routine = "VexaMP_g01eac";
  Succeed(fail);
  if (!CheckTail(fail, routine, tail) || !CheckFinite(fail, routine, "x", x)) return 0;
  if (x == 0) return tail == Nag_TwoTailSignif ? 1 : tail == Nag_TwoTailConfid ? 0 : 0.5;
  // Beyond |x| = 7e8 the far tail, below exp(-x^2/2) < 10^-(1.06e17), underflows the float
  // and the near one rounds to 1 at any Digits.
  if (x > 7e8 || x < -7e8) {
    bool farSide = tail == Nag_TwoTailSignif || (tail == Nag_LowerTail) == (x < 0);
    return farSide ? 0 : 1;
  }
  // erfc(z) ~ exp(-z^2): its relative accuracy is that of z^2, which costs 2 log2 |x| bits
  double log2X = LogOf(x > 0 ? x : -x) / std::log(2.0);
  slong extra = kExtraBits + static_cast<slong>(std::max(0.0, 2 * log2X + 2));
  return Ziv(
      [&](arb_t y, slong prec) {
        Ball s;
        ToBall(y, x, prec);
        arb_sqrt_ui(s.v, 2, prec);
        arb_div(y, y, s.v, prec);
        switch (tail) {
          case Nag_LowerTail:  // erfc(-x / sqrt 2) / 2
            arb_neg(y, y);
            Erfc(y, y, prec);
            arb_mul_2exp_si(y, y, -1);
            break;
          case Nag_UpperTail:
            Erfc(y, y, prec);
            arb_mul_2exp_si(y, y, -1);
            break;
          case Nag_TwoTailSignif:  // erfc(|x| / sqrt 2)
            arb_abs(y, y);
            Erfc(y, y, prec);
            break;
          default:  // erf(|x| / sqrt 2)
            arb_abs(y, y);
            arb_hypgeom_erf(y, y, prec);
            break;
        }
      },
      extra);
}

VexaFloat VexaMP_g01fac(Nag_TailProbability tail, VexaFloat p, NagError* fail) {
  const char* routine = "VexaMP_g01fac";
  Succeed(fail);
  if (!CheckTail(fail, routine, tail) || !CheckProbability(fail, routine, p)) return 0;
  switch (tail) {
    case Nag_LowerTail:  // by symmetry; 1 - p would carry every digit of a tiny p
      return -UpperDeviate(p);
    case Nag_UpperTail:
      return UpperDeviate(p);
    case Nag_TwoTailSignif:  // P(|X| >= x) = erfc(x / sqrt 2)
      return p > 0.5 ? ScaledInverse(OneMinus(p), false, 1) : ScaledInverse(p, true, 1);
    default:  // P(|X| <= x) = erf(x / sqrt 2)
      return p > 0.5 ? ScaledInverse(OneMinus(p), true, 1) : ScaledInverse(p, false, 1);
  }
}
