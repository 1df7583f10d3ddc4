// Sorting 10^6 sfloat values of 20 random digits at Digits 20 through the host entry point
// (a new sorted array each time, the caller's left as it is), beside std::sort over the same
// values as MPFR floats of 67 bits; and ranking the same array. The data are made once,
// outside the timing. Python's decimal peer: bench/arrange_decimal_peer.py.
#include <benchmark/benchmark.h>
#include <mpfr.h>

#include <algorithm>
#include <string>
#include <vector>

#include "bench/data_support.h"
#include "host/kernel.h"
#include "stats/data/data.h"

namespace {

constexpr int kDigits = 20;
constexpr int kCount = 1000000;
constexpr mpfr_prec_t kBits = 67;  // 20 decimal digits

const std::vector<std::string>& Decimals() {
  static const std::vector<std::string> texts = bench_data::Decimals(kCount, kDigits, 20);
  return texts;
}

void VexaSort(benchmark::State& state) {
  VexaDigitsScope digits(kDigits);
  VexaKernelVector kv = bench_data::Kernel();
  ALGEB args = vexa::NewExpseq({bench_data::SfloatArray(Decimals()), vexa::False(), vexa::False()});
  VexaGcProtect(kv, args);
  for (auto _ : state) benchmark::DoNotOptimize(STATS_VexaSort_MP(kv, args));
}

void VexaRank(benchmark::State& state) {
  VexaDigitsScope digits(kDigits);
  VexaKernelVector kv = bench_data::Kernel();
  ALGEB args =
      vexa::NewExpseq({bench_data::SfloatArray(Decimals()), vexa::False(), vexa::NewInteger(1)});
  VexaGcProtect(kv, args);
  for (auto _ : state) benchmark::DoNotOptimize(STATS_VexaRank_MP(kv, args));
}

// The MPFR peer sorts a copy of the pointers to the values.
void MpfrStdSort(benchmark::State& state) {
  std::vector<__mpfr_struct> values(kCount);
  for (int i = 0; i < kCount; ++i) {
    mpfr_init2(&values[i], kBits);
    mpfr_set_str(&values[i], Decimals()[i].c_str(), 10, MPFR_RNDN);
  }
  std::vector<mpfr_ptr> order(kCount);
  for (auto _ : state) {
    for (int i = 0; i < kCount; ++i) order[i] = &values[i];
    std::sort(order.begin(), order.end(), [](mpfr_ptr a, mpfr_ptr b) { return mpfr_less_p(a, b); });
    benchmark::DoNotOptimize(order.data());
  }
  for (auto& v : values) mpfr_clear(&v);
}

}  // namespace

BENCHMARK(VexaSort)->Unit(benchmark::kMillisecond);
BENCHMARK(MpfrStdSort)->Unit(benchmark::kMillisecond);
BENCHMARK(VexaRank)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
