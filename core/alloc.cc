#include "core/alloc.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {
FatalHandler fatal_handler = nullptr;
}

FatalHandler SetFatalHandler(FatalHandler handler) {
  FatalHandler old = fatal_handler;
  fatal_handler = handler;
  return old;
}

void VelkFatalExit() {
  fflush(stdout);
  if (fatal_handler != nullptr) fatal_handler();
  // A fatal report ends the run with status 0, like a normal end.
  exit(0);
}

void RuntimeError(const char *location, const char *message, int fatal) {
  fprintf(stderr, "\n%s : %s\n", location, message);
  if (fatal) VelkFatalExit();
}

void *emalloc(int size) {
  if (size == 0) return nullptr;
  void *p = size > 0 ? malloc(static_cast<size_t>(size)) : nullptr;
  if (p == nullptr) {
    char location[64];
    snprintf(location, sizeof location, "emalloc(%d)", size);
    RuntimeError(location, "Out of memory !!", 1);
  }
  return p;
}

void *emalloc_array(long long count, int size) {
  if (count < 0 || size < 0 || (size > 0 && count > INT_MAX / size)) {
    char location[64];
    snprintf(location, sizeof location, "emalloc(%lld)", count * static_cast<long long>(size));
    RuntimeError(location, "Out of memory !!", 1);
    return nullptr;
  }
  return emalloc(static_cast<int>(count) * size);
}

void *erealloc(void *p, int size) {
  char location[64];
  // The old pointer is never printed: the first number is always 0.
  snprintf(location, sizeof location, "erealloc(%d, %d)", 0, size);
  if (p == nullptr) {
    RuntimeError(location, "Invalid memory re-allocation", 1);
    return nullptr;
  }
  void *q = size >= 0 ? realloc(p, static_cast<size_t>(size)) : nullptr;
  if (q == nullptr && size != 0) RuntimeError(location, "Out of memory", 1);
  return q;
}

void efree(void *p) {
  if (p == nullptr) {
    RuntimeError("efree(0)", "Invalid memory free", 1);
    return;
  }
  free(p);
}

char *StringDup(const char *text) {
  if (text == nullptr) return nullptr;
  size_t n = strlen(text);
  char *copy = static_cast<char *>(emalloc(static_cast<int>(n + 1)));
  memcpy(copy, text, n + 1);
  return copy;
}
