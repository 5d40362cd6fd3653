// Dense linear algebra on real and complex matrices: LU, inverse,
// determinant, solves, rank, pseudo-inverse, null space, singular values and
// QR.
//
// Every front checks its operands and on failure writes the expression into
// the matrix message buffer ("inv(A(3x3), 1E-10)") and reports from its own
// location; reports are fatal unless said otherwise. Results are new
// temporaries. Out-places (l, u, p of MatLU, ...) are existing records that
// receive the result's shape, class and values and keep their name and status.
//
// Tolerances: the singular tests compare magnitudes with a tolerance. Where
// "default" is said, a negative tolerance is replaced by MatFrobNorm(a) * eps.
#ifndef VELK_MATRIX_LINEAR_H
#define VELK_MATRIX_LINEAR_H

#include "core/matrix.h"
#include "scalar/complex.h"

// ---- LU and inverse ------------------------------------------------------------

// P A = L U with partial pivoting (the first of equal magnitudes is the
// pivot): L m x min(m, n) with unit diagonal, U min(m, n) x n, P m x m real.
// A complex a whose imaginary parts are all zero is factored as real and the
// factors made complex.
void MatLU(Matrix *a, Matrix *l, Matrix *u, Matrix *p);
// The kernels behind MatLU for a real and a complex a: L and U into l and u,
// the row exchanged with row k at step k into pivots[k], k < min(m - 1, n).
// The real one divides by a zero pivot (infinities or NaNs in L); the complex
// one reports "Zero division" there.
void Mat_LU(Matrix *a, Matrix *l, Matrix *u, int *pivots);
void C_Mat_LU(Matrix *a, Matrix *l, Matrix *u, int *pivots);

// The inverse by Gauss-Jordan elimination. A pivot of magnitude <= |tolerance|
// is reported "Singular: result may be inaccurate" from "Mat_Inv()" (or
// "C_Mat_Inv()"): a warning for tolerance >= 0, after which a pivot below eps
// is replaced by eps and the elimination goes on; fatal for tolerance < 0.
// A 1 x 1 matrix is inverted with no test ([[0]] gives [[inf]]). A 0 x 0
// matrix gives an empty copy.
Matrix *MatInv(Matrix *a, double tolerance);
// Inverts result (a copy of a) in place; *det receives the determinant.
Matrix *Mat_Inv(Matrix *result, Matrix *a, double *det, double tolerance);
Matrix *C_Mat_Inv(Matrix *result, Matrix *a, ComplexValue *det, double tolerance);

// ---- solves --------------------------------------------------------------------

// X with L X = B (MatForSub) or U X = B (MatBackSub) for the lower (upper)
// triangle of a square t, with t's own diagonal. A diagonal element smaller in
// magnitude than tolerance gives an empty 0 x 0 result, with no report.
Matrix *MatForSub(Matrix *l, Matrix *b, double tolerance);
Matrix *MatBackSub(Matrix *u, Matrix *b, double tolerance);
// X with A X = B for a square A, through its LU; "Singular" when a
// substitution fails (every solve fails for tolerance > 1, L's diagonal being
// 1).
Matrix *MatLUSolve(Matrix *a, Matrix *b, double tolerance);
// pinv(A, tolerance) B.
Matrix *MatLeastSquare(Matrix *a, Matrix *b, double tolerance);
// a \ b: MatLUSolve for a square a, else MatLeastSquare.
Matrix *MatLeftDiv(Matrix *a, Matrix *b, double tolerance);
// b / a: the transpose of a' \ b'.
Matrix *MatRightDiv(Matrix *b, Matrix *a, double tolerance);

// ---- determinant ---------------------------------------------------------------

double MatDeterm(Matrix *a);
// REQUIRES of the result: the caller owns the new temporary Complex.
Complex *C_MatDeterm(Matrix *a);

// ---- singular values and what rests on them -------------------------------------

// A = U S V' (V' the conjugate transpose): U m x m and V n x n of a's class
// with orthonormal columns, S m x n real with the singular values in
// descending order on its diagonal.
void MatSVD(Matrix *a, Matrix *u, Matrix *s, Matrix *v);
// The singular values, min(m, n) x 1, descending.
Matrix *MatSingVal(Matrix *a);
// The square root of the sum of the squared magnitudes of the elements.
double MatFrobNorm(Matrix *a);
// The number of singular values above the (default) tolerance.
int MatRank(Matrix *a, double tolerance);
// V D U' with D n x m holding 1/s(k) for the singular values above the
// (default) tolerance.
Matrix *MatPseudoInv(Matrix *a, double tolerance);
// The columns of V beyond the numerical rank: n x (n - r); 0 x 0 when the
// rank equals the larger of the two sizes.
Matrix *MatKernel(Matrix *a, double tolerance);

// ---- QR ------------------------------------------------------------------------

// A = Q R by Householder reflections: Q m x m orthogonal (unitary), R m x n
// upper triangular with a real non-negative diagonal.
void MatQR(Matrix *a, Matrix *q, Matrix *r);

#endif
