// The Poisson distribution with mean lambda: the distribution function from the numerical
// library, the quantile by discrete interpolation searching right from 0, variates by
// inversion of a uniform draw.
#include "distributions/distributions.h"
#include "frame/frame.h"
#include "random/random_stream.h"
#include "rootfinding/rootfinding.h"

namespace {

class _PoissonProbabilityAdapter : public STATS_VexaCallbackAdapter_MP {
 public:
  _PoissonProbabilityAdapter(VexaKernelVector kv, VexaFloat lambda)
      : STATS_VexaCallbackAdapter_MP(kv), m_lambda(lambda) {}
  ~_PoissonProbabilityAdapter() override {}
  VexaFloat Call(VexaFloat x) override { return STATS_PoissonProbability_MP(m_kv, x, m_lambda); }

 private:
  VexaFloat m_lambda;
};

}  // namespace

// x is made an integer toward zero, without a floor.
VexaFloat STATS_PoissonProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat lambda) {
  const long k = STATS_DoubleToInteger_MP(x);
  return STATS_CallLibrary_MP(kv, [&](NagError* fail) {
    VexaFloat lower(0.0), upper(0.0), equal(0.0);
    VexaMP_g01bkc(lambda, k, &lower, &upper, &equal, fail);
    return lower;
  });
}

long STATS_PoissonDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat lambda) {
  const int limit = STATS_DiscreteIterationLimit_MP(kv);
  _PoissonProbabilityAdapter f(kv, lambda);
  long h = STATS_DoubleToInteger_MP(floor(lambda));
  if (h == 0) h = 1;
  return STATS_DiscreteInterpolationHybridLeft_MP(kv, p, f, VexaFloat(0.0), VexaFloat(1.0), 0, h,
                                                  limit);
}

VexaFloat STATS_PoissonRandomVariate_MP(VexaKernelVector kv, VexaFloat lambda) {
  VexaFloat u = STATS_VexaRandomStream_MP::NextDouble();
  return VexaFloat(static_cast<double>(STATS_PoissonDeviate_MP(kv, u, lambda)));
}

VexaFloat STATS_PoissonRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_PoissonRandomVariate_MP(kv, parameters[0]);
}
