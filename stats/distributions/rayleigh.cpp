// The Rayleigh distribution with scale b: P(X <= x) = 1 - exp(-x^2 / (2 b^2)) for x >= 0;
// variates by inversion.
#include "distributions/distributions.h"
#include "random/random_stream.h"

VexaFloat STATS_RayleighProbability_MP(VexaKernelVector, VexaFloat x, VexaFloat b) {
  if (x < 0) return VexaFloat(0);
  return 1 - exp((-x * x) / (2 * b * b));
}

VexaFloat STATS_RayleighDeviate_MP(VexaKernelVector, VexaFloat p, VexaFloat b) {
  return pow(-2 * b * b * log(1 - p), 0.5);  // a power, not sqrt
}

VexaFloat STATS_RayleighRandomVariate_MP(VexaKernelVector kv, VexaFloat b) {
  VexaFloat u = STATS_VexaRandomStream_MP::NextDouble();
  return STATS_RayleighDeviate_MP(kv, u, b);
}

VexaFloat STATS_RayleighRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_RayleighRandomVariate_MP(kv, parameters[0]);
}
