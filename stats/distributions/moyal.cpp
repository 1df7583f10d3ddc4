// The Moyal distribution with location a and scale b, density
// exp(-(z + exp(-z)) / 2) / (b sqrt(2 pi)) at z = (x - a) / b: variates a - b log Y for Y a
// chi-square variate with one degree of freedom. Y is drawn as a gamma variate, whose small
// values carry full precision (they set the upper tail), not as a squared normal deviate.
#include "distributions/distributions.h"
#include "frame/frame.h"
#include "random/variates.h"

VexaFloat STATS_MoyalRandomVariate_MP(VexaKernelVector kv, VexaFloat a, VexaFloat b) {
  STATS_RequireParameter_MP(kv, STATS_IsFinite_MP(a), "the location must be finite, received: %1",
                            a);
  STATS_RequireParameter_MP(kv, STATS_IsPositiveFinite_MP(b),
                            "the scale must be positive and finite, received: %1", b);
  return a - b * log(STATS_ChiSquareVariate_MP(VexaFloat(1)));
}

VexaFloat STATS_MoyalRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_MoyalRandomVariate_MP(kv, parameters[0], parameters[1]);
}
