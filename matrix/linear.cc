// Fronts of the dense linear algebra kernels of linalg/: checks, labels,
// class dispatch, and the matrices the kernels' raw arrays become.
#include "matrix/linear.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/constructors.h"
#include "linalg/elements.h"
#include "linalg/expm.h"
#include "linalg/gemm.h"
#include "linalg/lu.h"
#include "linalg/qr.h"
#include "linalg/svd.h"
#include "matrix/frontend.h"
#include "matrix/operations.h"

using namespace velk_matrix;
using velk_linalg::GemmMode;

namespace {

bool IsMatrixClass(const Matrix *m) { return m->cls == kReal || m->cls == kComplex; }
bool IsEmpty(const Matrix *m) { return m->rows == 0 || m->cols == 0; }

// A complex matrix whose imaginary parts are all zero: the real kernels serve it.
bool ImagPartsZero(Matrix *m) {
  if (m->cls != kComplex) return false;
  const Complexd *e = Entries<Complexd>(m);
  for (long long k = 0; k < MatCount(m); k++)
    if (e[k].imag() != 0) return false;
  return true;
}

// The real parts of such a matrix, named like it (so later labels show it).
Matrix *RealOf(Matrix *m) {
  Matrix *r = MatSetName(MatDef("", m->rows, m->cols), m->name);
  for (long long k = 0; k < MatCount(m); k++) MatReal(r)[k] = Entries<Complexd>(m)[k].real();
  return r;
}

// An operand of a real-and-complex kernel made complex, keeping its name.
Matrix *Complexified(Matrix *m) { return m->cls == kReal ? MatRealToComp(m) : m; }

// out takes the result's shape, class and values; the result is swept later.
void Deliver(Matrix *out, Matrix *result) { MatMove(out, result); }

// Matrices of the element type T (Complexd: class 1).
template <class T>
Matrix *Def(int rows, int cols) {
  return std::is_same_v<T, double> ? MatDef("", rows, cols) : C_MatDef("", rows, cols);
}
template <class T>
Matrix *ZDef(int rows, int cols) {
  return std::is_same_v<T, double> ? MatZDef2(rows, cols) : C_MatZDef2(rows, cols);
}

// The default tolerance: negative means MatFrobNorm(a) * eps.
double DefaultTolerance(Matrix *a, double tolerance) {
  return tolerance < 0 && IsMatrixClass(a) ? MatFrobNorm(a) * eps : tolerance;
}

// ---- LU ----------------------------------------------------------------------------

// The packed LU of a (real kernel for class 0, complex for 1) in a new matrix;
// pivots receives LuSteps entries. The complex kernel's zero pivot is fatal.
Matrix *PackedLU(Matrix *a, std::vector<int> &pivots) {
  Matrix *w = MatDup(a);
  pivots.resize(velk_linalg::LuSteps(a->rows, a->cols));
  int failed = -1;
  ByElementType(a->cls, [&]<class T>(Type<T>) {
    failed = velk_linalg::LuFactor(a->rows, a->cols, Entries<T>(w), a->cols, pivots.data());
  });
  if (failed >= 0) {
    Label1("lu(%s(%dx%d))", a);
    MatError("C_Mat_LU()", "Zero division", a);
  }
  return w;
}

// L (unit diagonal) and U out of a packed LU.
template <class T>
void SplitLU(Matrix *w, Matrix *l, Matrix *u) {
  const int m = w->rows, n = w->cols, k = std::min(m, n);
  Matrix *lm = ZDef<T>(m, k), *um = ZDef<T>(k, n);
  const T *e = Entries<T>(w);
  for (int i = 0; i < m; i++)
    for (int j = 0; j < std::min(i, k); j++) Entries<T>(lm)[i * k + j] = e[i * n + j];
  for (int i = 0; i < k; i++) {
    Entries<T>(lm)[i * k + i] = T(1);
    for (int j = i; j < n; j++) Entries<T>(um)[i * n + j] = e[i * n + j];
  }
  Deliver(l, lm);
  Deliver(u, um);
}

void LuKernel(Matrix *a, Matrix *l, Matrix *u, int *pivots) {
  std::vector<int> p;
  Matrix *w = PackedLU(a, p);
  std::copy(p.begin(), p.end(), pivots);
  ByElementType(a->cls, [&]<class T>(Type<T>) { SplitLU<T>(w, l, u); });
  MatUndef(w);
}

// ---- inverse -----------------------------------------------------------------------

void ReportSingular(const char *location, Matrix *a, double tolerance, int count) {
  for (int i = 0; i < count; i++) {
    MatSetMessage("inv(%s(%dx%d), %G)", a->name, a->rows, a->cols, tolerance);
    if (tolerance < 0)
      MatError(location, "Singular: result may be inaccurate", a);
    else
      MatWarning(location, "Singular: result may be inaccurate", a);
  }
}

// ---- substitution ------------------------------------------------------------------

// The checks of the square solves (a square, b with as many rows, both real
// or complex), then a real operand beside a complex one made complex. False
// after the (fatal) report.
template <class F>
bool SolveOperands(const F &front, Matrix *&a, Matrix *&b) {
  if (a->rows != a->cols) {
    front.Fail("Not a square matrix", a, b);
    return false;
  }
  if (b->rows != a->rows) {
    front.Fail("Row number is not same", a, b);
    return false;
  }
  if (!IsMatrixClass(a) || !IsMatrixClass(b)) {
    front.BadClass(a, b);
    return false;
  }
  if (a->cls != b->cls) {
    a = Complexified(a);
    b = Complexified(b);
  }
  return true;
}

// X = T \ B for the lower (forward) or upper triangle of t: the checks of
// MatForSub and MatBackSub, then the kernel; an empty result when it fails.
Matrix *Substitute(const char *location, Matrix *t, Matrix *b, double tolerance, bool forward) {
  Front f{location, [=] { Label2("%s(%dx%d) \\ %s(%dx%d)", t, b); }};
  if (IsEmpty(t) || IsEmpty(b)) return f.Fail("Zero-size matrix", t, b);
  if (!SolveOperands(f, t, b)) return MatDef("", 0, 0);
  Matrix *x = MatDup(b);
  bool ok = true;
  ByElementType(t->cls, [&]<class T>(Type<T>) {
    const T *e = Entries<T>(t);
    T *xe = Entries<T>(x);
    ok = forward
             ? velk_linalg::ForwardSubstitute(t->rows, b->cols, e, t->cols, xe, b->cols, tolerance)
             : velk_linalg::BackSubstitute(t->rows, b->cols, e, t->cols, xe, b->cols, tolerance);
  });
  if (ok) return x;
  MatUndef(x);
  return MatDef("", 0, 0);
}

// ---- singular values ---------------------------------------------------------------

// The decomposition of a real or complex a into new matrices (u, v null:
// values only).
struct Decomposition {
  std::vector<double> s;
  Matrix *u = nullptr;
  Matrix *v = nullptr;
};

Decomposition Decompose(Matrix *a, bool vectors) {
  Decomposition d;
  const int m = a->rows, n = a->cols;
  d.s.resize(std::min(m, n));
  ByElementType(a->cls, [&]<class T>(Type<T>) {
    if (vectors) {
      d.u = Def<T>(m, m);
      d.v = Def<T>(n, n);
    }
    velk_linalg::Svd(m, n, Entries<T>(a), n, d.s.data(), vectors ? Entries<T>(d.u) : nullptr,
                     vectors ? Entries<T>(d.v) : nullptr);
  });
  return d;
}

// Leading values strictly above the tolerance.
int Above(const std::vector<double> &s, int count, double tolerance) {
  int r = 0;
  while (r < count && std::fabs(s[r]) > tolerance) r++;
  return r;
}

// The checks of a one-operand front: a real or complex class and, when asked,
// at least one row and one column. False after the (fatal) report.
template <class F>
bool Accepts(const F &front, Matrix *a, bool nonempty) {
  if (nonempty && IsEmpty(a)) {
    front.Fail("Zero-size matrix", a);
    return false;
  }
  if (!IsMatrixClass(a)) {
    front.BadClass(a);
    return false;
  }
  return true;
}

// A temporary named like m (so reports about it show the user's name).
Matrix *NamedLike(Matrix *copy, Matrix *m) { return MatSetName(copy, m->name); }

}  // namespace

