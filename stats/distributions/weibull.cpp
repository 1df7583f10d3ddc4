// The Weibull distribution with scale b and shape c: P(X <= x) = 1 - exp(-(x/b)^c) for
// x >= 0; variates by inversion.
#include "distributions/distributions.h"
#include "random/random_stream.h"

VexaFloat STATS_WeibullProbability_MP(VexaKernelVector, VexaFloat x, VexaFloat b, VexaFloat c) {
  if (x < 0) return VexaFloat(0);
  return 1 - exp(-pow(x / b, c));
}

VexaFloat STATS_WeibullDeviate_MP(VexaKernelVector, VexaFloat p, VexaFloat b, VexaFloat c) {
  return b * pow(-log(1 - p), 1.0 / c);
}

VexaFloat STATS_WeibullRandomVariate_MP(VexaKernelVector kv, VexaFloat b, VexaFloat c) {
  VexaFloat u = STATS_VexaRandomStream_MP::NextDouble();
  return STATS_WeibullDeviate_MP(kv, u, b, c);
}

VexaFloat STATS_WeibullRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_WeibullRandomVariate_MP(kv, parameters[0], parameters[1]);
}
