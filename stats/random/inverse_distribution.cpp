// Inverse-distribution sampling of a host procedure F: uniform draws u from the host stream,
// then x = F^-1(u) by Brent's method (continuous) or by discrete interpolation (integers).
// F is evaluated under guard, so a failing or non-numeric F ends the call with a clear error.
#include "random/inverse_distribution.h"

#include <string>
#include <vector>

#include "random/random_stream.h"
#include "rootfinding/rootfinding.h"

STATS_InverseDistributionGenerator_MP::STATS_InverseDistributionGenerator_MP(
    VexaKernelVector kv, STATS_VexaCallbackAdapter_MP& F, VexaFloat lower, VexaFloat upper,
    int digits)
    : m_kv(kv),
      m_F(F),
      m_lower(lower),
      m_upper(upper),
      m_tol(VexaFloatFromString("1e-" + std::to_string(digits + 1))),
      m_maxIter(200 + 10 * digits) {}

VexaFloat STATS_InverseDistributionGenerator_MP::Next(const VexaFloat& u) {
  return STATS_BrentMethod_MP(m_kv, u, m_F, m_lower, m_upper, m_tol, m_maxIter);
}

long STATS_InverseDistributionGenerator_MP::NextDiscrete(const VexaFloat& u) {
  return STATS_DiscreteInterpolation_MP(m_kv, u, m_F, FloatToInt(m_lower), FloatToInt(m_upper),
                                        100);
}

namespace {

// The n uniforms of a sample, drawn at the caller's Digits before F is first evaluated.
std::vector<VexaFloat> Uniforms(int n) {
  std::vector<VexaFloat> u(n);
  for (VexaFloat& v : u) v = STATS_VexaRandomStream_MP::NextDouble();
  return u;
}

int SampleSize(const STATS_VexaEntry_MP& entry) {
  const int n = entry.Integer(1);
  if (n < 0)
    VexaRaiseError1(entry.Kernel(), "expected a nonnegative sample size, received %1",
                    entry.Arg(1));
  return n;
}

void CheckBracket(const STATS_VexaEntry_MP& entry, const VexaFloat& lower, const VexaFloat& upper) {
  if (!STATS_IsFinite_MP(lower) || !STATS_IsFinite_MP(upper) || !(lower < upper))
    VexaRaiseError2(entry.Kernel(), "expected finite bounds lower < upper, received %1, %2",
                    entry.Arg(3), entry.Arg(4));
}

}  // namespace

extern "C" ALGEB STATS_VexaInverseDistributionRandomSample_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaInverseDistributionRandomSample", 4);
  const int n = SampleSize(entry);
  STATS_VexaGuardedProcAdapter_MP F(kv, entry.Procedure(2));
  const VexaFloat lower = entry.Float(3), upper = entry.Float(4);
  CheckBracket(entry, lower, upper);
  const int digits = entry.Digits();
  ALGEB out = STATS_CreateRandomSample_MP(kv, n, ToVexaNULL(kv));
  auto* block = static_cast<VexaFloat*>(RTableDataBlock(kv, out));
  const std::vector<VexaFloat> u = Uniforms(n);
  std::vector<VexaFloat> x(n);
  {
    STATS_VexaRaisedDigits_MP raised(entry, digits + 3);
    STATS_InverseDistributionGenerator_MP generator(kv, F, lower, upper, digits);
    for (int i = 0; i < n; ++i) x[i] = generator.Next(u[i]);
  }
  for (int i = 0; i < n; ++i) block[i] = VexaFloatRound(x[i], digits);
  return out;
}

extern "C" ALGEB STATS_VexaDiscreteInverseDistributionRandomSample_MP(VexaKernelVector kv,
                                                                      ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaDiscreteInverseDistributionRandomSample", 4);
  const int n = SampleSize(entry);
  STATS_VexaGuardedProcAdapter_MP F(kv, entry.Procedure(2));
  const int left = entry.Integer(3), right = entry.Integer(4);
  CheckBracket(entry, VexaFloat(left), VexaFloat(right));
  ALGEB out = STATS_CreateRandomSample_MP(kv, n, ToVexaNULL(kv));
  auto* block = static_cast<VexaFloat*>(RTableDataBlock(kv, out));
  const std::vector<VexaFloat> u = Uniforms(n);
  STATS_InverseDistributionGenerator_MP generator(kv, F, VexaFloat(left), VexaFloat(right),
                                                  VexaDigits());
  std::vector<VexaFloat> k(n);
  for (int i = 0; i < n; ++i) k[i] = VexaFloat(generator.NextDiscrete(u[i]));
  for (int i = 0; i < n; ++i) block[i] = k[i];
  return out;
}
