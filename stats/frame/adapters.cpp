// A host procedure as a function of one float: the argument goes in as a host float, an exact
// or symbolic result goes through evalf, and the result comes back unchecked.
#include "frame/frame.h"

STATS_VexaProcAdapter_MP STATS_VexaStaticProcAdapter_MP::m_procInstance(nullptr, nullptr);

VexaFloat STATS_VexaProcAdapter_MP::Call(VexaFloat x) {
  ALGEB e = STATS_DoubleToVexaFloat_MP(m_kv, x);
  ALGEB r = EvalVexaProcedure(m_kv, m_proc, e);
  if (!IsVexaNumeric(m_kv, r)) r = EvalVexaProcedure(m_kv, ToVexaName(m_kv, "evalf", true), r);
  return STATS_VexaFloatToDouble_MP(m_kv, r);
}

VexaFloat STATS_VexaGuardedProcAdapter_MP::Call(VexaFloat x) {
  VexaFloat args[2] = {VexaFloat(), x};
  STATS_VexaUtils_MP::VexaCallbackArgs a = {m_proc, nullptr, 1, args};
  return STATS_VexaUtils_MP::EvalfVexaProc(&a);
}
