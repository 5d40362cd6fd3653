// The list menu on a pseudo-terminal. The test program runs itself as the
// menu's process: MenuChild.Run is skipped unless the parent asked for it
// through the environment, and then shows the menu and prints the choice.
#include <gtest/gtest.h>
#include <signal.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "container/list.h"
#include "container/string.h"
#include "core/matrix.h"
#include "editor/list_menu.h"
#include "pty_session.h"

namespace {

using velk_test::PtySession;

// A hang-up handler the menu's process may have before the menu: the menu
// hands every signal to it on the way out.
extern "C" void MarkHangUpHandler(int sig) {
  char text[32];
  int n = snprintf(text, sizeof text, "previous handler %d\n", sig);
  ssize_t written = write(1, text, static_cast<size_t>(n));
  (void)written;
}

TEST(MenuChild, Run) {
  if (getenv("VELK_MENU_HUP_HANDLER") != nullptr) signal(SIGHUP, MarkHangUpHandler);
  if (const char *text = getenv("VELK_EDIT_TEXT")) {
    MatInit();
    String *s = vkStringEdit(vkStringSetName(vkStringFromText(text), "s"));
    printf("edited [%s]\n", s->text);
    fflush(stdout);
    _exit(0);
  }
  const char *items = getenv("VELK_MENU_ITEMS");
  if (items == nullptr) GTEST_SKIP() << "runs only as the menu's process";
  int count = atoi(items);
  MatInit();
  List *l = ListDef("menu", count + 1);
  ListSetObject(l, 1, kListString, vkStringFromText("Choose"));
  for (int k = 1; k <= count; k++)
    ListSetObject(l, k + 1, kListString, vkStringFromText(("Item " + std::to_string(k)).c_str()));
  int chosen = ListMenu(l, atoi(getenv("VELK_MENU_DEFAULT")));
  struct sigaction term;
  sigaction(SIGTERM, nullptr, &term);
  printf("chosen %d, terminate %s\n", chosen, term.sa_handler == SIG_DFL ? "default" : "changed");
  fflush(stdout);
  _exit(0);
}

std::string Self() {
  char path[4096];
  ssize_t n = readlink("/proc/self/exe", path, sizeof path - 1);
  return std::string(path, n > 0 ? static_cast<size_t>(n) : 0);
}

class MenuTest : public testing::Test {
 protected:
  void Open(int items, int def) {
    setenv("VELK_MENU_ITEMS", std::to_string(items).c_str(), 1);
    setenv("VELK_MENU_DEFAULT", std::to_string(def).c_str(), 1);
    ASSERT_TRUE(pty_.Start(Self(), "/", {"--gtest_filter=MenuChild.Run"}));
    unsetenv("VELK_MENU_ITEMS");
    unsetenv("VELK_MENU_DEFAULT");
    ASSERT_TRUE(pty_.Settle());
  }

  // The item drawn last in reverse video.
  std::string Current() const {
    size_t on = pty_.output.rfind("\x1b[7m");
    if (on == std::string::npos) return "";
    size_t off = pty_.output.find("\x1b[0m", on);
    return pty_.output.substr(on + 4, off - on - 4);
  }

  // The item number the process printed after the menu, or -1.
  int Chosen() {
    EXPECT_EQ(pty_.Finish(), 0);
    size_t at = pty_.output.rfind("chosen ");
    return at == std::string::npos ? -1 : atoi(pty_.output.c_str() + at + 7);
  }

