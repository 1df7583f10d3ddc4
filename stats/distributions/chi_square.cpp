// The chi-square distribution with nu degrees of freedom: probability and quantile from the
// numerical library, variates as twice a gamma variate of shape nu / 2.
#include "distributions/distributions.h"
#include "random/variates.h"

VexaFloat STATS_ChiSquareProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat nu) {
  return STATS_CallLibrary_MP(
      kv, [&](NagError* fail) { return VexaMP_g01ecc(STATS_LowerNagTail_MP(), x, nu, fail); });
}

VexaFloat STATS_ChiSquareDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat nu) {
  return STATS_CallLibrary_MP(kv, [&](NagError* fail) { return VexaMP_g01fcc(p, nu, fail); });
}

VexaFloat STATS_ChiSquareRandomVariate_MP(VexaKernelVector kv, VexaFloat nu) {
  STATS_RequireParameter_MP(kv, STATS_IsPositiveFinite_MP(nu),
                            "the degrees of freedom must be positive and finite, received: %1", nu);
  return STATS_ChiSquareVariate_MP(nu);
}

VexaFloat STATS_ChiSquareRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_ChiSquareRandomVariate_MP(kv, parameters[0]);
}
