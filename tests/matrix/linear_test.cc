// Linear algebra fronts: reports, singular warnings, known answers and residuals.
#include "matrix/linear.h"

#include <array>
#include <cmath>
#include <random>

#include "matrix/operations.h"
#include "tests/matrix/scenario.h"

namespace {

using LinearDeathTest = Scenario;
using Linear = Scenario;

// The largest magnitude of the elements of a real or complex matrix.
double MaxAbs(Matrix *m) {
  double best = 0;
  for (long long k = 0; k < MatCount(m); k++) best = std::max(best, std::abs(ValueAt(m, k)));
  return best;
}

double Distance(Matrix *x, Matrix *y) { return MaxAbs(MatSub(x, y)); }

Matrix *Random(const char *name, int cls, int rows, int cols, unsigned seed) {
  std::mt19937 rng(seed);
  std::uniform_real_distribution<double> u(-1, 1);
  std::vector<Cx> v(static_cast<size_t>(rows) * cols);
  for (Cx &x : v) x = cls == kComplex ? Cx(u(rng), u(rng)) : Cx(u(rng));
  return Make(name, cls, rows, cols, v);
}

Matrix *Hilbert(int n) {
  std::vector<Cx> v;
  for (int i = 1; i <= n; i++)
    for (int j = 1; j <= n; j++) v.push_back(1.0 / (i + j - 1));
  return Make("H", kReal, n, n, v);
}

double Binomial(int n, int k) {
  double b = 1;
  for (int i = 1; i <= k; i++) b = b * (n - k + i) / i;
  return b;
}

// The exact inverse of the Hilbert matrix of order n (integers).
double HilbertInverse(int n, int i, int j) {
  double sign = (i + j) % 2 == 0 ? 1 : -1;
  double c = Binomial(i + j - 2, i - 1);
  return sign * (i + j - 1) * Binomial(n + i - 1, n - j) * Binomial(n + j - 1, n - i) * c * c;
}

Matrix *OutPlace(const char *name) { return MatSetStatus(MatSetName(MatDef("", 0, 0), name), 2); }

}  // namespace

// ---- reports ----------------------------------------------------------------------

