// Lists as text: the print form and the save form, nested lists included.
#include <cstring>
#include <string>

#include "container/list_walk.h"
#include "container/string.h"
#include "core/alloc.h"
#include "core/text.h"
#include "io/output_file.h"
#include "scalar/complex.h"
#include "scalar/polynomial.h"
#include "scalar/rational.h"

namespace {

// The save form of a polynomial or rational comes from its own layer, through
// the text hooks of the core; until that layer plugs them in there is none.
void SavePolynomial(FILE *out, List *l, Polynomial *p) {
  const MatPolyText &text = MatGetPolyText();
  if (text.element == nullptr)
    ListError("ListElementSave()", "Polynomial save form is not available yet", l);
  char *s = text.element(p, 0, 1 << 30);
  fputs(s, out);
  efree(s);
}

void SaveRational(FILE *out, List *l, Rational *r) {
  const MatRatText &text = MatGetRatText();
  if (text.element == nullptr)
    ListError("ListElementSave()", "Rational save form is not available yet", l);
  char *nume, *deno;
  text.element(r, 0, 1 << 30, &nume, &deno);
  fprintf(out, "(%s)/(%s)", nume, deno);
  efree(nume);
  efree(deno);
}

void SaveMatrix(FILE *out, List *l, Matrix *m) {
  if ((IsPolyClass(m->cls) && MatGetPolyText().element == nullptr) ||
      (IsRatClass(m->cls) && MatGetRatText().element == nullptr))
    ListError("ListElementSave()", "Polynomial and rational save forms are not available yet", l);
  // An element is saved without the name it may have had before it was stored.
  char *name = m->name;
  m->name = const_cast<char *>("");
  MatWriteSaveForm(out, m, 0, "");
  m->name = name;
}

// One element that is not a list, in the print form (save: the save form).
void ElementText(FILE *out, List *l, int k, bool save) {
  char text[kRealTextSize];
  ListValue v = l->values[k];
  const char *real_format = save ? "%.17G" : "%G";
  switch (l->classes[k]) {
    case kListString: fprintf(out, "\"%s\"", static_cast<String *>(v.object)->text); break;
    case kListInteger: fprintf(out, "%d", v.integer); break;
    case kListReal: fputs(RealToString(v.real, text, real_format), out); break;
    case kListComplex: {
      Complex *c = static_cast<Complex *>(v.object);
      ComplexValue z{c->re, c->im};
      fputs(ComplexValueToString(&z, text, real_format), out);
      break;
    }
    case kListPolynomial:
      if (save)
        SavePolynomial(out, l, static_cast<Polynomial *>(v.object));
      else
        fputs("POLYNOMIAL", out);
      break;
    case kListRational:
      if (save)
        SaveRational(out, l, static_cast<Rational *>(v.object));
      else
        fputs("RATIONAL", out);
      break;
    case kListMatrix:
    case kListArray:
    case kListIndex:
      if (save)
        SaveMatrix(out, l, static_cast<Matrix *>(v.object));
      else
        fputs(l->classes[k] == kListMatrix ? "MATRIX" : l->classes[k] == kListArray ? "ARRAY" : "INDEX", out);
      break;
    case kListUndefined: fputs("UNDEF", out); break;
    default: break;  // callables have no text
  }
}

struct Writer {
  FILE *out;
  bool save;
  void Enter(List *) { fputc('{', out); }
  void Before(List *, int k) {
    if (k > 0) fputs(", ", out);
  }
  void Leaf(List *l, int k) { ElementText(out, l, k, save); }
  void Leave(List *) { fputc('}', out); }
};

}  // namespace

void ListPrintText(FILE *stream, List *l) {
  Writer writer{stream, false};
  ListWalk(l, writer);
}

void ListPrint(List *l) {
  printf("%s = ", l->name[0] != '\0' ? l->name : "ans");
  ListPrintText(stdout, l);
  fputs("\n", stdout);
  fflush(stdout);
}

void ListElementSave(FILE *stream, List *l, int i) {
  if (i < 1 || i > l->length) {
    ListSetMessage("%s(%d)", l->name, i);
    ListError("ListElementSave()", "Index is out of range", l);
  }
  if (l->classes[i - 1] == kListList) {
    Writer writer{stream, true};
    ListWalk(static_cast<List *>(l->values[i - 1].object), writer);
  } else {
    ElementText(stream, l, i - 1, true);
  }
}

List *ListFileSave(List *l, const char *file, int append, int terminate) {
  OutputFile out(file, append != 0);
  const char *failure = nullptr;
  if (out.stream() == nullptr) {
    failure = "Can't open file ";
  } else {
    if (l->name[0] != '\0') fprintf(out.stream(), "%s = ", l->name);
    Writer writer{out.stream(), true};
    ListWalk(l, writer);
    if (terminate) fputs(";\n\n", out.stream());
    if (!out.Finish()) failure = "Can't write file ";
  }
  if (failure != nullptr) {
    std::string message = std::string(failure) + file;
    ListSetMessage("save %s(#%d), %s", l->name, l->length, file);
    ListError("ListFileSave()", message.c_str(), l);
  }
  return l;
}
