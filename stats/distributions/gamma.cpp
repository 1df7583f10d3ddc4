// The gamma distribution with shape a and scale b: probability and quantile from the numerical
// library, variates by Marsaglia and Tsang's method.
#include "distributions/distributions.h"
#include "random/variates.h"

VexaFloat STATS_GammaProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat a, VexaFloat b) {
  return STATS_CallLibrary_MP(
      kv, [&](NagError* fail) { return VexaMP_g01efc(STATS_LowerNagTail_MP(), x, a, b, fail); });
}

VexaFloat STATS_GammaDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat a, VexaFloat b) {
  return STATS_CallLibrary_MP(kv,
                              [&](NagError* fail) { return VexaMP_g01ffc(p, a, b, 0.0, fail); });
}

// b times a standard gamma variate of shape a.
VexaFloat STATS_GammaRandomVariate_MP(VexaKernelVector kv, VexaFloat a, VexaFloat b) {
  STATS_RequireParameter_MP(kv, STATS_IsPositiveFinite_MP(a),
                            "the shape must be positive and finite, received: %1", a);
  STATS_RequireParameter_MP(kv, STATS_IsPositiveFinite_MP(b),
                            "the scale must be positive and finite, received: %1", b);
  return b * STATS_StandardGammaVariate_MP(a);
}

VexaFloat STATS_GammaRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_GammaRandomVariate_MP(kv, parameters[0], parameters[1]);
}
