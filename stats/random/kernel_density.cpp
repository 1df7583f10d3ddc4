// Kernel density estimates: the five kernels, Silverman's rule of thumb, the direct sum, and
// the binned estimate of Silverman (1982, Applied Statistics algorithm AS 176): the data are
// binned linearly onto a grid, and the grid counts are convolved with the kernel sampled at
// the grid spacing through real Fourier transforms.
#include "random/kernel_density.h"

#include <algorithm>
#include <string>
#include <vector>

#include "descriptive/descriptive.h"
#include "frame/frame.h"
#include "vexa/nag.h"

namespace {

using Floats = std::vector<VexaFloat>;

constexpr int64_t kMaxKernelSteps = int64_t{1} << 20;

int GuardDigits(int n) {
  return 5 + static_cast<int>(std::to_string(n).size());
}

VexaFloat Decimal(const char* text) {
  return VexaFloatFromString(text);
}

// Sum of the weights (n for none).
VexaFloat TotalWeight(const VexaFloat* weights, int n) {
  if (weights == nullptr) return VexaFloat(n);
  VexaFloat total;
  for (int i = 0; i < n; ++i) total += weights[i];
  return total;
}

// (x - lo) / delta + offset, the position of x on the grid whose point 0 is lo - offset delta.
struct Grid {
  VexaFloat lo, inverseDelta;
  int64_t offset;
  VexaFloat Position(const VexaFloat& x) const { return (x - lo) * inverseDelta + offset; }
};

// Linear binning: the weight of x is split between the two grid points around it in
// proportion to its nearness; parts falling outside 0 .. bins.size() - 1 are dropped.
void BinLinearly(Floats& bins, int64_t size, const Grid& grid, const VexaFloat* data,
                 const VexaFloat* weights, int n) {
  for (int i = 0; i < n; ++i) {
    const VexaFloat t = grid.Position(data[i]);
    if (t < -1 || t > size) continue;
    const VexaFloat whole = floor(t);
    const int64_t j = FloatToInt(whole);
    const VexaFloat upper = weights ? (t - whole) * weights[i] : t - whole;
    const VexaFloat lower = (weights ? weights[i] : VexaFloat(1)) - upper;
    if (j >= 0) bins[j] += lower;
    if (j + 1 < size) bins[j + 1] += upper;
  }
}

// Elementwise product of two Hermitian sequences of length p in the transforms' storage.
void MultiplyHermitian(Floats& a, const Floats& b, int64_t p) {
  a[0] *= b[0];
  for (int64_t k = 1; 2 * k < p; ++k) {
    const VexaFloat re = a[k] * b[k] - a[p - k] * b[p - k];
    a[p - k] = a[k] * b[p - k] + a[p - k] * b[k];
    a[k] = re;
  }
  if (p % 2 == 0) a[p / 2] *= b[p / 2];
}

void Transform(VexaKernelVector kv, Floats& x, int direction) {
  const int p = static_cast<int>(x.size());
  Floats work(p);
  int ifail = 0;
  if (direction < 0)
    VexaMP_c06faf_(x.data(), &p, work.data(), &ifail);
  else
    VexaMP_c06fbf_(x.data(), &p, work.data(), &ifail);
  if (ifail != 0) VexaRaiseError(kv, "the Fourier transform failed");
}

}  // namespace

VexaFloat STATS_Kernel_MP(STATS_KERNEL_TYPE_MP kernel, const VexaFloat& u) {
  if (kernel == STATS_KERNEL_GAUSSIAN_MP) return exp(-(u * u) / 2) / sqrt(2 * VexaFloatPi());
  const VexaFloat a = fabs(u);
  if (a > 1) return VexaFloat();
  switch (kernel) {
    case STATS_KERNEL_EPANECHNIKOV_MP:
      return Decimal("0.75") * (1 - a * a);
    case STATS_KERNEL_BIWEIGHT_MP:
      return Decimal("0.9375") * (1 - a * a) * (1 - a * a);
    case STATS_KERNEL_TRIANGULAR_MP:
      return 1 - a;
    default:
      return Decimal("0.5");
  }
}

VexaFloat STATS_KernelSupport_MP(STATS_KERNEL_TYPE_MP kernel) {
  if (kernel != STATS_KERNEL_GAUSSIAN_MP) return VexaFloat(1);
  // exp(-u^2 / 2) = 10^-(Digits + 3)
  return sqrt(2 * (VexaDigits() + 3) * log(VexaFloat(10)));
}

VexaFloat STATS_SilvermanBandwidth_MP(VexaKernelVector kv, const VexaFloat* data,
                                      const VexaFloat* weights, int n) {
  if (n < 2)
    VexaRaiseError(kv,
                   "Silverman's rule needs at least two data points; give a positive bandwidth");
  Floats x(data, data + n), w;
  if (weights != nullptr) w.assign(weights, weights + n);
  VexaFloat* wp = weights != nullptr ? w.data() : nullptr;
  int first = 1, second = 2;
  VexaFloat mean, central;
  STATS_Moment_MP(&mean, x.data(), wp, n, &first, 1, VexaFloat());
  STATS_Moment_MP(&central, x.data(), wp, n, &second, 1, mean);
  const VexaFloat sd = sqrt(central * n / (n - 1));
  VexaFloat probs[2] = {Decimal("0.25"), Decimal("0.75")}, q[2];
  STATS_Quantile_MP(q, x.data(), wp, probs, n, 2, STATS_QUANTILE_GUMBEL_MP);
  const VexaFloat iqr = (q[1] - q[0]) / Decimal("1.34");
  const VexaFloat spread = iqr > 0 && iqr < sd ? iqr : sd;
  if (!(spread > 0))
    VexaRaiseError(kv,
                   "the data have no spread, so Silverman's rule gives bandwidth 0; give a "
                   "positive bandwidth");
  return Decimal("0.9") * spread * pow(VexaFloat(n), Decimal("-0.2"));
}

