// Ways out of the editor other than quitting, and the command-line options.
#include <csignal>

#include "tests/editor/editor_fixture.h"

namespace velk_test {
namespace {

using ExitTest = EditorTest;

// The terminal is back in cooked mode with echo, whatever the way out.
void ExpectCooked(const termios &t) {
  EXPECT_TRUE(t.c_lflag & ICANON);
  EXPECT_TRUE(t.c_lflag & ECHO);
  EXPECT_TRUE(t.c_lflag & ISIG);
  EXPECT_TRUE(t.c_lflag & IEXTEN);
  EXPECT_TRUE(t.c_oflag & OPOST);
}

TEST_F(ExitTest, CtrlCEndsWithStatusOneAndACookedTerminal) {
  WriteFile("a.mat", MatrixText(2, 2, {1, 2, 3, 4}));
  AgeFile("a.mat");
  auto stamp = Stamp("a.mat");
  Open({"a.mat", "b.mat"});
  Keys("j9\n");
  ASSERT_TRUE(pty_.Send("\x03"));
  EXPECT_EQ(pty_.Finish(), 1);
  ExpectCooked(pty_.Modes());
  EXPECT_EQ(screen().All(), std::string(24, '\n'));  // cleared on the way out
  EXPECT_EQ(Cursor(), "0,0");
  EXPECT_EQ(Stamp("a.mat"), stamp);
  EXPECT_FALSE(Exists("b.mat"));
}

TEST_F(ExitTest, CtrlCInsideAFieldOrAPromptAlsoEnds) {
  for (const char *keys : {"j12", "jw", "jg4"}) {
    PtySession pty;
    WriteFile("a.mat", MatrixText(1, 1, {1}));
    ASSERT_TRUE(pty.Start(VELK_EDIT_PATH, dir_, {"a.mat"}));
    ASSERT_TRUE(pty.Settle());
    ASSERT_TRUE(pty.Keys(keys));
    ASSERT_TRUE(pty.Send("\x03"));
    EXPECT_EQ(pty.Finish(), 1) << keys;
    ExpectCooked(pty.Modes());
  }
}

TEST_F(ExitTest, TerminationSignalsRestoreTheTerminal) {
  for (int sig : {SIGTERM, SIGHUP, SIGQUIT}) {
    PtySession pty;
    WriteFile("a.mat", MatrixText(1, 1, {1}));
    ASSERT_TRUE(pty.Start(VELK_EDIT_PATH, dir_, {"a.mat"}));
    ASSERT_TRUE(pty.Settle());
    ASSERT_TRUE(pty.Keys("j"));
    kill(pty.pid(), sig);
    EXPECT_EQ(pty.Finish(), 1) << sig;
    ExpectCooked(pty.Modes());
    EXPECT_EQ(pty.screen.cursor_line(), 0);
  }
}

TEST_F(ExitTest, CtrlZWithoutJobControlIsIgnored) {
  // The test's pty session has no job control, so the suspension is dropped
  // by the system and editing goes on.
  WriteFile("a.mat", MatrixText(1, 2, {1, 2}));
  Open({"a.mat"});
  Keys("j\x1al3\n");
  EXPECT_EQ(Cells(1, 2), (std::vector<double>{1, 3}));
  EXPECT_EQ(Quit(), 0);
}

using OptionsTest = EditorTest;

TEST_F(OptionsTest, HelpAndVersionEditNothing) {
  for (const char *option : {"--help", "-h"}) {
    PtySession pty;
    ASSERT_TRUE(pty.Start(VELK_EDIT_PATH, dir_, {"a.mat", option, "b.mat"}));
    EXPECT_EQ(pty.Finish(), 0);
    EXPECT_NE(pty.output.find("usage: velk-edit [--help] [--version] [--] [FILE...]"),
              std::string::npos)
        << pty.output;
    EXPECT_NE(pty.output.find("q, Esc   quit"), std::string::npos);
    EXPECT_EQ(pty.screen.clears, 0);
  }
  PtySession pty;
  ASSERT_TRUE(pty.Start(VELK_EDIT_PATH, dir_, {"--version"}));
  EXPECT_EQ(pty.Finish(), 0);
  EXPECT_EQ(pty.screen.Trimmed(0), "velk-edit 0.1.0");
  EXPECT_FALSE(Exists("a.mat"));
  EXPECT_FALSE(Exists("b.mat"));
}

TEST_F(OptionsTest, DoubleDashEndsTheOptions) {
  Open({"--", "--help"});
  EXPECT_EQ(Line(1), "  Name :  [ --help ]");
  EXPECT_EQ(Quit(), 0);
  EXPECT_EQ(ReadFile("--help"), "# 0 0\n");
}

}  // namespace
}  // namespace velk_test
