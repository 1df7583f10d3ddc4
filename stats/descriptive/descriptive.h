// Descriptive statistics: sample quantiles under eight interpolation methods (simple and
// weighted), order statistics, medians and the five-point summary, with their host entry
// points. Workers rearrange the data array they are given.
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

extern "C" {
// (data, probability or list, weights, ignore, method, in place)
ALGEB STATS_VexaQuantile_MP(VexaKernelVector kv, ALGEB args);
// (data, rank or list of ranks, unused, ignore); a negative rank counts from the top.
ALGEB STATS_VexaOrderStatistic_MP(VexaKernelVector kv, ALGEB args);
// (data, weights, ignore, in place)
ALGEB STATS_VexaMedian_MP(VexaKernelVector kv, ALGEB args);
// (data, ignore): Array(1 .. 5) of minimum, lower hinge, median, upper hinge, maximum.
ALGEB STATS_VexaFivePointSummary_MP(VexaKernelVector kv, ALGEB args);
}

#endif
