// The error distribution (exponential power law) with location a, scale b and shape c:
// density proportional to exp(-|x - a|^(2/c) / (2 b^(2/c))), the normal law at c = 1 and
// Laplace's at c = 2. Its deviate inverts a distribution function F with density f given by
// the caller: a bracket is searched from two points near a tail estimate of the quantile,
// then the safe Newton-Raphson method solves F(x) = p on it. Variates: |x - a| / b is
// (2 G)^(c/2) for G gamma of shape c/2, with a random sign.
#include <cmath>
#include <cstdlib>

#include "distributions/distributions.h"
#include "random/random_stream.h"
#include "random/variates.h"
#include "rootfinding/rootfinding.h"

namespace {

// Bracket search and Newton steps together; the steps converge quadratically, the search
// moves about one unit of 1/z per step far out in a tail.
constexpr int kIterations = 200;

double ToDouble(const VexaFloat& x) {
  return std::strtod(VexaFloatToString(x).c_str(), nullptr);
}

// The distance z = |x - a| / b at which one tail of the law holds the probability q, given
// as ln q. With s = c/2 and u = z^(2/c) / 2 the tail is Gamma(s, u) / (2 Gamma(s)), and
// Gamma(s, u) ~ u^(s-1) e^-u gives u = L + (s - 1) ln u with L = -ln(2 q Gamma(s)), solved
// by fixed-point steps. Only a starting point: computed in double, 0 where q is not small.
VexaFloat TailDistance(double logQ, const VexaFloat& c) {
  const double s = ToDouble(c) / 2;
  const double l = -(logQ + std::log(2.0)) - std::lgamma(s);
  if (!(l > 1) || !std::isfinite(l)) return VexaFloat(0);
  double u = l;
  for (int i = 0; i < 10 && u > 0; ++i) u = l + (s - 1) * std::log(u);
  if (!(u > 0) || !std::isfinite(u)) return VexaFloat(0);
  return pow(VexaFloat(2 * u), c / 2);
}

[[noreturn]] void RaiseParameter(VexaKernelVector kv, const char* message, const VexaFloat& x) {
  VexaRaiseError1(kv, message, STATS_DoubleToVexaFloat_MP(kv, x));
}

}  // namespace

VexaFloat STATS_ErrorDeviate_MP(VexaKernelVector kv, VexaFloat p, STATS_VexaCallbackAdapter_MP& F,
                                STATS_VexaCallbackAdapter_MP& f, VexaFloat a, VexaFloat b,
                                VexaFloat c) {
  if (!(p > 0 && p < 1))
    RaiseParameter(kv, "the probability must be strictly between 0 and 1, received: %1", p);
  if (!STATS_IsFinite_MP(a)) RaiseParameter(kv, "the location must be finite, received: %1", a);
  if (!(b > 0) || !STATS_IsFinite_MP(b))
    RaiseParameter(kv, "the scale must be positive and finite, received: %1", b);
  if (!(c > 0) || !STATS_IsFinite_MP(c))
    RaiseParameter(kv, "the shape must be positive and finite, received: %1", c);

  // Two points on the side of a where the quantile lies, around the tail estimate (a and
  // a -/+ b / 2 near the centre).
  const bool lower = p < 0.5;
  const VexaFloat z = TailDistance(ToDouble(log(lower ? p : 1 - p)), c);
  const VexaFloat side = lower ? -b : b;
  const VexaFloat inner = a + side * (0.8 * z), outer = a + side * (1.2 * z + 0.5);
  // The steps end once one moves x by less than 10^(2 - Digits) relatively (a tenth of a
  // unit in the last place of the caller's Digits, three below the working precision); the
  // error left is about the square of that step.
  const VexaFloat tol = pow(VexaFloat(10), VexaFloat(2 - VexaDigits()));
  return STATS_NewtonRaphsonHybridUnbound_MP(kv, p, F, f, 0, 1, inner, outer, tol, kIterations);
}

VexaFloat STATS_ErrorRandomVariate_MP(VexaKernelVector kv, VexaFloat a, VexaFloat b, VexaFloat c) {
  STATS_RequireParameter_MP(kv, STATS_IsFinite_MP(a), "the location must be finite, received: %1",
                            a);
  STATS_RequireParameter_MP(kv, STATS_IsPositiveFinite_MP(b),
                            "the scale must be positive and finite, received: %1", b);
  STATS_RequireParameter_MP(kv, STATS_IsPositiveFinite_MP(c),
                            "the shape must be positive and finite, received: %1", c);
  const VexaFloat s = c / 2;
  const VexaFloat z = b * pow(2 * STATS_StandardGammaVariate_MP(s), s);
  return (STATS_VexaRandomStream_MP::NextInteger() & 1) ? a - z : a + z;
}

VexaFloat STATS_ErrorRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_ErrorRandomVariate_MP(kv, parameters[0], parameters[1], parameters[2]);
}
