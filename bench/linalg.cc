// The linear algebra kernels against the plain loops and, when they are
// installed, against OpenBLAS and LAPACKE in the same run (one thread). The
// counter GFLOP is a rate shown as GFLOP/s; a real multiply-add counts 2
// flops, a complex one 8.
#include <benchmark/benchmark.h>

#include <cmath>
#include <complex>
#include <random>
#include <vector>

#include "core/constructors.h"
#include "core/matrix.h"
#include "linalg/gemm.h"
#include "matrix/linear.h"
#include "matrix/operations.h"

#ifdef VELK_HAVE_OPENBLAS
#include <cblas.h>
#endif
#if defined(VELK_HAVE_LAPACKE) && defined(VELK_HAVE_OPENBLAS)
#include <lapacke.h>
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
      : a(RandomMatrix(n, n, cls, 1)),
        b(RandomMatrix(n, n, cls, 2)),
        c(RandomMatrix(n, n, cls, 3)) {}
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
BENCHMARK_CAPTURE(BM_MatMul, small_real, kReal)
    ->DenseRange(2, 8, 3)
    ->Arg(16)
    ->Arg(24)
    ->Arg(32)
    ->Arg(48);
BENCHMARK_CAPTURE(BM_PlainLoop, small_real, kReal)
    ->DenseRange(2, 8, 3)
    ->Arg(16)
    ->Arg(24)
    ->Arg(32)
    ->Arg(48);
BENCHMARK_CAPTURE(BM_MatMul, small_complex, kComplex)->DenseRange(2, 8, 3)->Arg(16)->Arg(24);
BENCHMARK_CAPTURE(BM_PlainLoop, small_complex, kComplex)->DenseRange(2, 8, 3)->Arg(16)->Arg(24);

// ---- inverse, solve, determinant (n = 300) -------------------------------------------

// Gauss-Jordan column by column, the row updates in a plain loop: what the
// blocked inverse replaces.
void PlainGaussJordan(int n, double *a) {
  std::vector<int> perm(n);
  for (int i = 0; i < n; i++) perm[i] = i;
  for (int k = 0; k < n; k++) {
    int p = k;
    for (int i = k + 1; i < n; i++)
      if (std::fabs(a[i * n + k]) > std::fabs(a[p * n + k])) p = i;
    if (p != k) {
      std::swap(perm[k], perm[p]);
      for (int j = 0; j < n; j++) std::swap(a[k * n + j], a[p * n + j]);
    }
    const double pivot = a[k * n + k];
    for (int j = 0; j < n; j++) a[k * n + j] /= pivot;
    for (int i = 0; i < n; i++) {
      const double f = a[i * n + k];
      if (i == k || f == 0) continue;
      for (int j = 0; j < n; j++) a[i * n + j] -= f * a[k * n + j];
      a[i * n + k] = -f / pivot;
    }
    a[k * n + k] = 1 / pivot;
  }
  for (int i = 0; i < n; i++)
    while (perm[i] != i) {
      int j = perm[i];
      perm[i] = perm[j];
      perm[j] = j;
      for (int r = 0; r < n; r++) std::swap(a[r * n + i], a[r * n + j]);
    }
}

// An inverse counts n^3 multiply-adds (2 n^3 flops); an LU n^3 / 3.
void BM_MatInv(benchmark::State &state, int cls) {
  MatInit();
  int n = static_cast<int>(state.range(0));
  Matrix *a = RandomMatrix(n, n, cls, 5);
  for (auto _ : state) {
    Matrix *x = MatInv(a, 0);
    benchmark::DoNotOptimize(x->elements);
    MatUndef(x);
  }
  Rate(state, (cls == kComplex ? 4 : 1) * 2.0 * n * n * n);
  MatUndef(a);
}
BENCHMARK_CAPTURE(BM_MatInv, real, kReal)
    ->Arg(300)
    ->Arg(100)
    ->Arg(50)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_MatInv, complex, kComplex)->Arg(300)->Unit(benchmark::kMillisecond);

void BM_PlainGaussJordan(benchmark::State &state) {
  int n = static_cast<int>(state.range(0));
  Matrix *a = RandomMatrix(n, n, kReal, 5);
  std::vector<double> w(MatCount(a));
  for (auto _ : state) {
    std::copy(MatReal(a), MatReal(a) + MatCount(a), w.begin());
    PlainGaussJordan(n, w.data());
    benchmark::DoNotOptimize(w.data());
  }
  Rate(state, 2.0 * n * n * n);
  MatUndef(a);
}
BENCHMARK(BM_PlainGaussJordan)->Arg(300)->Unit(benchmark::kMillisecond);

