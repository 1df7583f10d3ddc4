// The negative binomial distribution: failures before the r-th success with success
// probability q. P(X <= x) = I_q(r, floor(x) + 1), the regularised incomplete beta function;
// the quantile by discrete interpolation from 0 with the fixed limit of 100 iterations.
#include "distributions/distributions.h"
#include "frame/frame.h"
#include "random/random_stream.h"
#include "rootfinding/rootfinding.h"

namespace {

class _NegativeBinomialProbabilityAdapter : public STATS_VexaCallbackAdapter_MP {
 public:
  _NegativeBinomialProbabilityAdapter(VexaKernelVector kv, VexaFloat r, VexaFloat q)
      : STATS_VexaCallbackAdapter_MP(kv), m_r(r), m_q(q) {}
  ~_NegativeBinomialProbabilityAdapter() override {}
  VexaFloat Call(VexaFloat x) override {
    return STATS_NegativeBinomialProbability_MP(m_kv, x, m_r, m_q);
  }

 private:
  VexaFloat m_r, m_q;
};

}  // namespace

VexaFloat STATS_NegativeBinomialProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat r,
                                               VexaFloat q) {
  return STATS_BetaProbability_MP(kv, q, r, floor(x) + 1);
}

// The search starts at the integer of r itself (no floor).
long STATS_NegativeBinomialDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat r, VexaFloat q) {
  _NegativeBinomialProbabilityAdapter f(kv, r, q);
  const long h = STATS_DoubleToInteger_MP(r);
  return STATS_DiscreteInterpolationHybridLeft_MP(kv, p, f, VexaFloat(0.0), VexaFloat(1.0), 0, h,
                                                  100);
}

VexaFloat STATS_NegativeBinomialRandomVariate_MP(VexaKernelVector kv, VexaFloat r, VexaFloat q) {
  VexaFloat u = STATS_VexaRandomStream_MP::NextDouble();
  return VexaFloat(static_cast<double>(STATS_NegativeBinomialDeviate_MP(kv, u, r, q)));
}

VexaFloat STATS_NegativeBinomialRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_NegativeBinomialRandomVariate_MP(kv, parameters[0], parameters[1]);
}
