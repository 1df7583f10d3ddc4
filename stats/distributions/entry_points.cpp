// Every distribution entry point, generated from one table. An entry point checks its
// argument count, converts its arguments to floats (1-based, in order), calls its worker and
// returns the result as a host float; a RandomSample entry point makes its output array and
// fills it with one worker call per element. An operation whose worker is not in this build
// raises "<entry point> is not available in this build" once its arguments are checked.
#include <cstddef>
#include <string>
#include <utility>

#include "distributions/distributions.h"
#include "frame/frame.h"
#include "random/random_stream.h"
#include "random/ziggurat.h"

namespace {

static_assert(sizeof(VexaFloat) == sizeof(ALGEB), "a sample's data block holds VexaFloat values");

enum class Operation {
  kProbability,
  kDeviate,
  kRandomVariate,
  kRandomSample,
  kDeviateApprox,
  kWApprox
};

// How an entry point takes its arguments.
enum class Form {
  kFloats,       // every argument a float (a RandomSample's first the size n)
  kOutputArray,  // RandomSample whose first argument is n or an output array to fill
  kOpaque,       // arrays or procedures that no worker of this build takes
  kOwn,          // the row's own function takes the arguments after the arity check
};

// A worker as the table calls it: its parameter count and a call on converted arguments.
struct Worker {
  int params;
  VexaFloat (*call)(VexaKernelVector, const VexaFloat*);
};

// Worker parameters are floats, or integers (long) converted from floats.
template <class P>
P Parameter(const VexaFloat& x);
template <>
inline VexaFloat Parameter<VexaFloat>(const VexaFloat& x) {
  return x;
}
template <>
inline long Parameter<long>(const VexaFloat& x) {
  return STATS_DoubleToInteger_MP(x);
}

template <class F, F f>
struct BoundAs;
template <class... P, VexaFloat (*W)(VexaKernelVector, P...)>
struct BoundAs<VexaFloat (*)(VexaKernelVector, P...), W> {
  static VexaFloat Call(VexaKernelVector kv, const VexaFloat* a) {
    return Apply(kv, a, std::index_sequence_for<P...>());
  }
  template <std::size_t... I>
  static VexaFloat Apply(VexaKernelVector kv, const VexaFloat* a, std::index_sequence<I...>) {
    return W(kv, Parameter<P>(a[I])...);
  }
  static constexpr Worker kWorker = {static_cast<int>(sizeof...(P)), &Call};
};

// The discrete deviates return an integer, handed back as a float.
template <class... P, long (*W)(VexaKernelVector, P...)>
struct BoundAs<long (*)(VexaKernelVector, P...), W> {
  static VexaFloat Call(VexaKernelVector kv, const VexaFloat* a) {
    return Apply(kv, a, std::index_sequence_for<P...>());
  }
  template <std::size_t... I>
  static VexaFloat Apply(VexaKernelVector kv, const VexaFloat* a, std::index_sequence<I...>) {
    return VexaFloat(W(kv, Parameter<P>(a[I])...));
  }
  static constexpr Worker kWorker = {static_cast<int>(sizeof...(P)), &Call};
};

template <auto f>
struct Bound : BoundAs<decltype(f), f> {};

constexpr Worker kNotAvailable = {-1, nullptr};

struct EntryRow {
  const char* name;  // the entry point's name less STATS_ and _MP
  Operation operation;
  int count;            // the argument count the host must pass
  int otherCount;       // a second accepted count, or 0
  const char* message;  // the arity message; nullptr: formed from name and count
  Worker worker;
  Form form;
  void (*check)(const STATS_VexaEntry_MP&);  // further argument checks, or nullptr
  ALGEB (*own)(const STATS_VexaEntry_MP&);   // Form::kOwn: the rest of the entry point
};

constexpr int kMaxArguments = 8;

[[noreturn]] void RaiseNotAvailable(VexaKernelVector kv, const EntryRow& row) {
  std::string message = std::string(row.name) + " is not available in this build";
  VexaRaiseError(kv, message.c_str());
}

ALGEB RunEntry(VexaKernelVector kv, ALGEB args, const EntryRow& row) {
  STATS_VexaEntry_MP entry(kv, args, row.name);
  int received = entry.NumArgs();
  if (received != row.count && (row.otherCount == 0 || received != row.otherCount))
    entry.RaiseArity(row.message ? row.message
                                 : STATS_VexaEntry_MP::ArityMessage(row.name, row.count));
  if (row.check) row.check(entry);
  if (row.form == Form::kOpaque) RaiseNotAvailable(kv, row);
  if (row.form == Form::kOwn) return row.own(entry);

  const bool sample = row.operation == Operation::kRandomSample;
  const int first = sample ? 2 : 1;
  // The worker's own parameter count decides how many positions are read.
  const int params = row.worker.call ? row.worker.params : row.count - first + 1;
  int n = 0;
  if (sample && row.form == Form::kFloats) n = entry.Integer(1);
  VexaFloat values[kMaxArguments];
  for (int i = 0; i < params; ++i) values[i] = entry.Float(first + i);

  if (!sample) {
    if (!row.worker.call) RaiseNotAvailable(kv, row);
    if (row.operation != Operation::kRandomVariate)
      return entry.Result(row.worker.call(kv, values));
    STATS_ExactSamplingScope_MP sampling;  // the sampling switch is read once per call
    return entry.Result(row.worker.call(kv, values));
  }
  STATS_ExactSamplingScope_MP sampling;
  ALGEB out = row.form == Form::kOutputArray ? STATS_CreateRandomSample_MP(kv, entry.Arg(1))
                                             : STATS_CreateRandomSample_MP(kv, n, ToVexaNULL(kv));
  if (row.form == Form::kOutputArray) n = static_cast<int>(RTableNumElements(kv, out));
  VexaFloat* data = static_cast<VexaFloat*>(RTableDataBlock(kv, out));
  for (int i = 0; i < n; ++i) {
    if (!row.worker.call) RaiseNotAvailable(kv, row);
    VexaFloat copies[kMaxArguments];
    for (int j = 0; j < params; ++j) copies[j] = values[j];
    data[i] = row.worker.call(kv, copies);
  }
  return out;
}

// The error distribution's deviate: p, the distribution function and the density as
// procedures, then a, b, c. It works at Digits + 3 and rounds to the caller's Digits.
ALGEB ErrorDeviate(const STATS_VexaEntry_MP& entry) {
  const VexaKernelVector kv = entry.Kernel();
  const VexaFloat p = entry.Float(1);
  STATS_VexaProcAdapter_MP F(kv, entry.Procedure(2)), f(kv, entry.Procedure(3));
  const VexaFloat a = entry.Float(4), b = entry.Float(5), c = entry.Float(6);
  const int digits = entry.Digits();
  VexaFloat x;
  {
    STATS_VexaRaisedDigits_MP raised(entry, digits + 3);
    x = STATS_ErrorDeviate_MP(kv, p, F, f, a, b, c);
  }
  return entry.Result(x, digits);
}

// The six-argument form of the noncentral chi-square sample ends in three procedures.
void CheckNonCentralChiSquareSample(const STATS_VexaEntry_MP& entry) {
  if (entry.NumArgs() != 6) return;
  for (int i = 4; i <= 6; ++i)
    entry.Procedure(i, "procedure expected as " + STATS_VexaEntry_MP::Ordinal(i) +
                           " parameter to VexaNonCentralChiSquareRandomSample, received: %1");
}

}  // namespace

