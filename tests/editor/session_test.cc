// The editor and the terminal services run inside the test process, keys
// coming from a pipe and the screen captured: the registry can be checked
// after a long session, and the pieces without a screen directly.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "core/alloc.h"
#include "core/constructors.h"
#include "editor/complex_key.h"
#include "editor/editor.h"
#include "editor/entry.h"
#include "editor/terminal.h"
#include "io/output_file.h"
#include "scalar/complex.h"
#include "tests/editor/editor_fixture.h"
#include "tests/support/exact.h"

#include <filesystem>
#include <fstream>
#include <sstream>

namespace velk_test {
namespace {

// Queues keys on descriptor 0, which becomes a pipe on first use. Its writing
// end stays open, so a read never meets an end of input (which ends the
// program like a hang-up).
void Feed(const std::string &keys) {
  static int feed = -1;
  if (feed < 0) {
    // A run without standard streams: give 0 and 1 something to be swapped.
    for (int fd : {0, 1})
      if (fcntl(fd, F_GETFD) < 0) open("/dev/null", O_RDWR);
    int p[2];
    ASSERT_EQ(pipe(p), 0);
    dup2(p[0], 0);
    close(p[0]);
    feed = p[1];
  }
  ASSERT_EQ(write(feed, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
}

// One round of nearly every command, in turn: reset, a number; 4 x 3; delete
// and put back a row and a column; the replacing commands, ending in 3 x 4 of
// 2; reset, copy a block and overwrite with it; a fill answer that does not
// convert; complex, both views, joined, conjugate transpose. It starts with a
// reset to the 3 x 3 real zeros, so every round ends alike, in view 2 of a
// complex matrix: 3 at (1, 1) and the block (3 0; 0 0) put at (1, 2), made
// complex with 1 + 2i at (1, 1), then conjugate transposed.
const std::string kRound = "Qy5\ns4\n\njdrjpldcpEOZF2\nTQy3\n<mjli<loFx\nCR1\nI2\nCTRI";

TEST(EditorSession, LongSessionLeavesTheRegistryAsItFoundIt) {
  MatInit();
  CompInit();
  MatSweepAll();
  long matrices = MatRegistryCheck();
  long complexes = CompRegistryCheck();
  Matrix *m = MatSetStatus(MatSetName(MatZDef2(3, 3), "m"), 7);
  std::string keys = "j";
  for (int k = 0; k < 25; k++) keys += kRound;
  Feed(keys + "q");
  testing::internal::CaptureStdout();  // the screens
  Matrix *result = MatEditAllowComplex(m);
  testing::internal::GetCapturedStdout();
  EXPECT_STREQ(result->name, "m");
  EXPECT_EQ(result->status, 7);
  ASSERT_TRUE(result->cls == kComplex && result->rows == 3 && result->cols == 3);
  std::vector<double> expected = {1, -2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(std::vector<double>(MatReal(result), MatReal(result) + 18), expected);
  MatUndef(result);
  MatSweepAll();
  EXPECT_EQ(MatRegistryCheck(), matrices);
  EXPECT_EQ(CompRegistryCheck(), complexes);
}

// Undoing a round of every command, redoing part of it and changing again
// (which drops the rest) leaves no matrix behind: the history gives back
// every matrix it held. Undone to the start, the matrix is the one given.
TEST(EditorSession, UndoAndRedoLeaveTheRegistryAsTheyFoundIt) {
  MatInit();
  CompInit();
  MatSweepAll();
  long matrices = MatRegistryCheck();
  Matrix *m = MatSetName(MatFillDef(3, 3, 4), "m");
  Feed("j" + kRound + std::string(40, 'u') + "\x12\x12\x12\x12" + "9\n" +
       std::string(60, 'u') + "q");
  testing::internal::CaptureStdout();
  Matrix *result = MatEditAllowComplex(m);
  testing::internal::GetCapturedStdout();
  ASSERT_TRUE(result->cls == kReal && result->rows == 3 && result->cols == 3);
  EXPECT_EQ(std::vector<double>(MatReal(result), MatReal(result) + 9), std::vector<double>(9, 4));
  MatUndef(result);
  MatSweepAll();
  EXPECT_EQ(MatRegistryCheck(), matrices);
}

TEST(EditorEntry, EqualityIsExactAndNaNNeverEqual) {
  MatInit();
  Matrix *a = MatFillDef(2, 2, 1.5);
  Matrix *b = MatFillDef(2, 2, 1.5);
  Matrix *c = C_MatZDef2(2, 2);
  EXPECT_TRUE(MatEqualExact(a, b));
  EXPECT_FALSE(MatEqualExact(MatZDef2(2, 2), c));  // the class counts
  EXPECT_FALSE(MatEqualExact(a, MatFillDef(1, 4, 1.5)));
  MatReal(c)[7] = 1;  // the last imaginary part
  EXPECT_FALSE(MatEqualExact(c, C_MatZDef2(2, 2)));
  MatReal(b)[3] = 1.5 + 1e-15;
  EXPECT_FALSE(MatEqualExact(a, b));
  MatReal(a)[0] = NAN;
  EXPECT_FALSE(MatEqualExact(a, a));
  MatSweepAll();
}

TEST(LineInput, TakesItsCharactersEchoesThemAndFallsBackToTheDefault) {
  Feed("\n-1a2\n3.5e1x\n\b\b7\r\n4\nk");
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  EXPECT_EQ(IntegerLineInput(9, 0), 9);
  EXPECT_EQ(IntegerLineInput(0, 0), -12);
  EXPECT_EQ(RealLineInput(0, 0), 35.0);
  EXPECT_EQ(IntegerLineInput(0, 0), 7);
  EXPECT_EQ(RealAskCurrent("x", 2.5), 2.5);
  EXPECT_EQ(IntegerAskCurrent("n", 3), 4);
  Pause("", 0);
  Pause("wait", 0.001);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "-123.5e17x = 2.5 ----> n = 3 ----> 4");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Please hit any key to continue !!\r" + std::string(33, ' ') + "\rwait");
}

// Every write to a new temporary fails as on a full disk.
void WritesFail(int fd) {
  int full = open("/dev/full", O_WRONLY);
  dup2(full, fd);
  close(full);
}

// A 1 x 1 matrix file alone in a new folder, and whether it is still as it
// was, alone.
struct OldFile {
  OldFile() {
    dir = testing::TempDir() + "velk-entry-XXXXXX";
    if (mkdtemp(dir.data()) == nullptr) ADD_FAILURE() << "no folder";
    file = dir + "/a.mat";
    std::ofstream(file) << old;
  }
  ~OldFile() { std::filesystem::remove_all(dir); }
  void ExpectIntact() const {
    std::stringstream kept;
    kept << std::ifstream(file).rdbuf();
    EXPECT_EQ(kept.str(), old);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir), {}), 1);
  }
  const std::string old = "# 1 1\n  7.00000000E+00\n";
  std::string dir;
  std::string file;
};

// Quitting after a change on a full disk: the old file stays as it was and
// the failure is reported (the write-back takes the writers' safe path).
TEST(EditorEntry, FailedWriteBackKeepsTheFileAndReports) {
  OldFile old;
  std::string file = old.file;
  auto edit_and_quit = [&] {
    OutputFileSetTemporaryHook(WritesFail);
    Feed("j5\nq");
    if (freopen("/dev/null", "w", stdout) == nullptr) _exit(2);
    char *argv[] = {const_cast<char *>("velk-edit"), file.data(), nullptr};
    VelkEditMain(2, argv);
  };
  EXPECT_EXIT(edit_and_quit(), testing::ExitedWithCode(0),
      Exact("\nprint " + file + "(1x1) >> \"" + file + "\" : Can't write file " + file +
            " in MatFileWrite().\n"));
  old.ExpectIntact();
}

TEST(TerminalLines, ComplexKeyReadAsksForEachPartWithItsCurrentValue) {
  // An empty real part keeps the old one; the name "Complex" stands in for none.
  Feed("\n-0.5e1\n7\n\n");
  Complex *z = CompDef("z", 1.5, -2);
  Complex *anonymous = CompDef("", 0, 3);
  testing::internal::CaptureStdout();
  EXPECT_EQ(CompKeyRead(z), z);
  CompKeyRead(anonymous);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "z = ( 1.50000000E+00 , -2.00000000E+00) ----> (  , -0.5e1 )\n"
            "Complex = ( 0.00000000E+00 ,  3.00000000E+00) ----> ( 7 ,  )\n");
  EXPECT_EQ(z->re, 1.5);
  EXPECT_EQ(z->im, -5);
  EXPECT_EQ(anonymous->re, 7);
  EXPECT_EQ(anonymous->im, 3);
  CompSweep();
}

