#include "core/constructors.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace {

// ---- element helpers -----------------------------------------------------------

template <class T>
T *Entries(Matrix *m) {
  return static_cast<T *>(m->elements);
}

// The value of entry k of a real or complex matrix.
ComplexValue ValueAt(Matrix *m, long long k) {
  if (m->cls == kComplex) return Entries<ComplexValue>(m)[k];
  return {Entries<double>(m)[k], 0.0};
}

// Stores a value into entry k of a real or complex matrix (a real one keeps
// the real part).
void StoreValue(Matrix *m, long long k, ComplexValue v) {
  if (m->cls == kComplex)
    Entries<ComplexValue>(m)[k] = v;
  else
    Entries<double>(m)[k] = v.re;
}

// ---- constructors ----------------------------------------------------------------

// A real or complex matrix with every element `fill`, or zeros with `fill` on
// the diagonal.
Matrix *Constant(int rows, int cols, int cls, const char *location, ComplexValue fill,
                 bool diagonal) {
  Matrix *m = MatDefClass("", rows, cols, cls, location);
  long long n = MatCount(m);
  if (diagonal) {
    if (n > 0) memset(m->elements, 0, static_cast<size_t>(n) * (cls == kComplex ? 16 : 8));
    int d = m->rows < m->cols ? m->rows : m->cols;
    for (int k = 0; k < d; k++) StoreValue(m, static_cast<long long>(k) * m->cols + k, fill);
  } else {
    for (long long k = 0; k < n; k++) StoreValue(m, k, fill);
  }
  return m;
}

// The constant constructors of both layers: the label written on a negative
// size (square forms show one size), the value, and where it goes.
struct Form {
  const char *label;
  bool square;
  bool one;  // 1 (1 + 0i) rather than 0
  bool diagonal;
};
constexpr Form kZeros = {"Z(%d, %d)", false, false, false};
constexpr Form kSquareZeros = {"Z(%d)", true, false, false};
constexpr Form kIdentity = {"I(%d, %d)", false, true, true};
constexpr Form kSquareIdentity = {"I(%d)", true, true, true};
constexpr Form kOnes = {"ONE(%d, %d)", false, true, false};

constexpr const Form &FormOf(MatConstantForm form) {
  switch (form) {
    case MatConstantForm::kSquareZeros: return kSquareZeros;
    case MatConstantForm::kIdentity: return kIdentity;
    case MatConstantForm::kSquareIdentity: return kSquareIdentity;
    case MatConstantForm::kOnes: return kOnes;
    default: return kZeros;
  }
}

Matrix *Build(const Form &form, int cls, int rows, int cols, const char *location,
              ComplexValue one = {1.0, 0.0}) {
  if (rows < 0 || cols < 0) {
    if (form.square)
      MatSetMessage(form.label, rows);
    else
      MatSetMessage(form.label, rows, cols);
  }
  return Constant(rows, cols, cls, location, form.one ? one : ComplexValue{0.0, 0.0},
                  form.diagonal);
}

Matrix *ProductShape(Matrix *a, Matrix *b, int cls, const char *location) {
  if (b->rows != a->cols) {
    MatError2(location, "Size Error", a, b);
    return MatDef("", 0, 0);
  }
  return MatDefClass("", a->rows, b->cols, cls, location);
}

int ComplexIfEither(int cls, Matrix *a, Matrix *b) {
  return ClassOf(ClassKind(cls), HasComplexValues(a->cls) || HasComplexValues(b->cls));
}

// ---- element access: one body for the real layer and its complex twin -------------

template <class T>
struct Twin;

