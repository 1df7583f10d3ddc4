// The noncentral chi-square distribution with nu degrees of freedom and noncentrality
// lambda: the distribution function from the numerical library, the quantile by Brent's
// method searching right of 0 from the mean nu + lambda.
#include "distributions/distributions.h"
#include "frame/frame.h"
#include "rootfinding/rootfinding.h"

namespace {

class _NonCentralChiSquareProbabilityAdapter : public STATS_VexaCallbackAdapter_MP {
 public:
  _NonCentralChiSquareProbabilityAdapter(VexaKernelVector kv, VexaFloat nu, VexaFloat lambda)
      : STATS_VexaCallbackAdapter_MP(kv), m_nu(nu), m_lambda(lambda) {}
  ~_NonCentralChiSquareProbabilityAdapter() override {}
  VexaFloat Call(VexaFloat x) override {
    if (x <= 0) return VexaFloat(0.0);
    return STATS_NonCentralChiSquareProbability_MP(m_kv, x, m_nu, m_lambda);
  }

 private:
  VexaFloat m_nu, m_lambda;
};

}  // namespace

VexaFloat STATS_NonCentralChiSquareProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat nu,
                                                  VexaFloat lambda) {
  return STATS_CallLibrary_MP(kv, [&](NagError* fail) {
    return VexaMP_g01gcc(x, nu, lambda, VexaFloat(0.0), STATS_NONCENTRAL_ITERATIONS_MP, fail);
  });
}

VexaFloat STATS_NonCentralChiSquareDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat nu,
                                              VexaFloat lambda) {
  STATS_CheckTailProbability_MP(kv, p);
  STATS_NonCentralChiSquareProbability_MP(kv, VexaFloat(1.0), nu, lambda);  // checks them
  if (p == 0) return VexaFloat(0.0);
  if (p == 1) return VexaFloatInfinity(1);

  _NonCentralChiSquareProbabilityAdapter f(kv, nu, lambda);
  return STATS_BrentMethodHybridLeft_MP(kv, p, f, VexaFloat(0.0), VexaFloat(1.0), VexaFloat(0.0),
                                        nu + lambda, STATS_NonCentralTolerance_MP(),
                                        STATS_NonCentralIterations_MP());
}
