// Polynomial and rational matrix layers: mixed classes, products and powers,
// rational results, parts, evaluation, listings and registry hygiene.
#include <cmath>
#include <cstring>
#include <tuple>

#include "core/scope.h"
#include "core/text.h"
#include "matrix/block.h"
#include "matrix/operations.h"
#include "matrix/polynomial_matrix.h"
#include "support/poly.h"
#include "tests/matrix/scenario.h"

namespace {

// A named class-2 matrix of the given polynomials (row by row).
Matrix *PolyMatrix(const char *name, int rows, int cols, std::vector<Polynomial *> e) {
  Matrix *m = MatSetName(P_MatDef("", rows, cols), name);
  for (size_t k = 0; k < e.size(); k++) {
    MatElementRelease(m->cls, At<Polynomial>(m, static_cast<long long>(k)));
    static_cast<Polynomial **>(m->elements)[k] = PolyOwn(PolyDup(e[k]), kOwnedElement);
  }
  return m;
}

using V = std::vector<double>;

std::string Stdout(const std::function<void()> &run) {
  testing::internal::CaptureStdout();
  run();
  return testing::internal::GetCapturedStdout();
}

}  // namespace

TEST_F(Scenario, MixedClassesComputeThroughEveryArm) {
  // Every pair of classes: results land in the common class with the plain values.
  for (int p = 0; p < 6; p++)
    for (int q = 0; q < 6; q++) {
      SCOPED_TRACE(testing::Message() << "a class " << p << ", b class " << q);
      std::vector<Cx> va = {Cx(1, p & 1 ? 2 : 0), -2}, vb = {Cx(3, q & 1 ? 4 : 0), 5};
      Matrix *a = Make("A", p, 1, 2, va), *b = Make("B", q, 1, 2, vb);
      int common = MatCommonClass(p, q);
      EXPECT_TRUE(Holds(MatAdd(a, b), common, 1, 2, {va[0] + vb[0], va[1] + vb[1]}, 1e-15));
      EXPECT_TRUE(Holds(MatSub(a, b), common, 1, 2, {va[0] - vb[0], va[1] - vb[1]}, 1e-15));
      EXPECT_TRUE(Holds(MatMulElem(a, b), common, 1, 2, {va[0] * vb[0], va[1] * vb[1]}, 1e-15));
      Matrix *col = Make("C", q, 2, 1, vb);
      EXPECT_TRUE(Holds(MatMul(a, col), common, 1, 1, {va[0] * vb[0] + va[1] * vb[1]}, 1e-14));
      MatSweepAll();
    }
}

TEST_F(Scenario, PolynomialMatrixArithmetic) {
  Polynomial *s = P({0, 1}), *one = P({1}), *s1 = P({1, 1});
  Matrix *a = PolyMatrix("A", 2, 2, {s, one, s1, s});  // [s 1; s+1 s]
  Matrix *a2 = MatMul(a, a);  // [s^2+s+1 2s; 2s^2+2s s^2+s+1]
  Matrix *a3 = MatPow(a, 3), *a3b = MatMul(a2, a);
  for (long long k = 0; k < 4; k++) EXPECT_EQ(Coefs(At<Polynomial>(a3, k)), Coefs(At<Polynomial>(a3b, k)));
  Matrix *vs = MatVectorProduct(PolyMatrix("U", 1, 3, {s, one, one}), PolyMatrix("W", 1, 3, {one, s, one}));
  Matrix *pe = MatPowElemEach(a, Make("E", kReal, 2, 2, {0, 3, 2, 1}));
  const std::tuple<const char *, Matrix *, long long, V> cases[] = {
      {"a^2", a2, 0, {1, 1, 1}}, {"a^2", a2, 1, {0, 2}}, {"a^2", a2, 2, {0, 2, 2}},
      {"a^0", MatPow(a, 0), 0, {1}}, {"a^0", MatPow(a, 0), 1, {0}},
      {"a.^2", MatPowElem(a, 2), 2, {1, 2, 1}}, {"a++", MatIncrement(a), 0, {1, 1}},
      {"2-a", MatSub_double(2, a), 2, {1, -1}}, {"2a", MatScale(a, 2), 2, {2, 2}},
      {"-a", MatNegate(a), 2, {-1, -1}}, {"u x w", vs, 0, {1, -1}}, {"u x w", vs, 1, {1, -1}},
      {"u x w", vs, 2, {-1, 0, 1}}, {"a.^E", pe, 0, {1}}, {"a.^E", pe, 2, {1, 2, 1}}};
  for (const auto &[what, m, k, want] : cases) {
    SCOPED_TRACE(testing::Message() << what << " element " << k);
    ASSERT_EQ(m->cls, kPoly);
    EXPECT_EQ(Coefs(At<Polynomial>(m, k)), want);
  }
  Complex *i = CompDef("", 0, 1);
  Matrix *ai = MatAdd_Complex(a, i);
  ASSERT_EQ(ai->cls, kCompPoly);
  EXPECT_EQ(At<Polynomial>(ai, 0)->kind, 1);
  Matrix *zm = MatSub_Complex(i, a);  // i - (s + 1) in element 2
  ASSERT_EQ(zm->cls, kCompPoly);
  EXPECT_EQ(Coefs(At<Polynomial>(zm, 2)), (V{-1, -1}));
  EXPECT_EQ(static_cast<ComplexValue *>(At<Polynomial>(zm, 2)->coef->elements)[0].im, 1);
  // In place scaling keeps the record.
  Matrix *c = MatDup(a);
  EXPECT_EQ(MatScaleSelf(c, 3), c);
  EXPECT_EQ(Coefs(At<Polynomial>(c, 2)), (V{3, 3}));
}

