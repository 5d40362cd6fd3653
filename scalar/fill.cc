#include "scalar/fill.h"

#include "core/constructors.h"

namespace {

// The complex constant 1 + 0i travels as a temporary Complex, undefined after use.
Matrix *WithComplexOne(MatConstantForm form, int rows, int cols, const char *location) {
  Complex *one = CompDef("", 1.0, 0.0);
  Matrix *m = MatConstantDef(form, kComplex, rows, cols, location, {one->re, one->im});
  CompUndef(one);
  return m;
}

// A matrix of class cls whose every element is an owned copy of `object`.
Matrix *ElementFill(int rows, int cols, int cls, const char *location, void *object) {
  Matrix *m = MatDefClass("", rows, cols, cls, location);
  void **slots = static_cast<void **>(m->elements);
  for (long long k = 0; k < MatCount(m); k++) {
    void *e = MatElementDup(cls, object);
    MatElementRelease(cls, slots[k]);
    slots[k] = e;
  }
  return m;
}

}  // namespace

Matrix *C_MatIDef(int n) { return WithComplexOne(MatConstantForm::kSquareIdentity, n, n, "C_MatIDef()"); }
Matrix *C_MatIDef2(int rows, int cols) {
  return WithComplexOne(MatConstantForm::kIdentity, rows, cols, "C_MatIDef2()");
}
Matrix *C_MatOneDef(int rows, int cols) {
  return WithComplexOne(MatConstantForm::kOnes, rows, cols, "C_MatOneDef()");
}
Matrix *C_MatFillDef(int rows, int cols, Complex *value) {
  Matrix *m = MatDefClass("", rows, cols, kComplex, "C_MatFillDef()");
  auto *e = static_cast<ComplexValue *>(m->elements);
  for (long long k = 0; k < MatCount(m); k++) e[k] = {value->re, value->im};
  return m;
}

Matrix *P_MatFillDef(int rows, int cols, Polynomial *p) {
  return ElementFill(rows, cols, ClassOf(ClassKind(kPoly), p->kind == 1), "P_MatFillDef()", p);
}
Matrix *R_MatFillDef(int rows, int cols, Rational *r) {
  return ElementFill(rows, cols, ClassOf(ClassKind(kRat), r->kind == 1), "R_MatFillDef()", r);
}
