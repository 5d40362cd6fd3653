// Element helpers shared by the kernels: one spelling for real and complex.
#ifndef VELK_LINALG_ELEMENTS_H
#define VELK_LINALG_ELEMENTS_H

#include <algorithm>
#include <cmath>
#include <complex>

namespace velk_linalg {

inline double Conj(double x) { return x; }
inline std::complex<double> Conj(std::complex<double> z) { return std::conj(z); }

// The plain complex product, without the recovery of infinities and NaNs
// that the library's operator spends a test (and often a call) on.
inline double Mul(double a, double b) { return a * b; }
inline std::complex<double> Mul(std::complex<double> a, std::complex<double> b) {
  return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

// The squared magnitude, without a square root.
inline double Norm2(double x) { return x * x; }
inline double Norm2(std::complex<double> z) { return z.real() * z.real() + z.imag() * z.imag(); }

inline double Modulus(double x) { return std::fabs(x); }
// The plain modulus; scaled only where the squares would leave the range.
inline double Modulus(std::complex<double> z) {
  double r = Norm2(z);
  if (r > 1e-290 && r < 1e290) return std::sqrt(r);
  return std::hypot(z.real(), z.imag());
}

// z / |z| (1 for zero): the unit factor that turns z real and non-negative
// when conjugated and multiplied in.
inline double Phase(double x) { return x < 0 ? -1.0 : 1.0; }
inline std::complex<double> Phase(std::complex<double> z) {
  double r = Modulus(z);
  return r == 0 ? std::complex<double>(1.0) : z / r;
}

// The 2-norm of x[0], x[stride], ... (n of them), scaled against overflow
// and underflow; NaN when an element is NaN, infinity when one is infinite.
template <class T>
double Norm(long long n, const T *x, long stride = 1) {
  double scale = 0;
  for (long long i = 0; i < n; i++) scale = std::max(scale, Modulus(x[i * stride]));
  if (scale == 0 || std::isinf(scale)) return scale;
  double sum = 0;
  for (long long i = 0; i < n; i++) sum += Norm2(x[i * stride] / scale);
  return scale * std::sqrt(sum);
}

}  // namespace velk_linalg

#endif
