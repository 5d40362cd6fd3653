// Arithmetic front-ends: the real and complex layers, and the polynomial and
// rational arms (element objects through matrix/object_ops.h).
#include <cmath>
#include <functional>
#include <type_traits>

#include "core/constructors.h"
#include "matrix/frontend.h"
#include "matrix/linear.h"
#include "matrix/operations.h"

using namespace velk_matrix;

namespace {

Matrix *Same(Matrix *m) { return MatSameDef(m); }
Matrix *SameOfFirst(Matrix *a, Matrix *) { return MatSameDef(a); }

// Elementwise over two operands of the same shape; objects go through
// object_op (a generic callable of two element objects).
template <class Op, class ObjectOp>
Matrix *Elementwise(const char *location, const char *format, Matrix *a, Matrix *b,
                    Matrix *(*self)(Matrix *, Matrix *), Op op, ObjectOp object_op) {
  Front f{location, [=] { Label2(format, a, b); }};
  if (a->rows != b->rows || a->cols != b->cols) return f.Fail("Not same size", a, b);
  return Binary(
      f, a, b, self, SameOfFirst, [&]<class T>(Type<T>, Matrix *c) { Zip<T>(c, a, b, op); },
      [&]<class O>(ObjectType<O>, Matrix *c) { return ZipObjects<O>(c, a, b, object_op); });
}

// Each element of m through op (values) or object_op (element objects), into
// a new matrix of m's class.
template <class F, class Op, class ObjectOp>
Matrix *EachElement(const F &front, Matrix *m, Op op, ObjectOp object_op) {
  return Unary(
      front, m, Same, [&]<class T>(Type<T>, Matrix *c) { Map<T>(c, m, op); },
      [&]<class O>(ObjectType<O>, Matrix *c) { return MapObjects<O>(c, m, object_op); });
}

// The same with a complex value: a matrix of real values or coefficients is
// made complex first (0 -> 1, 2 -> 3, 4 -> 5), so only complex layers run.
template <class F, class Op, class ObjectOp>
Matrix *EachElementComplex(const F &front, Matrix *m, Op op, ObjectOp object_op) {
  if (IsValidClass(m->cls) && !HasComplexValues(m->cls)) m = MatRealToComp(m);
  return Unary(
      front, m, Same,
      [&]<class T>(Type<T>, Matrix *c) {
        if constexpr (std::is_same_v<T, Complexd>) Map<T>(c, m, op);
      },
      [&]<class O>(ObjectType<O>, Matrix *c) { return MapObjects<O>(c, m, object_op); });
}

// An integral exponent as an int, or false (objects take integral powers only).
bool IntegralExponent(double e, int *n) {
  if (!(e == std::floor(e)) || std::fabs(e) > 2147483647.0) return false;
  *n = static_cast<int>(e);
  return true;
}

Complexd ValueOf(const Complex *z) { return {z->re, z->im}; }

// x^n by repeated squaring, exact for small integers (and n < 0 as 1 / x^-n).
template <class T>
T IntPow(T x, long long n) {
  bool invert = n < 0;
  unsigned long long e = static_cast<unsigned long long>(invert ? -n : n);
  T result(1);
  while (e != 0) {
    if (e & 1) result *= x;
    e >>= 1;
    if (e != 0) x *= x;
  }
  return invert ? T(1) / result : result;
}

// x^e for a real exponent; integral exponents by exact products.
template <class T>
T Power(T x, double e) {
  if (e == std::floor(e) && std::fabs(e) < 9.0e15) return IntPow(x, static_cast<long long>(e));
  return std::pow(x, e);
}

bool RealPowerStaysReal(Matrix *m, double x) {
  if (x == std::floor(x)) return true;
  for (long long k = 0; k < MatCount(m); k++)
    if (MatReal(m)[k] < 0.0) return false;
  return true;
}

template <class F>
bool RealOnly(const F &front, Matrix *a, Matrix *b = nullptr) {
  if (a->cls == kReal && (b == nullptr || b->cls == kReal)) return true;
  front.Fail("Not a real matrix", a, b);
  return false;
}

}  // namespace

