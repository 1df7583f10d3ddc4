// Newton-Raphson root finders: plain Newton steps x - (f(x) - y) / f'(x), and the safeguarded
// form that keeps a bracket and bisects where a Newton step would leave it or shrink it less
// than half as fast as the step before last (the rtsafe scheme of Press et al., "Numerical
// Recipes", 3rd ed., sec. 9.4). The hybrids share the Brent hybrids' bracket search.
#include "rootfinding/rootfinding.h"

namespace {

using namespace rootfinding;

const char* const kFailed = "NewtonRaphson root-finding method failed to converge.";
const char* const kMaxIterations =
    "maximum number of iterations exceeded in Newton-Raphson root finding.";
const HybridMessages kHybrid = {
    "NewtonRaphsonHybrid was not able to converge on the specified root.",
    "NewtonRaphsonHybridUnbound requires distinct initial points (InitPoint1 != InitPoint2)."};

// A step from x to next that moved less than tol relative to the two points, or not at all
// (a fixed point of the iteration, also when tol has underflowed to 0).
bool Converged(const VexaFloat& x, const VexaFloat& next, const VexaFloat& tol) {
  return next == x || fabs(next - x) / (fabs(next) + fabs(x)) < tol;
}

// f(x) - y; an undefined value leaves nothing to steer by.
VexaFloat Residual(VexaKernelVector kv, STATS_VexaCallbackAdapter_MP& f, const VexaFloat& x,
                   const VexaFloat& y) {
  const VexaFloat r = f.Call(x) - y;
  if (IsVexaFloatUndefined(r)) VexaRaiseError(kv, kFailed);
  return r;
}

// The safe method's state: neg and pos are the ends of the bracket at which f - y is
// negative and positive; g and d are f - y and f' at x; step is the last change of x, and
// stepBefore the one before it.
struct SafeState {
  VexaFloat neg, pos, x, g, d, step, stepBefore;
};

// A Newton step is taken when the derivative is usable, it lands strictly inside the bracket
// ((x - end) d - g = d (xNewton - end) has opposite signs at the two ends), and |g / d| is
// less than half the step before last.
bool NewtonStepFits(const SafeState& s) {
  if (s.d == 0 || !STATS_IsFinite_MP(s.d)) return false;
  if (((s.x - s.pos) * s.d - s.g) * ((s.x - s.neg) * s.d - s.g) >= 0) return false;
  return fabs(2 * s.g) <= fabs(s.stepBefore * s.d);
}

// The safe method as the finish of a hybrid search.
BracketSolver Finish(VexaKernelVector kv, const VexaFloat& y, STATS_VexaCallbackAdapter_MP& f,
                     STATS_VexaCallbackAdapter_MP& df, const VexaFloat& tol) {
  return [kv, y, &f, &df, tol](const VexaFloat& lower, const VexaFloat& upper, int maxIter) {
    return STATS_NewtonRaphsonSafe_MP(kv, y, f, df, lower, upper, tol, maxIter);
  };
}

using HybridWorker = VexaFloat (*)(VexaKernelVector, VexaFloat, STATS_VexaCallbackAdapter_MP&,
                                   STATS_VexaCallbackAdapter_MP&, VexaFloat, VexaFloat, VexaFloat,
                                   VexaFloat, VexaFloat, int);

template <HybridWorker worker>
VexaFloat SolveHybrid(VexaKernelVector kv, const EntryValues& v) {
  return worker(kv, v.y, *v.f, *v.df, v.point[0], v.point[1], v.point[2], v.point[3], v.tol,
                v.maxIter);
}

}  // namespace

VexaFloat STATS_NewtonRaphson_MP(VexaKernelVector kv, VexaFloat y, STATS_VexaCallbackAdapter_MP& f,
                                 STATS_VexaCallbackAdapter_MP& df, VexaFloat x0, VexaFloat tol,
                                 int maxIter) {
  VexaFloat x = x0;
  for (int iter = 0; iter < maxIter; ++iter) {
    const VexaFloat g = Residual(kv, f, x, y);
    if (g == 0) return x;
    const VexaFloat d = df.Call(x);
    if (d == 0) VexaRaiseError(kv, kFailed);
    const VexaFloat next = x - g / d;
    if (!STATS_IsFinite_MP(next)) VexaRaiseError(kv, kFailed);
    if (Converged(x, next, tol)) return next;
    x = next;
  }
  VexaRaiseError(kv, kMaxIterations);
}

