// Helpers of the root-finder tests: functions that log their points, host procedures made
// from float functions, entry-point calls.
#ifndef TESTS_ROOTFINDING_SUPPORT_H
#define TESTS_ROOTFINDING_SUPPORT_H

#include <functional>
#include <vector>

#include "frame/support.h"
#include "stats/rootfinding/rootfinding.h"

using FloatFn = std::function<VexaFloat(const VexaFloat&)>;

class LoggedFunction : public STATS_VexaCallbackAdapter_MP {
 public:
  explicit LoggedFunction(FloatFn fn) : STATS_VexaCallbackAdapter_MP(Kv()), fn_(std::move(fn)) {}
  VexaFloat Call(VexaFloat x) override {
    points.push_back(std::stod(VexaFloatToString(x)));
    values.push_back(x);
    return fn_(x);
  }
  std::vector<double> points;
  std::vector<VexaFloat> values;  // the points at full precision

 private:
  FloatFn fn_;
};

inline ALGEB FloatProc(FloatFn fn) {
  return vexa::NewNativeProcedure("f", [fn](vexa::Kernel*, ALGEB args) {
    return vexa::NewFloat(fn(VexaFloat(VexaExpseqSelect(Kv(), args, 1))));
  });
}

inline ALGEB Num(const char* text) {
  return vexa::NewFloat(VexaFloatFromString(text));
}

inline ALGEB Int(long long v) {
  return vexa::NewInteger(v);
}

using EntryPoint = ALGEB (*)(VexaKernelVector, ALGEB);

inline ALGEB CallEntry(EntryPoint entry, const std::vector<ALGEB>& args) {
  return entry(Kv(), vexa::NewExpseq(args));
}

inline std::string EntryError(EntryPoint entry, const std::vector<ALGEB>& args) {
  return ErrorOf([&] { CallEntry(entry, args); });
}

#endif
