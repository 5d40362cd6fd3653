// Eigenvalues of complex general matrices: ports of the EISPACK procedures
// cbal, cbabk2, corth, comqr, comqr2, csroot and cdiv, on separate real and
// imaginary parts.
//
// Deliberate deviations, as in the real family: a subdiagonal is negligible
// when it is at most machep times the sizes of its two diagonal neighbours,
// and is then set to zero; comqr allows 100 iterations per eigenvalue with
// an exceptional shift at every nonzero multiple of 10 below that, comqr2 30 n
// in total with the same exceptional shifts; division is Smith's.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

#include "linalg/eig_arrays.h"
#include "linalg/eigen_kernels.h"

using namespace velk_eigen;

void cbal(int n, double *ar, double *ai, bool isolate, int *low, int *igh, double *scale) {
  double *const parts[2] = {ar, ai};
  BalanceParts<2>(n, parts, isolate, low, igh, scale);
}

void cbabk2(int n, int low, int igh, const double *scale, int m, double *zr, double *zi) {
  double *const parts[2] = {zr, zi};
  BalanceBackParts<2>(n, low, igh, scale, m, parts);
}

// Smith's division: the divisor is scaled by the larger of its parts.
void cdiv(double ar, double ai, double br, double bi, double *cr, double *ci) {
  if (br == 0.0 && bi == 0.0) fputs("cdiv() in c_eigen :  [Zero division]\n", stderr);
  double rr, ri;
  if (std::fabs(br) >= std::fabs(bi)) {
    double r = bi / br, d = br + r * bi;
    rr = (ar + ai * r) / d;
    ri = (ai - ar * r) / d;
  } else {
    double r = br / bi, d = bi + r * br;
    rr = (ar * r + ai) / d;
    ri = (ai * r - ar) / d;
  }
  *cr = rr;
  *ci = ri;
}

// The principal square root, after the EISPACK procedure csroot.
void csroot(double xr, double xi, double *yr, double *yi) {
  double tr = xr, ti = xi;
  double s = std::sqrt(0.5 * (Pythag(tr, ti) + std::fabs(tr)));
  double r = 0.0, i = 0.0;
  if (tr >= 0.0) r = s;
  if (ti < 0.0) s = -s;
  if (tr <= 0.0) i = s;
  if (s != 0.0) {
    if (tr < 0.0) r = 0.5 * (ti / i);
    if (tr > 0.0) i = 0.5 * (ti / r);
  }
  *yr = r;
  *yi = i;
}

// Unitary reduction to Hessenberg form, after the Algol procedure corth
// (orthes for complex matrices).
VELK_VECTOR_CLONES void corth(int n, int low, int igh, double *ar_p, double *ai_p, double *ortr_p, double *orti_p) {
  ByRows ar{ar_p, n}, ai{ai_p, n};
  Vec ortr{ortr_p}, orti{orti_p};
  std::vector<double> work(2 * (n + 1));
  double *fr = work.data(), *fi = fr + n + 1;
  int la = igh - 1, kp1 = low + 1;
  for (int m = kp1; m <= la; m++) {
    double h = 0.0, scale = 0.0;
    ortr(m) = orti(m) = 0.0;
    for (int i = m; i <= igh; i++) scale += std::fabs(ar(i, m - 1)) + std::fabs(ai(i, m - 1));
    if (scale == 0.0) continue;
    int mp = m + igh;
    for (int ii = m; ii <= igh; ii++) {
      int i = mp - ii;
      ortr(i) = ar(i, m - 1) / scale;
      orti(i) = ai(i, m - 1) / scale;
      h += ortr(i) * ortr(i) + orti(i) * orti(i);
    }
    double g = std::sqrt(h), f = Pythag(ortr(m), orti(m));
    if (f != 0.0) {
      h += f * g;
      g /= f;
      ortr(m) *= 1.0 + g;
      orti(m) *= 1.0 + g;
    } else {
      ortr(m) = g;
      ar(m, m - 1) = scale;
    }
    // Form (I - u u* / h) a, the sums over i gathered row by row.
    for (int j = m; j <= n; j++) fr[j] = fi[j] = 0.0;
    for (int ii = m; ii <= igh; ii++) {
      int i = mp - ii;
      const double ur = ortr(i), ui = orti(i), *xr = ar.Row(i), *xi = ai.Row(i);
      for (int j = m; j <= n; j++) {
        fr[j] += ur * xr[j] + ui * xi[j];
        fi[j] += ur * xi[j] - ui * xr[j];
      }
    }
    for (int j = m; j <= n; j++) {
      fr[j] /= h;
      fi[j] /= h;
    }
    for (int i = m; i <= igh; i++) {
      const double ur = ortr(i), ui = orti(i);
      double *xr = ar.Row(i), *xi = ai.Row(i);
      for (int j = m; j <= n; j++) {
        xr[j] += -fr[j] * ur + fi[j] * ui;
        xi[j] += -fr[j] * ui - fi[j] * ur;
      }
    }
    // Form (I - u u* / h) a (I - u u* / h).
    for (int i = 1; i <= igh; i++) {
      double *xr = ar.Row(i), *xi = ai.Row(i);
      const double *ur = ortr.Base(), *ui = orti.Base();
      double sr = (Dot(ur, xr, m, igh) - Dot(ui, xi, m, igh)) / h;
      double si = (Dot(ur, xi, m, igh) + Dot(ui, xr, m, igh)) / h;
      for (int j = m; j <= igh; j++) {
        xr[j] += -sr * ortr(j) - si * orti(j);
        xi[j] += sr * orti(j) - si * ortr(j);
      }
    }
    ortr(m) *= scale;
    orti(m) *= scale;
    ar(m, m - 1) *= -g;
    ai(m, m - 1) *= -g;
  }
}