#define STATS_ENTRY_ROW(Dist, Op, Count, OtherCount, Message, Worker, Form, Check, Own)            \
  extern "C" ALGEB STATS_Vexa##Dist##Op##_MP(VexaKernelVector kv, ALGEB args) {                    \
    static const EntryRow row = {                                                                  \
        "Vexa" #Dist #Op, Operation::k##Op, Count, OtherCount, Message, Worker, Form, Check, Own}; \
    return RunEntry(kv, args, row);                                                                \
  }
#define STATS_ENTRY(Dist, Op, Count, OtherCount, Message, Worker, Form, Check) \
  STATS_ENTRY_ROW(Dist, Op, Count, OtherCount, Message, Worker, Form, Check, nullptr)
// An entry point that takes its arguments itself after the arity check.
#define STATS_OWN_ENTRY(Dist, Op, Count, Own) \
  STATS_ENTRY_ROW(Dist, Op, Count, 0, nullptr, kNotAvailable, Form::kOwn, nullptr, Own)
// The common case: the message formed by the rule, float arguments.
#define ENTRY(Dist, Op, Count, Worker) \
  STATS_ENTRY(Dist, Op, Count, 0, nullptr, Worker, Form::kFloats, nullptr)
#define MISSING kNotAvailable
#define W(f) Bound<&f>::kWorker
// An overloaded worker (the RandomVariate workers) taken with the given signature.
#define AS(Signature, f) Bound<static_cast<Signature>(&f)>::kWorker
#define DIST4(Dist, P, D, V, S, ProbabilityWorker, DeviateWorker, VariateWorker) \
  ENTRY(Dist, Probability, P, ProbabilityWorker)                                 \
  ENTRY(Dist, Deviate, D, DeviateWorker)                                         \
  ENTRY(Dist, RandomVariate, V, VariateWorker)                                   \
  ENTRY(Dist, RandomSample, S, VariateWorker)

