// Element copy across classes, shared by the structural operations and the
// class conversions.
#ifndef VELK_MATRIX_ELEMENTS_H
#define VELK_MATRIX_ELEMENTS_H

#include "core/matrix.h"

// Copies count elements in storage order from src (starting at entry l) into
// dst (starting at entry k), converting each to dst's class: a value becomes a
// degree-0 polynomial or value/1, a polynomial p becomes p/1, real
// coefficients become complex ones. Element objects are new and owned by dst.
// REQUIRES: MatClassHolds(dst->cls, src->cls), both ranges inside storage.
void MatCopyElements(Matrix *dst, long long k, Matrix *src, long long l, long long count);

#endif
