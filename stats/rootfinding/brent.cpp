// Brent's root finder: the van Wijngaarden-Dekker-Brent method (inverse quadratic
// interpolation safeguarded by bisection; Brent, "Algorithms for Minimization without
// Derivatives", 1973, ch. 4), with one tolerance used both as the absolute tolerance and in
// place of the machine epsilon. The hybrid front ends find a bracket of a nondecreasing
// function by secant extrapolation to its upper (or lower) bound first.
#include <cmath>

#include "rootfinding/rootfinding.h"

namespace {

using namespace rootfinding;

const char* const kNotBracketed = "root must be bracketed by lower and upper boundaries.";
const char* const kMaxIterations = "maximum number of iterations exceeded in Brent root finding.";
const char* const kNoConvergence =
    "BrentMethodHybrid was not able to converge on the specified root.";
const char* const kEqualPoints =
    "BrentMethodHybridUnbound requires distinct initial points (InitPoint1 != InitPoint2).";

bool SameStrictSign(const VexaFloat& u, const VexaFloat& v) {
  return (u > 0 && v > 0) || (u < 0 && v < 0);
}

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

// Where the secant through (x0, f0) and (x1, f1) reaches the level. A flat secant reaches it
// nowhere: the search cannot go on.
VexaFloat SecantReaching(VexaKernelVector kv, const VexaFloat& level, const VexaFloat& x0,
                         const VexaFloat& f0, const VexaFloat& x1, const VexaFloat& f1) {
  const VexaFloat m = (f1 - f0) / (x1 - x0);
  const VexaFloat c = f0 - m * x0;
  const VexaFloat x = (level - c) / m;
  if (!STATS_IsFinite_MP(x)) VexaRaiseError(kv, kNoConvergence);
  return x;
}

// Digits raised for the life of the scope, then given back the value the host's assign
// returned, also when an error unwinds through it.
class RaisedDigits {
 public:
  RaisedDigits(const STATS_VexaEntry_MP& entry, int digits)
      : entry_(entry), previous_(entry.SetDigits(digits)) {}
  ~RaisedDigits() { entry_.RestoreDigits(previous_); }
  RaisedDigits(const RaisedDigits&) = delete;
  RaisedDigits& operator=(const RaisedDigits&) = delete;

