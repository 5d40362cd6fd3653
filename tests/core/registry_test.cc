// Registry, pool, sweeps, marks and assignment of the six object kinds.
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>

#include "container/list.h"
#include "container/string.h"
#include "core/matrix.h"
#include "core/registry.h"
#include "core/scope.h"
#include "scalar/complex.h"
#include "scalar/polynomial.h"
#include "scalar/fill.h"
#include "scalar/rational.h"
#include "support/exact.h"

namespace {

// Every registry and pool must still link both ways after a scenario.
class RegistryTest : public testing::Test {
 protected:
  void SetUp() override { MatInit(); }
  void TearDown() override {
    MatRegistryCheck();
    CompRegistryCheck();
    PolyRegistryCheck();
    RatRegistryCheck();
    ListRegistryCheck();
    vkStringRegistryCheck();
  }
};

template <class T>
T *Slot(Matrix *m, int k) {
  return static_cast<T **>(m->elements)[k];
}

TEST_F(RegistryTest, SameElementCountAndClassReusesRecordAndStorage) {
  Matrix *a = MatDef("first", 2, 3);
  void *storage = a->elements;
  char *name = a->name;
  MatUndef(a);
  Matrix *b = MatDef("other", 3, 2);  // a name of the same length keeps its buffer
  EXPECT_EQ(b, a);
  EXPECT_EQ(b->elements, storage);
  EXPECT_EQ(b->name, name);
  EXPECT_STREQ(b->name, "other");
  MatUndef(b);
  EXPECT_NE(C_MatDef("", 2, 3), a);  // another class never takes it
  // An empty record lends its record, not storage, to any shape of its class.
  Matrix *z = MatDef("", 0, 0);
  MatUndef(z);
  int pooled = MatPoolCount(0, kReal);
  EXPECT_EQ(MatDef("", 7, 11), z);
  EXPECT_EQ(MatPoolCount(0, kReal), pooled - 1);
  MatSweep();
}

TEST(RegistryDeathTest, LimitsFromTheEnvironment) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // a fresh process reads the variables
  auto limits = [](const char *table, const char *size) {
    if (table) setenv("MATRIX_TABLE_MAX", table, 1);
    if (size) setenv("MATRIX_SIZE_MAX", size, 1);
    MatInit();
    fprintf(stderr, "limit=%d bound=%d", MatPoolLimit(), MatPoolBound());
    exit(0);
  };
  EXPECT_EXIT(limits(nullptr, nullptr), testing::ExitedWithCode(0), "^limit=0 bound=1000$");
  EXPECT_EXIT(limits("-5", "-5"), testing::ExitedWithCode(0), "^limit=0 bound=1000$");
  EXPECT_EXIT(limits("abc", "xyz"), testing::ExitedWithCode(0), "^limit=0 bound=0$");
  auto pool = [] {
    setenv("MATRIX_TABLE_MAX", "1", 1);
    setenv("MATRIX_SIZE_MAX", "4", 1);
    Matrix *m[4] = {MatDef("", 1, 2), MatDef("", 2, 1), MatDef("", 1, 2), MatDef("", 1, 5)};
    for (Matrix *x : m) MatUndef(x);
    fprintf(stderr, "pooled=%d big=%d live=%ld", MatPoolCount(2, kReal), MatPoolCount(5, kReal),
            MatRegistryCheck());
    exit(0);
  };
  // With a limit of 1 a stack reaches 2 records: the test is "more than the limit".
  EXPECT_EXIT(pool(), testing::ExitedWithCode(0), "^pooled=2 big=0 live=0$");
}

TEST(KindLimitsDeathTest, OtherKindsReadTheirOwnVariables) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  auto scenario = [] {
    setenv("COMP_TABLE_MAX", "2", 1);
    setenv("POLYNOMIAL_TABLE_MAX", "1", 1);  // lists read the polynomial variable too
    setenv("LIST_LENGTH_MAX", "3", 1);
    setenv("STRING_LENGTH_MAX", "-3", 1);
    setenv("POLYNOMIAL_DEGREE_MAX", "2", 1);
    Complex *c[4];
    for (auto &x : c) x = CompDef("", 0, 0);
    for (auto *x : c) CompUndef(x);
    List *l[4] = {ListDef("", 2), ListDef("", 2), ListDef("", 2), ListDef("", 4)};
    for (auto *x : l) ListUndef(x);
    vkStringUndef(vkStringDef("", 1000));
    vkStringUndef(vkStringDef("", 1001));
    Polynomial *p = PolyDef("", 2, nullptr);
    PolyUndef(p);
    PolyUndef(PolyDef("", 3, nullptr));
    fprintf(stderr, "%d %d %d %d %d %d", CompPoolCount(), ListPoolCount(2), ListPoolCount(4),
            vkStringPoolCount(1000) + vkStringPoolCount(1001), PolyDef("", 2, nullptr) == p,
            PolyPoolCount(3, 0));
    exit(0);
  };
  EXPECT_EXIT(scenario(), testing::ExitedWithCode(0), "^3 2 0 1 1 0$");
}

