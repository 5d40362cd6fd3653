// The blocked product against the plain loop, on every vector path this
// processor runs, on shapes that meet the tile and block edges.
#include "linalg/gemm.h"

#include <gtest/gtest.h>

#include "tests/linalg/dense.h"

using velk_linalg::GemmMode;
using velk_linalg::GemmPath;

namespace {

// Runs each runnable path in turn, restoring the chosen one after.
template <class Body>
void OnEveryPath(Body body) {
  const GemmPath chosen = velk_linalg::GemmCurrentPath();
  for (GemmPath p : {GemmPath::kPortable, GemmPath::kAvx2, GemmPath::kAvx512}) {
    if (!velk_linalg::GemmPathRuns(p)) continue;
    velk_linalg::GemmSelectPath(p);
    SCOPED_TRACE(velk_linalg::GemmPathName(p));
    body();
  }
  velk_linalg::GemmSelectPath(chosen);
}

// C (m x n) inside a wider array, A and B likewise, so the leading dimensions
// differ from the widths; every mode; blocked against plain.
template <class T>
void Agree(int m, int n, int k, unsigned seed) {
  SCOPED_TRACE(testing::Message() << m << " x " << k << " times " << k << " x " << n);
  const int pad = 3;
  Dense<T> a = Random<T>(m, k + pad, seed), b = Random<T>(k, n + pad, seed + 1);
  Dense<T> c0 = Random<T>(m, n + pad, seed + 2);
  for (GemmMode mode : {GemmMode::kSet, GemmMode::kAdd, GemmMode::kSub}) {
    Dense<T> plain = c0, blocked = c0;
    velk_linalg::GemmPlain(mode, m, n, k, a.data(), a.n, b.data(), b.n, plain.data(), plain.n);
    velk_linalg::GemmBlocked(mode, m, n, k, a.data(), a.n, b.data(), b.n, blocked.data(),
                             blocked.n);
    double worst = 0;
    for (int i = 0; i < m; i++)
      for (int j = 0; j < n + pad; j++) {
        if (j >= n) {
          // Outside C: untouched.
          ASSERT_EQ(blocked(i, j), c0(i, j));
          continue;
        }
        worst = std::max(worst, std::abs(blocked(i, j) - plain(i, j)));
      }
    // Each element is a sum of k products of magnitude below 2.
    EXPECT_LE(worst, 8.0 * (k + 1) * kEps) << "mode " << static_cast<int>(mode);
  }
}

}  // namespace

TEST(Gemm, BlockedAgreesWithThePlainLoopOnEdgeShapes) {
  // Thin and prime shapes, and sizes either side of the tile heights and
  // widths (4, 6, 8, 12, 16), the depth slices (192, 256) and the A blocks
  // (64, 96, 144).
  const int shapes[][3] = {{1, 37, 5},    {37, 1, 5},  {1, 1, 1},     {5, 7, 0},     {7, 13, 31},
                           {13, 17, 11},  {97, 89, 3}, {11, 17, 193}, {25, 33, 255}, {23, 31, 257},
                           {145, 17, 19}, {97, 40, 9}, {63, 65, 200}, {13, 2049, 2}};
  unsigned seed = 1;
  OnEveryPath([&] {
    for (const auto &s : shapes) {
      Agree<double>(s[0], s[1], s[2], seed++);
      Agree<Cx>(s[0], s[1], s[2], seed++);
    }
  });
}

TEST(Gemm, TheWidestPathThisMachineRunsIsChosen) {
  const GemmPath chosen = velk_linalg::GemmCurrentPath();
  EXPECT_TRUE(velk_linalg::GemmPathRuns(chosen));
  EXPECT_TRUE(velk_linalg::GemmPathRuns(GemmPath::kPortable));
  if (velk_linalg::GemmPathRuns(GemmPath::kAvx512)) {
    EXPECT_EQ(chosen, GemmPath::kAvx512);
  }
  EXPECT_EQ(velk_linalg::GemmSelectPath(GemmPath::kPortable), chosen);
  EXPECT_EQ(velk_linalg::GemmSelectPath(chosen), GemmPath::kPortable);
}

TEST(Gemm, EntryTakesEitherRoadWithTheSameResult) {
  // A complex product is an exact-looking one: integers in, integers out.
  for (int n : {3, 20, 70}) {
    Dense<Cx> a(n, n), b(n, n), c(n, n), want(n, n);
    for (int i = 0; i < n; i++)
      for (int j = 0; j < n; j++) {
        a(i, j) = Cx(i - j, (i * j) % 5);
        b(i, j) = Cx((i + 2 * j) % 7, -1);
      }
    want = a * b;
    velk_linalg::Gemm(GemmMode::kSet, n, n, n, a.data(), n, b.data(), n, c.data(), n);
    EXPECT_EQ(c.a, want.a) << n;
  }
}
