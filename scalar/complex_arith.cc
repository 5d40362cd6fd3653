// Arithmetic and elementary functions of Complex objects and ComplexValue
// pairs, both through the formulas of scalar/complex_value.h.
#include <cmath>
#include <cstdio>

#include "core/alloc.h"
#include "scalar/complex.h"

using namespace velk_complex;

namespace {

ComplexValue Of(const Complex *c) { return {c->re, c->im}; }
Complex *New(ComplexValue v) { return CompDef("", v.re, v.im); }
Complex *Put(Complex *c, ComplexValue v) {
  c->re = v.re;
  c->im = v.im;
  return c;
}
const char *NameOf(const Complex *c) { return c->name != nullptr ? c->name : ""; }

constexpr char kDivideByZero[] = "Can't divide by zero";

// The reports of a zero divisor, each with its expression.
void ZeroComplexDivisor(const char *location, Complex *a, Complex *b) {
  CompSetMessage("%s(%G,%G) / %s(%G,%G)", NameOf(a), a->re, a->im, NameOf(b), b->re, b->im);
  CompError2(location, kDivideByZero, a, b);
}
void ZeroDivisorOfReal(const char *location, double x, Complex *c) {
  CompSetMessage("%G / %s(%G,%G)", x, NameOf(c), c->re, c->im);
  CompError(location, kDivideByZero, c);
}
void ZeroRealDivisor(const char *location, Complex *c, double x) {
  CompSetMessage("%s(%G,%G) / %G", NameOf(c), c->re, c->im, x);
  CompError(location, kDivideByZero, c);
}
void ZeroInverse(const char *location, Complex *c) {
  CompSetMessage("inv(%s(%G,%G))", NameOf(c), c->re, c->im);
  CompError(location, kDivideByZero, c);
}

ComplexValue OverReal(ComplexValue c, double x) { return {c.re / x, c.im / x}; }

// c^n with n = 1 taken as c itself.
ComplexValue Power(ComplexValue c, unsigned long long n) { return n == 1 ? c : Pow(c, n); }

template <class F>
ComplexValue EachPart(ComplexValue c, F f) {
  return {f(c.re), f(c.im)};
}
double Fix(double v) { return v > 0 ? std::floor(v) : std::ceil(v); }

// A tangent's quotient divided into target with CompDivSelf, so that a zero
// cosine is reported from there.
Complex *DivideInto(Complex *target, Quotient q) {
  Put(target, q.n);
  Complex *d = New(q.d);
  CompDivSelf(target, d);
  CompUndef(d);
  return target;
}

}  // namespace

// ---- sums, differences, products ---------------------------------------------------

// Defines Comp<Op><suffix> (a new temporary) and Comp<Op>Self<suffix> (into
// target) from one formula.
#define VELK_COMP_PAIR(Op, suffix, params, target, formula)                  \
  Complex *Comp##Op##suffix params { return New(formula); }                 \
  Complex *Comp##Op##Self##suffix params { return Put(target, formula); }

VELK_COMP_PAIR(Add, , (Complex *a, Complex *b), a, Add(Of(a), Of(b)))
VELK_COMP_PAIR(Add, 1, (double x, Complex *c), c, (ComplexValue{x + c->re, c->im}))
VELK_COMP_PAIR(Add, 2, (Complex *c, double x), c, (ComplexValue{c->re + x, c->im}))
VELK_COMP_PAIR(Sub, , (Complex *a, Complex *b), a, Sub(Of(a), Of(b)))
VELK_COMP_PAIR(Sub, 1, (double x, Complex *c), c, (ComplexValue{x - c->re, -c->im}))
VELK_COMP_PAIR(Sub, 2, (Complex *c, double x), c, (ComplexValue{c->re - x, c->im}))
VELK_COMP_PAIR(Mul, , (Complex *a, Complex *b), a, Mul(Of(a), Of(b)))
VELK_COMP_PAIR(Mul, 1, (double x, Complex *c), c, Scale(Of(c), x))
VELK_COMP_PAIR(Mul, 2, (Complex *c, double x), c, Scale(Of(c), x))
VELK_COMP_PAIR(Conj, , (Complex *c), c, Conj(Of(c)))
VELK_COMP_PAIR(Neg, , (Complex *c), c, Neg(Of(c)))

#undef VELK_COMP_PAIR

Complex *CompAddI(Complex *a, Complex *b) { return New(AddI(Of(a), Of(b))); }

// ---- division ------------------------------------------------------------------------
//
// Apart from CompDivSelf, a division goes on after a report that returns (a
// harness intercepting the exit): the result is then whatever IEEE makes of it.

Complex *CompDiv(Complex *a, Complex *b) {
  if (IsZero(Of(b))) ZeroComplexDivisor("CompDiv()", a, b);
  return New(Div(Of(a), Of(b)));
}

Complex *CompDivSelf(Complex *a, Complex *b) {
  if (IsZero(Of(b))) {
    ZeroComplexDivisor("CompDivSelf()", a, b);
    return nullptr;
  }
  return Put(a, Div(Of(a), Of(b)));
}

Complex *CompDiv1(double x, Complex *c) {
  if (IsZero(Of(c))) ZeroDivisorOfReal("CompDiv1()", x, c);
  return New(RealOver(x, Of(c)));
}

