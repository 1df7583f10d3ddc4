// The inverse Gaussian distribution with mean mu and shape lambda: variates by Michael,
// Schucany and Haas ("Generating random variates using transformations with multiple roots",
// Amer. Statist. 30, 1976). With w = mu y / (2 lambda) for y the square of a normal deviate,
// the smaller root x = mu (1 + w - sqrt(w (w + 2))) is formed as mu / (1 + w + sqrt(w (w + 2)))
// to avoid cancellation; it is kept with probability mu / (mu + x), else mu^2 / x.
#include "distributions/distributions.h"
#include "random/random_stream.h"
#include "random/variates.h"

VexaFloat STATS_InverseGaussianRandomVariate_MP(VexaKernelVector kv, VexaFloat mu,
                                                VexaFloat lambda) {
  STATS_RequireParameter_MP(kv, STATS_IsPositiveFinite_MP(mu),
                            "the mean must be positive and finite, received: %1", mu);
  STATS_RequireParameter_MP(kv, STATS_IsPositiveFinite_MP(lambda),
                            "the shape must be positive and finite, received: %1", lambda);
  const VexaFloat z = STATS_ExactNormalVariate_MP();
  const VexaFloat w = mu * (z * z) / (2 * lambda);
  const VexaFloat x = mu / (1 + w + sqrt(w * (w + 2)));
  const VexaFloat u = STATS_VexaRandomStream_MP::NextDouble();
  if (u * (mu + x) < mu) return x;
  return mu * mu / x;
}

VexaFloat STATS_InverseGaussianRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_InverseGaussianRandomVariate_MP(kv, parameters[0], parameters[1]);
}
