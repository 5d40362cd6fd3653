// Rationals: pairing and its variable rule, fraction arithmetic that never
// cancels, parts, shifts, derivative, powers, evaluation, the printed and
// saved forms, the reports, and that working polynomials go back.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "core/alloc.h"
#include "core/registry.h"
#include "scalar/rational.h"
#include "support/exact.h"
#include "support/poly.h"

namespace {

Rational *R(std::vector<double> n, std::vector<double> d, const char *variable = nullptr) {
  return RatNumeDenoDef(P(n, variable), P(d, variable));
}

using V = std::vector<double>;

// Numerator and denominator coefficients.
std::pair<V, V> Frac(Rational *r) { return {Coefs(r->nume), Coefs(r->deno)}; }

class RatTest : public testing::Test {
 protected:
  void SetUp() override { RatInit(); }
  void TearDown() override {
    RatSweep();
    PolySweep();
    CompSweep();
    RatRegistryCheck();
    PolyRegistryCheck();
  }
};

TEST_F(RatTest, NothingCancels) {
  EXPECT_EQ(Coefs(R({1, 1}, {1, 1})->deno), (V{1, 1}));
  EXPECT_EQ(Frac(RatAdd(R({1}, {0, 1}), R({1}, {0, 1}))), std::pair(V{0, 2}, V{0, 0, 1}));  // 1/s + 1/s
  Rational *prod = RatMul(R({1, 1}, {1, 0, 1}), R({1, 0, 1}, {1, 1}));
  EXPECT_EQ(std::pair(prod->nume->degree, prod->deno->degree), std::pair(3, 3));
  // Zero numerators take the short-cuts: 0 + b is b as it was.
  Rational *b = R({3}, {1, 2});
  EXPECT_EQ(Coefs(RatAdd(RatConst(0), b)->deno), (V{1, 2}));
  EXPECT_EQ(Coefs(RatSub(RatConst(0), b)->nume), (V{-3}));
  EXPECT_EQ(Coefs(RatMul(RatConst(0), b)->deno), (V{1}));
  EXPECT_EQ(Frac(RatSub(b, b)), std::pair(V{0}, V{1, 4, 4}));  // 3(1+2s) - 3(1+2s) over (1+2s)^2
}

TEST_F(RatTest, PairingChoosesTheVariable) {
  Rational *mixed = RatNumeDenoDef(P({1, 1}, "s"), P({1, 1}, "z"));
  EXPECT_TRUE(mixed->nume->variable == nullptr && mixed->deno->variable == nullptr);
  Rational *from_deno = RatNumeDenoDef(P({1}), P({0, 1}, "z"));
  EXPECT_STREQ(from_deno->nume->variable, "z");
  // A real and a complex polynomial make a complex rational.
  Rational *c = RatNumeDenoDef(P({1}), PolyScaleC(P({0, 1}), CompDef("", 0, 1)));
  EXPECT_EQ(std::pair(c->kind, c->nume->kind), std::pair(1, 1));
  // Setting parts keeps the kinds and records the degree.
  Rational *r = RatConst(2);
  RatSetDeno(r, P({1, 0, 1}));
  EXPECT_EQ(r->deno_degree, 2);
  RatSetNume(c, P({5}));
  EXPECT_EQ(c->nume->kind, 1);
}

TEST_F(RatTest, ArithmeticWithScalarsPartsAndPowers) {
  Rational *r = R({1}, {0, 1});  // 1/s
  EXPECT_EQ(Coefs(RatAdd_double(r, 2)->nume), (V{1, 2}));
  EXPECT_EQ(Coefs(RatSub_Polynomial(r, P({0, 1}))->nume), (V{1, 0, -1}));  // 1/s - s
  EXPECT_EQ(RatAdd_Complex(r, CompDef("", 0, 1))->kind, 1);
  EXPECT_EQ(Coefs(RatScaleP(r, P({0, 0, 3}))->nume), (V{0, 0, 3}));
  EXPECT_EQ(Coefs(RatInv(r)->nume), (V{0, 1}));
  EXPECT_EQ(Frac(RatPow(r, -2)), std::pair(V{0, 0, 1}, V{1}));
  EXPECT_EQ(Frac(RatPow(r, 0)), std::pair(V{1}, V{1}));
  EXPECT_EQ(Coefs(RatPow(R({1, 1}, {2}), 3)->nume), (V{1, 3, 3, 1}));
  EXPECT_EQ(Coefs(RatDiv(r, r)->nume), (V{0, 1}));
  // 1 / (s + i): real part s / (s^2 + 1), imaginary part -1 / (s^2 + 1).
  Rational *z = RatNumeDenoDef(P({1}), PolyAdd_Complex(P({0, 1}), CompDef("", 0, 1)));
  EXPECT_EQ(Frac(RatRealPart(z)), std::pair(V{0, 1}, V{1, 0, 1}));
  EXPECT_EQ(Coefs(RatImagPart(z)->nume), (V{-1}));
  Rational *back = RatRealAndImag(RatRealPart(z), RatImagPart(z));
  EXPECT_EQ(back->kind, 1);
  EXPECT_EQ(static_cast<ComplexValue *>(back->nume->coef->elements)[0].im, -1);
}

TEST_F(RatTest, ShiftsDerivativeAndRounding) {
  EXPECT_EQ(Frac(RatLowerShift(R({1, 1}, {1}), 1)), std::pair(V{1}, V{1}));  // the zero denominator became 1
  EXPECT_EQ(Coefs(RatHigherShift(R({1}, {1}), 2)->deno), (V{0, 0, 1}));
  EXPECT_EQ(Frac(RatDerivative(R({1}, {0, 1}), 1)), std::pair(V{-1}, V{0, 0, 1}));  // -1 / s^2
  EXPECT_EQ(RatEval(RatDerivative(R({1}, {0, 1}), 2), 2), 2.0 / 8);  // 2 s^2 / s^6 (nothing cancels)
  EXPECT_EQ(Coefs(RatDerivative(R({1, 2}, {3}), 0)->nume), (V{1, 2}));
  EXPECT_EQ(Coefs(RatRint(R({1.4, 2.6}, {0.6}))->nume), (V{1, 3}));
  Rational *s = RatSimplify(R({1, 1e-20}, {2, 0}), 1e-10);
  EXPECT_EQ(std::pair(s->nume->degree, s->deno->degree), std::pair(0, 0));
}

TEST_F(RatTest, Evaluation) {
  Rational *r = R({1}, {0, 1});
  EXPECT_TRUE(std::isinf(RatEval(r, 0)));  // no report
  EXPECT_EQ(RatEval(R({1, 1}, {2}), 3), 2);
  Complex *z = RatEvalC(r, CompDef("", 0, 1));
  EXPECT_EQ(std::pair(z->re, z->im), std::pair(0.0, -1.0));  // 1/i
  Rational *composed = RatEvalP(R({0, 1}, {1, 1}), P({1, 1}));  // (s+1)/(s+2)
  EXPECT_EQ(Coefs(composed->deno), (V{2, 1}));
  Rational *rr = RatEvalR(R({0, 1}, {1}), R({1}, {0, 1}));  // s at 1/s
  EXPECT_EQ(RatEval(rr, 4), 0.25);
  Rational *pr = PolyEvalR(P({1, 0, 1}), R({1}, {0, 1}));  // 1 + 1/s^2
  EXPECT_DOUBLE_EQ(RatEval(pr, 2), 1.25);
}

std::string Captured(Rational *r, bool print) {
  testing::internal::CaptureStdout();
  print ? RatPrint(r) : RatSaveText(stdout, r, 1);
  return testing::internal::GetCapturedStdout();
}

TEST_F(RatTest, PrintedAndSavedForms) {
  Rational *r = RatSetName(R({1}, {1, 0, 1}), "g");
  EXPECT_EQ(Captured(r, true),
            "        1\n"
            "g = ---------\n"
            "     s^2 + 1\n");
  EXPECT_EQ(Captured(RatNumeDenoDef(P({0, 1}, "s"), P({1}, "z")), true),
            "\n"
            "       s\n"
            "ans = ---\n"
            "       1\n");
  EXPECT_EQ(Captured(r, false), "g = (1)/\n    (s^2 + 1);\n\n");
  EXPECT_EQ(Captured(R({0, 1}, {1}, "x"), false), "(Polynomial(\"x\"))/\n(1);\n\n");
}

TEST_F(RatTest, WorkingPolynomialsGoBack) {
  Rational *r = RatSetStatus(R({1, 1}, {1, 2, 1}), kKept);
  PolySweep();
  RatSweep();
  long polys = PolyRegistryCheck(), rats = RatRegistryCheck();
  RatPow(r, 5);
  RatDerivative(r, 3);
  RatRealPart(r);
  EXPECT_EQ(PolyRegistryCheck(), polys);
  EXPECT_EQ(RatRegistryCheck(), rats + 3);
  RatUndef(r);
}

using RatDeathTest = RatTest;

TEST_F(RatDeathTest, Reports) {
  Rational *r = RatSetName(R({1}, {0, 1}), "r");
  Rational *c = RatSetName(RatRealToComp(r), "c");
  auto expect = [](auto run, const std::string &text) {
    SCOPED_TRACE(text);
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), Exact("\n" + text + "\n"));
  };
  expect([&] { RatEval(c, 1); }, "eval(c(s^0/s^1), 1) : Not a real ratnomial in RatEval().");
  expect([&] { C_RatEval(r, 1); }, "eval(r(s^0/s^1), 1) : Not a complex ratnomial in C_RatEval().");
  expect([&] { RatScaleC(r, nullptr); }, "r(s^0/s^1) * (NULL,NULL) : scale is NULL complex in RatScaleC().");
  expect([&] { RatRealAndImag(r, c); },
         "(r(s^0/s^1), c(s^0/s^1)) : Not a real Rational in RatRealAndImag().");
  expect([&] { RatAdd(r, RatDef("u", -1, -1)); }, "Undefined rational for 'u(s^-1/s^-1)' in RatAdd().");
  expect([&] { RatSetNume(r, PolyRealToComp(P({1}))); }, "Class Error for 'r(s^0/s^1)' in RatSetNume().");
  EXPECT_EXIT(RatEvalC(r, CompDef("", 0, 0)), testing::ExitedWithCode(0), "Can't divide by zero");
  EXPECT_EXIT(RatAdd(R({1}, {1}, "s"), R({1}, {1}, "z")), testing::ExitedWithCode(0),
              "Variables are distinct");
}

}  // namespace
