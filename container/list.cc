#include "container/list.h"

#include <utility>

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

// A new element object equal to the given one, for copies of lists.
void *DupObject(int cls, void *object) {
  switch (cls) {
    case kListString: return vkStringDup(static_cast<String *>(object));
    case kListComplex: return CompDup(static_cast<Complex *>(object));
    case kListPolynomial: return PolyDup(static_cast<Polynomial *>(object));
    case kListRational: return RatDup(static_cast<Rational *>(object));
    case kListMatrix:
    case kListArray:
    case kListIndex: return MatDup(static_cast<Matrix *>(object));
    case kListList: return ListDup(static_cast<List *>(object));
    default: return nullptr;
  }
}

bool IsObjectClass(int cls) {
  return cls == kListString || (cls >= kListComplex && cls <= kListList);
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

List *ListSetElement(List *l, int i, int cls, ListValue value) {
  if (i < 1 || i > l->length) {
    ListSetMessage("%s(%d) = \"\"", l->name, i);
    ListError("ListSetElement()", "Index is out of range", l);
    return l;
  }
  int k = i - 1;
  ReleaseElement(l, k);
  l->classes[k] = static_cast<short>(cls);
  l->values[k] = value;
  if (!IsObjectClass(cls)) return l;
  int status = ListOwnedStatus(cls);
  switch (cls) {
    case kListString: vkStringOwn(static_cast<String *>(value.object), status); break;
    case kListComplex: CompOwn(static_cast<Complex *>(value.object), status); break;
    case kListPolynomial: PolyOwn(static_cast<Polynomial *>(value.object), status); break;
    case kListRational: RatOwn(static_cast<Rational *>(value.object), status); break;
    case kListList: ListOwn(static_cast<List *>(value.object), status); break;
    default: MatOwn(static_cast<Matrix *>(value.object), status); break;
  }
  return l;
}

List *ListSetObject(List *l, int i, int cls, void *object) {
  ListValue v;
  v.object = object;
  return ListSetElement(l, i, cls, v);
}

List *ListDup(List *l) {
  List *d = ListDef("", l->length);
  for (int k = 0; k < l->length; k++) {
    ListValue v = l->values[k];
    if (IsObjectClass(l->classes[k])) v.object = DupObject(l->classes[k], v.object);
    ListSetElement(d, k + 1, l->classes[k], v);
  }
  return d;
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
    for (int k = 0; k < src->length; k++) {
      ListValue v = src->values[k];
      if (IsObjectClass(src->classes[k])) v.object = DupObject(src->classes[k], v.object);
      ListSetElement(dst, k + 1, src->classes[k], v);
    }
  }
  dst->status = static_cast<short>(status);
  SweepInOrder(kSweepAllOrder);
  return dst;
}


int ListPoolCount(int length) {
  int slot = Slot(length);
  return reg.Ready() && slot >= 0 ? reg.pool_count[slot] : 0;
}

VELK_DEFINE_REGISTRY_ENTRIES(List, List, reg)
VELK_REGISTER_KIND(ObjectKind::kList, List, List, ListDef("", 0))
