// Polynomials: the text forms and line breaking, simplification, arithmetic
// with its variable rules, powers, degree changes, rounding, evaluation, the
// fatal reports, and that intermediate results go back to the pool.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "core/alloc.h"
#include "core/registry.h"
#include "scalar/polynomial.h"
#include "support/exact.h"
#include "support/poly.h"

namespace {

std::string Text(Polynomial *p, bool star = false) {
  char *t = PolyToString(p, nullptr, star, p->variable);
  std::string s = t;
  efree(t);
  return s;
}

std::string Printed(Polynomial *p) {
  testing::internal::CaptureStdout();
  PolyPrint(p);
  return testing::internal::GetCapturedStdout();
}

class PolyTest : public testing::Test {
 protected:
  void SetUp() override { PolyInit(); }
  void TearDown() override {
    PolySweep();
    CompSweep();
    MatSweep();
    PolyRegistryCheck();
  }
};

TEST_F(PolyTest, TextFormsReadFromTheHighestPowerDown) {
  EXPECT_EQ(Text(P({1, -1, 0, 2})), "2 s^3 - s + 1");
  EXPECT_EQ(Text(P({-3})), "- 3");
  EXPECT_EQ(Text(P({0, -2})), "- 2s");  // no blank in the negative linear term
  EXPECT_EQ(Text(P({0, -2}), true), "- 2*s");
  EXPECT_EQ(Text(P({-1, 0, 1})), "s^2 - 1");
  EXPECT_EQ(Text(P({0, 0, -1})), "- s^2");
  EXPECT_EQ(Text(P({0, 3, -4, 1})), "s^3 - 4 s^2 + 3 s");
  EXPECT_EQ(Text(P({0, 3, -4, 1}), true), "s^3 - 4*s^2 + 3*s");
  EXPECT_EQ(Text(P({0})), "0");
  EXPECT_EQ(Text(P({0, 0, 0})), "0");  // left unsimplified
  EXPECT_EQ(Text(P({5, 0, 0})), "5");
  EXPECT_EQ(Text(P({NAN, INFINITY})), "Inf s + NaN");
  EXPECT_EQ(Text(P({1, 1}, "z")), "z + 1");
  // The star's special case: the plain variable.
  EXPECT_EQ(Text(P({0, 1}, "x"), true), "Polynomial(\"x\")");
  EXPECT_EQ(Text(P({0, 1}), false), "s");
  EXPECT_EQ(Text(P({1, 1}), true), "s + 1");
  // Complex coefficients: always a plus sign, no special ones.
  EXPECT_EQ(Text(CP({{1, -2}, {0, 0}, {1, 0}})), "(1,0) s^2 + (1,-2)");
  EXPECT_EQ(Text(CP({{0, 0}, {-1, 0}}), true), "(-1,0)*s");
  EXPECT_EQ(Text(CP({{0, 0}, {0, 0}})), "0");
}

TEST_F(PolyTest, LinesBreakAtSignsThatAreNotPartOfANumber) {
  auto broken = [](const char *text, int indent, int width) {
    char *b = PolyBreakLines(text, indent, width);
    std::string s = b;
    efree(b);
    return s;
  };
  // A piece ends with its sign; the blank after it starts the next piece.
  EXPECT_EQ(broken("s^2 + 2 s + 1", 2, 10), "s^2 +\n   2 s + 1");
  // Signs after e, E, ( and , belong to numbers and pairs.
  EXPECT_EQ(broken("1e+05 s + 1E-05", 0, 10), "1e+05 s +\n 1E-05");
  EXPECT_EQ(broken("(-1,-2) s + 3", 0, 13), "(-1,-2) s + 3");
  // A first piece longer than the room starts with the break.
  EXPECT_EQ(broken("123456 s + 1", 4, 8), "\n    123456 s +\n     1");
  // The listing: indent is the name's length plus 3, width 79.
  Polynomial *p = PolySetName(PolyOne(30, nullptr), "p");
  std::string out = Printed(p);
  EXPECT_EQ(out.substr(0, 4), "p = ");
  size_t nl = out.find('\n');
  ASSERT_NE(nl, out.size() - 1);
  EXPECT_LE(nl, 79u);
  EXPECT_EQ(out.substr(nl + 1, 4), "    ");
  EXPECT_EQ(Printed(P({0, -2})), "ans = - 2s\n");
}

TEST_F(PolyTest, SimplificationDropsOnlyNegligibleLeadingCoefficients) {
  EXPECT_EQ(PolySimplify(P({1, 2, eps}), eps)->degree, 1);
  EXPECT_EQ(PolySimplify(P({1, 2, 2 * eps}), eps)->degree, 2);
  EXPECT_EQ(PolySimplify(P({1, 0, NAN, 0}), eps)->degree, 2);
  // The constant is kept as it is.
  EXPECT_EQ(Coefs(PolySimplify(P({1e-20, 1e-20}), 1e-10)), (std::vector<double>{1e-20}));
  Polynomial *c = PolySimplify(CP({{1, 0}, {0, 1e-20}}), 1e-10);
  EXPECT_EQ(c->degree, 0);
  EXPECT_EQ(c->coef->cols, 1);  // the coefficient matrix matches the new degree
  // Sums are simplified: the leading terms cancel.
  EXPECT_EQ(Coefs(PolyAdd(P({1, 2, 3}), P({0, 1, -3}))), (std::vector<double>{1, 3}));
}

TEST_F(PolyTest, ArithmeticFollowsTheVariableRules) {
  Polynomial *p = P({1, 1}), *q = P({-1, 0, 2}, "z");
  EXPECT_EQ(Text(PolyAdd(p, q)), "2 z^2 + z");  // none and z give z
  EXPECT_EQ(Coefs(PolySub(p, q)), (std::vector<double>{2, 1, -2}));
  EXPECT_EQ(Text(PolyMul(p, q)), "2 z^3 + 2 z^2 - z - 1");
  EXPECT_EQ(Coefs(PolyAdd_double(p, 2)), (std::vector<double>{3, 1}));
  EXPECT_EQ(Coefs(PolySub_double(p, 1)), (std::vector<double>{0, 1}));
  EXPECT_EQ(Text(PolyAdd_Complex(p, CompDef("", 0, 1))), "(1,0) s + (1,1)");
  EXPECT_EQ(Text(PolyMul(P({0, 1}), CP({{1, 1}}))), "(1,1) s");  // real times complex
  // Scaling short-cuts.
  EXPECT_EQ(PolyScale(q, 0)->variable, nullptr);
  EXPECT_EQ(Coefs(PolyScale(q, -1)), (std::vector<double>{1, 0, -2}));
  EXPECT_EQ(Coefs(PolyScale(q, 0.5)), (std::vector<double>{-0.5, 0, 1}));
  EXPECT_EQ(PolyScaleC(q, CompDef("", 0, 0))->kind, 0);
  EXPECT_EQ(PolyScaleC(q, CompDef("", 0, 2))->kind, 1);
  EXPECT_EQ(Coefs(PolyNegate(p)), (std::vector<double>{-1, -1}));
  Polynomial *ri = PolyRealAndImag(P({1, 2}), P({3}));
  EXPECT_EQ(Text(ri), "(2,0) s + (1,3)");
  EXPECT_EQ(Coefs(PolyImagPart(ri)), (std::vector<double>{3, 0}));
  EXPECT_EQ(Coefs(PolyRealPart(PolyConj(ri))), (std::vector<double>{1, 2}));
  EXPECT_EQ(Coefs(PolyImagPart(PolyConj(ri))), (std::vector<double>{-3, 0}));
}

TEST_F(PolyTest, PowersShiftsDerivativesAndIntegrals) {
  Polynomial *p = P({1, 1}, "x");
  EXPECT_EQ(Coefs(PolyPow(p, 5)), (std::vector<double>{1, 5, 10, 10, 5, 1}));
  EXPECT_EQ(Text(PolyPow(p, 0), true), "1");
  EXPECT_STREQ(PolyPow(p, 0)->variable, "x");
  Polynomial *q = P({1, 2, 3, 4});
  EXPECT_EQ(Coefs(PolyCut(q, 1, 2)), (std::vector<double>{0, 2, 3}));
  EXPECT_EQ(Coefs(PolyLowerShift(q, 2)), (std::vector<double>{3, 4}));
  EXPECT_EQ(Coefs(PolyLowerShift(q, 9)), (std::vector<double>{0}));
  EXPECT_EQ(Coefs(PolyHigherShift(q, 2)), (std::vector<double>{0, 0, 1, 2, 3, 4}));
  EXPECT_EQ(Coefs(PolyDerivative(q, 2)), (std::vector<double>{6, 24}));
  EXPECT_EQ(Coefs(PolyDerivative(q, 4)), (std::vector<double>{0}));
  EXPECT_EQ(Coefs(PolyIntegral(P({6, 24}), 2)), (std::vector<double>{0, 0, 3, 4}));
  EXPECT_EQ(Coefs(PolyExpand(p, 3)), (std::vector<double>{1, 1, 0, 0}));
  // Setting beyond the degree enlarges; a zero leading store simplifies.
  Polynomial *v = P({1});
  PolySetValue(v, 3, 2);
  EXPECT_EQ(Coefs(v), (std::vector<double>{1, 0, 0, 2}));
  PolySetValue(v, 3, 0);
  EXPECT_EQ(Coefs(v), (std::vector<double>{1}));
  EXPECT_EQ(*PolyGetPtr(q, 3), 4);
  // Coefficients k..l of one into i..j of another; a row matrix as coefficients.
  Polynomial *dst = P({0, 0, 0, 0});
  PolyPartCopy(dst, 1, 2, q, 2, 3);
  EXPECT_EQ(Coefs(dst), (std::vector<double>{0, 3, 4, 0}));
  Polynomial *from_row = PolyCoefDef(PolyCoef(q), "x");
  EXPECT_EQ(Coefs(from_row), (std::vector<double>{1, 2, 3, 4}));
  EXPECT_STREQ(from_row->variable, "x");
}

TEST_F(PolyTest, RoundingAndEvaluation) {
  Polynomial *p = P({1.5, -1.5, 0.2});
  EXPECT_EQ(Coefs(PolyCeil(p)), (std::vector<double>{2, -1, 1}));
  EXPECT_EQ(Coefs(PolyFloor(p)), (std::vector<double>{1, -2}));
  EXPECT_EQ(Coefs(PolyFixToZero(p)), (std::vector<double>{1, -1}));
  EXPECT_EQ(Coefs(PolyRint(p)), (std::vector<double>{2, -2}));
  EXPECT_EQ(Coefs(PolyRoundToZero(P({1e-17, 1, 1e-17}), -1)), (std::vector<double>{0, 1}));
  EXPECT_EQ(Coefs(PolyRoundToZero(P({1e-17, 1, 1e-17}), 0)), (std::vector<double>{1e-17, 1, 1e-17}));
  EXPECT_EQ(Coefs(PolyRoundToZero(P({1, 1, 0}), 0)), (std::vector<double>{1, 1}));
  Polynomial *q = P({1, -3, 2});  // (2s - 1)(s - 1)
  EXPECT_EQ(PolyEval(q, 2), 3);
  Complex *z = PolyEvalC(q, CompDef("", 0, 1)), *w = C_PolyEval(CP({{0, 1}, {1, 0}}), 2);
  EXPECT_EQ(std::pair(z->re, z->im), std::pair(-1.0, -3.0));  // 2 i^2 - 3i + 1
  EXPECT_EQ(std::pair(w->re, w->im), std::pair(2.0, 1.0));
  Polynomial *composed = PolyEvalP(q, P({1, 1}, "t"));  // 2(t+1)^2 - 3(t+1) + 1
  EXPECT_EQ(Coefs(composed), (std::vector<double>{0, 1, 2}));
  EXPECT_STREQ(composed->variable, "t");
}

TEST_F(PolyTest, IntermediateResultsGoBackToThePool) {
  Polynomial *p = PolySetStatus(P({1, 1}), kKept);
  long before = PolyRegistryCheck();
  Polynomial *r = PolyPow(p, 13);
  EXPECT_EQ(PolyRegistryCheck(), before + 1);  // only the result is left
  PolyEvalP(r, p);
  EXPECT_EQ(PolyRegistryCheck(), before + 2);
  PolySweep();
  EXPECT_EQ(PolyRegistryCheck(), before);
  PolyUndef(p);
}

using PolyDeathTest = PolyTest;

TEST_F(PolyDeathTest, ReportsNameTheExpression) {
  Polynomial *p = PolySetName(P({1, 1, 1, 1}, "s"), "p");
  Polynomial *z = PolySetName(P({1, 1}, "z"), "q");
  Polynomial *u = PolyDef("u", -1, nullptr);
  auto expect = [](auto run, const std::string &text) {
    SCOPED_TRACE(text);
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), Exact("\n" + text + "\n"));
  };
  expect([&] { PolyAdd(p, z); }, "Variables are distinct for 'p(s^3)' and 'q(z^1)' in PolyAdd().");
  expect([&] { PolyMul(z, p); }, "Variables are distinct for 'q(z^1)' and 'p(s^3)' in PolyMul().");
  expect([&] { PolyCut(p, 3, 1); }, "p(s^3)(1:3) : Size Error in PolyCut().");
  expect([&] { PolyPow(p, -1); }, "p(s^3)^-1 : Index must be semipositive in PolyPow().");
  expect([&] { PolyAdd(u, p); }, "Undefined polynomial for 'u(s^-1)' in PolyAdd().");
  expect([&] { PolyScaleC(p, nullptr); }, "p(s^3) * (NULL,NULL) : scale is NULL complex in PolyScaleC().");
  expect([&] { PolyEval(CP({{1, 0}}), 1); },
         "eval((s^0), 1) : Argument must be a real polynomial in PolyEval().");
  expect([&] { C_PolyEval(p, 1); }, "eval(p(s^3), 1) : Arg must be complex polynomial in PolyEval().");
  expect([&] { PolySetValue(p, -1, 2); }, "p(s^3)(-1) = 2 : Index is not appropriate in PolySetValue().");
  expect([&] { PolyGetPtr(p, 4); }, "p(s^3)(4) : Not a suitable index in PolyGetPtr().");
  expect([&] { PolyCoefDef(MatDef("M", 2, 2), nullptr); },
         "coef(M(2x2)) : Not a row vector in PolyCoefDef().");
  expect([&] { PolyPartCopy(p, 0, 1, P({1, 2, 3}), 0, 2); },
         "p(s^3)(0:1) = (s^2)(0:2) : Size Error in PolyPartCopy().");
  expect([&] { PolyRealAndImag(CP({{1, 0}}), p); },
         "((s^0), p(s^3)) : Not a real Polynomial in PolyRealAndImag().");
  PolyUndef(u);
}

}  // namespace
