// Kernel density estimates at Digits 20 through the host entry points: the binned estimate of
// 10^5 values on a grid of 1024 points (gaussian kernel, Silverman's bandwidth, and a given
// one), its pieces (two real transforms of 2048 points), and the direct sum at 16 points.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "bench/data_support.h"
#include "host/kernel.h"
#include "stats/random/kernel_density.h"
#include "vexa/nag.h"

namespace {

constexpr int kDigits = 20;
constexpr int kCount = 100000;

ALGEB Sample() {
  static ALGEB a = bench_data::SfloatArray(bench_data::Decimals(kCount, kDigits, 21));
  return a;
}

void Binned(benchmark::State& state, const char* bandwidth) {
  VexaDigitsScope digits(kDigits);
  VexaKernelVector kv = bench_data::Kernel();
  ALGEB args = vexa::NewExpseq(
      {Sample(), bench_data::SfloatArray({}), vexa::False(), vexa::NewInteger(1),
       vexa::NewFloat(VexaFloatFromString(bandwidth)), vexa::NewInteger(-1), vexa::NewInteger(2),
       vexa::NewInteger(1024)});
  VexaGcProtect(kv, args);
  for (auto _ : state) benchmark::DoNotOptimize(STATS_VexaKernelDensityBinned_MP(kv, args));
}

void BinnedSilverman(benchmark::State& state) {
  Binned(state, "0");
}

void BinnedGivenBandwidth(benchmark::State& state) {
  Binned(state, "0.02");
}

void RealTransform2048(benchmark::State& state) {
  VexaDigitsScope digits(kDigits);
  const std::vector<std::string> texts = bench_data::Decimals(2048, kDigits, 3);
  std::vector<VexaFloat> x, work(2048);
  for (const auto& t : texts) x.push_back(VexaFloatFromString(t));
  int n = 2048, ifail = 0;
  for (auto _ : state) {
    std::vector<VexaFloat> y = x;
    VexaMP_c06faf_(y.data(), &n, work.data(), &ifail);
    benchmark::DoNotOptimize(y.data());
  }
}

void DirectAt16Points(benchmark::State& state) {
  VexaDigitsScope digits(kDigits);
  VexaKernelVector kv = bench_data::Kernel();
  std::vector<ALGEB> points;
  for (int j = 0; j < 16; ++j) points.push_back(vexa::NewFloat(VexaFloat(j) / 15));
  ALGEB args = vexa::NewExpseq({Sample(), bench_data::SfloatArray({}), vexa::False(),
                                vexa::NewInteger(1), vexa::NewFloat(VexaFloatFromString("0.02")),
                                vexa::NewList(points)});
  VexaGcProtect(kv, args);
  for (auto _ : state) benchmark::DoNotOptimize(STATS_VexaKernelDensity_MP(kv, args));
}

}  // namespace

BENCHMARK(BinnedSilverman)->Unit(benchmark::kMillisecond);
BENCHMARK(BinnedGivenBandwidth)->Unit(benchmark::kMillisecond);
BENCHMARK(RealTransform2048)->Unit(benchmark::kMillisecond);
BENCHMARK(DirectAt16Points)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK_MAIN();
