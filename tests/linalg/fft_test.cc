// Fourier transforms against a plain long-double DFT, with the known results,
// identities, shapes and reports of the fronts.
#include "linalg/fft.h"

#include <cmath>
#include <random>

#include "matrix/block.h"
#include "matrix/fourier.h"
#include "matrix/operations.h"
#include "matrix/rearrange.h"
#include "tests/matrix/scenario.h"

namespace {

using Sequence = std::vector<Cx>;

// sum_j x(j) exp(sign 2 pi i j k / n) in long double, angles reduced mod n.
Sequence PlainDft(const Sequence &x, int sign) {
  long n = std::ssize(x);
  std::vector<long double> c(n), s(n);
  for (long m = 0; m < n; m++) {
    long double t = 6.283185307179586476925286766559L * m / n;
    c[m] = cosl(t);
    s[m] = sign * sinl(t);
  }
  Sequence out(n);
  for (long k = 0; k < n; k++) {
    long double re = 0, im = 0;
    for (long j = 0; j < n; j++) {
      long m = j * k % n;
      re += x[j].real() * c[m] - x[j].imag() * s[m];
      im += x[j].real() * s[m] + x[j].imag() * c[m];
    }
    out[k] = Cx(static_cast<double>(re), static_cast<double>(im));
  }
  return out;
}

double Norm(const Sequence &x) {
  double s = 0;
  for (Cx v : x) s += std::norm(v);
  return std::sqrt(s);
}

double RelativeError(const Sequence &got, const Sequence &want) {
  Sequence d(got.size());
  for (size_t k = 0; k < got.size(); k++) d[k] = got[k] - want[k];
  double w = Norm(want);
  return w == 0 ? Norm(d) : Norm(d) / w;
}

// The forward error a radix-2 transform of length n stays within.
double Tolerance(long n) {
  return 10 * std::max(1.0, std::log2(static_cast<double>(n))) * 2.22e-16;
}

Sequence Line(Matrix *m, int i, bool column) {
  int len = column ? m->rows : m->cols;
  Sequence s(len);
  for (int k = 0; k < len; k++) s[k] = ValueAt(m, column ? k * m->cols + i : i * m->cols + k);
  return s;
}

Matrix *Random(std::mt19937 &gen, const char *name, int cls, int rows, int cols) {
  std::uniform_real_distribution<double> u(-1, 1);
  Sequence v(static_cast<size_t>(rows) * cols);
  for (Cx &z : v) z = Cx(u(gen), cls == kComplex ? u(gen) : 0.0);
  return Make(name, cls, rows, cols, v);
}

Sequence Padded(Sequence s, long n) {
  s.resize(n);
  return s;
}

}  // namespace

TEST_F(Scenario, FftOfUnitVectorsAndTheRawConventions) {
  Matrix *e1 = Make("e1", kReal, 1, 4, {1, 0, 0, 0}), *e2 = Make("e2", kReal, 1, 4, {0, 1, 0, 0});
  EXPECT_TRUE(Holds(MatFFT(e1, 4, 0), kComplex, 1, 4, {1, 1, 1, 1}));
  EXPECT_TRUE(Holds(MatFFT(e2, 4, 0), kComplex, 1, 4, {1, Cx(0, -1), -1, Cx(0, 1)}, 1e-15));
  EXPECT_TRUE(
      Holds(MatIFFT(e2, 4, 0), kComplex, 1, 4, {0.25, Cx(0, 0.25), -0.25, Cx(0, -0.25)}, 1e-16));

  // The raw kernel has the exp(+sign) kernel and no scaling; the real one
  // packs Re F(0), Re F(n/2), then F(1) .. F(n/2 - 1) of the exp(+) transform.
  std::mt19937 gen(7);
  std::uniform_real_distribution<double> u(-1, 1);
  for (int n : {1, 2, 8, 64}) {
    Sequence x(n);
    for (Cx &z : x) z = Cx(u(gen), u(gen));
    for (int sign : {1, -1}) {
      Sequence y = x;
      velk_linalg::FftRaw(reinterpret_cast<double *>(y.data()), n, sign);
      EXPECT_LE(RelativeError(y, PlainDft(x, sign)), Tolerance(n)) << n << " " << sign;
    }
  }
  for (int n : {2, 4, 16, 256}) {
    std::vector<double> r(n);
    Sequence x(n);
    for (int j = 0; j < n; j++) x[j] = r[j] = u(gen);
    velk_linalg::FftRealPacked(r.data(), n);
    Sequence f = PlainDft(x, 1), packed(n / 2);
    packed[0] = Cx(f[0].real(), f[n / 2].real());
    for (int k = 1; k < n / 2; k++) packed[k] = f[k];
    Sequence got(n / 2);
    for (int k = 0; k < n / 2; k++) got[k] = Cx(r[2 * k], r[2 * k + 1]);
    EXPECT_LE(RelativeError(got, packed), Tolerance(n)) << n;
  }
}

