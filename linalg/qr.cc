// Householder QR (Golub and Van Loan, Matrix Computations, 5.2.1). Each
// reflector H = I - tau u u^H takes the column x below the diagonal to beta
// e1 with beta = -phase(x1) |x|, so u1 = x1 - beta never cancels; a column
// already zero below the diagonal is left alone. Q is accumulated backwards,
// H_0 (H_1 (... H_p-1)), where each H_k leaves the first k coordinates alone.
// Last, each row k of R is turned by the phase of R(k, k) and column k of Q
// by its inverse, so the diagonal of R is real and non-negative.
#include "linalg/qr.h"

#include <algorithm>
#include <vector>

#include "linalg/elements.h"

namespace velk_linalg {
namespace {

// rows r0 .. r0 + len of a (columns c0 .. c0 + w) <- H rows, H = I - tau u u^H.
template <class T>
void Reflect(const T *u, int len, double tau, T *a, long lda, int r0, int c0, int w,
             std::vector<T> &work) {
  work.assign(w, T(0));
  for (int i = 0; i < len; i++) {
    const T ui = Conj(u[i]);
    const T *row = a + (r0 + i) * lda + c0;
    for (int j = 0; j < w; j++) work[j] += ui * row[j];
  }
  for (int i = 0; i < len; i++) {
    const T f = tau * u[i];
    T *row = a + (r0 + i) * lda + c0;
    for (int j = 0; j < w; j++) row[j] -= f * work[j];
  }
}

template <class T>
void Qr(int m, int n, const T *a, long lda, T *q, T *r) {
  for (int i = 0; i < m; i++) std::copy(a + i * lda, a + i * lda + n, r + static_cast<long>(i) * n);
  const int p = std::min(m, n);
  std::vector<T> us(static_cast<size_t>(m) * p);  // u of step k at us[k * m ..]
  std::vector<double> taus(p, 0.0);
  std::vector<T> work;
  for (int k = 0; k < p; k++) {
    T *x = r + static_cast<long>(k) * n + k;
    const int len = m - k;
    const double tail = Norm(len - 1, x + n, n);
    if (tail == 0) continue;  // nothing below the diagonal
    const double norm = Norm(len, x, n);
    const T alpha = x[0], theta = Phase(alpha);
    const T beta = -theta * norm;
    T *u = us.data() + static_cast<long>(k) * m;
    u[0] = theta * (Modulus(alpha) + norm);
    for (int i = 1; i < len; i++) u[i] = x[i * n];
    taus[k] = 1.0 / (norm * (norm + Modulus(alpha)));
    Reflect(u, len, taus[k], r, n, k, k + 1, n - k - 1, work);
    x[0] = beta;
    for (int i = 1; i < len; i++) x[i * n] = T(0);
  }
  if (q != nullptr) {
    std::fill(q, q + static_cast<long>(m) * m, T(0));
    for (int i = 0; i < m; i++) q[static_cast<long>(i) * m + i] = T(1);
    for (int k = p - 1; k >= 0; k--)
      if (taus[k] != 0)
        Reflect(us.data() + static_cast<long>(k) * m, m - k, taus[k], q, m, k, k, m - k, work);
  }
  for (int k = 0; k < p; k++) {
    T *rk = r + static_cast<long>(k) * n;
    const T ph = Phase(rk[k]);
    if (ph == T(1)) continue;
    for (int j = k; j < n; j++) rk[j] *= Conj(ph);
    rk[k] = Modulus(rk[k]);
    if (q != nullptr)
      for (int i = 0; i < m; i++) q[static_cast<long>(i) * m + k] *= ph;
  }
}

}  // namespace

void HouseholderQr(int m, int n, const double *a, long lda, double *q, double *r) {
  Qr(m, n, a, lda, q, r);
}
void HouseholderQr(int m, int n, const std::complex<double> *a, long lda, std::complex<double> *q,
                   std::complex<double> *r) {
  Qr(m, n, a, lda, q, r);
}

}  // namespace velk_linalg