// ---- two matrices -----------------------------------------------------------------

Matrix *MatAdd(Matrix *a, Matrix *b) {
  return Elementwise("MatAdd()", "%s(%dx%d) + %s(%dx%d)", a, b, MatAdd, std::plus<>{},
                     [](auto *x, auto *y) { return ObjAdd(x, y); });
}
Matrix *MatSub(Matrix *a, Matrix *b) {
  return Elementwise("MatSub()", "%s(%dx%d) - %s(%dx%d)", a, b, MatSub, std::minus<>{},
                     [](auto *x, auto *y) { return ObjSub(x, y); });
}
Matrix *MatMulElem(Matrix *a, Matrix *b) {
  return Elementwise("MatMulElem()", "%s(%dx%d) .* %s(%dx%d)", a, b, MatMulElem,
                     std::multiplies<>{}, [](auto *x, auto *y) { return ObjMul(x, y); });
}
// Polynomials divided elementwise give rationals: the operands are paired
// over 1 and divided as rationals.
Matrix *MatDivElem(Matrix *a, Matrix *b) {
  if (IsPolyClass(a->cls) && IsPolyClass(b->cls) && a->rows == b->rows && a->cols == b->cols)
    return MatDivElem(MatPolyToRat(a), MatPolyToRat(b));
  return Elementwise("MatDivElem()", "%s(%dx%d) ./ %s(%dx%d)", a, b, MatDivElem, std::divides<>{},
                     [](auto *x, auto *y) {
                       if constexpr (std::is_same_v<decltype(x), Rational *>) return RatDiv(x, y);
                       else return x;  // not reached: polynomials are paired above
                     });
}

Matrix *MatMul(Matrix *a, Matrix *b) {
  Front f{"MatMul()", [=] { Label2("%s(%dx%d) * %s(%dx%d)", a, b); }};
  if (b->rows != a->cols) return f.Fail("Inconsistent size", a, b);
  return Binary(
      f, a, b, MatMul, MatMulDef, [&]<class T>(Type<T>, Matrix *c) { Product<T>(c, a, b); },
      [&]<class O>(ObjectType<O>, Matrix *c) {
        ObjectProduct<O>(c, a, b);
        return c;
      });
}

Matrix *MatVectorProduct(Matrix *a, Matrix *b) {
  Front f{"MatVectorProduct()", [=] { Label2("vectorprod(%s(%dx%d), %s(%dx%d))", a, b); }};
  if (a->rows == 0 || a->cols == 0 || b->rows == 0 || b->cols == 0)
    return f.Fail("Zero-size matrix", a, b);
  if (!((a->rows == 3 && a->cols == 1) || (a->rows == 1 && a->cols == 3)))
    return f.Fail("Not a 3x1 nor a 1x3 vector", a, b);
  if (a->rows != b->rows || a->cols != b->cols) return f.Fail("Not same size", a, b);
  return Binary(
      f, a, b, MatVectorProduct, SameOfFirst,
      [&]<class T>(Type<T>, Matrix *c) {
        const T *u = Entries<T>(a);
        const T *v = Entries<T>(b);
        T *w = Entries<T>(c);
        w[0] = u[1] * v[2] - u[2] * v[1];
        w[1] = u[2] * v[0] - u[0] * v[2];
        w[2] = u[0] * v[1] - u[1] * v[0];
      },
      [&]<class O>(ObjectType<O>, Matrix *c) {
        auto u = [&](int k) { return ObjAt<O>(a, k); };
        auto v = [&](int k) { return ObjAt<O>(b, k); };
        for (int k = 0; k < 3; k++) {
          int p = (k + 1) % 3, q = (k + 2) % 3;
          ObjStore(c, k, ObjDifference(ObjMul(u(p), v(q)), ObjMul(u(q), v(p))));
        }
        return c;
      });
}

