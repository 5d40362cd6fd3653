// Polynomial products and evaluation of degree 1000 against the plain
// convolution and Horner loops (the object layer must not dominate), and the
// heap allocations per element of adding two 100 x 100 polynomial matrices
// of degree 3, counted by interposing the C allocator as bench/registry.cc
// does.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <random>
#include <vector>

#include "bench/count_allocations.h"
#include "core/scope.h"
#include "matrix/operations.h"
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

}  // namespace

BENCHMARK(BM_PolyMul)->Arg(1000);
BENCHMARK(BM_PlainConvolution)->Arg(1000);
BENCHMARK(BM_PolyEval)->Arg(1000);
BENCHMARK(BM_PlainHorner)->Arg(1000);
BENCHMARK(BM_PolyMatrixAdd)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
