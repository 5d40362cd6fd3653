// Eigenvalues of real general matrices: ports of the EISPACK procedures
// balanc, balbak, orthes, ortran, hqr and hqr2.
//
// Deliberate deviations from the published text, none of which changes the
// arithmetic of an element: loops are ordered so the long ones run along rows
// of a and h and along columns of z; the deflation test and the exceptional
// shifts follow this library's rule (a subdiagonal is negligible when it is at
// most machep times its two diagonal neighbours; an exceptional shift at every
// nonzero multiple of 10 iterations); a deflated subdiagonal is set to zero so
// that the Schur form is exactly quasi-triangular.
#include <algorithm>
#include <cmath>
#include <vector>

#include "core/alloc.h"
#include "linalg/eig_arrays.h"
#include "linalg/eigen_kernels.h"

using namespace velk_eigen;

void balanc(int n, double *a, bool isolate, int *low, int *igh, double *scale) {
  double *const parts[1] = {a};
  BalanceParts<1>(n, parts, isolate, low, igh, scale);
}

void balbak(int n, int low, int igh, const double *scale, int m, double *z) {
  double *const parts[1] = {z};
  BalanceBackParts<1>(n, low, igh, scale, m, parts);
}

// Householder reduction to Hessenberg form, after the Algol procedure orthes.
VELK_VECTOR_CLONES void orthes(int n, int low, int igh, double *a_p, double *ort_p) {
  ByRows a{a_p, n};
  Vec ort{ort_p};
  std::vector<double> f_row(n + 1);
  double *fj = f_row.data();
  int la = igh - 1, kp1 = low + 1;
  for (int m = kp1; m <= la; m++) {
    double h = 0.0, scale = 0.0;
    ort(m) = 0.0;
    // Scale the column.
    for (int i = m; i <= igh; i++) scale += std::fabs(a(i, m - 1));
    if (scale == 0.0) continue;
    int mp = m + igh;
    // For i = igh step -1 until m.
    for (int ii = m; ii <= igh; ii++) {
      int i = mp - ii;
      ort(i) = a(i, m - 1) / scale;
      h += ort(i) * ort(i);
    }
    double g = -std::copysign(std::sqrt(h), ort(m));
    h -= ort(m) * g;
    ort(m) -= g;
    // Form (I - u u' / h) a: the sums f(j) over i gathered row by row (same
    // order of terms as the published column-by-column loop).
    for (int j = m; j <= n; j++) fj[j] = 0.0;
    for (int ii = m; ii <= igh; ii++) {
      int i = mp - ii;
      const double oi = ort(i), *ai = a.Row(i);
      for (int j = m; j <= n; j++) fj[j] += oi * ai[j];
    }
    for (int j = m; j <= n; j++) fj[j] /= h;
    for (int i = m; i <= igh; i++) {
      const double oi = ort(i);
      double *ai = a.Row(i);
      for (int j = m; j <= n; j++) ai[j] -= fj[j] * oi;
    }
    // Form (I - u u' / h) a (I - u u' / h).
    for (int i = 1; i <= igh; i++) {
      double *ai = a.Row(i);
      double f = Dot(ort.Base(), ai, m, igh) / h;
      for (int j = m; j <= igh; j++) ai[j] -= f * ort(j);
    }
    ort(m) *= scale;
    a(m, m - 1) = scale * g;
  }
}

// Accumulation of the transformations of orthes, after the Algol procedure
// ortrans.
VELK_VECTOR_CLONES void ortran(int n, int low, int igh, const double *a_p, double *ort_p,
                               double *z_p) {
  ByRows a{const_cast<double *>(a_p), n};
  ByCols z{z_p, n};
  Vec ort{ort_p};
  std::fill(z_p, z_p + static_cast<long>(n) * n, 0.0);
  for (int j = 1; j <= n; j++) z(j, j) = 1.0;
  int kl = igh - low - 1;
  for (int mm = 1; mm <= kl; mm++) {
    int mp = igh - mm;
    if (a(mp, mp - 1) == 0.0) continue;
    for (int i = mp + 1; i <= igh; i++) ort(i) = a(i, mp - 1);
    for (int j = mp; j <= igh; j++) {
      double *zj = z.Col(j), g = Dot(ort.Base(), zj, mp, igh);
      // The divisor is the negative of h of orthes; two divisions avoid an
      // underflow.
      g = (g / ort(mp)) / a(mp, mp - 1);
      for (int i = mp; i <= igh; i++) zj[i] += g * ort(i);
    }
  }
}

