// Formatted reading into lists. Each conversion of the format has its own
// piece of the format, running from the end of the previous piece up to and
// including its conversion character (the last piece also takes the rest), so
// literal text before a conversion is matched with it and every value lands
// in its own element.
//
// A format whose pieces are all valid is applied in one scanf call, which
// gives the same result as applying the pieces one after another (each
// starts where the previous one stopped) at a third of the cost. When that
// call stops early, a text is scanned again piece by piece to tell a
// mismatch from the end of the text; a stream cannot go back, and its end of
// file decides instead.
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "container/list_walk.h"
#include "container/string.h"
#include "sys/stream_table.h"

namespace {

// One conversion and the piece of the format applied with it.
struct Piece {
  std::string text;  // literal text, "%", width, modifier, conversion (and the tail, last)
  char conversion;
  char modifier;  // 'l', 'h' or 0
  int width;      // 0: none given
  bool skipped;   // "%hf" and its kin: nothing is read, the element stays as made
  bool valid;     // a conversion this reader makes
  ListClass made;  // the element class it makes
};

constexpr int kSlotsMax = 16;  // conversions of the one-call form
constexpr int kCharWidthMax = 1 << 20;  // wider "%c" fields are no conversion

struct Format {
  std::string source;
  int count = 0;  // the number of "%" characters: the elements made
  std::vector<Piece> pieces;
  bool one_call = false;
  std::string joined;  // the pieces that read, as one format
  std::vector<const Piece *> reading;  // those pieces
  // A format ending in a plain "%s" reads that word from a stream into a
  // buffer of its own first: the common case of a line ending in a word
  // costs no allocation.
  std::string joined_bounded;  // empty when the format does not end so
};

constexpr int kWordChunk = 4095;  // "%4095s": the buffer's part of a word

bool IsReal(char c) { return strchr("eEfgG", c) != nullptr && c != '\0'; }
bool IsInteger(char c) { return strchr("diouxX", c) != nullptr && c != '\0'; }
bool IsText(char c) { return c == 'c' || c == 's'; }

// Splits a format into its pieces. The last one parsed is kept: a reading
// loop over one format parses it once.
const Format &Parse(const char *format) {
  static Format parsed;
  static bool ready = false;
  if (ready && parsed.source == format) return parsed;
  parsed = Format();
  ready = true;
  parsed.source = format;
  const std::string &f = parsed.source;
  const size_t n = f.size();
  for (char c : f)
    if (c == '%') parsed.count++;
  size_t at = 0;
  for (int c = 0; c < parsed.count; c++) {
    Piece piece{};
    size_t percent = f.find('%', at);
    if (percent == std::string::npos) {
      // A doubled "%" counts twice but makes one piece: the count outruns
      // the pieces, and the ones beyond are no conversions.
      parsed.pieces.push_back(piece);
      continue;
    }
    size_t k = percent + 1;
    while (k < n && f[k] >= '0' && f[k] <= '9') {
      if (piece.width < 100000000) piece.width = piece.width * 10 + (f[k] - '0');
      k++;
    }
    if (k < n && (f[k] == 'l' || f[k] == 'h')) piece.modifier = f[k++];
    piece.conversion = k < n ? f[k] : '\0';
    size_t end = k < n ? k + 1 : n;
    piece.skipped = IsReal(piece.conversion) && piece.modifier == 'h';
    piece.made = IsReal(piece.conversion) ? kListReal : IsInteger(piece.conversion) ? kListInteger : kListString;
    piece.valid = IsReal(piece.conversion) || IsInteger(piece.conversion) ||
                  (IsText(piece.conversion) && piece.modifier == 0 && piece.width <= kCharWidthMax);
    // "%s" lets the library allocate what the input really holds ("%ms");
    // "%c" reads exactly its width into a buffer of that size.
    piece.text = f.substr(at, end - at);
    if (piece.conversion == 's') piece.text.insert(piece.text.size() - 1, "m");
    at = end;
    parsed.pieces.push_back(piece);
  }
  if (!parsed.pieces.empty()) parsed.pieces.back().text += f.substr(at);
  parsed.one_call = true;
  for (const Piece &p : parsed.pieces) {
    if (!p.valid) parsed.one_call = false;
    if (p.skipped) continue;
    parsed.joined += p.text;
    parsed.reading.push_back(&p);
  }
  if (parsed.reading.size() > static_cast<size_t>(kSlotsMax)) parsed.one_call = false;
  const std::string plain_word = "%ms";
  const std::string &j = parsed.joined;
  if (parsed.one_call && j.size() >= plain_word.size() &&
      j.compare(j.size() - plain_word.size(), plain_word.size(), plain_word) == 0 &&
      !parsed.pieces.back().skipped)
    parsed.joined_bounded = j.substr(0, j.size() - plain_word.size()) + "%" + std::to_string(kWordChunk) + "s";
  return parsed;
}

// Where a conversion's value lands before it becomes an element.
union Slot {
  int i;
  long l;
  short h;
  float f;
  double d;
  char *s;
};

// The element of a converted slot.
void Store(List *l, int k, const Piece &p, Slot &slot) {
  ListValue v;
  v.object = nullptr;
  if (p.made == kListReal) {
    v.real = p.modifier == 'l' ? slot.d : slot.f;
    ListStore(l, k, kListReal, v);
  } else if (p.made == kListInteger) {
    v.integer = p.modifier == 'l' ? static_cast<int>(slot.l) : p.modifier == 'h' ? slot.h : slot.i;
    ListStore(l, k, kListInteger, v);
  } else {
    // %c does not terminate: the width (1 without one) says how much came.
    size_t n = p.conversion == 'c' ? static_cast<size_t>(p.width > 0 ? p.width : 1) : strlen(slot.s);
    String *s = vkStringDef("", static_cast<int>(n));
    memcpy(s->text, slot.s, n);
    s->text[n] = '\0';
    v.object = s;
    ListStore(l, k, kListString, v);
  }
}

// Where scanf writes a conversion: the slot, or for "%c" the slot's buffer.
void *Target(const Piece &p, Slot &slot) {
  return p.conversion == 'c' ? static_cast<void *>(slot.s) : static_cast<void *>(&slot);
}

// What scanf returned: the conversions made, or EOF. Unused targets are
// passed too and ignored, as scanf ignores arguments beyond its format.
int Scan(FILE *fp, const char *text, const char *format, void *const *a) {
  if (fp != nullptr)
    return fscanf(fp, format, a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], a[8], a[9], a[10], a[11],
                  a[12], a[13], a[14], a[15]);
  return sscanf(text, format, a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], a[8], a[9], a[10], a[11],
                a[12], a[13], a[14], a[15]);
}

