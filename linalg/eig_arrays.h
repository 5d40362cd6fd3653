// Internal to the eigenvalue kernels: 1-based views over their raw arrays, so
// each port reads like the published procedure (h(i, j), z(i, j), wr(i)), and
// the balancing sweep that the real and the complex families share.
#ifndef VELK_LINALG_EIG_ARRAYS_H
#define VELK_LINALG_EIG_ARRAYS_H

#include <cmath>
#include <utility>

// The long loops of the real kernels also get a copy built for processors
// with 256-bit vectors and fused multiply-add, chosen at load time. (Fused
// operations round once where the plain ones round twice, so the two copies
// agree to rounding, not bit for bit.)
#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__) && defined(__linux__)
#define VELK_VECTOR_CLONES __attribute__((target_clones("arch=x86-64-v3", "default")))
#else
#define VELK_VECTOR_CLONES
#endif

namespace velk_eigen {

// A square array stored row by row: (i, j) is p[(i - 1) n + j - 1].
struct ByRows {
  double *p;
  long n;
  double &operator()(int i, int j) const { return p[(i - 1) * n + (j - 1)]; }
  double *Row(int i) const { return p + (i - 1) * n - 1; }  // Row(i)[j] is (i, j)
};

// A square array stored column by column: column j is contiguous.
struct ByCols {
  double *p;
  long n;
  double &operator()(int i, int j) const { return p[(j - 1) * n + (i - 1)]; }
  double *Col(int j) const { return p + (j - 1) * n - 1; }  // Col(j)[i] is (i, j)
};

// A vector indexed from 1.
struct Vec {
  double *p;
  double &operator()(int i) const { return p[i - 1]; }
  double *Base() const { return p - 1; }  // Base()[i] is (i)
};

// sqrt(a^2 + b^2) without overflow or destructive underflow, the task of the
// EISPACK function pythag (here by scaling with the larger magnitude).
inline double Pythag(double a, double b) {
  double p = std::fmax(std::fabs(a), std::fabs(b));
  if (p == 0.0 || std::isinf(p)) return p;
  double q = std::fmin(std::fabs(a), std::fabs(b)) / p;
  return p * std::sqrt(1.0 + q * q);
}

// The sum of x[i] y[i] for i = lo .. hi, in eight interleaved partial sums so
// that the additions pipeline and vectorise. The published loops sum in one
// order; this one differs from them by rounding only.
inline double Dot(const double *x, const double *y, int lo, int hi) {
  double s[8] = {0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0};
  int i = lo;
  for (; i + 7 <= hi; i += 8)
    for (int k = 0; k < 8; k++) s[k] += x[i + k] * y[i + k];
  for (; i <= hi; i++) s[0] += x[i] * y[i];
  return ((s[0] + s[1]) + (s[2] + s[3])) + ((s[4] + s[5]) + (s[6] + s[7]));
}

// The balancing of balanc (radix 2) over K arrays that hold the parts of
// one matrix: K = 1 is balanc itself, K = 2 is cbal with (ar, ai), where the
// size of an element is |re| + |im|. With isolate false no row or column is
// permuted and the whole matrix is scaled (low = 1, igh = n).
template <int K>
void BalanceParts(int n, double *const (&parts)[K], bool isolate, int *low, int *igh,
                  double *scale_p) {
  const double radix = 2.0, b2 = radix * radix;
  Vec scale{scale_p};
  ByRows a[K];
  for (int q = 0; q < K; q++) a[q] = {parts[q], n};
  auto size = [&](int i, int j) {
    double s = 0.0;
    for (int q = 0; q < K; q++) s += std::fabs(a[q](i, j));
    return s;
  };
  auto nonzero = [&](int i, int j) {
    for (int q = 0; q < K; q++)
      if (a[q](i, j) != 0.0) return true;
    return false;
  };
  int k = 1, l = n;
  // Row and column exchange j <-> m over the rows 1..l and columns k..n
  // still in play; scale(m) records the exchange.
  auto exchange = [&](int j, int m) {
    scale(m) = j;
    if (j == m) return;
    for (int q = 0; q < K; q++) {
      for (int i = 1; i <= l; i++) std::swap(a[q](i, j), a[q](i, m));
      for (int i = k; i <= n; i++) std::swap(a[q](j, i), a[q](m, i));
    }
  };
  if (isolate) {
    // Rows isolating an eigenvalue go to the bottom.
    for (bool found = true; found && l > 0;) {
      found = false;
      for (int j = l; j >= 1; j--) {
        bool isolated = true;
        for (int i = 1; i <= l && isolated; i++) isolated = i == j || !nonzero(j, i);
        if (!isolated) continue;
        exchange(j, l);
        if (l == 1) {
          *low = *igh = 1;
          return;
        }
        l--;
        found = true;
        break;
      }
    }
    // Columns isolating an eigenvalue go to the left.
    for (bool found = true; found;) {
      found = false;
      for (int j = k; j <= l; j++) {
        bool isolated = true;
        for (int i = k; i <= l && isolated; i++) isolated = i == j || !nonzero(i, j);
        if (!isolated) continue;
        exchange(j, k);
        k++;
        found = true;
        break;
      }
    }
  }
  for (int i = k; i <= l; i++) scale(i) = 1.0;
  // Sweeps of norm reduction until one changes nothing.
  for (bool noconv = true; noconv;) {
    noconv = false;
    for (int i = k; i <= l; i++) {
      double c = 0.0, r = 0.0;
      for (int j = k; j <= l; j++) {
        if (j == i) continue;
        c += size(j, i);
        r += size(i, j);
      }
      // Guard against a zero c or r due to underflow.
      if (c == 0.0 || r == 0.0) continue;
      double g = r / radix, f = 1.0, s = c + r;
      while (c < g) {
        f *= radix;
        c *= b2;
      }
      g = r * radix;
      while (c >= g) {
        f /= radix;
        c /= b2;
      }
      // Written so that a NaN changes nothing (and ends the sweeps).
      if (!((c + r) / f < 0.95 * s)) continue;
      g = 1.0 / f;
      scale(i) *= f;
      noconv = true;
      for (int q = 0; q < K; q++) {
        for (int j = k; j <= n; j++) a[q](i, j) *= g;
        for (int j = 1; j <= l; j++) a[q](j, i) *= f;
      }
    }
  }
  *low = k;
  *igh = l;
}

// The back-transformation of balbak over K arrays of eigenvectors stored by
// columns (K = 2 is cbabk2 with zr, zi): rows low..igh scaled, then the
// exchanges of the isolation undone.
template <int K>
void BalanceBackParts(int n, int low, int igh, const double *scale_p, int m,
                      double *const (&parts)[K]) {
  if (m == 0) return;
  Vec scale{const_cast<double *>(scale_p)};
  ByCols z[K];
  for (int q = 0; q < K; q++) z[q] = {parts[q], n};
  if (igh != low)
    for (int q = 0; q < K; q++)
      for (int j = 1; j <= m; j++) {
        double *zj = z[q].Col(j);
        for (int i = low; i <= igh; i++) zj[i] *= scale(i);
      }
  // For i = low-1 step -1 until 1, igh+1 step 1 until n.
  for (int ii = 1; ii <= n; ii++) {
    int i = ii;
    if (i >= low && i <= igh) continue;
    if (i < low) i = low - ii;
    int k = static_cast<int>(scale(i));
    if (k == i) continue;
    for (int q = 0; q < K; q++)
      for (int j = 1; j <= m; j++) std::swap(z[q](i, j), z[q](k, j));
  }
}

}  // namespace velk_eigen

#endif
