// rtables: arrays of any number of dimensions with per-dimension bounds. Rectangular
// storage keeps one contiguous data block of the data type's element width (column-major
// or row-major); sparse storage keeps only non-zero elements, as host values in a table
// keyed by the linear position.
#include <cstring>
#include <limits>

#include "float/float_node.h"
#include "host/nodes.h"

namespace vexa {

namespace {

const char* const kDataTypeNames[] = {"anything",   "complex",    "integer[1]",
                                      "integer[2]", "integer[4]", "integer[8]",
                                      "float[8]",   "complex[8]", "float[4]"};

size_t Width(int dt) {
  switch (dt) {
    case RTABLE_DAG:
      return sizeof(ALGEB);
    case RTABLE_CXDAG:
      return 2 * sizeof(ALGEB);
    case RTABLE_INTEGER8:
      return 1;
    case RTABLE_INTEGER16:
      return 2;
    case RTABLE_INTEGER32:
    case RTABLE_FLOAT32:
      return 4;
    case RTABLE_INTEGER64:
    case RTABLE_FLOAT64:
      return 8;
    case RTABLE_COMPLEX:
      return 16;
    default:
      Raise("unknown rtable data type " + std::to_string(dt) + ", expected 0 to 8");
  }
}

RTableNode* Check(ALGEB rt) {
  if (!IsRTable(rt)) RaiseExpected("an rtable", rt);
  return AsRTable(rt);
}

bool IsSfloat(ALGEB elementType) {
  return IsName(elementType) && NameText(elementType) == "sfloat";
}

ALGEB ZeroOf(const RTableNode* r) {
  return IsSfloat(r->element_type) ? VexaFloat().Handle() : NewInteger(0);
}

M_INT LinearIndex(const RTableNode* r, const M_INT* index) {
  if (index == nullptr) Raise("an rtable index must not be null");
  M_INT offset = 0, stride = 1;
  for (int k = 0; k < r->dims; ++k) {
    int d = r->order == RTABLE_C ? r->dims - 1 - k : k;
    M_INT lo = r->bounds[2 * d], hi = r->bounds[2 * d + 1];
    if (index[d] < lo || index[d] > hi)
      Raise("index out of range: index " + std::to_string(index[d]) + " in dimension " +
            std::to_string(d + 1) + " is outside " + std::to_string(lo) + " .. " +
            std::to_string(hi));
    offset += (index[d] - lo) * stride;
    stride *= hi - lo + 1;
  }
  return offset;
}

[[noreturn]] void RaiseCannotStore(ALGEB v, int dt) {
  RaiseFormatted(std::string("unable to store %1 in an rtable of datatype ") + kDataTypeNames[dt],
                 v);
}

// Host value of a raw element.
ALGEB ToHost(const RTableNode* r, const RTableData& d) {
  switch (r->data_type) {
    case RTABLE_DAG:
      return d.dag;
    case RTABLE_CXDAG:
      return IsImmediate(d.cxdag.im) && ImmediateValue(d.cxdag.im) == 0
                 ? d.cxdag.re
                 : NewComplex(d.cxdag.re, d.cxdag.im);
    case RTABLE_INTEGER8:
      return NewInteger(d.int8);
    case RTABLE_INTEGER16:
      return NewInteger(d.int16);
    case RTABLE_INTEGER32:
      return NewInteger(d.int32);
    case RTABLE_INTEGER64:
      return NewInteger(d.int64);
    case RTABLE_FLOAT64:
      return NewFloatFromDouble(d.float64);
    case RTABLE_COMPLEX:
      if (d.complexf64.im == 0) return NewFloatFromDouble(d.complexf64.re);
      return NewComplex(NewFloatFromDouble(d.complexf64.re), NewFloatFromDouble(d.complexf64.im));
    default:
      return NewFloatFromDouble(d.float32);
  }
}

double RealToDouble(ALGEB v, int dt) {
  if (IsFloatNode(v)) return FloatToDouble(FloatFromHandle(v));
  if (!IsNumeric(v)) RaiseCannotStore(v, dt);
  return Evalhf(v);
}

// Raw element of a host value, converted to the data type.
RTableData FromHost(const RTableNode* r, ALGEB v) {
  RTableData d;
  std::memset(&d, 0, sizeof d);
  int dt = r->data_type;
  if (v == nullptr) Raise("an rtable element must not be null");
  switch (dt) {
    case RTABLE_DAG:
      d.dag = v;
      break;
    case RTABLE_CXDAG:
      if (HasType(v, kComplexNode)) {
        d.cxdag.re = AsSeq(v)->items[0];
        d.cxdag.im = AsSeq(v)->items[1];
      } else {
        d.cxdag.re = v;
        d.cxdag.im = NewInteger(0);
      }
      break;
    case RTABLE_INTEGER8:
    case RTABLE_INTEGER16:
    case RTABLE_INTEGER32:
    case RTABLE_INTEGER64: {
      static const long long limits[] = {127, 32767, 2147483647LL,
                                         std::numeric_limits<long long>::max()};
      long long m = limits[dt - RTABLE_INTEGER8];
      if (!FitsInt64(v)) RaiseCannotStore(v, dt);
      long long x = IntegerValue(v);
      if (x > m || x < -m - 1) RaiseCannotStore(v, dt);
      if (dt == RTABLE_INTEGER8) d.int8 = static_cast<int8_t>(x);
      if (dt == RTABLE_INTEGER16) d.int16 = static_cast<int16_t>(x);
      if (dt == RTABLE_INTEGER32) d.int32 = static_cast<int32_t>(x);
      if (dt == RTABLE_INTEGER64) d.int64 = x;
      break;
    }
    case RTABLE_FLOAT64:
      d.float64 = RealToDouble(v, dt);
      break;
    case RTABLE_COMPLEX:
      if (HasType(v, kComplexNode)) {
        d.complexf64.re = RealToDouble(AsSeq(v)->items[0], dt);
        d.complexf64.im = RealToDouble(AsSeq(v)->items[1], dt);
      } else {
        d.complexf64.re = RealToDouble(v, dt);
      }
      break;
    default:
      d.float32 = static_cast<float>(RealToDouble(v, dt));
      break;
  }
  return d;
}

bool IsRawZero(const RTableNode* r, const RTableData& d) {
  static const RTableData zero = {};
  switch (r->data_type) {
    case RTABLE_DAG:
      return false;  // a stored expression is kept, whatever it is
    case RTABLE_CXDAG:
      return false;
    default:
      return std::memcmp(&d, &zero, Width(r->data_type)) == 0;
  }
}

ALGEB SparseKey(M_INT offset) {
  return NewInteger(offset);
}

RTableData ReadRaw(const RTableNode* r, M_INT offset) {
  RTableData d;
  std::memset(&d, 0, sizeof d);
  if (r->storage == RTABLE_RECT) {
    size_t w = Width(r->data_type);
    std::memcpy(&d, static_cast<const char*>(r->data) + offset * w, w);
    return d;
  }
  ALGEB v = TableGet(r->sparse, SparseKey(offset));
  if (v != nullptr) return FromHost(r, v);
  if (r->data_type == RTABLE_DAG) d.dag = ZeroOf(r);
  if (r->data_type == RTABLE_CXDAG) d.cxdag.re = d.cxdag.im = ZeroOf(r);
  return d;
}

void WriteRaw(RTableNode* r, M_INT offset, const RTableData& d) {
  if (r->data_type == RTABLE_DAG && d.dag == nullptr) Raise("an rtable element must not be null");
  if (r->data_type == RTABLE_CXDAG && (d.cxdag.re == nullptr || d.cxdag.im == nullptr))
    Raise("an rtable element must not be null");
  if (r->storage == RTABLE_RECT) {
    size_t w = Width(r->data_type);
    std::memcpy(static_cast<char*>(r->data) + offset * w, &d, w);
  } else if (IsRawZero(r, d)) {
    TableRemove(r->sparse, SparseKey(offset));
  } else {
    TablePut(r->sparse, SparseKey(offset), ToHost(r, d));
  }
}

void ValidateSettings(const RTableSettings* s) {
  if (s == nullptr) Raise("rtable settings must not be null");
  if (s->num_dimensions < 1 || s->num_dimensions > 64)
    Raise("an rtable needs 1 to 64 dimensions, received " + std::to_string(s->num_dimensions));
  Width(s->data_type);
  if (s->storage != RTABLE_RECT && s->storage != RTABLE_SPARSE)
    Raise("unknown rtable storage " + std::to_string(s->storage) + ", expected 4 (rectangular) " +
          "or 1 (sparse)");
  if (s->order != RTABLE_FORTRAN && s->order != RTABLE_C)
    Raise("unknown rtable order " + std::to_string(s->order) + ", expected 0 or 1");
  if (s->element_type != nullptr && !IsName(s->element_type))
    RaiseExpected("a name for the rtable element type", s->element_type);
}

// A new rtable with every element its type's zero.
ALGEB MakeRTable(const RTableSettings* s, const M_INT* bounds) {
  ValidateSettings(s);
  if (bounds == nullptr) Raise("rtable bounds must not be null");
  M_INT count = 1;
  for (int d = 0; d < s->num_dimensions; ++d) {
    M_INT lo = bounds[2 * d], hi = bounds[2 * d + 1];
    if (hi < lo - 1 || lo < -(M_INT(1) << 40) || hi > (M_INT(1) << 40))
      Raise("invalid rtable bounds " + std::to_string(lo) + " .. " + std::to_string(hi) +
            " in dimension " + std::to_string(d + 1));
    M_INT extent = hi - lo + 1;
    if (extent != 0 && count > (M_INT(1) << 40) / extent)
      Raise("an rtable of that many elements cannot be made");
    count *= extent;
  }
  M_INT* b = static_cast<M_INT*>(AllocAtomic(sizeof(M_INT) * 2 * s->num_dimensions));
  std::memcpy(b, bounds, sizeof(M_INT) * 2 * s->num_dimensions);
  RTableNode* r = static_cast<RTableNode*>(AllocScanned(sizeof(RTableNode)));
  r->header = MakeHeader(kRTableNode);
  r->data_type = s->data_type;
  r->storage = s->storage;
  r->order = s->order;
  r->subtype = s->subtype;
  r->dims = s->num_dimensions;
  r->read_only = s->read_only != 0;
  r->element_type = s->element_type != nullptr ? s->element_type : NewName("anything");
  r->bounds = b;
  r->count = count;
  r->data = nullptr;
  r->sparse = nullptr;
  if (r->storage == RTABLE_SPARSE) {
    r->sparse = NewTable();
    return reinterpret_cast<ALGEB>(r);
  }
  size_t bytes = Width(r->data_type) * static_cast<size_t>(count > 0 ? count : 1);
  bool handles = r->data_type == RTABLE_DAG || r->data_type == RTABLE_CXDAG;
  r->data = handles ? AllocScanned(bytes) : AllocAtomic(bytes);
  if (handles) {
    ALGEB* p = static_cast<ALGEB*>(r->data);
    ALGEB zero = ZeroOf(r);
    for (size_t i = 0; i < bytes / sizeof(ALGEB); ++i) p[i] = zero;
  } else {
    std::memset(r->data, 0, bytes);
  }
  return reinterpret_cast<ALGEB>(r);
}

}  // namespace

ALGEB RTableGetElement(ALGEB rt, const M_INT* index) {
  RTableNode* r = Check(rt);
  return ToHost(r, ReadRaw(r, LinearIndex(r, index)));
}

void RTableSetElement(ALGEB rt, const M_INT* index, ALGEB value) {
  RTableNode* r = Check(rt);
  if (r->read_only) RaiseFormatted("cannot assign to the read-only rtable %1", rt);
  M_INT offset = LinearIndex(r, index);
  WriteRaw(r, offset, FromHost(r, value));
}

}  // namespace vexa

