// Sample quantiles after Hyndman and Fan, "Sample quantiles in statistical packages" (1996):
// the position x = a + (n + b) p among the order statistics, then the order statistic at
// floor(x) moved toward the next one by c + d (x - floor(x)). The simple form selects the
// order statistics it needs all together (on large arrays over 64-bit order keys, with the
// exact comparison where keys are close); the weighted form sorts once and measures
// positions in units of weight.
#include <stdint.h>

#include <algorithm>
#include <vector>

#include "data/data.h"
#include "descriptive/descriptive.h"
#include "vexa/float_key.h"

namespace {

// The estimate from the selected value v and the next order statistic w.
VexaFloat Interpolate(const VexaFloat& v, const VexaFloat& w, const VexaFloat& c,
                      const VexaFloat& d, const VexaFloat& fraction) {
  return v + (w - v) * (c + d * fraction);
}

constexpr int kAhead = 12;           // nodes fetched this many elements ahead of a pass
constexpr int kKeyedFrom = 1 << 12;  // below this, exact selection rank by rank is as fast

// Puts the order statistics of the given increasing 0-based ranks (offset into a) in their
// places: the middle rank is selected first, which splits the array for the ranks on either
// side. About n log2(m) element visits for m ranks, against m n for selecting each in turn.
void SelectRanks(VexaFloat* a, int len, const int* ranks, int count, int offset) {
  if (count == 0 || len < 1) return;
  const int mid = count / 2, k = ranks[mid] - offset;
  STATS_QuickSelect_MP(a, len, k);
  SelectRanks(a, k, ranks, mid, offset);
  SelectRanks(a + k + 1, len - k - 1, ranks + mid + 1, count - mid - 1, offset + k + 1);
}

// A value beside its order key, so that a selection pass reads one contiguous array instead
// of a float node per comparison.
struct Keyed {
  uint64_t key;
  VexaFloat value;
};

// The data order, decided by the keys where they are clearly apart.
inline bool KeyedBefore(const Keyed& x, const Keyed& y) {
  if (VexaFloatKeyLess(x.key, y.key)) return true;
  if (VexaFloatKeyLess(y.key, x.key)) return false;
  return STATS_DataGreater_MP(y.value, x.value);
}

void SelectKeyedRanks(Keyed* a, int len, const int* ranks, int count, int offset) {
  if (count == 0 || len < 1) return;
  const int mid = count / 2, k = ranks[mid] - offset;
  std::nth_element(a, a + k, a + len, KeyedBefore);
  SelectKeyedRanks(a, k, ranks, mid, offset);
  SelectKeyedRanks(a + k + 1, len - k - 1, ranks + mid + 1, count - mid - 1, offset + k + 1);
}

}  // namespace

void STATS_SelectOrderStatistics_MP(VexaFloat* data, int n, const int* ranks, int count) {
  if (n < kKeyedFrom) {
    SelectRanks(data, n, ranks, count, 0);
    return;
  }
  std::vector<Keyed> keyed;
  keyed.reserve(static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) {
    if (i + kAhead < n) __builtin_prefetch(data[i + kAhead].Handle());
    const uint64_t key = VexaFloatKey(data[i]);
    if (key == kVexaFloatNoKey) {  // a value beyond the keys' range: exact comparisons only
      SelectRanks(data, n, ranks, count, 0);
      return;
    }
    keyed.push_back({key, data[i]});
  }
  SelectKeyedRanks(keyed.data(), n, ranks, count, 0);
  for (int i = 0; i < n; ++i) data[i] = keyed[i].value;
}

