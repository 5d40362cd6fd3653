// Polynomials and rationals in files: the text files, the save forms and the
// typed binary records (kinds 5 and 6).
//
// The binary records keep the common prefix and header (io/binary.h):
//   polynomial: rows 1, columns degree + 1, class 0 or 1 (the shape and
//     class of its coefficient matrix), the name, the variable as a length
//     word counting its NUL (0 for none) and its characters, then the
//     coefficients from the constant up (pairs when complex);
//   rational: rows and columns the numerator and denominator degrees, class
//     0 or 1, the name, the numerator's variable as above, then the
//     numerator's and the denominator's coefficients.
// Reading failures are fatal reports from "PolyRead()" ("RatRead()") after
// `read <- ""` is put in the message buffer: "Data structure is broken",
// "Incorrect class datafile", "Incorrect machine datafile", "Variable name
// is too short", "Data is broken or too few". The target keeps its status.
#ifndef VELK_IO_POLY_IO_H
#define VELK_IO_POLY_IO_H

#include <cstdio>

#include "scalar/polynomial.h"
#include "scalar/rational.h"

// A new polynomial whose coefficients are the one-row matrix of the text
// file (complex when the file is); "Not a row vector" from "PolyCoefDef()"
// for a file of several rows.
Polynomial *PolyFileRead(const char *file);
// The coefficient matrix in the matrix text file form. Returns p.
Polynomial *PolyFileWrite(Polynomial *p, const char *file);
// The save form (PolySaveText), appended or replacing; "stdout" stays open.
// "Can't open file <file>" ("Can't write file <file>") from "PolyFileSave()".
Polynomial *PolyFileSave(Polynomial *p, const char *file, int append, int terminate);
Polynomial *PolyWrite(Polynomial *p, FILE *stream);
// An empty stored name reads as "ANS_POLY".
Polynomial *PolyRead(Polynomial *p, FILE *stream);

// The numerator in <file>.N and the denominator in <file>.D.
Rational *RatFileWrite(Rational *r, const char *file);
Rational *RatFileRead(const char *file);
Rational *RatFileSave(Rational *r, const char *file, int append, int terminate);
Rational *RatWrite(Rational *r, FILE *stream);
// A stored name of length 0 reads as "ANS_RAT"; of length 1 as the empty name.
Rational *RatRead(Rational *r, FILE *stream);

#endif
