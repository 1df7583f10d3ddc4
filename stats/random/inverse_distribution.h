// Sampling by inversion of a distribution function F given as a callable: a continuous draw
// solves F(x) = u by Brent's method on a bracket, a discrete draw is the first integer at
// which F reaches u, found by discrete interpolation.
#ifndef STATS_RANDOM_INVERSE_DISTRIBUTION_H
#define STATS_RANDOM_INVERSE_DISTRIBUTION_H

#include "../frame/frame.h"

class STATS_InverseDistributionGenerator_MP {
 public:
  // F nondecreasing with F(lower) <= u <= F(upper) for every u in [0, 1); roots are wanted
  // to digits places (and worked at Digits = digits + 3).
  STATS_InverseDistributionGenerator_MP(VexaKernelVector kv, STATS_VexaCallbackAdapter_MP& F,
                                        VexaFloat lower, VexaFloat upper, int digits);

  // The root of F(x) = u within 10^-(digits + 1) relative (plus as much absolute), at most
  // 200 + 10 digits Brent steps.
  VexaFloat Next(const VexaFloat& u);
  // The smallest integer in (lower, upper] at which F >= u (lower when F(lower) > u already).
  long NextDiscrete(const VexaFloat& u);

 private:
  VexaKernelVector m_kv;
  STATS_VexaCallbackAdapter_MP& m_F;
  VexaFloat m_lower, m_upper, m_tol;
  int m_maxIter;
};

extern "C" {
// (n, F, lower, upper): n draws F^-1(u), each rounded to Digits (worked at Digits + 3).
ALGEB STATS_VexaInverseDistributionRandomSample_MP(VexaKernelVector kv, ALGEB args);
// (n, F, left, right): n integer draws min {k in (left, right] : F(k) >= u}.
ALGEB STATS_VexaDiscreteInverseDistributionRandomSample_MP(VexaKernelVector kv, ALGEB args);
}

#endif
