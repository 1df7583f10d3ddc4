// The beta distribution with shapes a and b: probability and quantile from the numerical
// library, variates as a ratio of two gamma variates.
#include "distributions/distributions.h"
#include "frame/frame.h"
#include "random/variates.h"

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

namespace {

void CheckParameters(VexaKernelVector kv, const VexaFloat& a, const VexaFloat& b) {
  STATS_RequireParameter_MP(kv, STATS_IsPositiveFinite_MP(a),
                            "the first shape must be positive and finite, received: %1", a);
  STATS_RequireParameter_MP(kv, STATS_IsPositiveFinite_MP(b),
                            "the second shape must be positive and finite, received: %1", b);
}

// X / (X + Y) for independent gamma variates X of shape a and Y of shape b.
class Sampler {
 public:
  Sampler(const VexaFloat& a, const VexaFloat& b) : m_x(a), m_y(b) {}
  VexaFloat Next() const {
    const VexaFloat x = m_x.Next();
    const VexaFloat y = m_y.Next();
    return x / (x + y);
  }

 private:
  STATS_StandardGammaGenerator_MP m_x, m_y;
};

}  // namespace

VexaFloat STATS_BetaRandomVariate_MP(VexaKernelVector kv, VexaFloat a, VexaFloat b) {
  CheckParameters(kv, a, b);
  return Sampler(a, b).Next();
}

VexaFloat STATS_BetaRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_BetaRandomVariate_MP(kv, parameters[0], parameters[1]);
}

ALGEB STATS_BetaRandomSampleEntry_MP(const STATS_VexaEntry_MP& entry) {
  const VexaKernelVector kv = entry.Kernel();
  const int n = entry.Integer(1);
  const VexaFloat a = entry.Float(2), b = entry.Float(3);
  if (n <= 0) return STATS_FillRandomSample_MP(kv, n, nullptr);
  CheckParameters(kv, a, b);
  const Sampler sampler(a, b);
  return STATS_FillRandomSample_MP(kv, n, [&] { return sampler.Next(); });
}
