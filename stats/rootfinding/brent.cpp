// Brent's root finder: the van Wijngaarden-Dekker-Brent method (inverse quadratic
// interpolation safeguarded by bisection; Brent, "Algorithms for Minimization without
// Derivatives", 1973, ch. 4), with one tolerance used both as the absolute tolerance and in
// place of the machine epsilon. The hybrid front ends find a bracket of a nondecreasing
// function by secant extrapolation to its upper (or lower) bound first.
#include "rootfinding/rootfinding.h"

namespace {

using namespace rootfinding;

const char* const kMaxIterations = "maximum number of iterations exceeded in Brent root finding.";
const HybridMessages kHybrid = {
    "BrentMethodHybrid was not able to converge on the specified root.",
    "BrentMethodHybridUnbound requires distinct initial points (InitPoint1 != InitPoint2)."};

// b: the best estimate; a: the previous b; c: the far end of the bracket [b, c].
// d: the step just taken; e: the step before it.
struct BrentState {
  VexaFloat a, b, c, fa, fb, fc, d, e;
};

// The next step from b: inverse quadratic interpolation through a, b, c (the secant when
// a = c), taken only when it falls well inside the bracket and shrinks faster than the step
// before last; bisection otherwise.
void ChooseStep(BrentState& s, const VexaFloat& tol1, const VexaFloat& xm) {
  if (fabs(s.e) >= tol1 && fabs(s.fa) > fabs(s.fb)) {
    const VexaFloat sr = s.fb / s.fa;
    VexaFloat p, q;
    if (s.a == s.c) {
      p = 2 * xm * sr;
      q = 1 - sr;
    } else {
      const VexaFloat qa = s.fa / s.fc, r = s.fb / s.fc;
      p = sr * (2 * xm * qa * (qa - r) - (s.b - s.a) * (r - 1));
      q = (qa - 1) * (r - 1) * (sr - 1);
    }
    if (p > 0) q = -q;
    p = fabs(p);
    const VexaFloat min1 = 3 * xm * q - fabs(tol1 * q), min2 = fabs(s.e * q);
    if (2 * p < (min1 < min2 ? min1 : min2)) {
      s.e = s.d;
      s.d = p / q;
      return;
    }
  }
  s.d = xm;
  s.e = s.d;
}

// Brent's method as the finish of a hybrid search.
BracketSolver Finish(VexaKernelVector kv, const VexaFloat& y, STATS_VexaCallbackAdapter_MP& f,
                     const VexaFloat& tol) {
  return [kv, y, &f, tol](const VexaFloat& lower, const VexaFloat& upper, int maxIter) {
    return STATS_BrentMethod_MP(kv, y, f, lower, upper, tol, maxIter);
  };
}

using HybridWorker = VexaFloat (*)(VexaKernelVector, VexaFloat, STATS_VexaCallbackAdapter_MP&,
                                   VexaFloat, VexaFloat, VexaFloat, VexaFloat, VexaFloat, int);

template <HybridWorker worker>
VexaFloat SolveHybrid(VexaKernelVector kv, const EntryValues& v) {
  return worker(kv, v.y, *v.f, v.point[0], v.point[1], v.point[2], v.point[3], v.tol, v.maxIter);
}

}  // namespace

