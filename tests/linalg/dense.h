// Plain dense matrices for the kernel tests: row-major vectors, the textbook
// product, the 1-norm, and the test matrices (seeded random, Hilbert, Frank,
// Kahan, products of low rank) with which residual ratios in the manner of
// LAPACK's test suite are taken.
#ifndef VELK_TESTS_LINALG_DENSE_H
#define VELK_TESTS_LINALG_DENSE_H

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <complex>
#include <random>
#include <vector>

using Cx = std::complex<double>;

inline double Conjugate(double x) { return x; }
inline Cx Conjugate(Cx z) { return std::conj(z); }

template <class T>
struct Dense {
  int m = 0, n = 0;
  std::vector<T> a;
  Dense() = default;
  Dense(int rows, int cols) : m(rows), n(cols), a(static_cast<size_t>(rows) * cols) {}
  T &operator()(int i, int j) { return a[static_cast<size_t>(i) * n + j]; }
  T operator()(int i, int j) const { return a[static_cast<size_t>(i) * n + j]; }
  T *data() { return a.data(); }
  const T *data() const { return a.data(); }
};

template <class T>
Dense<T> Identity(int n) {
  Dense<T> d(n, n);
  for (int i = 0; i < n; i++) d(i, i) = T(1);
  return d;
}

template <class T>
Dense<T> operator*(const Dense<T> &x, const Dense<T> &y) {
  Dense<T> z(x.m, y.n);
  for (int i = 0; i < x.m; i++)
    for (int k = 0; k < x.n; k++)
      for (int j = 0; j < y.n; j++) z(i, j) += x(i, k) * y(k, j);
  return z;
}

template <class T>
Dense<T> operator-(Dense<T> x, const Dense<T> &y) {
  for (size_t k = 0; k < x.a.size(); k++) x.a[k] -= y.a[k];
  return x;
}

// The conjugate transpose.
template <class T>
Dense<T> Adjoint(const Dense<T> &x) {
  Dense<T> y(x.n, x.m);
  for (int i = 0; i < x.m; i++)
    for (int j = 0; j < x.n; j++) y(j, i) = Conjugate(x(i, j));
  return y;
}

// The largest column sum of magnitudes.
template <class T>
double Norm1(const Dense<T> &x) {
  double best = 0;
  for (int j = 0; j < x.n; j++) {
    double sum = 0;
    for (int i = 0; i < x.m; i++) sum += std::abs(x(i, j));
    best = std::max(best, sum);
  }
  return best;
}

template <class T>
Dense<T> Random(int m, int n, unsigned seed) {
  std::mt19937 rng(seed);
  std::uniform_real_distribution<double> u(-1, 1);
  Dense<T> d(m, n);
  for (T &x : d.a) {
    if constexpr (std::is_same_v<T, double>)
      x = u(rng);
    else
      x = T(u(rng), u(rng));
  }
  return d;
}

template <class T>
Dense<T> Hilbert(int n) {
  Dense<T> d(n, n);
  for (int i = 0; i < n; i++)
    for (int j = 0; j < n; j++) d(i, j) = T(1.0 / (i + j + 1));
  return d;
}

// Upper Hessenberg, n + 1 - max(i, j) (1-based) on and above the
// subdiagonal; determinant 1.
template <class T>
Dense<T> Frank(int n) {
  Dense<T> d(n, n);
  for (int i = 0; i < n; i++)
    for (int j = std::max(0, i - 1); j < n; j++) d(i, j) = T(n - std::max(i, j));
  return d;
}

// Kahan's upper triangle: diag(1, s, ..., s^(n-1)) times the unit triangle
// with -c above the diagonal (s = sin theta, c = cos theta).
template <class T>
Dense<T> Kahan(int n, double theta) {
  Dense<T> d(n, n);
  const double s = std::sin(theta), c = std::cos(theta);
  for (int i = 0; i < n; i++) {
    double scale = std::pow(s, i);
    d(i, i) = T(scale);
    for (int j = i + 1; j < n; j++) d(i, j) = T(-c * scale);
  }
  return d;
}

// An m x n product of rank r.
template <class T>
Dense<T> LowRank(int m, int n, int r, unsigned seed) {
  return Random<T>(m, r, seed) * Random<T>(r, n, seed + 1);
}

constexpr double kEps = DBL_EPSILON;

// |x - y| / (scale eps), the residual ratio of the tests (at most 30).
template <class T>
double Ratio(const Dense<T> &x, const Dense<T> &y, double scale) {
  return Norm1(x - y) / (scale * kEps);
}

#endif
