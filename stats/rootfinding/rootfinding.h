// Root finders over a callable float function. Brent's method and Newton-Raphson solve
// f(x) = y on the reals; discrete interpolation finds the first integer at which a
// nondecreasing step function reaches y. Each comes in a plain form and in hybrid forms that
// first find a bracket by secant extrapolation from an initial point (bounded on the left, on
// the right, or from two free points), then hand the remaining iteration budget to the
// bracketed form.
#ifndef STATS_ROOTFINDING_ROOTFINDING_H
#define STATS_ROOTFINDING_ROOTFINDING_H

#include <functional>

#include "../frame/frame.h"

// ---- Brent's method (van Wijngaarden-Dekker-Brent). ----
// f(x) = y within the absolute tolerance tol on the bracket [lower, upper]; at most maxIter
// steps.
VexaFloat STATS_BrentMethod_MP(VexaKernelVector kv, VexaFloat y, STATS_VexaCallbackAdapter_MP& f,
                               VexaFloat lower, VexaFloat upper, VexaFloat tol, int maxIter);
// f nondecreasing with values in [fLow, fHigh]: searches right of leftBarrier, where f is
// taken to be fLow (f is not evaluated there).
VexaFloat STATS_BrentMethodHybridLeft_MP(VexaKernelVector kv, VexaFloat y,
                                         STATS_VexaCallbackAdapter_MP& f, VexaFloat fLow,
                                         VexaFloat fHigh, VexaFloat leftBarrier,
                                         VexaFloat initialPoint, VexaFloat tol, int maxIter);
// The mirror image: searches left of rightBarrier, where f is taken to be fHigh.
VexaFloat STATS_BrentMethodHybridRight_MP(VexaKernelVector kv, VexaFloat y,
                                          STATS_VexaCallbackAdapter_MP& f, VexaFloat fLow,
                                          VexaFloat fHigh, VexaFloat initialPoint,
                                          VexaFloat rightBarrier, VexaFloat tol, int maxIter);
// Two distinct starting points, no barrier: the side on which y lies decides the search.
VexaFloat STATS_BrentMethodHybridUnbound_MP(VexaKernelVector kv, VexaFloat y,
                                            STATS_VexaCallbackAdapter_MP& f, VexaFloat fLow,
                                            VexaFloat fHigh, VexaFloat initPoint1,
                                            VexaFloat initPoint2, VexaFloat tol, int maxIter);

// ---- Newton-Raphson, df the derivative of f. ----
// Newton steps on f(x) - y from x0; converged when a step moves x by less than tol relative
// to |x_new| + |x| (or not at all), or when f(x) = y exactly; at most maxIter steps.
VexaFloat STATS_NewtonRaphson_MP(VexaKernelVector kv, VexaFloat y, STATS_VexaCallbackAdapter_MP& f,
                                 STATS_VexaCallbackAdapter_MP& df, VexaFloat x0, VexaFloat tol,
                                 int maxIter);
// Newton steps kept inside the bracket [lower, upper], which shrinks with every step; a step
// that would leave it or shrink it too slowly is replaced by bisection.
VexaFloat STATS_NewtonRaphsonSafe_MP(VexaKernelVector kv, VexaFloat y,
                                     STATS_VexaCallbackAdapter_MP& f,
                                     STATS_VexaCallbackAdapter_MP& df, VexaFloat lower,
                                     VexaFloat upper, VexaFloat tol, int maxIter);
// The bracket searches of the Brent hybrids, finished by the safe method.
VexaFloat STATS_NewtonRaphsonHybridLeft_MP(VexaKernelVector kv, VexaFloat y,
                                           STATS_VexaCallbackAdapter_MP& f,
                                           STATS_VexaCallbackAdapter_MP& df, VexaFloat fLow,
                                           VexaFloat fHigh, VexaFloat leftBarrier,
                                           VexaFloat initialPoint, VexaFloat tol, int maxIter);
VexaFloat STATS_NewtonRaphsonHybridRight_MP(VexaKernelVector kv, VexaFloat y,
                                            STATS_VexaCallbackAdapter_MP& f,
                                            STATS_VexaCallbackAdapter_MP& df, VexaFloat fLow,
                                            VexaFloat fHigh, VexaFloat initialPoint,
                                            VexaFloat rightBarrier, VexaFloat tol, int maxIter);
