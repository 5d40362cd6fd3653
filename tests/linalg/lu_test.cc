// LU, Gauss-Jordan inversion and the triangular solves, by residual ratios
// on random and structured matrices, and by the pivoting rule itself.
#include "linalg/lu.h"

#include <gtest/gtest.h>

#include "tests/linalg/dense.h"

namespace {

// Runs LuFactor on a copy of a, and returns the ratio |L U - P A| / (n |A| eps).
template <class T>
double LuRatio(const Dense<T> &a) {
  const int m = a.m, n = a.n, k = std::min(m, n), steps = velk_linalg::LuSteps(m, n);
  Dense<T> w = a;
  std::vector<int> pivots(steps);
  EXPECT_EQ(velk_linalg::LuFactor(m, n, w.data(), n, pivots.data()), -1);
  Dense<T> l(m, k), u(k, n), pa = a;
  for (int i = 0; i < m; i++)
    for (int j = 0; j < n; j++) {
      if (j < i && j < k) l(i, j) = w(i, j);
      if (i == j && i < k) l(i, j) = T(1);
      if (j >= i && i < k) u(i, j) = w(i, j);
    }
  velk_linalg::LuPermute(steps, pivots.data(), n, pa.data(), n);
  return Ratio(l * u, pa, std::max(m, n) * Norm1(a));
}

// |I - A inv(A)| / (n |A| |inv(A)| eps), with the inverse's determinant.
template <class T>
double InverseRatio(const Dense<T> &a, T *det = nullptr) {
  Dense<T> x = a;
  T d;
  velk_linalg::InverseStatus s = velk_linalg::GaussJordanInvert(a.n, x.data(), 0, kEps, &d);
  EXPECT_EQ(s.singular, 0);
  EXPECT_FALSE(s.zero_division);
  if (det != nullptr) *det = d;
  return Ratio(Identity<T>(a.n), a * x, a.n * Norm1(a) * Norm1(x));
}

template <class T>
void FactorsAndInversesHoldTheirResiduals() {
  unsigned seed = 10;
  // Square sizes either side of the panel width (16) and of the size from
  // which the inverse works by panels (96), tall and wide shapes.
  for (auto [m, n] : std::vector<std::pair<int, int>>{
           {1, 1}, {2, 2}, {5, 5}, {33, 33}, {95, 95}, {96, 96}, {131, 131}, {200, 200},
           {120, 70}, {70, 120}, {1, 9}, {9, 1}}) {
    SCOPED_TRACE(testing::Message() << m << " x " << n);
    Dense<T> a = Random<T>(m, n, seed++);
    EXPECT_LE(LuRatio(a), 30);
    if (m != n) continue;
    T det;
    EXPECT_LE(InverseRatio(a, &det), 30);
    // The same pivots, so the same determinant as the LU's.
    Dense<T> w = a;
    std::vector<int> pivots(n);
    velk_linalg::LuFactor(n, n, w.data(), n, pivots.data());
    T lu_det = velk_linalg::LuDeterminant(n, w.data(), n, pivots.data());
    EXPECT_LE(std::abs(det - lu_det), 1e-10 * std::abs(lu_det));
  }
  // Structured: Hilbert (ill-conditioned but exact pivots), Frank, Kahan.
  for (const Dense<T> &a : {Hilbert<T>(8), Frank<T>(12), Kahan<T>(40, 1.2), Frank<T>(120)}) {
    EXPECT_LE(LuRatio(a), 30);
    EXPECT_LE(InverseRatio(a), 30);
  }
}

}  // namespace

TEST(Lu, RealResidualsHold) { FactorsAndInversesHoldTheirResiduals<double>(); }
TEST(Lu, ComplexResidualsHold) { FactorsAndInversesHoldTheirResiduals<Cx>(); }

TEST(Lu, FirstOfEqualMagnitudesIsThePivot) {
  // Column 0 has |1| = |-1| = |i|-sized ties; the upper row stays.
  Dense<double> a(3, 3);
  a.a = {1, 2, 3, -1, 5, 6, 1, 8, 10};
  std::vector<int> pivots(2);
  velk_linalg::LuFactor(3, 3, a.data(), 3, pivots.data());
  EXPECT_EQ(pivots[0], 0);
  Dense<Cx> c(2, 2);
  c.a = {Cx(0, 1), 1, Cx(-1, 0), 2};
  std::vector<int> cp(1);
  velk_linalg::LuFactor(2, 2, c.data(), 2, cp.data());
  EXPECT_EQ(cp[0], 0);
  // A strictly larger later row wins, and one exchange flips the sign.
  Dense<double> b(2, 2);
  b.a = {1, 2, 3, 4};
  velk_linalg::LuFactor(2, 2, b.data(), 2, cp.data());
  EXPECT_EQ(cp[0], 1);
  EXPECT_DOUBLE_EQ(velk_linalg::LuDeterminant(2, b.data(), 2, cp.data()), -2);
  double det;
  Dense<double> inv(2, 2);
  inv.a = {1, 2, 3, 4};
  velk_linalg::GaussJordanInvert(2, inv.data(), 0, kEps, &det);
  EXPECT_DOUBLE_EQ(det, -2);
  EXPECT_NEAR(inv(0, 0), -2, 1e-15);
  EXPECT_NEAR(inv(1, 0), 1.5, 1e-15);
}

