// The Laplace (double exponential) distribution with location a and scale b; variates by
// inversion. At x = a and p = 0.5 the upper branch is taken.
#include "distributions/distributions.h"
#include "random/random_stream.h"

VexaFloat STATS_LaplaceProbability_MP(VexaKernelVector, VexaFloat x, VexaFloat a, VexaFloat b) {
  if (x < a) return 0.5 * exp(-(a - x) / b);
  return 1 - 0.5 * exp(-(x - a) / b);
}

VexaFloat STATS_LaplaceDeviate_MP(VexaKernelVector, VexaFloat p, VexaFloat a, VexaFloat b) {
  if (p < 0.5) return a + b * log(2 * p);
  return a - b * log(2 * (1 - p));
}

VexaFloat STATS_LaplaceRandomVariate_MP(VexaKernelVector kv, VexaFloat a, VexaFloat b) {
  VexaFloat u = STATS_VexaRandomStream_MP::NextDouble();
  return STATS_LaplaceDeviate_MP(kv, u, a, b);
}

VexaFloat STATS_LaplaceRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_LaplaceRandomVariate_MP(kv, parameters[0], parameters[1]);
}