VexaFloat STATS_BrentMethod_MP(VexaKernelVector kv, VexaFloat y, STATS_VexaCallbackAdapter_MP& f,
                               VexaFloat lower, VexaFloat upper, VexaFloat tol, int maxIter) {
  BrentState s;
  s.a = lower;
  s.b = upper;
  s.c = upper;
  s.fa = f.Call(s.a) - y;
  s.fb = f.Call(s.b) - y;
  if (SameStrictSign(s.fa, s.fb)) VexaRaiseError(kv, kRootNotBracketed);
  s.fc = s.fb;
  for (int iter = 0; iter < maxIter; ++iter) {
    if (SameStrictSign(s.fb, s.fc)) {
      s.c = s.a;
      s.fc = s.fa;
      s.d = s.e = s.b - s.a;
    }
    if (fabs(s.fc) < fabs(s.fb)) {
      s.a = s.b;
      s.b = s.c;
      s.c = s.a;
      s.fa = s.fb;
      s.fb = s.fc;
      s.fc = s.fa;
    }
    const VexaFloat tol1 = 2 * tol * fabs(s.b) + 0.5 * tol;
    const VexaFloat xm = 0.5 * (s.c - s.b);
    if (fabs(xm) < tol1 || s.fb == 0) return s.b;
    ChooseStep(s, tol1, xm);
    s.a = s.b;
    s.fa = s.fb;
    s.b += fabs(s.d) > tol1 ? s.d : Sign(tol1, xm);
    s.fb = f.Call(s.b) - y;
  }
  VexaRaiseError(kv, kMaxIterations);
}

VexaFloat STATS_BrentMethodHybridLeft_MP(VexaKernelVector kv, VexaFloat y,
                                         STATS_VexaCallbackAdapter_MP& f, VexaFloat fLow,
                                         VexaFloat fHigh, VexaFloat leftBarrier,
                                         VexaFloat initialPoint, VexaFloat tol, int maxIter) {
  return SearchLeft(kv, y, f, fLow, fHigh, leftBarrier, initialPoint, maxIter, kHybrid,
                    Finish(kv, y, f, tol));
}

VexaFloat STATS_BrentMethodHybridRight_MP(VexaKernelVector kv, VexaFloat y,
                                          STATS_VexaCallbackAdapter_MP& f, VexaFloat fLow,
                                          VexaFloat fHigh, VexaFloat initialPoint,
                                          VexaFloat rightBarrier, VexaFloat tol, int maxIter) {
  return SearchRight(kv, y, f, fLow, fHigh, initialPoint, rightBarrier, maxIter, kHybrid,
                     Finish(kv, y, f, tol));
}

VexaFloat STATS_BrentMethodHybridUnbound_MP(VexaKernelVector kv, VexaFloat y,
                                            STATS_VexaCallbackAdapter_MP& f, VexaFloat fLow,
                                            VexaFloat fHigh, VexaFloat initPoint1,
                                            VexaFloat initPoint2, VexaFloat tol, int maxIter) {
  return SearchUnbound(kv, y, f, fLow, fHigh, initPoint1, initPoint2, maxIter, kHybrid,
                       Finish(kv, y, f, tol));
}

ALGEB STATS_VexaBrentMethod_MP(VexaKernelVector kv, ALGEB args) {
  static const EntryForm form = {"VexaBrentMethod", 6, 1, nullptr, true};
  return RunEntry(kv, args, form, [](VexaKernelVector kv, const EntryValues& v) {
    return STATS_BrentMethod_MP(kv, v.y, *v.f, v.point[0], v.point[1], v.tol, v.maxIter);
  });
}

ALGEB STATS_VexaBrentMethodHybridLeft_MP(VexaKernelVector kv, ALGEB args) {
  static const EntryForm form = {"VexaBrentMethodHybridLeft", 8, 1, nullptr, false};
  return RunEntry(kv, args, form, SolveHybrid<STATS_BrentMethodHybridLeft_MP>);
}

ALGEB STATS_VexaBrentMethodHybridRight_MP(VexaKernelVector kv, ALGEB args) {
  // The procedure message of the right entry point names the unbound one.
  static const EntryForm form = {"VexaBrentMethodHybridRight", 8, 1, "VexaBrentMethodHybridUnbound",
                                 false};
  return RunEntry(kv, args, form, SolveHybrid<STATS_BrentMethodHybridRight_MP>);
}

ALGEB STATS_VexaBrentMethodHybridUnbound_MP(VexaKernelVector kv, ALGEB args) {
  static const EntryForm form = {"VexaBrentMethodHybridUnbound", 8, 1, nullptr, false};
  return RunEntry(kv, args, form, SolveHybrid<STATS_BrentMethodHybridUnbound_MP>);
}
