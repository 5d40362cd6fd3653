// The polynomial text form, its line breaking, the listing and save forms,
// and the polynomial bodies of matrix listings and save forms.
#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include "core/alloc.h"
#include "core/text.h"
#include "scalar/poly_coef.h"

using namespace velk_poly;

namespace {

char *Copy(const std::string &s) {
  char *out = static_cast<char *>(emalloc(static_cast<int>(s.size()) + 1));
  memcpy(out, s.c_str(), s.size() + 1);
  return out;
}

std::string Magnitude(double c) {
  char text[kRealTextSize];
  return RealToString(std::fabs(c), text, nullptr);
}

// One real term: k is the power, lead is true for the leading term of a
// polynomial of degree 2 or more (written without a leading blank).
std::string RealTerm(double c, int k, bool lead, bool star, const char *v) {
  if (c == 0) return "";
  const bool neg = c < 0;
  const char *sign = lead ? (neg ? "- " : "") : (neg ? " - " : " + ");
  if (k == 0) return sign + Magnitude(c);
  std::string power = k == 1 ? std::string(v) : std::string(v) + "^" + std::to_string(k);
  if (c == 1 || c == -1) return sign + power;
  // The negative linear term without star has no blank before the variable.
  const char *join = star ? "*" : (k == 1 && neg && !lead) ? "" : " ";
  return sign + Magnitude(c) + join + power;
}

std::string ComplexTerm(ComplexValue c, int k, bool lead, bool star, const char *v) {
  if (c.re == 0 && c.im == 0) return "";
  char text[kComplexTextSize];
  std::string value = ComplexValueToString(&c, text, nullptr);
  std::string sign = lead ? "" : " + ";
  if (k == 0) return sign + value;
  std::string power = k == 1 ? std::string(v) : std::string(v) + "^" + std::to_string(k);
  return sign + value + (star ? "*" : " ") + power;
}

std::string Text(Polynomial *p, bool star, const char *variable) {
  const char *v = variable != nullptr ? variable : "s";
  if (p->degree == -1) return "0";
  const int d = p->degree;
  if (!IsComplex(p) && star && d == 1 && Real(p)[0] == 0 && Real(p)[1] == 1)
    return std::string("Polynomial(\"") + v + "\")";
  std::string text;
  for (int k = 0; k <= d; k++) {
    const bool lead = k == d && d >= 2;
    text = (IsComplex(p) ? ComplexTerm(Comp(p)[k], k, lead, star, v)
                         : RealTerm(Real(p)[k], k, lead, star, v)) +
           text;
  }
  if (text.empty()) return "0";
  if (text.size() > 1 && text[1] == '+') return text.substr(3);
  if (text.size() > 1 && text[1] == '-') return text.substr(1);
  return text;
}

// A sign after these is part of a number or a complex pair, not a break.
bool Shields(char c) { return c == 'e' || c == 'E' || c == '(' || c == ','; }

std::string Broken(const std::string &text, int indent, int width) {
  std::string out;
  const int bound = width - indent;
  int running = 0;
  size_t start = 0;
  while (start < text.size()) {
    size_t end = start;
    for (; end < text.size(); end++) {
      char c = text[end];
      if ((c == '+' || c == '-') && !(end > 0 && Shields(text[end - 1]))) break;
    }
    if (end < text.size()) end++;  // the sign ends the piece
    const int length = static_cast<int>(end - start);
    if (running + length > bound) {
      out += '\n';
      out.append(static_cast<size_t>(indent > 0 ? indent : 0), ' ');
      running = 0;
    }
    out.append(text, start, end - start);
    running += length;
    start = end;
  }
  return out;
}

}  // namespace

namespace velk_poly {

void MatrixPrintBody(Matrix *m) {
  EachLabeled<Polynomial>(
      m, [](Polynomial *p, const char *label) { PolyPrintLabeled(stdout, p, label); });
}

char *ElementText(Polynomial *p, int indent, int width) {
  return Copy(Broken(Text(p, true, p->variable), indent, width));
}

}  // namespace velk_poly

int PolyTextSize(Polynomial *p, const char *variable) {
  const long long v = variable != nullptr ? static_cast<long long>(strlen(variable)) : 1;
  const long long size = (static_cast<long long>(p->degree) + 2) * (kComplexTextSize + v + 20) + 32;
  return size > 0x7fffffff ? 0x7fffffff : static_cast<int>(size);
}

char *PolyToString(Polynomial *p, char *buffer, int star, const char *variable) {
  std::string text = Text(p, star != 0, variable);
  if (buffer == nullptr) return Copy(text);
  memcpy(buffer, text.c_str(), text.size() + 1);
  return buffer;
}

char *PolyBreakLines(const char *text, int indent, int width) {
  return Copy(Broken(text, indent, width));
}

void PolyPrintLabeled(FILE *fp, Polynomial *p, const char *label) {
  const int indent = static_cast<int>(strlen(label)) + 3;
  fprintf(fp, "%s = %s\n", label, Broken(Text(p, false, p->variable), indent, 79).c_str());
}

void PolyPrint(Polynomial *p) {
  const bool named = p->name != nullptr && p->name[0] != '\0';
  // An empty name is shown as "ans" but indented as if it were 3 long.
  PolyPrintLabeled(stdout, p, named ? p->name : "ans");
}

void PolySaveText(FILE *stream, Polynomial *p, int terminate) {
  const bool named = p->name != nullptr && p->name[0] != '\0';
  const int indent = named ? static_cast<int>(strlen(p->name)) + 4 : 4;
  if (named) fprintf(stream, "%s = ", p->name);
  fputs(Broken(Text(p, true, p->variable), indent, 75).c_str(), stream);
  if (terminate) fputs(";\n\n", stream);
}
