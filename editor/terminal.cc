#include "editor/terminal.h"

#include <poll.h>
#include <sys/select.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "core/alloc.h"
#include "core/text.h"

namespace {

// ---- module state ----

bool permanent_raw = false;
// The disposition the four signals had before the last switch to raw (the
// one returned for SIGHUP), and the copy kept while the exit handler runs.
// Null (the default disposition) means no record.
void (*recorded)(int) = nullptr;
void (*recorded_copy)(int) = nullptr;
int screen_width = kScreenColumns;
TermExitHandler edit_exit = nullptr;

constexpr tcflag_t kRawLocal = ISIG | ICANON | ECHO | ECHOK | ECHOKE | IEXTEN;

extern "C" void TermExitSignal(int sig) { TermExit(sig); }

// Sets the cooked flags again (they are set, not restored from a copy).
int SetCookedFlags() {
  termios t;
  if (tcgetattr(0, &t) != 0) return errno;
  t.c_lflag |= kRawLocal;
  t.c_oflag |= OPOST;
  if (tcsetattr(0, TCSANOW, &t) != 0) return errno;
  return 0;
}

int SetRaw() {
  termios t;
  if (tcgetattr(0, &t) != 0) return errno;
  recorded = TermTakeSignals(TermExitSignal);
  t.c_lflag &= ~kRawLocal;
  t.c_oflag &= ~static_cast<tcflag_t>(OPOST);
  t.c_cc[VMIN] = 1;
  t.c_cc[VTIME] = 0;
  if (tcsetattr(0, TCSANOW, &t) != 0) return errno;
  return 0;
}

int SetCooked() {
  termios t;
  if (tcgetattr(0, &t) != 0) return errno;
  TermGiveBackSignals(recorded);
  recorded = nullptr;
  return SetCookedFlags();
}

// ---- line input shared by the integer and real forms ----

constexpr size_t kLineMax = 255;

// Collects accepted keys until Enter, echoing them; backspace and delete
// erase. Returns the text typed.
std::string LineInput(const char *accepted, int restore) {
  std::string text;
  for (;;) {
    int c = TermReadKey();
    if (IsEnter(c)) break;
    if (IsErase(c)) {
      if (!text.empty()) {
        text.pop_back();
        fputs("\b \b", stdout);
      }
    } else if (c == kKeyCtrlC) {
      TermMode(kTermCookedAfter);
      TermExit(SIGINT);
    } else if (c == kKeyCtrlZ) {
      TermMode(kTermCooked);
      kill(getpid(), SIGTSTP);
      TermMode(kTermRaw);
    } else if (c != 0 && strchr(accepted, c) != nullptr && text.size() < kLineMax) {
      text.push_back(static_cast<char>(c));
      putchar(c);
    }
    fflush(stdout);
  }
  if (restore) SetCookedFlags();
  return text;
}

constexpr const char *kIntegerKeys = "0123456789-";
constexpr const char *kRealKeys = "0123456789.Ee-";

const char *RealText(double value, char *buffer) {
  return RealToString(value, buffer, "%G");
}

// ---- scalar text files ----

bool Named(const char *name) { return name != nullptr && name[0] != '\0'; }

}  // namespace

// ---- The four signals ----

namespace {
constexpr int kSignals[] = {SIGINT, SIGTERM, SIGQUIT, SIGHUP};
}  // namespace

void TermSetSignals(TermSignalHandler disposition) {
  for (int sig : kSignals) signal(sig, disposition);
}

TermSignalHandler TermTakeSignals(TermSignalHandler handler) {
  TermSignalHandler last = nullptr;
  for (int sig : kSignals) {
    last = signal(sig, SIG_IGN);
    if (last != SIG_IGN) signal(sig, handler);
  }
  return last == SIG_ERR ? nullptr : last;
}

void TermGiveBackSignals(TermSignalHandler previous) {
  if (previous != SIG_DFL && previous != SIG_IGN) TermSetSignals(previous);
}

// ---- Screen ----

void ScreenCursor(int line, int column) { printf("\x1b[%d;%dH", line + 1, column + 1); }

void ScreenClear() { fputs("\x1b[2J", stdout); }

void ScreenPrintAt(int line, int column, const char *text) {
  ScreenCursor(line, column);
  fputs(text, stdout);
}

void ScreenClearToEnd(int line, int column) {
  int n = screen_width - column + 1;
  if (n < 0) n = 0;
  std::string run(static_cast<size_t>(n), ' ');
  ScreenCursor(line, column);
  fputs(run.c_str(), stdout);
  fputs(run.c_str(), stdout);
}

void ScreenFlush() { fflush(stdout); }

// ---- Modes ----

int TermMode(int mode) {
  switch (mode) {
    case kTermRaw: return SetRaw();
    case kTermCooked: return SetCooked();
    default: return SetCookedFlags();
  }
}

