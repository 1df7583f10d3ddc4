// The uniform distribution on [a, b]. Degenerate intervals and probabilities outside [0, 1]
// are not errors: the formulas give what they give.
#include "distributions/distributions.h"
#include "random/random_stream.h"

VexaFloat STATS_UniformProbability_MP(VexaKernelVector, VexaFloat x, VexaFloat a, VexaFloat b) {
  // In this order, so that a >= b gives 0 or 1 without dividing.
  if (x <= a) return VexaFloat(0);
  if (x >= b) return VexaFloat(1);
  return (x - a) / (b - a);
}

VexaFloat STATS_UniformDeviate_MP(VexaKernelVector, VexaFloat p, VexaFloat a, VexaFloat b) {
  VexaFloat width = b - a;
  return a + p * width;
}

VexaFloat STATS_UniformRandomVariate_MP(VexaKernelVector, VexaFloat a, VexaFloat b) {
  VexaFloat u = STATS_VexaRandomStream_MP::NextDouble();
  VexaFloat width = b - a;
  return a + u * width;
}

VexaFloat STATS_UniformRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_UniformRandomVariate_MP(kv, parameters[0], parameters[1]);
}
