// Any bytes, read as a matrix text file by the library's reader (from a file
// and through standard input) and by the plain reference reader: both must
// accept or both reject, with the same shape and the same bits, and nothing
// may crash, hang, read past a buffer or allocate what the data cannot fill.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "core/matrix.h"
#include "tests/io/read_compare.h"
#include "tests/io/reference_reader.h"

namespace {

std::string InputPath() {
  const char *dir = getenv("TMPDIR");
  std::string path = std::string(dir != nullptr ? dir : "/tmp") + "/velk-fuzz-XXXXXX";
  int fd = mkstemp(path.data());
  if (fd < 0) abort();
  close(fd);
  return path;
}

void Check(const ReferenceMatrix &expected, const ReferenceMatrix &got, const char *how) {
  std::string why = Disagreement(expected, got);
  if (why.empty()) return;
  fprintf(stderr, "readers disagree (%s): %s\n", how, why.c_str());
  abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static const std::string path = [] {
    MatInit();
    atexit([] { unlink(path.c_str()); });
    return InputPath();
  }();
  FILE *fp = fopen(path.c_str(), "wb");
  if (fp == nullptr) abort();
  fwrite(data, 1, size, fp);
  fclose(fp);

  ReferenceMatrix expected = ReferenceRead(path.c_str());
  Check(expected, FastRead(path.c_str()), "file");
  if (freopen(path.c_str(), "r", stdin) == nullptr) abort();
  Check(expected, FastRead("stdin"), "stdin");
  MatSweep();
  return 0;
}
