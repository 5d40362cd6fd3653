// Internal to the library (the eigen fronts of matrix/eigen.h and the layers
// below them): eigenvalue kernels on raw arrays, ports of the published EISPACK
// procedures, each under its published name with its published variables.
//
// Layout: an n x n matrix to be reduced (a, h, ar, ai, hr, hi) is stored row by
// row, a matrix of eigenvectors or transformations (z, zr, zi) column by
// column, so that the inner loops of both the row and the column updates of
// the QR sweeps run at unit stride where they are long. Vectors hold n
// doubles. Indices in the arguments (low, igh, the returned failure index)
// count from 1, as in the procedures. machep is the relative tolerance of the
// iterations.
#ifndef VELK_LINALG_EIGEN_KERNELS_H
#define VELK_LINALG_EIGEN_KERNELS_H

// ---- real general matrices -----------------------------------------------------

// balanc: balances a (radix 2). With isolate, rows and columns isolating an
// eigenvalue are first permuted to the ends, leaving the block low..igh;
// scale holds the permutations outside it and the factors inside. Without,
// low = 1, igh = n and scale holds the factors only.
void balanc(int n, double *a, bool isolate, int *low, int *igh, double *scale);
// balbak: back-transforms the m columns of z by the balancing of balanc.
void balbak(int n, int low, int igh, const double *scale, int m, double *z);
// orthes: Householder reduction of rows and columns low..igh of a to upper
// Hessenberg form; the reflectors stay below the subdiagonal and in ort.
void orthes(int n, int low, int igh, double *a, double *ort);
// ortran: the accumulated transformations of orthes into z (ort is used as
// work space).
void ortran(int n, int low, int igh, const double *a, double *ort, double *z);
// hqr: eigenvalues (wr + i wi) of the Hessenberg h; h is destroyed. Returns 0,
// or the index of the eigenvalue not found within 30 n iterations in total.
int hqr(int n, int low, int igh, double *h, double *wr, double *wi, double machep);
// hqr2: eigenvalues and eigenvectors of the Hessenberg h, z holding the
// transformations of ortran on entry. On return z holds the eigenvectors: a
// real eigenvalue j has column j, a complex pair j, j + 1 (wi(j) > 0) has
// z(:, j) +- i z(:, j + 1). With schur_only the iteration stops at the real
// Schur form: h quasi-triangular (below it, nothing is defined) and z the
// Schur vectors. Returns as hqr.
int hqr2(int n, int low, int igh, double *h, double *wr, double *wi, double *z, double machep,
         bool schur_only);

// ---- complex general matrices --------------------------------------------------

// cbal, cbabk2, corth: the complex counterparts of balanc, balbak, orthes on
// the real and imaginary parts (ar, ai), (zr, zi), (ortr, orti).
void cbal(int n, double *ar, double *ai, bool isolate, int *low, int *igh, double *scale);
void cbabk2(int n, int low, int igh, const double *scale, int m, double *zr, double *zi);
void corth(int n, int low, int igh, double *ar, double *ai, double *ortr, double *orti);
// The first step of comqr2: the transformations left by corth accumulated
// into (zr, zi) (ortr, orti are used as work space).
void corth_accumulate(int n, int low, int igh, const double *hr, const double *hi, double *ortr,
                      double *orti, double *zr, double *zi);
// comqr: eigenvalues of the complex Hessenberg (hr, hi), destroyed. At most
// 100 iterations per eigenvalue. Returns 0 or the failing index.
int comqr(int n, int low, int igh, double *hr, double *hi, double *wr, double *wi, double machep);
// comqr2: eigenvalues and eigenvectors (not normalised) from the output of
// corth; at most 30 n iterations in total. With schur_only it stops at the
// triangular Schur form in (hr, hi) (upper triangle) and (zr, zi).
int comqr2(int n, int low, int igh, double *ortr, double *orti, double *hr, double *hi,
           double *wr, double *wi, double *zr, double *zi, double machep, bool schur_only);
// csroot: the principal square root (yr, yi) of xr + i xi.
void csroot(double xr, double xi, double *yr, double *yi);
// cdiv: (cr, ci) = (ar + i ai) / (br + i bi) by Smith's method. A divisor of
// exactly zero is said on stderr and gives non-finite values.
void cdiv(double ar, double ai, double br, double bi, double *cr, double *ci);

// ---- Hermitian matrices --------------------------------------------------------

// htridi: reduces the Hermitian (ar, ai), of which the strict lower triangle
// and the real diagonal are read, to a real symmetric tridiagonal matrix
// (diagonal d, subdiagonal e(2..n), squares e2); tau is 2 x n (tau[2 (k - 1)],
// tau[2 (k - 1) + 1] hold tau(1, k), tau(2, k)). ar, ai keep the reflectors.
void htridi(int n, double *ar, double *ai, double *d, double *e, double *e2, double *tau);
// tql2: eigenvalues (ascending into d) and eigenvectors (into z, which holds
// the identity or a transformation on entry) of the tridiagonal (d, e).
// At most 30 iterations per eigenvalue. Returns 0 or the failing index.
int tql2(int n, double *d, double *e, double *z, double machep);
// htribk: the m real eigenvectors in zr (from tql2) back to those of the
// Hermitian matrix of htridi, in (zr, zi).
void htribk(int n, const double *ar, const double *ai, const double *tau, int m, double *zr,
            double *zi);

// ---- drivers: the kernels in sequence, for callers below the matrix layer ----

// The order of eigenvalues: bubble-sort passes of n - 1 sweeps each, first by
// wi, then by wr (skipped when wi is null), larger first, an exchange only
// when the earlier value is strictly smaller. So real parts descend, and
// equal real parts have imaginary parts descending. from[j] (from 0) is the
// index of the value that goes to place j; vectors follow the same moves.
void EigenOrder(int n, const double *wr, const double *wi, int *from);
// The eigenvalues of the real a (n x n, row by row, destroyed) in the order of
// EigenOrder: balanc with isolation, orthes, hqr. Returns 0, or hqr's failure
// index (then wr, wi are undefined).
int RealEigenvalues(int n, double *a, double *wr, double *wi, double machep);
// The same for the complex (ar, ai): cbal, corth, comqr.
int ComplexEigenvalues(int n, double *ar, double *ai, double *wr, double *wi, double machep);

#endif
