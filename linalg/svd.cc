// The singular value decomposition by one-sided Jacobi rotations (Hestenes,
// 1958; in the form of Demmel and Veselic, "Jacobi's method is more accurate
// than QR", 1992), after a Householder QR that leaves a square triangle to
// rotate (the preconditioning of Drmac and Veselic, 2008).
//
// For m >= n: A = Q R. The columns of R (kept as the rows of W = R^T, so the
// rotations run along contiguous rows) are rotated in pairs until every pair
// is orthogonal to working accuracy; V collects the same rotations. Then the
// singular values are the column norms, U_r's columns the columns scaled to
// unit length (a zero column is completed to an orthonormal basis), and
// U = Q diag(U_r, I). For m < n the same runs on A^H, with U and V exchanged.
// One procedure serves real and complex matrices: a complex pair is first
// turned by the phase of its inner product, then rotated as a real pair.
#include "linalg/svd.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <numeric>
#include <vector>

#include "linalg/elements.h"
#include "linalg/gemm.h"
#include "linalg/qr.h"

namespace velk_linalg {
namespace {

constexpr int kMaxSweeps = 80;
// A column whose squared norm falls below this (the matrix is scaled to a
// largest magnitude near 1) is set to zero: rotations against larger columns
// keep shrinking such a column towards subnormal numbers, where its inner
// products lose their digits and the rotations would stop being unitary.
constexpr double kNegligible = 1e-200;

// Rotates the rows of w (n x n) in pairs; vt (n x n, or null) takes the same
// rotations.
template <class T>
void Rotate(int n, T *w, T *vt) {
  const double tol = std::sqrt(static_cast<double>(n)) * DBL_EPSILON;
  for (int sweep = 0; sweep < kMaxSweeps; sweep++) {
    bool rotated = false;
    for (int p = 0; p < n - 1; p++)
      for (int q = p + 1; q < n; q++) {
        T *wp = w + static_cast<long>(p) * n, *wq = w + static_cast<long>(q) * n;
        double alpha = 0, beta = 0;
        T gamma(0);
        for (int i = 0; i < n; i++) {
          alpha += Norm2(wp[i]);
          beta += Norm2(wq[i]);
          gamma += Conj(wp[i]) * wq[i];
        }
        if (alpha < kNegligible) std::fill(wp, wp + n, T(0));
        if (beta < kNegligible) std::fill(wq, wq + n, T(0));
        const double g = Modulus(gamma);
        if (alpha < kNegligible || beta < kNegligible ||
            !(g > tol * std::sqrt(alpha) * std::sqrt(beta)))
          continue;
        rotated = true;
        const double zeta = (beta - alpha) / (2 * g);
        const double t = (zeta < 0 ? -1.0 : 1.0) / (std::fabs(zeta) + std::hypot(1.0, zeta));
        const double c = 1 / std::sqrt(1 + t * t), s = c * t;
        const T e = gamma / g, se = s * e, sec = s * Conj(e);
        auto turn = [&](T *x, T *y) {
          for (int i = 0; i < n; i++) {
            const T xi = x[i], yi = y[i];
            x[i] = c * xi - sec * yi;
            y[i] = se * xi + c * yi;
          }
        };
        turn(wp, wq);
        if (vt != nullptr) turn(vt + static_cast<long>(p) * n, vt + static_cast<long>(q) * n);
      }
    if (!rotated) break;
  }
}

// Makes row j of ut (n x n) a unit vector orthogonal to every row marked done.
template <class T>
void Complete(int n, T *ut, int j, const std::vector<bool> &done) {
  T *x = ut + static_cast<long>(j) * n;
  for (int e = 0; e < n; e++) {
    std::fill(x, x + n, T(0));
    x[e] = T(1);
    for (int pass = 0; pass < 2; pass++)
      for (int r = 0; r < n; r++) {
        if (!done[r]) continue;
        const T *y = ut + static_cast<long>(r) * n;
        T d(0);
        for (int i = 0; i < n; i++) d += Conj(y[i]) * x[i];
        for (int i = 0; i < n; i++) x[i] -= d * y[i];
      }
    double norm = 0;
    for (int i = 0; i < n; i++) norm += Norm2(x[i]);
    norm = std::sqrt(norm);
    if (norm > 0.5) {
      for (int i = 0; i < n; i++) x[i] /= norm;
      return;
    }
  }
}

// The m >= n case on a (ld lda); u, v as in Svd.
template <class T>
void Tall(int m, int n, const T *a, long lda, double *s, T *u, T *v) {
  const bool vectors = u != nullptr;
  std::vector<T> q(vectors ? static_cast<size_t>(m) * m : 0), r(static_cast<size_t>(m) * n);
  HouseholderQr(m, n, a, lda, vectors ? q.data() : nullptr, r.data());
  std::vector<T> w(static_cast<size_t>(n) * n), vt;
  for (int i = 0; i < n; i++)
    for (int j = 0; j < n; j++) w[static_cast<long>(j) * n + i] = r[static_cast<long>(i) * n + j];
  if (vectors) {
    vt.assign(static_cast<size_t>(n) * n, T(0));
    for (int i = 0; i < n; i++) vt[static_cast<long>(i) * n + i] = T(1);
  }
  Rotate(n, w.data(), vectors ? vt.data() : nullptr);
  std::vector<double> norm(n);
  for (int j = 0; j < n; j++) {
    double sum = 0;
    for (int i = 0; i < n; i++) sum += Norm2(w[static_cast<long>(j) * n + i]);
    norm[j] = std::sqrt(sum);
  }
  std::vector<int> order(n);
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), [&](int x, int y) { return norm[x] > norm[y]; });
  for (int j = 0; j < n; j++) s[j] = norm[order[j]];
  if (!vectors) return;
  // Rows of ut: the columns of U_r in the final order.
  std::vector<T> ut(static_cast<size_t>(n) * n);
  std::vector<bool> done(n, false);
  for (int j = 0; j < n; j++) {
    if (s[j] == 0) continue;
    const T *x = w.data() + static_cast<long>(order[j]) * n;
    for (int i = 0; i < n; i++) ut[static_cast<long>(j) * n + i] = x[i] / s[j];
    done[j] = true;
  }
  for (int j = 0; j < n; j++)
    if (!done[j]) {
      Complete(n, ut.data(), j, done);
      done[j] = true;
    }
  std::vector<T> ur(static_cast<size_t>(n) * n);
  for (int i = 0; i < n; i++)
    for (int j = 0; j < n; j++) ur[static_cast<long>(i) * n + j] = ut[static_cast<long>(j) * n + i];
  Gemm(GemmMode::kSet, m, n, n, q.data(), m, ur.data(), n, u, m);
  for (int i = 0; i < m; i++)
    std::copy(q.begin() + static_cast<long>(i) * m + n, q.begin() + static_cast<long>(i + 1) * m,
              u + static_cast<long>(i) * m + n);
  for (int i = 0; i < n; i++)
    for (int j = 0; j < n; j++)
      v[static_cast<long>(i) * n + j] = vt[static_cast<long>(order[j]) * n + i];
}

