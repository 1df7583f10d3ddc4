// The external-call interface over the kernel: argument checks and conversions; the work
// is done by the kernel's own functions.
#include <gc/gc.h>

#include <climits>
#include <cstdarg>

#include "float/float_node.h"
#include "host/nodes.h"

using namespace vexa;

namespace {

SeqNode* CheckSeq(ALGEB s, const char* what) {
  if (!IsExpseq(s)) RaiseExpected(what, s);
  return AsSeq(s);
}

M_INT CheckIndex(M_INT i, M_INT n, ALGEB container) {
  if (i < 1 || i > n)
    RaiseFormatted(
        "index " + std::to_string(i) + " out of range 1 .. " + std::to_string(n) + " of %1",
        container);
  return i - 1;
}

M_BOOL B(bool x) {
  return x ? 1 : 0;
}

bool FitsBits(ALGEB e, int bits) {
  if (!FitsInt64(e)) return false;
  if (bits == 64) return true;
  long long v = IntegerValue(e), m = 1LL << (bits - 1);
  return v >= -m && v < m;
}

}  // namespace

M_INT VexaNumArgs(VexaKernelVector, ALGEB args) {
  if (args != nullptr && !IsExpseq(args)) return 1;  // a single value is a sequence of one
  return static_cast<M_INT>(CheckSeq(args, "an expression sequence")->count);
}

ALGEB VexaExpseqSelect(VexaKernelVector, ALGEB s, M_INT i) {
  if (s != nullptr && !IsExpseq(s)) {
    CheckIndex(i, 1, s);
    return s;
  }
  SeqNode* n = CheckSeq(s, "an expression sequence");
  return n->items[CheckIndex(i, n->count, s)];
}

ALGEB NewVexaExpressionSequence(VexaKernelVector, M_INT n) {
  if (n < 0 || n > (M_INT(1) << 31))
    Raise("an expression sequence needs 0 to 2^31 slots, received " + std::to_string(n));
  if (n == 0) return Null();
  ALGEB s = NewSeqNode(kExpseqNode, static_cast<uint32_t>(n));
  for (M_INT i = 0; i < n; ++i) AsSeq(s)->items[i] = Null();
  return s;
}

void VexaExpseqAssign(VexaKernelVector, ALGEB s, M_INT i, ALGEB value) {
  SeqNode* n = CheckSeq(s, "an expression sequence");
  if (value == nullptr) Raise("cannot store a null handle in an expression sequence");
  n->items[CheckIndex(i, n->count, s)] = value;
}

void VexaRaiseError(VexaKernelVector, const char* msg) {
  RaiseFormatted(msg ? msg : "");
}
void VexaRaiseError1(VexaKernelVector, const char* msg, ALGEB a1) {
  RaiseFormatted(msg ? msg : "", a1);
}
void VexaRaiseError2(VexaKernelVector, const char* msg, ALGEB a1, ALGEB a2) {
  RaiseFormatted(msg ? msg : "", a1, a2);
}

void* VexaTrapError(VexaKernelVector, void* (*proc)(void*), void* data, M_BOOL* errorflag) {
  if (errorflag == nullptr) Raise("VexaTrapError needs an error flag");
  *errorflag = 0;
  if (proc == nullptr) Raise("VexaTrapError needs a procedure to run");
  try {
    return proc(data);
  } catch (const HostError&) {
  } catch (const std::exception&) {  // the float library's text errors, memory exhaustion
  }
  *errorflag = 1;
  return nullptr;
}

ALGEB EvalVexaProcedure(VexaKernelVector, ALGEB proc, ALGEB args) {
  return CallProcedure(proc, args);
}

ALGEB EvalVexaProc(VexaKernelVector, ALGEB proc, int nargs, ...) {
  if (nargs < 0) Raise("EvalVexaProc needs a non-negative argument count");
  std::vector<ALGEB> args;
  va_list ap;
  va_start(ap, nargs);
  for (int i = 0; i < nargs; ++i) args.push_back(va_arg(ap, ALGEB));
  va_end(ap);
  for (ALGEB a : args)
    if (a == nullptr) Raise("EvalVexaProc received a null argument");
  ALGEB seq = NewSeqNode(kExpseqNode, static_cast<uint32_t>(nargs));
  for (int i = 0; i < nargs; ++i) AsSeq(seq)->items[i] = args[i];
  return CallProcedure(proc, nargs == 0 ? Null() : seq);
}

ALGEB VexaEval(VexaKernelVector, ALGEB e) {
  return Eval(e);
}
double VexaEvalhf(VexaKernelVector, ALGEB e) {
  return Evalhf(e);
}
ALGEB VexaAssign(VexaKernelVector, ALGEB name, ALGEB value) {
  ALGEB previous = Assign(name, value);
  return previous != nullptr ? previous : name;  // an unassigned name's value is itself
}

ALGEB ToVexaName(VexaKernelVector, const char* text, M_BOOL global) {
  if (text == nullptr) Raise("a name needs text");
  return NewName(text, global != 0);
}

