// A small stand-in for the statistics library, for the shell's binding tests: it exports
// the lifecycle entry points and a few STATS_Vexa..._MP functions.
#include "vexa/external.h"
#include "vexa/float.h"

namespace {
VexaKernelVector gKernel = nullptr;
int gInitializations = 0;
}  // namespace

extern "C" {

ALGEB STATS_StatsInitialize_MP(VexaKernelVector kv, ALGEB) {
  gKernel = kv;
  ++gInitializations;
  return ToVexaBoolean(kv, 1);
}

ALGEB STATS_StatsTerminate_MP(VexaKernelVector kv, ALGEB) {
  gKernel = nullptr;
  return ToVexaBoolean(kv, 1);
}

// VexaEcho(...): the argument sequence as it arrives.
ALGEB STATS_VexaEcho_MP(VexaKernelVector, ALGEB args) {
  return args;
}

// VexaAddFloats(a, b): a + b in VexaFloat at the current Digits.
ALGEB STATS_VexaAddFloats_MP(VexaKernelVector kv, ALGEB args) {
  if (VexaNumArgs(kv, args) != 2)
    VexaRaiseError1(kv, "VexaAddFloats expects 2 arguments, received: %1", args);
  VexaFloat a(VexaExpseqSelect(kv, args, 1)), b(VexaExpseqSelect(kv, args, 2));
  return (a + b).Handle();
}

// VexaApply(f, x): calls the host procedure f at x.
ALGEB STATS_VexaApply_MP(VexaKernelVector kv, ALGEB args) {
  if (VexaNumArgs(kv, args) != 2)
    VexaRaiseError1(kv, "VexaApply expects 2 arguments, received: %1", args);
  ALGEB f = VexaExpseqSelect(kv, args, 1);
  if (!IsVexaProcedure(kv, f))
    VexaRaiseError1(kv, "VexaApply expects a procedure as its first parameter, received: %1", f);
  return EvalVexaProc(kv, f, 1, VexaExpseqSelect(kv, args, 2));
}

// VexaInitializations(): how often the library was initialised.
ALGEB STATS_VexaInitializations_MP(VexaKernelVector kv, ALGEB) {
  return ToVexaInteger(kv, gInitializations);
}
}
