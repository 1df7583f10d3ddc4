// Sorting, ordering, ranking, shuffling, selecting, removing, trimming and winsorizing of
// host arrays. Every entry returns a new rtable and moves the caller's raw elements into it
// unconverted; orders come from the numerical library's stable ranking under the element
// type's comparator (host expressions are converted to floats once and ranked as such), so
// equal elements keep their order and missing values come last.
#include <cstring>
#include <vector>

#include "data/data.h"
#include "data/raw_array.h"
#include "descriptive/descriptive.h"
#include "frame/frame.h"
#include "random/random_stream.h"
#include "vexa/nag.h"

namespace {

using data_raw::RawArray;

static_assert(sizeof(VexaFloat) == sizeof(ALGEB), "a VexaFloat is one host handle");

bool Flag(const STATS_VexaEntry_MP& entry, int i) {
  return VexaToM_BOOL(entry.Kernel(), entry.Arg(i)) > 0;
}

// The keys an order is taken on: the raw elements with their type's comparator, or for host
// expressions the elements as floats (converted once) under the expression comparator.
struct Keys {
  const char* block;
  int width;
  STATS_Comparator_MP compare;

  const char* At(int i) const { return block + static_cast<size_t>(i) * width; }
  // A missing value (NaN, undefined) is the one value that does not compare equal to itself.
  bool Missing(int i) const { return compare(At(i), At(i)) != 0; }
  bool Tied(int i, int j) const { return compare(At(i), At(j)) == 0; }
};

Keys OrderKeys(VexaKernelVector kv, const RawArray& a) {
  const STATS_Comparator_MP compare = STATS_NumericComparator_MP(a.settings.data_type);
  if (compare == nullptr) VexaRaiseError(kv, "unable to compare complex numbers");
  if (a.settings.data_type != RTABLE_DAG) return {a.block, a.width, compare};
  const ALGEB* elements = reinterpret_cast<const ALGEB*>(a.block);
  int i = 0;
  while (i < a.n && STATS_IsVexaFloatNode_MP(elements[i])) ++i;
  if (i == a.n) return {a.block, a.width, compare};  // floats already
  VexaFloat* floats = static_cast<VexaFloat*>(VexaNew(kv, a.n, sizeof(VexaFloat)));
  for (i = 0; i < a.n; ++i) floats[i] = STATS_VexaUtils_MP::VexaDAGToDouble(elements[i]);
  return {reinterpret_cast<const char*>(floats), static_cast<int>(sizeof(VexaFloat)), compare};
}

void NoteDiscarded(VexaKernelVector kv) {
  VexaUserInfo(kv, 1, "Statistics", "missing data has been detected in the dataset, discarded.");
}

// Positions (0-based) of the elements in sorted order, the missing ones dropped when ignore.
std::vector<int> SortedPositions(VexaKernelVector kv, const Keys& keys, int n, bool ignore,
                                 bool descending) {
  std::vector<size_t> ranks(n);
  NagError fail;
  VexaMP_m01dsc(keys.block, n, keys.width, keys.compare,
                descending ? Nag_Descending : Nag_Ascending, ranks.data(), &fail);
  if (fail.code != NE_NOERROR) VexaRaiseError(kv, fail.message);
  std::vector<int> order(n);
  for (int i = 0; i < n; ++i) order[ranks[i]] = i;
  if (!ignore) return order;
  std::vector<int> kept;
  for (int p : order)
    if (!keys.Missing(p)) kept.push_back(p);
  if (static_cast<int>(kept.size()) < n) NoteDiscarded(kv);
  return kept;
}

// The elements at the given positions, in that order, as a new array like a.
ALGEB Gathered(VexaKernelVector kv, const RawArray& a, const std::vector<int>& positions) {
  const int k = static_cast<int>(positions.size());
  char* out = data_raw::Scratch(kv, a, k);
  for (int i = 0; i < k; ++i)
    std::memcpy(out + static_cast<size_t>(i) * a.width, a.Element(positions[i]), a.width);
  return data_raw::NewLike(kv, a, k, out);
}

// A sorted copy of a rectangular sfloat array: the floats themselves are sorted.
ALGEB SortFloats(VexaKernelVector kv, const RawArray& a, const VexaFloat* data, bool ignore,
                 bool descending) {
  VexaFloat* out = static_cast<VexaFloat*>(VexaNew(kv, a.n, sizeof(VexaFloat)));
  const int k = STATS_CopySimpleData_MP(data, out, a.n, ignore);
  if (k < a.n) NoteDiscarded(kv);
  NagError fail;
  VexaMP_m01cac(out, k, descending ? Nag_Descending : Nag_Ascending, &fail);
  if (fail.code != NE_NOERROR) VexaRaiseError(kv, fail.message);
  return data_raw::NewLike(kv, a, k, reinterpret_cast<const char*>(out));
}

ALGEB IntegerArray(VexaKernelVector kv, const std::vector<int32_t>& values) {
  return data_raw::NewArray(kv, RTABLE_INTEGER32, nullptr, static_cast<int>(values.size()),
                            reinterpret_cast<const char*>(values.data()));
}

enum TiesMethod { kAverage = 1, kMinimum = 2, kMaximum = 3, kFirst = 4 };

// Ranks (1-based) of the elements at the sorted positions, written by position into rank2
// as twice the rank (an average of two ranks may end in a half).
void TwiceRanks(const Keys& keys, const std::vector<int>& sorted, int ties,
                std::vector<long>& rank2) {
  const int k = static_cast<int>(sorted.size());
  for (int from = 0; from < k;) {
    int to = from;  // the tied run from .. to, 0-based places
    while (to + 1 < k && keys.Tied(sorted[to], sorted[to + 1])) ++to;
    for (int r = from; r <= to; ++r) {
      const long first = from + 1, last = to + 1;
      long twice = 2 * (r + 1);
      if (ties == kAverage) twice = first + last;
      if (ties == kMinimum) twice = 2 * first;
      if (ties == kMaximum) twice = 2 * last;
      rank2[sorted[r]] = twice;
    }
    from = to + 1;
  }
}

// Whether the predicate holds at v: true, or false for false and FAIL; anything else raises.
bool Holds(VexaKernelVector kv, ALGEB predicate, ALGEB v) {
  ALGEB r = EvalVexaProc(kv, predicate, 1, v);
  struct Test {
    VexaKernelVector kv;
    ALGEB r;
    M_BOOL value;
  } test{kv, r, 0};
  M_BOOL failed = 0;
  VexaTrapError(
      kv,
      [](void* p) -> void* {
        Test* t = static_cast<Test*>(p);
        t->value = VexaToM_BOOL(t->kv, t->r);
        return nullptr;
      },
      &test, &failed);
  if (failed || IsVexaInteger(kv, r))
    VexaRaiseError2(
        kv,
        "expected the predicate to return true or false, received %1 at element %2 (evalb "
        "decides a relation)",
        r, v);
  return test.value == 1;
}

// The elements for which the predicate is (keep) or is not true, in order: each kept one is
// swapped down over the rejected ones before it, which keeps the order of the kept.
ALGEB Filter(VexaKernelVector kv, ALGEB args, const char* name, bool keep) {
  STATS_VexaEntry_MP entry(kv, args, name, 2);
  const RawArray a = data_raw::Read(kv, entry.Arg(1));
  ALGEB predicate = entry.Procedure(2);
  char* work = data_raw::Scratch(kv, a, a.n);
  if (a.n > 0) std::memcpy(work, a.block, static_cast<size_t>(a.n) * a.width);
  std::vector<char> scratch(a.width);
  int k = 0;
  for (int i = 0; i < a.n; ++i) {
    if (Holds(kv, predicate, data_raw::ElementValue(kv, a, i)) != keep) continue;
    STATS_SwapByteArrays_MP(work + static_cast<size_t>(k) * a.width,
                            work + static_cast<size_t>(i) * a.width, scratch.data(), a.width);
    ++k;
  }
  return data_raw::NewLike(kv, a, k, work);
}

// Trim and winsorize: the sorted places lo .. top - 1 of the kept data are the trimmed mean's
// retained block; returns the positions in sorted order and each element's place.
struct Cut {
  std::vector<int> sorted;  // positions in sorted order
  std::vector<int> place;   // place of each position in sorted order, -1 when dropped
  int lo, top;
};

Cut CutBlock(VexaKernelVector kv, const STATS_VexaEntry_MP& entry, const RawArray& a) {
  VexaFloat lower, upper;
  STATS_PercentileFractions_MP(entry, &lower, &upper);
  const bool ignore = Flag(entry, 4);
  const Keys keys = OrderKeys(kv, a);
  Cut c;
  c.sorted = SortedPositions(kv, keys, a.n, ignore, false);
  c.place.assign(a.n, -1);
  const int k = static_cast<int>(c.sorted.size());
  for (int r = 0; r < k; ++r) c.place[c.sorted[r]] = r;
  STATS_TrimBlock_MP(k, lower, upper, &c.lo, &c.top);
  return c;
}

}  // namespace

