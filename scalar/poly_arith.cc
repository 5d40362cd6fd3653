// Polynomial construction, access, arithmetic, degree changes, rounding and
// evaluation. Coefficients are worked on in place in their one-row matrices:
// the loops below are the convolution and Horner loops themselves, with no
// object made per coefficient.
#include <cmath>
#include <cstring>
#include <utility>

#include "core/constructors.h"
#include "core/registry.h"
#include "scalar/poly_coef.h"

using namespace velk_poly;
namespace vc = velk_complex;

namespace {

const char *Name(const Polynomial *p) { return p->name != nullptr ? p->name : ""; }

// A failed check's fallback result, reached only when a harness takes the exit.
Polynomial *Fallback() { return PolyDef("", 0, nullptr); }

bool Defined(Polynomial *p, const char *location) {
  if (p->degree != -1) return true;
  PolyError(location, "Undefined polynomial", p);
  return false;
}

// Both defined and in one variable.
bool Compatible(Polynomial *p, Polynomial *q, const char *location) {
  if (!Defined(p, location) || !Defined(q, location)) return false;
  if (PolySameVariable(p, q)) return true;
  PolyError2(location, "Variables are distinct", p, q);
  return false;
}

bool Negligible(ComplexValue c, double tol) {
  return std::fabs(c.re) <= tol && std::fabs(c.im) <= tol;
}

// A copy of p's coefficients in a polynomial of the kind complex (p's kind
// or complex) and of degree max(p's, degree), zeros above p's.
Polynomial *Widened(Polynomial *p, int degree, bool complex) {
  if (degree < p->degree) degree = p->degree;
  Polynomial *r = New(degree, complex || IsComplex(p), p->variable);
  if (IsComplex(r) == IsComplex(p)) {
    MatCopySameClass(r->coef, 0, p->coef, 0, p->degree + 1);
  } else {
    for (int k = 0; k <= p->degree; k++) Put(r, k, At(p, k));
  }
  return r;
}

// p's contents replaced by t's (coefficients and degree); t goes back to the pool.
void TakeCoefficients(Polynomial *p, Polynomial *t) {
  std::swap(p->coef, t->coef);
  std::swap(p->degree, t->degree);
  std::swap(p->kind, t->kind);
  PolyUndef(t);
}

// p ± q with the lower degree read as zeros.
Polynomial *Sum(Polynomial *p, Polynomial *q, double sign, const char *location) {
  if (!Compatible(p, q, location)) return Fallback();
  bool complex = IsComplex(p) || IsComplex(q);
  Polynomial *r = Widened(p, q->degree, complex);
  PolySetVariable(r, ResultVariable(p, q));
  if (!complex) {
    double *c = Real(r);
    const double *b = Real(q);
    for (int k = 0; k <= q->degree; k++) c[k] += sign * b[k];
  } else {
    ComplexValue *c = Comp(r);
    for (int k = 0; k <= q->degree; k++) c[k] = vc::Add(c[k], vc::Scale(At(q, k), sign));
  }
  return PolySimplify(r, eps);
}

// The constant coefficient of a copy of p changed by v (complex when asked).
Polynomial *ConstantPlus(Polynomial *p, ComplexValue v, bool complex, const char *location) {
  if (!Defined(p, location)) return Fallback();
  Polynomial *r = Widened(p, 0, complex);
  Put(r, 0, vc::Add(At(r, 0), v));
  return PolySimplify(r, eps);
}

// Each part of each coefficient through f into a new polynomial of p's kind
// and variable (not simplified).
template <class F>
Polynomial *EachPart(Polynomial *p, F f) {
  Polynomial *r = New(p->degree, IsComplex(p), p->variable);
  double *out = Real(r);
  const double *in = Real(p);
  long long n = static_cast<long long>(p->degree + 1) * (IsComplex(p) ? 2 : 1);
  for (long long k = 0; k < n; k++) out[k] = f(in[k]);
  return r;
}

template <class F>
Polynomial *Rounded(Polynomial *p, const char *location, F f) {
  if (!Defined(p, location)) return Fallback();
  return PolySimplify(EachPart(p, f), eps);
}

// A real polynomial of p's degree from one part of each coefficient.
Polynomial *PartOf(Polynomial *p, bool imag) {
  Polynomial *r = PolyDef("", p->degree, p->variable);
  for (int k = 0; k <= p->degree; k++) {
    ComplexValue c = At(p, k);
    Real(r)[k] = imag ? c.im : c.re;
  }
  return r;
}

// Horner's scheme at a complex point over any kind of coefficients.
ComplexValue HornerAt(Polynomial *p, ComplexValue z) {
  ComplexValue r = At(p, p->degree);
  for (int k = p->degree - 1; k >= 0; k--) r = vc::Add(vc::Mul(r, z), At(p, k));
  return r;
}

}  // namespace

