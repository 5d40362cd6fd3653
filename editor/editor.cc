#include "editor/editor.h"

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

#include "core/alloc.h"
#include "core/constructors.h"
#include "core/registry.h"
#include "editor/entry.h"
#include "editor/rescue.h"
#include "editor/terminal.h"
#include "io/output_file.h"
#include "io/text_format.h"
#include "matrix/block.h"
#include "matrix/operations.h"
#include "scalar/complex.h"
#include "scalar/fill.h"

namespace {

// ============================================================================
// Layout (0-based screen positions)
// ============================================================================

constexpr int kNameLine = 1;
constexpr int kSizeLine = 2;  // also the prompt line
constexpr int kHeaderColumn = 1;
constexpr int kRowsField = 12;
constexpr int kColsField = 16;
constexpr int kCountWidth = 3;  // size and goto fields
constexpr int kPromptColumn = 25;
constexpr int kGotoRowField = 34;
constexpr int kGotoColField = 38;
constexpr int kLabelLine = 4;
constexpr int kBodyLine = 5;
constexpr int kNumberWidth = 17;

// The longest texts the fields take; further keys are refused with a bell.
constexpr size_t kNumberMax = kNumberWidth;  // a number fills its field
constexpr size_t kCountMax = 4;              // up to 9999 rows, columns or goto target
constexpr size_t kPromptMax = 1023;          // bytes of an answer to a prompt

// Below this window the layout cannot show a prompt and one row of numbers;
// a notice stands in for the screen until the window grows.
constexpr int kMinLines = 10;
constexpr int kMinColumns = 60;
constexpr const char *kSmallNotice = "velk-edit needs a window of 60 x 10 at least";

// The undo history keeps at most this many bytes (VELK_UNDO_MAX overrides),
// dropping the oldest changes first.
constexpr double kUndoBytes = 256.0 * 1024 * 1024;

constexpr const char *kDigits = "0123456789";
constexpr const char *kNumberKeys = "0123456789eE.-";

// Status of every matrix the editor holds: operations that assign sweep the
// temporaries, and the editor's matrices must outlive those sweeps.
constexpr int kHeld = kKept;

// ============================================================================
// State
// ============================================================================

// Module-wide because drawing and prompts read it.
struct EditorState {
  bool complex = false;  // the matrix shown is complex
  int view = 0;          // 0 whole matrix, 1 real part shown, 2 imaginary part
  int part = 0;          // complex: cursor on the real (0) or imaginary (1) part
  int lines = kScreenLines;  // the window
  int columns = kScreenColumns;
  bool too_small = false;  // below kMinLines x kMinColumns: only the notice shows
  int vis_rows = kScreenLines - 7;
  int vis_cols = (kScreenColumns - 7) / 16;
  int top = 1;  // first visible row and column
  int left = 1;
  int y = 1;  // cursor element
  int x = 1;
  int rows = 0;
  int cols = 0;

  // Elements shown across: a complex element takes two number columns.
  int Across() const { return complex ? vis_cols / 2 : vis_cols; }
};

EditorState E;
bool allow_complex = false;
// The disposition SIGHUP had before the editor took the four signals.
void (*edit_recorded)(int) = nullptr;

Matrix *Hold(Matrix *m) { return MatSetStatus(m, kHeld); }

// One change in the history. Applying it swaps what it holds with what the
// editor has, so the same record undoes and then redoes.
struct Change {
  enum Kind { kValue, kBlock, kWhole } kind = kValue;
  int y = 1, x = 1, part = 0;  // kValue, kBlock: the element or the block's top left
  double value = 0;            // kValue: the element's other value
  // kBlock: the other contents of the block at (y, x). kWhole: the other
  // matrix, with the matrix kept aside and the view that went with it.
  Matrix *held = nullptr;
  Matrix *aside = nullptr;
  int view = 0;
  double bytes = sizeof(Change);
};

// The matrices of one run of the editor. Each is held (kHeld) while any
// field refers to it and undefined when the last reference goes.
struct Session {
  std::string name;  // given to every matrix that replaces the edited one
  int status = 0;    // the input's status, given back with the result
  Matrix *cur = nullptr;
  Matrix *initial = nullptr;  // for reset
  Matrix *aside = nullptr;    // the whole complex matrix while one part is shown
  // The result of the last replacing command. Number entry changes the same
  // record in place; size changes do not go through it.
  Matrix *slot = nullptr;
  Matrix *block = nullptr;    // copied with "i"
  Matrix *deleted = nullptr;  // the last deleted row or column
  bool deleted_row = false;
  int mark_y = 1;
  int mark_x = 1;

  // The undo history: changes to undo (newest last) and to redo.
  std::deque<Change> undo;
  std::vector<Change> redo;
  double history_bytes = 0;
  double history_max = kUndoBytes;
  // How many history entries hold each matrix (and pins while a command runs).
  std::unordered_map<const Matrix *, int> kept;

