// Complex scalar objects: named pairs of doubles with their own registry.
#ifndef VELK_SCALAR_COMPLEX_H
#define VELK_SCALAR_COMPLEX_H

#include <cstdio>

#include "core/matrix.h"
#include "core/report.h"
#include "core/text.h"
#include "scalar/complex_value.h"

struct Complex {
  char *name;  // empty for temporaries
  int status;  // 0 temporary, 1 mark, anything else kept
  double re;
  double im;
  Complex *prev;
  Complex *next;
};

extern char CompMessageBuffer[kMessageSize];
#define CompSetMessage(...) FormatMessage(CompMessageBuffer, __VA_ARGS__)
VELK_DECLARE_REPORTERS(Comp, Complex)

void CompInit();
Complex *CompDef(const char *name, double re, double im);
Complex *CompSetName(Complex *c, const char *name);
Complex *CompSetStatus(Complex *c, int status);
void CompUndef(Complex *c);
void CompDestroy(Complex *c);
void CompUndefChain(Complex *c);
void CompSweep();
void CompUnmark(Complex *c);
Complex *CompDup(Complex *c);
Complex *CompCopyValue(Complex *dst, Complex *src);
Complex *CompCopyAll(Complex *dst, Complex *src);
Complex *CompSwap(Complex *a, Complex *b);
Complex *CompLet(Complex *dst, Complex *src);

// Ownership by a containing object (a list element): off the registry until released.
Complex *CompOwn(Complex *c, int status);
void CompRelease(Complex *c);

long CompRegistryCheck();
int CompPoolCount();

// The text form "(re,im)" of c, as ComplexValueToString (core/text.h) writes it.
char *CompToString(Complex *c, char *buf, const char *format);
// "%s = %s\n" (or "ans = %s\n" without a name) on stdout.
void CompPrint(Complex *c);
// Every record after the head, with CompPrint.
void CompPrintAll();
// The save form on a stream: name = "(re,im)" (or "(re,im)" in quotes alone
// without a name), then ";\n\n" when terminate is non-zero.
void CompSaveText(FILE *stream, Complex *c, int terminate);

// ---- Arithmetic ----
//
// Without Self: a new temporary. With Self: the Complex operand is
// overwritten and returned. Forms ending in 1 take the real operand first,
// in 2 second; a real operand acts on the real part only in sums.

Complex *CompAdd(Complex *a, Complex *b);
Complex *CompAddSelf(Complex *a, Complex *b);
Complex *CompAdd1(double x, Complex *c);
Complex *CompAddSelf1(double x, Complex *c);
Complex *CompAdd2(Complex *c, double x);
Complex *CompAddSelf2(Complex *c, double x);
Complex *CompSub(Complex *a, Complex *b);
Complex *CompSubSelf(Complex *a, Complex *b);
Complex *CompSub1(double x, Complex *c);       // (x - re, -im)
Complex *CompSubSelf1(double x, Complex *c);
Complex *CompSub2(Complex *c, double x);       // (re - x, im)
Complex *CompSubSelf2(Complex *c, double x);
Complex *CompMul(Complex *a, Complex *b);
Complex *CompMulSelf(Complex *a, Complex *b);
Complex *CompMul1(double x, Complex *c);
Complex *CompMulSelf1(double x, Complex *c);
Complex *CompMul2(Complex *c, double x);
Complex *CompMulSelf2(Complex *c, double x);
Complex *CompAddI(Complex *a, Complex *b);     // a + i b

// Division. A complex divisor is zero when |re| + |im| is, a real one when
// |x| is; then "Can't divide by zero" is reported (fatal) with the expression.
// Quotients by a complex use Smith's method, except CompDiv1 and the
// inverses, which go through re^2 + im^2 (and overflow to zeros with it).
Complex *CompDiv(Complex *a, Complex *b);
Complex *CompDivSelf(Complex *a, Complex *b);  // null after a report
Complex *CompDiv1(double x, Complex *c);
Complex *CompDivSelf1(double x, Complex *c);   // x / c into c
Complex *CompDiv2(Complex *c, double x);
Complex *CompDivSelf2(Complex *c, double x);
Complex *CompInv(Complex *c);
Complex *CompInvSelf(Complex *c);

Complex *CompConj(Complex *c);
Complex *CompConjSelf(Complex *c);
Complex *CompNeg(Complex *c);
Complex *CompNegSelf(Complex *c);
// c^n by binary exponentiation; n < 0 through CompInv(c).
Complex *CompPow(Complex *c, int n);
double CompAbs(Complex *c);
double CompArg(Complex *c);
Complex *CompUnit(Complex *c);  // c / |c|; NaNs for zero
// Each part rounded separately; CompFix toward zero.
Complex *CompCeil(Complex *c);
Complex *CompFloor(Complex *c);
Complex *CompRint(Complex *c);
Complex *CompFix(Complex *c);
// Parts below tol in magnitude become 0; a part equal to tol is kept.
Complex *CompFixToZero(Complex *c, double tol);

// ---- Elementary functions on the principal branches ----
//
// The logarithm's argument is atan2(im, re), except that a zero real part
// gives +-pi/2 by the sign of the imaginary part. The tangents divide with
// CompDivSelf.
// CompExp, CompLog, ... CompAtanh and their Self forms (the list is
// VELK_COMPLEX_FUNCTIONS and VELK_COMPLEX_TANGENTS in scalar/complex_value.h).
#define VELK_COMP_DECLARE(Name)    \
  Complex *Comp##Name(Complex *c); \
  Complex *Comp##Name##Self(Complex *c);
VELK_COMPLEX_FUNCTIONS(VELK_COMP_DECLARE)
VELK_COMPLEX_TANGENTS(VELK_COMP_DECLARE)
#undef VELK_COMP_DECLARE

// ---- Between Complex and ComplexValue ----

// c's value into dst (a new value when dst is null).
ComplexValue *ComplexValueFromComp(ComplexValue *dst, Complex *c);
// A new temporary holding v.
Complex *CompFromComplexValue(ComplexValue *v);

#endif