using namespace vexa;

void RTableGetDefaults(VexaKernelVector, RTableSettings* s) {
  if (s == nullptr) Raise("rtable settings must not be null");
  s->num_dimensions = 1;
  s->data_type = RTABLE_DAG;
  s->storage = RTABLE_RECT;
  s->order = RTABLE_FORTRAN;
  s->subtype = RTABLE_ARRAY;
  s->read_only = 0;
  s->element_type = NewName("anything");
}

void RTableGetSettings(VexaKernelVector, RTableSettings* s, ALGEB rt) {
  RTableNode* r = Check(rt);
  if (s == nullptr) Raise("rtable settings must not be null");
  s->num_dimensions = r->dims;
  s->data_type = r->data_type;
  s->storage = r->storage;
  s->order = r->order;
  s->subtype = r->subtype;
  s->read_only = r->read_only;
  s->element_type = r->element_type;
}

ALGEB RTableCreate(VexaKernelVector, RTableSettings* s, void* pdata, M_INT* bounds) {
  ALGEB rt = MakeRTable(s, bounds);
  if (pdata == nullptr) return rt;
  RTableNode* r = AsRTable(rt);
  size_t w = Width(r->data_type);
  const char* src = static_cast<const char*>(pdata);
  bool handles = r->data_type == RTABLE_DAG || r->data_type == RTABLE_CXDAG;
  for (M_INT i = 0; i < r->count; ++i) {
    RTableData d;
    std::memcpy(&d, src + i * w, w);
    if (handles && (d.dag == nullptr || (r->data_type == RTABLE_CXDAG && d.cxdag.im == nullptr)))
      Raise("initial rtable data holds a null handle at position " + std::to_string(i + 1));
    WriteRaw(r, i, d);
  }
  return rt;
}

