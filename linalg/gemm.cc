// The matrix product: a plain loop for small operands, and for large ones the
// layered blocking of Goto and van de Geijn ("Anatomy of high-performance
// matrix multiplication", 2008): a kc x nc block of B is packed into column
// panels of width nr, an mc x kc block of A into row panels of height mr, and
// a tile kernel keeps an mr x nr block of C in vector registers while it runs
// down kc. A complex product is the real product of A's interleaved (re, im)
// rows with a real 2k x 2n expansion of B (row 2p holds (br, bi) pairs, row
// 2p+1 holds (-bi, br)), so both share one tile kernel and count the same
// flops per cycle.
#include "linalg/gemm.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace velk_linalg {
namespace {

// ---- the tile kernel ------------------------------------------------------------

// Vector types of two, four and eight doubles; may_alias since they read the
// packed and the caller's double arrays.
typedef double V2 __attribute__((vector_size(16), may_alias));
#if defined(__x86_64__) || defined(__i386__)
typedef double V4 __attribute__((vector_size(32), may_alias));
typedef double V8 __attribute__((vector_size(64), may_alias));
#endif

// C(mr x nr) op= A-panel (kc x MR, packed by columns of MR) times B-panel
// (kc x NR, packed by rows of NR). Inlined into each vector path's own
// function, so the same source becomes SSE2, AVX2 or AVX-512 code.
template <class V, int MR, int NV>
[[gnu::always_inline]] inline void TileKernel(int kc, const double *__restrict a,
                                              const double *__restrict b, double *c, long ldc,
                                              int mr, int nr, GemmMode mode) {
  constexpr int W = sizeof(V) / sizeof(double);
  constexpr int NR = NV * W;
  V acc[MR][NV];
#pragma GCC unroll 16
  for (int i = 0; i < MR; i++)
#pragma GCC unroll 4
    for (int j = 0; j < NV; j++) acc[i][j] = V{};
  for (int p = 0; p < kc; p++) {
    V bv[NV];
#pragma GCC unroll 4
    for (int j = 0; j < NV; j++) bv[j] = *reinterpret_cast<const V *>(b + p * NR + j * W);
#pragma GCC unroll 16
    for (int i = 0; i < MR; i++) {
      const double x = a[p * MR + i];
#pragma GCC unroll 4
      for (int j = 0; j < NV; j++) acc[i][j] += x * bv[j];
    }
  }
  if (mr == MR && nr == NR) {
#pragma GCC unroll 16
    for (int i = 0; i < MR; i++)
#pragma GCC unroll 4
      for (int j = 0; j < NV; j++) {
        V *q = reinterpret_cast<V *>(c + i * ldc + j * W);
        V old;
        std::memcpy(&old, q, sizeof old);
        V val = mode == GemmMode::kSet   ? acc[i][j]
                : mode == GemmMode::kAdd ? old + acc[i][j]
                                         : old - acc[i][j];
        std::memcpy(q, &val, sizeof val);
      }
    return;
  }
  // An edge tile: through a buffer, only the part inside C.
  double t[MR * NR];
  std::memcpy(t, acc, sizeof t);
  for (int i = 0; i < mr; i++)
    for (int j = 0; j < nr; j++) {
      double &cij = c[i * ldc + j];
      double v = t[i * NR + j];
      cij = mode == GemmMode::kSet ? v : mode == GemmMode::kAdd ? cij + v : cij - v;
    }
}

using TileFunction = void (*)(int kc, const double *a, const double *b, double *c, long ldc, int mr,
                              int nr, GemmMode mode);

// One vector path: its tile shape, its block sizes (the B panel of kc x nr in
// L1, the packed A block of mc x kc in L2) and its kernel.
struct Path {
  const char *name;
  int mr, nr, kc, mc, nc;
  TileFunction tile;
};

void TilePortable(int kc, const double *a, const double *b, double *c, long ldc, int mr, int nr,
                  GemmMode mode) {
  TileKernel<V2, 4, 2>(kc, a, b, c, ldc, mr, nr, mode);
}

#if defined(__x86_64__) || defined(__i386__)
// Sixteen vector registers: 6 x 8 keeps twelve accumulators.
__attribute__((target("avx2,fma"))) void TileAvx2(int kc, const double *a, const double *b,
                                                  double *c, long ldc, int mr, int nr,
                                                  GemmMode mode) {
  TileKernel<V4, 6, 2>(kc, a, b, c, ldc, mr, nr, mode);
}
// Thirty-two registers: 12 x 16 keeps twenty-four.
__attribute__((target("avx512f,avx2,fma"))) void TileAvx512(int kc, const double *a,
                                                            const double *b, double *c, long ldc,
                                                            int mr, int nr, GemmMode mode) {
  TileKernel<V8, 12, 2>(kc, a, b, c, ldc, mr, nr, mode);
}
#endif

const Path kPaths[] = {
    {"portable", 4, 4, 256, 64, 2048, TilePortable},
#if defined(__x86_64__) || defined(__i386__)
    {"avx2", 6, 8, 256, 96, 2048, TileAvx2},
    {"avx512", 12, 16, 192, 144, 2048, TileAvx512},
#else
    {"avx2", 4, 4, 256, 64, 2048, TilePortable},
    {"avx512", 4, 4, 256, 64, 2048, TilePortable},
#endif
};

GemmPath Widest() {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx512f")) return GemmPath::kAvx512;
  if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma")) return GemmPath::kAvx2;
#endif
  return GemmPath::kPortable;
}

GemmPath &Current() {
  static GemmPath path = Widest();
  return path;
}

// ---- packing ---------------------------------------------------------------------

// Rows of the B operand as the real product sees them.
struct RealRows {
  const double *b;
  long ldb;
  // Row r, columns j0 .. j0 + w - 1, into out.
  void operator()(long r, long j0, int w, double *out) const {
    std::memcpy(out, b + r * ldb + j0, sizeof(double) * w);
  }
};

// The 2k x 2n real expansion of a complex k x n B held as (re, im) pairs with
// ldb counted in doubles: row 2p is B's row p as stored, row 2p+1 is the
// pairs turned into (-im, re).
struct ComplexRows {
  const double *b;
  long ldb;
  void operator()(long r, long j0, int w, double *out) const {
    const double *row = b + (r >> 1) * ldb;
    if ((r & 1) == 0) {
      std::memcpy(out, row + j0, sizeof(double) * w);
      return;
    }
    for (int j = 0; j < w; j++) {
      long jj = j0 + j;
      out[j] = (jj & 1) == 0 ? -row[jj + 1] : row[jj - 1];
    }
  }
};

// B(pc .. pc + kc, jc .. jc + nc) into panels of nr columns, each kc x nr by
// rows; the last panel is padded with zeros.
template <class Rows>
void PackB(const Rows &rows, long pc, long jc, int kc, int nc, int nr, double *out) {
  for (int jr = 0; jr < nc; jr += nr) {
    int w = std::min(nr, nc - jr);
    double *panel = out + static_cast<long>(jr) * kc;
    for (int p = 0; p < kc; p++) {
      double *o = panel + static_cast<long>(p) * nr;
      rows(pc + p, jc + jr, w, o);
      for (int j = w; j < nr; j++) o[j] = 0.0;
    }
  }
}

// A(0 .. mc, 0 .. kc) (a points at the block's corner) into panels of mr rows,
// each kc x mr by columns; the last panel is padded with zeros.
void PackA(const double *a, long lda, int mc, int kc, int mr, double *out) {
  for (int ir = 0; ir < mc; ir += mr) {
    int h = std::min(mr, mc - ir);
    double *panel = out + static_cast<long>(ir) * kc;
    for (int i = 0; i < h; i++) {
      const double *row = a + (ir + i) * lda;
      for (int p = 0; p < kc; p++) panel[static_cast<long>(p) * mr + i] = row[p];
    }
    for (int i = h; i < mr; i++)
      for (int p = 0; p < kc; p++) panel[static_cast<long>(p) * mr + i] = 0.0;
  }
}

double *AlignedDoubles(long count) {
  size_t bytes = (sizeof(double) * count + 63) / 64 * 64;
  return static_cast<double *>(std::aligned_alloc(64, bytes));
}

// ---- the blocked product ---------------------------------------------------------

template <class Rows>
void Blocked(GemmMode mode, int m, int n, int k, const double *a, long lda, const Rows &rows,
             double *c, long ldc) {
  if (m == 0 || n == 0) return;
  if (k == 0) {
    if (mode == GemmMode::kSet)
      for (int i = 0; i < m; i++) std::fill_n(c + i * ldc, n, 0.0);
    return;
  }
  const Path &s = kPaths[static_cast<int>(Current())];
  int kcmax = std::min(s.kc, k), ncmax = std::min(s.nc, n), mcmax = std::min(s.mc, m);
  double *bp = AlignedDoubles(static_cast<long>(kcmax) * ((ncmax + s.nr - 1) / s.nr * s.nr));
  double *ap = AlignedDoubles(static_cast<long>(kcmax) * ((mcmax + s.mr - 1) / s.mr * s.mr));
  for (int jc = 0; jc < n; jc += s.nc) {
    int nc = std::min(s.nc, n - jc);
    for (int pc = 0; pc < k; pc += s.kc) {
      int kc = std::min(s.kc, k - pc);
      // Later slices of k add to what the first one set.
      GemmMode part = pc == 0 || mode == GemmMode::kSub ? mode : GemmMode::kAdd;
      PackB(rows, pc, jc, kc, nc, s.nr, bp);
      for (int ic = 0; ic < m; ic += s.mc) {
        int mc = std::min(s.mc, m - ic);
        PackA(a + ic * lda + pc, lda, mc, kc, s.mr, ap);
        for (int jr = 0; jr < nc; jr += s.nr)
          for (int ir = 0; ir < mc; ir += s.mr)
            s.tile(kc, ap + static_cast<long>(ir) * kc, bp + static_cast<long>(jr) * kc,
                   c + (ic + ir) * ldc + jc + jr, ldc, std::min(s.mr, mc - ir),
                   std::min(s.nr, nc - jr), part);
      }
    }
  }
  std::free(ap);
  std::free(bp);
}

// ---- the plain loop --------------------------------------------------------------

// The plain complex product (no recovery of infinities and NaNs, which the
// library routine would spend a call per element on).
inline double MulAdd(double c, double a, double b) { return c + a * b; }
inline Complexd MulAdd(Complexd c, Complexd a, Complexd b) {
  return {c.real() + a.real() * b.real() - a.imag() * b.imag(),
          c.imag() + a.real() * b.imag() + a.imag() * b.real()};
}

// Order i, k, j: the inner loop runs along rows of b and c, so no stride of a
// column is taken there. Subtract negates each a(i, p) (exactly).
template <class T, bool kSubtract>
[[gnu::always_inline]] inline void PlainUpdate(int m, int n, int k, const T *__restrict a, long lda,
                                               const T *__restrict b, long ldb, T *__restrict c,
                                               long ldc) {
  for (int i = 0; i < m; i++) {
    T *__restrict ci = c + i * ldc;
    for (int p = 0; p < k; p++) {
      const T aip = kSubtract ? -a[i * lda + p] : a[i * lda + p];
      const T *__restrict bp = b + p * ldb;
      for (int j = 0; j < n; j++) ci[j] = MulAdd(ci[j], aip, bp[j]);
    }
  }
}

template <class T>
[[gnu::always_inline]] inline void Plain(GemmMode mode, int m, int n, int k, const T *a, long lda,
                                         const T *b, long ldb, T *c, long ldc) {
  if (mode == GemmMode::kSet) {
    if (ldc == n)
      std::fill_n(c, static_cast<long>(m) * n, T(0));
    else
      for (int i = 0; i < m; i++) std::fill_n(c + i * ldc, n, T(0));
  }
  if (mode == GemmMode::kSub)
    PlainUpdate<T, true>(m, n, k, a, lda, b, ldb, c, ldc);
  else
    PlainUpdate<T, false>(m, n, k, a, lda, b, ldb, c, ldc);
}

// Below these the packing costs more than it saves (measured in
// bench/linalg.cc): few multiply-adds, or a C too thin for a tile.
bool Small(long long m, long long n, long long k) { return m * n * k <= 2048 || m < 4 || n < 4; }
// Below this even the call to a vector copy of the loop is not worth it.
bool Tiny(long long m, long long n, long long k) { return m * n * k <= 128; }

}  // namespace

