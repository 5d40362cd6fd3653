// Element-by-element comparisons of lists, equality, and the extrema of lists
// of numbers and real matrices.
#include <cstring>
#include <vector>

#include "container/list_walk.h"
#include "container/string.h"
#include "core/matrix.h"
#include "scalar/complex.h"
#include "scalar/polynomial.h"
#include "scalar/rational.h"

namespace {

// Element k as a number, or the report.
double Number(List *l, int k, const char *location) {
  if (l->classes[k] == kListInteger) return l->values[k].integer;
  if (l->classes[k] != kListReal) ListError(location, "Incorrect class element", l);
  return l->values[k].real;
}

bool SameValues(Matrix *a, Matrix *b) {
  long long n = MatCount(a) * (HasComplexValues(a->cls) ? 2 : 1);
  for (long long k = 0; k < n; k++)
    if (MatReal(a)[k] != MatReal(b)[k]) return false;
  return true;
}

bool PolyEqual(Polynomial *p, Polynomial *q) {
  if (p->degree != q->degree || p->kind != q->kind) return false;
  if (p->degree < 0) return true;
  return p->coef->cls == q->coef->cls && SameValues(p->coef, q->coef);
}

bool RatEqual(Rational *r, Rational *s) { return PolyEqual(r->nume, s->nume) && PolyEqual(r->deno, s->deno); }

bool MatEqual(Matrix *a, Matrix *b) {
  if (a->cls != b->cls || a->rows != b->rows || a->cols != b->cols) return false;
  if (!HasElementObjects(a->cls)) return SameValues(a, b);
  long long n = MatCount(a);
  for (long long k = 0; k < n; k++) {
    void *x = static_cast<void **>(a->elements)[k];
    void *y = static_cast<void **>(b->elements)[k];
    bool same = IsPolyClass(a->cls) ? PolyEqual(static_cast<Polynomial *>(x), static_cast<Polynomial *>(y))
                                    : RatEqual(static_cast<Rational *>(x), static_cast<Rational *>(y));
    if (!same) return false;
  }
  return true;
}

// Element k of a and of b: same class and value (a nested list only by length
// here; its elements are met by the walk).
bool ElementEqual(List *a, List *b, int k) {
  int cls = a->classes[k];
  if (cls != b->classes[k]) return false;
  ListValue x = a->values[k], y = b->values[k];
  switch (cls) {
    case kListInteger: return x.integer == y.integer;
    case kListReal: return x.real == y.real;
    case kListString: {
      String *s = static_cast<String *>(x.object), *t = static_cast<String *>(y.object);
      return s->length == t->length && (s->length <= 0 || memcmp(s->text, t->text, static_cast<size_t>(s->length)) == 0);
    }
    case kListComplex: {
      Complex *c = static_cast<Complex *>(x.object), *d = static_cast<Complex *>(y.object);
      return c->re == d->re && c->im == d->im;
    }
    case kListPolynomial:
      return PolyEqual(static_cast<Polynomial *>(x.object), static_cast<Polynomial *>(y.object));
    case kListRational: return RatEqual(static_cast<Rational *>(x.object), static_cast<Rational *>(y.object));
    case kListMatrix:
    case kListArray:
    case kListIndex: return MatEqual(static_cast<Matrix *>(x.object), static_cast<Matrix *>(y.object));
    case kListList: return static_cast<List *>(x.object)->length == static_cast<List *>(y.object)->length;
    default: return true;
  }
}

// The maximum (or minimum) over the elements, and where it was first met.
Matrix *Extremum(List *l, bool maximum, bool where, const char *location) {
  if (l->length < 1) ListError(location, "Incorrect class element", l);
  int rows = 1, cols = 1;
  for (int k = 0; k < l->length; k++) {
    int cls = l->classes[k];
    if (cls == kListInteger || cls == kListReal) continue;
    if (cls < kListMatrix || cls > kListIndex) ListError(location, "Incorrect class element", l);
    Matrix *m = static_cast<Matrix *>(l->values[k].object);
    if (!IsRealClass(m->cls)) ListError(location, "Incorrect class element", l);
    rows = m->rows;
    cols = m->cols;
  }
  Matrix *best = MatDef("", rows, cols);
  Matrix *at = MatDef("", rows, cols);
  long long n = MatCount(best);
  for (int k = 0; k < l->length; k++) {
    const double *v = nullptr;
    double scalar = 0;
    if (l->classes[k] == kListInteger || l->classes[k] == kListReal) {
      scalar = Number(l, k, location);
    } else {
      Matrix *m = static_cast<Matrix *>(l->values[k].object);
      if (m->rows != rows || m->cols != cols) ListError(location, "Mismatch length", l);
      v = MatReal(m);
    }
    for (long long e = 0; e < n; e++) {
      double x = v != nullptr ? v[e] : scalar;
      bool better = maximum ? x > MatReal(best)[e] : x < MatReal(best)[e];
      if (k == 0 || better) {
        MatReal(best)[e] = x;
        MatReal(at)[e] = k + 1;
      }
    }
  }
  MatUndef(where ? best : at);
  return where ? at : best;
}

}  // namespace

