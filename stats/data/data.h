// Data handling: host rtables as contiguous VexaFloat vectors and (weighted) samples, the copy
// functions that drop missing values, and the in-place sorting and selection kernels that
// every order-based statistic rests on. Missing data are undefined floats; in the data order
// they come after every defined value.
#ifndef STATS_DATA_DATA_H
#define STATS_DATA_DATA_H

#include <memory>

#include "vexa/external.h"
#include "vexa/float.h"

// ---- Vectors and samples ----

// A one-dimensional host rtable as contiguous VexaFloat values. A rectangular sfloat rtable
// is used in place; any other is converted once into a new sfloat rtable (working), which
// stays protected from the collector for the life of the host.
class STATS_Vector_MP {
 public:
  STATS_Vector_MP(VexaKernelVector kv, ALGEB rtable);
  // Deliberately do nothing: a copy is left unset, and destruction keeps the working rtable
  // protected.
  STATS_Vector_MP(const STATS_Vector_MP&) {}
  ~STATS_Vector_MP() {}
  STATS_Vector_MP& operator=(const STATS_Vector_MP&) = delete;

  // Raises "invalid data sample, expected: rtable, received %1" for anything but an rtable.
  static void SetData(VexaKernelVector kv, STATS_Vector_MP* self, ALGEB rtable);
  static void ConvertData(VexaKernelVector kv, STATS_Vector_MP* self);
  // A protected rectangular sfloat copy of the rtable; nothing in the library calls it.
  static void* VexaConvertData(void* rtable);

  int size() const;  // extent of dimension 1 of the source, 0 when empty
  VexaFloat* data() const { return m_data; }
  ALGEB source() const { return m_source; }
  // True when data lives in an rtable of the library's own rather than the caller's.
  bool converted() const { return m_working != nullptr && m_working != m_source; }

 private:
  ALGEB m_source;
  ALGEB m_working;
  VexaFloat* m_data;
  VexaKernelVector m_kv;
};

// Points with optional weights of the same length. An empty weights rtable means unweighted.
class STATS_VexaDataSample_MP {
 public:
  STATS_VexaDataSample_MP(VexaKernelVector kv, ALGEB points);
  // Raises "vector of points and vector of weights are expected to have the same size,
  // received %1, %2" (the two rtables) when the sizes differ.
  STATS_VexaDataSample_MP(VexaKernelVector kv, ALGEB points, ALGEB weights);
  // Deliberately makes two unset vectors, so that a copy always reports itself weighted.
  STATS_VexaDataSample_MP(const STATS_VexaDataSample_MP& other);
  STATS_VexaDataSample_MP& operator=(const STATS_VexaDataSample_MP&) = delete;
  ~STATS_VexaDataSample_MP() {}

  VexaFloat* points() const { return m_points->data(); }
  VexaFloat* weights() const { return m_weights ? m_weights->data() : nullptr; }
  bool weighted() const { return m_weights != nullptr; }
  int size() const { return m_points->size(); }
  const STATS_Vector_MP& pointsVector() const { return *m_points; }
  const STATS_Vector_MP* weightsVector() const { return m_weights.get(); }

 private:
  std::unique_ptr<STATS_Vector_MP> m_points;
  std::unique_ptr<STATS_Vector_MP> m_weights;
  VexaKernelVector m_kv;
};

// Copies n values (or pairs), dropping missing ones when ignoreMissing is set; returns the
// count written. out may be in itself: values only move down.
int STATS_CopySimpleData_MP(const VexaFloat* in, VexaFloat* out, int n, int ignoreMissing);
int STATS_CopyWeightedData_MP(const VexaFloat* inPoints, const VexaFloat* inWeights,
                              VexaFloat* outPoints, VexaFloat* outWeights, int n,
                              int ignoreMissing);
// The points only, missing values kept.
int STATS_CopyData_MP(const STATS_VexaDataSample_MP& sample, VexaFloat* out);
// Points and, for a weighted sample, weights.
int STATS_CopyData_MP(const STATS_VexaDataSample_MP& sample, VexaFloat* outPoints,
                      VexaFloat* outWeights, int ignoreMissing);

