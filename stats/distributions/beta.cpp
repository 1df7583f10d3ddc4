// The beta distribution with shapes a and b: probability and quantile from the numerical
// library, variates as a ratio of two gamma variates.
#include "distributions/distributions.h"
#include "random/variates.h"

VexaFloat STATS_BetaProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat a, VexaFloat b) {
  // the upper tail and the density are computed alongside and not used
  return STATS_CallLibrary_MP(kv, [&](NagError* fail) {
    VexaFloat lower, upper, density;
    VexaMP_g01eec(x, a, b, 0.0, &lower, &upper, &density, fail);
    return lower;
  });
}

VexaFloat STATS_BetaDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat a, VexaFloat b) {
  return STATS_CallLibrary_MP(kv,
                              [&](NagError* fail) { return VexaMP_g01fec(p, a, b, 0.0, fail); });
}

// X / (X + Y) for independent gamma variates X of shape a and Y of shape b.
VexaFloat STATS_BetaRandomVariate_MP(VexaKernelVector kv, VexaFloat a, VexaFloat b) {
  STATS_RequireParameter_MP(kv, STATS_IsPositiveFinite_MP(a),
                            "the first shape must be positive and finite, received: %1", a);
  STATS_RequireParameter_MP(kv, STATS_IsPositiveFinite_MP(b),
                            "the second shape must be positive and finite, received: %1", b);
  const VexaFloat x = STATS_StandardGammaVariate_MP(a);
  const VexaFloat y = STATS_StandardGammaVariate_MP(b);
  return x / (x + y);
}

VexaFloat STATS_BetaRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_BetaRandomVariate_MP(kv, parameters[0], parameters[1]);
}