template <>
struct Twin<double> {
  static constexpr int cls = kReal;
  static constexpr const char *wrong_class = "Not a real matrix";
  static constexpr const char *set = "MatSetValue()";
  static constexpr const char *fill = "MatFillValue()";
  static constexpr const char *set_vec = "MatSetVecValue()";
  static constexpr const char *one = "MatGetValueOne()";
  static constexpr const char *ptr_class = "MatGetPrt()";  // so spelled
  static constexpr const char *ptr_index = "MatGetPtr()";
  static constexpr const char *vec_class = "MatGetVecPrt()";  // so spelled
  static constexpr const char *vec_index = "MatGetVecPtr()";
  static void Text(char *out, size_t size, double v) { snprintf(out, size, "%g", v); }
  static double From(ComplexValue v) { return v.re; }
};

template <>
struct Twin<ComplexValue> {
  static constexpr int cls = kComplex;
  static constexpr const char *wrong_class = "Not a complex matrix";
  static constexpr const char *set = "C_MatSetValue()";
  static constexpr const char *fill = "C_MatFillValue()";
  static constexpr const char *set_vec = "C_MatSetVecValue()";
  static constexpr const char *one = "C_MatGetValueOne()";
  static constexpr const char *ptr_class = "C_MatGetPtr()";
  static constexpr const char *ptr_index = "C_MatGetPtr()";
  static constexpr const char *vec_class = "C_MatGetVecPtr()";
  static constexpr const char *vec_index = "C_MatGetVecPtr()";
  static void Text(char *out, size_t size, ComplexValue v) {
    snprintf(out, size, "(%g,%g)", v.re, v.im);
  }
  static ComplexValue From(ComplexValue v) { return v; }
};

// The label of an assignment: "%s(%dx%d)(index) = value", the value in the
// layer's notation.
template <class T>
void LabelAssignment(Matrix *m, const char *index, T value) {
  char text[64];
  Twin<T>::Text(text, sizeof text, value);
  MatSetMessage("%s(%dx%d)(%s) = %s", m->name, m->rows, m->cols, index, text);
}

// m takes a zero matrix of the new shape holding its old elements in the
// top-left corner; its old contents are undefined.
void Grow(Matrix *m, int rows, int cols) {
  Matrix *z = MatSameClassZDef(m, rows, cols);
  for (int i = 0; i < m->rows; i++)
    MatCopySameClass(z, static_cast<long long>(i) * cols, m, static_cast<long long>(i) * m->cols,
                     m->cols);
  MatMove(m, z);
  MatUndef(z);
}

template <class T>
Matrix *SetValue(Matrix *m, int i, int j, T value) {
  if (m->cls != Twin<T>::cls || i < 1 || j < 1) {
    char index[32];
    snprintf(index, sizeof index, "%d,%d", i, j);
    LabelAssignment(m, index, value);
    MatError(Twin<T>::set, m->cls != Twin<T>::cls ? Twin<T>::wrong_class : "Not a suitable index",
             m);
    return m;
  }
  if (i > m->rows || j > m->cols) Grow(m, i > m->rows ? i : m->rows, j > m->cols ? j : m->cols);
  Entries<T>(m)[static_cast<long long>(i - 1) * m->cols + (j - 1)] = value;
  return m;
}

template <class T>
Matrix *FillValue(Matrix *m, T value) {
  if (m->cls != Twin<T>::cls) {
    char text[64];
    Twin<T>::Text(text, sizeof text, value);
    MatSetMessage("fill(%s(%dx%d), %s)", m->name, m->rows, m->cols, text);
    MatError(Twin<T>::fill, Twin<T>::wrong_class, m);
    return m;
  }
  T *e = Entries<T>(m);
  for (long long k = 0; k < MatCount(m); k++) e[k] = value;
  return m;
}

template <class T>
Matrix *SetVecValue(Matrix *m, int k, T value) {
  if (m->cls != Twin<T>::cls || k < 1) {
    char index[16];
    snprintf(index, sizeof index, "%d", k);
    LabelAssignment(m, index, value);
    MatError(Twin<T>::set_vec,
             m->cls != Twin<T>::cls ? Twin<T>::wrong_class : "Not a suitable index", m);
    return m;
  }
  if (k > MatCount(m)) {
    // A vector keeps its orientation; a wider matrix keeps its columns and
    // takes whole rows. Either way old entries keep their storage positions.
    if (m->rows == 1 || m->cols == 0)
      Grow(m, 1, k);
    else
      Grow(m, static_cast<int>(std::ceil(static_cast<double>(k) / m->cols)), m->cols);
  }
  Entries<T>(m)[k - 1] = value;
  return m;
}