// ---- entries ---------------------------------------------------------------------

// The plain loop is compiled twice, for the baseline and for x86-64-v3 (AVX2
// and FMA); the loader picks the copy this processor runs.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__)
#define VELK_PLAIN_CLONES __attribute__((target_clones("arch=x86-64-v3", "default")))
#else
#define VELK_PLAIN_CLONES
#endif

VELK_PLAIN_CLONES void GemmPlain(GemmMode mode, int m, int n, int k, const double *a, long lda,
                                 const double *b, long ldb, double *c, long ldc) {
  Plain(mode, m, n, k, a, lda, b, ldb, c, ldc);
}
VELK_PLAIN_CLONES void GemmPlain(GemmMode mode, int m, int n, int k, const Complexd *a, long lda,
                                 const Complexd *b, long ldb, Complexd *c, long ldc) {
  Plain(mode, m, n, k, a, lda, b, ldb, c, ldc);
}

void GemmBlocked(GemmMode mode, int m, int n, int k, const double *a, long lda, const double *b,
                 long ldb, double *c, long ldc) {
  Blocked(mode, m, n, k, a, lda, RealRows{b, ldb}, c, ldc);
}
void GemmBlocked(GemmMode mode, int m, int n, int k, const Complexd *a, long lda, const Complexd *b,
                 long ldb, Complexd *c, long ldc) {
  Blocked(mode, m, 2 * n, 2 * k, reinterpret_cast<const double *>(a), 2 * lda,
          ComplexRows{reinterpret_cast<const double *>(b), 2 * ldb}, reinterpret_cast<double *>(c),
          2 * ldc);
}

