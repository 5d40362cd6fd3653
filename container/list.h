// List objects: named, heterogeneous, one-based sequences that own their elements.
#ifndef VELK_CONTAINER_LIST_H
#define VELK_CONTAINER_LIST_H

#include "core/report.h"

// Element class codes (also the kind codes of the typed binary format).
enum ListClass : short {
  kListString = 1,
  kListInteger = 2,
  kListReal = 3,
  kListComplex = 4,
  kListPolynomial = 5,
  kListRational = 6,
  kListMatrix = 7,
  kListArray = 8,
  kListIndex = 9,
  kListList = 10,
  kListUndefined = 261,
};

// One 8-byte slot: an integer, a double, or the element object.
union ListValue {
  int integer;
  double real;
  void *object;
};

struct List {
  char *name;        // empty for temporaries
  short status;      // 0 temporary, 1 mark, 3 owned by a containing list, others kept
  int length;
  short *classes;    // element class codes, element 1 first
  ListValue *values;
  List *prev;
  List *next;
};

extern char ListMessageBuffer[kMessageSize];
#define ListSetMessage(...) FormatMessage(ListMessageBuffer, __VA_ARGS__)
VELK_DECLARE_REPORTERS(List, List)

void ListInit();
List *ListDef(const char *name, int length);
List *ListSetName(List *l, const char *name);
List *ListSetStatus(List *l, int status);
void ListUndef(List *l);
void ListDestroy(List *l);
void ListUndefChain(List *l);
void ListSweep();
void ListUnmark(List *l);
List *ListAssign(List *dst, List *src);
List *ListDup(List *l);

// Stores element i (1-based). An object element is taken over by the list:
// it gets the owned status of its class and leaves its registry. The old
// element is released first.
List *ListSetElement(List *l, int i, int cls, ListValue value);
List *ListSetObject(List *l, int i, int cls, void *object);
// The status an object of an element class is given while a list owns it.
int ListOwnedStatus(int cls);

List *ListOwn(List *l, int status);
void ListRelease(List *l);

long ListRegistryCheck();
int ListPoolCount(int length);

#endif
