// The noncentral Student t distribution with nu degrees of freedom and noncentrality delta:
// the distribution function from the numerical library; variates as (Z + delta) / sqrt(V / nu)
// for a standard normal Z and a chi-square V with nu degrees of freedom.
#include "distributions/distributions.h"
#include "frame/frame.h"
#include "random/variates.h"

VexaFloat STATS_NonCentralStudentTProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat nu,
                                                 VexaFloat delta) {
  return STATS_CallLibrary_MP(kv, [&](NagError* fail) {
    return VexaMP_g01gbc(x, nu, delta, VexaFloat(0.0), STATS_NONCENTRAL_ITERATIONS_MP, fail);
  });
}

VexaFloat STATS_NonCentralStudentTRandomVariate_MP(VexaKernelVector kv, VexaFloat nu,
                                                   VexaFloat delta) {
  STATS_RequireParameter_MP(kv, STATS_IsPositiveFinite_MP(nu),
                            "the degrees of freedom must be positive and finite, received: %1", nu);
  STATS_RequireParameter_MP(kv, STATS_IsFinite_MP(delta),
                            "the noncentrality must be finite, received: %1", delta);
  const VexaFloat z = STATS_ExactNormalVariate_MP();
  const VexaFloat v = STATS_ChiSquareVariate_MP(nu);
  return (z + delta) / sqrt(v / nu);
}

VexaFloat STATS_NonCentralStudentTRandomVariate_MP(VexaKernelVector kv,
                                                   const VexaFloat* parameters) {
  return STATS_NonCentralStudentTRandomVariate_MP(kv, parameters[0], parameters[1]);
}