Matrix *MatPowElemEach(Matrix *a, Matrix *b) {
  Front f{"MatPowElemEach()", [=] { Label2("%s(%dx%d) .^ %s(%dx%d)", a, b); }};
  if (a->rows != b->rows || a->cols != b->cols) return f.Fail("Not same size", a, b);
  if (b->cls != kReal) return f.Fail("Not a real index matrix", a, b);
  int n;
  if (HasElementObjects(a->cls))
    for (long long k = 0; k < MatCount(b); k++)
      if (!IntegralExponent(MatReal(b)[k], &n)) return f.BadClass(a, b);
  return Unary(
      f, a, Same,
      [&]<class T>(Type<T>, Matrix *c) {
        const T *x = Entries<T>(a);
        const double *e = MatReal(b);
        for (long long k = 0; k < MatCount(c); k++) Entries<T>(c)[k] = Power(x[k], e[k]);
      },
      [&]<class O>(ObjectType<O>, Matrix *c) {
        for (long long k = 0; k < MatCount(c); k++)
          ObjStore(c, k, ObjPow(ObjAt<O>(a, k), static_cast<int>(MatReal(b)[k])));
        return c;
      });
}

Matrix *MatRemElemEach(Matrix *a, Matrix *b) {
  Front f{"MatRemElemEach()", [=] { Label2("rem(%s(%dx%d), %s(%dx%d))", a, b); }};
  if (!RealOnly(f, a, b)) return MatDef("", 0, 0);
  if (a->rows != b->rows || a->cols != b->cols) return f.Fail("Not same size", a, b);
  Matrix *c = MatSameDef(a);
  Zip<double>(c, a, b, [](double x, double y) { return std::fmod(x, y); });
  return c;
}

// ---- a matrix and a scalar --------------------------------------------------------

Matrix *MatAdd_double(Matrix *m, double x) {
  Front f{"MatAdd_double()",
          [=] { MatSetMessage("%s(%dx%d) .+ %g", m->name, m->rows, m->cols, x); }};
  return EachElement(f, m, [x](auto v) { return v + x; }, [x](auto *e) { return ObjAdd(e, x); });
}

Matrix *MatAdd_Complex(Matrix *m, Complex *z) {
  Front f{"MatAdd_Complex()", [=] {
            MatSetMessage("%s(%dx%d) .+ %s(%g,%g)", m->name, m->rows, m->cols, z->name, z->re,
                          z->im);
          }};
  return EachElementComplex(f, m, [w = ValueOf(z)](Complexd v) { return v + w; },
                            [z](auto *e) { return ObjAdd(e, z); });
}

Matrix *MatSub_double(Matrix *m, double x) {
  Front f{"MatSub_double()",
          [=] { MatSetMessage("%s(%dx%d) .- %g", m->name, m->rows, m->cols, x); }};
  return EachElement(f, m, [x](auto v) { return v - x; }, [x](auto *e) { return ObjSub(e, x); });
}

Matrix *MatSub_double(double x, Matrix *m) {
  Front f{"MatSub_double()",
          [=] { MatSetMessage("%g .- %s(%dx%d)", x, m->name, m->rows, m->cols); }};
  return EachElement(f, m, [x](auto v) { return x - v; },
                     [x](auto *e) { return ObjDifference(ObjConst<std::remove_pointer_t<decltype(e)>>(x, false), e); });
}

Matrix *MatSub_Complex(Matrix *m, Complex *z) {
  Front f{"MatSub_Complex()", [=] {
            MatSetMessage("%s(%dx%d) .- %s(%g,%g)", m->name, m->rows, m->cols, z->name, z->re,
                          z->im);
          }};
  return EachElementComplex(f, m, [w = ValueOf(z)](Complexd v) { return v - w; },
                            [z](auto *e) { return ObjSub(e, z); });
}

