// Matrices filled from scalar objects: the complex constructors whose
// constant is made as a temporary Complex (1 + 0i, or the given value), and
// the polynomial and rational fills.
#ifndef VELK_SCALAR_FILL_H
#define VELK_SCALAR_FILL_H

#include "core/matrix.h"
#include "scalar/complex.h"
#include "scalar/polynomial.h"
#include "scalar/rational.h"

Matrix *C_MatIDef(int n);
Matrix *C_MatIDef2(int rows, int cols);
Matrix *C_MatOneDef(int rows, int cols);
// REQUIRES: value is not null.
Matrix *C_MatFillDef(int rows, int cols, Complex *value);

// Every element an owned copy of p (of r). A complex-coefficient element gives
// the complex-coefficient class (3, 5). REQUIRES: p (r) is not null.
Matrix *P_MatFillDef(int rows, int cols, Polynomial *p);
Matrix *R_MatFillDef(int rows, int cols, Rational *r);

#endif