// Every power-of-two length up to 4096, rows and columns, real and complex,
// forward and inverse, against the plain DFT (length 1 as a one-row matrix:
// two rows of one column would be taken down the column).
TEST_F(Scenario, FftAgreesWithThePlainDftAtEveryLength) {
  std::mt19937 gen(2024);
  for (int n = 2; n <= 4096; n *= 2) {
    for (int cls : {kReal, kComplex}) {
      for (bool column : {false, true}) {
        Matrix *a = column ? Random(gen, "A", cls, n, 2) : Random(gen, "A", cls, 2, n);
        Matrix *x = MatFFT(a, n, column), *y = MatIFFT(a, n, column);
        ASSERT_TRUE(x->rows == a->rows && x->cols == a->cols && x->cls == kComplex);
        for (int i = 0; i < 2; i++) {
          Sequence in = Line(a, i, column), inverse = PlainDft(in, 1);
          for (Cx &v : inverse) v /= static_cast<double>(n);
          SCOPED_TRACE(testing::Message() << "n " << n << " class " << cls << " column " << column);
          EXPECT_LE(RelativeError(Line(x, i, column), PlainDft(in, -1)), Tolerance(n));
          EXPECT_LE(RelativeError(Line(y, i, column), inverse), Tolerance(n));
        }
        MatSweepAll();
      }
    }
  }
}

TEST_F(Scenario, FftRoundTripParsevalAndSymmetry) {
  std::mt19937 gen(11);
  for (int n : {2, 4, 32, 1024, 16384}) {
    SCOPED_TRACE(n);
    Matrix *a = Random(gen, "A", kComplex, 3, n), *r = Random(gen, "R", kReal, 3, n);
    Matrix *back = MatIFFT(MatFFT(a, n, 0), n, 0);
    Matrix *x = MatFFT(r, n, 0);
    for (int i = 0; i < 3; i++) {
      EXPECT_LE(RelativeError(Line(back, i, false), Line(a, i, false)), 2 * Tolerance(n));
      Sequence in = Line(r, i, false), out = Line(x, i, false);
      EXPECT_NEAR(Norm(out), std::sqrt(static_cast<double>(n)) * Norm(in),
                  Tolerance(n) * Norm(out));
      // Zero frequency and Nyquist terms of real input are real, and the
      // upper half mirrors the lower one.
      EXPECT_EQ(out[0].imag(), 0.0);
      EXPECT_EQ(out[n / 2].imag(), 0.0);
      for (int k = 1; k < n / 2; k++) ASSERT_EQ(out[n - k], std::conj(out[k])) << k;
    }
    MatSweepAll();
  }
}

