// Elementary functions against the C library on a seeded grid (branch cuts
// with both signed zeros, huge and tiny moduli) and exact values on the cuts.
#include <gtest/gtest.h>

#include <bit>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "scalar/complex.h"

#define DECLARE(f) __complex__ double f(__complex__ double);
extern "C" {
DECLARE(csqrt) DECLARE(casin) DECLARE(cacos) DECLARE(catan) DECLARE(casinh) DECLARE(cacosh)
DECLARE(catanh) DECLARE(cexp) DECLARE(clog) DECLARE(csin) DECLARE(ccos) DECLARE(ctan)
DECLARE(csinh) DECLARE(ccosh) DECLARE(ctanh)
}

namespace {

using Library = __complex__ double (*)(__complex__ double);
using Ours = ComplexValue *(*)(ComplexValue *, const ComplexValue *);

// Distance in units in the last place, over the ordered doubles. A
// difference of sign (a zero on the wrong side of a cut included) or of
// NaN-ness counts as infinitely far.
double Ulps(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b) ? 0 : INFINITY;
  if (std::signbit(a) != std::signbit(b)) return INFINITY;
  return std::fabs(static_cast<double>(std::bit_cast<int64_t>(a) - std::bit_cast<int64_t>(b)));
}

// Both signs of: zero, subnormals, the neighbourhood of 1 (the branch
// points), the crossovers of the formulas, the overflow edge of exp, and
// moduli up to the largest double.
std::vector<ComplexValue> Grid() {
  const double magnitudes[] = {0,    5e-324, 1e-310, 1e-300, 1e-200, 1e-20, 1e-8, 0.25,
                               0.5,  1 - DBL_EPSILON / 2,   1,      1 + DBL_EPSILON, 1.5,
                               2,    3.141592653589793,     10,     700,  800,  1e8,
                               4.6e15, 1e16, 1e150, 1e300, DBL_MAX};
  std::vector<ComplexValue> grid;
  for (double re : magnitudes)
    for (double im : magnitudes)
      for (int k = 0; k < 4; k++) grid.push_back({k & 1 ? -re : re, k & 2 ? -im : im});
  // Random points: log-uniform moduli with random signs, points near the
  // diagonal, and points hugging the real axis inside and outside [-1, 1].
  std::mt19937_64 gen(20261123);
  std::uniform_real_distribution<double> exponent(-310, 308), unit(0, 1);
  auto signed_power = [&] { return std::pow(10.0, exponent(gen)) * (unit(gen) < 0.5 ? -1 : 1); };
  for (int k = 0; k < 30000; k++) {
    double re = signed_power(), im = signed_power();
    if (k % 3 == 0) im = re * (1 + (unit(gen) - 0.5) * 1e-3);
    if (k % 5 == 0) {
      re = unit(gen) * 4 - 2;
      im = (unit(gen) - 0.5) * std::pow(10.0, exponent(gen) / 10);
    }
    grid.push_back({re, im});
  }
  return grid;
}

struct Case {
  const char *name;
  Ours ours;
  Library library;
  double bound;    // largest distance allowed in either part, in ulps
  bool zero_sign;  // whether the sign of a zero result must agree
};

// Worst distance of ours from the library over the grid, with its point.
void ExpectWithin(const Case &c, const std::vector<ComplexValue> &grid) {
  double worst = 0;
  ComplexValue at = {0, 0}, got = {0, 0}, want = {0, 0};
  for (const ComplexValue &z : grid) {
    ComplexValue r;
    c.ours(&r, &z);
    __complex__ double zz;
    __real__ zz = z.re;
    __imag__ zz = z.im;
    __complex__ double w = c.library(zz);
    ComplexValue ref = {__real__ w, __imag__ w};
    if (!c.zero_sign) {
      if (r.re == 0 && ref.re == 0) r.re = ref.re;
      if (r.im == 0 && ref.im == 0) r.im = ref.im;
    }
    double d = std::max(Ulps(r.re, ref.re), Ulps(r.im, ref.im));
    if (d > worst) worst = d, at = z, got = r, want = ref;
  }
  EXPECT_LE(worst, c.bound) << c.name << " at (" << at.re << ", " << at.im << "): ("
                            << got.re << ", " << got.im << ") against (" << want.re << ", "
                            << want.im << ")";
}