void STATS_SetQuantileType_MP(VexaFloat& a, VexaFloat& b, VexaFloat& c, VexaFloat& d,
                              STATS_QUANTILE_TYPE_MP type) {
  a = b = c = d = VexaFloat(0);
  const VexaFloat one(1);
  switch (type) {
    case STATS_QUANTILE_NEAREST_MP:
      a = one / 2;
      break;
    case STATS_QUANTILE_LINEAR_NP_MP:
      d = one;
      break;
    case STATS_QUANTILE_HAZEN_MP:
      a = one / 2;
      d = one;
      break;
    case STATS_QUANTILE_WEIBULL_MP:
      b = one;
      d = one;
      break;
    case STATS_QUANTILE_GUMBEL_MP:
      a = one;
      b = -one;
      d = one;
      break;
    case STATS_QUANTILE_MEDIAN_UNBIASED_MP:
      a = one / 3;
      b = one / 3;
      d = one;
      break;
    case STATS_QUANTILE_NORMAL_UNBIASED_MP:
      a = VexaFloat(3) / 8;
      b = one / 4;
      d = one;
      break;
    default:  // the inverse of the empirical distribution function
      c = one;
      break;
  }
}

void STATS_Quantile_MP(VexaFloat* out, VexaFloat* data, VexaFloat* weights, VexaFloat* probs, int n,
                       int m, STATS_QUANTILE_TYPE_MP type) {
  if (weights != nullptr)
    STATS_WeightedQuantile_MP(out, data, weights, probs, n, m, type);
  else
    STATS_SimpleQuantile_MP(out, data, probs, n, m, type);
}

void STATS_SimpleQuantile_MP(VexaFloat* out, VexaFloat* data, VexaFloat* probs, int n, int m,
                             STATS_QUANTILE_TYPE_MP type) {
  if (n < 1 || m < 1) return;
  VexaFloat a, b, c, d;
  STATS_SetQuantileType_MP(a, b, c, d, type);
  std::vector<int> lower(m), upper(m);
  std::vector<VexaFloat> fraction(m);
  const VexaFloat scale = VexaFloat(n) + b;
  for (int j = 0; j < m; ++j) {
    const VexaFloat x = a + scale * probs[j];
    const VexaFloat whole = floor(x);
    lower[j] = FloatToInt(whole) - 1;
    if (lower[j] < 0) lower[j] = 0;
    // x = n + something only at p = 1 (or when x was rounded at a low Digits).
    if (lower[j] >= n) lower[j] = n - 1;
    upper[j] = FloatToInt(ceil(x)) - 1;
    if (upper[j] < 0) upper[j] = 0;
    fraction[j] = x - whole;
  }
  // Every order statistic needed (the one at the lower index and, where the estimate moves
  // toward it, the next), selected together.
  std::vector<int> ranks;
  for (int j = 0; j < m; ++j) {
    ranks.push_back(lower[j]);
    if (lower[j] != upper[j] && lower[j] != n - 1) ranks.push_back(lower[j] + 1);
  }
  std::sort(ranks.begin(), ranks.end());
  ranks.erase(std::unique(ranks.begin(), ranks.end()), ranks.end());
  STATS_SelectOrderStatistics_MP(data, n, ranks.data(), static_cast<int>(ranks.size()));
  for (int j = 0; j < m; ++j) {
    const VexaFloat& v = data[lower[j]];
    out[j] = lower[j] == upper[j] || lower[j] == n - 1
                 ? v
                 : Interpolate(v, data[lower[j] + 1], c, d, fraction[j]);
  }
}

void STATS_WeightedQuantile_MP(VexaFloat* out, VexaFloat* data, VexaFloat* weights,
                               VexaFloat* probs, int n, int m, STATS_QUANTILE_TYPE_MP type) {
  if (n < 1 || m < 1) return;
  VexaFloat a, b, c, d;
  STATS_SetQuantileType_MP(a, b, c, d, type);
  VexaFloat total = weights[0];
  for (int i = 1; i < n; ++i) total += weights[i];
  STATS_SortData_MP(data, weights, n);
  const VexaFloat scale = total + b;
  for (int j = 0; j < m; ++j) {
    const VexaFloat x = a + scale * probs[j];
    // k: one before the first point whose running weight exceeds x.
    int k = n - 1;
    VexaFloat running;
    for (int i = 0; i < n; ++i) {
      running += weights[i];
      if (running > x) {
        k = i > 0 ? i - 1 : 0;
        break;
      }
    }
    const VexaFloat& v = data[k];
    const VexaFloat& w = k < n - 1 ? data[k + 1] : data[k];
    // The fraction is that of x itself, in units of weight.
    out[j] = Interpolate(v, w, c, d, x - floor(x));
  }
}
