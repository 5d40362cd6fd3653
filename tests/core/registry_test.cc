// Registry, pool, sweeps, marks and assignment of the six object kinds.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "container/list.h"
#include "container/string.h"
#include "core/matrix.h"
#include "core/scope.h"
#include "scalar/complex.h"
#include "scalar/polynomial.h"
#include "scalar/rational.h"
#include "support/exact.h"

namespace {

// Every registry and pool still links both ways after the scenario.
void CheckAllRegistries() {
  MatRegistryCheck();
  CompRegistryCheck();
  PolyRegistryCheck();
  RatRegistryCheck();
  ListRegistryCheck();
  vkStringRegistryCheck();
}

class RegistryTest : public testing::Test {
 protected:
  void SetUp() override { MatInit(); }
  void TearDown() override { CheckAllRegistries(); }
};

TEST_F(RegistryTest, HeadAndDefinition) {
  Matrix *head = MatRegistryTail();
  while (head->prev != nullptr) head = head->prev;
  EXPECT_STREQ(head->name, "TOPMAT");
  EXPECT_EQ(head->status, 1);
  Matrix *m = MatDef("A", 2, 3);
  EXPECT_EQ(MatRegistryTail(), m);
  EXPECT_STREQ(m->name, "A");
  EXPECT_EQ(m->status, 0);
  EXPECT_EQ(m->cls, kReal);
  EXPECT_EQ(m->rows, 2);
  EXPECT_EQ(m->cols, 3);
  Matrix *e = MatDef("", 0, 5);
  EXPECT_EQ(e->elements, nullptr);
  MatUndef(e);
  MatUndef(m);
  EXPECT_DOUBLE_EQ(eps, 2.22044605e-16);
  EXPECT_NE(eps, 0x1p-52);
}

TEST_F(RegistryTest, SameElementCountAndClassReusesRecordAndStorage) {
  Matrix *a = MatDef("first", 2, 3);
  void *storage = a->elements;
  char *name = a->name;
  MatUndef(a);
  Matrix *b = MatDef("other", 3, 2);  // same length name: the buffer is kept
  EXPECT_EQ(b, a);
  EXPECT_EQ(b->elements, storage);
  EXPECT_EQ(b->name, name);
  EXPECT_STREQ(b->name, "other");
  MatUndef(b);
  // Another class never takes a real record's storage.
  Matrix *c = C_MatDef("", 2, 3);
  EXPECT_NE(c, a);
  MatUndef(c);
  // An empty record lends its record (not storage) to any shape of its class.
  Matrix *z = MatDef("", 0, 0);
  MatUndef(z);
  int before = MatPoolCount(0, kReal);
  Matrix *big = MatDef("", 7, 11);
  EXPECT_EQ(big, z);
  EXPECT_EQ(MatPoolCount(0, kReal), before - 1);
  MatUndef(big);
}

TEST(RegistryDeathTest, LimitsFromTheEnvironment) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
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
  EXPECT_EXIT(limits("7", "12"), testing::ExitedWithCode(0), "^limit=7 bound=12$");
}

TEST(RegistryDeathTest, PoolLimitAllowsOneMoreThanTheLimit) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  auto scenario = [] {
    setenv("MATRIX_TABLE_MAX", "1", 1);
    setenv("MATRIX_SIZE_MAX", "4", 1);
    Matrix *m[3] = {MatDef("", 1, 2), MatDef("", 2, 1), MatDef("", 1, 2)};
    for (Matrix *x : m) MatUndef(x);
    Matrix *big = MatDef("", 1, 5);  // beyond the bound: never pooled
    MatUndef(big);
    fprintf(stderr, "pooled=%d big=%d live=%ld", MatPoolCount(2, kReal), MatPoolCount(5, kReal),
            MatRegistryCheck());
    exit(0);
  };
  EXPECT_EXIT(scenario(), testing::ExitedWithCode(0), "^pooled=2 big=0 live=0$");
}