  bool Holds(const Matrix *m) const {
    return m == cur || m == initial || m == aside || m == slot || m == block || m == deleted ||
           kept.count(m) != 0;
  }
  void Pin(Matrix *m) {
    if (m != nullptr) kept[Hold(m)]++;
  }
  void Unpin(Matrix *m) {
    if (m == nullptr) return;
    auto it = kept.find(m);
    if (--it->second == 0) kept.erase(it);
    Release(m);
  }
  void Release(Matrix *m) {
    if (m != nullptr && !Holds(m)) MatUndef(m);
  }
  void Set(Matrix *&field, Matrix *m) {
    Matrix *old = field;
    field = m == nullptr ? nullptr : Hold(m);
    Release(old);
  }
  void SetCurrent(Matrix *m) {
    if (m == cur) return;
    MatSetName(m, name.c_str());
    Set(cur, m);
  }
};

void SyncShape(const Session &s) {
  E.rows = s.cur->rows;
  E.cols = s.cur->cols;
  E.complex = s.cur->cls == kComplex;
}

// ============================================================================
// Keys
// ============================================================================

enum Action {
  kNone,
  kLeft,
  kRight,
  kDown,
  kUp,
  kLineStart,
  kLineEnd,
  kHome,
  kLast,
  kGoto,
  kRedraw,
  kSize,
  kDelete,
  kPutBack,
  kMark,
  kCopy,
  kOverwrite,
  kIdentity,
  kOnes,
  kZeros,
  kFill,
  kTranspose,
  kRealView,
  kImagView,
  kMakeComplex,
  kReset,
  kRead,
  kWrite,
  kQuit,
  kUndo,
  kRedo,
};

struct Binding {
  int key;
  Action action;
};

constexpr Binding kBindings[] = {
    {'h', kLeft},           {kKeyCtrlB, kLeft},      {kKeyLeft, kLeft},
    {'l', kRight},          {kKeyCtrlF, kRight},     {' ', kRight},
    {kKeyLineFeed, kRight}, {kKeyReturn, kRight},    {kKeyRight, kRight},
    {'j', kDown},           {kKeyCtrlN, kDown},      {kKeyDown, kDown},
    {'k', kUp},             {kKeyCtrlP, kUp},        {kKeyUp, kUp},
    {'^', kLineStart},      {kKeyCtrlA, kLineStart}, {'$', kLineEnd},
    {kKeyCtrlE, kLineEnd},  {'<', kHome},            {'>', kLast},
    {'g', kGoto},           {kKeyCtrlL, kRedraw},    {'s', kSize},
    {'d', kDelete},         {kKeyCtrlK, kDelete},    {kKeyDelete, kDelete},
    {'p', kPutBack},        {kKeyCtrlY, kPutBack},   {'m', kMark},
    {'i', kCopy},           {'o', kOverwrite},       {'E', kIdentity},
    {'O', kOnes},           {'Z', kZeros},           {'F', kFill},
    {'T', kTranspose},      {'R', kRealView},        {'I', kImagView},
    {'C', kMakeComplex},    {'Q', kReset},           {'r', kRead},
    {'w', kWrite},          {'q', kQuit},            {kKeyEscape, kQuit},
    {'u', kUndo},           {kKeyCtrlR, kRedo},
};

Action Lookup(int key) {
  for (const Binding &b : kBindings)
    if (b.key == key) return b.action;
  return kNone;
}

// The commands that end size mode and are carried out at once.
bool LeavesSizeMode(Action a) {
  switch (a) {
    case kRead: case kWrite: case kQuit: case kTranspose: case kMakeComplex:
    case kRealView: case kImagView: case kZeros: case kIdentity:
    case kUndo: case kRedo:  // a size of 0 typed by mistake can be taken back
      return true;
    default:
      return false;
  }
}

bool Accepts(const char *set, int key) {
  return key > 0 && key < 128 && strchr(set, key) != nullptr;
}

bool IsDigit(int key) { return Accepts(kDigits, key); }

bool StartsNumber(int key) { return IsDigit(key) || key == '-' || key == '.'; }

// ============================================================================
// Rendering
// ============================================================================

std::string Format(const char *format, ...) __attribute__((format(printf, 1, 2)));
std::string Format(const char *format, ...) {
  va_list args;
  va_start(args, format);
  int n = vsnprintf(nullptr, 0, format, args);
  va_end(args);
  std::string text(static_cast<size_t>(n > 0 ? n : 0), '\0');
  va_start(args, format);
  vsnprintf(text.data(), text.size() + 1, format, args);
  va_end(args);
  return text;
}

void DrawHeader(const Session &s) {
  static const char *const kNameFormat[] = {" Name :  [ %s ]", " Name :  [ Re(%s) ]",
                                            " Name :  [ Im(%s) ]"};
  if (E.too_small) return;
  ScreenClearToEnd(kNameLine, kHeaderColumn);
  ScreenPrintAt(kNameLine, kHeaderColumn, Format(kNameFormat[E.view], s.cur->name).c_str());
  ScreenClearToEnd(kSizeLine, kHeaderColumn);
  ScreenPrintAt(kSizeLine, kHeaderColumn, Format(" Size :  [ %3d,%3d ]", E.rows, E.cols).c_str());
}

// Draws the visible elements and their labels; cells outside the matrix are
// left alone (a change of shape clears the screen first).
void DrawBody(const Session &s) {
  if (E.too_small) return;
  int across = std::min(E.Across(), E.cols - E.left + 1);
  int down = std::min(E.vis_rows, E.rows - E.top + 1);
  for (int i = 0; i < across; i++) {
    int c = E.left + i;
    if (E.complex)
      ScreenPrintAt(kLabelLine, 32 * i + 11, Format("(%3d)-Real      (%3d)-Imag", c, c).c_str());
    else
      ScreenPrintAt(kLabelLine, 16 * i + 13, Format("(%3d)", c).c_str());
  }
  const double *values = static_cast<const double *>(s.cur->elements);
  char re[kRealTextSize];
  char im[kRealTextSize];
  for (int k = 0; k < down; k++) {
    int r = E.top + k;
    ScreenPrintAt(kBodyLine + k, 1, Format("(%3d)", r).c_str());
    for (int i = 0; i < across; i++) {
      long long at = static_cast<long long>(r - 1) * E.cols + (E.left + i - 1);
      if (E.complex) {
        // The trailing E is overwritten by the next element, so it stays
        // visible behind the last one only.
        RealToString(values[2 * at], re, "%16.8E");
        RealToString(values[2 * at + 1], im, "%16.8E");
        ScreenPrintAt(kBodyLine + k, 32 * i + 7, Format("%16s%16sE", re, im).c_str());
      } else {
        RealToString(values[at], re, "%16.8E");
        ScreenPrintAt(kBodyLine + k, 16 * i + 7, Format("%16s", re).c_str());
      }
    }
  }
}

void Redraw(const Session &s) {
  ScreenClear();
  if (E.too_small) ScreenPrintAt(0, 0, kSmallNotice);
  DrawHeader(s);
  DrawBody(s);
}

int CursorLine() { return kBodyLine + E.y - E.top; }

int CursorColumn() {
  int slot = E.complex ? 2 * (E.x - E.left) + E.part : E.x - E.left;
  return 16 * slot + 8;
}

void PlaceCursor() { ScreenCursor(CursorLine(), CursorColumn()); }

// First visible index that shows the last `visible` of n.
int LastStart(int n, int visible) { return n >= visible ? n - visible + 1 : 1; }

// The window's size gives the visible rows and number columns.
void ReadWindow() {
  TermReadWindow(&E.lines, &E.columns);
  E.too_small = E.lines < kMinLines || E.columns < kMinColumns;
  E.vis_rows = E.lines - 7;
  E.vis_cols = (E.columns - 7) / 16;
}

// ============================================================================
// Keys and the window
// ============================================================================

// What is shown over the screen while a key is awaited (a prompt, a field),
// innermost last: after a new window size the screen is painted again and
// each of these on it, the last one placing the cursor.
std::vector<std::function<void()>> overlays;

struct Overlay {
  explicit Overlay(std::function<void()> paint) { overlays.push_back(std::move(paint)); }
  ~Overlay() { overlays.pop_back(); }
  Overlay(const Overlay &) = delete;
  Overlay &operator=(const Overlay &) = delete;
};

// The session whose screen is up; null between runs.
Session *active = nullptr;

// A new window size, or a resume: everything painted again, with the cursor
// kept in view.
void Repaint() {
  ReadWindow();
  // A smaller window keeps the cursor in view, a larger one fills up.
  if (E.y - E.top >= E.vis_rows) E.top = E.y - E.vis_rows + 1;
  if (E.x - E.left >= E.Across()) E.left = E.x - E.Across() + 1;
  E.top = std::max(std::min(E.top, LastStart(E.rows, E.vis_rows)), 1);
  E.left = std::max(std::min(E.left, LastStart(E.cols, E.Across())), 1);
  Redraw(*active);
  if (E.too_small) return;
  PlaceCursor();
  for (auto &paint : overlays) paint();
}

// The editor's next key. While the window is too small, keys do nothing.
int NextKey() {
  for (;;) {
    int key = TermNextKey();
    if (key == kKeyWindow)
      Repaint();
    else if (!E.too_small)
      return key;
  }
}

void Refuse() { fputs("\a", stdout); }

// ============================================================================
// Fields and prompts
// ============================================================================

// Edits a field that starts with `first`: blanked to `width`, the text
// rewritten after every key, ended by Enter. Backspace may remove every
// character, the first one too. A line of -1 puts the field at the cursor.
std::string FieldEdit(int line, int column, int width, size_t max, int first,
                      const char *accepted) {
  std::string text(1, static_cast<char>(first));
  std::string blank(static_cast<size_t>(width), ' ');
  auto paint = [&] {
    int at_line = line < 0 ? CursorLine() : line;
    int at_column = line < 0 ? CursorColumn() : column;
    ScreenPrintAt(at_line, at_column, blank.c_str());
    ScreenPrintAt(at_line, at_column, text.c_str());
  };
  Overlay shown(paint);
  for (;;) {
    paint();
    int key = NextKey();
    if (IsEnter(key)) return text;
    if (IsErase(key)) {
      if (!text.empty()) text.pop_back();
    } else if (Accepts(accepted, key)) {
      if (text.size() < max)
        text.push_back(static_cast<char>(key));
      else
        Refuse();  // the field is full: nothing is cut later
    }
  }
  return text;
}

int ParseCount(const std::string &text) {
  long n = strtol(text.c_str(), nullptr, 10);
  return static_cast<int>(std::min(n, 0x7fffffffL));
}

bool IsContinuation(char c) { return (c & 0xC0) == 0x80; }

// Reads an answer behind `prompt` on the prompt line; with max_length > 0 the
// answer ends when it is that long. The line is cleared afterwards. Bytes of
// UTF-8 characters are taken as typed; Backspace removes a whole character.
std::string PromptLine(const char *prompt, size_t max_length) {
  int column = kPromptColumn + static_cast<int>(strlen(prompt));
  std::string text;
  auto paint_answer = [&] {
    // Control bytes never reach the screen; a long answer shows its end.
    std::string shown;
    int cells = 0;
    for (char c : text) {
      if ((c >= 0 && c < ' ') || c == kKeyDelete) continue;
      shown.push_back(c);
      if (!IsContinuation(c)) cells++;
    }
    size_t from = 0;
    for (int room = std::max(E.columns - column - 1, 0); cells > room; cells--)
      do from++; while (from < shown.size() && IsContinuation(shown[from]));
    // The blank behind the text wipes a character just erased.
    ScreenPrintAt(kSizeLine, column, (shown.substr(from) + " ").c_str());
    ScreenCursor(kSizeLine, column + cells);
  };
  ScreenPrintAt(kSizeLine, kPromptColumn, prompt);
  Overlay shown([&] {
    ScreenPrintAt(kSizeLine, kPromptColumn, prompt);
    paint_answer();
  });
  while (max_length == 0 || text.size() < max_length) {
    int key = NextKey();
    if (IsEnter(key)) break;
    if (IsErase(key)) {
      while (!text.empty() && IsContinuation(text.back())) text.pop_back();
      if (!text.empty()) text.pop_back();
    } else if (max_length > 0) {
      // A bounded answer (the reset question) ends at its length whatever the
      // key was; a key that is no character stands as one that answers nothing.
      text.push_back(key >= 0 && key < 0x100 ? static_cast<char>(key) : '\0');
    } else if (key >= ' ' && key < 0x100 && key != kKeyDelete) {
      if (text.size() < kPromptMax)
        text.push_back(static_cast<char>(key));
      else
        Refuse();
    }
    paint_answer();
  }
  ScreenClearToEnd(kSizeLine, kPromptColumn);
  // Out before the answer is used: a failure report must not be painted over.
  ScreenFlush();
  return text;
}

// ============================================================================
// Movement
// ============================================================================

// First visible index for a goto to t: centred, the last ones near the end,
// 1 near the start.
int GotoStart(int t, int n, int visible) {
  int half = visible / 2;
  if (t > n - half) return LastStart(n, visible);
  if (t > half) return t - half;
  return 1;
}

void Home() {
  E.y = E.x = E.top = E.left = 1;
  E.part = 0;
}

void StepColumnRight() {
  E.x++;
  if (E.x - E.left == E.Across()) E.left++;
}

void StepColumnLeft() {
  E.x--;
  if (E.x < E.left) E.left--;
}

void MoveRight() {
  if (E.complex && E.part == 0) {
    E.part = 1;
    return;
  }
  if (E.x < E.cols) {
    StepColumnRight();
  } else if (E.y < E.rows) {
    E.y++;
    E.x = E.left = 1;
    if (E.y - E.top == E.vis_rows) E.top++;
  } else {
    return;  // last element
  }
  E.part = 0;
}

// Returns true at the first element, where moving back enters size mode.
bool MoveLeft() {
  if (E.complex && E.part == 1) {
    E.part = 0;
    return false;
  }
  if (E.x > 1) {
    StepColumnLeft();
  } else if (E.y > 1) {
    E.y--;
    E.x = E.cols;
    E.left = LastStart(E.cols, E.Across());
    if (E.y < E.top) E.top--;
  } else {
    return true;
  }
  if (E.complex) E.part = 1;
  return false;
}

void MoveDown() {
  if (E.y < E.rows) {
    E.y++;
    if (E.y - E.top == E.vis_rows) E.top++;
  } else if (E.complex && E.part == 0) {
    E.y = E.top = 1;
    E.part = 1;
  } else if (E.x < E.cols) {
    E.y = E.top = 1;
    StepColumnRight();
    E.part = 0;
  }
}

bool MoveUp() {
  if (E.y > 1) {
    E.y--;
    if (E.y < E.top) E.top--;
  } else if (E.complex && E.part == 1) {
    E.y = E.rows;
    E.top = LastStart(E.rows, E.vis_rows);
    E.part = 0;
  } else if (E.x > 1) {
    E.y = E.rows;
    E.top = LastStart(E.rows, E.vis_rows);
    StepColumnLeft();
    if (E.complex) E.part = 1;
  } else {
    return true;
  }
  return false;
}

void MoveLast() {
  E.y = E.rows;
  E.x = E.cols;
  E.top = LastStart(E.rows, E.vis_rows);
  E.left = LastStart(E.cols, E.Across());
  E.part = 0;
}

void Goto() {
  ScreenPrintAt(kSizeLine, kPromptColumn, Format("Goto : [ %3d,%3d ]", E.y, E.x).c_str());
  int target[2] = {E.y, E.x};
  const int limit[2] = {E.rows, E.cols};
  const int column[2] = {kGotoRowField, kGotoColField};
  int field = 0;
  Overlay shown([&] {
    ScreenPrintAt(kSizeLine, kPromptColumn,
                  Format("Goto : [ %3d,%3d ]", target[0], target[1]).c_str());
    ScreenCursor(kSizeLine, column[field]);
  });
  for (;;) {
    ScreenCursor(kSizeLine, column[field]);
    int key = NextKey();
    if (IsDigit(key)) {
      int n = ParseCount(FieldEdit(kSizeLine, column[field], kCountWidth, kCountMax, key, kDigits));
      target[field] = std::clamp(n, 1, limit[field]);
      if (field == 1) break;
      field = 1;
    } else if (Lookup(key) == kLeft) {
      field = 0;
    }
  }
  ScreenClearToEnd(kSizeLine, kPromptColumn);
  E.y = target[0];
  E.x = target[1];
  E.top = GotoStart(E.y, E.rows, E.vis_rows);
  E.left = GotoStart(E.x, E.cols, E.Across());
  E.part = 0;
}

// ============================================================================
// History
// ============================================================================

double MatrixBytes(const Matrix *m) {
  if (m == nullptr) return 0;
  return static_cast<double>(m->rows) * m->cols * (m->cls == kComplex ? 16 : 8);
}

// The first number of element (y, x) of the current matrix, or its imaginary
// part with part 1; the elements of a row follow each other.
double *Element(const Session &s, int y, int x, int part) {
  long long at = static_cast<long long>(y - 1) * s.cur->cols + (x - 1);
  return MatReal(s.cur) + (s.cur->cls == kComplex ? 2 * at + part : at);
}

void SwapValue(const Session &s, Change &c) { std::swap(*Element(s, c.y, c.x, c.part), c.value); }

// Swaps the block held with the block at (y, x): the same class, inside.
void SwapBlock(const Session &s, Change &c) {
  int width = c.held->cols * (c.held->cls == kComplex ? 2 : 1);
  double *b = MatReal(c.held);
  for (int i = 0; i < c.held->rows; i++) {
    double *row = Element(s, c.y + i, c.x, 0);
    for (int j = 0; j < width; j++) std::swap(row[j], b[i * width + j]);
  }
}

// Puts what the history holds in a field of the session, and the field's
// matrix in the history.
void Exchange(Session &s, Matrix *&field, Matrix *&held) {
  Matrix *from_field = field;
  if (from_field != nullptr) s.kept[from_field]++;
  field = held;
  held = from_field;
  if (field != nullptr) {
    auto it = s.kept.find(field);
    if (--it->second == 0) s.kept.erase(it);
  }
}

void DropChange(Session &s, Change &c) {
  s.history_bytes -= c.bytes;
  s.Unpin(c.held);
  s.Unpin(c.aside);
}

// A new change: what could be redone is gone, and the oldest changes go
// while the history is over its bytes.
void Record(Session &s, const Change &c) {
  for (Change &r : s.redo) DropChange(s, r);
  s.redo.clear();
  s.history_bytes += c.bytes;
  s.undo.push_back(c);
  while (s.history_bytes > s.history_max && !s.undo.empty()) {
    DropChange(s, s.undo.front());
    s.undo.pop_front();
  }
}

void ClearHistory(Session &s) {
  for (Change &c : s.undo) DropChange(s, c);
  for (Change &c : s.redo) DropChange(s, c);
  s.undo.clear();
  s.redo.clear();
}

// What a command may replace, pinned while it runs: it goes into the history
// if the command replaced it.
struct Before {
  Matrix *cur;
  Matrix *aside;
  int view;
};

Before Keep(Session &s) {
  s.Pin(s.cur);
  s.Pin(s.aside);
  return {s.cur, s.aside, E.view};
}

void Settle(Session &s, const Before &b) {
  if (s.cur == b.cur && s.aside == b.aside && E.view == b.view) {
    s.Unpin(b.cur);
    s.Unpin(b.aside);
    return;
  }
  Change c;
  c.kind = Change::kWhole;
  c.held = b.cur;
  c.aside = b.aside;
  c.view = b.view;
  c.bytes += MatrixBytes(b.cur) + MatrixBytes(b.aside);
  Record(s, c);
}

// Puts the cursor on (y, x), scrolling only when it is out of view.
void ShowElement(int y, int x, int part) {
  E.y = y;
  E.x = x;
  E.part = E.complex ? part : 0;
  if (y < E.top || y >= E.top + E.vis_rows) E.top = GotoStart(y, E.rows, E.vis_rows);
  if (x < E.left || x >= E.left + E.Across()) E.left = GotoStart(x, E.cols, E.Across());
}

// Undoes the last change (or redoes the last undone one); the cursor goes
// to the element or block changed, or home after a whole matrix.
void UndoRedo(Session &s, bool undo) {
  if (undo ? s.undo.empty() : s.redo.empty()) {
    Refuse();
    return;
  }
  Change c = undo ? s.undo.back() : s.redo.back();
  if (undo)
    s.undo.pop_back();
  else
    s.redo.pop_back();
  switch (c.kind) {
    case Change::kValue:
      SwapValue(s, c);
      ShowElement(c.y, c.x, c.part);
      DrawBody(s);
      break;
    case Change::kBlock:
      SwapBlock(s, c);
      ShowElement(c.y, c.x, 0);
      DrawBody(s);
      break;
    case Change::kWhole:
      Exchange(s, s.cur, c.held);
      Exchange(s, s.aside, c.aside);
      std::swap(E.view, c.view);
      SyncShape(s);
      Home();
      Redraw(s);
      break;
  }
  if (undo)
    s.redo.push_back(c);
  else
    s.undo.push_back(c);
}

// ============================================================================
// Commands
// ============================================================================

// Rows (row) or columns from..to of m; to = from - 1 gives an empty block.
Matrix *Slice(Matrix *m, bool row, int from, int to) {
  return Hold(row ? MatCut(m, from, 1, to, m->cols) : MatCut(m, 1, from, m->rows, to));
}

// a above b (row) or a beside b.
Matrix *Join(bool row, Matrix *a, Matrix *b) {
  return Hold(row ? MatCatColumn(a, b) : MatCatRow(a, b));
}

void Delete(Session &s) {
  int key = NextKey();
  if (key != 'r' && key != 'c') return;
  bool row = key == 'r';
  int n = row ? E.rows : E.cols;
  int p = row ? E.y : E.x;
  if (n == 1) return;
  Matrix *removed = Slice(s.cur, row, p, p);
  Matrix *rest;
  if (p == 1) {
    rest = Slice(s.cur, row, 2, n);
  } else if (p == n) {
    rest = Slice(s.cur, row, 1, n - 1);
  } else {
    Matrix *before = Slice(s.cur, row, 1, p - 1);
    Matrix *after = Slice(s.cur, row, p + 1, n);
    rest = Join(row, before, after);
    MatUndef(before);
    MatUndef(after);
  }
  s.Set(s.deleted, removed);
  s.deleted_row = row;
  s.SetCurrent(rest);
}

void PutBack(Session &s) {
  if (s.deleted == nullptr) return;
  bool row = s.deleted_row;
  int n = row ? E.rows : E.cols;
  int p = row ? E.y : E.x;
  Matrix *front = s.deleted;
  Matrix *before = nullptr;
  if (p > 1) {
    before = Slice(s.cur, row, 1, p - 1);
    front = Join(row, before, s.deleted);
  }
  Matrix *after = Slice(s.cur, row, p, n);
  Matrix *result = Join(row, front, after);
  MatUndef(after);
  if (before != nullptr) {
    MatUndef(before);
    MatUndef(front);
  }
  s.SetCurrent(result);
}

// One part of a complex matrix is shown and edited as a real matrix (after
// "C" in a part's view the view number stays, but the whole matrix shows).
bool PartShown() { return E.view != 0 && !E.complex; }

// Joins the part shown back with the other part of the matrix kept aside.
Matrix *JoinBack(Session &s) {
  bool real_shown = E.view == 1;
  Matrix *other = Hold(real_shown ? MatImagPart(s.aside) : MatRealPart(s.aside));
  Matrix *full = real_shown ? MatRealAndImag(s.cur, other) : MatRealAndImag(other, s.cur);
  MatUndef(other);
  return full;
}

// Shows one part (view 1 real, 2 imaginary) of the complex matrix.
void ShowPart(Session &s, int view) {
  if (E.complex) {
    s.Set(s.aside, s.cur);
  } else if (E.view != 0 && E.view != view) {
    s.Set(s.aside, JoinBack(s));
  } else {
    return;
  }
  s.SetCurrent(view == 1 ? MatRealPart(s.aside) : MatImagPart(s.aside));
  E.view = view;
}

void MakeComplex(Session &s) {
  if (!allow_complex || E.complex) return;
  if (E.view != 0) {
    // The view number stays; the whole matrix is shown and edited again.
    s.SetCurrent(JoinBack(s));
    s.Set(s.aside, nullptr);
  } else {
    s.SetCurrent(MatRealToComp(s.cur));
  }
}

void Fill(Session &s) {
  std::string answer = PromptLine("Number to fill : ", 0);
  double value;
  if (sscanf(answer.c_str(), "%lf", &value) == 1) {
    if (E.complex) {
      Complex *c = CompSetStatus(CompDef("", value, 0.0), kHeld);
      s.SetCurrent(C_MatFillDef(E.rows, E.cols, c));
      CompUndef(c);
    } else {
      s.SetCurrent(MatFillDef(E.rows, E.cols, value));
    }
  } else if (s.slot != nullptr) {
    // Deliberately the result of the previous replacing command, which
    // undoes a size change made since then.
    s.SetCurrent(s.slot);
  }
}

void Reset(Session &s) {
  if (PromptLine("Reset to initial matrix [y/n] ? ", 1) != "y") return;
  s.SetCurrent(MatDup(s.initial));
  s.Set(s.aside, nullptr);
  E.view = 0;
}

void Read(Session &s) {
  std::string file = PromptLine("Filename : ", 0);
  if (file.empty()) return;
  s.SetCurrent(MatFileRead(file.c_str()));
  E.view = 0;
}

// A message on the prompt line, there until the next key.
bool notice_shown = false;

void Notice(const std::string &text) {
  ScreenPrintAt(kSizeLine, kPromptColumn, text.c_str());
  Refuse();
  notice_shown = true;
}

// Written safely: a failed write leaves the old file and says so; the
// editing goes on. A file that cannot be opened is the writer's own report.
void Write(Session &s) {
  if (E.view != 0) return;
  std::string file = PromptLine("Filename : ", 0);
  if (file.empty()) return;
  OutputFile out(file.c_str(), false);
  if (out.stream() == nullptr) {
    MatFileWrite(s.cur, file.c_str());  // fails to open as well, and reports it
    return;
  }
  MatWriteText(out.stream(), s.cur);
  if (!out.Finish()) Notice("Can't write file " + file);
}

// The block goes in element by element, its old contents into the history.
// Only the part shown of a complex block goes into one part's view; a
// complex block makes a real matrix complex.
void Overwrite(Session &s) {
  if (s.block == nullptr) return;
  if (E.y + s.block->rows - 1 > E.rows || E.x + s.block->cols - 1 > E.cols) return;
  Matrix *block = s.block;
  if (PartShown() && block->cls == kComplex)
    block = Hold(E.view == 1 ? MatRealPart(block) : MatImagPart(block));
  else if (block->cls != kComplex && s.cur->cls == kComplex)
    block = Hold(MatRealToComp(block));
  if (block->cls != s.cur->cls) {
    Before b = Keep(s);
    s.SetCurrent(MatRealToComp(s.cur));
    Settle(s, b);
    MatPut(s.cur, E.y, E.x, block);
    SyncShape(s);
    Home();
    Redraw(s);
  } else {
    Change c;
    c.kind = Change::kBlock;
    c.y = E.y;
    c.x = E.x;
    c.held = MatDup(block);
    s.Pin(c.held);
    c.bytes += MatrixBytes(c.held);
    SwapBlock(s, c);
    Record(s, c);
    DrawBody(s);
  }
  if (block != s.block) MatUndef(block);
}

// The commands after which the cursor and the view go home and the whole
// screen is redrawn, whether or not they changed anything. Returns false for
// a command ignored while one part is shown.
bool Replace(Session &s, Action a) {
  if ((a == kDelete || a == kPutBack || a == kRead) && E.view != 0) return false;
  Before before = Keep(s);
  switch (a) {
    case kDelete: Delete(s); break;
    case kPutBack: PutBack(s); break;
    case kRead: Read(s); break;
    case kIdentity:
      s.SetCurrent(E.complex ? C_MatIDef2(E.rows, E.cols) : MatIDef2(E.rows, E.cols));
      break;
    case kOnes:
      s.SetCurrent(E.complex ? C_MatOneDef(E.rows, E.cols) : MatOneDef(E.rows, E.cols));
      break;
    case kZeros:
      s.SetCurrent(E.complex ? C_MatZDef2(E.rows, E.cols) : MatZDef2(E.rows, E.cols));
      break;
    case kFill: Fill(s); break;
    case kTranspose: s.SetCurrent(E.complex ? MatConjTrans(s.cur) : MatTrans(s.cur)); break;
    case kRealView: ShowPart(s, 1); break;
    case kImagView: ShowPart(s, 2); break;
    case kMakeComplex: MakeComplex(s); break;
    case kReset: Reset(s); break;
    default:
      s.Unpin(before.cur);
      s.Unpin(before.aside);
      return false;
  }
  Settle(s, before);
  s.Set(s.slot, s.cur);
  SyncShape(s);
  Home();
  Redraw(s);
  return true;
}

// A new size: a zero matrix of the class with the old elements that fit at
// its top left. An unchanged size only redraws the header.
void Resize(Session &s, int rows, int cols) {
  if (rows == E.rows && cols == E.cols) {
    DrawHeader(s);
    return;
  }
  Matrix *m = Hold(MatSameClassZDef(s.cur, rows, cols));
  int keep_rows = std::min(rows, E.rows);
  int keep_cols = std::min(cols, E.cols);
  if (keep_rows > 0 && keep_cols > 0) {
    if (rows >= E.rows && cols >= E.cols) {
      MatPut(m, 1, 1, s.cur);
    } else {
      Matrix *corner = Hold(MatCut(s.cur, 1, 1, keep_rows, keep_cols));
      MatPut(m, 1, 1, corner);
      MatUndef(corner);
    }
  }
  Before before = Keep(s);
  s.SetCurrent(m);
  Settle(s, before);
  SyncShape(s);
  Home();
  Redraw(s);
}

// Sends the cursor to element (1, 1), redrawing the body if the view moves.
void GoHome(const Session &s) {
  bool moved = E.top != 1 || E.left != 1;
  Home();
  if (moved) DrawBody(s);
}

// The size fields. Returns the command key that ended size mode (to be
// carried out at once), or 0 when it ended with the cursor on (1, 1).
int SizeMode(Session &s) {
  if (E.view != 0) return 0;
  int field = 0;
  Overlay shown([&] { ScreenCursor(kSizeLine, field == 0 ? kRowsField : kColsField); });
  for (;;) {
    int column = field == 0 ? kRowsField : kColsField;
    ScreenCursor(kSizeLine, column);
    int key = NextKey();
    Action a = Lookup(key);
    bool leave = false;
    if (IsDigit(key)) {
      int n = ParseCount(FieldEdit(kSizeLine, column, kCountWidth, kCountMax, key, kDigits));
      Resize(s, field == 0 ? n : E.rows, field == 0 ? E.cols : n);
      leave = field == 1;
      field = 1;
    } else if (LeavesSizeMode(a)) {
      if (E.rows > 0 && E.cols > 0) GoHome(s);
      return key;
    } else if (a == kRight) {
      leave = field == 1;
      field = 1;
    } else if (a == kLeft) {
      field = 0;
    } else if (a == kDown) {
      leave = true;
    }
    if (leave) {
      if (E.rows > 0 && E.cols > 0) {
        GoHome(s);
        return 0;
      }
      field = 0;
    }
  }
}

void EnterNumber(Session &s, int first) {
  std::string text = FieldEdit(-1, 0, kNumberWidth, kNumberMax, first, kNumberKeys);
  double value = strtod(text.c_str(), nullptr);
  Change c;
  c.y = E.y;
  c.x = E.x;
  c.part = E.part;
  c.value = value;
  SwapValue(s, c);  // c now holds the old value, to be undone
  Record(s, c);
  MoveRight();
  DrawBody(s);
}

// One key of the main loop other than number entry. Returns true when size
// mode is to be entered.
bool Execute(Session &s, Action a) {
  int top = E.top;
  int left = E.left;
  bool to_size = false;
  switch (a) {
    case kLeft: to_size = MoveLeft(); break;
    case kRight: MoveRight(); break;
    case kDown: MoveDown(); break;
    case kUp: to_size = MoveUp(); break;
    case kLineStart:
      E.x = E.left = 1;
      E.part = 0;
      break;
    case kLineEnd:
      E.x = E.cols;
      E.left = LastStart(E.cols, E.Across());
      E.part = 0;
      break;
    case kHome: Home(); break;
    case kLast: MoveLast(); break;
    case kGoto: Goto(); break;
    case kRedraw: Redraw(s); return false;
    case kSize: return true;
    case kMark:
      s.mark_y = E.y;
      s.mark_x = E.x;
      break;
    case kCopy: s.Set(s.block, MatCut(s.cur, s.mark_y, s.mark_x, E.y, E.x)); break;
    case kOverwrite: Overwrite(s); return false;
    case kWrite: Write(s); break;
    case kUndo: UndoRedo(s, true); return false;
    case kRedo: UndoRedo(s, false); return false;
    case kNone: case kQuit: break;
    default:
      if (Replace(s, a)) return false;
      break;
  }
  if (E.top != top || E.left != left) DrawBody(s);
  return to_size;
}

// ============================================================================
// Signals, entry and quit
// ============================================================================

// Clears the screen and ends the program with status 1 (0 for signal 0),
// the four signals ignored meanwhile. Async-signal-safe.
[[noreturn]] void LeaveNow(int sig) {
  TermSetSignals(SIG_IGN);
  static const char kClearHome[] = "\x1b[2J\x1b[1;1H";
  ssize_t n = write(1, kClearHome, sizeof kClearHome - 1);
  (void)n;
  _exit(sig == 0 ? 0 : 1);
}

// While a session runs, a hang-up or termination is only noted here; the key
// reader then calls EditExit in the main flow, where the work can be saved.
// SIGINT (and any signal between sessions) ends the program at once.
volatile sig_atomic_t editing = 0;

void EditSignal(int sig) {
  if (editing && sig != SIGINT) {
    TermNoteSignal(sig);
    return;
  }
  LeaveNow(sig);
}

// Writes the matrix as it stands to NAME.save when it differs from the one
// the session started with. Once: a failure inside it is not saved again.
void RescueActive() {
  static bool rescuing = false;
  if (active == nullptr || rescuing) return;
  rescuing = true;
  Session &s = *active;
  Matrix *m = PartShown() ? JoinBack(s) : s.cur;
  if (!MatEqualExact(s.initial, m)) RescueMatrix(m, s.name.c_str());
}

[[noreturn]] void ExitOne() { _exit(1); }

// Ctrl-C leaves without writing; a hang-up, SIGTERM and SIGQUIT save first.
void EditExit(int sig) {
  TermSetSignals(SIG_IGN);
  static const char kClearHome[] = "\x1b[2J\x1b[1;1H";
  ssize_t n = write(1, kClearHome, sizeof kClearHome - 1);
  (void)n;
  if (sig != SIGINT) {
    SetFatalHandler(ExitOne);  // the status stays 1 whatever happens in the save
    RescueActive();
  }
  _exit(sig == 0 ? 0 : 1);
}

// A fatal report in the middle of a session saves the work, then ends as
// every fatal report does.
FatalHandler fatal_before = nullptr;

void TakeSignals() {
  edit_recorded = TermTakeSignals(EditSignal);
}

void GiveBackSignals() {
  TermGiveBackSignals(edit_recorded);
  edit_recorded = nullptr;
}

// Everything a session set up for its signals and reports is given back.
void LeaveSession() {
  editing = 0;
  active = nullptr;
  SetFatalHandler(fatal_before);
  TermWatchWindow(false);
  GiveBackSignals();
  TermSetEditExit(nullptr);
}

void FatalRescue() {
  RescueActive();
  FatalHandler next = fatal_before;
  LeaveSession();  // a handler that takes over (a harness) finds no session
  if (next != nullptr) next();
}

Matrix *Quit(Session &s) {
  if (PartShown()) s.SetCurrent(JoinBack(s));
  ScreenClear();
  ScreenCursor(0, 0);
  ScreenFlush();
  LeaveSession();
  Matrix *result = s.cur;
  ClearHistory(s);
  s.Set(s.aside, nullptr);
  s.Set(s.slot, nullptr);
  s.Set(s.block, nullptr);
  s.Set(s.deleted, nullptr);
  s.Set(s.initial, nullptr);
  E = EditorState();
  return MatSetStatus(result, s.status);
}

double UndoLimit() {
  const char *text = getenv("VELK_UNDO_MAX");
  if (text == nullptr || *text == '\0') return kUndoBytes;
  char *end = nullptr;
  double bytes = strtod(text, &end);
  return *end == '\0' && bytes >= 0 ? bytes : kUndoBytes;
}

}  // namespace

