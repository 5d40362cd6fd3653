// Householder QR factorisation on raw row-major arrays.
#ifndef VELK_LINALG_QR_H
#define VELK_LINALG_QR_H

#include <complex>

namespace velk_linalg {

// A = Q R for the m x n a: q receives Q (m x m, orthogonal or unitary, ld m),
// r receives R (m x n, ld n, zero below the diagonal) with R(k, k) real and
// non-negative for k < min(m, n). q may be null when only R is wanted.
void HouseholderQr(int m, int n, const double *a, long lda, double *q, double *r);
void HouseholderQr(int m, int n, const std::complex<double> *a, long lda, std::complex<double> *q,
                   std::complex<double> *r);

}  // namespace velk_linalg

#endif
