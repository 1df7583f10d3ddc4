// The power distribution on [0, b] with exponent c: P(X <= x) = (x/b)^c; variates by
// inversion.
#include "distributions/distributions.h"
#include "random/random_stream.h"

VexaFloat STATS_PowerProbability_MP(VexaKernelVector, VexaFloat x, VexaFloat b, VexaFloat c) {
  if (x < 0) return VexaFloat(0);
  if (x <= b) return pow(x / b, c);
  return VexaFloat(1);
}

VexaFloat STATS_PowerDeviate_MP(VexaKernelVector, VexaFloat p, VexaFloat b, VexaFloat c) {
  return b * pow(p, 1.0 / c);
}

VexaFloat STATS_PowerRandomVariate_MP(VexaKernelVector kv, VexaFloat b, VexaFloat c) {
  VexaFloat u = STATS_VexaRandomStream_MP::NextDouble();
  return STATS_PowerDeviate_MP(kv, u, b, c);
}

VexaFloat STATS_PowerRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_PowerRandomVariate_MP(kv, parameters[0], parameters[1]);
}