void TermRawOn() {
  permanent_raw = true;
  TermMode(kTermRaw);
}

void TermRawOff() {
  permanent_raw = false;
  TermMode(kTermCooked);
}

void TermSetEditExit(TermExitHandler handler) { edit_exit = handler; }

void TermExit(int sig) {
  SetCookedFlags();
  void (*handler)(int) = recorded;
  if (handler != nullptr && handler != SIG_IGN) {
    TermSetSignals(handler);
    recorded_copy = handler;
    recorded = nullptr;
    handler(sig);
  }
  SetCookedFlags();
  _exit(sig == 0 ? 0 : 1);
}

// ---- Keys ----

int TermReadKey() {
  fflush(stdout);
  if (!permanent_raw) TermMode(kTermRaw);
  unsigned char byte = 0;
  for (;;) {
    ssize_t n = read(0, &byte, 1);
    if (n == 1) break;
    if (n < 0 && errno == EINTR) continue;
    if (n < 0 && errno == EAGAIN) {
      pollfd p = {0, POLLIN, 0};
      poll(&p, 1, -1);
      continue;
    }
    // The input is gone: end as the terminal's hang-up would.
    TermExit(SIGHUP);
  }
  if (!permanent_raw) TermMode(byte == kKeyCtrlC ? kTermCookedAfter : kTermCooked);
  return byte;
}

int TermEditKey() {
  int c = TermReadKey();
  if (c == kKeyCtrlC) {
    TermMode(kTermCookedAfter);
    if (edit_exit != nullptr) edit_exit(SIGINT);
    TermExit(SIGINT);
  }
  if (c == kKeyCtrlZ) kill(getpid(), SIGTSTP);
  return c;
}

bool TermKeyWaiting() {
  if (!permanent_raw) TermMode(kTermRaw);
  fd_set set;
  FD_ZERO(&set);
  FD_SET(0, &set);
  timeval zero = {0, 0};
  int n = select(1, &set, nullptr, nullptr, &zero);
  if (!permanent_raw) TermMode(kTermCooked);
  return n > 0;
}

int TermNextKey() {
  int c = TermEditKey();
  if (c != kKeyEscape || !TermKeyWaiting()) return c;
  int intro = TermEditKey();
  if ((intro == '[' || intro == 'O') && TermKeyWaiting()) {
    int final = TermEditKey();
    if (final >= 'A' && final <= 'D') return kKeyUp + (final - 'A');
  }
  // Bounded: a sequence is short, and a held key must not keep us here.
  for (int k = 0; k < 16 && TermKeyWaiting(); k++) TermEditKey();
  return kKeyIgnored;
}

// ---- Line inputs and interactive values ----

int IntegerLineInput(int def, int restore) {
  std::string text = LineInput(kIntegerKeys, restore);
  return text.empty() ? def : static_cast<int>(strtol(text.c_str(), nullptr, 10));
}

double RealLineInput(double def, int restore) {
  std::string text = LineInput(kRealKeys, restore);
  return text.empty() ? def : strtod(text.c_str(), nullptr);
}

int IntegerAsk(const char *name) {
  printf("%s = ", name);
  fflush(stdout);
  return IntegerLineInput(0, 1);
}

int IntegerAskCurrent(const char *name, int value) {
  printf("%s = %d ----> ", name, value);
  fflush(stdout);
  return IntegerLineInput(value, 1);
}

double RealAsk(const char *name) {
  printf("%s = ", name);
  fflush(stdout);
  return RealLineInput(0.0, 1);
}

double RealAskCurrent(const char *name, double value) {
  char buffer[64];
  printf("%s = %s ----> ", name, RealText(value, buffer));
  fflush(stdout);
  return RealLineInput(value, 1);
}

void RealShow(const char *name, double value) {
  char buffer[64];
  if (Named(name))
    printf("%s = %s\n", name, RealText(value, buffer));
  else
    printf("ans = %s\n", RealText(value, buffer));
}

void Pause(const char *message, double seconds) {
  bool has_message = message != nullptr && message[0] != '\0';
  if (seconds != 0) {
    if (has_message) fputs(message, stderr);
    fflush(stderr);
    usleep(static_cast<useconds_t>(seconds * 1000000));
    return;
  }
  fputs(has_message ? message : "Please hit any key to continue !!", stderr);
  fflush(stderr);
  int c = TermReadKey();
  if (has_message) {
    std::string blank(strlen(message), ' ');
    fprintf(stderr, "\r%s\r", blank.c_str());
  } else {
    fputs("\r                                 \r", stderr);
  }
  fflush(stderr);
  if (c == kKeyCtrlC) {
    TermMode(kTermCookedAfter);
    TermExit(SIGINT);
  }
  if (c == kKeyCtrlZ) kill(getpid(), SIGTSTP);
}
