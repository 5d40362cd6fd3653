// MatEig (values and vectors) and MatEigVal (values only) on seeded random
// real matrices, against LAPACK's dgeev with and without vectors when the
// benchmark is linked with LAPACKE (VELK_HAVE_LAPACKE). Each iteration copies
// the operand on both sides (dgeev overwrites it, the kernels copy it).
// Run single-threaded: OPENBLAS_NUM_THREADS=1.
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "core/matrix.h"
#include "matrix/eigen.h"

#ifdef VELK_HAVE_LAPACKE
#include <lapacke.h>
#endif

namespace {

Matrix *RandomMatrix(int n) {
  std::mt19937 rng(static_cast<unsigned>(n) * 13 + 1);
  std::uniform_real_distribution<double> u(-1, 1);
  Matrix *m = MatSetStatus(MatDef("", n, n), 2);
  for (long long k = 0; k < MatCount(m); k++) MatReal(m)[k] = u(rng);
  return m;
}

void BM_MatEig(benchmark::State &state) {
  MatInit();
  Matrix *a = RandomMatrix(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    Matrix *values, *vectors;
    MatEig(a, &values, &vectors);
    benchmark::DoNotOptimize(vectors->elements);
    MatUndef(values);
    MatUndef(vectors);
  }
  MatUndef(a);
}

void BM_MatEigVal(benchmark::State &state) {
  MatInit();
  Matrix *a = RandomMatrix(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    Matrix *values = MatEigVal(a);
    benchmark::DoNotOptimize(values->elements);
    MatUndef(values);
  }
  MatUndef(a);
}

BENCHMARK(BM_MatEig)->Arg(100)->Arg(300)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MatEigVal)->Arg(100)->Arg(300)->Unit(benchmark::kMillisecond);

#ifdef VELK_HAVE_LAPACKE
// The operand is passed as stored (row by row): dgeev sees the transpose,
// which has the same eigenvalues and costs the same.
void Dgeev(benchmark::State &state, char jobvr) {
  MatInit();
  int n = static_cast<int>(state.range(0));
  Matrix *a = RandomMatrix(n);
  std::vector<double> work(MatCount(a)), wr(n), wi(n), vr(jobvr == 'V' ? MatCount(a) : 1);
  for (auto _ : state) {
    std::copy(MatReal(a), MatReal(a) + MatCount(a), work.begin());
    lapack_int info = LAPACKE_dgeev(LAPACK_COL_MAJOR, 'N', jobvr, n, work.data(), n, wr.data(),
                                    wi.data(), nullptr, 1, vr.data(), jobvr == 'V' ? n : 1);
    if (info != 0) state.SkipWithError("dgeev failed");
    benchmark::DoNotOptimize(wr.data());
  }
  MatUndef(a);
}
void BM_DgeevVectors(benchmark::State &state) { Dgeev(state, 'V'); }
void BM_DgeevValues(benchmark::State &state) { Dgeev(state, 'N'); }
BENCHMARK(BM_DgeevVectors)->Arg(100)->Arg(300)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DgeevValues)->Arg(100)->Arg(300)->Unit(benchmark::kMillisecond);
#endif

}  // namespace

BENCHMARK_MAIN();
