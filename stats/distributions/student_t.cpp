// Student's t distribution with nu degrees of freedom, from the numerical library.
#include "distributions/distributions.h"

VexaFloat STATS_StudentTProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat nu) {
  return STATS_CallLibrary_MP(
      kv, [&](NagError* fail) { return VexaMP_g01ebc(STATS_LowerNagTail_MP(), x, nu, fail); });
}

VexaFloat STATS_StudentTDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat nu) {
  return STATS_CallLibrary_MP(
      kv, [&](NagError* fail) { return VexaMP_g01fbc(STATS_LowerNagTail_MP(), p, nu, fail); });
}
