// Plain complex values and the formulas of complex arithmetic, written once.
//
// The Complex operations, the ComplexValue helpers and any loop over complex
// matrix storage compute through the formulas of velk_complex, so that a
// product or a quotient is the same bits whichever interface asked for it.
// This header needs nothing but <cmath> and the ComplexValue pair.
#ifndef VELK_SCALAR_COMPLEX_VALUE_H
#define VELK_SCALAR_COMPLEX_VALUE_H

#include <cmath>

#include "core/matrix.h"

namespace velk_complex {

inline ComplexValue Add(ComplexValue a, ComplexValue b) { return {a.re + b.re, a.im + b.im}; }
inline ComplexValue Sub(ComplexValue a, ComplexValue b) { return {a.re - b.re, a.im - b.im}; }
// The schoolbook product: no recovery of infinities and NaNs.
inline ComplexValue Mul(ComplexValue a, ComplexValue b) {
  return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
inline ComplexValue Scale(ComplexValue a, double x) { return {a.re * x, a.im * x}; }
inline ComplexValue Neg(ComplexValue a) { return {-a.re, -a.im}; }
inline ComplexValue Conj(ComplexValue a) { return {a.re, -a.im}; }
// a + i b
inline ComplexValue AddI(ComplexValue a, ComplexValue b) { return {a.re - b.im, a.im + b.re}; }
inline ComplexValue Square(ComplexValue a) { return {a.re * a.re - a.im * a.im, 2 * a.re * a.im}; }

// A divisor is zero when |re| + |im| is: (0, -0) is zero too.
inline bool IsZero(ComplexValue d) { return std::fabs(d.re) + std::fabs(d.im) == 0; }

// n / d by Smith's method (CACM 5(8), 1962, algorithm 116); a tie
// |d.re| = |d.im| takes the first branch.
inline ComplexValue Div(ComplexValue n, ComplexValue d) {
  if (std::fabs(d.im) >= std::fabs(d.re)) {
    double r = d.re / d.im, den = r * d.re + d.im;
    return {(r * n.re + n.im) / den, (r * n.im - n.re) / den};
  }
  double r = d.im / d.re, den = r * d.im + d.re;
  return {(r * n.im + n.re) / den, (n.im - r * n.re) / den};
}

// x / c through the squared modulus rounded to a double, deliberately not
// Smith's method: it overflows to zeros where Div does not.
inline ComplexValue RealOver(double x, ComplexValue c) {
  double s = c.re * c.re + c.im * c.im;
  return {x * c.re / s, -x * c.im / s};
}

// c^n for n >= 0 by binary exponentiation: the accumulator takes the current
// square at each odd bit, the square is squared while bits remain.
// The accumulator starts as the first factor rather than as 1, so that
// c^1 is c to the bit, signed zeros included.
inline ComplexValue Pow(ComplexValue c, unsigned long long n) {
  ComplexValue acc = {1, 0};
  for (bool first = true; n > 0;) {
    if (n & 1) {
      acc = first ? c : Mul(acc, c);
      first = false;
    }
    n >>= 1;
    if (n != 0) c = Square(c);
  }
  return acc;
}

// The modulus without overflow or underflow in the squares.
inline double Abs(ComplexValue a) { return std::hypot(a.re, a.im); }
inline double Arg(ComplexValue a) { return std::atan2(a.im, a.re); }

// A tangent as the quotient the caller divides with its own zero test:
// tan z = n / d where d is zero exactly when cos z is.
struct Quotient {
  ComplexValue n;
  ComplexValue d;
};

// Elementary functions on the principal branches (scalar/complex_functions.cc).
ComplexValue Exp(ComplexValue z);
ComplexValue Log(ComplexValue z);
ComplexValue Log10(ComplexValue z);
ComplexValue Sqrt(ComplexValue z);
ComplexValue Sin(ComplexValue z);
ComplexValue Cos(ComplexValue z);
Quotient Tan(ComplexValue z);
ComplexValue Sinh(ComplexValue z);
ComplexValue Cosh(ComplexValue z);
Quotient Tanh(ComplexValue z);
ComplexValue Asin(ComplexValue z);
ComplexValue Acos(ComplexValue z);
ComplexValue Atan(ComplexValue z);
ComplexValue Asinh(ComplexValue z);
ComplexValue Acosh(ComplexValue z);
ComplexValue Atanh(ComplexValue z);

}  // namespace velk_complex

// ---- ComplexValue helpers: results written into the first argument ----------
//
// Each returns its result pointer; r may be the same as an operand.

inline ComplexValue *ComplexValueAdd(ComplexValue *r, const ComplexValue *a, const ComplexValue *b) {
  *r = velk_complex::Add(*a, *b);
  return r;
}
inline ComplexValue *ComplexValueSub(ComplexValue *r, const ComplexValue *a, const ComplexValue *b) {
  *r = velk_complex::Sub(*a, *b);
  return r;
}
inline ComplexValue *ComplexValueMul(ComplexValue *r, const ComplexValue *a, const ComplexValue *b) {
  *r = velk_complex::Mul(*a, *b);
  return r;
}
inline ComplexValue *ComplexValueScale(ComplexValue *r, const ComplexValue *a, double x) {
  *r = velk_complex::Scale(*a, x);
  return r;
}
inline ComplexValue *ComplexValueNeg(ComplexValue *r, const ComplexValue *a) {
  *r = velk_complex::Neg(*a);
  return r;
}
inline ComplexValue *ComplexValueConj(ComplexValue *r, const ComplexValue *a) {
  *r = velk_complex::Conj(*a);
  return r;
}
inline double ComplexValueAbs(const ComplexValue *a) { return velk_complex::Abs(*a); }
inline double ComplexValueArg(const ComplexValue *a) { return velk_complex::Arg(*a); }
inline ComplexValue *ComplexValueCopy(ComplexValue *dst, const ComplexValue *src) {
  *dst = *src;
  return dst;
}

// Division and inverse (Smith's method and the squared modulus, as the
// Complex forms). A zero divisor prints "ComplexValueDiv(): Can't divide by
// zero.\n" (or ComplexValueInv()) on stderr, leaves r untouched and returns null.
ComplexValue *ComplexValueDiv(ComplexValue *r, const ComplexValue *a, const ComplexValue *b);
ComplexValue *ComplexValueInv(ComplexValue *r, const ComplexValue *a);

// A new emalloc'd value; ComplexValueFree gives it back.
ComplexValue *ComplexValueDef(double re, double im);
void ComplexValueFree(ComplexValue *v);
// Both parts +infinity, or both a quiet NaN, in r (a new value when r is null).
ComplexValue *ComplexValueInf(ComplexValue *r);
ComplexValue *ComplexValueNaN(ComplexValue *r);

// The elementary functions by name. Each has a formula in velk_complex, a
// ComplexValue<Name> (r, z) helper writing into r and returning it, and the
// Complex forms Comp<Name> and Comp<Name>Self: Exp, Log, Log10, Sqrt, Sin,
// Cos, Sinh, Cosh, Asin, Acos, Atan, Asinh, Acosh, Atanh, and the tangents
// Tan and Tanh, whose formulas give a quotient that the caller divides
// (ComplexValueDiv for the helpers).
#define VELK_COMPLEX_FUNCTIONS(X) \
  X(Exp) X(Log) X(Log10) X(Sqrt) X(Sin) X(Cos) X(Sinh) X(Cosh) \
  X(Asin) X(Acos) X(Atan) X(Asinh) X(Acosh) X(Atanh)
#define VELK_COMPLEX_TANGENTS(X) X(Tan) X(Tanh)

#define VELK_COMPLEX_VALUE_DECLARE(Name) \
  ComplexValue *ComplexValue##Name(ComplexValue *r, const ComplexValue *z);
VELK_COMPLEX_FUNCTIONS(VELK_COMPLEX_VALUE_DECLARE)
VELK_COMPLEX_TANGENTS(VELK_COMPLEX_VALUE_DECLARE)
#undef VELK_COMPLEX_VALUE_DECLARE

#endif
