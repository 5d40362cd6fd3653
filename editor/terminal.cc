#include "editor/terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
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
int screen_lines = kScreenLines;
TermExitHandler edit_exit = nullptr;
// Raw mode took flow control (IXON) away; cooked mode gives it back. Only
// what was there is given back.
volatile sig_atomic_t flow_control_taken = 0;

constexpr tcflag_t kRawLocal = ISIG | ICANON | ECHO | ECHOK | ECHOKE | IEXTEN;

// ---- signals noted for the main flow ----
//
// A handler only writes the signal's number to a pipe; the key reader waits
// on the pipe beside descriptor 0, so a signal that arrives while a key is
// awaited is acted on at once, and one that arrives while a command runs, at
// the next key.

int note_pipe[2] = {-1, -1};
volatile sig_atomic_t ending_noted = 0;  // a termination signal waits in the pipe

constexpr int kEndingSignals = (1 << SIGTERM) | (1 << SIGQUIT) | (1 << SIGHUP);
constexpr int kWindowSignals = (1 << SIGWINCH) | (1 << SIGCONT);
bool window_watched = false;
struct sigaction window_before[2];
constexpr int kWindowSignalList[2] = {SIGWINCH, SIGCONT};

void MakeNotePipe() {
  if (note_pipe[0] >= 0) return;
  if (pipe(note_pipe) != 0) {
    note_pipe[0] = note_pipe[1] = -1;
    return;
  }
  for (int fd : note_pipe) {
    fcntl(fd, F_SETFL, fcntl(fd, F_GETFL) | O_NONBLOCK);
    fcntl(fd, F_SETFD, FD_CLOEXEC);
  }
}

// The signals noted since the last call, as bits (1 << sig); the pipe is
// emptied.
int TakeNotes() {
  unsigned char drain[64];
  int noted = 0;
  ssize_t n;
  while ((n = read(note_pipe[0], drain, sizeof drain)) > 0)
    for (ssize_t k = 0; k < n; k++)
      if (drain[k] < 31) noted |= 1 << drain[k];
  return noted;
}

extern "C" void NoteSignal(int sig) { TermNoteSignal(sig); }

extern "C" void TermExitSignal(int sig) {
  if (edit_exit != nullptr && sig != SIGINT) {
    TermNoteSignal(sig);
    return;
  }
  TermExit(sig);
}

// Sets the cooked flags again (they are set, not restored from a copy).
// Async-signal-safe.
int SetCookedFlags() {
  termios t;
  if (tcgetattr(0, &t) != 0) return errno;
  t.c_lflag |= kRawLocal;
  t.c_oflag |= OPOST;
  if (flow_control_taken) t.c_iflag |= IXON;
  if (tcsetattr(0, TCSANOW, &t) != 0) return errno;
  flow_control_taken = 0;
  return 0;
}

int SetRaw() {
  termios t;
  if (tcgetattr(0, &t) != 0) return errno;
  TermGuardCrashes();
  recorded = TermTakeSignals(TermExitSignal);
  // Ctrl-S and Ctrl-Q are keys here, not a freeze of the output.
  if (t.c_iflag & IXON) {
    t.c_iflag &= ~static_cast<tcflag_t>(IXON);
    flow_control_taken = 1;
  }
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
  if (line >= screen_lines || column >= screen_width) return;
  ScreenCursor(line, column);
  // Up to the last column: a UTF-8 continuation byte takes no cell.
  int room = screen_width - column;
  size_t n = 0;
  for (; text[n] != '\0'; n++)
    if ((text[n] & 0xC0) != 0x80 && room-- == 0) break;
  fwrite(text, 1, n, stdout);
}

void ScreenClearToEnd(int line, int column) {
  bool standard = screen_width == kScreenColumns && screen_lines == kScreenLines;
  int n = standard ? screen_width - column + 1 : screen_width - column;
  if (n < 0 || line >= screen_lines) return;
  std::string run(static_cast<size_t>(n), ' ');
  ScreenCursor(line, column);
  fputs(run.c_str(), stdout);
  if (standard) fputs(run.c_str(), stdout);
}

