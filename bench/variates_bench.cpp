// Samples of 10^6 gamma, beta and Student t variates through their sample entry points at
// Digits 15 and 50, one iteration each, so that the time in ms / 1000 is the time per variate
// in us; the uniform sample alongside gives the cost of the array and of one host uniform.
// Then single draws and the operations they are made of.
#include <benchmark/benchmark.h>

#include "host/kernel.h"
#include "stats/distributions/distributions.h"
#include "stats/frame/frame.h"
#include "stats/random/variates.h"
#include "stats/random/ziggurat.h"

extern "C" {
ALGEB STATS_VexaGammaRandomSample_MP(VexaKernelVector kv, ALGEB args);
ALGEB STATS_VexaBetaRandomSample_MP(VexaKernelVector kv, ALGEB args);
ALGEB STATS_VexaStudentTRandomSample_MP(VexaKernelVector kv, ALGEB args);
ALGEB STATS_VexaUniformRandomSample_MP(VexaKernelVector kv, ALGEB args);
}

namespace {

using Entry = ALGEB (*)(VexaKernelVector, ALGEB);

VexaKernelVector Kernel() {
  static VexaKernelVector kv = [] {
    VexaKernelVector k = vexa::GetKernel();
    STATS_StatsInitialize_MP(k, vexa::Null());
    return k;
  }();
  return kv;
}

void Sample(benchmark::State& state, Entry entry, std::vector<ALGEB> parameters) {
  VexaKernelVector kv = Kernel();
  VexaDigitsScope digits(static_cast<int>(state.range(0)));
  const int n = static_cast<int>(state.range(1));
  parameters.insert(parameters.begin(), vexa::NewInteger(n));
  ALGEB args = vexa::NewExpseq(parameters);
  vexa::SeedRandom(1);
  for (auto _ : state) benchmark::DoNotOptimize(entry(kv, args));
}

ALGEB F(const char* text) {
  return vexa::NewFloat(VexaFloatFromString(text));
}

// The uniform sample: the cost of the array and of one host uniform per element.
void BM_UniformSample(benchmark::State& s) {
  Sample(s, STATS_VexaUniformRandomSample_MP, {F("0"), F("1")});
}
void BM_GammaSample(benchmark::State& s) {
  Sample(s, STATS_VexaGammaRandomSample_MP, {F("2.5"), F("1")});
}
void BM_GammaSmallShapeSample(benchmark::State& s) {
  Sample(s, STATS_VexaGammaRandomSample_MP, {F("0.5"), F("1")});
}
void BM_BetaSample(benchmark::State& s) {
  Sample(s, STATS_VexaBetaRandomSample_MP, {F("2"), F("3")});
}
void BM_StudentTSample(benchmark::State& s) {
  Sample(s, STATS_VexaStudentTRandomSample_MP, {F("5")});
}

template <VexaFloat (*Draw)()>
void Single(benchmark::State& state) {
  Kernel();
  VexaDigitsScope digits(static_cast<int>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(Draw());
}
// The exact mode of the ziggurat, whose candidates are multiples of a 23-bit grid.
VexaFloat GridNormal() {
  STATS_ZigguratNormalGenerator_MP::ResetExact();
  return STATS_ZigguratNormalGenerator_MP::NextExact();
}
VexaFloat Gamma() {
  return STATS_StandardGammaVariate_MP(2.5);
}

VexaFloat GammaSetup() {
  return STATS_StandardGammaGenerator_MP(2.5).Next() * 0;
}
VexaFloat GammaPrepared() {
  static const STATS_StandardGammaGenerator_MP g(2.5);
  return g.Next();
}
VexaFloat Multiply() {
  static VexaFloat a = VexaFloatFromString("1.234567"), b = VexaFloatFromString("2.7182818");
  return a * b;
}
VexaFloat Convert64() {
  static unsigned long long k = 0x9e3779b97f4a7c15ull;
  return VexaFloat(k += 0x9e3779b97f4a7c15ull);
}
VexaFloat Convert49() {
  static unsigned long long k = 0x9e3779b97f4a7c15ull;
  return VexaFloat((k += 0x9e3779b97f4a7c15ull) >> 15);
}
VexaFloat Sqrt() {
  static VexaFloat a = VexaFloatFromString("1.234567");
  return sqrt(a);
}
VexaFloat Log() {
  static VexaFloat a = VexaFloatFromString("1.234567");
  return log(a);
}

void SampleArgs(benchmark::internal::Benchmark* b) {
  b->Args({15, 1000000})->Args({50, 1000000})->Iterations(1)->Unit(benchmark::kMillisecond);
}
BENCHMARK(BM_UniformSample)->Apply(SampleArgs);
BENCHMARK(BM_GammaSample)->Apply(SampleArgs);
BENCHMARK(BM_GammaSmallShapeSample)->Apply(SampleArgs);
BENCHMARK(BM_BetaSample)->Apply(SampleArgs);
BENCHMARK(BM_StudentTSample)->Apply(SampleArgs);
BENCHMARK_TEMPLATE(Single, STATS_ExactNormalVariate_MP)->Arg(15)->Arg(50);
BENCHMARK_TEMPLATE(Single, GridNormal)->Arg(15)->Arg(50);
BENCHMARK_TEMPLATE(Single, STATS_ExactExponentialVariate_MP)->Arg(15)->Arg(50);
BENCHMARK_TEMPLATE(Single, Gamma)->Arg(15)->Arg(50);
BENCHMARK_TEMPLATE(Single, GammaPrepared)->Arg(15)->Arg(50);
BENCHMARK_TEMPLATE(Single, STATS_PositiveUniformVariate_MP)->Arg(15)->Arg(50);
BENCHMARK_TEMPLATE(Single, Multiply)->Arg(15)->Arg(50);
BENCHMARK_TEMPLATE(Single, Convert64)->Arg(15)->Arg(50);
BENCHMARK_TEMPLATE(Single, Convert49)->Arg(15)->Arg(50);
BENCHMARK_TEMPLATE(Single, Sqrt)->Arg(15)->Arg(50);
BENCHMARK_TEMPLATE(Single, Log)->Arg(15)->Arg(50);

}  // namespace

BENCHMARK_MAIN();
