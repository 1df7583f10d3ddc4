// The conventions every entry point follows: arity check first, arguments fetched 1-based,
// floats through VexaDAGToDouble, procedures and arrays checked, messages formed from the
// entry point's name.
#include "frame/frame.h"

STATS_VexaEntry_MP::STATS_VexaEntry_MP(VexaKernelVector kv, ALGEB args, const char* name)
    : m_kv(kv), m_args(args), m_name(name ? name : "") {}

STATS_VexaEntry_MP::STATS_VexaEntry_MP(VexaKernelVector kv, ALGEB args, const char* name, int count)
    : STATS_VexaEntry_MP(kv, args, name) {
  if (NumArgs() != count) RaiseArity(ArityMessage(m_name, count));
}

STATS_VexaEntry_MP::STATS_VexaEntry_MP(VexaKernelVector kv, ALGEB args, const char* name, int count,
                                       const std::string& arityMessage)
    : STATS_VexaEntry_MP(kv, args, name) {
  if (NumArgs() != count) RaiseArity(arityMessage);
}

std::string STATS_VexaEntry_MP::ArityMessage(const std::string& name, int count) {
  return name + " expects " + std::to_string(count) + (count == 1 ? " argument" : " arguments") +
         ", received: %1";
}

std::string STATS_VexaEntry_MP::ShortArityMessage(int count) {
  return "expected " + std::to_string(count) + " arguments, received: %1";
}

std::string STATS_VexaEntry_MP::Ordinal(int position) {
  static const char* const kWords[] = {"first", "second", "third",    "fourth",
                                       "fifth", "sixth",  "seventh",  "eighth",
                                       "ninth", "tenth",  "eleventh", "twelfth"};
  if (position >= 1 && position <= 12) return kWords[position - 1];
  return std::to_string(position) + "th";
}

std::string STATS_VexaEntry_MP::ProcedureMessage(const std::string& name, int position) {
  return name + " expects a procedure as its " + Ordinal(position) + " parameter, received: %1";
}

int STATS_VexaEntry_MP::NumArgs() const {
  return static_cast<int>(VexaNumArgs(m_kv, m_args));
}

void STATS_VexaEntry_MP::RaiseArity(const std::string& message) const {
  VexaRaiseError1(m_kv, message.c_str(), m_args);
}

ALGEB STATS_VexaEntry_MP::Arg(int i) const {
  return VexaExpseqSelect(m_kv, m_args, i);
}

VexaFloat STATS_VexaEntry_MP::Float(int i) const {
  return STATS_VexaUtils_MP::VexaDAGToDouble(Arg(i));
}

int STATS_VexaEntry_MP::Integer(int i) const {
  return VexaToInteger32(m_kv, Arg(i));
}

ALGEB STATS_VexaEntry_MP::Procedure(int i) const {
  return Procedure(i, ProcedureMessage(m_name, i));
}

ALGEB STATS_VexaEntry_MP::Procedure(int i, const std::string& message) const {
  ALGEB e = Arg(i);
  if (!IsVexaProcedure(m_kv, e)) VexaRaiseError1(m_kv, message.c_str(), e);
  return e;
}

ALGEB STATS_VexaEntry_MP::RTable(int i, const std::string& message) const {
  ALGEB e = Arg(i);
  if (!IsVexaRTable(m_kv, e)) VexaRaiseError1(m_kv, message.c_str(), e);
  return e;
}

int STATS_VexaEntry_MP::Digits() const {
  return VexaToInteger32(m_kv, VexaEval(m_kv, ToVexaName(m_kv, "Digits", true)));
}

ALGEB STATS_VexaEntry_MP::SetDigits(int digits) const {
  return VexaAssign(m_kv, ToVexaName(m_kv, "Digits", true), ToVexaInteger(m_kv, digits));
}

ALGEB STATS_VexaEntry_MP::RestoreDigits(ALGEB previous) const {
  return VexaAssign(m_kv, ToVexaName(m_kv, "Digits", true), previous);
}

ALGEB STATS_VexaEntry_MP::Result(VexaFloat r, int digits) const {
  return EvalVexaProc(m_kv, ToVexaName(m_kv, "evalf", true), 2, STATS_DoubleToVexaFloat_MP(m_kv, r),
                      ToVexaInteger(m_kv, digits));
}
