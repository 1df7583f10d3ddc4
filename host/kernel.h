// The host kernel's own C++ interface, for the shell and the kernel's sources: node
// construction and access, evaluation, exact arithmetic, printing, names, procedures.
// The statistics library does not use this header; it sees only vexa/external.h.
#ifndef VEXA_HOST_KERNEL_H
#define VEXA_HOST_KERNEL_H

#include <gc/gc_allocator.h>
#include <stdint.h>

#include <cstdio>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "host/error.h"
#include "host/node.h"
#include "vexa/external.h"

namespace vexa {

using Kernel = _VexaKernelVectorDesc;

// The one process-wide kernel (created on first use, with Digits, evalf, infolevel, ...).
Kernel* GetKernel();

// ---- Construction. Every result is a fresh collected node unless said otherwise. ----
ALGEB NewInteger(long long v);                           // immediate when it fits, else a bignum
ALGEB NewIntegerFromString(const std::string& decimal);  // "-123..."; raises if malformed
ALGEB NewRational(ALGEB num, ALGEB den);  // exact integers; canonical (may give an integer)
ALGEB NewFloat(const VexaFloat& x);       // the float's own node
ALGEB NewFloatFromDouble(double x);       // shortest decimal that reads back as x
ALGEB NewString(const std::string& text);
ALGEB NewName(const std::string& text, bool global = true);  // global names are unique
ALGEB NewList(const std::vector<ALGEB>& items);
ALGEB NewSet(const std::vector<ALGEB>& items);     // sorted, duplicates removed
ALGEB NewExpseq(const std::vector<ALGEB>& items);  // nested sequences are spliced
ALGEB NewRange(ALGEB lo, ALGEB hi);
ALGEB NewEquation(ALGEB lhs, ALGEB rhs);
ALGEB NewSum(const std::vector<ALGEB>& terms);                    // unevaluated
ALGEB NewProduct(const std::vector<ALGEB>& factors);              // unevaluated
ALGEB NewPower(ALGEB base, ALGEB exponent);                       // unevaluated
ALGEB NewFunction(ALGEB head, const std::vector<ALGEB>& args);    // f(args), unevaluated
ALGEB NewIndexed(ALGEB base, const std::vector<ALGEB>& indices);  // t[i, j], unevaluated
ALGEB NewComplex(ALGEB re, ALGEB im);                             // numeric parts
enum RelationKind : uint32_t { kLess = 0, kLessEqual = 1, kNotEqual = 2 };
ALGEB NewRelation(RelationKind kind, ALGEB lhs, ALGEB rhs);  // a < b, a <= b, a <> b
ALGEB NewNot(ALGEB a);
ALGEB NewAnd(ALGEB a, ALGEB b);
ALGEB NewOr(ALGEB a, ALGEB b);
ALGEB True();
ALGEB False();
ALGEB Fail();
ALGEB Null();  // the empty expression sequence
ALGEB NewTable();

// ---- Procedures. ----
// A native procedure: a C++ callable given the kernel and the argument sequence.
using NativeFn = std::function<ALGEB(Kernel*, ALGEB args)>;
ALGEB NewNativeProcedure(const std::string& name, NativeFn fn,
                         const std::vector<std::string>& params = {});
// An interpreted procedure: the shell's opaque body and the functions that run and print it.
// The body pointer is scanned by the collector (it may point at collected memory).
struct ProcedureHooks {
  ALGEB (*call)(Kernel* k, ALGEB proc, void* body, ALGEB args);
  std::string (*print)(void* body);  // the whole text "proc (x) ... end proc"; may be null
};
ALGEB NewInterpretedProcedure(void* body, const ProcedureHooks* hooks,
                              const std::vector<std::string>& params = {});
bool IsNativeProcedure(ALGEB p);
void* ProcedureBody(ALGEB p);        // interpreted: the body; native: null
std::string ProcedureName(ALGEB p);  // native: its name; interpreted: ""
// Calls f with the argument sequence. f may be a procedure or a name; a name whose value is
// a procedure calls it (errors raised inside without a location get the name as location),
// a name without one gives the unevaluated call f(args).
ALGEB CallProcedure(ALGEB f, ALGEB args);

// ---- Reading nodes. ----
inline bool IsNode(ALGEB e) {
  return e != nullptr && !IsImmediate(e);
}
uint32_t TypeOf(ALGEB e);  // node type code; kIntegerNode for immediates
bool IsInteger(ALGEB e);   // immediate or bignum
bool IsRational(ALGEB e);  // a rational node (never an integer)
bool IsFloat(ALGEB e);
bool IsNumeric(ALGEB e);  // integer, rational or float
bool IsName(ALGEB e);
bool IsGlobalName(ALGEB e);
bool IsString(ALGEB e);
bool IsList(ALGEB e);
bool IsExpseq(ALGEB e);
bool IsProcedure(ALGEB e);
bool IsRTable(ALGEB e);
bool IsTable(ALGEB e);
bool IsTrue(ALGEB e);
bool IsFalse(ALGEB e);
bool IsFail(ALGEB e);
bool IsNull(ALGEB e);  // the empty sequence
// Operands: lists, sets, sequences, sums, products (items 1..n); power, range, equation,
// relation, complex, rational (1: left/base/re/numerator, 2: right/exponent/im/denominator);
// function and indexed (0: head/base, 1..n: arguments/indices); not, and, or.
// Anything else has 0 operands. Op raises when i is out of range.
int NumOps(ALGEB e);
ALGEB Op(ALGEB e, int i);
std::vector<ALGEB> Ops(ALGEB e);    // operands 1..n
std::string NameText(ALGEB name);   // raises for a non-name
std::string StringText(ALGEB str);  // raises for a non-string
RelationKind RelationOf(ALGEB relation);
// Integer reading: raise a HostError naming the expected and received value.
long long IntegerValue(ALGEB e);  // must fit in 64 bits
bool FitsInt64(ALGEB e);          // e is an integer within the 64-bit range
std::string IntegerText(ALGEB e);
bool Equal(ALGEB a, ALGEB b);  // structural equality (names by identity)
size_t Hash(ALGEB e);          // consistent with Equal

// ---- Arithmetic on numbers (integers, rationals, floats, complex values). ----
// Exact operands give exact results; a float operand makes the result a float at Digits.
// Non-numeric operands raise a HostError; division by exact zero raises.
ALGEB Add(ALGEB a, ALGEB b);
ALGEB Subtract(ALGEB a, ALGEB b);
ALGEB Multiply(ALGEB a, ALGEB b);
ALGEB Divide(ALGEB a, ALGEB b);
ALGEB Negate(ALGEB a);
ALGEB Power(ALGEB base, ALGEB exponent);  // exact for integer exponents of exact bases
// -1, 0, 1; 2 when unordered (an undefined float). Raises for non-real or non-numeric.
int Compare(ALGEB a, ALGEB b);
bool IsZero(ALGEB e);  // exact 0 or a float zero
int Sign(ALGEB e);     // of a real number

// ---- Evaluation. ----
ALGEB Eval(ALGEB e);               // names to values, calls made, numbers combined; symbolic stays
ALGEB Evalf(ALGEB e, int digits);  // numbers, Pi, infinity, undefined, elementary functions
ALGEB Evalf(ALGEB e);              // at the current Digits
double Evalhf(ALGEB e);            // to a double; raises if not numeric
double FloatToDouble(const VexaFloat& x);  // correctly rounded; undefined gives NaN
// true, false or FAIL: numeric relations and equations, structural equality, not/and/or.
ALGEB EvalBoolean(ALGEB e);

// ---- Names and tables. ----
ALGEB Lookup(ALGEB name);               // the value, or null when unassigned
ALGEB Assign(ALGEB name, ALGEB value);  // returns the previous value (null when none)
ALGEB Unassign(ALGEB name);             // returns the previous value
bool IsAssigned(ALGEB name);
// t[indices] := value, for a name (made a table when unassigned), a table, an rtable or a
// list. Returns value.
ALGEB AssignIndexed(ALGEB base, const std::vector<ALGEB>& indices, ALGEB value);
ALGEB TableGet(ALGEB table, ALGEB key);  // null when absent
void TablePut(ALGEB table, ALGEB key, ALGEB value);
bool TableRemove(ALGEB table, ALGEB key);
std::vector<std::pair<ALGEB, ALGEB>> TableEntries(ALGEB table);  // in insertion order

// ---- Session state. ----
// The value of every global name, Digits and the random stream, to put back later (after an
// interrupted statement, or between independent runs). Tables and rtables are shared, not
// copied: elements assigned in between stay assigned.
struct SessionState {
  std::vector<std::pair<ALGEB, ALGEB>, traceable_allocator<std::pair<ALGEB, ALGEB>>> values;
  std::vector<ALGEB, traceable_allocator<ALGEB>> names;  // every global name
  int digits = 10;
  std::mt19937 random;
};
SessionState SaveSessionState();
// Names assigned since become unassigned. With forgetNewNames, global names made since leave
// the table of names (a later name of the same text is a new node), so that independent runs
// do not pile up names: only for callers that keep no value made since.
void RestoreSessionState(const SessionState& state, bool forgetNewNames = false);

// ---- rtables (created through RTableCreate of vexa/external.h). ----
// Elements as host values: integer data types give integers, float types floats, complex
// types complex values. Setting converts (raising when the value does not fit the type).
ALGEB RTableGetElement(ALGEB rt, const M_INT* index);
void RTableSetElement(ALGEB rt, const M_INT* index, ALGEB value);

// ---- Printing. ----
std::string Print(ALGEB e);  // the shell's output form; NULL prints as ""

// ---- Recursion over syntax trees and values. ----
// Each level of a recursion over a tree or a value holds a NestingGuard. More than kMaxNesting
// levels raise "expression nested too deeply (more than 1000 levels)"; a stack all but used up
// raises "too many levels of recursion", whatever the count. A NestingRestart (a procedure
// call: its body is a tree of its own) counts from zero while it lives.
constexpr int kMaxNesting = 1000;
class NestingGuard {
 public:
  NestingGuard();
  ~NestingGuard();
  NestingGuard(const NestingGuard&) = delete;
  NestingGuard& operator=(const NestingGuard&) = delete;
};
class NestingRestart {
 public:
  NestingRestart();
  ~NestingRestart();
  NestingRestart(const NestingRestart&) = delete;
  NestingRestart& operator=(const NestingRestart&) = delete;

 private:
  int saved_;
};
bool StackAlmostFull();
void CheckStack();  // raises "too many levels of recursion" when the stack is all but used up

// ---- Errors. ----
// Formats "%1" and "%2" with the printed arguments (arguments may be null) and throws.
[[noreturn]] void RaiseFormatted(const std::string& templ, ALGEB a1 = nullptr, ALGEB a2 = nullptr);
std::string FormatMessage(const std::string& templ, ALGEB a1, ALGEB a2);

// ---- Random source, collector, info. ----
constexpr uint32_t kDefaultRandomSeed = 5489u;  // std::mt19937's own default
void SeedRandom(uint64_t seed);                 // randomize(n)
uint32_t NextRandomWord();
// What the stream has handed out since the kernel started (seeding does not reset it).
struct RandomCounts {
  uint64_t words = 0;   // 32-bit words
  uint64_t floats = 0;  // unit-interval floats (each takes one or more words)
};
RandomCounts RandomDrawn();
int ProtectCount(ALGEB e);           // how many VexaGcProtect calls are outstanding for e
void SetInfoStream(std::FILE* out);  // where VexaUserInfo writes (default stdout)

}  // namespace vexa

#endif
