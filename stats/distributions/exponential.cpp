// The exponential distribution with mean b: P(X <= x) = 1 - exp(-x/b), with no test of x;
// variates from the exponential ziggurat.
#include "distributions/distributions.h"
#include "frame/frame.h"
#include "random/ziggurat.h"

VexaFloat STATS_ExponentialProbability_MP(VexaKernelVector, VexaFloat x, VexaFloat b) {
  return 1 - exp(-x / b);
}

VexaFloat STATS_ExponentialDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat b) {
  if (p < 0 || p > 1)
    VexaRaiseError1(kv, "invalid value for the tail probability: %1",
                    STATS_DoubleToVexaFloat_MP(kv, p));
  return (-b) * log(1 - p);
}

VexaFloat STATS_ExponentialRandomVariate_MP(VexaKernelVector kv, VexaFloat b) {
  return b * STATS_StandardExponentialVariate_MP(kv);
}

VexaFloat STATS_ExponentialRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_ExponentialRandomVariate_MP(kv, parameters[0]);
}