template <class T>
void Decompose(int m, int n, const T *a, long lda, double *s, T *u, T *v) {
  // Scaled by a power of two (exactly) so the sums of squares neither
  // overflow nor underflow; the values are scaled back.
  double big = 0;
  bool finite = true;
  for (int i = 0; i < m; i++)
    for (int j = 0; j < n; j++) {
      const double x = Modulus(a[i * lda + j]);
      finite = finite && std::isfinite(x);
      big = std::max(big, x);
    }
  if (!finite) {
    std::fill(s, s + std::min(m, n), NAN);
    if (u != nullptr) {
      std::fill(u, u + static_cast<long>(m) * m, T(NAN));
      std::fill(v, v + static_cast<long>(n) * n, T(NAN));
    }
    return;
  }
  const int shift = big == 0 ? 0 : std::ilogb(big);
  const double down = std::ldexp(1.0, -shift);
  const bool tall = m >= n;
  const int rows = tall ? m : n, cols = tall ? n : m;
  std::vector<T> b(static_cast<size_t>(rows) * cols);
  for (int i = 0; i < m; i++)
    for (int j = 0; j < n; j++) {
      const T x = a[i * lda + j] * down;
      if (tall)
        b[static_cast<long>(i) * n + j] = x;
      else
        b[static_cast<long>(j) * m + i] = Conj(x);
    }
  if (tall)
    Tall(m, n, b.data(), n, s, u, v);
  else
    Tall(n, m, b.data(), m, s, v, u);
  for (int j = 0; j < cols; j++) s[j] = std::ldexp(s[j], shift);
}

}  // namespace

void Svd(int m, int n, const double *a, long lda, double *s, double *u, double *v) {
  Decompose(m, n, a, lda, s, u, v);
}
void Svd(int m, int n, const std::complex<double> *a, long lda, double *s, std::complex<double> *u,
         std::complex<double> *v) {
  Decompose(m, n, a, lda, s, u, v);
}

}  // namespace velk_linalg