Matrix *MatSub_Complex(Complex *z, Matrix *m) {
  Front f{"MatSub_Complex()", [=] {
            MatSetMessage("%s(%g,%g) .- %s(%dx%d)", z->name, z->re, z->im, m->name, m->rows,
                          m->cols);
          }};
  return EachElementComplex(f, m, [w = ValueOf(z)](Complexd v) { return w - v; },
                            [z](auto *e) { return ObjNegateInto(ObjSub(e, z)); });
}

Matrix *MatScale(Matrix *m, double x) {
  Front f{"MatScale()", [=] { MatSetMessage("%s(%dx%d) * %g", m->name, m->rows, m->cols, x); }};
  return EachElement(f, m, [x](auto v) { return v * x; }, [x](auto *e) { return ObjScale(e, x); });
}

Matrix *MatScaleSelf(Matrix *m, double x) {
  Front f{"MatScaleSelf()", [=] { MatSetMessage("%s(%dx%d) * %g", m->name, m->rows, m->cols, x); }};
  return Unary(
      f, m, [](Matrix *a) { return a; },
      [&]<class T>(Type<T>, Matrix *c) { Map<T>(c, c, [x](T v) { return v * x; }); },
      [&]<class O>(ObjectType<O>, Matrix *c) {
        for (long long k = 0; k < MatCount(c); k++) ObjScaleSelf(ObjAt<O>(c, k), x);
        return c;
      });
}

Matrix *MatScaleC(Matrix *m, Complex *z) {
  if (z == nullptr) {
    MatSetMessage("%s(%dx%d) * (NULL,NULL)", m->name, m->rows, m->cols);
    return FailWith("MatScaleC()", "Scale is null complex", m, nullptr);
  }
  Front f{"MatScaleC()", [=] {
            MatSetMessage("%s(%dx%d) * %s(%g,%g)", m->name, m->rows, m->cols, z->name, z->re,
                          z->im);
          }};
  return EachElementComplex(f, m, [w = ValueOf(z)](Complexd v) { return v * w; },
                            [z](auto *e) { return ObjScale(e, z); });
}

Matrix *MatPow(Matrix *m, int n) {
  Front f{"MatPow()", [=] { MatSetMessage("%s(%dx%d)^%d", m->name, m->rows, m->cols, n); }};
  if (m->rows != m->cols) return f.Fail("Not a square matrix", m);
  // m^-n is inv(m)^n, the inverse with the default tolerance of the
  // Frobenius norm times eps; only real and complex matrices have one.
  if (n < 0 && IsValidClass(m->cls) && !IsNumericClass(m->cls)) return f.BadClass(m);
  unsigned power = n < 0 ? 0u - static_cast<unsigned>(n) : static_cast<unsigned>(n);
  if (n < 0 && (m->cls == kReal || m->cls == kComplex))
    m = MatSetName(MatInv(m, MatFrobNorm(m) * eps), m->name);
  return Unary(f, m, Same, [&]<class T>(Type<T>, Matrix *c) {
    // Binary powering: c collects the odd factors, base is squared; scratch
    // holds each product until it is swapped in.
    Matrix *base = MatDup(m), *scratch = MatSameDef(m);
    T *e = Entries<T>(c);
    for (long long k = 0; k < MatCount(c); k++) e[k] = T(0);
    for (int k = 0; k < m->rows; k++) e[static_cast<long long>(k) * m->cols + k] = T(1);
    for (unsigned p = power; p != 0; p >>= 1) {
      if (p & 1) {
        Product<T>(scratch, c, base);
        std::swap(c->elements, scratch->elements);
      }
      if (p > 1) {
        Product<T>(scratch, base, base);
        std::swap(base->elements, scratch->elements);
      }
    }
    MatUndef(scratch);
    MatUndef(base);
  }, [&]<class O>(ObjectType<O>, Matrix *c) {
    // The same powering over element objects; each product is made into a
    // new matrix whose elements are then swapped in.
    for (long long k = 0; k < MatCount(c); k++)
      ObjStore(c, k, ObjConst<O>(k % (m->cols + 1) == 0 ? 1.0 : 0.0, HasComplexValues(c->cls)));
    Matrix *base = MatDup(m);
    auto multiply = [&](Matrix *into, Matrix *x, Matrix *y) {
      Matrix *t = MatSameDef(m);
      ObjectProduct<O>(t, x, y);
      std::swap(into->elements, t->elements);
      MatUndef(t);
    };
    for (int p = n; p != 0; p >>= 1) {
      if (p & 1) multiply(c, c, base);
      if (p > 1) multiply(base, base, base);
    }
    MatUndef(base);
    return c;
  });
}

