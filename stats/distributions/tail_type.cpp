// The tail selector and its mapping onto the numerical library's tails (unknown values fold
// onto the lower tail in both directions), and the library's failures raised as host errors.
#include "distributions/distributions.h"

Nag_TailProbability STATS_ToNag_TailProbability_MP(STATS_PROBABILITY_TYPE_MP type) {
  if (type == STATS_TWO_TAIL_SIGNIF_MP) return Nag_TwoTailSignif;
  if (type == STATS_TWO_TAIL_CONFID_MP) return Nag_TwoTailConfid;
  if (type == STATS_UPPER_TAIL_MP) return Nag_UpperTail;
  return Nag_LowerTail;
}

STATS_PROBABILITY_TYPE_MP ToPROBABILITY_TYPE(Nag_TailProbability tail) {
  if (tail == Nag_TwoTailSignif) return STATS_TWO_TAIL_SIGNIF_MP;
  if (tail == Nag_TwoTailConfid) return STATS_TWO_TAIL_CONFID_MP;
  if (tail == Nag_UpperTail) return STATS_UPPER_TAIL_MP;
  return STATS_LOWER_TAIL_MP;
}

void STATS_CheckNagError_MP(VexaKernelVector kv, const NagError& fail) {
  if (fail.code != NE_NOERROR) VexaRaiseError1(kv, fail.message, ToVexaNULL(kv));
}
