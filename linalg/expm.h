// The matrix exponential by scaling and squaring around a truncated Taylor
// series, on square matrices stored row by row. The matrix product is handed
// in, so the kernels run on whichever product the caller has.
#ifndef VELK_LINALG_EXPM_H
#define VELK_LINALG_EXPM_H

namespace velk_linalg {

// c = a b for n x n matrices; c is neither a nor b.
template <class T>
using SquareProduct = void (*)(int n, const T *a, const T *b, T *c);

// The square root of the sum of the squares of count doubles (a complex
// matrix as pairs gives the Frobenius norm of its magnitudes). A sum that
// overflows is taken again with the values scaled, so only a norm beyond the
// largest double is infinite.
double FrobeniusNorm(const double *x, long long count);

// The scaling exponent j of a matrix of Frobenius norm nrm: floor(log2 nrm) + 1
// with log2 x = log10 x / 0.30102999566398120, truncated; 1 when nrm is not
// positive, 0 when that is negative. A norm that is not finite gives 0.
int ExpScalingExponent(double nrm);

// The Taylor sum of exp(a) into e: e = t = I; for i = 1 .. 100, t = t a,
// t = t (1/k), e = e + t, stopping once the Frobenius norm of t is <= tol.
// Returns the iteration i at which it stopped, or 101 when it did not stop.
// T is double or std::complex<double>.
template <class T>
int ExpTaylor(int n, const T *a, T *e, SquareProduct<T> mul, double tol);

// e = e^(2^j) by j squarings.
template <class T>
void ExpSquare(int n, T *e, int j, SquareProduct<T> mul);

}  // namespace velk_linalg

#endif
