// The F distribution with nu1 and nu2 degrees of freedom: probability and quantile from the
// numerical library, variates as a ratio of two scaled chi-square variates.
#include "distributions/distributions.h"
#include "random/variates.h"

VexaFloat STATS_FRatioProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat nu1,
                                     VexaFloat nu2) {
  return STATS_CallLibrary_MP(kv, [&](NagError* fail) {
    return VexaMP_g01edc(STATS_LowerNagTail_MP(), x, nu1, nu2, fail);
  });
}

VexaFloat STATS_FRatioDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat nu1, VexaFloat nu2) {
  return STATS_CallLibrary_MP(kv, [&](NagError* fail) { return VexaMP_g01fdc(p, nu1, nu2, fail); });
}

// (X / nu1) / (Y / nu2) for independent chi-square variates X and Y, formed as
// nu2 G1 / (nu1 G2) from gamma variates of shapes nu1 / 2 and nu2 / 2.
VexaFloat STATS_FRatioRandomVariate_MP(VexaKernelVector kv, VexaFloat nu1, VexaFloat nu2) {
  STATS_RequireParameter_MP(
      kv, STATS_IsPositiveFinite_MP(nu1),
      "the numerator degrees of freedom must be positive and finite, received: %1", nu1);
  STATS_RequireParameter_MP(
      kv, STATS_IsPositiveFinite_MP(nu2),
      "the denominator degrees of freedom must be positive and finite, received: %1", nu2);
  const VexaFloat g1 = STATS_StandardGammaVariate_MP(nu1 / 2);
  const VexaFloat g2 = STATS_StandardGammaVariate_MP(nu2 / 2);
  return (nu2 * g1) / (nu1 * g2);
}

VexaFloat STATS_FRatioRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_FRatioRandomVariate_MP(kv, parameters[0], parameters[1]);
}
