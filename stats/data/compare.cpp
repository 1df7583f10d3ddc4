// Three-way comparisons of raw rtable elements, one per element type, in one table, for the
// ranking routine; and the byte swap for moving raw elements of any width.
#include <cstdint>
#include <cstring>

#include "data/data.h"
#include "frame/frame.h"

namespace {

template <class T>
T Read(const char* p) {
  T v;
  std::memcpy(&v, p, sizeof v);
  return v;
}

template <class T>
int CompareIntegers(const char* a, const char* b) {
  const T x = Read<T>(a), y = Read<T>(b);
  if (x < y) return -1;
  return x == y ? 0 : 1;
}

// Missing values (NaN: an undefined float) come last; two of them compare as 1.
int CompareFloats(const VexaFloat& x, double bRaw) {
  if (IsVexaFloatUndefined(x)) return 1;
  const VexaFloat y(bRaw);
  if (IsVexaFloatUndefined(y)) return -1;
  if (x < y) return -1;
  return x == y ? 0 : 1;
}

VexaFloat Numeric(ALGEB e) {
  VexaFloat x;
  if (!STATS_VexaUtils_MP::VexaDAGToDouble(e, &x)) STATS_VexaUtils_MP::ReportNonNumeric(e);
  return x;
}

}  // namespace

int STATS_NumericCompareINTEGER8_MP(const char* a, const char* b) {
  return CompareIntegers<int8_t>(a, b);
}

int STATS_NumericCompareINTEGER16_MP(const char* a, const char* b) {
  return CompareIntegers<int16_t>(a, b);
}

int STATS_NumericCompareINTEGER32_MP(const char* a, const char* b) {
  return CompareIntegers<int32_t>(a, b);
}

int STATS_NumericCompareINTEGER64_MP(const char* a, const char* b) {
  return CompareIntegers<int64_t>(a, b);
}

int STATS_NumericCompareFLOAT64_MP(const char* a, const char* b) {
  return CompareFloats(VexaFloat(Read<double>(a)), Read<double>(b));
}

int STATS_NumericCompareFLOAT32_MP(const char* a, const char* b) {
  return CompareFloats(VexaFloat(static_cast<double>(Read<float>(a))),
                       static_cast<double>(Read<float>(b)));
}

int STATS_NumericCompareALGEB_MP(const char* a, const char* b) {
  const VexaFloat x = Numeric(Read<ALGEB>(a));
  const VexaFloat y = Numeric(Read<ALGEB>(b));
  if (!IsVexaFloatUndefined(x) && (IsVexaFloatUndefined(y) || x < y)) return -1;
  return x == y ? 0 : 1;
}

STATS_Comparator_MP STATS_NumericComparator_MP(int datatype) {
  static const STATS_Comparator_MP kByDataType[RTABLE_NUM_DATATYPES] = {
      STATS_NumericCompareALGEB_MP,      // any expression
      nullptr,                           // complex pair of expressions
      STATS_NumericCompareINTEGER8_MP,   // 8-bit integer
      STATS_NumericCompareINTEGER16_MP,  // 16-bit integer
      STATS_NumericCompareINTEGER32_MP,  // 32-bit integer
      STATS_NumericCompareINTEGER64_MP,  // 64-bit integer
      STATS_NumericCompareFLOAT64_MP,    // double
      nullptr,                           // complex of two doubles
      STATS_NumericCompareFLOAT32_MP,    // single float
  };
  if (datatype < 0 || datatype >= RTABLE_NUM_DATATYPES) return nullptr;
  return kByDataType[datatype];
}

void STATS_SwapByteArrays_MP(char* a, char* b, char* scratch, int n) {
  for (int i = 0; i < n; ++i) {
    scratch[i] = a[i];
    a[i] = b[i];
    b[i] = scratch[i];
  }
}
