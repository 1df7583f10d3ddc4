// Free conversions between host values and VexaFloat, and the host-float node test.
#include <cstdint>
#include <cstring>

#include "frame/frame.h"

bool STATS_IsVexaFloatNode_MP(ALGEB e) {
  const uintptr_t word = reinterpret_cast<uintptr_t>(e);
  if (word & 1) return false;
  uint32_t header;
  std::memcpy(&header, reinterpret_cast<const void*>(e), sizeof header);
  return (header >> 26) == 4;
}

ALGEB STATS_DoubleToVexaFloat_MP(VexaKernelVector, VexaFloat x) {
  return x.Handle();
}

VexaFloat STATS_VexaFloatToDouble_MP(VexaKernelVector, ALGEB e) {
  return VexaFloat(e);
}

VexaFloat STATS_FloatUndefined_MP(VexaKernelVector) {
  return VexaFloatUndefined();
}

int STATS_GetVexaDigits_MP() {
  return VexaDigits();
}

int STATS_DoubleToInteger_MP(VexaFloat x) {
  return FloatToInt(x);
}

namespace {

const char* const kExpectedFloat = "expected vexa float, received %1";

VexaFloat ExpressionElement(VexaKernelVector kv, ALGEB e) {
  if (!IsVexaNumeric(kv, e)) VexaRaiseError1(kv, kExpectedFloat, e);
  return STATS_VexaFloatToDouble_MP(kv, e);
}

// A complex element is a real number only when its imaginary part is zero.
VexaFloat ComplexExpressionElement(VexaKernelVector kv, RTableComplexDag c) {
  if (IsVexaNumeric(kv, c.re) && IsVexaUnnamedZero(kv, c.im))
    return STATS_VexaFloatToDouble_MP(kv, c.re);
  const bool numeric = IsVexaNumeric(kv, c.re) && IsVexaNumeric(kv, c.im);
  VexaRaiseError1(kv, kExpectedFloat, numeric ? ToVexaComplexFloat(kv, c.re, c.im) : c.re);
}

VexaFloat ComplexFloat64Element(VexaKernelVector kv, ComplexFloat64 c) {
  if (c.im == 0.0) return VexaFloat(c.re);
  VexaRaiseError1(kv, kExpectedFloat, ToVexaComplex(kv, c.re, c.im));
}

}  // namespace

VexaFloat RTableDataToDouble(VexaKernelVector kv, RTableData d, int datatype) {
  switch (datatype) {
    case RTABLE_FLOAT32:
      return VexaFloat(static_cast<double>(d.float32));
    case RTABLE_FLOAT64:
      return VexaFloat(d.float64);
    case RTABLE_INTEGER8:
      return VexaFloat(static_cast<int>(d.int8));
    case RTABLE_INTEGER16:
      return VexaFloat(static_cast<int>(d.int16));
    case RTABLE_INTEGER32:
      return VexaFloat(static_cast<long long>(d.int32));
    case RTABLE_INTEGER64:
      return VexaFloat(static_cast<long long>(d.int64));
    case RTABLE_CXDAG:
      return ComplexExpressionElement(kv, d.cxdag);
    case RTABLE_COMPLEX:
      return ComplexFloat64Element(kv, d.complexf64);
    default:
      return ExpressionElement(kv, d.dag);
  }
}
