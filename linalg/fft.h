// Radix-2 fast Fourier transforms on rows of interleaved complex values
// (re, im, re, im, ...), in place.
//
// The twiddle factors of every butterfly stage come from the classic
// trigonometric recurrence (w starts at 1 and is advanced by wpr = -2 sin^2(t/2)
// and wpi = sin t); they are computed once, kept in a table that grows with the
// longest length seen, and read from there, so every transform of a given
// length uses the same values. The table is process-wide state.
#ifndef VELK_LINALG_FFT_H
#define VELK_LINALG_FFT_H

namespace velk_linalg {

// True for 1, 2, 4, 8, ...
inline bool IsPowerOfTwo(long long n) { return n > 0 && (n & (n - 1)) == 0; }

// The raw kernel on one sequence of n complex values: bit-reversal permutation,
// then Danielson-Lanczos butterflies with t = sign 2 pi / (2 span). The result
// is sum_j x(j) exp(+sign 2 pi i j k / n), unscaled.
// REQUIRES: n a power of two; sign +1 or -1.
void FftRaw(double *x, int n, int sign);

// The real kernel on n reals x(0..n-1): the raw kernel (sign +1) on them as
// n/2 complex values, then the post-processing that separates the two
// interleaved transforms. Packed result: x[0] = Re F(0), x[1] = Re F(n/2), then
// F(1) ... F(n/2 - 1), where F(k) = sum_j x(j) exp(+2 pi i j k / n).
// REQUIRES: n a power of two, n >= 2.
void FftRealPacked(double *x, int n);

// Row transforms in the conventional order, as the matrix fronts give them.
// `out` holds rows of n complex values (2 n doubles each); `in` holds rows of
// in_cols values, each real (one double) or complex (two), read with the row
// cut to its first n values or padded with zeros to n. Row r of the result:
//   forward  X(k) = sum_j x(j) exp(-2 pi i j k / n),
//   inverse  x(j) = (1/n) sum_k X(k) exp(+2 pi i j k / n).
// A length that is not a power of two (the fronts let one through for a single
// column) is transformed by Bluestein's algorithm over power-of-two lengths.
// REQUIRES: in and out do not overlap; n >= 0.
void FftRows(const double *in, bool in_complex, int rows, int in_cols, double *out, int n,
             bool inverse);

}  // namespace velk_linalg

#endif
