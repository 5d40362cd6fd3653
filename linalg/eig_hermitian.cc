// Eigenpairs of Hermitian matrices: ports of the EISPACK procedures htridi,
// tql2 and htribk. The deflation test of tql2 is relative to machep times
// the largest |d(l)| + |e(l)| seen so far, and written so that a NaN keeps
// iterating (and so ends in the reported failure, not in a silent result).
#include <cmath>
#include <utility>

#include "linalg/eig_arrays.h"
#include "linalg/eigen_kernels.h"

using namespace velk_eigen;

namespace {

// tau(1, k), tau(2, k) of the published 2 x n array.
struct Tau {
  double *p;
  double &operator()(int r, int k) const { return p[2 * (k - 1) + (r - 1)]; }
};

}  // namespace

// Householder reduction of a Hermitian matrix to real symmetric tridiagonal
// form, after the EISPACK procedure htridi.
VELK_VECTOR_CLONES void htridi(int n, double *ar_p, double *ai_p, double *d_p, double *e_p, double *e2_p,
            double *tau_p) {
  ByRows ar{ar_p, n}, ai{ai_p, n};
  Vec d{d_p}, e{e_p}, e2{e2_p};
  Tau tau{tau_p};
  tau(1, n) = 1.0;
  tau(2, n) = 0.0;
  for (int i = 1; i <= n; i++) d(i) = ar(i, i);
  // For i = n step -1 until 1.
  for (int i = n; i >= 1; i--) {
    int l = i - 1;
    double h = 0.0, scale = 0.0;
    // Scale the row.
    for (int k = 1; k <= l; k++) scale += std::fabs(ar(i, k)) + std::fabs(ai(i, k));
    if (l < 1 || scale == 0.0) {
      if (l >= 1) {
        tau(1, l) = 1.0;
        tau(2, l) = 0.0;
      }
      e(i) = e2(i) = 0.0;
    } else {
      for (int k = 1; k <= l; k++) {
        ar(i, k) /= scale;
        ai(i, k) /= scale;
        h += ar(i, k) * ar(i, k) + ai(i, k) * ai(i, k);
      }
      e2(i) = scale * scale * h;
      double g = std::sqrt(h);
      e(i) = scale * g;
      double f = Pythag(ar(i, l), ai(i, l)), si;
      // Form the next diagonal element of matrix t.
      if (f != 0.0) {
        tau(1, l) = (ai(i, l) * tau(2, i) - ar(i, l) * tau(1, i)) / f;
        si = (ar(i, l) * tau(2, i) + ai(i, l) * tau(1, i)) / f;
        h += f * g;
        g = 1.0 + g / f;
        ar(i, l) *= g;
        ai(i, l) *= g;
      } else {
        tau(1, l) = -tau(1, i);
        si = tau(2, i);
        ar(i, l) = g;
      }
      if (f == 0.0 || l != 1) {
        f = 0.0;
        for (int j = 1; j <= l; j++) {
          double g = 0.0, gi = 0.0;
          // Form element of a u.
          for (int k = 1; k <= j; k++) {
            g += ar(j, k) * ar(i, k) + ai(j, k) * ai(i, k);
            gi += -ar(j, k) * ai(i, k) + ai(j, k) * ar(i, k);
          }
          for (int k = j + 1; k <= l; k++) {
            g += ar(k, j) * ar(i, k) - ai(k, j) * ai(i, k);
            gi += -ar(k, j) * ai(i, k) - ai(k, j) * ar(i, k);
          }
          // Form element of p.
          e(j) = g / h;
          tau(2, j) = gi / h;
          f += e(j) * ar(i, j) - tau(2, j) * ai(i, j);
        }
        double hh = f / (h + h);
        // Form the reduced a.
        for (int j = 1; j <= l; j++) {
          f = ar(i, j);
          g = e(j) - hh * f;
          e(j) = g;
          double fi = -ai(i, j), gi = tau(2, j) - hh * fi;
          tau(2, j) = -gi;
          for (int k = 1; k <= j; k++) {
            ar(j, k) += -f * e(k) - g * ar(i, k) + fi * tau(2, k) + gi * ai(i, k);
            ai(j, k) += -f * tau(2, k) - g * ai(i, k) - fi * e(k) - gi * ar(i, k);
          }
        }
      }
      for (int k = 1; k <= l; k++) {
        ar(i, k) *= scale;
        ai(i, k) *= scale;
      }
      tau(2, l) = -si;
    }
    double hh = d(i);
    d(i) = ar(i, i);
    ar(i, i) = hh;
    ai(i, i) = scale * std::sqrt(h);
  }
}

