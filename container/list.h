// List objects: named, heterogeneous, one-based sequences that own their elements.
#ifndef VELK_CONTAINER_LIST_H
#define VELK_CONTAINER_LIST_H

#include <cstdio>

#include "core/report.h"

struct Matrix;
struct String;

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
  kListVoidFunc = 276,
  kListBuiltinFunc = 331,
  kListBuiltinProc = 332,
  kListDynamicFunc = 335,
  kListDynamicProc = 336,
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

// The name messages show for an element class ("Undefined" for unknown codes).
const char *ListClassName(int cls);

// Exchanges the contents of two lists of one length; copies src's elements
// over dst's. Both report "Confliction of length" otherwise.
List *ListCopy(List *dst, List *src);
List *ListSwap(List *a, List *b);

// A list of `length` elements of class cls, each a new empty object (the
// empty string, 0, 0.0, (0,0), the zero polynomial and rational, a 0 x 0
// matrix, an empty list). Classes outside 1 ... 10: "Incorrect class".
List *ListElementsDef(const char *name, int length, int cls);

// ---- Elements (1-based) ----
//
// The class check of the getters reports "Mismatched element class".

int ListGetClass(List *l, int i);
// A copy of element i: a new temporary object for object classes.
ListValue ListGetElement(List *l, int i, int cls);
// Element i itself, still owned by the list.
ListValue ListGetElementP(List *l, int i, int cls);
void *ListGetObject(List *l, int i, int cls);
// Assigns a copy of element i to *target: an int or a double for the number
// classes, otherwise the object variable, with its kind's assignment.
void ListGetAndAssignElement(List *l, int i, int cls, void *target);

// ---- Deep access by an index path ----
//
// The first depth - 1 indices walk through nested lists, the last selects an
// element of the list reached. The variadic forms take depth, then the
// indices; the "2" forms the indices as an array. The sub-element forms walk
// all depth indices to a list and select from it with an index matrix.

int ListGetDeepLength(List *l, int depth, ...);
int ListGetDeepLength2(List *l, int depth, const int *indices);
int ListGetDeepClass(List *l, int depth, ...);
int ListGetDeepClass2(List *l, int depth, const int *indices);
ListValue ListGetDeepElement(List *l, int cls, int depth, ...);
ListValue ListGetDeepElement2(List *l, int cls, int depth, const int *indices);
ListValue ListGetDeepElementP(List *l, int cls, int depth, ...);
ListValue ListGetDeepElementP2(List *l, int cls, int depth, const int *indices);
List *ListSetDeepElement(List *l, int cls, ListValue value, int depth, ...);
List *ListSetDeepElement2(List *l, int cls, ListValue value, int depth, const int *indices);
List *ListSetDeepObject(List *l, int cls, void *object, int depth, ...);
List *ListSetDeepObject2(List *l, int cls, void *object, int depth, const int *indices);
List *ListGetDeepSubElement(List *l, Matrix *index, int depth, ...);
List *ListGetDeepSubElement2(List *l, Matrix *index, int depth, const int *indices);
List *ListSetDeepSubElement(List *l, Matrix *index, List *m, int depth, ...);
List *ListSetDeepSubElement2(List *l, Matrix *index, List *m, int depth, const int *indices);

// ---- Structure; every result is a new list of copies unless it says in place ----

// m's elements before element i of l (1 <= i <= length(l)).
List *ListInsert(List *l, int i, List *m);
// Elements i ... j (0 <= i <= j <= length; an i of 0 starts at the first).
List *ListCut(List *l, int i, int j);
// m's elements over l's from position i on, in place.
List *ListPut(List *l, int i, List *m);
// The elements at the positions of an index matrix (the rule of
// vkStringGetSubString2: a real matrix of integers 1 ... length).
List *ListGetSubElements(List *l, Matrix *index);
// Copies of m's elements at those positions, in place; m has one element per
// position or a single element for all of them.
List *ListSetSubElements(List *l, Matrix *index, List *m);
// Nested lists of the given lengths, integer 0 at the bottom.
List *ListMakeList(int depth, ...);
List *ListMakeList2(int depth, const int *lengths);
// l repeated k times (k >= 1).
List *ListMul(List *l, int k);

// ---- Comparisons and extrema over number elements (Integer, Real) ----

// A 1 x n real matrix of 1 and 0: == != > >= < <= || &&.
Matrix *ListCompareElem(List *a, List *b, const char *op);
// 1 where an element is 0, else 0.
Matrix *ListNotElem(List *l);
// 1 when both lists have the same length and every pair of elements the same
// class and value (texts, numbers, matrices, nested lists all compared).
int ListIsElemEqual(List *a, List *b);
// Over elements that are real matrices of one shape or numbers (1 x 1): the
// elementwise maximum (minimum), and the element number where it was first met.
Matrix *ListMatMaximum(List *l);
Matrix *ListMatMaximumElem(List *l);
Matrix *ListMatMinimum(List *l);
Matrix *ListMatMinimumElem(List *l);

// ---- Text ----

// "name = {e1, e2, ...}\n" ("ans" without a name) on stdout.
void ListPrint(List *l);
// The element forms of the printing, with their separators, on a stream.
void ListPrintText(FILE *stream, List *l);
// "name = {...}" in the save form of each element, ";\n\n" when terminate.
List *ListFileSave(List *l, const char *file, int append, int terminate);
void ListElementSave(FILE *stream, List *l, int i);

// ---- Typed binary records: kind 10, rows = element count, then per element
// its tag word and its own record with an empty name ----

List *ListWrite(List *l, FILE *stream);
// Reads one list record into l (which keeps its status); "ANS_LIST" for an
// empty name.
List *ListRead(List *l, FILE *stream);
void ListElementWrite(FILE *stream, List *l, int i);
// Reads one tag and its record into element i.
void ListElementRead(FILE *stream, List *l, int i);

// ---- Formatted reading ----

// Converts input piece by piece with the format's conversions: %e %f %g (l:
// double, h: skipped) give Reals, %d %i %o %u %x (l, h) Integers, %c and %s
// Strings. The file is a descriptor of the stream table.
List *ListFileScanf(int file, const char *format);
List *ListStringScanf(String *s, const char *format);

List *ListOwn(List *l, int status);
void ListRelease(List *l);

long ListRegistryCheck();
int ListPoolCount(int length);

#endif
