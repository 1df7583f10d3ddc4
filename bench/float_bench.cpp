// VexaFloat + * / exp log at Digits 10, 50 and 1000, each next to MPFR at the equivalent
// binary precision: ceil(Digits * log2(10)) plus 3 guard bits, at least 64, which gives
// 64, 170 and 3325 bits. Operands carry full-length mantissas. A last benchmark makes 10
// million temporaries in a loop and reports the collector's heap size before and after.
#include <benchmark/benchmark.h>
#include <gc.h>
#include <mpfr.h>

#include <algorithm>
#include <cmath>

#include "vexa/float.h"

namespace {

int MpfrBits(int digits) {
  return std::max(64, static_cast<int>(std::ceil(digits * 3.321928094887362)) + 3);
}

// Two operands with `digits` significant digits: 1/3 and sqrt(2) scaled.
struct Operands {
  VexaFloat a, b;
  explicit Operands(int digits) {
    VexaDigitsScope scope(digits);
    a = VexaFloat(1) / VexaFloat(3) + VexaFloat(1);  // 1.333...
    b = sqrt(VexaFloat(2));                          // 1.414...
  }
};

struct MpfrOperands {
  mpfr_t a, b, r;
  explicit MpfrOperands(int digits) {
    mpfr_prec_t bits = MpfrBits(digits);
    mpfr_inits2(bits, a, b, r, static_cast<mpfr_ptr>(nullptr));
    mpfr_set_ui(a, 4, MPFR_RNDN);
    mpfr_div_ui(a, a, 3, MPFR_RNDN);
    mpfr_sqrt_ui(b, 2, MPFR_RNDN);
  }
  ~MpfrOperands() { mpfr_clears(a, b, r, static_cast<mpfr_ptr>(nullptr)); }
};

template <class Op>
void RunVexa(benchmark::State& state, Op op) {
  int digits = static_cast<int>(state.range(0));
  Operands x(digits);
  VexaDigitsScope scope(digits);
  for (auto _ : state) benchmark::DoNotOptimize(op(x.a, x.b).Handle());
  state.counters["bits"] = MpfrBits(digits);
}

template <class Op>
void RunMpfr(benchmark::State& state, Op op) {
  int digits = static_cast<int>(state.range(0));
  MpfrOperands x(digits);
  for (auto _ : state) {
    op(x.r, x.a, x.b);
    benchmark::ClobberMemory();
  }
  state.counters["bits"] = MpfrBits(digits);
}

void VexaAdd(benchmark::State& s) {
  RunVexa(s, [](const VexaFloat& a, const VexaFloat& b) { return a + b; });
}
void VexaMul(benchmark::State& s) {
  RunVexa(s, [](const VexaFloat& a, const VexaFloat& b) { return a * b; });
}
void VexaDiv(benchmark::State& s) {
  RunVexa(s, [](const VexaFloat& a, const VexaFloat& b) { return a / b; });
}
void VexaExp(benchmark::State& s) {
  RunVexa(s, [](const VexaFloat& a, const VexaFloat&) { return exp(a); });
}
void VexaLog(benchmark::State& s) {
  RunVexa(s, [](const VexaFloat& a, const VexaFloat&) { return log(a); });
}

void MpfrAdd(benchmark::State& s) {
  RunMpfr(s, [](mpfr_t r, mpfr_t a, mpfr_t b) { mpfr_add(r, a, b, MPFR_RNDN); });
}
void MpfrMul(benchmark::State& s) {
  RunMpfr(s, [](mpfr_t r, mpfr_t a, mpfr_t b) { mpfr_mul(r, a, b, MPFR_RNDN); });
}
void MpfrDiv(benchmark::State& s) {
  RunMpfr(s, [](mpfr_t r, mpfr_t a, mpfr_t b) { mpfr_div(r, a, b, MPFR_RNDN); });
}
void MpfrExp(benchmark::State& s) {
  RunMpfr(s, [](mpfr_t r, mpfr_t a, mpfr_t) { mpfr_exp(r, a, MPFR_RNDN); });
}
void MpfrLog(benchmark::State& s) {
  RunMpfr(s, [](mpfr_t r, mpfr_t a, mpfr_t) { mpfr_log(r, a, MPFR_RNDN); });
}

#define VEXA_BENCH_PAIR(OP)                                            \
  BENCHMARK(Vexa##OP)->ArgName("digits")->Arg(10)->Arg(50)->Arg(1000); \
  BENCHMARK(Mpfr##OP)->ArgName("digits")->Arg(10)->Arg(50)->Arg(1000);
VEXA_BENCH_PAIR(Add)
VEXA_BENCH_PAIR(Mul)
VEXA_BENCH_PAIR(Div)
VEXA_BENCH_PAIR(Exp)
VEXA_BENCH_PAIR(Log)
#undef VEXA_BENCH_PAIR

// 10 million temporaries, each a new collected node, must not grow the heap without bound.
void Temporaries(benchmark::State& state) {
  VexaDigitsScope scope(10);
  Operands x(10);
  VexaFloat step = VexaFloatFromString("1.000000001");
  GC_gcollect();
  double before = static_cast<double>(GC_get_heap_size());
  double after = before;
  for (auto _ : state) {
    VexaFloat t = x.a;
    for (int i = 0; i < 10000000; ++i) t = t * step;
    benchmark::DoNotOptimize(t.Handle());
    after = static_cast<double>(GC_get_heap_size());
  }
  state.counters["heap_before_MB"] = before / (1 << 20);
  state.counters["heap_after_MB"] = after / (1 << 20);
  state.counters["temporaries"] = 1e7;
}
BENCHMARK(Temporaries)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