template <class T>
T GetValueOne(Matrix *m) {
  if (m->rows != 1 || m->cols != 1) {
    MatSetMessage("Real(%s(%dx%d))", m->name, m->rows, m->cols);
    MatWarning(Twin<T>::one, "Not a one by one matrix", m);
  }
  if (MatCount(m) == 0 || !IsNumericClass(m->cls)) return Twin<T>::From({0.0, 0.0});
  return Twin<T>::From(ValueAt(m, 0));
}

template <class T>
T *GetPtr(Matrix *m, int i, int j) {
  if (m->cls != Twin<T>::cls || i < 1 || i > m->rows || j < 1 || j > m->cols) {
    MatSetMessage("%s(%dx%d)(%d,%d)", m->name, m->rows, m->cols, i, j);
    if (m->cls != Twin<T>::cls)
      MatError(Twin<T>::ptr_class, Twin<T>::wrong_class, m);
    else
      MatError(Twin<T>::ptr_index, "Not a suitable index", m);
    return nullptr;
  }
  return Entries<T>(m) + static_cast<long long>(i - 1) * m->cols + (j - 1);
}

template <class T>
T *GetVecPtr(Matrix *m, int k) {
  if (m->cls != Twin<T>::cls || k < 1 || k > MatCount(m)) {
    MatSetMessage("%s(%dx%d)(%d)", m->name, m->rows, m->cols, k);
    if (m->cls != Twin<T>::cls)
      MatError(Twin<T>::vec_class, Twin<T>::wrong_class, m);
    else
      MatError(Twin<T>::vec_index, "Not a suitable index", m);
    return nullptr;
  }
  return Entries<T>(m) + (k - 1);
}

}  // namespace

// ---- element copy ------------------------------------------------------------------

bool MatClassHolds(int dst, int src) {
  return ClassKind(src) <= ClassKind(dst) && (HasComplexValues(dst) || !HasComplexValues(src));
}

int MatCommonClass(int a, int b) {
  return ClassOf(std::max(ClassKind(a), ClassKind(b)), HasComplexValues(a) || HasComplexValues(b));
}

void MatCopySameClass(Matrix *dst, long long k, Matrix *src, long long l, long long count) {
  if (count <= 0) return;
  if (IsNumericClass(dst->cls)) {
    if (dst->cls == src->cls) {
      size_t size = dst->cls == kComplex ? sizeof(ComplexValue) : sizeof(double);
      memmove(static_cast<char *>(dst->elements) + k * static_cast<long long>(size),
              static_cast<char *>(src->elements) + l * static_cast<long long>(size),
              static_cast<size_t>(count) * size);
    } else {
      for (long long n = 0; n < count; n++) StoreValue(dst, k + n, ValueAt(src, l + n));
    }
    return;
  }
  void **to = static_cast<void **>(dst->elements);
  void **from = static_cast<void **>(src->elements);
  for (long long n = 0; n < count; n++) {
    // The copy is made before the old element goes, so a block may be copied
    // onto itself.
    void *e = MatElementDup(src->cls, from[l + n]);
    MatElementRelease(dst->cls, to[k + n]);
    to[k + n] = e;
  }
}

// ---- constructors ------------------------------------------------------------------