void STATS_Shuffle_MP(char* block, int n, int width, char* scratch) {
  for (int i = n - 1; i > 0; --i) {
    const int j = static_cast<int>(STATS_VexaRandomStream_MP::NextIndex(i + 1));
    if (j != i)
      STATS_SwapByteArrays_MP(block + static_cast<size_t>(i) * width,
                              block + static_cast<size_t>(j) * width, scratch, width);
  }
}

extern "C" ALGEB STATS_VexaSort_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaSort", 3);
  const RawArray a = data_raw::Read(kv, entry.Arg(1));
  const bool ignore = Flag(entry, 2), descending = Flag(entry, 3);
  const Keys keys = OrderKeys(kv, a);
  if (a.settings.data_type == RTABLE_DAG && keys.block == a.block && a.n > 0)
    return SortFloats(kv, a, reinterpret_cast<const VexaFloat*>(a.block), ignore, descending);
  return Gathered(kv, a, SortedPositions(kv, keys, a.n, ignore, descending));
}

extern "C" ALGEB STATS_VexaOrderByRank_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaOrderByRank", 2);
  const RawArray a = data_raw::Read(kv, entry.Arg(1));
  const bool ignore = Flag(entry, 2);
  const std::vector<int> sorted = SortedPositions(kv, OrderKeys(kv, a), a.n, ignore, false);
  std::vector<int32_t> positions(sorted.begin(), sorted.end());
  for (int32_t& p : positions) ++p;
  return IntegerArray(kv, positions);
}

