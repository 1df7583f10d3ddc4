// The discrete uniform distribution on the integers a, a + 1, ..., b, in closed form.
#include "distributions/distributions.h"
#include "frame/frame.h"
#include "random/random_stream.h"

VexaFloat STATS_DiscreteUniformProbability_MP(VexaKernelVector, VexaFloat x, long a, long b) {
  const long k = STATS_DoubleToInteger_MP(floor(x));
  if (k < a) return VexaFloat(0);
  if (k <= b) return VexaFloat(k - a + 1) / VexaFloat(b - a + 1);
  return VexaFloat(1);
}

// ceil(p (b - a + 1) + a - 1), formed in that order.
long STATS_DiscreteUniformDeviate_MP(VexaKernelVector, VexaFloat p, long a, long b) {
  if (p == 0.0) return a;
  const VexaFloat count = VexaFloat(b - a) + 1;
  return STATS_DoubleToInteger_MP(ceil(count * p + a - 1));
}

VexaFloat STATS_DiscreteUniformRandomVariate_MP(VexaKernelVector kv, long a, long b) {
  VexaFloat u = STATS_VexaRandomStream_MP::NextDouble();
  return VexaFloat(static_cast<double>(STATS_DiscreteUniformDeviate_MP(kv, u, a, b)));
}

VexaFloat STATS_DiscreteUniformRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_DiscreteUniformRandomVariate_MP(kv, STATS_DoubleToInteger_MP(parameters[0]),
                                               STATS_DoubleToInteger_MP(parameters[1]));
}
