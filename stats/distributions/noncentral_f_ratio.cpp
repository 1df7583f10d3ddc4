// The noncentral F-ratio distribution with nu1 and nu2 degrees of freedom and noncentrality
// lambda: the distribution function from the numerical library, the quantile by Brent's
// method searching right of 0 from (nu1 + lambda) / nu1; variates as (X / nu1) / (Y / nu2)
// for a noncentral chi-square X and a central one Y.
#include "distributions/distributions.h"
#include "frame/frame.h"
#include "random/variates.h"
#include "rootfinding/rootfinding.h"

namespace {

class _NonCentralFRatioProbabilityAdapter : public STATS_VexaCallbackAdapter_MP {
 public:
  _NonCentralFRatioProbabilityAdapter(VexaKernelVector kv, VexaFloat nu1, VexaFloat nu2,
                                      VexaFloat lambda)
      : STATS_VexaCallbackAdapter_MP(kv), m_nu1(nu1), m_nu2(nu2), m_lambda(lambda) {}
  ~_NonCentralFRatioProbabilityAdapter() override {}
  VexaFloat Call(VexaFloat x) override {
    if (x <= 0) return VexaFloat(0.0);
    return STATS_NonCentralFRatioProbability_MP(m_kv, x, m_nu1, m_nu2, m_lambda);
  }

 private:
  VexaFloat m_nu1, m_nu2, m_lambda;
};

}  // namespace

VexaFloat STATS_NonCentralFRatioProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat nu1,
                                               VexaFloat nu2, VexaFloat lambda) {
  return STATS_CallLibrary_MP(kv, [&](NagError* fail) {
    return VexaMP_g01gdc(x, nu1, nu2, lambda, VexaFloat(0.0), STATS_NONCENTRAL_ITERATIONS_MP, fail);
  });
}

VexaFloat STATS_NonCentralFRatioDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat nu1,
                                           VexaFloat nu2, VexaFloat lambda) {
  STATS_CheckTailProbability_MP(kv, p);
  STATS_NonCentralFRatioProbability_MP(kv, VexaFloat(1.0), nu1, nu2, lambda);  // checks them
  if (p == 0) return VexaFloat(0.0);
  if (p == 1) return VexaFloatInfinity(1);

  _NonCentralFRatioProbabilityAdapter f(kv, nu1, nu2, lambda);
  return STATS_BrentMethodHybridLeft_MP(kv, p, f, VexaFloat(0.0), VexaFloat(1.0), VexaFloat(0.0),
                                        (nu1 + lambda) / nu1, STATS_NonCentralTolerance_MP(),
                                        STATS_NonCentralIterations_MP());
}

VexaFloat STATS_NonCentralFRatioRandomVariate_MP(VexaKernelVector kv, VexaFloat nu1, VexaFloat nu2,
                                                 VexaFloat lambda) {
  STATS_RequireNonCentralChiSquare_MP(kv, nu1, lambda);
  STATS_RequireParameter_MP(kv, STATS_IsPositiveFinite_MP(nu2),
                            "the degrees of freedom must be positive and finite, received: %1",
                            nu2);
  const VexaFloat x = STATS_NonCentralChiSquareVariate_MP(nu1, lambda);
  const VexaFloat y = STATS_ChiSquareVariate_MP(nu2);
  return (x / nu1) / (y / nu2);
}
