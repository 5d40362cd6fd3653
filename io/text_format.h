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
#include "core/text.h"

// A new unnamed real or complex matrix read from the file ("stdin": standard
// input, never closed). A file that cannot be opened or holds broken data is
// a fatal report from "MatFileRead()".
Matrix *MatFileRead(const char *file);

// Writes m in the header layout, numbers in "%16.8E" ("stdout": standard
// output, never closed). Returns m. REQUIRES: m is real or complex (anything
// else is a fatal report, after the file has been created).
Matrix *MatFileWrite(Matrix *m, const char *file);

// The text MatFileWrite writes, on an open stream, reporting nothing: the
// caller checks the stream (OutputFile::Finish). REQUIRES: m is real or
// complex.
void MatWriteText(FILE *fp, Matrix *m);

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

#endif
