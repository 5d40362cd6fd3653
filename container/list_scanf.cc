// Formatted reading into lists: each conversion of the format is applied on
// its own, with the piece of the format that runs up to it, so literal text
// before a conversion is matched with it and every value lands in its own
// element as soon as it is read.
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
  std::string head;  // literal text, "%", width and modifier, conversion character
  std::string tail;  // the rest of the format, after the last conversion only
  char conversion;
  char modifier;  // 'l', 'h' or 0
  int width;      // 0: none given
};

struct Format {
  std::string text;
  int count = 0;  // the number of "%" characters: the elements made
  std::vector<Piece> pieces;
};

// Splits a format into its pieces. The last one parsed is kept: a reading
// loop over one format parses it once.
const Format &Parse(const char *format) {
  static Format parsed;
  if (parsed.text == format && !parsed.pieces.empty()) return parsed;
  parsed = Format();
  parsed.text = format;
  size_t at = 0;
  const size_t n = parsed.text.size();
  for (size_t k = 0; k < n; k++)
    if (format[k] == '%') parsed.count++;
  for (int c = 0; c < parsed.count; c++) {
    Piece piece{};
    size_t percent = parsed.text.find('%', at);
    size_t k = percent + 1;
    while (k < n && format[k] >= '0' && format[k] <= '9') {
      if (piece.width < 100000000) piece.width = piece.width * 10 + (format[k] - '0');
      k++;
    }
    if (k < n && (format[k] == 'l' || format[k] == 'h')) piece.modifier = format[k++];
    piece.conversion = k < n ? format[k] : '\0';
    size_t end = k < n ? k + 1 : n;
    piece.head = parsed.text.substr(at, end - at);
    at = end;
    parsed.pieces.push_back(piece);
  }
  if (!parsed.pieces.empty()) parsed.pieces.back().tail = parsed.text.substr(at);
  return parsed;
}

enum Outcome { kConverted, kNoMatch, kEnd };

// Where the characters come from: an open stream, or a text and a position.
class Source {
 public:
  explicit Source(FILE *fp) : fp_(fp) {}
  explicit Source(const char *text) : text_(text) {}

  // Applies fmt (one conversion into target, then "%n" markers handled here).
  template <class T>
  int Apply(const std::string &fmt, T *target) {
    if (fp_ != nullptr) return fscanf(fp_, fmt.c_str(), target);
    int used = -1;
    std::string counted = fmt + "%n";
    int r = sscanf(text_ + pos_, counted.c_str(), target, &used);
    if (used >= 0) pos_ += used;
    return r;
  }
  // A format without conversions, applied once for what it consumes.
  void ApplyLiteral(const std::string &fmt) {
    if (fp_ == nullptr) return;
    int consumed = fscanf(fp_, fmt.c_str());  // converts nothing
    (void)consumed;
  }

 private:
  FILE *fp_ = nullptr;
  const char *text_ = nullptr;
  size_t pos_ = 0;
};

// The scanf text of a piece: "m" is put before a string conversion so that
// the library allocates what the input really holds; a trailing literal is
// matched after the conversion.
std::string PieceFormat(const Piece &p, bool allocate) {
  std::string head = p.head;
  if (allocate) head.insert(head.size() - 1, "m");
  return head + p.tail;
}

Outcome Classify(int r) { return r == EOF ? kEnd : r == 1 ? kConverted : kNoMatch; }

// Converts one piece into element k of l.
Outcome Convert(Source &source, const Piece &p, List *l, int k) {
  ListValue v;
  v.object = nullptr;
  switch (p.conversion) {
    case 'e': case 'E': case 'f': case 'g': case 'G': {
      if (p.modifier == 'h') return kConverted;  // skipped: the element stays as made
      int r;
      if (p.modifier == 'l') {
        r = source.Apply(PieceFormat(p, false), &v.real);
      } else {
        float f = 0;
        r = source.Apply(PieceFormat(p, false), &f);
        v.real = f;
      }
      if (r == 1) ListStore(l, k, kListReal, v);
      return Classify(r);
    }
    case 'd': case 'i': case 'o': case 'u': case 'x': case 'X': {
      int r;
      if (p.modifier == 'l') {
        long x = 0;
        r = source.Apply(PieceFormat(p, false), &x);
        v.integer = static_cast<int>(x);
      } else if (p.modifier == 'h') {
        short x = 0;
        r = source.Apply(PieceFormat(p, false), &x);
        v.integer = x;
      } else {
        int x = 0;
        r = source.Apply(PieceFormat(p, false), &x);
        v.integer = x;
      }
      if (r == 1) ListStore(l, k, kListInteger, v);
      return Classify(r);
    }
    case 'c': case 's': {
      if (p.modifier != 0) return kNoMatch;
      char *text = nullptr;
      int r = source.Apply(PieceFormat(p, true), &text);
      if (r == 1) {
        // %c does not terminate: the width (1 without one) says how much came.
        size_t n = p.conversion == 'c' ? static_cast<size_t>(p.width > 0 ? p.width : 1) : strlen(text);
        String *s = vkStringDef("", static_cast<int>(n));
        memcpy(s->text, text, n);
        s->text[n] = '\0';
        v.object = s;
        ListStore(l, k, kListString, v);
      }
      free(text);
      return Classify(r);
    }
    default: return kNoMatch;
  }
}

// The list of a whole format, cut to the elements read when the input ends;
// on a conversion that matches nothing *unmatched is set and the list returned
// as it stands.
List *Scan(Source &source, const char *format, bool *unmatched) {
  *unmatched = false;
  const Format &f = Parse(format);
  if (f.count == 0) {
    source.ApplyLiteral(f.text);
    return ListDef("", 0);
  }
  List *l = ListDef("", f.count);
  int done = 0;
  for (const Piece &p : f.pieces) {
    Outcome o = Convert(source, p, l, done);
    if (o == kNoMatch) {
      *unmatched = true;
      return l;
    }
    if (o == kEnd) break;
    done++;
  }
  if (done == f.count) return l;
  List *cut = ListDef("", done);
  for (int k = 0; k < done; k++) ListStore(cut, k, l->classes[k], ListCopyValue(l->classes[k], l->values[k]));
  ListUndef(l);
  return cut;
}

}  // namespace

List *ListFileScanf(int file, const char *format) {
  FILE *fp = FilePointer(file, 0);
  if (fp == nullptr) {
    ListSetMessage("fscanf(%d, \"%s\")", file, format);
    ListError("ListFileScanf()", "File is not opened", nullptr);
  }
  Source source(fp);
  bool unmatched;
  List *l = Scan(source, format, &unmatched);
  if (unmatched) ListError("ListFileScanf()", "Data is not matched for the format", l);
  return l;
}

List *ListStringScanf(String *s, const char *format) {
  if (s->length < 0) {
    ListSetMessage("sscanf(%s, \"%s\")", s->name, format);
    ListError("ListStringScanf()", "String is too short", nullptr);
  }
  Source source(s->text);
  bool unmatched;
  List *l = Scan(source, format, &unmatched);
  if (unmatched) ListError("ListStringScanf()", "String is not matched for the format", l);
  return l;
}
