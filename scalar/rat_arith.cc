// Rational construction, arithmetic of fractions (never cancelling), parts,
// rounding, derivative, shifts and evaluation. Every result is paired by
// RatNumeDenoDef from polynomials made on the way, which go back at once.
#include <cstring>

#include "core/constructors.h"
#include "core/registry.h"
#include "scalar/poly_coef.h"
#include "scalar/rational.h"

using namespace velk_poly;

namespace {

const char *Name(const Rational *r) { return r->name != nullptr ? r->name : ""; }

Rational *Fallback() { return RatConst(0.0); }

bool Defined(Rational *r, const char *location) {
  if (r->nume->degree != -1 && r->deno->degree != -1) return true;
  RatError(location, "Undefined rational", r);
  return false;
}

// Pairs two working polynomials and gives them back.
Rational *Pair(Polynomial *n, Polynomial *d) {
  Rational *r = RatNumeDenoDef(n, d);
  Drop(n);
  Drop(d);
  return r;
}

// Copies src's coefficients into dst of the same degree (converting kinds).
void FillCoefficients(Polynomial *dst, Polynomial *src) {
  if (dst->kind == src->kind)
    MatCopySameClass(dst->coef, 0, src->coef, 0, src->degree + 1);
  else
    for (int k = 0; k <= src->degree; k++) Put(dst, k, At(src, k));
}

// r's numerator n + sign p d over d, with the zero short-cuts.
Rational *PlusPoly(Rational *r, Polynomial *p, double sign, const char *location) {
  if (!Defined(r, location)) return Fallback();
  if (RatIsZero(r)) {
    Polynomial *q = sign < 0 ? PolyNegate(p) : p;
    Rational *out = RatFromPoly(q);
    if (q != p) Drop(q);
    return out;
  }
  if (IsZero(p)) return RatDup(r);
  Polynomial *pd = PolyMul(p, r->deno);
  Polynomial *n = sign < 0 ? PolySub(r->nume, pd) : PolyAdd(r->nume, pd);
  Drop(pd);
  return Pair(n, PolyDup(r->deno));
}

// The same with a constant polynomial made from value.
Rational *PlusConstant(Rational *r, ComplexValue v, bool complex, double sign,
                       const char *location) {
  Polynomial *c = New(0, complex, nullptr);
  Put(c, 0, v);
  Rational *out = PlusPoly(r, c, sign, location);
  Drop(c);
  return out;
}

// f applied to numerator and denominator separately, then paired.
template <class F>
Rational *EachPart(Rational *r, const char *location, F f) {
  if (!Defined(r, location)) return Fallback();
  return Pair(f(r->nume), f(r->deno));
}

// a b + c d, the working products given back.
Polynomial *CrossSum(Polynomial *a, Polynomial *b, Polynomial *c, Polynomial *d, double sign) {
  Polynomial *ab = PolyMul(a, b), *cd = PolyMul(c, d);
  Polynomial *s = sign < 0 ? PolySub(ab, cd) : PolyAdd(ab, cd);
  Drop(ab);
  Drop(cd);
  return s;
}

bool IsComplexRat(const Rational *r) { return r->kind == 1; }

void KindError(Rational *r, const char *location, const char *message, const char *format,
                double x, double y, bool pair) {
  if (pair)
    RatSetMessage(format, Name(r), r->nume_degree, r->deno_degree, x, y);
  else
    RatSetMessage(format, Name(r), r->nume_degree, r->deno_degree, x);
  RatError(location, message, r);
}

}  // namespace

bool RatIsZero(Rational *r) { return IsZero(r->nume); }

// ---- construction ------------------------------------------------------------------

Rational *RatNumeDenoDef(Polynomial *n, Polynomial *d) {
  if (n->degree == -1 || n->kind < 0 || n->kind > 1) {
    RatError("RatNumeDenoDef()", "Invalid numerator", nullptr);
    return Fallback();
  }
  if (d->degree == -1 || d->kind < 0 || d->kind > 1) {
    RatError("RatNumeDenoDef()", "Invalid polynomials", nullptr);
    return Fallback();
  }
  const bool complex = IsComplex(n) || IsComplex(d);
  Rational *r = complex ? C_RatDef("", n->degree, d->degree) : RatDef("", n->degree, d->degree);
  FillCoefficients(r->nume, n);
  FillCoefficients(r->deno, d);
  // Different variables give none, silently.
  const char *v = n->variable != nullptr ? n->variable : d->variable;
  if (!PolySameVariable(n, d)) v = nullptr;
  PolySetVariable(r->nume, v);
  PolySetVariable(r->deno, v);
  return r;
}

Rational *RatFromPoly(Polynomial *p) {
  Polynomial *one = PolyOne(0, p->variable);
  Rational *r = RatNumeDenoDef(p, one);
  Drop(one);
  return r;
}

