// The logistic distribution with location a and scale b: P(X <= x) = 1 / (1 + exp(-(x-a)/b));
// variates by inversion.
#include "distributions/distributions.h"
#include "random/random_stream.h"

VexaFloat STATS_LogisticProbability_MP(VexaKernelVector, VexaFloat x, VexaFloat a, VexaFloat b) {
  return 1 / (1 + exp(-(x - a) / b));
}

VexaFloat STATS_LogisticDeviate_MP(VexaKernelVector, VexaFloat p, VexaFloat a, VexaFloat b) {
  return a + b * log(p / (1 - p));
}

VexaFloat STATS_LogisticRandomVariate_MP(VexaKernelVector kv, VexaFloat a, VexaFloat b) {
  VexaFloat u = STATS_VexaRandomStream_MP::NextDouble();
  return STATS_LogisticDeviate_MP(kv, u, a, b);
}

VexaFloat STATS_LogisticRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_LogisticRandomVariate_MP(kv, parameters[0], parameters[1]);
}