void TermReadWindow(int *lines, int *columns) {
  winsize ws = {};
  screen_lines = kScreenLines;
  screen_width = kScreenColumns;
  for (int fd : {1, 0}) {
    if (ioctl(fd, TIOCGWINSZ, &ws) == 0 && ws.ws_row > 0 && ws.ws_col > 0) {
      screen_lines = ws.ws_row;
      screen_width = ws.ws_col;
      break;
    }
  }
  *lines = screen_lines;
  *columns = screen_width;
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

void TermSetEditExit(TermExitHandler handler) {
  if (handler != nullptr) MakeNotePipe();
  edit_exit = handler;
}

void TermNoteSignal(int sig) {
  int saved = errno;
  bool ending = ((1 << sig) & kEndingSignals) != 0;
  if (ending && (ending_noted || note_pipe[1] < 0)) {
    // Asked twice while the first is still waiting for the main flow (a
    // command that does not end), or nowhere to note it: leave now.
    SetCookedFlags();
    _exit(1);
  }
  if (ending) ending_noted = 1;
  if (note_pipe[1] >= 0) {
    unsigned char byte = static_cast<unsigned char>(sig);
    ssize_t n = write(note_pipe[1], &byte, 1);
    (void)n;  // a full pipe already wakes the reader
  }
  errno = saved;
}

void TermWatchWindow(bool on) {
  if (on == window_watched) return;
  window_watched = on;
  if (on) MakeNotePipe();
  for (int k = 0; k < 2; k++) {
    if (on) {
      struct sigaction note = {};
      note.sa_handler = NoteSignal;
      sigemptyset(&note.sa_mask);
      sigaction(kWindowSignalList[k], &note, &window_before[k]);
    } else {
      sigaction(kWindowSignalList[k], &window_before[k], nullptr);
    }
  }
}

namespace {

constexpr int kCrashSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};
struct sigaction crash_before[5];

extern "C" void CrashSignal(int sig) {
  SetCookedFlags();
  for (int k = 0; k < 5; k++)
    if (kCrashSignals[k] == sig) sigaction(sig, &crash_before[k], nullptr);
  raise(sig);  // delivered with the earlier disposition once this returns
}

}  // namespace

void TermGuardCrashes() {
  static bool guarded = false;
  if (guarded) return;
  guarded = true;
  for (int k = 0; k < 5; k++) {
    struct sigaction crash = {};
    crash.sa_handler = CrashSignal;
    sigemptyset(&crash.sa_mask);
    sigaction(kCrashSignals[k], &crash, &crash_before[k]);
  }
}

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

namespace {

// A termination signal noted for the editor: its exit handler runs here, in
// the main flow, as it would for Ctrl-C.
[[noreturn]] void EndNoted(int sig) {
  TermMode(kTermCookedAfter);
  if (edit_exit != nullptr) edit_exit(sig);
  TermExit(sig);
}

// The next byte of descriptor 0, waiting on the note pipe too; with
// `window`, kKeyWindow when the window changed meanwhile.
int WaitByte(bool window) {
  for (;;) {
    pollfd p[2] = {{0, POLLIN, 0}, {note_pipe[0], POLLIN, 0}};
    int ready = poll(p, note_pipe[0] >= 0 ? 2 : 1, -1);
    int noted = ready > 0 && (p[1].revents & POLLIN) ? TakeNotes() : 0;
    for (int sig : {SIGHUP, SIGTERM, SIGQUIT})
      if (noted & (1 << sig)) EndNoted(sig);
    if (noted & kWindowSignals) {
      if (window) return kKeyWindow;
      continue;
    }
    if (ready < 0 || !(p[0].revents & (POLLIN | POLLHUP | POLLERR))) continue;
    unsigned char byte = 0;
    ssize_t n = read(0, &byte, 1);
    if (n == 1) return byte;
    if (n < 0 && (errno == EINTR || errno == EAGAIN)) continue;
    // The input is gone: end as the terminal's hang-up would.
    if (edit_exit != nullptr) EndNoted(SIGHUP);
    TermExit(SIGHUP);
  }
}

int ReadKey(bool window) {
  fflush(stdout);
  if (!permanent_raw) TermMode(kTermRaw);
  int key = WaitByte(window);
  if (!permanent_raw) TermMode(key == kKeyCtrlC ? kTermCookedAfter : kTermCooked);
  return key;
}

}  // namespace

int TermReadKey() { return ReadKey(false); }

int TermEditKey() {
  int c = ReadKey(window_watched);
  if (c == kKeyCtrlC) {
    TermMode(kTermCookedAfter);
    if (edit_exit != nullptr) edit_exit(SIGINT);
    TermExit(SIGINT);
  }
  if (c == kKeyCtrlZ) kill(getpid(), SIGTSTP);
  return c;
}

bool TermKeyWaiting() { return TermKeyWithin(0); }

bool TermKeyWithin(int ms) {
  if (!permanent_raw) TermMode(kTermRaw);
  pollfd p = {0, POLLIN, 0};
  int n = 0;
  // A signal (a window change) does not cut the wait short.
  auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
  for (;;) {
    auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        until - std::chrono::steady_clock::now());
    n = poll(&p, 1, static_cast<int>(std::max<long long>(left.count(), 0)));
    if (n >= 0 || errno != EINTR) break;
  }
  if (!permanent_raw) TermMode(kTermCooked);
  return n > 0;
}

int TermEscapeDelay() {
  static int delay = [] {
    const char *text = getenv("VELK_ESCDELAY");
    if (text == nullptr || *text == '\0') return 40;
    char *end = nullptr;
    long ms = strtol(text, &end, 10);
    return *end == '\0' && ms >= 0 && ms <= 1000 ? static_cast<int>(ms) : 40;
  }();
  return delay;
}

int TermNextKey() {
  int c = TermEditKey();
  // Over a slow link the rest of an arrow key may come a little later.
  if (c != kKeyEscape || !TermKeyWithin(TermEscapeDelay())) return c;
  int intro = TermEditKey();
  if ((intro == '[' || intro == 'O') && TermKeyWithin(TermEscapeDelay())) {
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
