// Host entry points of kernel density estimation: the estimate at points (direct sum), on a
// grid (binned), and samples from it. A sample is drawn by inverting the distribution
// function of the binned estimate: the grid cell by discrete interpolation over the
// cumulative trapezoid sums, then linearly inside the cell.
#include <string>
#include <vector>

#include "data/data.h"
#include "frame/frame.h"
#include "random/kernel_density.h"
#include "random/random_stream.h"
#include "rootfinding/rootfinding.h"

namespace {

using Floats = std::vector<VexaFloat>;

// Points and weights with the missing ones dropped (when asked), checked to be usable.
struct KernelSample {
  Floats points, weights;
  int n = 0;
  const VexaFloat* Weights() const { return weights.empty() ? nullptr : weights.data(); }
};

KernelSample ReadSample(VexaKernelVector kv, ALGEB data, ALGEB weights, bool ignore) {
  STATS_VexaDataSample_MP sample(kv, data, weights);
  KernelSample s;
  const int size = sample.size();
  s.points.resize(size);
  if (sample.weighted()) s.weights.resize(size);
  s.n = STATS_CopyData_MP(sample, s.points.data(), sample.weighted() ? s.weights.data() : nullptr,
                          ignore);
  if (s.n < size)
    VexaUserInfo(kv, 1, "Statistics", "missing data has been detected in the dataset, discarded.");
  if (s.n == 0)
    VexaRaiseError1(kv, "expected a sample with data that are not missing, received %1", data);
  VexaFloat total;
  for (int i = 0; i < s.n; ++i) {
    if (IsVexaFloatUndefined(s.points[i]) ||
        (!s.weights.empty() && IsVexaFloatUndefined(s.weights[i])))
      VexaRaiseError1(kv,
                      "the sample holds missing data; set the ignore flag to discard it, "
                      "received %1",
                      data);
    if (!STATS_IsFinite_MP(s.points[i]))
      VexaRaiseError1(kv, "expected finite data, received %1",
                      STATS_DoubleToVexaFloat_MP(kv, s.points[i]));
    if (s.weights.empty()) continue;
    if (!STATS_IsFinite_MP(s.weights[i]) || s.weights[i] < 0)
      VexaRaiseError1(kv, "expected finite nonnegative weights, received %1",
                      STATS_DoubleToVexaFloat_MP(kv, s.weights[i]));
    total += s.weights[i];
  }
  if (!s.weights.empty() && !(total > 0))
    VexaRaiseError1(kv, "expected weights with a positive sum, received %1", weights);
  s.points.resize(s.n);
  if (!s.weights.empty()) s.weights.resize(s.n);
  return s;
}

STATS_KERNEL_TYPE_MP Kernel(const STATS_VexaEntry_MP& entry, int i) {
  const int code = entry.Integer(i);
  if (code < STATS_KERNEL_GAUSSIAN_MP || code > STATS_KERNEL_RECTANGULAR_MP)
    VexaRaiseError1(entry.Kernel(),
                    "expected a kernel 1 to 5 (gaussian, epanechnikov, biweight, triangular, "
                    "rectangular), received %1",
                    entry.Arg(i));
  return static_cast<STATS_KERNEL_TYPE_MP>(code);
}

// A positive bandwidth as given, or 0 for Silverman's rule on the sample.
VexaFloat Bandwidth(const STATS_VexaEntry_MP& entry, int i, const KernelSample& s) {
  const VexaFloat h = entry.Float(i);
  if (h == 0) return STATS_SilvermanBandwidth_MP(entry.Kernel(), s.points.data(), s.Weights(), s.n);
  if (!(h > 0) || !STATS_IsFinite_MP(h))
    VexaRaiseError1(entry.Kernel(),
                    "expected a positive bandwidth, or 0 for Silverman's rule, received %1",
                    entry.Arg(i));
  return h;
}

bool Flag(const STATS_VexaEntry_MP& entry, int i) {
  return VexaToM_BOOL(entry.Kernel(), entry.Arg(i)) > 0;
}

// A new Array(1 .. m) holding the values.
ALGEB ArrayOf(VexaKernelVector kv, const Floats& values) {
  ALGEB rt = STATS_NewFloatRTable_MP(kv, 1, static_cast<M_INT>(values.size()));
  auto* block = static_cast<VexaFloat*>(RTableDataBlock(kv, rt));
  for (size_t i = 0; i < values.size(); ++i) block[i] = values[i];
  return rt;
}

// The cumulative distribution of the binned estimate at grid point j (a float holding j).
class _KernelProbabilityAdapter : public STATS_VexaCallbackAdapter_MP {
 public:
  _KernelProbabilityAdapter(VexaKernelVector kv, const Floats& cdf)
      : STATS_VexaCallbackAdapter_MP(kv), m_cdf(cdf) {}
  VexaFloat Call(VexaFloat x) override {
    const int last = static_cast<int>(m_cdf.size()) - 1;
    const int j = FloatToInt(x);
    return m_cdf[j < 0 ? 0 : j > last ? last : j];
  }

