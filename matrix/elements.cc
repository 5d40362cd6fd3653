#include "matrix/elements.h"

#include "core/constructors.h"
#include "core/registry.h"
#include "scalar/polynomial.h"
#include "scalar/rational.h"

namespace {

// The value of entry k of a real or complex matrix.
ComplexValue ValueAt(Matrix *m, long long k) {
  if (m->cls == kComplex) return static_cast<ComplexValue *>(m->elements)[k];
  return {MatReal(m)[k], 0.0};
}

// Stores a value into entry 0 of a real or complex coefficient matrix (a real
// one keeps the real part).
void StoreFirst(Matrix *m, ComplexValue v) {
  if (m->cls == kComplex)
    static_cast<ComplexValue *>(m->elements)[0] = v;
  else
    MatReal(m)[0] = v.re;
}

Polynomial *NewPoly(bool complex, int degree, const char *variable) {
  return complex ? C_PolyDef("", degree, variable) : PolyDef("", degree, variable);
}

// dst (same degree) takes src's coefficients and variable.
void FillPart(Polynomial *dst, Polynomial *src) {
  MatCopySameClass(dst->coef, 0, src->coef, 0, MatCount(src->coef));
  PolySetVariable(dst, src->variable);
}

Polynomial *PolyOfKind(Polynomial *p, bool complex) {
  if (!complex || p->kind == 1) return PolyDup(p);
  Polynomial *q = NewPoly(true, p->degree, p->variable);
  FillPart(q, p);
  return q;
}

Rational *NewRat(bool complex, int nume_degree, int deno_degree) {
  return complex ? C_RatDef("", nume_degree, deno_degree) : RatDef("", nume_degree, deno_degree);
}

Rational *RatOfKind(Rational *r, bool complex) {
  if (!complex || r->kind == 1) return RatDup(r);
  Rational *q = NewRat(true, r->nume->degree, r->deno->degree);
  if (q->nume->degree >= 0) {
    FillPart(q->nume, r->nume);
    FillPart(q->deno, r->deno);
  }
  q->nume_degree = r->nume_degree;
  q->deno_degree = r->deno_degree;
  return q;
}

// p over the constant 1, both in p's variable.
Rational *RatOverOne(Polynomial *p, bool complex) {
  Rational *r = NewRat(complex, p->degree, 0);
  if (r->nume->degree >= 0) {
    FillPart(r->nume, p);
    StoreFirst(r->deno->coef, {1.0, 0.0});
    PolySetVariable(r->deno, p->variable);
  }
  return r;
}

// A new element object of class cls made from entry l of src, owned by its
// future matrix.
void *NewElementFrom(int cls, Matrix *src, long long l) {
  bool complex = HasComplexValues(cls);
  void **slots = static_cast<void **>(src->elements);
  if (IsPolyClass(cls)) {
    Polynomial *p;
    if (IsNumericClass(src->cls)) {
      p = NewPoly(complex, 0, nullptr);
      StoreFirst(p->coef, ValueAt(src, l));
    } else {
      p = PolyOfKind(static_cast<Polynomial *>(slots[l]), complex);
    }
    return PolyOwn(p, kOwnedElement);
  }
  Rational *r;
  if (IsNumericClass(src->cls)) {
    r = NewRat(complex, 0, 0);
    StoreFirst(r->nume->coef, ValueAt(src, l));
    StoreFirst(r->deno->coef, {1.0, 0.0});
  } else if (IsPolyClass(src->cls)) {
    r = RatOverOne(static_cast<Polynomial *>(slots[l]), complex);
  } else {
    r = RatOfKind(static_cast<Rational *>(slots[l]), complex);
  }
  return RatOwn(r, kOwnedPart);
}

}  // namespace

void MatCopyElements(Matrix *dst, long long k, Matrix *src, long long l, long long count) {
  if (count <= 0) return;
  if (IsNumericClass(dst->cls) || dst->cls == src->cls) {
    MatCopySameClass(dst, k, src, l, count);
    return;
  }
  void **slots = static_cast<void **>(dst->elements);
  for (long long n = 0; n < count; n++) {
    // The new element is made before the old one goes, so a block may be
    // copied onto itself.
    void *e = NewElementFrom(dst->cls, src, l + n);
    MatElementRelease(dst->cls, slots[k + n]);
    slots[k + n] = e;
  }
}
