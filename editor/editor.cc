#include "editor/editor.h"

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "core/constructors.h"
#include "core/registry.h"
#include "editor/terminal.h"
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

constexpr size_t kFieldMax = 64;     // longest text a number or count field keeps
constexpr size_t kPromptMax = 1023;  // longest answer to a prompt

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

  bool Holds(const Matrix *m) const {
    return m == cur || m == initial || m == aside || m == slot || m == block || m == deleted;
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
  kComplex,
  kReset,
  kRead,
  kWrite,
  kQuit,
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
    {'C', kComplex},        {'Q', kReset},           {'r', kRead},
    {'w', kWrite},          {'q', kQuit},            {kKeyEscape, kQuit},
};

Action Lookup(int key) {
  for (const Binding &b : kBindings)
    if (b.key == key) return b.action;
  return kNone;
}

// The commands that end size mode and are carried out at once.
bool LeavesSizeMode(Action a) {
  switch (a) {
    case kRead: case kWrite: case kQuit: case kTranspose: case kComplex:
    case kRealView: case kImagView: case kZeros: case kIdentity:
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
  ScreenClearToEnd(kNameLine, kHeaderColumn);
  ScreenPrintAt(kNameLine, kHeaderColumn, Format(kNameFormat[E.view], s.cur->name).c_str());
  ScreenClearToEnd(kSizeLine, kHeaderColumn);
  ScreenPrintAt(kSizeLine, kHeaderColumn, Format(" Size :  [ %3d,%3d ]", E.rows, E.cols).c_str());
}

// Draws the visible elements and their labels; cells outside the matrix are
// left alone (a change of shape clears the screen first).
void DrawBody(const Session &s) {
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
  DrawHeader(s);
  DrawBody(s);
}

int CursorLine() { return kBodyLine + E.y - E.top; }

int CursorColumn() {
  int slot = E.complex ? 2 * (E.x - E.left) + E.part : E.x - E.left;
  return 16 * slot + 8;
}

void PlaceCursor() { ScreenCursor(CursorLine(), CursorColumn()); }

// ============================================================================
// Fields and prompts
// ============================================================================

// Edits a field that starts with `first`: blanked to `width`, the text
// rewritten after every key, ended by Enter. Backspace may remove every
// character, the first one too.
std::string FieldEdit(int line, int column, int width, int first, const char *accepted) {
  std::string text(1, static_cast<char>(first));
  std::string blank(static_cast<size_t>(width), ' ');
  for (;;) {
    ScreenPrintAt(line, column, blank.c_str());
    ScreenPrintAt(line, column, text.c_str());
    int key = TermNextKey();
    if (IsEnter(key)) return text;
    if (IsErase(key)) {
      if (!text.empty()) text.pop_back();
    } else if (Accepts(accepted, key) && text.size() < kFieldMax) {
      text.push_back(static_cast<char>(key));
    }
  }
  return text;
}

int ParseCount(const std::string &text) {
  long n = strtol(text.c_str(), nullptr, 10);
  return static_cast<int>(std::min(n, 0x7fffffffL));
}

// Reads an answer behind `prompt` on the prompt line; with max_length > 0 the
// answer ends when it is that long. The line is cleared afterwards.
std::string PromptLine(const char *prompt, size_t max_length) {
  int column = kPromptColumn + static_cast<int>(strlen(prompt));
  ScreenPrintAt(kSizeLine, kPromptColumn, prompt);
  std::string text;
  while (max_length == 0 || text.size() < max_length) {
    int key = TermNextKey();
    if (IsEnter(key)) break;
    if (IsErase(key)) {
      if (!text.empty()) text.pop_back();
    } else if (max_length > 0) {
      // A bounded answer (the reset question) ends at its length whatever the
      // key was; a key that is no character stands as one that answers nothing.
      text.push_back(key >= 0 && key < 0x100 ? static_cast<char>(key) : '\0');
    } else if (key >= ' ' && key < kKeyDelete && text.size() < kPromptMax) {
      text.push_back(static_cast<char>(key));
    }
    // The blank behind the text wipes a character just erased.
    std::string shown;
    for (char c : text)
      if (c >= ' ' && c < kKeyDelete) shown.push_back(c);  // control bytes never reach the screen
    ScreenPrintAt(kSizeLine, column, (shown + " ").c_str());
    ScreenCursor(kSizeLine, column + static_cast<int>(shown.size()));
  }
  ScreenClearToEnd(kSizeLine, kPromptColumn);
  // Out before the answer is used: a failure report must not be painted over.
  ScreenFlush();
  return text;
}

// ============================================================================
// Movement
// ============================================================================

// First visible index that shows the last `visible` of n.
int LastStart(int n, int visible) { return n >= visible ? n - visible + 1 : 1; }

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
  for (;;) {
    ScreenCursor(kSizeLine, column[field]);
    int key = TermNextKey();
    if (IsDigit(key)) {
      int n = ParseCount(FieldEdit(kSizeLine, column[field], kCountWidth, key, kDigits));
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
  int key = TermNextKey();
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

void Write(Session &s) {
  if (E.view != 0) return;
  std::string file = PromptLine("Filename : ", 0);
  if (!file.empty()) MatFileWrite(s.cur, file.c_str());
}

void Overwrite(Session &s) {
  if (s.block == nullptr) return;
  if (E.y + s.block->rows - 1 > E.rows || E.x + s.block->cols - 1 > E.cols) return;
  int cls = s.cur->cls;
  MatPut(s.cur, E.y, E.x, s.block);
  SyncShape(s);
  if (s.cur->cls != cls) {
    Home();
    Redraw(s);
  } else {
    DrawBody(s);
  }
}

// The commands after which the cursor and the view go home and the whole
// screen is redrawn, whether or not they changed anything. Returns false for
// a command ignored while one part is shown.
bool Replace(Session &s, Action a) {
  switch (a) {
    case kDelete:
      if (E.view != 0) return false;
      Delete(s);
      break;
    case kPutBack:
      if (E.view != 0) return false;
      PutBack(s);
      break;
    case kRead:
      if (E.view != 0) return false;
      Read(s);
      break;
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
    case kComplex: MakeComplex(s); break;
    case kReset: Reset(s); break;
    default: return false;
  }
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
  s.SetCurrent(m);
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
  for (;;) {
    int column = field == 0 ? kRowsField : kColsField;
    ScreenCursor(kSizeLine, column);
    int key = TermNextKey();
    Action a = Lookup(key);
    bool leave = false;
    if (IsDigit(key)) {
      int n = ParseCount(FieldEdit(kSizeLine, column, kCountWidth, key, kDigits));
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
  std::string text = FieldEdit(CursorLine(), CursorColumn(), kNumberWidth, first, kNumberKeys);
  double value = strtod(text.c_str(), nullptr);
  if (E.complex) {
    ComplexValue v = *C_MatGetPtr(s.cur, E.y, E.x);
    (E.part == 0 ? v.re : v.im) = value;
    C_MatSetValue(s.cur, E.y, E.x, v);
  } else {
    MatSetValue(s.cur, E.y, E.x, value);
  }
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

void EditExit(int sig) {
  TermSetSignals(SIG_IGN);
  static const char kClearHome[] = "\x1b[2J\x1b[1;1H";
  ssize_t n = write(1, kClearHome, sizeof kClearHome - 1);
  (void)n;
  _exit(sig == 0 ? 0 : 1);
}

void TakeSignals() {
  edit_recorded = TermTakeSignals(EditExit);
}

void GiveBackSignals() {
  TermGiveBackSignals(edit_recorded);
  edit_recorded = nullptr;
}

Matrix *Quit(Session &s) {
  if (E.view != 0 && !E.complex) s.SetCurrent(JoinBack(s));
  ScreenClear();
  ScreenCursor(0, 0);
  ScreenFlush();
  GiveBackSignals();
  TermSetEditExit(nullptr);
  Matrix *result = s.cur;
  s.Set(s.aside, nullptr);
  s.Set(s.slot, nullptr);
  s.Set(s.block, nullptr);
  s.Set(s.deleted, nullptr);
  s.Set(s.initial, nullptr);
  E = EditorState();
  return MatSetStatus(result, s.status);
}

}  // namespace

Matrix *MatEdit(Matrix *m) {
  ScreenClear();
  ScreenCursor(0, 0);
  ScreenFlush();
  TakeSignals();
  TermSetEditExit(EditExit);

  Session s;
  s.name = m->name != nullptr ? m->name : "";
  s.status = m->status;
  s.cur = Hold(m);
  s.initial = Hold(MatDup(m));
  E = EditorState();
  SyncShape(s);
  Home();
  DrawHeader(s);
  DrawBody(s);

  bool to_size = true;  // every run starts on the size fields
  for (;;) {
    int key = 0;
    if (to_size || E.rows == 0 || E.cols == 0) key = SizeMode(s);
    if (key == 0) {
      PlaceCursor();
      key = TermNextKey();
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