using Variate1 = VexaFloat (*)(VexaKernelVector, VexaFloat);
using Variate2 = VexaFloat (*)(VexaKernelVector, VexaFloat, VexaFloat);
using Variate3 = VexaFloat (*)(VexaKernelVector, VexaFloat, VexaFloat, VexaFloat);
using CountVariate1 = VexaFloat (*)(VexaKernelVector, long, VexaFloat);
using Counts2 = VexaFloat (*)(VexaKernelVector, long, long);
using Counts3 = VexaFloat (*)(VexaKernelVector, long, long, long);

// Distribution, counts of Probability, Deviate, RandomVariate, RandomSample, then workers.
DIST4(Bernoulli, 2, 2, 1, 2, W(STATS_BernoulliProbability_MP), W(STATS_BernoulliDeviate_MP),
      AS(Variate1, STATS_BernoulliRandomVariate_MP))
DIST4(Beta, 3, 3, 2, 3, W(STATS_BetaProbability_MP), W(STATS_BetaDeviate_MP),
      AS(Variate2, STATS_BetaRandomVariate_MP))
ENTRY(Binomial, Probability, 3, W(STATS_BinomialProbability_MP))
ENTRY(Binomial, Deviate, 3, W(STATS_BinomialDeviate_MP))
ENTRY(Binomial, RandomVariate, 2, AS(CountVariate1, STATS_BinomialRandomVariate_MP))
STATS_OWN_ENTRY(Binomial, RandomSample, 3, STATS_BinomialRandomSampleEntry_MP)
DIST4(Cauchy, 3, 3, 2, 3, W(STATS_CauchyProbability_MP), W(STATS_CauchyDeviate_MP),
      AS(Variate2, STATS_CauchyRandomVariate_MP))
DIST4(ChiSquare, 2, 2, 1, 2, W(STATS_ChiSquareProbability_MP), W(STATS_ChiSquareDeviate_MP),
      AS(Variate1, STATS_ChiSquareRandomVariate_MP))
DIST4(DiscreteUniform, 3, 3, 2, 3, W(STATS_DiscreteUniformProbability_MP),
      W(STATS_DiscreteUniformDeviate_MP), AS(Counts2, STATS_DiscreteUniformRandomVariate_MP))
DIST4(Exponential, 2, 2, 1, 2, W(STATS_ExponentialProbability_MP), W(STATS_ExponentialDeviate_MP),
      AS(Variate1, STATS_ExponentialRandomVariate_MP))
DIST4(FRatio, 3, 3, 2, 3, W(STATS_FRatioProbability_MP), W(STATS_FRatioDeviate_MP),
      AS(Variate2, STATS_FRatioRandomVariate_MP))
