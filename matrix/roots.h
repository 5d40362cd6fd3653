// Roots of polynomials, zeros and poles of rationals: the eigenvalues of a
// companion matrix (matrix/eigen.h).
#ifndef VELK_MATRIX_ROOTS_H
#define VELK_MATRIX_ROOTS_H

#include "core/matrix.h"
#include "scalar/polynomial.h"
#include "scalar/rational.h"

// The roots of p as a complex column, in the order MatEigVal gives them.
// Leading zero coefficients are stripped (exact comparisons, no tolerance)
// and the rest made monic; the roots are the eigenvalues of the companion
// matrix of the monic polynomial. A constant has no roots (a 0 x 1 column);
// the zero polynomial is the fatal "Arg is a zero polynomial" from
// "PolyRoots()".
Matrix *PolyRoots(Polynomial *p);
// PolyRoots of the numerator (denominator); common roots are not cancelled.
Matrix *RatZeros(Rational *r);
Matrix *RatPoles(Rational *r);

#endif