// Eigenvalues and eigenvectors of a symmetric tridiagonal matrix by the
// implicit QL method, after the Algol procedure tql2.
VELK_VECTOR_CLONES int tql2(int n, double *d_p, double *e_p, double *z_p, double machep) {
  Vec d{d_p}, e{e_p};
  ByCols z{z_p, n};
  if (n == 1) return 0;
  for (int i = 2; i <= n; i++) e(i - 1) = e(i);
  double f = 0.0, tst1 = 0.0;
  e(n) = 0.0;
  for (int l = 1; l <= n; l++) {
    int j = 0;
    tst1 = std::fmax(tst1, std::fabs(d(l)) + std::fabs(e(l)));
    // Look for a small subdiagonal element; e(n) is zero, so the scan always
    // stops.
    int m = l;
    while (m < n && !(std::fabs(e(m)) <= machep * tst1)) m++;
    if (m != l) {
      do {
        if (j == 30) return l;
        j++;
        // Form the shift.
        int l1 = l + 1, l2 = l1 + 1;
        double g = d(l), p = (d(l1) - g) / (2.0 * e(l)), r = Pythag(p, 1.0);
        d(l) = e(l) / (p + std::copysign(r, p));
        d(l1) = e(l) * (p + std::copysign(r, p));
        double dl1 = d(l1), h = g - d(l);
        for (int i = l2; i <= n; i++) d(i) -= h;
        f += h;
        // The QL transformation.
        p = d(m);
        double c = 1.0, c2 = c, c3 = c, el1 = e(l1), s = 0.0, s2 = 0.0;
        for (int i = m - 1; i >= l; i--) {
          c3 = c2;
          c2 = c;
          s2 = s;
          g = c * e(i);
          h = c * p;
          r = Pythag(p, e(i));
          e(i + 1) = s * r;
          s = e(i) / r;
          c = p / r;
          p = c * d(i) - s * g;
          d(i + 1) = h + s * (c * g + s * d(i));
          // Form the vector.
          double *__restrict zi = z.Col(i), *__restrict zi1 = z.Col(i + 1);
          for (int k = 1; k <= n; k++) {
            h = zi1[k];
            zi1[k] = s * zi[k] + c * h;
            zi[k] = c * zi[k] - s * h;
          }
        }
        p = -s * s2 * c3 * el1 * e(l) / dl1;
        e(l) = s * p;
        d(l) = c * p;
      } while (!(std::fabs(e(l)) <= machep * tst1));
    }
    d(l) += f;
    e(l) = 0.0;
  }
  // Order the eigenvalues and eigenvectors ascending.
  for (int ii = 2; ii <= n; ii++) {
    int i = ii - 1, k = i;
    double p = d(i);
    for (int j = ii; j <= n; j++)
      if (d(j) < p) {
        k = j;
        p = d(j);
      }
    if (k == i) continue;
    d(k) = d(i);
    d(i) = p;
    double *zi = z.Col(i), *zk = z.Col(k);
    for (int j = 1; j <= n; j++) std::swap(zi[j], zk[j]);
  }
  return 0;
}

// Back-transformation of the eigenvectors of htridi's tridiagonal matrix to
// those of the Hermitian matrix, after the EISPACK procedure htribk.
VELK_VECTOR_CLONES void htribk(int n, const double *ar_p, const double *ai_p, const double *tau_p, int m,
            double *zr_p, double *zi_p) {
  ByRows ar{const_cast<double *>(ar_p), n}, ai{const_cast<double *>(ai_p), n};
  ByCols zr{zr_p, n}, zi{zi_p, n};
  Tau tau{const_cast<double *>(tau_p)};
  if (m == 0) return;
  // Eigenvectors of the real symmetric tridiagonal matrix to those of the
  // Hermitian tridiagonal one.
  for (int k = 1; k <= n; k++)
    for (int j = 1; j <= m; j++) {
      zi(k, j) = -zr(k, j) * tau(2, k);
      zr(k, j) *= tau(1, k);
    }
  // Recover and apply the Householder matrices.
  for (int i = 2; i <= n; i++) {
    int l = i - 1;
    double h = ai(i, i);
    if (h == 0.0) continue;
    const double *br = ar.Row(i), *bi = ai.Row(i);
    for (int j = 1; j <= m; j++) {
      double *xr = zr.Col(j), *xi = zi.Col(j), s = 0.0, si = 0.0;
      for (int k = 1; k <= l; k++) {
        s += br[k] * xr[k] - bi[k] * xi[k];
        si += br[k] * xi[k] + bi[k] * xr[k];
      }
      // Two divisions avoid an underflow.
      s = (s / h) / h;
      si = (si / h) / h;
      for (int k = 1; k <= l; k++) {
        xr[k] += -s * br[k] - si * bi[k];
        xi[k] += -si * br[k] + s * bi[k];
      }
    }
  }
}