TEST(RegistryDeathTest, UndefiningTwiceAndNegativeSizesAreReported) {
  Matrix *a = MatDef("", 1, 1);
  MatUndef(a);  // the only record of its stack: linked to nothing now
  EXPECT_EXIT(MatUndef(a), testing::ExitedWithCode(0),
              Exact("\nDuplicate undefining in MatUndef().\n"));
  EXPECT_EXIT(MatDestroy(a), testing::ExitedWithCode(0),
              Exact("\nDuplicate destroying for '(0 x 0)' in MatDestroy().\n"));
  String *s = vkStringDef("", 31);
  vkStringUndef(s);
  EXPECT_EXIT(vkStringUndef(s), testing::ExitedWithCode(0),
              Exact("\nDuplicate undefing in vkStringUndef().\n"));
  EXPECT_EXIT(MatDef("x", -1, 2), testing::ExitedWithCode(0),
              Exact("\nMatDef(\"x\", -1, 2) : Not appropriate column or row number in MatDef().\n"));
  EXPECT_EXIT(C_MatDef("x", 1, -2), testing::ExitedWithCode(0),
              Exact("\nNot appropriate column or row number in C_MatDef().\n"));
}

TEST_F(RegistryTest, SweepReclaimsTemporariesBackToTheMark) {
  Matrix *kept = MatSetStatus(MatDef("kept", 1, 1), 5);
  Matrix *early = MatDef("", 1, 1);
  Matrix *mark = MatSetStatus(MatDef("", 0, 0), 1);
  MatDef("", 2, 2);
  Matrix *var = MatSetStatus(MatDef("v", 2, 2), 7);
  MatDef("", 3, 3);
  MatSweep();
  EXPECT_EQ(MatRegistryTail(), var);
  EXPECT_EQ(var->prev, mark);  // both temporaries gone, the variable passed over
  EXPECT_EQ(mark->prev, early);
  MatUnmark(mark);
  MatSweep();  // now the walk goes on to the head
  EXPECT_EQ(var->prev, kept);
  MatUndef(var);
  MatUndef(kept);
}

TEST_F(RegistryTest, LetTakesATemporarysStorageAndCopiesAKeptOne) {
  Matrix *dst = MatSetStatus(MatDef("dst", 2, 2), 5);
  Matrix *tmp = MatDef("", 3, 1);
  double *storage = MatReal(tmp);
  storage[2] = 3;
  MatLet(dst, tmp);
  EXPECT_EQ(MatReal(dst), storage);
  EXPECT_EQ(dst->rows, 3);
  EXPECT_EQ(dst->status, 5);
  EXPECT_STREQ(dst->name, "dst");
  EXPECT_EQ(MatRegistryTail(), dst);  // tmp, holding the old contents, was swept

  Matrix *src = MatSetStatus(C_MatDef("src", 1, 1), 9);
  MatReal(src)[1] = -4;
  MatLet(dst, src);
  EXPECT_NE(dst->elements, src->elements);
  EXPECT_EQ(dst->cls, kComplex);
  EXPECT_EQ(MatReal(dst)[1], -4);
  EXPECT_EQ(dst->status, 5);

  Matrix *pending = MatDef("", 1, 1);  // MatLet(a, a) changes nothing and sweeps nothing
  MatLet(dst, dst);
  EXPECT_EQ(MatRegistryTail(), pending);
  MatMove(dst, pending);
  EXPECT_EQ(dst->status, 5);
  EXPECT_EQ(pending->cls, kComplex);
  EXPECT_EQ(pending->status, 0);
  EXPECT_EXIT(MatSwap(dst, src), testing::ExitedWithCode(0),
              Exact("\nNot same class for 'dst(1 x 1)' and 'src(1 x 1)' in MatSwap().\n"));
  EXPECT_EXIT(MatCopy(dst, src), testing::ExitedWithCode(0),
              Exact("\nNot same class for 'src(1 x 1)' and 'dst(1 x 1)' in MatCopy().\n"));
  EXPECT_EXIT(MatMulDef(src, MatDef("", 2, 2)), testing::ExitedWithCode(0),
              Exact("\nSize Error for 'src(1 x 1)' and '(2 x 2)' in MatMulDef().\n"));
  MatSweep();
  MatUndef(src);
  MatUndef(dst);
}

