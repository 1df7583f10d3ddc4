// The noncentral chi-square distribution with nu degrees of freedom and noncentrality
// lambda: the distribution function from the numerical library, the quantile by Brent's
// method searching right of 0 from the mean nu + lambda. Variates either exact, as a central
// chi-square with nu + 2N degrees of freedom for a Poisson count N of mean lambda / 2, or by
// inverting the distribution function at a uniform draw.
#include "distributions/distributions.h"
#include "frame/frame.h"
#include "random/random_stream.h"
#include "random/variates.h"
#include "rootfinding/rootfinding.h"

namespace {

class _NonCentralChiSquareProbabilityAdapter : public STATS_VexaCallbackAdapter_MP {
 public:
  _NonCentralChiSquareProbabilityAdapter(VexaKernelVector kv, VexaFloat nu, VexaFloat lambda)
      : STATS_VexaCallbackAdapter_MP(kv), m_nu(nu), m_lambda(lambda) {}
  ~_NonCentralChiSquareProbabilityAdapter() override {}
  VexaFloat Call(VexaFloat x) override {
    if (x <= 0) return VexaFloat(0.0);
    return STATS_NonCentralChiSquareProbability_MP(m_kv, x, m_nu, m_lambda);
  }

 private:
  VexaFloat m_nu, m_lambda;
};

}  // namespace

VexaFloat STATS_NonCentralChiSquareProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat nu,
                                                  VexaFloat lambda) {
  return STATS_CallLibrary_MP(kv, [&](NagError* fail) {
    return VexaMP_g01gcc(x, nu, lambda, VexaFloat(0.0), STATS_NONCENTRAL_ITERATIONS_MP, fail);
  });
}

VexaFloat STATS_NonCentralChiSquareDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat nu,
                                              VexaFloat lambda) {
  STATS_CheckTailProbability_MP(kv, p);
  STATS_NonCentralChiSquareProbability_MP(kv, VexaFloat(1.0), nu, lambda);  // checks them
  if (p == 0) return VexaFloat(0.0);
  if (p == 1) return VexaFloatInfinity(1);

  _NonCentralChiSquareProbabilityAdapter f(kv, nu, lambda);
  return STATS_BrentMethodHybridLeft_MP(kv, p, f, VexaFloat(0.0), VexaFloat(1.0), VexaFloat(0.0),
                                        nu + lambda, STATS_NonCentralTolerance_MP(),
                                        STATS_NonCentralIterations_MP());
}

void STATS_RequireNonCentralChiSquare_MP(VexaKernelVector kv, const VexaFloat& nu,
                                         const VexaFloat& lambda) {
  STATS_RequireParameter_MP(kv, STATS_IsPositiveFinite_MP(nu),
                            "the degrees of freedom must be positive and finite, received: %1", nu);
  STATS_RequireParameter_MP(kv, lambda >= 0 && lambda <= 1000000,
                            "the noncentrality must be between 0 and 10^6, received: %1", lambda);
}

VexaFloat STATS_NonCentralChiSquareVariate_MP(const VexaFloat& nu, const VexaFloat& lambda) {
  const long n = STATS_PoissonExactVariate_MP(lambda / 2);
  return STATS_ChiSquareVariate_MP(nu + VexaFloat(2 * n));
}

VexaFloat STATS_NonCentralChiSquareRandomVariate_MP(VexaKernelVector kv, VexaFloat nu,
                                                    VexaFloat lambda, int method) {
  STATS_RequireNonCentralChiSquare_MP(kv, nu, lambda);
  if (method == 0) return STATS_NonCentralChiSquareVariate_MP(nu, lambda);
  // the search works three digits above the result it rounds to
  const VexaFloat u = STATS_VexaRandomStream_MP::NextDouble();
  VexaFloat x;
  {
    VexaDigitsScope wide(VexaDigits() + 3);
    x = STATS_NonCentralChiSquareDeviate_MP(kv, u, nu, lambda);
  }
  return x + VexaFloat(0.0);
}

ALGEB STATS_NonCentralChiSquareRandomSampleEntry_MP(const STATS_VexaEntry_MP& entry) {
  const VexaKernelVector kv = entry.Kernel();
  const int n = entry.Integer(1);
  const VexaFloat nu = entry.Float(2), lambda = entry.Float(3);
  if (entry.NumArgs() == 4) {
    const int method = static_cast<int>(STATS_DoubleToInteger_MP(entry.Float(4)));
    STATS_RequireNonCentralChiSquare_MP(kv, nu, lambda);
    ALGEB out = STATS_CreateRandomSample_MP(kv, n, ToVexaNULL(kv));
    VexaFloat* data = static_cast<VexaFloat*>(RTableDataBlock(kv, out));
    for (int i = 0; i < n; ++i)
      data[i] = STATS_NonCentralChiSquareRandomVariate_MP(kv, nu, lambda, method);
    return out;
  }
  STATS_VexaProcAdapter_MP F(kv, entry.Arg(4)), L(kv, entry.Arg(5)), U(kv, entry.Arg(6));
  ALGEB out = STATS_CreateRandomSample_MP(kv, n, ToVexaNULL(kv));
  VexaFloat* data = static_cast<VexaFloat*>(RTableDataBlock(kv, out));
  for (int i = 0; i < n; ++i) {
    const VexaFloat u = STATS_VexaRandomStream_MP::NextDouble();
    data[i] = STATS_BrentMethod_MP(kv, u, F, L.Call(u), U.Call(u), STATS_NonCentralTolerance_MP(),
                                   STATS_NonCentralIterations_MP());
  }
  return out;
}
