#include "io/number_text.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>

bool ConvertCollected(std::string_view text, bool plain, double *out) {
  if (plain) {
    // from_chars takes no '+'; its grammar is otherwise strtod's for decimal
    // text and both round correctly, so a complete parse gives strtod's bits.
    const char *first = text.data();
    const char *last = first + text.size();
    if (first < last && *first == '+') ++first;
    double value;
    auto [ptr, ec] = std::from_chars(first, last, value);
    if (ec == std::errc() && ptr == last) {
      *out = value;
      return true;
    }
  }
  char small[64];
  std::string large;
  const char *s = small;
  if (text.size() < sizeof small) {
    memcpy(small, text.data(), text.size());
    small[text.size()] = '\0';
  } else {
    large.assign(text);
    s = large.c_str();
  }
  char *tail;
  double value = strtod(s, &tail);
  if (tail == s) return false;
  *out = value;
  return true;
}

int FormatE16(double v, char *out) {
  constexpr int kWidth = 16;
  if (!std::isfinite(v)) return snprintf(out, 32, "%16.8E", v);
  char digits[32];
  auto [ptr, ec] = std::to_chars(digits, digits + sizeof digits, v, std::chars_format::scientific, 8);
  (void)ec;  // 32 bytes always hold a double with 8 decimals
  int n = static_cast<int>(ptr - digits);
  // to_chars writes printf's exponent form (sign, at least two digits) in lower case.
  digits[n - (digits[n - 4] == 'e' ? 4 : 5)] = 'E';
  int pad = n < kWidth ? kWidth - n : 0;
  memset(out, ' ', static_cast<size_t>(pad));
  memcpy(out + pad, digits, static_cast<size_t>(n));
  return pad + n;
}