// ---- construction ------------------------------------------------------------------

bool PolySameVariable(const Polynomial *p, const Polynomial *q) {
  return p->variable == nullptr || q->variable == nullptr || strcmp(p->variable, q->variable) == 0;
}

const char *PolyVariableName(const Polynomial *p) {
  return p->variable != nullptr ? p->variable : "s";
}

Polynomial *PolyDefLike(Polynomial *p, int degree) {
  return New(degree, IsComplex(p), p->variable);
}
Polynomial *PolyZeroLike(Polynomial *p) { return PolyDefLike(p, 0); }

Polynomial *PolyOne(int degree, const char *variable) {
  Polynomial *p = PolyDef("", degree, variable);
  for (int k = 0; k <= degree; k++) Real(p)[k] = 1.0;
  return p;
}

Polynomial *C_PolyOne(int degree, const char *variable) {
  Polynomial *p = C_PolyDef("", degree, variable);
  for (int k = 0; k <= degree; k++) Comp(p)[k] = {1.0, 0.0};
  return p;
}

Polynomial *PolyConst(double x) {
  Polynomial *p = PolyDef("", 0, nullptr);
  Real(p)[0] = x;
  return p;
}

Polynomial *C_PolyConst(Complex *z) {
  Polynomial *p = C_PolyDef("", 0, nullptr);
  Comp(p)[0] = {z->re, z->im};
  return p;
}

Polynomial *PolyMonomial(double x, const char *variable) {
  Polynomial *p = PolyDef("", 1, variable);
  Real(p)[1] = x;
  return p;
}

Polynomial *C_PolyMonomial(Complex *z, const char *variable) {
  Polynomial *p = C_PolyDef("", 1, variable);
  Comp(p)[1] = {z->re, z->im};
  return p;
}

Polynomial *PolyCoefDef(Matrix *m, const char *variable) {
  if (m->rows != 1 || !IsNumericClass(m->cls)) {
    PolySetMessage("coef(%s(%dx%d))", m->name != nullptr ? m->name : "", m->rows, m->cols);
    PolyError("PolyCoefDef()", "Not a row vector", nullptr);
    return Fallback();
  }
  Polynomial *p = New(m->cols - 1, m->cls == kComplex, variable);
  MatCopySameClass(p->coef, 0, m, 0, m->cols);
  return p;
}

Matrix *PolyCoef(Polynomial *p) {
  if (!Defined(p, "PolyCoef()")) return MatDef("", 0, 0);
  return MatDup(p->coef);
}

Polynomial *PolyPartCopy(Polynomial *dst, int i, int j, Polynomial *src, int k, int l) {
  if (dst->kind != src->kind) {
    PolyError2("PolyPartCopy()", "Confliction of class", dst, src);
    return dst;
  }
  if (i < 0 || k < 0 || j - i != l - k || j > dst->degree || l > src->degree || j < i) {
    PolySetMessage("%s(%s^%d)(%d:%d) = %s(%s^%d)(%d:%d)", Name(dst), PolyVariableName(dst),
                   dst->degree, i, j, Name(src), PolyVariableName(src), src->degree, k, l);
    PolyError2("PolyPartCopy()", "Size Error", dst, src);
    return dst;
  }
  MatCopySameClass(dst->coef, i, src->coef, k, j - i + 1);
  return dst;
}

// ---- access -----------------------------------------------------------------------

