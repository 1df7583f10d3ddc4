// Side-by-side timing of our distribution workers and Boost.Math over MPFR on the same
// decimal inputs at Digits 50 and 200. A case registers ours/<case>/<digits> and
// boost/<case>/<digits>; every run is labelled with the value it computed, so that the
// driver (bench/peers/run) can check that the peers agree before it compares their speed.
#ifndef BENCH_PEERS_PEERS_H
#define BENCH_PEERS_PEERS_H

#include <benchmark/benchmark.h>

#include <array>
#include <boost/multiprecision/mpfr.hpp>
#include <cmath>
#include <exception>
#include <ios>
#include <string>
#include <tuple>
#include <type_traits>

#include "host/kernel.h"
#include "stats/distributions/distributions.h"
#include "stats/frame/frame.h"
#include "vexa/float.h"

namespace peers {

constexpr int kDigits[] = {50, 200};

template <unsigned Digits>
using BoostFloat = boost::multiprecision::number<boost::multiprecision::mpfr_float_backend<Digits>>;

// Binary precision for a decimal one: ceil(digits * log2(10)) plus 4 guard bits (171 and 669).
inline long ArbBits(int digits) {
  return static_cast<long>(std::ceil(digits * 3.321928094887362)) + 4;
}

// The kernel handle, with the library initialised once per process as the host does on loading.
inline VexaKernelVector Kernel() {
  static VexaKernelVector kv = [] {
    VexaKernelVector k = vexa::GetKernel();
    STATS_StatsInitialize_MP(k, vexa::Null());
    return k;
  }();
  return kv;
}

template <size_t N>
using Inputs = std::array<const char*, N>;

// Times f(kv, inputs...) at `digits`, the inputs read as decimals at that precision.
template <size_t N, class F>
void RunOurs(benchmark::State& state, int digits, const Inputs<N>& inputs, F f) {
  VexaKernelVector kv = Kernel();
  VexaDigitsScope scope(digits);
  std::array<VexaFloat, N> x;
  for (size_t i = 0; i < N; ++i) x[i] = VexaFloatFromString(inputs[i]);
  auto call = [&] { return std::apply([&](const auto&... a) { return f(kv, a...); }, x); };
  std::string value;
  try {
    value = VexaFloatToString(call());
  } catch (const std::exception& e) {
    state.SkipWithError(e.what());
    return;
  }
  for (auto _ : state) benchmark::DoNotOptimize(call().Handle());
  state.SetLabel(value);
}

// Times f(inputs...) in Boost's MPFR number of `Digits` decimal digits.
template <unsigned Digits, size_t N, class F>
void RunBoost(benchmark::State& state, const Inputs<N>& inputs, F f) {
  using T = BoostFloat<Digits>;
  std::array<T, N> x;
  for (size_t i = 0; i < N; ++i) x[i] = T(inputs[i]);
  auto call = [&] { return T(std::apply(f, x)); };
  std::string value;
  try {
    value = call().str(Digits, std::ios_base::scientific);
  } catch (const std::exception& e) {
    state.SkipWithError(e.what());
    return;
  }
  for (auto _ : state) {
    T r = call();
    benchmark::DoNotOptimize(r);
  }
  state.SetLabel(value);
}

// Registers ours/<name>/<digits> and boost/<name>/<digits> at both precisions. ours takes
// (kv, VexaFloat...), boost is generic over the number type and takes (T...).
template <size_t N, class Ours, class Boost>
void Register(const std::string& name, const Inputs<N>& inputs, Ours ours, Boost boost) {
  for (int digits : kDigits) {
    const std::string suffix = "/" + name + "/" + std::to_string(digits);
    benchmark::RegisterBenchmark(("ours" + suffix).c_str(), [=](benchmark::State& state) {
      RunOurs(state, digits, inputs, ours);
    })->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark(("boost" + suffix).c_str(), [=](benchmark::State& state) {
      if (digits == 50) {
        RunBoost<50>(state, inputs, boost);
      } else {
        RunBoost<200>(state, inputs, boost);
      }
    })->Unit(benchmark::kMicrosecond);
  }
}

// Google Benchmark's main, after the caller has registered its cases.
inline int Main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}

}  // namespace peers

#endif
