// What the noncentral deviates share: the tolerance and iteration limit of their Brent
// searches and the check of the probability.
#include "distributions/distributions.h"
#include "frame/frame.h"

// Brent's step is at least tol (2 |b| + 1/2): at 10^(2 - Digits) it stays above the unit in
// the last place of b, so that every step moves b.
VexaFloat STATS_NonCentralTolerance_MP() {
  return pow(VexaFloat(10.0), VexaFloat(static_cast<double>(2 - VexaDigits())));
}

int STATS_NonCentralIterations_MP() {
  return 100 + 4 * VexaDigits();
}

void STATS_CheckTailProbability_MP(VexaKernelVector kv, const VexaFloat& p) {
  if (!(p >= 0 && p <= 1))
    VexaRaiseError1(kv, "invalid value for the tail probability: %1",
                    STATS_DoubleToVexaFloat_MP(kv, p));
}
