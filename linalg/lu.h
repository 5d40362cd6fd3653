// LU factorisation, Gauss-Jordan inversion and triangular solves on raw
// row-major arrays of doubles or complex values.
//
// Pivoting takes, in each column, the first row of largest magnitude (a later
// row replaces the candidate only when strictly larger); complex magnitudes
// are moduli.
#ifndef VELK_LINALG_LU_H
#define VELK_LINALG_LU_H

#include <complex>

namespace velk_linalg {

using Complexd = std::complex<double>;

// The number of elimination steps of an m x n LU: min(m - 1, n), at least 0.
int LuSteps(int m, int n);

// LU with partial pivoting of the m x n a in place: the multipliers of L
// (whose diagonal is 1) below the diagonal, U on and above it. pivots[k]
// (for k < LuSteps) is the row exchanged with row k at step k, so that P A =
// L U with P the exchanges applied in order. The real factorisation divides by
// a zero pivot (infinities and NaNs in L); the complex one stops at it and
// returns its step. Returns -1 when it completed.
int LuFactor(int m, int n, double *a, long lda, int *pivots);
int LuFactor(int m, int n, Complexd *a, long lda, int *pivots);

// The determinant of a square factorisation: the product of U's diagonal,
// negated once per exchange.
double LuDeterminant(int n, const double *lu, long ld, const int *pivots);
Complexd LuDeterminant(int n, const Complexd *lu, long ld, const int *pivots);

// Applies the exchanges of an LU (steps of them) to the rows of b (k columns).
void LuPermute(int steps, const int *pivots, int k, double *b, long ldb);
void LuPermute(int steps, const int *pivots, int k, Complexd *b, long ldb);

// Solves T X = B in place of b (n x k) for the lower (Forward) or upper (Back)
// triangle of t, using t's own diagonal, or ones in its place when
// unit_diagonal (the L of a packed LU). Fails, returning false with b partly
// overwritten, when a diagonal element is smaller in magnitude than
// tolerance; with k = 0 nothing is divided and it succeeds.
bool ForwardSubstitute(int n, int k, const double *t, long ldt, double *b, long ldb,
                       double tolerance, bool unit_diagonal = false);
bool ForwardSubstitute(int n, int k, const Complexd *t, long ldt, Complexd *b, long ldb,
                       double tolerance, bool unit_diagonal = false);
bool BackSubstitute(int n, int k, const double *t, long ldt, double *b, long ldb, double tolerance);
bool BackSubstitute(int n, int k, const Complexd *t, long ldt, Complexd *b, long ldb,
                    double tolerance);

// What an inversion met: the pivots at or below the tolerance, and whether it
// stopped at a complex division by exactly zero.
struct InverseStatus {
  int singular = 0;
  bool zero_division = false;
};

// Gauss-Jordan inversion of the n x n a (ld n) in place, with row pivoting.
// A pivot of magnitude at or below tolerance counts as singular and, when
// below floor, is replaced by floor with the pivot's sign (a zero pivot by
// +floor; complex: by (floor, 0)). *det receives the product of the pivots
// used, negated per exchange. A 1 x 1 a is inverted alone, with no test. Large
// matrices are eliminated by panels of columns, the panel's transformations
// reaching the other columns as one product each; the pivots are those of the
// column-by-column elimination.
InverseStatus GaussJordanInvert(int n, double *a, double tolerance, double floor, double *det);
InverseStatus GaussJordanInvert(int n, Complexd *a, double tolerance, double floor, Complexd *det);

}  // namespace velk_linalg

#endif
