// The polynomial and rational matrix layers' own front-ends: scalar forms with
// polynomials and rationals, evaluation, the matrix polynomial, the variable.
#include <type_traits>

#include "core/constructors.h"
#include "matrix/frontend.h"
#include "matrix/linear.h"
#include "matrix/operations.h"
#include "matrix/polynomial_matrix.h"
#include "scalar/poly_coef.h"

using namespace velk_matrix;

namespace {

const char *NameOf(const char *name) { return name != nullptr ? name : ""; }

// m converted to the kind (1 polynomial, 2 rational) when its own is lower,
// and to complex values when complex; named like m.
Matrix *Lift(Matrix *m, int kind, bool complex) {
  if (ClassKind(m->cls) < kind) {
    if (kind == ClassKind(kPoly))
      m = MatRealToPoly(m);
    else
      m = IsPolyClass(m->cls) ? MatPolyToRat(m) : MatRealToRat(m);
  }
  if (complex && !HasComplexValues(m->cls)) m = MatRealToComp(m);
  return m;
}

// Every element of m (lifted to hold the scalar) through op, for element
// objects of the kinds the lift can give.
template <class F, class Op>
Matrix *WithScalar(const F &front, Matrix *m, int kind, bool complex, Op op) {
  if (!IsValidClass(m->cls)) return front.BadClass(m);
  m = Lift(m, kind, complex);
  Matrix *c = MatSameDef(m);
  return ByObjectType(c->cls, [&]<class O>(ObjectType<O>) { return MapObjects<O>(c, m, op); });
}

int PolyKind(Matrix *m) { return ClassKind(m->cls) > 1 ? ClassKind(m->cls) : 1; }
constexpr int kRatKind = 2;

template <class O>
constexpr bool kIsRational = std::is_same_v<O, Rational>;

// Checks of the evaluation family, then the result of the element kind.
template <class F>
bool Evaluable(const F &front, Matrix *m) {
  if (m->rows == 0 || m->cols == 0) {
    front.Fail("Zero-size matrix", m);
    return false;
  }
  if (!HasElementObjects(m->cls)) {
    front.Fail("Not a polynomial nor rational matrix", m);
    return false;
  }
  return true;
}

// The value of an element at a complex point, whatever its coefficients.
ComplexValue ValueAt(Polynomial *p, Complex *z) {
  Complex *v = p->kind == 1 ? C_PolyEvalC(p, z) : PolyEvalC(p, z);
  ComplexValue out{v->re, v->im};
  ObjDrop(v);
  return out;
}
ComplexValue ValueAt(Rational *r, Complex *z) {
  Complex *v = r->kind == 1 ? C_RatEvalC(r, z) : RatEvalC(r, z);
  ComplexValue out{v->re, v->im};
  ObjDrop(v);
  return out;
}
double RealValueAt(Polynomial *p, double x) { return PolyEval(p, x); }
double RealValueAt(Rational *r, double x) { return RatEval(r, x); }
ComplexValue ComplexValueAt(Polynomial *p, double x) {
  Complex *v = C_PolyEval(p, x);
  ComplexValue out{v->re, v->im};
  ObjDrop(v);
  return out;
}
ComplexValue ComplexValueAt(Rational *r, double x) {
  Complex *v = C_RatEval(r, x);
  ComplexValue out{v->re, v->im};
  ObjDrop(v);
  return out;
}

// Values of every element: value(element, k) gives a ComplexValue (complex
// result) or a double (real result).
template <class Value>
Matrix *Values(Matrix *m, bool complex, Value value) {
  Matrix *c = complex ? C_MatDef("", m->rows, m->cols) : MatDef("", m->rows, m->cols);
  ByObjectType(m->cls, [&]<class O>(ObjectType<O>) {
    for (long long k = 0; k < MatCount(m); k++) {
      auto v = value(ObjAt<O>(m, k), k);
      if constexpr (std::is_same_v<decltype(v), double>)
        MatReal(c)[k] = v;
      else if (complex)
        static_cast<ComplexValue *>(c->elements)[k] = v;
      else
        MatReal(c)[k] = v.re;  // real coefficients at a real point
    }
    return 0;
  });
  return c;
}

// X + c I on the diagonal of a real or complex square X.
void AddDiagonal(Matrix *x, ComplexValue c) {
  for (int k = 0; k < x->rows; k++) {
    long long at = static_cast<long long>(k) * x->cols + k;
    if (x->cls == kComplex) {
      ComplexValue &d = static_cast<ComplexValue *>(x->elements)[at];
      d = {d.re + c.re, d.im + c.im};
    } else {
      MatReal(x)[at] += c.re;
    }
  }
}

}  // namespace