Matrix *MatZDef(int n) { return Build(kSquareZeros, kReal, n, n, "MatZDef()"); }
Matrix *MatZDef2(int rows, int cols) { return Build(kZeros, kReal, rows, cols, "MatZDef2()"); }
Matrix *MatIDef(int n) { return Build(kSquareIdentity, kReal, n, n, "MatIDef()"); }
Matrix *MatIDef2(int rows, int cols) { return Build(kIdentity, kReal, rows, cols, "MatIDef2()"); }
Matrix *MatOneDef(int rows, int cols) { return Build(kOnes, kReal, rows, cols, "MatOneDef()"); }
Matrix *MatFillDef(int rows, int cols, double value) {
  return Constant(rows, cols, kReal, "MatFillDef()", {value, 0.0}, false);
}

Matrix *C_MatZDef(int n) { return Build(kSquareZeros, kComplex, n, n, "C_MatZDef()"); }
Matrix *C_MatZDef2(int rows, int cols) {
  return Build(kZeros, kComplex, rows, cols, "C_MatZDef2()");
}
Matrix *MatConstantDef(MatConstantForm form, int cls, int rows, int cols, const char *location,
                       ComplexValue one) {
  return Build(FormOf(form), cls, rows, cols, location, one);
}

Matrix *C_MatMulDef(Matrix *a, Matrix *b) { return ProductShape(a, b, kComplex, "C_MatMulDef()"); }
Matrix *P_MatMulDef(Matrix *a, Matrix *b) {
  return ProductShape(a, b, ComplexIfEither(kPoly, a, b), "P_MatMulDef()");
}
Matrix *R_MatMulDef(Matrix *a, Matrix *b) {
  return ProductShape(a, b, ComplexIfEither(kRat, a, b), "R_MatMulDef()");
}

// ---- vectors -----------------------------------------------------------------------

Matrix *MatColumnVector(Matrix *m, int j) {
  if (j < 1 || j > m->cols) {
    MatSetMessage("%s(%dx%d)(:, %d)", m->name, m->rows, m->cols, j);
    MatError("MatColumnVector()", "Not appropriate column number", m);
    return MatDef("", 0, 0);
  }
  Matrix *v = MatSameClassDef(m, m->rows, 1);
  for (int i = 0; i < m->rows; i++)
    MatCopySameClass(v, i, m, static_cast<long long>(i) * m->cols + (j - 1), 1);
  return v;
}

Matrix *MatRowVector(Matrix *m, int i) {
  if (i < 1 || i > m->rows) {
    MatSetMessage("%s(%dx%d)(%d, :)", m->name, m->rows, m->cols, i);
    MatError("MatRowVector()", "Not appropriate row number", m);
    return MatDef("", 0, 0);
  }
  Matrix *v = MatSameClassDef(m, 1, m->cols);
  MatCopySameClass(v, 0, m, static_cast<long long>(i - 1) * m->cols, m->cols);
  return v;
}

// ---- element access ----------------------------------------------------------------

Matrix *MatSetValue(Matrix *m, int i, int j, double value) { return SetValue(m, i, j, value); }
Matrix *MatFillValue(Matrix *m, double value) { return FillValue(m, value); }
Matrix *MatSetVecValue(Matrix *m, int k, double value) { return SetVecValue(m, k, value); }
double MatGetValueOne(Matrix *m) { return GetValueOne<double>(m); }
double *MatGetPtr(Matrix *m, int i, int j) { return GetPtr<double>(m, i, j); }
double *MatGetVecPtr(Matrix *m, int k) { return GetVecPtr<double>(m, k); }

Matrix *C_MatSetValue(Matrix *m, int i, int j, ComplexValue value) {
  return SetValue(m, i, j, value);
}
Matrix *C_MatFillValue(Matrix *m, ComplexValue value) { return FillValue(m, value); }
Matrix *C_MatSetVecValue(Matrix *m, int k, ComplexValue value) { return SetVecValue(m, k, value); }
ComplexValue C_MatGetValueOne(Matrix *m) { return GetValueOne<ComplexValue>(m); }
ComplexValue *C_MatGetPtr(Matrix *m, int i, int j) { return GetPtr<ComplexValue>(m, i, j); }
ComplexValue *C_MatGetVecPtr(Matrix *m, int k) { return GetVecPtr<ComplexValue>(m, k); }
