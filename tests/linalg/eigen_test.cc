// Eigenvalues, balancing, Hessenberg and Schur forms by scaled residuals,
// known spectra, orders, shapes and the fronts' reports.
#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

#include "linalg/eigen_kernels.h"
#include "matrix/block.h"
#include "matrix/eigen.h"
#include "matrix/operations.h"
#include "tests/matrix/scenario.h"

namespace {

Cx Get(Matrix *m, int i, int j) { return ValueAt(m, static_cast<long long>(i) * m->cols + j); }

template <class F>
double Norm1(int rows, int cols, F at) {
  double best = 0.0;
  for (int j = 0; j < cols; j++) {
    double s = 0.0;
    for (int i = 0; i < rows; i++) s += std::abs(at(i, j));
    best = std::max(best, s);
  }
  return best;
}
double Norm1(Matrix *m) {
  return Norm1(m->rows, m->cols, [&](int i, int j) { return Get(m, i, j); });
}

// |A V - V D| / (|A| |V| n eps), D the diagonal of the values.
double Residual(Matrix *a, Matrix *values, Matrix *vectors) {
  int n = a->rows;
  double r = Norm1(n, n, [&](int i, int j) {
    Cx s = -Get(vectors, i, j) * Get(values, j, 0);
    for (int k = 0; k < n; k++) s += Get(a, i, k) * Get(vectors, k, j);
    return s;
  });
  return r / (std::max(Norm1(a), 1e-300) * Norm1(vectors) * n * eps);
}

// |A - U T U'| / (|A| n eps) and |U' U - I| / (n eps).
void ExpectFactors(Matrix *a, Matrix *u, Matrix *t) {
  int n = a->rows;
  double r = Norm1(n, n, [&](int i, int j) {
    Cx s = Get(a, i, j);
    for (int k = 0; k < n; k++)
      for (int l = 0; l < n; l++) s -= Get(u, i, k) * Get(t, k, l) * std::conj(Get(u, j, l));
    return s;
  });
  double o = Norm1(n, n, [&](int i, int j) {
    Cx s = i == j ? -1.0 : 0.0;
    for (int k = 0; k < n; k++) s += std::conj(Get(u, k, i)) * Get(u, k, j);
    return s;
  });
  EXPECT_LE(r / (std::max(Norm1(a), 1e-300) * n * eps), 20.0);
  EXPECT_LE(o / (n * eps), 20.0);
}

// Real parts descending; equal real parts by imaginary parts descending.
bool InOrder(Matrix *values) {
  for (int j = 0; j + 1 < values->rows; j++) {
    Cx x = Get(values, j, 0), y = Get(values, j + 1, 0);
    if (x.real() < y.real() || (x.real() == y.real() && x.imag() < y.imag())) return false;
  }
  return true;
}

Matrix *Square(int n, std::vector<Cx> v, int cls = kReal) { return Make("A", cls, n, n, v); }

// Wilkinson's W21+: its two largest eigenvalues agree to 14 digits.
Matrix *W21(int cls) {
  std::vector<Cx> w(21 * 21);
  for (int i = 0; i < 21; i++) {
    w[i * 21 + i] = std::abs(10 - i);
    if (i > 0) w[i * 21 + i - 1] = w[(i - 1) * 21 + i] = 1;
  }
  return Square(21, w, cls);
}

double ColumnNorm(Matrix *v, int j) {
  double s = 0.0;
  for (int i = 0; i < v->rows; i++) s += std::norm(Get(v, i, j));
  return std::sqrt(s);
}

Matrix *Random(int n, int cls, unsigned seed) {
  std::mt19937 rng(seed);
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  std::vector<Cx> v(static_cast<size_t>(n) * n);
  for (Cx &x : v) x = cls == kComplex ? Cx(u(rng), u(rng)) : Cx(u(rng));
  return Make("A", cls, n, n, v);
}

std::vector<Cx> ValuesOf(Matrix *values) {
  std::vector<Cx> v;
  for (int j = 0; j < values->rows; j++) v.push_back(Get(values, j, 0));
  return v;
}

struct Eigen {
  Matrix *values;
  Matrix *vectors;
};
Eigen Eig(Matrix *a) {
  Eigen e;
  MatEig(a, &e.values, &e.vectors);
  return e;
}

// The eigenvalues within tol of want, in want's order.
testing::AssertionResult ValuesAre(Matrix *values, const std::vector<Cx> &want, double tol) {
  if (values->cls != kComplex || values->rows != std::ssize(want) || values->cols != 1)
    return testing::AssertionFailure() << "shape " << values->rows << "x" << values->cols;
  for (int j = 0; j < values->rows; j++)
    if (std::abs(Get(values, j, 0) - want[j]) > tol)
      return testing::AssertionFailure() << "value " << j << " is " << Get(values, j, 0)
                                         << ", want " << want[j];
  return testing::AssertionSuccess();
}

// The eigenvalues within tol of want in any order.
testing::AssertionResult SpectrumIs(Matrix *values, std::vector<Cx> want, double tol) {
  for (int j = 0; j < values->rows; j++) {
    auto near = std::find_if(want.begin(), want.end(),
                             [&](Cx w) { return std::abs(Get(values, j, 0) - w) <= tol; });
    if (near == want.end()) return testing::AssertionFailure() << "stray " << Get(values, j, 0);
    want.erase(near);
  }
  if (want.empty()) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "missing " << want[0];
}

// Residual, order, unit vectors on the real path, and the values-only iteration agreeing.
void ExpectEigen(Matrix *a, bool real_path = true) {
  Eigen e = Eig(a);
  EXPECT_LE(Residual(a, e.values, e.vectors), 20.0) << a->rows;
  EXPECT_TRUE(InOrder(e.values));
  for (int j = 0; j < a->rows && real_path; j++) EXPECT_NEAR(ColumnNorm(e.vectors, j), 1.0, 1e-13);
  EXPECT_TRUE(ValuesAre(MatEigVal(a), ValuesOf(e.values), 1e-8 * std::max(1.0, Norm1(a))));
}

using EigenTest = Scenario;
using EigenDeathTest = Scenario;

TEST_F(EigenTest, RandomMatricesHaveSmallResidualsOnBothPaths) {
  for (int n : {1, 2, 3, 4, 7, 16, 33, 60}) {
    SCOPED_TRACE(n);
    ExpectEigen(Random(n, kReal, 11 + n));
    ExpectEigen(Random(n, kComplex, 29 + n), false);
  }
}

TEST_F(EigenTest, KnownSpectra) {
  // Rosser's matrix: a double, a nearly double and a nearly zero eigenvalue.
  Matrix *rosser = Square(8, {611,  196,  -192, 407,  -8,   -52,  -49,  29,   196, 899, 113,
                              -192, -71,  -43,  -8,   -44,  -192, 113,  899,  196, 61,  49,
                              8,    52,   407,  -192, 196,  611,  8,    44,   59,  -23, -8,
                              -71,  61,   8,    411,  -599, 208,  208,  -52,  -43, 49,  44,
                              -599, 411,  208,  208,  -49,  -8,   8,    59,   208, 208, 99,
                              -911, 29,   -44,  52,   -23,  208,  208,  -911, 99});
  double r = 10 * std::sqrt(10405.0), s = 100 * std::sqrt(26.0);
  Matrix *w21 = W21(kReal);
  ExpectEigen(w21);
  Matrix *wv = MatEigVal(w21);
  EXPECT_NEAR(Get(wv, 0, 0).real(), 10.746194182903393, 1e-12);
  EXPECT_NEAR(Get(wv, 1, 0).real(), 10.746194182903322, 1e-12);

  // The companion matrix of (x - 1)(x - 2)(x - 3)(x - 4)(x - 5).
  Matrix *companion = Square(5, {0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1, 120,
                                 -274, 225, -85, 15});
  // The cyclic permutation (sixth roots of unity), on which plain shifts stall.
  std::vector<Cx> cyc(36);
  for (int i = 0; i < 6; i++) cyc[i * 6 + (i + 1) % 6] = 1;
  double h = std::sqrt(3.0) / 2;
  // Complex pairs among real values, and rotations.
  Matrix *pairs = Square(4, {1, -2, 0, 5, 2, 1, 3, 0, 0, 0, -1, -4, 0, 0, 4, -1});
  // Entries from 1e-8 to 1e8, which only balancing brings to one scale.
  std::vector<Cx> b(25);
  double scale[5] = {1e-4, 1e-2, 1, 1e2, 1e4};
  Matrix *base = Random(5, kReal, 3);
  for (int i = 0; i < 5; i++)
    for (int j = 0; j < 5; j++) b[i * 5 + j] = Get(base, i, j) * scale[i] / scale[j];
  struct Case {
    Matrix *a;
    std::vector<Cx> want;
    double tol;
  };
  for (const Case &c : std::vector<Case>{
           {rosser, {r, 1020, 510 + s, 1000, 1000, 510 - s, 0, -r}, 1e-9},
           {companion, {5, 4, 3, 2, 1}, 1e-9},
           {Square(6, cyc), {1, {0.5, h}, {0.5, -h}, {-0.5, h}, {-0.5, -h}, -1}, 1e-12},
           {pairs, {{1, 2}, {1, -2}, {-1, 4}, {-1, -4}}, 1e-12},
           {Square(5, b), ValuesOf(MatEigVal(base)), 1e-12}}) {
    ExpectEigen(c.a);
    EXPECT_TRUE(ValuesAre(MatEigVal(c.a), c.want, c.tol));
  }
}

// Rows and columns that balancing isolates, vectors brought back through the permutations.
TEST_F(EigenTest, IsolatedEigenvaluesKeepTheirVectors) {
  for (int cls : {kReal, kComplex}) {
    Cx i = cls == kComplex ? Cx(0, 1) : Cx(0);
    // Row 2 and column 4 hold only their diagonal entries; the rest couples.
    Matrix *a = Square(5, {1, 2.0 + i, 0, 3, 1, 0, 4, 0, 0, 0, 2, 1, -1, 0, 5, 1, 1, 1, -2, 0, 0,
                           0, 0, 6, 0},
                       cls);
    SCOPED_TRACE(cls);
    ExpectEigen(a, cls == kReal);
    Matrix *upper = Square(4, {4, 1, 2.0 + i, 3, 0, -1, 5, 6, 0, 0, 7, 8, 0, 0, 0, 2}, cls);
    ExpectEigen(upper, cls == kReal);
    EXPECT_TRUE(ValuesAre(MatEigVal(upper), {7, 4, 2, -1}, 1e-14));
    ExpectEigen(MatTrans(upper), cls == kReal);
  }
}

// Matrices on which a QR iteration without exceptional shifts stalls.
TEST_F(EigenTest, HardCasesConverge) {
  Matrix *hard = Square(5, {0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0, 0, 1, 1, 0,
                            1, 0, 1});
  ExpectEigen(hard);
  double g = (1 + std::sqrt(5.0)) / 2;
  EXPECT_TRUE(SpectrumIs(MatEigVal(hard), {g, {0, 1}, 0, {0, -1}, 1 - g}, 1e-12));
  ExpectEigen(MatRealToComp(hard), true);
  // The same on the complex path: shifted by 0.001 i.
  std::vector<Cx> v(25);
  for (int k = 0; k < 25; k++) v[k] = Get(hard, k / 5, k % 5) + (k % 6 == 0 ? Cx(0, 1e-3) : 0.0);
  Matrix *shifted = Square(5, v, kComplex);
  ExpectEigen(shifted, false);
  EXPECT_TRUE(SpectrumIs(MatEigVal(shifted),
                         {{g, 1e-3}, {0, 1.001}, {0, 1e-3}, {0, -0.999}, {1 - g, 1e-3}}, 1e-12));
  // A zero matrix and a Jordan block (defective: the vectors are parallel, the
  // values move by about the cube root of the rounding).
  ExpectEigen(Square(3, std::vector<Cx>(9)));
  EXPECT_TRUE(ValuesAre(MatEigVal(Square(3, {2, 1, 0, 0, 2, 1, 0, 0, 2})), {2, 2, 2}, 1e-4));
}

TEST_F(EigenTest, OrdersAndShapes) {
  Eigen d = Eig(Square(3, {1, 0, 0, 0, 3, 0, 0, 0, 2}));
  EXPECT_TRUE(Holds(d.values, kComplex, 3, 1, {3, 2, 1}));
  EXPECT_TRUE(Holds(d.vectors, kComplex, 3, 3, {0, 0, 1, 1, 0, 0, 0, 1, 0}));

  Eigen rot = Eig(Square(2, {0, 1, -1, 0}));
  EXPECT_TRUE(ValuesAre(rot.values, {{0, 1}, {0, -1}}, 1e-15));
  // The two columns of a pair are conjugates.
  for (int i = 0; i < 2; i++) EXPECT_EQ(Get(rot.vectors, i, 0), std::conj(Get(rot.vectors, i, 1)));

  // Values with vectors in one matrix, and vectors alone.
  Matrix *a = Random(4, kReal, 5);
  Eigen e = Eig(a);
  Matrix *joined = MatEigValVec(a), *vec = MatEigVec(a);
  ASSERT_TRUE(joined->rows == 4 && joined->cols == 5 && joined->cls == kComplex);
  for (int k = 0; k < 20; k++) {
    int i = k / 5, j = k % 5;
    EXPECT_EQ(Get(joined, i, j), j == 0 ? Get(e.values, i, 0) : Get(e.vectors, i, j - 1));
    if (j > 0) {
      EXPECT_EQ(Get(vec, i, j - 1), Get(e.vectors, i, j - 1));
    }
  }

  // Only the complex path leaves the vectors unnormalised.
  Matrix *tilted = MatAdd_Complex(a, CompDef("", 0, 1e-9));
  Matrix *tv = MatEigVec(tilted);
  bool any_off = false;
  for (int j = 0; j < 4; j++) any_off = any_off || std::fabs(ColumnNorm(tv, j) - 1.0) > 1e-6;
  EXPECT_TRUE(any_off);
}

TEST_F(EigenTest, HermitianPairsDescendAndKnownSpectra) {
  for (int n : {1, 2, 5, 12, 40}) {
    SCOPED_TRACE(n);
    Matrix *r = Random(n, kComplex, 100 + n), *a = MatAdd(r, MatConjTrans(r));
    Matrix *values, *vectors;
    MatHermitEig(a, &values, &vectors);
    EXPECT_LE(Residual(a, values, vectors), 20.0);
    for (int j = 0; j < n; j++) {
      EXPECT_EQ(Get(values, j, 0).imag(), 0.0);
      if (j + 1 < n) {
        EXPECT_GE(Get(values, j, 0).real(), Get(values, j + 1, 0).real());
      }
    }
    std::vector<Cx> diagonal(static_cast<size_t>(n) * n);
    for (int j = 0; j < n; j++) diagonal[j * n + j] = Get(values, j, 0);
    ExpectFactors(a, vectors, Square(n, diagonal, kComplex));  // a = V D V', V unitary
    Matrix *general = MatEigVal(a);
    for (int j = 0; j < n; j++)
      EXPECT_NEAR(Get(general, j, 0).real(), Get(values, j, 0).real(), 1e-12 * n);
  }
  // W21+ keeps its two nearly equal largest values apart.
  Matrix *values, *vectors;
  MatHermitEig(W21(kComplex), &values, &vectors);
  EXPECT_NEAR(Get(values, 0, 0).real(), 10.746194182903393, 1e-12);
  EXPECT_NEAR(Get(values, 1, 0).real(), 10.746194182903322, 1e-12);
  EXPECT_NEAR(Get(values, 20, 0).real(), -1.125441522119985, 1e-12);
  // [[2, i], [-i, 2]]: values 3 and 1; only the lower triangle is read.
  MatHermitEig(Square(2, {2, 99, {0, -1}, 2}, kComplex), &values, &vectors);
  EXPECT_TRUE(ValuesAre(values, {3, 1}, 1e-14));
  EXPECT_LE(Residual(Square(2, {2, {0, 1}, {0, -1}, 2}, kComplex), values, vectors), 20.0);
}

TEST_F(EigenTest, BalanceScalesByPowersOfTwo) {
  Matrix *balanced = Square(3, {1, 2, 3, 3, 1, 2, 2, 3, 1});
  Matrix *d, *b;
  MatBalance(balanced, &d, &b);
  EXPECT_TRUE(Holds(d, kReal, 3, 3, {1, 0, 0, 0, 1, 0, 0, 0, 1}));
  EXPECT_TRUE(Holds(b, kReal, 3, 3, {1, 2, 3, 3, 1, 2, 2, 3, 1}));

  for (int cls : {kReal, kComplex}) {
    std::vector<Cx> v = {1, 1e6, {0, 2}, 1e-6, 4, 0, 3, 1e5, {5, 1}};
    if (cls == kReal)
      for (Cx &x : v) x = x.real() + x.imag();
    Matrix *a = Square(3, v, cls);
    MatBalance(a, &d, &b);
    EXPECT_EQ(b->cls, cls);
    for (int i = 0; i < 3; i++)
      for (int j = 0; j < 3; j++) {
        double di = Get(d, i, i).real(), dj = Get(d, j, j).real();
        int exponent;
        EXPECT_EQ(std::frexp(di, &exponent), 0.5);  // a power of two
        if (i != j) {
          EXPECT_EQ(Get(d, i, j), 0.0);
        }
        EXPECT_EQ(Get(b, i, j), Get(a, i, j) * dj / di);  // exact
      }
    EXPECT_LT(Norm1(b), Norm1(a) / 100);
  }
}

// balbak undoes balanc (cbabk2 cbal): with Z the back-transformed identity, A Z = Z B.
TEST_F(EigenTest, BalancingKernelsRoundTrip) {
  const int n = 5;
  double a[n * n] = {1e6, 2,   0, 3e-5, 0,   0, 7,   0, 0,    0, 0, 1, -1,
                     0,   2e-4, 0, 1e4, 2, -2,  1e2, 0, 0, 6e-2, 5e3, 4};
  double ai[n * n] = {};
  ai[3] = 1e-5;
  for (int cls : {kReal, kComplex}) {
    SCOPED_TRACE(cls);
    double b[n * n], bi[n * n], scale[n], z[n * n] = {}, zi[n * n] = {};
    std::copy(a, a + n * n, b);
    std::copy(ai, ai + n * n, bi);
    int low, igh;
    if (cls == kReal)
      balanc(n, b, true, &low, &igh, scale);
    else
      cbal(n, b, bi, true, &low, &igh, scale);
    EXPECT_TRUE(low == 2 && igh == 4) << low << " " << igh;  // row 2 and column 1 isolated
    for (int j = 0; j < n; j++) z[j * n + j] = 1;  // by columns
    if (cls == kReal)
      balbak(n, low, igh, scale, n, z);
    else
      cbabk2(n, low, igh, scale, n, z, zi);
    double worst = 0, size = 0;
    for (int i = 0; i < n; i++)
      for (int j = 0; j < n; j++) {
        Cx az = 0, zb = 0;
        for (int k = 0; k < n; k++) {
          Cx aik(a[i * n + k], cls == kComplex ? ai[i * n + k] : 0.0);
          Cx bkj(b[k * n + j], cls == kComplex ? bi[k * n + j] : 0.0);
          az += aik * Cx(z[j * n + k], zi[j * n + k]);
          zb += Cx(z[k * n + i], zi[k * n + i]) * bkj;
        }
        worst = std::max(worst, std::abs(az - zb));
        size = std::max(size, std::abs(az));
      }
    EXPECT_LE(worst, 1e-15 * size);
  }
}

TEST_F(EigenTest, HessenbergAndSchurFactorOnBothPaths) {
  for (int cls : {kReal, kComplex})
    for (int n : {1, 2, 6, 25}) {
      SCOPED_TRACE(n);
      Matrix *a = Random(n, cls, 7 * n + cls), *h, *p, *t, *u;
      MatHessenberg(a, &h, &p);
      ExpectFactors(a, p, h);
      for (int i = 2; i < n; i++)
        for (int j = 0; j < i - 1; j++) EXPECT_EQ(Get(h, i, j), 0.0);
      MatSchur(a, &t, &u);
      EXPECT_TRUE(t->cls == cls && u->cls == cls);
      ExpectFactors(a, u, t);
      for (int i = 1; i < n; i++)
        for (int j = 0; j < i; j++) {
          // Below the diagonal only the subdiagonal of a real 2 x 2 block.
          bool block = cls == kReal && j == i - 1 && Get(t, i, j) != 0.0 &&
                       (i < 2 || Get(t, i - 1, i - 2) == 0.0) &&
                       (i + 1 >= n || Get(t, i + 1, i) == 0.0);
          if (!block) {
            EXPECT_EQ(Get(t, i, j), 0.0) << i << "," << j;
          }
        }
    }
}

TEST_F(EigenTest, SchurKeepsOrderAndTheComplexKernelTakesRealValues) {
  Matrix *upper = Square(4, {4, 1, 2, 3, 0, -1, 5, 6, 0, 0, 7, 8, 0, 0, 0, 2});
  Matrix *t, *u;
  MatSchur(upper, &t, &u);
  EXPECT_TRUE(Holds(t, kReal, 4, 4, {4, 1, 2, 3, 0, -1, 5, 6, 0, 0, 7, 8, 0, 0, 0, 2}));
  EXPECT_TRUE(Holds(u, kReal, 4, 4, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}));

