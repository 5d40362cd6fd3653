// MatMul (loop order i, k, j) against the textbook i, j, k order, real and
// complex. The counter GFLOP is a rate, shown as GFLOP/s; a real multiply-add
// counts 2 flops, a complex one 8.
#include <benchmark/benchmark.h>

#include <complex>
#include <random>

#include "core/constructors.h"
#include "core/matrix.h"
#include "core/registry.h"
#include "matrix/operations.h"

namespace {

using Cx = std::complex<double>;

Matrix *RandomMatrix(int n, int cls) {
  std::mt19937 rng(static_cast<unsigned>(n * 7 + cls));
  std::uniform_real_distribution<double> u(-1, 1);
  Matrix *m = MatSetStatus(MatDefClass("", n, n, cls, "MatDef()"), kKept);
  for (long long k = 0; k < MatCount(m) * (cls == kComplex ? 2 : 1); k++) MatReal(m)[k] = u(rng);
  return m;
}

// The baseline: a column of b is walked with stride n in the inner loop.
template <class T>
void NaiveProduct(Matrix *c, Matrix *a, Matrix *b) {
  int n = a->rows;
  T *pc = static_cast<T *>(c->elements);
  const T *pa = static_cast<T *>(a->elements);
  const T *pb = static_cast<T *>(b->elements);
  for (int i = 0; i < n; i++)
    for (int j = 0; j < n; j++) {
      T sum(0);
      for (int k = 0; k < n; k++) {
        T x = pa[static_cast<long long>(i) * n + k], y = pb[static_cast<long long>(k) * n + j];
        if constexpr (std::is_same_v<T, Cx>)
          sum = {sum.real() + x.real() * y.real() - x.imag() * y.imag(),
                 sum.imag() + x.real() * y.imag() + x.imag() * y.real()};
        else
          sum += x * y;
      }
      pc[static_cast<long long>(i) * n + j] = sum;
    }
}

void Report(benchmark::State &state, int n, int cls) {
  double flops = (cls == kComplex ? 8.0 : 2.0) * n * n * n;
  state.counters["GFLOP"] = benchmark::Counter(
      flops * static_cast<double>(state.iterations()) / 1e9, benchmark::Counter::kIsRate);
}

void BM_MatMul(benchmark::State &state, int cls) {
  MatInit();
  int n = static_cast<int>(state.range(0));
  Matrix *a = RandomMatrix(n, cls), *b = RandomMatrix(n, cls);
  for (auto _ : state) {
    Matrix *c = MatMul(a, b);
    benchmark::DoNotOptimize(c->elements);
    MatUndef(c);
  }
  Report(state, n, cls);
  MatUndef(a);
  MatUndef(b);
}

void BM_Naive(benchmark::State &state, int cls) {
  MatInit();
  int n = static_cast<int>(state.range(0));
  Matrix *a = RandomMatrix(n, cls), *b = RandomMatrix(n, cls), *c = RandomMatrix(n, cls);
  for (auto _ : state) {
    if (cls == kComplex)
      NaiveProduct<Cx>(c, a, b);
    else
      NaiveProduct<double>(c, a, b);
    benchmark::DoNotOptimize(c->elements);
    benchmark::ClobberMemory();
  }
  Report(state, n, cls);
  MatUndef(a);
  MatUndef(b);
  MatUndef(c);
}

BENCHMARK_CAPTURE(BM_MatMul, real, kReal)->Arg(256)->Arg(512)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Naive, real, kReal)->Arg(256)->Arg(512)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_MatMul, complex, kComplex)->Arg(256)->Arg(512)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Naive, complex, kComplex)->Arg(256)->Arg(512)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
