// Host rtables as VexaFloat vectors and samples: a rectangular sfloat rtable is read in place,
// every other one converted element by element into a new sfloat rtable; and the copy
// functions that drop missing values.
#include <algorithm>
#include <cstring>
#include <vector>

#include "data/data.h"
#include "frame/frame.h"

namespace {

const char* const kNotNumeric = "unable to evaluate %1 to floating-point";

// A generic entry: a float node as it is, anything else through evalf.
VexaFloat ExpressionEntry(VexaKernelVector kv, ALGEB e) {
  if (STATS_IsVexaFloatNode_MP(e)) return STATS_VexaFloatToDouble_MP(kv, e);
  VexaFloat x;
  if (!STATS_VexaUtils_MP::VexaDAGToDouble(e, &x)) VexaRaiseError1(kv, kNotNumeric, e);
  return x;
}

// One element of any data type as a sample value. Integers and single floats go through a
// double, so 64-bit integers beyond 2^53 are rounded.
VexaFloat SampleEntry(VexaKernelVector kv, const RTableData& d, int datatype) {
  switch (datatype) {
    case RTABLE_DAG:
      return ExpressionEntry(kv, d.dag);
    case RTABLE_CXDAG:
      if (IsVexaUnnamedZero(kv, d.cxdag.im) && IsVexaNumeric(kv, d.cxdag.re))
        return STATS_VexaFloatToDouble_MP(kv, d.cxdag.re);
      VexaRaiseError1(kv, kNotNumeric, ToVexaComplexFloat(kv, d.cxdag.re, d.cxdag.im));
    case RTABLE_INTEGER8:
      return VexaFloat(static_cast<double>(d.int8));
    case RTABLE_INTEGER16:
      return VexaFloat(static_cast<double>(d.int16));
    case RTABLE_INTEGER32:
      return VexaFloat(static_cast<double>(d.int32));
    case RTABLE_INTEGER64:
      return VexaFloat(static_cast<double>(d.int64));
    case RTABLE_FLOAT64:
      return VexaFloat(d.float64);
    case RTABLE_COMPLEX:
      if (d.complexf64.im == 0.0) return VexaFloat(d.complexf64.re);
      VexaRaiseError1(kv, kNotNumeric, ToVexaComplex(kv, d.complexf64.re, d.complexf64.im));
    case RTABLE_FLOAT32:
      return VexaFloat(static_cast<double>(d.float32));
  }
  return VexaFloat();
}

bool IsSfloat(VexaKernelVector kv, const RTableSettings& s) {
  return s.element_type != nullptr && IsVexaName(kv, s.element_type) &&
         s.element_type == ToVexaName(kv, "sfloat", 1);
}

// A new protected rectangular sfloat rtable 0 .. slots-1, every element 0.
ALGEB NewWorkingRTable(VexaKernelVector kv, M_INT slots) {
  ALGEB rt = STATS_NewFloatRTable_MP(kv, 0, slots - 1);
  VexaGcProtect(kv, rt);
  return rt;
}

}  // namespace

ALGEB STATS_NewFloatRTable_MP(VexaKernelVector kv, M_INT lo, M_INT hi) {
  RTableSettings s;
  RTableGetDefaults(kv, &s);
  s.num_dimensions = 1;
  s.data_type = RTABLE_DAG;
  s.storage = RTABLE_RECT;
  s.element_type = ToVexaName(kv, "sfloat", 1);
  M_INT bounds[2] = {lo, hi};
  return RTableCreate(kv, &s, nullptr, bounds);
}

STATS_Vector_MP::STATS_Vector_MP(VexaKernelVector kv, ALGEB rtable)
    : m_source(nullptr), m_working(nullptr), m_data(nullptr), m_kv(kv) {
  SetData(kv, this, rtable);
}

int STATS_Vector_MP::size() const {
  M_INT n = RTableUpperBound(m_kv, m_source, 1) - RTableLowerBound(m_kv, m_source, 1) + 1;
  return n < 0 ? 0 : static_cast<int>(n);
}

void STATS_Vector_MP::SetData(VexaKernelVector kv, STATS_Vector_MP* self, ALGEB rtable) {
  self->m_kv = kv;
  if (!IsVexaRTable(kv, rtable))
    VexaRaiseError1(kv, "invalid data sample, expected: rtable, received %1", rtable);
  self->m_source = rtable;
  if (self->size() == 0) return;
  RTableSettings s;
  RTableGetSettings(kv, &s, rtable);
  if (s.storage == RTABLE_RECT && s.data_type == RTABLE_DAG && IsSfloat(kv, s)) {
    self->m_working = rtable;
    self->m_data = static_cast<VexaFloat*>(RTableDataBlock(kv, rtable));
    return;
  }
  ConvertData(kv, self);
}