  // The real path keeps a 2 x 2 block; the complex kernel on the same values
  // (zero imaginary parts) triangularises.
  Matrix *rot = Square(2, {1, -2, 2, 1});
  MatSchur(MatRealToComp(rot), &t, &u);
  EXPECT_EQ(t->cls, kComplex);
  EXPECT_NE(Get(t, 1, 0), 0.0);
  Matrix *ct = C_MatDef("", 2, 2), *cu = C_MatDef("", 2, 2), *crot = MatRealToComp(rot);
  C_Mat_Schur(ct, cu, crot);
  ExpectFactors(crot, cu, ct);
  EXPECT_EQ(Get(ct, 1, 0), 0.0);
  EXPECT_NEAR(std::abs(Get(ct, 0, 0) - Cx(1, 2)) * std::abs(Get(ct, 0, 0) - Cx(1, -2)), 0, 1e-14);
  EXPECT_NEAR(std::abs(Get(ct, 0, 0) + Get(ct, 1, 1) - 2.0), 0, 1e-14);
}

TEST_F(EigenTest, ComplexHelpers) {
  double yr, yi;
  for (Cx x : {Cx(4, 0), Cx(-4, 0), Cx(0, 2), Cx(0, -2), Cx(-3, 4), Cx(3, -4), Cx(0, 0)}) {
    csroot(x.real(), x.imag(), &yr, &yi);
    EXPECT_LE(std::abs(Cx(yr, yi) - std::sqrt(x)), 1e-15) << x;
  }
  double cr, ci;
  cdiv(1, 2, 3, 4, &cr, &ci);
  EXPECT_LE(std::abs(Cx(cr, ci) - Cx(1, 2) / Cx(3, 4)), 1e-16);
  cdiv(1e300, 1e300, 1e300, 1e-300, &cr, &ci);  // no overflow in the divisor's scale
  EXPECT_LE(std::abs(Cx(cr, ci) - Cx(1, 1)), 1e-15);
  testing::internal::CaptureStderr();
  cdiv(1, 1, 0, 0, &cr, &ci);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "cdiv() in c_eigen :  [Zero division]\n");
  EXPECT_FALSE(std::isfinite(cr));
}

