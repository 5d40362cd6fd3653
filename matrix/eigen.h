// Eigenvalues and eigenvectors, balancing, Hessenberg and Schur forms of
// square real and complex matrices.
//
// Every front checks, in order, that its operand is not zero-size ("Zero-size
// matrix") and square ("Not a square matrix"), then dispatches: a real
// operand, or a complex one whose imaginary parts are all zero, goes to the
// real kernel; any other complex operand to the complex kernel; any other
// class is the fatal "Incorrect class matrix". Failures are fatal reports
// from the front (or from the kernel, "Solution will not converge") after the
// front's expression, such as "eig(A(3x3))", is written.
//
// Results are new temporaries. Fronts with two results take out-places and
// fill both. Eigenvalues and eigenvectors are always complex; eigenvalues come
// in order of real parts descending, equal real parts by imaginary parts
// descending (the member of a conjugate pair with positive imaginary part
// first), and column j of the vectors belongs to eigenvalue j. Eigenvectors
// from the real kernel have unit Euclidean length; those from the complex
// kernel are not normalised.
#ifndef VELK_MATRIX_EIGEN_H
#define VELK_MATRIX_EIGEN_H

#include "core/matrix.h"

// ---- fronts ------------------------------------------------------------------

// Eigenvalues (n x 1) into *values, eigenvectors (n x n) into *vectors.
void MatEig(Matrix *a, Matrix **values, Matrix **vectors);
// Eigenvalues only (n x 1), by the cheaper values-only iteration.
Matrix *MatEigVal(Matrix *a);
// Eigenvectors only (n x n), as MatEig gives them.
Matrix *MatEigVec(Matrix *a);
// One n x (n + 1) matrix: the eigenvalues, then the eigenvectors.
Matrix *MatEigValVec(Matrix *a);
// Eigenpairs of a Hermitian matrix (class 1 only, "Not a complex matrix"
// otherwise); its strict lower triangle and real diagonal are what is read.
// Values real-valued and descending; vectors orthonormal.
void MatHermitEig(Matrix *a, Matrix **values, Matrix **vectors);
// d (real diagonal, powers of two) and b = d^-1 a d (a's class), by balancing
// without isolation of eigenvalues.
void MatBalance(Matrix *a, Matrix **d, Matrix **b);
// h (upper Hessenberg, exact zeros below the subdiagonal) and p (orthogonal
// or unitary) with a = p h p'.
void MatHessenberg(Matrix *a, Matrix **h, Matrix **p);
// t and u with a = u t u': t quasi-upper-triangular (1 x 1 and 2 x 2 blocks)
// for the real path, upper triangular for the complex path; the blocks in the
// order the iteration found them.
void MatSchur(Matrix *a, Matrix **t, Matrix **u);

// The result records of the eigen fronts: complex n x 1 and n x n for an
// n x n a ("Not a square matrix" from their own names otherwise).
Matrix *MatEigValDef(Matrix *a);
Matrix *MatEigVecDef(Matrix *a);

// ---- kernels -------------------------------------------------------------------
// REQUIRES: a is square and not empty, real for Mat_, complex for C_Mat_;
// the results are of a's size (values n x 1, the others n x n), complex except
// t and u of Mat_Schur (real). a is not changed. Non-convergence is the fatal
// "Solution will not converge" from the kernel's name, after the expression
// "eig(...)", "eigval(...)", "schur(...)" or "heig(...)".

// Balancing with isolation, Hessenberg reduction, QR iteration with vectors,
// back-transformation; vectors normalised to unit length; ordered.
void Mat_Eig(Matrix *values, Matrix *vectors, Matrix *a);
void Mat_EigVal(Matrix *values, Matrix *a);
// No balancing; t quasi-triangular with exact zeros below the subdiagonal and
// wherever the iteration split the matrix.
void Mat_Schur(Matrix *t, Matrix *u, Matrix *a);
// As the real kernels; the vectors are not normalised.
void C_Mat_Eig(Matrix *values, Matrix *vectors, Matrix *a);
void C_Mat_EigVal(Matrix *values, Matrix *a);
// t upper triangular (exact zeros below), whatever the imaginary parts of a:
// a complex a with zero imaginary parts is accepted as it is.
void C_Mat_Schur(Matrix *t, Matrix *u, Matrix *a);
// a Hermitian: values descending, imaginary parts zero.
void C_Mat_HermitEig(Matrix *values, Matrix *vectors, Matrix *a);

#endif