// The buffers of "%c" conversions, before the call; "%s" gets its own.
void PrepareText(const Piece &p, Slot &slot) {
  slot.s = nullptr;
  if (p.conversion == 'c') slot.s = static_cast<char *>(malloc(static_cast<size_t>(p.width > 0 ? p.width : 1)));
}

// After the call, converted or not.
void ReleaseText(const Piece &p, Slot &slot) {
  if (p.made == kListString) free(slot.s);
}

enum Outcome { kDone, kEnded, kUnmatched };

// The one-call form. *done receives the elements made (skipped ones count).
Outcome OneCall(FILE *fp, const char *text, const Format &f, List *l, int *done) {
  Slot slots[kSlotsMax];
  void *targets[kSlotsMax];
  const int n = static_cast<int>(f.reading.size());
  for (int j = 0; j < n; j++) {
    PrepareText(*f.reading[j], slots[j]);
    targets[j] = Target(*f.reading[j], slots[j]);
  }
  for (int j = n; j < kSlotsMax; j++) targets[j] = nullptr;  // passed, never written
  static char word[kWordChunk + 1];
  const bool bounded = fp != nullptr && !f.joined_bounded.empty();
  if (bounded) targets[n - 1] = word;
  int r = Scan(fp, text, (bounded ? f.joined_bounded : f.joined).c_str(), targets);
  int made = r == EOF ? 0 : r;
  std::string long_word;
  if (bounded && made == n) {
    slots[n - 1].s = word;
    if (strlen(word) == kWordChunk) {
      // The buffer is full: the rest of the word is still in the stream.
      char *more = nullptr;
      if (fscanf(fp, "%m[^ \t\n\v\f\r]", &more) == 1) {
        long_word = std::string(word) + more;
        slots[n - 1].s = long_word.data();
      }
      free(more);
    }
  }
  int j = 0;
  *done = 0;
  for (const Piece &p : f.pieces) {
    if (!p.skipped) {
      if (j == made) break;
      Store(l, *done, p, slots[j++]);
    }
    (*done)++;
  }
  if (bounded) slots[n - 1].s = nullptr;  // not the library's allocation
  for (int k = 0; k < n; k++) ReleaseText(*f.reading[k], slots[k]);
  if (*done == f.count) return kDone;
  return r == EOF || (fp != nullptr && feof(fp)) ? kEnded : kUnmatched;
}

