// Any byte string either reads as a complex scalar record or ends in a
// report: never a crash, a read past a buffer or a hang.
#include <cstdint>
#include <cstdio>

#include "fuzz/fatal_throw.h"
#include "io/complex_io.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzStartOnce(CompInit);
  Complex *target = CompSetStatus(CompDef("", 0, 0), 5);
  FuzzReadRecords(data, size, [&](FILE *f) { CompRead(target, f); });
  CompUndef(target);
  CompSweep();
  return 0;
}
