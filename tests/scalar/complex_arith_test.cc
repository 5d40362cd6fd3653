// Complex arithmetic: the forms and their operand orders, the division
// family's zero tests, Smith's tie, the overflowing inverses, powers,
// rounding, and the value helpers' own failure texts.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <functional>
#include <string>

#include "scalar/complex.h"
#include "support/exact.h"

namespace {

bool Same(double a, double b) {
  return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
}

testing::AssertionResult Holds(const Complex *c, double re, double im) {
  if (c != nullptr && Same(c->re, re) && Same(c->im, im)) return testing::AssertionSuccess();
  if (c == nullptr) return testing::AssertionFailure() << "null result";
  return testing::AssertionFailure() << "(" << c->re << ", " << c->im << ") instead of (" << re
                                     << ", " << im << ")";
}

TEST(ComplexArithTest, EachFormComputesItsOwnOperandOrderAndSelfFormsWriteTheirOperand) {
  // a = (1, -0): the signed zero shows which part a real operand touched.
  auto a = [] { return CompDef("", 1, -0.0); };
  auto b = [] { return CompDef("", 3, 4); };
  struct Form {
    const char *name;
    std::function<Complex *(Complex *, Complex *)> f;
    double re, im;
    bool writes_first;  // a Self form returning its first Complex operand
  } forms[] = {
      {"Add", [](Complex *x, Complex *y) { return CompAdd(x, y); }, 4, 4, false},
      {"AddSelf", [](Complex *x, Complex *y) { return CompAddSelf(x, y); }, 4, 4, true},
      {"Add1", [](Complex *x, Complex *) { return CompAdd1(2, x); }, 3, -0.0, false},
      {"AddSelf1", [](Complex *x, Complex *) { return CompAddSelf1(2, x); }, 3, -0.0, true},
      {"Add2", [](Complex *x, Complex *) { return CompAdd2(x, 2); }, 3, -0.0, false},
      {"AddSelf2", [](Complex *x, Complex *) { return CompAddSelf2(x, 2); }, 3, -0.0, true},
      {"Sub", [](Complex *x, Complex *y) { return CompSub(x, y); }, -2, -4, false},
      {"SubSelf", [](Complex *x, Complex *y) { return CompSubSelf(x, y); }, -2, -4, true},
      {"Sub1", [](Complex *x, Complex *) { return CompSub1(5, x); }, 4, 0, false},
      {"SubSelf1", [](Complex *x, Complex *) { return CompSubSelf1(5, x); }, 4, 0, true},
      {"Sub2", [](Complex *x, Complex *) { return CompSub2(x, 5); }, -4, -0.0, false},
      {"SubSelf2", [](Complex *x, Complex *) { return CompSubSelf2(x, 5); }, -4, -0.0, true},
      {"Mul", [](Complex *, Complex *y) { return CompMul(y, y); }, -7, 24, false},
      {"MulSelf", [](Complex *x, Complex *y) { return CompMulSelf(x, y); }, 3, 4, true},
      {"Mul1", [](Complex *x, Complex *) { return CompMul1(-2, x); }, -2, 0, false},
      {"MulSelf2", [](Complex *x, Complex *) { return CompMulSelf2(x, -2); }, -2, 0, true},
      {"AddI", [](Complex *x, Complex *y) { return CompAddI(x, y); }, -3, 3, false},
      {"Conj", [](Complex *x, Complex *) { return CompConj(x); }, 1, 0, false},
      {"NegSelf", [](Complex *x, Complex *) { return CompNegSelf(x); }, -1, 0, true},
      {"Div", [](Complex *, Complex *y) { return CompDiv(CompDef("", 25, 0), y); }, 3, -4, false},
      {"DivSelf", [](Complex *x, Complex *y) { return CompDivSelf(x, y); }, 0.12, -0.16, true},
      {"Div2", [](Complex *, Complex *y) { return CompDiv2(y, -2); }, -1.5, -2, false},
      {"DivSelf2", [](Complex *x, Complex *) { return CompDivSelf2(x, 2); }, 0.5, -0.0, true},
      {"Inv", [](Complex *, Complex *y) { return CompInv(y); }, 0.12, -0.16, false},
      {"Unit", [](Complex *, Complex *y) { return CompUnit(y); }, 0.6, 0.8, false},
  };
  for (const Form &form : forms) {
    SCOPED_TRACE(form.name);
    Complex *x = a(), *y = b();
    Complex *r = form.f(x, y);
    EXPECT_TRUE(Holds(r, form.re, form.im));
    if (form.writes_first) {
      EXPECT_EQ(r, x);
    } else {
      EXPECT_NE(r, x);
      EXPECT_NE(r, y);
      EXPECT_EQ(r->status, 0);
    }
  }
  EXPECT_EQ(CompAbs(CompDef("", 3e300, -4e300)), 5e300);  // no overflow in the squares
  EXPECT_EQ(CompArg(CompDef("", -1, -0.0)), -M_PI);
  CompSweep();
  CompRegistryCheck();
}

TEST(ComplexArithTest, SmithTieInverseOverflowAndTinyDivisors) {
  // |re| = |im| takes the first branch (ratio re/im): for 0 / (1, -1) only
  // that branch gives the imaginary part -0.
  ComplexValue zero = {0, -0.0}, tie = {1, -1}, q;
  EXPECT_TRUE(Holds(CompDiv(CompDef("", 0, -0.0), CompDef("", 1, -1)), 0, -0.0));
  EXPECT_TRUE(Same(ComplexValueDiv(&q, &zero, &tie)->im, -0.0));
  // The inverses and CompDiv1 give zeros, Smith's quotients do not.
  const double p600 = std::ldexp(1.0, 600), m601 = std::ldexp(1.0, -601);
  Complex *big = CompDef("", p600, p600);  // re^2 + im^2 overflows
  EXPECT_TRUE(Holds(CompInv(big), 0, -0.0));
  EXPECT_TRUE(Holds(CompDiv1(1, big), 0, -0.0));
  EXPECT_TRUE(Holds(CompDiv(CompDef("", 1, 0), big), m601, -m601));
  EXPECT_TRUE(Holds(CompDivSelf1(1, CompDef("", p600, p600)), m601, -m601));
  ComplexValue one = {1, 0}, huge = {p600, p600};
  EXPECT_TRUE(Same(ComplexValueInv(&q, &huge)->re, 0));
  EXPECT_TRUE(Same(ComplexValueDiv(&q, &one, &huge)->re, m601));
  // A tiny divisor is not zero.
  EXPECT_TRUE(Holds(CompDiv(CompDef("", 1, 0), CompDef("", 1e-300, 0)), 1 / 1e-300, 0));
  EXPECT_TRUE(Holds(CompDiv2(CompDef("", 1, 1), 0x1p-1000), 0x1p1000, 0x1p1000));
  CompSweep();
}

TEST(ComplexArithTest, PowersByBinaryExponentiation) {
  Complex *z = CompDef("", 1, 2);
  auto is = [](const Complex *c, double re, double im) { return c->re == re && c->im == im; };
  EXPECT_TRUE(is(CompPow(z, 5), 41, -38));
  EXPECT_TRUE(Holds(CompPow(CompDef("", 1, -0.0), 1), 1, -0.0));  // c itself, to the bit
  EXPECT_TRUE(is(CompPow(CompDef("", 0, 0), 0), 1, 0));
  EXPECT_TRUE(is(CompPow(CompDef("", 0, 1), -4), 1, 0));
  EXPECT_TRUE(is(CompPow(CompDef("", 1, 1), 8), 16, 0));
  EXPECT_TRUE(is(CompPow(CompDef("", 1, 1), 13), -64, -64));
  EXPECT_TRUE(is(CompPow(CompDef("", -1, 0), INT_MIN), 1, 0));
  // The intermediate inverse does not outlive the call.
  long live = CompRegistryCheck();
  CompPow(z, -2);
  EXPECT_EQ(CompRegistryCheck(), live + 1);
  CompSweep();
}

TEST(ComplexArithTest, RoundingPerPart) {
  Complex *c = CompDef("", -2.5, 3.5);
  EXPECT_TRUE(Holds(CompCeil(c), -2, 4));
  EXPECT_TRUE(Holds(CompFloor(c), -3, 3));
  EXPECT_TRUE(Holds(CompRint(c), -2, 4));  // ties to even
  EXPECT_TRUE(Holds(CompFix(c), -2, 3));
  EXPECT_TRUE(Holds(CompFix(CompDef("", -0.5, 0.5)), -0.0, 0));
  // Below tol becomes 0; exactly tol is kept.
  EXPECT_TRUE(Holds(CompFixToZero(CompDef("", 1e-9, -1e-3), 1e-3), 0, -1e-3));
  EXPECT_TRUE(Holds(CompFixToZero(CompDef("", -1e-9, 2), 1e-3), 0, 2));
  CompSweep();
}

TEST(ComplexArithTest, TangentsDivideThroughTheObjectsAndSelfFormsOverwrite) {
  ComplexValue v = {0.5, -1.25}, w;
  Complex *z = CompDef("", v.re, v.im), *t = CompTan(z);
  ComplexValueTan(&w, &v);
  EXPECT_TRUE(Holds(t, w.re, w.im));
  EXPECT_EQ(CompTanSelf(z), z);
  EXPECT_TRUE(Holds(z, w.re, w.im));
  ComplexValue hv = {-1.25, 0.5};
  ComplexValueTanh(&w, &hv);
  EXPECT_TRUE(Holds(CompTanh(CompDef("", hv.re, hv.im)), w.re, w.im));
  EXPECT_TRUE(Holds(CompSqrtSelf(CompDef("", -9, 0)), 0, 3));
  CompSweep();
}

TEST(ComplexArithTest, ValueHelpers) {
  ComplexValue *v = ComplexValueDef(3, -4);
  ComplexValue copy = {-3, 4};
  EXPECT_TRUE(Holds(CompFromComplexValue(ComplexValueInf(v)), INFINITY, INFINITY));
  EXPECT_TRUE(Holds(CompFromComplexValue(ComplexValueNaN(v)), NAN, NAN));
  ComplexValueFree(v);
  ComplexValue *back = ComplexValueFromComp(nullptr, CompFromComplexValue(&copy));
  EXPECT_EQ(back->im, 4);
  ComplexValueFree(back);
  char text[64];
  EXPECT_STREQ(ComplexValueToString(&copy, text, "%.1f"), "(-3.0,4.0)");
  // The helpers print their own failure and leave the result alone.
  ComplexValue zero = {0, -0.0}, untouched = {7, 8};
  testing::internal::CaptureStderr();
  EXPECT_EQ(ComplexValueDiv(&untouched, &copy, &zero), nullptr);
  EXPECT_EQ(ComplexValueInv(&untouched, &zero), nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "ComplexValueDiv(): Can't divide by zero.\nComplexValueInv(): Can't divide by zero.\n");
  CompSweep();
}

TEST(ComplexArithDeathTest, ZeroDivisorsReportTheirExpressionFromTheirOwnName) {
  struct Case {
    std::function<void()> divide;
    const char *expression, *function;
  } cases[] = {
      {[] { CompDiv(CompDef("a", 1, 2), CompDef("", 0, -0.0)); }, "a(1,2) / (0,-0)", "CompDiv"},
      {[] { CompDivSelf(CompDef("a", 1, 2), CompDef("b", -0.0, 0)); }, "a(1,2) / b(-0,0)", "CompDivSelf"},
      {[] { CompDiv1(2.5, CompDef("c", 0, 0)); }, "2.5 / c(0,0)", "CompDiv1"},
      {[] { CompDivSelf1(2.5, CompDef("", 0, 0)); }, "2.5 / (0,0)", "CompDivSelf1"},
      {[] { CompDiv2(CompDef("c", 1, 1), -0.0); }, "c(1,1) / -0", "CompDiv2"},
      {[] { CompDivSelf2(CompDef("c", 1, 1), 0); }, "c(1,1) / 0", "CompDivSelf2"},
      {[] { CompInv(CompDef("z", 0, 0)); }, "inv(z(0,0))", "CompInv"},
      {[] { CompInvSelf(CompDef("", -0.0, -0.0)); }, "inv((-0,-0))", "CompInvSelf"},
      {[] { CompPow(CompDef("", 0, 0), -1); }, "inv((0,0))", "CompInv"},
  };
  for (const Case &c : cases)
    EXPECT_EXIT(c.divide(), testing::ExitedWithCode(0),
                Exact("\n" + std::string(c.expression) + " : Can't divide by zero in " + c.function + "().\n"));
}

}  // namespace
