// In a fuzz target a fatal report throws instead of ending the process, so
// that the run goes on with the next input.
#ifndef VELK_FUZZ_FATAL_THROW_H
#define VELK_FUZZ_FATAL_THROW_H

#include <cstdint>
#include <cstdio>

#include "core/alloc.h"

struct FuzzFatal {};

// Installs the throwing handler, then runs start; both once per process.
template <class Start>
void FuzzStartOnce(Start start) {
  static bool started = [&] {
    SetFatalHandler([] { throw FuzzFatal{}; });
    start();
    return true;
  }();
  (void)started;
}

// Reads the bytes as a stream of records with read(stream) until one fails
// (64 at the most): records follow one another in a stream.
template <class Read>
void FuzzReadRecords(const uint8_t *data, size_t size, Read read) {
  FILE *f = fmemopen(const_cast<uint8_t *>(data), size, "rb");
  if (f == nullptr) return;
  try {
    for (int k = 0; k < 64; k++) read(f);
  } catch (const FuzzFatal &) {
  }
  fclose(f);
}

#endif
