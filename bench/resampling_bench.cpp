// Resampling through the host entry points: a bootstrap of the mean of 1000 values with 10^4
// replicates at Digits 15 (the statistic is the library's own mean entry, called as a host
// procedure), and an alias-urn sample of 10^6 indices over 1000 weights. Data are made once,
// outside the timing.
#include <benchmark/benchmark.h>

#include "bench/data_support.h"
#include "host/kernel.h"
#include "stats/descriptive/descriptive.h"
#include "stats/random/resampling.h"

namespace {

using bench_data::Kernel;
using bench_data::SfloatArray;

void BootstrapMean(benchmark::State& state) {
  VexaDigitsScope scope(15);
  VexaKernelVector kv = Kernel();
  ALGEB none = SfloatArray({});
  ALGEB mean = vexa::NewNativeProcedure("mean", [none](vexa::Kernel* k, ALGEB args) {
    return STATS_VexaMean_MP(
        k, vexa::NewExpseq({vexa::Op(args, 1), none, vexa::False(), vexa::NewInteger(0)}));
  });
  ALGEB args = vexa::NewExpseq({SfloatArray(bench_data::Decimals(1000, 15, 1)), none, mean,
                                vexa::NewInteger(1000), vexa::NewInteger(state.range(0))});
  VexaGcProtect(kv, args);
  vexa::SeedRandom(1);
  for (auto _ : state) benchmark::DoNotOptimize(STATS_VexaBootstrapStatistic_MP(kv, args));
}

void AliasUrnSample(benchmark::State& state) {
  VexaKernelVector kv = Kernel();
  ALGEB args = vexa::NewExpseq(
      {vexa::NewInteger(state.range(0)), SfloatArray(bench_data::Decimals(1000, 10, 2))});
  VexaGcProtect(kv, args);
  vexa::SeedRandom(1);
  for (auto _ : state) benchmark::DoNotOptimize(STATS_VexaAliasUrnSample_MP(kv, args));
}

}  // namespace

BENCHMARK(BootstrapMean)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(AliasUrnSample)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
