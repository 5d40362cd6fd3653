// For fuzz targets: fatal reports throw instead of ending the process, so a
// run goes on after any report; the matrix module is started once.
#ifndef VELK_FUZZ_FATAL_HARNESS_H
#define VELK_FUZZ_FATAL_HARNESS_H

#include "core/alloc.h"
#include "core/matrix.h"

struct FatalReport {};

[[noreturn]] inline void ThrowFatalReport() { throw FatalReport{}; }

inline void StartFuzzHarness() {
  static bool started = [] {
    SetFatalHandler(ThrowFatalReport);
    MatInit();
    return true;
  }();
  (void)started;
}

#endif
