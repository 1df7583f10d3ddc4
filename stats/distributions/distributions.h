// The probability distributions: for each one a Probability (cumulative), Deviate
// (quantile) and RandomVariate worker computing in VexaFloat, and the host entry points
// STATS_Vexa<Dist><Operation>_MP, which are all listed in one table in entry_points.cpp.
#ifndef STATS_DISTRIBUTIONS_DISTRIBUTIONS_H
#define STATS_DISTRIBUTIONS_DISTRIBUTIONS_H

#include <cstdint>

#include "vexa/external.h"
#include "vexa/float.h"
#include "vexa/nag.h"

class STATS_VexaCallbackAdapter_MP;

// ---- Tails ----
// Which tail a probability refers to. Values other than 2, 3 and 4 mean the lower tail.
enum STATS_PROBABILITY_TYPE_MP : int32_t {
  STATS_LOWER_TAIL_MP = 1,       // P(X <= x)
  STATS_UPPER_TAIL_MP = 2,       // P(X >= x)
  STATS_TWO_TAIL_SIGNIF_MP = 3,  // P(|X| >= |x|)
  STATS_TWO_TAIL_CONFID_MP = 4,  // P(|X| <= |x|)
};
Nag_TailProbability STATS_ToNag_TailProbability_MP(STATS_PROBABILITY_TYPE_MP type);
STATS_PROBABILITY_TYPE_MP ToPROBABILITY_TYPE(Nag_TailProbability tail);

// Raises the numerical library's failure, its own message as the text, when fail holds one.
void STATS_CheckNagError_MP(VexaKernelVector kv, const NagError& fail);
// routine(&fail) with a fresh failure record (printing off, no handler); its failure is raised.
template <class Routine>
VexaFloat STATS_CallLibrary_MP(VexaKernelVector kv, Routine routine) {
  NagError fail;
  VexaFloat r = routine(&fail);
  STATS_CheckNagError_MP(kv, fail);
  return r;
}
// The tail every distribution passes: the lower one.
inline Nag_TailProbability STATS_LowerNagTail_MP() {
  return STATS_ToNag_TailProbability_MP(STATS_LOWER_TAIL_MP);
}

// ---- Computed by the numerical library (lower tails) ----
VexaFloat STATS_NormalProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat mu,
                                     VexaFloat sigma);
// The library's quantile, refined by Newton steps on the library's probability when Digits
// exceeds 14.
VexaFloat STATS_NormalDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat mu, VexaFloat sigma);
VexaFloat STATS_NormalRandomVariate_MP(VexaKernelVector kv, VexaFloat mu, VexaFloat sigma);
VexaFloat STATS_NormalRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);
// A rational approximation of the normal quantile (about 3 digits).
VexaFloat STATS_NormalDeviateApprox_MP(VexaKernelVector kv, VexaFloat p);
// A normal-based approximation for shape values A and B (neither may be 0.5).
VexaFloat STATS_NormalWApprox_MP(VexaKernelVector kv, VexaFloat p, VexaFloat A, VexaFloat B);
VexaFloat STATS_StudentTProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat nu);
VexaFloat STATS_StudentTDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat nu);
VexaFloat STATS_ChiSquareProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat nu);
VexaFloat STATS_ChiSquareDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat nu);
VexaFloat STATS_FRatioProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat nu1,
                                     VexaFloat nu2);
VexaFloat STATS_FRatioDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat nu1, VexaFloat nu2);
// Shape a, scale b.
VexaFloat STATS_GammaProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat a, VexaFloat b);
VexaFloat STATS_GammaDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat a, VexaFloat b);
VexaFloat STATS_BetaProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat a, VexaFloat b);
VexaFloat STATS_BetaDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat a, VexaFloat b);

// ---- Variates of the families above and of those with variates only; exact at any Digits.
// Invalid parameters raise a host error before any draw. ----
VexaFloat STATS_GammaRandomVariate_MP(VexaKernelVector kv, VexaFloat a, VexaFloat b);
VexaFloat STATS_GammaRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);
VexaFloat STATS_ChiSquareRandomVariate_MP(VexaKernelVector kv, VexaFloat nu);
VexaFloat STATS_ChiSquareRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);
VexaFloat STATS_BetaRandomVariate_MP(VexaKernelVector kv, VexaFloat a, VexaFloat b);
VexaFloat STATS_BetaRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);
VexaFloat STATS_FRatioRandomVariate_MP(VexaKernelVector kv, VexaFloat nu1, VexaFloat nu2);
VexaFloat STATS_FRatioRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);
VexaFloat STATS_StudentTRandomVariate_MP(VexaKernelVector kv, VexaFloat nu);
VexaFloat STATS_StudentTRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);
// Error distribution: location a, scale b, shape c.
VexaFloat STATS_ErrorRandomVariate_MP(VexaKernelVector kv, VexaFloat a, VexaFloat b, VexaFloat c);
VexaFloat STATS_ErrorRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);
// Inverse Gaussian: mean mu, shape lambda.
VexaFloat STATS_InverseGaussianRandomVariate_MP(VexaKernelVector kv, VexaFloat mu,
                                                VexaFloat lambda);
