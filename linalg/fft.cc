// Radix-2 fast Fourier transforms: the published complex kernel (bit reversal,
// Danielson-Lanczos butterflies, twiddles by the trigonometric recurrence) and
// the real kernel's packing, with the butterflies scheduled for the cache and
// vectorised two complex values at a time. Every butterfly performs the very
// operations of the textbook loop (no fused multiply-add, the same twiddle
// values), so only the order in which butterflies run differs from it.
#include "linalg/fft.h"

#include <cmath>
#include <cstring>
#include <vector>

// The vector types below never cross a function boundary that is not inlined.
#pragma GCC diagnostic ignored "-Wpsabi"

namespace velk_linalg {
namespace {

constexpr double kTwoPi = 6.283185307179586;

// ---- twiddle factors ------------------------------------------------------------

// Twiddles of the stage with span s (a power of two) at complex index s - 1:
// w(k) = exp(i k 2 pi / (2 s)) for k < s, by the recurrence from w(0) = 1.
// Every stage's values depend on its span only, so one table serves every
// length up to the longest computed. The inverse uses their conjugates, which
// the recurrence with the negated angle gives exactly (sin is odd).
std::vector<double> &TwiddleTable() {
  static std::vector<double> table;
  return table;
}

// The table, covering spans up to `span`.
const double *Twiddles(int span) {
  std::vector<double> &table = TwiddleTable();
  long long have = static_cast<long long>(table.size()) / 2 + 1;  // first span not computed
  if (have <= span) {
    table.resize(2 * (2 * static_cast<size_t>(span) - 1));
    for (long long s = have; s <= span; s *= 2) {
      double theta = kTwoPi / (2.0 * static_cast<double>(s));
      double wtemp = std::sin(0.5 * theta);
      double wpr = -2.0 * wtemp * wtemp, wpi = std::sin(theta);
      double wr = 1.0, wi = 0.0;
      double *w = table.data() + 2 * (s - 1);
      for (long long k = 0; k < s; k++) {
        w[2 * k] = wr;
        w[2 * k + 1] = wi;
        wtemp = wr;
        wr = wr * wpr - wi * wpi + wr;
        wi = wi * wpr + wtemp * wpi + wi;
      }
    }
  }
  return table.data();
}

inline const double *StageTwiddles(const double *table, int span) {
  return table + 2 * (static_cast<long long>(span) - 1);
}

// ---- butterflies ------------------------------------------------------------------

typedef double Pair __attribute__((vector_size(32)));  // two complex values

inline Pair Load(const double *p) {
  Pair v;
  std::memcpy(&v, p, sizeof v);
  return v;
}
inline void Store(double *p, Pair v) { std::memcpy(p, &v, sizeof v); }

// v w (or v conj(w)) for both complex values, rounded as the scalar
// re = wr vr - wi vi, im = wr vi + wi vr.
template <bool Inverse>
inline Pair Mul(Pair v, Pair w) {
  Pair wr = __builtin_shufflevector(w, w, 0, 0, 2, 2);
  Pair wi = __builtin_shufflevector(w, w, 1, 1, 3, 3);
  Pair a = wr * v;
  Pair b = wi * __builtin_shufflevector(v, v, 1, 0, 3, 2);
  if (Inverse) return __builtin_shufflevector(a + b, a - b, 0, 5, 2, 7);
  return __builtin_shufflevector(a - b, a + b, 0, 5, 2, 7);
}

// (u, v) <- (u + v w, u - v w) for the two complex values at u and v.
template <bool Inverse>
inline void Butterfly(double *u, double *v, const double *w) {
  Pair a = Load(u), t = Mul<Inverse>(Load(v), Load(w));
  Store(u, a + t);
  Store(v, a - t);
}

// The first stage (span 1, twiddle 1) on len complex values, one by one.
inline void FirstStage(double *x, int len) {
  for (int g = 0; g < len; g += 2) {
    double *u = x + 2 * g, *v = u + 2;
    double tr = 1.0 * v[0] - 0.0 * v[1], ti = 1.0 * v[1] + 0.0 * v[0];
    v[0] = u[0] - tr;
    v[1] = u[1] - ti;
    u[0] += tr;
    u[1] += ti;
  }
}

// One stage of span s >= 2 over len complex values.
template <bool Inverse>
inline void Stage(double *x, int len, int s, const double *table) {
  const double *w = StageTwiddles(table, s);
  for (int g = 0; g < len; g += 2 * s)
    for (int k = 0; k < s; k += 2)
      Butterfly<Inverse>(x + 2 * (g + k), x + 2 * (g + k + s), w + 2 * k);
}

// The stages of spans s and 2 s (s >= 2) in one pass: each group of four
// values is loaded once for the four butterflies it takes part in.
template <bool Inverse>
inline void TwoStages(double *x, int len, int s, const double *table) {
  const double *w1 = StageTwiddles(table, s), *w2 = StageTwiddles(table, 2 * s);
  for (int g = 0; g < len; g += 4 * s) {
    for (int k = 0; k < s; k += 2) {
      double *p0 = x + 2 * (g + k), *p1 = p0 + 2 * s, *p2 = p1 + 2 * s, *p3 = p2 + 2 * s;
      Pair a = Load(p0), b = Mul<Inverse>(Load(p1), Load(w1 + 2 * k));
      Pair c = Load(p2), d = Mul<Inverse>(Load(p3), Load(w1 + 2 * k));
      Pair a1 = a + b, b1 = a - b, c1 = c + d, d1 = c - d;
      Pair tc = Mul<Inverse>(c1, Load(w2 + 2 * k)), td = Mul<Inverse>(d1, Load(w2 + 2 * (k + s)));
      Store(p0, a1 + tc);
      Store(p2, a1 - tc);
      Store(p1, b1 + td);
      Store(p3, b1 - td);
    }
  }
}

// Stages of spans from..len/2 on len complex values, two at a time where they can.
template <bool Inverse>
inline void Stages(double *x, int len, int from, const double *table) {
  int s = from;
  if (s == 1 && s < len) {
    FirstStage(x, len);
    s = 2;
  }
  for (; s < len; s *= 2) {
    if (4 * s <= len) {
      TwoStages<Inverse>(x, len, s, table);
      s *= 2;
    } else {
      Stage<Inverse>(x, len, s, table);
    }
  }
}

// Values per block that runs its early stages while it sits in the first-level
// cache (16 KiB of complex values).
constexpr int kBlock = 1024;

// All butterflies of a bit-reversed sequence of n complex values: the stages
// whose groups fit a block run block by block, the rest over the whole row.
template <bool Inverse>
inline void Butterflies(double *x, int n, const double *table) {
  int block = n < kBlock ? n : kBlock;
  for (int b = 0; b < n; b += block)
    Stages<Inverse>(x + 2 * static_cast<long long>(b), block, 1, table);
  if (block < n) Stages<Inverse>(x, n, block, table);
}

// ---- bit reversal -----------------------------------------------------------------

unsigned Reverse32(unsigned v) {
  v = ((v >> 1) & 0x55555555u) | ((v & 0x55555555u) << 1);
  v = ((v >> 2) & 0x33333333u) | ((v & 0x33333333u) << 2);
  v = ((v >> 4) & 0x0F0F0F0Fu) | ((v & 0x0F0F0F0Fu) << 4);
  v = ((v >> 8) & 0x00FF00FFu) | ((v & 0x00FF00FFu) << 8);
  return (v >> 16) | (v << 16);
}

int Log2(int n) {
  int bits = 0;
  while ((1 << bits) < n) bits++;
  return bits;
}

// The bit-reversal permutation of the longest length seen: rev(j) over b bits
// is its entry over B >= b bits shifted right by B - b.
struct Reversal {
  const unsigned *table;
  int shift;
  unsigned operator()(int j) const { return table[j] >> shift; }
};

Reversal ReversalOf(int n) {
  static std::vector<unsigned> table;
  static int bits = 0;
  if (static_cast<int>(table.size()) < n) {
    bits = Log2(n);
    table.resize(n);
    for (int j = 0; j < n; j++)
      table[j] = bits == 0 ? 0 : Reverse32(static_cast<unsigned>(j)) >> (32 - bits);
  }
  return {table.data(), bits - Log2(n)};
}

// out[rev(j)] = x(j) for j < n (n a power of two): the copy into the result
// row and the permutation in one pass. x(j) is read by load(j, re, im).
template <class Load>
inline void CopyReversed(double *out, int n, Reversal rev, Load load) {
  for (int j = 0; j < n; j++) {
    unsigned r = rev(j);
    load(j, out[2 * r], out[2 * r + 1]);
  }
}

// The same when every x(j) is the pair src[2j], src[2j + 1].
inline void CopyPairsReversed(double *out, int n, Reversal rev, const double *src) {
  for (int j = 0; j < n; j++) std::memcpy(out + 2 * rev(j), src + 2 * j, 2 * sizeof(double));
}

// ---- the real kernel's post-processing --------------------------------------------

// Separates the transforms of the even and odd reals held as n/2 transformed
// complex values (angle step pi / (n/2), factors 0.5 and -0.5), in place.
// Packed, the first n doubles end as Re F(0), Re F(n/2), F(1) .. F(n/2 - 1)
// (F in the exp(+) convention). Unpacked, the row of n complex values ends as
// X in the exp(-) convention: X(k) = conj F(k) for k < n/2, X(n - k) = F(k),
// X(0) and X(n/2) real; the values are the packed ones, moved and negated.
template <bool Unpack>
void SplitReal(double *x, int n, const double *table) {
  const double c1 = 0.5, c2 = -0.5;
  const double *w = StageTwiddles(table, n / 2);  // the recurrence of angle 2 pi / n
  for (int i = 1; i < n / 4; i++) {
    int i1 = 2 * i, i2 = i1 + 1, i3 = n - i1, i4 = i3 + 1;
    double wr = w[2 * i], wi = w[2 * i + 1];
    double h1r = c1 * (x[i1] + x[i3]), h1i = c1 * (x[i2] - x[i4]);
    double h2r = -c2 * (x[i2] + x[i4]), h2i = c2 * (x[i1] - x[i3]);
    double f1r = h1r + wr * h2r - wi * h2i, f1i = h1i + wr * h2i + wi * h2r;
    double f3r = h1r - wr * h2r + wi * h2i, f3i = -h1i + wr * h2i + wi * h2r;
    if (Unpack) {
      x[2 * (n - i)] = f1r;
      x[2 * (n - i) + 1] = f1i;
      x[n + i1] = f3r;  // X(n/2 + i) = F(n/2 - i)
      x[n + i1 + 1] = f3i;
      f1i = -f1i;
      f3i = -f3i;
    }
    x[i1] = f1r;
    x[i2] = f1i;
    x[i3] = f3r;
    x[i4] = f3i;
  }
  double h1r = x[0];
  x[0] = h1r + x[1];
  x[1] = h1r - x[1];
  if (!Unpack) return;
  if (n >= 4) {  // F(n/4) is left as it is by the separation
    x[3 * n / 2] = x[n / 2];
    x[3 * n / 2 + 1] = x[n / 2 + 1];
    x[n / 2 + 1] = -x[n / 2 + 1];
  }
  x[n] = x[1];
  x[n + 1] = 0.0;
  x[1] = 0.0;
}

// ---- rows -------------------------------------------------------------------------

// Elements 1 .. n-1 in reverse order: the raw exp(+sign) transform read in the
// exp(-sign) order.
inline void ReverseTail(double *x, int n) {
  for (int k = 1, l = n - 1; k < l; k++, l--) {
    std::swap(x[2 * k], x[2 * l]);
    std::swap(x[2 * k + 1], x[2 * l + 1]);
  }
}

// A row's value j after cutting or padding (zero beyond the row).
struct RowReader {
  const double *row;
  bool complex;
  int cols;
  void operator()(int j, double &re, double &im) const {
    if (j >= cols) {
      re = im = 0.0;
    } else if (complex) {
      re = row[2 * j];
      im = row[2 * j + 1];
    } else {
      re = row[j];
      im = 0.0;
    }
  }
};

// flatten puts the butterflies into each clone (clang does not take it beside target_clones).
#if defined(__clang__)
#define VELK_FFT_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define VELK_FFT_CLONES __attribute__((target_clones("avx2", "default"), flatten, noinline))
#endif
VELK_FFT_CLONES void PowerOfTwoRows(
    const double *in, bool in_complex, int rows, int in_cols, double *out, int n, bool inverse,
    const double *table, Reversal full, Reversal half) {
  long long in_stride = static_cast<long long>(in_cols) * (in_complex ? 2 : 1);
  for (int r = 0; r < rows; r++) {
    const double *src = in + r * in_stride;
    double *x = out + 2 * static_cast<long long>(r) * n;
    if (!in_complex && !inverse && n >= 2) {
      // The reals in pairs as n/2 complex values, straight into the row's first half.
      if (in_cols >= n)
        CopyPairsReversed(x, n / 2, half, src);
      else
        CopyReversed(x, n / 2, half, [&](int j, double &re, double &im) {
          re = 2 * j < in_cols ? src[2 * j] : 0.0;
          im = 2 * j + 1 < in_cols ? src[2 * j + 1] : 0.0;
        });
      Butterflies<false>(x, n / 2, table);
      SplitReal<true>(x, n, table);
      continue;
    }
    if (in_complex && in_cols >= n)
      CopyPairsReversed(x, n, full, src);
    else
      CopyReversed(x, n, full, RowReader{src, in_complex, in_cols});
    if (inverse) {
      Butterflies<true>(x, n, table);
      ReverseTail(x, n);
      double scale = 1.0 / n;
      for (long long k = 0; k < 2LL * n; k++) x[k] *= scale;
    } else {
      Butterflies<false>(x, n, table);
      ReverseTail(x, n);
    }
  }
}

}  // namespace

void FftRaw(double *x, int n, int sign) {
  const double *table = Twiddles(n / 2 > 0 ? n / 2 : 1);
  std::vector<double> copy(x, x + 2 * static_cast<size_t>(n));
  CopyPairsReversed(x, n, ReversalOf(n), copy.data());
  if (sign < 0)
    Butterflies<true>(x, n, table);
  else
    Butterflies<false>(x, n, table);
}

void FftRealPacked(double *x, int n) {
  const double *table = Twiddles(n / 2);
  FftRaw(x, n / 2, 1);
  SplitReal<false>(x, n, table);
}

// sum_j x(j) exp(sign 2 pi i j k / n) for any length, by Bluestein's
// algorithm: with w(m) = exp(sign pi i m^2 / n) and j k = (j^2 + k^2 - (k-j)^2)/2,
// X(k) = w(k) sum_j x(j) w(j) conj(w(k - j)), a convolution done with
// power-of-two transforms of length M >= 2n - 1. The angles are reduced
// exactly (m^2 mod 2n) before the sine and cosine.
static void Bluestein(const double *x, double *out, int n, int sign) {
  int m_len = 1;
  while (m_len < 2LL * n - 1) m_len *= 2;
  std::vector<double> w(2 * static_cast<size_t>(n)), a(2 * static_cast<size_t>(m_len)),
      b(2 * static_cast<size_t>(m_len));
  const double pi = kTwoPi / 2;
  for (long long m = 0; m < n; m++) {
    double t = pi * static_cast<double>(m * m % (2LL * n)) / n;
    w[2 * m] = std::cos(t);
    w[2 * m + 1] = sign * std::sin(t);
  }
  for (long long j = 0; j < n; j++) {
    a[2 * j] = x[2 * j] * w[2 * j] - x[2 * j + 1] * w[2 * j + 1];
    a[2 * j + 1] = x[2 * j] * w[2 * j + 1] + x[2 * j + 1] * w[2 * j];
    long long at[2] = {j, (m_len - j) % m_len};  // b(m) = b(-m) = conj w(m)
    for (long long p : at) {
      b[2 * p] = w[2 * j];
      b[2 * p + 1] = -w[2 * j + 1];
    }
  }
  FftRaw(a.data(), m_len, -1);
  FftRaw(b.data(), m_len, -1);
  for (long long k = 0; k < m_len; k++) {
    double re = a[2 * k] * b[2 * k] - a[2 * k + 1] * b[2 * k + 1];
    a[2 * k + 1] = a[2 * k] * b[2 * k + 1] + a[2 * k + 1] * b[2 * k];
    a[2 * k] = re;
  }
  FftRaw(a.data(), m_len, 1);
  for (long long k = 0; k < n; k++) {
    double cr = a[2 * k] / m_len, ci = a[2 * k + 1] / m_len;
    out[2 * k] = w[2 * k] * cr - w[2 * k + 1] * ci;
    out[2 * k + 1] = w[2 * k] * ci + w[2 * k + 1] * cr;
  }
}

void FftRows(const double *in, bool in_complex, int rows, int in_cols, double *out, int n,
             bool inverse) {
  if (n == 0 || rows == 0) return;
  if (IsPowerOfTwo(n)) {
    const double *table = Twiddles(n / 2 > 0 ? n / 2 : 1);
    Reversal full = ReversalOf(n), half = ReversalOf(n / 2 > 0 ? n / 2 : 1);
    PowerOfTwoRows(in, in_complex, rows, in_cols, out, n, inverse, table, full, half);
    return;
  }
  std::vector<double> x(2 * static_cast<size_t>(n));
  long long in_stride = static_cast<long long>(in_cols) * (in_complex ? 2 : 1);
  for (int r = 0; r < rows; r++) {
    RowReader read{in + r * in_stride, in_complex, in_cols};
    for (int j = 0; j < n; j++) read(j, x[2 * j], x[2 * j + 1]);
    double *row = out + 2 * static_cast<long long>(r) * n;
    Bluestein(x.data(), row, n, inverse ? 1 : -1);
    if (inverse)
      for (long long k = 0; k < 2LL * n; k++) row[k] *= 1.0 / n;
  }
}

}  // namespace velk_linalg