TEST_F(RegistryTest, PolynomialAndRationalElementsAreOwned) {
  Matrix *p = MatSetStatus(P_MatDef("P", 1, 2), 5);
  EXPECT_EQ(Slot<Polynomial>(p, 0)->degree, -1);
  EXPECT_EQ(Slot<Polynomial>(p, 0)->status, 3);
  Matrix *z = MatSameClassZDef(MatSetClass(p, kCompPoly), 1, 1);
  Polynomial *zero = Slot<Polynomial>(z, 0);
  EXPECT_EQ(zero->degree, 0);
  EXPECT_EQ(zero->kind, 1);
  MatReal(zero->coef)[0] = 7;
  PolySweep();  // element objects are out of reach of sweeps
  Matrix *dz = MatDup(z);
  Polynomial *copy = Slot<Polynomial>(dz, 0);
  EXPECT_NE(copy, zero);
  EXPECT_EQ(copy->status, 3);
  EXPECT_EQ(MatReal(copy->coef)[0], 7.0);
  Matrix *v = MatSetStatus(MatDef("v", 0, 0), 6);
  MatLet(v, dz);
  EXPECT_EQ(Slot<Polynomial>(v, 0), copy);

  Matrix *rz = MatSetStatus(MatSameClassZDef(R_MatDef("", 1, 1), 1, 2), 8);
  Rational *half = Slot<Rational>(rz, 1);
  EXPECT_EQ(half->status, 2);
  EXPECT_EQ(MatReal(half->deno->coef)[0], 1.0);  // zero is 0/1
  MatLet(v, rz);  // a kept source is copied, here with a change of class
  EXPECT_EQ(v->cls, kRat);
  EXPECT_NE(Slot<Rational>(v, 1), half);
  EXPECT_EQ(MatReal(Slot<Rational>(v, 1)->deno->coef)[0], 1.0);
  for (Matrix *m : {rz, v, p}) MatUndef(m);
}

TEST_F(RegistryTest, ObjectScopesNestAndReclaimEverythingInside) {
  Matrix *outer_var = MatSetStatus(MatDef("outer", 1, 1), 5);
  long matrices = MatRegistryCheck(), polys = PolyRegistryCheck();
  ObjectScope(1);
  Matrix *a = MatSetStatus(P_MatDef("a", 2, 2), 5);  // kept, yet inside the scope
  ObjectScope(1);
  RatSetStatus(RatDef("r", 1, 1), 5);
  CompDef("", 1, 2);
  vkStringFromText("inner");
  List *l = ListDef("l", 2);
  ListSetObject(l, 1, kListPolynomial, PolyDef("", 2, nullptr));
  ListSetObject(l, 2, kListMatrix, P_MatDef("", 1, 1));
  ObjectScope(0);  // only the outer scope's mark is left in these registries
  EXPECT_EQ(RatRegistryCheck(), 1);
  EXPECT_EQ(ListRegistryCheck(), 1);
  EXPECT_EQ(vkStringRegistryCheck(), 1);
  EXPECT_EQ(CompRegistryCheck(), 1);
  EXPECT_EQ(a->status, 5);
  ObjectScope(0);
  EXPECT_EQ(MatRegistryCheck(), matrices);
  EXPECT_EQ(PolyRegistryCheck(), polys);
  EXPECT_EQ(MatRegistryTail(), outer_var);
  ObjectScope(0);  // no open scope: nothing happens
  MatUndef(outer_var);
}

TEST_F(RegistryTest, EveryKindsAssignmentSwapsTemporariesAndSweeps) {
  Complex *x = CompSetStatus(CompDef("x", 0, 0), 5);
  MatDef("", 2, 2);
  vkStringFromText("tmp");
  long matrices = MatRegistryCheck() - 1;
  CompLet(x, CompDef("", 3, 4));
  EXPECT_EQ(x->im, 4);
  EXPECT_EQ(x->status, 5);
  EXPECT_EQ(MatRegistryCheck(), matrices);
  EXPECT_EQ(vkStringRegistryCheck(), 0);

  Polynomial *p = PolySetStatus(PolyDef("p", 0, nullptr), 5);
  Polynomial *src = PolyDef("", 2, "w");
  Matrix *coef = src->coef;
  PolyAssign(p, src);
  EXPECT_EQ(p->degree, 2);
  EXPECT_STREQ(p->variable, "w");
  EXPECT_EQ(p->coef, coef);  // a temporary's coefficients are taken, not copied
  EXPECT_EXIT(PolyAssign(p, PolyDef("", -1, nullptr)), testing::ExitedWithCode(0),
              Exact("\nUndefined polynomial for '(s^-1)' in PolyAssign().\n"));

  Rational *r = RatSetStatus(RatDef("r", 0, 0), 5);
  RatAssign(r, RatDef("", 2, 1));
  EXPECT_EQ(r->nume->degree, 2);
  EXPECT_EQ(r->nume->status, 2);

  String *s = vkStringSetStatus(vkStringFromText("abc"), 5);
  String *k = vkStringSetStatus(vkStringFromText("xyz"), 6);
  char *text = s->text;
  vkStringLet(s, k);
  EXPECT_EQ(s->text, text);  // equal lengths: copied into the existing buffer
  EXPECT_STREQ(s->text, "xyz");
  vkStringLet(s, vkStringFromText("longer"));
  EXPECT_EQ(s->length, 6);

  List *l = ListSetStatus(ListDef("l", 0), 5);
  List *lt = ListDef("", 1);
  ListSetObject(lt, 1, kListString, vkStringFromText("e"));
  ListAssign(l, lt);
  EXPECT_EQ(static_cast<String *>(l->values[0].object)->status, 2);
  CompUndef(x);
  PolyUndef(p);
  RatUndef(r);
  vkStringUndef(s);
  vkStringUndef(k);
  ListUndef(l);
}

