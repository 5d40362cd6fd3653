// Helpers of the matrix-layer tests: operand builders, value readers, and a
// fixture that checks the registries after every scenario.
#ifndef VELK_TESTS_MATRIX_SCENARIO_H
#define VELK_TESTS_MATRIX_SCENARIO_H

#include <gtest/gtest.h>

#include <complex>
#include <initializer_list>
#include <string>
#include <vector>

#include "core/constructors.h"
#include "core/matrix.h"
#include "core/scope.h"
#include "scalar/complex.h"
#include "scalar/polynomial.h"
#include "scalar/rational.h"
#include "support/exact.h"

namespace matrix_test {

using Cx = std::complex<double>;

inline std::string Fatal(const std::string &text) { return Exact("\n" + text + "\n"); }

inline Polynomial *PolyAt(Matrix *m, long long k) {
  return static_cast<Polynomial **>(m->elements)[k];
}
inline Rational *RatAt(Matrix *m, long long k) { return static_cast<Rational **>(m->elements)[k]; }

inline Cx Coef(Matrix *coef, int k) {
  if (coef->cls == kComplex) return {MatReal(coef)[2 * k], MatReal(coef)[2 * k + 1]};
  return MatReal(coef)[k];
}

// The value of element k when it is a constant: a number, a degree-0
// polynomial, or a constant over a constant.
inline Cx ValueAt(Matrix *m, long long k) {
  switch (m->cls) {
    case kReal:
      return MatReal(m)[k];
    case kComplex:
      return {MatReal(m)[2 * k], MatReal(m)[2 * k + 1]};
    case kPoly:
    case kCompPoly:
      return Coef(PolyAt(m, k)->coef, 0);
    default:
      return Coef(RatAt(m, k)->nume->coef, 0) / Coef(RatAt(m, k)->deno->coef, 0);
  }
}

inline std::vector<Cx> Values(Matrix *m) {
  std::vector<Cx> v;
  for (long long k = 0; k < MatCount(m); k++) v.push_back(ValueAt(m, k));
  return v;
}

// A named matrix of class cls holding the given values (elements of classes
// 2 to 5 are constants of their kind).
inline Matrix *Make(const char *name, int cls, int rows, int cols, std::vector<Cx> v) {
  Matrix *m = MatSetName(MatDefClass("", rows, cols, cls, "MatDef()"), name);
  if (cls == kReal) {
    for (size_t k = 0; k < v.size(); k++) MatReal(m)[k] = v[k].real();
  } else if (cls == kComplex) {
    for (size_t k = 0; k < v.size(); k++) {
      MatReal(m)[2 * k] = v[k].real();
      MatReal(m)[2 * k + 1] = v[k].imag();
    }
  } else {
    Matrix *src = Make("", kComplex, rows, cols, v);
    MatCopyElements(m, 0, src, 0, MatCount(m));
  }
  return m;
}

inline Matrix *Real(const char *name, int rows, int cols, std::vector<Cx> v = {}) {
  return Make(name, kReal, rows, cols, v);
}
inline Matrix *Comp(const char *name, int rows, int cols, std::vector<Cx> v = {}) {
  return Make(name, kComplex, rows, cols, v);
}

// Every element object matches the class: polynomials (rationals) for 2 and 3
// (4 and 5), complex coefficients exactly for the odd codes.
inline bool ElementsMatchClass(Matrix *m) {
  for (long long k = 0; k < MatCount(m); k++) {
    if (IsPolyClass(m->cls) && PolyAt(m, k)->kind != (m->cls & 1)) return false;
    if (IsRatClass(m->cls) &&
        (RatAt(m, k)->kind != (m->cls & 1) || RatAt(m, k)->nume->kind != (m->cls & 1)))
      return false;
  }
  return true;
}

// After each scenario: temporaries swept, kept operands undefined, and the
// registries as they were before it.
class Scenario : public testing::Test {
 protected:
  void SetUp() override {
    MatInit();
    RatInit();
    CompInit();
    MatSweepAll();
    live_ = MatRegistryCheck();
  }
  void TearDown() override {
    for (Matrix *m : kept_) MatUndef(m);
    MatSweepAll();
    EXPECT_EQ(MatRegistryCheck(), live_);
    PolyRegistryCheck();
    RatRegistryCheck();
    CompRegistryCheck();
  }
  // Keeps m through sweeps until the end of the scenario.
  Matrix *Keep(Matrix *m) {
    kept_.push_back(m);
    return MatSetStatus(m, 2);
  }

 private:
  std::vector<Matrix *> kept_;
  long live_ = 0;
};

}  // namespace matrix_test

#endif