// ---- LU and inverse ------------------------------------------------------------------

void Mat_LU(Matrix *a, Matrix *l, Matrix *u, int *pivots) { LuKernel(a, l, u, pivots); }
void C_Mat_LU(Matrix *a, Matrix *l, Matrix *u, int *pivots) { LuKernel(a, l, u, pivots); }

void MatLU(Matrix *a, Matrix *l, Matrix *u, Matrix *p) {
  Front f{"MatLU()", [=] { Label1("lu(%s(%dx%d))", a); }};
  if (!Accepts(f, a, true)) return;
  const bool real = ImagPartsZero(a);
  Matrix *x = real ? RealOf(a) : a;
  Matrix *lm = MatDef("", 0, 0), *um = MatDef("", 0, 0);
  std::vector<int> pivots(velk_linalg::LuSteps(a->rows, a->cols));
  if (x->cls == kReal)
    Mat_LU(x, lm, um, pivots.data());
  else
    C_Mat_LU(x, lm, um, pivots.data());
  Matrix *pm = MatIDef(a->rows);
  velk_linalg::LuPermute(static_cast<int>(pivots.size()), pivots.data(), a->rows, MatReal(pm),
                         a->rows);
  Deliver(l, real ? MatRealToComp(lm) : lm);
  Deliver(u, real ? MatRealToComp(um) : um);
  Deliver(p, pm);
}

