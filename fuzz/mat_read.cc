// Any byte string either reads as a matrix or scalar record or ends in a
// report: never a crash, a read past a buffer, a hang or an allocation that
// follows a header's claims instead of the data.
#include <cstdint>
#include <cstdio>

#include "core/matrix.h"
#include "fuzz/fatal_throw.h"
#include "io/binary.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzStartOnce(MatInit);
  if (size == 0) return 0;
  // The first byte picks what to read; the rest is the stream.
  FILE *f = fmemopen(const_cast<uint8_t *>(data + 1), size - 1, "rb");
  if (f == nullptr) return 0;
  Matrix *m = MatSetStatus(MatDef("", 0, 0), 5);
  try {
    switch (data[0] % 4) {
      case 0: MatRead(m, f, 7); break;
      case 1: MatRead(m, f, 9); break;
      case 2: {
        int value;
        IntegerRead(&value, f, "fuzz");
        break;
      }
      default: {
        double value;
        RealRead(&value, f, "fuzz");
        break;
      }
    }
  } catch (const FuzzFatal &) {
  }
  fclose(f);
  MatUndef(m);
  MatSweep();
  return 0;
}
