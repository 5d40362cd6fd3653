// A plain matrix text reader, written step by step from the format's
// description with the C library's own stream functions and "%lf". It is
// slow and obviously right; the fast reader must agree with it on every
// input, value for value and bit for bit. Shared by the tests and the fuzzer.
#ifndef VELK_TESTS_IO_REFERENCE_READER_H
#define VELK_TESTS_IO_REFERENCE_READER_H

#include <sys/stat.h>

#include <climits>
#include <cstdio>
#include <cstring>
#include <vector>

struct ReferenceMatrix {
  bool ok = false;  // false: the reader reports broken data
  int rows = 0;
  int cols = 0;
  bool complex = false;
  std::vector<double> values;  // row by row, (re, im) pairs when complex
};

namespace reference_reader {

// fgets pieces of a 4096-byte buffer until one is not exactly 1023 long.
inline void SkipLine(FILE *fp) {
  char buf[4096];
  do {
    buf[0] = '\0';
    if (fgets(buf, sizeof buf, fp) == nullptr) buf[0] = '\0';
  } while (strlen(buf) == 1023);
}

// The counting pass of a headerless file.
inline bool CountRows(FILE *fp, long long *rows, long long *cols) {
  char token[4096];
  int len = 0;
  long long count = 0;
  for (;;) {
    int c = getc(fp);
    if (c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == EOF) {
      if (len > 0) {
        token[len] = '\0';
        double x;
        if (sscanf(token, "%lf", &x) != 1) return false;
        count++;
        len = 0;
      }
      if (c == '\n' || c == '\r' || c == EOF) {
        if (count > 0) {
          if (*rows > 0 && count != *cols) return false;
          *cols = count;
          ++*rows;
          count = 0;
        }
        if (c == EOF) return true;
      }
    } else {
      if (len == 4095) return false;  // the bounded token buffer
      token[len++] = static_cast<char>(c);
    }
  }
}

inline bool Read(FILE *fp, ReferenceMatrix *r) {
  long long rows = 0, cols = 0;
  bool by_column;
  int c = getc(fp);
  ungetc(c, fp);
  if (c == '#') {
    char line[4096];
    line[0] = '\0';
    if (fgets(line, sizeof line, fp) == nullptr) line[0] = '\0';
    r->complex = strchr(line, 'C') != nullptr;
    if (sscanf(line, "# %lld %lld", &rows, &cols) != 2) return false;
    if (rows < 0 || cols < 0 || rows > INT_MAX || cols > INT_MAX) return false;
    by_column = true;
  } else {
    if (!CountRows(fp, &rows, &cols)) return false;
    rewind(fp);
    by_column = false;
  }
  const long long width = r->complex ? 2 : 1;
  if (rows * cols > INT_MAX / (width * 8)) return false;
  // Guard against allocating for a header that the rest of the file cannot
  // satisfy (every "%lf" takes at least one character): the read would end
  // in broken data anyway.
  struct stat st;
  if (fstat(fileno(fp), &st) == 0 && rows * cols * width > st.st_size - ftell(fp)) return false;
  r->rows = static_cast<int>(rows);
  r->cols = static_cast<int>(cols);
  r->values.assign(static_cast<size_t>(rows * cols * width), 0.0);
  const long long outer = by_column ? cols : rows;
  const long long inner = by_column ? rows : cols;
  for (long long k = 0; k < outer; k++) {
    c = getc(fp);
    while (c == '#') {
      ungetc(c, fp);
      SkipLine(fp);
      c = getc(fp);
    }
    ungetc(c, fp);
    for (long long n = 0; n < inner; n++) {
      const long long at = (by_column ? n * cols + k : k * cols + n) * width;
      double *e = &r->values[static_cast<size_t>(at)];
      if (r->complex) {
        if (fscanf(fp, "%lf %lf", &e[0], &e[1]) != 2) return false;
      } else {
        if (fscanf(fp, "%lf", &e[0]) != 1) return false;
      }
    }
    SkipLine(fp);
    // With nothing to read per column, columns past the end read nothing and
    // skip nothing; stop instead of spinning through a huge column count.
    if (inner == 0 && feof(fp)) break;
  }
  return true;
}

}  // namespace reference_reader

inline ReferenceMatrix ReferenceRead(const char *path) {
  ReferenceMatrix r;
  FILE *fp = fopen(path, "r");
  if (fp == nullptr) return r;
  r.ok = reference_reader::Read(fp, &r);
  fclose(fp);
  if (!r.ok) r = ReferenceMatrix();
  return r;
}

#endif
