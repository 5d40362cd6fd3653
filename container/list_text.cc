// Lists as text: the print form and the save form, nested lists included.
#include <cstring>
#include <string>

#include "container/list_walk.h"
#include "container/string.h"
#include "core/text.h"
#include "io/output_file.h"
#include "scalar/complex.h"
#include "scalar/polynomial.h"
#include "scalar/rational.h"

namespace {

// The save form of a polynomial or rational comes from its own layer, through
// the text hooks of the core; until that layer plugs them in there is none.
// Why element k has no save form in this build, or null: a polynomial or
// rational matrix's save form comes from its layer's text hooks, which a
// program without that layer does not have.
const char *Unsavable(List *l, int k) {
  int cls = l->classes[k];
  if (cls >= kListMatrix && cls <= kListIndex) {
    Matrix *m = static_cast<Matrix *>(l->values[k].object);
    if ((IsPolyClass(m->cls) && MatGetPolyText().element == nullptr) ||
        (IsRatClass(m->cls) && MatGetRatText().element == nullptr))
      return "Polynomial and rational save forms are not available";
  }
  return nullptr;
}

// Reports before anything is written, so no file is left half saved.
void CheckSavable(List *l) {
  struct Checker {
    void Enter(List *) {}
    void Before(List *, int) {}
    void Leaf(List *x, int k) {
      if (const char *why = Unsavable(x, k)) ListError("ListElementSave()", why, x);
    }
    void Leave(List *) {}
  } checker;
  ListWalk(l, checker);
}

void SaveMatrix(FILE *out, Matrix *m) {
  WithoutName(m, [out](Matrix *x) { MatWriteSaveForm(out, x, 0, ""); });
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
    case kListComplex:
      if (save)
        WithoutName(static_cast<Complex *>(v.object), [out](Complex *c) { CompSaveText(out, c, 0); });
      else
        fputs(CompToString(static_cast<Complex *>(v.object), text, "%G"), out);
      break;
    case kListPolynomial:
      if (save)
        WithoutName(static_cast<Polynomial *>(v.object), [out](Polynomial *p) { PolySaveText(out, p, 0); });
      else
        fputs("POLYNOMIAL", out);
      break;
    case kListRational:
      if (save)
        WithoutName(static_cast<Rational *>(v.object), [out](Rational *r) { RatSaveText(out, r, 0); });
      else
        fputs("RATIONAL", out);
      break;
    case kListMatrix:
    case kListArray:
    case kListIndex:
      if (save)
        SaveMatrix(out, static_cast<Matrix *>(v.object));
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
    CheckSavable(static_cast<List *>(l->values[i - 1].object));
    Writer writer{stream, true};
    ListWalk(static_cast<List *>(l->values[i - 1].object), writer);
  } else {
    if (const char *why = Unsavable(l, i - 1)) ListError("ListElementSave()", why, l);
    ElementText(stream, l, i - 1, true);
  }
}

List *ListFileSave(List *l, const char *file, int append, int terminate) {
  CheckSavable(l);
  const char *failure = OutputFileSave(file, append != 0, [l, terminate](FILE *out) {
    if (l->name[0] != '\0') fprintf(out, "%s = ", l->name);
    Writer writer{out, true};
    ListWalk(l, writer);
    if (terminate) fputs(";\n\n", out);
  });
  if (failure != nullptr) {
    std::string message = std::string(failure) + file;
    ListSetMessage("save %s(#%d), %s", l->name, l->length, file);
    ListError("ListFileSave()", message.c_str(), l);
  }
  return l;
}