// Bytes of one rectangular element of the data type (handles are sizeof(ALGEB) wide);
// 4 for an unknown type.
int STATS_RTableDataSize_MP(VexaKernelVector kv, int datatype);
// A new rectangular sfloat rtable lo .. hi, every element 0.
ALGEB STATS_NewFloatRTable_MP(VexaKernelVector kv, M_INT lo, M_INT hi);

// ---- Sorting and selection kernels (in place, inclusive bounds, 0-based) ----

// The data order: x after y. Undefined is after every defined value and not after another
// undefined one.
inline bool STATS_DataGreater_MP(const VexaFloat& x, const VexaFloat& y) {
  if (IsVexaFloatUndefined(y)) return false;
  if (IsVexaFloatUndefined(x)) return true;
  return x > y;
}

// Stable; w, when given, moves with a.
void STATS_InsertionSort_MP(VexaFloat* a, int lo, int hi);
void STATS_InsertionSort_MP(VexaFloat* a, VexaFloat* w, int lo, int hi);
// Median-of-three quicksort with double-stepping scans; leaves runs of up to 5 elements and
// an approximate order for the insertion pass of STATS_SortData_MP.
void STATS_QuickSort_MP(VexaFloat* a, int lo, int hi);
void STATS_QuickSort_MP(VexaFloat* a, VexaFloat* w, int lo, int hi);
// Sorts a[0..n-1] in the data order.
void STATS_SortData_MP(VexaFloat* a, int n);
void STATS_SortData_MP(VexaFloat* a, VexaFloat* w, int n);
// The k-th smallest (0-based) of a[0..n-1]; afterwards nothing before k is after a[k] and
// nothing after k is before it. The caller keeps 0 <= k < n; the weighted form clamps k.
VexaFloat STATS_QuickSelect_MP(VexaFloat* a, int n, int k);
VexaFloat STATS_QuickSelect_MP(VexaFloat* a, VexaFloat* w, int n, int k);
// Sift-down of a[lo] within a[lo..hi], first child lo + 1; and the heap sort built on it
// (not always fully sorted: see heap_sort.cpp).
void STATS_Shift_MP(VexaFloat* a, VexaFloat* w, int lo, int hi);
void STATS_HeapSort_MP(VexaFloat* a, VexaFloat* w, int n);

// Swaps n bytes of a and b through scratch.
void STATS_SwapByteArrays_MP(char* a, char* b, char* scratch, int n);

// Three-way comparisons of two raw rtable elements: -1 before, 0 equal, 1 after. Missing
// values (NaN, undefined) come last, and two of them compare as 1 either way.
int STATS_NumericCompareINTEGER8_MP(const char* a, const char* b);
int STATS_NumericCompareINTEGER16_MP(const char* a, const char* b);
int STATS_NumericCompareINTEGER32_MP(const char* a, const char* b);
int STATS_NumericCompareINTEGER64_MP(const char* a, const char* b);
int STATS_NumericCompareFLOAT64_MP(const char* a, const char* b);
int STATS_NumericCompareFLOAT32_MP(const char* a, const char* b);
int STATS_NumericCompareALGEB_MP(const char* a, const char* b);
typedef int (*STATS_Comparator_MP)(const char*, const char*);
// The comparator for an rtable data type; null for the complex types and unknown codes.
STATS_Comparator_MP STATS_NumericComparator_MP(int datatype);

// ---- Arranging host arrays ----

// Fisher-Yates shuffle of n raw elements of the given width, in place, with indices from the
// host stream by the minimal-bits rule; scratch holds one element.
void STATS_Shuffle_MP(char* block, int n, int width, char* scratch);
// Data sharpening (Choi and Hall, 1999): out[i] is one Gaussian mean-shift step from
// data[i], sum w_j x_j K((x_i - x_j) / h) / sum w_j K(...), K(u) = exp(-u^2 / 2); weights may
// be null. Undefined points (or weights) take no part and stay undefined; h = 0 leaves the
// data as they are. O(n^2) kernel evaluations.
void STATS_Sharpen_MP(VexaFloat* out, const VexaFloat* data, const VexaFloat* weights, int n,
                      VexaFloat h);