ALGEB ToVexaBoolean(VexaKernelVector, M_BOOL b) {
  return b == -1 ? Fail() : b ? True() : False();
}
ALGEB ToVexaInteger(VexaKernelVector, M_INT v) {
  return NewInteger(v);
}
ALGEB ToVexaInteger64(VexaKernelVector, INTEGER64 v) {
  return NewInteger(v);
}
ALGEB ToVexaFloat(VexaKernelVector, double v) {
  return NewFloatFromDouble(v);
}
ALGEB ToVexaNULL(VexaKernelVector) {
  return Null();
}
ALGEB ToVexaComplex(VexaKernelVector, double re, double im) {
  return NewComplex(NewFloatFromDouble(re), NewFloatFromDouble(im));
}
ALGEB ToVexaComplexFloat(VexaKernelVector, ALGEB re, ALGEB im) {
  return NewComplex(re, im);
}

INTEGER32 VexaToInteger32(VexaKernelVector, ALGEB e) {
  if (!IsInteger(e)) RaiseExpected("an integer", e);
  if (!FitsBits(e, 32)) RaiseExpected("an integer of at most 32 bits", e);
  return static_cast<INTEGER32>(IntegerValue(e));
}

INTEGER64 VexaToInteger64(VexaKernelVector, ALGEB e) {
  if (!IsInteger(e)) RaiseExpected("an integer", e);
  return IntegerValue(e);
}

M_INT VexaToM_INT(VexaKernelVector kv, ALGEB e) {
  return static_cast<M_INT>(VexaToInteger64(kv, e));
}

M_BOOL VexaToM_BOOL(VexaKernelVector, ALGEB e) {
  if (IsTrue(e)) return 1;
  if (IsFalse(e)) return 0;
  if (IsFail(e)) return -1;
  if (IsInteger(e)) {
    if (!FitsBits(e, 32)) RaiseExpected("true, false, FAIL or an integer of at most 32 bits", e);
    return static_cast<M_BOOL>(IntegerValue(e));
  }
  RaiseExpected("true, false, FAIL or an integer", e);
}

M_BOOL IsVexaNumeric(VexaKernelVector, ALGEB e) {
  return B(IsNumeric(e));
}
M_BOOL IsVexaProcedure(VexaKernelVector, ALGEB e) {
  return B(IsProcedure(e));
}
M_BOOL IsVexaRTable(VexaKernelVector, ALGEB e) {
  return B(IsRTable(e));
}
M_BOOL IsVexaList(VexaKernelVector, ALGEB e) {
  return B(IsList(e));
}
M_BOOL IsVexaTable(VexaKernelVector, ALGEB e) {
  return B(IsTable(e));
}
M_BOOL IsVexaString(VexaKernelVector, ALGEB e) {
  return B(IsString(e));
}
M_BOOL IsVexaName(VexaKernelVector, ALGEB e) {
  return B(IsName(e));
}
M_BOOL IsVexaNULL(VexaKernelVector, ALGEB e) {
  return B(IsNull(e));
}
M_BOOL IsVexaInteger(VexaKernelVector, ALGEB e) {
  return B(IsInteger(e));
}
M_BOOL IsVexaInteger8(VexaKernelVector, ALGEB e) {
  return B(FitsBits(e, 8));
}
M_BOOL IsVexaInteger16(VexaKernelVector, ALGEB e) {
  return B(FitsBits(e, 16));
}
M_BOOL IsVexaInteger32(VexaKernelVector, ALGEB e) {
  return B(FitsBits(e, 32));
}
M_BOOL IsVexaInteger64(VexaKernelVector, ALGEB e) {
  return B(FitsBits(e, 64));
}
M_BOOL IsVexaAssignedName(VexaKernelVector, ALGEB e) {
  return B(IsAssigned(e));
}
M_BOOL IsVexaUnnamedZero(VexaKernelVector, ALGEB e) {
  return B((IsInteger(e) || IsFloatNode(e)) && IsZero(e));
}

void VexaGcProtect(VexaKernelVector kv, ALGEB e) {
  if (e == nullptr || IsImmediate(e)) return;  // immediates are not collected
  ++kv->protects[e];
}

void VexaGcAllow(VexaKernelVector kv, ALGEB e) {
  auto it = kv->protects.find(e);
  if (it == kv->protects.end()) return;
  if (--it->second == 0) kv->protects.erase(it);
}

void* VexaAlloc(VexaKernelVector, M_INT nbytes) {
  if (nbytes < 0) Raise("VexaAlloc: negative size " + std::to_string(nbytes));
  return AllocScanned(static_cast<size_t>(nbytes > 0 ? nbytes : 1));  // GC_MALLOC zeroes
}

void* VexaNew(VexaKernelVector kv, M_INT count, M_INT size) {
  if (count < 0 || size < 0 || (size > 0 && count > PTRDIFF_MAX / size))
    Raise("VexaNew: invalid size " + std::to_string(count) + " * " + std::to_string(size));
  return VexaAlloc(kv, count * size);
}

