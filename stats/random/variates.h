// Exact variates that the distributions build on. Each is exact in distribution at the
// working precision and draws only from the host's stream; the normal and exponential ones
// run the published ziggurat whatever the host's sampling switch says.
#ifndef STATS_RANDOM_VARIATES_H
#define STATS_RANDOM_VARIATES_H

#include "vexa/external.h"
#include "vexa/float.h"

// Standard normal and standard exponential (mean 1) deviates.
VexaFloat STATS_ExactNormalVariate_MP();
VexaFloat STATS_ExactExponentialVariate_MP();
// A uniform on (0, 1], safe for logarithms and negative powers.
VexaFloat STATS_PositiveUniformVariate_MP();

// Gamma with shape a > 0 and scale 1 by Marsaglia and Tsang ("A simple method for generating
// gamma variables", ACM TOMS 26, 2000): a normal deviate x is accepted as d (1 + c x)^3 with
// d = a - 1/3, c = 1 / sqrt(9 d), after a squeeze and a logarithmic test; for a < 1 the
// variate of shape a + 1 is multiplied by U^(1/a). The constants are set up once per shape.
class STATS_StandardGammaGenerator_MP {
 public:
  explicit STATS_StandardGammaGenerator_MP(const VexaFloat& a);
  VexaFloat Next() const;

 private:
  bool m_boost;         // a < 1
  VexaFloat m_inverse;  // 1 / a when boosting
  VexaFloat m_d, m_c;   // for the shape max(a, a + 1)
};

// One standard gamma variate of shape a > 0 (the setup above made for the one draw).
VexaFloat STATS_StandardGammaVariate_MP(const VexaFloat& a);
// Chi-square with nu > 0 degrees of freedom: 2 Gamma(nu / 2).
VexaFloat STATS_ChiSquareVariate_MP(const VexaFloat& nu);

// Raises message with x as %1 unless ok: the parameter checks of the variate workers, made
// before any draw.
void STATS_RequireParameter_MP(VexaKernelVector kv, bool ok, const char* message,
                               const VexaFloat& x);
// x > 0 and finite.
bool STATS_IsPositiveFinite_MP(const VexaFloat& x);

#endif