TEST(RegistryDeathTest, UndefiningTwiceIsReported) {
  Matrix *a = MatDef("", 1, 1);
  MatUndef(a);  // the only record of its stack: linked to nothing now
  EXPECT_EXIT(MatUndef(a), testing::ExitedWithCode(0),
              Exact("\nDuplicate undefining in MatUndef().\n"));
  EXPECT_EXIT(MatDestroy(a), testing::ExitedWithCode(0),
              Exact("\nDuplicate destroying for '(0 x 0)' in MatDestroy().\n"));
  Complex *c = CompDef("", 0, 0);
  CompUndef(c);
  if (c->next == nullptr && c->prev == nullptr) {
    EXPECT_EXIT(CompUndef(c), testing::ExitedWithCode(0),
                Exact("\nDuplicate undefing for '(0,0)' in CompUndef().\n"));
  }
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
  Matrix *t1 = MatDef("", 2, 2);
  Matrix *var = MatSetStatus(MatDef("v", 2, 2), 7);
  Matrix *t2 = MatDef("", 3, 3);
  MatSweep();
  EXPECT_EQ(MatRegistryTail(), var);
  EXPECT_EQ(var->prev, mark);  // t1 and t2 are gone, var passed over
  EXPECT_EQ(early->next, mark);
  (void)t1;
  (void)t2;
  MatUnmark(mark);
  EXPECT_EQ(mark->status, 0);
  MatSweep();  // now the walk goes on to the head
  EXPECT_EQ(MatRegistryTail(), var);
  EXPECT_EQ(var->prev, kept);
  MatUndef(var);
  MatUndef(kept);
}

TEST_F(RegistryTest, LetTakesATemporarysStorageWithoutCopying) {
  Matrix *dst = MatSetStatus(MatDef("dst", 2, 2), 5);
  Matrix *tmp = MatDef("", 3, 1);
  double *storage = MatReal(tmp);
  storage[0] = 1;
  storage[1] = 2;
  storage[2] = 3;
  MatLet(dst, tmp);
  EXPECT_EQ(MatReal(dst), storage);
  EXPECT_EQ(dst->rows, 3);
  EXPECT_EQ(dst->cols, 1);
  EXPECT_EQ(dst->status, 5);
  EXPECT_STREQ(dst->name, "dst");
  EXPECT_EQ(MatRegistryTail(), dst);  // the old contents were swept away with tmp

  // A kept source is copied; the destination keeps its status.
  Matrix *src = MatSetStatus(MatDef("src", 1, 2), 9);
  MatReal(src)[0] = 4;
  MatReal(src)[1] = 5;
  MatLet(dst, src);
  EXPECT_NE(MatReal(dst), MatReal(src));
  EXPECT_EQ(dst->rows, 1);
  EXPECT_EQ(dst->cols, 2);
  EXPECT_EQ(MatReal(dst)[1], 5);
  EXPECT_EQ(dst->status, 5);

  // MatLet(a, a) changes nothing and runs no sweep.
  Matrix *pending = MatDef("", 1, 1);
  MatLet(dst, dst);
  EXPECT_EQ(MatRegistryTail(), pending);
  MatLet(src, src);
  EXPECT_EQ(MatRegistryTail(), pending);
  MatSweep();
  MatUndef(src);
  MatUndef(dst);
}

TEST_F(RegistryTest, CopyExchangeMoveSwapDup) {
  Matrix *a = MatSetStatus(C_MatDef("a", 1, 2), 5);
  double *e = MatReal(a);
  for (int k = 0; k < 4; k++) e[k] = k + 1;
  Matrix *d = MatDup(a);
  EXPECT_EQ(d->cls, kComplex);
  EXPECT_STREQ(d->name, "");
  EXPECT_EQ(memcmp(d->elements, a->elements, 4 * sizeof(double)), 0);
  Matrix *b = MatSetStatus(MatDef("b", 3, 3), 4);
  MatMove(b, d);
  EXPECT_EQ(b->status, 4);
  EXPECT_EQ(b->cls, kComplex);
  EXPECT_EQ(d->status, 0);
  EXPECT_EQ(d->rows, 3);
  EXPECT_STREQ(b->name, "b");
  Matrix *t = MatTransDef(a);
  EXPECT_EQ(t->rows, 2);
  EXPECT_EQ(t->cls, kComplex);
  Matrix *z = MatSameClassZDef(a, 2, 2);
  for (int k = 0; k < 8; k++) EXPECT_EQ(MatReal(z)[k], 0.0);
  MatSwap(a, b);
  EXPECT_EQ(MatReal(b)[3], 4.0);
  EXPECT_EXIT(MatSwap(a, t), testing::ExitedWithCode(0),
              Exact("\nNot same size for 'a(1 x 2)' and '(2 x 1)' in MatSwap().\n"));
  EXPECT_EXIT(MatCopy(MatDef("", 1, 2), a), testing::ExitedWithCode(0),
              Exact("\nNot same class for 'a(1 x 2)' and '(1 x 2)' in MatCopy().\n"));
  EXPECT_EXIT(MatMulDef(a, a), testing::ExitedWithCode(0),
              Exact("\nSize Error for 'a(1 x 2)' and 'a(1 x 2)' in MatMulDef().\n"));
  Matrix *p = MatMulDef(MatSetClass(P_MatDef("", 1, 2), kCompPoly), MatDef("", 2, 4));
  EXPECT_EQ(p->rows, 1);
  EXPECT_EQ(p->cols, 4);
  EXPECT_EQ(p->cls, kCompPoly);
  MatSweep();
  MatUndef(a);
  MatUndef(b);
}