TEST_F(LinearDeathTest, EveryFrontReportsItsExpression) {
  Matrix *a = Make("A", kReal, 2, 2, {1, 2, 3, 4}), *e = Make("E", kReal, 0, 3);
  Matrix *w = Make("W", kReal, 2, 3), *v = Make("V", kReal, 3, 1), *b = Make("B", kReal, 2, 1);
  Matrix *p = Make("P", kPoly, 2, 2), *c = Make("C", kComplex, 2, 2, {Cx(0, 1), 0, 0, 1});
  Matrix *z = Make("Z", kReal, 2, 2), *cw = Make("CW", kComplex, 2, 3);
  Matrix *id = MatSetName(MatIDef(2), "I");
  Matrix *c3 = Make("C", kComplex, 3, 3, {Cx(0, 1), 1, 0, Cx(0, 1), 1, 1, Cx(0, 1), 1, 2});
  Matrix *cz = Make("CZ", kComplex, 2, 2, {Cx(0, 1), Cx(0, 1), Cx(0, 1), Cx(0, 1)});
  const std::string singular = " : Singular: result may be inaccurate in ";
  ExpectReports({
      {[=] { MatLU(e, a, a, a); }, "lu(E(0x3)) : Zero-size matrix in MatLU()."},
      {[=] { MatLU(p, a, a, a); }, "lu(P(2x2)) : Incorrect class matrix in MatLU()."},
      {[=] { MatLU(c3, a, a, a); }, "lu(C(3x3)) : Zero division in C_Mat_LU()."},
      {[=] { MatInv(w, 0); }, "inv(W(2x3), 0) : Not a square matrix in MatInv()."},
      {[=] { MatInv(p, 1e-3); }, "inv(P(2x2), 0.001) : Incorrect class matrix in MatInv()."},
      {[=] { MatInv(z, -1e-10); }, "inv(Z(2x2), -1E-10)" + singular + "Mat_Inv()."},
      {[=] { MatInv(cz, -1e-10); }, "inv(CZ(2x2), -1E-10)" + singular + "C_Mat_Inv()."},
      // With no floor the complex elimination divides by zero, after its warning.
      {[=] {
         eps = 0;
         MatInv(cz, 0);
       },
       "inv(CZ(2x2), 0)" + singular +
           "C_Mat_Inv().\n\ninv(CZ(2x2), 0) : Zero division in C_Mat_Inv()."},
      {[=] { MatForSub(e, b, 0); }, "E(0x3) \\ B(2x1) : Zero-size matrix in MatForSub()."},
      {[=] { MatBackSub(a, e, 0); }, "A(2x2) \\ E(0x3) : Zero-size matrix in MatBackSub()."},
      {[=] { MatBackSub(w, b, 0); }, "W(2x3) \\ B(2x1) : Not a square matrix in MatBackSub()."},
      {[=] { MatForSub(a, v, 0); }, "A(2x2) \\ V(3x1) : Row number is not same in MatForSub()."},
      {[=] { MatForSub(p, a, 0); }, "P(2x2) \\ A(2x2) : Incorrect class matrix in MatForSub()."},
      {[=] { MatLUSolve(w, b, 0); }, "W(2x3) \\ B(2x1) : Not a square matrix in MatLUSolve()."},
      {[=] { MatLUSolve(a, v, 0); }, "A(2x2) \\ V(3x1) : Row number is not same in MatLUSolve()."},
      // L's unit diagonal fails every tolerance above 1.
      {[=] { MatLUSolve(id, b, 2); }, "I(2x2) \\ B(2x1) : Singular in MatLUSolve()."},
      {[=] { MatLeastSquare(w, v, 0); },
       "W(2x3) * V(3x1) : Row number is not same in MatLeastSquare()."},
      {[=] { MatLeastSquare(p, a, 0); },
       "P(2x2) * A(2x2) : Incorrect class matrix in MatLeastSquare()."},
      {[=] { MatDeterm(e); }, "det(E(0x3)) : Zero-size matrix in MatDeterm()."},
      {[=] { MatDeterm(c); }, "det(C(2x2)) : Not a real matrix in MatDeterm()."},
      {[=] { MatDeterm(w); }, "det(W(2x3)) : Not a square matrix in MatDeterm()."},
      {[=] { C_MatDeterm(a); }, "determ(A(2x2)) : Not a complex matrix in C_MatDeterm()."},
      {[=] { C_MatDeterm(cw); }, "determ(CW(2x3)) : Not a square matrix in C_MatDeterm()."},
      {[=] { MatRank(p, -1); }, "rank(P(2x2), -1) : Not a real nor complex matrix in MatRank()."},
      // The default tolerance of an empty matrix is 0.
      {[=] { MatPseudoInv(e, -1); }, "pseudoinv(E(0x3), 0) : Zero-size matrix in MatPseudoInv()."},
      {[=] { MatPseudoInv(p, 1e-3); },
       "pseudoinv(P(2x2), 0.001) : Incorrect class matrix in MatPseudoInv()."},
      {[=] { MatKernel(e, 0.5); }, "kernel(E(0x3), 0.5) : Zero-size matrix in MatKernel()."},
      {[=] { MatKernel(p, 0.5); }, "kernel(P(2x2), 0.5) : Incorrect class matrix in MatKernel()."},
      {[=] { MatQR(e, a, a); }, "qr(E(0x3)) : Zero-size matrix in MatQR()."},
      {[=] { MatQR(p, a, a); }, "qr(P(2x2)) : Incorrect class matrix in MatQR()."},
      {[=] { MatSVD(p, a, a, a); }, "svd(P(2x2)) : Incorrect class matrix in MatSVD()."},
      {[=] { MatSingVal(p); }, "singval(P(2x2)) : Incorrect class matrix in MatSingVal()."},
      {[=] { MatFrobNorm(p); }, "frobnorm(P(2x2)) : Incorrect class matrix in MatFrobNorm()."},
  });
}

// ---- inverse --------------------------------------------------------------------------

TEST_F(Linear, SingularInversesWarnOncePerPivotAndGoOn) {
  // Two zero pivots, each floored to eps: the inverse is I / eps.
  Matrix *z = Make("Z", kReal, 2, 2);
  auto warning = [](const std::string &tol) {
    return "\ninv(Z(2x2), " + tol + ") : Singular: result may be inaccurate in Mat_Inv().\n";
  };
  testing::internal::CaptureStderr();
  Matrix *x = MatInv(z, 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), warning("0") + warning("0"));
  EXPECT_TRUE(Holds(x, kReal, 2, 2, {1 / eps, 0, 0, 1 / eps}));
  // Zero imaginary parts: the real kernel, a complex inverse.
  testing::internal::CaptureStderr();
  x = MatInv(MatRealToComp(z), 1e-10);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), warning("1E-10") + warning("1E-10"));
  EXPECT_TRUE(Holds(x, kComplex, 2, 2, {1 / eps, 0, 0, 1 / eps}));
  // The 1 x 1 shortcut: no test, no message.
  testing::internal::CaptureStderr();
  x = MatInv(Make("O", kReal, 1, 1, {0}), 1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_TRUE(std::isinf(MatReal(x)[0]));
  // 0 x 0 gives an empty copy.
  EXPECT_TRUE(Holds(MatInv(Make("E", kComplex, 0, 0), 0), kComplex, 0, 0, {}));
}