// The entries run tiny products inline, as scalar loops (short trip counts
// gain nothing from vectors and lose the set-up).
#if defined(__clang__)
#define VELK_SCALAR
#else
#define VELK_SCALAR __attribute__((optimize("no-tree-vectorize")))
#endif

VELK_SCALAR void Gemm(GemmMode mode, int m, int n, int k, const double *a, long lda,
                      const double *b, long ldb, double *c, long ldc) {
  if (Tiny(m, n, k))
    Plain(mode, m, n, k, a, lda, b, ldb, c, ldc);
  else if (Small(m, n, k))
    GemmPlain(mode, m, n, k, a, lda, b, ldb, c, ldc);
  else
    GemmBlocked(mode, m, n, k, a, lda, b, ldb, c, ldc);
}
VELK_SCALAR void Gemm(GemmMode mode, int m, int n, int k, const Complexd *a, long lda,
                      const Complexd *b, long ldb, Complexd *c, long ldc) {
  // A complex multiply-add is four real ones.
  if (Tiny(m, 2LL * n, 2LL * k))
    Plain(mode, m, n, k, a, lda, b, ldb, c, ldc);
  else if (Small(m, 2LL * n, 2LL * k))
    GemmPlain(mode, m, n, k, a, lda, b, ldb, c, ldc);
  else
    GemmBlocked(mode, m, n, k, a, lda, b, ldb, c, ldc);
}

bool GemmPathRuns(GemmPath path) { return static_cast<int>(path) <= static_cast<int>(Widest()); }
GemmPath GemmCurrentPath() { return Current(); }
GemmPath GemmSelectPath(GemmPath path) {
  GemmPath old = Current();
  Current() = path;
  return old;
}
const char *GemmPathName(GemmPath path) { return kPaths[static_cast<int>(path)].name; }

}  // namespace velk_linalg