// Silverman's rule 0.9 min(s, IQR / 1.34) n^(-1/5) over the defined data (the larger of the
// two spreads when the smaller is 0; 0 for fewer than two data).
VexaFloat STATS_SilvermanBandwidth_MP(const VexaFloat* data, const VexaFloat* weights, int n);

extern "C" {
// (A, ignore, descending): a sorted copy, stable, missing values last (first descending).
ALGEB STATS_VexaSort_MP(VexaKernelVector kv, ALGEB args);
// (A, ignore): the positions 1 .. n of A's elements in sorted order, integer[4].
ALGEB STATS_VexaOrderByRank_MP(VexaKernelVector kv, ALGEB args);
// (A, ignore, ties): ranks; ties 1 average (float[8]), 2 minimum, 3 maximum, 4 first
// (integer[4]). Missing values rank after the others in their order.
ALGEB STATS_VexaRank_MP(VexaKernelVector kv, ALGEB args);
// (A): a uniform random permutation of A.
ALGEB STATS_VexaShuffle_MP(VexaKernelVector kv, ALGEB args);
// (A, weights, bandwidth): A sharpened; bandwidth 0 takes Silverman's rule.
ALGEB STATS_VexaSharpen_MP(VexaKernelVector kv, ALGEB args);
// (A, predicate): the elements for which the predicate is true / not true, in order.
ALGEB STATS_VexaSelect_MP(VexaKernelVector kv, ALGEB args);
ALGEB STATS_VexaRemove_MP(VexaKernelVector kv, ALGEB args);
// (A, lower percentile, upper percentile, ignore): the elements inside the trimmed mean's
// cut points, in order; or every element with those outside clamped to the cut values.
ALGEB STATS_VexaTrim_MP(VexaKernelVector kv, ALGEB args);
ALGEB STATS_VexaWinsorize_MP(VexaKernelVector kv, ALGEB args);
}

// ---- Tallies and counts ----

// Bins: S ranges of K bins each; range j has the ascending boundaries bounds[j (K + 1) ..
// j (K + 1) + K] and bin i of it holds b_i <= x < b_(i+1), the last bin also x = b_K. A value
// outside every range, or undefined, is counted nowhere; ranges may overlap.

// The bin i with bounds[i] <= x < bounds[i + 1], by bisection; the caller keeps
// bounds[0] <= x < bounds[K].
int STATS_TallyIntoFindBin_MP(VexaFloat* bounds, int K, VexaFloat x);
// counts[j K + i]: the number of data in bin i of range j.
void STATS_SimpleTallyInto_MP(int* counts, VexaFloat* data, int n, VexaFloat* bounds, int S, int K);
// sums[j K + i]: the total weight of the data in bin i of range j.
void STATS_WeightedTallyInto_MP(VexaFloat* sums, VexaFloat* data, VexaFloat* weights, int n,
                                VexaFloat* bounds, int S, int K);

extern "C" {
// (data, weights, ignore, [lo..hi, ...], K): [(b_i .. b_(i+1)) = count, ...] in order of
// ranges and bins; counts are integers, or weight sums when weighted.
ALGEB STATS_VexaTallyInto_MP(VexaKernelVector kv, ALGEB args);
// (data, weights, ignore, lo..hi, K): [lower boundaries, upper boundaries, counts], three
// sfloat Arrays 1 .. K.
ALGEB STATS_VexaFrequencyData_MP(VexaKernelVector kv, ALGEB args);
// (data, weights, ignore): the number of data (weighted: their total weight); with ignore = 1
// only the defined ones.
ALGEB STATS_VexaCount_MP(VexaKernelVector kv, ALGEB args);
// (data, weights): the number of undefined data (weighted: the defined weights they carry).
ALGEB STATS_VexaCountMissing_MP(VexaKernelVector kv, ALGEB args);
// (data): a new sfloat Array of the data as host floats, with the source's lower bound.
ALGEB STATS_VexaEvaluateToFloat_MP(VexaKernelVector kv, ALGEB args);
}

#endif
