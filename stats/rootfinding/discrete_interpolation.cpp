// Discrete interpolation: the first integer at which a nondecreasing step function (a
// discrete distribution function) reaches a level, found by bisection of an integer bracket.
// The hybrid front ends find the bracket by secant extrapolation rounded down to integers.
#include "rootfinding/rootfinding.h"

namespace {

using namespace rootfinding;

const char* const kNotBracketed = "root must be bracketed by left and right barriers.";
const char* const kMaxIterations =
    "maximum number of iterations exceeded in discrete root finding.";
const char* const kNoConvergence =
    "DiscreteInterpolationHybrid was not able to converge to the specified root.";
const char* const kEqualPoints =
    "DiscreteInterpolationHybridUnbound requires distinct initial points (InitPoint1 != "
    "InitPoint2).";

// f at an integer point, handed over as a float made from a double.
VexaFloat At(STATS_VexaCallbackAdapter_MP& f, long x) {
  return f.Call(VexaFloat(static_cast<double>(x)));
}

// The integer below the point where the secant through (xa, fa) and (xb, fb) reaches the
// level (the line is written from its first point).
long SecantPoint(const VexaFloat& level, long xa, const VexaFloat& fa, long xb,
                 const VexaFloat& fb) {
  const VexaFloat m = (fb - fa) / (VexaFloat(xb) - VexaFloat(xa));
  const VexaFloat c = fa - m * VexaFloat(xa);
  return STATS_DoubleToInteger_MP(floor((level - c) / m));
}

long Point(const STATS_VexaEntry_MP& entry, int i) {
  return STATS_DoubleToInteger_MP(entry.Float(i));
}

using HybridWorker = long (*)(VexaKernelVector, VexaFloat, STATS_VexaCallbackAdapter_MP&, VexaFloat,
                              VexaFloat, long, long, int);

// The three hybrid entry points share their arity and procedure messages.
ALGEB HybridEntry(VexaKernelVector kv, ALGEB args, const char* name, HybridWorker worker) {
  STATS_VexaEntry_MP entry(kv, args, name, 7,
                           STATS_VexaEntry_MP::ArityMessage("VexaDiscreteInterpolationHybrid", 7));
  const VexaFloat y = entry.Float(1);
  STATS_VexaProcAdapter_MP f(kv, entry.Procedure(2, STATS_VexaEntry_MP::ProcedureMessage(
                                                        "VexaDiscreteInterpolationHybridLeft", 2)));
  const VexaFloat fLow = entry.Float(3), fHigh = entry.Float(4);
  const long point1 = Point(entry, 5), point2 = Point(entry, 6);
  const int maxIter = entry.Integer(7);
  return ToVexaInteger(kv, worker(kv, y, f, fLow, fHigh, point1, point2, maxIter));
}

}  // namespace

long STATS_DiscreteInterpolation_MP(VexaKernelVector kv, VexaFloat y,
                                    STATS_VexaCallbackAdapter_MP& f, long left, long right,
                                    int maxIter) {
  // f(left) = y does not return left: the search goes on to its right.
  if (At(f, left) > y) return left;
  const VexaFloat fr = At(f, right);
  if (fr < y) VexaRaiseError(kv, kNotBracketed);
  if (maxIter < 1) VexaRaiseError(kv, kMaxIterations);
  long lo = left, hi = right;
  VexaFloat fhi = fr;
  int k = 0;
  while (hi - lo > 1) {
    const long mid = (lo + hi) / 2;
    const VexaFloat fm = At(f, mid);
    if (fm < y) {
      lo = mid;
    } else {
      hi = mid;
      fhi = fm;
    }
    if (++k == maxIter) VexaRaiseError(kv, kMaxIterations);
  }
  return fhi < y ? hi + 1 : hi;
}

