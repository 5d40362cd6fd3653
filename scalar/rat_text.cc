// The rational texts: the two-line fraction of listings, the save form, and
// the rational parts of matrix save forms and listings.
#include <cstdio>
#include <cstring>
#include <string>

#include "core/alloc.h"
#include "scalar/poly_coef.h"
#include "scalar/rational.h"

namespace {

// The variable a rational is shown in: the numerator's, else the denominator's.
const char *Shown(Rational *r, const char *variable) {
  if (variable != nullptr) return variable;
  return r->nume->variable != nullptr ? r->nume->variable : r->deno->variable;
}

std::string Take(char *text) {
  std::string s = text;
  efree(text);
  return s;
}

std::string TextOf(Polynomial *p, bool star, const char *variable) {
  return Take(PolyToString(p, nullptr, star, variable));
}

std::string Broken(const std::string &text, int indent, int width) {
  return Take(PolyBreakLines(text.c_str(), indent, width));
}

void Fraction(FILE *fp, Rational *r, const char *label, bool leading_newline) {
  const char *v = Shown(r, nullptr);
  const std::string n = TextOf(r->nume, false, v), d = TextOf(r->deno, false, v);
  const int L = static_cast<int>(strlen(label));
  const int u = static_cast<int>(n.size()), l = static_cast<int>(d.size());
  int w = u > l ? u : l;
  const std::string nb = Broken(n, L + 4, 79), db = Broken(d, L + 4, 79);
  if (w + L + 5 > 79) w = 74 - L;
  if (leading_newline) fputc('\n', fp);
  const std::string pad(static_cast<size_t>(L + 4), ' ');
  fprintf(fp, "%s%s%s\n", pad.c_str(), std::string(u < w ? (w - u) / 2 : 0, ' ').c_str(),
          nb.c_str());
  fprintf(fp, "%s = %s", label, std::string(static_cast<size_t>(w + 2), '-').c_str());
  fflush(fp);
  fputc('\n', fp);
  fprintf(fp, "%s%s%s\n", pad.c_str(), std::string(l < w ? (w - l) / 2 : 0, ' ').c_str(),
          db.c_str());
}

}  // namespace

namespace velk_poly {

void RatElementText(Rational *r, int indent, int width, char **nume, char **deno) {
  const char *v = Shown(r, nullptr);
  *nume = PolyBreakLines(TextOf(r->nume, true, v).c_str(), indent, width);
  *deno = PolyBreakLines(TextOf(r->deno, true, v).c_str(), indent, width);
}

void RatMatrixPrintBody(Matrix *m) {
  EachLabeled<Rational>(m,
                        [](Rational *r, const char *label) { RatPrintLabeled(stdout, r, label); });
}

}  // namespace velk_poly

void RatToStrings(Rational *r, int star, const char *variable, char **nume, char **deno) {
  const char *v = Shown(r, variable);
  *nume = PolyToString(r->nume, nullptr, star, v);
  *deno = PolyToString(r->deno, nullptr, star, v);
}

void RatPrintLabeled(FILE *fp, Rational *r, const char *label) { Fraction(fp, r, label, false); }

void RatPrint(Rational *r) {
  const bool named = r->name != nullptr && r->name[0] != '\0';
  Fraction(stdout, r, named ? r->name : "ans", !named);
}

void RatSaveText(FILE *stream, Rational *r, int terminate) {
  const bool named = r->name != nullptr && r->name[0] != '\0';
  const int L = named ? static_cast<int>(strlen(r->name)) : 0;
  const char *v = Shown(r, nullptr);
  const std::string n = Broken(TextOf(r->nume, true, v), L + 4, 75);
  const std::string d = Broken(TextOf(r->deno, true, v), L + 4, 75);
  if (named)
    fprintf(stream, "%s = (%s)/\n%s(%s)", r->name, n.c_str(),
            std::string(static_cast<size_t>(L + 3), ' ').c_str(), d.c_str());
  else
    fprintf(stream, "(%s)/\n(%s)", n.c_str(), d.c_str());
  if (terminate) fputs(";\n\n", stream);
}
