#include "container/list.h"

#include <utility>
#include <vector>

#include "container/list_walk.h"
#include "container/string.h"
#include "core/alloc.h"
#include "core/matrix.h"
#include "core/registry.h"
#include "core/scope.h"
#include "scalar/complex.h"
#include "scalar/polynomial.h"
#include "scalar/rational.h"

char ListMessageBuffer[kMessageSize];

namespace {

Registry<List> reg;
int length_max = 1000;  // longer lists are never pooled

int Slot(int length) { return (length < 0 || length > length_max) ? -1 : length; }

void Describe(FILE *out, const void *object, bool second) {
  const List *l = static_cast<const List *>(object);
  const char *word = second ? " and " : "in ";
  if (l->name != nullptr && l->name[0] != '\0')
    fprintf(out, "%s\"%s (%d element(s))\"", word, l->name, l->length);
  else
    fprintf(out, "%s\"(%d element(s))\"", word, l->length);
}

const ReportKind kReport = {ListMessageBuffer, Describe, "Can't open logfile\n", nullptr, true};

// Gives an element object back to its kind. A nested list is not undefined:
// it becomes a temporary of the list registry again.
void ReleaseElement(List *l, int k) {
  void *object = l->values[k].object;
  switch (l->classes[k]) {
    case kListString: vkStringRelease(static_cast<String *>(object)); break;
    case kListComplex: CompRelease(static_cast<Complex *>(object)); break;
    case kListPolynomial: PolyRelease(static_cast<Polynomial *>(object)); break;
    case kListRational: RatRelease(static_cast<Rational *>(object)); break;
    case kListMatrix:
    case kListArray:
    case kListIndex: MatRelease(static_cast<Matrix *>(object)); break;
    case kListList: {
      List *inner = static_cast<List *>(object);
      reg.Append(inner);
      inner->status = kTemporary;
      break;
    }
    default: break;
  }
  l->classes[k] = kListUndefined;
  l->values[k].object = nullptr;
}

void ReleaseElements(List *l) {
  for (int k = 0; k < l->length; k++) ReleaseElement(l, k);
}

void FreeContents(List *l) {
  ReleaseElements(l);
  if (l->classes != nullptr) efree(l->classes);
  if (l->values != nullptr) efree(l->values);
  l->classes = nullptr;
  l->values = nullptr;
}

void Allocate(List *l, int length) {
  l->classes = static_cast<short *>(emalloc_array(length, sizeof(short)));
  l->values = static_cast<ListValue *>(emalloc_array(length, sizeof(ListValue)));
  for (int k = 0; k < length; k++) {
    l->classes[k] = kListUndefined;
    l->values[k].object = nullptr;
  }
}

bool IsOwnedElsewhere(int cls, void *object) {
  // An owned record is on no list: both links are null.
  switch (cls) {
    case kListString: return static_cast<String *>(object)->prev == nullptr;
    case kListComplex: return static_cast<Complex *>(object)->prev == nullptr;
    case kListPolynomial: return static_cast<Polynomial *>(object)->prev == nullptr;
    case kListRational: return static_cast<Rational *>(object)->prev == nullptr;
    case kListList: return static_cast<List *>(object)->prev == nullptr;
    default: return static_cast<Matrix *>(object)->prev == nullptr;
  }
}

// Whether `inner` is l or holds l at any depth: storing it in l would make
// the list contain itself.
bool Contains(List *inner, List *l) {
  struct Finder {
    List *target;
    bool found = false;
    void Enter(List *x) { found = found || x == target; }
    void Before(List *, int) {}
    void Leaf(List *, int) {}
    void Leave(List *) {}
  } finder{l};
  ListWalk(inner, finder);
  return finder.found;
}

}  // namespace

VELK_DEFINE_REPORTERS(List, List, kReport)

void ListInit() {
  if (reg.Ready()) return;
  List *head = Registry<List>::NewRecord();
  head->name = StringDup("TOPLIST");
  head->status = kMark;
  // Deliberately the polynomial variable: lists share that pool limit.
  reg.limit = EnvLimit("POLYNOMIAL_TABLE_MAX", 0, 0);
  length_max = EnvLimit("LIST_LENGTH_MAX", 1000, 1000);
  reg.Start(head, length_max + 1);
  ListMessageBuffer[0] = '\0';
}