TEST_F(Linear, InversesAndDeterminantsOfKnownMatrices) {
  // Hilbert inverses are integers, and det H3, H4, H5, H6 are 1/2160,
  // 1/6048000, 1/266716800000 and 1/186313420339200000; the condition
  // numbers (5.2e2, 1.6e4, 4.8e5, 1.5e7) bound the relative accuracy.
  const double dets[] = {1 / 2160.0, 1 / 6048000.0, 1 / 266716800000.0, 1 / 186313420339200000.0};
  const double conds[] = {5.2e2, 1.6e4, 4.8e5, 1.5e7};
  for (int n = 3; n <= 6; n++) {
    SCOPED_TRACE(n);
    Matrix *h = Hilbert(n), *x = MatInv(h, 0);
    const double tol = 100 * conds[n - 3] * 1e-16;
    for (int i = 1; i <= n; i++)
      for (int j = 1; j <= n; j++) {
        double want = HilbertInverse(n, i, j);
        EXPECT_NEAR(MatReal(x)[(i - 1) * n + j - 1], want, tol * std::fabs(want));
      }
    EXPECT_NEAR(MatDeterm(h), dets[n - 3], tol * dets[n - 3]);
    MatSweepAll();
  }
  // Frank's matrix has determinant 1; its conditioning grows quickly with n.
  for (auto [n, tol] : {std::pair{5, 1e-13}, std::pair{12, 1e-8}}) {
    std::vector<Cx> v;
    for (int i = 0; i < n; i++)
      for (int j = 0; j < n; j++) v.push_back(j >= i - 1 ? n - std::max(i, j) : 0);
    EXPECT_NEAR(MatDeterm(Make("F", kReal, n, n, v)), 1, tol);
    Complex *d = C_MatDeterm(Make("F", kComplex, n, n, v));
    EXPECT_NEAR(d->re, 1, tol);
    EXPECT_EQ(d->im, 0);
  }
  // One row exchange reverses the sign of U's diagonal product.
  EXPECT_DOUBLE_EQ(MatDeterm(Make("A", kReal, 2, 2, {1, 2, 3, 4})), -2);
  Complex *d = C_MatDeterm(Make("C", kComplex, 2, 2, {Cx(0, 1), 1, Cx(0, 2), 0}));
  EXPECT_DOUBLE_EQ(d->re, 0);
  EXPECT_DOUBLE_EQ(d->im, -2);
  // Inverses of random matrices hold |I - A inv(A)| / (n |A| |inv(A)| eps) <= 30.
  for (int cls : {kReal, kComplex})
    for (int n : {3, 40, 130}) {
      Matrix *a = Random("A", cls, n, n, 7 * n + cls), *x = MatInv(a, 0);
      double ratio =
          Distance(MatMul(a, x), MatIDef(n)) / (n * MaxAbs(a) * n * MaxAbs(x) * n * 2.22e-16);
      EXPECT_LE(ratio, 30) << n;
      MatSweepAll();
    }
}

TEST_F(Linear, NegativePowersGoThroughTheInverse) {
  for (int cls : {kReal, kComplex}) {
    Matrix *a = Random("A", cls, 4, 4, 3 + cls);
    Matrix *x = MatMul(MatPow(a, -3), MatPow(a, 3));
    EXPECT_LE(Distance(x, MatIDef(4)), 1e-10);
    EXPECT_EQ(x->cls, cls);
  }
}

// ---- LU and solves ----------------------------------------------------------------------

