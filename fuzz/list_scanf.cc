// Formats and inputs of the list scanf: the first part of the data is the
// format, the rest the input. Whatever they hold, a conversion is made, the
// input ends the list, or the mismatch is reported; never a read through a
// pointer the format made up.
#include <cstdint>
#include <cstring>
#include <string>

#include "container/list.h"
#include "container/string.h"
#include "core/matrix.h"
#include "fuzz/fatal_harness.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  StartFuzzHarness();
  // Format and input are split at the first NUL; both are C strings.
  std::string all(reinterpret_cast<const char *>(data), size);
  size_t split = all.find('\0');
  if (split == std::string::npos) return 0;
  std::string format = all.substr(0, split);
  std::string input = all.substr(split + 1);
  input = input.substr(0, strlen(input.c_str()));
  try {
    ListStringScanf(vkStringFromText(input.c_str()), format.c_str());
  } catch (const FatalReport &) {
  }
  ListSweep();
  vkStringSweep();
  return 0;
}
