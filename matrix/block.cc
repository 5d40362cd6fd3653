// Submatrix cut and put, real and imaginary parts.
#include "matrix/block.h"

#include <cstdio>

#include "core/constructors.h"
#include "core/registry.h"
#include "matrix/frontend.h"
#include "scalar/polynomial.h"

using namespace velk_matrix;

namespace {

constexpr int kKept = 2;  // any status other than 0 and 1 survives a sweep

// A zero matrix of any class code. The like-class definition reads only the
// class of its model.

// a takes the temporary t's contents by assignment. The assignment sweeps
// away t (so it is not undefined again here) and every other temporary made
// since the last mark; a and b may be temporaries still in use by MatPut, so
// they carry a kept status meanwhile.
void AssignKeeping(Matrix *a, Matrix *t, Matrix *b) {
  int status_a = a->status, status_b = b->status;
  a->status = kKept;
  b->status = kKept;
  MatLet(a, t);
  b->status = status_b;
  a->status = status_a;
}

Matrix *InvalidPut(Matrix *a, int i, int j, Matrix *b) {
  char message[kMessageSize];
  snprintf(message, sizeof message, "%s(%d:%d, %d:%d) is invalid sub-matrix", a->name, i,
           i + b->rows - 1, j, j + b->cols - 1);
  MatError2("MatPut()", message, a, b);
  return a;
}

// An empty b put at (i, j) cuts a back to what lies before it.
Matrix *Truncate(Matrix *a, int i, int j, Matrix *b) {
  Matrix *t;
  if (i == 1 && j == 1)
    t = MatSameClassDef(a, 0, 0);
  else if (i == 1)
    t = MatCut(a, 1, 1, a->rows, j - 1);
  else if (j == 1)
    t = MatCut(a, 1, 1, i - 1, a->cols);
  else
    return InvalidPut(a, i, j, b);
  AssignKeeping(a, t, b);
  return a;
}

// The real or imaginary part of a matrix of any class: values, or each
// element object's part (real coefficients).
Matrix *Part(Matrix *a, bool imag) {
  if (a->cls == kReal) return MatDup(a);
  long long n = MatCount(a);
  if (a->cls == kComplex) {
    Matrix *c = MatDef("", a->rows, a->cols);
    for (long long k = 0; k < n; k++) {
      Complexd z = Entries<Complexd>(a)[k];
      MatReal(c)[k] = imag ? z.imag() : z.real();
    }
    return c;
  }
  Matrix *c = MatDefClass("", a->rows, a->cols, ClassOf(ClassKind(a->cls), false), "MatDef()");
  return ByObjectType(a->cls, [&]<class O>(ObjectType<O>) {
    return MapObjects<O>(c, a, [imag](O *e) { return imag ? ObjImagPart(e) : ObjRealPart(e); });
  });
}

}  // namespace

Matrix *MatCut(Matrix *a, int r1, int c1, int r2, int c2) {
  Front f{"MatCut()", [=] {
            MatSetMessage("%s(%dx%d)(%d:%d,%d:%d)", a->name, a->rows, a->cols, r1, r2, c1, c2);
          }};
  if (a->rows == 0 || a->cols == 0) return f.Fail("Zero-size matrix", a);
  // Deliberately no test of r2 >= r1 or c2 >= c1: r1 - 1 and c1 - 1 give an empty block.
  if (!(c1 > 0 && r1 > 0 && r1 <= a->rows && c1 <= a->cols && c2 <= a->cols && r2 <= a->rows)) {
    char message[kMessageSize];
    snprintf(message, sizeof message, "%s(%dx%d)(%d:%d,%d:%d) is invalid sub-matrix", a->name,
             a->rows, a->cols, r1, r2, c1, c2);
    return FailWith("MatCut()", message, a, nullptr);
  }
  if (!IsValidClass(a->cls)) return f.BadClass(a);
  Matrix *c = MatSameClassDef(a, r2 - r1 + 1, c2 - c1 + 1);
  for (int i = 0; i < c->rows; i++)
    MatCopyElements(c, static_cast<long long>(i) * c->cols, a,
                    static_cast<long long>(r1 - 1 + i) * a->cols + (c1 - 1), c->cols);
  return c;
}

Matrix *MatPut(Matrix *a, int i, int j, Matrix *b) {
  int last_row = i + b->rows - 1, last_col = j + b->cols - 1;
  if (i < 1 || j < 1) return InvalidPut(a, i, j, b);
  if (!IsValidClass(a->cls) || !IsValidClass(b->cls)) {
    MatSetMessage("%s(%dx%d)(%d:%d, %d:%d) = %s(%dx%d)", a->name, a->rows, a->cols, i, last_row, j,
                  last_col, b->name, b->rows, b->cols);
    return FailWith("MatPut()", "Incorrect class matrix", a, b);
  }
  if (b->rows == 0 || b->cols == 0) return Truncate(a, i, j, b);
  if (b == a) b = MatDup(a);  // a may change below before b is read

  bool a_empty = a->rows == 0 || a->cols == 0;
  bool change = !a_empty && !MatClassHolds(a->cls, b->cls);
  if (change || a->rows < last_row || a->cols < last_col) {
    // An empty a is replaced by a matrix of b's class; otherwise a grows into
    // a zero matrix of the class that holds both.
    Matrix *z;
    if (a_empty) {
      z = MatZDefClass(b->cls, last_row, last_col);
    } else {
      z = MatZDefClass(MatCommonClass(a->cls, b->cls), a->rows > last_row ? a->rows : last_row,
                      a->cols > last_col ? a->cols : last_col);
      MatPut(z, 1, 1, a);
    }
    AssignKeeping(a, z, b);
  }
  for (int r = 0; r < b->rows; r++)
    MatCopyElements(a, static_cast<long long>(i - 1 + r) * a->cols + (j - 1), b,
                    static_cast<long long>(r) * b->cols, b->cols);
  return a;
}

Matrix *MatRealPart(Matrix *a) {
  Front f{"MatRealPart()", [=] { Label1("Re(%s(%dx%d))", a); }};
  if (a->rows == 0 || a->cols == 0) return f.Fail("Zero-size matrix", a);
  if (!IsValidClass(a->cls)) return f.BadClass(a);
  return Part(a, false);
}

Matrix *MatImagPart(Matrix *a) {
  Front f{"MatImagPart()", [=] { Label1("Im(%s(%dx%d))", a); }};
  if (a->rows == 0 || a->cols == 0) return f.Fail("Zero-size matrix", a);
  if (a->cls != kComplex && a->cls != kCompPoly && a->cls != kCompRat)
    return f.Fail("Not a complex matrix", a);
  return Part(a, true);
}
