// Descriptive statistics: sample quantiles under eight interpolation methods (simple and
// weighted), order statistics, medians and the five-point summary; means of four kinds (also
// trimmed and winsorized), moments, expected values and deviations; with their host entry
// points. Order-based workers rearrange the data array they are given.
#ifndef STATS_DESCRIPTIVE_DESCRIPTIVE_H
#define STATS_DESCRIPTIVE_DESCRIPTIVE_H

#include <cstdint>

#include "vexa/external.h"
#include "vexa/float.h"

// Quantile methods: the sample quantiles of Hyndman and Fan (1996), types 1 and 3 to 9 as
// methods 1 to 8. Every other value means method 1.
enum STATS_QUANTILE_TYPE_MP : int32_t {
  STATS_QUANTILE_INVERSE_EDF_MP = 1,      // the order statistic at the next whole position
  STATS_QUANTILE_NEAREST_MP = 2,          // the order statistic nearest to n p, halves up
  STATS_QUANTILE_LINEAR_NP_MP = 3,        // linear interpolation at n p
  STATS_QUANTILE_HAZEN_MP = 4,            // ... at n p + 1/2
  STATS_QUANTILE_WEIBULL_MP = 5,          // ... at (n + 1) p
  STATS_QUANTILE_GUMBEL_MP = 6,           // ... at 1 + (n - 1) p
  STATS_QUANTILE_MEDIAN_UNBIASED_MP = 7,  // ... at 1/3 + (n + 1/3) p
  STATS_QUANTILE_NORMAL_UNBIASED_MP = 8,  // ... at 3/8 + (n + 1/4) p
};

// The method's parameters: position x = a + (n + b) p and, with j = floor(x), estimate
// s[j] + (s[j+1] - s[j]) (c + d (x - j)).
void STATS_SetQuantileType_MP(VexaFloat& a, VexaFloat& b, VexaFloat& c, VexaFloat& d,
                              STATS_QUANTILE_TYPE_MP type);

// m quantiles of data[0..n-1], one per probability; weighted when weights is not null.
void STATS_Quantile_MP(VexaFloat* out, VexaFloat* data, VexaFloat* weights, VexaFloat* probs, int n,
                       int m, STATS_QUANTILE_TYPE_MP type);
void STATS_SimpleQuantile_MP(VexaFloat* out, VexaFloat* data, VexaFloat* probs, int n, int m,
                             STATS_QUANTILE_TYPE_MP type);
// Positions are measured in units of weight over the data sorted with its weights.
void STATS_WeightedQuantile_MP(VexaFloat* out, VexaFloat* data, VexaFloat* weights,
                               VexaFloat* probs, int n, int m, STATS_QUANTILE_TYPE_MP type);

// Order statistics by 1-based rank (1 <= rank <= n); weights are not used.
void STATS_OrderStatistic_MP(VexaFloat* out, VexaFloat* data, VexaFloat* weights, int* ranks, int n,
                             int m);
void STATS_SimpleOrderStatistic_MP(VexaFloat* out, VexaFloat* data, int* ranks, int n, int m);

// The median; an even count gives the mean of the two middle values. Weighted: the weighted
// quantile at 1/2 under method 1. Undefined for no data.
VexaFloat STATS_SimpleMedian_MP(VexaFloat* data, int n);
VexaFloat STATS_Median_MP(VexaFloat* data, VexaFloat* weights, int n);

// Kinds of mean. Every value other than 1, 2 and 3 means arithmetic.
enum STATS_MEAN_TYPE_MP : int32_t {
  STATS_MEAN_ARITHMETIC_MP = 0,  // sum x / n
  STATS_MEAN_GEOMETRIC_MP = 1,   // exp(sum log x / n)
  STATS_MEAN_HARMONIC_MP = 2,    // n / sum (1 / x)
  STATS_MEAN_QUADRATIC_MP = 3,   // sqrt(sum x^2 / n)
};

// Means of data[0..n-1]; weighted when weights is not null (weights in place of the count).
// Nothing is checked: no data, a zero total weight or data outside the kind's domain give
// the float's own undefined or infinite results. kv is used only to raise errors.
VexaFloat STATS_Mean_MP(VexaKernelVector kv, VexaFloat* data, VexaFloat* weights, int n,
                        STATS_MEAN_TYPE_MP type);
VexaFloat STATS_SimpleMean_MP(VexaKernelVector kv, VexaFloat* data, int n, STATS_MEAN_TYPE_MP type);
VexaFloat STATS_WeightedMean_MP(VexaKernelVector kv, VexaFloat* data, VexaFloat* weights, int n,
                                STATS_MEAN_TYPE_MP type);

// Means of the data between the fractions lower <= upper of [0, 1]. Simple: cut points
// lo = [n lower + 1/2], hi = [n upper + 1/2] (truncated); the order statistics lo .. hi - 1 are
// kept when lo + hi = n, lo .. hi - 2 otherwise. Winsorized: the cut data take the value of
// the nearest kept one. Weighted: cut by cumulative weight over the sorted data, the element
// at each cut keeping the part of its weight inside. Undefined when nothing is kept. The
// data (and weights) are reordered; the winsorized forms overwrite them.
VexaFloat STATS_TrimmedMean_MP(VexaKernelVector kv, VexaFloat* data, VexaFloat* weights, int n,
                               VexaFloat lower, VexaFloat upper, STATS_MEAN_TYPE_MP type);
