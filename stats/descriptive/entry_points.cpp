// Host entry points of the descriptive statistics: quantiles, order statistics by rank, the
// median, the five-point summary, means, moments, expected values and deviations. Data that
// a statistic reorders are copied into scratch arrays unless the caller allows work in place
// (and then only its own rtables are reordered); an array the library converted is its own
// and is worked on directly. Statistics that only read the data copy them only to drop
// missing values.
#include <vector>

#include "data/data.h"
#include "descriptive/descriptive.h"
#include "frame/frame.h"
#include "vexa/nag.h"

namespace {

const char* const kProbabilityMessage =
    "expected: numeric constant or a list of numeric constants between 0 and 1, received %1";
const char* const kProbabilityListMessage =
    "expected: list of numeric constants between 0 and 1, received %1";
const char* const kRankMessage = "expected: integer or list of integers, received %1";

bool Flag(const STATS_VexaEntry_MP& entry, int i) {
  return VexaToM_BOOL(entry.Kernel(), entry.Arg(i)) > 0;
}

// Where a vector's values are worked on: the library's own converted array, the caller's
// array when allowed, or new scratch memory.
VexaFloat* Workspace(VexaKernelVector kv, const STATS_Vector_MP& v, bool allowCallers) {
  if (v.converted() || allowCallers) return v.data();
  return static_cast<VexaFloat*>(VexaNew(kv, v.size(), sizeof(VexaFloat)));
}

struct Prepared {
  VexaFloat* points = nullptr;
  VexaFloat* weights = nullptr;  // null for an unweighted sample
  int n = 0;
};

// The sample's values ready to be rearranged, missing values dropped when ignore is set.
Prepared Prepare(VexaKernelVector kv, const STATS_VexaDataSample_MP& sample, bool ignore,
                 bool inPlace) {
  Prepared r;
  const int size = sample.size();
  if (size == 0) return r;
  const bool callers = inPlace && !ignore;
  r.points = Workspace(kv, sample.pointsVector(), callers);
  if (sample.weighted()) r.weights = Workspace(kv, *sample.weightsVector(), callers);
  r.n = STATS_CopyData_MP(sample, r.points, r.weights, ignore);
  if (r.n < size)
    VexaUserInfo(kv, 1, "Statistics", "missing data has been detected in the dataset, discarded.");
  return r;
}

// The sample's values for reading only: its own arrays, or without the missing values.
Prepared Gather(VexaKernelVector kv, const STATS_VexaDataSample_MP& sample, bool ignore) {
  if (ignore) return Prepare(kv, sample, true, false);
  Prepared r;
  r.points = sample.points();
  r.weights = sample.weights();
  r.n = sample.size();
  return r;
}

// A percentile argument, checked to lie in [0, 100].
VexaFloat Percentile(const STATS_VexaEntry_MP& entry, int i, const char* message) {
  const VexaFloat p = entry.Float(i);
  if (!(p >= 0 && p <= 100)) VexaRaiseError1(entry.Kernel(), message, entry.Arg(i));
  return p;
}

using TrimWorker = VexaFloat (*)(VexaKernelVector, VexaFloat*, VexaFloat*, int, VexaFloat,
                                 VexaFloat, STATS_MEAN_TYPE_MP);

// (data, lower percentile, upper percentile, weights, ignore, mean type), always on a copy.
ALGEB TrimmedEntry(VexaKernelVector kv, ALGEB args, const char* name, TrimWorker worker) {
  STATS_VexaEntry_MP entry(kv, args, name, 6, STATS_VexaEntry_MP::ShortArityMessage(6));
  VexaFloat lower, upper;
  STATS_PercentileFractions_MP(entry, &lower, &upper);
  STATS_VexaDataSample_MP sample(kv, entry.Arg(1), entry.Arg(4));
  const bool ignore = Flag(entry, 5);
  const auto type = static_cast<STATS_MEAN_TYPE_MP>(entry.Integer(6));
  const Prepared data = Prepare(kv, sample, ignore, false);
  return entry.Result(worker(kv, data.points, data.weights, data.n, lower, upper, type));
}

bool IsProbability(const VexaFloat& p) {
  return p >= 0 && p <= 1;  // false for undefined
}

ALGEB UndefinedResults(VexaKernelVector kv, ALGEB spec) {
  if (!IsVexaList(kv, spec)) return STATS_DoubleToVexaFloat_MP(kv, VexaFloatUndefined());
  const M_INT m = VexaListLength(kv, spec);
  ALGEB list = VexaListAlloc(kv, m);
  for (M_INT i = 1; i <= m; ++i)
    VexaListAssign(kv, list, i, STATS_DoubleToVexaFloat_MP(kv, VexaFloatUndefined()));
  return list;
}

ALGEB ListOf(VexaKernelVector kv, const std::vector<VexaFloat>& values) {
  ALGEB list = VexaListAlloc(kv, static_cast<M_INT>(values.size()));
  for (size_t i = 0; i < values.size(); ++i)
    VexaListAssign(kv, list, static_cast<M_INT>(i + 1), STATS_DoubleToVexaFloat_MP(kv, values[i]));
  return list;
}

// The entries of a list argument (or the argument itself) as host values.
std::vector<ALGEB> Entries(VexaKernelVector kv, ALGEB spec) {
  if (!IsVexaList(kv, spec)) return {spec};
  std::vector<ALGEB> entries;
  const M_INT m = VexaListLength(kv, spec);
  for (M_INT i = 1; i <= m; ++i) entries.push_back(VexaListSelect(kv, spec, i));
  return entries;
}

}  // namespace