void STATS_Vector_MP::ConvertData(VexaKernelVector kv, STATS_Vector_MP* self) {
  if (self->m_working != nullptr && self->m_working != self->m_source)
    VexaGcAllow(kv, self->m_working);
  const int n = self->size();
  RTableSettings s;
  RTableGetSettings(kv, &s, self->m_source);
  const M_INT lower = RTableLowerBound(kv, self->m_source, 1);
  // A non-rectangular generic rtable fills slot i for host index i (not i - lower): slot 0
  // is then left 0 and the last element lands past n - 1, so the array gets that room.
  const bool slotIsIndex = s.storage != RTABLE_RECT && s.data_type == RTABLE_DAG;
  const M_INT slots = slotIsIndex && lower > 0 ? lower + n : n;
  self->m_working = NewWorkingRTable(kv, slots);
  VexaFloat* out = static_cast<VexaFloat*>(RTableDataBlock(kv, self->m_working));
  self->m_data = out;
  if (s.data_type < 0 || s.data_type >= RTABLE_NUM_DATATYPES) return;

  if (s.storage == RTABLE_RECT) {
    const char* block = static_cast<const char*>(RTableDataBlock(kv, self->m_source));
    const int width = STATS_RTableDataSize_MP(kv, s.data_type);
    for (int i = 0; i < n; ++i) {
      RTableData d;
      std::memcpy(&d, block + static_cast<size_t>(i) * width, width);
      out[i] = SampleEntry(kv, d, s.data_type);
    }
    return;
  }
  // Walks dimension 1; a source of more dimensions is read along its first column, as the
  // rectangular walk of a column-major block does.
  std::vector<M_INT> index(std::max(s.num_dimensions, 1));
  for (int d = 1; d < s.num_dimensions; ++d)
    index[d] = RTableLowerBound(kv, self->m_source, d + 1);
  for (M_INT i = lower; i < lower + n; ++i) {
    index[0] = i;
    const M_INT slot = slotIsIndex ? i : i - lower;
    if (slot < 0) continue;  // below the working array
    out[slot] = SampleEntry(kv, RTableSelect(kv, self->m_source, index.data()), s.data_type);
  }
}

void* STATS_Vector_MP::VexaConvertData(void* rtable) {
  VexaKernelVector kv = STATS_VexaUtils_MP::gVexaKernelVector;
  RTableSettings s;
  RTableGetDefaults(kv, &s);
  s.data_type = RTABLE_DAG;
  s.element_type = ToVexaName(kv, "sfloat", 1);
  s.num_dimensions = 1;
  s.storage = RTABLE_RECT;
  ALGEB copy = RTableCopy(kv, &s, static_cast<ALGEB>(rtable));
  VexaGcProtect(kv, copy);
  return copy;
}

STATS_VexaDataSample_MP::STATS_VexaDataSample_MP(VexaKernelVector kv, ALGEB points)
    : m_points(new STATS_Vector_MP(kv, points)), m_kv(kv) {}

STATS_VexaDataSample_MP::STATS_VexaDataSample_MP(VexaKernelVector kv, ALGEB points, ALGEB weights)
    : STATS_VexaDataSample_MP(kv, points) {
  m_weights.reset(new STATS_Vector_MP(kv, weights));
  if (m_weights->size() == 0) {
    m_weights.reset();
  } else if (m_weights->size() != m_points->size()) {
    VexaRaiseError2(kv,
                    "vector of points and vector of weights are expected to have the same "
                    "size, received %1, %2",
                    points, weights);
  }
}

STATS_VexaDataSample_MP::STATS_VexaDataSample_MP(const STATS_VexaDataSample_MP& other)
    : m_points(new STATS_Vector_MP(*other.m_points)),
      m_weights(new STATS_Vector_MP(*other.m_points)),
      m_kv(other.m_kv) {}

int STATS_CopySimpleData_MP(const VexaFloat* in, VexaFloat* out, int n, int ignoreMissing) {
  if (!ignoreMissing) {
    for (int i = 0; i < n; ++i) out[i] = in[i];
    return n;
  }
  int k = 0;
  for (int i = 0; i < n; ++i) {
    VexaFloat x = in[i];
    if (!IsVexaFloatUndefined(x)) out[k++] = x;
  }
  return k;
}

int STATS_CopyWeightedData_MP(const VexaFloat* inPoints, const VexaFloat* inWeights,
                              VexaFloat* outPoints, VexaFloat* outWeights, int n,
                              int ignoreMissing) {
  if (!ignoreMissing) {
    for (int i = 0; i < n; ++i) {
      outPoints[i] = inPoints[i];
      outWeights[i] = inWeights[i];
    }
    return n;
  }
  int k = 0;
  for (int i = 0; i < n; ++i) {
    // A pair with a missing member is written and then overwritten by the next pair.
    outPoints[k] = inPoints[i];
    outWeights[k] = inWeights[i];
    if (!IsVexaFloatUndefined(outPoints[k]) && !IsVexaFloatUndefined(outWeights[k])) ++k;
  }
  return k;
}

int STATS_CopyData_MP(const STATS_VexaDataSample_MP& sample, VexaFloat* out) {
  return STATS_CopySimpleData_MP(sample.points(), out, sample.size(), 0);
}

int STATS_CopyData_MP(const STATS_VexaDataSample_MP& sample, VexaFloat* outPoints,
                      VexaFloat* outWeights, int ignoreMissing) {
  if (sample.weighted())
    return STATS_CopyWeightedData_MP(sample.points(), sample.weights(), outPoints, outWeights,
                                     sample.size(), ignoreMissing);
  return STATS_CopySimpleData_MP(sample.points(), outPoints, sample.size(), ignoreMissing);
}

int STATS_RTableDataSize_MP(VexaKernelVector, int datatype) {
  switch (datatype) {
    case RTABLE_DAG:
      return static_cast<int>(sizeof(ALGEB));
    case RTABLE_CXDAG:
      return static_cast<int>(2 * sizeof(ALGEB));
    case RTABLE_INTEGER8:
      return 1;
    case RTABLE_INTEGER16:
      return 2;
    case RTABLE_INTEGER64:
    case RTABLE_FLOAT64:
      return 8;
    case RTABLE_COMPLEX:
      return 16;
    default:
      return 4;
  }
}
