// The Moyal distribution with location a and scale b, density
// exp(-(z + exp(-z)) / 2) / (b sqrt(2 pi)) at z = (x - a) / b: variates a - b log Y for Y a
// chi-square variate with one degree of freedom. Y = 2 G exp(-2 E) with G gamma of shape 3/2
// and E exponential (the gamma of shape 1/2 boosted from shape 3/2), so log Y is formed as
// log(2 G) - 2 E: its small values, which set the upper tail, keep full precision.
#include "distributions/distributions.h"
#include "frame/frame.h"
#include "random/variates.h"

VexaFloat STATS_MoyalRandomVariate_MP(VexaKernelVector kv, VexaFloat a, VexaFloat b) {
  STATS_RequireParameter_MP(kv, STATS_IsFinite_MP(a), "the location must be finite, received: %1",
                            a);
  STATS_RequireParameter_MP(kv, STATS_IsPositiveFinite_MP(b),
                            "the scale must be positive and finite, received: %1", b);
  const VexaFloat g = STATS_StandardGammaVariate_MP(1.5);
  return a - b * (log(2 * g) - 2 * STATS_ExactExponentialVariate_MP());
}

VexaFloat STATS_MoyalRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_MoyalRandomVariate_MP(kv, parameters[0], parameters[1]);
}