Polynomial *PolySetValue(Polynomial *p, int k, double x) {
  if (IsComplex(p)) {
    PolySetMessage("%s(%s^%d)(%d) = %g", Name(p), PolyVariableName(p), p->degree, k, x);
    PolyError("PolySetValue()", "Not a real polynomial", p);
    return p;
  }
  if (k < 0) {
    PolySetMessage("%s(%s^%d)(%d) = %g", Name(p), PolyVariableName(p), p->degree, k, x);
    PolyError("PolySetValue()", "Index is not appropriate", p);
    return p;
  }
  if (k > p->degree) PolyEnlarge(p, k);
  Real(p)[k] = x;
  if (k == p->degree && std::fabs(x) <= eps) PolySimplify(p, eps);
  return p;
}

Polynomial *C_PolySetValue(Polynomial *p, int k, Complex *z) {
  if (!IsComplex(p) || k < 0) {
    PolySetMessage("%s(%s^%d)(%d) = (%g,%g)", Name(p), PolyVariableName(p), p->degree, k, z->re,
                   z->im);
    PolyError("C_PolySetValue()",
              !IsComplex(p) ? "Not a complex polynomial" : "Index is not appropriate", p);
    return p;
  }
  if (k > p->degree) PolyEnlarge(p, k);
  Comp(p)[k] = {z->re, z->im};
  if (k == p->degree && Negligible(Comp(p)[k], eps)) PolySimplify(p, eps);
  return p;
}

static bool Reachable(Polynomial *p, int k, bool complex, const char *location) {
  const char *failure = IsComplex(p) != complex
                            ? (complex ? "Not a complex polynomial" : "Not a real polynomial")
                        : (k < 0 || k > p->degree) ? "Not a suitable index"
                                                   : nullptr;
  if (failure == nullptr) return true;
  PolySetMessage("%s(%s^%d)(%d)", Name(p), PolyVariableName(p), p->degree, k);
  PolyError(location, failure, p);
  return false;
}

double *PolyGetPtr(Polynomial *p, int k) {
  return Reachable(p, k, false, "PolyGetPtr()") ? Real(p) + k : nullptr;
}

ComplexValue *C_PolyGetPtr(Polynomial *p, int k) {
  return Reachable(p, k, true, "C_PolyGetPtr()") ? Comp(p) + k : nullptr;
}

// ---- arithmetic -------------------------------------------------------------------

Polynomial *PolyAdd(Polynomial *p, Polynomial *q) { return Sum(p, q, 1.0, "PolyAdd()"); }
Polynomial *PolySub(Polynomial *p, Polynomial *q) { return Sum(p, q, -1.0, "PolySub()"); }

Polynomial *PolyAdd_double(Polynomial *p, double x) {
  return ConstantPlus(p, {x, 0.0}, false, "PolyAdd_double()");
}
Polynomial *PolySub_double(Polynomial *p, double x) {
  return ConstantPlus(p, {-x, 0.0}, false, "PolySub_double()");
}
Polynomial *PolyAdd_Complex(Polynomial *p, Complex *z) {
  return ConstantPlus(p, {z->re, z->im}, true, "PolyAdd_Complex()");
}
Polynomial *PolySub_Complex(Polynomial *p, Complex *z) {
  return ConstantPlus(p, {-z->re, -z->im}, true, "PolySub_Complex()");
}

Polynomial *PolyMulDef(Polynomial *p, Polynomial *q) {
  return New(p->degree + q->degree, IsComplex(p) || IsComplex(q), ResultVariable(p, q));
}

