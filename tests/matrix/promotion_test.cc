// Class conversions and the promotion table, cell by cell.
#include <gtest/gtest.h>

#include <vector>

#include "matrix/frontend.h"
#include "matrix/operations.h"
#include "tests/matrix/scenario.h"

namespace {

using namespace matrix_test;

class Promotion : public Scenario {};
using PromotionDeathTest = Promotion;

// The classes of the records each cell defines, in order: a's conversions
// (innermost first), then b's. Row: class of a, column: class of b. Cells
// (0, 3) and (0, 5) make a complex class at once (compToPoly, compToRat of a
// real operand); cells (3, 0) and (5, 0) go through the real class first.
// clang-format off
const std::vector<int> kChain[6][6] = {
    {{}, {1}, {2}, {3, 3}, {4}, {5, 5}},
    {{1}, {}, {3, 3}, {3}, {5, 5}, {5}},
    {{2}, {3, 3}, {}, {3}, {4}, {4, 5}},
    {{2, 3}, {3}, {3}, {}, {5, 5}, {5}},
    {{4}, {5, 5}, {4}, {5, 5}, {}, {5}},
    {{4, 5}, {5}, {4, 5}, {5}, {5}, {}},
};
// clang-format on

const int kCommon[6][6] = {
    {-1, 1, 2, 3, 4, 5}, {1, -1, 3, 3, 5, 5}, {2, 3, -1, 3, 4, 5},
    {3, 3, 3, -1, 5, 5}, {4, 5, 4, 5, -1, 5}, {5, 5, 5, 5, 5, -1},
};

TEST_F(Promotion, EveryCellFollowsTheTable) {
  for (int p = 0; p < 6; p++) {
    for (int q = 0; q < 6; q++) {
      if (p == q) continue;
      SCOPED_TRACE(testing::Message() << "a class " << p << ", b class " << q);
      Matrix *a = Make("A", p, 1, 2, {Cx(1, 0), Cx(-2, 0)});
      Matrix *b = Make("B", q, 1, 2, {Cx(3, q & 1 ? 4 : 0), Cx(5, 0)});
      Matrix *before = MatRegistryTail();
      velk_matrix::Operands r = velk_matrix::Promote(a, b);
      std::vector<int> made;
      for (Matrix *m = MatRegistryTail(); m != before; m = m->prev)
        made.insert(made.begin(), m->cls);
      EXPECT_EQ(made, kChain[p][q]);
      EXPECT_EQ(r.a->cls, kCommon[p][q]);
      EXPECT_EQ(r.b->cls, kCommon[p][q]);
      EXPECT_TRUE(ElementsMatchClass(r.a));
      EXPECT_TRUE(ElementsMatchClass(r.b));
      EXPECT_EQ(Values(r.a), Values(a));
      EXPECT_EQ(Values(r.b), Values(b));
      EXPECT_STREQ(r.a->name, "A");
      EXPECT_STREQ(r.b->name, "B");
      MatSweepAll();
    }
  }
}

TEST_F(Promotion, ConversionsBuildElementsOfTheirKind) {
  Matrix *m = Real("M", 1, 2, {2.5, -1});
  Matrix *p = MatRealToPoly(m);
  EXPECT_EQ(p->cls, kPoly);
  EXPECT_STREQ(p->name, "M");
  EXPECT_EQ(PolyAt(p, 1)->degree, 0);
  EXPECT_EQ(PolyAt(p, 1)->status, 3);
  EXPECT_EQ(Coef(PolyAt(p, 1)->coef, 0), Cx(-1));
  Matrix *r = MatRealToRat(m);
  EXPECT_EQ(r->cls, kRat);
  EXPECT_EQ(Coef(RatAt(r, 0)->nume->coef, 0), Cx(2.5));
  EXPECT_EQ(Coef(RatAt(r, 0)->deno->coef, 0), Cx(1));
  EXPECT_EQ(RatAt(r, 0)->status, 2);

  Matrix *c = Comp("C", 1, 1, {Cx(1, 2)});
  EXPECT_EQ(MatRealToComp(m)->cls, kComplex);
  EXPECT_EQ(Values(MatRealToComp(m)), (std::vector<Cx>{2.5, -1}));
  EXPECT_EQ(MatCompToPoly(c)->cls, kCompPoly);
  EXPECT_EQ(Values(MatCompToRat(c)), (std::vector<Cx>{Cx(1, 2)}));
  EXPECT_EQ(MatRealToPoly(c)->cls, kCompPoly);  // complex values need complex coefficients

  // A polynomial p becomes p/1 in p's variable; complex coefficients stay.
  Polynomial *s2 = C_PolyDef("", 2, "z");
  MatReal(s2->coef)[5] = 3;  // imaginary part of the s^2 coefficient
  Matrix *pm = P_MatFillDef(1, 1, s2);
  Matrix *pr = MatPolyToRat(pm);
  EXPECT_EQ(pr->cls, kCompRat);
  EXPECT_EQ(RatAt(pr, 0)->nume->degree, 2);
  EXPECT_EQ(Coef(RatAt(pr, 0)->nume->coef, 2), Cx(0, 3));
  EXPECT_STREQ(RatAt(pr, 0)->deno->variable, "z");
  Matrix *back = MatRealToComp(MatPolyToRat(MatRealToPoly(m)));
  EXPECT_EQ(back->cls, kCompRat);
  EXPECT_TRUE(ElementsMatchClass(back));
  EXPECT_EQ(Values(back), (std::vector<Cx>{2.5, -1}));
}

TEST_F(PromotionDeathTest, ConvertedOperandsKeepTheNamesInLaterReports) {
  Matrix *p = Make("P", kPoly, 1, 2, {1, 2});
  Matrix *c = Comp("C", 1, 2, {Cx(0, 1), 1});
  // Class 2 with class 1 meets in class 3, whose arithmetic comes later.
  EXPECT_EXIT(
      MatAdd(p, c), testing::ExitedWithCode(0),
      Fatal("P(1x2) + C(1x2) : Polynomial matrix arithmetic is not available yet in MatAdd()."));
  EXPECT_EXIT(
      MatMul(MatTrans(p), Make("R", kRat, 1, 1, {1})), testing::ExitedWithCode(0),
      Fatal("(2x1) * R(1x1) : Rational matrix arithmetic is not available yet in MatMul()."));
  EXPECT_EXIT(MatPolyToRat(c), testing::ExitedWithCode(0),
              Fatal("Incorrect class matrix for 'C(1 x 2)' in MatPolyToRat()."));
  EXPECT_EXIT(MatCompToPoly(p), testing::ExitedWithCode(0),
              Fatal("Incorrect class matrix for 'P(1 x 2)' in MatCompToPoly()."));
}

}  // namespace
