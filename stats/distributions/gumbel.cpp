// The Gumbel (largest extreme value) distribution with location a and scale b:
// P(X <= x) = exp(-exp(-(x-a)/b)); variates by inversion.
#include "distributions/distributions.h"
#include "random/random_stream.h"

VexaFloat STATS_GumbelProbability_MP(VexaKernelVector, VexaFloat x, VexaFloat a, VexaFloat b) {
  return exp(-exp(-(x - a) / b));
}

VexaFloat STATS_GumbelDeviate_MP(VexaKernelVector, VexaFloat p, VexaFloat a, VexaFloat b) {
  return a - b * log(-log(p));
}

VexaFloat STATS_GumbelRandomVariate_MP(VexaKernelVector kv, VexaFloat a, VexaFloat b) {
  VexaFloat u = STATS_VexaRandomStream_MP::NextDouble();
  return STATS_GumbelDeviate_MP(kv, u, a, b);
}

VexaFloat STATS_GumbelRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_GumbelRandomVariate_MP(kv, parameters[0], parameters[1]);
}
