// Keeping the user's work and the terminal, through a pty: emergency saves, crashes,
// failed writes, flow control, split escape sequences, names that are no regular files.
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdlib>

#include "tests/editor/editor_fixture.h"

namespace velk_test {
namespace {

// The terminal as a shell expects it back.
void ExpectCooked(int terminal) {
  termios modes = {};
  ASSERT_EQ(tcgetattr(terminal, &modes), 0);
  EXPECT_EQ(modes.c_lflag & (ICANON | ECHO | ISIG | IEXTEN), ICANON | ECHO | ISIG | IEXTEN);
  EXPECT_TRUE(modes.c_oflag & OPOST);
  EXPECT_TRUE(modes.c_iflag & IXON);
}

bool Contains(const std::string &text, const std::string &part) {
  return text.find(part) != std::string::npos;
}

// A variable of the environment while it lives.
struct ScopedEnv {
  ScopedEnv(const char *name, const std::string &value) : name(name) { setenv(name, value.c_str(), 1); }
  ~ScopedEnv() { unsetenv(name); }
  const char *name;
};

}  // namespace

// SIGHUP or SIGTERM after a change writes NAME.save (then NAME.save.1), the shown part of a
// complex matrix joined back, and says where; SIGQUIT without a change writes nothing.
TEST_F(EditorTest, SignalsSaveChangedWorkBesideTheFile) {
  WriteFile("a.mat", MatrixText(1, 1, {1}));
  WriteFile("c.mat", MatrixText(1, 1, {1, -1}, true));
  const std::string old = ReadFile("a.mat");
  const struct {
    const char *file;
    const char *keys;
    int sig;
    const char *saved;
    std::string text;
  } cases[] = {{"a.mat", "j5\n", SIGTERM, "a.mat.save", MatrixText(1, 1, {5})},
               {"a.mat", "j6\n", SIGHUP, "a.mat.save.1", MatrixText(1, 1, {6})},
               {"a.mat", "j", SIGQUIT, nullptr, ""},
               {"c.mat", "jI7\n", SIGTERM, "c.mat.save", MatrixText(1, 1, {1, 7}, true)}};
  for (const auto &c : cases) {
    SCOPED_TRACE(std::string(c.keys) + " signal " + std::to_string(c.sig));
    PtySession pty;
    ASSERT_TRUE(pty.Start(VELK_EDIT_PATH, dir_, {c.file}));
    ASSERT_TRUE(pty.Settle());
    ASSERT_TRUE(pty.Keys(c.keys));
    kill(pty.pid(), c.sig);
    EXPECT_EQ(pty.Finish(), 1);
    ExpectCooked(pty.terminal());
    if (c.saved != nullptr) {
      EXPECT_EQ(ReadFile(c.saved), c.text);
      EXPECT_TRUE(Contains(pty.output, std::string("velk-edit: ") + c.file +
                                           ": changes saved in " + c.saved + "\r\n"));
    } else {
      EXPECT_FALSE(Contains(pty.output, "velk-edit:"));
    }
  }
  EXPECT_FALSE(Exists("a.mat.save.2"));
  EXPECT_EQ(ReadFile("a.mat"), old);
}

// A fatal report saves the work and keeps its text and status; with the folder gone the save
// goes home.
TEST_F(EditorTest, AFatalReportSavesAndAMissingFolderSendsTheSaveHome) {
  WriteFile("a.mat", MatrixText(1, 1, {1}));
  Open({"a.mat"});
  Keys("j9\nrnope\n");
  EXPECT_EQ(pty_.Finish(), 0);
  EXPECT_EQ(Line(4), "read << \"nope\" : Can't open file nope in MatFileRead().");
  EXPECT_EQ(Line(5), "velk-edit: a.mat: changes saved in a.mat.save");
  EXPECT_EQ(ReadFile("a.mat.save"), MatrixText(1, 1, {9}));

  std::filesystem::create_directory(Path("sub"));
  std::filesystem::create_directory(Path("home"));
  ScopedEnv home("HOME", Path("home"));
  PtySession pty;
  ASSERT_TRUE(pty.Start(VELK_EDIT_PATH, dir_, {"sub/new.mat"}));
  ASSERT_TRUE(pty.Settle());
  ASSERT_TRUE(pty.Keys("1\n1\n"));  // 1 x 1: not the empty matrix it started as
  std::filesystem::remove(Path("sub"));
  kill(pty.pid(), SIGTERM);
  EXPECT_EQ(pty.Finish(), 1);
  EXPECT_EQ(ReadFile("home/new.mat.save"), MatrixText(1, 1, {0}));
  EXPECT_TRUE(Contains(pty.output, "changes saved in " + Path("home/new.mat.save")));
}

// A crash puts the terminal back before the signal takes its course.
TEST_F(EditorTest, ACrashLeavesTheTerminalCooked) {
  rlimit no_core = {0, 0};
  setrlimit(RLIMIT_CORE, &no_core);
  WriteFile("a.mat", MatrixText(1, 1, {1}));
  for (int sig : {SIGSEGV, SIGABRT}) {
    SCOPED_TRACE(sig);
    PtySession pty;
    ASSERT_TRUE(pty.Start(VELK_EDIT_PATH, dir_, {"a.mat"}));
    ASSERT_TRUE(pty.Settle());
    ASSERT_TRUE(pty.Keys("j"));
    termios raw = {};
    ASSERT_EQ(tcgetattr(pty.terminal(), &raw), 0);
    ASSERT_EQ(raw.c_lflag & (ICANON | ECHO), 0u);
    kill(pty.pid(), sig);
    EXPECT_NE(pty.Finish(), 0);
    ExpectCooked(pty.terminal());
  }
}

// "w" on a full disk says so until the next key; Ctrl-S is a plain key while raw.
TEST_F(EditorTest, AFailedWriteIsShownAndFlowControlIsOffWhileRaw) {
  WriteFile("a.mat", MatrixText(1, 2, {1, 2}));
  Open({"a.mat"});
  termios modes = {};
  ASSERT_EQ(tcgetattr(pty_.terminal(), &modes), 0);
  EXPECT_FALSE(modes.c_iflag & IXON);
  Keys("jw/dev/full\n");
  EXPECT_EQ(Line(2), "  Size :  [   1,  2 ]    Can't write file /dev/full");
  Run({{"\x13l", 1, 2, {1, 2}, At(1, 2)}});
  EXPECT_EQ(Line(2), "  Size :  [   1,  2 ]");
  EXPECT_EQ(Quit(), 0);
  ExpectCooked(pty_.terminal());
}

// A late rest of an arrow key still makes the key; a lone Escape still quits.
TEST_F(EditorTest, ASplitArrowSequenceMovesTheCursor) {
  WriteFile("a.mat", MatrixText(2, 2, {1, 2, 3, 4}));
  ScopedEnv delay("VELK_ESCDELAY", "1000");  // generous: a loaded machine is slow too
  Open({"a.mat"});
  Keys("j");
  for (const char *rest : {"[B", "OC"}) {
    ASSERT_TRUE(pty_.Send("\x1b"));
    usleep(20000);
    ASSERT_TRUE(pty_.Send(rest));
  }
  EXPECT_EQ(Cursor(), At(2, 2));
  EXPECT_EQ(pty_.screen.unknown, 0);
  pty_.Send("\x1b");
  EXPECT_EQ(pty_.Finish(), 0);
}

// A folder or a pipe is reported and skipped, and the exit status says so.
TEST_F(EditorTest, NamesThatAreNoRegularFilesAreSkipped) {
  std::filesystem::create_directory(Path("dir"));
  ASSERT_EQ(mkfifo(Path("fifo").c_str(), 0600), 0);
  Open({"dir", "a.mat", "fifo"});
  EXPECT_TRUE(Contains(pty_.output, "velk-edit: dir: Is a directory\r\n"));
  EXPECT_EQ(Line(1), "  Name :  [ a.mat ]");
  EXPECT_EQ(Quit(), 1);
  EXPECT_TRUE(Contains(pty_.output, "velk-edit: fifo: Not a regular file\r\n"));
  EXPECT_EQ(ReadFile("a.mat"), "# 0 0\n");
  EXPECT_TRUE(std::filesystem::is_directory(Path("dir")));
}

}  // namespace velk_test
