// Root finders over a callable float function. Brent's method solves f(x) = y on a real
// bracket; discrete interpolation finds the first integer at which a nondecreasing step
// function reaches y. Each comes in a plain bracketed form and in hybrid forms that first
// find a bracket by secant extrapolation from an initial point (bounded on the left, on the
// right, or from two free points), then hand the remaining iteration budget to the plain form.
#ifndef STATS_ROOTFINDING_ROOTFINDING_H
#define STATS_ROOTFINDING_ROOTFINDING_H

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

// y, procedure, left, right, max iterations; at the caller's Digits; an integer result.
ALGEB STATS_VexaDiscreteInterpolation_MP(VexaKernelVector kv, ALGEB args);
// y, procedure, fLow, fHigh, leftBarrier, initialPoint, max iterations.
ALGEB STATS_VexaDiscreteInterpolationHybridLeft_MP(VexaKernelVector kv, ALGEB args);
// y, procedure, fLow, fHigh, initialPoint, rightBarrier, max iterations.
ALGEB STATS_VexaDiscreteInterpolationHybridRight_MP(VexaKernelVector kv, ALGEB args);
// y, procedure, fLow, fHigh, initPoint1, initPoint2, max iterations.
ALGEB STATS_VexaDiscreteInterpolationHybridUnbound_MP(VexaKernelVector kv, ALGEB args);
}

// ---- Shared by both families: messages and the bounds check of the hybrids. ----
namespace rootfinding {
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
}  // namespace rootfinding

#endif
