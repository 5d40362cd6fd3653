// Reshape, left-right flip and area copy over the classes, with their reports.
#include "matrix/rearrange.h"

#include "tests/matrix/scenario.h"

TEST_F(Scenario, ReshapeKeepsStorageOrderAndFlipReversesColumns) {
  Matrix *a = Make("A", kReal, 2, 3, {1, 2, 3, 4, 5, 6});
  EXPECT_TRUE(Holds(MatReshape(a, 3, 2), kReal, 3, 2, {1, 2, 3, 4, 5, 6}));
  EXPECT_TRUE(Holds(MatReshape(a, 1, 6), kReal, 1, 6, {1, 2, 3, 4, 5, 6}));
  EXPECT_TRUE(Holds(MatReshape(Make("E", kComplex, 0, 3), 3, 0), kComplex, 3, 0, {}));
  Matrix *r = Make("R", kCompRat, 2, 2, {Cx(1, 1), 2, 3, 4});
  EXPECT_TRUE(Holds(MatReshape(r, 4, 1), kCompRat, 4, 1, {Cx(1, 1), 2, 3, 4}));

  EXPECT_TRUE(Holds(MatFlipLR(a), kReal, 2, 3, {3, 2, 1, 6, 5, 4}));
  Matrix *c = Make("C", kComplex, 1, 2, {Cx(1, -1), Cx(0, 2)});
  EXPECT_TRUE(Holds(MatFlipLR(c), kComplex, 1, 2, {Cx(0, 2), Cx(1, -1)}));
  EXPECT_TRUE(Holds(MatFlipLR(r), kCompRat, 2, 2, {2, Cx(1, 1), 4, 3}));
  EXPECT_TRUE(Holds(MatFlipLR(Make("E", kReal, 0, 0)), kReal, 0, 0, {}));
}

TEST_F(Scenario, AreaCopyWritesInPlaceWithoutGrowing) {
  Matrix *d = Make("D", kComplex, 3, 3, {0, 0, 0, 0, 0, 0, 0, 0, 0});
  Matrix *s = Make("S", kReal, 2, 3, {1, 2, 3, 4, 5, 6});
  EXPECT_EQ(MatAreaCopy(d, 2, 2, s, 1, 2, 2, 3), d);  // S(1:2, 2:3), real into complex
  EXPECT_TRUE(Holds(d, kComplex, 3, 3, {0, 0, 0, 0, 2, 3, 0, 5, 6}));
  // An empty block copies nothing, even at the edge.
  EXPECT_TRUE(
      Holds(MatAreaCopy(d, 1, 4, s, 1, 2, 2, 1), kComplex, 3, 3, {0, 0, 0, 0, 2, 3, 0, 5, 6}));
  // Overlapping areas of one matrix: the values read are the old ones.
  Matrix *a = Make("A", kReal, 2, 4, {1, 2, 3, 4, 5, 6, 7, 8});
  MatAreaCopy(a, 1, 2, a, 1, 1, 2, 3);
  EXPECT_TRUE(Holds(a, kReal, 2, 4, {1, 1, 2, 3, 5, 5, 6, 7}));
  // Element objects are copied and owned by the target.
  Matrix *p = Make("P", kCompPoly, 1, 2, {Cx(0, 1), 7});
  MatAreaCopy(p, 1, 1, Make("Q", kPoly, 1, 1, {9}), 1, 1, 1, 1);
  EXPECT_TRUE(Holds(p, kCompPoly, 1, 2, {9, 7}));
}

using RearrangeDeathTest = Scenario;

TEST_F(RearrangeDeathTest, RearrangeReports) {
  Matrix *a = Make("A", kReal, 2, 3), *c = Make("C", kComplex, 2, 2);
  Matrix *x = MatSetClass(Make("X", kReal, 2, 2), 9);
  ExpectReports({
      {[=] { MatReshape(a, 4, 2); }, "reshape(A(2x3), 4, 2) : Inconsistent size in MatReshape()."},
      {[=] { MatReshape(a, -2, -3); },
       "reshape(A(2x3), -2, -3) : Inconsistent size in MatReshape()."},
      {[=] { MatReshape(x, 4, 1); },
       "reshape(X(2x2), 4, 1) : Incorrect class matrix in MatReshape()."},
      {[=] { MatFlipLR(x); }, "fliplr(X(2x2)) : Incorrect class matrix in MatFlipLR()."},
      {[=] { MatAreaCopy(a, 1, 1, c, 1, 1, 2, 2); },
       "A(1:2,1:2) = C(2x2)(1:2,1:2) : Not appropriate class matrices in MatAreaCopy()."},
      {[=] { MatAreaCopy(c, 1, 1, a, 1, 2, 3, 3); },
       "C(1:3,1:2) = A(2x3)(1:3,2:3) : Source area out of range in MatAreaCopy()."},
      {[=] { MatAreaCopy(c, 1, 1, a, 0, 1, 1, 1); },
       "C(1:2,1:1) = A(2x3)(0:1,1:1) : Source area out of range in MatAreaCopy()."},
      {[=] { MatAreaCopy(c, 2, 1, a, 1, 1, 2, 2); },
       "C(2:3,1:2) = A(2x3)(1:2,1:2) : Target area out of range in MatAreaCopy()."},
      {[=] { MatAreaCopy(x, 1, 1, a, 1, 1, 1, 1); },
       "X(1:1,1:1) = A(2x3)(1:1,1:1) : Incorrect class matrix in MatAreaCopy()."},
  });
  MatSetClass(x, kReal);
}