Complex *CompDivSelf1(double x, Complex *c) {
  if (IsZero(Of(c))) ZeroDivisorOfReal("CompDivSelf1()", x, c);
  return Put(c, Div({x, 0}, Of(c)));
}

Complex *CompDiv2(Complex *c, double x) {
  if (std::fabs(x) == 0) ZeroRealDivisor("CompDiv2()", c, x);
  return New(OverReal(Of(c), x));
}

Complex *CompDivSelf2(Complex *c, double x) {
  if (std::fabs(x) == 0) ZeroRealDivisor("CompDivSelf2()", c, x);
  return Put(c, OverReal(Of(c), x));
}

Complex *CompInv(Complex *c) {
  if (IsZero(Of(c))) ZeroInverse("CompInv()", c);
  return New(RealOver(1, Of(c)));
}

Complex *CompInvSelf(Complex *c) {
  if (IsZero(Of(c))) ZeroInverse("CompInvSelf()", c);
  return Put(c, RealOver(1, Of(c)));
}

// ---- powers, modulus, argument, rounding -------------------------------------------

Complex *CompPow(Complex *c, int n) {
  if (n >= 0) return New(Power(Of(c), static_cast<unsigned long long>(n)));
  Complex *inverse = CompInv(c);
  Complex *r = New(Power(Of(inverse), static_cast<unsigned long long>(-static_cast<long long>(n))));
  CompUndef(inverse);
  return r;
}

double CompAbs(Complex *c) { return Abs(Of(c)); }
double CompArg(Complex *c) { return Arg(Of(c)); }
Complex *CompUnit(Complex *c) { return New(OverReal(Of(c), Abs(Of(c)))); }

Complex *CompCeil(Complex *c) { return New(EachPart(Of(c), [](double v) { return std::ceil(v); })); }
Complex *CompFloor(Complex *c) { return New(EachPart(Of(c), [](double v) { return std::floor(v); })); }
Complex *CompRint(Complex *c) { return New(EachPart(Of(c), [](double v) { return std::rint(v); })); }
Complex *CompFix(Complex *c) { return New(EachPart(Of(c), Fix)); }

Complex *CompFixToZero(Complex *c, double tol) {
  return New(EachPart(Of(c), [tol](double v) { return std::fabs(v) < tol ? 0.0 : v; }));
}

// ---- elementary functions ----------------------------------------------------------

// Comp<Name>, Comp<Name>Self and ComplexValue<Name> over one formula.
#define VELK_COMP_FUNCTION(Name)                                                \
  Complex *Comp##Name(Complex *c) { return New(Name(Of(c))); }                  \
  Complex *Comp##Name##Self(Complex *c) { return Put(c, Name(Of(c))); }         \
  ComplexValue *ComplexValue##Name(ComplexValue *r, const ComplexValue *z) {    \
    *r = Name(*z);                                                              \
    return r;                                                                   \
  }

VELK_COMPLEX_FUNCTIONS(VELK_COMP_FUNCTION)

#undef VELK_COMP_FUNCTION

// The tangents: the Complex forms divide with CompDivSelf, the value forms
// with ComplexValueDiv.
#define VELK_COMP_TANGENT(Name)                                                 \
  Complex *Comp##Name(Complex *c) { return DivideInto(New({0, 0}), Name(Of(c))); } \
  Complex *Comp##Name##Self(Complex *c) { return DivideInto(c, Name(Of(c))); }  \
  ComplexValue *ComplexValue##Name(ComplexValue *r, const ComplexValue *z) {    \
    Quotient q = Name(*z);                                                      \
    return ComplexValueDiv(r, &q.n, &q.d);                                      \
  }

VELK_COMPLEX_TANGENTS(VELK_COMP_TANGENT)

#undef VELK_COMP_TANGENT

// ---- ComplexValue helpers ----------------------------------------------------------

ComplexValue *ComplexValueDiv(ComplexValue *r, const ComplexValue *a, const ComplexValue *b) {
  if (IsZero(*b)) {
    fprintf(stderr, "ComplexValueDiv(): Can't divide by zero.\n");
    return nullptr;
  }
  *r = Div(*a, *b);
  return r;
}

ComplexValue *ComplexValueInv(ComplexValue *r, const ComplexValue *a) {
  if (IsZero(*a)) {
    fprintf(stderr, "ComplexValueInv(): Can't divide by zero.\n");
    return nullptr;
  }
  *r = RealOver(1, *a);
  return r;
}

ComplexValue *ComplexValueDef(double re, double im) {
  ComplexValue *v = static_cast<ComplexValue *>(emalloc(static_cast<int>(sizeof(ComplexValue))));
  *v = {re, im};
  return v;
}

void ComplexValueFree(ComplexValue *v) { efree(v); }

ComplexValue *ComplexValueInf(ComplexValue *r) {
  if (r == nullptr) return ComplexValueDef(INFINITY, INFINITY);
  *r = {INFINITY, INFINITY};
  return r;
}

ComplexValue *ComplexValueNaN(ComplexValue *r) {
  if (r == nullptr) return ComplexValueDef(NAN, NAN);
  *r = {NAN, NAN};
  return r;
}

ComplexValue *ComplexValueFromComp(ComplexValue *dst, Complex *c) {
  if (dst == nullptr) return ComplexValueDef(c->re, c->im);
  *dst = Of(c);
  return dst;
}

Complex *CompFromComplexValue(ComplexValue *v) { return New(*v); }