ALGEB VexaListAlloc(VexaKernelVector, M_INT n) {
  if (n < 0 || n > (M_INT(1) << 31))
    Raise("a list needs 0 to 2^31 slots, received " + std::to_string(n));
  ALGEB l = NewSeqNode(kListNode, static_cast<uint32_t>(n));
  for (M_INT i = 0; i < n; ++i) AsSeq(l)->items[i] = NewInteger(0);
  return l;
}

void VexaListAssign(VexaKernelVector, ALGEB list, M_INT i, ALGEB value) {
  if (!IsList(list)) RaiseExpected("a list", list);
  if (value == nullptr) Raise("cannot store a null handle in a list");
  AsSeq(list)->items[CheckIndex(i, AsSeq(list)->count, list)] = value;
}

ALGEB VexaListSelect(VexaKernelVector, ALGEB list, M_INT i) {
  if (!IsList(list)) RaiseExpected("a list", list);
  return AsSeq(list)->items[CheckIndex(i, AsSeq(list)->count, list)];
}

M_INT VexaListLength(VexaKernelVector, ALGEB list) {
  if (!IsList(list)) RaiseExpected("a list", list);
  return static_cast<M_INT>(AsSeq(list)->count);
}

M_BOOL IsVexaRange(VexaKernelVector, ALGEB e) {
  return B(IsNode(e) && TypeOf(e) == kRangeNode);
}
ALGEB VexaRangeLow(VexaKernelVector kv, ALGEB range) {
  if (!IsVexaRange(kv, range)) RaiseExpected("a range", range);
  return Op(range, 1);
}
ALGEB VexaRangeHigh(VexaKernelVector kv, ALGEB range) {
  if (!IsVexaRange(kv, range)) RaiseExpected("a range", range);
  return Op(range, 2);
}
ALGEB ToVexaRange(VexaKernelVector, ALGEB lo, ALGEB hi) {
  return NewRange(lo, hi);
}
ALGEB ToVexaEquation(VexaKernelVector, ALGEB lhs, ALGEB rhs) {
  return NewEquation(lhs, rhs);
}

ALGEB VexaTableAlloc(VexaKernelVector) {
  return NewTable();
}
void VexaTableAssign(VexaKernelVector, ALGEB table, ALGEB index, ALGEB value) {
  TablePut(table, index, value);
}
M_BOOL VexaTableHasEntry(VexaKernelVector, ALGEB table, ALGEB index) {
  return B(TableGet(table, index) != nullptr);
}
ALGEB VexaTableSelect(VexaKernelVector, ALGEB table, ALGEB index) {
  return TableGet(table, index);
}

ALGEB VexaNumericAdd(VexaKernelVector, ALGEB a, ALGEB b) {
  if (!IsNumeric(a)) RaiseExpected("a numeric value", a);
  if (!IsNumeric(b)) RaiseExpected("a numeric value", b);
  return Add(a, b);
}

uint32_t VexaRandomInt32(VexaKernelVector kv) {
  return kv->random();
}

ALGEB VexaRandomSoftwareFloat01(VexaKernelVector kv) {
  // k uniform on [0, 10^D): whole 32-bit words, the top one masked to the bit length of
  // 10^D - 1, rejected when k >= 10^D (probability below 1/2).
  int digits = VexaDigits();
  mpz_t limit, k;
  mpz_inits(limit, k, nullptr);
  mpz_ui_pow_ui(limit, 10, static_cast<unsigned long>(digits));
  size_t bits = mpz_sizeinbase(limit, 2);  // of 10^D, so 10^D - 1 fits in bits
  size_t words = (bits + 31) / 32;
  uint32_t topMask = bits % 32 == 0 ? 0xffffffffu : (1u << (bits % 32)) - 1;
  std::vector<uint32_t> w(words);
  do {
    for (size_t i = 0; i < words; ++i) w[i] = kv->random();
    w[words - 1] &= topMask;
    mpz_import(k, words, -1, sizeof(uint32_t), 0, 0, w.data());
  } while (mpz_cmp(k, limit) >= 0);
  ++kv->random.counts.floats;
  VexaFloat r = FloatFromMpz(k, -digits, 0);
  mpz_clears(limit, k, nullptr);
  return r.Handle();
}

void VexaRandomSeed(VexaKernelVector, uint64_t seed) {
  SeedRandom(seed);
}

void VexaCheckInterrupt(VexaKernelVector) {
  CheckInterrupt();
}

void VexaUserInfo(VexaKernelVector kv, int level, const char* name, const char* text) {
  if (name == nullptr || text == nullptr) Raise("VexaUserInfo needs a name and a text");
  ALGEB table = Lookup(kv->infolevel);
  if (table == nullptr || !IsTable(table)) return;
  auto levelOf = [&](const char* key) -> long long {
    ALGEB v = TableGet(table, NewName(key));
    return v != nullptr && IsInteger(v) && FitsInt64(v) ? IntegerValue(v) : 0;
  };
  if (levelOf(name) >= level || levelOf("all") >= level) {
    std::fprintf(kv->info, "%s: %s\n", name, text);
    std::fflush(kv->info);
  }
}
