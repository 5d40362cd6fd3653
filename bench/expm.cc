// MatExp at 300 x 300 (uniform entries in [0, 1), Frobenius norm about 173:
// eight squarings) beside one MatMul of the same size, whose cost it is made
// of: the Taylor terms and the squarings are products.
#include "matrix/expm.h"

#include <benchmark/benchmark.h>

#include <random>

#include "core/matrix.h"
#include "core/registry.h"
#include "matrix/operations.h"

namespace {

Matrix *RandomMatrix(int n, int cls) {
  std::mt19937 rng(static_cast<unsigned>(n));
  std::uniform_real_distribution<double> u(0, 1);
  Matrix *m = MatSetStatus(MatDefClass("", n, n, cls, "MatDef()"), kKept);
  for (long long k = 0; k < MatCount(m) * (cls == kComplex ? 2 : 1); k++) MatReal(m)[k] = u(rng);
  return m;
}

void BM_MatExp(benchmark::State &state) {
  Matrix *a = RandomMatrix(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  for (auto _ : state) {
    Matrix *e = MatExp(a);
    benchmark::DoNotOptimize(e->elements);
    MatUndef(e);
  }
  MatUndef(a);
}

void BM_MatMul(benchmark::State &state) {
  Matrix *a = RandomMatrix(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  for (auto _ : state) {
    Matrix *p = MatMul(a, a);
    benchmark::DoNotOptimize(p->elements);
    MatUndef(p);
  }
  MatUndef(a);
}

BENCHMARK(BM_MatExp)->Args({300, kReal})->Args({100, kComplex})->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MatMul)->Args({300, kReal})->Args({100, kComplex})->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
