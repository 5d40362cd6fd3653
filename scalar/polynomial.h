// Polynomial objects: coefficients in a one-row matrix, ascending powers.
#ifndef VELK_SCALAR_POLYNOMIAL_H
#define VELK_SCALAR_POLYNOMIAL_H

#include "core/matrix.h"
#include "core/report.h"
#include "scalar/complex.h"

struct Polynomial {
  char *name;      // empty for temporaries
  char *variable;  // null: the default variable "s"
  int status;      // 0 temporary, 1 mark, anything else kept
  int kind;        // 0 real coefficients, 1 complex
  int degree;      // -1: undefined
  Matrix *coef;    // 1 x (degree + 1), owned (matrix status 2)
  Polynomial *prev;
  Polynomial *next;
};

extern char PolyMessageBuffer[kMessageSize];
#define PolySetMessage(...) FormatMessage(PolyMessageBuffer, __VA_ARGS__)
VELK_DECLARE_REPORTERS(Poly, Polynomial)

void PolyInit();
Polynomial *PolyDef(const char *name, int degree, const char *variable);
Polynomial *C_PolyDef(const char *name, int degree, const char *variable);
Polynomial *PolySetName(Polynomial *p, const char *name);
Polynomial *PolySetVariable(Polynomial *p, const char *variable);
Polynomial *PolySetStatus(Polynomial *p, int status);
void PolyUndef(Polynomial *p);
void PolyDestroy(Polynomial *p);
void PolyUndefChain(Polynomial *p);
void PolySweep();
void PolyUnmark(Polynomial *p);
Polynomial *PolyAssign(Polynomial *dst, Polynomial *src);
Polynomial *PolyCopy(Polynomial *dst, Polynomial *src);
Polynomial *PolyDup(Polynomial *p);
Polynomial *PolySwap(Polynomial *a, Polynomial *b);

// Ownership by a containing object (a matrix element, a rational, a list).
Polynomial *PolyOwn(Polynomial *p, int status);
void PolyRelease(Polynomial *p);

// ---- Construction ----
//
// Every result below is a new temporary (status 0) unless the comment says
// otherwise; an operand of degree -1 is the fatal "Undefined polynomial" from
// the operation's own location.

// Degree `degree` with p's kind and variable, zero coefficients.
Polynomial *PolyDefLike(Polynomial *p, int degree);
Polynomial *PolyZeroLike(Polynomial *p);  // the constant 0 in p's kind and variable
// Every coefficient 1.
Polynomial *PolyOne(int degree, const char *variable);
Polynomial *C_PolyOne(int degree, const char *variable);
Polynomial *PolyConst(double x);
Polynomial *C_PolyConst(Complex *z);  // REQUIRES: z is not null
// x variable (degree 1, constant 0).
Polynomial *PolyMonomial(double x, const char *variable);
Polynomial *C_PolyMonomial(Complex *z, const char *variable);
// A polynomial holding a copy of the one-row matrix m ("Not a row vector"
// otherwise), complex when m is; not simplified.
Polynomial *PolyCoefDef(Matrix *m, const char *variable);
// A copy of p's coefficient matrix (a temporary matrix).
Matrix *PolyCoef(Polynomial *p);
// dst's coefficients i..j take src's coefficients k..l. Equal kinds
// ("Confliction of class"); equal lengths inside both ("Size Error").
// Returns dst.
Polynomial *PolyPartCopy(Polynomial *dst, int i, int j, Polynomial *src, int k, int l);

// ---- Access ----

// Coefficient k of a real (complex) polynomial; k above the degree enlarges p
// first, and a negligible (|x| <= eps) leading store simplifies p. Returns p.
Polynomial *PolySetValue(Polynomial *p, int k, double x);
Polynomial *C_PolySetValue(Polynomial *p, int k, Complex *z);
double *PolyGetPtr(Polynomial *p, int k);
ComplexValue *C_PolyGetPtr(Polynomial *p, int k);

// ---- Text ----

// The text form read from the highest power down ("2 s^3 - s + 1"); star
// joins coefficient and variable with "*" (and writes the plain variable as
// Polynomial("s")). variable null: "s". With a null buffer a new emalloc'd
// one is returned; a caller's buffer must hold PolyTextSize(p, variable).
char *PolyToString(Polynomial *p, char *buffer, int star, const char *variable);
int PolyTextSize(Polynomial *p, const char *variable);
// text cut into lines: pieces end at a "+" or "-" not preceded by e, E, ( or
// ","; a piece that would pass width - indent starts a new line of indent
// blanks. A new emalloc'd buffer.
char *PolyBreakLines(const char *text, int indent, int width);
// "name = text" (or "ans = text") on stdout, broken at width 79.
void PolyPrint(Polynomial *p);
// label = text on fp, broken at width 79 under the label (matrix listings).
void PolyPrintLabeled(FILE *fp, Polynomial *p, const char *label);
void PolyPrintAll();
// The save form on a stream: "name = " when named, the text with star broken
// at width 75, ";\n\n" when terminate is non-zero.
void PolySaveText(FILE *stream, Polynomial *p, int terminate);