TEST_F(RegistryTest, PolynomialAndRationalElementsAreOwned) {
  Matrix *p = MatSetStatus(P_MatDef("P", 2, 2), 5);
  Polynomial *first = static_cast<Polynomial **>(p->elements)[0];
  EXPECT_EQ(first->degree, -1);
  EXPECT_EQ(first->status, 3);
  PolySweep();  // element objects are out of reach of sweeps
  EXPECT_EQ(static_cast<Polynomial **>(p->elements)[0]->status, 3);
  Matrix *z = MatSameClassZDef(MatSetClass(p, kCompPoly), 1, 1);
  Polynomial *zero = static_cast<Polynomial **>(z->elements)[0];
  EXPECT_EQ(zero->degree, 0);
  EXPECT_EQ(zero->kind, 1);
  EXPECT_EQ(z->cls, kCompPoly);
  // Copies are new owned objects with equal values.
  MatReal(zero->coef)[0] = 7;
  Matrix *dz = MatDup(z);
  Polynomial *copy = static_cast<Polynomial **>(dz->elements)[0];
  EXPECT_NE(copy, zero);
  EXPECT_EQ(copy->status, 3);
  EXPECT_EQ(MatReal(copy->coef)[0], 7.0);
  Matrix *v = MatSetStatus(MatDef("v", 0, 0), 6);
  MatLet(v, dz);  // every temporary (z, dz's old contents) is swept here
  EXPECT_EQ(v->cls, kCompPoly);
  EXPECT_EQ(static_cast<Polynomial **>(v->elements)[0], copy);

  Matrix *rz = MatSetStatus(MatSameClassZDef(R_MatDef("", 1, 1), 1, 2), 8);
  Rational *half = static_cast<Rational **>(rz->elements)[1];
  EXPECT_EQ(half->status, 2);
  EXPECT_EQ(MatReal(half->deno->coef)[0], 1.0);
  EXPECT_EQ(MatReal(half->nume->coef)[0], 0.0);
  MatLet(v, rz);  // a kept source is copied, here with a change of class
  EXPECT_EQ(v->cls, kRat);
  EXPECT_EQ(v->status, 6);
  Rational *copied = static_cast<Rational **>(v->elements)[1];
  EXPECT_NE(copied, half);
  EXPECT_EQ(copied->status, 2);
  EXPECT_EQ(MatReal(copied->deno->coef)[0], 1.0);
  MatUndef(rz);
  MatUndef(v);
  MatUndef(p);
}

