// The F distribution with nu1 and nu2 degrees of freedom, from the numerical library.
#include "distributions/distributions.h"

VexaFloat STATS_FRatioProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat nu1,
                                     VexaFloat nu2) {
  return STATS_CallLibrary_MP(kv, [&](NagError* fail) {
    return VexaMP_g01edc(STATS_LowerNagTail_MP(), x, nu1, nu2, fail);
  });
}

VexaFloat STATS_FRatioDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat nu1, VexaFloat nu2) {
  return STATS_CallLibrary_MP(kv, [&](NagError* fail) { return VexaMP_g01fdc(p, nu1, nu2, fail); });
}
