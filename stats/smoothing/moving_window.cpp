// Moving mean and moving median. Both share one frame: the window and offset checks, weights
// of the window's length, missing values dropped on request, a result laid out from the
// data's own settings, and the running mode in which each result is written back into a
// working copy before the window moves on.
#include <algorithm>
#include <functional>
#include <memory>

#include "data/data.h"
#include "descriptive/descriptive.h"
#include "frame/frame.h"
#include "smoothing/smoothing.h"

namespace {

const char* const kWindowMessage =
    "invalid size of the moving window, expected: integer between 1 and %1, received: %2";
const char* const kOffsetMessage =
    "invalid offset for the moving window, expected: integer between 0 and %1, received: %2";
const char* const kWeightsMessage =
    "the number of elements in the weights array must be equal to the size of the moving window";

bool Flag(const STATS_VexaEntry_MP& entry, int i) {
  return VexaToM_BOOL(entry.Kernel(), entry.Arg(i)) > 0;
}

VexaFloat* NewFloats(VexaKernelVector kv, M_INT count) {
  return static_cast<VexaFloat*>(VexaNew(kv, count > 0 ? count : 1, sizeof(VexaFloat)));
}

// The window size and offset against count values.
void CheckWindow(const STATS_VexaEntry_MP& entry, M_INT w, M_INT o, int count) {
  VexaKernelVector kv = entry.Kernel();
  if (w < 1 || w > count)
    VexaRaiseError2(kv, kWindowMessage, ToVexaInteger(kv, count), entry.Arg(2));
  if (o < 0 || o >= count)
    VexaRaiseError2(kv, kOffsetMessage, ToVexaInteger(kv, count - 1), entry.Arg(3));
}

// What both statistics work on: values[0 .. count-1] (with room for the running mode's
// results), and weights[0 .. w-1] or none.
struct Frame {
  STATS_VexaEntry_MP& entry;
  std::unique_ptr<STATS_VexaDataSample_MP> data, weightData;
  bool ignore = false, running = false;
  int n = 0, m = 0, w = 0, o = 0;
  VexaFloat* values = nullptr;
  VexaFloat* weights = nullptr;
  int count = 0;

  Frame(STATS_VexaEntry_MP& e, int runningArg) : entry(e) {
    VexaKernelVector kv = entry.Kernel();
    data.reset(new STATS_VexaDataSample_MP(kv, entry.Arg(1)));
    weightData.reset(new STATS_VexaDataSample_MP(kv, entry.Arg(4)));
    ignore = Flag(entry, 5);
    n = data->size();
    m = weightData->size();
    const M_INT size = VexaToM_INT(kv, entry.Arg(2));
    const M_INT offset = VexaToM_INT(kv, entry.Arg(3));
    CheckWindow(entry, size, offset, n);
    w = static_cast<int>(size);
    o = static_cast<int>(offset);
    running = Flag(entry, runningArg);
  }

  // The data in place, or copied into n + o slots (the most a result needs), missing values
  // dropped when ignore is set.
  void UseData(bool inPlace) {
    if (inPlace) {
      values = data->points();
      count = n;
      return;
    }
    values = NewFloats(entry.Kernel(), static_cast<M_INT>(n) + o);
    count = STATS_CopyData_MP(*data, values, nullptr, ignore);
  }

  // The weights in place or copied under the ignore flag; none when there are none left.
  void UseWeights(bool inPlace) {
    if (m != 0 && !inPlace) {
      VexaFloat* copy = NewFloats(entry.Kernel(), m);
      m = STATS_CopyData_MP(*weightData, copy, nullptr, ignore);
      weights = copy;
    } else if (m != 0) {
      weights = weightData->points();
    }
    if (m == 0) weights = nullptr;
    if (m != 0 && m != w)
      VexaRaiseError1(entry.Kernel(), kWeightsMessage, ToVexaNULL(entry.Kernel()));
  }

  // After dropping: the window and offset must still fit the values that are left.
  void CheckDropped() {
    if (count == n) return;
    VexaUserInfo(entry.Kernel(), 1, "Statistics",
                 "missing data has been detected in the dataset, discarded.");
    CheckWindow(entry, w, o, count);
  }

  // Runs statistic over every window and returns the result Array 1 .. count - w + o + 1.
  ALGEB Smooth(const char* task, const std::function<VexaFloat(VexaFloat*)>& statistic) {
    VexaKernelVector kv = entry.Kernel();
    const M_INT length = static_cast<M_INT>(count) - w + o + 1;
    RTableSettings s;
    RTableGetSettings(kv, &s, entry.Arg(1));
    s.data_type = RTABLE_DAG;
    s.element_type = ToVexaName(kv, "sfloat", true);
    s.storage = RTABLE_RECT;
    s.num_dimensions = 1;
    M_INT bounds[2] = {1, length};
    const M_INT windows = length - o;
    STATS_Progress_MP progress(kv, task, windows, "windows");
    if (running) {
      for (M_INT t = 0; t < windows; ++t) {
        values[o + t] = statistic(values + t);
        if ((t & 0x3f) == 0x3f) progress.Update(t + 1);
      }
      return RTableCreate(kv, &s, values, bounds);
    }
    ALGEB out = RTableCreate(kv, &s, nullptr, bounds);
    auto* result = static_cast<VexaFloat*>(RTableDataBlock(kv, out));
    for (int k = 0; k < o; ++k) result[k] = values[k];
    for (M_INT t = 0; t < windows; ++t) {
      result[o + t] = statistic(values + t);
      if ((t & 0x3f) == 0x3f) progress.Update(t + 1);
    }
    return out;
  }
};

}  // namespace

extern "C" ALGEB STATS_VexaMovingMean_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaMovingMean", 7);
  Frame frame(entry, 7);
  const bool inPlace = !frame.ignore && !frame.running;
  frame.UseData(inPlace);
  frame.UseWeights(inPlace);
  const auto type = static_cast<STATS_MEAN_TYPE_MP>(VexaToM_INT(kv, entry.Arg(6)));
  frame.CheckDropped();
  const int w = frame.w;
  VexaFloat* weights = frame.weights;
  return frame.Smooth("moving mean", [kv, w, weights, type](VexaFloat* window) {
    return STATS_Mean_MP(kv, window, weights, w, type);
  });
}

extern "C" ALGEB STATS_VexaMovingMedian_MP(VexaKernelVector kv, ALGEB args) {
  STATS_VexaEntry_MP entry(kv, args, "VexaMovingMedian", 6);
  Frame frame(entry, 6);
  frame.UseData(false);
  frame.UseWeights(false);
  frame.CheckDropped();
  // the median reorders what it is given: every window is copied into scratch first
  const int w = frame.w;
  VexaFloat* weights = frame.weights;
  VexaFloat* scratch = NewFloats(kv, w);
  VexaFloat* scratchWeights = weights ? NewFloats(kv, w) : nullptr;
  return frame.Smooth("moving median", [=](VexaFloat* window) {
    std::copy(window, window + w, scratch);
    if (weights) std::copy(weights, weights + w, scratchWeights);
    return STATS_Median_MP(scratch, scratchWeights, w);
  });
}
