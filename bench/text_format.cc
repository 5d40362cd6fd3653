// Reading and writing matrix text files: the library's readers and writers
// against the plain stream-function versions doing the same work, on a
// 1000 x 1000 real and a 500 x 500 complex matrix.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "core/matrix.h"
#include "core/registry.h"
#include "io/text_format.h"
#include "tests/io/reference_reader.h"

namespace {

struct Case {
  Matrix *m;
  std::string path;  // the matrix as MatFileWrite writes it
  long long bytes;
};

std::string TempPath(const char *name) {
  const char *dir = getenv("TMPDIR");
  return std::string(dir != nullptr ? dir : "/tmp") + "/velk-bench-" + std::to_string(getpid()) +
         "-" + name;
}

// Case 0: 1000 x 1000 real; case 1: 500 x 500 complex.
Case &GetCase(int which) {
  static Case cases[2];
  Case &c = cases[which];
  if (c.m != nullptr) return c;
  std::mt19937_64 rng(42);
  std::uniform_real_distribution<double> value(-1e6, 1e6);
  c.m = which == 0 ? MatDef("", 1000, 1000) : C_MatDef("", 500, 500);
  MatSetStatus(c.m, kKept);
  long long n = MatCount(c.m) * (which == 0 ? 1 : 2);
  for (long long k = 0; k < n; k++) MatReal(c.m)[k] = value(rng);
  c.path = TempPath(which == 0 ? "real.txt" : "complex.txt");
  MatFileWrite(c.m, c.path.c_str());
  FILE *fp = fopen(c.path.c_str(), "r");
  fseek(fp, 0, SEEK_END);
  c.bytes = ftell(fp);
  fclose(fp);
  return c;
}

void Label(benchmark::State &state, const Case &c) {
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * c.bytes);
  state.SetLabel(c.m->cls == kComplex ? "500x500 complex" : "1000x1000 real");
}

void BM_ReadFast(benchmark::State &state) {
  Case &c = GetCase(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    Matrix *m = MatFileRead(c.path.c_str());
    benchmark::DoNotOptimize(m->elements);
    MatUndef(m);
  }
  Label(state, c);
}

void BM_ReadPlain(benchmark::State &state) {
  Case &c = GetCase(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    ReferenceMatrix r = ReferenceRead(c.path.c_str());
    benchmark::DoNotOptimize(r.values.data());
  }
  Label(state, c);
}

void BM_WriteFast(benchmark::State &state) {
  Case &c = GetCase(static_cast<int>(state.range(0)));
  std::string out = c.path + ".out";
  for (auto _ : state) MatFileWrite(c.m, out.c_str());
  unlink(out.c_str());
  Label(state, c);
}

// The writer step by step with fprintf, as the format describes it.
void BM_WritePlain(benchmark::State &state) {
  Case &c = GetCase(static_cast<int>(state.range(0)));
  std::string out = c.path + ".out";
  Matrix *m = c.m;
  for (auto _ : state) {
    FILE *fp = fopen(out.c_str(), "w");
    fprintf(fp, m->cls == kComplex ? "# %d %d C\n" : "# %d %d\n", m->rows, m->cols);
    for (int j = 0; j < m->cols; j++) {
      for (int i = 0; i < m->rows; i++) {
        if (i > 0) fputc(' ', fp);
        if (m->cls == kComplex) {
          const double *e = MatReal(m) + 2 * (static_cast<long long>(i) * m->cols + j);
          fprintf(fp, "%16.8E %16.8E", e[0], e[1]);
        } else {
          fprintf(fp, "%16.8E", MatReal(m)[static_cast<long long>(i) * m->cols + j]);
        }
      }
      fputc('\n', fp);
    }
    fclose(fp);
  }
  unlink(out.c_str());
  Label(state, c);
}

BENCHMARK(BM_ReadFast)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReadPlain)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WriteFast)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WritePlain)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char **argv) {
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  for (int which = 0; which < 2; which++) unlink(GetCase(which).path.c_str());
  return 0;
}