TEST(Lu, ZeroPivots) {
  // The real factorisation divides by zero; the complex one stops there.
  Dense<double> a(3, 3);
  a.a = {1, 1, 0, 1, 1, 1, 1, 1, 2};
  std::vector<int> pivots(2);
  EXPECT_EQ(velk_linalg::LuFactor(3, 3, a.data(), 3, pivots.data()), -1);
  EXPECT_FALSE(std::isfinite(a(2, 1)));
  Dense<Cx> c(3, 3);
  c.a = {Cx(0, 1), 1, 0, Cx(0, 1), 1, 1, Cx(0, 1), 1, 2};
  EXPECT_EQ(velk_linalg::LuFactor(3, 3, c.data(), 3, pivots.data()), 1);

  // The inverse counts each singular pivot and floors it with its sign.
  for (int n : {2, 100}) {
    Dense<double> z(n, n);
    double det;
    velk_linalg::InverseStatus s = velk_linalg::GaussJordanInvert(n, z.data(), 0, kEps, &det);
    EXPECT_EQ(s.singular, n);
    EXPECT_EQ(z(0, 0), 1 / kEps);
    EXPECT_EQ(z(n - 1, n - 1), 1 / kEps);
    EXPECT_EQ(z(0, n - 1), 0);
  }
  Dense<double> neg(2, 2);
  neg.a = {-1e-20, 0, 0, 1};
  double det;
  velk_linalg::InverseStatus s = velk_linalg::GaussJordanInvert(2, neg.data(), 1e-10, kEps, &det);
  EXPECT_EQ(s.singular, 1);
  EXPECT_EQ(neg(0, 0), -1 / kEps);
  EXPECT_EQ(det, -kEps);
  // Above the tolerance nothing is floored.
  neg.a = {-1e-20, 0, 0, 1};
  s = velk_linalg::GaussJordanInvert(2, neg.data(), 0, kEps, &det);
  EXPECT_EQ(s.singular, 0);
  EXPECT_EQ(neg(0, 0), -1e20);
  // The 1 x 1 shortcut makes no test; a complex zero is a zero division.
  double one = 0;
  EXPECT_EQ(velk_linalg::GaussJordanInvert(1, &one, 1, kEps, &det).singular, 0);
  EXPECT_TRUE(std::isinf(one));
  Cx zero = 0, cdet;
  EXPECT_TRUE(velk_linalg::GaussJordanInvert(1, &zero, 0, kEps, &cdet).zero_division);
  // With no floor the complex elimination meets an exact zero divisor.
  Dense<Cx> cz(2, 2);
  s = velk_linalg::GaussJordanInvert(2, cz.data(), 0, 0, &cdet);
  EXPECT_EQ(s.singular, 1);
  EXPECT_TRUE(s.zero_division);
}

TEST(Lu, SubstitutionsSolveAndFailBelowTheTolerance) {
  for (int n : {1, 4, 60}) {
    Dense<Cx> t = Random<Cx>(n, n, 7 + n), b = Random<Cx>(n, 3, 8 + n);
    for (int i = 0; i < n; i++) t(i, i) += Cx(4, 0);  // well away from zero
    Dense<Cx> lower = t, upper = t;
    for (int i = 0; i < n; i++)
      for (int j = 0; j < n; j++) {
        if (j > i) lower(i, j) = 0;
        if (j < i) upper(i, j) = 0;
      }
    Dense<Cx> x = b, y = b;
    ASSERT_TRUE(velk_linalg::ForwardSubstitute(n, 3, t.data(), n, x.data(), 3, 0.5));
    ASSERT_TRUE(velk_linalg::BackSubstitute(n, 3, t.data(), n, y.data(), 3, 0.5));
    EXPECT_LE(Ratio(lower * x, b, n * Norm1(lower) * Norm1(x)), 30);
    EXPECT_LE(Ratio(upper * y, b, n * Norm1(upper) * Norm1(y)), 30);
  }
  // Strictly less fails; equal passes. A unit diagonal fails only above 1.
  Dense<double> t(2, 2);
  t.a = {2, 0, 1, 0.5};
  Dense<double> b(2, 1);
  b.a = {2, 1};
  Dense<double> x = b;
  EXPECT_TRUE(velk_linalg::ForwardSubstitute(2, 1, t.data(), 2, x.data(), 1, 0.5));
  EXPECT_DOUBLE_EQ(x(1, 0), 0);
  x = b;
  EXPECT_FALSE(velk_linalg::ForwardSubstitute(2, 1, t.data(), 2, x.data(), 1, 0.6));
  x = b;
  EXPECT_FALSE(velk_linalg::BackSubstitute(2, 1, t.data(), 2, x.data(), 1, 0.6));
  x = b;
  EXPECT_TRUE(velk_linalg::ForwardSubstitute(2, 1, t.data(), 2, x.data(), 1, 1.0, true));
  EXPECT_DOUBLE_EQ(x(1, 0), -1);
  EXPECT_FALSE(velk_linalg::ForwardSubstitute(2, 1, t.data(), 2, x.data(), 1, 2.0, true));
  EXPECT_TRUE(velk_linalg::BackSubstitute(2, 0, t.data(), 2, x.data(), 0, 9.0));
}