Matrix *Mat_Inv(Matrix *result, Matrix *a, double *det, double tolerance) {
  velk_linalg::InverseStatus status =
      velk_linalg::GaussJordanInvert(result->rows, MatReal(result), std::fabs(tolerance), eps, det);
  ReportSingular("Mat_Inv()", a, tolerance, status.singular);
  return result;
}

Matrix *C_Mat_Inv(Matrix *result, Matrix *a, ComplexValue *det, double tolerance) {
  Complexd d;
  velk_linalg::InverseStatus status = velk_linalg::GaussJordanInvert(
      result->rows, Entries<Complexd>(result), std::fabs(tolerance), eps, &d);
  ReportSingular("C_Mat_Inv()", a, tolerance, status.singular);
  if (status.zero_division) {
    MatSetMessage("inv(%s(%dx%d), %G)", a->name, a->rows, a->cols, tolerance);
    MatError("C_Mat_Inv()", "Zero division", a);
  }
  *det = {d.real(), d.imag()};
  return result;
}

Matrix *MatInv(Matrix *a, double tolerance) {
  Front f{"MatInv()",
          [=] { MatSetMessage("inv(%s(%dx%d), %G)", a->name, a->rows, a->cols, tolerance); }};
  if (a->rows != a->cols) return f.Fail("Not a square matrix", a);
  if (!IsMatrixClass(a)) return f.BadClass(a);
  if (a->rows == 0) return MatDup(a);
  if (a->cls == kComplex && !ImagPartsZero(a)) {
    ComplexValue det;
    return C_Mat_Inv(MatDup(a), a, &det, tolerance);
  }
  Matrix *x = a->cls == kReal ? a : RealOf(a);
  double det;
  Matrix *inverse = Mat_Inv(MatDup(x), x, &det, tolerance);
  return a->cls == kReal ? inverse : MatRealToComp(inverse);
}

// ---- solves ----------------------------------------------------------------------------

Matrix *MatForSub(Matrix *l, Matrix *b, double tolerance) {
  return Substitute("MatForSub()", l, b, tolerance, true);
}

Matrix *MatBackSub(Matrix *u, Matrix *b, double tolerance) {
  return Substitute("MatBackSub()", u, b, tolerance, false);
}

Matrix *MatLUSolve(Matrix *a, Matrix *b, double tolerance) {
  Front f{"MatLUSolve()", [=] { Label2("%s(%dx%d) \\ %s(%dx%d)", a, b); }};
  if (!SolveOperands(f, a, b)) return MatDef("", 0, 0);
  std::vector<int> pivots;
  Matrix *w = PackedLU(a, pivots), *x = MatDup(b);
  const int n = a->rows, k = b->cols;
  bool ok = true;
  ByElementType(a->cls, [&]<class T>(Type<T>) {
    T *xe = Entries<T>(x);
    const T *lu = Entries<T>(w);
    velk_linalg::LuPermute(static_cast<int>(pivots.size()), pivots.data(), k, xe, k);
    ok = velk_linalg::ForwardSubstitute(n, k, lu, n, xe, k, tolerance, true) &&
         velk_linalg::BackSubstitute(n, k, lu, n, xe, k, tolerance);
  });
  MatUndef(w);
  if (!ok) return f.Fail("Singular", a, b);
  return x;
}

