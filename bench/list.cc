// Lists: formatted reading against the C library's fscanf loop over the same
// file, and the heap allocations of building, copying and releasing a long
// list of mixed elements once the pools are warm.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "bench/count_allocations.h"
#include "container/list.h"
#include "container/string.h"
#include "core/matrix.h"
#include "sys/stream_table.h"

namespace {

constexpr int kLines = 100000;

// 100000 lines of "%d %lf %s", written once.
const std::string &LinesFile() {
  static const std::string path = [] {
    std::string p = "/tmp/velk_bench_list_" + std::to_string(getpid());
    FILE *f = fopen(p.c_str(), "w");
    for (int k = 0; k < kLines; k++) fprintf(f, "%d %.6f word%d\n", k, k * 0.25, k % 97);
    fclose(f);
    return p;
  }();
  return path;
}

void BM_ListFileScanf(benchmark::State &state) {
  MatInit();
  for (auto _ : state) {
    int fd = FileOpen(LinesFile().c_str(), "r");
    for (int k = 0; k < kLines; k++) {
      List *l = ListFileScanf(fd, "%d %lf %s");
      benchmark::DoNotOptimize(l->values);
      ListUndef(l);
    }
    FileClose(fd);
  }
  state.counters["lines/s"] = benchmark::Counter(static_cast<double>(kLines) * static_cast<double>(state.iterations()),
                                                 benchmark::Counter::kIsRate);
}

void BM_FscanfLoop(benchmark::State &state) {
  for (auto _ : state) {
    FILE *f = fopen(LinesFile().c_str(), "r");
    int i;
    double d;
    char word[64];
    for (int k = 0; k < kLines; k++) {
      if (fscanf(f, "%d %lf %63s", &i, &d, word) != 3) break;
      benchmark::DoNotOptimize(word);
    }
    fclose(f);
  }
  state.counters["lines/s"] = benchmark::Counter(static_cast<double>(kLines) * static_cast<double>(state.iterations()),
                                                 benchmark::Counter::kIsRate);
}

// Builds a list of n elements (integers and reals alternating; with
// `objects`, every fourth a string and every fourth a 1 x 1 matrix), copies
// it and releases both.
void BuildCopyRelease(int n, bool objects) {
  List *l = ListDef("", n);
  for (int k = 0; k < n; k++) {
    ListValue v;
    if (objects && k % 4 == 2) {
      ListSetObject(l, k + 1, kListString, vkStringFromText("abc"));
    } else if (objects && k % 4 == 3) {
      ListSetObject(l, k + 1, kListMatrix, MatDef("", 1, 1));
    } else if (k % 2 == 0) {
      v.integer = k;
      ListSetElement(l, k + 1, kListInteger, v);
    } else {
      v.real = k;
      ListSetElement(l, k + 1, kListReal, v);
    }
  }
  List *copy = ListDup(l);
  benchmark::DoNotOptimize(copy->values);
  ListUndef(copy);
  ListUndef(l);
}

void BM_BuildCopyRelease(benchmark::State &state) {
  const int n = static_cast<int>(state.range(0));
  const bool objects = state.range(1) != 0;
  MatInit();
  for (int k = 0; k < 2; k++) BuildCopyRelease(n, objects);  // warm-up fills the pools
  long before = allocations;
  for (auto _ : state) BuildCopyRelease(n, objects);
  double per_iteration = static_cast<double>(allocations - before) / static_cast<double>(state.iterations());
  state.counters["allocs/iter"] = per_iteration;
  state.counters["allocs/element"] = per_iteration / n;
}

}  // namespace

BENCHMARK(BM_ListFileScanf)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FscanfLoop)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BuildCopyRelease)->Args({100000, 0})->Args({100000, 1})->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
