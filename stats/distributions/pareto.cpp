// The Pareto distribution with lower end a and exponent c: P(X <= x) = 1 - (a/x)^c for
// x >= a; variates by inversion.
#include "distributions/distributions.h"
#include "random/random_stream.h"

VexaFloat STATS_ParetoProbability_MP(VexaKernelVector, VexaFloat x, VexaFloat a, VexaFloat c) {
  if (x < a) return VexaFloat(0);
  return 1 - pow(a / x, c);
}

VexaFloat STATS_ParetoDeviate_MP(VexaKernelVector, VexaFloat p, VexaFloat a, VexaFloat c) {
  return a * pow(1 - p, -1.0 / c);
}

VexaFloat STATS_ParetoRandomVariate_MP(VexaKernelVector kv, VexaFloat a, VexaFloat c) {
  VexaFloat u = STATS_VexaRandomStream_MP::NextDouble();
  return STATS_ParetoDeviate_MP(kv, u, a, c);
}

VexaFloat STATS_ParetoRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_ParetoRandomVariate_MP(kv, parameters[0], parameters[1]);
}