TEST_F(RegistryTest, ListElementsCarryOwnedStatusesAndAreReleased) {
  List *l = ListSetStatus(ListDef("l", 3), 5);
  Polynomial *p = PolyDef("", 2, nullptr);
  List *inner = ListDef("", 0);
  Matrix *m = MatDef("", 1, 1);
  ListSetObject(l, 1, kListPolynomial, p);
  ListSetObject(l, 2, kListList, inner);
  ListSetObject(l, 3, kListIndex, m);
  EXPECT_EQ(p->status, 4);
  EXPECT_EQ(inner->status, 3);
  EXPECT_EQ(m->status, 3);
  // Replacing a polynomial undefines it; replacing a list leaves it a temporary.
  int pooled = PolyPoolCount(2, 0);
  ListValue v;
  v.real = 2.5;
  ListSetElement(l, 1, kListReal, v);
  EXPECT_EQ(PolyPoolCount(2, 0), pooled + 1);
  ListSetElement(l, 2, kListReal, v);
  EXPECT_EQ(inner->status, 0);
  ListSweep();
  EXPECT_EXIT(ListSetElement(l, 4, kListReal, v), testing::ExitedWithCode(0),
              Exact("\nl(4) = \"\" : Index is out of range  in ListSetElement().\n"));
  ListUndef(l);
  EXPECT_EQ(l->classes[2], kListUndefined);
}

// Classes 3 and 5 are classes 2 and 4 with the class set after the
// definition: one pool serves each pair.
TEST_F(RegistryTest, ComplexCoefficientClassesShareTheirRealTwinsPools) {
  for (int cls : {kPoly, kRat}) {
    Matrix *a = MatDefClass("", 2, 3, cls + 1, "MatDef()");
    MatUndef(a);
    EXPECT_EQ(MatPoolCount(6, cls), 1);
    Matrix *b = MatDefClass("", 3, 2, cls, "MatDef()");
    EXPECT_EQ(b, a);
    EXPECT_EQ(b->cls, cls);
    MatUndef(b);
  }
}

// Live records of every kind, each registry's debug walk passing.
std::array<long, 6> LiveRecords() {
  return {MatRegistryCheck(), CompRegistryCheck(), PolyRegistryCheck(),
          RatRegistryCheck(), ListRegistryCheck(), vkStringRegistryCheck()};
}

// A list of lists `depth` deep, the innermost holding a string.
List *Nested(const char *name, int depth) {
  List *l = ListDef(name, 1);
  if (depth == 1)
    ListSetObject(l, 1, kListString, vkStringFromText("leaf"));
  else
    ListSetObject(l, 1, kListList, Nested("", depth - 1));
  return l;
}

// Undefining a record that owns others must reach what it gives back, even
// when that lands behind the walk (a nested list becomes a temporary at the
// tail): a scope's end or a sweep leaves no owned object defined.
TEST_F(RegistryTest, ScopeEndAndSweepLeaveNothingOwnedBehind) {
  MatSweepAll();
  const std::array<long, 6> before = LiveRecords();

  ObjectScope(1);
  List *k = ListDef("K", 1);
  k->status = 2;
  ListSetObject(k, 1, 10, ListDef("", 0));  // K holds one nested list and is the last list
  ObjectScope(0);
  EXPECT_EQ(LiveRecords(), before);

  ObjectScope(1);
  MatSetStatus(P_MatFillDef(2, 2, PolyDef("", 2, nullptr)), kKept);
  RatSetStatus(RatDef("r", 1, 1), kKept);
  ListSetStatus(Nested("A", 3), kKept);
  ObjectScope(0);
  EXPECT_EQ(LiveRecords(), before);

  // The same objects as temporaries, reclaimed by the sweeps of an assignment.
  Nested("", 3);
  P_MatFillDef(2, 2, PolyDef("", 2, nullptr));
  RatDef("", 1, 1);
  MatSweepAll();
  EXPECT_EQ(LiveRecords(), before);
}

}  // namespace
