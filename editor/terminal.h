// Terminal services: the screen, raw and cooked modes, keys, line inputs,
// prompts, pause, and the scalar text files.
//
// Input is descriptor 0, screen output standard output, pause messages
// standard error. The screen is a grid addressed with ANSI sequences,
// positions 0-based here and 1-based on the wire: 24 x 80 until
// TermReadWindow reads the window's real size.
#ifndef VELK_EDITOR_TERMINAL_H
#define VELK_EDITOR_TERMINAL_H

constexpr int kScreenLines = 24;
constexpr int kScreenColumns = 80;

// Named keys. A key is the byte read, except the arrow keys: terminals send
// them as ESC [ A..D (or ESC O A..D) and they become the codes past 255.
enum Key : int {
  kKeyIgnored = -1,  // an escape sequence that is not an arrow, consumed whole
  kKeyCtrlA = 1,
  kKeyCtrlB = 2,
  kKeyCtrlC = 3,
  kKeyCtrlE = 5,
  kKeyCtrlF = 6,
  kKeyBackspace = 8,
  kKeyLineFeed = 10,
  kKeyCtrlK = 11,
  kKeyCtrlL = 12,
  kKeyReturn = 13,
  kKeyCtrlN = 14,
  kKeyCtrlP = 16,
  kKeyCtrlR = 18,
  kKeyCtrlY = 25,
  kKeyCtrlZ = 26,
  kKeyEscape = 27,
  kKeyDelete = 127,
  kKeyUp = 0x101,
  kKeyDown,
  kKeyRight,
  kKeyLeft,
  // Not a key: the window changed size or the program was resumed, and the
  // screen is to be painted again (TermEditKey with TermWatchWindow on).
  kKeyWindow,
};

inline bool IsEnter(int key) { return key == kKeyLineFeed || key == kKeyReturn; }
// Backspace erases in every field; so does Delete, which most terminals send
// for the Backspace key.
inline bool IsErase(int key) { return key == kKeyBackspace || key == kKeyDelete; }

// ---- Screen (standard output) ----
//
// Output is buffered by stdio and flushed before every key is read, so one
// frame leaves in one write however many pieces it was built from.

// Writes "\e[%d;%dH" for the 0-based (line, column).
void ScreenCursor(int line, int column);
// Writes "\e[2J"; the cursor does not move.
void ScreenClear();
// Writes the text at (line, column), cut at the last column (counting a
// UTF-8 character as one cell); nothing below the last line.
void ScreenPrintAt(int line, int column, const char *text);
// Clears from (line, column) with a run of width - column + 1 blanks written
// twice: the second copy lands after the first, over the next line's start.
// In a window other than 24 x 80 one run ends at the last column.
void ScreenClearToEnd(int line, int column);
void ScreenFlush();

// Reads the window's size (TIOCGWINSZ on standard output, else on standard
// input; 24 x 80 when neither tells) and makes it the screen's.
void TermReadWindow(int *lines, int *columns);

// ---- Modes ----

enum TermModeCode {
  kTermRaw = 0,          // exit handler on the four signals, raw flags
  kTermCooked = 1,       // recorded handlers back, cooked flags
  kTermCookedAfter = 2,  // cooked flags only (after an interrupt)
};

// Switches descriptor 0. Returns 0, or the error number of a failed
// tcgetattr/tcsetattr (then nothing else is changed).
int TermMode(int mode);
// Raw between key reads too, until TermRawOff.
void TermRawOn();
void TermRawOff();

// ---- Keys ----

// One byte from descriptor 0, in raw mode for the read only (unless
// permanently raw). A closed input ends the program like a hang-up.
int TermReadKey();
// TermReadKey for the editor: Ctrl-C ends the program through the installed
// editor exit handler (status 1); Ctrl-Z suspends and then returns 26.
int TermEditKey();
// True when a byte is waiting on descriptor 0.
bool TermKeyWaiting();
// True when a byte arrives on descriptor 0 within `ms` milliseconds.
bool TermKeyWithin(int ms);
// TermEditKey with the arrow sequences decoded. An ESC followed by nothing
// within the escape delay is the Escape key; any other sequence behind an
// ESC is read and gives kKeyIgnored.
int TermNextKey();
// The escape delay in milliseconds: VELK_ESCDELAY (0 to 1000) or 40.
int TermEscapeDelay();

// ---- The four signals: SIGINT, SIGTERM, SIGQUIT and SIGHUP ----

using TermSignalHandler = void (*)(int);
// Sets all four to `disposition`.
void TermSetSignals(TermSignalHandler disposition);
// Gives the four to handler, except those that are ignored, which stay so.
// Returns the disposition SIGHUP had (null for the default), to give back.
TermSignalHandler TermTakeSignals(TermSignalHandler handler);
// Sets the four back to `previous` when that is a function (the default and
// ignore dispositions are left as the taker set them).
void TermGiveBackSignals(TermSignalHandler previous);

// The handler the editor installs for Ctrl-C and its signals; TermEditKey
// calls it with SIGINT. Null: the terminal's own exit handler is used.
// While one is set, SIGTERM, SIGQUIT and SIGHUP (and a closed input) are
// not acted on inside the signal: they are noted (TermNoteSignal) and the
// key reader calls the handler with them in the main flow.
using TermExitHandler = void (*)(int);
void TermSetEditExit(TermExitHandler handler);

// Async-signal-safe: records sig for the key reader and wakes it. A second
// termination signal while the first is still pending ends the program at
// once (cooked flags back, status 1).
void TermNoteSignal(int sig);

// On: SIGWINCH and SIGCONT are noted, and TermEditKey returns kKeyWindow
// after them. Off: their earlier dispositions are back.
void TermWatchWindow(bool on);

// SIGSEGV, SIGBUS, SIGFPE, SIGILL and SIGABRT put the terminal's cooked
// flags back (async-signal-safe) and are raised again with the disposition
// they had before. Installed once, by the first switch to raw.
void TermGuardCrashes();

// The terminal's exit handler: cooked flags back, the recorded handler
// called, then exit with status 1 (0 for signal number 0).
[[noreturn]] void TermExit(int sig);

// ---- Line inputs and interactive values ----

// Digits and "-" until Enter; backspace or delete erases. An empty line gives
// `def`. With `restore` the cooked flags are set back at the end.
int IntegerLineInput(int def, int restore);
// The same for a real: digits, ".", "E", "e", "-".
double RealLineInput(double def, int restore);

// "%s = " then an integer line (default 0).
int IntegerAsk(const char *name);
// "%s = %d ----> " then an integer line defaulting to the value.
int IntegerAskCurrent(const char *name, int value);
// "%s = " then a real line (default 0).
double RealAsk(const char *name);
// "%s = %s ----> " (value in "%G") then a real line defaulting to the value.
double RealAskCurrent(const char *name, double value);
// "%s = %s\n" (value in "%G"), or "ans = %s\n" without a name.
void RealShow(const char *name, double value);

// Seconds not 0: message on stderr, then sleep. Seconds 0: the message (or
// "Please hit any key to continue !!") until a key, then erased.
void Pause(const char *message, double seconds);

#endif
