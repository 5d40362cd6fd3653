// Complex scalars in files: the text forms and the typed binary record.
#ifndef VELK_IO_COMPLEX_IO_H
#define VELK_IO_COMPLEX_IO_H

#include <cstdio>

#include "scalar/complex.h"

// A new temporary from the first two numbers of the file ("%lf %lf"; what
// is not read stays 0). "stdin" is standard input. A file that cannot be
// opened is a fatal report "Can't open file" from "CompFileRead()".
Complex *CompFileRead(const char *file);

// Named files are written as OutputFile writes them: a replaced file is
// either the new text whole or still the old one.

// The text form "(re,im)" with no newline. The stream is closed afterwards,
// standard output ("stdout") included. A file that cannot be opened gives
// "CompFileWrite(): Can not open %s.\n" on stderr, a failed write
// "CompFileWrite(): Can't write file %s.\n". Returns c.
Complex *CompFileWrite(Complex *c, const char *file);

// The save form (see CompSaveText), appended or replacing; "stdout" is
// standard output and stays open. A file that cannot be opened is a fatal
// report "Can't open file <file>" from "CompFileSave()", a failed write
// "Can't write file <file>". Returns c.
Complex *CompFileSave(Complex *c, const char *file, int append, int terminate);

// One record of kind 4: header words 0, 0, 0 after the type word, the name,
// then re and im as doubles.
Complex *CompWrite(Complex *c, FILE *stream);
// Reads one such record into c (c keeps its status; an empty stored name
// reads as "ANS_STR"). Every failure is a fatal report from "CompRead()",
// except a wrong kind in a record without prefix, from "ComplexRead()".
Complex *CompRead(Complex *c, FILE *stream);

#endif