TEST_F(RegistryTest, ObjectScopesNestAndReclaimEverythingInside) {
  Matrix *outer_var = MatSetStatus(MatDef("outer", 1, 1), 5);
  long matrices = MatRegistryCheck();
  long polys = PolyRegistryCheck();
  ObjectScope(1);
  Matrix *a = MatSetStatus(P_MatDef("a", 2, 2), 5);  // kept, yet inside the scope
  Polynomial *q = PolySetStatus(PolyDef("q", 3, "z"), 5);
  ObjectScope(1);
  Rational *r = RatSetStatus(RatDef("r", 1, 1), 5);
  Complex *c = CompDef("", 1, 2);
  String *s = vkStringFromText("inner");
  List *l = ListDef("l", 2);
  ListSetObject(l, 1, kListPolynomial, PolyDef("", 2, nullptr));
  ListSetObject(l, 2, kListMatrix, P_MatDef("", 1, 1));
  ObjectScope(0);  // the inner scope ends: r, c, s, l and l's elements go
  // Only the outer scope's mark is left in each of these registries.
  EXPECT_EQ(RatRegistryCheck(), 1);
  EXPECT_EQ(ListRegistryCheck(), 1);
  EXPECT_EQ(vkStringRegistryCheck(), 1);
  EXPECT_EQ(CompRegistryCheck(), 1);
  EXPECT_EQ(a->status, 5);
  EXPECT_EQ(q->status, 5);
  (void)r;
  (void)c;
  (void)s;
  ObjectScope(0);  // the outer scope ends: a and q go too
  EXPECT_EQ(MatRegistryCheck(), matrices);
  EXPECT_EQ(PolyRegistryCheck(), polys);
  EXPECT_EQ(MatRegistryTail(), outer_var);
  ObjectScope(0);  // no open scope: nothing happens
  MatUndef(outer_var);
}

TEST_F(RegistryTest, AssignmentsSweepEveryKind) {
  Complex *x = CompSetStatus(CompDef("x", 0, 0), 5);
  Complex *t = CompDef("", 3, 4);
  Matrix *tm = MatDef("", 2, 2);
  Polynomial *tp = PolyDef("", 1, nullptr);
  String *ts = vkStringFromText("tmp");
  long m0 = MatRegistryCheck() - 1;
  CompLet(x, t);
  EXPECT_EQ(x->re, 3);
  EXPECT_EQ(x->im, 4);
  EXPECT_EQ(x->status, 5);
  EXPECT_EQ(MatRegistryCheck(), m0);
  EXPECT_EQ(vkStringRegistryCheck(), 0);
  (void)tm;
  (void)tp;
  (void)ts;

  Polynomial *p = PolySetStatus(PolyDef("p", 0, nullptr), 5);
  Polynomial *src = PolyDef("", 2, "w");
  MatReal(src->coef)[2] = 9;
  Matrix *coef = src->coef;
  PolyAssign(p, src);
  EXPECT_EQ(p->degree, 2);
  EXPECT_STREQ(p->variable, "w");
  EXPECT_EQ(p->coef, coef);  // a temporary's coefficients are taken, not copied
  Polynomial *kept = PolySetStatus(PolyDef("k", 1, nullptr), 6);
  MatReal(kept->coef)[1] = -1;
  PolyAssign(p, kept);
  EXPECT_EQ(p->degree, 1);
  EXPECT_EQ(p->variable, nullptr);
  EXPECT_EQ(MatReal(p->coef)[1], -1.0);
  EXPECT_NE(p->coef, kept->coef);
  EXPECT_EXIT(PolyAssign(p, PolyDef("", -1, nullptr)), testing::ExitedWithCode(0),
              Exact("\nUndefined polynomial for '(s^-1)' in PolyAssign().\n"));

  Rational *r = RatSetStatus(RatDef("r", 0, 0), 5);
  Rational *rs = RatDef("", 2, 1);
  RatAssign(r, rs);
  EXPECT_EQ(r->nume->degree, 2);
  EXPECT_EQ(r->nume_degree, 2);
  EXPECT_EQ(r->nume->status, 2);

  String *s = vkStringSetStatus(vkStringFromText("abc"), 5);
  String *k = vkStringSetStatus(vkStringFromText("xyz"), 6);
  char *text = s->text;
  vkStringLet(s, k);
  EXPECT_STREQ(s->text, "xyz");
  EXPECT_EQ(s->text, text);  // equal lengths: copied into the existing buffer
  EXPECT_EQ(s->status, 5);
  vkStringLet(s, vkStringFromText("longer"));
  EXPECT_STREQ(s->text, "longer");
  EXPECT_EQ(s->length, 6);

  List *l = ListSetStatus(ListDef("l", 0), 5);
  List *lt = ListDef("", 2);
  ListValue v;
  v.integer = 42;
  ListSetElement(lt, 1, kListInteger, v);
  ListSetObject(lt, 2, kListString, vkStringFromText("e"));
  ListAssign(l, lt);
  EXPECT_EQ(l->length, 2);
  EXPECT_EQ(l->values[0].integer, 42);
  EXPECT_EQ(static_cast<String *>(l->values[1].object)->status, 2);

  for (auto *obj : {x}) CompUndef(obj);
  PolyUndef(p);
  PolyUndef(kept);
  RatUndef(r);
  vkStringUndef(s);
  vkStringUndef(k);
  ListUndef(l);
}

