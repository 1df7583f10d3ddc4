// The arithmetic mean and the second moment about 1/2 of 10^6 values at Digits 20 and 50
// through the host entry points, beside the same sums as an MPFR loop at the matching binary
// precision. The data are made once, outside the timing; bench/mean_decimal_peer.py times
// Python's decimal on the same sums.
#include <benchmark/benchmark.h>
#include <mpfr.h>

#include <string>
#include <vector>

#include "bench/data_support.h"
#include "host/kernel.h"
#include "stats/descriptive/descriptive.h"
#include "stats/frame/frame.h"

namespace {

constexpr int kCount = 1000000;

mpfr_prec_t Bits(int digits) {
  return static_cast<mpfr_prec_t>(digits * 3.3219280948873623) + 1;
}

std::vector<std::string> Decimals(int digits) {
  return bench_data::Decimals(kCount, digits, digits);
}

using bench_data::Kernel;
using bench_data::SfloatArray;

void VexaMean(benchmark::State& state) {
  const int digits = static_cast<int>(state.range(0));
  VexaDigitsScope scope(digits);
  VexaKernelVector kv = Kernel();
  ALGEB args = vexa::NewExpseq(
      {SfloatArray(Decimals(digits)), SfloatArray({}), vexa::False(), vexa::NewInteger(0)});
  VexaGcProtect(kv, args);
  for (auto _ : state) benchmark::DoNotOptimize(STATS_VexaMean_MP(kv, args));
}

void VexaMoment(benchmark::State& state) {
  const int digits = static_cast<int>(state.range(0));
  VexaDigitsScope scope(digits);
  VexaKernelVector kv = Kernel();
  ALGEB args = vexa::NewExpseq({SfloatArray(Decimals(digits)), vexa::NewInteger(2),
                                vexa::NewFloat(VexaFloat(0.5)), SfloatArray({}), vexa::False()});
  VexaGcProtect(kv, args);
  for (auto _ : state) benchmark::DoNotOptimize(STATS_VexaMoment_MP(kv, args));
}

// The arithmetic mean's sum as the plain float loop, a new float node per partial sum: the
// cost the entry point had before its sums ran on limbs.
void VexaPlainLoopMean(benchmark::State& state) {
  const int digits = static_cast<int>(state.range(0));
  VexaDigitsScope scope(digits);
  ALGEB data = SfloatArray(Decimals(digits));
  const auto* x = static_cast<const VexaFloat*>(RTableDataBlock(Kernel(), data));
  for (auto _ : state) {
    VexaFloat sum;
    for (int i = 0; i < kCount; ++i) sum += x[i];
    benchmark::DoNotOptimize(sum / VexaFloat(static_cast<double>(kCount)));
  }
}

struct MpfrValues {
  std::vector<__mpfr_struct> v;
  explicit MpfrValues(int digits) : v(kCount) {
    const std::vector<std::string> texts = Decimals(digits);
    for (int i = 0; i < kCount; ++i) {
      mpfr_init2(&v[i], Bits(digits));
      mpfr_set_str(&v[i], texts[i].c_str(), 10, MPFR_RNDN);
    }
  }
  ~MpfrValues() {
    for (auto& x : v) mpfr_clear(&x);
  }
};

void MpfrMean(benchmark::State& state) {
  const int digits = static_cast<int>(state.range(0));
  MpfrValues values(digits);
  mpfr_t sum;
  mpfr_init2(sum, Bits(digits));
  for (auto _ : state) {
    mpfr_set_zero(sum, 1);
    for (auto& x : values.v) mpfr_add(sum, sum, &x, MPFR_RNDN);
    mpfr_div_ui(sum, sum, kCount, MPFR_RNDN);
    benchmark::DoNotOptimize(sum);
  }
  mpfr_clear(sum);
}

void MpfrMoment(benchmark::State& state) {
  const int digits = static_cast<int>(state.range(0));
  MpfrValues values(digits);
  mpfr_t sum, d;
  mpfr_init2(sum, Bits(digits));
  mpfr_init2(d, Bits(digits));
  for (auto _ : state) {
    mpfr_set_zero(sum, 1);
    for (auto& x : values.v) {
      mpfr_sub_d(d, &x, 0.5, MPFR_RNDN);
      mpfr_pow_ui(d, d, 2, MPFR_RNDN);
      mpfr_add(sum, sum, d, MPFR_RNDN);
    }
    mpfr_div_ui(sum, sum, kCount, MPFR_RNDN);
    benchmark::DoNotOptimize(sum);
  }
  mpfr_clear(sum);
  mpfr_clear(d);
}

}  // namespace

BENCHMARK(VexaMean)->Arg(20)->Arg(50)->Unit(benchmark::kMillisecond);
BENCHMARK(VexaPlainLoopMean)->Arg(20)->Arg(50)->Unit(benchmark::kMillisecond);
BENCHMARK(MpfrMean)->Arg(20)->Arg(50)->Unit(benchmark::kMillisecond);
BENCHMARK(VexaMoment)->Arg(20)->Arg(50)->Unit(benchmark::kMillisecond);
BENCHMARK(MpfrMoment)->Arg(20)->Arg(50)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