Rational *RatInvPoly(Polynomial *p) {
  Polynomial *one = PolyOne(0, p->variable);
  Rational *r = RatNumeDenoDef(one, p);
  Drop(one);
  return r;
}

Rational *RatConst(double x) {
  Rational *r = RatDef("", 0, 0);
  Real(r->nume)[0] = x;
  Real(r->deno)[0] = 1.0;
  return r;
}

Rational *C_RatConst(Complex *z) {
  Rational *r = C_RatDef("", 0, 0);
  Comp(r->nume)[0] = {z->re, z->im};
  Comp(r->deno)[0] = {1.0, 0.0};
  return r;
}

static Rational *SetPart(Rational *r, Polynomial *p, bool nume) {
  if (IsComplex(p) && !IsComplexRat(r)) {
    RatError("RatSetNume()", "Class Error", r);
    return r;
  }
  Polynomial *copy = IsComplexRat(r) && !IsComplex(p) ? PolyRealToComp(p) : PolyDup(p);
  Polynomial *&part = nume ? r->nume : r->deno;
  PolyRelease(part);
  part = PolyOwn(copy, kOwnedPart);
  (nume ? r->nume_degree : r->deno_degree) = copy->degree;
  return r;
}

Rational *RatSetNume(Rational *r, Polynomial *p) { return SetPart(r, p, true); }
Rational *RatSetDeno(Rational *r, Polynomial *p) { return SetPart(r, p, false); }

Rational *RatSetVariable(Rational *r, const char *variable) {
  PolySetVariable(r->nume, variable);
  PolySetVariable(r->deno, variable);
  return r;
}

Polynomial *RatNume(Rational *r) { return PolyDup(r->nume); }
Polynomial *RatDeno(Rational *r) { return PolyDup(r->deno); }

// ---- arithmetic -------------------------------------------------------------------

Rational *RatAdd(Rational *a, Rational *b) {
  if (!Defined(a, "RatAdd()") || !Defined(b, "RatAdd()")) return Fallback();
  if (RatIsZero(a) && RatIsZero(b)) return RatConst(0.0);
  if (RatIsZero(a)) return RatDup(b);
  if (RatIsZero(b)) return RatDup(a);
  return Pair(CrossSum(a->nume, b->deno, b->nume, a->deno, 1.0), PolyMul(a->deno, b->deno));
}

Rational *RatSub(Rational *a, Rational *b) {
  if (!Defined(a, "RatSub()") || !Defined(b, "RatSub()")) return Fallback();
  if (RatIsZero(a) && RatIsZero(b)) return RatConst(0.0);
  if (RatIsZero(b)) return RatDup(a);
  if (RatIsZero(a)) return RatNegate(b);
  Rational *nb = RatNegate(b);
  Rational *r = RatAdd(a, nb);
  RatUndef(nb);
  return r;
}

Rational *RatAdd_Polynomial(Rational *r, Polynomial *p) {
  return PlusPoly(r, p, 1.0, "RatAdd_Polynomial()");
}
Rational *RatSub_Polynomial(Rational *r, Polynomial *p) {
  return PlusPoly(r, p, -1.0, "RatSub_Polynomial()");
}
Rational *RatAdd_Complex(Rational *r, Complex *z) {
  return PlusConstant(r, {z->re, z->im}, true, 1.0, "RatAdd_Complex()");
}
Rational *RatSub_Complex(Rational *r, Complex *z) {
  return PlusConstant(r, {z->re, z->im}, true, -1.0, "RatSub_Complex()");
}
Rational *RatAdd_double(Rational *r, double x) {
  return PlusConstant(r, {x, 0.0}, false, 1.0, "RatAdd_double()");
}
Rational *RatSub_double(Rational *r, double x) {
  return PlusConstant(r, {x, 0.0}, false, -1.0, "RatSub_double()");
}

Rational *RatMul(Rational *a, Rational *b) {
  if (!Defined(a, "RatMul()") || !Defined(b, "RatMul()")) return Fallback();
  if (RatIsZero(a) || RatIsZero(b)) return RatConst(0.0);
  return Pair(PolyMul(a->nume, b->nume), PolyMul(a->deno, b->deno));
}

Rational *RatInv(Rational *r) {
  if (!Defined(r, "RatInv()")) return Fallback();
  return RatNumeDenoDef(r->deno, r->nume);
}

Rational *RatDiv(Rational *a, Rational *b) {
  if (!Defined(a, "RatDiv()") || !Defined(b, "RatDiv()")) return Fallback();
  if (RatIsZero(a)) return RatConst(0.0);
  Rational *ib = RatInv(b);
  Rational *r = RatMul(a, ib);
  RatUndef(ib);
  return r;
}

