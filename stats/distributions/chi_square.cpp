// The chi-square distribution with nu degrees of freedom, from the numerical library.
#include "distributions/distributions.h"

VexaFloat STATS_ChiSquareProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat nu) {
  return STATS_CallLibrary_MP(
      kv, [&](NagError* fail) { return VexaMP_g01ecc(STATS_LowerNagTail_MP(), x, nu, fail); });
}

VexaFloat STATS_ChiSquareDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat nu) {
  return STATS_CallLibrary_MP(kv, [&](NagError* fail) { return VexaMP_g01fcc(p, nu, fail); });
}
