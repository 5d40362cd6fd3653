// Class conversions and the promotion table, cell by cell.
#include "matrix/frontend.h"
#include "matrix/operations.h"
#include "tests/matrix/scenario.h"

// The classes of the records each cell defines, in order: a's conversions
// (innermost first), then b's; the last is the common class. Row: class of a,
// column: class of b. Cells (0, 3) and (0, 5) make a complex class at once
// (compToPoly, compToRat of a real operand); cells (3, 0) and (5, 0) go
// through the real class first.
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

TEST_F(Scenario, PromotionFollowsTheTableCellByCell) {
  for (int p = 0; p < 6; p++) {
    for (int q = 0; q < 6; q++) {
      if (p == q) continue;
      SCOPED_TRACE(testing::Message() << "a class " << p << ", b class " << q);
      std::vector<Cx> va = {1, -2}, vb = {Cx(3, q & 1 ? 4 : 0), 5};
      Matrix *a = Make("A", p, 1, 2, va), *b = Make("B", q, 1, 2, vb), *before = MatRegistryTail();
      velk_matrix::Operands r = velk_matrix::Promote(a, b);
      std::vector<int> got;
      for (Matrix *m = MatRegistryTail(); m != before; m = m->prev) got.insert(got.begin(), m->cls);
      EXPECT_EQ(got, kChain[p][q]);
      EXPECT_TRUE(Holds(r.a, kChain[p][q].back(), 1, 2, va));
      EXPECT_TRUE(Holds(r.b, kChain[p][q].back(), 1, 2, vb));
      MatSweepAll();
    }
  }
}

// A polynomial p becomes an owned p/1 in p's variable; complex coefficients
// stay.
TEST_F(Scenario, PolynomialToRationalKeepsVariableAndCoefficients) {
  Polynomial *s2 = C_PolyDef("", 2, "z");
  MatReal(s2->coef)[5] = 3;  // imaginary part of the z^2 coefficient
  Rational *r = At<Rational>(MatPolyToRat(P_MatFillDef(1, 1, s2)), 0);
  EXPECT_TRUE(Holds(r->nume->coef, kComplex, 1, 3, {0, 0, Cx(0, 3)}));
  EXPECT_TRUE(Holds(r->deno->coef, kComplex, 1, 1, {1}));
  EXPECT_STREQ(r->deno->variable, "z");
}
