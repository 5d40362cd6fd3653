// Element values for the list tests.
#ifndef VELK_TESTS_CONTAINER_LIST_VALUES_H
#define VELK_TESTS_CONTAINER_LIST_VALUES_H

#include "container/list.h"

inline ListValue Int(int v) {
  ListValue x;
  x.object = nullptr;
  x.integer = v;
  return x;
}

inline ListValue Real(double v) {
  ListValue x;
  x.real = v;
  return x;
}

#endif
