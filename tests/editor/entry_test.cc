// The program's flow over its arguments, its options and its ways out,
// driven through a pseudo-terminal.
#include <csignal>

#include "tests/editor/editor_fixture.h"

namespace velk_test {

// Each file in its own run, in argument order: after "--", a new file named
// --help, left empty, is written with the header of a 0 x 0 matrix; the
// shipped example, only looked at, and a file changed and changed back are
// left untouched; a file without a header, edited, is written in the header
// layout; a broken file ends the program before editing, with the report and
// status 0.
TEST_F(EditorTest, EachFileInTurnIsWrittenOnlyWhenItChanged) {
  std::filesystem::copy_file(std::string(VELK_SOURCE_DIR) + "/examples/real.mat", Path("real.mat"));
  WriteFile("same.mat", MatrixText(2, 2, {1.5, 2, 3, 4}));
  WriteFile("plain.mat", "1 2 3\n4 5 6\n");
  WriteFile("bad.mat", "1 2\n3\n");
  auto real_stamp = Stamp("real.mat", true);
  auto same_stamp = Stamp("same.mat", true);
  Open({"--", "--help", "real.mat", "same.mat", "plain.mat", "bad.mat", "never.mat"});
  EXPECT_EQ(Line(1), "  Name :  [ --help ]");
  Keys("q");
  EXPECT_EQ(Line(1), "  Name :  [ real.mat ]");
  EXPECT_EQ(Line(2), "  Size :  [   4,  5 ]");
  EXPECT_EQ(Line(4), "             (  1)           (  2)           (  3)           (  4)");
  EXPECT_EQ(Line(5), " (  1)   1.00000000E+00  0.00000000E+00  3.14159265E+00 -1.00000000E+00");
  EXPECT_EQ(Line(8), " (  4)   4.00000000E-01  0.00000000E+00  1.73205081E+00 -4.00000000E+00");
  EXPECT_EQ(Line(0) + Line(3) + Line(9), "");
  EXPECT_EQ(Cursor(), "2,12");  // every run starts on the row count field
  Keys("jlljk<q");
  Run({{"j9\n", 2, 2, {9, 2, 3, 4}, At(1, 2)}, {"h1.5\n", 2, 2, {1.5, 2, 3, 4}, At(1, 2)}});
  Keys("q");
  EXPECT_EQ(Line(1), "  Name :  [ plain.mat ]");
  Run({{"j7\n", 2, 3, {7, 2, 3, 4, 5, 6}, At(1, 2)}});
  Keys("q");
  EXPECT_EQ(pty_.Finish(), 0);
  EXPECT_NE(pty_.output.find("Data may be broken. in MatFileRead()."), std::string::npos);
  EXPECT_EQ(ReadFile("--help"), "# 0 0\n");
  EXPECT_EQ(Stamp("real.mat"), real_stamp);
  EXPECT_EQ(Stamp("same.mat"), same_stamp);
  EXPECT_EQ(ReadFile("plain.mat"), MatrixText(2, 3, {7, 2, 3, 4, 5, 6}));
  EXPECT_EQ(ReadFile("bad.mat"), "1 2\n3\n");
  EXPECT_FALSE(Exists("never.mat"));
}

// --help, -h and --version print and end at once ("--" is in the flow test);
// with no argument the editor opens on "tmp" and writes only what the user
// saves.
TEST_F(EditorTest, OptionsAndNoArgument) {
  for (const char *option : {"--help", "-h", "--version"}) {
    SCOPED_TRACE(option);
    PtySession pty;
    ASSERT_TRUE(pty.Start(VELK_EDIT_PATH, dir_, {"a.mat", option}));
    EXPECT_EQ(pty.Finish(), 0);
    bool help = std::string(option) != "--version";
    EXPECT_EQ(pty.screen.Trimmed(0),
              help ? "usage: velk-edit [--help] [--version] [--] [FILE...]" : "velk-edit 0.1.0");
    EXPECT_EQ(pty.output.find("q, Esc   quit") != std::string::npos, help);
  }
  EXPECT_FALSE(Exists("a.mat"));
  Open({});
  EXPECT_EQ(Line(1), "  Name :  [ tmp ]");
  Run({{"2\n2\n", 2, 2, {0, 0, 0, 0}}});
  Keys("wsaved.mat\n");
  EXPECT_EQ(Quit(), 0);
  EXPECT_EQ(ReadFile("saved.mat"), MatrixText(2, 2, {0, 0, 0, 0}));
  EXPECT_FALSE(Exists("tmp"));
}

// Ctrl-C in the main loop, a number field, a prompt and the goto fields, and
// the termination signals: status 1, the screen cleared, the terminal cooked
// with echo, and nothing written.
TEST_F(EditorTest, InterruptsEndWithStatusOneAndACookedTerminal) {
  WriteFile("a.mat", MatrixText(1, 1, {1}));
  auto stamp = Stamp("a.mat", true);
  const struct {
    const char *keys;
    int sig;
  } cases[] = {{"j9\n\x03", 0}, {"j12\x03", 0}, {"jw\x03", 0}, {"jg4\x03", 0},
               {"j", SIGTERM},  {"j", SIGHUP},  {"j", SIGQUIT}};
  for (const auto &c : cases) {
    SCOPED_TRACE(std::string(c.keys) + " signal " + std::to_string(c.sig));
    PtySession pty;
    ASSERT_TRUE(pty.Start(VELK_EDIT_PATH, dir_, {"a.mat", "b.mat"}));
    ASSERT_TRUE(pty.Settle());
    ASSERT_TRUE(pty.Keys(c.keys));
    if (c.sig != 0) kill(pty.pid(), c.sig);
    EXPECT_EQ(pty.Finish(), 1);
    termios modes = {};
    EXPECT_EQ(tcgetattr(pty.terminal(), &modes), 0);
    EXPECT_EQ(modes.c_lflag & (ICANON | ECHO | ISIG | IEXTEN), ICANON | ECHO | ISIG | IEXTEN);
    EXPECT_TRUE(modes.c_oflag & OPOST);
    EXPECT_EQ(pty.screen.All(), std::string(24, '\n'));
    EXPECT_EQ(pty.screen.line + pty.screen.column, 0);
  }
  EXPECT_EQ(Stamp("a.mat"), stamp);
  EXPECT_FALSE(Exists("b.mat"));
}

}  // namespace velk_test
