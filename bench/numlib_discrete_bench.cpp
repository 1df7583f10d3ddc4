// The discrete probabilities and the five-point summary at Digits 50: binomial, Poisson and
// hypergeometric calls (all three outputs) for small, central and far-tail arguments and for
// large n and lambda; the summary of 1000 values.
#include <benchmark/benchmark.h>

#include <vector>

#include "vexa/nag.h"

namespace {

constexpr int kDigits = 50;

void Binomial(benchmark::State& state, long n, const char* p, long k) {
  VexaDigitsScope digits(kDigits);
  VexaFloat pf = VexaFloatFromString(p), le, gt, eq;
  NagError fail;
  for (auto _ : state) {
    VexaMP_g01bjc(n, pf, k, &le, &gt, &eq, &fail);
    benchmark::DoNotOptimize(le);
  }
  if (fail.code != NE_NOERROR) state.SkipWithError(fail.message);
}

void Poisson(benchmark::State& state, const char* lambda, long k) {
  VexaDigitsScope digits(kDigits);
  VexaFloat lf = VexaFloatFromString(lambda), le, gt, eq;
  NagError fail;
  for (auto _ : state) {
    VexaMP_g01bkc(lf, k, &le, &gt, &eq, &fail);
    benchmark::DoNotOptimize(le);
  }
  if (fail.code != NE_NOERROR) state.SkipWithError(fail.message);
}

void Hypergeometric(benchmark::State& state, long n, long l, long m, long k) {
  VexaDigitsScope digits(kDigits);
  VexaFloat le, gt, eq;
  NagError fail;
  for (auto _ : state) {
    VexaMP_g01blc(n, l, m, k, &le, &gt, &eq, &fail);
    benchmark::DoNotOptimize(le);
  }
  if (fail.code != NE_NOERROR) state.SkipWithError(fail.message);
}

void Summary(benchmark::State& state) {
  VexaDigitsScope digits(kDigits);
  std::vector<VexaFloat> x;
  for (int i = 0; i < 1000; ++i) x.push_back(VexaFloat((i * 7919) % 1000) / VexaFloat(7));
  VexaFloat res[5];
  NagError fail;
  for (auto _ : state) {
    VexaMP_g01alc(static_cast<long>(x.size()), x.data(), res, &fail);
    benchmark::DoNotOptimize(res[2]);
  }
}

BENCHMARK_CAPTURE(Binomial, n20_central, 20, "0.3", 6);
BENCHMARK_CAPTURE(Binomial, n1000_far_tail, 1000, "0.5", 100);
BENCHMARK_CAPTURE(Binomial, n1e6_central, 1000000, "0.3", 300000);
BENCHMARK_CAPTURE(Binomial, n1e9_central, 1000000000, "0.5", 500000000);
BENCHMARK_CAPTURE(Poisson, lambda2_5, "2.5", 3);
BENCHMARK_CAPTURE(Poisson, lambda1000_far_tail, "1000", 900);
BENCHMARK_CAPTURE(Poisson, lambda1e6_central, "1000000", 1000000);
BENCHMARK_CAPTURE(Hypergeometric, n20, 20, 7, 5, 2);
BENCHMARK_CAPTURE(Hypergeometric, n1000_central, 1000, 500, 500, 250);
BENCHMARK_CAPTURE(Hypergeometric, n1e9_central, 1000000000, 500000000, 500000000, 250000000);
BENCHMARK(Summary);

}  // namespace

BENCHMARK_MAIN();
