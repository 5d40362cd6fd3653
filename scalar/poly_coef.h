// Coefficient access shared by the polynomial and rational files.
// Internal to the library: the public surface is scalar/polynomial.h.
#ifndef VELK_SCALAR_POLY_COEF_H
#define VELK_SCALAR_POLY_COEF_H

#include <cstdio>

#include "scalar/complex_value.h"
#include "scalar/polynomial.h"

struct Rational;

namespace velk_poly {

inline bool IsComplex(const Polynomial *p) { return p->kind == 1; }
inline double *Real(Polynomial *p) { return MatReal(p->coef); }
inline ComplexValue *Comp(Polynomial *p) { return static_cast<ComplexValue *>(p->coef->elements); }
// Coefficient k as a pair, whatever the kind.
inline ComplexValue At(Polynomial *p, int k) {
  return IsComplex(p) ? Comp(p)[k] : ComplexValue{Real(p)[k], 0.0};
}
// Stores a pair into coefficient k (a real polynomial keeps the real part).
inline void Put(Polynomial *p, int k, ComplexValue v) {
  if (IsComplex(p))
    Comp(p)[k] = v;
  else
    Real(p)[k] = v.re;
}

// A new zero polynomial of the kind.
inline Polynomial *New(int degree, bool complex, const char *variable) {
  return complex ? C_PolyDef("", degree, variable) : PolyDef("", degree, variable);
}

// The zero polynomial: degree 0 with a zero constant (both parts for complex).
inline bool IsZero(Polynomial *p) {
  if (p->degree != 0) return false;
  ComplexValue c = At(p, 0);
  return c.re == 0 && c.im == 0;
}

// The variable of a result of p and q: p's, else q's (null: none).
inline const char *ResultVariable(const Polynomial *p, const Polynomial *q) {
  return p->variable != nullptr ? p->variable : q->variable;
}

// Undefines a temporary made while computing (owned or kept ones are left).
inline void Drop(Polynomial *p) {
  if (p != nullptr && p->status == 0) PolyUndef(p);
}

// Every element of a polynomial or rational matrix m, row by row, through
// print(element, label) with the label " (  i,  j)".
template <class O, class Print>
void EachLabeled(Matrix *m, Print print) {
  O **e = static_cast<O **>(m->elements);
  for (int i = 0; i < m->rows; i++)
    for (int j = 0; j < m->cols; j++) {
      char label[32];
      snprintf(label, sizeof label, " (%3d,%3d)", i + 1, j + 1);
      print(e[static_cast<long long>(i) * m->cols + j], label);
    }
}

// The polynomial parts of matrix save forms and listings (core/text.h).
char *ElementText(Polynomial *p, int indent, int width);
void MatrixPrintBody(Matrix *m);
void RatElementText(Rational *r, int indent, int width, char **nume, char **deno);
void RatMatrixPrintBody(Matrix *m);

}  // namespace velk_poly

#endif
