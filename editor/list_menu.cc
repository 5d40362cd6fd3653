#include "editor/list_menu.h"

#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "container/list.h"
#include "container/string.h"
#include "editor/terminal.h"

namespace {

// ---- Signals while a menu is up ----

// The disposition SIGHUP had when the menu took the four signals: one
// variable for all four, so it is the one every signal gets back.
TermSignalHandler previous_handler = nullptr;
struct sigaction saved[4];
constexpr int kMenuSignals[] = {SIGINT, SIGTERM, SIGQUIT, SIGHUP};

constexpr char kClearHome[] = "\x1b[2J\x1b[1;1H";

extern "C" void MenuSignal(int sig) {
  TermMode(kTermCookedAfter);
  ssize_t written = write(1, kClearHome, sizeof kClearHome - 1);
  (void)written;
  TermSignalHandler handler = previous_handler;
  TermSetSignals(handler != nullptr ? handler : SIG_DFL);
  if (handler != nullptr && handler != SIG_IGN && handler != SIG_DFL) handler(sig);
  _exit(sig != 0 ? 1 : 0);
}

void TakeSignals() {
  for (int k = 0; k < 4; k++) sigaction(kMenuSignals[k], nullptr, &saved[k]);
  previous_handler = TermTakeSignals(MenuSignal);
  TermSetEditExit(MenuSignal);  // Ctrl-C among the keys ends the menu the same way
}

void GiveBackSignals() {
  TermSetEditExit(nullptr);
  for (int k = 0; k < 4; k++) sigaction(kMenuSignals[k], &saved[k], nullptr);
}

// ---- Drawing ----

struct Layout {
  const char *const *items;
  int count;
  int width;    // of the longest item
  int column;   // 1-based, of the item lines
  int spacing;  // 2 below nine items, else 1
};

int Row(const Layout &layout, int item) { return 4 + (item - 1) * layout.spacing; }

void DrawItem(const Layout &layout, int item, bool current) {
  char number[16];
  snprintf(number, sizeof number, "%2d. ", item);
  std::string line = std::string(number) + layout.items[item - 1];
  line.resize(std::max(line.size(), static_cast<size_t>(layout.width + 4)), ' ');
  ScreenCursor(Row(layout, item) - 1, layout.column - 1);
  if (current) fputs("\x1b[7m", stdout);
  fputs(line.c_str(), stdout);
  if (current) fputs("\x1b[0m", stdout);
}

void DrawPrompt(const Layout &layout) {
  ScreenPrintAt(6 + (layout.count - 1) * layout.spacing - 1, layout.column - 1, "Select a menu number:");
}

}  // namespace

int TermMenu(const char *title, const char *const *items, int count, int def) {
  if (count < 1) return 0;  // nothing to choose
  Layout layout{items, count, 0, 1, count < 9 ? 2 : 1};
  for (int k = 0; k < count; k++) layout.width = std::max(layout.width, static_cast<int>(strlen(items[k])));
  layout.column = std::max(1, (81 - layout.width) / 2);
  int current = def >= 1 && def <= count ? def : 1;

  ScreenClear();
  ScreenCursor(0, 0);
  TakeSignals();
  ScreenPrintAt(1, std::max(1, (81 - static_cast<int>(strlen(title))) / 2) - 1, title);
  for (int k = 1; k <= count; k++) DrawItem(layout, k, k == current);
  DrawPrompt(layout);

  int tens = 0;  // "+" typed before a digit
  for (;;) {
    int key = TermNextKey();
    int next = current;
    if (IsEnter(key)) break;
    if (key == kKeyCtrlN || key == ' ' || key == 'j' || key == 'n' || key == kKeyDown) {
      next = current % count + 1;
    } else if (key == kKeyCtrlP || key == 'k' || key == 'p' || key == kKeyUp) {
      next = current == 1 ? count : current - 1;
    } else if (key >= '0' && key <= '9') {
      int item = 10 * tens + (key - '0');
      if (item >= 1 && item <= count) next = item;
    }
    tens = key == '+' ? tens + 1 : 0;
    if (next != current) {
      DrawItem(layout, current, false);
      DrawItem(layout, next, true);
      DrawPrompt(layout);
      current = next;
    }
  }
  ScreenClear();
  ScreenCursor(0, 0);
  ScreenFlush();
  GiveBackSignals();
  return current;
}

int ListMenu(List *l, int def) {
  for (int k = 0; k < l->length; k++) {
    if (l->classes[k] != kListString) {
      ListSetMessage("menu(%s)", l->name[0] != '\0' ? l->name : "{...}");
      ListError("ListMenu()", "Contents of menu must be string", l);
    }
  }
  if (def < 1 || def > l->length - 1) ListError("ListMenu()", "Invalid default item number", l);
  std::vector<const char *> items;
  for (int k = 1; k < l->length; k++) items.push_back(static_cast<String *>(l->values[k].object)->text);
  return TermMenu(static_cast<String *>(l->values[0].object)->text, items.data(), l->length - 1, def);
}

String *vkStringEdit(String *s) {
  constexpr size_t kEditMax = 4095;
  std::string prompt = s->name[0] != '\0' ? std::string(s->name) + " = " : "String = ";
  std::string text = s->text != nullptr ? s->text : "";
  if (text.size() > kEditMax) text.resize(kEditMax);
  fprintf(stderr, "%s%s", prompt.c_str(), text.c_str());
  fflush(stderr);
  for (;;) {
    int key = TermReadKey();
    if (IsEnter(key)) break;
    if (key == kKeyCtrlC) {
      TermMode(kTermCookedAfter);
      TermExit(SIGINT);
    }
    if (IsErase(key)) {
      if (!text.empty()) {
        text.pop_back();
        fputs("\b \b", stderr);
      }
    } else if (key >= 32 && key < 256 && key != kKeyDelete && text.size() < kEditMax) {
      text.push_back(static_cast<char>(key));
      fputc(key, stderr);
    }
    fflush(stderr);
  }
  // The line is drawn again whole after the carriage return.
  fprintf(stderr, "\r%s%s\n", prompt.c_str(), text.c_str());
  fflush(stderr);
  return vkStringSetText(s, text.c_str());
}