Polynomial *PolyMul(Polynomial *p, Polynomial *q) {
  if (!Compatible(p, q, "PolyMul()")) return Fallback();
  Polynomial *r = PolyMulDef(p, q);
  const int m = p->degree, n = q->degree;
  if (!IsComplex(r)) {
    double *c = Real(r);
    const double *a = Real(p), *b = Real(q);
    for (int i = 0; i <= m; i++) {
      const double ai = a[i];
      double *ci = c + i;
      for (int j = 0; j <= n; j++) ci[j] += ai * b[j];
    }
  } else if (IsComplex(p) && IsComplex(q)) {
    ComplexValue *c = Comp(r);
    const ComplexValue *a = Comp(p), *b = Comp(q);
    for (int i = 0; i <= m; i++)
      for (int j = 0; j <= n; j++) c[i + j] = vc::Add(c[i + j], vc::Mul(a[i], b[j]));
  } else {
    ComplexValue *c = Comp(r);
    for (int i = 0; i <= m; i++) {
      const ComplexValue ai = At(p, i);
      for (int j = 0; j <= n; j++) c[i + j] = vc::Add(c[i + j], vc::Mul(ai, At(q, j)));
    }
  }
  return PolySimplify(r, eps);
}

Polynomial *PolyScale(Polynomial *p, double x) {
  if (!Defined(p, "PolyScale()")) return Fallback();
  if (x == 0) return PolyConst(0.0);
  if (x == 1) return PolyDup(p);
  if (x == -1) return PolyNegate(p);
  return PolySimplify(EachPart(p, [x](double v) { return v * x; }), eps);
}

Polynomial *PolyScaleSelf(Polynomial *p, double x) {
  if (!Defined(p, "PolyScaleSelf()")) return p;
  double *c = Real(p);
  long long n = static_cast<long long>(p->degree + 1) * (IsComplex(p) ? 2 : 1);
  for (long long k = 0; k < n; k++) c[k] *= x;
  return PolySimplify(p, eps);
}

Polynomial *PolyScaleC(Polynomial *p, Complex *z) {
  if (z == nullptr) {
    PolySetMessage("%s(%s^%d) * (NULL,NULL)", Name(p), PolyVariableName(p), p->degree);
    PolyError("PolyScaleC()", "scale is NULL complex", p);
    return Fallback();
  }
  if (!Defined(p, "PolyScaleC()")) return Fallback();
  if (z->re == 0 && z->im == 0) return PolyConst(0.0);
  if (z->re == 1 && z->im == 0) return PolyDup(p);
  if (z->re == -1 && z->im == 0) return PolyNegate(p);
  Polynomial *r = New(p->degree, true, p->variable);
  const ComplexValue w{z->re, z->im};
  for (int k = 0; k <= p->degree; k++) Comp(r)[k] = vc::Mul(At(p, k), w);
  return PolySimplify(r, eps);
}

Polynomial *PolyPow(Polynomial *p, int n) {
  if (n < 0) {
    PolySetMessage("%s(%s^%d)^%d", Name(p), PolyVariableName(p), p->degree, n);
    PolyError("PolyPow()", "Index must be semipositive", p);
    return Fallback();
  }
  if (!Defined(p, "PolyPow()")) return Fallback();
  if (n == 0) return PolyOne(0, p->variable);
  if (n == 1) return PolyDup(p);
  // While the exponent is even the base is squared; an odd exponent takes
  // the base into the accumulator. Intermediate products go back at once.
  Polynomial *base = p, *acc = nullptr;
  for (unsigned e = static_cast<unsigned>(n);;) {
    if (e & 1) {
      Polynomial *next = acc == nullptr ? PolyDup(base) : PolyMul(acc, base);
      Drop(acc);
      acc = next;
    }
    e >>= 1;
    if (e == 0) break;
    Polynomial *square = PolyMul(base, base);
    if (base != p) Drop(base);
    base = square;
  }
  if (base != p) Drop(base);
  return acc;
}

Polynomial *PolyNegate(Polynomial *p) {
  if (!Defined(p, "PolyNegate()")) return Fallback();
  return EachPart(p, [](double v) { return -v; });
}

Polynomial *PolyConj(Polynomial *p) {
  if (!Defined(p, "PolyConj()")) return Fallback();
  Polynomial *r = PolyDup(p);
  if (IsComplex(r))
    for (int k = 0; k <= r->degree; k++) Comp(r)[k].im = -Comp(r)[k].im;
  return r;
}

Polynomial *PolyRealPart(Polynomial *p) {
  if (!Defined(p, "PolyRealPart()")) return Fallback();
  return PartOf(p, false);
}

Polynomial *PolyImagPart(Polynomial *p) {
  if (!Defined(p, "PolyImagPart()")) return Fallback();
  return PartOf(p, true);
}

