// Raw element blocks of one-dimensional rtables: the caller's own block for rectangular
// storage, gathered element by element otherwise; and new rtables made from such blocks.
#include "data/raw_array.h"

#include <cstring>

#include "data/data.h"

namespace data_raw {

RawArray Read(VexaKernelVector kv, ALGEB a) {
  if (!IsVexaRTable(kv, a))
    VexaRaiseError1(kv, "invalid data sample, expected: rtable, received %1", a);
  if (RTableNumDimensions(kv, a) != 1)
    VexaRaiseError1(kv, "expected: one-dimensional array, received %1", a);
  RawArray r;
  r.source = a;
  RTableGetSettings(kv, &r.settings, a);
  r.width = STATS_RTableDataSize_MP(kv, r.settings.data_type);
  const M_INT lo = RTableLowerBound(kv, a, 1), n = RTableUpperBound(kv, a, 1) - lo + 1;
  r.n = n > 0 ? static_cast<int>(n) : 0;
  if (r.n == 0 || r.settings.storage == RTABLE_RECT) {
    r.block = r.n == 0 ? nullptr : static_cast<const char*>(RTableDataBlock(kv, a));
    return r;
  }
  char* block = Scratch(kv, r, r.n);
  for (int i = 0; i < r.n; ++i) {
    M_INT index[1] = {lo + i};
    const RTableData d = RTableSelect(kv, a, index);
    std::memcpy(block + static_cast<size_t>(i) * r.width, &d, r.width);
  }
  r.block = block;
  return r;
}

char* Scratch(VexaKernelVector kv, const RawArray& a, int count) {
  return static_cast<char*>(VexaNew(kv, count > 0 ? count : 1, a.width));
}

ALGEB NewArray(VexaKernelVector kv, int datatype, ALGEB elementType, int count, const char* block) {
  RTableSettings s;
  RTableGetDefaults(kv, &s);
  s.data_type = datatype;
  if (elementType != nullptr) s.element_type = elementType;
  s.num_dimensions = 1;
  s.storage = RTABLE_RECT;
  M_INT bounds[2] = {1, count};
  return RTableCreate(kv, &s, count > 0 ? const_cast<char*>(block) : nullptr, bounds);
}

ALGEB NewLike(VexaKernelVector kv, const RawArray& a, int count, const char* block) {
  RTableSettings s = a.settings;
  s.num_dimensions = 1;
  s.storage = RTABLE_RECT;
  s.read_only = 0;
  M_INT bounds[2] = {1, count};
  return RTableCreate(kv, &s, count > 0 ? const_cast<char*>(block) : nullptr, bounds);
}

ALGEB ElementValue(VexaKernelVector kv, const RawArray& a, int i) {
  RTableData d;
  std::memcpy(&d, a.Element(i), a.width);
  switch (a.settings.data_type) {
    case RTABLE_DAG:
      return d.dag;
    case RTABLE_CXDAG:
      if (IsVexaUnnamedZero(kv, d.cxdag.im)) return d.cxdag.re;
      if (!IsVexaNumeric(kv, d.cxdag.re) || !IsVexaNumeric(kv, d.cxdag.im))
        VexaRaiseError1(kv, "unable to evaluate %1 to floating-point", d.cxdag.im);
      return ToVexaComplexFloat(kv, d.cxdag.re, d.cxdag.im);
    case RTABLE_INTEGER8:
      return ToVexaInteger(kv, d.int8);
    case RTABLE_INTEGER16:
      return ToVexaInteger(kv, d.int16);
    case RTABLE_INTEGER32:
      return ToVexaInteger(kv, d.int32);
    case RTABLE_INTEGER64:
      return ToVexaInteger64(kv, d.int64);
    case RTABLE_FLOAT64:
      return ToVexaFloat(kv, d.float64);
    case RTABLE_COMPLEX:
      if (d.complexf64.im == 0) return ToVexaFloat(kv, d.complexf64.re);
      return ToVexaComplex(kv, d.complexf64.re, d.complexf64.im);
    default:
      return ToVexaFloat(kv, d.float32);
  }
}

}  // namespace data_raw
