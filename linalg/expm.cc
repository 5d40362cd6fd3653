// Scaling and squaring with the Taylor kernel.
#include "linalg/expm.h"

#include <cmath>
#include <complex>
#include <utility>
#include <vector>

namespace velk_linalg {

double FrobeniusNorm(const double *x, long long count) {
  double sum = 0;
  for (long long k = 0; k < count; k++) sum += x[k] * x[k];
  if (!std::isinf(sum)) return std::sqrt(sum);
  // Overflowed: scale by the largest magnitude (infinite or NaN values stay so).
  double big = 0;
  for (long long k = 0; k < count; k++) big = std::fmax(big, std::fabs(x[k]));
  if (!std::isfinite(big)) return big;
  double scaled = 0;
  for (long long k = 0; k < count; k++) scaled += (x[k] / big) * (x[k] / big);
  return big * std::sqrt(scaled);
}

int ExpScalingExponent(double nrm) {
  if (!std::isfinite(nrm)) return 0;
  int j = nrm > 0 ? static_cast<int>(std::floor(std::log10(nrm) / 0.30102999566398120) + 1) : 1;
  return j < 0 ? 0 : j;
}

namespace {

template <class T>
void SetIdentity(int n, T *m) {
  for (long long k = 0; k < static_cast<long long>(n) * n; k++) m[k] = T(0);
  for (int k = 0; k < n; k++) m[static_cast<long long>(k) * n + k] = T(1);
}

// The doubles of a value, for the norm of a term as it is summed.
inline double Squares(double x) { return x * x; }
inline double Squares(std::complex<double> z) { return z.real() * z.real() + z.imag() * z.imag(); }

}  // namespace

template <class T>
int ExpTaylor(int n, const T *a, T *e, SquareProduct<T> mul, double tol) {
  long long count = static_cast<long long>(n) * n;
  std::vector<T> term(count), next(count);
  SetIdentity(n, e);
  SetIdentity(n, term.data());
  int k = 1;
  for (int i = 1; i <= 100; i++) {
    mul(n, term.data(), a, next.data());
    std::swap(term, next);
    double r = 1.0 / k;
    double sum = 0;
    for (long long m = 0; m < count; m++) {
      term[m] *= r;
      e[m] += term[m];
      sum += Squares(term[m]);
    }
    double nrm = std::isinf(sum) ? FrobeniusNorm(reinterpret_cast<const double *>(term.data()),
                                                 count * static_cast<long long>(sizeof(T) / 8))
                                 : std::sqrt(sum);
    if (nrm <= tol) return i;
    k++;
  }
  return 101;
}

template <class T>
void ExpSquare(int n, T *e, int j, SquareProduct<T> mul) {
  long long count = static_cast<long long>(n) * n;
  std::vector<T> square(count);
  for (int i = 0; i < j; i++) {
    mul(n, e, e, square.data());
    std::copy(square.begin(), square.end(), e);
  }
}

template int ExpTaylor<double>(int, const double *, double *, SquareProduct<double>, double);
template int ExpTaylor<std::complex<double>>(int, const std::complex<double> *,
                                             std::complex<double> *,
                                             SquareProduct<std::complex<double>>, double);
template void ExpSquare<double>(int, double *, int, SquareProduct<double>);
template void ExpSquare<std::complex<double>>(int, std::complex<double> *, int,
                                              SquareProduct<std::complex<double>>);

}  // namespace velk_linalg