List *ListDef(const char *name, int length) {
  ListInit();
  if (length < 0) length = 0;
  List *l = reg.Take(Slot(length));
  if (l == nullptr) {
    l = Registry<List>::NewRecord();
    Allocate(l, length);
  }
  reg.Append(l);
  l->status = kTemporary;
  l->length = length;
  SetRecordName(&l->name, name);
  return l;
}

void ListDestroy(List *l) {
  reg.Destroy(l, FreeContents, [] { ListError("ListDestroy()", "Duplicate destroying", nullptr); });
}

void ListUndef(List *l) {
  reg.Undef(l, Slot(l->length), ListDestroy, ReleaseElements,
            [] { ListError("ListUndef()", "Duplicate undefining", nullptr); });
}


int ListOwnedStatus(int cls) {
  switch (cls) {
    case kListString:
    case kListComplex: return kOwnedPart;
    case kListPolynomial: return kOwnedListPolynomial;
    default: return kOwnedElement;
  }
}

bool ListIsObjectClass(int cls) {
  return cls == kListString || (cls >= kListComplex && cls <= kListList);
}

void ListStore(List *l, int k, int cls, ListValue value) {
  ReleaseElement(l, k);
  l->classes[k] = static_cast<short>(cls);
  l->values[k] = value;
  if (!ListIsObjectClass(cls)) return;
  int status = ListOwnedStatus(cls);
  switch (cls) {
    case kListString: vkStringOwn(static_cast<String *>(value.object), status); break;
    case kListComplex: CompOwn(static_cast<Complex *>(value.object), status); break;
    case kListPolynomial: PolyOwn(static_cast<Polynomial *>(value.object), status); break;
    case kListRational: RatOwn(static_cast<Rational *>(value.object), status); break;
    case kListList: ListOwn(static_cast<List *>(value.object), status); break;
    default: MatOwn(static_cast<Matrix *>(value.object), status); break;
  }
}

void ListMoveContents(List *dst, List *src) {
  ReleaseElements(dst);
  std::swap(dst->length, src->length);
  std::swap(dst->classes, src->classes);
  std::swap(dst->values, src->values);
}

List *ListSetElement(List *l, int i, int cls, ListValue value) {
  if (i < 1 || i > l->length) {
    ListSetMessage("%s(%d) = \"\"", l->name, i);
    ListError("ListSetElement()", "Index is out of range", l);
    return l;
  }
  if (ListIsObjectClass(cls)) {
    // One owner per object, and no list inside itself: either would release
    // an object twice.
    if (value.object == nullptr || IsOwnedElsewhere(cls, value.object))
      ListError("ListSetElement()", "Element is owned by another object", l);
    // A list on the registry is inside no other list, so only a nested l
    // needs the walk through what it is given.
    List *inner = static_cast<List *>(value.object);
    if (cls == kListList && (inner == l || (l->prev == nullptr && Contains(inner, l))))
      ListError("ListSetElement()", "List can't hold itself", l);
  }
  ListStore(l, i - 1, cls, value);
  return l;
}

List *ListSetObject(List *l, int i, int cls, void *object) {
  ListValue v;
  v.object = object;
  return ListSetElement(l, i, cls, v);
}

ListValue ListCopyValue(int cls, ListValue value) {
  ListValue v = value;
  switch (cls) {
    case kListString: v.object = vkStringDup(static_cast<String *>(value.object)); break;
    case kListComplex: v.object = CompDup(static_cast<Complex *>(value.object)); break;
    case kListPolynomial: v.object = PolyDup(static_cast<Polynomial *>(value.object)); break;
    case kListRational: v.object = RatDup(static_cast<Rational *>(value.object)); break;
    case kListMatrix:
    case kListArray:
    case kListIndex: v.object = MatDup(static_cast<Matrix *>(value.object)); break;
    case kListList: v.object = ListDup(static_cast<List *>(value.object)); break;
    default: break;
  }
  return v;
}

