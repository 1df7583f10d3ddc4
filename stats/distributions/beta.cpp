// The beta distribution with shapes a and b, from the numerical library.
#include "distributions/distributions.h"

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
