// Order statistics by rank and the median. Each further rank is selected in the part of the
// array that the previous selection left holding it; the median selects its middle ranks
// together.
#include "data/data.h"
#include "descriptive/descriptive.h"

void STATS_OrderStatistic_MP(VexaFloat* out, VexaFloat* data, VexaFloat*, int* ranks, int n,
                             int m) {
  STATS_SimpleOrderStatistic_MP(out, data, ranks, n, m);
}

void STATS_SimpleOrderStatistic_MP(VexaFloat* out, VexaFloat* data, int* ranks, int n, int m) {
  if (n < 1 || m < 1) return;
  out[0] = STATS_QuickSelect_MP(data, n, ranks[0] - 1);
  for (int i = 1; i < m; ++i) {
    const int previous = ranks[i - 1], rank = ranks[i];
    if (rank == previous)
      out[i] = out[i - 1];
    else if (rank < previous)  // below the previous one: among the first previous - 1
      out[i] = STATS_QuickSelect_MP(data, previous - 1, rank - 1);
    else  // above it: in the tail that starts at the previous one
      out[i] = STATS_QuickSelect_MP(data + previous - 1, n - previous + 1, rank - previous);
  }
}

VexaFloat STATS_SimpleMedian_MP(VexaFloat* data, int n) {
  if (n < 1) return VexaFloatUndefined();
  if (n % 2 == 1) {
    const int middle = (n - 1) / 2;
    STATS_SelectOrderStatistics_MP(data, n, &middle, 1);
    return data[middle];
  }
  const int h = n / 2;
  const int ranks[] = {h - 1, h};
  STATS_SelectOrderStatistics_MP(data, n, ranks, 2);
  return (data[h] + data[h - 1]) / VexaFloat(2);
}

VexaFloat STATS_Median_MP(VexaFloat* data, VexaFloat* weights, int n) {
  if (weights == nullptr) return STATS_SimpleMedian_MP(data, n);
  if (n < 1) return VexaFloatUndefined();
  VexaFloat half(0.5), median;
  STATS_WeightedQuantile_MP(&median, data, weights, &half, n, 1, STATS_QUANTILE_INVERSE_EDF_MP);
  return median;
}
