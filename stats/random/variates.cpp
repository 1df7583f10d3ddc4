// The exact normal and exponential deviates, the standard gamma variate by Marsaglia and
// Tsang's method, and the chi-square variate built on it.
#include "random/variates.h"

#include <cstdint>

#include "frame/frame.h"
#include "random/random_stream.h"
#include "random/ziggurat.h"

namespace {

using Stream = STATS_VexaRandomStream_MP;

// A uniform fraction t on [0, 1) at the working precision together with its leading 64
// bits, top = floor(t 2^64): two host words, and below Digits 18 nothing more (64 bits hold
// more than 19 digits); beyond, a uniform at Digits fills the bits after the 64th.
struct Fraction {
  uint64_t top;
  VexaFloat scaled;  // t 2^64

  Fraction() {
    const uint64_t high = Stream::NextInteger();
    top = high << 32 | Stream::NextInteger();
    scaled = VexaFloat(static_cast<unsigned long long>(top));
    if (VexaDigits() > 17) scaled += Stream::NextDouble();
  }
};

// Powers of two as exact decimals (read without rounding).
struct Scale {
  int bits;        // the tables' integer scale is 2^bits
  VexaFloat up;    // 2^bits
  VexaFloat down;  // 2^(bits - 64): turns t 2^64 into t 2^bits
};

const Scale& NormalScale() {
  static const Scale k = {31, VexaFloatFromString("2147483648"),
                          VexaFloatFromString("1.16415321826934814453125e-10")};
  return k;
}
const Scale& ExponentialScale() {
  static const Scale k = {32, VexaFloatFromString("4294967296"),
                          VexaFloatFromString("2.3283064365386962890625e-10")};
  return k;
}
const VexaFloat& TwoToMinus64() {
  static const VexaFloat k =
      VexaFloatFromString("5.42101086242752217003726400434970855712890625e-20");
  return k;
}

// f of the normal and exponential ziggurats.
VexaFloat Gauss(const VexaFloat& x) {
  return exp(-0.5 * x * x);
}
VexaFloat Exp(const VexaFloat& x) {
  return exp(-x);
}

// One point of the published ziggurat (tables of the exact mode, scale 2^bits) with its
// abscissa drawn at full precision: in layer i the candidate is x = t x_i for a fraction t
// of the working precision, not one of the 2^23 multiples of x_i / 2^23 that a single word
// gives. Accepts below the next layer's edge x_{i-1} (the base strip: below r), decided on
// the leading 64 bits of t except within one threshold unit of the edge, and in the wedge
// under f. A point of layer 0 beyond r is not accepted: the caller draws the tail.
struct Candidate {
  bool accepted;
  int layer;
  VexaFloat x;
};

Candidate Draw(const STATS_ZigguratExactTables_MP& t, const Scale& scale, uint32_t word,
               VexaFloat (*f)(const VexaFloat&)) {
  const int i = word & 255;
  const Fraction u;
  const VexaFloat x = (u.scaled * t.w[i]) * scale.down;  // t x_i with x_i = w_i 2^bits
  // t 2^bits < k_i - 1 puts x below the edge; within one unit below k_i it is compared
  const int shift = 64 - scale.bits;
  const uint64_t k = static_cast<uint64_t>(t.k[i]);
  if (k > 0 && u.top < (k - 1) << shift) return {true, i, x};
  const VexaFloat edge = i == 0 ? t.r : t.w[i - 1] * scale.up;
  if (k > 0 && u.top < k << shift && x < edge) return {true, i, x};
  if (i == 0) return {false, 0, x};
  const VexaFloat v = Fraction().scaled * TwoToMinus64();
  return {t.f[i] + v * (t.f[i - 1] - t.f[i]) < f(x), i, x};
}

}  // namespace

VexaFloat STATS_ExactNormalVariate_MP() {
  STATS_ZigguratNormalGenerator_MP::ResetExact();
  const STATS_ZigguratExactTables_MP& t = STATS_ZigguratNormalGenerator_MP::gExact;
  for (;;) {
    const uint32_t word = Stream::NextInteger();
    const bool negative = word & 256;
    const Candidate c = Draw(t, NormalScale(), word, Gauss);
    if (c.accepted) return negative ? -c.x : c.x;
    if (c.layer != 0) continue;
    VexaFloat e, b;  // the tail beyond r, by Marsaglia's exponential rejection
    do {
      e = -log(STATS_PositiveUniformVariate_MP()) / t.r;
      b = -log(STATS_PositiveUniformVariate_MP());
    } while (2 * b < e * e);
    return negative ? -t.r - e : t.r + e;
  }
}

VexaFloat STATS_ExactExponentialVariate_MP() {
  STATS_ZigguratExpGenerator_MP::ResetExact();
  const STATS_ZigguratExactTables_MP& t = STATS_ZigguratExpGenerator_MP::gExact;
  for (;;) {
    const Candidate c = Draw(t, ExponentialScale(), Stream::NextInteger(), Exp);
    if (c.accepted) return c.x;
    // the tail beyond r is r plus an exponential variate
    if (c.layer == 0) return t.r - log(STATS_PositiveUniformVariate_MP());
  }
}

VexaFloat STATS_PositiveUniformVariate_MP() {
  return 1 - Fraction().scaled * TwoToMinus64();
}

ALGEB STATS_FillRandomSample_MP(VexaKernelVector kv, int n,
                                const std::function<VexaFloat()>& next) {
  ALGEB out = STATS_CreateRandomSample_MP(kv, n, ToVexaNULL(kv));
  VexaFloat* data = n > 0 ? static_cast<VexaFloat*>(RTableDataBlock(kv, out)) : nullptr;
  for (int i = 0; i < n; ++i) data[i] = next();
  return out;
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
  // U^(1/a) as exp(-E / a) for E = -log U exponential: one exp, no logarithm
  return g * exp(-STATS_ExactExponentialVariate_MP() * m_inverse);
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
