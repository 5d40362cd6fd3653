// Matrix functions by Schur-Parlett: known roots, identities with the
// exponential, the recurrence itself, and the reports.
#include "linalg/funm.h"

#include <cmath>
#include <random>

#include "matrix/expm.h"
#include "matrix/funm.h"
#include "matrix/operations.h"
#include "scalar/complex_value.h"
#include "tests/matrix/scenario.h"

namespace {

// Largest elementwise distance, relative to the largest magnitude of want.
double Gap(Matrix *got, Matrix *want) {
  double d = 0, w = 0;
  for (long long k = 0; k < MatCount(want); k++) {
    d = std::max(d, std::abs(ValueAt(got, k) - ValueAt(want, k)));
    w = std::max(w, std::abs(ValueAt(want, k)));
  }
  return d / w;
}

// c I plus uniform values in [-1, 1): eigenvalues near c.
Matrix *NearScalar(std::mt19937 &gen, int cls, int n, double c) {
  std::uniform_real_distribution<double> u(-1, 1);
  std::vector<Cx> v(static_cast<size_t>(n) * n);
  for (Cx &z : v) z = Cx(u(gen), cls == kComplex ? u(gen) : 0);
  for (int k = 0; k < n; k++) v[static_cast<size_t>(k) * n + k] += c;
  return Make("A", cls, n, n, v);
}

bool Smith(ComplexValue n, ComplexValue d, ComplexValue *q) {
  if (velk_complex::IsZero(d)) return false;
  *q = velk_complex::Div(n, d);
  return true;
}

}  // namespace

TEST_F(Scenario, SquareRootsAndLogarithmsOfKnownMatrices) {
  // Eigenvalues 1 +- 2i: the real Schur form would be one 2 x 2 block.
  Matrix *a = Make("A", kReal, 2, 2, {1, -2, 2, 1});
  double re = std::sqrt((1 + std::sqrt(5.0)) / 2), im = 1 / re;  // (re + i im)^2 = 1 + 2i
  EXPECT_TRUE(Holds(MatSqrt(a), kComplex, 2, 2, {re, -im, im, re}, 1e-15));
  // A negative eigenvalue gives an imaginary root.
  Matrix *d = Make("D", kReal, 2, 2, {4, 0, 0, -9});
  EXPECT_TRUE(Holds(MatSqrt(d), kComplex, 2, 2, {2, 0, 0, Cx(0, 3)}, 1e-15));
  EXPECT_TRUE(
      Holds(MatLog(d), kComplex, 2, 2, {std::log(4.0), 0, 0, Cx(std::log(9.0), M_PI)}, 1e-15));
  // A rotation by 1 radian is exp of the generator [0 1; -1 0].
  double c = std::cos(1.0), s = std::sin(1.0);
  Matrix *r = Make("R", kReal, 2, 2, {c, s, -s, c});
  EXPECT_TRUE(Holds(MatLog(r), kComplex, 2, 2, {0, 1, -1, 0}, 1e-15));
  // Any scalar function: exp through the recurrence agrees with MatExp.
  std::mt19937 gen(1);
  Matrix *b = NearScalar(gen, kComplex, 6, 0);
  EXPECT_LT(Gap(MatFunc(b, CompExp, "exp"), MatExp(b)), 1e-13);
  // A function that answers in its argument is taken as well.
  EXPECT_LT(Gap(MatFunc(b, CompExpSelf, "exp"), MatExp(b)), 1e-13);
}

TEST_F(Scenario, SquareRootSquaredAndExpOfLogGiveBackTheMatrix) {
  std::mt19937 gen(4);
  for (int cls : {kReal, kComplex}) {
    for (int n : {1, 3, 10, 40}) {
      SCOPED_TRACE(testing::Message() << "class " << cls << " n " << n);
      Matrix *a = NearScalar(gen, cls, n, n / 2.0 + 2);  // eigenvalues in the right half-plane
      Matrix *root = MatSqrt(a), *log = MatLog(a);
      EXPECT_EQ(root->cls, kComplex);
      EXPECT_LT(Gap(MatMul(root, root), a), 1e-13);
      EXPECT_LT(Gap(MatExp(log), a), 1e-12);
      MatSweepAll();
    }
  }
}

