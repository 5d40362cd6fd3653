// Counts the heap allocations of a benchmark program by interposing the C
// allocator (malloc, calloc, realloc) of the program that includes this.
// Include it in exactly one file of the program.
#ifndef VELK_BENCH_COUNT_ALLOCATIONS_H
#define VELK_BENCH_COUNT_ALLOCATIONS_H

#include <cstdlib>

extern "C" void *__libc_malloc(size_t);
extern "C" void *__libc_calloc(size_t, size_t);
extern "C" void *__libc_realloc(void *, size_t);

static long allocations = 0;

extern "C" void *malloc(size_t n) {
  allocations++;
  return __libc_malloc(n);
}
extern "C" void *calloc(size_t n, size_t m) {
  allocations++;
  return __libc_calloc(n, m);
}
extern "C" void *realloc(void *p, size_t n) {
  allocations++;
  return __libc_realloc(p, n);
}

#endif