TEST_F(RegistryTest, ListElementsCarryOwnedStatusesAndAreReleased) {
  List *l = ListSetStatus(ListDef("l", 3), 5);
  Polynomial *p = PolyDef("", 2, nullptr);
  ListSetObject(l, 1, kListPolynomial, p);
  EXPECT_EQ(p->status, 4);
  List *inner = ListDef("", 0);
  ListSetObject(l, 2, kListList, inner);
  EXPECT_EQ(inner->status, 3);
  Matrix *m = MatDef("", 1, 1);
  ListSetObject(l, 3, kListIndex, m);
  EXPECT_EQ(m->status, 3);
  EXPECT_EQ(ListOwnedStatus(kListString), 2);
  EXPECT_EQ(ListOwnedStatus(kListComplex), 2);
  EXPECT_EQ(ListOwnedStatus(kListRational), 3);
  // Replacing a polynomial undefines it; replacing a list leaves it a temporary.
  int pooled = PolyPoolCount(2, 0);
  ListValue v;
  v.real = 2.5;
  ListSetElement(l, 1, kListReal, v);
  EXPECT_EQ(PolyPoolCount(2, 0), pooled + 1);
  ListSetElement(l, 2, kListReal, v);
  EXPECT_EQ(inner->status, 0);
  EXPECT_EQ(l->classes[0], kListReal);
  ListSweep();
  EXPECT_EXIT(ListSetElement(l, 4, kListReal, v), testing::ExitedWithCode(0),
              Exact("\nl(4) = \"\" : Index is out of range  in ListSetElement().\n"));
  ListUndef(l);
  EXPECT_EQ(l->classes[2], kListUndefined);
}

TEST(KindLimitsDeathTest, OtherKindsReadTheirOwnVariables) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  auto complex_limit = [] {
    setenv("COMP_TABLE_MAX", "2", 1);
    Complex *c[4];
    for (auto &x : c) x = CompDef("", 0, 0);
    for (auto *x : c) CompUndef(x);
    fprintf(stderr, "pooled=%d", CompPoolCount());
    exit(0);
  };
  // The fourth is freed: the stack already holds more than two.
  EXPECT_EXIT(complex_limit(), testing::ExitedWithCode(0), "^pooled=3$");
  auto list_limit = [] {
    setenv("POLYNOMIAL_TABLE_MAX", "1", 1);  // lists read the polynomial variable
    setenv("LIST_LENGTH_MAX", "3", 1);
    List *l[4] = {ListDef("", 2), ListDef("", 2), ListDef("", 2), ListDef("", 4)};
    for (auto *x : l) ListUndef(x);
    fprintf(stderr, "pooled=%d long=%d", ListPoolCount(2), ListPoolCount(4));
    exit(0);
  };
  EXPECT_EXIT(list_limit(), testing::ExitedWithCode(0), "^pooled=2 long=0$");
  auto string_limit = [] {
    setenv("STRING_LENGTH_MAX", "-3", 1);
    setenv("STRING_TABLE_MAX", "junk", 1);
    String *s = vkStringDef("", 1000);
    vkStringUndef(s);
    String *t = vkStringDef("", 1001);
    vkStringUndef(t);
    fprintf(stderr, "pooled=%d", vkStringPoolCount(1000) + vkStringPoolCount(1001));
    exit(0);
  };
  EXPECT_EXIT(string_limit(), testing::ExitedWithCode(0), "^pooled=1$");
  auto poly_limit = [] {
    setenv("POLYNOMIAL_DEGREE_MAX", "2", 1);
    Polynomial *a = PolyDef("", 2, nullptr);
    Polynomial *b = PolyDef("", 3, nullptr);
    PolyUndef(a);
    PolyUndef(b);
    Polynomial *c = PolyDef("", 2, nullptr);
    fprintf(stderr, "reused=%d pooled3=%d", c == a, PolyPoolCount(3, 0));
    exit(0);
  };
  EXPECT_EXIT(poly_limit(), testing::ExitedWithCode(0), "^reused=1 pooled3=0$");
}

}  // namespace
