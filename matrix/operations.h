// Matrix operation front-ends and class conversions.
//
// Every front-end checks its operands, and on failure writes the expression it
// evaluates into the matrix message buffer and makes a fatal report from its
// own location ("MatAdd()"). Operands of different classes are promoted to
// their common class (the higher kind of matrix, polynomial, rational; complex
// if either is) and the front-end runs again on the converted pair. Results are
// new temporaries (status 0), except MatScaleSelf which returns its operand.
//
// Every front-end serves the six classes: polynomial and rational matrices
// compute element by element with the polynomial and rational operations
// (sums and products simplified, nothing cancelled). Polynomials divided or
// inverted elementwise give rational matrices; element objects take integral
// exponents only (another exponent is "Incorrect class matrix").
// Polynomial and rational scalars, evaluation and the variable are in
// matrix/polynomial_matrix.h.
#ifndef VELK_MATRIX_OPERATIONS_H
#define VELK_MATRIX_OPERATIONS_H

#include "core/matrix.h"
#include "scalar/complex.h"

// ---- conversions: new temporaries named like their operand ------------------

// Real to complex values: 0 -> 1, 2 -> 3, 4 -> 5; a complex class is copied.
Matrix *MatRealToComp(Matrix *m);
// Each value a degree-0 polynomial: 0 -> 2 (1 -> 3).
Matrix *MatRealToPoly(Matrix *m);
// Each value a degree-0 polynomial with complex coefficients: 0 or 1 -> 3.
Matrix *MatCompToPoly(Matrix *m);
// Each value x as x/1: 0 -> 4 (1 -> 5).
Matrix *MatRealToRat(Matrix *m);
// Each value x as x/1 with complex coefficients: 0 or 1 -> 5.
Matrix *MatCompToRat(Matrix *m);
// Each polynomial p as p/1: 2 -> 4, 3 -> 5.
Matrix *MatPolyToRat(Matrix *m);

// ---- two matrices ------------------------------------------------------------

Matrix *MatAdd(Matrix *a, Matrix *b);
Matrix *MatSub(Matrix *a, Matrix *b);
Matrix *MatMul(Matrix *a, Matrix *b);
Matrix *MatMulElem(Matrix *a, Matrix *b);
Matrix *MatDivElem(Matrix *a, Matrix *b);
// Cross product of two 3 x 1 (or two 1 x 3) vectors.
Matrix *MatVectorProduct(Matrix *a, Matrix *b);
// [a, b] side by side; [[a][b]] one above the other.
Matrix *MatCatRow(Matrix *a, Matrix *b);
Matrix *MatCatColumn(Matrix *a, Matrix *b);
// re + i im of two matrices of one real class (0, 2 or 4: the result is of
// class 1, 3 or 5), else "Not appropriate class matrices".
Matrix *MatRealAndImag(Matrix *re, Matrix *im);
// a .^ b elementwise; b must be real ("Not a real index matrix").
Matrix *MatPowElemEach(Matrix *a, Matrix *b);
// rem(a, b) elementwise (the sign of a, as fmod); both real.
Matrix *MatRemElemEach(Matrix *a, Matrix *b);

// ---- a matrix and a scalar (the scalar is never made a matrix) ---------------

Matrix *MatAdd_double(Matrix *m, double x);
// REQUIRES: z is not null. A real m gives a complex result.
Matrix *MatAdd_Complex(Matrix *m, Complex *z);
Matrix *MatSub_double(Matrix *m, double x);  // m .- x
Matrix *MatSub_double(double x, Matrix *m);  // x .- m
Matrix *MatSub_Complex(Matrix *m, Complex *z);
Matrix *MatSub_Complex(Complex *z, Matrix *m);
Matrix *MatScale(Matrix *m, double x);
// Scales m in place and returns it.
Matrix *MatScaleSelf(Matrix *m, double x);
// A null z is the fatal "Scale is null complex".
Matrix *MatScaleC(Matrix *m, Complex *z);
// m^n for a square m (m^0 is the identity of m's class); a negative n is the
// power -n of MatInv(m, MatFrobNorm(m) * eps), for real and complex m.
Matrix *MatPow(Matrix *m, int n);
// Each element to the power n (exact repeated products).
Matrix *MatPowElem(Matrix *m, int n);
// Each element to the real power x. A real m stays real when every element is
// non-negative or x is an integer; otherwise the result is complex (principal
// values), as it is for a complex m.
Matrix *MatPowElemToReal(Matrix *m, double x);
// Each element to the complex power z (principal values); complex result.
Matrix *MatPowElemToReal(Matrix *m, Complex *z);
// rem(m, x) elementwise (fmod); m must be real.
Matrix *MatRemElem(Matrix *m, double x);

// ---- one matrix --------------------------------------------------------------

Matrix *MatInvElem(Matrix *m);  // 1 / each element
Matrix *MatTrans(Matrix *m);
Matrix *MatConjTrans(Matrix *m);
Matrix *MatConj(Matrix *m);
Matrix *MatNegate(Matrix *m);
Matrix *MatIncrement(Matrix *m);  // each element + 1
Matrix *MatDecrement(Matrix *m);  // each element - 1

#endif