Matrix *MatLeastSquare(Matrix *a, Matrix *b, double tolerance) {
  Front f{"MatLeastSquare()", [=] { Label2("%s(%dx%d) * %s(%dx%d)", a, b); }};
  if (!IsMatrixClass(a) || !IsMatrixClass(b)) return f.BadClass(a, b);
  if (a->rows != b->rows) return f.Fail("Row number is not same", a, b);
  return MatMul(NamedLike(MatPseudoInv(a, tolerance), a), b);
}

Matrix *MatLeftDiv(Matrix *a, Matrix *b, double tolerance) {
  return a->rows == a->cols ? MatLUSolve(a, b, tolerance) : MatLeastSquare(a, b, tolerance);
}

Matrix *MatRightDiv(Matrix *b, Matrix *a, double tolerance) {
  Matrix *x = MatLeftDiv(NamedLike(MatTrans(a), a), NamedLike(MatTrans(b), b), tolerance);
  return MatTrans(x);
}

// ---- determinant -----------------------------------------------------------------------

double MatDeterm(Matrix *a) {
  Front f{"MatDeterm()", [=] { Label1("det(%s(%dx%d))", a); }};
  if (IsEmpty(a)) {
    f.Fail("Zero-size matrix", a);
    return 0;
  }
  if (a->cls != kReal) {
    f.Fail("Not a real matrix", a);
    return 0;
  }
  if (a->rows != a->cols) {
    f.Fail("Not a square matrix", a);
    return 0;
  }
  std::vector<int> pivots;
  Matrix *w = PackedLU(a, pivots);
  double det = velk_linalg::LuDeterminant(a->rows, MatReal(w), a->cols, pivots.data());
  MatUndef(w);
  return det;
}

Complex *C_MatDeterm(Matrix *a) {
  Front f{"C_MatDeterm()", [=] { Label1("determ(%s(%dx%d))", a); }};
  if (a->cls != kComplex) {
    f.Fail("Not a complex matrix", a);
    return CompDef("", 0, 0);
  }
  if (a->rows != a->cols) {
    f.Fail("Not a square matrix", a);
    return CompDef("", 0, 0);
  }
  // Through the LU: its checks, and the real kernel when it serves.
  if (IsEmpty(a)) {
    Front{"MatLU()", [=] { Label1("lu(%s(%dx%d))", a); }}.Fail("Zero-size matrix", a);
    return CompDef("", 0, 0);
  }
  Matrix *x = ImagPartsZero(a) ? RealOf(a) : a;
  std::vector<int> pivots;
  Matrix *w = PackedLU(x, pivots);
  Complexd det;
  ByElementType(x->cls, [&]<class T>(Type<T>) {
    det = velk_linalg::LuDeterminant(a->rows, Entries<T>(w), a->cols, pivots.data());
  });
  MatUndef(w);
  return CompDef("", det.real(), det.imag());
}

// ---- singular values -------------------------------------------------------------------

double MatFrobNorm(Matrix *a) {
  Front f{"MatFrobNorm()", [=] { Label1("frobnorm(%s(%dx%d))", a); }};
  if (!Accepts(f, a, false)) return 0;
  // A complex matrix read as pairs of doubles gives the same sum.
  return velk_linalg::FrobeniusNorm(MatReal(a), MatCount(a) * (a->cls == kComplex ? 2 : 1));
}

void MatSVD(Matrix *a, Matrix *u, Matrix *s, Matrix *v) {
  Front f{"MatSVD()", [=] { Label1("svd(%s(%dx%d))", a); }};
  if (!Accepts(f, a, false)) return;
  Decomposition d = Decompose(a, true);
  Matrix *sm = MatZDef2(a->rows, a->cols);
  for (int k = 0; k < static_cast<int>(d.s.size()); k++) MatReal(sm)[k * a->cols + k] = d.s[k];
  Deliver(u, d.u);
  Deliver(s, sm);
  Deliver(v, d.v);
}

Matrix *MatSingVal(Matrix *a) {
  Front f{"MatSingVal()", [=] { Label1("singval(%s(%dx%d))", a); }};
  if (!Accepts(f, a, false)) return MatDef("", 0, 0);
  Decomposition d = Decompose(a, false);
  Matrix *s = MatDef("", static_cast<int>(d.s.size()), 1);
  std::copy(d.s.begin(), d.s.end(), MatReal(s));
  return s;
}