TEST_F(Linear, LuOutPlacesShapesAndPivots) {
  Matrix *l = OutPlace("L"), *u = OutPlace("U"), *p = OutPlace("P");
  MatLU(Make("A", kReal, 2, 2, {1, 2, 3, 4}), l, u, p);
  EXPECT_TRUE(Holds(p, kReal, 2, 2, {0, 1, 1, 0}));
  EXPECT_TRUE(Holds(l, kReal, 2, 2, {1, 0, 1 / 3.0, 1}, 1e-16));
  EXPECT_TRUE(Holds(u, kReal, 2, 2, {3, 4, 0, 2 / 3.0}, 1e-15));
  EXPECT_STREQ(l->name, "L");
  EXPECT_EQ(u->status, 2);
  // Equal magnitudes: the upper row stays.
  MatLU(Make("A", kReal, 2, 2, {1, 2, -1, 3}), l, u, p);
  EXPECT_TRUE(Holds(p, kReal, 2, 2, {1, 0, 0, 1}));
  // P A = L U for every shape.
  for (auto [cls, m, n] : std::vector<std::array<int, 3>>{
           {kReal, 5, 3}, {kReal, 3, 5}, {kComplex, 4, 6}, {kComplex, 7, 2}}) {
    Matrix *a = Random("A", cls, m, n, m * n);
    MatLU(a, l, u, p);
    const int k = std::min(m, n);
    EXPECT_EQ((std::array{l->rows, l->cols, u->rows, u->cols, p->cls, l->cls}),
              (std::array{m, k, k, n, int{kReal}, cls}));
    EXPECT_LE(Distance(MatMul(p, a), MatMul(l, u)), 1e-14);
  }
  // Zero imaginary parts: the real kernel, complex factors.
  MatLU(Make("C", kComplex, 2, 2, {1, 2, 3, 4}), l, u, p);
  EXPECT_TRUE(Holds(u, kComplex, 2, 2, {3, 4, 0, 2 / 3.0}, 1e-15));
  for (Matrix *m : {l, u, p}) MatUndef(m);
}

TEST_F(Linear, SolvesDivisionsAndTheirFailures) {
  for (int cls : {kReal, kComplex}) {
    Matrix *a = Random("A", cls, 60, 60, 11 + cls), *b = Random("B", kReal, 60, 3, 12);
    // A real right-hand side beside a complex matrix is made complex.
    Matrix *x = MatLUSolve(a, b, 0);
    EXPECT_EQ(x->cls, cls);
    double ratio = Distance(MatMul(a, x), b) / (60 * 60 * MaxAbs(a) * MaxAbs(x) * 2.22e-16);
    EXPECT_LE(ratio, 30);
    // Left division is the same solve; right division solves X A = B'.
    EXPECT_EQ(Distance(MatLeftDiv(a, b, 0), x), 0);
    Matrix *y = MatRightDiv(MatTrans(b), a, 0);
    EXPECT_LE(Distance(MatMul(y, a), MatTrans(b)), 1e-11);
  }
  // Triangular solves fail quietly (empty) when a diagonal is under the tolerance.
  Matrix *t = Make("T", kReal, 2, 2, {2, 0, 1, 0.5}), *b = Make("B", kReal, 2, 1, {2, 1});
  EXPECT_TRUE(Holds(MatForSub(t, b, 0.5), kReal, 2, 1, {1, 0}));
  EXPECT_TRUE(Holds(MatBackSub(MatTrans(t), b, 0), kReal, 2, 1, {0, 2}));
  testing::internal::CaptureStderr();
  EXPECT_TRUE(Holds(MatForSub(t, b, 0.6), kReal, 0, 0, {}));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  // Least squares: exact on a consistent tall system, least norm on a wide one.
  Matrix *tall = Random("M", kReal, 7, 3, 5), *x0 = Make("x", kReal, 3, 1, {1, -2, 3});
  EXPECT_LE(Distance(MatLeftDiv(tall, MatMul(tall, x0), -1), x0), 1e-13);
  Matrix *wide = MatTrans(tall), *rhs = Make("r", kReal, 3, 1, {1, 2, 3});
  Matrix *xm = MatLeastSquare(wide, rhs, -1);
  EXPECT_LE(Distance(MatMul(wide, xm), rhs), 1e-13);
  // Least norm: x lies in the row space, x = wide' z.
  Matrix *z = MatLUSolve(MatMul(wide, tall), rhs, 0);
  EXPECT_LE(Distance(xm, MatMul(tall, z)), 1e-13);
}

// ---- singular values and what rests on them ----------------------------------------------