VELK_VECTOR_CLONES void corth_accumulate(int n, int low, int igh, const double *hr_p, const double *hi_p,
                      double *ortr_p, double *orti_p, double *zr_p, double *zi_p) {
  ByRows hr{const_cast<double *>(hr_p), n}, hi{const_cast<double *>(hi_p), n};
  ByCols zr{zr_p, n}, zi{zi_p, n};
  Vec ortr{ortr_p}, orti{orti_p};
  std::fill(zr_p, zr_p + static_cast<long>(n) * n, 0.0);
  std::fill(zi_p, zi_p + static_cast<long>(n) * n, 0.0);
  for (int j = 1; j <= n; j++) zr(j, j) = 1.0;
  // For i = igh - 1 step -1 until low + 1.
  for (int i = igh - 1; i >= low + 1; i--) {
    if (ortr(i) == 0.0 && orti(i) == 0.0) continue;
    if (hr(i, i - 1) == 0.0 && hi(i, i - 1) == 0.0) continue;
    // The negative of h formed in corth.
    double norm = hr(i, i - 1) * ortr(i) + hi(i, i - 1) * orti(i);
    for (int k = i + 1; k <= igh; k++) {
      ortr(k) = hr(k, i - 1);
      orti(k) = hi(k, i - 1);
    }
    for (int j = i; j <= igh; j++) {
      double *xr = zr.Col(j), *xi = zi.Col(j);
      const double *ur = ortr.Base(), *ui = orti.Base();
      double sr = (Dot(ur, xr, i, igh) + Dot(ui, xi, i, igh)) / norm;
      double si = (Dot(ur, xi, i, igh) - Dot(ui, xr, i, igh)) / norm;
      for (int k = i; k <= igh; k++) {
        xr[k] += sr * ortr(k) - si * orti(k);
        xi[k] += sr * orti(k) + si * ortr(k);
      }
    }
  }
}

namespace {

enum class Want { kValues, kSchur, kVectors };

// The complex shifted QR iteration of comqr and comqr2 on (hr, hi). Values
// only (comqr) works on the active block; the other modes (comqr2) update
// whole rows and columns and accumulate into (zr, zi).
class ComplexQr {
 public:
  ComplexQr(int n, int low, int igh, double *hr, double *hi, double *wr, double *wi, double *zr,
            double *zi, double machep, Want want)
      : n_(n), low_(low), igh_(igh), hr_{hr, n}, hi_{hi, n}, zr_{zr, n}, zi_{zi, n}, wr_{wr},
        wi_{wi}, machep_(machep), want_(want) {}

  int Run();
  void BackSubstitute();
  void TransformVectors();

 private:
  bool Full() const { return want_ != Want::kValues; }
  void RealSubdiagonal();
  int FindSmallSubdiagonal(int en);
  void Shift(int en, int its, double &sr, double &si) const;
  void Step(int l, int en);

