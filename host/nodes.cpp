// Construction and reading of kernel nodes, canonical integers and rationals, structural
// equality and hashing.
#include "host/nodes.h"

#include <gc/gc.h>

#include <algorithm>
#include <cstring>

#include "float/float_node.h"
#include "host/node_pool.h"

namespace vexa {

void* AllocScanned(size_t bytes) {
  GetKernel();  // the collector is initialised with the kernel
  CheckInterrupt();
  void* p = GC_MALLOC(bytes);
  if (p == nullptr) Raise("out of memory");
  return p;
}

void* AllocAtomic(size_t bytes) {
  GetKernel();
  CheckInterrupt();
  void* p = AllocAtomicPooled(bytes);
  if (p == nullptr) Raise("out of memory");
  return p;
}

ALGEB NewSeqNode(uint32_t type, uint32_t count, uint32_t bits) {
  size_t bytes = offsetof(SeqNode, items) + sizeof(ALGEB) * (count > 0 ? count : 1);
  SeqNode* n = static_cast<SeqNode*>(AllocScanned(bytes));
  n->header = MakeHeader(NodeType(type), bits);
  n->count = count;
  return reinterpret_cast<ALGEB>(n);
}

[[noreturn]] void RaiseExpected(const char* what, ALGEB received) {
  RaiseFormatted(std::string("expected ") + what + ", received %1", received);
}

namespace {

ALGEB Seq(uint32_t type, const std::vector<ALGEB>& items, uint32_t bits = 0) {
  ALGEB e = NewSeqNode(type, static_cast<uint32_t>(items.size()), bits);
  for (size_t i = 0; i < items.size(); ++i) {
    if (items[i] == nullptr) Raise("internal error: null operand");
    AsSeq(e)->items[i] = items[i];
  }
  return e;
}

ALGEB Pair(uint32_t type, ALGEB a, ALGEB b, uint32_t bits = 0) {
  return Seq(type, {a, b}, bits);
}

ALGEB MakeBoolean(BooleanKind kind) {
  BooleanNode* n = static_cast<BooleanNode*>(GC_MALLOC_UNCOLLECTABLE(sizeof(BooleanNode)));
  n->header = MakeHeader(kBooleanNode, kind);
  return reinterpret_cast<ALGEB>(n);
}

const char* CopyText(const std::string& s) {
  char* t = static_cast<char*>(AllocAtomic(s.size() + 1));
  std::memcpy(t, s.data(), s.size() + 1);
  return t;
}

void Splice(std::vector<ALGEB>& out, ALGEB e) {
  if (HasType(e, kExpseqNode)) {
    for (uint32_t i = 0; i < AsSeq(e)->count; ++i) Splice(out, AsSeq(e)->items[i]);
  } else {
    out.push_back(e);
  }
}

}  // namespace

// ---- Integers and rationals ----

void IntegerToMpz(ALGEB e, mpz_t out) {
  if (IsImmediate(e)) {
    mpz_set_si(out, ImmediateValue(e));
  } else if (HasType(e, kIntegerNode)) {
    mpz_t view;
    mpz_roinit_n(view, AsInteger(e)->limbs, AsInteger(e)->size);
    mpz_set(out, view);
  } else {
    RaiseExpected("an integer", e);
  }
}

ALGEB IntegerFromMpz(const mpz_t v) {
  if (mpz_fits_slong_p(v)) {
    long x = mpz_get_si(v);
    if (x >= kMinImmediate && x <= kMaxImmediate) return MakeImmediate(x);
  }
  size_t limbs = mpz_size(v);
  IntegerNode* n = static_cast<IntegerNode*>(
      AllocAtomic(offsetof(IntegerNode, limbs) + sizeof(mp_limb_t) * limbs));
  n->header = MakeHeader(kIntegerNode);
  n->size = mpz_sgn(v) < 0 ? -static_cast<int32_t>(limbs) : static_cast<int32_t>(limbs);
  std::memcpy(n->limbs, mpz_limbs_read(v), sizeof(mp_limb_t) * limbs);
  return reinterpret_cast<ALGEB>(n);
}

bool IsExact(ALGEB e) {
  return IsInteger(e) || IsRational(e);
}

void ExactToMpq(ALGEB e, mpq_t out) {
  if (IsRational(e)) {
    IntegerToMpz(AsSeq(e)->items[0], mpq_numref(out));
    IntegerToMpz(AsSeq(e)->items[1], mpq_denref(out));
  } else {
    IntegerToMpz(e, mpq_numref(out));
    mpz_set_ui(mpq_denref(out), 1);
  }
}

ALGEB ExactFromMpq(const mpq_t q) {
  if (mpz_cmp_ui(mpq_denref(q), 1) == 0) return IntegerFromMpz(mpq_numref(q));
  return Pair(kRationalNode, IntegerFromMpz(mpq_numref(q)), IntegerFromMpz(mpq_denref(q)));
}

VexaFloat ExactToFloat(ALGEB e, int digits) {
  if (IsInteger(e)) {
    mpz_t m;
    mpz_init(m);
    IntegerToMpz(e, m);
    VexaFloat r = FloatFromMpz(m, 0, digits);
    mpz_clear(m);
    return r;
  }
  if (!IsRational(e)) RaiseExpected("an exact number", e);
  // One correctly rounded division of two exact values.
  VexaDigitsScope scope(digits > 0 ? digits : VexaDigits());
  return ExactToFloat(AsSeq(e)->items[0], 0) / ExactToFloat(AsSeq(e)->items[1], 0);
}

ALGEB NewInteger(long long v) {
  if (v >= kMinImmediate && v <= kMaxImmediate) return MakeImmediate(v);
  mpz_t m;
  mpz_init(m);
  mpz_set_si(m, static_cast<long>(v));
  ALGEB r = IntegerFromMpz(m);
  mpz_clear(m);
  return r;
}

ALGEB NewIntegerFromString(const std::string& decimal) {
  size_t start = (!decimal.empty() && (decimal[0] == '-' || decimal[0] == '+')) ? 1 : 0;
  if (decimal.size() == start || !std::all_of(decimal.begin() + start, decimal.end(),
                                              [](char c) { return c >= '0' && c <= '9'; }))
    Raise("expected decimal digits for an integer, received \"" + decimal + "\"");
  mpz_t m;
  mpz_init_set_str(m, decimal.c_str() + (decimal[0] == '+' ? 1 : 0), 10);
  ALGEB r = IntegerFromMpz(m);
  mpz_clear(m);
  return r;
}

ALGEB NewRational(ALGEB num, ALGEB den) {
  if (!IsInteger(num)) RaiseExpected("an integer numerator", num);
  if (!IsInteger(den)) RaiseExpected("an integer denominator", den);
  mpq_t q;
  mpq_init(q);
  IntegerToMpz(num, mpq_numref(q));
  IntegerToMpz(den, mpq_denref(q));
  if (mpz_sgn(mpq_denref(q)) == 0) {
    mpq_clear(q);
    Raise("numeric exception: division by zero");
  }
  mpq_canonicalize(q);
  ALGEB r = ExactFromMpq(q);
  mpq_clear(q);
  return r;
}

// ---- Other constructors ----

ALGEB NewFloat(const VexaFloat& x) {
  return x.Handle();
}

ALGEB NewString(const std::string& text) {
  StringNode* n =
      static_cast<StringNode*>(AllocAtomic(offsetof(StringNode, text) + text.size() + 1));
  n->header = MakeHeader(kStringNode);
  n->length = static_cast<uint32_t>(text.size());
  std::memcpy(n->text, text.c_str(), text.size() + 1);
  return reinterpret_cast<ALGEB>(n);
}

ALGEB NewName(const std::string& text, bool global) {
  if (text.empty()) Raise("a name must not be empty");
  Kernel* k = GetKernel();
  if (global) {
    auto it = k->globals.find(text);
    if (it != k->globals.end()) return it->second;
  }
  NameNode* n = static_cast<NameNode*>(AllocScanned(sizeof(NameNode)));
  n->header = MakeHeader(kNameNode, global ? kGlobalBit : 0);
  n->length = static_cast<uint32_t>(text.size());
  n->value = nullptr;
  n->text = CopyText(text);
  ALGEB e = reinterpret_cast<ALGEB>(n);
  if (global) k->globals.emplace(text, e);
  return e;
}

ALGEB NewList(const std::vector<ALGEB>& items) {
  return Seq(kListNode, items);
}

// A deterministic order: numbers by value first, then everything else by printed form (and
// hash). Each element is printed once; equal elements sort next to each other, so removing
// duplicates compares neighbours only: O(n log n) in all.
ALGEB NewSet(const std::vector<ALGEB>& items) {
  struct Key {
    ALGEB e;
    bool number;
    std::string text;
    size_t hash;
  };
  std::vector<Key> keys;
  for (ALGEB e : items) {
    std::vector<ALGEB> spliced;
    Splice(spliced, e);
    for (ALGEB x : spliced) {
      bool number = IsNumeric(x) && !IsFloatNode(x);
      keys.push_back({x, number, number ? std::string() : Print(x), number ? 0 : Hash(x)});
    }
  }
  auto less = [](const Key& a, const Key& b) {
    if (a.number != b.number) return a.number;
    if (a.number) return Compare(a.e, b.e) < 0;
    if (a.text != b.text) return a.text < b.text;
    return a.hash < b.hash;
  };
  std::sort(keys.begin(), keys.end(), less);
  std::vector<ALGEB> out;
  size_t run = 0;  // where the run of elements that sort alike begins in out
  for (size_t i = 0; i < keys.size(); ++i) {
    if (i > 0 && less(keys[i - 1], keys[i])) run = out.size();
    bool seen = false;
    for (size_t j = run; j < out.size() && !seen; ++j) seen = Equal(out[j], keys[i].e);
    if (!seen) out.push_back(keys[i].e);
  }
  return Seq(kSetNode, out);
}

ALGEB NewExpseq(const std::vector<ALGEB>& items) {
  std::vector<ALGEB> v;
  for (ALGEB e : items) Splice(v, e);
  if (v.empty()) return Null();
  return Seq(kExpseqNode, v);
}

ALGEB NewRange(ALGEB lo, ALGEB hi) {
  return Pair(kRangeNode, lo, hi);
}
ALGEB NewEquation(ALGEB lhs, ALGEB rhs) {
  return Pair(kEquationNode, lhs, rhs);
}
ALGEB NewSum(const std::vector<ALGEB>& terms) {
  return Seq(kSumNode, terms);
}
ALGEB NewProduct(const std::vector<ALGEB>& factors) {
  return Seq(kProductNode, factors);
}
ALGEB NewPower(ALGEB base, ALGEB exponent) {
  return Pair(kPowerNode, base, exponent);
}

ALGEB NewFunction(ALGEB head, const std::vector<ALGEB>& args) {
  std::vector<ALGEB> v{head};
  for (ALGEB a : args) Splice(v, a);
  return Seq(kFunctionNode, v);
}

ALGEB NewIndexed(ALGEB base, const std::vector<ALGEB>& indices) {
  std::vector<ALGEB> v{base};
  for (ALGEB a : indices) Splice(v, a);
  return Seq(kIndexedNode, v);
}

ALGEB NewComplex(ALGEB re, ALGEB im) {
  if (!IsNumeric(re)) RaiseExpected("a numeric real part", re);
  if (!IsNumeric(im)) RaiseExpected("a numeric imaginary part", im);
  return Pair(kComplexNode, re, im);
}

ALGEB NewRelation(RelationKind kind, ALGEB lhs, ALGEB rhs) {
  return Pair(kInequalityNode, lhs, rhs, kind);
}
ALGEB NewNot(ALGEB a) {
  return Seq(kNotNode, {a});
}
ALGEB NewAnd(ALGEB a, ALGEB b) {
  return Pair(kAndNode, a, b);
}
ALGEB NewOr(ALGEB a, ALGEB b) {
  return Pair(kOrNode, a, b);
}

ALGEB True() {
  static ALGEB e = MakeBoolean(kTrueValue);
  return e;
}
ALGEB False() {
  static ALGEB e = MakeBoolean(kFalseValue);
  return e;
}
ALGEB Fail() {
  static ALGEB e = MakeBoolean(kFailValue);
  return e;
}
ALGEB Null() {
  static ALGEB e = [] {
    SeqNode* n = static_cast<SeqNode*>(GC_MALLOC_UNCOLLECTABLE(sizeof(SeqNode)));
    n->header = MakeHeader(kExpseqNode);
    n->count = 0;
    return reinterpret_cast<ALGEB>(n);
  }();
  return e;
}

// ---- Reading ----

uint32_t TypeOf(ALGEB e) {
  if (e == nullptr) Raise("internal error: null handle");
  return IsImmediate(e) ? uint32_t(kIntegerNode) : NodeTypeOf(e);
}
bool IsInteger(ALGEB e) {
  return e != nullptr && (IsImmediate(e) || HasType(e, kIntegerNode));
}
bool IsRational(ALGEB e) {
  return HasType(e, kRationalNode);
}
bool IsFloat(ALGEB e) {
  return IsFloatNode(e);
}
bool IsNumeric(ALGEB e) {
  return IsInteger(e) || IsRational(e) || IsFloatNode(e);
}
bool IsName(ALGEB e) {
  return HasType(e, kNameNode);
}
bool IsGlobalName(ALGEB e) {
  return IsName(e) && (HeaderBits(e) & kGlobalBit);
}
bool IsString(ALGEB e) {
  return HasType(e, kStringNode);
}
bool IsList(ALGEB e) {
  return HasType(e, kListNode);
}
bool IsExpseq(ALGEB e) {
  return HasType(e, kExpseqNode);
}
bool IsProcedure(ALGEB e) {
  return HasType(e, kProcedureNode);
}
bool IsRTable(ALGEB e) {
  return HasType(e, kRTableNode);
}
bool IsTable(ALGEB e) {
  return HasType(e, kTableNode);
}
bool IsTrue(ALGEB e) {
  return e == True();
}
bool IsFalse(ALGEB e) {
  return e == False();
}
bool IsFail(ALGEB e) {
  return e == Fail();
}
bool IsNull(ALGEB e) {
  return HasType(e, kExpseqNode) && AsSeq(e)->count == 0;
}

namespace {
bool IsSeqKind(uint32_t t) {
  switch (t) {
    case kRationalNode:
    case kListNode:
    case kSetNode:
    case kRangeNode:
    case kEquationNode:
    case kExpseqNode:
    case kSumNode:
    case kProductNode:
    case kPowerNode:
    case kFunctionNode:
    case kComplexNode:
    case kInequalityNode:
    case kNotNode:
    case kAndNode:
    case kOrNode:
    case kIndexedNode:
      return true;
    default:
      return false;
  }
}
bool HasHead(uint32_t t) {
  return t == kFunctionNode || t == kIndexedNode;
}
}  // namespace

int NumOps(ALGEB e) {
  if (!IsNode(e) || !IsSeqKind(NodeTypeOf(e))) return 0;
  int n = static_cast<int>(AsSeq(e)->count);
  return HasHead(NodeTypeOf(e)) ? n - 1 : n;
}

ALGEB Op(ALGEB e, int i) {
  int n = NumOps(e);
  bool head = IsNode(e) && HasHead(NodeTypeOf(e));
  if (i < (head ? 0 : 1) || i > n)
    RaiseFormatted(
        "operand " + std::to_string(i) + " out of range 1 .. " + std::to_string(n) + " of %1", e);
  return AsSeq(e)->items[head ? i : i - 1];
}

std::vector<ALGEB> Ops(ALGEB e) {
  std::vector<ALGEB> v;
  for (int i = 1, n = NumOps(e); i <= n; ++i) v.push_back(Op(e, i));
  return v;
}

std::string NameText(ALGEB name) {
  if (!IsName(name)) RaiseExpected("a name", name);
  return std::string(AsName(name)->text, AsName(name)->length);
}

std::string StringText(ALGEB str) {
  if (!IsString(str)) RaiseExpected("a string", str);
  return std::string(AsString(str)->text, AsString(str)->length);
}

RelationKind RelationOf(ALGEB relation) {
  if (!HasType(relation, kInequalityNode)) RaiseExpected("a relation", relation);
  return RelationKind(HeaderBits(relation));
}

bool FitsInt64(ALGEB e) {
  if (e != nullptr && IsImmediate(e)) return true;
  if (!HasType(e, kIntegerNode)) return false;
  mpz_t m;
  mpz_init(m);
  IntegerToMpz(e, m);
  bool fits = mpz_sizeinbase(m, 2) <= 63 ||
              (mpz_sgn(m) < 0 && mpz_sizeinbase(m, 2) == 64 && mpz_scan1(m, 0) == 63);
  mpz_clear(m);
  return fits;
}

long long IntegerValue(ALGEB e) {
  if (e != nullptr && IsImmediate(e)) return ImmediateValue(e);
  if (!IsInteger(e)) RaiseExpected("an integer", e);
  if (!FitsInt64(e)) RaiseExpected("an integer of at most 64 bits", e);
  mpz_t m;
  mpz_init(m);
  IntegerToMpz(e, m);
  long long v = mpz_get_si(m);  // long is 64 bits here
  mpz_clear(m);
  return v;
}

std::string IntegerText(ALGEB e) {
  if (e != nullptr && IsImmediate(e)) return std::to_string(ImmediateValue(e));
  mpz_t m;
  mpz_init(m);
  IntegerToMpz(e, m);
  char* s = mpz_get_str(nullptr, 10, m);
  std::string r(s);
  void (*freefunc)(void*, size_t);
  mp_get_memory_functions(nullptr, nullptr, &freefunc);
  freefunc(s, std::strlen(s) + 1);
  mpz_clear(m);
  return r;
}

// ---- Equality and hashing ----
// Values nest without limit, so both walk the operands with a stack of their own.

namespace {

// Compares the nodes themselves; operand pairs still to compare go on pending.
bool EqualNode(ALGEB a, ALGEB b, std::vector<std::pair<ALGEB, ALGEB>>& pending) {
  if (a == b) return true;
  if (a == nullptr || b == nullptr || IsImmediate(a) || IsImmediate(b)) return false;
  uint32_t t = NodeTypeOf(a);
  if (t != NodeTypeOf(b)) return false;
  switch (t) {
    case kIntegerNode: {
      const IntegerNode *x = AsInteger(a), *y = AsInteger(b);
      int32_t n = x->size < 0 ? -x->size : x->size;
      return x->size == y->size && std::memcmp(x->limbs, y->limbs, sizeof(mp_limb_t) * n) == 0;
    }
    case kFloatNode: {
      const FloatNode *x = AsFloatNode(a), *y = AsFloatNode(b);
      int32_t n = x->size < 0 ? -x->size : x->size;
      return x->header == y->header && x->size == y->size && x->exponent == y->exponent &&
             std::memcmp(x->limbs, y->limbs, sizeof(mp_limb_t) * n) == 0;
    }
    case kStringNode:
      return AsString(a)->length == AsString(b)->length &&
             std::memcmp(AsString(a)->text, AsString(b)->text, AsString(a)->length) == 0;
    default:
      if (!IsSeqKind(t)) return false;  // names, procedures, tables, rtables: identity
      if (HeaderBits(a) != HeaderBits(b) || AsSeq(a)->count != AsSeq(b)->count) return false;
      for (uint32_t i = AsSeq(a)->count; i-- > 0;)
        pending.emplace_back(AsSeq(a)->items[i], AsSeq(b)->items[i]);
      return true;
  }
}

size_t Mix(size_t h, size_t v) {
  return (h ^ v) * 0x100000001b3ULL + (h >> 29);
}
size_t HashBytes(const void* p, size_t n, size_t h) {
  const unsigned char* c = static_cast<const unsigned char*>(p);
  for (size_t i = 0; i < n; ++i) h = (h ^ c[i]) * 0x100000001b3ULL;
  return h;
}

// Mixes the node itself into h (its operands in reading order follow through pending).
size_t HashNode(ALGEB e, size_t h, std::vector<ALGEB>& pending) {
  if (e == nullptr) return Mix(h, 0);
  if (IsImmediate(e)) return Mix(h, Mix(0x9e3779b97f4a7c15ULL, reinterpret_cast<uintptr_t>(e)));
  uint32_t t = NodeTypeOf(e);
  h = Mix(h, t);
  switch (t) {
    case kIntegerNode: {
      int32_t n = AsInteger(e)->size;
      return HashBytes(AsInteger(e)->limbs, sizeof(mp_limb_t) * (n < 0 ? -n : n), Mix(h, n));
    }
    case kFloatNode: {
      const FloatNode* x = AsFloatNode(e);
      h = Mix(Mix(h, x->header), static_cast<size_t>(x->exponent));
      return HashBytes(x->limbs, sizeof(mp_limb_t) * (x->size < 0 ? -x->size : x->size), h);
    }
    case kStringNode:
      return HashBytes(AsString(e)->text, AsString(e)->length, h);
    default:
      if (!IsSeqKind(t)) return Mix(h, reinterpret_cast<uintptr_t>(e) >> 3);
      h = Mix(Mix(h, HeaderBits(e)), AsSeq(e)->count);
      for (uint32_t i = AsSeq(e)->count; i-- > 0;) pending.push_back(AsSeq(e)->items[i]);
      return h;
  }
}

}  // namespace

bool Equal(ALGEB a, ALGEB b) {
  std::vector<std::pair<ALGEB, ALGEB>> pending;
  if (!EqualNode(a, b, pending)) return false;
  while (!pending.empty()) {
    auto [x, y] = pending.back();
    pending.pop_back();
    if (!EqualNode(x, y, pending)) return false;
  }
  return true;
}

// Hashes the first million nodes in reading order: equal values agree on them, and a value
// that shares its parts ([x, x] wrapped a hundred times) is not walked for ever.
size_t Hash(ALGEB e) {
  std::vector<ALGEB> pending;
  size_t h = HashNode(e, 0xcbf29ce484222325ULL, pending);
  for (int visited = 1; !pending.empty() && visited < (1 << 20); ++visited) {
    ALGEB x = pending.back();
    pending.pop_back();
    h = HashNode(x, h, pending);
  }
  return h;
}

}  // namespace vexa
