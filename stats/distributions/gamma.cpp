// The gamma distribution with shape a and scale b, from the numerical library.
#include "distributions/distributions.h"

VexaFloat STATS_GammaProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat a, VexaFloat b) {
  return STATS_CallLibrary_MP(
      kv, [&](NagError* fail) { return VexaMP_g01efc(STATS_LowerNagTail_MP(), x, a, b, fail); });
}

VexaFloat STATS_GammaDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat a, VexaFloat b) {
  return STATS_CallLibrary_MP(kv,
                              [&](NagError* fail) { return VexaMP_g01ffc(p, a, b, 0.0, fail); });
}
