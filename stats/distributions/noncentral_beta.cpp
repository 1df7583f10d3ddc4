// The noncentral beta distribution with shapes a, b and noncentrality lambda: the
// distribution function from the numerical library, the quantile by Brent's method on [0, 1].
#include "distributions/distributions.h"
#include "frame/frame.h"
#include "rootfinding/rootfinding.h"

namespace {

class _NonCentralBetaProbabilityAdapter : public STATS_VexaCallbackAdapter_MP {
 public:
  _NonCentralBetaProbabilityAdapter(VexaKernelVector kv, VexaFloat a, VexaFloat b,
                                    VexaFloat lambda)
      : STATS_VexaCallbackAdapter_MP(kv), m_a(a), m_b(b), m_lambda(lambda) {}
  ~_NonCentralBetaProbabilityAdapter() override {}
  VexaFloat Call(VexaFloat x) override {
    return STATS_NonCentralBetaProbability_MP(m_kv, x, m_a, m_b, m_lambda);
  }

 private:
  VexaFloat m_a, m_b, m_lambda;
};

}  // namespace

VexaFloat STATS_NonCentralBetaProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat a,
                                             VexaFloat b, VexaFloat lambda) {
  return STATS_CallLibrary_MP(kv, [&](NagError* fail) {
    return VexaMP_g01gec(x, a, b, lambda, VexaFloat(0.0), STATS_NONCENTRAL_ITERATIONS_MP, fail);
  });
}

VexaFloat STATS_NonCentralBetaDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat a,
                                         VexaFloat b, VexaFloat lambda) {
  STATS_CheckTailProbability_MP(kv, p);
  STATS_NonCentralBetaProbability_MP(kv, VexaFloat(0.5), a, b, lambda);  // checks them
  if (p == 0) return VexaFloat(0.0);
  if (p == 1) return VexaFloat(1.0);
  _NonCentralBetaProbabilityAdapter f(kv, a, b, lambda);
  return STATS_BrentMethod_MP(kv, p, f, VexaFloat(0.0), VexaFloat(1.0),
                              STATS_NonCentralTolerance_MP(), STATS_NonCentralIterations_MP());
}