TEST_F(Scenario, FftPadsTruncatesAndTakesAWholeColumn) {
  std::mt19937 gen(5);
  for (int cls : {kReal, kComplex}) {
    Matrix *a = Random(gen, "A", cls, 2, 5);
    Matrix *padded = MatFFT(a, 8, 0), *cut = MatIFFT(a, 4, 0);
    ASSERT_TRUE(padded->rows == 2 && padded->cols == 8 && cut->rows == 2 && cut->cols == 4);
    for (int i = 0; i < 2; i++) {
      Sequence in = Line(a, i, false), inverse = PlainDft(Padded(in, 4), 1);
      for (Cx &v : inverse) v /= 4.0;
      EXPECT_LE(RelativeError(Line(padded, i, false), PlainDft(Padded(in, 8), -1)), Tolerance(8));
      EXPECT_LE(RelativeError(Line(cut, i, false), inverse), Tolerance(4));
    }
    Matrix *tc = MatFFT(MatTrans(a), 8, 1);  // columns padded to 8 rows
    ASSERT_TRUE(tc->rows == 8 && tc->cols == 2);
    for (int i = 0; i < 2; i++)
      EXPECT_LE(RelativeError(Line(tc, i, true), PlainDft(Padded(Line(a, i, false), 8), -1)),
                Tolerance(8));
  }
  // A single column is done down the column, with n = 1 over all of it even
  // at lengths not a power of two; n = 1 on a row is the first value alone.
  for (int rows : {3, 12, 100, 1000, 4097}) {
    Matrix *v = Random(gen, "V", rows % 2 ? kComplex : kReal, rows, 1);
    Matrix *x = MatFFT(v, 1, 0), *y = MatIFFT(x, 1, 0);
    ASSERT_TRUE(x->rows == rows && x->cols == 1);
    // Bluestein's convolution runs over a transform of at most 4n values.
    EXPECT_LE(RelativeError(Line(x, 0, true), PlainDft(Line(v, 0, true), -1)), Tolerance(4 * rows))
        << rows;
    EXPECT_LE(RelativeError(Line(y, 0, true), Line(v, 0, true)), 2 * Tolerance(4 * rows)) << rows;
  }
  Matrix *w = Make("W", kReal, 2, 3, {4, 5, 6, 7, 8, 9});
  EXPECT_TRUE(Holds(MatFFT(w, 1, 0), kComplex, 2, 1, {4, 7}));
  EXPECT_TRUE(Holds(MatIFFT(MatRealToComp(w), 1, 0), kComplex, 2, 1, {4, 7}));
  EXPECT_TRUE(Holds(MatFFT(w, 1, 1), kComplex, 1, 3, {4, 5, 6}));
  EXPECT_TRUE(Holds(MatFFT(w, 0, 0), kComplex, 2, 0, {}));
}

using FftDeathTest = Scenario;

TEST_F(FftDeathTest, FrontsReportWithTheirLabels) {
  Matrix *a = Make("A", kReal, 2, 5), *e = Make("E", kComplex, 0, 3), *p = Make("P", kPoly, 2, 2);
  ExpectReports({
      {[=] { MatFFT(e, 4, 0); }, "fft(E(0x3)) : Zero-size matrix in MatFFT()."},
      {[=] { MatIFFT(e, 4, 1); }, "ifft_col(E(0x3)) : Zero-size matrix in MatIFFT()."},
      {[=] { MatFFT(p, 2, 0); }, "fft(P(2x2)) : Not a real nor complex matrix in MatFFT()."},
      {[=] { MatIFFT(p, 2, 0); }, "ifft(P(2x2)) : Not a real nor complex matrix in MatIFFT()."},
      {[=] { MatFFT(a, 6, 0); }, "fft(A(2x5)) : Data number must be 2^n in MatFFT()."},
      {[=] { MatFFT(a, -4, 1); }, "fft_col(A(2x5)) : Data number must be 2^n in MatFFT()."},
      {[=] { MatIFFT(a, 12, 0); }, "ifft(A(2x5)) : Data number must be 2^n in MatIFFT()."},
  });
}
