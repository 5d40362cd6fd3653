// The Schur-Parlett fronts; the recurrence is in linalg/funm.cc, the Schur
// form that of the complex eigen kernels.
#include "matrix/funm.h"

#include "core/constructors.h"
#include "linalg/funm.h"
#include "matrix/eigen.h"
#include "matrix/frontend.h"
#include "matrix/operations.h"
#include "scalar/complex_value.h"

using namespace velk_matrix;

namespace {

// Smith's division, refusing a zero divisor.
bool Divide(ComplexValue n, ComplexValue d, ComplexValue *q) {
  if (velk_complex::IsZero(d)) return false;
  *q = velk_complex::Div(n, d);
  return true;
}

// The expression of every front: "NAME(A(RxC))".
auto Label(const char *name, Matrix *a) {
  return [=] { MatSetMessage("%s(%s(%dx%d))", name, a->name, a->rows, a->cols); };
}

// The checks every front makes, under its own names; false after a report.
bool Checked(const char *location, const char *class_location, const char *name, Matrix *a) {
  auto label = Label(name, a);
  Front f{location, label};
  if (a->rows == 0 || a->cols == 0)
    f.Fail("Zero-size matrix", a);
  else if (a->rows != a->cols)
    f.Fail("Not a square matrix", a);
  else if (!IsNumericClass(a->cls))
    Front{class_location, label}.Fail("Not a real nor complex matrix", a);
  else
    return true;
  return false;
}

}  // namespace

Matrix *MatFunc(Matrix *a, Complex *(*f)(Complex *), const char *name) {
  if (!Checked("MatFunc()", "MatFunc()", name, a)) return MatDef("", 0, 0);
  int n = a->rows;
  // The complex kernel even for a real a: its T is triangular, where the
  // real form's 2 x 2 blocks would give a wrong f(A).
  Matrix *ac = a->cls == kReal ? MatRealToComp(a) : a;
  Matrix *t = C_MatDef("", n, n), *u = C_MatDef("", n, n), *fm = C_MatZDef2(n, n);
  C_Mat_Schur(t, u, ac);
  ComplexValue *tv = Entries<ComplexValue>(t), *fv = Entries<ComplexValue>(fm);
  for (int i = 0; i < n; i++) {
    long long k = static_cast<long long>(i) * n + i;
    Complex *z = CompDef("", tv[k].re, tv[k].im), *w = f(z);
    fv[k] = {w->re, w->im};
    if (w != z) CompUndef(w);  // a function that answers in place gives z back
    CompUndef(z);
  }
  if (!velk_linalg::ParlettRecurrence(n, tv, fv, eps, Divide))
    Front{"MatFunc()", Label(name, a)}.Fail("Matrix has multiple eigenvalues", a);
  Matrix *uf = MatMul(u, fm), *uh = MatConjTrans(u);
  Matrix *result = MatMul(uf, uh);
  for (Matrix *m : {uh, uf, fm, u, t}) MatUndef(m);
  if (ac != a) MatUndef(ac);
  return result;
}

Matrix *MatSqrt(Matrix *a) {
  if (!Checked("MatSqrt()", "MatSqrt()", "sqrt", a)) return MatDef("", 0, 0);
  return MatFunc(a, CompSqrt, "sqrt");
}

Matrix *MatLog(Matrix *a) {
  if (!Checked("MatLog()", "MatLogt()", "log", a)) return MatDef("", 0, 0);
  return MatFunc(a, CompLog, "log");
}
