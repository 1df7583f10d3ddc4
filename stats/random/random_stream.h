// The library's uniform random source: every draw comes from the host's own stream, so the
// host's seed decides every sample.
#ifndef STATS_RANDOM_RANDOM_STREAM_H
#define STATS_RANDOM_RANDOM_STREAM_H

#include <cstdint>

#include "vexa/external.h"
#include "vexa/float.h"

class STATS_VexaRandomStream_MP {
 public:
  static VexaKernelVector gVexaKernelVector;

  static void Initialize(VexaKernelVector kv) { gVexaKernelVector = kv; }
  static void Terminate() {}

  // The host's next 32-bit word, all bits uniform.
  static uint32_t NextInteger();
  // The host's uniform float on the unit interval at the current Digits, taken as it comes.
  static VexaFloat NextDouble();
};

#endif
