// Householder QR and the Jacobi SVD by residual ratios and orthogonality,
// on random shapes and on structured and rank-deficient matrices.
#include <gtest/gtest.h>

#include "linalg/qr.h"
#include "linalg/svd.h"
#include "tests/linalg/dense.h"

namespace {

template <class T>
void QrHolds(const Dense<T> &a) {
  const int m = a.m, n = a.n;
  SCOPED_TRACE(testing::Message() << m << " x " << n);
  Dense<T> q(m, m), r(m, n);
  velk_linalg::HouseholderQr(m, n, a.data(), n, q.data(), r.data());
  EXPECT_LE(Ratio(q * r, a, std::max(m, n) * std::max(Norm1(a), 1e-300)), 30);
  EXPECT_LE(Ratio(Adjoint(q) * q, Identity<T>(m), m), 30);
  for (int i = 0; i < m; i++)
    for (int j = 0; j < std::min(i, n); j++) EXPECT_EQ(r(i, j), T(0));
  for (int k = 0; k < std::min(m, n); k++) {
    EXPECT_EQ(std::imag(Cx(r(k, k))), 0);
    EXPECT_GE(std::real(Cx(r(k, k))), 0);
  }
}

// A = U S V' with orthonormal U, V and descending non-negative values;
// the values alone agree with those of the full decomposition.
template <class T>
std::vector<double> SvdHolds(const Dense<T> &a) {
  const int m = a.m, n = a.n, p = std::min(m, n);
  SCOPED_TRACE(testing::Message() << m << " x " << n);
  Dense<T> u(m, m), v(n, n), s(m, n);
  std::vector<double> sv(p), only(p);
  velk_linalg::Svd(m, n, a.data(), n, sv.data(), u.data(), v.data());
  velk_linalg::Svd(m, n, a.data(), n, only.data(), nullptr, nullptr);
  for (int k = 0; k < p; k++) {
    s(k, k) = T(sv[k]);
    EXPECT_GE(sv[k], 0);
    if (k > 0) {
      EXPECT_LE(sv[k], sv[k - 1]);
    }
    EXPECT_NEAR(only[k], sv[k], 4 * p * kEps * sv[0]);
  }
  EXPECT_LE(Ratio(u * s * Adjoint(v), a, std::max(m, n) * std::max(Norm1(a), 1e-300)), 30);
  EXPECT_LE(Ratio(Adjoint(u) * u, Identity<T>(m), m), 30);
  EXPECT_LE(Ratio(Adjoint(v) * v, Identity<T>(n), n), 30);
  return sv;
}

template <class T>
void DecompositionsHold() {
  unsigned seed = 40;
  for (auto [m, n] : std::vector<std::pair<int, int>>{
           {1, 1}, {1, 6}, {6, 1}, {4, 4}, {17, 5}, {5, 17}, {40, 40}, {90, 33}}) {
    Dense<T> a = Random<T>(m, n, seed++);
    QrHolds(a);
    SvdHolds(a);
  }
  // Rank-deficient products: the values beyond the rank vanish to rounding.
  for (auto [m, n, r] : std::vector<std::array<int, 3>>{{30, 20, 7}, {20, 30, 7}, {12, 12, 1}}) {
    Dense<T> a = LowRank<T>(m, n, r, seed++);
    QrHolds(a);
    std::vector<double> sv = SvdHolds(a);
    EXPECT_GT(sv[r - 1], 1e-3 * sv[0]);
    if (r < std::min(m, n)) {
      EXPECT_LT(sv[r], 1e3 * std::max(m, n) * kEps * sv[0]);
    }
  }
  // Zero matrices: zero values and identity-like orthonormal factors.
  std::vector<double> zero = SvdHolds(Dense<T>(3, 5));
  EXPECT_EQ(zero, std::vector<double>(3, 0.0));
  QrHolds(Dense<T>(4, 2));
  // A zero column in the middle.
  Dense<T> a = Random<T>(6, 4, 99);
  for (int i = 0; i < 6; i++) a(i, 1) = T(0);
  QrHolds(a);
  EXPECT_EQ(SvdHolds(a)[3], 0);
  // Structured matrices.
  SvdHolds(Hilbert<T>(10));
  SvdHolds(Kahan<T>(30, 1.2));
  SvdHolds(Frank<T>(15));
}

}  // namespace

TEST(SvdQr, RealDecompositionsHold) { DecompositionsHold<double>(); }
TEST(SvdQr, ComplexDecompositionsHold) { DecompositionsHold<Cx>(); }

// Regression: in a square matrix of low rank the surplus columns shrink at
// every sweep towards subnormal norms, where the complex rotations stopped
// being unitary (V lost orthogonality to 1e-2).
TEST(SvdQr, SurplusColumnsOfLowRankStayOrthonormal) {
  for (unsigned seed = 1; seed <= 6; seed++) {
    Dense<Cx> wide = LowRank<Cx>(8, 12, 3, seed), square(12, 12);
    std::copy(wide.a.begin(), wide.a.end(), square.a.begin());
    std::vector<double> sv = SvdHolds(square);
    EXPECT_LT(sv[3], 1e-13 * sv[0]);
    SvdHolds(LowRank<double>(12, 12, 3, seed));
  }
}

TEST(SvdQr, KnownValues) {
  // [[3, 0], [4, 5]]: A'A has eigenvalues 45 and 5.
  Dense<double> a(2, 2);
  a.a = {3, 0, 4, 5};
  std::vector<double> s(2);
  velk_linalg::Svd(2, 2, a.data(), 2, s.data(), nullptr, nullptr);
  EXPECT_NEAR(s[0], std::sqrt(45.0), 1e-14);
  EXPECT_NEAR(s[1], std::sqrt(5.0), 1e-14);
  // A unitary diagonal scaling leaves the values: diag(i, -2, 3 + 4i).
  Dense<Cx> d(3, 3);
  d(0, 0) = Cx(0, 1);
  d(1, 1) = -2;
  d(2, 2) = Cx(3, 4);
  std::vector<double> t(3);
  velk_linalg::Svd(3, 3, d.data(), 3, t.data(), nullptr, nullptr);
  for (int k = 0; k < 3; k++) EXPECT_NEAR(t[k], (std::vector<double>{5, 2, 1})[k], 1e-15);
  // Huge and tiny scales: no overflow or underflow in the sums of squares.
  for (double scale : {1e200, 1e-200}) {
    Dense<double> b = a;
    for (double &x : b.a) x *= scale;
    velk_linalg::Svd(2, 2, b.data(), 2, s.data(), nullptr, nullptr);
    EXPECT_NEAR(s[0] / scale, std::sqrt(45.0), 1e-13);
    EXPECT_NEAR(s[1] / scale, std::sqrt(5.0), 1e-13);
  }
  a(0, 1) = NAN;
  velk_linalg::Svd(2, 2, a.data(), 2, s.data(), nullptr, nullptr);
  EXPECT_TRUE(std::isnan(s[0]));
}
