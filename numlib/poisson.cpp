// Poisson probabilities. P(X = j) = exp(j log lambda - lambda - lgamma(j+1)); the tail on
// the far side of k from the mean is summed from there with the ratios j / lambda downward
// or lambda / (j+1) upward, the other tail is its complement. Arb balls, correctly rounded
// through Ziv's loop. The walk takes about sqrt(2 ln 2 lambda prec) terms at worst, which
// the bound lambda <= 1e10 keeps in hand.
#include <algorithm>
#include <cstdlib>
#include <string>

#include "float/ball.h"
#include "numlib/discrete.h"
#include "numlib/failure.h"
#include "numlib/quantile.h"

namespace vexa {
namespace {

constexpr const char* kRoutine = "VexaMP_g01bkc";

void PointMass(arb_t y, const VexaFloat& lambda, long k, slong prec) {
  Ball t, u, x;
  ToBall(x.v, lambda, prec);
  arb_log(y, x.v, prec);
  arb_mul_ui(y, y, static_cast<ulong>(k), prec);
  arb_sub(y, y, x.v, prec);
  arb_set_ui(t.v, static_cast<ulong>(k) + 1);
  arb_lgamma(u.v, t.v, prec);
  arb_sub(y, y, u.v, prec);
  arb_exp(y, y, prec);
  ClampUnderflow(y);
}

// From this count on, the tails are taken as incomplete gamma values of shape k + 1,
// P(X <= k) = Q(k + 1, lambda) and P(X > k) = P(k + 1, lambda), by Temme's expansion: a few
// dozen operations where the walk takes about sqrt(lambda prec) terms.
const long kGammaCount = 10000;

// P(X <= k) summed downward from k, or P(X > k) upward from k + 1.
void FarTail(arb_t y, const VexaFloat& lambda, long k, bool lower, slong prec) {
  if (k + 1 >= kGammaCount) {
    Ball a, ratio;
    arb_set_ui(a.v, static_cast<ulong>(k) + 1);
    ToBall(ratio.v, lambda, prec + 32);
    arb_div(ratio.v, ratio.v, a.v, prec + 32);
    LargeGammaTail(y, a.v, ratio.v, lower, prec);
    ClampUnderflow(y);
    return;
  }
  const ulong start = static_cast<ulong>(lower ? k : k + 1);
  Ball first, factor;
  PointMass(first.v, lambda, static_cast<long>(start), prec);
  ToBall(factor.v, lambda, prec);
  if (lower) arb_inv(factor.v, factor.v, prec);
  auto ratioAt = [&](ulong j) {
    if (lower) return Ratio{j, 1, 1, 1};
    return Ratio{1, 1, j + 1, 1};
  };
  LogConcaveTail(y, first.v, start, lower ? 0 : ~0UL, ratioAt, factor.v, prec);
  ClampUnderflow(y);
}

bool CheckArguments(const VexaFloat& lambda, long k, NagError* fail) {
  if (IsVexaFloatUndefined(lambda) || IsVexaFloatInfinity(lambda))
    return Fail(fail, NE_REAL_ARG, kRoutine, Shows("rlamda", lambda), "rlamda is finite");
  if (lambda <= 0)
    return Fail(fail, NE_REAL_ARG_LE, kRoutine, Shows("rlamda", lambda), "rlamda > 0");
  if (lambda > VexaFloatFromString("1e10"))
    return Fail(fail, NE_REAL_ARG_GT, kRoutine, Shows("rlamda", lambda), "rlamda <= 1e10");
  if (k < 0) return Fail(fail, NE_INT_ARG_LT, kRoutine, Shows("k", k), "k >= 0");
  return true;
}

}  // namespace
}  // namespace vexa

void VexaMP_g01bkc(VexaFloat rlamda, long k, VexaFloat* plek, VexaFloat* pgtk, VexaFloat* peqk,
                   NagError* fail) {
  using namespace vexa;
  NagError local;
  local.print = true;
  if (fail == nullptr) fail = &local;
  Succeed(fail);
  *plek = *pgtk = *peqk = VexaFloat();
  if (!CheckArguments(rlamda, k, fail)) return;
  // k log lambda, lambda and lgamma(k+1) are large: their bits above the unit cancel in
  // the mass, and the walk adds a rounding per term.
  const double lambdaD = std::strtod(VexaFloatToString(rlamda).c_str(), nullptr);
  const slong kBits = BitLength(static_cast<unsigned long>(k) + 1);
  const slong lambdaBits = BitLength(static_cast<unsigned long>(lambdaD) + 1);
  // (the gamma path keeps its own bits; only the mass's log-factorials cancel)
  const slong extra = k + 1 >= kGammaCount
                          ? std::max(kBits, lambdaBits) + 24
                          : (kBits > lambdaBits ? 2 * kBits : 3 * lambdaBits / 2) + 40;
  const bool lower = static_cast<double>(k) < lambdaD;
  auto far = [&](arb_t y, slong prec) { FarTail(y, rlamda, k, lower, prec); };
  auto mass = [&](arb_t y, slong prec) { PointMass(y, rlamda, k, prec); };
  FromFarTail(far, lower, mass, extra, plek, pgtk, peqk);
}
