// The gamma distribution with shape a and scale b: probability and quantile from the numerical
// library, variates by Marsaglia and Tsang's method.
#include "distributions/distributions.h"
#include "frame/frame.h"
#include "random/variates.h"

VexaFloat STATS_GammaProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat a, VexaFloat b) {
  return STATS_CallLibrary_MP(
      kv, [&](NagError* fail) { return VexaMP_g01efc(STATS_LowerNagTail_MP(), x, a, b, fail); });
}

VexaFloat STATS_GammaDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat a, VexaFloat b) {
  return STATS_CallLibrary_MP(kv,
                              [&](NagError* fail) { return VexaMP_g01ffc(p, a, b, 0.0, fail); });
}

namespace {

void CheckParameters(VexaKernelVector kv, const VexaFloat& a, const VexaFloat& b) {
  STATS_RequireParameter_MP(kv, STATS_IsPositiveFinite_MP(a),
                            "the shape must be positive and finite, received: %1", a);
  STATS_RequireParameter_MP(kv, STATS_IsPositiveFinite_MP(b),
                            "the scale must be positive and finite, received: %1", b);
}

}  // namespace

// b times a standard gamma variate of shape a.
VexaFloat STATS_GammaRandomVariate_MP(VexaKernelVector kv, VexaFloat a, VexaFloat b) {
  CheckParameters(kv, a, b);
  return b * STATS_StandardGammaVariate_MP(a);
}

VexaFloat STATS_GammaRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_GammaRandomVariate_MP(kv, parameters[0], parameters[1]);
}

ALGEB STATS_GammaRandomSampleEntry_MP(const STATS_VexaEntry_MP& entry) {
  const VexaKernelVector kv = entry.Kernel();
  const int n = entry.Integer(1);
  const VexaFloat a = entry.Float(2), b = entry.Float(3);
  if (n <= 0) return STATS_FillRandomSample_MP(kv, n, nullptr);
  CheckParameters(kv, a, b);
  const STATS_StandardGammaGenerator_MP g(a);
  return STATS_FillRandomSample_MP(kv, n, [&] { return b * g.Next(); });
}
