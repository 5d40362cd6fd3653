// Front-ends that rearrange elements: transposes, conjugates, concatenation,
// and the pairing of real and imaginary parts. Transposes and concatenation
// only move elements and so serve every class.
#include "core/constructors.h"
#include "matrix/frontend.h"
#include "matrix/operations.h"

using namespace velk_matrix;

namespace {

Matrix *Transposed(Matrix *m) {
  Matrix *c = MatTransDef(m);
  int rows = m->rows, cols = m->cols;
  if (m->cls <= kComplex) {
    ByElementType(m->cls, [&]<class T>(Type<T>) {
      T *out = Entries<T>(c);
      const T *in = Entries<T>(m);
      for (int i = 0; i < rows; i++)
        for (int j = 0; j < cols; j++)
          out[static_cast<long long>(j) * rows + i] = in[static_cast<long long>(i) * cols + j];
    });
  } else {
    for (int i = 0; i < rows; i++)
      for (int j = 0; j < cols; j++)
        MatCopyElements(c, static_cast<long long>(j) * rows + i, m,
                        static_cast<long long>(i) * cols + j, 1);
  }
  return c;
}

// Conjugates a matrix of any class in place; real values and real
// coefficients stay as they are.
Matrix *ConjugateSelf(Matrix *m) {
  auto conj = [](auto v) { return Conj(v); };
  if (m->cls == kComplex)
    Map<Complexd>(m, m, conj);
  else if (m->cls == kCompPoly || m->cls == kCompRat)
    MapCoefficients(m, false, conj);
  return m;
}

// The check of the one-operand structural front-ends: any class code 0 to 5.
template <class F>
bool ClassOk(const F &front, Matrix *m) {
  if (IsValidClass(m->cls)) return true;
  front.BadClass(m);
  return false;
}

}  // namespace

Matrix *MatTrans(Matrix *m) {
  Front f{"MatTrans()", [=] { Label1("%s(%dx%d)'", m); }};
  return ClassOk(f, m) ? Transposed(m) : MatDef("", 0, 0);
}

Matrix *MatConjTrans(Matrix *m) {
  Front f{"MatConjTrans()", [=] { Label1("%s(%dx%d)#", m); }};
  return ClassOk(f, m) ? ConjugateSelf(Transposed(m)) : MatDef("", 0, 0);
}

Matrix *MatConj(Matrix *m) {
  Front f{"MatConj()", [=] { Label1("conj(%s(%dx%d))", m); }};
  return ClassOk(f, m) ? ConjugateSelf(MatDup(m)) : MatDef("", 0, 0);
}

Matrix *MatCatRow(Matrix *a, Matrix *b) {
  Front f{"MatCatRow()", [=] { Label2("[%s(%dx%d), %s(%dx%d)]", a, b); }};
  if (a->rows != b->rows) return f.Fail("Inconsistent row number", a, b);
  return Structural(f, a, b, MatCatRow, [](Matrix *a, Matrix *b) {
    int cols = a->cols + b->cols;
    Matrix *c = MatSameClassDef(a, a->rows, cols);
    for (int i = 0; i < a->rows; i++) {
      long long row = static_cast<long long>(i) * cols;
      MatCopyElements(c, row, a, static_cast<long long>(i) * a->cols, a->cols);
      MatCopyElements(c, row + a->cols, b, static_cast<long long>(i) * b->cols, b->cols);
    }
    return c;
  });
}

Matrix *MatCatColumn(Matrix *a, Matrix *b) {
  Front f{"MatCatColumn()", [=] { Label2("[[%s(%dx%d)][%s(%dx%d)]]", a, b); }};
  if (a->cols != b->cols) return f.Fail("Inconsistent column number", a, b);
  return Structural(f, a, b, MatCatColumn, [](Matrix *a, Matrix *b) {
    Matrix *c = MatSameClassDef(a, a->rows + b->rows, a->cols);
    MatCopyElements(c, 0, a, 0, MatCount(a));
    MatCopyElements(c, MatCount(a), b, 0, MatCount(b));
    return c;
  });
}

Matrix *MatRealAndImag(Matrix *re, Matrix *im) {
  Front f{"MatRealAndImag()", [=] { Label2("(%s(%dx%d), %s(%dx%d))", re, im); }};
  if (re->rows != im->rows || re->cols != im->cols) return f.Fail("Not same size", re, im);
  if (re->cls != im->cls || re->cls == kComplex || re->cls == kCompPoly || re->cls == kCompRat)
    return f.Fail("Not appropriate class matrices", re, im);
  switch (re->cls) {
    case kReal: {
      Matrix *c = C_MatDef("", re->rows, re->cols);
      for (long long k = 0; k < MatCount(c); k++)
        Entries<Complexd>(c)[k] = {MatReal(re)[k], MatReal(im)[k]};
      return c;
    }
    case kPoly:
    case kRat: {
      Matrix *c = MatDefClass("", re->rows, re->cols, re->cls + 1, "MatDef()");
      return ByObjectType(re->cls, [&]<class O>(ObjectType<O>) {
        return ZipObjects<O>(c, re, im, [](O *x, O *y) { return ObjRealAndImag(x, y); });
      });
    }
    default:
      return f.BadClass(re, im);
  }
}
