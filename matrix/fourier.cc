// The Fourier transform fronts; the kernels are in linalg/fft.cc.
#include "matrix/fourier.h"

#include <cmath>

#include "core/constructors.h"
#include "linalg/fft.h"
#include "matrix/frontend.h"
#include "matrix/operations.h"

using namespace velk_matrix;

namespace {

// n = rint(2^rint(log n / log 2)), in doubles: the test as users have always
// met it (0 passes it too and gives an empty transform).
bool PassesPowerOfTwoTest(int n) {
  double d = n;
  return d == std::rint(std::pow(2.0, std::rint(std::log(d) / std::log(2.0))));
}

// Every row of a cut or padded to n values and transformed into a new
// complex rows x n matrix.
Matrix *TransformRows(Matrix *a, int n, bool inverse) {
  Matrix *c = C_MatDef("", a->rows, n);
  velk_linalg::FftRows(static_cast<const double *>(a->elements), a->cls == kComplex, a->rows,
                       a->cols, MatReal(c), n, inverse);
  return c;
}

Matrix *Transform(const char *location, const char *name, Matrix *a, int n, int column,
                  bool inverse) {
  Front f{location, [=] {
            MatSetMessage(column ? "%s_col(%s(%dx%d))" : "%s(%s(%dx%d))", name, a->name, a->rows,
                          a->cols);
          }};
  if (a->rows == 0 || a->cols == 0) return f.Fail("Zero-size matrix", a);
  if (!IsNumericClass(a->cls)) return f.Fail("Not a real nor complex matrix", a);
  if (!PassesPowerOfTwoTest(n)) return f.Fail("Data number must be 2^n", a);
  if (a->cols == 1) {
    column = 1;
    if (n == 1) n = a->rows;
  }
  if (!column) return TransformRows(a, n, inverse);
  Matrix *t = MatTrans(a);
  Matrix *ct = TransformRows(t, n, inverse);
  Matrix *c = MatTrans(ct);
  MatUndef(ct);
  MatUndef(t);
  return c;
}

}  // namespace

Matrix *MatFFT(Matrix *a, int n, int column) {
  return Transform("MatFFT()", "fft", a, n, column, false);
}

Matrix *MatIFFT(Matrix *a, int n, int column) {
  return Transform("MatIFFT()", "ifft", a, n, column, true);
}