VexaFloat STATS_InverseGaussianRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);
// Maxwell: scale a.
VexaFloat STATS_MaxwellRandomVariate_MP(VexaKernelVector kv, VexaFloat a);
VexaFloat STATS_MaxwellRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);
// Moyal: location a, scale b.
VexaFloat STATS_MoyalRandomVariate_MP(VexaKernelVector kv, VexaFloat a, VexaFloat b);
VexaFloat STATS_MoyalRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);

// ---- Error distribution: location a, scale b, shape c (c = 1 is the normal law) ----
// The x at which the distribution function F (density f) reaches p, both given as functions.
VexaFloat STATS_ErrorDeviate_MP(VexaKernelVector kv, VexaFloat p, STATS_VexaCallbackAdapter_MP& F,
                                STATS_VexaCallbackAdapter_MP& f, VexaFloat a, VexaFloat b,
                                VexaFloat c);

// ---- Uniform on [a, b] ----
VexaFloat STATS_UniformProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat a, VexaFloat b);
VexaFloat STATS_UniformDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat a, VexaFloat b);
VexaFloat STATS_UniformRandomVariate_MP(VexaKernelVector kv, VexaFloat a, VexaFloat b);
VexaFloat STATS_UniformRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);

// ---- Closed forms, in the order of operations of their formulas ----
// Weibull: b (scale), c (shape).
VexaFloat STATS_WeibullProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat b, VexaFloat c);
VexaFloat STATS_WeibullDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat b, VexaFloat c);
VexaFloat STATS_WeibullRandomVariate_MP(VexaKernelVector kv, VexaFloat b, VexaFloat c);
VexaFloat STATS_WeibullRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);
// Triangular: lower end a, upper end b, mode c.
VexaFloat STATS_TriangularProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat a, VexaFloat b,
                                         VexaFloat c);
VexaFloat STATS_TriangularDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat a, VexaFloat b,
                                     VexaFloat c);
VexaFloat STATS_TriangularRandomVariate_MP(VexaKernelVector kv, VexaFloat a, VexaFloat b,
                                           VexaFloat c);
VexaFloat STATS_TriangularRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);
// Rayleigh: scale b.
VexaFloat STATS_RayleighProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat b);
VexaFloat STATS_RayleighDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat b);
VexaFloat STATS_RayleighRandomVariate_MP(VexaKernelVector kv, VexaFloat b);
VexaFloat STATS_RayleighRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);
// Power: upper end b, exponent c.
VexaFloat STATS_PowerProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat b, VexaFloat c);
VexaFloat STATS_PowerDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat b, VexaFloat c);
VexaFloat STATS_PowerRandomVariate_MP(VexaKernelVector kv, VexaFloat b, VexaFloat c);
VexaFloat STATS_PowerRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);
// Pareto: lower end a, exponent c.
VexaFloat STATS_ParetoProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat a, VexaFloat c);
VexaFloat STATS_ParetoDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat a, VexaFloat c);
VexaFloat STATS_ParetoRandomVariate_MP(VexaKernelVector kv, VexaFloat a, VexaFloat c);
VexaFloat STATS_ParetoRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);
// Logistic: location a, scale b.
VexaFloat STATS_LogisticProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat a, VexaFloat b);
VexaFloat STATS_LogisticDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat a, VexaFloat b);
VexaFloat STATS_LogisticRandomVariate_MP(VexaKernelVector kv, VexaFloat a, VexaFloat b);
VexaFloat STATS_LogisticRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);
// Laplace: location a, scale b.
VexaFloat STATS_LaplaceProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat a, VexaFloat b);
VexaFloat STATS_LaplaceDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat a, VexaFloat b);
VexaFloat STATS_LaplaceRandomVariate_MP(VexaKernelVector kv, VexaFloat a, VexaFloat b);
VexaFloat STATS_LaplaceRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);
// Gumbel: location a, scale b.
VexaFloat STATS_GumbelProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat a, VexaFloat b);
VexaFloat STATS_GumbelDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat a, VexaFloat b);
VexaFloat STATS_GumbelRandomVariate_MP(VexaKernelVector kv, VexaFloat a, VexaFloat b);
VexaFloat STATS_GumbelRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);
// Cauchy: location a, scale b.
VexaFloat STATS_CauchyProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat a, VexaFloat b);
VexaFloat STATS_CauchyDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat a, VexaFloat b);
VexaFloat STATS_CauchyRandomVariate_MP(VexaKernelVector kv, VexaFloat a, VexaFloat b);
VexaFloat STATS_CauchyRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);
// Exponential: mean b; the deviate raises for p outside [0, 1].
VexaFloat STATS_ExponentialProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat b);
VexaFloat STATS_ExponentialDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat b);
VexaFloat STATS_ExponentialRandomVariate_MP(VexaKernelVector kv, VexaFloat b);
VexaFloat STATS_ExponentialRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);
// LogNormal: mu and sigma of log X.
VexaFloat STATS_LogNormalProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat mu,
                                        VexaFloat sigma);
