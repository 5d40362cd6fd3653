#include "matrix/roots.h"

#include <vector>

#include "core/constructors.h"
#include "matrix/eigen.h"
#include "scalar/poly_coef.h"

namespace {

// The companion matrix of the monic c_0 + ... + c_(m-1) s^(m-1) + s^m: ones
// on the superdiagonal, the negated coefficients in the last row.
template <class T>
void Companion(Matrix *a, const std::vector<T> &c, T one, T (*neg)(T)) {
  const int m = a->rows;
  T *e = static_cast<T *>(a->elements);
  for (int k = 0; k + 1 < m; k++) e[static_cast<long long>(k) * m + k + 1] = one;
  for (int k = 0; k < m; k++)
    e[static_cast<long long>(m - 1) * m + k] = neg(c[static_cast<size_t>(k)]);
}

double NegReal(double x) { return -x; }
ComplexValue NegComplex(ComplexValue z) { return velk_complex::Neg(z); }

}  // namespace

Matrix *PolyRoots(Polynomial *p) {
  if (p->degree == -1) {
    PolyError("PolyRoots()", "Undefined polynomial", p);
    return C_MatDef("", 0, 0);
  }
  const bool complex = p->kind == 1;
  int n = p->degree + 1;
  std::vector<ComplexValue> c(static_cast<size_t>(n));
  for (int k = 0; k < n; k++) c[static_cast<size_t>(k)] = velk_poly::At(p, k);
  // Strip zero leading coefficients and make the rest monic, comparing exactly.
  for (; n >= 1; n--) {
    ComplexValue top = c[static_cast<size_t>(n - 1)];
    if (top.re == 1 && top.im == 0) break;
    if (top.re == 0 && top.im == 0) continue;
    if (top.im == 0) {
      const double f = 1 / top.re;  // scaling by the inverse, as the matrix layer does
      for (int k = 0; k < n; k++)
        c[static_cast<size_t>(k)] = velk_complex::Scale(c[static_cast<size_t>(k)], f);
    } else {
      const ComplexValue f = velk_complex::RealOver(1, top);
      for (int k = 0; k < n; k++)
        c[static_cast<size_t>(k)] = velk_complex::Mul(c[static_cast<size_t>(k)], f);
    }
    break;
  }
  if (n == 0) {
    PolySetMessage("roots(%s(%s^%d))", p->name != nullptr ? p->name : "", PolyVariableName(p),
                   p->degree);
    PolyError("PolyRoots()", "Arg is a zero polynomial", p);
    return C_MatDef("", 0, 0);
  }
  const int m = n - 1;
  if (m == 0) return C_MatDef("", 0, 1);  // a non-zero constant has no roots
  Matrix *a;
  if (complex) {
    a = C_MatZDef(m);
    Companion<ComplexValue>(a, c, {1, 0}, NegComplex);
  } else {
    a = MatZDef(m);
    std::vector<double> r(static_cast<size_t>(m));
    for (int k = 0; k < m; k++) r[static_cast<size_t>(k)] = c[static_cast<size_t>(k)].re;
    Companion<double>(a, r, 1.0, NegReal);
  }
  Matrix *roots = MatEigVal(a);
  MatUndef(a);
  return roots;
}

Matrix *RatZeros(Rational *r) { return PolyRoots(r->nume); }
Matrix *RatPoles(Rational *r) { return PolyRoots(r->deno); }