VexaFloat STATS_NewtonRaphsonSafe_MP(VexaKernelVector kv, VexaFloat y,
                                     STATS_VexaCallbackAdapter_MP& f,
                                     STATS_VexaCallbackAdapter_MP& df, VexaFloat lower,
                                     VexaFloat upper, VexaFloat tol, int maxIter) {
  const VexaFloat gLower = Residual(kv, f, lower, y), gUpper = Residual(kv, f, upper, y);
  if (SameStrictSign(gLower, gUpper)) VexaRaiseError(kv, kRootNotBracketed);
  if (gLower == 0) return lower;
  if (gUpper == 0) return upper;
  SafeState s;
  s.neg = gLower < 0 ? lower : upper;
  s.pos = gLower < 0 ? upper : lower;
  s.stepBefore = s.step = fabs(upper - lower);
  s.x = 0.5 * (lower + upper);
  for (int iter = 0; iter < maxIter; ++iter) {
    // Every point evaluated becomes an end of the bracket.
    s.g = Residual(kv, f, s.x, y);
    if (s.g == 0) return s.x;
    s.d = df.Call(s.x);
    (s.g < 0 ? s.neg : s.pos) = s.x;
    const VexaFloat previous = s.x;
    const bool newton = NewtonStepFits(s);
    s.stepBefore = s.step;
    if (newton) {
      s.step = s.g / s.d;
      s.x = previous - s.step;
    } else {
      s.step = 0.5 * (s.pos - s.neg);
      s.x = s.neg + s.step;
    }
    if (Converged(previous, s.x, tol)) return s.x;
  }
  VexaRaiseError(kv, kMaxIterations);
}

VexaFloat STATS_NewtonRaphsonHybridLeft_MP(VexaKernelVector kv, VexaFloat y,
                                           STATS_VexaCallbackAdapter_MP& f,
                                           STATS_VexaCallbackAdapter_MP& df, VexaFloat fLow,
                                           VexaFloat fHigh, VexaFloat leftBarrier,
                                           VexaFloat initialPoint, VexaFloat tol, int maxIter) {
  return SearchLeft(kv, y, f, fLow, fHigh, leftBarrier, initialPoint, maxIter, kHybrid,
                    Finish(kv, y, f, df, tol));
}

VexaFloat STATS_NewtonRaphsonHybridRight_MP(VexaKernelVector kv, VexaFloat y,
                                            STATS_VexaCallbackAdapter_MP& f,
                                            STATS_VexaCallbackAdapter_MP& df, VexaFloat fLow,
                                            VexaFloat fHigh, VexaFloat initialPoint,
                                            VexaFloat rightBarrier, VexaFloat tol, int maxIter) {
  return SearchRight(kv, y, f, fLow, fHigh, initialPoint, rightBarrier, maxIter, kHybrid,
                     Finish(kv, y, f, df, tol));
}

VexaFloat STATS_NewtonRaphsonHybridUnbound_MP(VexaKernelVector kv, VexaFloat y,
                                              STATS_VexaCallbackAdapter_MP& f,
                                              STATS_VexaCallbackAdapter_MP& df, VexaFloat fLow,
                                              VexaFloat fHigh, VexaFloat initPoint1,
                                              VexaFloat initPoint2, VexaFloat tol, int maxIter) {
  return SearchUnbound(kv, y, f, fLow, fHigh, initPoint1, initPoint2, maxIter, kHybrid,
                       Finish(kv, y, f, df, tol));
}

ALGEB STATS_VexaNewtonRaphson_MP(VexaKernelVector kv, ALGEB args) {
  static const EntryForm form = {"VexaNewtonRaphson", 6, 2, nullptr, true};
  return RunEntry(kv, args, form, [](VexaKernelVector kv, const EntryValues& v) {
    return STATS_NewtonRaphson_MP(kv, v.y, *v.f, *v.df, v.point[0], v.tol, v.maxIter);
  });
}

ALGEB STATS_VexaNewtonRaphsonSafe_MP(VexaKernelVector kv, ALGEB args) {
  static const EntryForm form = {"VexaNewtonRaphsonSafe", 7, 2, nullptr, true};
  return RunEntry(kv, args, form, [](VexaKernelVector kv, const EntryValues& v) {
    return STATS_NewtonRaphsonSafe_MP(kv, v.y, *v.f, *v.df, v.point[0], v.point[1], v.tol,
                                      v.maxIter);
  });
}

ALGEB STATS_VexaNewtonRaphsonHybridLeft_MP(VexaKernelVector kv, ALGEB args) {
  static const EntryForm form = {"VexaNewtonRaphsonHybridLeft", 9, 2, nullptr, false};
  return RunEntry(kv, args, form, SolveHybrid<STATS_NewtonRaphsonHybridLeft_MP>);
}

ALGEB STATS_VexaNewtonRaphsonHybridRight_MP(VexaKernelVector kv, ALGEB args) {
  static const EntryForm form = {"VexaNewtonRaphsonHybridRight", 9, 2, nullptr, false};
  return RunEntry(kv, args, form, SolveHybrid<STATS_NewtonRaphsonHybridRight_MP>);
}

ALGEB STATS_VexaNewtonRaphsonHybridUnbound_MP(VexaKernelVector kv, ALGEB args) {
  static const EntryForm form = {"VexaNewtonRaphsonHybridUnbound", 9, 2, nullptr, false};
  return RunEntry(kv, args, form, SolveHybrid<STATS_NewtonRaphsonHybridUnbound_MP>);
}
