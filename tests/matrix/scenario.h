// Helpers of the matrix-layer and constructor tests: an operand builder, a
// check of class, shape and values, a runner for tables of fatal reports, and
// a fixture that checks the registries after every scenario.
#ifndef VELK_TESTS_MATRIX_SCENARIO_H
#define VELK_TESTS_MATRIX_SCENARIO_H

#include <gtest/gtest.h>

#include <algorithm>
#include <complex>
#include <functional>
#include <string>
#include <vector>

#include "core/constructors.h"
#include "core/registry.h"
#include "matrix/elements.h"
#include "scalar/fill.h"
#include "support/exact.h"

using Cx = std::complex<double>;

// Element object k of a polynomial or rational matrix.
template <class T>
T *At(Matrix *m, long long k) {
  return static_cast<T **>(m->elements)[k];
}

// The value of element k when it is a constant: a number, a degree-0
// polynomial, or a constant over a constant.
inline Cx ValueAt(Matrix *m, long long k) {
  if (m->cls == kReal) return MatReal(m)[k];
  if (m->cls == kComplex) return static_cast<Cx *>(m->elements)[k];
  if (IsPolyClass(m->cls)) return ValueAt(At<Polynomial>(m, k)->coef, 0);
  return ValueAt(At<Rational>(m, k)->nume->coef, 0) / ValueAt(At<Rational>(m, k)->deno->coef, 0);
}

// A named temporary of class cls holding the given values (elements of
// classes 2 to 5 are constants of their kind).
inline Matrix *Make(const char *name, int cls, int rows, int cols, std::vector<Cx> v = {}) {
  Matrix *m = MatSetName(MatDefClass("", rows, cols, cls, "MatDef()"), name);
  Matrix *c = cls == kComplex ? m : C_MatZDef2(rows, cols);
  std::copy(v.begin(), v.end(), static_cast<Cx *>(c->elements));
  if (cls == kReal)
    for (long long k = 0; k < MatCount(m); k++) MatReal(m)[k] = ValueAt(c, k).real();
  else if (c != m)
    MatCopyElements(m, 0, c, 0, MatCount(m));
  return m;
}

// m is of class cls and shape rows x cols, its element objects have complex
// coefficients exactly when the class code is odd, and its values are want
// (within tol).
inline testing::AssertionResult Holds(Matrix *m, int cls, int rows, int cols,
                                      const std::vector<Cx> &want, double tol = 0) {
  bool ok = m->cls == cls && m->rows == rows && m->cols == cols && MatCount(m) == std::ssize(want);
  for (long long k = 0; ok && k < MatCount(m); k++) {
    int kind = IsPolyClass(cls)  ? At<Polynomial>(m, k)->kind
               : IsRatClass(cls) ? At<Rational>(m, k)->kind
                                 : cls & 1;
    ok = kind == (cls & 1) && std::abs(ValueAt(m, k) - want[k]) <= tol;
  }
  if (ok) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "class " << m->cls << ", " << m->rows << "x" << m->cols;
}

// Statements that must each end the process with the given stderr text.
using Reports = std::vector<std::pair<std::function<void()>, std::string>>;

inline void ExpectReports(const Reports &reports) {
  for (const auto &[run, text] : reports) {
    SCOPED_TRACE(text);
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), Exact("\n" + text + "\n"));
  }
}

// After each scenario: temporaries swept, and the registries sound and as
// they were before it (a scenario undefines what it keeps).
class Scenario : public testing::Test {
 protected:
  void SetUp() override {
    MatSweepAll();  // whatever earlier tests left behind
    live_ = MatRegistryCheck();
  }
  void TearDown() override {
    MatSweepAll();
    EXPECT_EQ(MatRegistryCheck(), live_);
    PolyRegistryCheck();
    RatRegistryCheck();
    CompRegistryCheck();
  }
  long live_ = 0;
};

#endif
