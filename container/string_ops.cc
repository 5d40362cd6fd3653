// Whole-string copies, characters, pieces, searches and comparisons.
#include <cstring>
#include <utility>
#include <vector>

#include "container/index.h"
#include "container/string.h"
#include "core/alloc.h"
#include "core/matrix.h"

namespace {

// Every operation refuses an undefined operand before looking at its text.
void CheckDefined(String *s, const char *location) {
  if (s->length < 0) vkStringError(location, "Undefined string", s);
}

void CheckDefined2(String *a, String *b, const char *location) {
  if (a->length < 0 || b->length < 0) vkStringError2(location, "Undefined string", a, b);
}

void CheckSameLength(String *a, String *b, const char *location) {
  CheckDefined2(a, b, location);
  if (a->length != b->length) vkStringError2(location, "Confliction of length", a, b);
}

// A new string of n characters from text (not necessarily terminated).
String *FromBytes(const char *text, int n) {
  String *r = vkStringDef("", n);
  if (n > 0) memcpy(r->text, text, static_cast<size_t>(n));
  r->text[n] = '\0';
  return r;
}

// A key of exactly one character, or the report.
char KeyChar(String *s, String *key, const char *location) {
  CheckDefined2(s, key, location);
  if (key->length != 1) vkStringError2(location, "Keyword is too long", s, key);
  return key->text[0];
}

}  // namespace

String *vkStringCopy(String *dst, String *src) {
  CheckSameLength(dst, src, "vkStringCopy()");
  memcpy(dst->text, src->text, static_cast<size_t>(src->length));
  return dst;
}

String *vkStringPartCopy(String *dst, String *src, int n) {
  CheckDefined2(dst, src, "vkStringPartCopy()");
  if (n < 0 || n > dst->length || n > src->length)
    vkStringError2("vkStringPartCopy()", "Confliction of length", dst, src);
  memcpy(dst->text, src->text, static_cast<size_t>(n));
  return dst;
}

String *vkStringPut(String *s, int i, String *t) {
  CheckDefined2(s, t, "vkStringPut()");
  if (i < 1 || static_cast<long long>(i) + t->length - 1 > s->length)
    vkStringError2("vkStringPut()", "Confliction of length", s, t);
  memcpy(s->text + i - 1, t->text, static_cast<size_t>(t->length));
  return s;
}

String *vkStringSwap(String *a, String *b) {
  CheckSameLength(a, b, "vkStringSwap()");
  std::swap(a->text, b->text);
  return a;
}

String *vkGetStringElem(String *s, int i) {
  CheckDefined(s, "vkGetStringElem()");
  if (i < 1 || i > s->length) vkStringError("vkGetStringElem()", "Index is out ouf range", s);
  return FromBytes(s->text + i - 1, 1);
}

String *vkStringSetElem(String *s, int i, String *c) {
  CheckDefined2(s, c, "vkStringSetElem()");
  if (i < 1 || i > s->length) vkStringError("vkStringSetElem()", "Index is out ouf range", s);
  if (c->length != 1) vkStringError2("vkStringSetElem()", "Keyword is too long", s, c);
  s->text[i - 1] = c->text[0];
  return s;
}

String *vkStringSetChar(String *s, int i, int c) {
  CheckDefined(s, "vkStringSetChar()");
  if (i < 1 || i > s->length) {
    vkStringSetMessage("%s(%d)(%d) = %c", s->name, s->length, i, c);
    vkStringError("vkStringSetChar()", "Index is not appropriate", s);
    return s;  // a harness that returns from the report gets s unchanged
  }
  s->text[i - 1] = static_cast<char>(c);
  return s;
}

String *vkStringCut(String *s, int i, int j) {
  CheckDefined(s, "vkStringCut()");
  if (i < 1 || i > j || j > s->length) vkStringError("vkStringCut()", "Index is out of range", s);
  return FromBytes(s->text + i - 1, j - i + 1);
}