void STATS_PercentileFractions_MP(const STATS_VexaEntry_MP& entry, VexaFloat* lower,
                                  VexaFloat* upper) {
  *lower = Percentile(entry, 2,
                      "expected second argument (lower percentile) to be a numeric constant "
                      "between 0 and 100, received: %1");
  *upper = Percentile(entry, 3,
                      "expected third argument (upper percentile) to be a numeric constant "
                      "between 0 and 100, received: %1");
  if (*lower > *upper)
    VexaRaiseError2(entry.Kernel(),
                    "the value of lower percentile is expected to be smaller than the value of "
                    "upper percentile, received: %1, %2",
                    entry.Arg(2), entry.Arg(3));
  // Fractions through the double nearest 0.01, not an exact hundredth.
  const VexaFloat hundredth(0.01);
  *lower = *lower * hundredth;
  *upper = *upper * hundredth;
}

extern "C" ALGEB STATS_VexaQuantile_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaQuantile", 6, STATS_VexaEntry_MP::ShortArityMessage(6));
  const bool ignore = Flag(entry, 4), inPlace = Flag(entry, 6);
  STATS_VexaDataSample_MP sample(kv, entry.Arg(1), entry.Arg(3));
  const Prepared data = Prepare(kv, sample, ignore, inPlace);
  const auto type = static_cast<STATS_QUANTILE_TYPE_MP>(entry.Integer(5));
  ALGEB spec = entry.Arg(2);
  const bool single = IsVexaNumeric(kv, spec);
  if (!single && !IsVexaList(kv, spec)) VexaRaiseError1(kv, kProbabilityMessage, spec);
  if (data.n == 0) return UndefinedResults(kv, spec);

  std::vector<VexaFloat> probs;
  for (ALGEB e : Entries(kv, spec)) {
    probs.push_back(STATS_VexaUtils_MP::VexaDAGToDouble(e));
    if (!IsProbability(probs.back()))
      VexaRaiseError1(kv, single ? kProbabilityMessage : kProbabilityListMessage, spec);
  }
  std::vector<VexaFloat> out(probs.size());
  STATS_Quantile_MP(out.data(), data.points, data.weights, probs.data(), data.n,
                    static_cast<int>(probs.size()), type);
  return single ? entry.Result(out[0]) : ListOf(kv, out);
}

extern "C" ALGEB STATS_VexaOrderStatistic_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaOrderStatistic", 4);
  STATS_VexaDataSample_MP sample(kv, entry.Arg(1));
  ALGEB spec = entry.Arg(2);
  entry.Arg(3);  // read and not used
  const bool ignore = Flag(entry, 4);
  int n = sample.size();
  VexaFloat* points = nullptr;
  if (n > 0) {
    points = Workspace(kv, sample.pointsVector(), false);
    n = STATS_CopySimpleData_MP(sample.points(), points, n, ignore);
  }
  const bool single = IsVexaInteger(kv, spec);
  if (!single && !IsVexaList(kv, spec)) VexaRaiseError1(kv, kRankMessage, spec);
  if (n == 0) return UndefinedResults(kv, spec);

  std::vector<int> ranks;
  for (ALGEB e : Entries(kv, spec)) {
    if (!IsVexaInteger(kv, e)) VexaRaiseError1(kv, kRankMessage, spec);
    const bool inRange = IsVexaInteger32(kv, e);
    const int r = inRange ? VexaToInteger32(kv, e) : 0;
    if (!inRange || r == 0 || r < -n || r > n) VexaRaiseError1(kv, "index out of range: %1", e);
    ranks.push_back(r < 0 ? r + n + 1 : r);
  }
  std::vector<VexaFloat> out(ranks.size());
  STATS_OrderStatistic_MP(out.data(), points, nullptr, ranks.data(), n,
                          static_cast<int>(ranks.size()));
  return single ? entry.Result(out[0]) : ListOf(kv, out);
}

extern "C" ALGEB STATS_VexaMedian_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaMedian", 4, STATS_VexaEntry_MP::ShortArityMessage(4));
  const bool ignore = Flag(entry, 3), inPlace = Flag(entry, 4);
  STATS_VexaDataSample_MP sample(kv, entry.Arg(1), entry.Arg(2));
  const Prepared data = Prepare(kv, sample, ignore, inPlace);
  if (data.n == 0) return entry.Result(VexaFloatUndefined());
  return entry.Result(STATS_Median_MP(data.points, data.weights, data.n));
}