void STATS_KernelDensity_MP(VexaFloat* out, const VexaFloat* data, const VexaFloat* weights, int n,
                            STATS_KERNEL_TYPE_MP kernel, const VexaFloat& h,
                            const VexaFloat* points, int m) {
  const int digits = VexaDigits();
  Floats sums(m);
  {
    VexaDigitsScope guard(digits + GuardDigits(n));
    const VexaFloat scale = TotalWeight(weights, n) * h;
    for (int j = 0; j < m; ++j) {
      VexaFloat sum;
      for (int i = 0; i < n; ++i) {
        const VexaFloat k = STATS_Kernel_MP(kernel, (points[j] - data[i]) / h);
        if (k == 0) continue;
        sum += weights ? weights[i] * k : k;
      }
      sums[j] = sum / scale;
    }
  }
  for (int j = 0; j < m; ++j) out[j] = VexaFloatRound(sums[j], digits);
}

void STATS_KernelDensityBinned_MP(VexaKernelVector kv, VexaFloat* out, const VexaFloat* data,
                                  const VexaFloat* weights, int n, STATS_KERNEL_TYPE_MP kernel,
                                  const VexaFloat& h, const VexaFloat& lo, const VexaFloat& hi,
                                  int m) {
  const int digits = VexaDigits();
  Floats f(m);
  {
    VexaDigitsScope guard(digits + 5);
    const VexaFloat delta = (hi - lo) / (m - 1);
    if (delta > h)
      VexaUserInfo(kv, 1, "Statistics",
                   "the grid step exceeds the bandwidth: the binned estimate is coarse");
    const VexaFloat reach = STATS_KernelSupport_MP(kernel) * h / delta;
    if (!(reach <= kMaxKernelSteps))
      VexaRaiseError1(kv,
                      "the bandwidth %1 is too wide for the grid: the kernel would span more "
                      "than 2^20 grid steps",
                      STATS_DoubleToVexaFloat_MP(kv, h));
    const int64_t reachSteps = FloatToInt(ceil(reach));
    // The grid is extended by the kernel's reach, but no further than the data go.
    Grid grid{lo, 1 / delta, 0};
    VexaFloat tmin = grid.Position(data[0]), tmax = tmin;
    for (int i = 1; i < n; ++i) {
      const VexaFloat t = grid.Position(data[i]);
      if (t < tmin) tmin = t;
      if (t > tmax) tmax = t;
    }
    const auto extension = [reachSteps](const VexaFloat& beyond) -> int64_t {
      if (!(beyond > 0)) return 0;
      return beyond >= reachSteps ? reachSteps : FloatToInt(ceil(beyond));
    };
    const int64_t left = extension(-tmin), right = extension(tmax - (m - 1));
    const int64_t size = left + m + right;
    const int64_t lags = std::min(reachSteps, size - 1);
    // No wrap-around of the circular convolution reaches the points 0 .. size - 1.
    int64_t p = 2;
    while (p < size + lags) p <<= 1;
    grid.offset = left;

    Floats bins(p), k(p);
    BinLinearly(bins, size, grid, data, weights, n);
    // The kernel sampled at the grid steps, scaled to a sum of exactly 1 / delta, so that the
    // binned mass is kept whatever the kernel's shape at its ends.
    VexaFloat mass;
    for (int64_t l = 0; l <= lags; ++l) {
      k[l] = STATS_Kernel_MP(kernel, l * delta / h);
      mass += l > 0 ? 2 * k[l] : k[l];
    }
    for (int64_t l = 0; l <= lags; ++l) {
      k[l] /= mass * delta;
      if (l > 0) k[p - l] = k[l];
    }
    Transform(kv, bins, -1);
    Transform(kv, k, -1);
    int pi = static_cast<int>(p), ifail = 0;
    VexaMP_c06gbf_(k.data(), &pi, &ifail);
    MultiplyHermitian(bins, k, p);
    Transform(kv, bins, 1);
    const VexaFloat scale = sqrt(VexaFloat(p)) / TotalWeight(weights, n);
    VexaFloat peak;
    for (int j = 0; j < m; ++j) {
      f[j] = bins[left + j] * scale;
      if (f[j] > peak) peak = f[j];
    }
    // What the transforms leave where the estimate is 0 is rounding noise.
    const VexaFloat noise = peak * pow(VexaFloat(10), VexaFloat(-digits - 2));
    for (VexaFloat& v : f)
      if (v < noise) v = VexaFloat();
  }
  for (int j = 0; j < m; ++j) out[j] = VexaFloatRound(f[j], digits);
}
