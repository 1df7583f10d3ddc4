// Student's t distribution with nu degrees of freedom: probability and quantile from the
// numerical library, variates from a normal and a chi-square variate.
#include "distributions/distributions.h"
#include "random/variates.h"

VexaFloat STATS_StudentTProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat nu) {
  return STATS_CallLibrary_MP(
      kv, [&](NagError* fail) { return VexaMP_g01ebc(STATS_LowerNagTail_MP(), x, nu, fail); });
}

VexaFloat STATS_StudentTDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat nu) {
  return STATS_CallLibrary_MP(
      kv, [&](NagError* fail) { return VexaMP_g01fbc(STATS_LowerNagTail_MP(), p, nu, fail); });
}

// Z / sqrt(V / nu) for a standard normal Z and an independent chi-square V with nu degrees.
VexaFloat STATS_StudentTRandomVariate_MP(VexaKernelVector kv, VexaFloat nu) {
  STATS_RequireParameter_MP(kv, STATS_IsPositiveFinite_MP(nu),
                            "the degrees of freedom must be positive and finite, received: %1", nu);
  const VexaFloat z = STATS_ExactNormalVariate_MP();
  return z / sqrt(STATS_ChiSquareVariate_MP(nu) / nu);
}

VexaFloat STATS_StudentTRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_StudentTRandomVariate_MP(kv, parameters[0]);
}
