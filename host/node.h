// Layout of host expression nodes. A handle with its low bit clear points to a collected
// node whose first 32-bit word is a header: the type code in the top six bits, the rest
// free for the node kind's own use.
#ifndef VEXA_HOST_NODE_H
#define VEXA_HOST_NODE_H

#include <stdint.h>

#include "vexa/handle.h"

namespace vexa {

constexpr unsigned kTypeShift = 26;

// Type codes. The statistics library relies on one of them: 4, a software float.
enum NodeType : uint32_t {
  kIntegerNode = 1,  // GMP bignum (immediates carry small integers)
  kRationalNode = 2,
  kNameNode = 3,
  kFloatNode = 4,
  kStringNode = 5,
  kListNode = 6,
  kSetNode = 7,
  kRangeNode = 8,
  kEquationNode = 9,
  kExpseqNode = 10,
  kSumNode = 11,
  kProductNode = 12,
  kPowerNode = 13,
  kFunctionNode = 14,
  kProcedureNode = 15,
  kRTableNode = 16,
  kTableNode = 17,
  kComplexNode = 18,
  kBooleanNode = 19,
  kInequalityNode = 20,
  kNotNode = 21,
  kAndNode = 22,
  kOrNode = 23,
};

struct NodeHeader {
  uint32_t header;
};

inline bool IsImmediate(ALGEB e) {
  return (reinterpret_cast<uintptr_t>(e) & 1) != 0;
}
inline uint32_t NodeTypeOf(ALGEB e) {
  return reinterpret_cast<const NodeHeader*>(e)->header >> kTypeShift;
}
inline bool IsFloatNode(ALGEB e) {
  return e != nullptr && !IsImmediate(e) && NodeTypeOf(e) == kFloatNode;
}
inline uint32_t MakeHeader(NodeType type, uint32_t bits = 0) {
  return (static_cast<uint32_t>(type) << kTypeShift) | bits;
}

}  // namespace vexa

#endif