Rational *RatScale(Rational *r, double x) {
  if (!Defined(r, "RatScale()")) return Fallback();
  return Pair(PolyScale(r->nume, x), PolyDup(r->deno));
}

Rational *RatScaleSelf(Rational *r, double x) {
  if (!Defined(r, "RatScaleSelf()")) return r;
  PolyScaleSelf(r->nume, x);
  return r;
}

Rational *RatScaleC(Rational *r, Complex *z) {
  if (z == nullptr) {
    RatSetMessage("%s(s^%d/s^%d) * (NULL,NULL)", Name(r), r->nume_degree, r->deno_degree);
    RatError("RatScaleC()", "scale is NULL complex", r);
    return Fallback();
  }
  if (!Defined(r, "RatScaleC()")) return Fallback();
  return Pair(PolyScaleC(r->nume, z), PolyDup(r->deno));
}

Rational *RatScaleP(Rational *r, Polynomial *p) {
  if (!Defined(r, "RatScaleP()")) return Fallback();
  return Pair(PolyMul(r->nume, p), PolyDup(r->deno));
}

Rational *RatPow(Rational *r, int n) {
  if (!Defined(r, "RatPow()")) return Fallback();
  Rational *base = r;
  if (n < 0) {
    base = RatInv(r);
    n = -n;
  }
  Rational *acc = nullptr;
  if (n == 0) {
    acc = RatConst(1.0);
  } else if (n == 1) {
    acc = RatDup(base);
  } else {
    Rational *b = base;
    for (unsigned e = static_cast<unsigned>(n);;) {
      if (e & 1) {
        Rational *next = acc == nullptr ? RatDup(b) : RatMul(acc, b);
        if (acc != nullptr) RatUndef(acc);
        acc = next;
      }
      e >>= 1;
      if (e == 0) break;
      Rational *square = RatMul(b, b);
      if (b != base) RatUndef(b);
      b = square;
    }
    if (b != base) RatUndef(b);
  }
  if (base != r) RatUndef(base);
  return acc;
}

Rational *RatNegate(Rational *r) {
  if (!Defined(r, "RatNegate()")) return Fallback();
  return Pair(PolyNegate(r->nume), PolyDup(r->deno));
}

Rational *RatConj(Rational *r) { return EachPart(r, "RatConj()", PolyConj); }

// Real or imaginary part over the squared modulus of the denominator.
static Rational *PartOf(Rational *r, bool imag, const char *location) {
  if (!Defined(r, location)) return Fallback();
  Polynomial *a = PolyRealPart(r->nume), *b = PolyImagPart(r->nume);
  Polynomial *c = PolyRealPart(r->deno), *d = PolyImagPart(r->deno);
  Polynomial *n = imag ? CrossSum(b, c, a, d, -1.0) : CrossSum(a, c, b, d, 1.0);
  Polynomial *m = CrossSum(c, c, d, d, 1.0);
  for (Polynomial *p : {a, b, c, d}) Drop(p);
  return Pair(n, m);
}

Rational *RatRealPart(Rational *r) { return PartOf(r, false, "RatRealPart()"); }
Rational *RatImagPart(Rational *r) { return PartOf(r, true, "RatImagPart()"); }

Rational *RatRealAndImag(Rational *x, Rational *y) {
  if (IsComplexRat(x) || IsComplexRat(y)) {
    RatSetMessage("(%s(s^%d/s^%d), %s(s^%d/s^%d))", Name(x), x->nume_degree, x->deno_degree,
                  Name(y), y->nume_degree, y->deno_degree);
    RatError2("RatRealAndImag()", "Not a real Rational", x, y);
    return Fallback();
  }
  Complex *i = CompDef("", 0, 1);
  Rational *iy = RatScaleC(y, i);
  Rational *r = RatAdd(x, iy);
  RatUndef(iy);
  CompUndef(i);
  return r;
}

Rational *RatRealToComp(Rational *r) { return EachPart(r, "RatRealToComp()", PolyRealToComp); }
Rational *RatCeil(Rational *r) { return EachPart(r, "RatCeil()", PolyCeil); }
Rational *RatFloor(Rational *r) { return EachPart(r, "RatFloor()", PolyFloor); }
Rational *RatRint(Rational *r) { return EachPart(r, "RatRint()", PolyRint); }
Rational *RatFixToZero(Rational *r) { return EachPart(r, "RatFixToZero()", PolyFixToZero); }
Rational *RatRoundToZero(Rational *r, double tol) {
  return EachPart(r, "RatRoundToZero()", [tol](Polynomial *p) { return PolyRoundToZero(p, tol); });
}

