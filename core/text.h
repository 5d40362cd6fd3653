// The plain text forms every floor prints with: one real number, a complex
// pair, and the bracketed save form of a matrix (which the error log appends
// too, so it lives down here with the reporter).
#ifndef VELK_CORE_TEXT_H
#define VELK_CORE_TEXT_H

#include <cstdio>

#include "core/matrix.h"

struct Polynomial;
struct Rational;

// Size of the buffer RealToString allocates; a caller's buffer must hold as much.
constexpr int kRealTextSize = 64;
// Size of the buffer ComplexValueToString allocates.
constexpr int kComplexTextSize = 64;

// "NaN", "Inf" or "-Inf" for the special values, otherwise value in format
// ("%G" when format is null). With a null buffer a new one of kRealTextSize
// characters is allocated with emalloc and returned; the caller frees it.
char *RealToString(double value, char *buffer, const char *format);

// "(re,im)", each part through RealToString with format (null: "%G"). With a
// null buf a new kComplexTextSize buffer is allocated and returned; a caller's
// buf must hold kComplexTextSize characters (wider texts are cut).
char *ComplexValueToString(ComplexValue *v, char *buf, const char *format);

// Writes the bracketed assignment form of m to fp: "name = " when named,
// function_name( ) around it when that is not empty, ";" and a blank line
// when terminate is non-zero.
void MatWriteSaveForm(FILE *fp, Matrix *m, int terminate, const char *function_name);

// The polynomial and rational layers plug their text forms in here
// (scalar/polynomial.cc and scalar/rational.cc register them from static
// initializers); a program without them lists only the title line of such a
// matrix and saves its elements without text.
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
const MatPolyText &MatGetPolyText();
const MatRatText &MatGetRatText();

#endif