VexaFloat STATS_SimpleTrimmedMean_MP(VexaKernelVector kv, VexaFloat* data, int n, VexaFloat lower,
                                     VexaFloat upper, STATS_MEAN_TYPE_MP type);
VexaFloat STATS_WeightedTrimmedMean_MP(VexaKernelVector kv, VexaFloat* data, VexaFloat* weights,
                                       int n, VexaFloat lower, VexaFloat upper,
                                       STATS_MEAN_TYPE_MP type);
VexaFloat STATS_WinsorizedMean_MP(VexaKernelVector kv, VexaFloat* data, VexaFloat* weights, int n,
                                  VexaFloat lower, VexaFloat upper, STATS_MEAN_TYPE_MP type);
VexaFloat STATS_SimpleWinsorizedMean_MP(VexaKernelVector kv, VexaFloat* data, int n,
                                        VexaFloat lower, VexaFloat upper, STATS_MEAN_TYPE_MP type);
VexaFloat STATS_WeightedWinsorizedMean_MP(VexaKernelVector kv, VexaFloat* data, VexaFloat* weights,
                                          int n, VexaFloat lower, VexaFloat upper,
                                          STATS_MEAN_TYPE_MP type);

// The retained block lo .. top - 1 (0-based order statistics) of the simple trim above.
void STATS_TrimBlock_MP(int n, VexaFloat lower, VexaFloat upper, int* lo, int* top);
class STATS_VexaEntry_MP;
// Arguments 2 and 3 of a trimming entry point, percentiles 0 <= lower <= upper <= 100 (else
// the trimmed mean's messages), as fractions of 1.
void STATS_PercentileFractions_MP(const STATS_VexaEntry_MP& entry, VexaFloat* lower,
                                  VexaFloat* upper);

// m raw moments sum (x - origin)^orders[j] / n (weighted: sum w (x - origin)^k / sum w).
void STATS_Moment_MP(VexaFloat* out, VexaFloat* data, VexaFloat* weights, int n, int* orders, int m,
                     VexaFloat origin);
void STATS_SimpleMoment_MP(VexaFloat* out, VexaFloat* data, int n, int* orders, int m,
                           VexaFloat origin);
void STATS_WeightedMoment_MP(VexaFloat* out, VexaFloat* data, VexaFloat* weights, int n,
                             int* orders, int m, VexaFloat origin);

// sum f(x) / n (weighted: sum w f(x) / sum w).
VexaFloat STATS_ExpectedValue_MP(VexaFloat (*f)(VexaFloat), VexaFloat* data, VexaFloat* weights,
                                 int n);
VexaFloat STATS_SimpleExpectedValue_MP(VexaFloat (*f)(VexaFloat), VexaFloat* data, int n);
VexaFloat STATS_WeightedExpectedValue_MP(VexaFloat (*f)(VexaFloat), VexaFloat* data,
                                         VexaFloat* weights, int n);

// sum |x - centre| / n (weighted: sum w |x - centre| / sum w).
VexaFloat STATS_AbsoluteDeviation_MP(VexaFloat* data, VexaFloat* weights, int n, VexaFloat centre);
VexaFloat STATS_SimpleAbsoluteDeviation_MP(VexaFloat* data, int n, VexaFloat centre);
VexaFloat STATS_WeightedAbsoluteDeviation_MP(VexaFloat* data, VexaFloat* weights, int n,
                                             VexaFloat centre);

extern "C" {
// (data, probability or list, weights, ignore, method, in place)
ALGEB STATS_VexaQuantile_MP(VexaKernelVector kv, ALGEB args);
// (data, rank or list of ranks, unused, ignore); a negative rank counts from the top.
ALGEB STATS_VexaOrderStatistic_MP(VexaKernelVector kv, ALGEB args);
// (data, weights, ignore, in place)
ALGEB STATS_VexaMedian_MP(VexaKernelVector kv, ALGEB args);
// (data, ignore): Array(1 .. 5) of minimum, lower hinge, median, upper hinge, maximum.
ALGEB STATS_VexaFivePointSummary_MP(VexaKernelVector kv, ALGEB args);
// (data, weights, ignore, mean type)
ALGEB STATS_VexaMean_MP(VexaKernelVector kv, ALGEB args);
// (data, lower percentile, upper percentile, weights, ignore, mean type)
ALGEB STATS_VexaTrimmedMean_MP(VexaKernelVector kv, ALGEB args);
ALGEB STATS_VexaWinsorizedMean_MP(VexaKernelVector kv, ALGEB args);
// (data, order or list of orders, origin, weights, ignore)
ALGEB STATS_VexaMoment_MP(VexaKernelVector kv, ALGEB args);
// (procedure, data, weights, ignore)
ALGEB STATS_VexaExpectedValue_MP(VexaKernelVector kv, ALGEB args);
// (data, centre, weights, ignore)
ALGEB STATS_VexaAbsoluteDeviation_MP(VexaKernelVector kv, ALGEB args);
// (data, weights, ignore): the median of the absolute deviations from the median.
ALGEB STATS_VexaMedianDeviation_MP(VexaKernelVector kv, ALGEB args);
}

#endif
