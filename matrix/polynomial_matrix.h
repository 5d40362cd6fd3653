// Front-ends that take polynomial and rational scalars, evaluation of
// polynomial and rational matrices, the matrix polynomial of a scalar, and
// the variable of a polynomial or rational matrix.
//
// They follow the pattern of matrix/operations.h: results are new
// temporaries, failures fatal reports with the expression written first.
// A real or complex matrix meeting a polynomial scalar is made a polynomial
// matrix first (a rational one for a rational scalar), complex when either
// side is.
#ifndef VELK_MATRIX_POLYNOMIAL_MATRIX_H
#define VELK_MATRIX_POLYNOMIAL_MATRIX_H

#include "core/matrix.h"
#include "scalar/polynomial.h"
#include "scalar/rational.h"

// m .+ p, m .- p, p .- m; m .+ r, m .- r, r .- m elementwise.
Matrix *MatAdd_Polynomial(Matrix *m, Polynomial *p);
Matrix *MatSub_Polynomial(Matrix *m, Polynomial *p);
Matrix *MatSub_Polynomial(Polynomial *p, Matrix *m);
Matrix *MatAdd_Rational(Matrix *m, Rational *r);
Matrix *MatSub_Rational(Matrix *m, Rational *r);
Matrix *MatSub_Rational(Rational *r, Matrix *m);
// Each element times p (times r).
Matrix *MatScaleP(Matrix *m, Polynomial *p);
Matrix *MatScaleR(Matrix *m, Rational *r);

// Each element of a polynomial or rational matrix evaluated ("Zero-size
// matrix" for an empty m, "Not a polynomial nor rational matrix" for a real
// or complex one):
// at x: real values for real coefficients, complex otherwise;
Matrix *MatEval(Matrix *m, double x);
// at z: complex values;
Matrix *MatEvalC(Matrix *m, Complex *z);
// at p: a polynomial (rational) matrix;
Matrix *MatEvalP(Matrix *m, Polynomial *p);
// at r: a rational matrix;
Matrix *MatEvalR(Matrix *m, Rational *r);
// at the square matrix a: element (i, j) becomes the block p_ij(a) (or
// r_ij(a), see RatEvalM) of the result (rows and columns times a's order);
Matrix *MatEvalM(Matrix *m, Matrix *a);
// at the element of a in the same place (a of m's shape, real or complex).
Matrix *MatEvalMElem(Matrix *m, Matrix *a);

// p(a) by Horner's scheme over matrices: c_n I, then X a + c_k I. a square
// ("Not a square matrix"), real or complex.
Matrix *PolyEvalMat(Polynomial *p, Matrix *a);
// r(a) = n(a) inv(d(a)), the inverse with tolerance |d(a)|_F eps (a singular
// d(a) is the inverse's report).
Matrix *RatEvalM(Rational *r, Matrix *a);

// Gives every element of a polynomial or rational matrix the variable (null
// or empty: none); any other class is "Incorrect class matrix" from
// "MatSetVar()". Returns m.
Matrix *MatSetVar(Matrix *m, const char *variable);

#endif