TEST_F(Linear, RankPseudoInverseAndKernel) {
  Matrix *zero = Make("Z", kReal, 3, 4);
  EXPECT_EQ(MatRank(zero, -1), 0);
  EXPECT_EQ(MatRank(zero, 0), 0);  // the tolerance equals the largest value
  // A product of rank 3, tall and wide, real and complex.
  for (int cls : {kReal, kComplex}) {
    Matrix *low = MatMul(Random("X", cls, 8, 3, 1), Random("Y", cls, 3, 12, 2));
    EXPECT_EQ(MatRank(low, -1), 3);
    EXPECT_EQ(MatRank(MatTrans(low), -1), 3);
    // Moore-Penrose: A X A = A and X A X = X.
    Matrix *x = MatPseudoInv(low, -1);
    EXPECT_LE(Distance(MatMul(MatMul(low, x), low), low), 1e-12);
    EXPECT_LE(Distance(MatMul(MatMul(x, low), x), x), 1e-12);
    // Its null space: 12 - 3 orthonormal columns that A takes to zero.
    Matrix *k = MatKernel(low, -1);
    EXPECT_EQ((std::array{k->cols, k->cls}), (std::array{9, cls}));
    EXPECT_LE(MaxAbs(MatMul(low, k)), 1e-13);
    EXPECT_LE(Distance(MatMul(MatConjTrans(k), k), MatIDef(9)), 1e-14);
  }
  // The tolerance cuts the small singular value out of the pseudo-inverse.
  Matrix *d = Make("D", kReal, 2, 2, {2, 0, 0, 1e-20});
  EXPECT_TRUE(Holds(MatPseudoInv(d, -1), kReal, 2, 2, {0.5, 0, 0, 0}));
  EXPECT_TRUE(Holds(MatPseudoInv(d, 0), kReal, 2, 2, {0.5, 0, 0, 1e20}, 1e5));
  EXPECT_TRUE(Holds(MatPseudoInv(d, 5), kReal, 2, 2, {0, 0, 0, 0}));
  // Invertible: no kernel. Zero 2 x 3: the whole of V.
  EXPECT_TRUE(Holds(MatKernel(Make("A", kReal, 2, 2, {1, 2, 3, 4}), -1), kReal, 0, 0, {}));
  Matrix *v = MatKernel(Make("Z", kReal, 2, 3), -1);
  EXPECT_EQ((std::array{v->rows, v->cols}), (std::array{3, 3}));
  EXPECT_LE(Distance(MatMul(MatTrans(v), v), MatIDef(3)), 1e-15);
  // Tall of full rank: the n x 0 slice of V.
  EXPECT_TRUE(Holds(MatKernel(Random("T", kReal, 5, 3, 4), -1), kReal, 3, 0, {}));
}

TEST_F(Linear, DecompositionsIntoOutPlaces) {
  Matrix *u = OutPlace("U"), *s = OutPlace("S"), *v = OutPlace("V");
  for (int cls : {kReal, kComplex})
    for (auto [m, n] : std::vector<std::pair<int, int>>{{5, 3}, {3, 5}, {4, 4}}) {
      Matrix *a = Random("A", cls, m, n, 20 + m + cls);
      MatSVD(a, u, s, v);
      EXPECT_STREQ(u->name, "U");
      EXPECT_EQ((std::array{s->cls, v->cls}), (std::array{int{kReal}, cls}));
      EXPECT_LE(Distance(MatMul(MatMul(u, s), MatConjTrans(v)), a), 1e-14);
      Matrix *values = MatSingVal(a);
      EXPECT_EQ(values->rows, std::min(m, n));
      for (int k = 0; k < std::min(m, n); k++)
        EXPECT_NEAR(MatReal(values)[k], MatReal(s)[k * n + k], 1e-14);
      // Q R = A, R upper triangular with a real non-negative diagonal.
      MatQR(a, u, v);
      EXPECT_EQ((std::array{u->cols, v->rows}), (std::array{m, m}));
      EXPECT_LE(Distance(MatMul(u, v), a), 1e-14);
      for (int i = 0; i < m; i++)
        for (int j = 0; j <= std::min(i, n - 1); j++) {
          Cx r = ValueAt(v, static_cast<long long>(i) * n + j);
          if (j < i) {
            EXPECT_EQ(r, Cx(0));
          } else {
            EXPECT_TRUE(r.imag() == 0 && r.real() >= 0);
          }
        }
      MatSweepAll();
    }
  EXPECT_DOUBLE_EQ(MatFrobNorm(Make("A", kReal, 1, 2, {3, -4})), 5);
  EXPECT_DOUBLE_EQ(MatFrobNorm(Make("C", kComplex, 2, 1, {Cx(3, 4), Cx(0, 12)})), 13);
  for (Matrix *m : {u, s, v}) MatUndef(m);
}
