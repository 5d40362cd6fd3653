// Polynomial products and evaluation of degree 1000 against the plain
// convolution and Horner loops (the object layer must not dominate), roots of
// degree 100 against the eigenvalue kernel on the same companion matrix, and
// the heap allocations per element of adding two 100 x 100 polynomial matrices
// of degree 3, counted by interposing the C allocator as bench/registry.cc
// does.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <complex>
#include <cstdlib>
#include <random>
#include <vector>

#include "bench/count_allocations.h"
#include "core/constructors.h"
#include "core/scope.h"
#include "matrix/eigen.h"
#include "matrix/operations.h"
#include "matrix/roots.h"
#include "scalar/fill.h"
#include "scalar/polynomial.h"


namespace {

std::vector<double> Random(int n, unsigned seed) {
  std::mt19937 gen(seed);
  std::uniform_real_distribution<double> u(-1, 1);
  std::vector<double> v(static_cast<size_t>(n));
  for (double &x : v) x = u(gen);
  v.back() = 1;  // a leading coefficient that simplification keeps
  return v;
}

Polynomial *Kept(const std::vector<double> &c) {
  Polynomial *p = PolyDef("", static_cast<int>(c.size()) - 1, nullptr);
  for (size_t k = 0; k < c.size(); k++) MatReal(p->coef)[k] = c[k];
  return PolySetStatus(p, 2);
}

void BM_PolyMul(benchmark::State &state) {
  int n = static_cast<int>(state.range(0)) + 1;
  PolyInit();
  Polynomial *p = Kept(Random(n, 1)), *q = Kept(Random(n, 2));
  for (auto _ : state) {
    Polynomial *r = PolyMul(p, q);
    benchmark::DoNotOptimize(r->coef->elements);
    PolyUndef(r);
  }
  PolyUndef(p);
  PolyUndef(q);
}

void BM_PlainConvolution(benchmark::State &state) {
  int n = static_cast<int>(state.range(0)) + 1;
  std::vector<double> a = Random(n, 1), b = Random(n, 2);
  for (auto _ : state) {
    std::vector<double> c(static_cast<size_t>(2 * n - 1), 0.0);
    for (int i = 0; i < n; i++)
      for (int j = 0; j < n; j++) c[static_cast<size_t>(i + j)] += a[static_cast<size_t>(i)] * b[static_cast<size_t>(j)];
    benchmark::DoNotOptimize(c.data());
  }
}

void BM_PolyEval(benchmark::State &state) {
  int n = static_cast<int>(state.range(0)) + 1;
  PolyInit();
  Polynomial *p = Kept(Random(n, 3));
  double x = 0.999;
  for (auto _ : state) {
    double v = PolyEval(p, x);
    benchmark::DoNotOptimize(v);
  }
  PolyUndef(p);
}

void BM_PlainHorner(benchmark::State &state) {
  int n = static_cast<int>(state.range(0)) + 1;
  std::vector<double> c = Random(n, 3);
  double x = 0.999;
  for (auto _ : state) {
    double v = c.back();
    for (int k = n - 2; k >= 0; k--) v = v * x + c[static_cast<size_t>(k)];
    benchmark::DoNotOptimize(v);
  }
}

// A + B of two 100 x 100 matrices of degree-3 polynomials; allocations per
// element of the result, first with cold pools, then in steady state.
void BM_PolyMatrixAdd(benchmark::State &state) {
  const int n = 100;
  PolyInit();
  Polynomial *p = Kept({1, 2, 3, 4}), *q = Kept({-1, 0.5, 2, 1});
  const double elements = static_cast<double>(n) * n;
  // The first operand and the first sum made with cold pools (the library
  // runs this function more than once; the first run's figures are kept):
  // what element objects need.
  static double first_fill = -1, first_add = -1;
  long before = allocations;
  Matrix *a = MatSetStatus(P_MatFillDef(n, n, p), 2);
  if (first_fill < 0) first_fill = static_cast<double>(allocations - before) / elements;
  Matrix *b = MatSetStatus(P_MatFillDef(n, n, q), 2);
  before = allocations;
  MatUndef(MatAdd(a, b));
  if (first_add < 0) first_add = static_cast<double>(allocations - before) / elements;
  state.counters["allocs/elem first fill"] = first_fill;
  state.counters["allocs/elem first add"] = first_add;
  for (int k = 0; k < 4; k++) MatUndef(MatAdd(a, b));  // warm-up fills the pools
  before = allocations;
  for (auto _ : state) {
    Matrix *c = MatAdd(a, b);
    benchmark::DoNotOptimize(c->elements);
    MatUndef(c);
  }
  state.counters["allocs/elem"] = static_cast<double>(allocations - before) /
                                  static_cast<double>(state.iterations()) / elements;
  MatUndef(a);
  MatUndef(b);
  PolyUndef(p);
  PolyUndef(q);
}

// k's bits reversed as a fraction: factors taken in this order spread over
// the circle, so no partial product has clustered roots and huge coefficients.
double Spread(int k) {
  double f = 0, bit = 0.5;
  for (; k > 0; k >>= 1, bit /= 2)
    if (k & 1) f += bit;
  return f;
}

// A real polynomial of degree 2 pairs multiplied out from the conjugate pairs
// 0.9 e^(+-i t_k), t_k = (k + 1/2) pi / pairs, kept; the known roots in *known.
Polynomial *FromRoots(int pairs, std::vector<std::complex<double>> *known) {
  std::vector<int> order(static_cast<size_t>(pairs));
  for (int k = 0; k < pairs; k++) order[static_cast<size_t>(k)] = k;
  std::sort(order.begin(), order.end(), [](int a, int b) { return Spread(a) < Spread(b); });
  Polynomial *p = Kept({1});
  for (int k : order) {
    std::complex<double> z = std::polar(0.9, (k + 0.5) * 3.141592653589793 / pairs);
    known->push_back(z);
    known->push_back(std::conj(z));
    Polynomial *f = Kept({std::norm(z), -2 * z.real(), 1});
    Polynomial *next = PolySetStatus(PolyMul(p, f), 2);
    PolyUndef(p);
    PolyUndef(f);
    p = next;
  }
  return p;
}

// PolyRoots of degree 100, with the largest distance of a known root to the
// nearest root found.
void BM_PolyRoots(benchmark::State &state) {
  PolyInit();
  std::vector<std::complex<double>> known;
  Polynomial *p = FromRoots(static_cast<int>(state.range(0)) / 2, &known);
  double worst = 0;
  for (auto _ : state) {
    Matrix *r = PolyRoots(p);
    state.PauseTiming();
    auto *got = static_cast<std::complex<double> *>(r->elements);
    worst = 0;
    for (auto z : known) {
      double nearest = 1e300;
      for (long long k = 0; k < MatCount(r); k++) nearest = std::min(nearest, std::abs(got[k] - z));
      worst = std::max(worst, nearest);
    }
    MatUndef(r);
    state.ResumeTiming();
  }
  state.counters["max root error"] = worst;
  PolyUndef(p);
}

// The eigenvalue kernel alone on the same companion matrix.
void BM_CompanionEigVal(benchmark::State &state) {
  const int n = static_cast<int>(state.range(0));
  PolyInit();
  std::vector<std::complex<double>> known;
  Polynomial *p = FromRoots(n / 2, &known);
  Matrix *a = MatSetStatus(MatZDef(n), 2);
  for (int k = 0; k + 1 < n; k++) MatReal(a)[static_cast<long long>(k) * n + k + 1] = 1;
  for (int k = 0; k < n; k++) MatReal(a)[static_cast<long long>(n - 1) * n + k] = -MatReal(p->coef)[k];
  for (auto _ : state) {
    Matrix *r = MatEigVal(a);
    benchmark::DoNotOptimize(r->elements);
    MatUndef(r);
  }
  MatUndef(a);
  PolyUndef(p);
}

}  // namespace

BENCHMARK(BM_PolyRoots)->Arg(100)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_CompanionEigVal)->Arg(100)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_PolyMul)->Arg(1000);
BENCHMARK(BM_PlainConvolution)->Arg(1000);
BENCHMARK(BM_PolyEval)->Arg(1000);
BENCHMARK(BM_PlainHorner)->Arg(1000);
BENCHMARK(BM_PolyMatrixAdd)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