DIST4(Gamma, 3, 3, 2, 3, W(STATS_GammaProbability_MP), W(STATS_GammaDeviate_MP),
      AS(Variate2, STATS_GammaRandomVariate_MP))
DIST4(Geometric, 2, 2, 1, 2, W(STATS_GeometricProbability_MP), W(STATS_GeometricDeviate_MP),
      AS(Variate1, STATS_GeometricRandomVariate_MP))
DIST4(Gumbel, 3, 3, 2, 3, W(STATS_GumbelProbability_MP), W(STATS_GumbelDeviate_MP),
      AS(Variate2, STATS_GumbelRandomVariate_MP))
DIST4(Hypergeometric, 4, 4, 3, 4, W(STATS_HypergeometricProbability_MP),
      W(STATS_HypergeometricDeviate_MP), AS(Counts3, STATS_HypergeometricRandomVariate_MP))
DIST4(Laplace, 3, 3, 2, 3, W(STATS_LaplaceProbability_MP), W(STATS_LaplaceDeviate_MP),
      AS(Variate2, STATS_LaplaceRandomVariate_MP))
DIST4(Logistic, 3, 3, 2, 3, W(STATS_LogisticProbability_MP), W(STATS_LogisticDeviate_MP),
      AS(Variate2, STATS_LogisticRandomVariate_MP))
DIST4(LogNormal, 3, 3, 2, 3, W(STATS_LogNormalProbability_MP), W(STATS_LogNormalDeviate_MP),
      AS(Variate2, STATS_LogNormalRandomVariate_MP))
DIST4(NegativeBinomial, 3, 3, 2, 3, W(STATS_NegativeBinomialProbability_MP),
      W(STATS_NegativeBinomialDeviate_MP), AS(Variate2, STATS_NegativeBinomialRandomVariate_MP))
DIST4(NonCentralBeta, 4, 4, 3, 4, MISSING, MISSING, MISSING)
DIST4(NonCentralFRatio, 4, 4, 3, 4, MISSING, MISSING, MISSING)
DIST4(Pareto, 3, 3, 2, 3, W(STATS_ParetoProbability_MP), W(STATS_ParetoDeviate_MP),
      AS(Variate2, STATS_ParetoRandomVariate_MP))
DIST4(Poisson, 2, 2, 1, 2, W(STATS_PoissonProbability_MP), W(STATS_PoissonDeviate_MP),
      AS(Variate1, STATS_PoissonRandomVariate_MP))
DIST4(Power, 3, 3, 2, 3, W(STATS_PowerProbability_MP), W(STATS_PowerDeviate_MP),
      AS(Variate2, STATS_PowerRandomVariate_MP))
DIST4(Rayleigh, 2, 2, 1, 2, W(STATS_RayleighProbability_MP), W(STATS_RayleighDeviate_MP),
      AS(Variate1, STATS_RayleighRandomVariate_MP))
DIST4(StudentT, 2, 2, 1, 2, W(STATS_StudentTProbability_MP), W(STATS_StudentTDeviate_MP),
      AS(Variate1, STATS_StudentTRandomVariate_MP))
DIST4(Triangular, 4, 4, 3, 4, W(STATS_TriangularProbability_MP), W(STATS_TriangularDeviate_MP),
      AS(Variate3, STATS_TriangularRandomVariate_MP))
DIST4(Weibull, 3, 3, 2, 3, W(STATS_WeibullProbability_MP), W(STATS_WeibullDeviate_MP),
      AS(Variate2, STATS_WeibullRandomVariate_MP))

// Distributions with fewer operations, other forms or messages of their own.
STATS_OWN_ENTRY(Empirical, Deviate, 4, STATS_EmpiricalDeviateEntry_MP)
STATS_OWN_ENTRY(Empirical, RandomVariate, 3, STATS_EmpiricalRandomVariateEntry_MP)
STATS_OWN_ENTRY(Empirical, RandomSample, 4, STATS_EmpiricalRandomSampleEntry_MP)

