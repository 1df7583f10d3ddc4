// The continuous probability and deviate routines at Digits 50, one call each, next to a bare
// Arb erfc at the working precision the normal probability starts with (50 * log2(10) + 34
// bits). The last group shows the cost at the largest shapes (10^5 to 10^6) stays bounded.
#include <arb_hypgeom.h>
#include <benchmark/benchmark.h>

#include <functional>

#include "vexa/nag.h"

namespace {

const Nag_TailProbability kLower = Nag_LowerTail;

void Run(benchmark::State& state, const std::function<VexaFloat(NagError*)>& call) {
  VexaDigitsScope digits(50);
  NagError fail;
  for (auto _ : state) benchmark::DoNotOptimize(call(&fail));
  if (fail.code != 0) state.SkipWithError(fail.message);
}

VexaFloat D(const char* s) {
  return VexaFloatFromString(s);
}

void BM_ArbErfc(benchmark::State& state) {
  arb_t x, y;
  arb_init(x);
  arb_init(y);
  arb_set_d(x, 1.3 / 1.4142135623730951);
  for (auto _ : state) arb_hypgeom_erfc(y, x, 200);
  arb_clear(x);
  arb_clear(y);
}
BENCHMARK(BM_ArbErfc);

void BM_NormalProbability(benchmark::State& s) {
  VexaFloat x = D("1.3");
  Run(s, [&](NagError* f) { return VexaMP_g01eac(kLower, x, f); });
}
void BM_NormalDeviate(benchmark::State& s) {
  VexaFloat p = D("0.975");
  Run(s, [&](NagError* f) { return VexaMP_g01fac(kLower, p, f); });
}
void BM_NormalDeviateTiny(benchmark::State& s) {
  VexaFloat p = D("1e-100");
  Run(s, [&](NagError* f) { return VexaMP_g01fac(kLower, p, f); });
}
void BM_ChiSquareDeviate(benchmark::State& s) {
  VexaFloat p = D("0.95"), df = D("7.5");
  Run(s, [&](NagError* f) { return VexaMP_g01fcc(p, df, f); });
}
void BM_GammaDeviate(benchmark::State& s) {
  VexaFloat p = D("0.95"), a = D("2.5"), b = D("1");
  Run(s, [&](NagError* f) { return VexaMP_g01ffc(p, a, b, 0.0, f); });
}
void BM_StudentTDeviate(benchmark::State& s) {
  VexaFloat p = D("0.975"), df = D("12");
  Run(s, [&](NagError* f) { return VexaMP_g01fbc(kLower, p, df, f); });
}
void BM_FDeviate(benchmark::State& s) {
  VexaFloat p = D("0.95"), d1 = D("4.5"), d2 = D("12");
  Run(s, [&](NagError* f) { return VexaMP_g01fdc(p, d1, d2, f); });
}
void BM_BetaDeviate(benchmark::State& s) {
  VexaFloat p = D("0.3"), a = D("2"), b = D("3.5");
  Run(s, [&](NagError* f) { return VexaMP_g01fec(p, a, b, 0.0, f); });
}
void BM_GammaProbability(benchmark::State& s) {
  VexaFloat x = D("3.1"), a = D("2.5"), b = D("1");
  Run(s, [&](NagError* f) { return VexaMP_g01efc(kLower, x, a, b, f); });
}
void BM_BetaProbability(benchmark::State& s) {
  VexaFloat x = D("0.3"), a = D("2"), b = D("3.5");
  Run(s, [&](NagError* f) {
    VexaFloat p, q, pdf;
    VexaMP_g01eec(x, a, b, 0.0, &p, &q, &pdf, f);
    return p;
  });
}
BENCHMARK(BM_NormalProbability);
BENCHMARK(BM_NormalDeviate);
BENCHMARK(BM_NormalDeviateTiny);
BENCHMARK(BM_ChiSquareDeviate);
BENCHMARK(BM_GammaDeviate);
BENCHMARK(BM_StudentTDeviate);
BENCHMARK(BM_FDeviate);
BENCHMARK(BM_BetaDeviate);
BENCHMARK(BM_GammaProbability);
BENCHMARK(BM_BetaProbability);

// Largest shapes.
void BM_GammaDeviateShape1e6(benchmark::State& s) {
  VexaFloat p = D("0.05"), a = D("1000000"), b = D("1");
  Run(s, [&](NagError* f) { return VexaMP_g01ffc(p, a, b, 0.0, f); });
}
void BM_ChiSquareProbabilityDf2e6(benchmark::State& s) {
  VexaFloat x = D("1990000"), df = D("2000000");
  Run(s, [&](NagError* f) { return VexaMP_g01ecc(kLower, x, df, f); });
}
void BM_BetaDeviateShapes1e5(benchmark::State& s) {
  VexaFloat p = D("0.05"), a = D("100000"), b = D("1000000");
  Run(s, [&](NagError* f) { return VexaMP_g01fec(p, a, b, 0.0, f); });
}
void BM_StudentTDeviateDf1e6(benchmark::State& s) {
  VexaFloat p = D("0.975"), df = D("1000000");
  Run(s, [&](NagError* f) { return VexaMP_g01fbc(kLower, p, df, f); });
}
BENCHMARK(BM_GammaDeviateShape1e6)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ChiSquareProbabilityDf2e6)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BetaDeviateShapes1e5)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StudentTDeviateDf1e6)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
