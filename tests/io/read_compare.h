// Runs the library's reader so that a broken-data report comes back as a
// result instead of ending the process, and compares two readings bit for
// bit. Shared by the tests and the fuzzer.
#ifndef VELK_TESTS_IO_READ_COMPARE_H
#define VELK_TESTS_IO_READ_COMPARE_H

#include <fcntl.h>
#include <unistd.h>

#include <bit>
#include <cstdint>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "core/alloc.h"
#include "core/matrix.h"
#include "io/text_format.h"
#include "tests/io/reference_reader.h"

struct FatalReport {};

// The doubles of a real or complex matrix, in storage order.
inline std::vector<double> Elements(Matrix *m) {
  return std::vector<double>(MatReal(m), MatReal(m) + MatCount(m) * (m->cls == kComplex ? 2 : 1));
}

// MatFileRead of file, as a ReferenceMatrix (ok false after a fatal report,
// whose text and bell go to /dev/null).
inline ReferenceMatrix FastRead(const char *file) {
  fflush(nullptr);
  const int saved[] = {dup(1), dup(2)}, null = open("/dev/null", O_WRONLY);
  for (int fd : {1, 2}) dup2(null, fd);
  close(null);
  const FatalHandler old = SetFatalHandler([] { throw FatalReport{}; });
  ReferenceMatrix r;
  try {
    Matrix *m = MatFileRead(file);
    r = {true, m->rows, m->cols, m->cls == kComplex, Elements(m)};
    MatUndef(m);
  } catch (const FatalReport &) {
  }
  SetFatalHandler(old);
  fflush(nullptr);
  for (int fd : {1, 2}) {
    dup2(saved[fd - 1], fd);
    close(saved[fd - 1]);
  }
  return r;
}

// Empty when a and b agree; otherwise both readings: the outcome, the shape
// and the bits of every value (so NaN payloads and the sign of zero count).
inline std::string Disagreement(const ReferenceMatrix &a, const ReferenceMatrix &b) {
  auto describe = [](const ReferenceMatrix &r) {
    std::ostringstream out;
    out << (r.ok ? "ok " : "broken ") << r.rows << "x" << r.cols << (r.complex ? "C" : "");
    for (double v : r.values) out << " " << std::hex << std::bit_cast<uint64_t>(v);
    return out.str();
  };
  return describe(a) == describe(b) ? "" : describe(a) + " vs " + describe(b);
}

#endif
