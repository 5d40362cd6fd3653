// LU factorisation (right-looking, by panels: Golub and Van Loan, Matrix
// Computations, 3.2.11 and 3.4.7) and Gauss-Jordan inversion in place with a
// blocked update of the columns outside each panel.
#include "linalg/lu.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "linalg/elements.h"
#include "linalg/gemm.h"

namespace velk_linalg {
namespace {

// Columns per panel. Small matrices are eliminated column by column.
constexpr int kPanel = 16;
constexpr int kBlockedFrom = 96;

// Row i >= k of largest magnitude in column k (first of equals wins).
template <class T>
int PivotRow(int m, int k, const T *a, long lda, double *magnitude) {
  int p = k;
  double best = Modulus(a[k * lda + k]);
  for (int i = k + 1; i < m; i++) {
    double v = Modulus(a[i * lda + k]);
    if (v > best) {
      best = v;
      p = i;
    }
  }
  *magnitude = best;
  return p;
}

template <class T>
void SwapRows(T *a, long lda, int r1, int r2, int c0, int w) {
  if (r1 == r2 || w <= 0) return;
  std::swap_ranges(a + r1 * lda + c0, a + r1 * lda + c0 + w, a + r2 * lda + c0);
}

// row_i[0 .. w) -= f * row_k[0 .. w)
template <class T>
inline void Axpy(int w, T f, const T *__restrict x, T *__restrict y) {
  for (int j = 0; j < w; j++) y[j] -= Mul(f, x[j]);
}

// ---- LU ----------------------------------------------------------------------------

template <class T>
int Factor(int m, int n, T *a, long lda, int *pivots) {
  const int steps = LuSteps(m, n);
  for (int k0 = 0; k0 < steps; k0 += kPanel) {
    const int kb = std::min(kPanel, steps - k0), k1 = k0 + kb;
    // Panel k0 .. k1 - 1, eliminated column by column on its own columns.
    for (int k = k0; k < k1; k++) {
      double magnitude;
      int r = PivotRow(m, k, a, lda, &magnitude);
      pivots[k] = r;
      SwapRows(a, lda, k, r, k0, kb);
      const T d = a[k * lda + k];
      if constexpr (!std::is_same_v<T, double>) {
        if (d == T(0)) return k;
      }
      for (int i = k + 1; i < m; i++) {
        T *row = a + i * lda;
        row[k] /= d;
        Axpy(k1 - k - 1, row[k], a + k * lda + k + 1, row + k + 1);
      }
    }
    // The panel's exchanges reach the other columns.
    for (int k = k0; k < k1; k++) {
      SwapRows(a, lda, k, pivots[k], 0, k0);
      SwapRows(a, lda, k, pivots[k], k1, n - k1);
    }
    if (k1 >= n) continue;
    // U12 = inverse(L11) A12, then A22 -= L21 U12.
    for (int i = k0 + 1; i < k1; i++)
      for (int j = k0; j < i; j++) Axpy(n - k1, a[i * lda + j], a + j * lda + k1, a + i * lda + k1);
    if (k1 < m)
      Gemm(GemmMode::kSub, m - k1, n - k1, kb, a + k1 * lda + k0, lda, a + k0 * lda + k1, lda,
           a + k1 * lda + k1, lda);
  }
  return -1;
}

template <class T>
T Determinant(int n, const T *lu, long ld, const int *pivots) {
  T det(1);
  for (int i = 0; i < n; i++) det *= lu[i * ld + i];
  for (int k = 0; k < LuSteps(n, n); k++)
    if (pivots[k] != k) det = -det;
  return det;
}

template <class T>
void Permute(int steps, const int *pivots, int k, T *b, long ldb) {
  for (int i = 0; i < steps; i++) SwapRows(b, ldb, i, pivots[i], 0, k);
}

// ---- substitution ------------------------------------------------------------------

template <class T>
bool Forward(int n, int k, const T *t, long ldt, T *b, long ldb, double tolerance, bool unit) {
  if (k == 0) return true;
  for (int i = 0; i < n; i++) {
    T *bi = b + i * ldb;
    for (int j = 0; j < i; j++) Axpy(k, t[i * ldt + j], b + j * ldb, bi);
    const T d = unit ? T(1) : t[i * ldt + i];
    if (Modulus(d) < tolerance) return false;
    if (unit) continue;
    for (int c = 0; c < k; c++) bi[c] /= d;
  }
  return true;
}

template <class T>
bool Back(int n, int k, const T *t, long ldt, T *b, long ldb, double tolerance) {
  if (k == 0) return true;
  for (int i = n - 1; i >= 0; i--) {
    T *bi = b + i * ldb;
    for (int j = i + 1; j < n; j++) Axpy(k, t[i * ldt + j], b + j * ldb, bi);
    const T d = t[i * ldt + i];
    if (Modulus(d) < tolerance) return false;
    for (int c = 0; c < k; c++) bi[c] /= d;
  }
  return true;
}

// ---- Gauss-Jordan --------------------------------------------------------------------
//
// Step k of the elimination on the in-place array S: rows k and p exchanged,
// then with f the column k (pivot at k), every column j != k is taken through
// E_k (x_k /= pivot, x_i -= f_i x_k for i != k) and column k becomes E_k e_k,
// so that the inverse builds up in the columns already eliminated. A panel of
// columns K = k0 .. k1 - 1 is eliminated on its own columns; the columns
// outside it then go through M = E_k1-1 P_k1-1 ... E_k0 P_k0 at once: with P
// the panel's exchanges, M = M' P where M' differs from the identity only in
// the columns K, so after the exchanges X <- X + (G - I_K) X_K with G = M'
// e_K = M P^T e_K, one product of n x kb by kb x w.

template <class T>
T Floored(T pivot, double floor) {
  if constexpr (std::is_same_v<T, double>)
    return pivot < 0 ? -floor : floor;
  else
    return T(floor, 0.0);
}

template <class T>
struct Panel {
  int k0, kb;
  std::vector<int> rows;  // the row exchanged with k0 + kk
  std::vector<T> pivot;   // the pivot used at k0 + kk
  std::vector<T> f;       // n x kb: column k0 + kk before its step, by rows
};

// Runs the steps of a panel on its own columns. False at a complex division
// by exactly zero.
template <class T>
bool EliminatePanel(int n, T *s, double tolerance, double floor, Panel<T> &pan, T &det,
                    std::vector<int> &perm, InverseStatus &status) {
  const int k0 = pan.k0, kb = pan.kb;
  for (int kk = 0; kk < kb; kk++) {
    const int k = k0 + kk;
    double magnitude;
    const int p = PivotRow(n, k, s, n, &magnitude);
    T pivot = s[p * n + k];
    if (magnitude <= tolerance) {
      status.singular++;
      if (magnitude < floor) pivot = Floored(pivot, floor);
    }
    det *= pivot;
    if (p != k) {
      det = -det;
      std::swap(perm[k], perm[p]);
      SwapRows(s, n, k, p, k0, kb);
    }
    pan.rows[kk] = p;
    pan.pivot[kk] = pivot;
    if constexpr (!std::is_same_v<T, double>) {
      if (pivot == T(0)) return false;
    }
    const T inv = T(1) / pivot;
    T *rk = s + k * n + k0;
    for (int j = 0; j < kb; j++) rk[j] = Mul(rk[j], inv);
    for (int i = 0; i < n; i++) {
      T *ri = s + i * n + k0;
      const T fi = i == k ? T(0) : ri[kk];
      pan.f[i * kb + kk] = fi;
      if (fi == T(0)) continue;
      Axpy(kb, fi, rk, ri);
      ri[kk] = -fi * inv;
    }
    rk[kk] = inv;
  }
  return true;
}

// The columns outside the panel, [c0, c0 + w), through M.
template <class T>
void UpdateOutside(int n, T *s, const Panel<T> &pan, const std::vector<T> &g, int c0, int w,
                   std::vector<T> &scratch) {
  if (w <= 0) return;
  const int k0 = pan.k0, kb = pan.kb;
  for (int kk = 0; kk < kb; kk++) SwapRows(s, n, k0 + kk, pan.rows[kk], c0, w);
  scratch.resize(static_cast<size_t>(kb) * w);
  for (int kk = 0; kk < kb; kk++) {
    T *row = s + (k0 + kk) * n + c0;
    std::copy(row, row + w, scratch.begin() + static_cast<long>(kk) * w);
    std::fill(row, row + w, T(0));
  }
  Gemm(GemmMode::kAdd, n, w, kb, g.data(), kb, scratch.data(), w, s + c0, n);
}

// G = M P^T e_K, n x kb.
template <class T>
void PanelTransform(int n, const Panel<T> &pan, std::vector<T> &g) {
  const int k0 = pan.k0, kb = pan.kb;
  g.assign(static_cast<size_t>(n) * kb, T(0));
  for (int kk = 0; kk < kb; kk++) g[(k0 + kk) * kb + kk] = T(1);
  for (int kk = kb - 1; kk >= 0; kk--) SwapRows(g.data(), kb, k0 + kk, pan.rows[kk], 0, kb);
  for (int kk = 0; kk < kb; kk++) {
    const int k = k0 + kk;
    SwapRows(g.data(), kb, k, pan.rows[kk], 0, kb);
    T *gk = g.data() + k * kb;
    const T inv = T(1) / pan.pivot[kk];
    for (int j = 0; j < kb; j++) gk[j] = Mul(gk[j], inv);
    for (int i = 0; i < n; i++) {
      const T fi = pan.f[i * kb + kk];
      if (fi != T(0)) Axpy(kb, fi, gk, g.data() + i * kb);
    }
  }
}

template <class T>
InverseStatus Invert(int n, T *s, double tolerance, double floor, T *det_out) {
  InverseStatus status;
  if (n == 0) {
    *det_out = T(1);
    return status;
  }
  if (n == 1) {
    *det_out = s[0];
    if constexpr (!std::is_same_v<T, double>) {
      if (s[0] == T(0)) {
        status.zero_division = true;
        return status;
      }
    }
    s[0] = T(1) / s[0];
    return status;
  }
  std::vector<int> perm(n);
  std::iota(perm.begin(), perm.end(), 0);
  T det(1);
  const int width = n < kBlockedFrom ? n : kPanel;
  Panel<T> pan;
  std::vector<T> g, scratch;
  for (int k0 = 0; k0 < n; k0 += width) {
    pan.k0 = k0;
    pan.kb = std::min(width, n - k0);
    pan.rows.resize(pan.kb);
    pan.pivot.resize(pan.kb);
    pan.f.resize(static_cast<size_t>(n) * pan.kb);
    if (!EliminatePanel(n, s, tolerance, floor, pan, det, perm, status)) {
      status.zero_division = true;
      *det_out = det;
      return status;
    }
    if (pan.kb == n) break;
    PanelTransform(n, pan, g);
    UpdateOutside(n, s, pan, g, 0, k0, scratch);
    UpdateOutside(n, s, pan, g, k0 + pan.kb, n - k0 - pan.kb, scratch);
  }
  // The inverse's columns come out in the order of the row exchanges.
  for (int i = 0; i < n; i++)
    while (perm[i] != i) {
      int j = perm[i];
      perm[i] = perm[j];
      perm[j] = j;
      for (int r = 0; r < n; r++) std::swap(s[r * n + i], s[r * n + j]);
    }
  *det_out = det;
  return status;
}

}  // namespace

int LuSteps(int m, int n) { return std::max(0, std::min(m - 1, n)); }

int LuFactor(int m, int n, double *a, long lda, int *pivots) {
  return Factor(m, n, a, lda, pivots);
}
int LuFactor(int m, int n, Complexd *a, long lda, int *pivots) {
  return Factor(m, n, a, lda, pivots);
}

double LuDeterminant(int n, const double *lu, long ld, const int *pivots) {
  return Determinant(n, lu, ld, pivots);
}
Complexd LuDeterminant(int n, const Complexd *lu, long ld, const int *pivots) {
  return Determinant(n, lu, ld, pivots);
}

void LuPermute(int steps, const int *pivots, int k, double *b, long ldb) {
  Permute(steps, pivots, k, b, ldb);
}
void LuPermute(int steps, const int *pivots, int k, Complexd *b, long ldb) {
  Permute(steps, pivots, k, b, ldb);
}

bool ForwardSubstitute(int n, int k, const double *t, long ldt, double *b, long ldb,
                       double tolerance, bool unit_diagonal) {
  return Forward(n, k, t, ldt, b, ldb, tolerance, unit_diagonal);
}
bool ForwardSubstitute(int n, int k, const Complexd *t, long ldt, Complexd *b, long ldb,
                       double tolerance, bool unit_diagonal) {
  return Forward(n, k, t, ldt, b, ldb, tolerance, unit_diagonal);
}
bool BackSubstitute(int n, int k, const double *t, long ldt, double *b, long ldb,
                    double tolerance) {
  return Back(n, k, t, ldt, b, ldb, tolerance);
}
bool BackSubstitute(int n, int k, const Complexd *t, long ldt, Complexd *b, long ldb,
                    double tolerance) {
  return Back(n, k, t, ldt, b, ldb, tolerance);
}

InverseStatus GaussJordanInvert(int n, double *a, double tolerance, double floor, double *det) {
  return Invert(n, a, tolerance, floor, det);
}
InverseStatus GaussJordanInvert(int n, Complexd *a, double tolerance, double floor, Complexd *det) {
  return Invert(n, a, tolerance, floor, det);
}

}  // namespace velk_linalg
