// The Maxwell distribution with scale a: a times the length of a vector of three independent
// standard normal deviates (a chi variate with 3 degrees of freedom).
#include "distributions/distributions.h"
#include "random/variates.h"

VexaFloat STATS_MaxwellRandomVariate_MP(VexaKernelVector kv, VexaFloat a) {
  STATS_RequireParameter_MP(kv, STATS_IsPositiveFinite_MP(a),
                            "the scale must be positive and finite, received: %1", a);
  VexaFloat sum;
  for (int i = 0; i < 3; ++i) {
    const VexaFloat z = STATS_ExactNormalVariate_MP();
    sum += z * z;
  }
  return a * sqrt(sum);
}

VexaFloat STATS_MaxwellRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_MaxwellRandomVariate_MP(kv, parameters[0]);
}