Rational *RatSimplify(Rational *r, double tol) {
  if (!Defined(r, "RatSimplify()")) return r;
  PolySimplify(r->nume, tol);
  PolySimplify(r->deno, tol);
  return r;
}

Rational *RatLowerShift(Rational *r, int k) {
  if (!Defined(r, "RatLowerShift()")) return Fallback();
  Polynomial *d = PolyLowerShift(r->deno, k);
  if (IsZero(d)) Put(d, 0, {1.0, 0.0});
  return Pair(PolyLowerShift(r->nume, k), d);
}

Rational *RatHigherShift(Rational *r, int k) {
  return EachPart(r, "RatHigherShift()", [k](Polynomial *p) { return PolyHigherShift(p, k); });
}

Rational *RatDerivative(Rational *r, int k) {
  if (!Defined(r, "RatDerivative()")) return Fallback();
  Polynomial *dd = PolyDerivative(r->deno, 1);
  Polynomial *n = r->nume;  // N_0, the operand's own: never given back
  for (int j = 1; j <= k; j++) {
    Polynomial *dn = PolyDerivative(n, 1);
    Polynomial *jn = PolyScale(n, j);
    Polynomial *next = CrossSum(dn, r->deno, jn, dd, -1.0);
    Drop(dn);
    Drop(jn);
    if (n != r->nume) Drop(n);
    n = next;
  }
  Polynomial *d = PolyPow(r->deno, k + 1);
  Rational *out = RatNumeDenoDef(n, d);
  if (n != r->nume) Drop(n);
  Drop(d);
  Drop(dd);
  return out;
}

// ---- evaluation -------------------------------------------------------------------

double RatEval(Rational *r, double x) {
  if (!Defined(r, "RatEval()")) return 0;
  if (IsComplexRat(r)) {
    KindError(r, "RatEval()", "Not a real ratnomial", "eval(%s(s^%d/s^%d), %g)", x, 0, false);
    return 0;
  }
  return PolyEval(r->nume, x) / PolyEval(r->deno, x);
}

static Complex *Quotient(Rational *r, Complex *z) {
  Complex *n = C_PolyEvalC(r->nume, z), *d = C_PolyEvalC(r->deno, z);
  Complex *q = CompDiv(n, d);
  CompUndef(n);
  CompUndef(d);
  return q;
}

Complex *RatEvalC(Rational *r, Complex *z) {
  if (!Defined(r, "RatEvalC()")) return CompDef("", 0, 0);
  if (IsComplexRat(r)) {
    KindError(r, "RatEvalC()", "Not a real ratnomial", "eval(%s(s^%d/s^%d), (%g,%g))", z->re,
               z->im, true);
    return CompDef("", 0, 0);
  }
  return Quotient(r, z);
}

Complex *C_RatEval(Rational *r, double x) {
  if (!Defined(r, "C_RatEval()")) return CompDef("", 0, 0);
  if (!IsComplexRat(r)) {
    KindError(r, "C_RatEval()", "Not a complex ratnomial", "eval(%s(s^%d/s^%d), %g)", x, 0,
               false);
    return CompDef("", 0, 0);
  }
  Complex *z = CompDef("", x, 0);
  Complex *q = Quotient(r, z);
  CompUndef(z);
  return q;
}

Complex *C_RatEvalC(Rational *r, Complex *z) {
  if (!Defined(r, "C_RatEvalC()")) return CompDef("", 0, 0);
  if (!IsComplexRat(r)) {
    KindError(r, "C_RatEvalC()", "Not a complex ratnomial", "eval(%s(s^%d/s^%d), (%g,%g))",
               z->re, z->im, true);
    return CompDef("", 0, 0);
  }
  return Quotient(r, z);
}

Rational *RatEvalP(Rational *r, Polynomial *p) {
  if (!Defined(r, "RatEvalP()")) return Fallback();
  return Pair(PolyEvalP(r->nume, p), PolyEvalP(r->deno, p));
}

Rational *PolyEvalR(Polynomial *p, Rational *q) {
  Polynomial *c = New(0, IsComplex(p), nullptr);
  Put(c, 0, At(p, p->degree));
  Rational *r = RatFromPoly(c);
  for (int k = p->degree - 1; k >= 0; k--) {
    Rational *product = RatMul(r, q);
    RatUndef(r);
    Put(c, 0, At(p, k));
    r = RatAdd_Polynomial(product, c);
    RatUndef(product);
  }
  Drop(c);
  return r;
}

Rational *RatEvalR(Rational *r, Rational *q) {
  if (!Defined(r, "RatEvalR()")) return Fallback();
  Rational *n = PolyEvalR(r->nume, q), *d = PolyEvalR(r->deno, q);
  Rational *out = RatDiv(n, d);
  RatUndef(n);
  RatUndef(d);
  return out;
}
