// The kernel's state and services: start-up, names and Digits, procedures, error
// formatting, collector roots, the random stream and info messages.
#include <flint.h>
#include <gc/gc.h>
#include <pthread.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <unordered_set>

#include "float/float_node.h"
#include "host/node_pool.h"
#include "host/nodes.h"

namespace vexa {

namespace {

ALGEB EvalfBuiltin(Kernel*, ALGEB args) {
  int n = NumOps(args);
  if (n == 1) return Evalf(Op(args, 1));
  if (n != 2) RaiseFormatted("evalf expects 1 or 2 arguments, received: %1", args);
  ALGEB d = Op(args, 2);
  if (!IsInteger(d) || Compare(d, NewInteger(1)) < 0 || Compare(d, NewInteger(VEXA_MAX_DIGITS)) > 0)
    RaiseFormatted(
        "evalf expects its second argument to be an integer from 1 to 1000000, "
        "received: %1",
        d);
  return Evalf(Op(args, 1), static_cast<int>(IntegerValue(d)));
}

ALGEB RandomizeBuiltin(Kernel*, ALGEB args) {
  int n = NumOps(args);
  if (n > 1) RaiseFormatted("randomize expects 0 or 1 arguments, received: %1", args);
  uint64_t seed;
  if (n == 0) {
    seed = std::random_device{}();
  } else {
    ALGEB s = Op(args, 1);
    if (!IsInteger(s) || Sign(s) <= 0) RaiseExpected("a positive integer seed", s);
    mpz_t m;
    mpz_init(m);
    IntegerToMpz(s, m);
    seed = mpz_get_ui(m);  // the low 64 bits
    mpz_clear(m);
  }
  SeedRandom(seed);
  return NewInteger(static_cast<long long>(seed & ((1ULL << 61) - 1)));
}

void Setup(Kernel* k) {
  k->digits = NewName("Digits");
  k->infolevel = NewName("infolevel");
  Assign(k->infolevel, NewTable());
  Assign(NewName("evalf"), NewNativeProcedure("evalf", EvalfBuiltin, {"e", "n"}));
  Assign(NewName("randomize"), NewNativeProcedure("randomize", RandomizeBuiltin, {"n"}));
}

// GMP's and FLINT's allocation, failing with std::bad_alloc (which the shell reports as "out
// of memory") instead of aborting the process.
void* GmpAllocate(size_t bytes) {
  void* p = std::malloc(bytes);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}
void* GmpReallocate(void* old, size_t, size_t bytes) {
  void* p = std::realloc(old, bytes);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}
void GmpFree(void* p, size_t) {
  std::free(p);
}
void* FlintReallocate(void* old, size_t bytes) {
  return GmpReallocate(old, 0, bytes);
}
void* FlintZeroAllocate(size_t count, size_t size) {
  void* p = std::calloc(count, size);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}

// The collector's warnings (a heap that cannot grow, a large block allocated again and again)
// are not for the user: a failed allocation is reported as an error where it happens.
void IgnoreCollectorWarning(char*, GC_word) {}

void DestroyNative(void* obj, void*) {
  static_cast<NativeFn*>(obj)->~NativeFn();
}

ALGEB ParamSeq(const std::vector<std::string>& params) {
  std::vector<ALGEB> names;
  for (const std::string& p : params) names.push_back(NewName(p, false));
  return NewExpseq(names);
}

ALGEB AsArgs(ALGEB args) {
  if (args == nullptr) return Null();
  return IsExpseq(args) ? args : NewExpseq({args});
}

}  // namespace

Kernel* GetKernel() {
  static Kernel* kernel = nullptr;
  if (kernel == nullptr) {
    InitCollector();
    GC_set_warn_proc(IgnoreCollectorWarning);
    mp_set_memory_functions(GmpAllocate, GmpReallocate, GmpFree);
    __flint_set_memory_functions(GmpAllocate, FlintZeroAllocate, FlintReallocate, std::free);
    kernel = new (GC_MALLOC_UNCOLLECTABLE(sizeof(Kernel))) Kernel;
    Setup(kernel);
  }
  return kernel;
}

volatile std::sig_atomic_t gInterruptRequest = 0;

// ---- Session state ----

SessionState SaveSessionState() {
  Kernel* k = GetKernel();
  SessionState state;
  for (const auto& entry : k->globals) {
    state.names.push_back(entry.second);
    if (entry.second != k->digits && AsName(entry.second)->value != nullptr)
      state.values.emplace_back(entry.second, AsName(entry.second)->value);
  }
  state.digits = VexaDigits();
  state.random = k->random.engine;
  return state;
}

void RestoreSessionState(const SessionState& state, bool forgetNewNames) {
  Kernel* k = GetKernel();
  for (const auto& entry : k->globals)
    if (entry.second != k->digits) AsName(entry.second)->value = nullptr;
  if (forgetNewNames && k->globals.size() > state.names.size()) {
    std::unordered_set<ALGEB> known(state.names.begin(), state.names.end());
    for (auto it = k->globals.begin(); it != k->globals.end();)
      it = known.count(it->second) ? std::next(it) : k->globals.erase(it);
  }
  for (const auto& [name, value] : state.values) AsName(name)->value = value;
  VexaSetDigits(state.digits);
  k->random.engine = state.random;
}

// ---- Names ----

ALGEB Lookup(ALGEB name) {
  if (!IsName(name)) RaiseExpected("a name", name);
  if (name == GetKernel()->digits) return NewInteger(VexaDigits());
  return AsName(name)->value;
}

ALGEB Assign(ALGEB name, ALGEB value) {
  if (!IsName(name)) RaiseExpected("a name to assign to", name);
  if (value == nullptr) Raise("internal error: assigning a null value");
  if (name == GetKernel()->digits) {
    if (!IsInteger(value) || Compare(value, NewInteger(1)) < 0 ||
        Compare(value, NewInteger(VEXA_MAX_DIGITS)) > 0)
      RaiseFormatted("Digits must be an integer from 1 to 1000000, received %1", value);
    return NewInteger(VexaSetDigits(static_cast<int>(IntegerValue(value))));
  }
  ALGEB previous = AsName(name)->value;
  AsName(name)->value = value;
  return previous;
}

ALGEB Unassign(ALGEB name) {
  if (!IsName(name)) RaiseExpected("a name", name);
  if (name == GetKernel()->digits) return Assign(name, NewInteger(10));
  ALGEB previous = AsName(name)->value;
  AsName(name)->value = nullptr;
  return previous;
}

bool IsAssigned(ALGEB name) {
  return IsName(name) && Lookup(name) != nullptr;
}

// ---- Procedures ----

ALGEB NewNativeProcedure(const std::string& name, NativeFn fn,
                         const std::vector<std::string>& params) {
  if (!fn) Raise("a native procedure needs a callable");
  ALGEB paramSeq = ParamSeq(params);
  void* mem = AllocScanned(sizeof(NativeFn));
  NativeFn* native = new (mem) NativeFn(std::move(fn));
  GC_register_finalizer(mem, DestroyNative, nullptr, nullptr, nullptr);
  ProcedureNode* p = static_cast<ProcedureNode*>(AllocScanned(sizeof(ProcedureNode)));
  p->header = MakeHeader(kProcedureNode, kNativeBit);
  p->native = native;
  p->body = nullptr;
  p->hooks = nullptr;
  char* text = static_cast<char*>(AllocAtomic(name.size() + 1));
  name.copy(text, name.size());
  text[name.size()] = 0;
  p->name = text;
  p->params = paramSeq;
  return reinterpret_cast<ALGEB>(p);
}

ALGEB NewInterpretedProcedure(void* body, const ProcedureHooks* hooks,
                              const std::vector<std::string>& params) {
  if (hooks == nullptr || hooks->call == nullptr) Raise("an interpreted procedure needs hooks");
  ALGEB paramSeq = ParamSeq(params);
  ProcedureNode* p = static_cast<ProcedureNode*>(AllocScanned(sizeof(ProcedureNode)));
  p->header = MakeHeader(kProcedureNode, 0);
  p->native = nullptr;
  p->body = body;
  p->hooks = hooks;
  p->name = "";
  p->params = paramSeq;
  return reinterpret_cast<ALGEB>(p);
}

bool IsNativeProcedure(ALGEB p) {
  return IsProcedure(p) && (HeaderBits(p) & kNativeBit);
}
void* ProcedureBody(ALGEB p) {
  if (!IsProcedure(p)) RaiseExpected("a procedure", p);
  return AsProcedure(p)->body;
}
std::string ProcedureName(ALGEB p) {
  if (!IsProcedure(p)) RaiseExpected("a procedure", p);
  return AsProcedure(p)->name;
}

ALGEB CallProcedure(ALGEB f, ALGEB args) {
  args = AsArgs(args);
  std::string where;
  ALGEB p = f;
  if (IsName(f)) {
    where = NameText(f);
    p = Lookup(f);
    if (p == nullptr || !IsProcedure(p)) return Eval(NewFunction(f, {args}));
  }
  if (!IsProcedure(p)) RaiseExpected("a procedure", f);
  if (where.empty()) where = AsProcedure(p)->name;
  ALGEB result;
  try {
    ProcedureNode* node = AsProcedure(p);
    result = node->native ? (*node->native)(GetKernel(), args)
                          : node->hooks->call(GetKernel(), p, node->body, args);
  } catch (HostError& e) {
    if (e.where.empty()) e.where = where;
    throw;
  }
  return result == nullptr ? Null() : result;
}

// ---- Recursion ----

namespace {

int gNesting = 0;

// The lowest frame address a recursion may reach: a quarter of the thread's stack (at least
// 512 KB) is kept back for the unguarded work below the last guard and for unwinding.
const char* StackFloor() {
  static thread_local const char* floor = [] {
    pthread_attr_t attr;
    void* base = nullptr;
    size_t size = 0;
    if (pthread_getattr_np(pthread_self(), &attr) == 0) {
      pthread_attr_getstack(&attr, &base, &size);
      pthread_attr_destroy(&attr);
    }
    if (base == nullptr) return static_cast<const char*>(nullptr);
    return static_cast<const char*>(base) + std::max<size_t>(size / 4, 512 * 1024);
  }();
  return floor;
}

}  // namespace

bool StackAlmostFull() {
  return static_cast<const char*>(__builtin_frame_address(0)) < StackFloor();
}

void CheckStack() {
  if (StackAlmostFull()) Raise("too many levels of recursion");
}

NestingGuard::NestingGuard() {
  CheckInterrupt();
  if (gNesting >= kMaxNesting)
    Raise("expression nested too deeply (more than " + std::to_string(kMaxNesting) + " levels)");
  CheckStack();
  ++gNesting;
}
NestingGuard::~NestingGuard() {
  --gNesting;
}

NestingRestart::NestingRestart() : saved_(gNesting) {
  gNesting = 0;
}
NestingRestart::~NestingRestart() {
  gNesting = saved_;
}

// ---- Errors ----

std::string FormatMessage(const std::string& templ, ALGEB a1, ALGEB a2) {
  std::string out;
  for (size_t i = 0; i < templ.size(); ++i) {
    if (templ[i] == '%' && i + 1 < templ.size() && (templ[i + 1] == '1' || templ[i + 1] == '2')) {
      ALGEB a = templ[i + 1] == '1' ? a1 : a2;
      out += a == nullptr ? std::string("%") + templ[i + 1] : Print(a);
      ++i;
    } else {
      out += templ[i];
    }
  }
  return out;
}

[[noreturn]] void RaiseFormatted(const std::string& templ, ALGEB a1, ALGEB a2) {
  throw HostError(FormatMessage(templ, a1, a2));
}

// ---- Collector roots, random stream, info ----

int ProtectCount(ALGEB e) {
  auto& p = GetKernel()->protects;
  auto it = p.find(e);
  return it == p.end() ? 0 : static_cast<int>(it->second);
}

void SeedRandom(uint64_t seed) {
  std::seed_seq seq{static_cast<uint32_t>(seed), static_cast<uint32_t>(seed >> 32)};
  if (seed >> 32)
    GetKernel()->random.engine.seed(seq);
  else
    GetKernel()->random.engine.seed(static_cast<uint32_t>(seed));
}

uint32_t NextRandomWord() {
  return GetKernel()->random();
}

RandomCounts RandomDrawn() {
  return GetKernel()->random.counts;
}

void SetInfoStream(std::FILE* out) {
  GetKernel()->info = out;
}

}  // namespace vexa
