// The Parlett recurrence: f(T) of an upper triangular complex matrix T from
// the values of f on its diagonal (Schur-Parlett method for matrix functions).
#ifndef VELK_LINALG_FUNM_H
#define VELK_LINALG_FUNM_H

#include "core/matrix.h"

namespace velk_linalg {

// q = n / d; false (q untouched) when d is a zero divisor.
using ComplexDivide = bool (*)(ComplexValue n, ComplexValue d, ComplexValue *q);

// Fills the strict upper triangle of f = f(t), both n x n complex row by row,
// whose diagonal f(i,i) = f(t(i,i)) the caller has set; f's strict lower
// triangle is left as it is. Superdiagonals in order, p = 1 .. n-1, and
// within each i = 1 .. n-p, j = i + p:
//   s = t(i,j) (f(j,j) - f(i,i)) + sum_{k=i+1}^{j-1} (t(i,k) f(k,j) - f(i,k) t(k,j)),
//   d = t(j,j) - t(i,i), replaced by (floor, 0) when both parts are zero,
//   f(i,j) = s / d by divide.
// Returns false, with f partly filled, when divide refuses a divisor.
bool ParlettRecurrence(int n, const ComplexValue *t, ComplexValue *f, double floor,
                       ComplexDivide divide);

}  // namespace velk_linalg

#endif
