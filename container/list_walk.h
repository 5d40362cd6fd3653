// Internal to container/: storing elements without the public checks, copying
// them, and walking nested lists without recursion, so that a list nested to
// any depth is copied, printed, written and compared in constant stack.
#ifndef VELK_CONTAINER_LIST_WALK_H
#define VELK_CONTAINER_LIST_WALK_H

#include <vector>

#include "container/list.h"

// Element k (0-based) takes value: the old element is released, an object is
// owned. REQUIRES: 0 <= k < length, and an object is on its registry and not
// l or a list holding l.
void ListStore(List *l, int k, int cls, ListValue value);
// Gives dst src's elements (dst's own are released first); src is left with
// dst's emptied arrays and length, ready to be undefined. dst keeps its name
// and status.
void ListMoveContents(List *dst, List *src);
// True for the classes whose slot holds an object.
bool ListIsObjectClass(int cls);
// A copy of a slot: the same number, or a new temporary object.
ListValue ListCopyValue(int cls, ListValue value);

// Runs use(r) with r's name hidden: elements are written and saved without
// the name an object may have had before a list took it.
template <class Record, class Use>
void WithoutName(Record *r, Use use) {
  char *name = r->name;
  r->name = const_cast<char *>("");
  use(r);
  r->name = name;
}

// Visits the elements of l depth first, in order. For every element of every
// list: v.Before(owner, k); then for a nested list v.Enter(inner) ... its
// elements ... v.Leave(inner), for anything else v.Leaf(owner, k). The walk
// itself starts with v.Enter(l) and ends with v.Leave(l).
template <class Visitor>
void ListWalk(List *l, Visitor &v) {
  struct Frame {
    List *list;
    int k;
  };
  std::vector<Frame> stack;
  stack.push_back({l, 0});
  v.Enter(l);
  while (!stack.empty()) {
    List *owner = stack.back().list;
    int k = stack.back().k;
    if (k >= owner->length) {
      stack.pop_back();
      v.Leave(owner);
      continue;
    }
    stack.back().k++;
    v.Before(owner, k);
    if (owner->classes[k] == kListList) {
      List *inner = static_cast<List *>(owner->values[k].object);
      v.Enter(inner);
      stack.push_back({inner, 0});
    } else {
      v.Leaf(owner, k);
    }
  }
}

#endif