VexaFloat STATS_NewtonRaphsonHybridUnbound_MP(VexaKernelVector kv, VexaFloat y,
                                              STATS_VexaCallbackAdapter_MP& f,
                                              STATS_VexaCallbackAdapter_MP& df, VexaFloat fLow,
                                              VexaFloat fHigh, VexaFloat initPoint1,
                                              VexaFloat initPoint2, VexaFloat tol, int maxIter);

// ---- Discrete interpolation over the integers. ----
// The smallest integer in (left, right] at which f >= y, or left when f(left) > y already.
long STATS_DiscreteInterpolation_MP(VexaKernelVector kv, VexaFloat y,
                                    STATS_VexaCallbackAdapter_MP& f, long left, long right,
                                    int maxIter);
long STATS_DiscreteInterpolationHybridLeft_MP(VexaKernelVector kv, VexaFloat y,
                                              STATS_VexaCallbackAdapter_MP& f, VexaFloat fLow,
                                              VexaFloat fHigh, long leftBarrier, long initialPoint,
                                              int maxIter);
long STATS_DiscreteInterpolationHybridRight_MP(VexaKernelVector kv, VexaFloat y,
                                               STATS_VexaCallbackAdapter_MP& f, VexaFloat fLow,
                                               VexaFloat fHigh, long initialPoint,
                                               long rightBarrier, int maxIter);
long STATS_DiscreteInterpolationHybridUnbound_MP(VexaKernelVector kv, VexaFloat y,
                                                 STATS_VexaCallbackAdapter_MP& f, VexaFloat fLow,
                                                 VexaFloat fHigh, long initPoint1, long initPoint2,
                                                 int maxIter);

// ---- Entry points (called by the host). ----
extern "C" {
// y, procedure, lower, upper, tol digits, max iterations. Works at Digits + 3 with the
// tolerance tol digits * 10^-Digits; the root comes back rounded to the caller's Digits.
ALGEB STATS_VexaBrentMethod_MP(VexaKernelVector kv, ALGEB args);
// y, procedure, fLow, fHigh, leftBarrier, initialPoint, tol digits, max iterations. The root
// comes back at the working precision.
ALGEB STATS_VexaBrentMethodHybridLeft_MP(VexaKernelVector kv, ALGEB args);
// y, procedure, fLow, fHigh, initialPoint, rightBarrier, tol digits, max iterations.
ALGEB STATS_VexaBrentMethodHybridRight_MP(VexaKernelVector kv, ALGEB args);
// y, procedure, fLow, fHigh, initPoint1, initPoint2, tol digits, max iterations.
ALGEB STATS_VexaBrentMethodHybridUnbound_MP(VexaKernelVector kv, ALGEB args);

// y, procedure f, procedure df, x0, tol digits, max iterations; as VexaBrentMethod.
ALGEB STATS_VexaNewtonRaphson_MP(VexaKernelVector kv, ALGEB args);
// y, f, df, lower, upper, tol digits, max iterations; as VexaBrentMethod.
ALGEB STATS_VexaNewtonRaphsonSafe_MP(VexaKernelVector kv, ALGEB args);
// y, f, df, fLow, fHigh, the two points, tol digits, max iterations; as the Brent hybrids.
ALGEB STATS_VexaNewtonRaphsonHybridLeft_MP(VexaKernelVector kv, ALGEB args);
ALGEB STATS_VexaNewtonRaphsonHybridRight_MP(VexaKernelVector kv, ALGEB args);
ALGEB STATS_VexaNewtonRaphsonHybridUnbound_MP(VexaKernelVector kv, ALGEB args);

// y, procedure, left, right, max iterations; at the caller's Digits; an integer result.
ALGEB STATS_VexaDiscreteInterpolation_MP(VexaKernelVector kv, ALGEB args);
// y, procedure, fLow, fHigh, leftBarrier, initialPoint, max iterations.
ALGEB STATS_VexaDiscreteInterpolationHybridLeft_MP(VexaKernelVector kv, ALGEB args);
// y, procedure, fLow, fHigh, initialPoint, rightBarrier, max iterations.
ALGEB STATS_VexaDiscreteInterpolationHybridRight_MP(VexaKernelVector kv, ALGEB args);
// y, procedure, fLow, fHigh, initPoint1, initPoint2, max iterations.
ALGEB STATS_VexaDiscreteInterpolationHybridUnbound_MP(VexaKernelVector kv, ALGEB args);
}

