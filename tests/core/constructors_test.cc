// Constructors, vectors, element access with growth, and the element copy
// that converts between classes.
#include "core/constructors.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "core/matrix.h"
#include "core/scope.h"
#include "scalar/complex.h"
#include "scalar/polynomial.h"
#include "scalar/rational.h"
#include "support/exact.h"

namespace {

std::vector<double> Values(Matrix *m) {
  return std::vector<double>(MatReal(m), MatReal(m) + MatCount(m) * (m->cls == kComplex ? 2 : 1));
}

Matrix *Named(const char *name, int rows, int cols, std::initializer_list<double> v) {
  Matrix *m = MatSetName(MatDef("", rows, cols), name);
  std::copy(v.begin(), v.end(), MatReal(m));
  return m;
}

std::string Fatal(const std::string &text) { return Exact("\n" + text + "\n"); }

Polynomial *Slot(Matrix *m, int k) { return static_cast<Polynomial **>(m->elements)[k]; }
Rational *RatSlot(Matrix *m, int k) { return static_cast<Rational **>(m->elements)[k]; }

// Every scenario ends with no temporary left behind and sound registries.
class Constructors : public testing::Test {
 protected:
  void SetUp() override {
    MatInit();
    RatInit();
    CompInit();
    MatSweepAll();  // whatever earlier tests left behind
    live_ = MatRegistryCheck();
    complex_live_ = CompRegistryCheck();
  }
  void TearDown() override {
    MatSweepAll();
    EXPECT_EQ(MatRegistryCheck(), live_);
    EXPECT_EQ(CompRegistryCheck(), complex_live_);
    PolyRegistryCheck();
    RatRegistryCheck();
  }
  long live_ = 0, complex_live_ = 0;
};
using ConstructorsDeathTest = Constructors;

TEST_F(Constructors, ShapesAndContents) {
  EXPECT_EQ(Values(MatZDef2(2, 3)), std::vector<double>(6, 0.0));
  EXPECT_EQ(Values(MatIDef2(2, 3)), (std::vector<double>{1, 0, 0, 0, 1, 0}));
  EXPECT_EQ(Values(MatIDef2(3, 2)), (std::vector<double>{1, 0, 0, 1, 0, 0}));
  Matrix *empty = MatIDef(0);
  EXPECT_EQ(empty->rows, 0);
  EXPECT_EQ(empty->cols, 0);
  EXPECT_EQ(empty->elements, nullptr);
  EXPECT_EQ(Values(MatIDef(2)), (std::vector<double>{1, 0, 0, 1}));
  EXPECT_EQ(Values(MatOneDef(1, 3)), (std::vector<double>{1, 1, 1}));
  EXPECT_EQ(Values(MatFillDef(2, 1, -2.5)), (std::vector<double>{-2.5, -2.5}));
  Matrix *z = MatZDef(2);
  EXPECT_EQ(z->cls, kReal);
  EXPECT_EQ(z->status, 0);
  EXPECT_STREQ(z->name, "");

  Matrix *ci = C_MatIDef2(2, 2);
  EXPECT_EQ(ci->cls, kComplex);
  EXPECT_EQ(Values(ci), (std::vector<double>{1, 0, 0, 0, 0, 0, 1, 0}));
  EXPECT_EQ(Values(C_MatOneDef(1, 2)), (std::vector<double>{1, 0, 1, 0}));
  EXPECT_EQ(Values(C_MatZDef(1)), (std::vector<double>{0, 0}));
  EXPECT_EQ(Values(C_MatZDef2(1, 2)), (std::vector<double>(4, 0.0)));
  EXPECT_EQ(Values(C_MatIDef(1)), (std::vector<double>{1, 0}));
  Complex *w = CompDef("w", 2, -3);
  EXPECT_EQ(Values(C_MatFillDef(1, 2, w)), (std::vector<double>{2, -3, 2, -3}));
  CompUndef(w);
}

TEST_F(Constructors, PolynomialAndRationalFillsOwnTheirCopies) {
  Polynomial *p = C_PolyDef("p", 1, "z");
  Matrix *m = P_MatFillDef(2, 1, p);
  EXPECT_EQ(m->cls, kCompPoly);
  EXPECT_NE(Slot(m, 0), p);
  EXPECT_NE(Slot(m, 0), Slot(m, 1));
  EXPECT_EQ(Slot(m, 1)->degree, 1);
  EXPECT_STREQ(Slot(m, 1)->variable, "z");
  EXPECT_EQ(Slot(m, 0)->status, 3);
  EXPECT_EQ(P_MatFillDef(1, 1, PolyDef("", 2, nullptr))->cls, kPoly);

  Rational *r = RatDef("r", 1, 2);
  Matrix *q = R_MatFillDef(1, 2, r);
  EXPECT_EQ(q->cls, kRat);
  EXPECT_NE(RatSlot(q, 0), r);
  EXPECT_EQ(RatSlot(q, 1)->deno->degree, 2);
  EXPECT_EQ(RatSlot(q, 1)->status, 2);
}

TEST_F(Constructors, ProductShapes) {
  Matrix *a = MatDef("", 2, 3), *b = C_MatDef("", 3, 4), *p = P_MatDef("", 3, 1);
  Matrix *c = C_MatMulDef(a, b);
  EXPECT_EQ(c->cls, kComplex);
  EXPECT_EQ(c->rows, 2);
  EXPECT_EQ(c->cols, 4);
  EXPECT_EQ(P_MatMulDef(a, p)->cls, kPoly);
  EXPECT_EQ(P_MatMulDef(a, b)->cls, kCompPoly);
  Matrix *r = R_MatMulDef(a, p);
  EXPECT_EQ(r->cls, kRat);
  EXPECT_EQ(r->cols, 1);
}

TEST_F(ConstructorsDeathTest, NegativeSizesAndProductShapes) {
  const char *msg = "Not appropriate column or row number";
  EXPECT_EXIT(MatZDef(-1), testing::ExitedWithCode(0),
              Fatal(std::string("Z(-1) : ") + msg + " in MatZDef()."));
  EXPECT_EXIT(MatZDef2(2, -3), testing::ExitedWithCode(0),
              Fatal(std::string("Z(2, -3) : ") + msg + " in MatZDef2()."));
  EXPECT_EXIT(MatIDef(-2), testing::ExitedWithCode(0),
              Fatal(std::string("I(-2) : ") + msg + " in MatIDef()."));
  EXPECT_EXIT(MatIDef2(-1, 0), testing::ExitedWithCode(0),
              Fatal(std::string("I(-1, 0) : ") + msg + " in MatIDef2()."));
  EXPECT_EXIT(MatOneDef(0, -1), testing::ExitedWithCode(0),
              Fatal(std::string("ONE(0, -1) : ") + msg + " in MatOneDef()."));
  EXPECT_EXIT(MatFillDef(-1, 1, 2.0), testing::ExitedWithCode(0),
              Fatal(std::string(msg) + " in MatFillDef()."));
  EXPECT_EXIT(C_MatZDef(-4), testing::ExitedWithCode(0),
              Fatal(std::string("Z(-4) : ") + msg + " in C_MatZDef()."));
  EXPECT_EXIT(C_MatIDef2(1, -1), testing::ExitedWithCode(0),
              Fatal(std::string("I(1, -1) : ") + msg + " in C_MatIDef2()."));
  EXPECT_EXIT(C_MatOneDef(-1, -1), testing::ExitedWithCode(0),
              Fatal(std::string("ONE(-1, -1) : ") + msg + " in C_MatOneDef()."));
  EXPECT_EXIT(C_MatFillDef(-1, 1, CompDef("", 0, 0)), testing::ExitedWithCode(0),
              Fatal(std::string(msg) + " in C_MatFillDef()."));
  EXPECT_EXIT(P_MatFillDef(1, -1, PolyDef("", 0, nullptr)), testing::ExitedWithCode(0),
              Fatal(std::string(msg) + " in P_MatFillDef()."));
  EXPECT_EXIT(R_MatFillDef(-1, 1, RatDef("", 0, 0)), testing::ExitedWithCode(0),
              Fatal(std::string(msg) + " in R_MatFillDef()."));
  Matrix *a = Named("A", 2, 3, {}), *b = Named("B", 2, 3, {});
  EXPECT_EXIT(C_MatMulDef(a, b), testing::ExitedWithCode(0),
              Fatal("Size Error for 'A(2 x 3)' and 'B(2 x 3)' in C_MatMulDef()."));
  EXPECT_EXIT(R_MatMulDef(a, b), testing::ExitedWithCode(0),
              Fatal("Size Error for 'A(2 x 3)' and 'B(2 x 3)' in R_MatMulDef()."));
}

TEST_F(Constructors, ComplexConstantIsATemporaryUndefinedAfterUse) {
  int pooled = CompPoolCount();
  C_MatIDef(3);
  C_MatOneDef(2, 2);
  EXPECT_EQ(CompRegistryCheck(), complex_live_);
  // The same pooled record served both constants.
  EXPECT_EQ(CompPoolCount(), pooled > 0 ? pooled : 1);
}

TEST_F(Constructors, RowAndColumnVectorsOfAnyClass) {
  Matrix *a = Named("A", 2, 3, {1, 2, 3, 4, 5, 6});
  EXPECT_EQ(Values(MatColumnVector(a, 2)), (std::vector<double>{2, 5}));
  Matrix *row = MatRowVector(a, 2);
  EXPECT_EQ(row->rows, 1);
  EXPECT_EQ(Values(row), (std::vector<double>{4, 5, 6}));

  Matrix *p = P_MatFillDef(2, 2, PolyDef("", 1, nullptr));
  Matrix *col = MatColumnVector(p, 1);
  EXPECT_EQ(col->cls, kPoly);
  EXPECT_EQ(col->rows, 2);
  EXPECT_NE(Slot(col, 0), Slot(p, 0));  // an owned copy
  EXPECT_EQ(Slot(col, 1)->degree, 1);
}

TEST_F(ConstructorsDeathTest, VectorIndexReports) {
  Matrix *a = Named("A", 2, 3, {});
  EXPECT_EXIT(MatColumnVector(a, 4), testing::ExitedWithCode(0),
              Fatal("A(2x3)(:, 4) : Not appropriate column number in MatColumnVector()."));
  EXPECT_EXIT(MatRowVector(a, 0), testing::ExitedWithCode(0),
              Fatal("A(2x3)(0, :) : Not appropriate row number in MatRowVector()."));
}

TEST_F(Constructors, SetValueGrowsKeepingNameStatusAndValues) {
  Matrix *a = MatSetStatus(Named("A", 2, 2, {1, 2, 3, 4}), 7);
  Matrix *same = MatSetValue(a, 3, 1, 9);
  EXPECT_EQ(same, a);
  EXPECT_EQ(a->rows, 3);
  EXPECT_EQ(a->cols, 2);
  EXPECT_EQ(Values(a), (std::vector<double>{1, 2, 3, 4, 9, 0}));
  EXPECT_STREQ(a->name, "A");
  EXPECT_EQ(a->status, 7);
  MatSetValue(a, 1, 4, -1);
  EXPECT_EQ(Values(a), (std::vector<double>{1, 2, 0, -1, 3, 4, 0, 0, 9, 0, 0, 0}));
  MatSetValue(a, 2, 2, 5);  // inside: no growth
  EXPECT_EQ(a->rows, 3);
  EXPECT_EQ(MatReal(a)[5], 5);

  Matrix *c = MatSetStatus(C_MatZDef(1), 7);
  C_MatSetValue(c, 2, 2, {1, -1});
  EXPECT_EQ(Values(c), (std::vector<double>{0, 0, 0, 0, 0, 0, 1, -1}));
  C_MatFillValue(c, {2, 3});
  EXPECT_EQ(c->rows, 2);
  EXPECT_EQ(Values(c), (std::vector<double>{2, 3, 2, 3, 2, 3, 2, 3}));
  MatFillValue(a, 0.5);
  EXPECT_EQ(Values(a), std::vector<double>(12, 0.5));
  MatUndef(a);
  MatUndef(c);
}

TEST_F(Constructors, SetVecValueGrowthKeepsOrientationAndPositions) {
  Matrix *row = MatSetStatus(Named("r", 1, 2, {1, 2}), 2);
  MatSetVecValue(row, 4, 4);
  EXPECT_EQ(row->rows, 1);
  EXPECT_EQ(Values(row), (std::vector<double>{1, 2, 0, 4}));
  Matrix *col = MatSetStatus(Named("c", 2, 1, {1, 2}), 2);
  MatSetVecValue(col, 3, 3);
  EXPECT_EQ(col->rows, 3);
  EXPECT_EQ(col->cols, 1);
  EXPECT_EQ(Values(col), (std::vector<double>{1, 2, 3}));
  // 2 x 3 asked for entry 8: ceil(8 / 3) = 3 rows of the same 3 columns.
  Matrix *m = MatSetStatus(Named("m", 2, 3, {1, 2, 3, 4, 5, 6}), 2);
  MatSetVecValue(m, 8, 8);
  EXPECT_EQ(m->rows, 3);
  EXPECT_EQ(m->cols, 3);
  EXPECT_EQ(Values(m), (std::vector<double>{1, 2, 3, 4, 5, 6, 0, 8, 0}));
  Matrix *e = MatSetStatus(MatZDef(0), 2);
  MatSetVecValue(e, 2, 1);
  EXPECT_EQ(e->rows, 1);
  EXPECT_EQ(Values(e), (std::vector<double>{0, 1}));
  Matrix *z = MatSetStatus(C_MatZDef2(3, 1), 2);
  C_MatSetVecValue(z, 5, {5, 5});
  EXPECT_EQ(z->rows, 5);
  EXPECT_EQ(z->cols, 1);
  EXPECT_EQ(C_MatGetVecPtr(z, 5)->im, 5);
  for (Matrix *x : {row, col, m, e, z}) MatUndef(x);
}

TEST_F(Constructors, PointersAndOneByOne) {
  Matrix *a = Named("A", 2, 3, {1, 2, 3, 4, 5, 6});
  EXPECT_EQ(*MatGetPtr(a, 2, 1), 4);
  *MatGetVecPtr(a, 6) = 60;
  EXPECT_EQ(*MatGetPtr(a, 2, 3), 60);
  Matrix *c = C_MatFillDef(1, 1, CompDef("", 1, 2));
  EXPECT_EQ(C_MatGetPtr(c, 1, 1)->im, 2);
  ComplexValue one = C_MatGetValueOne(c);
  EXPECT_EQ(one.re, 1);
  EXPECT_EQ(one.im, 2);
  EXPECT_EQ(MatGetValueOne(MatFillDef(1, 1, 7)), 7);

  // Not 1 x 1: a warning, and the first element all the same.
  testing::internal::CaptureStderr();
  double first = MatGetValueOne(a);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "\nReal(A(2x3)) : Not a one by one matrix in MatGetValueOne().\n");
  EXPECT_EQ(first, 1);
  testing::internal::CaptureStderr();
  EXPECT_EQ(MatGetValueOne(MatZDef(0)), 0);
  testing::internal::GetCapturedStderr();
}

