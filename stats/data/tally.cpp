// Tallies of data into equal bins of one or more ranges (closed below, open above, the last
// bin closed at both ends), the frequency table of one range, counts of data and of missing
// data, and the conversion of an rtable to host floats.
#include <string>
#include <vector>

#include "data/data.h"
#include "frame/frame.h"

namespace {

bool Flag(VexaKernelVector kv, ALGEB e) {
  return VexaToM_BOOL(kv, e) > 0;
}

VexaFloat AsFloat(int k) {
  return VexaFloat(static_cast<double>(k));
}

// The sample's values, without the missing ones when ignore is set (then in scratch memory
// unless the library converted the arrays itself).
int Gather(VexaKernelVector kv, const STATS_VexaDataSample_MP& sample, bool ignore,
           VexaFloat** points, VexaFloat** weights) {
  const int size = sample.size();
  *points = sample.points();
  *weights = sample.weights();
  if (!ignore || size == 0) return size;
  auto scratch = [&](const STATS_Vector_MP& v) {
    if (v.converted()) return v.data();
    return static_cast<VexaFloat*>(VexaNew(kv, size, sizeof(VexaFloat)));
  };
  *points = scratch(sample.pointsVector());
  if (sample.weighted()) *weights = scratch(*sample.weightsVector());
  const int n = STATS_CopyData_MP(sample, *points, *weights, 1);
  if (n < size)
    VexaUserInfo(kv, 1, "Statistics", "missing data has been detected in the dataset, discarded.");
  return n;
}

// The K + 1 boundaries of range lo..hi into b: lo + ((hi - lo) / K) i inside, the ends as
// given. An infinite or undefined end cannot be split into more than one bin.
void SplitRange(VexaKernelVector kv, ALGEB range, int K, VexaFloat* b) {
  const VexaFloat lo = STATS_VexaUtils_MP::VexaDAGToDouble(VexaRangeLow(kv, range));
  const VexaFloat hi = STATS_VexaUtils_MP::VexaDAGToDouble(VexaRangeHigh(kv, range));
  if (K != 1 && !(STATS_IsFinite_MP(lo) && STATS_IsFinite_MP(hi)))
    VexaRaiseError1(kv, "unable to split the range %1", range);
  const VexaFloat width = (hi - lo) / AsFloat(K);
  b[0] = lo;
  for (int i = 1; i < K; ++i) b[i] = lo + width * AsFloat(i);
  b[K] = hi;
}

ALGEB HostFloat(VexaKernelVector kv, const VexaFloat& x) {
  return STATS_DoubleToVexaFloat_MP(kv, x);
}

// A one-dimensional rectangular sfloat rtable 1 .. n.
ALGEB SfloatArray(VexaKernelVector kv, int n) {
  RTableSettings s;
  RTableGetDefaults(kv, &s);
  s.num_dimensions = 1;
  s.data_type = RTABLE_DAG;
  s.storage = RTABLE_RECT;
  s.element_type = ToVexaName(kv, "sfloat", 1);
  M_INT bounds[2] = {1, n};
  return RTableCreate(kv, &s, nullptr, bounds);
}

// Tallies n data into S ranges of K bins; counts as host values (integers, or floats when
// weighted), S K of them in order of ranges and bins.
std::vector<ALGEB> Tally(VexaKernelVector kv, VexaFloat* points, VexaFloat* weights, int n,
                         VexaFloat* bounds, int S, int K) {
  std::vector<ALGEB> counts(static_cast<size_t>(S) * K);
  if (weights != nullptr) {
    std::vector<VexaFloat> sums(counts.size());
    STATS_WeightedTallyInto_MP(sums.data(), points, weights, n, bounds, S, K);
    for (size_t i = 0; i < sums.size(); ++i) counts[i] = HostFloat(kv, sums[i]);
  } else {
    std::vector<int> c(counts.size());
    STATS_SimpleTallyInto_MP(c.data(), points, n, bounds, S, K);
    for (size_t i = 0; i < c.size(); ++i) counts[i] = ToVexaInteger(kv, c[i]);
  }
  return counts;
}

// The number of bins: a positive integer.
int BinCount(VexaKernelVector kv, ALGEB e) {
  if (!IsVexaInteger32(kv, e) || VexaToInteger32(kv, e) < 1)
    VexaRaiseError1(kv,
                    "invalid argument; expected a positive integer or a list of ranges, "
                    "received: %1",
                    e);
  return VexaToInteger32(kv, e);
}

}  // namespace