namespace {

enum class Want { kValues, kSchur, kVectors };

// The shifted double-step QR iteration of hqr and hqr2 on the Hessenberg h.
// Values only (hqr) works on the active block; the Schur and vector modes
// (hqr2) update whole rows and columns and accumulate into z.
class RealQr {
 public:
  RealQr(int n, int low, int igh, double *h, double *wr, double *wi, double *z, double machep,
         Want want)
      : n_(n), low_(low), igh_(igh), h_{h, n}, z_{z, n}, wr_{wr}, wi_{wi}, machep_(machep),
        want_(want) {}

  // Returns 0, or the index of the eigenvalue sought when the budget ran out.
  int Run();
  void BackSubstitute();
  void TransformVectors();

 private:
  int FindSmallSubdiagonal(int en);
  void ExceptionalShift(int en, double &x, double &y, double &w);
  int FindTwoSmallSubdiagonals(int l, int en, double x, double y, double w, double &p, double &q,
                               double &r) const;
  void DoubleStep(int l, int m, int en, double p, double q, double r);
  void ReflectRows(int k, int rows, int jmax, double x, double y, double zz, double q, double r);
  void ReflectColumns(int k, int rows, int imin, int imax, double x, double y, double zz,
                      double q, double r);
  void TwoRoots(int en, double x, double y, double w);

