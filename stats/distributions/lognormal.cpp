// The log-normal distribution: log X is normal with mean mu and deviation sigma. Probability
// and deviate through the normal ones; variates exp(mu + sigma z) with z from the ziggurat.
#include "distributions/distributions.h"

VexaFloat STATS_LogNormalProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat mu,
                                        VexaFloat sigma) {
  return STATS_NormalProbability_MP(kv, log(x), mu, sigma);
}

VexaFloat STATS_LogNormalDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat mu,
                                    VexaFloat sigma) {
  return exp(STATS_NormalDeviate_MP(kv, p, mu, sigma));
}

VexaFloat STATS_LogNormalRandomVariate_MP(VexaKernelVector kv, VexaFloat mu, VexaFloat sigma) {
  return exp(STATS_NormalRandomVariate_MP(kv, mu, sigma));
}

VexaFloat STATS_LogNormalRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_LogNormalRandomVariate_MP(kv, parameters[0], parameters[1]);
}
