// Heap sort with a sift-down whose first child is lo + 1 rather than 2 lo + 1. That rule is
// exact at the root, so the sorting phase is sound, but the heap built bottom-up is not
// always a true heap and a few orderings come out not fully sorted ([4, 3, 2, 1, 0, 5] gives
// [0, 1, 2, 3, 5, 4]). Kept as it is; no statistic calls it.
#include <utility>

#include "data/data.h"

void STATS_Shift_MP(VexaFloat* a, VexaFloat* w, int lo, int hi) {
  const VexaFloat x = a[lo], y = w[lo];
  int k = lo;
  long long c = static_cast<long long>(lo) + 1;
  while (c <= hi) {
    int j = static_cast<int>(c);
    if (j < hi && !IsVexaFloatUndefined(a[j])) {
      // The larger child, an undefined one counting as the largest.
      if (IsVexaFloatUndefined(a[j + 1]) || a[j] < a[j + 1]) ++j;
    }
    if (x >= a[j]) break;  // false whenever either is undefined
    a[k] = a[j];
    w[k] = w[j];
    k = j;
    c = 2LL * j + 1;
  }
  a[k] = x;
  w[k] = y;
}

void STATS_HeapSort_MP(VexaFloat* a, VexaFloat* w, int n) {
  for (int k = n / 2 - 1; k >= 0; --k) STATS_Shift_MP(a, w, k, n - 1);
  for (int m = 0; m <= n - 2; ++m) {
    std::swap(a[0], a[n - 1 - m]);
    std::swap(w[0], w[n - 1 - m]);
    STATS_Shift_MP(a, w, 0, n - m - 2);
  }
}
