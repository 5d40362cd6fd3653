// Cut and put with their edge cases, real and imaginary parts.
#include "matrix/block.h"

#include "tests/matrix/scenario.h"

TEST_F(Scenario, CutBlocksEmptyBlocksAndParts) {
  Matrix *a = Make("A", kReal, 3, 4, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
  // The starting row and column come first.
  EXPECT_TRUE(Holds(MatCut(a, 2, 2, 3, 4), kReal, 2, 3, {6, 7, 8, 10, 11, 12}));
  EXPECT_TRUE(Holds(MatCut(a, 1, 1, 0, 4), kReal, 0, 4, {}));
  EXPECT_TRUE(Holds(MatCut(a, 2, 3, 3, 2), kReal, 2, 0, {}));
  Matrix *r = Make("R", kCompRat, 2, 2, {Cx(1, 1), 2, 3, 4});
  EXPECT_TRUE(Holds(MatCut(r, 1, 1, 2, 1), kCompRat, 2, 1, {Cx(1, 1), 3}));
  Matrix *c = Make("C", kComplex, 1, 2, {Cx(1, -1), Cx(0, 2)});
  EXPECT_TRUE(Holds(MatRealPart(c), kReal, 1, 2, {1, 0}));
  EXPECT_TRUE(Holds(MatImagPart(c), kReal, 1, 2, {-1, 2}));
}

TEST_F(Scenario, PutEnlargesOrReplacesAnEmptyTarget) {
  Matrix *a = MatSetStatus(Make("A", kReal, 2, 2, {1, 2, 3, 4}), 2);
  EXPECT_EQ(MatPut(a, 3, 3, Make("B", kReal, 2, 2, {5, 6, 7, 8})), a);
  EXPECT_TRUE(Holds(a, kReal, 4, 4, {1, 2, 0, 0, 3, 4, 0, 0, 0, 0, 5, 6, 0, 0, 7, 8}));
  EXPECT_STREQ(a->name, "A");
  EXPECT_EQ(a->status, 2);
  MatUndef(a);
  // An empty target becomes R x C of the block's class, even a lower one.
  Matrix *e = Make("E", kRat, 0, 0);
  MatPut(e, 2, 3, Make("P", kCompPoly, 1, 2, {Cx(1, 1), 2}));
  EXPECT_TRUE(Holds(e, kCompPoly, 2, 4, {0, 0, 0, 0, 0, 0, Cx(1, 1), 2}));
}

// Targets and blocks here are temporaries: the assignments inside MatPut
// sweep, and must neither take them nor reclaim their own temporary twice.
TEST_F(Scenario, PutChangesTheClassToOneHoldingBoth) {
  Matrix *a = Make("A", kReal, 2, 2, {1, 2, 3, 4});
  MatPut(a, 1, 2, Make("B", kComplex, 1, 1, {Cx(0, 9)}));
  EXPECT_TRUE(Holds(a, kComplex, 2, 2, {1, Cx(0, 9), 3, 4}));
  Matrix *r = Make("R", kRat, 1, 1, {1});
  MatPut(r, 1, 2, Make("x", kReal, 1, 1, {4}));  // a rational holds a real: no change
  EXPECT_TRUE(Holds(r, kRat, 1, 2, {1, 4}));
  MatPut(r, 2, 1, Make("Q", kCompPoly, 1, 1, {Cx(0, 2)}));
  EXPECT_TRUE(Holds(r, kCompRat, 2, 2, {1, 4, Cx(0, 2), 0}));
}

TEST_F(Scenario, PutOfAnEmptyBlockTruncates) {
  Matrix *a = Make("A", kReal, 4, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
  MatPut(a, 1, 3, Make("E", kReal, 0, 0));
  EXPECT_TRUE(Holds(a, kReal, 4, 2, {1, 2, 4, 5, 7, 8, 10, 11}));
  MatPut(a, 4, 1, Make("E", kReal, 0, 2));
  EXPECT_TRUE(Holds(a, kReal, 3, 2, {1, 2, 4, 5, 7, 8}));
  MatPut(a, 1, 1, MatCut(a, 1, 1, 0, 2));  // an empty block cut out and put back
  EXPECT_TRUE(Holds(a, kReal, 0, 0, {}));
  EXPECT_STREQ(a->name, "A");
}
