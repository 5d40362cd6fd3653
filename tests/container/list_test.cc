// Lists: ownership of stored objects, element and deep access with their
// reports, the structural operations, comparisons and extrema.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "container/list.h"
#include "container/string.h"
#include "core/matrix.h"
#include "core/scope.h"
#include "scalar/complex.h"
#include "scalar/polynomial.h"
#include "scalar/rational.h"
#include "list_values.h"
#include "support/exact.h"

namespace {

struct Counts {
  long mat, comp, poly, rat, list, str;
  bool operator==(const Counts &) const = default;
};

Counts Live() {
  return {MatRegistryCheck(), CompRegistryCheck(), PolyRegistryCheck(),
          RatRegistryCheck(), ListRegistryCheck(), vkStringRegistryCheck()};
}

void SweepAll() { SweepInOrder(kSweepAllOrder); }

List *Ints(std::vector<int> v) {
  List *l = ListDef("", static_cast<int>(v.size()));
  for (size_t k = 0; k < v.size(); k++) ListSetElement(l, static_cast<int>(k) + 1, kListInteger, Int(v[k]));
  return l;
}

std::vector<int> IntsOf(List *l) {
  std::vector<int> v;
  for (int k = 1; k <= l->length; k++) v.push_back(ListGetElementP(l, k, kListInteger).integer);
  return v;
}

std::vector<double> Row(Matrix *m) { return std::vector<double>(MatReal(m), MatReal(m) + MatCount(m)); }

Matrix *RealRow(std::vector<double> v) {
  Matrix *m = MatDef("", 1, static_cast<int>(v.size()));
  for (size_t k = 0; k < v.size(); k++) MatReal(m)[k] = v[k];
  return m;
}

// A list holding one of every object kind, and a nested list.
List *EveryKind() {
  List *l = ListDef("every", 10);
  ListSetObject(l, 1, kListString, vkStringFromText("text"));
  ListSetElement(l, 2, kListInteger, Int(-7));
  ListSetElement(l, 3, kListReal, Real(2.5));
  ListSetObject(l, 4, kListComplex, CompDef("", 1, -2));
  ListSetObject(l, 5, kListPolynomial, PolyDef("", 2, nullptr));
  ListSetObject(l, 6, kListRational, RatDef("", 1, 1));
  ListSetObject(l, 7, kListMatrix, RealRow({1, 2}));
  ListSetObject(l, 8, kListArray, C_MatDef("", 1, 1));
  ListSetObject(l, 9, kListIndex, P_MatDef("", 1, 1));
  ListSetObject(l, 10, kListList, Ints({1, 2}));
  return l;
}

class ListTest : public testing::Test {
 protected:
  void SetUp() override {
    MatInit();
    SweepAll();
    before_ = Live();
  }
  void TearDown() override {
    SweepAll();
    EXPECT_EQ(Live(), before_);  // nothing left defined, and the walks found no broken link
  }
  Counts before_{};
};

TEST_F(ListTest, StoredObjectsLeaveTheirRegistriesWithTheirOwnedStatus) {
  List *l = EveryKind();
  // Only the list itself is on a registry; its elements are on none.
  Counts held = before_;
  held.list++;
  EXPECT_EQ(Live(), held);
  EXPECT_EQ(static_cast<String *>(l->values[0].object)->status, 2);
  EXPECT_EQ(static_cast<Complex *>(l->values[3].object)->status, 2);
  EXPECT_EQ(static_cast<Polynomial *>(l->values[4].object)->status, 4);
  EXPECT_EQ(static_cast<Rational *>(l->values[5].object)->status, 3);
  EXPECT_EQ(static_cast<Matrix *>(l->values[6].object)->status, 3);
  EXPECT_EQ(static_cast<List *>(l->values[9].object)->status, 3);
  SweepAll();
  EXPECT_EQ(Live(), before_);  // the list was a temporary too
}

TEST_F(ListTest, ReplacingUndefinesTheOldObjectButANestedListBecomesATemporary) {
  List *l = ListSetStatus(ListDef("l", 2), 5);
  Polynomial *p = PolyDef("", 3, nullptr);
  ListSetObject(l, 1, kListPolynomial, p);
  int pooled = PolyPoolCount(3, 0);
  ListSetElement(l, 1, kListInteger, Int(1));
  EXPECT_EQ(PolyPoolCount(3, 0), pooled + 1);  // undefined into its pool
  List *inner = Ints({4});
  ListSetObject(l, 2, kListList, inner);
  ListSetElement(l, 2, kListReal, Real(0));
  EXPECT_EQ(inner->status, 0);
  EXPECT_EQ(ListRegistryCheck(), before_.list + 2);  // back on the registry, once
  ListSweep();
  EXPECT_EQ(ListRegistryCheck(), before_.list + 1);
  // Cutting copies; undefining the source releases each element exactly once.
  ListSetObject(l, 1, kListString, vkStringFromText("s"));
  List *cut = ListCut(l, 1, 1);
  EXPECT_NE(cut->values[0].object, l->values[0].object);
  ListUndef(l);
  ListUndef(cut);
}

TEST_F(ListTest, ACopyOwnsNewObjectsAndAssignmentKeepsTheStatus) {
  List *a = EveryKind();
  List *b = ListDup(a);
  for (int k = 0; k < 10; k++) {
    EXPECT_EQ(b->classes[k], a->classes[k]);
    if (k != 1 && k != 2) {
      EXPECT_NE(b->values[k].object, a->values[k].object);
    }
  }
  EXPECT_EQ(ListIsElemEqual(a, b), 1);
  ListSetDeepElement(b, kListInteger, Int(9), 2, 10, 2);
  EXPECT_EQ(ListIsElemEqual(a, b), 0);
  List *v = ListSetStatus(ListDef("v", 0), 6);
  ListAssign(v, a);  // a kept source is copied; the sweep inside takes a and b
  a = ListSetStatus(ListDef("", 0), 0);
  EXPECT_EQ(v->status, 6);
  EXPECT_EQ(v->length, 10);
  List *w = ListSetStatus(ListElementsDef("w", 10, kListReal), 6);
  ListCopy(w, v);
  EXPECT_EQ(ListIsElemEqual(w, v), 1);
  ListSwap(w, ListMakeList(1, 10));
  EXPECT_EQ(w->classes[0], kListInteger);
  ListUndef(v);
  ListUndef(w);
}

TEST_F(ListTest, ElementAccessCopiesOrLendsAndChecksTheClass) {
  List *l = EveryKind();
  EXPECT_EQ(ListGetClass(l, 5), kListPolynomial);
  EXPECT_STREQ(ListClassName(ListGetClass(l, 8)), "Array");
  EXPECT_STREQ(ListClassName(331), "Buitin-Func");
  EXPECT_STREQ(ListClassName(12), "Undefined");
  String *copy = static_cast<String *>(ListGetElement(l, 1, kListString).object);
  EXPECT_NE(copy, ListGetObject(l, 1, kListString));
  EXPECT_EQ(copy->status, 0);
  EXPECT_STREQ(copy->text, "text");
  EXPECT_EQ(ListGetElement(l, 3, kListReal).real, 2.5);
  int n = 0;
  ListGetAndAssignElement(l, 2, kListInteger, &n);
  EXPECT_EQ(n, -7);
  Matrix *m = MatSetStatus(MatDef("m", 0, 0), 5);
  ListGetAndAssignElement(l, 7, kListMatrix, m);
  EXPECT_EQ(Row(m), (std::vector<double>{1, 2}));
  EXPECT_EQ(m->status, 5);
  MatUndef(m);
}

TEST_F(ListTest, DeepAccessWalksNestedLists) {
  List *l = ListMakeList(3, 2, 3, 4);
  EXPECT_EQ(ListGetDeepLength(l, 1, 2), 3);
  EXPECT_EQ(ListGetDeepLength(l, 2, 2, 3), 4);
  EXPECT_EQ(ListGetDeepLength(l, 3, 2, 3, 4), 0);  // an integer there
  ListSetDeepElement(l, kListInteger, Int(42), 3, 2, 3, 4);
  const int path[] = {2, 3, 4};
  EXPECT_EQ(ListGetDeepElement2(l, kListInteger, 3, path).integer, 42);
  EXPECT_EQ(ListGetDeepClass(l, 2, 1, 1), kListList);
  ListSetDeepObject(l, kListString, vkStringFromText("x"), 2, 1, 1);
  EXPECT_EQ(ListGetDeepClass2(l, 2, path), kListList);
  EXPECT_EQ(ListGetDeepClass(l, 2, 1, 1), kListString);
  // Sub-elements of the list a path reaches.
  Matrix *index = RealRow({4, 4});
  List *picked = ListGetDeepSubElement(l, index, 2, 2, 3);
  EXPECT_EQ(IntsOf(picked), (std::vector<int>{42, 42}));
  ListSetDeepSubElement(l, RealRow({1, 2}), Ints({7}), 2, 2, 3);
  EXPECT_EQ(IntsOf(ListGetDeepSubElement(l, RealRow({1, 2, 3, 4}), 2, 2, 3)), (std::vector<int>{7, 7, 0, 42}));
}

TEST_F(ListTest, StructureMakesCopies) {
  List *l = Ints({1, 2, 3});
  EXPECT_EQ(IntsOf(ListInsert(l, 1, Ints({9}))), (std::vector<int>{9, 1, 2, 3}));
  EXPECT_EQ(IntsOf(ListInsert(l, 3, Ints({8, 9}))), (std::vector<int>{1, 2, 8, 9, 3}));
  EXPECT_EQ(IntsOf(ListCut(l, 2, 3)), (std::vector<int>{2, 3}));
  EXPECT_EQ(IntsOf(ListCut(l, 0, 2)), (std::vector<int>{1, 2}));
  EXPECT_EQ(ListCut(l, 0, 0)->length, 0);
  ListPut(l, 2, Ints({5, 6}));
  EXPECT_EQ(IntsOf(l), (std::vector<int>{1, 5, 6}));
  ListPut(l, 1, l);  // onto itself
  EXPECT_EQ(IntsOf(l), (std::vector<int>{1, 5, 6}));
  EXPECT_EQ(IntsOf(ListGetSubElements(l, RealRow({3, 1, 3}))), (std::vector<int>{6, 1, 6}));
  ListSetSubElements(l, RealRow({1, 3}), Ints({0, 4}));
  EXPECT_EQ(IntsOf(l), (std::vector<int>{0, 5, 4}));
  EXPECT_EQ(IntsOf(ListMul(l, 2)), (std::vector<int>{0, 5, 4, 0, 5, 4}));
  List *made = ListMakeList(2, 2, 3);
  EXPECT_EQ(made->length, 2);
  EXPECT_NE(made->values[0].object, made->values[1].object);  // two lists, not one shared
  EXPECT_EQ(IntsOf(static_cast<List *>(made->values[1].object)), (std::vector<int>{0, 0, 0}));
  EXPECT_EQ(ListMakeList(2, 0, 3)->length, 0);
}

TEST_F(ListTest, ComparisonsAndExtremaOverNumbers) {
  List *a = Ints({1, 0, 3});
  List *b = ListDef("", 3);
  ListSetElement(b, 1, kListReal, Real(1));
  ListSetElement(b, 2, kListReal, Real(2));
  ListSetElement(b, 3, kListInteger, Int(0));
  EXPECT_EQ(Row(ListCompareElem(a, b, "==")), (std::vector<double>{1, 0, 0}));
  EXPECT_EQ(Row(ListCompareElem(a, b, ">")), (std::vector<double>{0, 0, 1}));
  EXPECT_EQ(Row(ListCompareElem(a, b, "||")), (std::vector<double>{1, 1, 1}));
  EXPECT_EQ(Row(ListCompareElem(a, b, "&&")), (std::vector<double>{1, 0, 0}));
  EXPECT_EQ(Row(ListNotElem(a)), (std::vector<double>{0, 1, 0}));
  List *m = ListDef("", 3);
  ListSetObject(m, 1, kListMatrix, RealRow({1, 5}));
  ListSetObject(m, 2, kListMatrix, RealRow({4, 2}));
  ListSetElement(m, 3, kListReal, Real(3));
  EXPECT_EQ(Row(ListMatMaximum(m)), (std::vector<double>{4, 5}));
  EXPECT_EQ(Row(ListMatMaximumElem(m)), (std::vector<double>{2, 1}));
  EXPECT_EQ(Row(ListMatMinimum(m)), (std::vector<double>{1, 2}));
  EXPECT_EQ(Row(ListMatMinimumElem(m)), (std::vector<double>{1, 2}));
}

TEST_F(ListTest, ANestedListTenThousandDeepIsCopiedComparedAndReleased) {
  List *top = ListDef("", 1);
  List *at = top;
  for (int d = 0; d < 10000; d++) {
    List *inner = ListDef("", 1);
    ListSetObject(at, 1, kListList, inner);
    at = inner;
  }
  ListSetElement(at, 1, kListInteger, Int(5));
  List *copy = ListDup(top);
  EXPECT_EQ(ListIsElemEqual(top, copy), 1);
}

using ListDeathTest = ListTest;

TEST_F(ListDeathTest, ReportsOfElementsDeepAccessAndStructure) {
  List *l = ListSetName(ListMakeList(2, 2, 2), "l");
  List *anon = Ints({1});
  auto die = [](auto body, const std::string &text) {
    EXPECT_EXIT(body(), testing::ExitedWithCode(0), Exact(text));
  };
  for (int k : {0, 3})
    die([&] { ListSetElement(l, k, kListInteger, Int(0)); },
        "\nl(" + std::to_string(k) + ") = \"\" : Index is out of range  in ListSetElement().\n");
  die([&] { ListGetClass(l, 3); }, "\ntypeof(l, 3) : Index is out of range  in ListGetClass().\n");
  die([&] { ListGetElement(l, 1, kListString); },
      "\nl(1, String) : Mismatched element class  in ListGetElement().\n");
  die([&] { ListGetElementP(anon, 1, kListReal); },
      "\n{...}(1, Real) : Mismatched element class  in ListGetElementP().\n");
  die([&] { ListGetDeepLength(l, 0); }, "\nDepth must be positive in \"l (2 element(s))\" in ListGetDeepLength().\n");
  die([&] { ListGetDeepClass(l, 2, 0, 1); }, "\nl(0, 1) : Length must be > 0  in ListGetDeepClass().\n");
  die([&] { ListGetDeepClass(l, 3, 1, 1, 1); }, "\nl(1, 1, 1) : Mismatched element  in ListGetDeepClass().\n");
  for (auto [i, j] : {std::pair{1, 3}, std::pair{3, 1}})
    die([&] { ListGetDeepElement(l, kListInteger, 2, i, j); },
        "\nl(" + std::to_string(i) + ", " + std::to_string(j) + ") : Index is out of range  in ListGetDeepElement().\n");
  die([&] { ListInsert(l, 3, anon); }, "\nl(3) =  : Size Error  in ListInsert().\n");
  die([&] { ListCut(anon, 1, 2); }, "\n{...}(1:2) : Size Error  in ListCut().\n");
  die([&] { ListPut(l, 2, ListMakeList(1, 2)); }, "\nl(2) =  : Length Error  in ListPut().\n");
  die([&] { ListMakeList(0); }, "\nDepth must be positive  in ListMakeList().\n");
  die([&] { ListMakeList(2, 1, 0); }, "\nLength must be >= 0  in ListMakeList().\n");
  die([&] { ListMul(l, 0); }, "\nmultiplier must be >= 0 in \"l (2 element(s))\" in ListMul().\n");
  die([&] { ListGetSubElements(l, RealRow({1.5})); },
      "\nNot a suitable index in \"l (2 element(s))\" in ListGetSubElements().\n");
  const std::string conflict = "\nConfliction of length in \"l (2 element(s))\" and \"(1 element(s))\" in ";
  die([&] { ListCopy(l, anon); }, conflict + "ListCopy().\n");
  die([&] { ListSwap(l, anon); }, conflict + "ListSwap().\n");
  die([&] { ListCompareElem(l, anon, "=="); },
      "\nMismatch length in \"l (2 element(s))\" and \"(1 element(s))\" in ListCompareElem().\n");
  die([&] { ListCompareElem(anon, anon, "=<"); },
      "\nIncorrect operator in \"(1 element(s))\" and \"(1 element(s))\" in ListCompareElem().\n");
  die([&] { ListCompareElem(l, l, "=="); },
      "\nIncorrect class element in \"l (2 element(s))\" in ListCompareElem().\n");
  die([&] { ListElementsDef("e", 1, 11); }, "\nListElementsDef(\"e\", 1, 11) : Incorrect class  in ListElementsDef().\n");
  // No list inside itself, and no object with two owners.
  die([&] { ListSetObject(anon, 1, kListList, anon); },
      "\nList can't hold itself in \"(1 element(s))\" in ListSetElement().\n");
  die([&] { ListSetObject(anon, 1, kListList, l->values[0].object); },
      "\nElement is owned by another object in \"(1 element(s))\" in ListSetElement().\n");
  die([&] { ListSetObject(static_cast<List *>(l->values[0].object), 1, kListList, l); },
      "\nList can't hold itself in \"(2 element(s))\" in ListSetElement().\n");
}

}  // namespace