Polynomial *PolyRealToComp(Polynomial *p) {
  if (!Defined(p, "PolyRealToComp()")) return Fallback();
  return Widened(p, p->degree, true);
}

Polynomial *PolyRealAndImag(Polynomial *re, Polynomial *im) {
  if (IsComplex(re) || IsComplex(im)) {
    PolySetMessage("(%s(%s^%d), %s(%s^%d))", Name(re), PolyVariableName(re), re->degree, Name(im),
                   PolyVariableName(im), im->degree);
    PolyError2("PolyRealAndImag()", "Not a real Polynomial", re, im);
    return Fallback();
  }
  if (!Compatible(re, im, "PolyRealAndImag()")) return Fallback();
  Polynomial *r = Widened(re, im->degree, true);
  PolySetVariable(r, ResultVariable(re, im));
  for (int k = 0; k <= im->degree; k++) Comp(r)[k].im = Real(im)[k];
  return r;
}

// ---- degree changes ---------------------------------------------------------------

Polynomial *PolyCut(Polynomial *p, int i, int j) {
  if (!Defined(p, "PolyCut()")) return Fallback();
  if (!(0 <= i && i <= j && j <= p->degree)) {
    // The upper index is written first.
    PolySetMessage("%s(%s^%d)(%d:%d)", Name(p), PolyVariableName(p), p->degree, j, i);
    PolyError("PolyCut()", "Size Error", p);
    return Fallback();
  }
  Polynomial *r = PolyDefLike(p, j);
  MatCopySameClass(r->coef, i, p->coef, i, j - i + 1);
  return r;
}

Polynomial *PolyExpand(Polynomial *p, int degree) {
  if (!Defined(p, "PolyExpand()")) return Fallback();
  return Widened(p, degree, false);
}

Polynomial *PolyEnlarge(Polynomial *p, int degree) {
  if (!Defined(p, "PolyEnlarge()") || degree <= p->degree) return p;
  TakeCoefficients(p, Widened(p, degree, false));
  return p;
}

Polynomial *PolyLowerShift(Polynomial *p, int k) {
  if (!Defined(p, "PolyLowerShift()")) return Fallback();
  if (k <= 0) return PolyDup(p);
  if (k > p->degree) return PolyZeroLike(p);
  Polynomial *r = PolyDefLike(p, p->degree - k);
  MatCopySameClass(r->coef, 0, p->coef, k, p->degree - k + 1);
  return r;
}

Polynomial *PolyHigherShift(Polynomial *p, int k) {
  if (!Defined(p, "PolyHigherShift()")) return Fallback();
  if (k <= 0) return PolyDup(p);
  Polynomial *r = PolyDefLike(p, p->degree + k);
  MatCopySameClass(r->coef, k, p->coef, 0, p->degree + 1);
  return r;
}

Polynomial *PolyDerivative(Polynomial *p, int k) {
  if (!Defined(p, "PolyDerivative()")) return Fallback();
  if (k < 0) k = 0;
  if (p->degree - k < 0) return PolyZeroLike(p);
  Polynomial *r = PolyDefLike(p, p->degree - k);
  for (int i = 0; i <= r->degree; i++) {
    ComplexValue c = At(p, i + k);
    for (int f = i + 1; f <= i + k; f++) c = vc::Scale(c, f);
    Put(r, i, c);
  }
  return r;
}

Polynomial *PolyIntegral(Polynomial *p, int k) {
  if (!Defined(p, "PolyIntegral()")) return Fallback();
  if (k < 0) k = 0;
  Polynomial *r = PolyDefLike(p, p->degree + k);
  for (int i = k; i <= r->degree; i++) {
    ComplexValue c = At(p, i - k);
    for (int f = i; f >= i - k + 1; f--) c = {c.re / f, c.im / f};
    Put(r, i, c);
  }
  return r;
}

// ---- rounding and simplification --------------------------------------------------

