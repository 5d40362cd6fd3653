// Element access, deep access by index path, and the structural operations.
#include <cstdarg>
#include <string>
#include <vector>

#include "container/index.h"
#include "container/list_walk.h"
#include "container/string.h"
#include "core/matrix.h"
#include "scalar/complex.h"
#include "scalar/polynomial.h"
#include "scalar/rational.h"

namespace {

const char *NameOr(List *l) { return l->name[0] != '\0' ? l->name : "{...}"; }

void CheckIndex(List *l, int i, const char *location) {
  if (i < 1 || i > l->length) {
    ListSetMessage("%s(%d)", NameOr(l), i);
    ListError(location, "Index is out of range", l);
  }
}

void CheckClass(List *l, int i, int cls, const char *location) {
  CheckIndex(l, i, location);
  if (l->classes[i - 1] != cls) {
    ListSetMessage("%s(%d, %s)", NameOr(l), i, ListClassName(cls));
    ListError(location, "Mismatched element class", l);
  }
}

// "name(i1, i2, ...)" for the reports of deep access.
void SetPathMessage(List *l, int depth, const int *indices) {
  std::string path = std::string(NameOr(l)) + "(";
  for (int k = 0; k < depth; k++) path += (k > 0 ? ", " : "") + std::to_string(indices[k]);
  ListSetMessage("%s)", path.c_str());
}

// Walks `steps` indices through nested lists and returns the list reached.
List *Walk(List *l, int depth, const int *indices, int steps, const char *location) {
  if (depth < 1) ListError(location, "Depth must be positive", l);
  List *at = l;
  for (int k = 0; k < steps; k++) {
    int i = indices[k];
    const char *failure = nullptr;
    if (i < 1)
      failure = "Length must be > 0";
    else if (i > at->length)
      failure = "Index is out of range";
    else if (at->classes[i - 1] != kListList)
      failure = "Mismatched element";
    if (failure != nullptr) {
      SetPathMessage(l, depth, indices);
      ListError(location, failure, l);
    }
    at = static_cast<List *>(at->values[i - 1].object);
  }
  return at;
}

// The list holding the element a full path names, and that element's index.
List *WalkToElement(List *l, int depth, const int *indices, const char *location, int *last) {
  List *at = Walk(l, depth, indices, depth - 1, location);
  *last = indices[depth - 1];
  if (*last < 1 || *last > at->length) {
    SetPathMessage(l, depth, indices);
    ListError(location, "Index is out of range", l);
  }
  return at;
}

std::vector<int> TakeIndices(int depth, va_list ap) {
  std::vector<int> indices;
  for (int k = 0; k < depth; k++) indices.push_back(va_arg(ap, int));
  indices.push_back(0);  // keeps data() valid for a depth of 0
  return indices;
}

// Copies of n elements of src from index `from` (0-based) into dst from `to`.
// Copies are all made before any store, so src may be dst.
void CopyRange(List *dst, int to, List *src, int from, int n) {
  std::vector<ListValue> copies;
  for (int k = 0; k < n; k++)
    copies.push_back(ListCopyValue(src->classes[from + k], src->values[from + k]));
  for (int k = 0; k < n; k++) ListStore(dst, to + k, src->classes[from + k], copies[k]);
}

}  // namespace

// ---- Elements ----

int ListGetClass(List *l, int i) {
  if (i < 1 || i > l->length) {
    ListSetMessage("typeof(%s, %d)", l->name, i);
    ListError("ListGetClass()", "Index is out of range", l);
  }
  return l->classes[i - 1];
}

ListValue ListGetElementP(List *l, int i, int cls) {
  CheckClass(l, i, cls, "ListGetElementP()");
  return l->values[i - 1];
}

ListValue ListGetElement(List *l, int i, int cls) {
  CheckClass(l, i, cls, "ListGetElement()");
  return ListCopyValue(cls, l->values[i - 1]);
}

void *ListGetObject(List *l, int i, int cls) {
  CheckClass(l, i, cls, "ListGetObject()");
  return l->values[i - 1].object;
}

