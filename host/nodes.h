// Node layouts of the kernel (floats: float/float_node.h) and the kernel's process state.
// Composite kinds share one layout: a count and the operand handles inline.
#ifndef VEXA_HOST_NODES_H
#define VEXA_HOST_NODES_H

#include <gc/gc_allocator.h>
#include <gmp.h>

#include <random>
#include <string>
#include <unordered_map>

#include "host/kernel.h"

namespace vexa {

constexpr uint32_t kIndexedNode = 24;  // t[i]: base and indices

// Immediate integers hold value << 1 | 1, for values in [kMinImmediate, kMaxImmediate].
constexpr long long kMaxImmediate = (1LL << 61) - 1;
constexpr long long kMinImmediate = -(1LL << 61);
inline long long ImmediateValue(ALGEB e) {
  return reinterpret_cast<intptr_t>(e) >> 1;
}
inline ALGEB MakeImmediate(long long v) {
  return reinterpret_cast<ALGEB>(static_cast<intptr_t>((static_cast<uint64_t>(v) << 1) | 1));
}

// Bignum integer (outside the immediate range), limbs inline as in an mpz; atomic.
struct IntegerNode {
  uint32_t header;
  int32_t size;  // signed limb count
  mp_limb_t limbs[1];
};

// Lists, sets, sequences, sums, products, powers, ranges, equations, relations, complex,
// rationals, functions (operand 0 is the head), indexed names, not/and/or.
struct SeqNode {
  uint32_t header;
  uint32_t count;
  ALGEB items[1];
};

struct StringNode {  // atomic
  uint32_t header;
  uint32_t length;
  char text[1];
};

constexpr uint32_t kGlobalBit = 1;
struct NameNode {
  uint32_t header;  // kGlobalBit for global names
  uint32_t length;
  ALGEB value;  // null when unassigned
  const char* text;
};

enum BooleanKind : uint32_t { kFalseValue = 0, kTrueValue = 1, kFailValue = 2 };
struct BooleanNode {
  uint32_t header;
};

constexpr uint32_t kNativeBit = 1;
struct ProcedureNode {
  uint32_t header;  // kNativeBit for native procedures
  uint32_t pad;
  NativeFn* native;  // collected, destroyed by a finalizer
  void* body;
  const ProcedureHooks* hooks;
  const char* name;
  ALGEB params;  // expression sequence of names
};

// Insertion-ordered hash table: entries in keys/values, an open-addressed index of
// entry numbers + 1 (0 empty, -1 deleted slot left by a removal).
struct TableNode {
  uint32_t header;
  uint32_t count;     // entries used, removed ones included
  uint32_t capacity;  // of keys/values
  uint32_t live;
  ALGEB* keys;  // null key: removed entry
  ALGEB* values;
  int32_t* index;  // 2 * capacity slots, atomic
};

struct RTableNode {
  uint32_t header;
  int32_t data_type;
  int32_t storage;
  int32_t order;
  int32_t subtype;
  int32_t dims;
  int32_t read_only;
  ALGEB element_type;
  M_INT* bounds;  // 2 * dims, atomic
  M_INT count;
  void* data;    // rectangular: the data block
  ALGEB sparse;  // sparse: table from linear index to element (as a host value)
};

inline SeqNode* AsSeq(ALGEB e) {
  return reinterpret_cast<SeqNode*>(e);
}
inline NameNode* AsName(ALGEB e) {
  return reinterpret_cast<NameNode*>(e);
}
inline StringNode* AsString(ALGEB e) {
  return reinterpret_cast<StringNode*>(e);
}
inline IntegerNode* AsInteger(ALGEB e) {
  return reinterpret_cast<IntegerNode*>(e);
}
inline ProcedureNode* AsProcedure(ALGEB e) {
  return reinterpret_cast<ProcedureNode*>(e);
}
inline TableNode* AsTable(ALGEB e) {
  return reinterpret_cast<TableNode*>(e);
}
inline RTableNode* AsRTable(ALGEB e) {
  return reinterpret_cast<RTableNode*>(e);
}
inline uint32_t HeaderBits(ALGEB e) {
  return reinterpret_cast<const NodeHeader*>(e)->header & ((1u << kTypeShift) - 1);
}
inline bool HasType(ALGEB e, uint32_t type) {
  return IsNode(e) && NodeTypeOf(e) == type;
}

// Exact arithmetic refuses, before computing it, an integer of more than this many digits
// ("integer too large").
constexpr long kMaxIntegerDigits = 100000000;

// Allocation: scanned (may hold handles) and atomic (holds none). Both raise on exhaustion.
void* AllocScanned(size_t bytes);
void* AllocAtomic(size_t bytes);
ALGEB NewSeqNode(uint32_t type, uint32_t count, uint32_t bits = 0);

// Integers through GMP: read any integer handle into an mpz, and make the canonical handle.
void IntegerToMpz(ALGEB e, mpz_t out);
ALGEB IntegerFromMpz(const mpz_t v);
// Exact numbers (integer, rational) as mpq, and back to the canonical handle.
void ExactToMpq(ALGEB e, mpq_t out);
ALGEB ExactFromMpq(const mpq_t q);
bool IsExact(ALGEB e);
VexaFloat ExactToFloat(ALGEB e, int digits);  // digits 0: exact (integers only)

// Raise "expected X, received %1".
[[noreturn]] void RaiseExpected(const char* what, ALGEB received);

}  // namespace vexa

namespace vexa {
// The host's Mersenne Twister, counting what it hands out (words, and unit-interval floats
// made from them) so that callers can check how much of the stream a computation used.
struct RandomStream {
  std::mt19937 engine{kDefaultRandomSeed};
  RandomCounts counts;
  uint32_t operator()() {
    ++counts.words;
    return static_cast<uint32_t>(engine());
  }
};
}  // namespace vexa

// The kernel's state: global names, collector roots, random stream, info output. It and
// its maps live in uncollectable traced memory, whatever operator new is in force.
struct _VexaKernelVectorDesc {
  template <class K, class V>
  using TracedMap = std::unordered_map<K, V, std::hash<K>, std::equal_to<K>,
                                       traceable_allocator<std::pair<const K, V>>>;
  TracedMap<std::string, ALGEB> globals;
  TracedMap<ALGEB, long> protects;
  vexa::RandomStream random;
  std::FILE* info = stdout;
  ALGEB digits = nullptr;  // the name Digits
  ALGEB infolevel = nullptr;
};

#endif
