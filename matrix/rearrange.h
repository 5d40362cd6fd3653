// Structural operations that move elements without changing them: reshape,
// left-right flip and the copy of a rectangular area between two matrices.
// They serve every class (element objects are copied, owned by the result).
#ifndef VELK_MATRIX_REARRANGE_H
#define VELK_MATRIX_REARRANGE_H

#include "core/matrix.h"

// The elements of a in storage order (row by row) as a rows x cols matrix of
// a's class. "Inconsistent size" (fatal) when rows x cols is not a's count or
// either is negative.
Matrix *MatReshape(Matrix *a, int rows, int cols);

// a with the order of its columns reversed.
Matrix *MatFlipLR(Matrix *a);

// Copies src(r1:r2, c1:c2) into dst with its top-left element at (i, j) and
// returns dst, changed in place (shape, class, name and status kept). The
// argument order of the block is MatCut's (both starting indices first); an
// empty block (r2 = r1 - 1 or c2 = c1 - 1) copies nothing. Fatal: "Source
// area out of range", "Target area out of range" (dst is never enlarged),
// "Not appropriate class matrices" when dst's class cannot hold src's values.
Matrix *MatAreaCopy(Matrix *dst, int i, int j, Matrix *src, int r1, int c1, int r2, int c2);

#endif
