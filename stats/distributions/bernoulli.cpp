// The Bernoulli distribution with P(X = 1) = q. Its Probability is the mass, not the
// distribution function. The variate takes 1 when u <= q, the quantile when p > 1 - q: the
// two tests are deliberately not mirror images.
#include "distributions/distributions.h"
#include "frame/frame.h"
#include "random/random_stream.h"

VexaFloat STATS_BernoulliProbability_MP(VexaKernelVector, long k, VexaFloat q) {
  if (k == 0) return 1 - q;
  if (k == 1) return q;
  return VexaFloat(0);
}

long STATS_BernoulliDeviate_MP(VexaKernelVector, VexaFloat p, VexaFloat q) {
  return !(p <= 1 - q) ? 1 : 0;
}

VexaFloat STATS_BernoulliRandomVariate_MP(VexaKernelVector, VexaFloat q) {
  VexaFloat u = STATS_VexaRandomStream_MP::NextDouble();
  return u <= q ? VexaFloat(1.0) : VexaFloat(0.0);
}

VexaFloat STATS_BernoulliRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_BernoulliRandomVariate_MP(kv, parameters[0]);
}
