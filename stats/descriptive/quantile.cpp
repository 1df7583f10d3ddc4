// Sample quantiles after Hyndman and Fan, "Sample quantiles in statistical packages" (1996):
// the position x = a + (n + b) p among the order statistics, then the order statistic at
// floor(x) moved toward the next one by c + d (x - floor(x)). The simple form finds the two
// order statistics by selection, each probability reusing the partial order the previous one
// left; the weighted form sorts once and measures positions in units of weight.
#include <vector>

#include "data/data.h"
#include "descriptive/descriptive.h"

namespace {

// The estimate from the selected value v and the next order statistic w.
VexaFloat Interpolate(const VexaFloat& v, const VexaFloat& w, const VexaFloat& c,
                      const VexaFloat& d, const VexaFloat& fraction) {
  return v + (w - v) * (c + d * fraction);
}

// The estimate at 0-based indices lower and upper of base[0..len-1].
VexaFloat SelectAndInterpolate(VexaFloat* base, int len, int lower, int upper, const VexaFloat& c,
                               const VexaFloat& d, const VexaFloat& fraction) {
  VexaFloat v = STATS_QuickSelect_MP(base, len, lower);
  if (lower == upper || lower == len - 1) return v;
  // The smallest value above the selected one is the next order statistic.
  VexaFloat w = STATS_QuickSelect_MP(base + lower + 1, len - lower - 1, 0);
  return Interpolate(v, w, c, d, fraction);
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
  out[0] = SelectAndInterpolate(data, n, lower[0], upper[0], c, d, fraction[0]);
  for (int j = 1; j < m; ++j) {
    // After selecting lower[j-1] nothing from there on is below it: a higher index can be
    // selected in that tail.
    const int from = lower[j] >= lower[j - 1] ? lower[j - 1] : 0;
    out[j] = SelectAndInterpolate(data + from, n - from, lower[j] - from, upper[j] - from, c, d,
                                  fraction[j]);
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
