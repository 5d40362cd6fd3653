// Any byte string either reads as rational records or ends in a report: never
// a crash, a read past a buffer, a hang or an allocation the data cannot back.
#include <cstdint>
#include <cstdio>

#include "fuzz/fatal_throw.h"
#include "io/poly_io.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzStartOnce(RatInit);
  Rational *target = RatSetStatus(RatDef("", 0, 0), 5);
  FuzzReadRecords(data, size, [&](FILE *f) { RatRead(target, f); });
  RatUndef(target);
  RatSweep();
  return 0;
}