ALGEB RTableCopy(VexaKernelVector kv, RTableSettings* s, ALGEB rt) {
  RTableNode* from = Check(rt);
  RTableSettings settings;
  RTableGetSettings(kv, &settings, rt);
  if (s != nullptr) {
    if (s->num_dimensions != from->dims)
      Raise("cannot copy an rtable of " + std::to_string(from->dims) + " dimensions into " +
            std::to_string(s->num_dimensions) + " dimensions");
    settings = *s;
  }
  settings.read_only = 0;  // filled first, then marked
  ALGEB copy = MakeRTable(&settings, from->bounds);
  RTableNode* to = AsRTable(copy);
  // Same bounds and order: positions correspond; other orders go through the indices.
  std::vector<M_INT> index(from->dims);
  for (int d = 0; d < from->dims; ++d) index[d] = from->bounds[2 * d];
  for (M_INT i = 0; i < from->count; ++i) {
    ALGEB v = ToHost(from, ReadRaw(from, LinearIndex(from, index.data())));
    WriteRaw(to, LinearIndex(to, index.data()), FromHost(to, v));
    for (int d = 0; d < from->dims; ++d) {
      if (++index[d] <= from->bounds[2 * d + 1]) break;
      index[d] = from->bounds[2 * d];
    }
  }
  to->read_only = s != nullptr ? s->read_only != 0 : from->read_only;
  return copy;
}