void BM_MatLUSolve(benchmark::State &state) {
  MatInit();
  int n = static_cast<int>(state.range(0));
  Matrix *a = RandomMatrix(n, n, kReal, 6), *b = RandomMatrix(n, 1, kReal, 7);
  for (auto _ : state) {
    Matrix *x = MatLUSolve(a, b, 0);
    benchmark::DoNotOptimize(x->elements);
    MatUndef(x);
  }
  MatUndef(a);
  MatUndef(b);
}
BENCHMARK(BM_MatLUSolve)->Arg(300)->Unit(benchmark::kMillisecond);

void BM_MatDeterm(benchmark::State &state) {
  MatInit();
  int n = static_cast<int>(state.range(0));
  Matrix *a = RandomMatrix(n, n, kReal, 6);
  for (auto _ : state) benchmark::DoNotOptimize(MatDeterm(a));
  MatUndef(a);
}
BENCHMARK(BM_MatDeterm)->Arg(300)->Unit(benchmark::kMillisecond);

#if defined(VELK_HAVE_LAPACKE) && defined(VELK_HAVE_OPENBLAS)
// getrf + getri (inverse), getrf + getrs (solve), getrf (determinant), on
// copies made inside the timing as MatInv and MatLUSolve make theirs.
void BM_LapackInverse(benchmark::State &state, int cls) {
  openblas_set_num_threads(1);
  int n = static_cast<int>(state.range(0));
  Matrix *a = RandomMatrix(n, n, cls, 5);
  const int width = cls == kComplex ? 2 : 1;
  std::vector<double> w(MatCount(a) * width);
  std::vector<lapack_int> ipiv(n);
  for (auto _ : state) {
    std::copy(MatReal(a), MatReal(a) + MatCount(a) * width, w.begin());
    if (cls == kReal) {
      LAPACKE_dgetrf(LAPACK_ROW_MAJOR, n, n, w.data(), n, ipiv.data());
      LAPACKE_dgetri(LAPACK_ROW_MAJOR, n, w.data(), n, ipiv.data());
    } else {
      auto *z = reinterpret_cast<lapack_complex_double *>(w.data());
      LAPACKE_zgetrf(LAPACK_ROW_MAJOR, n, n, z, n, ipiv.data());
      LAPACKE_zgetri(LAPACK_ROW_MAJOR, n, z, n, ipiv.data());
    }
    benchmark::DoNotOptimize(w.data());
  }
  Rate(state, (cls == kComplex ? 4 : 1) * 2.0 * n * n * n);
  MatUndef(a);
}
BENCHMARK_CAPTURE(BM_LapackInverse, real, kReal)
    ->Arg(300)
    ->Arg(100)
    ->Arg(50)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_LapackInverse, complex, kComplex)->Arg(300)->Unit(benchmark::kMillisecond);

void BM_LapackSolve(benchmark::State &state, bool with_solve) {
  openblas_set_num_threads(1);
  int n = static_cast<int>(state.range(0));
  Matrix *a = RandomMatrix(n, n, kReal, 6), *b = RandomMatrix(n, 1, kReal, 7);
  std::vector<double> w(MatCount(a)), x(n);
  std::vector<lapack_int> ipiv(n);
  for (auto _ : state) {
    std::copy(MatReal(a), MatReal(a) + MatCount(a), w.begin());
    std::copy(MatReal(b), MatReal(b) + n, x.begin());
    LAPACKE_dgetrf(LAPACK_ROW_MAJOR, n, n, w.data(), n, ipiv.data());
    if (with_solve)
      LAPACKE_dgetrs(LAPACK_ROW_MAJOR, 'N', n, 1, w.data(), n, ipiv.data(), x.data(), 1);
    benchmark::DoNotOptimize(x.data());
    benchmark::DoNotOptimize(w.data());
  }
  MatUndef(a);
  MatUndef(b);
}
BENCHMARK_CAPTURE(BM_LapackSolve, getrf_getrs, true)->Arg(300)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_LapackSolve, getrf, false)->Arg(300)->Unit(benchmark::kMillisecond);
#endif

}  // namespace

BENCHMARK_MAIN();