int STATS_TallyIntoFindBin_MP(VexaFloat* bounds, int K, VexaFloat x) {
  int base = 0;
  while (K > 1) {  // bisection: bounds[base] <= x < bounds[base + K]
    const int h = K / 2;
    if (x < bounds[base + h]) {
      K = h;
    } else {
      base += h;
      K -= h;
    }
  }
  return base;
}

void STATS_SimpleTallyInto_MP(int* counts, VexaFloat* data, int n, VexaFloat* bounds, int S,
                              int K) {
  for (int i = 0; i < S * K; ++i) counts[i] = 0;
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < S; ++j) {
      VexaFloat* b = bounds + j * (K + 1);
      if (data[i] == b[K])
        ++counts[j * K + K - 1];
      else if (b[0] <= data[i] && data[i] < b[K])
        ++counts[j * K + STATS_TallyIntoFindBin_MP(b, K, data[i])];
    }
  }
}

void STATS_WeightedTallyInto_MP(VexaFloat* sums, VexaFloat* data, VexaFloat* weights, int n,
                                VexaFloat* bounds, int S, int K) {
  for (int i = 0; i < S * K; ++i) sums[i] = VexaFloat();
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < S; ++j) {
      VexaFloat* b = bounds + j * (K + 1);
      if (data[i] == b[K])
        sums[j * K + K - 1] += weights[i];
      else if (b[0] <= data[i] && data[i] < b[K])
        sums[j * K + STATS_TallyIntoFindBin_MP(b, K, data[i])] += weights[i];
    }
  }
}

extern "C" ALGEB STATS_VexaTallyInto_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaTallyInto", 5, STATS_VexaEntry_MP::ShortArityMessage(5));
  STATS_VexaDataSample_MP sample(kv, entry.Arg(1), entry.Arg(2));
  VexaFloat *points, *weights;
  const int n = Gather(kv, sample, Flag(kv, entry.Arg(3)), &points, &weights);
  ALGEB ranges = entry.Arg(4);
  if (!IsVexaList(kv, ranges))
    VexaRaiseError1(kv, "expected 4th argument to be of type list(range), received: %1", ranges);
  const int S = static_cast<int>(VexaListLength(kv, ranges));
  const int K = BinCount(kv, entry.Arg(5));
  std::vector<VexaFloat> bounds(static_cast<size_t>(S) * (K + 1));
  for (int j = 0; j < S; ++j) {
    ALGEB range = VexaListSelect(kv, ranges, j + 1);
    if (!IsVexaRange(kv, range))
      VexaRaiseError1(kv,
                      "invalid argument; expected a positive integer or a list of ranges, "
                      "received: %1",
                      ranges);
    SplitRange(kv, range, K, &bounds[static_cast<size_t>(j) * (K + 1)]);
  }
  const std::vector<ALGEB> counts = Tally(kv, points, weights, n, bounds.data(), S, K);
  ALGEB list = VexaListAlloc(kv, static_cast<M_INT>(counts.size()));
  for (int j = 0; j < S; ++j) {
    const VexaFloat* b = &bounds[static_cast<size_t>(j) * (K + 1)];
    for (int i = 0; i < K; ++i) {
      ALGEB bin = ToVexaRange(kv, HostFloat(kv, b[i]), HostFloat(kv, b[i + 1]));
      VexaListAssign(kv, list, j * K + i + 1, ToVexaEquation(kv, bin, counts[j * K + i]));
    }
  }
  return list;
}

