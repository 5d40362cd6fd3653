// Polynomials built and read back by tests.
#ifndef VELK_TESTS_SUPPORT_POLY_H
#define VELK_TESTS_SUPPORT_POLY_H

#include <vector>

#include "scalar/polynomial.h"

// A temporary real polynomial with coefficients c (the constant first).
inline Polynomial *P(std::vector<double> c, const char *variable = nullptr) {
  Polynomial *p = PolyDef("", static_cast<int>(c.size()) - 1, variable);
  for (size_t k = 0; k < c.size(); k++) MatReal(p->coef)[k] = c[k];
  return p;
}

// The same with complex coefficients.
inline Polynomial *CP(std::vector<ComplexValue> c, const char *variable = nullptr) {
  Polynomial *p = C_PolyDef("", static_cast<int>(c.size()) - 1, variable);
  for (size_t k = 0; k < c.size(); k++) static_cast<ComplexValue *>(p->coef->elements)[k] = c[k];
  return p;
}

// The coefficients of p (their real parts when complex).
inline std::vector<double> Coefs(Polynomial *p) {
  std::vector<double> c;
  for (int k = 0; k <= p->degree; k++)
    c.push_back(p->kind == 1 ? static_cast<ComplexValue *>(p->coef->elements)[k].re
                             : MatReal(p->coef)[k]);
  return c;
}

#endif