// The drivers below the matrix layer order values like the fronts.
TEST_F(EigenTest, DriversOrderLikeTheFronts) {
  const double wr[] = {1, 3, 1, 2, 3}, wi[] = {-1, 0, 1, 0, 0};
  int from[5];
  EigenOrder(5, wr, wi, from);
  EXPECT_EQ(std::vector<int>(from, from + 5), (std::vector<int>{1, 4, 3, 2, 0}));
  EigenOrder(5, wr, nullptr, from);
  EXPECT_EQ(std::vector<int>(from, from + 5), (std::vector<int>{1, 4, 3, 0, 2}));

  double a[9] = {0, 1, 0, 0, 0, 1, 6, -11, 6}, re[3], im[3];  // roots 1, 2, 3
  ASSERT_EQ(RealEigenvalues(3, a, re, im, eps), 0);
  for (int j = 0; j < 3; j++) EXPECT_NEAR(re[j], 3 - j, 1e-12);
  double ar[4] = {0, 1, -1, 0}, ai[4] = {1, 0, 0, 1};  // i I + rotation: 2i, 0
  ASSERT_EQ(ComplexEigenvalues(2, ar, ai, re, im, eps), 0);
  EXPECT_LE(std::abs(Cx(re[0], im[0]) - Cx(0, 2)) + std::abs(Cx(re[1], im[1])), 1e-15);
}