// [lower boundaries, upper boundaries, counts], three sfloat Arrays 1 .. K.
extern "C" ALGEB STATS_VexaFrequencyData_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaFrequencyData", 5,
                           STATS_VexaEntry_MP::ShortArityMessage(5));
  STATS_VexaDataSample_MP sample(kv, entry.Arg(1), entry.Arg(2));
  VexaFloat *points, *weights;
  const int n = Gather(kv, sample, Flag(kv, entry.Arg(3)), &points, &weights);
  ALGEB range = entry.Arg(4);
  if (!IsVexaRange(kv, range))
    VexaRaiseError1(kv, "expected 4th argument to be of type range, received: %1", range);
  const int K = BinCount(kv, entry.Arg(5));
  std::vector<VexaFloat> bounds(static_cast<size_t>(K) + 1);
  SplitRange(kv, range, K, bounds.data());
  const std::vector<ALGEB> counts = Tally(kv, points, weights, n, bounds.data(), 1, K);
  ALGEB lower = SfloatArray(kv, K), upper = SfloatArray(kv, K), frequency = SfloatArray(kv, K);
  VexaFloat* lo = static_cast<VexaFloat*>(RTableDataBlock(kv, lower));
  VexaFloat* hi = static_cast<VexaFloat*>(RTableDataBlock(kv, upper));
  VexaFloat* f = static_cast<VexaFloat*>(RTableDataBlock(kv, frequency));
  for (int i = 0; i < K; ++i) {
    lo[i] = bounds[i];
    hi[i] = bounds[i + 1];
    f[i] = STATS_VexaFloatToDouble_MP(kv, counts[i]);
  }
  ALGEB list = VexaListAlloc(kv, 3);
  VexaListAssign(kv, list, 1, lower);
  VexaListAssign(kv, list, 2, upper);
  VexaListAssign(kv, list, 3, frequency);
  return list;
}

extern "C" ALGEB STATS_VexaCount_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaCount", 3, STATS_VexaEntry_MP::ShortArityMessage(3));
  STATS_VexaDataSample_MP sample(kv, entry.Arg(1), entry.Arg(2));
  const bool ignore = VexaToM_BOOL(kv, entry.Arg(3)) == 1;
  const int size = sample.size();
  const VexaFloat* x = sample.points();
  const VexaFloat* w = sample.weights();
  if (!sample.weighted()) {
    int count = size;
    if (ignore)
      for (int i = 0; i < size; ++i) count -= IsVexaFloatUndefined(x[i]) ? 1 : 0;
    return ToVexaInteger(kv, count);
  }
  VexaFloat total;
  for (int i = 0; i < size; ++i)
    if (!ignore || !(IsVexaFloatUndefined(x[i]) || IsVexaFloatUndefined(w[i]))) total += w[i];
  return entry.Result(total);
}

extern "C" ALGEB STATS_VexaCountMissing_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaCountMissing", 2,
                           STATS_VexaEntry_MP::ShortArityMessage(2));
  STATS_VexaDataSample_MP sample(kv, entry.Arg(1), entry.Arg(2));
  const int size = sample.size();
  const VexaFloat* x = sample.points();
  const VexaFloat* w = sample.weights();
  if (!sample.weighted()) {
    int count = 0;
    for (int i = 0; i < size; ++i) count += IsVexaFloatUndefined(x[i]) ? 1 : 0;
    return ToVexaInteger(kv, count);
  }
  VexaFloat total;
  for (int i = 0; i < size; ++i)
    if (IsVexaFloatUndefined(x[i]) && !IsVexaFloatUndefined(w[i])) total += w[i];
  return entry.Result(total);
}

extern "C" ALGEB STATS_VexaEvaluateToFloat_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaEvaluateToFloat", 1,
                           "expected one argument, received: %1");
  STATS_VexaDataSample_MP sample(kv, entry.Arg(1));
  ALGEB source = sample.pointsVector().source();
  const int n = sample.size();
  RTableSettings s;
  RTableGetSettings(kv, &s, source);
  s.num_dimensions = 1;
  s.data_type = RTABLE_DAG;
  s.storage = RTABLE_RECT;
  s.element_type = ToVexaName(kv, "sfloat", 1);
  const M_INT lo = RTableLowerBound(kv, source, 1);
  M_INT bounds[2] = {lo, lo + n - 1};
  ALGEB result = RTableCreate(kv, &s, nullptr, bounds);
  if (n > 0) {
    VexaFloat* out = static_cast<VexaFloat*>(RTableDataBlock(kv, result));
    STATS_CopySimpleData_MP(sample.points(), out, n, 0);
  }
  return result;
}
