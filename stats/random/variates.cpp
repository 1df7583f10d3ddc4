// The exact normal and exponential deviates, the standard gamma variate by Marsaglia and
// Tsang's method, and the chi-square variate built on it.
#include "random/variates.h"

#include "frame/frame.h"
#include "random/random_stream.h"
#include "random/ziggurat.h"

VexaFloat STATS_ExactNormalVariate_MP() {
  STATS_ZigguratNormalGenerator_MP::ResetExact();
  return STATS_ZigguratNormalGenerator_MP::NextExact();
}

VexaFloat STATS_ExactExponentialVariate_MP() {
  STATS_ZigguratExpGenerator_MP::ResetExact();
  return STATS_ZigguratExpGenerator_MP::NextExact();
}

VexaFloat STATS_PositiveUniformVariate_MP() {
  return 1 - STATS_VexaRandomStream_MP::NextDouble();
}

STATS_StandardGammaGenerator_MP::STATS_StandardGammaGenerator_MP(const VexaFloat& a)
    : m_boost(a < 1) {
  const VexaFloat shape = m_boost ? a + 1 : a;
  if (m_boost) m_inverse = 1 / a;
  m_d = shape - VexaFloat(1) / 3;
  m_c = 1 / sqrt(9 * m_d);
}

VexaFloat STATS_StandardGammaGenerator_MP::Next() const {
  // The squeeze 1 - 0.0331 x^4 lies below the acceptance function for every x.
  static const VexaFloat kSqueeze = VexaFloatFromString("0.0331");
  VexaFloat g;
  for (;;) {
    const VexaFloat x = STATS_ExactNormalVariate_MP();
    VexaFloat v = 1 + m_c * x;
    if (!(v > 0)) continue;
    v = v * v * v;
    const VexaFloat u = STATS_PositiveUniformVariate_MP();
    const VexaFloat x2 = x * x;
    if (u < 1 - kSqueeze * (x2 * x2)) {
      g = m_d * v;
      break;
    }
    if (log(u) < x2 / 2 + m_d * (1 - v + log(v))) {
      g = m_d * v;
      break;
    }
  }
  if (!m_boost) return g;
  return g * pow(STATS_PositiveUniformVariate_MP(), m_inverse);
}

VexaFloat STATS_StandardGammaVariate_MP(const VexaFloat& a) {
  return STATS_StandardGammaGenerator_MP(a).Next();
}

VexaFloat STATS_ChiSquareVariate_MP(const VexaFloat& nu) {
  return 2 * STATS_StandardGammaVariate_MP(nu / 2);
}

void STATS_RequireParameter_MP(VexaKernelVector kv, bool ok, const char* message,
                               const VexaFloat& x) {
  if (!ok) VexaRaiseError1(kv, message, STATS_DoubleToVexaFloat_MP(kv, x));
}

bool STATS_IsPositiveFinite_MP(const VexaFloat& x) {
  return x > 0 && STATS_IsFinite_MP(x);
}