Polynomial *PolyCeil(Polynomial *p) {
  return Rounded(p, "PolyCeil()", [](double v) { return std::ceil(v); });
}
Polynomial *PolyFloor(Polynomial *p) {
  return Rounded(p, "PolyFloor()", [](double v) { return std::floor(v); });
}
Polynomial *PolyFixToZero(Polynomial *p) {
  return Rounded(p, "PolyFixToZero()", [](double v) { return std::trunc(v); });
}
Polynomial *PolyRint(Polynomial *p) {
  return Rounded(p, "PolyRint()", [](double v) { return std::rint(v); });
}

Polynomial *PolyRoundToZero(Polynomial *p, double tol) {
  if (!Defined(p, "PolyRoundToZero()")) return Fallback();
  if (tol < 0) {
    double sum = 0;
    long long n = static_cast<long long>(p->degree + 1) * (IsComplex(p) ? 2 : 1);
    for (long long k = 0; k < n; k++) sum += Real(p)[k] * Real(p)[k];
    tol = std::sqrt(sum) * eps;
  }
  return PolySimplify(EachPart(p, [tol](double v) { return std::fabs(v) < tol ? 0.0 : v; }), tol);
}

Polynomial *PolySimplify(Polynomial *p, double tol) {
  if (!Defined(p, "PolySimplify()")) return p;
  int top = p->degree;
  while (top > 0 && Negligible(At(p, top), tol)) top--;
  if (top == p->degree) return p;
  Polynomial *t = New(top, IsComplex(p), nullptr);
  MatCopySameClass(t->coef, 0, p->coef, 0, top + 1);
  TakeCoefficients(p, t);
  return p;
}

// ---- evaluation -------------------------------------------------------------------

double PolyEval(Polynomial *p, double x) {
  if (!Defined(p, "PolyEval()")) return 0;
  if (IsComplex(p)) {
    PolySetMessage("eval(%s(%s^%d), %g)", Name(p), PolyVariableName(p), p->degree, x);
    PolyError("PolyEval()", "Argument must be a real polynomial", p);
    return 0;
  }
  const double *c = Real(p);
  double r = c[p->degree];
  for (int k = p->degree - 1; k >= 0; k--) r = r * x + c[k];
  return r;
}

Complex *PolyEvalC(Polynomial *p, Complex *z) {
  if (!Defined(p, "PolyEval()")) return CompDef("", 0, 0);
  if (IsComplex(p)) {
    PolySetMessage("eval(%s(%s^%d), (%g,%g))", Name(p), PolyVariableName(p), p->degree, z->re,
                   z->im);
    PolyError("PolyEval()", "Argument must be a real polynomial", p);
    return CompDef("", 0, 0);
  }
  ComplexValue v = HornerAt(p, {z->re, z->im});
  return CompDef("", v.re, v.im);
}

Complex *C_PolyEval(Polynomial *p, double x) {
  if (!Defined(p, "PolyEval()")) return CompDef("", 0, 0);
  if (!IsComplex(p)) {
    PolySetMessage("eval(%s(%s^%d), %g)", Name(p), PolyVariableName(p), p->degree, x);
    PolyError("PolyEval()", "Arg must be complex polynomial", p);
    return CompDef("", 0, 0);
  }
  ComplexValue v = HornerAt(p, {x, 0.0});
  return CompDef("", v.re, v.im);
}

Complex *C_PolyEvalC(Polynomial *p, Complex *z) {
  if (!Defined(p, "PolyEval()")) return CompDef("", 0, 0);
  ComplexValue v = HornerAt(p, {z->re, z->im});
  return CompDef("", v.re, v.im);
}

Polynomial *PolyEvalP(Polynomial *p, Polynomial *q) {
  if (!Defined(p, "PolyEvalP()") || !Defined(q, "PolyEvalP()")) return Fallback();
  Polynomial *r = New(0, IsComplex(p), nullptr);
  Put(r, 0, At(p, p->degree));
  for (int k = p->degree - 1; k >= 0; k--) {
    Polynomial *product = PolyMul(r, q);
    Drop(r);
    r = ConstantPlus(product, At(p, k), IsComplex(p), "PolyEvalP()");
    Drop(product);
  }
  if (p->degree == 0) PolySetVariable(r, q->variable);
  return r;
}
