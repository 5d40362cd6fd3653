// The pool's promise: after warm-up, a steady loop of definitions and
// undefinitions, or of assignments from temporaries, allocates nothing.
// Allocations are counted by interposing the C allocator of this program.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <new>

#include "bench/count_allocations.h"
#include "core/matrix.h"


namespace {

// Runs the loop body, then reports allocations per iteration after warm-up.
template <class Body>
void Measure(benchmark::State &state, Body body) {
  MatInit();
  for (int k = 0; k < 16; k++) body();  // warm-up fills the pools
  long before = allocations;
  for (auto _ : state) body();
  state.counters["allocs/iter"] =
      static_cast<double>(allocations - before) / static_cast<double>(state.iterations());
}

void BM_DefineUndefine(benchmark::State &state) {
  int n = static_cast<int>(state.range(0));
  Measure(state, [n] {
    Matrix *m = MatDef("", n, n);
    benchmark::DoNotOptimize(m->elements);
    MatUndef(m);
  });
}

void BM_LetFromTemporary(benchmark::State &state) {
  int n = static_cast<int>(state.range(0));
  MatInit();
  Matrix *x = MatSetStatus(MatDef("x", n, n), 5);
  Measure(state, [x, n] {
    Matrix *t = MatDef("", n, n);
    MatReal(t)[0] = 1.0;
    MatLet(x, t);
    benchmark::DoNotOptimize(x->elements);
  });
  MatUndef(x);
}

// The baseline: the same storage through plain new and delete.
void BM_NewDelete(benchmark::State &state) {
  size_t n = static_cast<size_t>(state.range(0));
  long before = allocations;
  for (auto _ : state) {
    double *p = new double[n * n];
    benchmark::DoNotOptimize(p);
    delete[] p;
  }
  state.counters["allocs/iter"] =
      static_cast<double>(allocations - before) / static_cast<double>(state.iterations());
}

}  // namespace

BENCHMARK(BM_DefineUndefine)->Arg(3)->Arg(30);
BENCHMARK(BM_LetFromTemporary)->Arg(3)->Arg(30);
BENCHMARK(BM_NewDelete)->Arg(3)->Arg(30);
BENCHMARK_MAIN();
