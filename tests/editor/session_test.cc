// The editor and the terminal services run inside the test process, with
// standard input a pipe of keys and standard output a file: the registry can
// be checked after a long session, and the pieces without a screen directly.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "core/constructors.h"
#include "editor/editor.h"
#include "editor/entry.h"
#include "editor/terminal.h"
#include "scalar/complex.h"
#include "tests/editor/editor_fixture.h"

namespace {

// Swaps descriptor 0 for a pipe we feed and descriptor 1 for a file we read.
// The pipe's writing end stays open until the end, so a read never meets an
// end of input (which ends the program like a hang-up).
class Stdio {
 public:
  Stdio() {
    fflush(stdout);
    // A run without standard streams: give 0 and 1 something to be swapped.
    for (int fd : {0, 1})
      if (fcntl(fd, F_GETFD) < 0) open("/dev/null", O_RDWR);
    int p[2];
    EXPECT_EQ(pipe(p), 0);
    feed_ = p[1];
    saved_in_ = dup(0);
    saved_out_ = dup(1);
    dup2(p[0], 0);
    close(p[0]);
    char path[] = "/tmp/velk-edit-session-XXXXXX";
    int out = mkstemp(path);
    path_ = path;
    dup2(out, 1);
    close(out);
  }
  ~Stdio() {
    fflush(stdout);
    dup2(saved_in_, 0);
    dup2(saved_out_, 1);
    close(saved_in_);
    close(saved_out_);
    close(feed_);
    unlink(path_.c_str());
  }
  void Feed(const std::string &keys) {
    ASSERT_LT(keys.size(), 60000u);  // within the pipe's buffer
    ASSERT_EQ(write(feed_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
  }
  std::string Output() {
    fflush(stdout);
    std::ifstream in(path_);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
  }

 private:
  int feed_ = -1;
  int saved_in_ = -1;
  int saved_out_ = -1;
  std::string path_;
};

std::string ReadText(const std::string &path) {
  std::ifstream in(path);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

// One round of nearly every command, ending in view 2 of a complex matrix;
// the next round's reset brings back the 3 x 3 real zeros.
const std::string kRound =
    "Qy5\n"           // reset, a number
    "s4\n\n"          // 4 x 3
    "jdrjpldcp"       // delete and put back a row and a column
    "EOZF2\nT"        // the replacing commands: 3 x 4 of 2
    "Qy3\n<mjli<lo"  // reset; copy a block and overwrite with it
    "Fx\n"            // a fill answer that does not convert
    "CR1\nI2\nCTRI";  // complex, both views, joined, conjugate transpose

TEST(EditorSession, LongSessionLeavesNoRecordsBehind) {
  MatInit();
  CompInit();
  MatSweepAll();
  long matrices = MatRegistryCheck();
  long complexes = CompRegistryCheck();
  Matrix *m = MatSetStatus(MatSetName(MatZDef2(3, 3), "m"), 7);
  Matrix *result;
  std::string output;
  {
    Stdio io;
    std::string keys = "j";
    for (int k = 0; k < 25; k++) keys += kRound;
    io.Feed(keys + "Qy7\nq");
    result = MatEditAllowComplex(m);
    output = io.Output();
  }
  EXPECT_STREQ(result->name, "m");
  EXPECT_EQ(result->status, 7);
  ASSERT_EQ(result->cls, kReal);
  ASSERT_EQ(result->rows, 3);
  ASSERT_EQ(result->cols, 3);
  EXPECT_EQ(MatReal(result)[0], 7);
  EXPECT_EQ(MatReal(result)[1], 0);
  // While editing, the screen showed the complex views.
  EXPECT_NE(output.find(" Name :  [ Im(m) ]"), std::string::npos);
  MatUndef(result);
  MatSweepAll();
  EXPECT_EQ(MatRegistryCheck(), matrices);
  EXPECT_EQ(CompRegistryCheck(), complexes);
}

TEST(EditorSession, OneRoundLeavesTheValuesItShould) {
  MatInit();
  Matrix *m = MatSetName(MatZDef2(3, 3), "m");
  Matrix *result;
  {
    Stdio io;
    io.Feed("j" + kRound + "q");
    result = MatEditAllowComplex(m);
  }
  // The reset zeros with 3 at (1, 1) and the block (3 0; 0 0) put at (1, 2),
  // made complex with 1 + 2i at (1, 1), then conjugate transposed: column 1
  // holds 1 - 2i, 3, 0.
  ASSERT_EQ(result->cls, kComplex);
  const double expected[9][2] = {{1, -2}, {0, 0}, {0, 0}, {3, 0}, {0, 0},
                                 {0, 0},  {0, 0}, {0, 0}, {0, 0}};
  for (int k = 0; k < 9; k++) {
    EXPECT_EQ(MatReal(result)[2 * k], expected[k][0]) << k;
    EXPECT_EQ(MatReal(result)[2 * k + 1], expected[k][1]) << k;
  }
  MatUndef(result);
}

TEST(EditorEntry, EqualityIsExactAndNaNNeverEqual) {
  MatInit();
  Matrix *a = MatFillDef(2, 2, 1.5);
  Matrix *b = MatFillDef(2, 2, 1.5);
  EXPECT_TRUE(MatEqualExact(a, b));
  MatReal(b)[3] = 1.5 + 1e-15;
  EXPECT_FALSE(MatEqualExact(a, b));
  Matrix *c = MatFillDef(2, 2, NAN);
  EXPECT_FALSE(MatEqualExact(c, c));
  Matrix *d = C_MatZDef2(2, 2);
  Matrix *e = C_MatZDef2(2, 2);
  EXPECT_FALSE(MatEqualExact(a, d));  // the class counts
  EXPECT_TRUE(MatEqualExact(d, e));
  MatReal(e)[7] = 1;  // the last imaginary part
  EXPECT_FALSE(MatEqualExact(d, e));
  EXPECT_FALSE(MatEqualExact(a, MatFillDef(2, 3, 1.5)));
  MatSweepAll();
}

TEST(Terminal, KeysDecodeArrowSequences) {
  Stdio io;
  io.Feed("\x1b[A\x1b[B\x1bOC\x1bOD" "a");
  EXPECT_EQ(TermNextKey(), kKeyUp);
  EXPECT_EQ(TermNextKey(), kKeyDown);
  EXPECT_EQ(TermNextKey(), kKeyRight);
  EXPECT_EQ(TermNextKey(), kKeyLeft);
  EXPECT_EQ(TermNextKey(), 'a');
  io.Feed("\x1b[2~x");
  EXPECT_EQ(TermNextKey(), kKeyIgnored);  // the x waiting behind it goes too
  io.Feed("\x1b\x1b" "b");
  EXPECT_EQ(TermNextKey(), kKeyIgnored);
  io.Feed("\x7f\x0c");
  EXPECT_EQ(TermNextKey(), kKeyDelete);
  EXPECT_EQ(TermNextKey(), kKeyCtrlL);
  io.Feed("\x1b");
  EXPECT_EQ(TermNextKey(), kKeyEscape);  // nothing behind it
}

TEST(Terminal, LineInputsTakeTheirCharactersOnly) {
  Stdio io;
  io.Feed("-12\n\n1a2\r12\x7f" "3\b4\n1.5e2\nx\n-.5E-1\n");
  EXPECT_EQ(IntegerLineInput(9, 1), -12);
  EXPECT_EQ(IntegerLineInput(9, 1), 9);
  EXPECT_EQ(IntegerLineInput(9, 0), 12);
  EXPECT_EQ(IntegerLineInput(9, 0), 14);
  EXPECT_EQ(RealLineInput(0.25, 1), 150);
  EXPECT_EQ(RealLineInput(0.25, 1), 0.25);
  EXPECT_EQ(RealLineInput(0.25, 1), -0.05);
  // Typed characters echo; an erased one is wiped with backspace, space, backspace.
  EXPECT_EQ(io.Output(), "-121212\b \b3\b \b41.5e2-.5E-1");
}

TEST(Terminal, InteractiveValuesPromptAndShow) {
  Stdio io;
  io.Feed("4\n\n2.5\n\n");
  EXPECT_EQ(IntegerAsk("n"), 4);
  EXPECT_EQ(IntegerAskCurrent("n", 6), 6);
  EXPECT_EQ(RealAsk("x"), 2.5);
  EXPECT_EQ(RealAskCurrent("x", 0.125), 0.125);
  RealShow("x", 1e20);
  RealShow("", INFINITY);
  EXPECT_EQ(io.Output(), "n = 4n = 6 ----> x = 2.5x = 0.125 ----> x = 1E+20\nans = Inf\n");
}

TEST(Terminal, PauseSleepsOrWaitsForAKey) {
  Stdio io;
  testing::internal::CaptureStderr();
  auto start = std::chrono::steady_clock::now();
  Pause("", 0.05);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(50));
  Pause("wait", 0.001);
  io.Feed("kz");
  Pause("", 0);
  Pause("go on", 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "waitPlease hit any key to continue !!\r" + std::string(33, ' ') + "\rgo on\r     \r");
}

TEST(Terminal, ScreenRoutinesWriteTheirSequences) {
  Stdio io;
  ScreenCursor(0, 0);
  ScreenPrintAt(2, 25, "x");
  ScreenClear();
  ScreenClearToEnd(1, 78);
  ScreenFlush();
  EXPECT_EQ(io.Output(), "\x1b[1;1H\x1b[3;26Hx\x1b[2J\x1b[2;79H      ");
}

using ScalarFiles = velk_test::EditorTest;

TEST_F(ScalarFiles, SavesWriteTheTextForms) {
  std::string f = dir_ + "/values";
  EXPECT_EQ(IntegerFileSave(5, f.c_str(), "n", 0, 1), 0);
  EXPECT_EQ(IntegerFileSave(-3, f.c_str(), "", 1, 0), 0);
  EXPECT_EQ(ReadText(f), "n = 5;\n\n-3");
  EXPECT_EQ(RealFileSave(1.5, f.c_str(), "x", 0, 1), 0);
  EXPECT_EQ(RealFileSave(NAN, f.c_str(), nullptr, 1, 0), 0);
  EXPECT_EQ(ReadText(f), "x =   1.50000000E+00;\n\n             NaN");
  EXPECT_EQ(StringFileWrite("s", "some text", f.c_str()), 0);
  EXPECT_EQ(ReadText(f), "some text");
}

TEST_F(ScalarFiles, SavesThatCannotOpenReportAndReturnMinusOne) {
  std::string f = dir_ + "/no/such/dir";
  testing::internal::CaptureStderr();
  EXPECT_EQ(IntegerFileSave(1, f.c_str(), "n", 0, 0), -1);
  EXPECT_EQ(IntegerFileSave(1, f.c_str(), "n", 1, 0), -1);
  EXPECT_EQ(RealFileSave(1, f.c_str(), "x", 1, 0), -1);
  EXPECT_EQ(StringFileWrite("s", "t", f.c_str()), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "IntegerFileSave(): Can't open " + f + ".\n" + "IntegerFileSave(): Cann't open " + f +
                ".\n" + "RealFileSave(): Can't open " + f + ".\n" +
                "StringFileWrite(): Can not open " + f + ".\n");
}

TEST(StringHolder, JoinsThePreviousArgumentAndRefusesLongOnes) {
  EXPECT_STREQ(set_string("ab"), "ab");
  EXPECT_STREQ(set_string("cd"), "abcd");
  EXPECT_STREQ(set_string(""), "cd");
  EXPECT_STREQ(set_string("e"), "e");
  std::string longest(8191, 'x');
  EXPECT_EQ(strlen(set_string(longest.c_str())), 8192u);
  EXPECT_EQ(strlen(set_string(longest.c_str())), 2u * 8191);
  std::string too_long(8192, 'x');
  EXPECT_EXIT(set_string(too_long.c_str()), testing::ExitedWithCode(0),
              "set_string\\(\\.\\.\\.\\) : String is too long");
}

}  // namespace
