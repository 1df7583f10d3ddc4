// Conversion of host values to VexaFloat through evalf under a trap, and guarded evaluation
// of a host procedure at float arguments.
#include "frame/frame.h"

VexaKernelVector STATS_VexaUtils_MP::gVexaKernelVector = nullptr;
ALGEB STATS_VexaUtils_MP::gVexaEvalfProc = nullptr;

namespace {

const char* const kNotFloat = "unable to evaluate %1 to floating-point";

ALGEB ArgumentSequence(VexaKernelVector kv, const STATS_VexaUtils_MP::VexaCallbackArgs* a) {
  ALGEB seq = NewVexaExpressionSequence(kv, a->count);
  for (int i = 1; i <= a->count; ++i)
    VexaExpseqAssign(kv, seq, i, STATS_DoubleToVexaFloat_MP(kv, a->args[i]));
  return seq;
}

}  // namespace

bool STATS_IsFinite_MP(const VexaFloat& x) {
  return !IsVexaFloatUndefined(x) && !IsVexaFloatInfinity(x) && !IsVexaFloatNegativeInfinity(x);
}

void STATS_VexaUtils_MP::Initialize(VexaKernelVector kv) {
  gVexaKernelVector = kv;
  gVexaEvalfProc = ToVexaName(kv, "evalf", true);
  VexaGcProtect(kv, gVexaEvalfProc);
}

VexaFloat STATS_VexaUtils_MP::VexaDAGToDouble(ALGEB e) {
  VexaFloat value;
  if (!VexaDAGToDouble(e, &value)) ReportNonNumeric(e);
  return value;
}

bool STATS_VexaUtils_MP::VexaDAGToDouble(ALGEB e, VexaFloat* out) {
  VexaKernelVector kv = gVexaKernelVector;
  if (STATS_IsVexaFloatNode_MP(e)) {
    *out = STATS_VexaFloatToDouble_MP(kv, e);
    return true;
  }
  M_BOOL trapped = 0;
  ALGEB r = static_cast<ALGEB>(VexaTrapError(kv, VexaEvalfInternal, e, &trapped));
  if (trapped || !IsVexaNumeric(kv, r)) {
    *out = VexaFloat(0);
    return false;
  }
  *out = STATS_VexaFloatToDouble_MP(kv, r);
  return true;
}

void* STATS_VexaUtils_MP::VexaEvalfInternal(void* e) {
  ALGEB a = static_cast<ALGEB>(e);
  if (STATS_IsVexaFloatNode_MP(a)) return a;
  return EvalVexaProcedure(gVexaKernelVector, gVexaEvalfProc, a);
}

void* STATS_VexaUtils_MP::VexaEvalhfInternal(void* e) {
  static VexaFloat value;
  value = VexaEvalhf(gVexaKernelVector, static_cast<ALGEB>(e));
  return &value;
}

void STATS_VexaUtils_MP::ReportNonNumeric(ALGEB e) {
  VexaRaiseError1(gVexaKernelVector, kNotFloat, e);
}

void* STATS_VexaUtils_MP::TrapEvalfVexaProc(void* p) {
  static VexaFloat value;
  VexaKernelVector kv = gVexaKernelVector;
  const VexaCallbackArgs* a = static_cast<const VexaCallbackArgs*>(p);
  ALGEB r = EvalVexaProcedure(kv, a->procedure, ArgumentSequence(kv, a));
  if (!IsVexaNumeric(kv, r)) r = EvalVexaProcedure(kv, gVexaEvalfProc, r);
  value = STATS_VexaFloatToDouble_MP(kv, r);
  return &value;
}

VexaFloat STATS_VexaUtils_MP::EvalfVexaProc(VexaCallbackArgs* a) {
  VexaKernelVector kv = gVexaKernelVector;
  M_BOOL trapped = 0;
  void* res = VexaTrapError(kv, TrapEvalfVexaProc, a, &trapped);
  if (!trapped) {
    const VexaFloat value = *static_cast<const VexaFloat*>(res);
    if (STATS_IsFinite_MP(value)) return value;
  }
  // Once more without a trap: the procedure's own error, if it raised one, surfaces here.
  ALGEB r = EvalVexaProcedure(kv, a->procedure, ArgumentSequence(kv, a));
  VexaRaiseError1(kv, kNotFloat, r);
}