VexaFloat STATS_LogNormalDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat mu,
                                    VexaFloat sigma);
VexaFloat STATS_LogNormalRandomVariate_MP(VexaKernelVector kv, VexaFloat mu, VexaFloat sigma);
VexaFloat STATS_LogNormalRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);

// ---- Discrete distributions: P(X <= x) of floor(x) (Bernoulli: the mass at k) and the
// smallest integer at which it reaches p. ----
// The iteration limit of the Binomial, Poisson and Hypergeometric deviate searches: the host
// global _EnvStatisticsIterations when assigned, else 100.
int STATS_DiscreteIterationLimit_MP(VexaKernelVector kv);
// Binomial: n trials, success probability q.
VexaFloat STATS_BinomialProbability_MP(VexaKernelVector kv, VexaFloat x, long n, VexaFloat q);
long STATS_BinomialDeviate_MP(VexaKernelVector kv, VexaFloat p, long n, VexaFloat q);
// Exact at the working precision: inversion for small n min(q, 1 - q), BTRD beyond.
VexaFloat STATS_BinomialRandomVariate_MP(VexaKernelVector kv, long n, VexaFloat q);
VexaFloat STATS_BinomialRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);
// Poisson: mean lambda; x is made an integer toward zero, without a floor.
VexaFloat STATS_PoissonProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat lambda);
long STATS_PoissonDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat lambda);
VexaFloat STATS_PoissonRandomVariate_MP(VexaKernelVector kv, VexaFloat lambda);
VexaFloat STATS_PoissonRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);
// Hypergeometric: population N, L of them marked, M drawn.
VexaFloat STATS_HypergeometricProbability_MP(VexaKernelVector kv, VexaFloat x, long N, long L,
                                             long M);
long STATS_HypergeometricDeviate_MP(VexaKernelVector kv, VexaFloat p, long N, long L, long M);
VexaFloat STATS_HypergeometricRandomVariate_MP(VexaKernelVector kv, long N, long L, long M);
VexaFloat STATS_HypergeometricRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);
// NegativeBinomial: failures before success r, success probability q.
VexaFloat STATS_NegativeBinomialProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat r,
                                               VexaFloat q);
long STATS_NegativeBinomialDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat r, VexaFloat q);
VexaFloat STATS_NegativeBinomialRandomVariate_MP(VexaKernelVector kv, VexaFloat r, VexaFloat q);
VexaFloat STATS_NegativeBinomialRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);
// Geometric: failures before the first success, success probability q.
VexaFloat STATS_GeometricProbability_MP(VexaKernelVector kv, VexaFloat x, VexaFloat q);
long STATS_GeometricDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat q);
VexaFloat STATS_GeometricRandomVariate_MP(VexaKernelVector kv, VexaFloat q);
VexaFloat STATS_GeometricRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);
// DiscreteUniform on the integers a to b.
VexaFloat STATS_DiscreteUniformProbability_MP(VexaKernelVector kv, VexaFloat x, long a, long b);
long STATS_DiscreteUniformDeviate_MP(VexaKernelVector kv, VexaFloat p, long a, long b);
VexaFloat STATS_DiscreteUniformRandomVariate_MP(VexaKernelVector kv, long a, long b);
VexaFloat STATS_DiscreteUniformRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);
// Bernoulli with P(X = 1) = q: the Probability is the mass at k.
VexaFloat STATS_BernoulliProbability_MP(VexaKernelVector kv, long k, VexaFloat q);
long STATS_BernoulliDeviate_MP(VexaKernelVector kv, VexaFloat p, VexaFloat q);
VexaFloat STATS_BernoulliRandomVariate_MP(VexaKernelVector kv, VexaFloat q);
VexaFloat STATS_BernoulliRandomVariate_MP(VexaKernelVector kv, const VexaFloat* parameters);

// ---- Empirical: n data values with weights (null for none), rearranged by each call ----
VexaFloat STATS_EmpiricalDeviate_MP(VexaKernelVector kv, VexaFloat p, int n, VexaFloat* values,
                                    VexaFloat* weights);
VexaFloat STATS_EmpiricalRandomVariate_MP(VexaKernelVector kv, int n, VexaFloat* values,
                                          VexaFloat* weights);
// The bodies of its entry points after the arity check.
class STATS_VexaEntry_MP;
ALGEB STATS_EmpiricalDeviateEntry_MP(const STATS_VexaEntry_MP& entry);
ALGEB STATS_EmpiricalRandomVariateEntry_MP(const STATS_VexaEntry_MP& entry);
ALGEB STATS_EmpiricalRandomSampleEntry_MP(const STATS_VexaEntry_MP& entry);
// The binomial sample entry after the arity check: its setup is made once per sample.
ALGEB STATS_BinomialRandomSampleEntry_MP(const STATS_VexaEntry_MP& entry);

#endif