extern "C" ALGEB STATS_VexaFivePointSummary_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaFivePointSummary", 2,
                           "expected two arguments, received: %1");
  STATS_VexaDataSample_MP sample(kv, entry.Arg(1));
  const bool ignore = Flag(entry, 2);
  int n = sample.size();
  VexaFloat* points = sample.points();
  if (ignore && n > 0) {
    points = Workspace(kv, sample.pointsVector(), false);
    n = STATS_CopySimpleData_MP(sample.points(), points, n, 1);
  }
  ALGEB result = STATS_NewFloatRTable_MP(kv, 1, 5);
  NagError fail;
  VexaMP_g01alc(n, points, static_cast<VexaFloat*>(RTableDataBlock(kv, result)), &fail);
  if (fail.code == NE_INT_ARG_LT)
    VexaRaiseError1(kv, "data sample must contain at least five elements", ToVexaNULL(kv));
  if (fail.code != NE_NOERROR)
    VexaRaiseError1(kv, "internal error occured in a NAG routine", ToVexaNULL(kv));
  return result;
}

extern "C" ALGEB STATS_VexaMean_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaMean", 4, STATS_VexaEntry_MP::ShortArityMessage(4));
  STATS_VexaDataSample_MP sample(kv, entry.Arg(1), entry.Arg(2));
  const bool ignore = Flag(entry, 3);
  const auto type = static_cast<STATS_MEAN_TYPE_MP>(entry.Integer(4));
  const Prepared data = Gather(kv, sample, ignore);
  return entry.Result(STATS_Mean_MP(kv, data.points, data.weights, data.n, type));
}

extern "C" ALGEB STATS_VexaTrimmedMean_MP(VexaKernelVector kv, ALGEB args) {
  return TrimmedEntry(kv, args, "VexaTrimmedMean", STATS_TrimmedMean_MP);
}

extern "C" ALGEB STATS_VexaWinsorizedMean_MP(VexaKernelVector kv, ALGEB args) {
  return TrimmedEntry(kv, args, "VexaWinsorizedMean", STATS_WinsorizedMean_MP);
}

extern "C" ALGEB STATS_VexaMoment_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaMoment", 5);
  STATS_VexaDataSample_MP sample(kv, entry.Arg(1), entry.Arg(4));
  ALGEB spec = entry.Arg(2);
  std::vector<int> orders;
  const bool single = IsVexaInteger32(kv, spec);
  if (single) {
    orders.push_back(VexaToInteger32(kv, spec));  // any integer, unchecked
  } else if (IsVexaList(kv, spec)) {
    for (ALGEB e : Entries(kv, spec)) {
      if (!IsVexaInteger32(kv, e) || VexaToInteger32(kv, e) < 1)
        VexaRaiseError1(kv, "expected: list of positive integers, received %1", spec);
      orders.push_back(VexaToInteger32(kv, e));
    }
  } else {
    VexaRaiseError1(kv, kProbabilityMessage, spec);
  }
  const VexaFloat origin = entry.Float(3);
  const Prepared data = Gather(kv, sample, Flag(entry, 5));
  std::vector<VexaFloat> out(orders.size());
  STATS_Moment_MP(out.data(), data.points, data.weights, data.n, orders.data(),
                  static_cast<int>(orders.size()), origin);
  return single ? entry.Result(out[0]) : ListOf(kv, out);
}

extern "C" ALGEB STATS_VexaExpectedValue_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaExpectedValue", 4);
  ALGEB procedure = entry.Procedure(1);
  STATS_VexaDataSample_MP sample(kv, entry.Arg(2), entry.Arg(3));
  const Prepared data = Gather(kv, sample, Flag(entry, 4));
  STATS_VexaStaticProcAdapter_MP::Reset(procedure);
  return entry.Result(STATS_ExpectedValue_MP(STATS_VexaStaticProcAdapter_MP::Call, data.points,
                                             data.weights, data.n));
}

extern "C" ALGEB STATS_VexaAbsoluteDeviation_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaAbsoluteDeviation", 4);
  STATS_VexaDataSample_MP sample(kv, entry.Arg(1), entry.Arg(3));
  const VexaFloat centre = entry.Float(2);
  const Prepared data = Gather(kv, sample, Flag(entry, 4));
  return entry.Result(STATS_AbsoluteDeviation_MP(data.points, data.weights, data.n, centre));
}

// The medians reorder the data, so they run on a copy; the deviations overwrite it.
extern "C" ALGEB STATS_VexaMedianDeviation_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaMedianDeviation", 3,
                           STATS_VexaEntry_MP::ArityMessage("VexaAbsoluteDeviation", 3));
  STATS_VexaDataSample_MP sample(kv, entry.Arg(1), entry.Arg(2));
  const Prepared data = Prepare(kv, sample, Flag(entry, 3), false);
  if (data.n == 0) return entry.Result(VexaFloatUndefined());
  const VexaFloat m = STATS_Median_MP(data.points, data.weights, data.n);
  for (int i = 0; i < data.n; ++i) data.points[i] = fabs(data.points[i] - m);
  return entry.Result(STATS_Median_MP(data.points, data.weights, data.n));
}