TEST(ComplexFunctionsTest, ElementaryFunctionsAgreeWithTheLibraryOnBothSidesOfTheCuts) {
  // The distance measured adds both implementations' errors: checked with
  // 200-bit arithmetic at the worst points, ours is the closer one there.
  // exp, log and the trigonometry stay away from the logarithm's zero
  // argument (its own rule, below). The tangents divide by Smith's method,
  // which cannot keep the sign of a zero real part on the imaginary axis;
  // their denominator sums two squares, a few ulps more than the library's.
  const std::vector<ComplexValue> grid = Grid();
  std::vector<ComplexValue> nonzero;
  for (const ComplexValue &z : grid)
    if (z.re != 0 || z.im != 0) nonzero.push_back(z);
  const Case inverses[] = {
      {"sqrt", ComplexValueSqrt, csqrt, 2, true},   {"asin", ComplexValueAsin, casin, 6, true},
      {"acos", ComplexValueAcos, cacos, 6, true},   {"atan", ComplexValueAtan, catan, 6, true},
      {"asinh", ComplexValueAsinh, casinh, 6, true}, {"acosh", ComplexValueAcosh, cacosh, 6, true},
      {"atanh", ComplexValueAtanh, catanh, 6, true},
  }, others[] = {
      {"exp", ComplexValueExp, cexp, 3, true},    {"log", ComplexValueLog, clog, 4, true},
      {"sin", ComplexValueSin, csin, 3, true},    {"cos", ComplexValueCos, ccos, 3, true},
      {"sinh", ComplexValueSinh, csinh, 3, true}, {"cosh", ComplexValueCosh, ccosh, 3, true},
      {"tan", ComplexValueTan, ctan, 8, false},   {"tanh", ComplexValueTanh, ctanh, 8, false},
  };
  for (const Case &c : inverses) ExpectWithin(c, grid);
  for (const Case &c : others) ExpectWithin(c, nonzero);
}

TEST(ComplexFunctionsTest, ExactValuesOnTheCutsAndTheLogarithmsArgumentRule) {
  const double pi = 3.141592653589793, acosh2 = 1.3169578969248166, atanh_half = std::atanh(0.5);
  struct Exact {
    Complex *(*f)(Complex *);
    ComplexValue z, want;
  } cases[] = {
      {CompSqrt, {-4, 0}, {0, 2}},          {CompSqrt, {-4, -0.0}, {0, -2}},
      {CompSqrt, {-0.0, 0}, {0, 0}},        {CompSqrt, {0, -0.0}, {0, -0.0}},
      {CompAsin, {2, 0}, {pi / 2, acosh2}}, {CompAsin, {2, -0.0}, {pi / 2, -acosh2}},
      {CompAsin, {-2, 0}, {-pi / 2, acosh2}}, {CompAcos, {2, 0}, {0, -acosh2}},
      {CompAcos, {-2, -0.0}, {pi, acosh2}}, {CompAcosh, {-2, 0}, {acosh2, pi}},
      {CompAcosh, {-2, -0.0}, {acosh2, -pi}}, {CompAcosh, {0.5, -0.0}, {0, -pi / 3}},
      {CompAtan, {0, 2}, {pi / 2, atanh_half}}, {CompAtan, {-0.0, 2}, {-pi / 2, atanh_half}},
      {CompAtanh, {2, 0}, {atanh_half, pi / 2}}, {CompAtanh, {2, -0.0}, {atanh_half, -pi / 2}},
      {CompAsinh, {0, 2}, {acosh2, pi / 2}}, {CompAsinh, {-0.0, 2}, {-acosh2, pi / 2}},
      // log: atan2 in general, +-pi/2 by the imaginary part's sign when the
      // real part is zero (the zero modulus too).
      {CompLog, {-1, 0}, {0, pi}}, {CompLog, {-1, -0.0}, {0, -pi}},
      {CompLog, {0, -0.0}, {-INFINITY, -pi / 2}}, {CompLog, {-0.0, 0}, {-INFINITY, pi / 2}},
      {CompLog, {-0.0, -3}, {std::log(3.0), -pi / 2}},
      {CompLog10, {-100, 0}, {2, pi * 0.4342944819032518}}, {CompExp, {INFINITY, 0}, {INFINITY, 0}},
  };
  for (const Exact &c : cases) {
    Complex *r = c.f(CompDef("", c.z.re, c.z.im));
    SCOPED_TRACE(testing::Message() << "(" << c.z.re << ", " << c.z.im << ")");
    EXPECT_LE(Ulps(r->re, c.want.re), 2) << r->re;
    EXPECT_LE(Ulps(r->im, c.want.im), 2) << r->im;
  }
  CompSweep();
}

}  // namespace
