// A plain matrix text reader, written step by step from the format's
// description with the C library's own stream functions and "%lf". It is
// slow and obviously right; the fast reader must agree with it on every
// input, value for value and bit for bit. Shared by the tests, the fuzzer and
// the benchmark.
#ifndef VELK_TESTS_IO_REFERENCE_READER_H
#define VELK_TESTS_IO_REFERENCE_READER_H

#include <sys/stat.h>

#include <climits>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

struct ReferenceMatrix {
  bool ok = false;  // false: the reader reports broken data
  int rows = 0;
  int cols = 0;
  bool complex = false;
  std::vector<double> values;  // row by row, (re, im) pairs when complex
};

// fgets pieces of a 4096-byte buffer until one is not exactly 1023 long.
inline void ReferenceSkipLine(FILE *fp) {
  char buf[4096];
  do {
    if (fgets(buf, sizeof buf, fp) == nullptr) buf[0] = '\0';
  } while (strlen(buf) == 1023);
}

// The counting pass of a headerless file: tokens between blanks and tabs,
// lines ended by LF, CR or the end, empty lines ignored, the others alike.
inline bool ReferenceCountRows(FILE *fp, long long *rows, long long *cols) {
  for (int c = 0; c != EOF;) {
    long long count = 0;
    std::string token;
    do {
      c = getc(fp);
      if (c != ' ' && c != '\t' && c != '\n' && c != '\r' && c != EOF) {
        token += static_cast<char>(c);
      } else if (!token.empty()) {
        double x;
        // The token buffer holds 4095 characters.
        if (token.size() > 4095 || sscanf(token.c_str(), "%lf", &x) != 1) return false;
        count++;
        token.clear();
      }
    } while (c != '\n' && c != '\r' && c != EOF);
    if (count == 0) continue;
    if (*rows > 0 && count != *cols) return false;
    *cols = count;
    ++*rows;
  }
  return true;
}

inline bool ReferenceParse(FILE *fp, ReferenceMatrix *r) {
  long long rows = 0, cols = 0;
  // ungetc gives back the character it pushes back: a peek.
  const bool by_column = ungetc(getc(fp), fp) == '#';
  if (by_column) {
    char line[4096];
    if (fgets(line, sizeof line, fp) == nullptr) return false;
    r->complex = strchr(line, 'C') != nullptr;
    if (sscanf(line, "# %lld %lld", &rows, &cols) != 2) return false;
    if (rows < 0 || cols < 0 || rows > INT_MAX || cols > INT_MAX) return false;
  } else {
    if (!ReferenceCountRows(fp, &rows, &cols)) return false;
    rewind(fp);
  }
  const long long width = r->complex ? 2 : 1;
  if (rows * cols > INT_MAX / (width * 8)) return false;
  // Every "%lf" takes at least one character: a header asking for more
  // numbers than the file has characters left ends in broken data anyway.
  struct stat st;
  if (fstat(fileno(fp), &st) == 0 && rows * cols * width > st.st_size - ftell(fp)) return false;
  r->rows = static_cast<int>(rows);
  r->cols = static_cast<int>(cols);
  r->values.assign(static_cast<size_t>(rows * cols * width), 0.0);
  const long long outer = by_column ? cols : rows, inner = by_column ? rows : cols;
  for (long long k = 0; k < outer; k++) {
    while (ungetc(getc(fp), fp) == '#') ReferenceSkipLine(fp);
    for (long long n = 0; n < inner; n++) {
      const long long at = (by_column ? n * cols + k : k * cols + n) * width;
      double *e = &r->values[static_cast<size_t>(at)];
      if (r->complex ? fscanf(fp, "%lf %lf", &e[0], &e[1]) != 2 : fscanf(fp, "%lf", e) != 1)
        return false;
    }
    ReferenceSkipLine(fp);
    // With nothing to read per column, stop instead of spinning through a
    // huge column count.
    if (inner == 0 && feof(fp)) break;
  }
  return true;
}

inline ReferenceMatrix ReferenceRead(const char *path) {
  ReferenceMatrix r;
  if (FILE *fp = fopen(path, "r")) {
    r.ok = ReferenceParse(fp, &r);
    fclose(fp);
  }
  return r.ok ? r : ReferenceMatrix();
}

#endif
