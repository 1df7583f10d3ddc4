// The Poisson distribution with mean lambda: the distribution function from the numerical
// library, the quantile by discrete interpolation searching right from 0, variates by
// inversion of a uniform draw. The exact draw is sequential inversion below a mean of 10 and
// Hoermann's PTRS above it (transformed rejection with squeeze; W. Hoermann, "The transformed
// rejection method for generating Poisson random variables", Insurance: Mathematics and
// Economics 12, 1993), its final test made with log-gamma at raised precision.
#include <cmath>

#include "distributions/distributions.h"
#include "frame/frame.h"
#include "random/random_stream.h"
#include "rootfinding/rootfinding.h"

namespace {

class _PoissonProbabilityAdapter : public STATS_VexaCallbackAdapter_MP {
 public:
  _PoissonProbabilityAdapter(VexaKernelVector kv, VexaFloat lambda)
      : STATS_VexaCallbackAdapter_MP(kv), m_lambda(lambda) {}
  ~_PoissonProbabilityAdapter() override {}
  VexaFloat Call(VexaFloat x) override { return STATS_PoissonProbability_MP(m_kv, x, m_lambda); }

 private:
  VexaFloat m_lambda;
};

// Sequential inversion from 0 with P(k) = P(k - 1) mu / k; a draw that the terms, rounded,
// can no longer lower is drawn again.
long PoissonInversion(const VexaFloat& mu) {
  const VexaFloat first = exp(-mu);
  for (;;) {
    VexaFloat u = STATS_VexaRandomStream_MP::NextDouble(), p = first;
    long k = 0;
    while (u > p) {
      const VexaFloat rest = u - p;
      if (rest == u && k >= mu) break;
      u = rest;
      ++k;
      p = p * mu / k;
    }
    if (u <= p) return k;
  }
}

// PTRS for mu >= 10, its constants decimal and so exact at any Digits.
long PoissonPtrs(const VexaFloat& mu) {
  static const VexaFloat b0 = VexaFloatFromString("0.931"), b1 = VexaFloatFromString("2.53"),
                         a0 = VexaFloatFromString("-0.059"), a1 = VexaFloatFromString("0.02483"),
                         i0 = VexaFloatFromString("1.1239"), i1 = VexaFloatFromString("1.1328"),
                         i2 = VexaFloatFromString("3.4"), v0 = VexaFloatFromString("0.9277"),
                         v1 = VexaFloatFromString("3.6224"), shift = VexaFloatFromString("0.43"),
                         box = VexaFloatFromString("0.07"), edge = VexaFloatFromString("0.013"),
                         half = VexaFloatFromString("0.5");
  const VexaFloat b = b0 + b1 * sqrt(mu);
  const VexaFloat a = a0 + a1 * b;
  const VexaFloat invAlpha = i0 + i1 / (b - i2);
  const VexaFloat vr = v0 - v1 / (b - 2);
  const double mud = std::strtod(VexaFloatToString(mu).c_str(), nullptr);
  // log f(k) reaches mu log mu: its cancelled digits are carried as guard digits
  const int guard = 10 + static_cast<int>(std::log10(mud * std::log(mud) + 1));
  for (;;) {
    const VexaFloat u = STATS_VexaRandomStream_MP::NextDouble() - half;
    const VexaFloat v = STATS_VexaRandomStream_MP::NextDouble();
    const VexaFloat us = half - fabs(u);
    if (us == 0) continue;
    const VexaFloat kf = floor((2 * a / us + b) * u + mu + shift);
    if (us >= box && v <= vr) return STATS_DoubleToInteger_MP(kf);
    if (kf < 0 || (us < edge && v > us)) continue;
    const long k = STATS_DoubleToInteger_MP(kf);
    bool accept;
    {
      VexaDigitsScope wide(VexaDigits() + guard);
      const VexaFloat lhs = log(v * invAlpha / (a / (us * us) + b));
      const VexaFloat rhs = -mu + VexaFloat(k) * log(mu) - VexaEvalf1("lnGAMMA", VexaFloat(k + 1));
      accept = lhs <= rhs;
    }
    if (accept) return k;
  }
}

}  // namespace

long STATS_PoissonExactVariate_MP(VexaFloat mu) {
  if (mu == 0) return 0;
  return mu < 10 ? PoissonInversion(mu) : PoissonPtrs(mu);
}

// x is made an integer toward zero, without a floor.
VexaFloat STATS_PoissonProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat lambda) {
  const long k = STATS_DoubleToInteger_MP(x);
  return STATS_CallLibrary_MP(kv, [&](NagError* fail) {
    VexaFloat lower(0.0), upper(0.0), equal(0.0);
    VexaMP_g01bkc(lambda, k, &lower, &upper, &equal, fail);
    return lower;
  });
}

long STATS_PoissonDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat lambda) {
  const int limit = STATS_DiscreteIterationLimit_MP(kv);
  _PoissonProbabilityAdapter f(kv, lambda);
  long h = STATS_DoubleToInteger_MP(floor(lambda));
  if (h == 0) h = 1;
  return STATS_DiscreteInterpolationHybridLeft_MP(kv, p, f, VexaFloat(0.0), VexaFloat(1.0), 0, h,
                                                  limit);
}

VexaFloat STATS_PoissonRandomVariate_MP(VexaKernelVector kv, VexaFloat lambda) {
  VexaFloat u = STATS_VexaRandomStream_MP::NextDouble();
  return VexaFloat(static_cast<double>(STATS_PoissonDeviate_MP(kv, u, lambda)));
}

VexaFloat STATS_PoissonRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters) {
  return STATS_PoissonRandomVariate_MP(kv, parameters[0]);
}
