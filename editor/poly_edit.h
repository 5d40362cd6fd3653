// Polynomials and rationals edited on the terminal with the matrix editor.
#ifndef VELK_EDITOR_POLY_EDIT_H
#define VELK_EDITOR_POLY_EDIT_H

#include "scalar/polynomial.h"
#include "scalar/rational.h"

// Opens the full-screen editor on p's coefficients (the constant first). A
// one-row result becomes p's coefficients and sets the degree to its columns
// - 1 (no columns: the constant 0); a result of any other shape leaves p as
// it was. Returns p.
Polynomial *PolyEdit(Polynomial *p);
// The constant 0 named name, edited.
Polynomial *PolyKeyRead(const char *name);
// The numerator, then the denominator, edited as PolyEdit does.
Rational *RatEdit(Rational *r);
Rational *RatKeyRead(const char *name);

#endif
