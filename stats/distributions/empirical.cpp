// The empirical distribution of data points with optional weights: its quantile is the
// sample quantile of method 1 (the inverse of the weighted empirical distribution function),
// its variate the quantile of a uniform draw. The entry points prepare the data once per call:
// missing values are dropped, and the values are copied to scratch memory or, when the caller
// allows and nothing is missing, worked on in the sample's own arrays (the caller's array
// when its storage allows).
#include <algorithm>

#include "data/data.h"
#include "descriptive/descriptive.h"
#include "distributions/distributions.h"
#include "frame/frame.h"
#include "random/random_stream.h"

namespace {

const char* const kProbabilityMessage = "expected: numeric constant between 0 and 1, received %1";

struct Prepared {
  VexaFloat* points = nullptr;
  VexaFloat* weights = nullptr;  // null for unweighted data
  int n = 0;
};

// The data at argument first and the weights after it; the flag after them chooses work in
// the sample's own arrays (true) or on copies (false).
Prepared Prepare(const STATS_VexaEntry_MP& entry, const STATS_VexaDataSample_MP& sample, int flag) {
  const VexaKernelVector kv = entry.Kernel();
  const bool inPlace = VexaToM_BOOL(kv, entry.Arg(flag)) > 0;
  Prepared r;
  const int size = sample.size();
  if (size == 0) return r;
  // Dropping missing values in place would leave stale copies behind in the caller's array.
  const VexaFloat* points = sample.points();
  const bool missing = std::any_of(points, points + size,
                                   [](const VexaFloat& x) { return IsVexaFloatUndefined(x); });
  if (inPlace && !missing) {
    r.points = sample.points();
    r.weights = sample.weights();
  } else {
    r.points = static_cast<VexaFloat*>(VexaAlloc(kv, size * sizeof(VexaFloat)));
    if (sample.weighted())
      r.weights = static_cast<VexaFloat*>(VexaAlloc(kv, size * sizeof(VexaFloat)));
  }
  r.n = STATS_CopyData_MP(sample, r.points, r.weights, 1);
  if (r.n < size)
    VexaUserInfo(kv, 1, "Statistics", "missing data has been detected in the dataset, discarded.");
  return r;
}

}  // namespace

VexaFloat STATS_EmpiricalDeviate_MP(VexaKernelVector, VexaFloat p, int n, VexaFloat* values,
                                    VexaFloat* weights) {
  VexaFloat result(0.0);
  STATS_Quantile_MP(&result, values, weights, &p, n, 1, STATS_QUANTILE_INVERSE_EDF_MP);
  return result;
}

VexaFloat STATS_EmpiricalRandomVariate_MP(VexaKernelVector kv, int n, VexaFloat* values,
                                          VexaFloat* weights) {
  VexaFloat u = STATS_VexaRandomStream_MP::NextDouble();
  return STATS_EmpiricalDeviate_MP(kv, u, n, values, weights);
}

// p, data, weights, in place. No data (or only missing values) gives undefined.
ALGEB STATS_EmpiricalDeviateEntry_MP(const STATS_VexaEntry_MP& entry) {
  const VexaKernelVector kv = entry.Kernel();
  const VexaFloat p = entry.Float(1);
  if (!(p >= 0 && p <= 1)) VexaRaiseError1(kv, kProbabilityMessage, entry.Arg(1));
  STATS_VexaDataSample_MP sample(kv, entry.Arg(2), entry.Arg(3));
  const Prepared data = Prepare(entry, sample, 4);
  if (data.n == 0) return entry.Result(VexaFloatUndefined());
  return entry.Result(STATS_EmpiricalDeviate_MP(kv, p, data.n, data.points, data.weights));
}

// data, weights, in place.
ALGEB STATS_EmpiricalRandomVariateEntry_MP(const STATS_VexaEntry_MP& entry) {
  const VexaKernelVector kv = entry.Kernel();
  STATS_VexaDataSample_MP sample(kv, entry.Arg(1), entry.Arg(2));
  const Prepared data = Prepare(entry, sample, 3);
  if (data.n == 0) return entry.Result(VexaFloatUndefined());
  return entry.Result(STATS_EmpiricalRandomVariate_MP(kv, data.n, data.points, data.weights));
}

// n, data, weights, in place.
ALGEB STATS_EmpiricalRandomSampleEntry_MP(const STATS_VexaEntry_MP& entry) {
  const VexaKernelVector kv = entry.Kernel();
  const int n = entry.Integer(1);
  STATS_VexaDataSample_MP sample(kv, entry.Arg(2), entry.Arg(3));
  const Prepared data = Prepare(entry, sample, 4);
  ALGEB out = STATS_CreateRandomSample_MP(kv, n, ToVexaNULL(kv));
  VexaFloat* block = static_cast<VexaFloat*>(RTableDataBlock(kv, out));
  for (int i = 0; i < n; ++i)
    block[i] = data.n == 0 ? VexaFloatUndefined()
                           : STATS_EmpiricalRandomVariate_MP(kv, data.n, data.points, data.weights);
  return out;
}
