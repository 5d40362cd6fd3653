// Runs the library's reader so that a broken-data report comes back as a
// result instead of ending the process, and compares two readings bit for
// bit. Shared by the tests and the fuzzer.
#ifndef VELK_TESTS_IO_READ_COMPARE_H
#define VELK_TESTS_IO_READ_COMPARE_H

#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "core/alloc.h"
#include "core/matrix.h"
#include "io/text_format.h"
#include "tests/io/reference_reader.h"

struct FatalReport {};

[[noreturn]] inline void ThrowFatalReport() { throw FatalReport{}; }

// While alive, fatal reports throw FatalReport and the report's text (and
// the bell) go to /dev/null.
class QuietFatal {
 public:
  QuietFatal() {
    fflush(stdout);
    fflush(stderr);
    saved_out_ = dup(1);
    saved_err_ = dup(2);
    FILE *null = fopen("/dev/null", "w");
    dup2(fileno(null), 1);
    dup2(fileno(null), 2);
    fclose(null);
    old_ = SetFatalHandler(ThrowFatalReport);
  }
  ~QuietFatal() {
    SetFatalHandler(old_);
    fflush(stdout);
    fflush(stderr);
    dup2(saved_out_, 1);
    dup2(saved_err_, 2);
    close(saved_out_);
    close(saved_err_);
  }
  QuietFatal(const QuietFatal &) = delete;
  QuietFatal &operator=(const QuietFatal &) = delete;

 private:
  int saved_out_, saved_err_;
  FatalHandler old_;
};

// MatFileRead of file, as a ReferenceMatrix (ok false after a fatal report).
inline ReferenceMatrix FastRead(const char *file) {
  ReferenceMatrix r;
  Matrix *m = nullptr;
  {
    QuietFatal quiet;
    try {
      m = MatFileRead(file);
    } catch (const FatalReport &) {
      m = nullptr;
    }
  }
  if (m == nullptr) return r;
  r.ok = true;
  r.rows = m->rows;
  r.cols = m->cols;
  r.complex = m->cls == kComplex;
  size_t n = static_cast<size_t>(MatCount(m)) * (r.complex ? 2 : 1);
  if (n > 0) r.values.assign(MatReal(m), MatReal(m) + n);
  MatUndef(m);
  return r;
}

// Empty when a and b agree (values compared as bits, so NaN payloads and the
// sign of zero count); otherwise what differs first.
inline std::string Disagreement(const ReferenceMatrix &a, const ReferenceMatrix &b) {
  char text[256];
  if (a.ok != b.ok) {
    snprintf(text, sizeof text, "accepted %d vs %d", a.ok, b.ok);
    return text;
  }
  if (a.rows != b.rows || a.cols != b.cols || a.complex != b.complex) {
    snprintf(text, sizeof text, "shape %dx%d%s vs %dx%d%s", a.rows, a.cols, a.complex ? "C" : "",
             b.rows, b.cols, b.complex ? "C" : "");
    return text;
  }
  if (a.values.size() != b.values.size()) return "value count";
  for (size_t k = 0; k < a.values.size(); k++) {
    if (memcmp(&a.values[k], &b.values[k], sizeof(double)) != 0) {
      snprintf(text, sizeof text, "value %zu: %a vs %a", k, a.values[k], b.values[k]);
      return text;
    }
  }
  return "";
}

#endif
