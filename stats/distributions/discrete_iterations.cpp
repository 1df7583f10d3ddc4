// The iteration limit of the discrete deviate searches, which the host global
// _EnvStatisticsIterations overrides when it is assigned.
#include "distributions/distributions.h"

int STATS_DiscreteIterationLimit_MP(VexaKernelVector kv) {
  ALGEB name = ToVexaName(kv, "_EnvStatisticsIterations", 1);
  if (!IsVexaAssignedName(kv, name)) return 100;
  return static_cast<int>(VexaToM_INT(kv, VexaEval(kv, name)));
}
