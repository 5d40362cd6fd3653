// The one pattern of every matrix front-end. Internal to the matrix layer:
// describe the expression, check, promote, define the result, dispatch by class.
//
// A front-end names itself with a Front (its location and how it writes its
// expression into the message buffer; the label is written only when a check
// fails). The work of the real and the complex layer is one generic callable
// run with the element type of the class: Type<double> for class 0,
// Type<Complexd> for class 1. The polynomial and rational layers (classes 2 to
// 5) are a second generic callable run with ObjectType<Polynomial> or
// ObjectType<Rational> (matrix/object_ops.h); structural operations move
// elements of every class alike.
#ifndef VELK_MATRIX_FRONTEND_H
#define VELK_MATRIX_FRONTEND_H

#include <complex>

#include "core/constructors.h"
#include "core/matrix.h"
#include "linalg/gemm.h"
#include "matrix/elements.h"
#include "matrix/object_ops.h"
#include "scalar/fill.h"
#include "scalar/polynomial.h"
#include "scalar/rational.h"

namespace velk_matrix {

using Complexd = std::complex<double>;

// Tag carrying an element type.
template <class T>
struct Type {};

template <class T>
T *Entries(Matrix *m) {
  return static_cast<T *>(m->elements);
}

// The expression texts of most front-ends: one or two operands written as
// name(rows x cols) into a fixed format.
inline void Label1(const char *format, const Matrix *a) {
  FormatMessage(MatMessageBuffer, format, a->name, a->rows, a->cols);
}
inline void Label2(const char *format, const Matrix *a, const Matrix *b) {
  FormatMessage(MatMessageBuffer, format, a->name, a->rows, a->cols, b->name, b->rows, b->cols);
}

// Reports for a front-end; each writes the label first. Fatal: they return (an
// empty real matrix) only when a harness intercepts the exit.
Matrix *FailWith(const char *location, const char *message, Matrix *a, Matrix *b);

template <class Label>
struct Front {
  const char *location;
  Label label;

  Matrix *Fail(const char *message, Matrix *a, Matrix *b = nullptr) const {
    label();
    return FailWith(location, message, a, b);
  }
  Matrix *BadClass(Matrix *a, Matrix *b = nullptr) const {
    return Fail("Incorrect class matrix", a, b);
  }
};
template <class Label>
Front(const char *, Label) -> Front<Label>;

// Both operands brought to their common class; new temporaries named like the
// operands they came from.
struct Operands {
  Matrix *a;
  Matrix *b;
};
Operands Promote(Matrix *a, Matrix *b);

// Runs work(Type<T>{}) with the element type of a real or complex class.
// REQUIRES: cls is 0 or 1.
template <class Work>
void ByElementType(int cls, Work &&work) {
  if (cls == kReal)
    work(Type<double>{});
  else
    work(Type<Complexd>{});
}

// One operand: class check, result definition, layer work (called as
// work(Type<T>, result) for classes 0 and 1, objects(ObjectType<O>, result)
// for 2 to 5; an objects arm returns the result, which may be another matrix).
template <class F, class Define, class Work, class Objects>
Matrix *Unary(const F &front, Matrix *a, Define define, Work work, Objects objects) {
  if (!IsValidClass(a->cls)) return front.BadClass(a);
  Matrix *c = define(a);
  if (HasElementObjects(a->cls)) return ByObjectType(a->cls, [&](auto t) { return objects(t, c); });
  ByElementType(a->cls, [&](auto t) { work(t, c); });
  return c;
}

// Two operands whose checks have passed: class check, promotion to the common
// class (the front-end `self` runs again on the promoted pair), definition,
// layer work (as for Unary).
template <class F, class Define, class Work, class Objects>
Matrix *Binary(const F &front, Matrix *a, Matrix *b, Matrix *(*self)(Matrix *, Matrix *),
               Define define, Work work, Objects objects) {
  if (!IsValidClass(a->cls) || !IsValidClass(b->cls)) return front.BadClass(a, b);
  if (a->cls != b->cls) {
    Operands p = Promote(a, b);
    return self(p.a, p.b);
  }
  Matrix *c = define(a, b);
  if (HasElementObjects(a->cls)) return ByObjectType(a->cls, [&](auto t) { return objects(t, c); });
  ByElementType(a->cls, [&](auto t) { work(t, c); });
  return c;
}

// Structural two-operand front-ends (they only move elements, so every class
// is served): class check, promotion, then build(a, b) of the equal classes.
template <class F, class Build>
Matrix *Structural(const F &front, Matrix *a, Matrix *b, Matrix *(*self)(Matrix *, Matrix *),
                   Build build) {
  if (!IsValidClass(a->cls) || !IsValidClass(b->cls)) return front.BadClass(a, b);
  if (a->cls != b->cls) {
    Operands p = Promote(a, b);
    return self(p.a, p.b);
  }
  return build(a, b);
}

// Elementwise kernels of the real and complex layers.
template <class T, class Op>
void Map(Matrix *c, Matrix *a, Op op) {
  T *pc = Entries<T>(c);
  const T *pa = Entries<T>(a);
  long long n = MatCount(c);
  for (long long k = 0; k < n; k++) pc[k] = op(pa[k]);
}

template <class T, class Op>
void Zip(Matrix *c, Matrix *a, Matrix *b, Op op) {
  T *pc = Entries<T>(c);
  const T *pa = Entries<T>(a);
  const T *pb = Entries<T>(b);
  long long n = MatCount(c);
  for (long long k = 0; k < n; k++) pc[k] = op(pa[k], pb[k]);
}

inline double Conj(double x) { return x; }
inline Complexd Conj(Complexd z) { return std::conj(z); }

// Applies op to every coefficient of every element of a polynomial or
// rational matrix m, in place (rationals: the numerator, and the denominator
// too unless numerator_only). Returns m.
template <class Op>
Matrix *MapCoefficients(Matrix *m, bool numerator_only, Op op) {
  auto apply = [&](Polynomial *p) {
    ByElementType(p->coef->cls, [&]<class T>(Type<T>) { Map<T>(p->coef, p->coef, op); });
  };
  void **slots = Entries<void *>(m);
  for (long long k = 0; k < MatCount(m); k++) {
    if (IsPolyClass(m->cls)) {
      apply(static_cast<Polynomial *>(slots[k]));
    } else {
      Rational *r = static_cast<Rational *>(slots[k]);
      apply(r->nume);
      if (!numerator_only) apply(r->deno);
    }
  }
  return m;
}

// c = a b through the product kernel of linalg/.
template <class T>
void Product(Matrix *c, Matrix *a, Matrix *b) {
  velk_linalg::Gemm(velk_linalg::GemmMode::kSet, a->rows, b->cols, a->cols, Entries<T>(a), a->cols,
                    Entries<T>(b), b->cols, Entries<T>(c), c->cols);
}

}  // namespace velk_matrix

#endif