TEST_F(Scenario, DivisionInversesAndPartsGiveRationals) {
  Polynomial *s = P({0, 1}), *s1 = P({1, 1});
  Matrix *a = PolyMatrix("A", 1, 2, {s1, s}), *b = PolyMatrix("B", 1, 2, {s, s1});
  Matrix *q = MatDivElem(a, b);
  ASSERT_EQ(q->cls, kRat);
  EXPECT_EQ(Coefs(At<Rational>(q, 0)->nume), (V{1, 1}));
  EXPECT_EQ(Coefs(At<Rational>(q, 0)->deno), (V{0, 1}));
  Matrix *inv = MatInvElem(a);
  EXPECT_EQ(Coefs(At<Rational>(inv, 1)->deno), (V{0, 1}));
  Matrix *sum = MatAdd(q, inv);  // (s+1)/s + 1/(s+1) keeps both denominators
  EXPECT_EQ(At<Rational>(sum, 0)->deno->degree, 2);
  // Parts of a complex rational matrix: 1 / (s + i) = (s - i) / (s^2 + 1).
  Complex *i = CompDef("", 0, 1);
  Matrix *c = MatInvElem(MatAdd_Complex(PolyMatrix("S", 1, 1, {s}), i));
  ASSERT_EQ(c->cls, kCompRat);
  Matrix *re = MatRealPart(c), *im = MatImagPart(c);
  ASSERT_EQ(re->cls, kRat);
  EXPECT_EQ(Coefs(At<Rational>(re, 0)->nume), (V{0, 1}));
  EXPECT_EQ(Coefs(At<Rational>(re, 0)->deno), (V{1, 0, 1}));
  EXPECT_EQ(Coefs(At<Rational>(im, 0)->nume), (V{-1}));
  Matrix *back = MatRealAndImag(re, im);
  ASSERT_EQ(back->cls, kCompRat);
  EXPECT_EQ(static_cast<ComplexValue *>(At<Rational>(back, 0)->nume->coef->elements)[0].im, -1);
  Matrix *pp = MatRealAndImag(a, b);
  ASSERT_EQ(pp->cls, kCompPoly);
  EXPECT_EQ(static_cast<ComplexValue *>(At<Polynomial>(pp, 0)->coef->elements)[1].im, 1);
  EXPECT_EQ(Coefs(At<Polynomial>(MatImagPart(pp), 1)), (V{1, 1}));
}