STATS_OWN_ENTRY(Error, Deviate, 6, ErrorDeviate)
STATS_ENTRY(Error, RandomVariate, 3, 0, "expected 3 arguments, received: %1",
            AS(Variate3, STATS_ErrorRandomVariate_MP), Form::kFloats, nullptr)
STATS_ENTRY(Error, RandomSample, 4, 0, "expected 4 arguments, received: %1",
            AS(Variate3, STATS_ErrorRandomVariate_MP), Form::kFloats, nullptr)

STATS_ENTRY(InverseGaussian, RandomVariate, 2, 0,
            "VexaInverseGaussianRandomVariate expects 2 argument, received: %1",
            AS(Variate2, STATS_InverseGaussianRandomVariate_MP), Form::kFloats, nullptr)
ENTRY(InverseGaussian, RandomSample, 3, AS(Variate2, STATS_InverseGaussianRandomVariate_MP))

ENTRY(Maxwell, RandomVariate, 1, AS(Variate1, STATS_MaxwellRandomVariate_MP))
ENTRY(Maxwell, RandomSample, 2, AS(Variate1, STATS_MaxwellRandomVariate_MP))

STATS_ENTRY(Moyal, RandomVariate, 2, 0, "VexaMoyalRandomVariate expects 2 argument, received: %1",
            AS(Variate2, STATS_MoyalRandomVariate_MP), Form::kFloats, nullptr)
ENTRY(Moyal, RandomSample, 3, AS(Variate2, STATS_MoyalRandomVariate_MP))

ENTRY(NonCentralChiSquare, Probability, 3, MISSING)
ENTRY(NonCentralChiSquare, Deviate, 3, MISSING)
ENTRY(NonCentralChiSquare, RandomVariate, 3, MISSING)
STATS_ENTRY(NonCentralChiSquare, RandomSample, 4, 6,
            "VexaNonCentralChiSquareRandomSample expects 4 or 6 arguments, received: %1", MISSING,
            Form::kOpaque, CheckNonCentralChiSquareSample)

ENTRY(NonCentralStudentT, Probability, 3, MISSING)
ENTRY(NonCentralStudentT, RandomVariate, 2, MISSING)
ENTRY(NonCentralStudentT, RandomSample, 3, MISSING)

ENTRY(Normal, Probability, 3, W(STATS_NormalProbability_MP))
ENTRY(Normal, Deviate, 3, W(STATS_NormalDeviate_MP))
ENTRY(Normal, RandomVariate, 2, AS(Variate2, STATS_NormalRandomVariate_MP))
STATS_ENTRY(Normal, RandomSample, 3, 0, nullptr, AS(Variate2, STATS_NormalRandomVariate_MP),
            Form::kOutputArray, nullptr)
// Both approximations report the first one's name; the second reads three arguments after
// checking for one.
STATS_ENTRY(Normal, DeviateApprox, 1, 0,
            "VexaNormalDeviateApprox expects 1 arguments, received: %1",
            W(STATS_NormalDeviateApprox_MP), Form::kFloats, nullptr)
STATS_ENTRY(Normal, WApprox, 1, 0, "VexaNormalDeviateApprox expects 1 arguments, received: %1",
            W(STATS_NormalWApprox_MP), Form::kFloats, nullptr)

// The uniform distribution's Probability and Deviate name the RandomVariate entry point.
STATS_ENTRY(Uniform, Probability, 3, 0,
            "VexaUniformRandomVariate expects 3 arguments, received: %1",
            W(STATS_UniformProbability_MP), Form::kFloats, nullptr)
STATS_ENTRY(Uniform, Deviate, 3, 0, "VexaUniformRandomVariate expects 3 arguments, received: %1",
            W(STATS_UniformDeviate_MP), Form::kFloats, nullptr)
ENTRY(Uniform, RandomVariate, 2, AS(Variate2, STATS_UniformRandomVariate_MP))
ENTRY(Uniform, RandomSample, 3, AS(Variate2, STATS_UniformRandomVariate_MP))
