// Any byte string either reads as a complex scalar record or ends in a
// report: never a crash, a read past a buffer or a hang.
#include <cstdint>
#include <cstdio>

#include "fuzz/fatal_throw.h"
#include "io/complex_io.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzStartOnce(CompInit);
  FILE *f = fmemopen(const_cast<uint8_t *>(data), size, "rb");
  if (f == nullptr) return 0;
  Complex *c = CompSetStatus(CompDef("", 0, 0), 5);
  try {
    // Records follow one another in a stream; read until one fails.
    for (int k = 0; k < 64; k++) CompRead(c, f);
  } catch (const FuzzFatal &) {
  }
  fclose(f);
  CompUndef(c);
  CompSweep();
  return 0;
}