RTableData RTableSelect(VexaKernelVector, ALGEB rt, M_INT* index) {
  RTableNode* r = Check(rt);
  return ReadRaw(r, LinearIndex(r, index));
}

void RTableAssign(VexaKernelVector, ALGEB rt, M_INT* index, RTableData value) {
  RTableNode* r = Check(rt);
  if (r->read_only) RaiseFormatted("cannot assign to the read-only rtable %1", rt);
  WriteRaw(r, LinearIndex(r, index), value);
}

void* RTableDataBlock(VexaKernelVector, ALGEB rt) {
  RTableNode* r = Check(rt);
  if (r->storage != RTABLE_RECT)
    RaiseFormatted("no data block: the rtable %1 does not have rectangular storage", rt);
  return r->data;
}

M_INT RTableLowerBound(VexaKernelVector, ALGEB rt, M_INT dim) {
  RTableNode* r = Check(rt);
  if (dim < 1 || dim > r->dims)
    Raise("dimension " + std::to_string(dim) + " out of range 1 .. " + std::to_string(r->dims));
  return r->bounds[2 * (dim - 1)];
}

M_INT RTableUpperBound(VexaKernelVector, ALGEB rt, M_INT dim) {
  RTableNode* r = Check(rt);
  if (dim < 1 || dim > r->dims)
    Raise("dimension " + std::to_string(dim) + " out of range 1 .. " + std::to_string(r->dims));
  return r->bounds[2 * (dim - 1) + 1];
}

M_INT RTableNumDimensions(VexaKernelVector, ALGEB rt) {
  return Check(rt)->dims;
}
M_INT RTableNumElements(VexaKernelVector, ALGEB rt) {
  return Check(rt)->count;
}
M_INT RTableElementWidth(VexaKernelVector, int data_type) {
  return static_cast<M_INT>(Width(data_type));
}