TEST_F(ConstructorsDeathTest, AccessorLabelsAndLocations) {
  Matrix *a = Named("A", 2, 2, {});
  Matrix *c = MatSetName(C_MatZDef(2), "C");
  EXPECT_EXIT(MatSetValue(a, 0, 1, 5), testing::ExitedWithCode(0),
              Fatal("A(2x2)(0,1) = 5 : Not a suitable index in MatSetValue()."));
  EXPECT_EXIT(MatSetValue(c, 1, 1, 2.5), testing::ExitedWithCode(0),
              Fatal("C(2x2)(1,1) = 2.5 : Not a real matrix in MatSetValue()."));
  EXPECT_EXIT(C_MatSetValue(a, 1, 1, {1, 2}), testing::ExitedWithCode(0),
              Fatal("A(2x2)(1,1) = (1,2) : Not a complex matrix in C_MatSetValue()."));
  EXPECT_EXIT(C_MatSetValue(c, 1, -1, {1, 2}), testing::ExitedWithCode(0),
              Fatal("C(2x2)(1,-1) = (1,2) : Not a suitable index in C_MatSetValue()."));
  EXPECT_EXIT(MatSetVecValue(a, 0, 1), testing::ExitedWithCode(0),
              Fatal("A(2x2)(0) = 1 : Not a suitable index in MatSetVecValue()."));
  EXPECT_EXIT(C_MatSetVecValue(a, 1, {0, 1}), testing::ExitedWithCode(0),
              Fatal("A(2x2)(1) = (0,1) : Not a complex matrix in C_MatSetVecValue()."));
  EXPECT_EXIT(MatFillValue(c, 3), testing::ExitedWithCode(0),
              Fatal("fill(C(2x2), 3) : Not a real matrix in MatFillValue()."));
  EXPECT_EXIT(C_MatFillValue(a, {3, 4}), testing::ExitedWithCode(0),
              Fatal("fill(A(2x2), (3,4)) : Not a complex matrix in C_MatFillValue()."));
  // The class reports of the pointer accessors are spelled Prt.
  EXPECT_EXIT(MatGetPtr(c, 1, 1), testing::ExitedWithCode(0),
              Fatal("C(2x2)(1,1) : Not a real matrix in MatGetPrt()."));
  EXPECT_EXIT(MatGetPtr(a, 3, 1), testing::ExitedWithCode(0),
              Fatal("A(2x2)(3,1) : Not a suitable index in MatGetPtr()."));
  EXPECT_EXIT(MatGetVecPtr(c, 1), testing::ExitedWithCode(0),
              Fatal("C(2x2)(1) : Not a real matrix in MatGetVecPrt()."));
  EXPECT_EXIT(MatGetVecPtr(a, 5), testing::ExitedWithCode(0),
              Fatal("A(2x2)(5) : Not a suitable index in MatGetVecPtr()."));
  EXPECT_EXIT(C_MatGetPtr(a, 1, 1), testing::ExitedWithCode(0),
              Fatal("A(2x2)(1,1) : Not a complex matrix in C_MatGetPtr()."));
  EXPECT_EXIT(C_MatGetVecPtr(c, 0), testing::ExitedWithCode(0),
              Fatal("C(2x2)(0) : Not a suitable index in C_MatGetVecPtr()."));
}

