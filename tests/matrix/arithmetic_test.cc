// Values of the real and complex layers, checked against plain models.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "matrix/operations.h"
#include "tests/matrix/scenario.h"

namespace {

using namespace matrix_test;

class Arithmetic : public Scenario {
 protected:
  std::mt19937 rng_{20240611};
  std::vector<Cx> Random(int n, bool complex) {
    std::uniform_real_distribution<double> u(-2, 2);
    std::vector<Cx> v;
    for (int k = 0; k < n; k++) v.push_back(complex ? Cx(u(rng_), u(rng_)) : Cx(u(rng_)));
    return v;
  }
};

// The plain product, in the textbook order.
std::vector<Cx> Reference(const std::vector<Cx> &a, const std::vector<Cx> &b, int n, int m, int p) {
  std::vector<Cx> c(static_cast<size_t>(n) * p);
  for (int i = 0; i < n; i++)
    for (int j = 0; j < p; j++)
      for (int k = 0; k < m; k++) c[i * p + j] += a[i * m + k] * b[k * p + j];
  return c;
}

void ExpectNear(const std::vector<Cx> &got, const std::vector<Cx> &want, double tol) {
  ASSERT_EQ(got.size(), want.size());
  for (size_t k = 0; k < got.size(); k++)
    EXPECT_LE(std::abs(got[k] - want[k]), tol) << "entry " << k;
}

TEST_F(Arithmetic, ProductMatchesThePlainModelOnRandomMatrices) {
  std::uniform_int_distribution<int> size(0, 9);
  for (int round = 0; round < 60; round++) {
    int n = size(rng_), m = size(rng_), p = size(rng_);
    bool ca = round % 3 == 1, cb = round % 3 == 2 || round % 5 == 0;
    std::vector<Cx> va = Random(n * m, ca), vb = Random(m * p, cb);
    Matrix *a = Make("A", ca, n, m, va), *b = Make("B", cb, m, p, vb);
    Matrix *c = MatMul(a, b);
    EXPECT_EQ(c->cls, (ca || cb) ? kComplex : kReal);
    EXPECT_EQ(c->rows, n);
    EXPECT_EQ(c->cols, p);
    ExpectNear(Values(c), Reference(va, vb, n, m, p), 1e-12 * (m + 1));
    MatSweepAll();
  }
}

TEST_F(Arithmetic, ElementwiseOperationsAndMixedClasses) {
  std::vector<Cx> va = Random(12, false), vb = Random(12, true);
  Matrix *a = Real("A", 3, 4, va), *b = Comp("B", 3, 4, vb);
  auto each = [&](auto op) {
    std::vector<Cx> v;
    for (size_t k = 0; k < va.size(); k++) v.push_back(op(va[k], vb[k]));
    return v;
  };
  Matrix *sum = MatAdd(a, b);
  EXPECT_EQ(sum->cls, kComplex);
  EXPECT_EQ(Values(sum), each([](Cx x, Cx y) { return x + y; }));
  EXPECT_EQ(Values(MatSub(b, a)), each([](Cx x, Cx y) { return y - x; }));
  EXPECT_EQ(Values(MatMulElem(a, b)), each([](Cx x, Cx y) { return x * y; }));
  ExpectNear(Values(MatDivElem(a, b)), each([](Cx x, Cx y) { return x / y; }), 1e-14);
  Matrix *same = MatSub(a, a);
  EXPECT_EQ(same->cls, kReal);
  EXPECT_EQ(Values(same), std::vector<Cx>(12, 0.0));
  EXPECT_EQ(Values(MatDivElem(Real("", 1, 2, {1, -1}), Real("", 1, 2, {4, 0})))[0], Cx(0.25));

  Matrix *m = Real("M", 1, 3, {1, -2, 4});
  Complex *z = CompSetStatus(CompDef("z", 1, 1), 2);
  EXPECT_EQ(Values(MatAdd_double(m, 0.5)), (std::vector<Cx>{1.5, -1.5, 4.5}));
  EXPECT_EQ(Values(MatSub_double(m, 1)), (std::vector<Cx>{0, -3, 3}));
  EXPECT_EQ(Values(MatSub_double(1, m)), (std::vector<Cx>{0, 3, -3}));
  Matrix *mz = MatAdd_Complex(m, z);
  EXPECT_EQ(mz->cls, kComplex);
  EXPECT_EQ(Values(mz), (std::vector<Cx>{Cx(2, 1), Cx(-1, 1), Cx(5, 1)}));
  EXPECT_EQ(Values(MatSub_Complex(z, m)), (std::vector<Cx>{Cx(0, 1), Cx(3, 1), Cx(-3, 1)}));
  EXPECT_EQ(Values(MatSub_Complex(mz, z)), (std::vector<Cx>{1, -2, 4}));
  EXPECT_EQ(Values(MatScale(m, -2)), (std::vector<Cx>{-2, 4, -8}));
  EXPECT_EQ(Values(MatScaleC(m, z)), (std::vector<Cx>{Cx(1, 1), Cx(-2, -2), Cx(4, 4)}));
  EXPECT_EQ(MatScaleSelf(m, 3), m);
  EXPECT_EQ(Values(m), (std::vector<Cx>{3, -6, 12}));
  CompUndef(z);
}

TEST_F(Arithmetic, OneOperandForms) {
  Matrix *c = Comp("C", 2, 2, {Cx(1, 1), Cx(0, -2), 4, Cx(-1, 0.5)});
  EXPECT_EQ(Values(MatNegate(c)), (std::vector<Cx>{Cx(-1, -1), Cx(0, 2), -4, Cx(1, -0.5)}));
  EXPECT_EQ(Values(MatIncrement(c)), (std::vector<Cx>{Cx(2, 1), Cx(1, -2), 5, Cx(0, 0.5)}));
  EXPECT_EQ(Values(MatDecrement(Real("", 1, 2, {1, 0}))), (std::vector<Cx>{0, -1}));
  EXPECT_EQ(Values(MatConj(c)), (std::vector<Cx>{Cx(1, -1), Cx(0, 2), 4, Cx(-1, -0.5)}));
  Matrix *h = MatConjTrans(c);
  EXPECT_EQ(Values(h), (std::vector<Cx>{Cx(1, -1), 4, Cx(0, 2), Cx(-1, -0.5)}));
  Matrix *t = MatTrans(Real("R", 2, 3, {1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(t->rows, 3);
  EXPECT_EQ(Values(t), (std::vector<Cx>{1, 4, 2, 5, 3, 6}));
  EXPECT_EQ(Values(MatConjTrans(Real("", 1, 2, {1, 2}))), (std::vector<Cx>{1, 2}));
  ExpectNear(Values(MatInvElem(c)), {1.0 / Cx(1, 1), 1.0 / Cx(0, -2), 0.25, 1.0 / Cx(-1, 0.5)},
             1e-15);
  EXPECT_TRUE(std::isinf(Values(MatInvElem(Real("", 1, 1, {0})))[0].real()));
}

TEST_F(Arithmetic, PowersAndRemainders) {
  std::vector<Cx> va = Random(9, true);
  Matrix *a = Comp("A", 3, 3, va);
  std::vector<Cx> want = {1, 0, 0, 0, 1, 0, 0, 0, 1};
  Matrix *p0 = MatPow(a, 0);
  EXPECT_EQ(p0->cls, kComplex);
  EXPECT_EQ(Values(p0), want);
  for (int n = 1; n <= 6; n++) {
    want = Reference(want, va, 3, 3, 3);
    ExpectNear(Values(MatPow(a, n)), want, 1e-12);
  }
  EXPECT_EQ(Values(MatPow(Real("", 2, 2, {1, 1, 0, 1}), 10)), (std::vector<Cx>{1, 10, 0, 1}));
  EXPECT_EQ(MatPow(MatZDef(0), 3)->rows, 0);

  Matrix *m = Real("M", 1, 4, {-2, 3, 0.5, 4});
  EXPECT_EQ(Values(MatPowElem(m, 3)), (std::vector<Cx>{-8, 27, 0.125, 64}));
  EXPECT_EQ(Values(MatPowElem(m, -1)), (std::vector<Cx>{-0.5, 1.0 / 3, 2, 0.25}));
  EXPECT_EQ(Values(MatPowElem(Comp("", 1, 1, {Cx(0, 1)}), 2)), (std::vector<Cx>{-1}));
  Matrix *square = MatPowElemToReal(m, 2);
  EXPECT_EQ(square->cls, kReal);
  EXPECT_EQ(Values(square), (std::vector<Cx>{4, 9, 0.25, 16}));
  EXPECT_EQ(MatPowElemToReal(Real("", 1, 2, {4, 9}), 0.5)->cls, kReal);
  Matrix *root = MatPowElemToReal(m, 0.5);  // a negative element needs the complex root
  EXPECT_EQ(root->cls, kComplex);
  ExpectNear(Values(root), {Cx(0, std::sqrt(2.0)), std::sqrt(3.0), std::sqrt(0.5), 2}, 1e-15);
  Complex *i = CompSetStatus(CompDef("i", 0, 1), 2);
  ExpectNear(Values(MatPowElemToReal(Real("", 1, 1, {std::exp(1.0)}), i)),
             {Cx(std::cos(1.0), std::sin(1.0))}, 1e-15);
  CompUndef(i);

  Matrix *e = MatPowElemEach(Comp("", 1, 3, {Cx(0, 1), 2, 4}), Real("", 1, 3, {3, -1, 0.5}));
  ExpectNear(Values(e), {Cx(0, -1), 0.5, 2}, 1e-15);
  EXPECT_EQ(Values(MatRemElem(Real("", 1, 3, {7, -7, 5.5}), 3)), (std::vector<Cx>{1, -1, 2.5}));
  EXPECT_EQ(Values(MatRemElemEach(Real("", 1, 2, {7, -7}), Real("", 1, 2, {-3, 4}))),
            (std::vector<Cx>{1, -3}));
}

TEST_F(Arithmetic, VectorProductAndRealAndImag) {
  Matrix *x = Real("x", 3, 1, {1, 0, 0}), *y = Real("y", 3, 1, {0, 1, 0});
  EXPECT_EQ(Values(MatVectorProduct(x, y)), (std::vector<Cx>{0, 0, 1}));
  Matrix *u = Real("u", 1, 3, {1, 2, 3});
  Matrix *v = Comp("v", 1, 3, {Cx(0, 1), 1, 0});
  Matrix *w = MatVectorProduct(u, v);
  EXPECT_EQ(w->cls, kComplex);
  EXPECT_EQ(w->rows, 1);
  EXPECT_EQ(Values(w), (std::vector<Cx>{-3, Cx(0, 3), Cx(1, -2)}));

  Matrix *c = MatRealAndImag(Real("", 1, 2, {1, 2}), Real("", 1, 2, {-3, 4}));
  EXPECT_EQ(c->cls, kComplex);
  EXPECT_EQ(Values(c), (std::vector<Cx>{Cx(1, -3), Cx(2, 4)}));
}

// Transposes, conjugates and concatenations only move elements: every class.
TEST_F(Arithmetic, StructuralOperationsServeEveryClass) {
  Matrix *p = Make("P", kCompPoly, 2, 3, {Cx(1, 1), 2, 3, 4, 5, Cx(6, -6)});
  Matrix *t = MatTrans(p);
  EXPECT_EQ(t->cls, kCompPoly);
  EXPECT_EQ(Values(t), (std::vector<Cx>{Cx(1, 1), 4, 2, 5, 3, Cx(6, -6)}));
  EXPECT_NE(PolyAt(t, 0), PolyAt(p, 0));
  EXPECT_EQ(Values(MatConjTrans(p))[5], Cx(6, 6));
  EXPECT_EQ(Values(MatConj(p))[0], Cx(1, -1));

  Matrix *r = Make("R", kRat, 2, 1, {7, 8});
  Matrix *row = MatCatRow(r, Real("A", 2, 2, {1, 2, 3, 4}));
  EXPECT_EQ(row->cls, kRat);
  EXPECT_EQ(row->cols, 3);
  EXPECT_EQ(Values(row), (std::vector<Cx>{7, 1, 2, 8, 3, 4}));
  EXPECT_TRUE(ElementsMatchClass(row));
  Matrix *col = MatCatColumn(Real("A", 1, 2, {1, 2}), Comp("B", 2, 2, {Cx(0, 1), 3, 4, 5}));
  EXPECT_EQ(col->cls, kComplex);
  EXPECT_EQ(Values(col), (std::vector<Cx>{1, 2, Cx(0, 1), 3, 4, 5}));
  EXPECT_EQ(MatCatRow(MatZDef2(2, 0), MatZDef2(2, 0))->cols, 0);

  // Negation: every coefficient of a polynomial, the numerator of a rational.
  Matrix *nr = MatNegate(Make("R", kRat, 1, 1, {2}));
  EXPECT_EQ(Coef(RatAt(nr, 0)->nume->coef, 0), Cx(-2));
  EXPECT_EQ(Coef(RatAt(nr, 0)->deno->coef, 0), Cx(1));
  EXPECT_EQ(Values(MatNegate(p))[0], Cx(-1, -1));
}

}  // namespace
