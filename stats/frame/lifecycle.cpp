// Library start and stop: the stored kernel handle and the initialized flag guard one
// initialisation of the shared adapter, the random stream and the utilities, in that order.
#include "frame/frame.h"
#include "random/random_stream.h"

namespace {
VexaKernelVector gStoredKernelVector = nullptr;
unsigned char gInitialized = 0;
}  // namespace

extern "C" ALGEB STATS_StatsInitialize_MP(VexaKernelVector kv, ALGEB) {
  if (gInitialized == 0) {
    gStoredKernelVector = kv;
    gInitialized = 1;
    STATS_VexaStaticProcAdapter_MP::Initialize(kv);
    STATS_VexaRandomStream_MP::Initialize(kv);
    STATS_VexaUtils_MP::Initialize(kv);
  }
  return ToVexaBoolean(kv, true);
}

extern "C" ALGEB STATS_StatsTerminate_MP(VexaKernelVector kv, ALGEB) {
  gStoredKernelVector = nullptr;
  gInitialized = 0;
  STATS_VexaRandomStream_MP::Terminate();
  STATS_VexaUtils_MP::Terminate();
  return ToVexaBoolean(kv, true);
}
