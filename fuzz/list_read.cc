// Any byte string either reads as a list record (nested lists of every kind,
// to any depth) or a string record, or ends in a report:
// never a crash, a read past a buffer, a stack overflow, or an allocation
// that follows a header's counts instead of the data. A list that reads is
// written back, read again and written again: the two writings must agree
// byte for byte.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "container/list.h"
#include "container/string.h"
#include "core/matrix.h"
#include "core/scope.h"
#include "fuzz/fatal_harness.h"
#include "scalar/complex.h"
#include "scalar/polynomial.h"
#include "scalar/rational.h"

namespace {

std::string Written(List *l) {
  char *bytes = nullptr;
  size_t length = 0;
  FILE *out = open_memstream(&bytes, &length);
  ListWrite(l, out);
  fclose(out);
  std::string s(bytes, length);
  free(bytes);
  return s;
}

void SweepAll() { SweepInOrder(kSweepAllOrder); }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  StartFuzzHarness();
  if (size == 0) return 0;
  FILE *f = fmemopen(const_cast<uint8_t *>(data + 1), size - 1, "rb");
  if (f == nullptr) return 0;
  try {
    if (data[0] % 2 == 0) {
      List *l = ListRead(ListDef("", 0), f);
      std::string first = Written(l);
      FILE *again = fmemopen(first.data(), first.size(), "rb");
      List *back = ListRead(ListDef("", 0), again);
      fclose(again);
      if (Written(back) != first) __builtin_trap();
    } else {
      vkStringRead(vkStringDef("", -1), f);
    }
  } catch (const FatalReport &) {
  }
  fclose(f);
  SweepAll();
  return 0;
}