TEST_F(Scenario, ParlettRecurrenceFillsTheUpperTriangle) {
  // t = [1 a b; 0 2 c; 0 0 4]: f(t) for f(x) = x^2 is t^2, whose upper
  // triangle the recurrence must give from the squared diagonal alone.
  std::vector<ComplexValue> t = {{1, 0},  {0.5, 1}, {-2, 0}, {0, 0}, {2, 0},
                                 {3, -1}, {0, 0},   {0, 0},  {4, 0}};
  std::vector<ComplexValue> f(9, ComplexValue{0, 0});
  for (int k = 0; k < 3; k++) f[4 * k] = velk_complex::Mul(t[4 * k], t[4 * k]);
  ASSERT_TRUE(velk_linalg::ParlettRecurrence(3, t.data(), f.data(), 2.22e-16, Smith));
  for (int i = 0; i < 3; i++)
    for (int j = i + 1; j < 3; j++) {
      ComplexValue want = {0, 0};
      for (int k = i; k <= j; k++)
        want = velk_complex::Add(want, velk_complex::Mul(t[3 * i + k], t[3 * k + j]));
      EXPECT_NEAR(f[3 * i + j].re, want.re, 1e-14) << i << j;
      EXPECT_NEAR(f[3 * i + j].im, want.im, 1e-14) << i << j;
    }
  // Equal diagonal entries with a coupling: the divisor becomes (floor, 0)
  // and the entry becomes very large, with no refusal.
  std::vector<ComplexValue> t2 = {{2, 0}, {1, 0}, {0, 0}, {2, 0}};
  std::vector<ComplexValue> f2 = {{1, 0}, {0, 0}, {0, 0}, {2, 0}};
  ASSERT_TRUE(velk_linalg::ParlettRecurrence(2, t2.data(), f2.data(), 2.22e-16, Smith));
  EXPECT_DOUBLE_EQ(f2[1].re, 1 / 2.22e-16);
  // A divide that refuses zero divisors meets one only without the floor.
  EXPECT_FALSE(velk_linalg::ParlettRecurrence(2, t2.data(), f2.data(), 0, Smith));
  // Through the front a Jordan block is no report either.
  Matrix *j = Make("J", kReal, 3, 3, {2, 1, 0, 0, 2, 1, 0, 0, 2});
  Matrix *root = MatSqrt(j);
  for (long long k = 0; k < 9; k++) EXPECT_TRUE(std::isfinite(std::abs(ValueAt(root, k))));
}

using FuncDeathTest = Scenario;

TEST_F(FuncDeathTest, FunctionFrontsReportUnderTheirOwnNames) {
  Matrix *e = Make("E", kReal, 0, 0), *w = Make("W", kComplex, 2, 3), *p = Make("P", kPoly, 2, 2);
  ExpectReports({
      {[=] { MatFunc(e, CompExp, "exp"); }, "exp(E(0x0)) : Zero-size matrix in MatFunc()."},
      {[=] { MatFunc(w, CompExp, "exp"); }, "exp(W(2x3)) : Not a square matrix in MatFunc()."},
      {[=] { MatFunc(p, CompCos, "cos"); },
       "cos(P(2x2)) : Not a real nor complex matrix in MatFunc()."},
      {[=] { MatSqrt(e); }, "sqrt(E(0x0)) : Zero-size matrix in MatSqrt()."},
      {[=] { MatSqrt(w); }, "sqrt(W(2x3)) : Not a square matrix in MatSqrt()."},
      {[=] { MatSqrt(p); }, "sqrt(P(2x2)) : Not a real nor complex matrix in MatSqrt()."},
      {[=] { MatLog(e); }, "log(E(0x0)) : Zero-size matrix in MatLog()."},
      {[=] { MatLog(w); }, "log(W(2x3)) : Not a square matrix in MatLog()."},
      {[=] { MatLog(p); }, "log(P(2x2)) : Not a real nor complex matrix in MatLogt()."},
  });
}