// "w" through a failing writer: the old file stays byte for byte, the
// screen says so, and the editing goes on to the end.
TEST(EditorSession, AFailedWriteKeepsTheOldFileAndGoesOn) {
  OldFile old;
  MatInit();
  Matrix *m = MatSetName(MatFillDef(1, 1, 7), "m");
  Feed("j5\nw" + old.file + "\nl6\nq");
  OutputFileSetTemporaryHook(WritesFail);
  testing::internal::CaptureStdout();
  Matrix *result = MatEdit(m);
  std::string screen = testing::internal::GetCapturedStdout();
  OutputFileSetTemporaryHook(nullptr);
  EXPECT_NE(screen.find("Can't write file " + old.file), std::string::npos);
  EXPECT_EQ(MatReal(result)[0], 6);  // edited after the failure
  old.ExpectIntact();
  MatUndef(result);
}

// A fatal report in a session saves the changed matrix beside its file, then
// the handler that was there before takes over; the session has let go of
// everything, so the next one runs as usual.
TEST(EditorSession, AFatalReportSavesThenHandsOver) {
  OldFile old;
  MatInit();
  struct Fatal {};
  FatalHandler before = SetFatalHandler([] { throw Fatal(); });
  Matrix *m = MatSetName(MatFillDef(1, 1, 7), old.file.c_str());
  Feed("j5\nr" + old.dir + "/nope\n");
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  EXPECT_THROW(MatEdit(m), Fatal);
  testing::internal::GetCapturedStdout();
  std::string said = testing::internal::GetCapturedStderr();
  EXPECT_NE(said.find("velk-edit: " + old.file + ": changes saved in " + old.file + ".save\n"),
            std::string::npos);
  std::stringstream saved;
  saved << std::ifstream(old.file + ".save").rdbuf();
  EXPECT_EQ(saved.str(), "# 1 1\n  5.00000000E+00\n");
  Feed("q");
  testing::internal::CaptureStdout();
  Matrix *next = MatEdit(MatSetName(MatFillDef(1, 1, 1), "n"));
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(MatReal(next)[0], 1);
  MatUndef(next);
  SetFatalHandler(before);
  std::filesystem::remove(old.file + ".save");
  old.ExpectIntact();
}

}  // namespace
}  // namespace velk_test