Matrix *MatEdit(Matrix *m) {
  ScreenClear();
  ScreenCursor(0, 0);
  ScreenFlush();
  TermSetEditExit(EditExit);
  TakeSignals();

  Session s;
  s.name = m->name != nullptr ? m->name : "";
  s.status = m->status;
  s.cur = Hold(m);
  s.initial = Hold(MatDup(m));
  s.history_max = UndoLimit();
  active = &s;
  editing = 1;
  fatal_before = SetFatalHandler(FatalRescue);
  TermWatchWindow(true);
  E = EditorState();
  ReadWindow();
  SyncShape(s);
  Home();
  if (E.too_small) ScreenPrintAt(0, 0, kSmallNotice);
  DrawHeader(s);
  DrawBody(s);

  bool to_size = true;  // every run starts on the size fields
  for (;;) {
    int key = 0;
    if (to_size || E.rows == 0 || E.cols == 0) key = SizeMode(s);
    if (key == 0) {
      PlaceCursor();
      key = NextKey();
    }
    if (notice_shown) {
      ScreenClearToEnd(kSizeLine, kPromptColumn);
      notice_shown = false;
    }
    to_size = false;
    if (StartsNumber(key)) {
      EnterNumber(s, key);
    } else {
      Action a = Lookup(key);
      if (a == kQuit) break;
      to_size = Execute(s, a);
    }
  }
  return Quit(s);
}

Matrix *MatEditAllowComplex(Matrix *m) {
  allow_complex = true;
  Matrix *result = MatEdit(m);
  allow_complex = false;
  return result;
}
