// The matrix exponential: known results, identities, the scaling rule and reports.
#include "linalg/expm.h"

#include <cmath>
#include <random>

#include "matrix/expm.h"
#include "matrix/operations.h"
#include "tests/matrix/scenario.h"

namespace {

// Largest elementwise distance of m from want, relative to want's largest magnitude.
double Distance(Matrix *m, const std::vector<Cx> &want) {
  double d = 0, w = 0;
  for (long long k = 0; k < MatCount(m); k++) {
    d = std::max(d, std::abs(ValueAt(m, k) - want[k]));
    w = std::max(w, std::abs(want[k]));
  }
  return w == 0 ? d : d / w;
}

std::vector<Cx> Identity(int n) {
  std::vector<Cx> v(static_cast<size_t>(n) * n);
  for (int k = 0; k < n; k++) v[static_cast<size_t>(k) * n + k] = 1;
  return v;
}

}  // namespace

TEST_F(Scenario, ExpOfKnownMatrices) {
  double c = std::cos(1.0), s = std::sin(1.0);
  Matrix *rot = Make("R", kReal, 2, 2, {0, 1, -1, 0});
  Matrix *e = MatExp(rot);
  EXPECT_TRUE(Holds(e, kReal, 2, 2, {c, s, -s, c}, 4e-16));
  // The zero matrix: one halving, a series that stops at once, one squaring.
  EXPECT_TRUE(Holds(MatExp(Make("Z", kReal, 3, 3)), kReal, 3, 3, Identity(3)));
  // Moler and Van Loan's example: eigenvalues -1 and -17, V = [1 3; 2 4].
  Matrix *mv = Make("M", kReal, 2, 2, {-49, 24, -64, 31});
  double e1 = std::exp(-1.0), e17 = std::exp(-17.0);
  EXPECT_LT(Distance(MatExp(mv), {-2 * e1 + 3 * e17, 1.5 * e1 - 1.5 * e17, -4 * e1 + 4 * e17,
                                  3 * e1 - 2 * e17}),
            1e-13);
  // A nilpotent matrix: the series is finite.
  Matrix *nil = Make("N", kReal, 3, 3, {0, 2, 3, 0, 0, 4, 0, 0, 0});
  EXPECT_TRUE(Holds(MatExp(nil), kReal, 3, 3, {1, 2, 7, 0, 1, 4, 0, 0, 1}, 1e-14));
  // Complex diagonals and a complex rotation generator.
  Matrix *d = Make("D", kComplex, 2, 2, {Cx(0, M_PI), 0, 0, Cx(1, -0.5)});
  EXPECT_LT(Distance(MatExp(d), {-1, 0, 0, std::exp(Cx(1, -0.5))}), 2e-15);
  Matrix *ci =
      Make("C", kComplex, 2, 2, {0, Cx(0, 1), Cx(0, 1), 0});  // exp = [cos i sin; i sin cos]
  EXPECT_LT(Distance(MatExp(ci), {c, Cx(0, s), Cx(0, s), c}), 4e-16);
  // Entries whose squares overflow: 665 squarings take exp(-1e200) to 0.
  EXPECT_TRUE(
      Holds(MatExp(Make("B", kReal, 2, 2, {-1e200, 0, 0, -3e200})), kReal, 2, 2, {0, 0, 0, 0}));
}

TEST_F(Scenario, ExpInverseAndScaling) {
  // exp(A) exp(-A) = I for random skew-symmetric (skew-Hermitian) A of norm
  // about 4 to 400, whose exponential is unitary: errors of the squarings
  // are not hidden by large entries.
  std::mt19937 gen(3);
  std::uniform_real_distribution<double> u(-1, 1);
  for (int cls : {kReal, kComplex}) {
    for (double scale : {1.0, 100.0}) {
      std::vector<Cx> v(100);
      for (int i = 0; i < 10; i++) {
        v[i * 11] = Cx(0, cls == kComplex ? scale * u(gen) : 0);
        for (int j = i + 1; j < 10; j++) {
          v[i * 10 + j] = scale * Cx(u(gen), cls == kComplex ? u(gen) : 0);
          v[j * 10 + i] = -std::conj(v[i * 10 + j]);
        }
      }
      Matrix *a = Make("A", cls, 10, 10, v);
      Matrix *p = MatMul(MatExp(a), MatExp(MatNegate(a)));
      EXPECT_LT(Distance(p, Identity(10)), scale == 1 ? 1e-14 : 1e-12) << cls << " " << scale;
    }
  }
  // A norm below 1/2 is not scaled: the result is the Taylor sum itself.
  Matrix *small = Make("S", kReal, 2, 2, {0.1, 0.2, -0.1, 0.2});  // norm about 0.316
  EXPECT_EQ(velk_linalg::ExpScalingExponent(0.316), 0);
  Matrix *sum = Mat_ExpLocal(MatSameDef(small), small), *e = MatExp(small);
  for (int k = 0; k < 4; k++) EXPECT_EQ(MatReal(e)[k], MatReal(sum)[k]);
  // The rule j = floor(log2 nrm) + 1, and 1 for a zero norm.
  EXPECT_EQ(velk_linalg::ExpScalingExponent(0), 1);
  EXPECT_EQ(velk_linalg::ExpScalingExponent(1000), 10);
  EXPECT_EQ(velk_linalg::ExpScalingExponent(1e-300), 0);
  EXPECT_EQ(velk_linalg::FrobeniusNorm(std::vector<double>{3e300, 4e300}.data(), 2), 5e300);
}

using ExpDeathTest = Scenario;

TEST_F(ExpDeathTest, ExpReports) {
  Matrix *e = Make("E", kReal, 0, 0), *w = Make("W", kComplex, 2, 3), *p = Make("P", kPoly, 2, 2);
  Matrix *inf = Make("I", kReal, 2, 2, {INFINITY, 0, 0, 1});
  Matrix *nan = Make("N", kComplex, 1, 1, {Cx(NAN, 0)});
  ExpectReports({
      {[=] { MatExp(e); }, "exp(E(0x0)) : Zero-size matrix in MatExp()."},
      {[=] { MatExp(w); }, "exp(W(2x3)) : Not a square matrix in MatExp()."},
      {[=] { MatExp(p); }, "exp(P(2x2)) : Incorrect class matrix in MatExp()."},
      {[=] { MatExp(inf); }, "exp(I(2x2)) : Not converge in Mat_ExpLocal()."},
      {[=] { MatExp(nan); }, "exp(N(1x1)) : Not converge in C_Mat_ExpLocal()."},
  });
}
