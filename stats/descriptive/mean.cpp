// Means of four kinds (arithmetic, geometric, harmonic, quadratic), simple and weighted, and
// their trimmed and winsorized forms. Sums start from zero and run in data order; every
// operation rounds to Digits, so exact decimal data give results rounded once where the
// arithmetic allows (the harmonic mean of 1, 2, 4 is 12/7).
#include <algorithm>

#include "data/data.h"
#include "descriptive/descriptive.h"
#include "frame/frame.h"

namespace {

VexaFloat Count(int n) {
  return VexaFloat(static_cast<double>(n));
}

// Clamps a cut point n * fraction + 1/2 (truncated) into 0 .. n.
int CutPoint(int n, const VexaFloat& fraction) {
  const int k = STATS_DoubleToInteger_MP(Count(n) * fraction + VexaFloat(0.5));
  return std::min(std::max(k, 0), n);
}

// The end of the retained block: one fewer at the top unless the cuts are symmetric.
int BlockTop(int n, int lo, int hi) {
  return lo + hi == n ? hi : hi - 1;
}

// The retained block of a simple trim: order statistics lo .. top - 1, one fewer at the top
// unless the two cuts are symmetric (lo + hi = n). Afterwards data[lo .. top - 1] hold them,
// data[lo] is the smallest and data[top - 1] the largest of the block. Returns top.
int SelectBlock(VexaFloat* data, int n, int lo, int hi) {
  const int top = BlockTop(n, lo, hi);
  if (top <= lo) return top;
  STATS_QuickSelect_MP(data, n, lo);
  if (top - 1 > lo) STATS_QuickSelect_MP(data + lo, n - lo, top - 1 - lo);
  return top;
}

// The weight of each sorted element that lies within the cumulative-weight interval
// [lower W, W - (1 - upper) W], written over the weights; returns W.
VexaFloat KeepWeightInside(VexaFloat* weights, int n, const VexaFloat& lower,
                           const VexaFloat& upper, VexaFloat* cutLow, VexaFloat* cutHigh) {
  VexaFloat total;
  for (int i = 0; i < n; ++i) total += weights[i];
  *cutLow = lower * total;
  *cutHigh = total - (VexaFloat(1) - upper) * total;
  VexaFloat below;  // cumulative weight before element i
  for (int i = 0; i < n; ++i) {
    const VexaFloat above = below + weights[i];
    const VexaFloat from = below > *cutLow ? below : *cutLow;
    const VexaFloat to = above < *cutHigh ? above : *cutHigh;
    weights[i] = to > from ? to - from : VexaFloat();
    below = above;
  }
  return total;
}

// Moves the elements of positive weight to the front, in order; returns their count.
int DropWeightless(VexaFloat* data, VexaFloat* weights, int n) {
  int k = 0;
  for (int i = 0; i < n; ++i) {
    if (!(weights[i] > 0)) continue;
    data[k] = data[i];
    weights[k] = weights[i];
    ++k;
  }
  return k;
}

}  // namespace

void STATS_TrimBlock_MP(int n, VexaFloat lower, VexaFloat upper, int* lo, int* top) {
  *lo = CutPoint(n, lower);
  *top = BlockTop(n, *lo, CutPoint(n, upper));
}

VexaFloat STATS_SimpleMean_MP(VexaKernelVector, VexaFloat* data, int n, STATS_MEAN_TYPE_MP type) {
  VexaFloat sum;
  if (type == STATS_MEAN_HARMONIC_MP) {
    for (int i = 0; i < n; ++i) sum += VexaFloat(1) / data[i];
    return Count(n) * VexaFloat(1) / sum;
  }
  if (type == STATS_MEAN_QUADRATIC_MP) {
    for (int i = 0; i < n; ++i) sum += data[i] * data[i];
    return sqrt(sum / Count(n));
  }
  if (type != STATS_MEAN_GEOMETRIC_MP) {
    for (int i = 0; i < n; ++i) sum += data[i];
    return sum / Count(n);
  }
  for (int i = 0; i < n; ++i) sum += log(data[i]);
  return exp(sum / Count(n));
}