  int n_, low_, igh_;
  ByRows hr_, hi_;
  ByCols zr_, zi_;
  Vec wr_, wi_;
  double machep_;
  Want want_;
  double tr_ = 0.0, ti_ = 0.0;
};

// Makes the subdiagonal of the Hessenberg matrix real by a diagonal unitary
// similarity.
void ComplexQr::RealSubdiagonal() {
  ByRows hr = hr_, hi = hi_;
  for (int i = low_ + 1; i <= igh_; i++) {
    int ll = std::min(i + 1, igh_);
    if (hi(i, i - 1) == 0.0) continue;
    double norm = Pythag(hr(i, i - 1), hi(i, i - 1));
    double yr = hr(i, i - 1) / norm, yi = hi(i, i - 1) / norm;
    hr(i, i - 1) = norm;
    hi(i, i - 1) = 0.0;
    for (int j = i; j <= (Full() ? n_ : igh_); j++) {
      double si = yr * hi(i, j) - yi * hr(i, j);
      hr(i, j) = yr * hr(i, j) + yi * hi(i, j);
      hi(i, j) = si;
    }
    for (int j = Full() ? 1 : low_; j <= ll; j++) {
      double si = yr * hi(j, i) + yi * hr(j, i);
      hr(j, i) = yr * hr(j, i) - yi * hi(j, i);
      hi(j, i) = si;
    }
    if (!Full()) continue;
    double *xr = zr_.Col(i), *xi = zi_.Col(i);
    for (int j = low_; j <= igh_; j++) {
      double si = yr * xi[j] + yi * xr[j];
      xr[j] = yr * xr[j] - yi * xi[j];
      xi[j] = si;
    }
  }
}

int ComplexQr::FindSmallSubdiagonal(int en) {
  ByRows hr = hr_, hi = hi_;
  for (int l = en; l > low_; l--) {
    double tst1 = std::fabs(hr(l - 1, l - 1)) + std::fabs(hi(l - 1, l - 1)) +
                  std::fabs(hr(l, l)) + std::fabs(hi(l, l));
    if (std::fabs(hr(l, l - 1)) <= machep_ * tst1) {
      hr(l, l - 1) = 0.0;
      return l;
    }
  }
  return low_;
}

// The shift: the eigenvalue of the trailing 2 x 2 block nearer h(en, en), or
// the exceptional shift at every nonzero multiple of 10 iterations.
void ComplexQr::Shift(int en, int its, double &sr, double &si) const {
  ByRows hr = hr_, hi = hi_;
  int enm1 = en - 1;
  if (its != 0 && its % 10 == 0) {
    // The published text reads hr(enm1, en - 2) even for en = 2, where no
    // such element exists; there the term is left out.
    sr = std::fabs(hr(en, enm1)) + (en > 2 ? std::fabs(hr(enm1, en - 2)) : 0.0);
    si = 0.0;
    return;
  }
  sr = hr(en, en);
  si = hi(en, en);
  double xr = hr(enm1, en) * hr(en, enm1), xi = hi(enm1, en) * hr(en, enm1);
  if (xr == 0.0 && xi == 0.0) return;
  double yr = (hr(enm1, enm1) - sr) / 2.0, yi = (hi(enm1, enm1) - si) / 2.0, zzr, zzi;
  csroot(yr * yr - yi * yi + xr, 2.0 * yr * yi + xi, &zzr, &zzi);
  if (yr * zzr + yi * zzi < 0.0) {
    zzr = -zzr;
    zzi = -zzi;
  }
  cdiv(xr, xi, yr + zzr, yi + zzi, &xr, &xi);
  sr -= xr;
  si -= xi;
}

// One shifted QR step on the active block l .. en (the shift already taken
// off the diagonal): reduce to triangle by rows, then the inverse operation
// by columns.
VELK_VECTOR_CLONES void ComplexQr::Step(int l, int en) {
  ByRows hr = hr_, hi = hi_;
  Vec wr = wr_, wi = wi_;
  int jmax = Full() ? n_ : en;
  for (int i = l + 1; i <= en; i++) {
    double sr = hr(i, i - 1);
    hr(i, i - 1) = 0.0;
    double norm = Pythag(Pythag(hr(i - 1, i - 1), hi(i - 1, i - 1)), sr);
    double xr = hr(i - 1, i - 1) / norm, xi = hi(i - 1, i - 1) / norm;
    wr(i - 1) = xr;
    wi(i - 1) = xi;
    hr(i - 1, i - 1) = norm;
    hi(i - 1, i - 1) = 0.0;
    hi(i, i - 1) = sr / norm;
    double c = hi(i, i - 1);
    double *ar0 = hr.Row(i - 1), *ai0 = hi.Row(i - 1), *ar1 = hr.Row(i), *ai1 = hi.Row(i);
    for (int j = i; j <= jmax; j++) {
      double yr = ar0[j], yi = ai0[j], zzr = ar1[j], zzi = ai1[j];
      ar0[j] = xr * yr + xi * yi + c * zzr;
      ai0[j] = xr * yi - xi * yr + c * zzi;
      ar1[j] = xr * zzr - xi * zzi - c * yr;
      ai1[j] = xr * zzi + xi * zzr - c * yi;
    }
  }
  double sr = 0.0, si = hi(en, en);
  if (si != 0.0) {
    double norm = Pythag(hr(en, en), si);
    sr = hr(en, en) / norm;
    si /= norm;
    hr(en, en) = norm;
    hi(en, en) = 0.0;
    for (int j = en + 1; j <= (Full() ? n_ : en); j++) {
      double yr = hr(en, j), yi = hi(en, j);
      hr(en, j) = sr * yr + si * yi;
      hi(en, j) = sr * yi - si * yr;
    }
  }
  for (int j = l + 1; j <= en; j++) {
    double xr = wr(j - 1), xi = wi(j - 1), c = hi(j, j - 1);
    for (int i = Full() ? 1 : l; i <= j; i++) {
      double yr = hr(i, j - 1), yi = 0.0, zzr = hr(i, j), zzi = hi(i, j);
      if (i != j) {
        yi = hi(i, j - 1);
        hi(i, j - 1) = xr * yi + xi * yr + c * zzi;
      }
      hr(i, j - 1) = xr * yr - xi * yi + c * zzr;
      hr(i, j) = xr * zzr + xi * zzi - c * yr;
      hi(i, j) = xr * zzi - xi * zzr - c * yi;
    }
    if (!Full()) continue;
    double *__restrict ur = zr_.Col(j - 1), *__restrict ui = zi_.Col(j - 1);
    double *__restrict vr = zr_.Col(j), *__restrict vi = zi_.Col(j);
    for (int i = low_; i <= igh_; i++) {
      double yr = ur[i], yi = ui[i], zzr = vr[i], zzi = vi[i];
      ur[i] = xr * yr - xi * yi + c * zzr;
      ui[i] = xr * yi + xi * yr + c * zzi;
      vr[i] = xr * zzr + xi * zzi - c * yr;
      vi[i] = xr * zzi - xi * zzr - c * yi;
    }
  }
  if (si == 0.0) return;
  // The phase taken from h(en, en) by rows goes back into column en.
  for (int i = Full() ? 1 : l; i <= en; i++) {
    double yr = hr(i, en), yi = hi(i, en);
    hr(i, en) = sr * yr - si * yi;
    hi(i, en) = sr * yi + si * yr;
  }
  if (!Full()) return;
  double *xr = zr_.Col(en), *xi = zi_.Col(en);
  for (int i = low_; i <= igh_; i++) {
    double yr = xr[i], yi = xi[i];
    xr[i] = sr * yr - si * yi;
    xi[i] = sr * yi + si * yr;
  }
}

VELK_VECTOR_CLONES int ComplexQr::Run() {
  ByRows hr = hr_, hi = hi_;
  RealSubdiagonal();
  // Roots isolated by cbal.
  for (int i = 1; i <= n_; i++) {
    if (i >= low_ && i <= igh_) continue;
    wr_(i) = hr(i, i);
    wi_(i) = hi(i, i);
  }
  int en = igh_, itn = 30 * n_;
  while (en >= low_) {
    int its = 0;
    for (;;) {
      int l = FindSmallSubdiagonal(en);
      if (l == en) break;
      if (Full() ? itn == 0 : its == 100) return en;
      double sr, si;
      Shift(en, its, sr, si);
      for (int i = low_; i <= en; i++) {
        hr(i, i) -= sr;
        hi(i, i) -= si;
      }
      tr_ += sr;
      ti_ += si;
      its++;
      itn--;
      Step(l, en);
    }
    // A root found.
    hr(en, en) += tr_;
    wr_(en) = hr(en, en);
    hi(en, en) += ti_;
    wi_(en) = hi(en, en);
    en--;
  }
  return 0;
}

// Vectors of the triangular form by back-substitution into the upper
// triangle of (hr, hi).
VELK_VECTOR_CLONES void ComplexQr::BackSubstitute() {
  ByRows hr = hr_, hi = hi_;
  Vec wr = wr_, wi = wi_;
  double norm = 0.0;
  for (int i = 1; i <= n_; i++)
    for (int j = i; j <= n_; j++) norm = std::max(norm, std::fabs(hr(i, j)) + std::fabs(hi(i, j)));
  if (n_ == 1 || norm == 0.0) return;
  for (int en = n_; en >= 2; en--) {
    double xr = wr(en), xi = wi(en);
    hr(en, en) = 1.0;
    hi(en, en) = 0.0;
    for (int i = en - 1; i >= 1; i--) {
      double zzr = 0.0, zzi = 0.0;
      const double *ar = hr.Row(i), *ai = hi.Row(i);
      for (int j = i + 1; j <= en; j++) {
        zzr += ar[j] * hr(j, en) - ai[j] * hi(j, en);
        zzi += ar[j] * hi(j, en) + ai[j] * hr(j, en);
      }
      double yr = xr - wr(i), yi = xi - wi(i);
      if (yr == 0.0 && yi == 0.0) yr = machep_ * norm;
      cdiv(zzr, zzi, yr, yi, &hr(i, en), &hi(i, en));
      // Overflow control.
      double tr = std::fabs(hr(i, en)) + std::fabs(hi(i, en));
      if (tr == 0.0) continue;
      double tst1 = tr, tst2 = tst1 + 1.0 / tst1;
      if (tst2 > tst1) continue;
      for (int j = i; j <= en; j++) {
        hr(j, en) /= tr;
        hi(j, en) /= tr;
      }
    }
  }
}

// Vectors of isolated roots, then z times the triangular vectors, gathered
// column by column as in the real family.
VELK_VECTOR_CLONES void ComplexQr::TransformVectors() {
  ByRows hr = hr_, hi = hi_;
  ByCols zr = zr_, zi = zi_;
  for (int i = 1; i <= n_; i++) {
    if (i >= low_ && i <= igh_) continue;
    for (int j = i; j <= n_; j++) {
      zr(i, j) = hr(i, j);
      zi(i, j) = hi(i, j);
    }
  }
  std::vector<double> work(2 * (n_ + 1));
  double *__restrict cr = work.data(), *__restrict ci = cr + n_ + 1;
  for (int j = n_; j >= low_; j--) {
    int m = std::min(j, igh_);
    for (int i = low_; i <= igh_; i++) cr[i] = ci[i] = 0.0;
    for (int k = low_; k <= m; k++) {
      const double br = hr(k, j), bi = hi(k, j);
      const double *__restrict ar = zr.Col(k), *__restrict ai = zi.Col(k);
      for (int i = low_; i <= igh_; i++) {
        cr[i] += ar[i] * br - ai[i] * bi;
        ci[i] += ar[i] * bi + ai[i] * br;
      }
    }
    double *xr = zr.Col(j), *xi = zi.Col(j);
    for (int i = low_; i <= igh_; i++) {
      xr[i] = cr[i];
      xi[i] = ci[i];
    }
  }
}

}  // namespace

// Eigenvalues of a complex upper Hessenberg matrix by the modified LR method
// in its unitary (QR) form, after the EISPACK procedure comqr.
int comqr(int n, int low, int igh, double *hr, double *hi, double *wr, double *wi, double machep) {
  return ComplexQr(n, low, igh, hr, hi, wr, wi, nullptr, nullptr, machep, Want::kValues).Run();
}

// Eigenvalues and eigenvectors of a complex upper Hessenberg matrix, after
// the EISPACK procedure comqr2.
int comqr2(int n, int low, int igh, double *ortr, double *orti, double *hr, double *hi,
           double *wr, double *wi, double *zr, double *zi, double machep, bool schur_only) {
  corth_accumulate(n, low, igh, hr, hi, ortr, orti, zr, zi);
  ComplexQr qr(n, low, igh, hr, hi, wr, wi, zr, zi, machep,
               schur_only ? Want::kSchur : Want::kVectors);
  int ierr = qr.Run();
  if (ierr != 0 || schur_only) return ierr;
  qr.BackSubstitute();
  qr.TransformVectors();
  return 0;
}
