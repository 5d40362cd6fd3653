// Discrete Fourier transforms of the rows (or columns) of a real or complex
// matrix, by radix-2 fast transforms. The result is always complex.
//
// With x a row after cutting or zero-padding to n values and X its transform,
// indices from 0:
//   MatFFT   X(k) = sum_j x(j) exp(-2 pi i j k / n), unscaled;
//   MatIFFT  x(j) = (1/n) sum_k X(k) exp(+2 pi i j k / n).
// In column mode (column non-zero) the columns are transformed and the result
// is n x columns; in row mode it is rows x n.
//
// Checks, each fatal from "MatFFT()" ("MatIFFT()") with the label
// "fft(NAME(RxC))" ("fft_col(...)" in column mode; "ifft" for the inverse):
// "Zero-size matrix", "Not a real nor complex matrix", and "Data number must
// be 2^n" unless n is a power of two (n = 1 passes). After the checks, a
// matrix of one column is always done in column mode, and there n = 1 means
// the whole column: its length is then taken as it is, a power of two or not
// (other lengths by Bluestein's algorithm).
#ifndef VELK_MATRIX_FOURIER_H
#define VELK_MATRIX_FOURIER_H

#include "core/matrix.h"

Matrix *MatFFT(Matrix *a, int n, int column);
Matrix *MatIFFT(Matrix *a, int n, int column);

#endif
