// Standard normal and standard exponential deviates by the ziggurat method (Marsaglia and
// Tsang, 2000; 256 layers). Each class holds its tables in static members, computed at the
// current Digits and rebuilt only when Digits has grown. Next runs the library's own variant
// of the algorithm; NextExact runs the published one on tables that close at f = 1, and is
// chosen when the host global _EnvStatisticsExactSampling is true.
#ifndef STATS_RANDOM_ZIGGURAT_H
#define STATS_RANDOM_ZIGGURAT_H

#include <cstdint>

#include "vexa/external.h"
#include "vexa/float.h"

// Tables of the published algorithm: r and v solved at the working precision so that the top
// layer closes at f = 1 and the base strip holds exactly the tail's mass.
struct STATS_ZigguratExactTables_MP {
  int digits = 0;    // Digits of the last build; 0 before the first
  VexaFloat r;       // start of the tail
  VexaFloat v;       // area of every layer
  int64_t k[256];    // fast acceptance: |h| < k[i] (h < k[i] for the exponential)
  VexaFloat w[256];  // layer widths over the integer scale
  VexaFloat f[256];  // f at each layer edge; f[0] = 1
};

class STATS_ZigguratNormalGenerator_MP {
 public:
  static int gDigits;
  static VexaFloat gD, gV, gM, gH;
  static int gK[256];
  static VexaFloat gW[256];
  static VexaFloat gF[256];
  static STATS_ZigguratExactTables_MP gExact;

  static void Reset();
  static VexaFloat Next();
  static void ResetExact();
  static VexaFloat NextExact();
};

class STATS_ZigguratExpGenerator_MP {
 public:
  static int gDigits;
  static VexaFloat gD, gV, gM, gH;
  static int gK[256];
  static VexaFloat gW[256];
  static VexaFloat gF[256];
  static STATS_ZigguratExactTables_MP gExact;

  static void Reset();
  static VexaFloat Next();
  static void ResetExact();
  static VexaFloat NextExact();
};

// The sampling switch: the host global _EnvStatisticsExactSampling, true or false (unassigned
// means false; anything else is an error). Within a scope, which an entry point opens, it is
// read at the first draw that needs it and kept for the rest of the call; outside any scope
// it is read at each draw.
class STATS_ExactSamplingScope_MP {
 public:
  STATS_ExactSamplingScope_MP();
  ~STATS_ExactSamplingScope_MP();
  STATS_ExactSamplingScope_MP(const STATS_ExactSamplingScope_MP&) = delete;
  STATS_ExactSamplingScope_MP& operator=(const STATS_ExactSamplingScope_MP&) = delete;

  static bool Read(VexaKernelVector kv);
  static bool Exact(VexaKernelVector kv);

 private:
  static int gScoped;  // -1 outside any scope, -2 not read yet, else 0 or 1
  int m_saved;
};

// One standard deviate each, with Reset before Next, by the algorithm the switch selects.
VexaFloat STATS_StandardNormalVariate_MP(VexaKernelVector kv);
VexaFloat STATS_StandardExponentialVariate_MP(VexaKernelVector kv);

#endif
