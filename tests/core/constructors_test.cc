// Constructors, vectors, and element access with growth.
#include "core/constructors.h"

#include "tests/matrix/scenario.h"

using ConstructorsDeathTest = Scenario;

TEST_F(Scenario, ConstantsFillsAndProductShapes) {
  long complexes = CompRegistryCheck();
  EXPECT_TRUE(Holds(MatIDef(0), kReal, 0, 0, {}));
  EXPECT_TRUE(Holds(MatIDef2(2, 3), kReal, 2, 3, {1, 0, 0, 0, 1, 0}));
  EXPECT_TRUE(Holds(MatIDef2(3, 2), kReal, 3, 2, {1, 0, 0, 1, 0, 0}));
  EXPECT_TRUE(Holds(MatOneDef(1, 2), kReal, 1, 2, {1, 1}));
  EXPECT_TRUE(Holds(MatFillDef(2, 1, -2.5), kReal, 2, 1, {-2.5, -2.5}));
  EXPECT_TRUE(Holds(C_MatIDef(2), kComplex, 2, 2, {1, 0, 0, 1}));
  // The complex constant 1 + 0i is a temporary, undefined once used.
  EXPECT_EQ(CompRegistryCheck(), complexes);
  Matrix *f = C_MatFillDef(1, 2, CompDef("", 2, -3));
  EXPECT_TRUE(Holds(f, kComplex, 1, 2, {Cx(2, -3), Cx(2, -3)}));

  // Each element an owned copy of the value, in the class of its kind.
  Matrix *p = P_MatFillDef(2, 1, C_PolyDef("", 1, "z"));
  EXPECT_TRUE(Holds(p, kCompPoly, 2, 1, {0, 0}));
  EXPECT_STREQ(At<Polynomial>(p, 1)->variable, "z");
  EXPECT_EQ(P_MatFillDef(1, 1, PolyDef("", 2, nullptr))->cls, kPoly);
  Matrix *r = R_MatFillDef(1, 2, RatDef("", 1, 2));
  EXPECT_EQ(r->cls, kRat);
  EXPECT_EQ(At<Rational>(r, 1)->deno->degree, 2);

  Matrix *a = MatDef("", 2, 3), *v = P_MatDef("", 3, 1);
  EXPECT_TRUE(Holds(C_MatFillValue(C_MatMulDef(a, v), {1, 0}), kComplex, 2, 1, {1, 1}));
  EXPECT_EQ(P_MatMulDef(a, v)->cls, kPoly);
  EXPECT_EQ(R_MatMulDef(a, v)->cls, kRat);
  EXPECT_TRUE(
      Holds(MatColumnVector(Make("", kReal, 2, 3, {1, 2, 3, 4, 5, 6}), 2), kReal, 2, 1, {2, 5}));
  EXPECT_TRUE(Holds(MatRowVector(Make("", kPoly, 2, 2, {1, 2, 3, 4}), 2), kPoly, 1, 2, {3, 4}));
}

TEST_F(Scenario, SetValueGrowsKeepingNameStatusAndValues) {
  Matrix *a = MatSetStatus(Make("A", kReal, 2, 2, {1, 2, 3, 4}), 2);
  EXPECT_EQ(MatSetValue(a, 3, 1, 9), a);
  EXPECT_TRUE(Holds(a, kReal, 3, 2, {1, 2, 3, 4, 9, 0}));
  EXPECT_STREQ(a->name, "A");
  EXPECT_EQ(a->status, 2);
  MatSetValue(a, 2, 2, 5);
  MatSetValue(a, 1, 4, -1);
  EXPECT_TRUE(Holds(a, kReal, 3, 4, {1, 2, 0, -1, 3, 5, 0, 0, 9, 0, 0, 0}));
  MatUndef(a);
}

