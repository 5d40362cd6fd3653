// The exponential front and the Taylor kernels' matrix forms; the loops are in
// linalg/expm.cc, the products those of MatMul.
#include "matrix/expm.h"

#include <cmath>

#include "core/constructors.h"
#include "linalg/expm.h"
#include "matrix/frontend.h"
#include "matrix/operations.h"

using namespace velk_matrix;

namespace {

// MatMul's product on raw n x n arrays: bare records that only describe the
// storage (never defined, never registered).
template <class T>
void SquareProduct(int n, const T *a, const T *b, T *c) {
  auto bare = [n](const T *p) {
    Matrix m{};
    m.cls = std::is_same_v<T, double> ? kReal : kComplex;
    m.rows = m.cols = n;
    m.elements = const_cast<T *>(p);
    return m;
  };
  Matrix ma = bare(a), mb = bare(b), mc = bare(c);
  Product<T>(&mc, &ma, &mb);
}

template <class T>
Matrix *ExpLocal(const char *location, Matrix *e, Matrix *a) {
  int stopped =
      velk_linalg::ExpTaylor<T>(a->rows, Entries<T>(a), Entries<T>(e), SquareProduct<T>, eps);
  // Stopping at the 100th iteration counts as failure too.
  if (stopped > 99) {
    Label1("exp(%s(%dx%d))", a);
    MatError(location, "Not converge", a);
  }
  return e;
}

}  // namespace

Matrix *Mat_ExpLocal(Matrix *e, Matrix *a) { return ExpLocal<double>("Mat_ExpLocal()", e, a); }

Matrix *C_Mat_ExpLocal(Matrix *e, Matrix *a) {
  return ExpLocal<Complexd>("C_Mat_ExpLocal()", e, a);
}

Matrix *MatExp(Matrix *a) {
  Front f{"MatExp()", [=] { Label1("exp(%s(%dx%d))", a); }};
  if (a->rows == 0 || a->cols == 0) return f.Fail("Zero-size matrix", a);
  if (a->rows != a->cols) return f.Fail("Not a square matrix", a);
  if (!IsNumericClass(a->cls)) return f.BadClass(a);
  long long doubles = MatCount(a) * (a->cls == kComplex ? 2 : 1);
  int j = velk_linalg::ExpScalingExponent(velk_linalg::FrobeniusNorm(MatReal(a), doubles));
  // a / 2^j, exactly; named like a for the kernel's report.
  Matrix *scaled = MatSetName(MatScale(a, std::ldexp(1.0, -j)), a->name);
  Matrix *e = MatSameDef(a);
  ByElementType(a->cls, [&]<class T>(Type<T>) {
    if constexpr (std::is_same_v<T, double>)
      Mat_ExpLocal(e, scaled);
    else
      C_Mat_ExpLocal(e, scaled);
    velk_linalg::ExpSquare<T>(a->rows, Entries<T>(e), j, SquareProduct<T>);
  });
  MatUndef(scaled);
  return e;
}
