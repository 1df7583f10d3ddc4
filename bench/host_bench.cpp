// Host kernel costs: argument access, rtable element access and float node allocation.
#include <benchmark/benchmark.h>

#include "host/kernel.h"

namespace {

using namespace vexa;

ALGEB Args(int n) {
  VexaKernelVector kv = GetKernel();
  ALGEB s = NewVexaExpressionSequence(kv, n);
  for (int i = 1; i <= n; ++i) VexaExpseqAssign(kv, s, i, ToVexaFloat(kv, i * 0.5));
  return s;
}

void BM_NumArgs(benchmark::State& state) {
  VexaKernelVector kv = GetKernel();
  ALGEB s = Args(6);
  for (auto _ : state) benchmark::DoNotOptimize(VexaNumArgs(kv, s));
}
BENCHMARK(BM_NumArgs);

void BM_ExpseqSelect(benchmark::State& state) {
  VexaKernelVector kv = GetKernel();
  ALGEB s = Args(6);
  M_INT i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(VexaExpseqSelect(kv, s, 1 + i));
    i = (i + 1) % 6;
  }
}
BENCHMARK(BM_ExpseqSelect);

ALGEB Vector(int dt, int n) {
  VexaKernelVector kv = GetKernel();
  RTableSettings s;
  RTableGetDefaults(kv, &s);
  s.data_type = dt;
  s.element_type = NewName("sfloat");
  M_INT b[2] = {1, n};
  return RTableCreate(kv, &s, nullptr, b);
}

void BM_RTableSelect(benchmark::State& state) {
  VexaKernelVector kv = GetKernel();
  ALGEB rt = Vector(static_cast<int>(state.range(0)), 1000);
  M_INT i = 1;
  for (auto _ : state) {
    benchmark::DoNotOptimize(RTableSelect(kv, rt, &i));
    i = i % 1000 + 1;
  }
}
BENCHMARK(BM_RTableSelect)->Arg(RTABLE_DAG)->Arg(RTABLE_FLOAT64);

void BM_RTableAssign(benchmark::State& state) {
  VexaKernelVector kv = GetKernel();
  ALGEB rt = Vector(RTABLE_FLOAT64, 1000);
  M_INT i = 1;
  RTableData d;
  d.float64 = 1.5;
  for (auto _ : state) {
    RTableAssign(kv, rt, &i, d);
    i = i % 1000 + 1;
  }
}
BENCHMARK(BM_RTableAssign);

void BM_RTableDataBlockLoop(benchmark::State& state) {
  VexaKernelVector kv = GetKernel();
  ALGEB rt = Vector(RTABLE_FLOAT64, 1000);
  for (auto _ : state) {
    double* p = static_cast<double*>(RTableDataBlock(kv, rt));
    double sum = 0;
    for (int i = 0; i < 1000; ++i) sum += p[i];
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * 1000);
}
BENCHMARK(BM_RTableDataBlockLoop);

void BM_FloatNodeFromDouble(benchmark::State& state) {
  VexaKernelVector kv = GetKernel();
  double x = 0.1;
  for (auto _ : state) {
    benchmark::DoNotOptimize(ToVexaFloat(kv, x));
    x += 1e-9;
  }
}
BENCHMARK(BM_FloatNodeFromDouble);

void BM_FloatNodeAdd(benchmark::State& state) {  // one new node per addition
  VexaFloat acc, step = VexaFloatFromString("0.001");
  for (auto _ : state) {
    acc = acc + step;
    benchmark::DoNotOptimize(acc.Handle());
  }
}
BENCHMARK(BM_FloatNodeAdd);

}  // namespace

BENCHMARK_MAIN();
