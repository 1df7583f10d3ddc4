// Helpers shared by the discrete distributions of the numerical library (binomial, Poisson,
// hypergeometric): tails of log-concave masses summed in a ball, magnitudes beyond the
// float range, precision estimates.
#ifndef VEXA_NUMLIB_DISCRETE_H
#define VEXA_NUMLIB_DISCRETE_H

#include <arb.h>

#include "float/ball.h"

namespace vexa {

// Below 2^-kUnderflowBits a probability rounds to zero in every float (decimal exponents
// stay within 1e17, and 1e17 log2(10) < 3.4e17).
constexpr slong kUnderflowBits = 340000000000000000LL;

// A ball wholly below the float range is the zero it rounds to (Ziv's loop then stops at
// once instead of placing an exponent the floats cannot hold).
inline void ClampUnderflow(arb_t y) {
  if (!arb_is_finite(y)) return;
  mag_t m;
  mag_init(m);
  arb_get_mag(m, y);
  if (mag_cmp_2exp_si(m, -kUnderflowBits) < 0) arb_zero(y);
  mag_clear(m);
}

// Bits of v: the extra working precision that cancellation in log-factorials of v costs
// is about twice this.
inline slong BitLength(unsigned long v) {
  slong bits = 0;
  for (; v != 0; v >>= 1) ++bits;
  return bits;
}

// The ratio of the mass after j to the mass at j: (a1 a2) / (b1 b2), times a fixed factor.
struct Ratio {
  ulong a1, a2, b1, b2;
};

// t * a * b, or t / (a * b): one word operation when the product fits in a word.
inline void ScaleBy(arb_t t, ulong a, ulong b, bool divide, slong prec) {
  unsigned __int128 ab = static_cast<unsigned __int128>(a) * b;
  if ((ab >> 64) == 0) {
    if (divide)
      arb_div_ui(t, t, static_cast<ulong>(ab), prec);
    else
      arb_mul_ui(t, t, static_cast<ulong>(ab), prec);
  } else if (divide) {
    arb_div_ui(t, t, a, prec);
    arb_div_ui(t, t, b, prec);
  } else {
    arb_mul_ui(t, t, a, prec);
    arb_mul_ui(t, t, b, prec);
  }
}

// s = t_start + t_next + ... up to t_end (inclusive; end below start walks down), where
// t_start = first and each term is the one before times ratioAt(j) (times factor unless
// factor is null). The masses are log-concave, so the ratios only shrink as the walk moves
// away from the mode: once a ratio r is below 1 the unsummed rest is at most t r / (1 - r),
// and that bound joins the radius as soon as it is below the ball's own rounding.
template <class RatioAt>
void LogConcaveTail(arb_t s, const arb_t first, ulong start, ulong end, RatioAt ratioAt,
                    const arb_t factor, slong prec) {
  const bool down = end < start;
  arb_t t;
  arb_init(t);
  arb_set(t, first);
  arb_set(s, first);
  mag_t rest, size, r, fm;
  mag_init(rest);
  mag_init(size);
  mag_init(r);
  mag_init(fm);
  if (factor != nullptr) arb_get_mag(fm, factor);
  for (ulong j = start; j != end; j = down ? j - 1 : j + 1) {
    Ratio q = ratioAt(j);
    // an upper bound for the ratio, then for r / (1 - r) (infinite unless r < 1)
    mag_set_ui(r, q.a1);
    mag_mul_ui(r, r, q.a2);
    mag_div_ui(r, r, q.b1);
    mag_div_ui(r, r, q.b2);
    if (factor != nullptr) mag_mul(r, r, fm);
    mag_geom_series(rest, r, 1);
    if (mag_is_finite(rest)) {
      arb_get_mag(size, t);
      mag_mul(rest, rest, size);
      arb_get_mag_lower(size, s);
      mag_mul_2exp_si(size, size, -prec - 8);
      if (mag_cmp(rest, size) <= 0) {
        arb_add_error_mag(s, rest);
        break;
      }
    }
    ScaleBy(t, q.a1, q.a2, false, prec);
    ScaleBy(t, q.b1, q.b2, true, prec);
    if (factor != nullptr) arb_mul(t, t, factor, prec);
    arb_add(s, s, t, prec);
  }
  mag_clear(rest);
  mag_clear(size);
  mag_clear(r);
  mag_clear(fm);
  arb_clear(t);
}

// The three probabilities from the far tail, the tail on the far side of k from the mean
// (which the walk above sums quickly and to full relative accuracy): farTail computes it,
// lowerIsFar tells which tail it is, and the near tail is its complement, at least about a
// half. The sum is made once per precision and shared by the two tails.
inline void FromFarTail(const BallFunction& farTail, bool lowerIsFar, const BallFunction& mass,
                        slong extra, VexaFloat* plek, VexaFloat* pgtk, VexaFloat* peqk) {
  Ball cached;
  slong cachedPrec = 0;
  auto far = [&](arb_t y, slong prec) {
    if (cachedPrec < prec) {
      farTail(cached.v, prec);
      cachedPrec = prec;
    }
    arb_set_round(y, cached.v, prec);
  };
  auto near = [&](arb_t y, slong prec) {
    far(y, prec);
    arb_sub_ui(y, y, 1, prec);
    arb_neg(y, y);
  };
  *plek = Ziv(lowerIsFar ? BallFunction(far) : BallFunction(near), extra);
  *pgtk = Ziv(lowerIsFar ? BallFunction(near) : BallFunction(far), extra);
  *peqk = Ziv(mass, extra);
}

}  // namespace vexa

#endif