extern "C" ALGEB STATS_VexaRank_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaRank", 3);
  const RawArray a = data_raw::Read(kv, entry.Arg(1));
  const bool ignore = Flag(entry, 2);
  const int ties = IsVexaInteger32(kv, entry.Arg(3)) ? entry.Integer(3) : 0;
  if (ties < kAverage || ties > kFirst)
    VexaRaiseError1(kv,
                    "expected third argument (ties method) to be 1 (average), 2 (minimum), "
                    "3 (maximum) or 4 (first), received: %1",
                    entry.Arg(3));
  const Keys keys = OrderKeys(kv, a);
  const std::vector<int> sorted = SortedPositions(kv, keys, a.n, ignore, false);
  std::vector<long> rank2(a.n, 0);
  TwiceRanks(keys, sorted, ties, rank2);
  std::vector<double> averages;
  std::vector<int32_t> whole;
  for (int i = 0; i < a.n; ++i) {
    if (ignore && keys.Missing(i)) continue;
    averages.push_back(rank2[i] / 2.0);
    whole.push_back(static_cast<int32_t>(rank2[i] / 2));
  }
  if (ties != kAverage) return IntegerArray(kv, whole);
  return data_raw::NewArray(kv, RTABLE_FLOAT64, nullptr, static_cast<int>(averages.size()),
                            reinterpret_cast<const char*>(averages.data()));
}

extern "C" ALGEB STATS_VexaShuffle_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaShuffle", 1);
  const RawArray a = data_raw::Read(kv, entry.Arg(1));
  char* work = data_raw::Scratch(kv, a, a.n);
  if (a.n > 0) std::memcpy(work, a.block, static_cast<size_t>(a.n) * a.width);
  std::vector<char> scratch(a.width);
  STATS_Shuffle_MP(work, a.n, a.width, scratch.data());
  return data_raw::NewLike(kv, a, a.n, work);
}

extern "C" ALGEB STATS_VexaSelect_MP(VexaKernelVector kv, ALGEB args) {
  return Filter(kv, args, "VexaSelect", true);
}

extern "C" ALGEB STATS_VexaRemove_MP(VexaKernelVector kv, ALGEB args) {
  return Filter(kv, args, "VexaRemove", false);
}

extern "C" ALGEB STATS_VexaTrim_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaTrim", 4);
  const RawArray a = data_raw::Read(kv, entry.Arg(1));
  const Cut c = CutBlock(kv, entry, a);
  std::vector<int> kept;
  for (int i = 0; i < a.n; ++i)
    if (c.place[i] >= c.lo && c.place[i] < c.top) kept.push_back(i);
  return Gathered(kv, a, kept);
}

// With no retained block (equal percentiles) the one order statistic at lo is the cut value.
extern "C" ALGEB STATS_VexaWinsorize_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaWinsorize", 4);
  const RawArray a = data_raw::Read(kv, entry.Arg(1));
  const Cut c = CutBlock(kv, entry, a);
  const int k = static_cast<int>(c.sorted.size());
  if (k == 0) return data_raw::NewLike(kv, a, 0, nullptr);
  const int lo = c.lo < k ? c.lo : k - 1;
  const int top = c.top > lo ? c.top : lo + 1;
  std::vector<int> clamped;
  for (int i = 0; i < a.n; ++i) {
    const int r = c.place[i];
    if (r < 0) continue;
    clamped.push_back(r < lo ? c.sorted[lo] : r >= top ? c.sorted[top - 1] : i);
  }
  return Gathered(kv, a, clamped);
}
