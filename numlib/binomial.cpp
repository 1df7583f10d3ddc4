// Binomial probabilities. P(X = j) = exp(log C(n, j) + j log p + (n-j) log(1-p)); the tail
// on the far side of k from the mean n p is summed from there with the ratios
// j (1-p) / ((n-j+1) p) downward or (n-j) p / ((j+1) (1-p)) upward, the other tail is its
// complement. Arb balls, correctly rounded through Ziv's loop. The walk takes about
// sd sqrt(2 ln 2 prec) terms at worst; the variance limit n p (1-p) <= 1e10 bounds it.
#include <cstdlib>
#include <string>

#include "float/ball.h"
#include "numlib/discrete.h"
#include "numlib/failure.h"

namespace vexa {
namespace {

constexpr const char* kRoutine = "VexaMP_g01bjc";

// 1 - p for 0 < p < 1. Near 1 it is formed from p's decimal digits exactly, so that the
// ball keeps the relative accuracy of the small difference.
void ComplementBall(arb_t r, const VexaFloat& p, slong prec) {
  if (p <= VexaFloat(0.5)) {
    ToBall(r, p, prec);
    OneMinusBall(r, r, prec);
    return;
  }
  mpz_t m;
  mpz_init(m);
  int64_t e;
  FloatToMpz(p, m, &e);  // p = m 10^e with e < 0, and m has about -e digits
  Fmpz top, mant;
  fmpz_set_mpz(mant.v, m);
  fmpz_ui_pow_ui(top.v, 10, static_cast<ulong>(-e));
  fmpz_sub(top.v, top.v, mant.v);
  arb_set_fmpz(r, top.v);
  ScaleByPow10(r, e, prec);
  mpz_clear(m);
}

// log C(n, k) + k log p + (n - k) log q, exponentiated.
void PointMass(arb_t y, long n, long k, const VexaFloat& p, slong prec) {
  Ball t, u, x;
  arb_set_ui(t.v, static_cast<ulong>(n) + 1);
  arb_lgamma(y, t.v, prec);
  arb_set_ui(t.v, static_cast<ulong>(k) + 1);
  arb_lgamma(u.v, t.v, prec);
  arb_sub(y, y, u.v, prec);
  arb_set_ui(t.v, static_cast<ulong>(n - k) + 1);
  arb_lgamma(u.v, t.v, prec);
  arb_sub(y, y, u.v, prec);
  if (k > 0) {
    ToBall(x.v, p, prec);
    arb_log(u.v, x.v, prec);
    arb_mul_ui(u.v, u.v, static_cast<ulong>(k), prec);
    arb_add(y, y, u.v, prec);
  }
  if (n > k) {
    ComplementBall(x.v, p, prec);
    arb_log(u.v, x.v, prec);
    arb_mul_ui(u.v, u.v, static_cast<ulong>(n - k), prec);
    arb_add(y, y, u.v, prec);
  }
  arb_exp(y, y, prec);
  ClampUnderflow(y);
}

// p / (1 - p), or its inverse.
void Odds(arb_t r, const VexaFloat& p, bool inverse, slong prec) {
  Ball x, q;
  ToBall(x.v, p, prec);
  ComplementBall(q.v, p, prec);
  if (inverse)
    arb_div(r, q.v, x.v, prec);
  else
    arb_div(r, x.v, q.v, prec);
}

// P(X <= k) summed downward from k, or P(X > k) upward from k + 1.
void FarTail(arb_t y, long n, long k, const VexaFloat& p, bool lower, slong prec) {
  const ulong un = static_cast<ulong>(n);
  const ulong start = static_cast<ulong>(lower ? k : k + 1);
  Ball first, factor;
  PointMass(first.v, n, static_cast<long>(start), p, prec);
  Odds(factor.v, p, lower, prec);
  auto ratioAt = [&](ulong j) {
    if (lower) return Ratio{j, 1, un - j + 1, 1};
    return Ratio{un - j, 1, j + 1, 1};
  };
  LogConcaveTail(y, first.v, start, lower ? 0 : un, ratioAt, factor.v, prec);
  ClampUnderflow(y);
}

double ToDouble(const VexaFloat& x) {
  return std::strtod(VexaFloatToString(x).c_str(), nullptr);
}

bool CheckArguments(long n, const VexaFloat& p, long k, NagError* fail) {
  if (n < 0) return Fail(fail, NE_INT_ARG_LT, kRoutine, Shows("n", n), "n >= 0");
  if (IsVexaFloatUndefined(p))
    return Fail(fail, NE_REAL_ARG, kRoutine, Shows("p", p), "p is a number");
  if (p < 0) return Fail(fail, NE_REAL_ARG_LT, kRoutine, Shows("p", p), "0 <= p <= 1");
  if (p > 1) return Fail(fail, NE_REAL_ARG_GT, kRoutine, Shows("p", p), "0 <= p <= 1");
  if (k < 0) return Fail(fail, NE_INT_ARG_LT, kRoutine, Shows("k", k), "k >= 0");
  const double pd = ToDouble(p);
  if (static_cast<double>(n) * pd * (1 - pd) > 1e10)
    return Fail(fail, NE_REAL_ARG_CONS, kRoutine, Shows("n", n) + " and " + Shows("p", p),
                "n p (1 - p) <= 1e10");
  return true;
}

}  // namespace
}  // namespace vexa

void VexaMP_g01bjc(long n, VexaFloat p, long k, VexaFloat* plek, VexaFloat* pgtk, VexaFloat* peqk,
                   NagError* fail) {
  using namespace vexa;
  NagError local;
  local.print = true;
  if (fail == nullptr) fail = &local;
  Succeed(fail);
  *plek = *pgtk = *peqk = VexaFloat();
  if (!CheckArguments(n, p, k, fail)) return;
  // Degenerate laws: all mass at 0 (p = 0) or at n (p = 1).
  if (p == 0 || p == 1) {
    long atom = p == 0 ? 0 : n;
    *plek = VexaFloat(k >= atom ? 1 : 0);
    *pgtk = VexaFloat(k >= atom ? 0 : 1);
    *peqk = VexaFloat(k == atom ? 1 : 0);
    return;
  }
  // lgamma(n + 1) is about n log n: its bits above the unit are lost to cancellation, and
  // the walk adds a rounding per term.
  const slong extra = 3 * BitLength(static_cast<unsigned long>(n)) / 2 + 40;
  // At or beyond n every trial is counted: P(X = n) = p^n.
  if (k >= n) {
    *plek = VexaFloat(1);
    if (k == n) *peqk = Ziv([&](arb_t y, slong prec) { PointMass(y, n, n, p, prec); }, extra);
    return;
  }
  const bool lower = static_cast<double>(k) < static_cast<double>(n) * ToDouble(p);
  auto far = [&](arb_t y, slong prec) { FarTail(y, n, k, p, lower, prec); };
  auto mass = [&](arb_t y, slong prec) { PointMass(y, n, k, p, prec); };
  FromFarTail(far, lower, mass, extra, plek, pgtk, peqk);
}