  int n_, low_, igh_;
  ByRows h_;
  ByCols z_;
  Vec wr_, wi_;
  double machep_;
  Want want_;
  double norm_ = 0.0, t_ = 0.0;
};

VELK_VECTOR_CLONES int RealQr::Run() {
  ByRows h = h_;
  // Norm of the Hessenberg part; roots isolated by balancing are read off.
  for (int i = 1, k = 1; i <= n_; i++) {
    for (int j = k; j <= n_; j++) norm_ += std::fabs(h(i, j));
    k = i;
    if (i >= low_ && i <= igh_) continue;
    wr_(i) = h(i, i);
    wi_(i) = 0.0;
  }
  int en = igh_, itn = 30 * n_;
  while (en >= low_) {
    int its = 0, na = en - 1;
    for (;;) {
      int l = FindSmallSubdiagonal(en);
      double x = h(en, en);
      if (l == en) {  // one root found
        h(en, en) = x + t_;
        wr_(en) = h(en, en);
        wi_(en) = 0.0;
        en = na;
        break;
      }
      double y = h(na, na), w = h(en, na) * h(na, en);
      if (l == na) {  // two roots found
        TwoRoots(en, x, y, w);
        en -= 2;
        break;
      }
      if (itn == 0) return en;
      if (its != 0 && its % 10 == 0) ExceptionalShift(en, x, y, w);
      its++;
      itn--;
      double p = 0.0, q = 0.0, r = 0.0;
      int m = FindTwoSmallSubdiagonals(l, en, x, y, w, p, q, r);
      DoubleStep(l, m, en, p, q, r);
    }
  }
  return 0;
}

// Scanning up from en: the first l whose subdiagonal h(l, l-1) is negligible
// against its diagonal neighbours (low when none is). A negligible one is set
// to zero.
int RealQr::FindSmallSubdiagonal(int en) {
  ByRows h = h_;
  for (int l = en; l > low_; l--) {
    double s = std::fabs(h(l - 1, l - 1)) + std::fabs(h(l, l));
    if (s == 0.0) s = norm_;
    if (std::fabs(h(l, l - 1)) <= machep_ * s) {
      h(l, l - 1) = 0.0;
      return l;
    }
  }
  return low_;
}

void RealQr::ExceptionalShift(int en, double &x, double &y, double &w) {
  ByRows h = h_;
  t_ += x;
  for (int i = low_; i <= en; i++) h(i, i) -= x;
  double s = std::fabs(h(en, en - 1)) + std::fabs(h(en - 1, en - 2));
  x = y = 0.75 * s;
  w = -0.4375 * s * s;
}

// Looks for two consecutive small subdiagonals from en - 2 up to l; returns
// the row m where the double step starts, with the first column of the
// shifted product in (p, q, r).
int RealQr::FindTwoSmallSubdiagonals(int l, int en, double x, double y, double w, double &p,
                                     double &q, double &r) const {
  ByRows h = h_;
  int enm2 = en - 2, m = enm2;
  for (; m >= l; m--) {
    double zz = h(m, m);
    r = x - zz;
    double s = y - zz;
    p = (r * s - w) / h(m + 1, m) + h(m, m + 1);
    q = h(m + 1, m + 1) - zz - r - s;
    r = h(m + 2, m + 1);
    s = std::fabs(p) + std::fabs(q) + std::fabs(r);
    p /= s;
    q /= s;
    r /= s;
    if (m == l) break;
    double tst1 = std::fabs(p) * (std::fabs(h(m - 1, m - 1)) + std::fabs(zz) +
                                  std::fabs(h(m + 1, m + 1)));
    if (std::fabs(h(m, m - 1)) * (std::fabs(q) + std::fabs(r)) <= machep_ * tst1) break;
  }
  return m;
}

// Rows k .. k + rows - 1 (2 or 3) of h, columns k .. jmax, times the reflector.
VELK_VECTOR_CLONES void RealQr::ReflectRows(int k, int rows, int jmax, double x, double y, double zz, double q,
                         double r) {
  double *__restrict hk = h_.Row(k);
  double *__restrict hk1 = h_.Row(k + 1);
  if (rows == 3) {
    double *__restrict hk2 = h_.Row(k + 2);
    for (int j = k; j <= jmax; j++) {
      double p = hk[j] + q * hk1[j] + r * hk2[j];
      hk[j] -= p * x;
      hk1[j] -= p * y;
      hk2[j] -= p * zz;
    }
  } else {
    for (int j = k; j <= jmax; j++) {
      double p = hk[j] + q * hk1[j];
      hk[j] -= p * x;
      hk1[j] -= p * y;
    }
  }
}

// Columns k .. k + cols - 1 of h (rows imin .. imax) and, when accumulating,
// of z (rows low .. igh), times the reflector.
VELK_VECTOR_CLONES void RealQr::ReflectColumns(int k, int cols, int imin, int imax, double x, double y, double zz,
                            double q, double r) {
  for (int i = imin; i <= imax; i++) {
    double *hi = h_.Row(i);
    if (cols == 3) {
      double p = x * hi[k] + y * hi[k + 1] + zz * hi[k + 2];
      hi[k] -= p;
      hi[k + 1] -= p * q;
      hi[k + 2] -= p * r;
    } else {
      double p = x * hi[k] + y * hi[k + 1];
      hi[k] -= p;
      hi[k + 1] -= p * q;
    }
  }
  if (want_ == Want::kValues) return;
  double *__restrict zk = z_.Col(k);
  double *__restrict zk1 = z_.Col(k + 1);
  if (cols == 3) {
    double *__restrict zk2 = z_.Col(k + 2);
    for (int i = low_; i <= igh_; i++) {
      double p = x * zk[i] + y * zk1[i] + zz * zk2[i];
      zk[i] -= p;
      zk1[i] -= p * q;
      zk2[i] -= p * r;
    }
  } else {
    for (int i = low_; i <= igh_; i++) {
      double p = x * zk[i] + y * zk1[i];
      zk[i] -= p;
      zk1[i] -= p * q;
    }
  }
}

// One double QR step on rows and columns m .. en of the active block l .. en.
void RealQr::DoubleStep(int l, int m, int en, double p, double q, double r) {
  ByRows h = h_;
  int na = en - 1;
  bool full = want_ != Want::kValues;
  for (int i = m + 2; i <= en; i++) {
    h(i, i - 2) = 0.0;
    if (i != m + 2) h(i, i - 3) = 0.0;
  }
  for (int k = m; k <= na; k++) {
    bool notlas = k != na;
    double x = 0.0;
    if (k != m) {
      p = h(k, k - 1);
      q = h(k + 1, k - 1);
      r = notlas ? h(k + 2, k - 1) : 0.0;
      x = std::fabs(p) + std::fabs(q) + std::fabs(r);
      if (x == 0.0) continue;
      p /= x;
      q /= x;
      r /= x;
    }
    double s = std::copysign(std::sqrt(p * p + q * q + r * r), p);
    if (k != m)
      h(k, k - 1) = -s * x;
    else if (l != m)
      h(k, k - 1) = -h(k, k - 1);
    p += s;
    x = p / s;
    double y = q / s, zz = r / s;
    q /= p;
    r /= p;
    int rows = notlas ? 3 : 2;
    ReflectRows(k, rows, full ? n_ : en, x, y, zz, q, r);
    ReflectColumns(k, rows, full ? 1 : l, std::min(en, k + 3), x, y, zz, q, r);
  }
}

// The 2 x 2 block at na = en - 1: a real pair is split by a rotation (hqr2),
// a complex pair stays a block.
void RealQr::TwoRoots(int en, double x, double y, double w) {
  ByRows h = h_;
  int na = en - 1;
  double p = (y - x) / 2.0, q = p * p + w, zz = std::sqrt(std::fabs(q));
  h(en, en) = x + t_;
  x = h(en, en);
  h(na, na) = y + t_;
  if (q < 0.0) {  // complex pair
    wr_(na) = wr_(en) = x + p;
    wi_(na) = zz;
    wi_(en) = -zz;
    return;
  }
  zz = p + std::copysign(zz, p);
  wr_(na) = x + zz;
  wr_(en) = wr_(na);
  if (zz != 0.0) wr_(en) = x - w / zz;
  wi_(na) = wi_(en) = 0.0;
  if (want_ == Want::kValues) return;
  x = h(en, na);
  double s = std::fabs(x) + std::fabs(zz);
  p = x / s;
  q = zz / s;
  double r = std::sqrt(p * p + q * q);
  p /= r;
  q /= r;
  double *hna = h_.Row(na), *hen = h_.Row(en);
  for (int j = na; j <= n_; j++) {  // row modification
    zz = hna[j];
    hna[j] = q * zz + p * hen[j];
    hen[j] = q * hen[j] - p * zz;
  }
  for (int i = 1; i <= en; i++) {  // column modification
    zz = h(i, na);
    h(i, na) = q * zz + p * h(i, en);
    h(i, en) = q * h(i, en) - p * zz;
  }
  double *zna = z_.Col(na), *zen = z_.Col(en);
  for (int i = low_; i <= igh_; i++) {  // accumulate
    zz = zna[i];
    zna[i] = q * zz + p * zen[i];
    zen[i] = q * zen[i] - p * zz;
  }
  h(en, na) = 0.0;
}

// Vectors of the quasi-triangular form by back-substitution, into the upper
// triangle of h (the published steps 340 to 800).
VELK_VECTOR_CLONES void RealQr::BackSubstitute() {
  ByRows h = h_;
  Vec wr = wr_, wi = wi_;
  if (norm_ == 0.0) return;
  // Rescales h(i..en, col) when an entry nears overflow.
  auto control = [&](int i, int en, double t, int c1, int c2) {
    if (t == 0.0) return;
    double tst1 = t, tst2 = tst1 + 1.0 / tst1;
    if (tst2 > tst1) return;
    for (int j = i; j <= en; j++) {
      h(j, c1) /= t;
      if (c2 != 0) h(j, c2) /= t;
    }
  };
  for (int en = n_; en >= 1; en--) {
    double p = wr(en), q = wi(en);
    int na = en - 1;
    if (q > 0.0) continue;
    if (q == 0.0) {  // real vector
      int m = en;
      double zz = 0.0, s = 0.0;
      h(en, en) = 1.0;
      for (int i = na; i >= 1; i--) {
        double w = h(i, i) - p, r = 0.0;
        const double *hi = h.Row(i);
        for (int j = m; j <= en; j++) r += hi[j] * h(j, en);
        if (wi(i) < 0.0) {
          zz = w;
          s = r;
          continue;
        }
        m = i;
        if (wi(i) == 0.0) {
          double t = w;
          if (t == 0.0) t = machep_ * norm_;
          h(i, en) = -r / t;
        } else {  // solve the real equations
          double x = h(i, i + 1), y = h(i + 1, i);
          q = (wr(i) - p) * (wr(i) - p) + wi(i) * wi(i);
          double t = (x * s - zz * r) / q;
          h(i, en) = t;
          h(i + 1, en) = std::fabs(x) > std::fabs(zz) ? (-r - w * t) / x : (-s - y * t) / zz;
        }
        control(i, en, std::fabs(h(i, en)), en, 0);
      }
      continue;
    }
    // Complex vector; the last component is chosen imaginary so that the
    // eigenvector matrix is triangular.
    int m = na;
    if (std::fabs(h(en, na)) > std::fabs(h(na, en))) {
      h(na, na) = q / h(en, na);
      h(na, en) = -(h(en, en) - p) / h(en, na);
    } else {
      cdiv(0.0, -h(na, en), h(na, na) - p, q, &h(na, na), &h(na, en));
    }
    h(en, na) = 0.0;
    h(en, en) = 1.0;
    double zz = 0.0, r = 0.0, s = 0.0;
    for (int i = na - 1; i >= 1; i--) {
      double w = h(i, i) - p, ra = 0.0, sa = 0.0;
      const double *hi = h.Row(i);
      for (int j = m; j <= en; j++) {
        ra += hi[j] * h(j, na);
        sa += hi[j] * h(j, en);
      }
      if (wi(i) < 0.0) {
        zz = w;
        r = ra;
        s = sa;
        continue;
      }
      m = i;
      if (wi(i) == 0.0) {
        cdiv(-ra, -sa, w, q, &h(i, na), &h(i, en));
      } else {  // solve the complex equations
        double x = h(i, i + 1), y = h(i + 1, i);
        double vr = (wr(i) - p) * (wr(i) - p) + wi(i) * wi(i) - q * q;
        double vi = (wr(i) - p) * 2.0 * q;
        if (vr == 0.0 && vi == 0.0)
          vr = machep_ * norm_ *
               (std::fabs(w) + std::fabs(q) + std::fabs(x) + std::fabs(y) + std::fabs(zz));
        cdiv(x * r - zz * ra + q * sa, x * s - zz * sa - q * ra, vr, vi, &h(i, na), &h(i, en));
        if (std::fabs(x) > std::fabs(zz) + std::fabs(q)) {
          h(i + 1, na) = (-ra - w * h(i, na) + q * h(i, en)) / x;
          h(i + 1, en) = (-sa - w * h(i, en) - q * h(i, na)) / x;
        } else {
          cdiv(-r - y * h(i, na), -s - y * h(i, en), zz, q, &h(i + 1, na), &h(i + 1, en));
        }
      }
      control(i, en, std::max(std::fabs(h(i, na)), std::fabs(h(i, en))), na, en);
    }
  }
}

// Vectors of isolated roots, then z times the triangular vectors of h: column
// j of the result is a combination of the columns of z, gathered in a work
// column (j from n down, so the columns still needed are the old ones).
VELK_VECTOR_CLONES void RealQr::TransformVectors() {
  ByRows h = h_;
  ByCols z = z_;
  if (norm_ == 0.0) return;
  for (int i = 1; i <= n_; i++) {
    if (i >= low_ && i <= igh_) continue;
    for (int j = i; j <= n_; j++) z(i, j) = h(i, j);
  }
  std::vector<double> work(n_ + 1);
  double *__restrict col = work.data();
  for (int j = n_; j >= low_; j--) {
    int m = std::min(j, igh_);
    for (int i = low_; i <= igh_; i++) col[i] = 0.0;
    for (int k = low_; k <= m; k++) {
      const double hkj = h(k, j), *__restrict zk = z.Col(k);
      for (int i = low_; i <= igh_; i++) col[i] += zk[i] * hkj;
    }
    double *zj = z.Col(j);
    for (int i = low_; i <= igh_; i++) zj[i] = col[i];
  }
}

}  // namespace

// Eigenvalues of a real upper Hessenberg matrix by the QR method, after the
// Algol procedure hqr.
int hqr(int n, int low, int igh, double *h, double *wr, double *wi, double machep) {
  return RealQr(n, low, igh, h, wr, wi, nullptr, machep, Want::kValues).Run();
}

// Eigenvalues and eigenvectors of a real upper Hessenberg matrix by the QR
// method, after the Algol procedure hqr2.
int hqr2(int n, int low, int igh, double *h, double *wr, double *wi, double *z, double machep,
         bool schur_only) {
  RealQr qr(n, low, igh, h, wr, wi, z, machep, schur_only ? Want::kSchur : Want::kVectors);
  int ierr = qr.Run();
  if (ierr != 0) return ierr;
  if (schur_only) {
    ByRows t{h, n};
    for (int i = 3; i <= n; i++)
      for (int j = 1; j <= i - 2; j++) t(i, j) = 0.0;
    return 0;
  }
  qr.BackSubstitute();
  qr.TransformVectors();
  return 0;
}
