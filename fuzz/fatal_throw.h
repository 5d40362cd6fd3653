// In a fuzz target a fatal report throws instead of ending the process, so
// that the run goes on with the next input.
#ifndef VELK_FUZZ_FATAL_THROW_H
#define VELK_FUZZ_FATAL_THROW_H

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

#endif