void ListGetAndAssignElement(List *l, int i, int cls, void *target) {
  CheckClass(l, i, cls, "ListGetAndAssignElement()");
  ListValue v = ListCopyValue(cls, l->values[i - 1]);
  switch (cls) {
    case kListInteger: *static_cast<int *>(target) = v.integer; break;
    case kListReal: *static_cast<double *>(target) = v.real; break;
    case kListString: vkStringLet(static_cast<String *>(target), static_cast<String *>(v.object)); break;
    case kListComplex: CompLet(static_cast<Complex *>(target), static_cast<Complex *>(v.object)); break;
    case kListPolynomial:
      PolyAssign(static_cast<Polynomial *>(target), static_cast<Polynomial *>(v.object));
      break;
    case kListRational:
      RatAssign(static_cast<Rational *>(target), static_cast<Rational *>(v.object));
      break;
    case kListList: ListAssign(static_cast<List *>(target), static_cast<List *>(v.object)); break;
    case kListMatrix:
    case kListArray:
    case kListIndex: MatLet(static_cast<Matrix *>(target), static_cast<Matrix *>(v.object)); break;
    default: break;
  }
}

// ---- Deep access ----

int ListGetDeepLength2(List *l, int depth, const int *indices) {
  int last;
  List *at = WalkToElement(l, depth, indices, "ListGetDeepLength()", &last);
  if (at->classes[last - 1] != kListList) return 0;
  return static_cast<List *>(at->values[last - 1].object)->length;
}

int ListGetDeepClass2(List *l, int depth, const int *indices) {
  int last;
  List *at = WalkToElement(l, depth, indices, "ListGetDeepClass()", &last);
  return at->classes[last - 1];
}

ListValue ListGetDeepElementP2(List *l, int cls, int depth, const int *indices) {
  int last;
  List *at = WalkToElement(l, depth, indices, "ListGetDeepElementP()", &last);
  CheckClass(at, last, cls, "ListGetDeepElementP()");
  return at->values[last - 1];
}

ListValue ListGetDeepElement2(List *l, int cls, int depth, const int *indices) {
  int last;
  List *at = WalkToElement(l, depth, indices, "ListGetDeepElement()", &last);
  CheckClass(at, last, cls, "ListGetDeepElement()");
  return ListCopyValue(cls, at->values[last - 1]);
}

List *ListSetDeepElement2(List *l, int cls, ListValue value, int depth, const int *indices) {
  int last;
  List *at = WalkToElement(l, depth, indices, "ListSetDeepElement()", &last);
  ListSetElement(at, last, cls, value);
  return l;
}

List *ListSetDeepObject2(List *l, int cls, void *object, int depth, const int *indices) {
  ListValue v;
  v.object = object;
  return ListSetDeepElement2(l, cls, v, depth, indices);
}

List *ListGetDeepSubElement2(List *l, Matrix *index, int depth, const int *indices) {
  return ListGetSubElements(Walk(l, depth, indices, depth, "ListGetDeepSubElement()"), index);
}

List *ListSetDeepSubElement2(List *l, Matrix *index, List *m, int depth, const int *indices) {
  ListSetSubElements(Walk(l, depth, indices, depth, "ListSetDeepSubElement()"), index, m);
  return l;
}

#define VELK_DEEP_FORM(Result, Name, Declared, Passed)        \
  Result Name Declared {                                      \
    va_list ap;                                               \
    va_start(ap, depth);                                      \
    std::vector<int> indices = TakeIndices(depth, ap);        \
    va_end(ap);                                               \
    return Name##2 Passed;                                    \
  }

VELK_DEEP_FORM(int, ListGetDeepLength, (List *l, int depth, ...), (l, depth, indices.data()))
VELK_DEEP_FORM(int, ListGetDeepClass, (List *l, int depth, ...), (l, depth, indices.data()))
VELK_DEEP_FORM(ListValue, ListGetDeepElement, (List *l, int cls, int depth, ...),
               (l, cls, depth, indices.data()))
VELK_DEEP_FORM(ListValue, ListGetDeepElementP, (List *l, int cls, int depth, ...),
               (l, cls, depth, indices.data()))
VELK_DEEP_FORM(List *, ListSetDeepElement, (List *l, int cls, ListValue value, int depth, ...),
               (l, cls, value, depth, indices.data()))
VELK_DEEP_FORM(List *, ListSetDeepObject, (List *l, int cls, void *object, int depth, ...),
               (l, cls, object, depth, indices.data()))
VELK_DEEP_FORM(List *, ListGetDeepSubElement, (List *l, Matrix *index, int depth, ...),
               (l, index, depth, indices.data()))
VELK_DEEP_FORM(List *, ListSetDeepSubElement, (List *l, Matrix *index, List *m, int depth, ...),
               (l, index, m, depth, indices.data()))