// Which class changes MatPut must make, as a table: row the target class,
// column the class of the block; 1 where the target cannot hold the block.
TEST_F(Constructors, ClassHoldsMatchesThePutTableAndCommonClass) {
  const int needs_change[6][6] = {
      {0, 1, 1, 1, 1, 1}, {0, 0, 1, 1, 1, 1}, {0, 1, 0, 1, 1, 1},
      {0, 0, 0, 0, 1, 1}, {0, 1, 0, 1, 0, 1}, {0, 0, 0, 0, 0, 0},
  };
  for (int a = 0; a < 6; a++)
    for (int b = 0; b < 6; b++) {
      EXPECT_EQ(!MatClassHolds(a, b), needs_change[a][b] == 1) << a << " " << b;
      int common = MatCommonClass(a, b);
      EXPECT_TRUE(MatClassHolds(common, a) && MatClassHolds(common, b));
      EXPECT_EQ(common, MatCommonClass(b, a));
    }
  EXPECT_EQ(MatCommonClass(kPoly, kComplex), kCompPoly);
  EXPECT_EQ(MatCommonClass(kRat, kComplex), kCompRat);
  EXPECT_EQ(MatCommonClass(kReal, kPoly), kPoly);
}

TEST_F(Constructors, CopyElementsConvertsToTheTargetClass) {
  Matrix *v = C_MatDef("", 1, 2);
  ComplexValue *e = static_cast<ComplexValue *>(v->elements);
  e[0] = {1, 2};
  e[1] = {3, -4};
  Matrix *polys = MatDefClass("", 1, 2, kCompPoly, "P_MatDef()");
  MatCopyElements(polys, 0, v, 0, 2);
  EXPECT_EQ(Slot(polys, 1)->degree, 0);
  EXPECT_EQ(Slot(polys, 1)->kind, 1);
  EXPECT_EQ(Values(Slot(polys, 1)->coef), (std::vector<double>{3, -4}));

  Polynomial *p = PolyDef("", 2, "x");
  MatReal(p->coef)[2] = 5;
  Matrix *one = P_MatFillDef(1, 1, p);
  Matrix *rats = MatDefClass("", 1, 1, kCompRat, "R_MatDef()");
  MatCopyElements(rats, 0, one, 0, 1);
  Rational *r = RatSlot(rats, 0);
  EXPECT_EQ(r->kind, 1);
  EXPECT_EQ(Values(r->nume->coef), (std::vector<double>{0, 0, 0, 0, 5, 0}));
  EXPECT_EQ(Values(r->deno->coef), (std::vector<double>{1, 0}));
  EXPECT_STREQ(r->nume->variable, "x");
  EXPECT_STREQ(r->deno->variable, "x");

  Matrix *reals = Named("", 1, 3, {7, 8, 9});
  Matrix *wide = C_MatZDef2(1, 4);
  MatCopyElements(wide, 1, reals, 0, 3);
  EXPECT_EQ(Values(wide), (std::vector<double>{0, 0, 7, 0, 8, 0, 9, 0}));
}

}  // namespace
