// Lists as typed binary records: the list's own header, then for each element
// its tag word and its complete record, written by the element's own kind
// with an empty name. Nested lists are written and read without recursion.
#include <string>
#include <utility>
#include <vector>

#include "container/list_walk.h"
#include "container/string.h"
#include "core/alloc.h"
#include "core/matrix.h"
#include "io/binary.h"
#include "io/complex_io.h"
#include "io/poly_io.h"
#include "scalar/complex.h"
#include "scalar/polynomial.h"
#include "scalar/rational.h"

namespace {

constexpr int kListKind = 10;

void WriteTag(FILE *stream, int tag) { fwrite(&tag, sizeof tag, 1, stream); }

void WriteLeaf(FILE *stream, List *l, int k) {
  ListValue v = l->values[k];
  int cls = l->classes[k];
  switch (cls) {
    case kListString:
      WithoutName(static_cast<String *>(v.object), [stream](String *s) { vkStringWrite(s, stream); });
      break;
    case kListInteger: IntegerWrite(v.integer, "", stream); break;
    case kListReal: RealWrite(v.real, "", stream); break;
    case kListComplex:
      WithoutName(static_cast<Complex *>(v.object), [stream](Complex *c) { CompWrite(c, stream); });
      break;
    case kListPolynomial:
      WithoutName(static_cast<Polynomial *>(v.object), [stream](Polynomial *p) { PolyWrite(p, stream); });
      break;
    case kListRational:
      WithoutName(static_cast<Rational *>(v.object), [stream](Rational *r) { RatWrite(r, stream); });
      break;
    case kListMatrix:
    case kListArray:
    case kListIndex:
      WithoutName(static_cast<Matrix *>(v.object), [stream, cls](Matrix *m) { MatWrite(m, stream, cls); });
      break;
    default: break;  // an undefined element is its tag alone
  }
}

// Tags a list record may hold: the ten kinds, and an undefined element.
bool WritableClass(int cls) { return (cls >= kListString && cls <= kListList) || cls == kListUndefined; }

struct RecordWriter {
  FILE *stream;
  List *top;
  void Enter(List *x) {
    DataRecordBegin(stream, kListKind, kDataDouble, x->length, 0, 0, x == top ? x->name : "");
  }
  void Before(List *x, int k) {
    if (!WritableClass(x->classes[k])) ListError("ListElementWrite()", "Not appropriate element", x);
    WriteTag(stream, x->classes[k]);
  }
  void Leaf(List *x, int k) { WriteLeaf(stream, x, k); }
  void Leave(List *) {}
};

// ---- Reading ----

struct Item {
  int cls;
  ListValue value;
};

// A list being read: what it claims to hold is only a bound on the loop,
// never an allocation.
struct Frame {
  std::vector<Item> items;
  long long remaining;
  bool foreign;
};

[[noreturn]] void ReadFailure(List *l, const char *message) {
  ListSetMessage("read <- \"\"");
  ListError("ListRead()", message, l);
  VelkFatalExit();  // not reached unless a harness returns from the report
}

List *MakeList(std::vector<Item> &items) {
  List *r = ListDef("", static_cast<int>(items.size()));
  for (size_t k = 0; k < items.size(); k++) ListStore(r, static_cast<int>(k), items[k].cls, items[k].value);
  return r;
}

// One element record of class tag (not a list) as a new temporary object.
ListValue ReadLeaf(FILE *stream, List *l, int tag) {
  ListValue v;
  v.object = nullptr;
  switch (tag) {
    case kListString: {
      String *s = vkStringRead(vkStringDef("", -1), stream);
      v.object = vkStringSetName(s, "");
      break;
    }
    case kListInteger:
      if (IntegerRead(&v.integer, stream, "list") != 0) ReadFailure(l, "Data broken");
      break;
    case kListReal:
      if (RealRead(&v.real, stream, "list") != 0) ReadFailure(l, "Data broken");
      break;
    case kListComplex: v.object = CompSetName(CompRead(CompDef("", 0, 0), stream), ""); break;
    case kListPolynomial: v.object = PolySetName(PolyRead(PolyDef("", -1, nullptr), stream), ""); break;
    case kListRational: v.object = RatSetName(RatRead(RatDef("", 0, 0), stream), ""); break;
    case kListMatrix:
    case kListArray:
    case kListIndex: v.object = MatSetName(MatRead(MatDef("", 0, 0), stream, tag), ""); break;
    default: break;  // undefined: the tag alone
  }
  return v;
}

// Reads `count` tagged elements (nested lists whole) in the byte order of
// the record that holds them.
std::vector<Item> ReadItems(FILE *stream, List *l, long long count, bool foreign) {
  static DataRecord record;  // a 1 KiB name buffer off the stack
  std::vector<Frame> stack;
  stack.push_back({{}, count, foreign});
  for (;;) {
    Frame &top = stack.back();
    if (top.remaining == 0) {
      if (stack.size() == 1) return std::move(top.items);
      ListValue v;
      v.object = MakeList(top.items);
      stack.pop_back();
      stack.back().items.push_back({kListList, v});
      continue;
    }
    top.remaining--;
    int tag;
    if (!DataReadWords(stream, &tag, 1, top.foreign)) ReadFailure(l, "Class data is broken");
    if (!WritableClass(tag)) ReadFailure(l, "Not appropriate element");
    if (tag == kListList) {
      const char *failure = DataRecordOpen(&record, stream, kListKind);
      if (failure != nullptr) ReadFailure(l, failure);
      if (record.header[kDataRows] < 0) ReadFailure(l, "Data structure is broken");
      stack.push_back({{}, record.header[kDataRows], record.foreign});
    } else {
      top.items.push_back({tag, ReadLeaf(stream, l, tag)});
    }
  }
}

}  // namespace

void ListElementWrite(FILE *stream, List *l, int i) {
  if (i < 1 || i > l->length) {
    ListSetMessage("%s(%d)", l->name, i);
    ListError("ListElementWrite()", "Index is out of range", l);
  }
  RecordWriter writer{stream, nullptr};
  writer.Before(l, i - 1);
  if (l->classes[i - 1] == kListList)
    ListWalk(static_cast<List *>(l->values[i - 1].object), writer);
  else
    WriteLeaf(stream, l, i - 1);
}

List *ListWrite(List *l, FILE *stream) {
  RecordWriter writer{stream, l};
  ListWalk(l, writer);
  return l;
}

void ListElementRead(FILE *stream, List *l, int i) {
  if (i < 1 || i > l->length) {
    ListSetMessage("%s(%d)", l->name, i);
    ListError("ListElementRead()", "Index is out of range", l);
  }
  std::vector<Item> items = ReadItems(stream, l, 1, false);
  ListStore(l, i - 1, items[0].cls, items[0].value);
}

List *ListRead(List *l, FILE *stream) {
  static DataRecord record;
  const char *failure = DataRecordOpen(&record, stream, kListKind);
  if (failure != nullptr) ReadFailure(l, failure);
  if (record.header[kDataRows] < 0) ReadFailure(l, "Data structure is broken");
  bool unnamed = record.name[0] == '\0';  // an empty name, whatever length was stored
  std::string name = record.name;  // the nested records reuse the buffer
  std::vector<Item> items = ReadItems(stream, l, record.header[kDataRows], record.foreign);
  List *read = MakeList(items);
  ListMoveContents(l, read);
  ListUndef(read);
  ListSetName(l, unnamed ? "ANS_LIST" : name.c_str());
  return l;
}
