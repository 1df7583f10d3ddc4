// The triangular distribution on [a, b] with mode c: two quadratic pieces of the cumulative
// probability and their square-root inverses; variates by inversion.
#include "distributions/distributions.h"
#include "random/random_stream.h"

VexaFloat STATS_TriangularProbability_MP(VexaKernelVector, VexaFloat x, VexaFloat a, VexaFloat b,
                                         VexaFloat c) {
  if (x < a) return VexaFloat(0);
  if (x < c) return ((x - a) * (x - a) / (b - a)) / (c - a);
  if (x < b) return 1 - ((b - x) * (b - x) / (b - a)) / (b - c);
  return VexaFloat(1);
}

VexaFloat STATS_TriangularDeviate_MP(VexaKernelVector, VexaFloat p, VexaFloat a, VexaFloat b,
                                     VexaFloat c) {
  // p against (c - a) / (b - a), compared without dividing
  if (p * (b - a) < c - a) return a + sqrt(p * (b - a) * (c - a));
  return b - sqrt((1 - p) * (b - a) * (b - c));
}

VexaFloat STATS_TriangularRandomVariate_MP(VexaKernelVector kv, VexaFloat a, VexaFloat b,
                                           VexaFloat c) {
  VexaFloat u = STATS_VexaRandomStream_MP::NextDouble();
  return STATS_TriangularDeviate_MP(kv, u, a, b, c);
}

VexaFloat STATS_TriangularRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_TriangularRandomVariate_MP(kv, parameters[0], parameters[1], parameters[2]);
}
