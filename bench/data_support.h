// What the benchmarks over host arrays share: random decimals, the initialised library and
// protected sfloat arrays made outside the timing.
#ifndef VEXA_BENCH_DATA_SUPPORT_H
#define VEXA_BENCH_DATA_SUPPORT_H

#include <random>
#include <string>
#include <vector>

#include "host/kernel.h"
#include "stats/data/data.h"
#include "stats/frame/frame.h"

namespace bench_data {

// count decimals 0.d1...dD of `digits` random digits, the same for one seed on every run.
inline std::vector<std::string> Decimals(int count, int digits, unsigned seed) {
  std::mt19937_64 rng(seed);
  std::vector<std::string> t;
  t.reserve(count);
  for (int i = 0; i < count; ++i) {
    std::string s = "0.";
    for (int d = 0; d < digits; ++d) s += static_cast<char>('0' + rng() % 10);
    t.push_back(s);
  }
  return t;
}

inline VexaKernelVector Kernel() {
  static VexaKernelVector kv = [] {
    VexaKernelVector k = vexa::GetKernel();
    STATS_StatsInitialize_MP(k, vexa::Null());
    return k;
  }();
  return kv;
}

// A protected sfloat array 1 .. n of the given values.
inline ALGEB SfloatArray(const std::vector<std::string>& values) {
  VexaKernelVector kv = Kernel();
  ALGEB a = STATS_NewFloatRTable_MP(kv, 1, static_cast<M_INT>(values.size()));
  VexaGcProtect(kv, a);
  auto* data = static_cast<VexaFloat*>(RTableDataBlock(kv, a));
  for (size_t i = 0; i < values.size(); ++i) data[i] = VexaFloatFromString(values[i]);
  return a;
}

}  // namespace bench_data

#endif
