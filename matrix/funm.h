// Functions of a square matrix by the Schur-Parlett method: f(A) = U f(T) U'
// with A = U T U' the complex Schur form (T upper triangular, also for a real
// A, which is taken as complex first) and f(T) by the Parlett recurrence.
// Results are always complex.
//
// Where two eigenvalues of T are exactly equal, the recurrence divides by eps
// instead of zero: the result then holds very large entries, not a report.
#ifndef VELK_MATRIX_FUNM_H
#define VELK_MATRIX_FUNM_H

#include "core/matrix.h"
#include "scalar/complex.h"

// f(a) for a scalar function f that returns a new Complex for each argument
// (freed after use). Fatal from "MatFunc()" with the label "NAME(A(RxC))"
// (name the function's): "Zero-size matrix", "Not a square matrix", "Not a
// real nor complex matrix", and "Matrix has multiple eigenvalues" should the
// division refuse its divisor. The Schur kernel may report "Solution will not
// converge".
Matrix *MatFunc(Matrix *a, Complex *(*f)(Complex *), const char *name);

// The principal square root and logarithm (CompSqrt, CompLog), with the same
// checks first under "MatSqrt()" and "sqrt(A(RxC))", and "MatLog()" and
// "log(A(RxC))" (the class check of the logarithm reports from "MatLogt()").
Matrix *MatSqrt(Matrix *a);
Matrix *MatLog(Matrix *a);

#endif
