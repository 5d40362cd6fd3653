// Roots through the companion matrix: stripping and normalising the leading
// coefficient (real and complex), constants, the zero polynomial, zeros and
// poles without cancellation, and a degree-50 polynomial built from its roots.
#include <cmath>

#include "matrix/roots.h"
#include "support/poly.h"
#include "tests/matrix/scenario.h"

namespace {

std::vector<Cx> Values(Matrix *m) {
  auto *v = static_cast<Cx *>(m->elements);
  return std::vector<Cx>(v, v + MatCount(m));
}

}  // namespace

TEST_F(Scenario, RootsOfTheCompanionMatrix) {
  EXPECT_TRUE(Holds(PolyRoots(P({-2, 0, 2})), kComplex, 2, 1, {1, -1}, 1e-15));
  EXPECT_TRUE(Holds(PolyRoots(P({-3, 1, 0})), kComplex, 1, 1, {3}));  // the zero leading term goes
  EXPECT_TRUE(Holds(PolyRoots(P({5})), kComplex, 0, 1, {}));           // a constant has none
  // (s - i)(s + 2) times 2i: the complex leading coefficient is divided out.
  Polynomial *c = CP({{4, 0}, {2, 4}, {0, 2}});
  std::vector<Cx> r = Values(PolyRoots(c));
  ASSERT_EQ(r.size(), 2u);
  EXPECT_LT(std::abs(r[0] - Cx(0, 1)), 1e-14);
  EXPECT_LT(std::abs(r[1] - Cx(-2, 0)), 1e-14);
  // A real leading coefficient of a complex polynomial scales by its inverse.
  EXPECT_TRUE(Holds(PolyRoots(CP({{-4, 0}, {0, 0}, {4, 0}})), kComplex, 2, 1, {1, -1}, 1e-15));
  // Nothing cancels: (s + 1) / (s + 1) has a zero and a pole at -1.
  Rational *same = RatNumeDenoDef(P({1, 1}), P({1, 1}));
  EXPECT_TRUE(Holds(RatZeros(same), kComplex, 1, 1, {-1}));
  EXPECT_TRUE(Holds(RatPoles(same), kComplex, 1, 1, {-1}));
  RatSweep();
  PolySweep();
}

TEST_F(Scenario, RootsOfAPolynomialBuiltFromThem) {
  // Conjugate pairs 0.9 e^(+-i t_k) on a circle, multiplied out in an order
  // that keeps each partial product's roots spread (k = 0, 16, 8, 24, ...:
  // bits reversed), so its coefficients stay small and exact enough.
  const int pairs = 25;
  std::vector<int> order;
  for (int j = 0; j < 32; j++) {
    int k = 0;
    for (int b = 0; b < 5; b++) k |= ((j >> b) & 1) << (4 - b);
    if (k < pairs) order.push_back(k);
  }
  std::vector<Cx> known;
  Polynomial *p = PolySetStatus(P({1}), 2);
  for (int k : order) {
    double t = (k + 0.5) * M_PI / pairs;
    Cx z = std::polar(0.9, t);
    known.push_back(z);
    known.push_back(std::conj(z));
    Polynomial *f = P({std::norm(z), -2 * z.real(), 1});
    Polynomial *next = PolySetStatus(PolyMul(p, f), 2);
    PolyUndef(p);
    PolyUndef(f);
    p = next;
  }
  std::vector<Cx> got = Values(PolyRoots(p));
  ASSERT_EQ(got.size(), known.size());
  double worst = 0;
  for (Cx z : known) {
    double nearest = INFINITY;
    for (Cx g : got) nearest = std::min(nearest, std::abs(g - z));
    worst = std::max(worst, nearest);
  }
  EXPECT_LT(worst, 1e-12);
  PolyUndef(p);
}

using RootsDeathTest = Scenario;

TEST_F(RootsDeathTest, TheZeroPolynomialHasNoRoots) {
  EXPECT_EXIT(PolyRoots(P({0, 0, 0})), testing::ExitedWithCode(0),
              Exact("\nroots((s^2)) : Arg is a zero polynomial in PolyRoots().\n"));
  EXPECT_EXIT(PolyRoots(PolyDef("u", -1, nullptr)), testing::ExitedWithCode(0),
              Exact("\nUndefined polynomial for 'u(s^-1)' in PolyRoots().\n"));
  PolySweep();
}
