// A one-dimensional host rtable as a contiguous block of raw elements of its own data type,
// and new rtables of the same data type and element type: what the arranging entry points
// (sort, rank, shuffle, select, trim, sharpen) read and make without converting elements.
#ifndef STATS_DATA_RAW_ARRAY_H
#define STATS_DATA_RAW_ARRAY_H

#include <cstddef>

#include "vexa/external.h"

namespace data_raw {

struct RawArray {
  ALGEB source;
  RTableSettings settings;
  int width;          // bytes of one element
  int n;              // number of elements
  const char* block;  // the caller's data block (rectangular) or a gathered copy: read only

  const char* Element(int i) const { return block + static_cast<size_t>(i) * width; }
};

// Raises "invalid data sample, expected: rtable, received %1" for anything but an rtable and
// "expected: one-dimensional array, received %1" for more dimensions.
RawArray Read(VexaKernelVector kv, ALGEB a);
// Collected, scanned memory for count elements of the array's width.
char* Scratch(VexaKernelVector kv, const RawArray& a, int count);
// A new rectangular rtable 1 .. count of a's data type and element type holding the first
// count elements of block (or the type's zero when block is null).
ALGEB NewLike(VexaKernelVector kv, const RawArray& a, int count, const char* block);
// The same with another data type and element type (null: the host's default).
ALGEB NewArray(VexaKernelVector kv, int datatype, ALGEB elementType, int count, const char* block);
// The host value of one raw element (a complex of symbolic parts is not supported).
ALGEB ElementValue(VexaKernelVector kv, const RawArray& a, int i);

}  // namespace data_raw

#endif
