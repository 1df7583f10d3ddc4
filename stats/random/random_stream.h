// The library's uniform random source and the output arrays of random samples. Every draw
// comes from the host's own stream, so the host's seed decides every sample.
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
  // A uniform index on 0..n-1 (n >= 1) by the minimal-bits rule: the host word shifted right
  // until 2^31 - 1 shifted alike is at most n - 1, redrawn until it falls below n.
  static uint32_t NextIndex(uint64_t n);
};

// The output array of a random sample. Given an rtable, checks that it has rectangular
// storage and host-expression elements and returns it; given anything else, converts it to
// a size n and makes a new sample array of n elements.
ALGEB STATS_CreateRandomSample_MP(VexaKernelVector kv, ALGEB spec);
// A new one-dimensional array 1..n of host expressions declared sfloat, otherwise with the
// host's default settings. The third argument is not used.
ALGEB STATS_CreateRandomSample_MP(VexaKernelVector kv, int n, ALGEB unused);

#endif
