// Cut and put with their edge cases, real and imaginary parts.
#include "matrix/block.h"

#include <gtest/gtest.h>

#include <vector>

#include "matrix/operations.h"
#include "tests/matrix/scenario.h"

namespace {

using namespace matrix_test;

class Block : public Scenario {};
using BlockDeathTest = Block;

std::vector<Cx> Range(int n) {
  std::vector<Cx> v;
  for (int k = 1; k <= n; k++) v.push_back(k);
  return v;
}

TEST_F(Block, CutBlocksAndEmptyBlocks) {
  Matrix *a = Real("A", 3, 4, Range(12));
  Matrix *c = MatCut(a, 2, 2, 3, 4);  // starting row and column first
  EXPECT_EQ(c->rows, 2);
  EXPECT_EQ(c->cols, 3);
  EXPECT_EQ(Values(c), (std::vector<Cx>{6, 7, 8, 10, 11, 12}));
  EXPECT_STREQ(c->name, "");
  Matrix *none = MatCut(a, 1, 1, 0, 4);
  EXPECT_EQ(none->rows, 0);
  EXPECT_EQ(none->cols, 4);
  EXPECT_EQ(none->elements, nullptr);
  EXPECT_EQ(MatCut(a, 2, 1, 1, 1)->rows, 0);
  EXPECT_EQ(MatCut(a, 1, 3, 3, 2)->cols, 0);
  EXPECT_EQ(Values(MatCut(a, 3, 4, 3, 4)), (std::vector<Cx>{12}));

  Matrix *r = Make("R", kCompRat, 2, 2, {Cx(1, 1), 2, 3, 4});
  Matrix *rc = MatCut(r, 1, 1, 2, 1);
  EXPECT_EQ(rc->cls, kCompRat);
  EXPECT_EQ(Values(rc), (std::vector<Cx>{Cx(1, 1), 3}));
  EXPECT_NE(RatAt(rc, 0), RatAt(r, 0));
  EXPECT_TRUE(ElementsMatchClass(rc));
}

TEST_F(BlockDeathTest, CutReports) {
  Matrix *a = Real("A", 3, 3), *e = Real("E", 0, 0);
  EXPECT_EXIT(MatCut(e, 1, 1, 1, 1), testing::ExitedWithCode(0),
              Fatal("E(0x0)(1:1,1:1) : Zero-size matrix in MatCut()."));
  // The invalid block text is the message itself, so the operand is described.
  EXPECT_EXIT(MatCut(a, 0, 1, 1, 1), testing::ExitedWithCode(0),
              Fatal("A(3x3)(0:1,1:1) is invalid sub-matrix for 'A(3 x 3)' in MatCut()."));
  EXPECT_EXIT(MatCut(a, 1, 2, 4, 3), testing::ExitedWithCode(0),
              Fatal("A(3x3)(1:4,2:3) is invalid sub-matrix for 'A(3 x 3)' in MatCut()."));
  EXPECT_EXIT(MatCut(MatSetClass(Real("X", 1, 1), 7), 1, 1, 1, 1), testing::ExitedWithCode(0),
              Fatal("X(1x1)(1:1,1:1) : Incorrect class matrix in MatCut()."));
}

TEST_F(Block, PutEnlargesWithZerosAndKeepsNameAndStatus) {
  Matrix *a = Keep(Real("A", 2, 2, {1, 2, 3, 4}));
  Matrix *b = Real("B", 2, 2, {5, 6, 7, 8});
  EXPECT_EQ(MatPut(a, 3, 3, b), a);
  EXPECT_EQ(a->rows, 4);
  EXPECT_EQ(a->cols, 4);
  EXPECT_EQ(Values(a), (std::vector<Cx>{1, 2, 0, 0, 3, 4, 0, 0, 0, 0, 5, 6, 0, 0, 7, 8}));
  EXPECT_STREQ(a->name, "A");
  EXPECT_EQ(a->status, 2);
  MatPut(a, 2, 2, MatCut(b, 1, 1, 1, 2));  // inside: no change of shape
  EXPECT_EQ(Values(MatCut(a, 2, 1, 2, 4)), (std::vector<Cx>{3, 5, 6, 0}));
}

TEST_F(Block, PutIntoAnEmptyMatrixTakesTheBlockClass) {
  Matrix *a = Keep(Real("A", 0, 0));
  MatPut(a, 2, 3, Comp("B", 1, 2, {Cx(1, 1), 2}));
  EXPECT_EQ(a->cls, kComplex);
  EXPECT_EQ(a->rows, 2);
  EXPECT_EQ(a->cols, 4);
  EXPECT_EQ(Values(a), (std::vector<Cx>{0, 0, 0, 0, 0, 0, Cx(1, 1), 2}));
  Matrix *r = Keep(MatSetClass(R_MatDef("", 0, 0), kRat));
  MatPut(r, 1, 1, Make("P", kPoly, 1, 1, {3}));
  EXPECT_EQ(r->cls, kPoly);
  EXPECT_EQ(Values(r), (std::vector<Cx>{3}));
}

TEST_F(Block, PutChangesTheClassToOneHoldingBoth) {
  Matrix *a = Keep(Real("A", 2, 2, {1, 2, 3, 4}));
  MatPut(a, 1, 2, Comp("B", 1, 1, {Cx(0, 9)}));
  EXPECT_EQ(a->cls, kComplex);
  EXPECT_EQ(Values(a), (std::vector<Cx>{1, Cx(0, 9), 3, 4}));

  Matrix *p = Keep(Make("P", kPoly, 1, 2, {1, 2}));
  MatPut(p, 1, 1, Comp("C", 1, 1, {Cx(5, 5)}));
  EXPECT_EQ(p->cls, kCompPoly);
  EXPECT_TRUE(ElementsMatchClass(p));
  EXPECT_EQ(Values(p), (std::vector<Cx>{Cx(5, 5), 2}));

  Matrix *r = Keep(Make("R", kRat, 1, 1, {1}));
  MatPut(r, 1, 2, Real("x", 1, 1, {4}));  // a rational holds a real: no change
  EXPECT_EQ(r->cls, kRat);
  EXPECT_EQ(Values(r), (std::vector<Cx>{1, 4}));
  MatPut(r, 2, 1, Make("Q", kCompPoly, 1, 1, {Cx(0, 2)}));
  EXPECT_EQ(r->cls, kCompRat);
  EXPECT_TRUE(ElementsMatchClass(r));
  EXPECT_EQ(Values(r), (std::vector<Cx>{1, 4, Cx(0, 2), 0}));
}

TEST_F(Block, PutOfAnEmptyBlockTruncates) {
  Matrix *a = Keep(Real("A", 3, 4, Range(12)));
  MatPut(a, 1, 3, Real("E", 0, 0));
  EXPECT_EQ(a->cols, 2);
  EXPECT_EQ(Values(a), (std::vector<Cx>{1, 2, 5, 6, 9, 10}));
  MatPut(a, 3, 1, Real("E", 0, 2));
  EXPECT_EQ(a->rows, 2);
  EXPECT_EQ(Values(a), (std::vector<Cx>{1, 2, 5, 6}));
  MatPut(a, 1, 1, Real("E", 0, 0));
  EXPECT_EQ(a->rows, 0);
  EXPECT_EQ(a->cols, 0);
  EXPECT_STREQ(a->name, "A");
  // Cut out and put back an empty block: the matrix is empty again.
  Matrix *c = Keep(Comp("C", 2, 2, {1, 2, 3, 4}));
  MatPut(c, 1, 1, MatCut(c, 1, 1, 0, 2));
  EXPECT_EQ(c->cls, kComplex);
  EXPECT_EQ(MatCount(c), 0);
}

// The assignment inside MatPut sweeps the temporaries, once: operands that
// are temporaries themselves survive it, and the pools stay sound.
TEST_F(Block, PutSweepsOtherTemporariesButNotItsOperands) {
  Matrix *a = Real("A", 1, 1, {1});
  Matrix *b = Real("B", 1, 1, {2});
  Matrix *bystander = MatZDef(5);
  int pooled = MatPoolCount(25, kReal);
  Matrix *r = MatPut(a, 2, 2, b);
  EXPECT_EQ(r, a);
  EXPECT_EQ(MatPoolCount(25, kReal), pooled + 1);  // the bystander, swept
  (void)bystander;
  EXPECT_EQ(a->status, 0);
  EXPECT_EQ(Values(a), (std::vector<Cx>{1, 0, 0, 2}));
  EXPECT_EQ(Values(b), (std::vector<Cx>{2}));
  // Grow by a column and cut it off again, many times over: each assignment
  // reclaims its temporary exactly once.
  Keep(b);
  for (int k = 0; k < 20; k++) {
    MatPut(a, 1, k + 3, b);
    EXPECT_EQ(a->cols, k + 3);
    MatPut(a, 1, k + 3, MatZDef(0));
    MatRegistryCheck();
  }
  EXPECT_EQ(a->cols, 21);
  EXPECT_EQ(a->rows, 2);
}

TEST_F(BlockDeathTest, PutReports) {
  Matrix *a = Real("A", 4, 4), *b = Real("B", 2, 1), *e = Real("E", 0, 0);
  EXPECT_EXIT(
      MatPut(a, 0, 1, b), testing::ExitedWithCode(0),
      Fatal("A(0:1, 1:1) is invalid sub-matrix for 'A(4 x 4)' and 'B(2 x 1)' in MatPut()."));
  EXPECT_EXIT(
      MatPut(a, 2, 2, e), testing::ExitedWithCode(0),
      Fatal("A(2:1, 2:1) is invalid sub-matrix for 'A(4 x 4)' and 'E(0 x 0)' in MatPut()."));
  EXPECT_EXIT(MatPut(a, 1, 1, MatSetClass(Real("X", 1, 1), 6)), testing::ExitedWithCode(0),
              Fatal("A(4x4)(1:1, 1:1) = X(1x1) : Incorrect class matrix in MatPut()."));
}

TEST_F(Block, RealAndImaginaryParts) {
  Matrix *c = Comp("C", 1, 3, {Cx(1, -1), Cx(0, 2), 3});
  Matrix *re = MatRealPart(c), *im = MatImagPart(c);
  EXPECT_EQ(re->cls, kReal);
  EXPECT_EQ(Values(re), (std::vector<Cx>{1, 0, 3}));
  EXPECT_EQ(Values(im), (std::vector<Cx>{-1, 2, 0}));
  Matrix *r = Real("R", 1, 2, {4, 5});
  Matrix *dup = MatRealPart(r);
  EXPECT_NE(dup, r);
  EXPECT_EQ(Values(dup), (std::vector<Cx>{4, 5}));

  // Polynomials part by coefficient, keeping degree and variable.
  Polynomial *q = C_PolyDef("", 1, "t");
  MatReal(q->coef)[0] = 2;
  MatReal(q->coef)[3] = -7;  // imaginary part of the t coefficient
  Matrix *p = P_MatFillDef(1, 1, q);
  Matrix *pi = MatImagPart(p);
  EXPECT_EQ(pi->cls, kPoly);
  EXPECT_EQ(PolyAt(pi, 0)->degree, 1);
  EXPECT_STREQ(PolyAt(pi, 0)->variable, "t");
  EXPECT_EQ(Coef(PolyAt(pi, 0)->coef, 1), Cx(-7));
  EXPECT_EQ(Coef(PolyAt(MatRealPart(p), 0)->coef, 0), Cx(2));
  EXPECT_TRUE(ElementsMatchClass(MatRealPart(p)));
}

TEST_F(BlockDeathTest, PartReports) {
  Matrix *a = Real("A", 2, 2), *e = Comp("E", 0, 0);
  EXPECT_EXIT(MatImagPart(a), testing::ExitedWithCode(0),
              Fatal("Im(A(2x2)) : Not a complex matrix in MatImagPart()."));
  EXPECT_EXIT(MatImagPart(e), testing::ExitedWithCode(0),
              Fatal("Im(E(0x0)) : Zero-size matrix in MatImagPart()."));
  EXPECT_EXIT(MatRealPart(e), testing::ExitedWithCode(0),
              Fatal("Re(E(0x0)) : Zero-size matrix in MatRealPart()."));
  EXPECT_EXIT(MatRealPart(MatSetClass(Real("X", 1, 1), 8)), testing::ExitedWithCode(0),
              Fatal("Re(X(1x1)) : Incorrect class matrix in MatRealPart()."));
  EXPECT_EXIT(
      MatRealPart(Make("R", kRat, 1, 1, {1})), testing::ExitedWithCode(0),
      Fatal("Re(R(1x1)) : Rational matrix arithmetic is not available yet in MatRealPart()."));
}

}  // namespace