// ---- Arithmetic ----
//
// Sums, products and scalings are simplified with eps. Operands that both
// have a variable must have the same one ("Variables are distinct"); the
// result takes the first operand's variable, else the second's.

Polynomial *PolyAdd(Polynomial *p, Polynomial *q);
Polynomial *PolySub(Polynomial *p, Polynomial *q);
Polynomial *PolyAdd_double(Polynomial *p, double x);
Polynomial *PolyAdd_Complex(Polynomial *p, Complex *z);
Polynomial *PolySub_double(Polynomial *p, double x);   // p - x
Polynomial *PolySub_Complex(Polynomial *p, Complex *z);
Polynomial *PolyMul(Polynomial *p, Polynomial *q);
// The product's record: degree deg p + deg q, complex if either is, zeros.
Polynomial *PolyMulDef(Polynomial *p, Polynomial *q);
Polynomial *PolyScale(Polynomial *p, double x);
Polynomial *PolyScaleSelf(Polynomial *p, double x);  // in place, returns p
// A null z is the fatal "scale is NULL complex".
Polynomial *PolyScaleC(Polynomial *p, Complex *z);
// p^n, n >= 0 ("Index must be semipositive"), by binary powering.
Polynomial *PolyPow(Polynomial *p, int n);
Polynomial *PolyNegate(Polynomial *p);
Polynomial *PolyConj(Polynomial *p);
// Real (imaginary) parts of the coefficients as a real polynomial of the
// same degree; the imaginary part of a real polynomial is zeros.
Polynomial *PolyRealPart(Polynomial *p);
Polynomial *PolyImagPart(Polynomial *p);
// re + i im of two real polynomials ("Not a real Polynomial"), not simplified.
Polynomial *PolyRealAndImag(Polynomial *re, Polynomial *im);
Polynomial *PolyRealToComp(Polynomial *p);

// ---- Degree changes ----

// Degree j: coefficients i..j of p in place, zeros below i
// (0 <= i <= j <= degree, else "Size Error").
Polynomial *PolyCut(Polynomial *p, int i, int j);
// p with zero coefficients up to degree (a copy when degree is not higher).
Polynomial *PolyExpand(Polynomial *p, int degree);
// p itself enlarged to degree in place. Returns p.
Polynomial *PolyEnlarge(Polynomial *p, int degree);
// p / variable^k without the low coefficients (the constant 0 when k > degree).
Polynomial *PolyLowerShift(Polynomial *p, int k);
Polynomial *PolyHigherShift(Polynomial *p, int k);  // p variable^k
// The k-th derivative (the constant 0 when k > degree); the k-th integral
// with zero constants of integration.
Polynomial *PolyDerivative(Polynomial *p, int k);
Polynomial *PolyIntegral(Polynomial *p, int k);

// ---- Rounding and simplification ----

// Coefficients rounded (each part of a complex one), simplified with eps.
Polynomial *PolyCeil(Polynomial *p);
Polynomial *PolyFloor(Polynomial *p);
Polynomial *PolyFixToZero(Polynomial *p);  // toward zero
Polynomial *PolyRint(Polynomial *p);
// Coefficients below tol in magnitude become 0, then simplified with tol;
// tol < 0: the Frobenius norm of the coefficients times eps.
Polynomial *PolyRoundToZero(Polynomial *p, double tol);
// Drops leading coefficients of magnitude at most tol (stopping at a larger,
// NaN or infinite one), in place; when all go the constant stays as it is.
// Returns p.
Polynomial *PolySimplify(Polynomial *p, double tol);

// ---- Evaluation ----

double PolyEval(Polynomial *p, double x);          // real p
Complex *PolyEvalC(Polynomial *p, Complex *z);     // real p at a complex point
Complex *C_PolyEval(Polynomial *p, double x);      // complex p
Complex *C_PolyEvalC(Polynomial *p, Complex *z);   // any p at a complex point
// p(q), Horner's scheme over polynomials.
Polynomial *PolyEvalP(Polynomial *p, Polynomial *q);

// Polynomials in the same variable: both without one, or not both with
// different ones.
bool PolySameVariable(const Polynomial *p, const Polynomial *q);
// The variable shown for p ("s" when it has none).
const char *PolyVariableName(const Polynomial *p);

int PolyDegreeMax();
long PolyRegistryCheck();
int PolyPoolCount(int degree, int kind);

#endif
