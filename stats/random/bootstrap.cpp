// Bootstrap resampling (Efron, 1979): arrays of elements drawn with replacement, uniformly by
// the minimal-bits index rule or with weights through the alias urn, and replicates of a
// statistic over such resamples or over values made by a generating procedure.
#include <cstring>
#include <memory>

#include "data/data.h"
#include "frame/frame.h"
#include "random/random_stream.h"
#include "random/resampling.h"

namespace {

const char* const kEmptyData = "expected: non-empty data array, received %1";

// A one-dimensional rtable, else "expected: one-dimensional array, received %1".
ALGEB OneDimensional(const STATS_VexaEntry_MP& entry, int i) {
  ALGEB e = entry.Arg(i);
  if (!IsVexaRTable(entry.Kernel(), e) || RTableNumDimensions(entry.Kernel(), e) != 1)
    VexaRaiseError1(entry.Kernel(), "expected: one-dimensional array, received %1", e);
  return e;
}

// A replicate count; fewer than one gives an empty result.
int Replicates(const STATS_VexaEntry_MP& entry, int i) {
  const M_INT R = VexaToM_INT(entry.Kernel(), entry.Arg(i));
  return R < 1 ? 0 : static_cast<int>(R > 2147483647 ? 2147483647 : R);
}

// Draws an index into the data: uniform over 0 .. range-1, or from the urn when there is one.
class IndexSource {
 public:
  IndexSource(uint64_t range, STATS_AliasUrnGenerator_MP* urn) : m_range(range), m_urn(urn) {}
  uint32_t Next() {
    return m_urn ? static_cast<uint32_t>(m_urn->Next())
                 : STATS_VexaRandomStream_MP::NextIndex(m_range);
  }

 private:
  uint64_t m_range;
  STATS_AliasUrnGenerator_MP* m_urn;
};

VexaFloat* FloatBlock(VexaKernelVector kv, ALGEB rt) {
  return static_cast<VexaFloat*>(RTableDataBlock(kv, rt));
}

}  // namespace

extern "C" ALGEB STATS_VexaBootstrapSample_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaBootstrapSample", 4,
                           STATS_VexaEntry_MP::ShortArityMessage(4));
  ALGEB A = OneDimensional(entry, 1);
  ALGEB W = OneDimensional(entry, 4);
  const M_INT r = VexaToM_INT(kv, entry.Arg(2));
  const M_INT c = VexaToM_INT(kv, entry.Arg(3));
  RTableSettings s;
  RTableGetSettings(kv, &s, A);
  if (s.storage != RTABLE_RECT)
    VexaRaiseError1(kv, "input array must have rectangular storage type", ToVexaNULL(kv));
  const M_INT n = RTableNumElements(kv, A);

  s.num_dimensions = 2;
  s.storage = RTABLE_RECT;
  M_INT bounds[4] = {1, r, 1, c};
  ALGEB out = RTableCreate(kv, &s, nullptr, bounds);
  const M_INT count = RTableNumElements(kv, out);
  if (count == 0) return out;
  if (n == 0) VexaRaiseError1(kv, kEmptyData, A);

  std::unique_ptr<STATS_VexaDataSample_MP> weights;
  std::unique_ptr<STATS_AliasUrnGenerator_MP> urn;
  if (RTableNumElements(kv, W) != 0) {
    if (RTableNumElements(kv, W) != n)
      VexaRaiseError1(kv, "data array and weights array must have the same number of elements",
                      ToVexaNULL(kv));
    weights.reset(new STATS_VexaDataSample_MP(kv, W));
    urn.reset(new STATS_AliasUrnGenerator_MP(static_cast<int>(n), static_cast<int>(n),
                                             weights->points()));
  }
  IndexSource index(static_cast<uint64_t>(n), urn.get());

  // whole elements of the data type's real width (handles are sizeof(ALGEB) wide)
  const size_t width = STATS_RTableDataSize_MP(kv, s.data_type);
  const char* from = static_cast<const char*>(RTableDataBlock(kv, A));
  char* to = static_cast<char*>(RTableDataBlock(kv, out));
  STATS_Progress_MP progress(kv, "bootstrap sample", count, "elements");
  for (M_INT i = 0; i < count; ++i) {
    std::memcpy(to + i * width, from + index.Next() * width, width);
    if ((i & 0xfff) == 0xfff) progress.Update(i + 1);
  }
  return out;
}

extern "C" ALGEB STATS_VexaBootstrapStatistic_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaBootstrapStatistic", 5,
                           STATS_VexaEntry_MP::ShortArityMessage(5));
  STATS_VexaDataSample_MP sample(kv, entry.Arg(1), entry.Arg(2));
  ALGEB P = entry.Arg(3);
  const M_INT size = VexaToM_INT(kv, entry.Arg(4));
  const int R = Replicates(entry, 5);
  const int n = sample.size();
  // unweighted draws range over the resample size itself, so it may not exceed the data
  const M_INT most = sample.weighted() ? 2147483647 : n;
  if (size < 0 || size > most)
    VexaRaiseError2(kv, "invalid resample size, expected: integer between 0 and %1, received: %2",
                    ToVexaInteger(kv, most), entry.Arg(4));
  const int s = static_cast<int>(size);
  if (n == 0 && s > 0 && R > 0) VexaRaiseError1(kv, kEmptyData, entry.Arg(1));

  ALGEB result = STATS_NewFloatRTable_MP(kv, 1, R);
  ALGEB work = STATS_NewFloatRTable_MP(kv, 1, s);
  if (R == 0) return result;
  std::unique_ptr<STATS_AliasUrnGenerator_MP> urn;
  if (sample.weighted()) urn.reset(new STATS_AliasUrnGenerator_MP(n, n, sample.weights()));
  IndexSource index(static_cast<uint64_t>(s), urn.get());

  const VexaFloat* points = sample.points();
  VexaFloat* values = FloatBlock(kv, result);
  VexaFloat* drawn = FloatBlock(kv, work);
  STATS_Progress_MP progress(kv, "bootstrap", R, "replicates");
  for (int i = 0; i < R; ++i) {
    for (int j = 0; j < s; ++j) drawn[j] = points[index.Next()];
    values[i] = STATS_VexaUtils_MP::VexaDAGToDouble(EvalVexaProc(kv, P, 1, work));
    progress.Update(i + 1);
  }
  return result;
}

extern "C" ALGEB STATS_VexaBootstrapStatisticRV_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaBootstrapStatisticRV", 4,
                           STATS_VexaEntry_MP::ShortArityMessage(4));
  ALGEB G = entry.Arg(1), P = entry.Arg(2), a = entry.Arg(3);
  const int R = Replicates(entry, 4);
  ALGEB result = STATS_NewFloatRTable_MP(kv, 1, R);
  VexaFloat* values = FloatBlock(kv, result);
  STATS_Progress_MP progress(kv, "bootstrap", R, "replicates");
  for (int i = 0; i < R; ++i) {
    ALGEB y = EvalVexaProc(kv, G, 1, a);
    values[i] = STATS_VexaUtils_MP::VexaDAGToDouble(EvalVexaProc(kv, P, 1, y));
    progress.Update(i + 1);
  }
  return result;
}
