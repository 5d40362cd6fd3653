// Any byte string either reads as polynomial records or ends in a report: never
// a crash, a read past a buffer, a hang or an allocation the data cannot back.
#include <cstdint>
#include <cstdio>

#include "fuzz/fatal_throw.h"
#include "io/poly_io.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzStartOnce(PolyInit);
  FILE *f = fmemopen(const_cast<uint8_t *>(data), size, "rb");
  if (f == nullptr) return 0;
  Polynomial *target = PolySetStatus(PolyDef("", 0, nullptr), 5);
  try {
    // Records follow one another in a stream; read until one fails.
    for (int k = 0; k < 64; k++) PolyRead(target, f);
  } catch (const FuzzFatal &) {
  }
  fclose(f);
  PolyUndef(target);
  PolySweep();
  return 0;
}
