// Numbers in text exactly as the C library's "%lf" reads them and "%16.8E"
// writes them, without the per-call cost of the formatted stream functions.
// Internal to the text formats of io/.
#ifndef VELK_IO_NUMBER_TEXT_H
#define VELK_IO_NUMBER_TEXT_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>

// The white space that "%lf" skips in the C locale.
inline bool IsScanSpace(int c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Converts text that ScanDouble collected: plain decimal text through
// from_chars, anything else (hex, inf, nan, text with a dangling exponent,
// values out of range) through strtod. Fails only where strtod takes nothing.
bool ConvertCollected(std::string_view text, bool plain, double *out);

// A character source over memory. Peek gives the next byte or EOF, Take
// consumes it, Token is what was taken since Begin. ScanDouble reads any
// source with these four; TakeEightDigits is an optional shortcut.
struct MemorySource {
  const char *p;
  const char *end;
  const char *start = nullptr;

  int Peek() const { return p < end ? static_cast<unsigned char>(*p) : EOF; }
  void Take() { ++p; }
  // Takes eight decimal digits at once when the next eight bytes are digits.
  bool TakeEightDigits(uint32_t *value) {
    if (std::endian::native != std::endian::little || end - p < 8) return false;
    uint64_t v;
    memcpy(&v, p, sizeof v);
    constexpr uint64_t kHigh = 0xF0F0F0F0F0F0F0F0, kZeros = 0x3030303030303030;
    if ((v & kHigh) != kZeros || ((v + 0x0606060606060606) & kHigh) != kZeros) return false;
    // Eight digits to their value in three multiplications (bytes are little-endian).
    v -= kZeros;
    v = v * 10 + (v >> 8);
    v = (((v & 0x000000FF000000FF) * (100 + (1000000ULL << 32))) +
         (((v >> 16) & 0x000000FF000000FF) * (1 + (10000ULL << 32)))) >>
        32;
    *value = static_cast<uint32_t>(v);
    p += 8;
    return true;
  }
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

// The significant digits of a decimal number as they go by, so that the
// common number needs no second pass: up to 19 digits in an integer, and the
// power of ten that scales them.
struct DecimalDigits {
  unsigned long long mantissa = 0;
  int digits = 0;
  int scale = 0;
  bool exact = true;  // false once a digit did not fit

  void Add(int c, bool fraction) {
    unsigned d = static_cast<unsigned>(c - '0');
    if (mantissa == 0 && d == 0) {
      if (scale < -100000)
        exact = false;  // scale stops far from overflow; the slow path takes over
      else
        scale -= fraction;
    } else if (digits < 19) {
      mantissa = mantissa * 10 + d;
      digits++;
      scale -= fraction;
    } else {
      exact = false;
    }
  }
  // Eight digits at once; leading zeros among them count as digits, which
  // can only send a long number to the slower conversion.
  void AddEight(uint32_t eight, bool fraction) {
    mantissa = mantissa * 100000000 + eight;
    digits += 8;
    scale -= 8 * fraction;
  }
};

// Takes a run of decimal digits into d; returns the character after it.
template <class Source>
int TakeDigits(Source &in, DecimalDigits &d, bool fraction, bool *digit) {
  for (;;) {
    if constexpr (requires(uint32_t * v) { in.TakeEightDigits(v); }) {
      uint32_t eight;
      while (d.digits <= 11 && in.TakeEightDigits(&eight)) {
        d.AddEight(eight, fraction);
        *digit = true;
      }
    }
    int c = in.Peek();
    if (!IsDigit(c)) return c;
    d.Add(c, fraction);
    in.Take();
    *digit = true;
  }
}

// mantissa * 10^power when both are exact doubles: one correctly rounded
// operation, so the result is the correctly rounded value strtod gives.
bool ExactDecimal(const DecimalDigits &d, int power, double *out);

// After "0x": hex digits with one point, then 'p', a sign and decimal digits.
template <class Source>
bool ScanHexTail(Source &in, size_t sign, double *out) {
  bool digit = false, dot = false, exponent = false, after_exponent = false;
  for (int c = in.Peek();; c = in.Peek()) {
    bool sign_allowed = after_exponent;
    after_exponent = false;
    if (IsDigit(c) || (!exponent && IsHexDigit(c))) {
      digit = true;
    } else if (sign_allowed && (c == '+' || c == '-')) {
    } else if (digit && !exponent && Lower(c) == 'p') {
      exponent = dot = after_exponent = true;
    } else if (!dot && c == '.') {
      dot = true;
    } else {
      break;
    }
    in.Take();
  }
  if (in.Token().size() == sign + 2) return false;  // "0x" alone
  return ConvertCollected(in.Token(), false, out);
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
  const bool negative = c == '-';
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
  DecimalDigits d;
  bool digit = false;
  if (c == '0') {
    in.Take();
    c = in.Peek();
    if (Lower(c) == 'x') {
      in.Take();
      return ScanHexTail(in, sign, out);
    }
    digit = true;
  }
  c = TakeDigits(in, d, false, &digit);
  if (c == '.') {
    in.Take();
    c = TakeDigits(in, d, true, &digit);
  }
  if (!digit) return false;  // a sign or a point alone: nothing to convert
  // An exponent letter is taken even without digits after it (then it
  // counts as no exponent, as strtod reads it).
  int power = 0;
  if (Lower(c) == 'e') {
    in.Take();
    c = in.Peek();
    bool minus = c == '-';
    if (c == '+' || c == '-') {
      in.Take();
      c = in.Peek();
    }
    for (; IsDigit(c); c = in.Peek()) {
      if (power < 100000) power = power * 10 + (c - '0');
      in.Take();
    }
    if (minus) power = -power;
  }
  double value;
  if (ExactDecimal(d, d.scale + power, &value)) {
    *out = negative ? -value : value;
    return true;
  }
  return ConvertCollected(in.Token(), true, out);
}

// Writes exactly the text of printf("%16.8E", v) into out (at least 32
// bytes, not terminated) and returns its length.
int FormatE16(double v, char *out);

#endif
