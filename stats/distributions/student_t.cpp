// Student's t distribution with nu degrees of freedom: probability and quantile from the
// numerical library, variates from a normal and a chi-square variate.
#include "distributions/distributions.h"
#include "frame/frame.h"
#include "random/variates.h"

VexaFloat STATS_StudentTProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat nu) {
  return STATS_CallLibrary_MP(
      kv, [&](NagError* fail) { return VexaMP_g01ebc(STATS_LowerNagTail_MP(), x, nu, fail); });
}

VexaFloat STATS_StudentTDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat nu) {
  return STATS_CallLibrary_MP(
      kv, [&](NagError* fail) { return VexaMP_g01fbc(STATS_LowerNagTail_MP(), p, nu, fail); });
}

namespace {

void CheckDegrees(VexaKernelVector kv, const VexaFloat& nu) {
  STATS_RequireParameter_MP(kv, STATS_IsPositiveFinite_MP(nu),
                            "the degrees of freedom must be positive and finite, received: %1", nu);
}

// Z / sqrt(V / nu) for a standard normal Z and an independent chi-square V with nu degrees,
// formed as Z sqrt(nu / (2 G)) with G gamma of shape nu / 2.
class Sampler {
 public:
  explicit Sampler(const VexaFloat& nu) : m_half(nu / 2), m_g(m_half) {}
  VexaFloat Next() const {
    const VexaFloat z = STATS_ExactNormalVariate_MP();
    return z * sqrt(m_half / m_g.Next());
  }

 private:
  VexaFloat m_half;
  STATS_StandardGammaGenerator_MP m_g;
};

}  // namespace

VexaFloat STATS_StudentTRandomVariate_MP(VexaKernelVector kv, VexaFloat nu) {
  CheckDegrees(kv, nu);
  return Sampler(nu).Next();
}

VexaFloat STATS_StudentTRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_StudentTRandomVariate_MP(kv, parameters[0]);
}

ALGEB STATS_StudentTRandomSampleEntry_MP(const STATS_VexaEntry_MP& entry) {
  const VexaKernelVector kv = entry.Kernel();
  const int n = entry.Integer(1);
  const VexaFloat nu = entry.Float(2);
  if (n <= 0) return STATS_FillRandomSample_MP(kv, n, nullptr);
  CheckDegrees(kv, nu);
  const Sampler sampler(nu);
  return STATS_FillRandomSample_MP(kv, n, [&] { return sampler.Next(); });
}