 private:
  const STATS_VexaEntry_MP& entry_;
  ALGEB previous_;
};

// tol digits times 10^-Digits, the power formed in double precision (it underflows to 0
// beyond about 323 digits).
VexaFloat Tolerance(int tolDigits, int digits) {
  return VexaFloat(tolDigits) * VexaFloat(std::pow(10.0, -digits));
}

using HybridWorker = VexaFloat (*)(VexaKernelVector, VexaFloat, STATS_VexaCallbackAdapter_MP&,
                                   VexaFloat, VexaFloat, VexaFloat, VexaFloat, VexaFloat, int);

// The three hybrid entry points differ only in their names and worker. procedureName names
// the entry point that the procedure message reports.
ALGEB HybridEntry(VexaKernelVector kv, ALGEB args, const char* name, const char* procedureName,
                  HybridWorker worker) {
  STATS_VexaEntry_MP entry(kv, args, name, 8);
  const VexaFloat y = entry.Float(1);
  STATS_VexaProcAdapter_MP f(
      kv, entry.Procedure(2, STATS_VexaEntry_MP::ProcedureMessage(procedureName, 2)));
  const VexaFloat fLow = entry.Float(3), fHigh = entry.Float(4);
  const VexaFloat point1 = entry.Float(5), point2 = entry.Float(6);
  const int tolDigits = entry.Integer(7);
  const int digits = entry.Digits();
  const VexaFloat tol = Tolerance(tolDigits, digits);
  const int maxIter = entry.Integer(8);
  VexaFloat root;
  {
    RaisedDigits raised(entry, digits + 3);
    root = worker(kv, y, f, fLow, fHigh, point1, point2, tol, maxIter);
  }
  return entry.Result(root);
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
  if (SameStrictSign(s.fa, s.fb)) VexaRaiseError(kv, kNotBracketed);
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
  if (initialPoint <= leftBarrier) VexaRaiseError(kv, kLeftBarrier);
  CheckBounds(kv, y, fLow, fHigh);
  VexaFloat x0 = leftBarrier, f0 = fLow;
  VexaFloat x1 = initialPoint, f1 = f.Call(x1);
  for (int k = 0; k < maxIter; ++k) {
    if (f1 >= y) return STATS_BrentMethod_MP(kv, y, f, x0, x1, tol, maxIter - k);
    const VexaFloat xn = SecantReaching(kv, fHigh, x0, f0, x1, f1);
    x0 = x1;
    x1 = xn;
    if (x1 < x0) VexaRaiseError(kv, kNotNondecreasing);
    f0 = f1;
    f1 = f.Call(x1);
    if (f1 < f0) VexaRaiseError(kv, kNotNondecreasing);
    if (f1 == f0) VexaRaiseError(kv, kNoConvergence);
  }
  VexaRaiseError(kv, kNoConvergence);
}

VexaFloat STATS_BrentMethodHybridRight_MP(VexaKernelVector kv, VexaFloat y,
                                          STATS_VexaCallbackAdapter_MP& f, VexaFloat fLow,
                                          VexaFloat fHigh, VexaFloat initialPoint,
                                          VexaFloat rightBarrier, VexaFloat tol, int maxIter) {
  if (initialPoint >= rightBarrier) VexaRaiseError(kv, kRightBarrier);
  CheckBounds(kv, y, fLow, fHigh);
  VexaFloat x1 = initialPoint, f1 = f.Call(x1);
  VexaFloat x0 = rightBarrier, f0 = fHigh;
  for (int k = 0; k < maxIter; ++k) {
    if (f1 <= y) return STATS_BrentMethod_MP(kv, y, f, x1, x0, tol, maxIter - k);
    const VexaFloat xn = SecantReaching(kv, fLow, x1, f1, x0, f0);
    x0 = x1;
    x1 = xn;
    if (x1 > x0) VexaRaiseError(kv, kNotNondecreasing);
    f0 = f1;
    f1 = f.Call(x1);
    if (f1 > f0) VexaRaiseError(kv, kNotNondecreasing);
    if (f1 == f0) VexaRaiseError(kv, kNoConvergence);
  }
  VexaRaiseError(kv, kNoConvergence);
}

VexaFloat STATS_BrentMethodHybridUnbound_MP(VexaKernelVector kv, VexaFloat y,
                                            STATS_VexaCallbackAdapter_MP& f, VexaFloat fLow,
                                            VexaFloat fHigh, VexaFloat initPoint1,
                                            VexaFloat initPoint2, VexaFloat tol, int maxIter) {
  if (initPoint1 == initPoint2) VexaRaiseError(kv, kEqualPoints);
  const VexaFloat lo = initPoint1 < initPoint2 ? initPoint1 : initPoint2;
  const VexaFloat hi = initPoint1 < initPoint2 ? initPoint2 : initPoint1;
  const VexaFloat flo = f.Call(lo), fhi = f.Call(hi);
  if (flo == y) return lo;
  if (fhi == y) return hi;
  // lo (or hi) acts as the barrier, its true value standing in for the bound on that side.
  if (flo < y) return STATS_BrentMethodHybridLeft_MP(kv, y, f, flo, fHigh, lo, hi, tol, maxIter);
  return STATS_BrentMethodHybridRight_MP(kv, y, f, fLow, fhi, lo, hi, tol, maxIter);
}

ALGEB STATS_VexaBrentMethod_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaBrentMethod", 6);
  const VexaFloat y = entry.Float(1);
  STATS_VexaProcAdapter_MP f(kv, entry.Procedure(2));
  const VexaFloat lower = entry.Float(3), upper = entry.Float(4);
  const int tolDigits = entry.Integer(5);
  const int digits = entry.Digits();
  const VexaFloat tol = Tolerance(tolDigits, digits);
  const int maxIter = entry.Integer(6);
  VexaFloat root;
  {
    RaisedDigits raised(entry, digits + 3);
    root = STATS_BrentMethod_MP(kv, y, f, lower, upper, tol, maxIter);
  }
  return entry.Result(root, digits);
}

ALGEB STATS_VexaBrentMethodHybridLeft_MP(VexaKernelVector kv, ALGEB args) {
  return HybridEntry(kv, args, "VexaBrentMethodHybridLeft", "VexaBrentMethodHybridLeft",
                     STATS_BrentMethodHybridLeft_MP);
}

ALGEB STATS_VexaBrentMethodHybridRight_MP(VexaKernelVector kv, ALGEB args) {
  // The procedure message of the right entry point names the unbound one.
  return HybridEntry(kv, args, "VexaBrentMethodHybridRight", "VexaBrentMethodHybridUnbound",
                     STATS_BrentMethodHybridRight_MP);
}

ALGEB STATS_VexaBrentMethodHybridUnbound_MP(VexaKernelVector kv, ALGEB args) {
  return HybridEntry(kv, args, "VexaBrentMethodHybridUnbound", "VexaBrentMethodHybridUnbound",
                     STATS_BrentMethodHybridUnbound_MP);
}
