// velk-edit driven through a pseudo-terminal: the time and the bytes written
// per keystroke on a small and a large matrix (the work should follow the
// screen, not the matrix), also in a 60 x 200 window; a number entry and its
// undo; and the time to the first full screen.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>

#include "tests/editor/pty_session.h"

namespace {

using velk_test::PtySession;

// The n x n test files, written once per run into a temporary directory.
class Files {
 public:
  ~Files() {
    if (!dir_.empty()) std::filesystem::remove_all(dir_);
  }
  const std::string &dir() {
    if (dir_.empty()) {
      char pattern[] = "/tmp/velk-edit-bench-XXXXXX";
      if (mkdtemp(pattern) != nullptr) dir_ = pattern;
    }
    return dir_;
  }
  // A file whose element (i, j) is i + j / 1000, in the header layout.
  std::string Square(int n) {
    std::string name = "square" + std::to_string(n) + ".mat";
    if (made_[n]) return name;
    FILE *f = fopen((dir() + "/" + name).c_str(), "w");
    if (f == nullptr) return name;
    fprintf(f, "# %d %d\n", n, n);
    for (int j = 1; j <= n; j++)
      for (int i = 1; i <= n; i++) fprintf(f, i < n ? "%16.8E " : "%16.8E\n", i + j / 1000.0);
    fclose(f);
    made_[n] = true;
    return name;
  }

 private:
  std::string dir_;
  std::map<int, bool> made_;
};

Files files;

// Opens the n x n file and puts the cursor on (1, 1). The program is killed
// (not quit) at the end, so a large changed matrix is never written back.
bool OpenSquare(PtySession &pty, int n, int lines, int columns) {
  std::string name = files.Square(n);
  return pty.Start(VELK_EDIT_PATH, files.dir(), {name}, lines, columns) && pty.Settle(120000) &&
         pty.Send("j");
}

// The program's resident memory in KiB (VmRSS), or -1.
double ResidentKiB(pid_t pid) {
  std::ifstream in("/proc/" + std::to_string(pid) + "/status");
  std::string key;
  double value = 0;
  while (in >> key) {
    if (key == "VmRSS:" && in >> value) return value;
    in.ignore(1 << 16, '\n');
  }
  return -1;
}

// Sends one key per iteration, cycling through `keys`, and waits until the
// program waits for the next one. Counts the bytes written per key, and how
// much the program's resident memory grew over the run.
void RunKeys(benchmark::State &state, const std::string &keys, int lines = 24,
             int columns = 80) {
  PtySession pty;
  if (!OpenSquare(pty, static_cast<int>(state.range(0)), lines, columns)) {
    state.SkipWithError("velk-edit did not start");
    return;
  }
  pty.quiet_ms = 0;  // the byte count already says when the frame is in
  size_t before = pty.output.size();
  double resident = ResidentKiB(pty.pid());
  size_t k = 0;
  for (auto _ : state) {
    if (!pty.Send(std::string(1, keys[k++ % keys.size()]), 5000)) {
      state.SkipWithError("velk-edit did not answer");
      break;
    }
  }
  state.counters["bytes_per_key"] = benchmark::Counter(
      static_cast<double>(pty.output.size() - before), benchmark::Counter::kAvgIterations);
  state.counters["rss_growth_kib"] = ResidentKiB(pty.pid()) - resident;
}

// Down, right, up and left three times each: a closed path inside a 4 x 4
// view, so both sizes do the same moves.
void BM_Movement(benchmark::State &state) { RunKeys(state, "jjjlllkkkhhh"); }

// The same moves in a 60 x 200 window: 53 rows of 12 numbers on the screen.
void BM_MovementWide(benchmark::State &state) { RunKeys(state, "jjjlllkkkhhh", 60, 200); }

// A number typed, stored and undone, a key at a time: the undo puts back the
// one old value, whatever the size of the matrix (the memory stays flat).
void BM_NumberUndo(benchmark::State &state) { RunKeys(state, "7\nu"); }

// A number typed and stored, two keys at a time; the cursor moves on, and
// on the large matrix the view scrolls across.
void BM_NumberEntry(benchmark::State &state) { RunKeys(state, "7\n"); }

// Start to the first full screen, the file read and copied on the way.
void BM_FirstScreen(benchmark::State &state) {
  std::string name = files.Square(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    PtySession pty;
    if (!pty.Start(VELK_EDIT_PATH, files.dir(), {name}) || !pty.Settle(120000)) {
      state.SkipWithError("velk-edit did not start");
      break;
    }
    state.PauseTiming();
    pty.Send("q");
    pty.Finish(60000);
    state.ResumeTiming();
  }
}

}  // namespace

// Each key costs a settle of its own, so a few hundred keys give a stable mean.
// 20 x 20 fills the screen as 2000 x 2000 does: their bytes per key agree,
// while 4 x 4 draws fewer cells.
BENCHMARK(BM_Movement)->Arg(4)->Arg(20)->Arg(2000)->Iterations(240)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_MovementWide)->Arg(4)->Arg(60)->Arg(2000)->Iterations(240)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_NumberUndo)->Arg(4)->Arg(2000)->Iterations(240)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_NumberEntry)->Arg(4)->Arg(20)->Arg(2000)->Iterations(240)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_FirstScreen)->Arg(1000)->Iterations(3)->UseRealTime()->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
