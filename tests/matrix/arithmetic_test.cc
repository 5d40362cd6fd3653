// Values of the real and complex layers, checked against plain models.
#include <cmath>
#include <random>

#include "matrix/operations.h"
#include "tests/matrix/scenario.h"

// The plain product, in the textbook order.
static std::vector<Cx> Product(const std::vector<Cx> &a, const std::vector<Cx> &b, int n, int m,
                               int p) {
  std::vector<Cx> c(static_cast<size_t>(n) * p);
  for (int i = 0; i < n; i++)
    for (int j = 0; j < p; j++)
      for (int k = 0; k < m; k++) c[i * p + j] += a[i * m + k] * b[k * p + j];
  return c;
}

TEST_F(Scenario, ProductMatchesThePlainModelAndPowersRepeatIt) {
  std::mt19937 rng(20240611);
  std::uniform_int_distribution<int> size(0, 9);
  std::uniform_real_distribution<double> u(-2, 2);
  auto random = [&](int count, bool complex) {
    std::vector<Cx> v(count);
    for (Cx &x : v) x = complex ? Cx(u(rng), u(rng)) : Cx(u(rng));
    return v;
  };
  for (int round = 0; round < 60; round++) {
    int n = size(rng), m = size(rng), p = size(rng);
    bool ca = round % 3 == 1, cb = round % 3 == 2 || round % 5 == 0;
    std::vector<Cx> va = random(n * m, ca), vb = random(m * p, cb);
    Matrix *c = MatMul(Make("A", ca, n, m, va), Make("B", cb, m, p, vb));
    EXPECT_TRUE(Holds(c, ca || cb, n, p, Product(va, vb, n, m, p), 1e-12 * (m + 1)));
    MatSweepAll();
  }
  Matrix *a = Make("A", kComplex, 2, 2, {1, Cx(0, 1), 0, 1});
  EXPECT_TRUE(Holds(MatPow(a, 0), kComplex, 2, 2, {1, 0, 0, 1}));
  EXPECT_TRUE(Holds(MatPow(a, 10), kComplex, 2, 2, {1, Cx(0, 10), 0, 1}));
}

TEST_F(Scenario, ElementwiseScalarAndOneOperandForms) {
  Matrix *a = Make("A", kReal, 1, 2, {1, -2}), *b = Make("B", kComplex, 1, 2, {Cx(0, 2), 4});
  EXPECT_TRUE(Holds(MatAdd(a, b), kComplex, 1, 2, {Cx(1, 2), 2}));
  EXPECT_TRUE(Holds(MatSub(b, a), kComplex, 1, 2, {Cx(-1, 2), 6}));
  EXPECT_TRUE(Holds(MatMulElem(a, b), kComplex, 1, 2, {Cx(0, 2), -8}));
  EXPECT_TRUE(Holds(MatDivElem(a, b), kComplex, 1, 2, {Cx(0, -0.5), -0.5}));
  Complex *z = CompSetStatus(CompDef("z", 1, 1), 2);
  EXPECT_TRUE(Holds(MatSub_double(1, a), kReal, 1, 2, {0, 3}));
  EXPECT_TRUE(Holds(MatAdd_Complex(a, z), kComplex, 1, 2, {Cx(2, 1), Cx(-1, 1)}));
  EXPECT_TRUE(Holds(MatSub_Complex(z, a), kComplex, 1, 2, {Cx(0, 1), Cx(3, 1)}));
  EXPECT_TRUE(Holds(MatScaleC(a, z), kComplex, 1, 2, {Cx(1, 1), Cx(-2, -2)}));
  EXPECT_TRUE(Holds(MatInvElem(b), kComplex, 1, 2, {Cx(0, -0.5), 0.25}));
  Matrix *x = Make("x", kReal, 1, 3, {1, 2, 3}), *y = Make("y", kComplex, 1, 3, {Cx(0, 1), 1, 0});
  EXPECT_TRUE(Holds(MatVectorProduct(x, y), kComplex, 1, 3, {-3, Cx(0, 3), Cx(1, -2)}));
  EXPECT_TRUE(Holds(MatRealAndImag(a, MatScale(a, 3)), kComplex, 1, 2, {Cx(1, 3), Cx(-2, -6)}));
  // A root of a negative element is complex; integral powers stay real.
  EXPECT_TRUE(Holds(MatPowElemToReal(a, 0.5), kComplex, 1, 2, {1, Cx(0, std::sqrt(2.0))}, 1e-15));
  EXPECT_TRUE(Holds(MatPowElem(a, -3), kReal, 1, 2, {1, -0.125}));
  EXPECT_TRUE(Holds(MatPowElemEach(b, MatIncrement(a)), kComplex, 1, 2, {Cx(-4), 0.25}));
  EXPECT_TRUE(Holds(MatRemElemEach(MatScale(a, 7), MatSub_double(a, 4)), kReal, 1, 2, {1, -2}));
  EXPECT_EQ(MatScaleSelf(a, 3), a);
  EXPECT_TRUE(Holds(a, kReal, 1, 2, {3, -6}));
  CompUndef(z);
}

// Transposes, conjugates and concatenations only move elements: every class.
TEST_F(Scenario, StructuralOperationsServeEveryClass) {
  std::vector<Cx> v = {Cx(1, 1), 2, 3, 4, 5, Cx(6, -6)};
  EXPECT_TRUE(Holds(MatConjTrans(Make("C", kComplex, 2, 3, v)), kComplex, 3, 2,
                    {Cx(1, -1), 4, 2, 5, 3, Cx(6, 6)}));
  EXPECT_TRUE(Holds(MatTrans(Make("P", kCompPoly, 2, 3, v)), kCompPoly, 3, 2,
                    {Cx(1, 1), 4, 2, 5, 3, Cx(6, -6)}));
  Matrix *p = Make("P", kCompPoly, 1, 1, {Cx(1, 1)});
  EXPECT_TRUE(Holds(MatNegate(MatConj(p)), kCompPoly, 1, 1, {Cx(-1, 1)}));
  Matrix *row = MatCatRow(Make("R", kRat, 2, 1, {7, 8}), Make("A", kReal, 2, 2, {1, 2, 3, 4}));
  EXPECT_TRUE(Holds(row, kRat, 2, 3, {7, 1, 2, 8, 3, 4}));
  // A rational negates its numerator only.
  EXPECT_TRUE(Holds(MatNegate(row), kRat, 2, 3, {-7, -1, -2, -8, -3, -4}));
  Matrix *c = Make("B", kComplex, 1, 3, {Cx(0, 1), 3, 4});
  EXPECT_TRUE(Holds(MatCatColumn(row, c), kCompRat, 3, 3, {7, 1, 2, 8, 3, 4, Cx(0, 1), 3, 4}));
}
