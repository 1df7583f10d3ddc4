// Selection of the k-th smallest value in the data order by Hoare's quickselect, iterative,
// with the median of three of the ends and the middle as pivot (the form of Numerical
// Recipes' select). The weighted form moves a parallel array of weights along.
#include <utility>

#include "data/data.h"
#include "data/exchange.h"

namespace {

using namespace data_exchange;

// The scans are bound by the memory latency of the float nodes, not by the comparisons:
// the nodes a few elements ahead are fetched early.
constexpr int kAhead = 12;
inline void Prefetch(const VexaFloat* a, int i) {
  __builtin_prefetch(a[i].Handle());
}

// The scans' conditions in the data order: x defined and before a defined pivot (a
// comparison with undefined is false), or x defined at all when the pivot is undefined; and
// the pivot defined with x after it or undefined.
inline bool ScanUpPasses(const VexaFloat& x, const VexaFloat& p, bool pDefined) {
  return pDefined ? x < p : !IsVexaFloatUndefined(x);
}
inline bool ScanDownPasses(const VexaFloat& x, const VexaFloat& p, bool pDefined) {
  return pDefined && (x > p || IsVexaFloatUndefined(x));
}

template <bool kWeighted>
VexaFloat QuickSelect(VexaFloat* a, VexaFloat* w, int n, int k) {
  int l = 0, r = n - 1;
  for (;;) {
    if (r <= l + 1) {
      if (r == l + 1) CompareExchange<kWeighted>(a, w, l, r);
      return a[k];
    }
    Swap<kWeighted>(a, w, (l + r) >> 1, l + 1);
    CompareExchange<kWeighted>(a, w, l, r);
    CompareExchange<kWeighted>(a, w, l + 1, r);
    CompareExchange<kWeighted>(a, w, l, l + 1);
    // a[l] <= p <= a[r] in the data order bound both scans.
    const VexaFloat p = a[l + 1];
    VexaFloat q;
    if (kWeighted) q = w[l + 1];
    const bool pDefined = !IsVexaFloatUndefined(p);
    int i = l + 1, j = r;
    for (;;) {
      do {
        ++i;
        if (i + kAhead <= r) Prefetch(a, i + kAhead);
      } while (ScanUpPasses(a[i], p, pDefined));
      do {
        --j;
        if (j - kAhead >= l) Prefetch(a, j - kAhead);
      } while (ScanDownPasses(a[j], p, pDefined));
      if (i > j) break;
      Swap<kWeighted>(a, w, i, j);
    }
    a[l + 1] = a[j];
    a[j] = p;
    if (kWeighted) {
      w[l + 1] = w[j];
      w[j] = q;
    }
    if (j >= k) r = j - 1;
    if (j <= k) l = i;
  }
}

}  // namespace

VexaFloat STATS_QuickSelect_MP(VexaFloat* a, int n, int k) {
  return QuickSelect<false>(a, nullptr, n, k);
}

VexaFloat STATS_QuickSelect_MP(VexaFloat* a, VexaFloat* w, int n, int k) {
  if (k < 0) return STATS_QuickSelect_MP(a, w, n, 0);
  if (k >= n) return STATS_QuickSelect_MP(a, w, n, n - 1);
  return QuickSelect<true>(a, w, n, k);
}
