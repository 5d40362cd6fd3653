// The matrix exponential of a square real or complex matrix.
#ifndef VELK_MATRIX_EXPM_H
#define VELK_MATRIX_EXPM_H

#include "core/matrix.h"

// exp(a) of a's class, by scaling and squaring: with j = floor(log2 |a|_F) + 1
// (at least 0; 1 for the zero matrix) the Taylor sum of a / 2^j is squared j
// times. Fatal from "MatExp()" with the label "exp(NAME(RxC))": "Zero-size
// matrix", "Not a square matrix", "Incorrect class matrix" (polynomial and
// rational classes); "Not converge" from the Taylor kernel for entries that
// are not finite.
Matrix *MatExp(Matrix *a);

// The Taylor sum of exp(a) into e, which is returned: e = t = I; for at most
// 100 iterations t = t a (1/k), e += t, until |t|_F <= eps. Stopping later
// than iteration 99 is the fatal "Not converge" from "Mat_ExpLocal()" with the
// label "exp(NAME(RxC))" of a.
// REQUIRES: a square and real (C_: complex), e of a's shape and class.
Matrix *Mat_ExpLocal(Matrix *e, Matrix *a);
Matrix *C_Mat_ExpLocal(Matrix *e, Matrix *a);

#endif
