// Singular value decomposition on raw row-major arrays.
#ifndef VELK_LINALG_SVD_H
#define VELK_LINALG_SVD_H

#include <complex>

namespace velk_linalg {

// A = U S V^H for the m x n a: s receives the min(m, n) singular values in
// descending order; u (m x m, ld m) and v (n x n, ld n) receive orthonormal
// columns, the singular vectors first. u and v may both be null when only the
// values are wanted. Non-finite elements give NaN values.
void Svd(int m, int n, const double *a, long lda, double *s, double *u, double *v);
void Svd(int m, int n, const std::complex<double> *a, long lda, double *s, std::complex<double> *u,
         std::complex<double> *v);

}  // namespace velk_linalg

#endif
