// Rational objects: a numerator and a denominator polynomial.
#ifndef VELK_SCALAR_RATIONAL_H
#define VELK_SCALAR_RATIONAL_H

#include "core/report.h"
#include "scalar/polynomial.h"

struct Rational {
  char *name;    // empty for temporaries
  int status;    // 0 temporary, 1 mark, anything else kept
  int kind;      // 0 real coefficients, 1 complex
  int nume_degree;  // degrees recorded at definition (shown by reports)
  int deno_degree;
  Polynomial *nume;  // owned (polynomial status 2)
  Polynomial *deno;
  Rational *prev;
  Rational *next;
};

extern char RatMessageBuffer[kMessageSize];
#define RatSetMessage(...) FormatMessage(RatMessageBuffer, __VA_ARGS__)
VELK_DECLARE_REPORTERS(Rat, Rational)

void RatInit();
Rational *RatDef(const char *name, int nume_degree, int deno_degree);
Rational *C_RatDef(const char *name, int nume_degree, int deno_degree);
Rational *RatSetName(Rational *r, const char *name);
Rational *RatSetStatus(Rational *r, int status);
void RatUndef(Rational *r);
void RatDestroy(Rational *r);
void RatUndefChain(Rational *r);
void RatSweep();
void RatUnmark(Rational *r);
Rational *RatAssign(Rational *dst, Rational *src);
Rational *RatCopy(Rational *dst, Rational *src);
Rational *RatDup(Rational *r);
Rational *RatSwap(Rational *a, Rational *b);

Rational *RatOwn(Rational *r, int status);
void RatRelease(Rational *r);

// ---- Construction ----
//
// Results are new temporaries. An operand whose numerator or denominator has
// degree -1 is the fatal "Undefined rational" from the operation's location.
// Nothing ever cancels common factors.

// n over d, copied: complex when either is. Variable: n's when d has none or
// the same; d's when only d has one; none when they differ.
Rational *RatNumeDenoDef(Polynomial *n, Polynomial *d);
Rational *RatFromPoly(Polynomial *p);  // p / 1
Rational *RatInvPoly(Polynomial *p);   // 1 / p
Rational *RatConst(double x);
Rational *C_RatConst(Complex *z);
// The numerator (denominator) of r replaced by a copy of p, in place ("Class
// Error" for a complex p into a real r). Returns r.
Rational *RatSetNume(Rational *r, Polynomial *p);
Rational *RatSetDeno(Rational *r, Polynomial *p);
// The variable of both polynomials (null or empty: none). Returns r.
Rational *RatSetVariable(Rational *r, const char *variable);
Polynomial *RatNume(Rational *r);  // copies
Polynomial *RatDeno(Rational *r);
void RatPrintAll();

// ---- Text ----

// The numerator and denominator texts (PolyToString) in the variable shown:
// the given one, else the numerator's, else the denominator's. New buffers.
void RatToStrings(Rational *r, int star, const char *variable, char **nume, char **deno);
// The two-line fraction on stdout: "name = ----" between the centred texts.
void RatPrint(Rational *r);
// The same fraction under a label (matrix listings), on fp.
void RatPrintLabeled(FILE *fp, Rational *r, const char *label);
// The save form on a stream: "name = (nume)/" and "(deno)" below, ";\n\n"
// when terminate is non-zero.
void RatSaveText(FILE *stream, Rational *r, int terminate);

// ---- Arithmetic (all results paired by RatNumeDenoDef) ----

Rational *RatAdd(Rational *a, Rational *b);
Rational *RatSub(Rational *a, Rational *b);
Rational *RatAdd_Polynomial(Rational *r, Polynomial *p);
Rational *RatSub_Polynomial(Rational *r, Polynomial *p);  // r - p
Rational *RatAdd_Complex(Rational *r, Complex *z);
Rational *RatSub_Complex(Rational *r, Complex *z);
Rational *RatAdd_double(Rational *r, double x);
Rational *RatSub_double(Rational *r, double x);
Rational *RatMul(Rational *a, Rational *b);
Rational *RatDiv(Rational *a, Rational *b);
Rational *RatInv(Rational *r);  // d / n, with no check of a zero numerator
Rational *RatScale(Rational *r, double x);
Rational *RatScaleSelf(Rational *r, double x);  // the numerator scaled in place
Rational *RatScaleC(Rational *r, Complex *z);   // null z: "scale is NULL complex"
Rational *RatScaleP(Rational *r, Polynomial *p);
// r^n; a negative n inverts r.
Rational *RatPow(Rational *r, int n);
Rational *RatNegate(Rational *r);
Rational *RatConj(Rational *r);
// With n = a + ib and d = c + id: (ac + bd) / (c^2 + d^2) and (bc - ad) / (c^2 + d^2).
Rational *RatRealPart(Rational *r);
Rational *RatImagPart(Rational *r);
// x + i y of two real rationals ("Not a real Rational").
Rational *RatRealAndImag(Rational *x, Rational *y);
Rational *RatRealToComp(Rational *r);
Rational *RatCeil(Rational *r);
Rational *RatFloor(Rational *r);
Rational *RatRint(Rational *r);
Rational *RatFixToZero(Rational *r);
Rational *RatRoundToZero(Rational *r, double tol);
// Both polynomials simplified with tol, in place. Returns r.
Rational *RatSimplify(Rational *r, double tol);
// The k-th derivative N_k / D^(k+1), N_j = N_(j-1)' D - j N_(j-1) D'.
Rational *RatDerivative(Rational *r, int k);
// Both polynomials shifted; a zero shifted denominator becomes 1.
Rational *RatLowerShift(Rational *r, int k);
Rational *RatHigherShift(Rational *r, int k);

// ---- Evaluation ----

// n(x) / d(x) in doubles, no check of a zero denominator.
double RatEval(Rational *r, double x);
// Through CompDiv: a zero denominator is "Can't divide by zero".
Complex *RatEvalC(Rational *r, Complex *z);
Complex *C_RatEval(Rational *r, double x);
Complex *C_RatEvalC(Rational *r, Complex *z);
Rational *RatEvalP(Rational *r, Polynomial *p);  // n(p) / d(p)
Rational *PolyEvalR(Polynomial *p, Rational *q);  // Horner's scheme over rationals
Rational *RatEvalR(Rational *r, Rational *q);

// True when r's numerator is the zero polynomial.
bool RatIsZero(Rational *r);

long RatRegistryCheck();
int RatPoolCount();

#endif
