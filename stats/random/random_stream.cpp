// Draws from the host's random stream through the kernel handle stored at initialisation,
// and the sample arrays that random-sample entry points fill.
#include "random/random_stream.h"

VexaKernelVector STATS_VexaRandomStream_MP::gVexaKernelVector = nullptr;

uint32_t STATS_VexaRandomStream_MP::NextInteger() {
  return VexaRandomInt32(gVexaKernelVector);
}

uint32_t STATS_VexaRandomStream_MP::NextIndex(uint64_t n) {
  const uint64_t last = n - 1;
  int shift = 0;
  if (last < 2147483647u)
    do ++shift; while ((2147483647u >> shift) > last);
  uint32_t k;
  do k = NextInteger() >> shift; while (k > last);
  return k;
}

VexaFloat STATS_VexaRandomStream_MP::NextDouble() {
  return VexaFloat(VexaRandomSoftwareFloat01(gVexaKernelVector));
}

ALGEB STATS_CreateRandomSample_MP(VexaKernelVector kv, ALGEB spec) {
  if (!IsVexaRTable(kv, spec)) return STATS_CreateRandomSample_MP(kv, VexaToInteger32(kv, spec), spec);
  RTableSettings settings;
  RTableGetSettings(kv, &settings, spec);
  if (settings.storage != RTABLE_RECT)
    VexaRaiseError1(kv, "output array must have rectangular storage, received: %1", spec);
  // Only the element representation is tested: float[8] arrays are refused, and a
  // host-expression array passes whatever element type it declares.
  if (settings.data_type != RTABLE_DAG)
    VexaRaiseError1(kv, "output array must have float[8] or sfloat data type, received: %1", spec);
  return spec;
}

ALGEB STATS_CreateRandomSample_MP(VexaKernelVector kv, int n, ALGEB) {
  RTableSettings settings;
  RTableGetDefaults(kv, &settings);
  settings.data_type = RTABLE_DAG;
  settings.element_type = ToVexaName(kv, "sfloat", 1);
  settings.num_dimensions = 1;
  M_INT bounds[2] = {1, n};
  return RTableCreate(kv, &settings, nullptr, bounds);
}
