// Sample quantiles after Hyndman and Fan, "Sample quantiles in statistical packages" (1996):
// the position x = a + (n + b) p among the order statistics, then the order statistic at
// floor(x) moved toward the next one by c + d (x - floor(x)). The simple form finds the
// order statistics it needs by quickselect, all probabilities together; the weighted form
// sorts once and measures positions in units of weight.
#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include "data/data.h"
#include "descriptive/descriptive.h"

namespace {

// The estimate from the selected value v and the next order statistic w.
VexaFloat Interpolate(const VexaFloat& v, const VexaFloat& w, const VexaFloat& c,
                      const VexaFloat& d, const VexaFloat& fraction) {
  return v + (w - v) * (c + d * fraction);
}

constexpr int kAhead = 12;             // nodes fetched this many elements ahead of a pass
constexpr int kBucketsFrom = 1 << 16;  // below this, selecting rank by rank is as fast

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

// The same for many ranks of a large array, in about one pass: splitters from a sorted sample
// bracket each rank, every element is placed by binary search into the bucket between two
// splitters, and each rank is then selected within its own bucket. Buckets are ordered
// whatever the sample, so a poor sample costs time, never correctness.
void SelectRanksByBuckets(VexaFloat* a, int n, const std::vector<int>& ranks) {
  auto before = [](const VexaFloat& x, const VexaFloat& y) { return STATS_DataGreater_MP(y, x); };
  const int size = std::min(n / 16, 32768);
  std::vector<VexaFloat> sample(size);
  for (int i = 0; i < size; ++i) sample[i] = a[static_cast<long long>(i) * n / size];
  std::sort(sample.begin(), sample.end(), before);
  const int margin = 2 * static_cast<int>(std::sqrt(static_cast<double>(size))) + 1;
  std::vector<int> at;  // sample positions of the splitters, increasing
  for (int r : ranks) {
    const int centre = static_cast<int>(static_cast<long long>(r) * size / n);
    for (int pos : {centre - margin, centre + margin})
      if (pos >= 0 && pos < size && (at.empty() || pos > at.back())) at.push_back(pos);
  }
  std::vector<VexaFloat> splitters;
  for (int pos : at) splitters.push_back(sample[pos]);

  const auto definedEnd = std::find_if(splitters.begin(), splitters.end(),
                                       [](const VexaFloat& t) { return IsVexaFloatUndefined(t); });
  std::vector<unsigned char> bucket(n);
  std::vector<int> start(splitters.size() + 2, 0);
  for (int i = 0; i < n; ++i) {
    if (i + kAhead < n) __builtin_prefetch(a[i + kAhead].Handle());
    // Undefined values and splitters come last, so a defined value needs plain comparisons
    // with the defined splitters only.
    const VexaFloat& x = a[i];
    const int b = IsVexaFloatUndefined(x)
                      ? static_cast<int>(splitters.size())
                      : static_cast<int>(std::upper_bound(splitters.begin(), definedEnd, x,
                                                          std::less<VexaFloat>()) -
                                         splitters.begin());
    bucket[i] = static_cast<unsigned char>(b);
    ++start[b + 1];
  }
  for (size_t b = 1; b < start.size(); ++b) start[b] += start[b - 1];
  std::vector<VexaFloat> placed(n);
  std::vector<int> next(start.begin(), start.end() - 1);
  for (int i = 0; i < n; ++i) placed[next[bucket[i]]++] = a[i];
  std::copy(placed.begin(), placed.end(), a);

  for (size_t j = 0, b = 0; j < ranks.size();) {
    while (ranks[j] >= start[b + 1]) ++b;
    size_t k = j;
    while (k < ranks.size() && ranks[k] < start[b + 1]) ++k;
    SelectRanks(a + start[b], start[b + 1] - start[b], ranks.data() + j, static_cast<int>(k - j),
                start[b]);
    j = k;
  }
}

}  // namespace

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
  if (n >= kBucketsFrom && ranks.size() >= 3 && ranks.size() <= 120)
    SelectRanksByBuckets(data, n, ranks);
  else
    SelectRanks(data, n, ranks.data(), static_cast<int>(ranks.size()), 0);
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
