// Elementary functions of a complex value on the principal branches.
//
// Built to agree with careful library implementations to a few units in the
// last place on both sides of every branch cut (signed zeros decide the side)
// and at moduli near the overflow and underflow thresholds. The formulas and
// their sources are listed in docs/complex-functions.md.
#include <cfloat>
#include <cmath>

#include "scalar/complex_value.h"

namespace velk_complex {

namespace {

constexpr double kLn2 = 0.69314718055994530942;
constexpr double kLog10E = 0.4342944819032518;
// pi/2 as a double and the part of it the double misses.
constexpr double kHalfPi = 1.5707963267948966;
constexpr double kHalfPiLow = 6.123233995736766e-17;
constexpr double kEps = DBL_EPSILON;
constexpr double kRecipEps = 1 / DBL_EPSILON;
// Below this both parts are small enough for asin z = z and asinh z = z.
const double kArcTiny = std::sqrt(DBL_EPSILON) / 4;
// ... and for atanh z = z (the cubic term is under half an ulp).
const double kAtanhTiny = std::sqrt(3 * DBL_EPSILON) / 2;
const double kFourSqrtMin = 4 * std::sqrt(DBL_MIN);
const double kSqrtMin = std::sqrt(DBL_MIN);
// exp overflows above this argument.
constexpr double kExpMax = 709.0;
// Hull, Fairgrieve and Tang's crossover points.
constexpr double kACross = 1.5;
constexpr double kBCross = 0.6417;

ComplexValue Swap(ComplexValue z) { return {z.im, z.re}; }

// ---- exact pieces ------------------------------------------------------------------

// a + b = s + e exactly (Knuth's two-sum).
void TwoSum(double a, double b, double *s, double *e) {
  *s = a + b;
  double bb = *s - a;
  *e = (a - (*s - bb)) + (b - bb);
}

// x^2 + y^2 - 1 for moduli near 1, nearly correctly rounded: each square is
// split exactly into two doubles with a fused multiply-add, and the five
// pieces are added with their rounding errors carried along (Ogita, Rump and
// Oishi's Sum2).
double SquaresMinusOne(double x, double y) {
  double hx = x * x, lx = std::fma(x, x, -hx);
  double hy = y * y, ly = std::fma(y, y, -hy);
  double terms[5] = {-1, hx, hy, lx, ly};
  double s = 0, c = 0;
  for (double t : terms) {
    double e;
    TwoSum(s, t, &s, &e);
    c += e;
  }
  return s + c;
}

// log |x + iy| without overflow, underflow or cancellation near |z| = 1.
double LogAbs(double x, double y) {
  double ax = std::fabs(x), ay = std::fabs(y);
  if (ax < ay) std::swap(ax, ay);
  if (std::isinf(ax)) return ax;
  if (ax > DBL_MAX / 2) return std::log(std::hypot(ax / 2, ay / 2)) + kLn2;
  if (ax < DBL_MIN) {
    // Subnormal parts: their modulus would round to a few significant bits.
    constexpr int kUp = 600;
    return std::log(std::hypot(std::scalbn(ax, kUp), std::scalbn(ay, kUp))) - kUp * kLn2;
  }
  double h = std::hypot(ax, ay);
  if (h > 0.5 && h < 2) return std::log1p(SquaresMinusOne(ax, ay)) / 2;
  return std::log(h);
}

// c * e^t, finite whenever the product is (|c| <= 1).
double TimesExp(double c, double t) {
  if (t <= kExpMax) return c * std::exp(t);
  double h = std::exp(t / 2);
  return c * h * h;
}

// c * cosh t and c * sinh t, finite whenever the products are; a zero c
// gives a zero (an infinite cosh is not allowed to make it NaN).
// Beyond kExpMax, cosh t and |sinh t| are e^|t| / 2 to the last bit; the
// half goes on the exponential, not on c, which may be subnormal.
double TimesHalfExp(double c, double t) {
  double h = std::exp(t / 2);
  return c * h * (h / 2);
}
double TimesCosh(double c, double t) {
  if (c == 0) return c;
  if (std::fabs(t) <= kExpMax) return c * std::cosh(t);
  return TimesHalfExp(c, std::fabs(t));
}
double TimesSinh(double c, double t) {
  if (c == 0) return std::signbit(t) ? -c : c;
  if (std::fabs(t) <= kExpMax) return c * std::sinh(t);
  return TimesHalfExp(std::signbit(t) ? -c : c, std::fabs(t));
}

// Re(1 / (x + iy)) = x / (x^2 + y^2) for large x, y >= 0, scaled by a power
// of two so that neither square overflows.
double RealPartReciprocal(double x, double y) {
  if (std::isinf(x) || std::isinf(y)) return 0;
  int e = std::ilogb(std::fmax(x, y));
  double xs = std::scalbn(x, -e), ys = std::scalbn(y, -e);
  return std::scalbn(xs / (xs * xs + ys * ys), -e);
}

// ---- arcsine and arccosine: Hull, Fairgrieve and Tang ------------------------------

// For w = u + iv with u, v >= 0 finite and neither huge nor both tiny, with
// R = |w + 1|, S = |w - 1|, A = (R + S) / 2 and B = u / A:
//   asin w = asin B + i log(A + sqrt(A^2 - 1)),  acos w = acos B - i (the same).
// Near the cut and near the branch point B and A - 1 lose everything to
// cancellation, so both are rebuilt from R and S directly.
struct ArcParts {
  double log_part;  // log(A + sqrt(A^2 - 1))
  bool b_usable;    // asin B and acos B are accurate as they are
  double b;
  // Otherwise asin B = atan2(num, den) and acos B = atan2(den, num), where
  // den = sqrt(A^2 - u^2) and num = u, both scaled alike.
  double num;
  double den;
};

// (|(a, b)| - b) / 2 without cancellation; h = hypot(a, b).
double HalfGap(double a, double b, double h) {
  if (b < 0) return (h - b) / 2;
  if (b == 0) return a / 2;
  return a * a / (h + b) / 2;
}

ArcParts Arc(double u, double v) {
  ArcParts p;
  double r = std::hypot(u + 1, v), s = std::hypot(u - 1, v);
  double a = std::fmax((r + s) / 2, 1.0);  // 1 at least, whatever the rounding
  if (a < kACross) {
    if (u == 1 && v < kEps * kEps / 128) {
      p.log_part = std::sqrt(v);  // A - 1 = v / 2 to working precision
    } else if (v >= kEps * std::fabs(u - 1)) {
      double am1 = HalfGap(v, 1 + u, r) + HalfGap(v, 1 - u, s);
      p.log_part = std::log1p(am1 + std::sqrt(am1 * (a + 1)));
    } else if (u < 1) {
      p.log_part = v / std::sqrt((1 - u) * (1 + u));  // v too small to square
    } else {
      p.log_part = std::log1p((u - 1) + std::sqrt((u - 1) * (u + 1)));
    }
  } else {
    p.log_part = std::log(a + std::sqrt(a * a - 1));
  }
  p.num = u;
  if (u < kFourSqrtMin) {
    // u / A would underflow; the scaled pair keeps its digits for atan2.
    p.b_usable = false;
    p.den = a * (2 / kEps);
    p.num = u * (2 / kEps);
    return p;
  }
  p.b = u / a;
  p.b_usable = p.b <= kBCross;
  if (p.b_usable) return p;
  if (u == 1 && v < kEps / 128) {
    p.den = std::sqrt(v) * std::sqrt((a + u) / 2);
  } else if (v >= kEps * std::fabs(u - 1)) {
    double amu = HalfGap(v, u + 1, r) + HalfGap(v, u - 1, s);
    p.den = std::sqrt(amu * (a + u));
  } else if (u > 1) {
    // sqrt(A^2 - u^2) = v u / sqrt(u^2 - 1) may underflow: scale both.
    constexpr double kScale = 4 / kEps / kEps;
    p.den = v * kScale * u / std::sqrt((u + 1) * (u - 1));
    p.num = u * kScale;
  } else {
    p.den = std::sqrt((1 - u) * (1 + u));
  }
  return p;
}

}  // namespace

// ---- exponential and logarithms ---------------------------------------------------

ComplexValue Exp(ComplexValue z) {
  if (z.im == 0) return {std::exp(z.re), z.im};  // keeps e^inf from meeting sin 0
  return {TimesExp(std::cos(z.im), z.re), TimesExp(std::sin(z.im), z.re)};
}

// The argument is atan2, except that a zero real part gives pi/2 with the
// sign of the imaginary part (zero included).
ComplexValue Log(ComplexValue z) {
  double arg = z.re == 0 ? std::copysign(kHalfPi, z.im) : std::atan2(z.im, z.re);
  return {LogAbs(z.re, z.im), arg};
}

ComplexValue Log10(ComplexValue z) { return Scale(Log(z), kLog10E); }

// Kahan's square root: t = sqrt((|x| + |z|) / 2) from the modulus, the other
// part y / 2t, so that no difference is ever formed. Operands near the
// overflow or underflow thresholds are scaled by powers of 4.
ComplexValue Sqrt(ComplexValue z) {
  double x = z.re, y = z.im;
  if (std::isinf(y)) return {INFINITY, y};
  if (std::isnan(x)) return {x, x};
  if (std::isinf(x)) {
    if (x > 0) return {x, std::isnan(y) ? y : std::copysign(0.0, y)};
    return {std::isnan(y) ? y : 0.0, std::copysign(INFINITY, y)};
  }
  if (std::isnan(y)) return {y, y};
  if (x == 0 && y == 0) return {0.0, y};
  double unscale = 1;
  if (std::fabs(x) > DBL_MAX / 4 || std::fabs(y) > DBL_MAX / 4) {
    x /= 4;
    y /= 4;
    unscale = 2;
  } else if (std::fabs(x) < 4 * DBL_MIN && std::fabs(y) < 4 * DBL_MIN) {
    x = std::scalbn(x, 54);
    y = std::scalbn(y, 54);
    unscale = std::scalbn(1.0, -27);
  }
  double t = std::sqrt((std::fabs(x) + std::hypot(x, y)) / 2);
  if (x >= 0) return {t * unscale, y / (2 * t) * unscale};
  return {std::fabs(y) / (2 * t) * unscale, std::copysign(t, y) * unscale};
}

// ---- hyperbolic and trigonometric functions ----------------------------------------

ComplexValue Sinh(ComplexValue z) {
  if (z.im == 0) return {std::sinh(z.re), z.im};
  return {TimesSinh(std::cos(z.im), z.re), TimesCosh(std::sin(z.im), z.re)};
}

ComplexValue Cosh(ComplexValue z) {
  if (z.im == 0) return {std::cosh(z.re), std::copysign(1.0, z.re) * z.im};
  return {TimesCosh(std::cos(z.im), z.re), TimesSinh(std::sin(z.im), z.re)};
}

// tanh z = sinh z conj(cosh z) / |cosh z|^2, both sides multiplied by
// 4 e^(-2|x|) so that nothing overflows. With a = 1 - e^(-2|x|) (from expm1,
// exact near 0), e = e^(-2|x|) and b = 1 + e:
//   n = (sign(x) a b, 4 e sin y cos y),  d = b^2 cos^2 y + a^2 sin^2 y,
// where b^2 - a^2 = 4e has been worked out so that no digits cancel.
Quotient Tanh(ComplexValue z) {
  double x = z.re, y = z.im;
  double a = -std::expm1(-2 * std::fabs(x)), e = std::exp(-2 * std::fabs(x)), b = 1 + e;
  double c = std::cos(y), s = std::sin(y);
  // A sum of two squares cancels nothing; once e is below the rounding error
  // of b the equal b^2 - 4e s^2 gives exactly 1, as tanh does for large |x|.
  double d = e < kEps / 4 ? b * b - 4 * e * s * s : b * b * c * c + a * a * s * s;
  return {{std::copysign(a * b, x), 4 * e * s * c}, {d, 0}};
}

// sin z = -i sinh(iz), cos z = cosh(iz), tan z = -i tanh(iz).
ComplexValue Sin(ComplexValue z) {
  ComplexValue w = Sinh({-z.im, z.re});
  return {w.im, -w.re};
}

ComplexValue Cos(ComplexValue z) { return Cosh({-z.im, z.re}); }

Quotient Tan(ComplexValue z) {
  Quotient q = Tanh({-z.im, z.re});
  q.n = {q.n.im, -q.n.re};
  return q;
}

// ---- inverse functions -------------------------------------------------------------

// asinh z for z = x + iy: the arcsine parts of |y| + i|x| (the cut of asinh
// lies on the imaginary axis), signs taken back from x and y.
ComplexValue Asinh(ComplexValue z) {
  double x = z.re, y = z.im, ax = std::fabs(x), ay = std::fabs(y);
  if (std::isnan(x) || std::isnan(y)) {
    if (std::isinf(x)) return {x, y + y};
    if (std::isinf(y)) return {y, x + x};
    if (y == 0) return {x + x, y};
    return {NAN, NAN};
  }
  if (ax > kRecipEps || ay > kRecipEps)  // asinh z = log 2z to working precision
    return {std::copysign(LogAbs(x, y) + kLn2, x), std::copysign(std::atan2(ay, ax), y)};
  if (ax < kArcTiny && ay < kArcTiny) return z;
  ArcParts p = Arc(ay, ax);
  double angle = p.b_usable ? std::asin(p.b) : std::atan2(p.num, p.den);
  return {std::copysign(p.log_part, x), std::copysign(angle, y)};
}

// asin z = swap(asinh(swap z)), swap(x + iy) = y + ix.
ComplexValue Asin(ComplexValue z) { return Swap(Asinh(Swap(z))); }

ComplexValue Acos(ComplexValue z) {
  double x = z.re, y = z.im, ax = std::fabs(x), ay = std::fabs(y);
  if (std::isnan(x) || std::isnan(y)) {
    if (std::isinf(x)) return {y + y, -INFINITY};
    if (std::isinf(y)) return {x + x, -y};
    if (x == 0) return {kHalfPi, y + y};
    return {NAN, NAN};
  }
  if (ax > kRecipEps || ay > kRecipEps) {
    double log_part = LogAbs(x, y) + kLn2;
    return {std::atan2(ay, x), std::signbit(y) ? log_part : -log_part};
  }
  if (ax < kArcTiny && ay < kArcTiny) return {kHalfPi - (x - kHalfPiLow), -y};
  ArcParts p = Arc(ax, ay);
  bool negative = std::signbit(x);
  double angle = p.b_usable ? std::acos(negative ? -p.b : p.b)
                            : std::atan2(p.den, negative ? -p.num : p.num);
  return {angle, std::signbit(y) ? p.log_part : -p.log_part};
}

// acosh z = (|Im acos z|, sign(y) Re acos z).
ComplexValue Acosh(ComplexValue z) {
  ComplexValue w = Acos(z);
  if (std::isnan(w.re) && std::isnan(w.im)) return {w.im, w.re};
  if (std::isnan(w.re)) return {std::fabs(w.im), w.re};
  if (std::isnan(w.im)) return {w.im, w.im};
  return {std::fabs(w.im), std::copysign(w.re, z.im)};
}

// Kahan's arctanh: for x, y >= 0,
//   Re = log1p(4x / ((1 - x)^2 + y^2)) / 4,  Im = atan2(2y, (1 - x)(1 + x) - y^2) / 2,
// with the limits at x = 1 and at large moduli written out.
ComplexValue Atanh(ComplexValue z) {
  double x = z.re, y = z.im, ax = std::fabs(x), ay = std::fabs(y);
  if (y == 0 && ax <= 1) return {std::atanh(x), y};
  if (x == 0 && !std::isnan(y)) return {x, std::atan(y)};
  if (std::isnan(x) || std::isnan(y)) {
    if (std::isinf(x)) return {std::copysign(0.0, x), y + y};
    if (std::isinf(y)) return {std::copysign(0.0, x), std::copysign(kHalfPi, y)};
    return {NAN, NAN};
  }
  if (ax > kRecipEps || ay > kRecipEps)
    return {std::copysign(RealPartReciprocal(ax, ay), x), std::copysign(kHalfPi, y)};
  if (ax < kAtanhTiny && ay < kAtanhTiny) return z;
  double re;
  if (ax == 1 && ay < kEps) {
    re = (kLn2 - std::log(ay)) / 2;
  } else {
    double dx = ax - 1;
    double sum = ay < kSqrtMin ? dx * dx : dx * dx + ay * ay;
    re = std::log1p(4 * ax / sum) / 4;
  }
  double im;
  if (ax == 1)
    im = std::atan2(2, -ay) / 2;
  else if (ay < kEps)
    im = std::atan2(2 * ay, (1 - ax) * (1 + ax)) / 2;
  else
    im = std::atan2(2 * ay, (1 - ax) * (1 + ax) - ay * ay) / 2;
  return {std::copysign(re, x), std::copysign(im, y)};
}

// atan z = swap(atanh(swap z)).
ComplexValue Atan(ComplexValue z) { return Swap(Atanh(Swap(z))); }

}  // namespace velk_complex
