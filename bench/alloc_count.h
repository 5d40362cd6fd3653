// Counts the heap allocations of the benchmark program that includes it, by
// interposing the C allocator (new goes through malloc too). Include it in
// exactly one file of a program.
#ifndef VELK_BENCH_ALLOC_COUNT_H
#define VELK_BENCH_ALLOC_COUNT_H

#include <cstddef>

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
