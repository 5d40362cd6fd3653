// MatFFT against a textbook radix-2 transform (twiddles by the recurrence in
// the butterfly loop, one stage after another over the whole row) and, where
// the library is installed, FFTW with an estimate plan. Shapes: 16 rows of
// 65536 complex values, 64 rows of 4096 reals.
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <utility>
#include <vector>

#include "core/matrix.h"
#include "core/registry.h"
#include "matrix/fourier.h"

#ifdef VELK_HAVE_FFTW
#include <fftw3.h>
#endif

namespace {

Matrix *RandomMatrix(int rows, int cols, int cls) {
  std::mt19937 rng(static_cast<unsigned>(rows * 31 + cols));
  std::uniform_real_distribution<double> u(-1, 1);
  Matrix *m = MatSetStatus(MatDefClass("", rows, cols, cls, "MatDef()"), kKept);
  for (long long k = 0; k < MatCount(m) * (cls == kComplex ? 2 : 1); k++) MatReal(m)[k] = u(rng);
  return m;
}

void Report(benchmark::State &state, int rows, int n) {
  state.counters["rows/s"] =
      benchmark::Counter(rows, benchmark::Counter::kIsIterationInvariantRate);
  state.SetLabel(std::to_string(rows) + " x " + std::to_string(n));
}

void BM_MatFFT(benchmark::State &state) {
  int rows = static_cast<int>(state.range(0)), n = static_cast<int>(state.range(1));
  int cls = static_cast<int>(state.range(2));
  Matrix *a = RandomMatrix(rows, n, cls);
  for (auto _ : state) {
    Matrix *x = MatFFT(a, n, 0);
    benchmark::DoNotOptimize(x->elements);
    MatUndef(x);
  }
  Report(state, rows, n);
  MatUndef(a);
}

// The textbook transform of one row of n complex values in place.
void TextbookRadix2(double *x, int n) {
  for (int i = 0, j = 0; i < n; i++) {
    if (j > i) std::swap(x[2 * i], x[2 * j]), std::swap(x[2 * i + 1], x[2 * j + 1]);
    int m = n >> 1;
    while (m >= 1 && j >= m) j -= m, m >>= 1;
    j += m;
  }
  for (int span = 1; span < n; span *= 2) {
    double theta = -6.283185307179586 / (2 * span);
    double wtemp = std::sin(0.5 * theta), wpr = -2.0 * wtemp * wtemp, wpi = std::sin(theta);
    double wr = 1.0, wi = 0.0;
    for (int k = 0; k < span; k++) {
      for (int i = k; i < n; i += 2 * span) {
        int j = i + span;
        double tr = wr * x[2 * j] - wi * x[2 * j + 1], ti = wr * x[2 * j + 1] + wi * x[2 * j];
        x[2 * j] = x[2 * i] - tr;
        x[2 * j + 1] = x[2 * i + 1] - ti;
        x[2 * i] += tr;
        x[2 * i + 1] += ti;
      }
      wr = (wtemp = wr) * wpr - wi * wpi + wr;
      wi = wi * wpr + wtemp * wpi + wi;
    }
  }
}

void BM_Textbook(benchmark::State &state) {
  int rows = static_cast<int>(state.range(0)), n = static_cast<int>(state.range(1));
  Matrix *a = RandomMatrix(rows, n, kComplex);
  std::vector<double> work(2 * static_cast<size_t>(rows) * n);
  for (auto _ : state) {
    std::copy(MatReal(a), MatReal(a) + work.size(), work.begin());
    for (int r = 0; r < rows; r++) TextbookRadix2(work.data() + 2 * static_cast<size_t>(r) * n, n);
    benchmark::DoNotOptimize(work.data());
  }
  Report(state, rows, n);
  MatUndef(a);
}

#ifdef VELK_HAVE_FFTW
// Out of place, as MatFFT is; the plan made once, outside the timing.
void BM_FFTW(benchmark::State &state) {
  int rows = static_cast<int>(state.range(0)), n = static_cast<int>(state.range(1));
  bool complex = state.range(2) == kComplex;
  Matrix *a = RandomMatrix(rows, n, complex ? kComplex : kReal);
  fftw_complex *out = fftw_alloc_complex(static_cast<size_t>(rows) * n);
  fftw_plan plan;
  if (complex) {
    fftw_complex *in = fftw_alloc_complex(static_cast<size_t>(rows) * n);
    plan = fftw_plan_many_dft(1, &n, rows, in, nullptr, 1, n, out, nullptr, 1, n, FFTW_FORWARD,
                              FFTW_ESTIMATE);
    fftw_free(in);
  } else {
    double *in = fftw_alloc_real(static_cast<size_t>(rows) * n);
    plan = fftw_plan_many_dft_r2c(1, &n, rows, in, nullptr, 1, n, out, nullptr, 1, n / 2 + 1,
                                  FFTW_ESTIMATE);
    fftw_free(in);
  }
  for (auto _ : state) {
    if (complex)
      fftw_execute_dft(plan, static_cast<fftw_complex *>(a->elements), out);
    else
      fftw_execute_dft_r2c(plan, MatReal(a), out);
    benchmark::DoNotOptimize(out);
  }
  fftw_destroy_plan(plan);
  fftw_free(out);
  Report(state, rows, n);
  MatUndef(a);
}
BENCHMARK(BM_FFTW)
    ->Args({16, 65536, kComplex})
    ->Args({64, 4096, kReal})
    ->Unit(benchmark::kMillisecond);
#endif

BENCHMARK(BM_MatFFT)
    ->Args({16, 65536, kComplex})
    ->Args({64, 4096, kReal})
    ->Args({64, 4096, kComplex})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Textbook)->Args({16, 65536})->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
