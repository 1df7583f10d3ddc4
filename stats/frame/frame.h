// The library frame: lifecycle entry points, conversions between host values and VexaFloat,
// guarded evaluation of host procedures, the callback adapters that give host procedures and
// native functions one Call(VexaFloat) interface, and the argument helper every entry point
// uses. The library sees the host only through vexa/external.h and vexa/float.h.
#ifndef STATS_FRAME_FRAME_H
#define STATS_FRAME_FRAME_H

#include <string>

#include "vexa/external.h"
#include "vexa/float.h"

// ---- Lifecycle (called by the host). ----
extern "C" {
// Stores kv and initialises the shared adapter, the random stream and the utilities, once
// until the next terminate. Returns true.
ALGEB STATS_StatsInitialize_MP(VexaKernelVector kv, ALGEB args);
// Clears the stored handle and the flag; terminates the stream and the utilities. Returns true.
ALGEB STATS_StatsTerminate_MP(VexaKernelVector kv, ALGEB args);
}

// ---- Conversions between host values and VexaFloat. ----
ALGEB STATS_DoubleToVexaFloat_MP(VexaKernelVector kv, VexaFloat x);  // the handle x wraps
VexaFloat STATS_VexaFloatToDouble_MP(VexaKernelVector kv, ALGEB e);  // e must be numeric
VexaFloat STATS_FloatUndefined_MP(VexaKernelVector kv);
int STATS_GetVexaDigits_MP();               // precision of the float library
int STATS_DoubleToInteger_MP(VexaFloat x);  // toward zero, saturating
// One rtable element of the given data type as a VexaFloat; a non-numeric element raises
// "expected vexa float, received %1".
VexaFloat RTableDataToDouble(VexaKernelVector kv, RTableData d, int datatype);

// Neither undefined nor an infinity.
bool STATS_IsFinite_MP(const VexaFloat& x);

// True when e is a host software float node: low bit clear and header type 4.
bool STATS_IsVexaFloatNode_MP(ALGEB e);

// ---- Conversion and guarded-evaluation utilities (static members only). ----
class STATS_VexaUtils_MP {
 public:
  // What guarded evaluation is handed: procedure(args[1], ..., args[count]); slot 0 and
  // data are not read.
  struct VexaCallbackArgs {
    ALGEB procedure;
    void* data;
    int count;
    VexaFloat* args;
  };

  STATS_VexaUtils_MP() {}
  ~STATS_VexaUtils_MP() {}

  static VexaKernelVector gVexaKernelVector;
  static ALGEB gVexaEvalfProc;
  static const bool PRINT_DEBUG_INFO = false;

  static void Initialize(VexaKernelVector kv);
  static void Terminate() {}

  // Strict: a float as it is, anything else through evalf under a trap; raises
  // "unable to evaluate %1 to floating-point" when the result is not numeric.
  static VexaFloat VexaDAGToDouble(ALGEB e);
  // Lenient: the same, but stores 0 in *out and returns false instead of raising.
  static bool VexaDAGToDouble(ALGEB e, VexaFloat* out);
  static void* VexaEvalfInternal(void* e);
  static void* VexaEvalhfInternal(void* e);
  [[noreturn]] static void ReportNonNumeric(ALGEB e);

  // procedure(args[1..count]) as a finite float. On a trapped error or a non-finite value the
  // procedure is called once more untrapped, so that its own error surfaces; if that call
  // returns, "unable to evaluate %1 to floating-point" is raised with its result.
  static VexaFloat EvalfVexaProc(VexaCallbackArgs* a);
  static void* TrapEvalfVexaProc(void* a);
};

// ---- Callback adapters: one interface for a function of one real variable. ----
class STATS_VexaCallbackAdapter_MP {
 public:
  explicit STATS_VexaCallbackAdapter_MP(VexaKernelVector kv) : m_kv(kv) {}
  virtual ~STATS_VexaCallbackAdapter_MP() {}
  virtual VexaFloat Call(VexaFloat x) = 0;

  void Initialize(VexaKernelVector kv) { m_kv = kv; }
  VexaKernelVector KernelVector() const { return m_kv; }

 protected:
  VexaKernelVector m_kv;
};

// A host procedure. Errors it raises propagate; non-finite results are passed back as they are.
class STATS_VexaProcAdapter_MP : public STATS_VexaCallbackAdapter_MP {
 public:
  STATS_VexaProcAdapter_MP(VexaKernelVector kv, ALGEB proc)
      : STATS_VexaCallbackAdapter_MP(kv), m_proc(proc) {}
  ~STATS_VexaProcAdapter_MP() override {}
  VexaFloat Call(VexaFloat x) override;

  void Reset(ALGEB proc) { m_proc = proc; }
  ALGEB Procedure() const { return m_proc; }

 private:
  ALGEB m_proc;
};

// A host procedure through guarded evaluation: every result is a finite float, or the call
// raises (the procedure's own error, or "unable to evaluate %1 to floating-point").
class STATS_VexaGuardedProcAdapter_MP : public STATS_VexaCallbackAdapter_MP {
 public:
  STATS_VexaGuardedProcAdapter_MP(VexaKernelVector kv, ALGEB proc)
      : STATS_VexaCallbackAdapter_MP(kv), m_proc(proc) {}
  ~STATS_VexaGuardedProcAdapter_MP() override {}
  VexaFloat Call(VexaFloat x) override;

 private:
  ALGEB m_proc;
};

