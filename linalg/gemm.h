// Dense matrix products on raw row-major arrays.
//
// C (m x n) is A (m x k) times B (k x n); lda, ldb and ldc are the distances,
// in elements, between the starts of two rows. C must not overlap A or B.
// Complex arrays hold (re, im) pairs. Large products are cache blocked (packed
// panels of A and B, a register-blocked tile kernel) and run the widest vector
// path this machine supports, chosen once at run time; small ones take the
// plain loop, which has no packing to pay for.
#ifndef VELK_LINALG_GEMM_H
#define VELK_LINALG_GEMM_H

#include <complex>

namespace velk_linalg {

using Complexd = std::complex<double>;

// What the product does with C: replace it, add to it or subtract from it.
enum class GemmMode { kSet, kAdd, kSub };

void Gemm(GemmMode mode, int m, int n, int k, const double *a, long lda, const double *b, long ldb,
          double *c, long ldc);
void Gemm(GemmMode mode, int m, int n, int k, const Complexd *a, long lda, const Complexd *b,
          long ldb, Complexd *c, long ldc);

// The two roads of Gemm, for tests and benchmarks: the plain loop in the
// order i, k, j, and the blocked product whatever the size.
void GemmPlain(GemmMode mode, int m, int n, int k, const double *a, long lda, const double *b,
               long ldb, double *c, long ldc);
void GemmPlain(GemmMode mode, int m, int n, int k, const Complexd *a, long lda, const Complexd *b,
               long ldb, Complexd *c, long ldc);
void GemmBlocked(GemmMode mode, int m, int n, int k, const double *a, long lda, const double *b,
                 long ldb, double *c, long ldc);
void GemmBlocked(GemmMode mode, int m, int n, int k, const Complexd *a, long lda, const Complexd *b,
                 long ldb, Complexd *c, long ldc);

// The vector paths of the blocked product. The widest one the processor
// runs is chosen on first use; tests may select any path it can run.
enum class GemmPath { kPortable, kAvx2, kAvx512 };
bool GemmPathRuns(GemmPath path);
GemmPath GemmCurrentPath();
// REQUIRES: GemmPathRuns(path). Returns the previous path.
GemmPath GemmSelectPath(GemmPath path);
const char *GemmPathName(GemmPath path);

}  // namespace velk_linalg

#endif
