// The geometric distribution: failures before the first success, success probability q.
// P(X <= x) = 1 - (1 - q)^(floor(x) + 1), untested in x (x = -1 gives 0, smaller x negative
// values); the quantile inverts it in closed form.
#include "distributions/distributions.h"
#include "frame/frame.h"
#include "random/random_stream.h"

VexaFloat STATS_GeometricProbability_MP(VexaKernelVector, VexaFloat x, VexaFloat q) {
  return 1 - pow(1 - q, floor(x) + 1);
}

long STATS_GeometricDeviate_MP(VexaKernelVector, VexaFloat p, VexaFloat q) {
  if (p == 0.0) return 0;
  return static_cast<long>(STATS_DoubleToInteger_MP(ceil(log(1 - p) / log(1 - q)))) - 1;
}

VexaFloat STATS_GeometricRandomVariate_MP(VexaKernelVector kv, VexaFloat q) {
  VexaFloat u = STATS_VexaRandomStream_MP::NextDouble();
  return VexaFloat(static_cast<double>(STATS_GeometricDeviate_MP(kv, u, q)));
}

VexaFloat STATS_GeometricRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_GeometricRandomVariate_MP(kv, parameters[0]);
}
