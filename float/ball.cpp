// Arb balls and decimal floats: exact conversion in, decided rounding out.
#include "float/ball.h"

#include "float/decimal.h"

namespace vexa {
namespace {

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

}  // namespace

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

// Rounds the ball to `digits` digits if both its ends give the same result. Each end is
// rounded in its own decade (the ball may straddle a power of ten, as sin(x) does for tiny
// x); rounding is monotone, so every value in the ball then rounds alike. With `tieToEven`
// ends that round to two neighbours are taken as the exact tie between them.
bool RoundBall(const arb_t y, int digits, slong prec, ALGEB* out, bool tieToEven) {
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

}  // namespace vexa
