// The F distribution with nu1 and nu2 degrees of freedom: probability and quantile from the
// numerical library, variates as a ratio of two scaled chi-square variates.
#include "distributions/distributions.h"
#include "frame/frame.h"
#include "random/variates.h"

VexaFloat STATS_FRatioProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat nu1,
                                     VexaFloat nu2) {
  return STATS_CallLibrary_MP(kv, [&](NagError* fail) {
    return VexaMP_g01edc(STATS_LowerNagTail_MP(), x, nu1, nu2, fail);
  });
}

VexaFloat STATS_FRatioDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat nu1, VexaFloat nu2) {
  return STATS_CallLibrary_MP(kv, [&](NagError* fail) { return VexaMP_g01fdc(p, nu1, nu2, fail); });
}

namespace {

void CheckParameters(VexaKernelVector kv, const VexaFloat& nu1, const VexaFloat& nu2) {
  STATS_RequireParameter_MP(
      kv, STATS_IsPositiveFinite_MP(nu1),
      "the numerator degrees of freedom must be positive and finite, received: %1", nu1);
  STATS_RequireParameter_MP(
      kv, STATS_IsPositiveFinite_MP(nu2),
      "the denominator degrees of freedom must be positive and finite, received: %1", nu2);
}

// (X / nu1) / (Y / nu2) for independent chi-square variates X and Y, formed as
// nu2 G1 / (nu1 G2) from gamma variates of shapes nu1 / 2 and nu2 / 2.
class Sampler {
 public:
  Sampler(const VexaFloat& nu1, const VexaFloat& nu2)
      : m_nu1(nu1), m_nu2(nu2), m_g1(nu1 / 2), m_g2(nu2 / 2) {}
  VexaFloat Next() const {
    const VexaFloat g1 = m_g1.Next();
    const VexaFloat g2 = m_g2.Next();
    return (m_nu2 * g1) / (m_nu1 * g2);
  }

 private:
  VexaFloat m_nu1, m_nu2;
  STATS_StandardGammaGenerator_MP m_g1, m_g2;
};

}  // namespace

VexaFloat STATS_FRatioRandomVariate_MP(VexaKernelVector kv, VexaFloat nu1, VexaFloat nu2) {
  CheckParameters(kv, nu1, nu2);
  return Sampler(nu1, nu2).Next();
}

VexaFloat STATS_FRatioRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_FRatioRandomVariate_MP(kv, parameters[0], parameters[1]);
}

ALGEB STATS_FRatioRandomSampleEntry_MP(const STATS_VexaEntry_MP& entry) {
  const VexaKernelVector kv = entry.Kernel();
  const int n = entry.Integer(1);
  const VexaFloat nu1 = entry.Float(2), nu2 = entry.Float(3);
  if (n <= 0) return STATS_FillRandomSample_MP(kv, n, nullptr);
  CheckParameters(kv, nu1, nu2);
  const Sampler sampler(nu1, nu2);
  return STATS_FillRandomSample_MP(kv, n, [&] { return sampler.Next(); });
}