// ---- Shared by the families: messages, the bracket search of the real hybrids, entry points.
namespace rootfinding {
constexpr const char* kRootNotBracketed = "root must be bracketed by lower and upper boundaries.";
constexpr const char* kNotNondecreasing = "specified function is not a nondecreasing function.";
constexpr const char* kOutsideBounds =
    "the specified approximation point must be between function bounds.";
constexpr const char* kLeftBarrier =
    "the specified initial point must be greater than the left barrier.";
constexpr const char* kRightBarrier =
    "the specified initial point must be less than the right barrier.";

inline void CheckBounds(VexaKernelVector kv, const VexaFloat& y, const VexaFloat& fLow,
                        const VexaFloat& fHigh) {
  if (y < fLow || y > fHigh) VexaRaiseError(kv, kOutsideBounds);
}

bool SameStrictSign(const VexaFloat& u, const VexaFloat& v);

// The bracketed method that finishes a hybrid search on [lower, upper] with the iterations
// left, and the family's texts for the failures of the search.
using BracketSolver =
    std::function<VexaFloat(const VexaFloat& lower, const VexaFloat& upper, int maxIter)>;
struct HybridMessages {
  const char* noConvergence;  // a flat step or secant
  const char* equalPoints;    // the unbound search given one point twice
};

// Secant extrapolation of a nondecreasing f towards fHigh from leftBarrier (where f is taken
// to be fLow and not evaluated) and initialPoint, until f reaches y.
VexaFloat SearchLeft(VexaKernelVector kv, const VexaFloat& y, STATS_VexaCallbackAdapter_MP& f,
                     const VexaFloat& fLow, const VexaFloat& fHigh, const VexaFloat& leftBarrier,
                     const VexaFloat& initialPoint, int maxIter, const HybridMessages& messages,
                     const BracketSolver& solve);
// The mirror image towards fLow from initialPoint and rightBarrier (f taken to be fHigh).
VexaFloat SearchRight(VexaKernelVector kv, const VexaFloat& y, STATS_VexaCallbackAdapter_MP& f,
                      const VexaFloat& fLow, const VexaFloat& fHigh, const VexaFloat& initialPoint,
                      const VexaFloat& rightBarrier, int maxIter, const HybridMessages& messages,
                      const BracketSolver& solve);
// From two free points: the side of y decides, the nearer point's true value standing in
// for the bound on the other side.
VexaFloat SearchUnbound(VexaKernelVector kv, const VexaFloat& y, STATS_VexaCallbackAdapter_MP& f,
                        const VexaFloat& fLow, const VexaFloat& fHigh, const VexaFloat& initPoint1,
                        const VexaFloat& initPoint2, int maxIter, const HybridMessages& messages,
                        const BracketSolver& solve);

// What a real root finder's entry point hands its worker: y (position 1), the procedures
// (from position 2), the points after them, and the tolerance and iteration limit formed from
// the last two positions.
struct EntryValues {
  VexaFloat y;
  STATS_VexaCallbackAdapter_MP* f;
  STATS_VexaCallbackAdapter_MP* df;  // nullptr with one procedure
  VexaFloat point[4];
  VexaFloat tol;
  int maxIter;
};
struct EntryForm {
  const char* name;           // the entry point's name, for its arity message
  int count;                  // arguments: y, procedures, points, tol digits, max iterations
  int procedures;             // 1 or 2
  const char* procedureName;  // the name its procedure messages report
  bool rounded;               // the root rounded to the caller's Digits, else as computed
};
// Fetches the arguments in order, then runs solve at Digits + 3 with the tolerance
// tol digits * 10^-Digits (the power formed in double precision, so that it underflows to 0
// beyond about 323 digits); Digits is given back also when solve raises.
ALGEB RunEntry(VexaKernelVector kv, ALGEB args, const EntryForm& form,
               VexaFloat (*solve)(VexaKernelVector kv, const EntryValues& v));
}  // namespace rootfinding

#endif
