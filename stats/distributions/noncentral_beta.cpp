// The noncentral beta distribution with shapes a, b and noncentrality lambda: the
// distribution function from the numerical library, the quantile by Brent's method on [0, 1];
// variates as X / (X + Y) for a noncentral chi-square X with 2a degrees of freedom and a
// central one Y with 2b.
#include "distributions/distributions.h"
#include "frame/frame.h"
#include "random/variates.h"
#include "rootfinding/rootfinding.h"

namespace {

class _NonCentralBetaProbabilityAdapter : public STATS_VexaCallbackAdapter_MP {
 public:
  _NonCentralBetaProbabilityAdapter(VexaKernelVector kv, VexaFloat a, VexaFloat b, VexaFloat lambda)
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

VexaFloat STATS_NonCentralBetaDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat a, VexaFloat b,
                                         VexaFloat lambda) {
  STATS_CheckTailProbability_MP(kv, p);
  STATS_NonCentralBetaProbability_MP(kv, VexaFloat(0.5), a, b, lambda);  // checks them
  if (p == 0) return VexaFloat(0.0);
  if (p == 1) return VexaFloat(1.0);
  _NonCentralBetaProbabilityAdapter f(kv, a, b, lambda);
  return STATS_BrentMethod_MP(kv, p, f, VexaFloat(0.0), VexaFloat(1.0),
                              STATS_NonCentralTolerance_MP(), STATS_NonCentralIterations_MP());
}

VexaFloat STATS_NonCentralBetaRandomVariate_MP(VexaKernelVector kv, VexaFloat a, VexaFloat b,
                                               VexaFloat lambda) {
  STATS_RequireParameter_MP(kv, STATS_IsPositiveFinite_MP(a),
                            "the first shape must be positive and finite, received: %1", a);
  STATS_RequireParameter_MP(kv, STATS_IsPositiveFinite_MP(b),
                            "the second shape must be positive and finite, received: %1", b);
  STATS_RequireNonCentralChiSquare_MP(kv, 2 * a, lambda);
  const VexaFloat x = STATS_NonCentralChiSquareVariate_MP(2 * a, lambda);
  const VexaFloat y = STATS_ChiSquareVariate_MP(2 * b);
  return x / (x + y);
}

VexaFloat STATS_NonCentralBetaRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_NonCentralBetaRandomVariate_MP(kv, parameters[0], parameters[1], parameters[2]);
}