 private:
  const Floats& m_cdf;
};

// A grid for sampling: the data's range and the kernel's reach, a power of two of 1024 to
// 16384 points, fine enough for 8 steps per bandwidth where that fits.
struct SampleGrid {
  VexaFloat lo, delta;
  int m;
};

SampleGrid ChooseGrid(const KernelSample& s, STATS_KERNEL_TYPE_MP kernel, const VexaFloat& h) {
  VexaFloat lo = s.points[0], hi = lo;
  for (const VexaFloat& x : s.points) {
    if (x < lo) lo = x;
    if (x > hi) hi = x;
  }
  const VexaFloat reach = STATS_KernelSupport_MP(kernel) * h;
  lo -= reach;
  hi += reach;
  const VexaFloat steps = 8 * (hi - lo) / h;
  int m = 1024;
  while (m - 1 < steps && m < 16384) m <<= 1;
  return {lo, (hi - lo) / (m - 1), m};
}

}  // namespace

extern "C" ALGEB STATS_VexaKernelDensity_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaKernelDensity", 6);
  const KernelSample s = ReadSample(kv, entry.Arg(1), entry.Arg(2), Flag(entry, 3));
  const STATS_KERNEL_TYPE_MP kernel = Kernel(entry, 4);
  const VexaFloat h = Bandwidth(entry, 5, s);
  ALGEB spec = entry.Arg(6);
  Floats points;
  if (IsVexaRTable(kv, spec)) {
    STATS_Vector_MP v(kv, spec);
    points.assign(v.data(), v.data() + v.size());
  } else if (IsVexaList(kv, spec)) {
    for (M_INT i = 1; i <= VexaListLength(kv, spec); ++i)
      points.push_back(STATS_VexaUtils_MP::VexaDAGToDouble(VexaListSelect(kv, spec, i)));
  } else {
    points.push_back(entry.Float(6));
  }
  Floats out(points.size());
  STATS_KernelDensity_MP(out.data(), s.points.data(), s.Weights(), s.n, kernel, h, points.data(),
                         static_cast<int>(points.size()));
  if (IsVexaRTable(kv, spec)) return ArrayOf(kv, out);
  if (!IsVexaList(kv, spec)) return entry.Result(out[0]);
  ALGEB list = VexaListAlloc(kv, static_cast<M_INT>(out.size()));
  for (size_t i = 0; i < out.size(); ++i)
    VexaListAssign(kv, list, static_cast<M_INT>(i + 1), STATS_DoubleToVexaFloat_MP(kv, out[i]));
  return list;
}

extern "C" ALGEB STATS_VexaKernelDensityBinned_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaKernelDensityBinned", 8);
  const KernelSample s = ReadSample(kv, entry.Arg(1), entry.Arg(2), Flag(entry, 3));
  const STATS_KERNEL_TYPE_MP kernel = Kernel(entry, 4);
  const VexaFloat h = Bandwidth(entry, 5, s);
  const VexaFloat lo = entry.Float(6), hi = entry.Float(7);
  if (!STATS_IsFinite_MP(lo) || !STATS_IsFinite_MP(hi) || !(lo < hi))
    VexaRaiseError2(kv, "expected finite grid ends lo < hi, received %1, %2", entry.Arg(6),
                    entry.Arg(7));
  const int m = entry.Integer(8);
  if (m < 2 || m > (1 << 20))
    VexaRaiseError1(kv, "expected a grid size from 2 to 1048576, received %1", entry.Arg(8));
  Floats out(m);
  STATS_KernelDensityBinned_MP(kv, out.data(), s.points.data(), s.Weights(), s.n, kernel, h, lo, hi,
                               m);
  return ArrayOf(kv, out);
}

extern "C" ALGEB STATS_VexaKernelDensityRandomSample_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaKernelDensityRandomSample", 5);
  const int n = entry.Integer(1);
  if (n < 0) VexaRaiseError1(kv, "expected a nonnegative sample size, received %1", entry.Arg(1));
  const KernelSample s = ReadSample(kv, entry.Arg(2), entry.Arg(3), true);
  const STATS_KERNEL_TYPE_MP kernel = Kernel(entry, 4);
  const VexaFloat h = Bandwidth(entry, 5, s);
  const SampleGrid grid = ChooseGrid(s, kernel, h);
  Floats density(grid.m), cdf(grid.m);
  STATS_KernelDensityBinned_MP(kv, density.data(), s.points.data(), s.Weights(), s.n, kernel, h,
                               grid.lo, grid.lo + grid.delta * (grid.m - 1), grid.m);
  const int digits = VexaDigits();
  ALGEB out = STATS_CreateRandomSample_MP(kv, n, ToVexaNULL(kv));
  auto* block = static_cast<VexaFloat*>(RTableDataBlock(kv, out));
  VexaDigitsScope guard(digits + 5);
  for (int j = 1; j < grid.m; ++j) cdf[j] = cdf[j - 1] + (density[j - 1] + density[j]) / 2;
  for (int j = 1; j < grid.m; ++j) cdf[j] /= cdf[grid.m - 1];
  _KernelProbabilityAdapter adapter(kv, cdf);
  for (int i = 0; i < n; ++i) {
    VexaFloat u;
    {
      VexaDigitsScope caller(digits);
      u = STATS_VexaRandomStream_MP::NextDouble();
    }
    long j = STATS_DiscreteInterpolation_MP(kv, u, adapter, 0, grid.m - 1, 64);
    if (j < 1) j = 1;
    const VexaFloat below = cdf[j - 1], rise = cdf[j] - below;
    VexaFloat x = grid.lo + grid.delta * (j - 1);
    if (rise > 0) x += grid.delta * (u - below) / rise;
    block[i] = VexaFloatRound(x, digits);
  }
  return out;
}