// Piece by piece, over a text (the exact form, where the one call stopped early).
Outcome PieceByPiece(const char *text, const Format &f, List *l, int *done) {
  size_t pos = 0;
  *done = 0;
  for (const Piece &p : f.pieces) {
    if (!p.valid) return kUnmatched;
    if (!p.skipped) {
      Slot slot;
      PrepareText(p, slot);
      int used = -1;
      std::string counted = p.text + "%n";
      int r = sscanf(text + pos, counted.c_str(), Target(p, slot), &used);
      if (r == 1) Store(l, *done, p, slot);
      ReleaseText(p, slot);
      if (r == EOF) return kEnded;
      if (r != 1) return kUnmatched;
      if (used >= 0) pos += static_cast<size_t>(used);
    }
    (*done)++;
  }
  return kDone;
}

// Piece by piece over a stream, for formats the one call cannot take.
Outcome PieceByPiece(FILE *fp, const Format &f, List *l, int *done) {
  *done = 0;
  for (const Piece &p : f.pieces) {
    if (!p.valid) return kUnmatched;
    if (!p.skipped) {
      Slot slot;
      PrepareText(p, slot);
      int r = fscanf(fp, p.text.c_str(), Target(p, slot));
      if (r == 1) Store(l, *done, p, slot);
      ReleaseText(p, slot);
      if (r == EOF) return kEnded;
      if (r != 1) return kUnmatched;
    }
    (*done)++;
  }
  return kDone;
}

// The list cut to its first n elements.
List *Cut(List *l, int n) {
  if (n == l->length) return l;
  List *cut = ListDef("", n);
  for (int k = 0; k < n; k++) ListStore(cut, k, l->classes[k], ListCopyValue(l->classes[k], l->values[k]));
  ListUndef(l);
  return cut;
}

// A format without conversions is applied once for what it consumes.
void ConsumeLiteral(FILE *fp, const std::string &format) {
  if (fp == nullptr) return;
  int converted = fscanf(fp, format.c_str(), nullptr);  // converts nothing
  (void)converted;
}

}  // namespace

List *ListFileScanf(int file, const char *format) {
  FILE *fp = FilePointer(file, 0);
  if (fp == nullptr) {
    ListSetMessage("fscanf(%d, \"%s\")", file, format);
    ListError("ListFileScanf()", "File is not opened", nullptr);
  }
  const Format &f = Parse(format);
  if (f.count == 0) {
    ConsumeLiteral(fp, f.source);
    return ListDef("", 0);
  }
  List *l = ListDef("", f.count);
  int done = 0;
  Outcome o = f.one_call ? OneCall(fp, nullptr, f, l, &done) : PieceByPiece(fp, f, l, &done);
  if (o == kUnmatched) ListError("ListFileScanf()", "Data is not matched for the format", l);
  return Cut(l, done);
}

List *ListStringScanf(String *s, const char *format) {
  if (s->length < 0) {
    ListSetMessage("sscanf(%s, \"%s\")", s->name, format);
    ListError("ListStringScanf()", "String is too short", nullptr);
  }
  const Format &f = Parse(format);
  if (f.count == 0) return ListDef("", 0);
  List *l = ListDef("", f.count);
  int done = 0;
  Outcome o = f.one_call ? OneCall(nullptr, s->text, f, l, &done) : kUnmatched;
  if (o != kDone) {
    // Again piece by piece: only that tells a mismatch from the end of the text.
    ListUndef(l);
    l = ListDef("", f.count);
    o = PieceByPiece(s->text, f, l, &done);
  }
  if (o == kUnmatched) ListError("ListStringScanf()", "String is not matched for the format", l);
  return Cut(l, done);
}
