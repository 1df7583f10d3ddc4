// Data sharpening (Choi and Hall, 1999): every point moves one Gaussian mean-shift step,
// to the kernel-weighted mean of the sample around it, which pulls data toward the modes of
// their kernel density estimate. The bandwidth defaults to Silverman's rule of thumb; the
// sums run with five guard digits and the results are rounded to Digits.
#include <cstring>
#include <vector>

#include "data/data.h"
#include "data/raw_array.h"
#include "descriptive/descriptive.h"
#include "frame/frame.h"

namespace {

constexpr int kGuardDigits = 5;

bool Active(const VexaFloat* data, const VexaFloat* weights, int i) {
  return !IsVexaFloatUndefined(data[i]) &&
         (weights == nullptr || !IsVexaFloatUndefined(weights[i]));
}

VexaFloat Weight(const VexaFloat* weights, int i) {
  return weights == nullptr ? VexaFloat(1) : weights[i];
}

// Sample deviation (weighted: the weighted variance scaled by m / (m - 1)) and interquartile
// range (method 6 quantiles) of the m active data copied into x, w.
void Spreads(std::vector<VexaFloat>& x, std::vector<VexaFloat>& w, bool weighted, VexaFloat* sd,
             VexaFloat* iqr) {
  const int m = static_cast<int>(x.size());
  VexaFloat total, sum, squares;
  for (int i = 0; i < m; ++i) {
    total += w[i];
    sum += w[i] * x[i];
  }
  const VexaFloat mean = sum / total;
  for (int i = 0; i < m; ++i) squares += w[i] * (x[i] - mean) * (x[i] - mean);
  *sd = sqrt(squares / total * VexaFloat(m) / VexaFloat(m - 1));
  VexaFloat probs[2] = {VexaFloat(1) / 4, VexaFloat(3) / 4}, q[2];
  STATS_Quantile_MP(q, x.data(), weighted ? w.data() : nullptr, probs, m, 2,
                    STATS_QUANTILE_GUMBEL_MP);
  *iqr = q[1] - q[0];
}

// One output element of data type dt holding x.
void Store(VexaKernelVector kv, int dt, const VexaFloat& x, char* at) {
  RTableData d;
  switch (dt) {
    case RTABLE_CXDAG:
      d.cxdag.re = x.Handle();
      d.cxdag.im = ToVexaInteger(kv, 0);
      break;
    case RTABLE_FLOAT64:
      d.float64 = VexaEvalhf(kv, x.Handle());
      break;
    case RTABLE_COMPLEX:
      d.complexf64.re = VexaEvalhf(kv, x.Handle());
      d.complexf64.im = 0;
      break;
    case RTABLE_FLOAT32:
      d.float32 = static_cast<float>(VexaEvalhf(kv, x.Handle()));
      break;
    default:
      d.dag = x.Handle();
  }
  std::memcpy(at, &d, STATS_RTableDataSize_MP(kv, dt));
}

}  // namespace

VexaFloat STATS_SilvermanBandwidth_MP(const VexaFloat* data, const VexaFloat* weights, int n) {
  std::vector<VexaFloat> x, w;
  for (int i = 0; i < n; ++i) {
    if (!Active(data, weights, i)) continue;
    x.push_back(data[i]);
    w.push_back(Weight(weights, i));
  }
  const int m = static_cast<int>(x.size());
  if (m < 2) return VexaFloat();
  VexaFloat sd, iqr;
  Spreads(x, w, weights != nullptr, &sd, &iqr);
  iqr = iqr * 100 / 134;
  VexaFloat spread = iqr < sd ? iqr : sd;
  if (!(spread > 0)) spread = iqr < sd ? sd : iqr;
  return VexaFloat(9) / 10 * spread * pow(VexaFloat(m), VexaFloat(-1) / 5);
}

void STATS_Sharpen_MP(VexaFloat* out, const VexaFloat* data, const VexaFloat* weights, int n,
                      VexaFloat h) {
  std::vector<VexaFloat> num(n), den(n);
  for (int i = 0; i < n; ++i) {
    if (!Active(data, weights, i) || !(h > 0)) continue;
    num[i] = Weight(weights, i) * data[i];
    den[i] = Weight(weights, i);
  }
  // The kernel is symmetric: each pair is evaluated once.
  for (int i = 0; i < n; ++i) {
    if (!Active(data, weights, i) || !(h > 0)) continue;
    for (int j = i + 1; j < n; ++j) {
      if (!Active(data, weights, j)) continue;
      const VexaFloat u = (data[i] - data[j]) / h;
      const VexaFloat k = exp(-(u * u) / 2);
      num[i] += Weight(weights, j) * data[j] * k;
      den[i] += Weight(weights, j) * k;
      num[j] += Weight(weights, i) * data[i] * k;
      den[j] += Weight(weights, i) * k;
    }
  }
  for (int i = 0; i < n; ++i)
    out[i] = Active(data, weights, i) && h > 0 ? num[i] / den[i] : data[i];
}

extern "C" ALGEB STATS_VexaSharpen_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaSharpen", 3);
  const data_raw::RawArray a = data_raw::Read(kv, entry.Arg(1));
  STATS_VexaDataSample_MP sample(kv, entry.Arg(1), entry.Arg(2));
  const VexaFloat bandwidth = entry.Float(3);
  if (!(bandwidth >= 0) || !STATS_IsFinite_MP(bandwidth))
    VexaRaiseError1(kv,
                    "expected third argument (bandwidth) to be a non-negative numeric constant, "
                    "received: %1",
                    entry.Arg(3));
  const int n = sample.size(), digits = entry.Digits();
  std::vector<VexaFloat> moved(n);
  {
    STATS_VexaRaisedDigits_MP guard(entry, digits + kGuardDigits);
    const VexaFloat h = bandwidth == 0
                            ? STATS_SilvermanBandwidth_MP(sample.points(), sample.weights(), n)
                            : bandwidth;
    STATS_Sharpen_MP(moved.data(), sample.points(), sample.weights(), n, h);
  }
  // Integer arrays cannot hold the moved values: those come back as sfloat.
  const int dt = a.settings.data_type;
  const bool integral = dt >= RTABLE_INTEGER8 && dt <= RTABLE_INTEGER64;
  const int outType = integral ? RTABLE_DAG : dt;
  const int width = STATS_RTableDataSize_MP(kv, outType);
  char* out = static_cast<char*>(VexaNew(kv, n > 0 ? n : 1, width));
  for (int i = 0; i < n; ++i)
    Store(kv, outType, VexaFloatRound(moved[i], digits), out + static_cast<size_t>(i) * width);
  if (!integral) return data_raw::NewLike(kv, a, n, out);
  ALGEB floats = STATS_NewFloatRTable_MP(kv, 1, n);
  if (n > 0) std::memcpy(RTableDataBlock(kv, floats), out, static_cast<size_t>(n) * width);
  return floats;
}
