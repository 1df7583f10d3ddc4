// The median and nine quantiles (0.1, ..., 0.9, method 6) of 10^6 values at Digits 20 through
// the host entry points, the caller's array left as it is; beside std::nth_element over the
// same values as MPFR floats of 67 bits. The data are made once, outside the timing.
#include <benchmark/benchmark.h>
#include <mpfr.h>

#include <algorithm>
#include <string>
#include <vector>

#include "bench/data_support.h"
#include "host/kernel.h"
#include "stats/descriptive/descriptive.h"
#include "stats/frame/frame.h"

namespace {

constexpr int kDigits = 20;
constexpr int kCount = 1000000;
constexpr mpfr_prec_t kBits = 67;  // 20 decimal digits

const std::vector<std::string>& Decimals() {
  static const std::vector<std::string> texts = bench_data::Decimals(kCount, kDigits, 20);
  return texts;
}

ALGEB SampleArray() {
  return bench_data::SfloatArray(Decimals());
}

ALGEB NineProbabilities() {
  std::vector<ALGEB> p;
  for (int i = 1; i <= 9; ++i) p.push_back(vexa::NewFloat(VexaFloat(i) / 10));
  return vexa::NewList(p);
}

void VexaMedian(benchmark::State& state) {
  VexaDigitsScope digits(kDigits);
  VexaKernelVector kv = bench_data::Kernel();
  ALGEB args =
      vexa::NewExpseq({SampleArray(), bench_data::SfloatArray({}), vexa::False(), vexa::False()});
  VexaGcProtect(kv, args);
  for (auto _ : state) benchmark::DoNotOptimize(STATS_VexaMedian_MP(kv, args));
}

void VexaQuantiles(benchmark::State& state) {
  VexaDigitsScope digits(kDigits);
  VexaKernelVector kv = bench_data::Kernel();
  ALGEB args = vexa::NewExpseq({SampleArray(), NineProbabilities(), bench_data::SfloatArray({}),
                                vexa::False(), vexa::NewInteger(6), vexa::False()});
  VexaGcProtect(kv, args);
  for (auto _ : state) benchmark::DoNotOptimize(STATS_VexaQuantile_MP(kv, args));
}

// The MPFR peer: the caller's values stay in place, a copy of the pointers is selected.
struct MpfrSample {
  std::vector<__mpfr_struct> values;
  std::vector<mpfr_ptr> order;
  MpfrSample() : values(kCount), order(kCount) {
    for (int i = 0; i < kCount; ++i) {
      mpfr_init2(&values[i], kBits);
      mpfr_set_str(&values[i], Decimals()[i].c_str(), 10, MPFR_RNDN);
    }
  }
  ~MpfrSample() {
    for (auto& v : values) mpfr_clear(&v);
  }
  void Reset() {
    for (int i = 0; i < kCount; ++i) order[i] = &values[i];
  }
};

bool Less(mpfr_ptr a, mpfr_ptr b) {
  return mpfr_less_p(a, b);
}

void MpfrNthElementMedian(benchmark::State& state) {
  MpfrSample sample;
  mpfr_t median;
  mpfr_init2(median, kBits);
  for (auto _ : state) {
    sample.Reset();
    auto& v = sample.order;
    const auto mid = v.begin() + kCount / 2;
    std::nth_element(v.begin(), mid, v.end(), Less);
    mpfr_ptr lower = *std::max_element(v.begin(), mid, Less);
    mpfr_add(median, lower, *mid, MPFR_RNDN);
    mpfr_div_ui(median, median, 2, MPFR_RNDN);
    benchmark::DoNotOptimize(median);
  }
  mpfr_clear(median);
}

void MpfrNthElementQuantiles(benchmark::State& state) {
  MpfrSample sample;
  mpfr_t q, t;
  mpfr_inits2(kBits, q, t, static_cast<mpfr_ptr>(nullptr));
  for (auto _ : state) {
    sample.Reset();
    auto& v = sample.order;
    auto from = v.begin();
    for (int i = 1; i <= 9; ++i) {
      // position 1 + (n - 1) i / 10, 1-based; interpolate toward the next order statistic
      const long twice = 10 + static_cast<long>(kCount - 1) * i;
      const auto at = v.begin() + (twice / 10 - 1);
      std::nth_element(from, at, v.end(), Less);
      mpfr_ptr next = *std::min_element(at + 1, v.end(), Less);
      mpfr_sub(t, next, *at, MPFR_RNDN);
      mpfr_mul_ui(t, t, static_cast<unsigned long>(twice % 10), MPFR_RNDN);
      mpfr_div_ui(t, t, 10, MPFR_RNDN);
      mpfr_add(q, *at, t, MPFR_RNDN);
      benchmark::DoNotOptimize(q);
      from = at;
    }
  }
  mpfr_clears(q, t, static_cast<mpfr_ptr>(nullptr));
}

}  // namespace

BENCHMARK(VexaMedian)->Unit(benchmark::kMillisecond);
BENCHMARK(MpfrNthElementMedian)->Unit(benchmark::kMillisecond);
BENCHMARK(VexaQuantiles)->Unit(benchmark::kMillisecond);
BENCHMARK(MpfrNthElementQuantiles)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