// ---- scalar forms -----------------------------------------------------------------

Matrix *MatAdd_Polynomial(Matrix *m, Polynomial *p) {
  Front f{"MatAdd_Polynomial()", [=] {
            MatSetMessage("%s(%dx%d) .+ %s(%s^%d)", m->name, m->rows, m->cols, NameOf(p->name),
                          PolyVariableName(p), p->degree);
          }};
  return WithScalar(f, m, PolyKind(m), p->kind == 1, [p](auto *e) { return ObjAddPoly(e, p); });
}

Matrix *MatSub_Polynomial(Matrix *m, Polynomial *p) {
  Front f{"MatSub_Polynomial()", [=] {
            MatSetMessage("%s(%dx%d) .- %s(%s^%d)", m->name, m->rows, m->cols, NameOf(p->name),
                          PolyVariableName(p), p->degree);
          }};
  return WithScalar(f, m, PolyKind(m), p->kind == 1, [p](auto *e) { return ObjSubPoly(e, p); });
}

Matrix *MatSub_Polynomial(Polynomial *p, Matrix *m) {
  Front f{"MatSub_Polynomial()", [=] {
            MatSetMessage("%s(%s^%d) .- %s(%dx%d)", NameOf(p->name), PolyVariableName(p), p->degree,
                          m->name, m->rows, m->cols);
          }};
  return WithScalar(f, m, PolyKind(m), p->kind == 1,
                    [p](auto *e) { return ObjNegateInto(ObjSubPoly(e, p)); });
}

Matrix *MatAdd_Rational(Matrix *m, Rational *r) {
  Front f{"MatAdd_Rational()", [=] {
            MatSetMessage("%s(%dx%d) .+ %s(s^%d/s^%d)", m->name, m->rows, m->cols, NameOf(r->name),
                          r->nume_degree, r->deno_degree);
          }};
  return WithScalar(f, m, kRatKind, r->kind == 1, [r]<class E>(E *e) {
    if constexpr (std::is_same_v<E, Rational>) return RatAdd(e, r);
    else return e;  // not reached: the matrix is lifted to rationals
  });
}

Matrix *MatSub_Rational(Matrix *m, Rational *r) {
  Front f{"MatSub_Rational()", [=] {
            MatSetMessage("%s(%dx%d) .- %s(s^%d/s^%d)", m->name, m->rows, m->cols, NameOf(r->name),
                          r->nume_degree, r->deno_degree);
          }};
  return WithScalar(f, m, kRatKind, r->kind == 1, [r]<class E>(E *e) {
    if constexpr (std::is_same_v<E, Rational>) return RatSub(e, r);
    else return e;
  });
}

Matrix *MatSub_Rational(Rational *r, Matrix *m) {
  Front f{"MatSub_Rational()", [=] {
            MatSetMessage("%s(s^%d/s^%d) .- %s(%dx%d)", NameOf(r->name), r->nume_degree,
                          r->deno_degree, m->name, m->rows, m->cols);
          }};
  return WithScalar(f, m, kRatKind, r->kind == 1, [r]<class E>(E *e) {
    if constexpr (std::is_same_v<E, Rational>) return RatSub(r, e);
    else return e;
  });
}

