// The element objects of classes 2 to 5 under one set of names. Internal to
// the matrix layer: a front-end's polynomial and rational arms are one generic
// callable run with Type<Polynomial> or Type<Rational>, and the overloads
// below send each operation to the polynomial or the rational layer.
//
// Every operation returns a new temporary; the helpers store it into a result
// matrix as an owned element (off the registry) and give back the working
// temporaries they make, so no element object is left for a sweep to find.
#ifndef VELK_MATRIX_OBJECT_OPS_H
#define VELK_MATRIX_OBJECT_OPS_H

#include "core/matrix.h"
#include "core/registry.h"
#include "scalar/polynomial.h"
#include "scalar/rational.h"

namespace velk_matrix {

// Runs work(Type<O>{}) with the element object type of class 2 to 5.
template <class T>
struct ObjectType {};
template <class Work>
auto ByObjectType(int cls, Work &&work) {
  if (IsPolyClass(cls)) return work(ObjectType<Polynomial>{});
  return work(ObjectType<Rational>{});
}

inline Polynomial *ObjAdd(Polynomial *a, Polynomial *b) { return PolyAdd(a, b); }
inline Rational *ObjAdd(Rational *a, Rational *b) { return RatAdd(a, b); }
inline Polynomial *ObjSub(Polynomial *a, Polynomial *b) { return PolySub(a, b); }
inline Rational *ObjSub(Rational *a, Rational *b) { return RatSub(a, b); }
inline Polynomial *ObjMul(Polynomial *a, Polynomial *b) { return PolyMul(a, b); }
inline Rational *ObjMul(Rational *a, Rational *b) { return RatMul(a, b); }
inline Polynomial *ObjAdd(Polynomial *a, double x) { return PolyAdd_double(a, x); }
inline Rational *ObjAdd(Rational *a, double x) { return RatAdd_double(a, x); }
inline Polynomial *ObjAdd(Polynomial *a, Complex *z) { return PolyAdd_Complex(a, z); }
inline Rational *ObjAdd(Rational *a, Complex *z) { return RatAdd_Complex(a, z); }
inline Polynomial *ObjSub(Polynomial *a, double x) { return PolySub_double(a, x); }
inline Rational *ObjSub(Rational *a, double x) { return RatSub_double(a, x); }
inline Polynomial *ObjSub(Polynomial *a, Complex *z) { return PolySub_Complex(a, z); }
inline Rational *ObjSub(Rational *a, Complex *z) { return RatSub_Complex(a, z); }
// A polynomial scalar with an element of either kind.
inline Polynomial *ObjAddPoly(Polynomial *a, Polynomial *p) { return PolyAdd(a, p); }
inline Rational *ObjAddPoly(Rational *a, Polynomial *p) { return RatAdd_Polynomial(a, p); }
inline Polynomial *ObjSubPoly(Polynomial *a, Polynomial *p) { return PolySub(a, p); }
inline Rational *ObjSubPoly(Rational *a, Polynomial *p) { return RatSub_Polynomial(a, p); }
inline Polynomial *ObjMulPoly(Polynomial *a, Polynomial *p) { return PolyMul(a, p); }
inline Rational *ObjMulPoly(Rational *a, Polynomial *p) { return RatScaleP(a, p); }
inline Polynomial *ObjScale(Polynomial *a, double x) { return PolyScale(a, x); }
inline Rational *ObjScale(Rational *a, double x) { return RatScale(a, x); }
inline Polynomial *ObjScaleSelf(Polynomial *a, double x) { return PolyScaleSelf(a, x); }
inline Rational *ObjScaleSelf(Rational *a, double x) { return RatScaleSelf(a, x); }
inline Polynomial *ObjScale(Polynomial *a, Complex *z) { return PolyScaleC(a, z); }
inline Rational *ObjScale(Rational *a, Complex *z) { return RatScaleC(a, z); }
inline Polynomial *ObjPow(Polynomial *a, int n) { return PolyPow(a, n); }
inline Rational *ObjPow(Rational *a, int n) { return RatPow(a, n); }
inline Polynomial *ObjNegate(Polynomial *a) { return PolyNegate(a); }
inline Rational *ObjNegate(Rational *a) { return RatNegate(a); }
inline Polynomial *ObjRealPart(Polynomial *a) { return PolyRealPart(a); }
inline Rational *ObjRealPart(Rational *a) { return RatRealPart(a); }
inline Polynomial *ObjImagPart(Polynomial *a) { return PolyImagPart(a); }
inline Rational *ObjImagPart(Rational *a) { return RatImagPart(a); }
inline Polynomial *ObjRealAndImag(Polynomial *a, Polynomial *b) { return PolyRealAndImag(a, b); }
inline Rational *ObjRealAndImag(Rational *a, Rational *b) { return RatRealAndImag(a, b); }
inline Polynomial *ObjRealToComp(Polynomial *a) { return PolyRealToComp(a); }
inline Rational *ObjRealToComp(Rational *a) { return RatRealToComp(a); }

// Gives back a working temporary (owned and kept objects are left alone).
inline void ObjDrop(Polynomial *p) {
  if (p != nullptr && p->status == kTemporary) PolyUndef(p);
}
inline void ObjDrop(Rational *r) {
  if (r != nullptr && r->status == kTemporary) RatUndef(r);
}
inline void ObjDrop(Complex *z) {
  if (z != nullptr && z->status == kTemporary) CompUndef(z);
}

// The constant x of the kind (complex coefficients when complex).
template <class O>
O *ObjConst(double x, bool complex);
template <>
inline Polynomial *ObjConst<Polynomial>(double x, bool complex) {
  Polynomial *p = complex ? C_PolyDef("", 0, nullptr) : PolyConst(x);
  if (complex) static_cast<ComplexValue *>(p->coef->elements)[0] = {x, 0.0};
  return p;
}
template <>
inline Rational *ObjConst<Rational>(double x, bool complex) {
  Rational *r = RatConst(x);
  if (!complex) return r;
  Rational *c = RatRealToComp(r);
  RatUndef(r);
  return c;
}

// A polynomial scalar as an element of the kind O.
template <class O>
O *ObjFromPoly(Polynomial *p);
template <>
inline Polynomial *ObjFromPoly<Polynomial>(Polynomial *p) { return PolyDup(p); }
template <>
inline Rational *ObjFromPoly<Rational>(Polynomial *p) { return RatFromPoly(p); }

// Element k of a class 2 to 5 matrix.
template <class O>
O *&ObjAt(Matrix *m, long long k) {
  return static_cast<O **>(m->elements)[k];
}

// Element k of c becomes e, owned by c; the element it replaces goes back.
inline void ObjStore(Matrix *c, long long k, Polynomial *e) {
  MatElementRelease(c->cls, ObjAt<Polynomial>(c, k));
  ObjAt<Polynomial>(c, k) = PolyOwn(e, kOwnedElement);
}
inline void ObjStore(Matrix *c, long long k, Rational *e) {
  MatElementRelease(c->cls, ObjAt<Rational>(c, k));
  ObjAt<Rational>(c, k) = RatOwn(e, kOwnedPart);
}

// c[k] = op(a[k]) and c[k] = op(a[k], b[k]) over every element.
template <class O, class Op>
Matrix *MapObjects(Matrix *c, Matrix *a, Op op) {
  for (long long k = 0; k < MatCount(c); k++) ObjStore(c, k, op(ObjAt<O>(a, k)));
  return c;
}
template <class O, class Op>
Matrix *ZipObjects(Matrix *c, Matrix *a, Matrix *b, Op op) {
  for (long long k = 0; k < MatCount(c); k++) ObjStore(c, k, op(ObjAt<O>(a, k), ObjAt<O>(b, k)));
  return c;
}

// x - y of two working values, both given back (the result is kept).
template <class O>
O *ObjDifference(O *x, O *y) {
  O *d = ObjSub(x, y);
  ObjDrop(x);
  ObjDrop(y);
  return d;
}

// -x of a working value, which is given back.
template <class O>
O *ObjNegateInto(O *x) {
  O *n = ObjNegate(x);
  ObjDrop(x);
  return n;
}

// The sum of products a(i, :) b(:, j) into c, in the order of the real
// layer's product; each working product and partial sum goes back at once.
template <class O>
void ObjectProduct(Matrix *c, Matrix *a, Matrix *b) {
  const int n = a->rows, m = a->cols, p = b->cols;
  const bool complex = HasComplexValues(c->cls);
  for (int i = 0; i < n; i++)
    for (int j = 0; j < p; j++) {
      O *sum = nullptr;
      for (int k = 0; k < m; k++) {
        O *t = ObjMul(ObjAt<O>(a, static_cast<long long>(i) * m + k),
                      ObjAt<O>(b, static_cast<long long>(k) * p + j));
        if (sum == nullptr) {
          sum = t;
          continue;
        }
        O *s = ObjAdd(sum, t);
        ObjDrop(sum);
        ObjDrop(t);
        sum = s;
      }
      ObjStore(c, static_cast<long long>(i) * p + j,
               sum != nullptr ? sum : ObjConst<O>(0.0, complex));
    }
}

}  // namespace velk_matrix

#endif
