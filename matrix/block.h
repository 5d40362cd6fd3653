// Submatrix cut and put, real and imaginary parts: the block operations with
// which the editor changes the shape and contents of a matrix. Cut and put
// serve all six classes (they only copy elements).
#ifndef VELK_MATRIX_BLOCK_H
#define VELK_MATRIX_BLOCK_H

#include "core/matrix.h"

// a(r1:r2, c1:c2) as a new matrix of a's class. Note the order: both starting
// indices first. r2 = r1 - 1 (c2 = c1 - 1) is accepted and gives zero rows
// (columns). Fatal: "Zero-size matrix" for an empty a, "... is invalid
// sub-matrix" for a block outside a.
Matrix *MatCut(Matrix *a, int r1, int c1, int r2, int c2);

// Writes b into a with b's top-left element at (i, j) and returns a, changed
// in place (name and status kept). a is enlarged (zeros where neither a nor b
// reaches) or brought to a class holding b's values as needed; an empty a is
// replaced by a matrix of b's class. An empty b truncates a instead: at (1, 1)
// a becomes 0 x 0, at (1, j) it keeps columns 1 .. j-1, at (i, 1) rows
// 1 .. i-1; anywhere else is the fatal "is invalid sub-matrix".
// The change of a runs an assignment, and with it the sweep of temporaries;
// a and b themselves survive that sweep.
Matrix *MatPut(Matrix *a, int i, int j, Matrix *b);

// Real parts (a real matrix is duplicated); imaginary parts of a complex class
// ("Not a complex matrix" otherwise). A polynomial matrix gives the parts of
// its coefficients; a rational one the parts of each fraction (over the
// squared modulus of its denominator).
Matrix *MatRealPart(Matrix *a);
Matrix *MatImagPart(Matrix *a);

#endif