// A native function.
class STATS_VexaCFuncAdapter_MP : public STATS_VexaCallbackAdapter_MP {
 public:
  using Function = VexaFloat (*)(VexaFloat);

  STATS_VexaCFuncAdapter_MP(VexaKernelVector kv, Function f)
      : STATS_VexaCallbackAdapter_MP(kv), m_func(f) {}
  ~STATS_VexaCFuncAdapter_MP() override {}
  VexaFloat Call(VexaFloat x) override { return m_func(x); }

  void Reset(Function f) { m_func = f; }

 private:
  Function m_func;
};

// The one shared procedure adapter, reachable through a plain function pointer (Call).
class STATS_VexaStaticProcAdapter_MP {
 public:
  STATS_VexaStaticProcAdapter_MP() {}

  static STATS_VexaProcAdapter_MP m_procInstance;

  static void Initialize(VexaKernelVector kv) { m_procInstance.Initialize(kv); }
  static void Reset(ALGEB proc) { m_procInstance.Reset(proc); }
  static VexaFloat Call(VexaFloat x) { return m_procInstance.Call(x); }
};

// ---- Entry-point conventions. ----
// Wraps the (kernel handle, argument sequence) of one entry point call. Construction checks
// the argument count; the accessors fetch argument i (1-based), convert it and raise the
// entry point's own messages. Typical use:
//   STATS_VexaEntry_MP entry(kv, args, "VexaWeibullDeviate", 3);
//   VexaFloat p = entry.Float(1), ...;
class STATS_VexaEntry_MP {
 public:
  // Raises ArityMessage(name, count) unless there are exactly count arguments.
  STATS_VexaEntry_MP(VexaKernelVector kv, ALGEB args, const char* name, int count);
  // The same check with a message of its own (short or irregular texts), used as given.
  STATS_VexaEntry_MP(VexaKernelVector kv, ALGEB args, const char* name, int count,
                     const std::string& arityMessage);
  // No count check: for entry points that accept several counts (see RaiseArity).
  STATS_VexaEntry_MP(VexaKernelVector kv, ALGEB args, const char* name);

  // "<name> expects <count> arguments, received: %1" ("argument" when count is 1).
  static std::string ArityMessage(const std::string& name, int count);
  // "expected <count> arguments, received: %1".
  static std::string ShortArityMessage(int count);
  // "first", "second", ... ("13th" and on in digits).
  static std::string Ordinal(int position);
  // "<name> expects a procedure as its <ordinal> parameter, received: %1".
  static std::string ProcedureMessage(const std::string& name, int position);

  VexaKernelVector Kernel() const { return m_kv; }
  ALGEB Args() const { return m_args; }
  int NumArgs() const;
  [[noreturn]] void RaiseArity(const std::string& message) const;  // %1: the whole sequence

  ALGEB Arg(int i) const;
  VexaFloat Float(int i) const;  // strict VexaDAGToDouble
  int Integer(int i) const;      // VexaToInteger32
  // A host procedure, else ProcedureMessage(name, i) with the argument as %1.
  ALGEB Procedure(int i) const;
  // The same check with a message of its own (another entry point's name, odd wording).
  ALGEB Procedure(int i, const std::string& message) const;
  // A host rtable, else message with the argument as %1.
  ALGEB RTable(int i, const std::string& message) const;

  // The host's Digits; SetDigits returns the previous value (for restoring it).
  int Digits() const;
  ALGEB SetDigits(int digits) const;
  ALGEB RestoreDigits(ALGEB previous) const;
  // A float result as it is, or rounded to digits through the host's evalf.
  ALGEB Result(VexaFloat r) const { return STATS_DoubleToVexaFloat_MP(m_kv, r); }
  ALGEB Result(VexaFloat r, int digits) const;

 private:
  VexaKernelVector m_kv;
  ALGEB m_args;
  std::string m_name;
};

// Digits raised for the life of the scope, then given back the value the host's assign
// returned, also when an error unwinds through it.
class STATS_VexaRaisedDigits_MP {
 public:
  STATS_VexaRaisedDigits_MP(const STATS_VexaEntry_MP& entry, int digits)
      : m_entry(entry), m_previous(entry.SetDigits(digits)) {}
  ~STATS_VexaRaisedDigits_MP() { m_entry.RestoreDigits(m_previous); }
  STATS_VexaRaisedDigits_MP(const STATS_VexaRaisedDigits_MP&) = delete;
  STATS_VexaRaisedDigits_MP& operator=(const STATS_VexaRaisedDigits_MP&) = delete;

 private:
  const STATS_VexaEntry_MP& m_entry;
  ALGEB m_previous;
};

// Reports long work through the info channel: once the work has run for interval seconds,
// and every interval seconds after that, "<task>: <done> of <total> <unit>" at level 1 under
// the name "Statistics" (shown when infolevel[Statistics] >= 1). Update also lets a Ctrl-C
// end the work; it reads the clock, so tight loops call it every few thousand steps.
class STATS_Progress_MP {
 public:
  STATS_Progress_MP(VexaKernelVector kv, const char* task, long long total, const char* unit,
                    double interval = 2.0);
  void Update(long long done);

 private:
  VexaKernelVector m_kv;
  const char* m_task;
  const char* m_unit;
  long long m_total;
  double m_interval;
  double m_start;       // seconds on a steady clock
  double m_nextReport;  // seconds since m_start
};

#endif