VexaFloat STATS_WeightedMean_MP(VexaKernelVector, VexaFloat* data, VexaFloat* weights, int n,
                                STATS_MEAN_TYPE_MP type) {
  VexaFloat sum, total;
  for (int i = 0; i < n; ++i) total += weights[i];
  if (type == STATS_MEAN_HARMONIC_MP) {
    for (int i = 0; i < n; ++i) sum += weights[i] / data[i];
    return total / sum;
  }
  if (type == STATS_MEAN_QUADRATIC_MP) {
    for (int i = 0; i < n; ++i) sum += data[i] * data[i] * weights[i];
    return sqrt(sum / total);
  }
  if (type != STATS_MEAN_GEOMETRIC_MP) {
    for (int i = 0; i < n; ++i) sum += data[i] * weights[i];
    return sum / total;
  }
  for (int i = 0; i < n; ++i) sum += weights[i] * log(data[i]);
  return exp(sum / total);
}

VexaFloat STATS_Mean_MP(VexaKernelVector kv, VexaFloat* data, VexaFloat* weights, int n,
                        STATS_MEAN_TYPE_MP type) {
  return weights != nullptr ? STATS_WeightedMean_MP(kv, data, weights, n, type)
                            : STATS_SimpleMean_MP(kv, data, n, type);
}

VexaFloat STATS_SimpleTrimmedMean_MP(VexaKernelVector kv, VexaFloat* data, int n, VexaFloat lower,
                                     VexaFloat upper, STATS_MEAN_TYPE_MP type) {
  const int lo = CutPoint(n, lower);
  const int top = SelectBlock(data, n, lo, CutPoint(n, upper));
  if (top <= lo) return VexaFloatUndefined();
  return STATS_SimpleMean_MP(kv, data + lo, top - lo, type);
}

VexaFloat STATS_SimpleWinsorizedMean_MP(VexaKernelVector kv, VexaFloat* data, int n,
                                        VexaFloat lower, VexaFloat upper, STATS_MEAN_TYPE_MP type) {
  const int lo = CutPoint(n, lower);
  const int top = SelectBlock(data, n, lo, CutPoint(n, upper));
  if (top <= lo) return VexaFloatUndefined();
  for (int i = 0; i < lo; ++i) data[i] = data[lo];
  for (int i = top; i < n; ++i) data[i] = data[top - 1];
  return STATS_SimpleMean_MP(kv, data, n, type);
}

VexaFloat STATS_WeightedTrimmedMean_MP(VexaKernelVector kv, VexaFloat* data, VexaFloat* weights,
                                       int n, VexaFloat lower, VexaFloat upper,
                                       STATS_MEAN_TYPE_MP type) {
  STATS_SortData_MP(data, weights, n);
  VexaFloat cutLow, cutHigh;
  KeepWeightInside(weights, n, lower, upper, &cutLow, &cutHigh);
  const int k = DropWeightless(data, weights, n);
  if (k == 0) return VexaFloatUndefined();
  return STATS_WeightedMean_MP(kv, data, weights, k, type);
}

// The weight cut from the bottom goes to the value of the lowest kept element, the weight cut
// from the top to the value of the highest.
VexaFloat STATS_WeightedWinsorizedMean_MP(VexaKernelVector kv, VexaFloat* data, VexaFloat* weights,
                                          int n, VexaFloat lower, VexaFloat upper,
                                          STATS_MEAN_TYPE_MP type) {
  STATS_SortData_MP(data, weights, n);
  VexaFloat cutLow, cutHigh;
  const VexaFloat total = KeepWeightInside(weights, n, lower, upper, &cutLow, &cutHigh);
  const int k = DropWeightless(data, weights, n);
  if (k == 0) return VexaFloatUndefined();
  weights[0] += cutLow;
  weights[k - 1] += total - cutHigh;
  return STATS_WeightedMean_MP(kv, data, weights, k, type);
}

VexaFloat STATS_TrimmedMean_MP(VexaKernelVector kv, VexaFloat* data, VexaFloat* weights, int n,
                               VexaFloat lower, VexaFloat upper, STATS_MEAN_TYPE_MP type) {
  return weights != nullptr ? STATS_WeightedTrimmedMean_MP(kv, data, weights, n, lower, upper, type)
                            : STATS_SimpleTrimmedMean_MP(kv, data, n, lower, upper, type);
}

VexaFloat STATS_WinsorizedMean_MP(VexaKernelVector kv, VexaFloat* data, VexaFloat* weights, int n,
                                  VexaFloat lower, VexaFloat upper, STATS_MEAN_TYPE_MP type) {
  return weights != nullptr
             ? STATS_WeightedWinsorizedMean_MP(kv, data, weights, n, lower, upper, type)
             : STATS_SimpleWinsorizedMean_MP(kv, data, n, lower, upper, type);
}
