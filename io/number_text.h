// Numbers in text exactly as the C library's "%lf" reads them and "%16.8E"
// writes them, without the per-call cost of the formatted stream functions.
#ifndef VELK_IO_NUMBER_TEXT_H
#define VELK_IO_NUMBER_TEXT_H

#include <cstddef>
#include <cstdio>
#include <string_view>

// The white space that "%lf" skips in the C locale.
inline bool IsScanSpace(int c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Converts text that ScanDouble collected: plain decimal text through
// from_chars, anything else (hex, inf, nan, text with a dangling exponent,
// values out of range) through strtod. Fails only where strtod takes nothing.
bool ConvertCollected(std::string_view text, bool plain, double *out);

// A character source over memory. Peek gives the next byte or EOF, Take
// consumes it, Token is what was taken since Begin.
struct MemorySource {
  const char *p;
  const char *end;
  const char *start = nullptr;

  int Peek() const { return p < end ? static_cast<unsigned char>(*p) : EOF; }
  void Take() { ++p; }
  void Begin() { start = p; }
  std::string_view Token() const { return {start, static_cast<size_t>(p - start)}; }
};

namespace number_text_detail {
inline int Lower(int c) { return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c; }
inline bool IsDigit(int c) { return c >= '0' && c <= '9'; }
inline bool IsHexDigit(int c) { return IsDigit(c) || (Lower(c) >= 'a' && Lower(c) <= 'f'); }

// Takes the letters of word (lower case), ignoring the case of the input.
template <class Source>
bool TakeWord(Source &in, const char *word) {
  for (; *word != '\0'; ++word) {
    if (Lower(in.Peek()) != *word) return false;
    in.Take();
  }
  return true;
}
}  // namespace number_text_detail

// Reads one number the way "%lf" does: skips white space, then collects what
// the conversion collects with its one character of look-ahead, then converts
// it. The collection is greedy, so "1e+" is taken whole and gives 1, "0x"
// alone fails, "nan(1)" stops after "nan", and "inf" continues only into a
// complete "infinity". Returns false where "%lf" would not assign a value;
// what was consumed then does not matter (the caller gives up).
template <class Source>
bool ScanDouble(Source &in, double *out) {
  using namespace number_text_detail;
  while (IsScanSpace(in.Peek())) in.Take();
  in.Begin();
  int c = in.Peek();
  if (c == EOF) return false;
  size_t sign = 0;
  if (c == '+' || c == '-') {
    in.Take();
    sign = 1;
    c = in.Peek();
    if (c == EOF) return false;
  }
  if (Lower(c) == 'n') return TakeWord(in, "nan") && ConvertCollected(in.Token(), false, out);
  if (Lower(c) == 'i') {
    if (!TakeWord(in, "inf")) return false;
    if (Lower(in.Peek()) == 'i' && !TakeWord(in, "inity")) return false;
    return ConvertCollected(in.Token(), false, out);
  }
  bool hex = false, digit = false, dot = false, exponent = false, after_exponent = false;
  if (c == '0') {
    in.Take();
    c = in.Peek();
    if (Lower(c) == 'x') {
      in.Take();
      hex = true;
      c = in.Peek();
    } else {
      digit = true;
    }
  }
  const int exponent_char = hex ? 'p' : 'e';
  for (;; c = in.Peek()) {
    bool sign_allowed = after_exponent;
    after_exponent = false;
    if (IsDigit(c) || (hex && !exponent && IsHexDigit(c))) {
      digit = true;
    } else if (sign_allowed && (c == '+' || c == '-')) {
    } else if (digit && !exponent && Lower(c) == exponent_char) {
      exponent = dot = after_exponent = true;
    } else if (!dot && c == '.') {
      dot = true;
    } else {
      break;
    }
    in.Take();
  }
  size_t taken = in.Token().size();
  if (taken == sign || (hex && taken == sign + 2)) return false;
  return ConvertCollected(in.Token(), !hex, out);
}

// Writes exactly the text of printf("%16.8E", v) into out (at least 32
// bytes, not terminated) and returns its length.
int FormatE16(double v, char *out);

#endif
