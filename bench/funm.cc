// MatSqrt at 100 x 100 (Schur form, recurrence, two products), and the Parlett
// recurrence alone on a random upper triangular matrix: the kernel, whose sum
// reads rows of t and f and of their transposed copies, against the textbook
// loop that walks the columns of t and f with stride n.
#include "linalg/funm.h"

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "core/matrix.h"
#include "core/registry.h"
#include "matrix/funm.h"
#include "scalar/complex_value.h"

namespace {

bool Smith(ComplexValue n, ComplexValue d, ComplexValue *q) {
  if (velk_complex::IsZero(d)) return false;
  *q = velk_complex::Div(n, d);
  return true;
}

struct Triangle {
  std::vector<ComplexValue> t, f;
};

// Upper triangular t with distinct diagonal values, and f holding f(t(i,i)) = t(i,i)^2.
Triangle RandomTriangle(int n) {
  std::mt19937 rng(static_cast<unsigned>(n));
  std::uniform_real_distribution<double> u(-1, 1);
  Triangle m{std::vector<ComplexValue>(static_cast<size_t>(n) * n, ComplexValue{0, 0}), {}};
  for (int i = 0; i < n; i++)
    for (int j = i; j < n; j++) m.t[static_cast<size_t>(i) * n + j] = {u(rng), u(rng)};
  for (int i = 0; i < n; i++) m.t[static_cast<size_t>(i) * n + i] = {i + 1.0, u(rng)};
  m.f = m.t;
  for (int i = 0; i < n; i++) {
    ComplexValue &d = m.f[static_cast<size_t>(i) * n + i];
    d = velk_complex::Mul(d, d);
  }
  return m;
}

// The same recurrence reading f(k, j) and t(k, j) down their columns.
void StridedParlett(int n, const ComplexValue *t, ComplexValue *f) {
  using namespace velk_complex;
  for (int p = 1; p < n; p++)
    for (int i = 0; i + p < n; i++) {
      int j = i + p;
      ComplexValue s = Mul(t[i * n + j], Sub(f[j * n + j], f[i * n + i]));
      for (int k = i + 1; k < j; k++)
        s = Add(s, Sub(Mul(t[i * n + k], f[k * n + j]), Mul(f[i * n + k], t[k * n + j])));
      Smith(s, Sub(t[j * n + j], t[i * n + i]), &f[i * n + j]);
    }
}

void BM_Parlett(benchmark::State &state) {
  int n = static_cast<int>(state.range(0));
  Triangle m = RandomTriangle(n);
  for (auto _ : state) {
    velk_linalg::ParlettRecurrence(n, m.t.data(), m.f.data(), eps, Smith);
    benchmark::DoNotOptimize(m.f.data());
  }
}

void BM_ParlettStrided(benchmark::State &state) {
  int n = static_cast<int>(state.range(0));
  Triangle m = RandomTriangle(n);
  for (auto _ : state) {
    StridedParlett(n, m.t.data(), m.f.data());
    benchmark::DoNotOptimize(m.f.data());
  }
}

void BM_MatSqrt(benchmark::State &state) {
  int n = static_cast<int>(state.range(0));
  std::mt19937 rng(static_cast<unsigned>(n));
  std::uniform_real_distribution<double> u(-1, 1);
  Matrix *a = MatSetStatus(MatDef("", n, n), kKept);
  for (long long k = 0; k < MatCount(a); k++) MatReal(a)[k] = u(rng);
  for (int k = 0; k < n; k++) MatReal(a)[static_cast<long long>(k) * n + k] += n;
  for (auto _ : state) {
    Matrix *r = MatSqrt(a);
    benchmark::DoNotOptimize(r->elements);
    MatUndef(r);
  }
  MatUndef(a);
}

BENCHMARK(BM_Parlett)->Arg(100)->Arg(400)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ParlettStrided)->Arg(100)->Arg(400)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MatSqrt)->Arg(100)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