TEST_F(EigenDeathTest, FrontsReportTheirExpression) {
  Matrix *e = Make("E", kReal, 0, 0), *w = Make("W", kReal, 2, 3), *p = Make("P", kPoly, 2, 2);
  Matrix *r = Make("R", kReal, 2, 2, {1, 2, 3, 4});
  std::vector<Cx> v(16, 1.0);
  v[6] = v[9] = NAN;  // above and below the diagonal
  Matrix *n = Make("N", kReal, 4, 4, v);
  v[0] = {1, 1};
  Matrix *cn = Make("C", kComplex, 4, 4, v);
  Matrix *c2 = Make("D", kComplex, 2, 2, {{1, 1}, NAN, 2, 1});
  Matrix *d1, *d2;
  ExpectReports({
      {[=] { MatEigVal(e); }, "eigval(E(0x0)) : Zero-size matrix in MatEigVal()."},
      {[&] { MatEig(w, &d1, &d2); }, "eig(W(2x3)) : Not a square matrix in MatEig()."},
      {[=] { MatEigVec(w); }, "eigvec(W(2x3)) : Not a square matrix in MatEigVec()."},
      {[=] { MatEigValVec(e); }, "eig(E(0x0)) : Zero-size matrix in MatEigValVec()."},
      {[&] { MatBalance(p, &d1, &d2); }, "balance(P(2x2)) : Incorrect class matrix in MatBalance()."},
      {[&] { MatHessenberg(w, &d1, &d2); }, "hess(W(2x3)) : Not a square matrix in MatHessenberg()."},
      {[&] { MatSchur(e, &d1, &d2); }, "schur(E(0x0)) : Zero-size matrix in MatSchur()."},
      {[&] { MatHermitEig(r, &d1, &d2); }, "heig(R(2x2)) : Not a complex matrix in MatHermitEig()."},
      {[&] { MatHermitEig(w, &d1, &d2); }, "heig(W(2x3)) : Not a square matrix in MatHermitEig()."},
      {[=] { MatEigValDef(w); }, "Not a square matrix for 'W(2 x 3)' in MatEigValDef()."},
      {[=] { MatEigVecDef(w); }, "Not a square matrix for 'W(2 x 3)' in MatEigVecDef()."},
      // NaN entries never deflate: every iteration runs out of its budget.
      {[&] { MatEig(n, &d1, &d2); }, "eig(N(4x4)) : Solution will not converge in Mat_Eig()."},
      {[=] { MatEigVal(n); }, "eigval(N(4x4)) : Solution will not converge in Mat_EigVal()."},
      {[&] { MatSchur(n, &d1, &d2); }, "schur(N(4x4)) : Solution will not converge in Mat_Schur()."},
      {[=] { MatEigVec(cn); }, "eig(C(4x4)) : Solution will not converge in C_Mat_Eig()."},
      {[=] { MatEigVal(cn); }, "eigval(C(4x4)) : Solution will not converge in C_Mat_EigVal()."},
      {[&] { MatSchur(cn, &d1, &d2); },
       "schur(C(4x4)) : Solution will not converge in C_Mat_Schur()."},
      {[&] { MatHermitEig(cn, &d1, &d2); },
       "heig(C(4x4)) : Solution will not converge in C_Mat_HermitEig()."},
      // A 2 x 2 block reaches the exceptional shifts too.
      {[=] { MatEigVal(c2); }, "eigval(D(2x2)) : Solution will not converge in C_Mat_EigVal()."},
      {[=] { MatEigVec(c2); }, "eig(D(2x2)) : Solution will not converge in C_Mat_Eig()."},
  });
}

}  // namespace