Matrix *MatPowElem(Matrix *m, int n) {
  Front f{"MatPowElem()", [=] { MatSetMessage("%s(%dx%d).^%d", m->name, m->rows, m->cols, n); }};
  return EachElement(f, m, [n](auto v) { return IntPow(v, n); },
                     [n](auto *e) { return ObjPow(e, n); });
}

Matrix *MatPowElemToReal(Matrix *m, double x) {
  Front f{"MatPowElemToReal()",
          [=] { MatSetMessage("%s(%dx%d).^%g", m->name, m->rows, m->cols, x); }};
  if (m->cls == kReal && !RealPowerStaysReal(m, x)) m = MatRealToComp(m);
  int n = 0;
  if (HasElementObjects(m->cls) && !IntegralExponent(x, &n)) return f.BadClass(m);
  return EachElement(f, m, [x](auto v) { return Power(v, x); },
                     [n](auto *e) { return ObjPow(e, n); });
}

Matrix *MatPowElemToReal(Matrix *m, Complex *z) {
  Front f{"MatPowElemToReal()", [=] {
            MatSetMessage("%s(%dx%d).^%s(%g,%g)", m->name, m->rows, m->cols, z->name, z->re, z->im);
          }};
  // Element objects take integral real exponents only.
  int n = 0;
  if (HasElementObjects(m->cls) && (z->im != 0 || !IntegralExponent(z->re, &n)))
    return f.BadClass(m);
  return EachElementComplex(f, m, [w = ValueOf(z)](Complexd v) { return std::pow(v, w); },
                            [n](auto *e) { return ObjPow(e, n); });
}

Matrix *MatRemElem(Matrix *m, double x) {
  Front f{"MatRemElem()",
          [=] { MatSetMessage("rem(%s(%dx%d), %g)", m->name, m->rows, m->cols, x); }};
  if (!RealOnly(f, m)) return MatDef("", 0, 0);
  Matrix *c = MatSameDef(m);
  Map<double>(c, m, [x](double v) { return std::fmod(v, x); });
  return c;
}

// ---- one matrix -------------------------------------------------------------------

// The inverse of a polynomial is a rational: polynomial matrices are paired
// over 1 first.
Matrix *MatInvElem(Matrix *m) {
  if (IsPolyClass(m->cls)) return MatInvElem(MatPolyToRat(m));
  Front f{"MatInvElem()", [=] { Label1("%s(%dx%d).~", m); }};
  return EachElement(f, m, [](auto v) { return decltype(v)(1) / v; }, [](auto *e) {
    if constexpr (std::is_same_v<decltype(e), Rational *>) return RatInv(e);
    else return e;  // not reached: polynomials are paired above
  });
}

Matrix *MatNegate(Matrix *m) {
  Front f{"MatNegate()", [=] { Label1("- %s(%dx%d)", m); }};
  return EachElement(f, m, [](auto v) { return -v; }, [](auto *e) { return ObjNegate(e); });
}

Matrix *MatIncrement(Matrix *m) {
  Front f{"MatIncrement()", [=] { Label1("%s(%dx%d)++", m); }};
  return EachElement(f, m, [](auto v) { return v + 1.0; }, [](auto *e) { return ObjAdd(e, 1.0); });
}

Matrix *MatDecrement(Matrix *m) {
  Front f{"MatDecrement()", [=] { Label1("%s(%dx%d)--", m); }};
  return EachElement(f, m, [](auto v) { return v - 1.0; }, [](auto *e) { return ObjSub(e, 1.0); });
}
