// Draws from the host's random stream through the kernel handle stored at initialisation.
#include "random/random_stream.h"

VexaKernelVector STATS_VexaRandomStream_MP::gVexaKernelVector = nullptr;

uint32_t STATS_VexaRandomStream_MP::NextInteger() {
  return VexaRandomInt32(gVexaKernelVector);
}

VexaFloat STATS_VexaRandomStream_MP::NextDouble() {
  return VexaFloat(VexaRandomSoftwareFloat01(gVexaKernelVector));
}
