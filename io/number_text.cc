#include "io/number_text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
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

namespace number_text_detail {

bool ExactDecimal(const DecimalDigits &d, int power, double *out) {
  static const double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                   1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  if (d.mantissa == 0) {
    *out = 0.0;
    return true;
  }
  if (!d.exact || d.mantissa > (1ULL << 53) || power < -22 || power > 22) return false;
  double m = static_cast<double>(d.mantissa);
  *out = power >= 0 ? m * kPowers[power] : m / kPowers[-power];
  return true;
}

}  // namespace number_text_detail

namespace {

using u128 = unsigned __int128;

constexpr uint64_t kLow = 100000000;    // 10^8: the nine digits are kLow..kHigh-1
constexpr uint64_t kHigh = 1000000000;  // 10^9

// 5^k for k = 0..27, the largest power of five below 2^63.
constexpr auto kPowersOfFive = [] {
  std::array<uint64_t, 28> p{};
  p[0] = 1;
  for (size_t k = 1; k < p.size(); k++) p[k] = p[k - 1] * 5;
  return p;
}();

uint64_t Pow5(int k) { return kPowersOfFive[static_cast<size_t>(k)]; }

// The nine significant digits of m * 2^e (m < 2^53) for the decimal exponent
// e10, rounded half to even as printf rounds the exact binary value; floor
// gets the digits before rounding. False when the arithmetic would not fit.
bool ScaledDigits(uint64_t m, int e, int e10, uint64_t *rounded, uint64_t *floor) {
  int k = 8 - e10;  // the value times 10^k = m * 5^k * 2^(e + k)
  if (k > 27 || k < -27) return false;
  u128 q, rem, den;
  if (k >= 0) {
    u128 n = static_cast<u128>(m) * Pow5(k);
    int s = e + k;
    if (s >= 0) {
      if (s > 40) return false;
      *floor = *rounded = static_cast<uint64_t>(n << s);
      return true;
    }
    if (-s >= 120) return false;
    q = n >> -s;
    rem = n & ((static_cast<u128>(1) << -s) - 1);
    den = static_cast<u128>(1) << -s;
  } else {
    int j = -k;  // divide by 10^j = 5^j * 2^j
    u128 n = m, d = Pow5(j);
    if (e - j >= 0) {
      if (e - j > 70) return false;
      n <<= (e - j);
    } else {
      if (j - e > 60) return false;
      d <<= (j - e);
    }
    q = n / d;
    rem = n % d;
    den = d;
  }
  if (q >= static_cast<u128>(kHigh) * 16) return false;
  *floor = static_cast<uint64_t>(q);
  u128 twice = rem * 2;
  bool up = twice > den || (twice == den && (q & 1) != 0);
  *rounded = static_cast<uint64_t>(q) + up;
  return true;
}

// Digits and decimal exponent of a finite non-zero |v| in the usual ranges;
// false sends the caller to the library's own formatting.
bool NineDigits(double a, uint64_t *digits, int *e10) {
  if (!(a >= 1e-19 && a < 1e35)) return false;  // normal numbers only, so the bits are simple
  uint64_t bits;
  memcpy(&bits, &a, sizeof bits);
  const int biased = static_cast<int>(bits >> 52);
  const uint64_t m = (bits & ((1ULL << 52) - 1)) | (1ULL << 52);
  const int e = biased - 1075;  // a = m * 2^e
  // floor(log10 a) is this or one more (78913 / 2^18 is just above log10 2).
  int guess = ((biased - 1023) * 78913) >> 18;
  static const double kTens[] = {1e-18, 1e-17, 1e-16, 1e-15, 1e-14, 1e-13, 1e-12, 1e-11, 1e-10,
                                 1e-9,  1e-8,  1e-7,  1e-6,  1e-5,  1e-4,  1e-3,  1e-2,  1e-1,
                                 1e0,   1e1,   1e2,   1e3,   1e4,   1e5,   1e6,   1e7,   1e8,
                                 1e9,   1e10,  1e11,  1e12,  1e13,  1e14,  1e15,  1e16,  1e17,
                                 1e18,  1e19,  1e20,  1e21,  1e22,  1e23,  1e24,  1e25,  1e26,
                                 1e27,  1e28,  1e29,  1e30,  1e31,  1e32,  1e33,  1e34,  1e35};
  if (guess + 1 >= -18 && guess + 1 <= 35 && a >= kTens[guess + 1 + 18]) guess++;
  // The table's powers are not all exact: the digits decide.
  for (int tries = 0; tries < 3; tries++) {
    uint64_t rounded, floor;
    if (!ScaledDigits(m, e, guess, &rounded, &floor)) return false;
    if (floor < kLow) {
      guess--;
    } else if (floor >= kHigh) {
      guess++;
    } else {
      if (rounded == kHigh) {  // 9.999999995 becomes 1.00000000 of the next power
        rounded = kLow;
        guess++;
      }
      *digits = rounded;
      *e10 = guess;
      return true;
    }
  }
  return false;
}

}  // namespace

int FormatE16(double v, char *out) {
  constexpr int kWidth = 16;
  uint64_t digits = 0;
  int e10 = 0;
  if (!std::isfinite(v) || (v != 0 && !NineDigits(std::fabs(v), &digits, &e10)))
    return snprintf(out, 32, "%16.8E", v);
  char text[24];
  char *p = text;
  if (std::signbit(v)) *p++ = '-';
  static const char kPairs[] =
      "0001020304050607080910111213141516171819202122232425262728293031323334353637383940414243444546"
      "474849505152535455565758596061626364656667686970717273747576777879808182838485868788899091929394"
      "9596979899";
  uint32_t rest = static_cast<uint32_t>(digits);
  *p++ = static_cast<char>('0' + rest / kLow);
  *p++ = '.';
  rest %= kLow;
  for (int k = 6; k >= 0; k -= 2, rest /= 100) memcpy(p + k, kPairs + 2 * (rest % 100), 2);
  p += 8;
  *p++ = 'E';
  *p++ = e10 < 0 ? '-' : '+';
  unsigned x = static_cast<unsigned>(e10 < 0 ? -e10 : e10);
  if (x >= 100) *p++ = static_cast<char>('0' + x / 100);
  *p++ = static_cast<char>('0' + x / 10 % 10);
  *p++ = static_cast<char>('0' + x % 10);
  int n = static_cast<int>(p - text);
  int pad = n < kWidth ? kWidth - n : 0;
  memset(out, ' ', static_cast<size_t>(pad));
  memcpy(out + pad, text, static_cast<size_t>(n));
  return pad + n;
}
