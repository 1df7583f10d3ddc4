// Hypergeometric probabilities: P(X = j) = C(l, j) C(n-l, m-j) / C(n, m) on the support
// max(0, l+m-n) <= j <= min(l, m). The tail on the far side of k from the mean is summed
// term by term with the exact ratios of neighbouring masses, in a ball; the other tail is
// its complement. The walk stops once a geometric bound on the rest is negligible, after
// about sd sqrt(2 ln 2 prec) terms at worst; the variance limit of 1e10 bounds the work.
#include <cmath>

#include "float/ball.h"
#include "numlib/discrete.h"
#include "numlib/failure.h"

namespace vexa {
namespace {

constexpr const char* kRoutine = "VexaMP_g01blc";
constexpr long double kMaxVariance = 1e10L;
using u128 = unsigned __int128;

struct Law {
  ulong n, l, m;
  ulong lo, hi;  // the support
};

void AddLogFactorial(arb_t y, ulong v, int sign, slong prec) {
  Ball t, u;
  arb_set_ui(t.v, v);
  arb_add_ui(t.v, t.v, 1, prec);
  arb_lgamma(u.v, t.v, prec);
  if (sign > 0)
    arb_add(y, y, u.v, prec);
  else
    arb_sub(y, y, u.v, prec);
}

// P(X = j) for j in the support, from log-factorials.
void Mass(arb_t y, const Law& w, ulong j, slong prec) {
  arb_zero(y);
  AddLogFactorial(y, w.l, 1, prec);
  AddLogFactorial(y, j, -1, prec);
  AddLogFactorial(y, w.l - j, -1, prec);
  AddLogFactorial(y, w.n - w.l, 1, prec);
  AddLogFactorial(y, w.m - j, -1, prec);
  AddLogFactorial(y, w.n + j - w.l - w.m, -1, prec);
  AddLogFactorial(y, w.n, -1, prec);
  AddLogFactorial(y, w.m, 1, prec);
  AddLogFactorial(y, w.n - w.m, 1, prec);
  arb_exp(y, y, prec);
}

void PointMass(arb_t y, const Law& w, ulong j, slong prec) {
  Mass(y, w, j, prec);
  ClampUnderflow(y);
}

// Sum of the masses from j = start down to the bottom of the support (down) or up to its
// top.
void TailSum(arb_t s, const Law& w, ulong start, bool down, slong prec) {
  Ball first;
  Mass(first.v, w, start, prec);
  auto ratioAt = [&](ulong j) {
    if (down) return Ratio{j, w.n + j - w.l - w.m, w.l - j + 1, w.m - j + 1};
    return Ratio{w.l - j, w.m - j, j + 1, w.n + j + 1 - w.l - w.m};
  };
  LogConcaveTail(s, first.v, start, down ? w.lo : w.hi, ratioAt, nullptr, prec);
}

bool CheckArguments(long n, long l, long m, long k, NagError* fail) {
  if (n < 0) return Fail(fail, NE_INT_ARG_LT, kRoutine, Shows("n", n), "n >= 0");
  if (l < 0) return Fail(fail, NE_INT_ARG_LT, kRoutine, Shows("l", l), "l >= 0");
  if (l > n)
    return Fail(fail, NE_INT_ARG_CONS, kRoutine, Shows("l", l) + " and " + Shows("n", n), "l <= n");
  if (m < 0) return Fail(fail, NE_INT_ARG_LT, kRoutine, Shows("m", m), "m >= 0");
  if (m > n)
    return Fail(fail, NE_INT_ARG_CONS, kRoutine, Shows("m", m) + " and " + Shows("n", n), "m <= n");
  if (k < 0) return Fail(fail, NE_INT_ARG_LT, kRoutine, Shows("k", k), "k >= 0");
  if (n > 1) {
    long double ln = n, ll = l, lm = m;
    long double variance = ll * lm * (ln - ll) * (ln - lm) / (ln * ln * (ln - 1));
    if (variance > kMaxVariance)
      return Fail(fail, NE_INT_ARG_CONS, kRoutine,
                  Shows("n", n) + ", " + Shows("l", l) + " and " + Shows("m", m),
                  "l m (n-l) (n-m) / (n^2 (n-1)) <= 1e10");
  }
  return true;
}

}  // namespace
}  // namespace vexa

void VexaMP_g01blc(long n, long l, long m, long k, VexaFloat* plek, VexaFloat* pgtk,
                   VexaFloat* peqk, NagError* fail) {
  using namespace vexa;
  NagError local;
  local.print = true;
  if (fail == nullptr) fail = &local;
  Succeed(fail);
  *plek = *pgtk = *peqk = VexaFloat();
  if (!CheckArguments(n, l, m, k, fail)) return;
  Law w;
  w.n = static_cast<ulong>(n), w.l = static_cast<ulong>(l), w.m = static_cast<ulong>(m);
  w.lo = w.l + w.m > w.n ? w.l + w.m - w.n : 0;
  w.hi = w.l < w.m ? w.l : w.m;
  const ulong uk = static_cast<ulong>(k);
  // log-factorials of n cancel (about 2 log2 n bits); the sum adds one rounding per term
  const slong extra =
      2 * BitLength(w.n) +
      BitLength(static_cast<ulong>(std::sqrt(static_cast<double>(w.hi - w.lo) + 1))) + 16;
  auto mass = [&](arb_t y, slong prec) { PointMass(y, w, uk, prec); };
  if (uk < w.lo) {
    *pgtk = VexaFloat(1);
    return;
  }
  if (uk >= w.hi) {
    *plek = VexaFloat(1);
    if (uk == w.hi) *peqk = Ziv(mass, extra);
    return;
  }
  // k below the mean l m / n: sum P(X <= k) downward; otherwise P(X > k) upward.
  const bool lower = static_cast<u128>(uk) * w.n < static_cast<u128>(w.l) * w.m;
  auto far = [&](arb_t y, slong prec) { TailSum(y, w, lower ? uk : uk + 1, lower, prec); };
  FromFarTail(far, lower, mass, extra, plek, pgtk, peqk);
}
