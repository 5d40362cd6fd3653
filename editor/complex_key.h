// A complex scalar typed in at the terminal.
#ifndef VELK_EDITOR_COMPLEX_KEY_H
#define VELK_EDITOR_COMPLEX_KEY_H

#include "scalar/complex.h"

// Shows "<name> = (re , im) ----> " (name "Complex" when empty, parts in
// "%15.8E"), then reads a new real and imaginary part between "( ", " , " and
// " )\n" with the terminal's real line input; an empty line keeps the part.
// Returns c.
Complex *CompKeyRead(Complex *c);

#endif
