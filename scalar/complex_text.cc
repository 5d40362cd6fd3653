// The text form of a complex number, shared by the scalar and the matrix element.
#include <algorithm>
#include <cstring>
#include <string>

#include "core/alloc.h"
#include "io/text_format.h"
#include "scalar/complex.h"

namespace {

constexpr int kComplexTextSize = 64;

char *PairToString(double re, double im, char *buf, const char *format) {
  char re_text[kRealTextSize], im_text[kRealTextSize];
  RealToString(re, re_text, format);
  RealToString(im, im_text, format);
  if (buf == nullptr) buf = static_cast<char *>(emalloc(kComplexTextSize));
  // Texts of very wide formats are cut at the buffer's end.
  std::string text = std::string("(") + re_text + "," + im_text + ")";
  size_t n = std::min(text.size(), static_cast<size_t>(kComplexTextSize - 1));
  memcpy(buf, text.data(), n);
  buf[n] = '\0';
  return buf;
}

}  // namespace

char *CompToString(Complex *c, char *buf, const char *format) {
  return PairToString(c->re, c->im, buf, format);
}

char *ComplexValueToString(ComplexValue *v, char *buf, const char *format) {
  return PairToString(v->re, v->im, buf, format);
}
