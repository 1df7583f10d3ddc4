// The bracket search of the real hybrid root finders: secant extrapolation of a nondecreasing
// function towards its upper (or lower) bound from an initial point, until its value passes
// the target; the bracket found then goes to the family's bracketed method.
#include "rootfinding/rootfinding.h"

namespace rootfinding {

namespace {

// Where the secant through (x0, f0) and (x1, f1) reaches the level. A flat secant reaches it
// nowhere: the search cannot go on.
VexaFloat SecantReaching(VexaKernelVector kv, const VexaFloat& level, const VexaFloat& x0,
                         const VexaFloat& f0, const VexaFloat& x1, const VexaFloat& f1,
                         const HybridMessages& messages) {
  const VexaFloat m = (f1 - f0) / (x1 - x0);
  const VexaFloat c = f0 - m * x0;
  const VexaFloat x = (level - c) / m;
  if (!STATS_IsFinite_MP(x)) VexaRaiseError(kv, messages.noConvergence);
  return x;
}

}  // namespace

bool SameStrictSign(const VexaFloat& u, const VexaFloat& v) {
  return (u > 0 && v > 0) || (u < 0 && v < 0);
}

VexaFloat SearchLeft(VexaKernelVector kv, const VexaFloat& y, STATS_VexaCallbackAdapter_MP& f,
                     const VexaFloat& fLow, const VexaFloat& fHigh, const VexaFloat& leftBarrier,
                     const VexaFloat& initialPoint, int maxIter, const HybridMessages& messages,
                     const BracketSolver& solve) {
  if (initialPoint <= leftBarrier) VexaRaiseError(kv, kLeftBarrier);
  CheckBounds(kv, y, fLow, fHigh);
  VexaFloat x0 = leftBarrier, f0 = fLow;
  VexaFloat x1 = initialPoint, f1 = f.Call(x1);
  for (int k = 0; k < maxIter; ++k) {
    if (f1 >= y) return solve(x0, x1, maxIter - k);
    const VexaFloat xn = SecantReaching(kv, fHigh, x0, f0, x1, f1, messages);
    x0 = x1;
    x1 = xn;
    if (x1 < x0) VexaRaiseError(kv, kNotNondecreasing);
    f0 = f1;
    f1 = f.Call(x1);
    if (f1 < f0) VexaRaiseError(kv, kNotNondecreasing);
    if (f1 == f0) VexaRaiseError(kv, messages.noConvergence);
  }
  VexaRaiseError(kv, messages.noConvergence);
}

VexaFloat SearchRight(VexaKernelVector kv, const VexaFloat& y, STATS_VexaCallbackAdapter_MP& f,
                      const VexaFloat& fLow, const VexaFloat& fHigh, const VexaFloat& initialPoint,
                      const VexaFloat& rightBarrier, int maxIter, const HybridMessages& messages,
                      const BracketSolver& solve) {
  if (initialPoint >= rightBarrier) VexaRaiseError(kv, kRightBarrier);
  CheckBounds(kv, y, fLow, fHigh);
  VexaFloat x1 = initialPoint, f1 = f.Call(x1);
  VexaFloat x0 = rightBarrier, f0 = fHigh;
  for (int k = 0; k < maxIter; ++k) {
    if (f1 <= y) return solve(x1, x0, maxIter - k);
    const VexaFloat xn = SecantReaching(kv, fLow, x1, f1, x0, f0, messages);
    x0 = x1;
    x1 = xn;
    if (x1 > x0) VexaRaiseError(kv, kNotNondecreasing);
    f0 = f1;
    f1 = f.Call(x1);
    if (f1 > f0) VexaRaiseError(kv, kNotNondecreasing);
    if (f1 == f0) VexaRaiseError(kv, messages.noConvergence);
  }
  VexaRaiseError(kv, messages.noConvergence);
}

VexaFloat SearchUnbound(VexaKernelVector kv, const VexaFloat& y, STATS_VexaCallbackAdapter_MP& f,
                        const VexaFloat& fLow, const VexaFloat& fHigh, const VexaFloat& initPoint1,
                        const VexaFloat& initPoint2, int maxIter, const HybridMessages& messages,
                        const BracketSolver& solve) {
  if (initPoint1 == initPoint2) VexaRaiseError(kv, messages.equalPoints);
  const VexaFloat lo = initPoint1 < initPoint2 ? initPoint1 : initPoint2;
  const VexaFloat hi = initPoint1 < initPoint2 ? initPoint2 : initPoint1;
  const VexaFloat flo = f.Call(lo), fhi = f.Call(hi);
  if (flo == y) return lo;
  if (fhi == y) return hi;
  // lo (or hi) acts as the barrier, its true value standing in for the bound on that side.
  if (flo < y) return SearchLeft(kv, y, f, flo, fHigh, lo, hi, maxIter, messages, solve);
  return SearchRight(kv, y, f, fLow, fhi, lo, hi, maxIter, messages, solve);
}

}  // namespace rootfinding
