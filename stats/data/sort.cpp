// Sorting in the data order: a median-of-three quicksort (after Sedgewick) whose partition
// scans step two elements per comparison and so only approximately partition, leaving runs
// of up to five elements, followed by one straight insertion pass over the whole array that
// finishes the order. The weighted forms move a parallel array of weights along.
#include <utility>

#include "data/data.h"
#include "data/exchange.h"

namespace {

using namespace data_exchange;

template <bool kWeighted>
void InsertionSort(VexaFloat* a, VexaFloat* w, int lo, int hi) {
  VexaFloat x, y;
  for (int i = lo + 1; i <= hi; ++i) {
    x = a[i];
    if (kWeighted) y = w[i];
    int j = i;
    // An undefined x stays; a defined x passes every undefined value to its left.
    if (!IsVexaFloatUndefined(x)) {
      while (j > lo && (IsVexaFloatUndefined(a[j - 1]) || a[j - 1] > x)) {
        a[j] = a[j - 1];
        if (kWeighted) w[j] = w[j - 1];
        --j;
      }
    }
    a[j] = x;
    if (kWeighted) w[j] = y;
  }
}

// Upward scan from i: the element reached by the first step is only tested for being
// undefined, the one reached by the second is compared with the pivot.
inline int ScanUp(const VexaFloat* a, const VexaFloat& p, int i) {
  for (;;) {
    ++i;
    if (IsVexaFloatUndefined(a[i])) return i;
    if (IsVexaFloatUndefined(p)) continue;
    ++i;
    if (!(a[i] < p)) return i;
  }
}

// Downward scan from j, bounded by a[lo], which is not above the pivot. A second step that
// would leave the range stops at lo - 1 without reading there.
inline int ScanDown(const VexaFloat* a, const VexaFloat& p, int j, int lo) {
  if (IsVexaFloatUndefined(p)) return j;
  for (;;) {
    --j;
    if (IsVexaFloatUndefined(a[j])) continue;
    if (j == lo) return lo - 1;
    --j;
    if (!(a[j] > p)) return j;
  }
}

template <bool kWeighted>
void QuickSort(VexaFloat* a, VexaFloat* w, int lo, int hi) {
  if (hi - lo <= 4) return;
  const int mid = (lo + hi) / 2;
  CompareExchange<kWeighted>(a, w, lo, mid);
  CompareExchange<kWeighted>(a, w, lo, hi);
  CompareExchange<kWeighted>(a, w, mid, hi);
  Swap<kWeighted>(a, w, mid, hi - 1);
  const VexaFloat p = a[hi - 1];
  int i = lo, j = hi - 1;
  for (;;) {
    i = ScanUp(a, p, i);
    j = ScanDown(a, p, j, lo);
    if (i > j) break;
    Swap<kWeighted>(a, w, i, j);
  }
  Swap<kWeighted>(a, w, i, hi - 1);
  QuickSort<kWeighted>(a, w, lo, j);
  QuickSort<kWeighted>(a, w, i + 1, hi);
}

}  // namespace

void STATS_InsertionSort_MP(VexaFloat* a, int lo, int hi) {
  InsertionSort<false>(a, nullptr, lo, hi);
}

void STATS_InsertionSort_MP(VexaFloat* a, VexaFloat* w, int lo, int hi) {
  InsertionSort<true>(a, w, lo, hi);
}

void STATS_QuickSort_MP(VexaFloat* a, int lo, int hi) {
  QuickSort<false>(a, nullptr, lo, hi);
}

void STATS_QuickSort_MP(VexaFloat* a, VexaFloat* w, int lo, int hi) {
  QuickSort<true>(a, w, lo, hi);
}

void STATS_SortData_MP(VexaFloat* a, int n) {
  STATS_QuickSort_MP(a, 0, n - 1);
  STATS_InsertionSort_MP(a, 0, n - 1);
}

void STATS_SortData_MP(VexaFloat* a, VexaFloat* w, int n) {
  STATS_QuickSort_MP(a, w, 0, n - 1);
  STATS_InsertionSort_MP(a, w, 0, n - 1);
}