long STATS_DiscreteInterpolationHybridLeft_MP(VexaKernelVector kv, VexaFloat y,
                                              STATS_VexaCallbackAdapter_MP& f, VexaFloat fLow,
                                              VexaFloat fHigh, long leftBarrier, long initialPoint,
                                              int maxIter) {
  if (initialPoint <= leftBarrier) VexaRaiseError(kv, kLeftBarrier);
  CheckBounds(kv, y, fLow, fHigh);
  long x0 = leftBarrier, x1 = initialPoint;
  VexaFloat f0 = At(f, x0), f1 = At(f, x1);
  for (int k = 0; k < maxIter; ++k) {
    if (f1 >= y) return STATS_DiscreteInterpolation_MP(kv, y, f, x0, x1, maxIter - k);
    long xn = SecantPoint(fHigh, x0, f0, x1, f1);
    if (xn == x1) {
      xn = x1 + 1;
    } else if (xn < x1) {
      VexaRaiseError(kv, kNotNondecreasing);
    }
    const VexaFloat fn = At(f, xn);
    if (fn < f1) VexaRaiseError(kv, kNotNondecreasing);
    if (fn == f1) VexaRaiseError(kv, kNoConvergence);
    x0 = x1;
    f0 = f1;
    x1 = xn;
    f1 = fn;
  }
  VexaRaiseError(kv, kNoConvergence);
}

long STATS_DiscreteInterpolationHybridRight_MP(VexaKernelVector kv, VexaFloat y,
                                               STATS_VexaCallbackAdapter_MP& f, VexaFloat fLow,
                                               VexaFloat fHigh, long initialPoint,
                                               long rightBarrier, int maxIter) {
  if (rightBarrier <= initialPoint) VexaRaiseError(kv, kRightBarrier);
  CheckBounds(kv, y, fLow, fHigh);
  long x = initialPoint, r = rightBarrier;
  VexaFloat fx = At(f, x), fr = At(f, r);
  for (int k = 0; k < maxIter; ++k) {
    // The hand-off reads the value at the right-hand point, not at x.
    if (fr >= y) return STATS_DiscreteInterpolation_MP(kv, y, f, x, r, maxIter - k);
    long xn = SecantPoint(fLow, x, fx, r, fr);
    if (xn == x) {
      xn = x - 1;
    } else if (xn > x) {
      VexaRaiseError(kv, kNotNondecreasing);
    }
    r = x;
    fr = fx;
    x = xn;
    fx = At(f, xn);
    if (fr < fx) VexaRaiseError(kv, kNotNondecreasing);
    if (fr == fx) VexaRaiseError(kv, kNoConvergence);
  }
  VexaRaiseError(kv, kNoConvergence);
}

long STATS_DiscreteInterpolationHybridUnbound_MP(VexaKernelVector kv, VexaFloat y,
                                                 STATS_VexaCallbackAdapter_MP& f, VexaFloat fLow,
                                                 VexaFloat fHigh, long initPoint1, long initPoint2,
                                                 int maxIter) {
  CheckBounds(kv, y, fLow, fHigh);
  if (initPoint1 == initPoint2) VexaRaiseError(kv, kEqualPoints);
  // Points given in decreasing order leave both ends at the second point.
  const long lo = initPoint1 < initPoint2 ? initPoint1 : initPoint2;
  const long hi = initPoint2;
  const VexaFloat flo = At(f, lo), fhi = At(f, hi);
  if (flo == y) return lo;
  if (fhi == y) return hi;
  if (flo < y)
    return STATS_DiscreteInterpolationHybridLeft_MP(kv, y, f, flo, fHigh, lo, hi, maxIter);
  return STATS_DiscreteInterpolationHybridRight_MP(kv, y, f, flo, fhi, lo, hi, maxIter);
}

ALGEB STATS_VexaDiscreteInterpolation_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaDiscreteInterpolation", 5);
  const VexaFloat y = entry.Float(1);
  STATS_VexaProcAdapter_MP f(kv, entry.Procedure(2));
  const long left = Point(entry, 3), right = Point(entry, 4);
  const int maxIter = entry.Integer(5);
  return ToVexaInteger(kv, STATS_DiscreteInterpolation_MP(kv, y, f, left, right, maxIter));
}

ALGEB STATS_VexaDiscreteInterpolationHybridLeft_MP(VexaKernelVector kv, ALGEB args) {
  return HybridEntry(kv, args, "VexaDiscreteInterpolationHybridLeft",
                     STATS_DiscreteInterpolationHybridLeft_MP);
}

ALGEB STATS_VexaDiscreteInterpolationHybridRight_MP(VexaKernelVector kv, ALGEB args) {
  return HybridEntry(kv, args, "VexaDiscreteInterpolationHybridRight",
                     STATS_DiscreteInterpolationHybridRight_MP);
}

ALGEB STATS_VexaDiscreteInterpolationHybridUnbound_MP(VexaKernelVector kv, ALGEB args) {
  return HybridEntry(kv, args, "VexaDiscreteInterpolationHybridUnbound",
                     STATS_DiscreteInterpolationHybridUnbound_MP);
}
