// The probability distributions: for each one a Probability (cumulative), Deviate
// (quantile) and RandomVariate worker computing in VexaFloat, and the host entry points
// STATS_Vexa<Dist><Operation>_MP, which are all listed in one table in entry_points.cpp.
#ifndef STATS_DISTRIBUTIONS_DISTRIBUTIONS_H
#define STATS_DISTRIBUTIONS_DISTRIBUTIONS_H

#include <cstdint>

#include "vexa/external.h"
#include "vexa/float.h"
#include "vexa/nag.h"

// ---- Tails ----
// Which tail a probability refers to. Values other than 2, 3 and 4 mean the lower tail.
enum STATS_PROBABILITY_TYPE_MP : int32_t {
  STATS_LOWER_TAIL_MP = 1,     // P(X <= x)
  STATS_UPPER_TAIL_MP = 2,     // P(X >= x)
  STATS_TWO_TAIL_SIGNIF_MP = 3,  // P(|X| >= |x|)
  STATS_TWO_TAIL_CONFID_MP = 4,  // P(|X| <= |x|)
};
Nag_TailProbability STATS_ToNag_TailProbability_MP(STATS_PROBABILITY_TYPE_MP type);
STATS_PROBABILITY_TYPE_MP ToPROBABILITY_TYPE(Nag_TailProbability tail);

// ---- Uniform on [a, b] ----
VexaFloat STATS_UniformProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat a, VexaFloat b);
VexaFloat STATS_UniformDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat a, VexaFloat b);
VexaFloat STATS_UniformRandomVariate_MP(VexaKernelVector kv, VexaFloat a, VexaFloat b);
VexaFloat STATS_UniformRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);

#endif