// A vector keeps its orientation; a wider matrix keeps its columns and takes
// ceil(k / columns) rows. Old entries keep their storage positions.
TEST_F(Scenario, SetVecValueGrowth) {
  Matrix *row = MatSetVecValue(Make("r", kReal, 1, 2, {1, 2}), 4, 4);
  EXPECT_TRUE(Holds(row, kReal, 1, 4, {1, 2, 0, 4}));
  Matrix *m = MatSetVecValue(Make("m", kReal, 2, 3, {1, 2, 3, 4, 5, 6}), 8, 8);
  EXPECT_TRUE(Holds(m, kReal, 3, 3, {1, 2, 3, 4, 5, 6, 0, 8, 0}));
  EXPECT_TRUE(Holds(MatSetVecValue(MatZDef(0), 2, 1), kReal, 1, 2, {0, 1}));
  Matrix *z = C_MatSetVecValue(C_MatZDef2(2, 1), 4, {5, 5});
  EXPECT_TRUE(Holds(z, kComplex, 4, 1, {0, 0, 0, Cx(5, 5)}));
}

TEST_F(Scenario, PointersAndOneByOne) {
  Matrix *a = Make("A", kReal, 2, 3, {1, 2, 3, 4, 5, 6});
  *MatGetVecPtr(a, 6) = 60;
  EXPECT_EQ(*MatGetPtr(a, 2, 1), 4);
  EXPECT_EQ(*MatGetPtr(a, 2, 3), 60);
  // Not 1 x 1: a warning, and the first element (0 when there is none).
  testing::internal::CaptureStderr();
  EXPECT_EQ(MatGetValueOne(a), 1);
  EXPECT_EQ(MatGetValueOne(MatZDef(0)), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "\nReal(A(2x3)) : Not a one by one matrix in MatGetValueOne().\n"
            "\nReal((0x0)) : Not a one by one matrix in MatGetValueOne().\n");
}

TEST_F(ConstructorsDeathTest, Reports) {
  Matrix *a = Make("A", kReal, 2, 3), *c = Make("C", kComplex, 2, 2), *u = Make("", kReal, 1, 1);
  ComplexValue one_two = {1, 2};
  const std::string size = "Not appropriate column or row number in ";
  ExpectReports({
      {[] { MatZDef(-1); }, "Z(-1) : " + size + "MatZDef()."},
      {[] { C_MatZDef2(2, -3); }, "Z(2, -3) : " + size + "C_MatZDef2()."},
      {[] { MatIDef(-2); }, "I(-2) : " + size + "MatIDef()."},
      {[] { C_MatIDef2(1, -1); }, "I(1, -1) : " + size + "C_MatIDef2()."},
      {[] { MatOneDef(0, -1); }, "ONE(0, -1) : " + size + "MatOneDef()."},
      {[] { MatFillDef(-1, 1, 2.0); }, size + "MatFillDef()."},
      {[] { P_MatFillDef(1, -1, PolyDef("", 0, nullptr)); }, size + "P_MatFillDef()."},
      {[=] { C_MatMulDef(a, a); }, "Size Error for 'A(2 x 3)' and 'A(2 x 3)' in C_MatMulDef()."},
      {[=] { MatColumnVector(a, 4); },
       "A(2x3)(:, 4) : Not appropriate column number in MatColumnVector()."},
      {[=] { MatRowVector(a, 0); }, "A(2x3)(0, :) : Not appropriate row number in MatRowVector()."},
      {[=] { MatSetValue(u, 0, 1, 5); }, "(1x1)(0,1) = 5 : Not a suitable index in MatSetValue()."},
      {[=] { C_MatSetValue(a, 1, 1, one_two); },
       "A(2x3)(1,1) = (1,2) : Not a complex matrix in C_MatSetValue()."},
      {[=] { MatSetVecValue(u, 0, 1); },
       "(1x1)(0) = 1 : Not a suitable index in MatSetVecValue()."},
      {[=] { MatFillValue(c, 3); }, "fill(C(2x2), 3) : Not a real matrix in MatFillValue()."},
      // The class reports of the pointer accessors are spelled Prt.
      {[=] { MatGetPtr(c, 1, 1); }, "C(2x2)(1,1) : Not a real matrix in MatGetPrt()."},
      {[=] { MatGetPtr(a, 3, 1); }, "A(2x3)(3,1) : Not a suitable index in MatGetPtr()."},
      {[=] { MatGetVecPtr(c, 1); }, "C(2x2)(1) : Not a real matrix in MatGetVecPrt()."},
      {[=] { MatGetVecPtr(a, 7); }, "A(2x3)(7) : Not a suitable index in MatGetVecPtr()."},
      {[=] { C_MatGetVecPtr(a, 1); }, "A(2x3)(1) : Not a complex matrix in C_MatGetVecPtr()."},
  });
}