  void Layout(int items, int def, int step, const char *key);
  PtySession pty_;
};

// Items and title 6 wide: at column (81 - 6) / 2, counted from 1. Eight items
// are double spaced, nine single; either end of line chooses.
void MenuTest::Layout(int items, int def, int step, const char *key) {
  const std::string pad(36, ' ');
  auto item = [](int k) { return " " + std::to_string(k) + ". Item " + std::to_string(k); };
  Open(items, def);
  EXPECT_EQ(pty_.screen.Trimmed(1), pad + "Choose");
  for (int k = 1; k <= items; k++) EXPECT_EQ(pty_.screen.Trimmed(3 + step * (k - 1)), pad + item(k));
  EXPECT_EQ(pty_.screen.Trimmed(5 + step * (items - 1)), pad + "Select a menu number:");
  EXPECT_EQ(Current(), item(def));
  pty_.Keys(key);
  EXPECT_EQ(Chosen(), def);
  // Cleared and homed before returning, and the signals as they were.
  EXPECT_EQ(pty_.screen.Trimmed(0), "chosen " + std::to_string(def) + ", terminate default");
}

TEST_F(MenuTest, EightItemsAreDoubleSpaced) { Layout(8, 3, 2, "\r"); }
TEST_F(MenuTest, NineItemsAreSingleSpaced) { Layout(9, 9, 1, "\n"); }

TEST_F(MenuTest, MovesWrapAndArrowSequencesMove) {
  Open(4, 1);
  const std::pair<std::string, int> steps[] = {
      {"k", 4}, {"j", 1}, {" ", 2}, {"n", 3}, {"\x0e", 4}, {"\x0e", 1}, {"p", 4},
      {"\x10", 3}, {"\x1b[A", 2}, {"\x1b[B", 3}, {"x", 3}, {"0", 3}, {"7", 3},
  };
  for (const auto &[keys, current] : steps) {
    ASSERT_TRUE(pty_.Send(keys)) << keys;
    EXPECT_EQ(Current(), " " + std::to_string(current) + ". Item " + std::to_string(current)) << keys;
  }
  pty_.Keys("\r");
  EXPECT_EQ(Chosen(), 3);
}

TEST_F(MenuTest, DigitsWithPlusSelectBeyondNine) {
  Open(12, 1);
  // Items 7 wide: every line is padded to 11 characters.
  pty_.Keys("+2");
  EXPECT_EQ(Current(), "12. Item 12");
  pty_.Keys("+5");  // no item 15: stays
  EXPECT_EQ(Current(), "12. Item 12");
  pty_.Keys("+0");
  EXPECT_EQ(Current(), "10. Item 10");
  pty_.Keys("+x4");  // another key between: the plus no longer counts
  EXPECT_EQ(Current(), " 4. Item 4 ");
  pty_.Keys("\r");
  EXPECT_EQ(Chosen(), 4);
}

TEST_F(MenuTest, ASignalClearsTheScreenCallsTheHandlerHangUpHadAndEndsWithStatusOne) {
  setenv("VELK_MENU_HUP_HANDLER", "1", 1);
  Open(3, 2);
  unsetenv("VELK_MENU_HUP_HANDLER");
  kill(pty_.pid(), SIGTERM);
  EXPECT_EQ(pty_.Finish(), 1);
  EXPECT_NE(pty_.output.find("\x1b[2J\x1b[1;1Hprevious handler " + std::to_string(SIGTERM)), std::string::npos);
  termios t;
  ASSERT_EQ(tcgetattr(pty_.terminal(), &t), 0);
  EXPECT_NE(t.c_lflag & ICANON, 0u);  // the terminal is cooked again
}

TEST_F(MenuTest, CtrlCEndsTheMenuAsAnInterrupt) {
  Open(3, 2);
  pty_.Send("\x03");
  EXPECT_EQ(pty_.Finish(), 1);
  EXPECT_EQ(pty_.output.find("chosen"), std::string::npos);
}

TEST_F(MenuTest, StringEditingStartsFromTheCurrentText) {
  setenv("VELK_EDIT_TEXT", "abcd", 1);
  Open(0, 0);
  unsetenv("VELK_EDIT_TEXT");
  pty_.Keys("\x7f\x7fXY\r");
  EXPECT_EQ(pty_.Finish(), 0);
  EXPECT_NE(pty_.output.find("edited [abXY]"), std::string::npos) << pty_.output;
  EXPECT_NE(pty_.output.find("s = abcd"), std::string::npos);
}

TEST(MenuDeathTest, OnlyStringsAndADefaultAmongTheItems) {
  MatInit();
  List *l = ListSetName(ListDef("m", 3), "m");
  for (int k = 1; k <= 3; k++) ListSetObject(l, k, kListString, vkStringFromText("x"));
  EXPECT_EXIT(ListMenu(l, 3), testing::ExitedWithCode(0),
              "^\nInvalid default item number in \"m \\(3 element\\(s\\)\\)\" in ListMenu\\(\\)\\.\n$");
  EXPECT_EXIT(ListMenu(l, 0), testing::ExitedWithCode(0), "Invalid default item number");
  ListSetElement(l, 2, kListInteger, ListValue{.integer = 1});
  EXPECT_EXIT(ListMenu(l, 1), testing::ExitedWithCode(0),
              "^\nmenu\\(m\\) : Contents of menu must be string  in ListMenu\\(\\)\\.\n$");
}

}  // namespace
