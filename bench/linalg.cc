// The linear algebra kernels against the plain loops and, when they are
// installed, against OpenBLAS and LAPACKE in the same run (one thread). The
// counter GFLOP is a rate shown as GFLOP/s; a real multiply-add counts 2
// flops, a complex one 8.
#include <benchmark/benchmark.h>

#include <complex>
#include <random>
#include <vector>

#include "core/constructors.h"
#include "core/matrix.h"
#include "linalg/gemm.h"
#include "matrix/operations.h"

#ifdef VELK_HAVE_OPENBLAS
#include <cblas.h>
#endif

namespace {

using velk_linalg::Complexd;
using velk_linalg::GemmMode;

Matrix *RandomMatrix(int rows, int cols, int cls, unsigned seed) {
  std::mt19937 rng(seed);
  std::uniform_real_distribution<double> u(-1, 1);
  Matrix *m = MatSetStatus(MatDefClass("", rows, cols, cls, "MatDef()"), 2);
  for (long long k = 0; k < MatCount(m) * (cls == kComplex ? 2 : 1); k++) MatReal(m)[k] = u(rng);
  return m;
}

void Rate(benchmark::State &state, double flops) {
  state.counters["GFLOP"] = benchmark::Counter(
      flops * static_cast<double>(state.iterations()) / 1e9, benchmark::Counter::kIsRate);
}

double ProductFlops(int n, int cls) { return (cls == kComplex ? 8.0 : 2.0) * n * n * n; }

// Operands a, b and a result c of n x n, kept for the whole benchmark.
struct Operands {
  Matrix *a, *b, *c;
  Operands(int n, int cls)
      : a(RandomMatrix(n, n, cls, 1)), b(RandomMatrix(n, n, cls, 2)), c(RandomMatrix(n, n, cls, 3)) {}
  ~Operands() {
    MatUndef(a);
    MatUndef(b);
    MatUndef(c);
  }
};

// ---- the product -------------------------------------------------------------------

void BM_MatMul(benchmark::State &state, int cls) {
  MatInit();
  int n = static_cast<int>(state.range(0));
  Operands o(n, cls);
  for (auto _ : state) {
    Matrix *c = MatMul(o.a, o.b);
    benchmark::DoNotOptimize(c->elements);
    MatUndef(c);
  }
  Rate(state, ProductFlops(n, cls));
}

// The loop MatMul ran before the blocked product (order i, k, j).
void BM_PlainLoop(benchmark::State &state, int cls) {
  MatInit();
  int n = static_cast<int>(state.range(0));
  Operands o(n, cls);
  for (auto _ : state) {
    if (cls == kReal)
      velk_linalg::GemmPlain(GemmMode::kSet, n, n, n, MatReal(o.a), n, MatReal(o.b), n,
                             MatReal(o.c), n);
    else
      velk_linalg::GemmPlain(GemmMode::kSet, n, n, n, static_cast<Complexd *>(o.a->elements), n,
                             static_cast<Complexd *>(o.b->elements), n,
                             static_cast<Complexd *>(o.c->elements), n);
    benchmark::DoNotOptimize(o.c->elements);
    benchmark::ClobberMemory();
  }
  Rate(state, ProductFlops(n, cls));
}

#ifdef VELK_HAVE_OPENBLAS
void BM_OpenBlas(benchmark::State &state, int cls) {
  openblas_set_num_threads(1);
  MatInit();
  int n = static_cast<int>(state.range(0));
  Operands o(n, cls);
  const double one[2] = {1, 0}, zero[2] = {0, 0};
  for (auto _ : state) {
    if (cls == kReal)
      cblas_dgemm(CblasRowMajor, CblasNoTrans, CblasNoTrans, n, n, n, 1.0, MatReal(o.a), n,
                  MatReal(o.b), n, 0.0, MatReal(o.c), n);
    else
      cblas_zgemm(CblasRowMajor, CblasNoTrans, CblasNoTrans, n, n, n, one, o.a->elements, n,
                  o.b->elements, n, zero, o.c->elements, n);
    benchmark::DoNotOptimize(o.c->elements);
    benchmark::ClobberMemory();
  }
  Rate(state, ProductFlops(n, cls));
}
BENCHMARK_CAPTURE(BM_OpenBlas, real, kReal)->Arg(512)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_OpenBlas, complex, kComplex)->Arg(512)->Unit(benchmark::kMillisecond);
#endif

BENCHMARK_CAPTURE(BM_MatMul, real, kReal)->Arg(512)->Arg(256)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_PlainLoop, real, kReal)->Arg(512)->Arg(256)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_MatMul, complex, kComplex)->Arg(512)->Arg(256)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_PlainLoop, complex, kComplex)
    ->Arg(512)
    ->Arg(256)
    ->Unit(benchmark::kMillisecond);
// Small products: the size where the blocked product takes over.
BENCHMARK_CAPTURE(BM_MatMul, small_real, kReal)->DenseRange(2, 8, 3)->Arg(16)->Arg(24)->Arg(32)->Arg(48);
BENCHMARK_CAPTURE(BM_PlainLoop, small_real, kReal)->DenseRange(2, 8, 3)->Arg(16)->Arg(24)->Arg(32)->Arg(48);
BENCHMARK_CAPTURE(BM_MatMul, small_complex, kComplex)->DenseRange(2, 8, 3)->Arg(16)->Arg(24);
BENCHMARK_CAPTURE(BM_PlainLoop, small_complex, kComplex)->DenseRange(2, 8, 3)->Arg(16)->Arg(24);

}  // namespace

BENCHMARK_MAIN();