Matrix *MatScaleP(Matrix *m, Polynomial *p) {
  Front f{"MatScaleP()", [=] {
            MatSetMessage("%s(%dx%d) * %s(%s^%d)", m->name, m->rows, m->cols, NameOf(p->name),
                          PolyVariableName(p), p->degree);
          }};
  return WithScalar(f, m, PolyKind(m), p->kind == 1, [p](auto *e) { return ObjMulPoly(e, p); });
}

Matrix *MatScaleR(Matrix *m, Rational *r) {
  Front f{"MatScaleR()", [=] {
            MatSetMessage("%s(%dx%d) * %s(s^%d/s^%d)", m->name, m->rows, m->cols, NameOf(r->name),
                          r->nume_degree, r->deno_degree);
          }};
  return WithScalar(f, m, kRatKind, r->kind == 1, [r]<class E>(E *e) {
    if constexpr (std::is_same_v<E, Rational>) return RatMul(e, r);
    else return e;
  });
}

// ---- evaluation -------------------------------------------------------------------

Matrix *MatEval(Matrix *m, double x) {
  Front f{"MatEval()", [=] { MatSetMessage("eval(%s(%dx%d), %g)", m->name, m->rows, m->cols, x); }};
  if (!Evaluable(f, m)) return MatDef("", 0, 0);
  if (HasComplexValues(m->cls))
    return Values(m, true, [x](auto *e, long long) { return ComplexValueAt(e, x); });
  return Values(m, false, [x](auto *e, long long) { return RealValueAt(e, x); });
}

Matrix *MatEvalC(Matrix *m, Complex *z) {
  Front f{"MatEvalC()", [=] {
            MatSetMessage("eval(%s(%dx%d), %s(%g,%g))", m->name, m->rows, m->cols,
                          NameOf(z->name), z->re, z->im);
          }};
  if (!Evaluable(f, m)) return MatDef("", 0, 0);
  return Values(m, true, [z](auto *e, long long) { return ValueAt(e, z); });
}

Matrix *MatEvalP(Matrix *m, Polynomial *p) {
  // The label has no closing parenthesis.
  Front f{"MatEvalP()", [=] {
            MatSetMessage("eval(%s(%dx%d), %s(%s^%d)", m->name, m->rows, m->cols, NameOf(p->name),
                          PolyVariableName(p), p->degree);
          }};
  if (!Evaluable(f, m)) return MatDef("", 0, 0);
  m = Lift(m, ClassKind(m->cls), p->kind == 1);
  Matrix *c = MatSameDef(m);
  return ByObjectType(m->cls, [&]<class O>(ObjectType<O>) {
    return MapObjects<O>(c, m, [p](O *e) {
      if constexpr (kIsRational<O>) return RatEvalP(e, p);
      else return PolyEvalP(e, p);
    });
  });
}

Matrix *MatEvalR(Matrix *m, Rational *r) {
  // The label has no closing parenthesis.
  Front f{"MatEvalR()", [=] {
            MatSetMessage("eval(%s(%dx%d), %s(s^%d/s^%d)", m->name, m->rows, m->cols,
                          NameOf(r->name), r->nume_degree, r->deno_degree);
          }};
  if (!Evaluable(f, m)) return MatDef("", 0, 0);
  bool complex = HasComplexValues(m->cls) || r->kind == 1;
  Matrix *c = MatDefClass("", m->rows, m->cols, ClassOf(kRatKind, complex), "MatDef()");
  ByObjectType(m->cls, [&]<class O>(ObjectType<O>) {
    for (long long k = 0; k < MatCount(m); k++) {
      if constexpr (kIsRational<O>)
        ObjStore(c, k, RatEvalR(ObjAt<O>(m, k), r));
      else
        ObjStore(c, k, PolyEvalR(ObjAt<O>(m, k), r));
    }
    return 0;
  });
  return c;
}