List *ListDup(List *l) {
  // The copy is built along the walk: a new list on entering one, each
  // element copied into the list being built, a finished list stored in its
  // parent on leaving.
  struct Copier {
    struct Building {
      List *copy;
      int at;  // its position in the parent
    };
    std::vector<Building> stack;
    int next_at = 0;
    List *result = nullptr;
    void Before(List *, int k) { next_at = k; }
    void Enter(List *x) { stack.push_back({ListDef("", x->length), next_at}); }
    void Leaf(List *x, int k) {
      ListStore(stack.back().copy, k, x->classes[k], ListCopyValue(x->classes[k], x->values[k]));
    }
    void Leave(List *) {
      Building done = stack.back();
      stack.pop_back();
      if (stack.empty()) {
        result = done.copy;
      } else {
        ListValue v;
        v.object = done.copy;
        ListStore(stack.back().copy, done.at, kListList, v);
      }
    }
  } copier;
  ListWalk(l, copier);
  return copier.result;
}

List *ListAssign(List *dst, List *src) {
  if (dst == src) return dst;
  int status = dst->status;
  if (src->status == kTemporary) {
    std::swap(dst->length, src->length);
    std::swap(dst->classes, src->classes);
    std::swap(dst->values, src->values);
    src->status = kTemporary;
  } else {
    // Copies of the elements, into arrays of the source's length.
    FreeContents(dst);
    Allocate(dst, src->length);
    dst->length = src->length;
    for (int k = 0; k < src->length; k++)
      ListStore(dst, k, src->classes[k], ListCopyValue(src->classes[k], src->values[k]));
  }
  dst->status = static_cast<short>(status);
  SweepInOrder(kSweepAllOrder);
  return dst;
}


const char *ListClassName(int cls) {
  switch (cls) {
    case kListString: return "String";
    case kListInteger: return "Integer";
    case kListReal: return "Real";
    case kListComplex: return "Complex";
    case kListPolynomial: return "Polynomial";
    case kListRational: return "Rational";
    case kListMatrix: return "Matrix";
    case kListArray: return "Array";
    case kListIndex: return "Index";
    case kListList: return "List";
    case kListVoidFunc: return "void Func";
    case kListBuiltinFunc: return "Buitin-Func";
    case kListBuiltinProc: return "Buitin-Proc";
    case kListDynamicFunc: return "Dynamic-Func";
    case kListDynamicProc: return "Dynamic-Proc";
    default: return "Undefined";
  }
}

List *ListCopy(List *dst, List *src) {
  if (dst->length != src->length) ListError2("ListCopy()", "Confliction of length", dst, src);
  if (dst == src) return dst;
  // Copies first: src may be held inside dst.
  std::vector<ListValue> copies;
  for (int k = 0; k < src->length; k++)
    copies.push_back(ListCopyValue(src->classes[k], src->values[k]));
  for (int k = 0; k < src->length; k++) ListStore(dst, k, src->classes[k], copies[k]);
  return dst;
}

List *ListSwap(List *a, List *b) {
  if (a->length != b->length) ListError2("ListSwap()", "Confliction of length", a, b);
  std::swap(a->classes, b->classes);
  std::swap(a->values, b->values);
  return a;
}

List *ListElementsDef(const char *name, int length, int cls) {
  if (cls < kListString || cls > kListList) {
    ListSetMessage("ListElementsDef(\"%s\", %d, %d)", name, length, cls);
    ListError("ListElementsDef()", "Incorrect class", nullptr);
  }
  List *l = ListDef(name, length);
  for (int k = 0; k < l->length; k++) {
    ListValue v;
    v.object = nullptr;
    switch (cls) {
      case kListString: v.object = vkStringFromText(""); break;
      case kListInteger: v.integer = 0; break;
      case kListReal: v.real = 0.0; break;
      case kListComplex: v.object = CompDef("", 0.0, 0.0); break;
      case kListPolynomial: {
        Polynomial *p = PolyDef("", 0, nullptr);
        MatReal(p->coef)[0] = 0.0;
        v.object = p;
        break;
      }
      case kListRational: {
        Rational *r = RatDef("", 0, 0);
        MatReal(r->nume->coef)[0] = 0.0;
        MatReal(r->deno->coef)[0] = 1.0;
        v.object = r;
        break;
      }
      case kListList: v.object = ListDef("", 0); break;
      default: v.object = MatDef("", 0, 0); break;
    }
    ListStore(l, k, cls, v);
  }
  return l;
}

int ListPoolCount(int length) {
  int slot = Slot(length);
  return reg.Ready() && slot >= 0 ? reg.pool_count[slot] : 0;
}

VELK_DEFINE_REGISTRY_ENTRIES(List, List, reg)
VELK_REGISTER_KIND(ObjectKind::kList, List, List, ListDef("", 0))