String *vkStringMul(String *s, int k) {
  CheckDefined(s, "vkStringMul()");
  if (k < 0) vkStringError("vkStringMul()", "Number must be positive", s);
  long long n = static_cast<long long>(s->length) * k;
  if (n > 0x7ffffffeLL) vkStringError("vkStringMul()", "Too long string", s);
  String *r = vkStringDef("", static_cast<int>(n));
  for (int c = 0; c < k; c++)
    memcpy(r->text + static_cast<long long>(c) * s->length, s->text, static_cast<size_t>(s->length));
  r->text[n] = '\0';
  return r;
}

int vkStringIndex(String *s, String *key) {
  char c = KeyChar(s, key, "vkStringIndex()");
  const void *p = memchr(s->text, c, static_cast<size_t>(s->length));
  return p == nullptr ? 0 : static_cast<int>(static_cast<const char *>(p) - s->text) + 1;
}

int vkStringLastIndex(String *s, String *key) {
  char c = KeyChar(s, key, "vkStringLastIndex()");
  for (int k = s->length; k >= 1; k--)
    if (s->text[k - 1] == c) return k;
  return 0;
}

Matrix *vkStringCompareElem(String *a, String *b, const char *op) {
  const char *location = "vkStringCompareElem()";
  CheckDefined2(a, b, location);
  if (a->length != b->length && a->length != 1 && b->length != 1)
    vkStringError2(location, "Length mismatch", a, b);
  static const char *const kOps[] = {"==", "!=", "<", "<=", ">", ">="};
  int which = -1;
  for (int k = 0; k < 6; k++)
    if (strcmp(op, kOps[k]) == 0) which = k;
  if (which < 0) vkStringError2(location, "Incorrect operator", a, b);
  // A one-character operand is repeated to the other's length.
  String *x = a->length == 1 && b->length != 1 ? vkStringMul(a, b->length) : a;
  String *y = b->length == 1 && a->length != 1 ? vkStringMul(b, a->length) : b;
  Matrix *r = MatDef("", 1, x->length);
  for (int k = 0; k < x->length; k++) {
    signed char p = static_cast<signed char>(x->text[k]), q = static_cast<signed char>(y->text[k]);
    bool t = false;
    switch (which) {
      case 0: t = p == q; break;
      case 1: t = p != q; break;
      case 2: t = p < q; break;
      case 3: t = p <= q; break;
      case 4: t = p > q; break;
      default: t = p >= q; break;
    }
    MatReal(r)[k] = t ? 1.0 : 0.0;
  }
  if (x != a) vkStringUndef(x);
  if (y != b) vkStringUndef(y);
  return r;
}

String *vkStringGetSubString2(String *s, Matrix *index) {
  CheckDefined(s, "vkStringGetSubString2()");
  std::vector<int> at;
  if (!IndexPositions(index, s->length, &at))
    vkStringError("vkStringGetSubString2()", "Not a suitable index", s);
  String *r = vkStringDef("", static_cast<int>(at.size()));
  for (size_t k = 0; k < at.size(); k++) r->text[k] = s->text[at[k] - 1];
  return r;
}

String *vkStringSetSubString2(String *s, Matrix *index, String *t) {
  CheckDefined2(s, t, "vkStringSetSubString2()");
  std::vector<int> at;
  if (!IndexPositions(index, s->length, &at))
    vkStringError("vkStringSetSubString2()", "Not a suitable index", s);
  if (t->length != 1 && static_cast<size_t>(t->length) != at.size())
    vkStringError2("vkStringSetSubString2()", "Confliction of length", s, t);
  for (size_t k = 0; k < at.size(); k++) s->text[at[k] - 1] = t->text[t->length == 1 ? 0 : k];
  return s;
}

String *MatMat2String(Matrix *m) {
  if (!IsRealClass(m->cls)) MatError("MatMat2String()", "Not a real matrix", m);
  long long n = MatCount(m);
  String *r = vkStringDef("", static_cast<int>(n));
  for (long long k = 0; k < n; k++) {
    double v = MatReal(m)[k];
    // Codes outside a char's range (and NaN) wrap as an integer would; never UB.
    long long code = v == v && v > -1e18 && v < 1e18 ? static_cast<long long>(v) : 0;
    r->text[k] = static_cast<char>(code);
  }
  r->text[n] = '\0';
  return r;
}