Matrix *MatEvalMElem(Matrix *m, Matrix *a) {
  Front f{"MatEvalMElem()", [=] { Label2("eval(%s(%dx%d), %s(%dx%d))", m, a); }};
  if (!Evaluable(f, m)) return MatDef("", 0, 0);
  if (a->rows != m->rows || a->cols != m->cols) return f.Fail("Not same size", m, a);
  if (!IsNumericClass(a->cls)) return f.BadClass(m, a);
  bool complex = HasComplexValues(m->cls) || a->cls == kComplex;
  Complex *z = CompDef("", 0, 0);
  Matrix *c = Values(m, complex, [&](auto *e, long long k) {
    ComplexValue v = a->cls == kComplex ? static_cast<ComplexValue *>(a->elements)[k]
                                        : ComplexValue{MatReal(a)[k], 0.0};
    z->re = v.re;
    z->im = v.im;
    return ValueAt(e, z);
  });
  CompUndef(z);
  return c;
}

Matrix *PolyEvalMat(Polynomial *p, Matrix *a) {
  if (a->rows != a->cols || !IsNumericClass(a->cls)) {
    MatSetMessage("eval(%s(%s^%d), %s(%dx%d))", NameOf(p->name), PolyVariableName(p), p->degree,
                  a->name, a->rows, a->cols);
    MatError("PolyEvalMat()", a->rows != a->cols ? "Not a square matrix" : "Incorrect class matrix",
             a);
    return MatDef("", 0, 0);
  }
  const bool complex = p->kind == 1 || a->cls == kComplex;
  Matrix *x = complex ? C_MatZDef(a->rows) : MatZDef(a->rows);
  AddDiagonal(x, velk_poly::At(p, p->degree));
  for (int k = p->degree - 1; k >= 0; k--) {
    Matrix *next = MatMul(x, a);
    MatUndef(x);
    x = next;
    AddDiagonal(x, velk_poly::At(p, k));
  }
  return x;
}

Matrix *RatEvalM(Rational *r, Matrix *a) {
  Matrix *n = PolyEvalMat(r->nume, a);
  Matrix *d = PolyEvalMat(r->deno, a);
  Matrix *inverse = MatInv(d, MatFrobNorm(d) * eps);
  Matrix *result = MatMul(n, inverse);
  MatUndef(inverse);
  MatUndef(d);
  MatUndef(n);
  return result;
}

Matrix *MatEvalM(Matrix *m, Matrix *a) {
  Front f{"MatEvalM()", [=] { Label2("eval(%s(%dx%d), %s(%dx%d))", m, a); }};
  if (!Evaluable(f, m)) return MatDef("", 0, 0);
  if (a->rows != a->cols) return f.Fail("Not a square matrix", m, a);
  if (!IsNumericClass(a->cls)) return f.BadClass(m, a);
  const int n = a->rows;
  const bool complex = HasComplexValues(m->cls) || a->cls == kComplex;
  Matrix *c = complex ? C_MatZDef2(m->rows * n, m->cols * n) : MatZDef2(m->rows * n, m->cols * n);
  for (int i = 0; i < m->rows; i++)
    for (int j = 0; j < m->cols; j++) {
      const long long k = static_cast<long long>(i) * m->cols + j;
      Matrix *block = IsRatClass(m->cls) ? RatEvalM(ObjAt<Rational>(m, k), a)
                                         : PolyEvalMat(ObjAt<Polynomial>(m, k), a);
      Matrix *held = complex && block->cls == kReal ? MatRealToComp(block) : block;
      for (int r = 0; r < n; r++)
        MatCopySameClass(c, static_cast<long long>(i * n + r) * c->cols + j * n, held,
                         static_cast<long long>(r) * n, n);
      if (held != block) MatUndef(held);
      MatUndef(block);
    }
  return c;
}

// ---- variable ---------------------------------------------------------------------

Matrix *MatSetVar(Matrix *m, const char *variable) {
  if (!HasElementObjects(m->cls)) {
    MatError("MatSetVar()", "Incorrect class matrix", m);
    return m;
  }
  for (long long k = 0; k < MatCount(m); k++) {
    if (IsPolyClass(m->cls))
      PolySetVariable(ObjAt<Polynomial>(m, k), variable);
    else
      RatSetVariable(ObjAt<Rational>(m, k), variable);
  }
  return m;
}