// ---- Structure ----

List *ListInsert(List *l, int i, List *m) {
  if (i < 1 || i > l->length) {
    ListSetMessage("%s(%d) = %s", l->name, i, m->name);
    ListError2("ListInsert()", "Size Error", l, m);
  }
  List *r = ListDef("", l->length + m->length);
  CopyRange(r, 0, l, 0, i - 1);
  CopyRange(r, i - 1, m, 0, m->length);
  CopyRange(r, i - 1 + m->length, l, i - 1, l->length - i + 1);
  return r;
}

List *ListCut(List *l, int i, int j) {
  if (i < 0 || i > j || j > l->length) {
    ListSetMessage("%s(%d:%d)", NameOr(l), i, j);
    ListError("ListCut()", "Size Error", l);
  }
  int from = i < 1 ? 1 : i;
  List *r = ListDef("", j - from + 1);
  CopyRange(r, 0, l, from - 1, j - from + 1);
  return r;
}

List *ListPut(List *l, int i, List *m) {
  if (i < 1 || static_cast<long long>(i) + m->length - 1 > l->length) {
    ListSetMessage("%s(%d) = %s", l->name, i, m->name);
    ListError2("ListPut()", "Length Error", l, m);
  }
  CopyRange(l, i - 1, m, 0, m->length);
  return l;
}

List *ListGetSubElements(List *l, Matrix *index) {
  std::vector<int> at;
  if (!IndexPositions(index, l->length, &at)) ListError("ListGetSubElements()", "Not a suitable index", l);
  List *r = ListDef("", static_cast<int>(at.size()));
  for (size_t k = 0; k < at.size(); k++) CopyRange(r, static_cast<int>(k), l, at[k] - 1, 1);
  return r;
}

List *ListSetSubElements(List *l, Matrix *index, List *m) {
  std::vector<int> at;
  if (!IndexPositions(index, l->length, &at)) ListError("ListSetSubElements()", "Not a suitable index", l);
  if (m->length != 1 && static_cast<size_t>(m->length) != at.size())
    ListError2("ListSetSubElements()", "Length Error", l, m);
  // Copies first: m may be l, or hold elements about to be replaced.
  std::vector<ListValue> copies;
  for (size_t k = 0; k < at.size(); k++) {
    int from = m->length == 1 ? 0 : static_cast<int>(k);
    copies.push_back(ListCopyValue(m->classes[from], m->values[from]));
  }
  for (size_t k = 0; k < at.size(); k++)
    ListStore(l, at[k] - 1, m->classes[m->length == 1 ? 0 : k], copies[k]);
  return l;
}

List *ListMakeList2(int depth, const int *lengths) {
  if (depth < 1) ListError("ListMakeList()", "Depth must be positive", nullptr);
  for (int k = 0; k < depth; k++)
    if (lengths[k] < 0 || (k > 0 && lengths[k] == 0))
      ListError("ListMakeList()", "Length must be >= 0", nullptr);
  // Bottom up, so the depth costs no stack: each level holds copies of the
  // level below it.
  List *level = ListDef("", lengths[depth - 1]);
  for (int k = 0; k < level->length; k++) {
    ListValue zero;
    zero.object = nullptr;
    zero.integer = 0;
    ListStore(level, k, kListInteger, zero);
  }
  for (int d = depth - 2; d >= 0; d--) {
    List *upper = ListDef("", lengths[d]);
    for (int k = 0; k < upper->length; k++) {
      ListValue v;
      v.object = k == 0 ? level : ListDup(level);
      ListStore(upper, k, kListList, v);
    }
    if (upper->length == 0) ListUndef(level);
    level = upper;
  }
  return level;
}

List *ListMakeList(int depth, ...) {
  va_list ap;
  va_start(ap, depth);
  std::vector<int> lengths = TakeIndices(depth, ap);
  va_end(ap);
  return ListMakeList2(depth, lengths.data());
}

List *ListMul(List *l, int k) {
  if (k < 1) ListError("ListMul()", "multiplier must be >= 0", l);
  long long n = static_cast<long long>(l->length) * k;
  if (n > 0x7fffffffLL) ListError("ListMul()", "multiplier must be >= 0", l);
  List *r = ListDef("", static_cast<int>(n));
  for (int c = 0; c < k; c++) CopyRange(r, c * l->length, l, 0, l->length);
  return r;
}
