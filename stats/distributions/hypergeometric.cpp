// The hypergeometric distribution: marked items among M drawn without replacement from N
// items of which L are marked. The distribution function from the numerical library behind
// two range guards; the quantile by discrete interpolation on [0, L].
#include "distributions/distributions.h"
#include "frame/frame.h"
#include "random/random_stream.h"
#include "rootfinding/rootfinding.h"

namespace {

class _HypergeometricProbabilityAdapter : public STATS_VexaCallbackAdapter_MP {
 public:
  _HypergeometricProbabilityAdapter(VexaKernelVector kv, long N, long L, long M)
      : STATS_VexaCallbackAdapter_MP(kv), m_N(N), m_L(L), m_M(M) {}
  ~_HypergeometricProbabilityAdapter() override {}
  VexaFloat Call(VexaFloat x) override {
    return STATS_HypergeometricProbability_MP(m_kv, x, m_N, m_L, m_M);
  }

 private:
  long m_N, m_L, m_M;
};

}  // namespace

VexaFloat STATS_HypergeometricProbability_MP(VexaKernelVector kv, VexaFloat x, long N, long L,
                                             long M) {
  if (x < 0) return VexaFloat(0);
  if (x > VexaFloat(L) || x > VexaFloat(M)) return VexaFloat(1);
  const long k = STATS_DoubleToInteger_MP(floor(x));
  return STATS_CallLibrary_MP(kv, [&](NagError* fail) {
    VexaFloat lower(0.0), upper(0.0), equal(0.0);
    VexaMP_g01blc(N, L, M, k, &lower, &upper, &equal, fail);
    return lower;
  });
}

long STATS_HypergeometricDeviate_MP(VexaKernelVector kv, VexaFloat p, long N, long L, long M) {
  const int limit = STATS_DiscreteIterationLimit_MP(kv);
  _HypergeometricProbabilityAdapter f(kv, N, L, M);
  if (p == 1.0) return L < M ? L : M;
  return STATS_DiscreteInterpolation_MP(kv, p, f, 0, L, limit);
}

VexaFloat STATS_HypergeometricRandomVariate_MP(VexaKernelVector kv, long N, long L, long M) {
  VexaFloat u = STATS_VexaRandomStream_MP::NextDouble();
  return VexaFloat(static_cast<double>(STATS_HypergeometricDeviate_MP(kv, u, N, L, M)));
}

VexaFloat STATS_HypergeometricRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_HypergeometricRandomVariate_MP(kv, STATS_DoubleToInteger_MP(parameters[0]),
                                              STATS_DoubleToInteger_MP(parameters[1]),
                                              STATS_DoubleToInteger_MP(parameters[2]));
}