TEST_F(Scenario, EvaluationAndScalarForms) {
  Polynomial *s = P({0, 1}), *s1 = P({1, 1}), *sq = P({0, 0, 1});
  Matrix *a = PolyMatrix("A", 1, 2, {s1, sq});
  EXPECT_TRUE(Holds(MatEval(a, 3), kReal, 1, 2, {4, 9}));
  Complex *i = CompDef("", 0, 1);
  EXPECT_TRUE(Holds(MatEvalC(a, i), kComplex, 1, 2, {Cx(1, 1), -1}));
  EXPECT_TRUE(Holds(MatEvalMElem(a, Make("X", kReal, 1, 2, {2, -3})), kReal, 1, 2, {3, 9}));
  Matrix *ap = MatEvalP(a, s1);  // s + 2, (s + 1)^2
  EXPECT_EQ(Coefs(At<Polynomial>(ap, 1)), (V{1, 2, 1}));
  Rational *inv_s = RatInvPoly(s);
  Matrix *ar = MatEvalR(a, inv_s);
  ASSERT_EQ(ar->cls, kRat);
  EXPECT_DOUBLE_EQ(RatEval(At<Rational>(ar, 1), 2), 0.25);
  Matrix *q = MatInvElem(a);
  EXPECT_TRUE(Holds(MatEval(q, 1), kReal, 1, 2, {0.5, 1}));
  // Matrix arguments: the block of each element.
  Matrix *x = Make("X", kReal, 2, 2, {1, 2, 0, 1});
  Matrix *blocks = MatEvalM(a, x);  // [X + I, X^2]
  EXPECT_TRUE(Holds(blocks, kReal, 2, 4, {2, 2, 1, 4, 0, 2, 0, 1}));
  EXPECT_TRUE(Holds(PolyEvalMat(sq, x), kReal, 2, 2, {1, 4, 0, 1}));
  // Rational elements: n(X) inv(d(X)), here inv(X + I) and inv(X^2).
  EXPECT_TRUE(Holds(MatEvalM(q, x), kReal, 2, 4, {0.5, -0.5, 1, -4, 0, 0.5, 0, 1}));
  // Scalar forms lift the matrix to the scalar's class.
  Matrix *r = Make("R", kReal, 1, 2, {1, 2});
  Matrix *rp = MatAdd_Polynomial(r, s);
  ASSERT_EQ(rp->cls, kPoly);
  EXPECT_EQ(Coefs(At<Polynomial>(rp, 1)), (V{2, 1}));
  EXPECT_EQ(Coefs(At<Polynomial>(MatSub_Polynomial(s, r), 0)), (V{-1, 1}));
  EXPECT_EQ(Coefs(At<Polynomial>(MatScaleP(r, s), 1)), (V{0, 2}));
  Matrix *rr = MatAdd_Rational(a, inv_s);
  ASSERT_EQ(rr->cls, kRat);
  EXPECT_DOUBLE_EQ(RatEval(At<Rational>(rr, 0), 1), 3);
  EXPECT_DOUBLE_EQ(RatEval(At<Rational>(MatSub_Rational(inv_s, a), 0), 1), -1);
  EXPECT_DOUBLE_EQ(RatEval(At<Rational>(MatScaleR(a, inv_s), 1), 4), 4);
  EXPECT_EQ(MatScaleC(a, i)->cls, kCompPoly);
}

TEST_F(Scenario, VariableListingAndSaveForm) {
  Polynomial *s1 = P({1, 1}), *s = P({0, 2});
  Matrix *a = PolyMatrix("A", 1, 2, {s1, s});
  EXPECT_EQ(MatSetVar(a, "z"), a);
  EXPECT_STREQ(At<Polynomial>(a, 1)->variable, "z");
  Matrix *sum = MatAdd(a, a);  // the variable travels with the elements
  EXPECT_STREQ(At<Polynomial>(sum, 0)->variable, "z");
  EXPECT_EQ(Stdout([&] { MatWriteSaveForm(stdout, a, 1, ""); }),
            "A = [\n [ z + 1,  \n   2*z ]];\n\n");
  EXPECT_EQ(Stdout([&] { MatGetPolyText().print_body(a); }),
            " (  1,  1) = z + 1\n (  1,  2) = 2 z\n");
  Matrix *q = MatSetName(MatInvElem(a), "Q");
  EXPECT_EQ(Stdout([&] { MatWriteSaveForm(stdout, MatCut(q, 1, 1, 1, 1), 0, ""); }),
            "[[ (1)/\n   (z + 1) ]]");
  EXPECT_EQ(Stdout([&] { MatGetRatText().print_body(MatCut(q, 1, 2, 1, 2)); }),
            "               1\n"
            " (  1,  1) = -----\n"
            "              2 z\n");
}

TEST_F(Scenario, ScopesLeaveNoElementObjects) {
  Polynomial *s = P({0, 1}), *s1 = P({1, 1});
  Matrix *a = MatSetStatus(PolyMatrix("A", 2, 2, {s, s1, s1, s}), 2);
  PolySweep();
  long polys = PolyRegistryCheck(), rats = RatRegistryCheck();
  ObjectScope(1);
  MatEval(MatMul(MatInvElem(MatPow(MatAdd(a, a), 3)), MatDivElem(a, a)), 2);
  // Element objects are owned by their matrices, never in the registries.
  EXPECT_EQ(PolyRegistryCheck(), polys + 1);  // the scope's mark
  EXPECT_EQ(RatRegistryCheck(), rats + 1);
  ObjectScope(0);
  EXPECT_EQ(PolyRegistryCheck(), polys);
  EXPECT_EQ(RatRegistryCheck(), rats);
  MatUndef(a);
}