int MatRank(Matrix *a, double tolerance) {
  const double tol = DefaultTolerance(a, tolerance);
  Front f{"MatRank()",
          [=] { MatSetMessage("rank(%s(%dx%d), %G)", a->name, a->rows, a->cols, tol); }};
  if (!IsMatrixClass(a)) {
    f.Fail("Not a real nor complex matrix", a);
    return 0;
  }
  // The values of a wide matrix are those of its transpose.
  Decomposition d = Decompose(a, false);
  if (d.s.empty() || tol >= d.s[0]) return 0;
  return Above(d.s, static_cast<int>(d.s.size()), tol);
}

Matrix *MatPseudoInv(Matrix *a, double tolerance) {
  const double tol = DefaultTolerance(a, tolerance);
  Front f{"MatPseudoInv()",
          [=] { MatSetMessage("pseudoinv(%s(%dx%d), %G)", a->name, a->rows, a->cols, tol); }};
  if (!Accepts(f, a, true)) return MatDef("", 0, 0);
  const int m = a->rows, n = a->cols;
  Decomposition d = Decompose(a, true);
  const int r = std::fabs(d.s[0]) <= tol ? 0 : Above(d.s, static_cast<int>(d.s.size()), tol);
  Matrix *x = nullptr;
  ByElementType(a->cls, [&]<class T>(Type<T>) {
    // V(:, 1:r) / s times U(:, 1:r)'.
    std::vector<T> vs(static_cast<size_t>(n) * r), uh(static_cast<size_t>(r) * m);
    const T *ue = Entries<T>(d.u), *ve = Entries<T>(d.v);
    for (int i = 0; i < n; i++)
      for (int k = 0; k < r; k++) vs[i * r + k] = ve[i * n + k] / d.s[k];
    for (int k = 0; k < r; k++)
      for (int j = 0; j < m; j++) uh[k * m + j] = velk_linalg::Conj(ue[j * m + k]);
    x = Def<T>(n, m);
    velk_linalg::Gemm(GemmMode::kSet, n, m, r, vs.data(), r, uh.data(), m, Entries<T>(x), m);
  });
  MatUndef(d.u);
  MatUndef(d.v);
  return x;
}

Matrix *MatKernel(Matrix *a, double tolerance) {
  const double tol = DefaultTolerance(a, tolerance);
  Front f{"MatKernel()",
          [=] { MatSetMessage("kernel(%s(%dx%d), %G)", a->name, a->rows, a->cols, tol); }};
  if (!Accepts(f, a, true)) return MatDef("", 0, 0);
  const int rows = a->rows, n = a->cols;
  // A wide matrix is extended below by zero rows to n x n.
  Matrix *x = a;
  if (rows < n) {
    x = MatSameClassZDef(a, n, n);
    ByElementType(
        a->cls, [&]<class T>(Type<T>) { std::copy_n(Entries<T>(a), MatCount(a), Entries<T>(x)); });
  }
  Decomposition d = Decompose(x, true);
  const int r = Above(d.s, std::min(x->rows, n), tol);
  Matrix *k;
  if (r == std::max(n, rows)) {
    k = MatDef("", 0, 0);
  } else {
    k = MatSameClassDef(a, n, n - r);
    ByElementType(a->cls, [&]<class T>(Type<T>) {
      for (int i = 0; i < n; i++)
        std::copy_n(Entries<T>(d.v) + i * n + r, n - r, Entries<T>(k) + i * (n - r));
    });
  }
  MatUndef(d.u);
  MatUndef(d.v);
  if (x != a) MatUndef(x);
  return k;
}

// ---- QR --------------------------------------------------------------------------------

void MatQR(Matrix *a, Matrix *q, Matrix *r) {
  Front f{"MatQR()", [=] { Label1("qr(%s(%dx%d))", a); }};
  if (!Accepts(f, a, true)) return;
  Matrix *qm = MatSameClassDef(a, a->rows, a->rows), *rm = MatSameDef(a);
  ByElementType(a->cls, [&]<class T>(Type<T>) {
    velk_linalg::HouseholderQr(a->rows, a->cols, Entries<T>(a), a->cols, Entries<T>(qm),
                               Entries<T>(rm));
  });
  Deliver(q, qm);
  Deliver(r, rm);
}
