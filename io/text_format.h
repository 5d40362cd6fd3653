// The plain-text matrix file, the bracketed save form, the screen listings,
// and the one formatter of a real number that every text form uses.
//
// A file with a header ("# rows cols", with "C" anywhere on the line for a
// complex matrix) holds one line per COLUMN; a file without a header holds
// one line per ROW and is always real. Writing always uses the header layout.
#ifndef VELK_IO_TEXT_FORMAT_H
#define VELK_IO_TEXT_FORMAT_H

#include <cstdio>

#include "core/matrix.h"

struct Polynomial;
struct Rational;

// A new unnamed real or complex matrix read from the file ("stdin": standard
// input, never closed). A file that cannot be opened or holds broken data is
// a fatal report from "MatFileRead()".
Matrix *MatFileRead(const char *file);

// Writes m in the header layout, numbers in "%16.8E" ("stdout": standard
// output, never closed). Returns m. REQUIRES: m is real or complex (anything
// else is a fatal report, after the file has been created).
Matrix *MatFileWrite(Matrix *m, const char *file);

// Writes the bracketed assignment form of m, appending when append is
// non-zero, closing with ";" and a blank line when terminate is non-zero,
// wrapped in function_name( ) when that is not empty. Returns m.
Matrix *MatFileSave(Matrix *m, const char *file, int append, int terminate,
                    const char *function_name);

// Listings on standard output: a title line, then the body of m's class.
// The Index form lists real matrices only (other classes get the title).
void MatPrint(Matrix *m);
void MatPrintArray(Matrix *m);
void MatPrintIndex(Matrix *m);

// Size of the buffer RealToString allocates; a caller's buffer must hold as much.
constexpr int kRealTextSize = 64;

// "NaN", "Inf" or "-Inf" for the special values, otherwise value in format
// ("%G" when format is null). With a null buffer a new one of kRealTextSize
// characters is allocated with emalloc and returned; the caller frees it.
char *RealToString(double value, char *buffer, const char *format);

// The polynomial and rational layers plug their text forms in here. Until
// they do, a polynomial or rational listing shows only its title line and
// their saved elements carry no text.
struct MatPolyText {
  // p's text broken into lines by "\n" with the given indent and width; a
  // new emalloc'd buffer the caller frees.
  char *(*element)(Polynomial *p, int indent, int width);
  void (*print_body)(Matrix *m);  // REQUIRES: m has rows and columns
};
struct MatRatText {
  // The numerator and denominator texts of r, broken as above; new buffers.
  void (*element)(Rational *r, int indent, int width, char **nume, char **deno);
  void (*print_body)(Matrix *m);
};
void MatSetPolyText(const MatPolyText &text);
void MatSetRatText(const MatRatText &text);

#endif