Matrix *ListCompareElem(List *a, List *b, const char *op) {
  const char *location = "ListCompareElem()";
  if (a->length != b->length) ListError2(location, "Mismatch length", a, b);
  static const char *const kOps[] = {"==", "!=", ">", ">=", "<", "<=", "||", "&&"};
  int which = -1;
  for (int k = 0; k < 8; k++)
    if (strcmp(op, kOps[k]) == 0) which = k;
  if (which < 0) ListError2(location, "Incorrect operator", a, b);
  Matrix *r = MatDef("", 1, a->length);
  for (int k = 0; k < a->length; k++) {
    double x = Number(a, k, location), y = Number(b, k, location);
    bool t = false;
    switch (which) {
      case 0: t = x == y; break;
      case 1: t = x != y; break;
      case 2: t = x > y; break;
      case 3: t = x >= y; break;
      case 4: t = x < y; break;
      case 5: t = x <= y; break;
      case 6: t = x != 0 || y != 0; break;
      default: t = x != 0 && y != 0; break;
    }
    MatReal(r)[k] = t ? 1.0 : 0.0;
  }
  return r;
}

Matrix *ListNotElem(List *l) {
  Matrix *r = MatDef("", 1, l->length);
  for (int k = 0; k < l->length; k++) MatReal(r)[k] = Number(l, k, "ListNotElem()") == 0 ? 1.0 : 0.0;
  return r;
}

int ListIsElemEqual(List *a, List *b) {
  // Both trees are walked side by side: the walk goes over a, and b's lists
  // are followed on a parallel stack.
  struct Comparer {
    std::vector<List *> other;
    List *next_other = nullptr;
    bool equal = true;
    void Enter(List *x) {
      if (next_other == nullptr || next_other->length != x->length) equal = false;
      other.push_back(next_other);
    }
    void Before(List *x, int k) {
      List *y = other.back();
      if (!equal || y == nullptr || !ElementEqual(x, y, k)) {
        equal = false;
        next_other = nullptr;
        return;
      }
      next_other = x->classes[k] == kListList ? static_cast<List *>(y->values[k].object) : nullptr;
    }
    void Leaf(List *, int) {}
    void Leave(List *) { other.pop_back(); }
  } comparer;
  comparer.next_other = b;
  ListWalk(a, comparer);
  return comparer.equal ? 1 : 0;
}

Matrix *ListMatMaximum(List *l) { return Extremum(l, true, false, "ListMatMaximum()"); }
Matrix *ListMatMaximumElem(List *l) { return Extremum(l, true, true, "ListMatMaximumElem()"); }
Matrix *ListMatMinimum(List *l) { return Extremum(l, false, false, "ListMatMinimum()"); }
Matrix *ListMatMinimumElem(List *l) { return Extremum(l, false, true, "ListMatMinimumElem()"); }
