// Eigen fronts and the kernels with matrix arguments: they check, describe
// the expression, lay the operand out for the raw kernels of linalg/, and
// bring the results back in this library's order and shapes.
#include "matrix/eigen.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "core/alloc.h"
#include "core/constructors.h"
#include "linalg/eigen_kernels.h"
#include "matrix/block.h"
#include "matrix/frontend.h"
#include "matrix/operations.h"

using namespace velk_matrix;

namespace {

// Work arrays of a kernel from the guarded allocator, given back when the
// kernel ends or, explicitly, before it reports.
class Work {
 public:
  Work() = default;
  Work(const Work &) = delete;
  Work &operator=(const Work &) = delete;
  ~Work() { Release(); }
  double *Take(long long count) {
    void *p = emalloc_array(count, sizeof(double));
    if (p != nullptr) blocks_.push_back(p);
    return static_cast<double *>(p);
  }
  void Release() {
    for (void *p : blocks_) efree(p);
    blocks_.clear();
  }

 private:
  std::vector<void *> blocks_;
};

long long Square(int n) { return static_cast<long long>(n) * n; }
// Offset of (i, j), from 0, in an n-column array stored row by row (of (j, i)
// in one stored column by column).
long long At(int i, int j, int n) { return static_cast<long long>(i) * n + j; }

void NotConverge(Work &work, const char *kernel, const char *format, Matrix *a) {
  work.Release();
  Label1(format, a);
  MatError(kernel, "Solution will not converge", a);
}

// ---- layouts -----------------------------------------------------------------

// The parts of a complex a in two new work arrays, each row by row.
std::pair<double *, double *> Parts(Work &work, Matrix *a) {
  double *re = work.Take(MatCount(a)), *im = work.Take(MatCount(a));
  const Complexd *e = Entries<Complexd>(a);
  for (long long k = 0; k < MatCount(a); k++) {
    re[k] = e[k].real();
    im[k] = e[k].imag();
  }
  return {re, im};
}

// Row-by-row parts into the complex c; with below, only the entries on or
// above diagonal (i - j <= below) are kept, the rest become exact zeros.
void Merge(Matrix *c, const double *re, const double *im, int below) {
  Complexd *e = Entries<Complexd>(c);
  for (int i = 0; i < c->rows; i++)
    for (int j = 0; j < c->cols; j++) {
      long long k = At(i, j, c->cols);
      e[k] = i - j <= below ? Complexd(re[k], im ? im[k] : 0.0) : Complexd(0.0);
    }
}

// A square array stored column by column into the row-by-row storage of u
// (real), or of u's complex entries from the parts (zr, zi).
void FromColumns(Matrix *u, const double *z) {
  int n = u->rows;
  for (int j = 0; j < n; j++)
    for (int i = 0; i < n; i++) MatReal(u)[At(i, j, n)] = z[At(j, i, n)];
}
void FromColumns(Matrix *u, const double *zr, const double *zi) {
  int n = u->rows;
  Complexd *e = Entries<Complexd>(u);
  for (int j = 0; j < n; j++)
    for (int i = 0; i < n; i++) {
      long long k = At(j, i, n);
      e[At(i, j, n)] = Complexd(zr[k], zi[k]);
    }
}

// ---- order -------------------------------------------------------------------

// Where each place takes its eigenvalue from (EigenOrder).
std::vector<int> Order(int n, const double *wr, const double *wi) {
  std::vector<int> from(n);
  EigenOrder(n, wr, wi, from.data());
  return from;
}

// The eigenvalues into the n x 1 values, in the order of from (or as they
// are); wi null for real ones.
void PutValues(Matrix *values, const double *wr, const double *wi,
               const std::vector<int> *from = nullptr) {
  Complexd *v = Entries<Complexd>(values);
  for (int j = 0; j < values->rows; j++) {
    int k = from ? (*from)[j] : j;
    v[j] = Complexd(wr[k], wi ? wi[k] : 0.0);
  }
}

// The vectors of hqr2 (real column j, or the pair j, j + 1 as z(:, j) +-
// i z(:, j + 1)), each of unit length, into the columns of vectors in order.
void PutRealVectors(Matrix *vectors, const std::vector<int> &from, const double *z,
                    const double *wi) {
  int n = vectors->rows;
  Complexd *v = Entries<Complexd>(vectors);
  for (int jo = 0; jo < n; jo++) {
    int j = from[jo];
    // The columns holding the real and the imaginary part, and the sign.
    int re = wi[j] < 0.0 ? j - 1 : j;
    int im = wi[j] > 0.0 ? j + 1 : wi[j] < 0.0 ? j : -1;
    double sign = wi[j] < 0.0 ? -1.0 : 1.0;
    const double *zr = z + At(re, 0, n), *zi = im < 0 ? nullptr : z + At(im, 0, n);
    double sum = 0.0;
    for (int i = 0; i < n; i++) sum += zr[i] * zr[i] + (zi ? zi[i] * zi[i] : 0.0);
    double norm = std::sqrt(sum);
    for (int i = 0; i < n; i++)
      v[At(i, jo, n)] = Complexd(zr[i] / norm, zi ? sign * zi[i] / norm : 0.0);
  }
}

void PutComplexVectors(Matrix *vectors, const std::vector<int> &from, const double *zr,
                       const double *zi) {
  int n = vectors->rows;
  Complexd *v = Entries<Complexd>(vectors);
  for (int jo = 0; jo < n; jo++) {
    long long src = At(from[jo], 0, n);
    for (int i = 0; i < n; i++) v[At(i, jo, n)] = Complexd(zr[src + i], zi[src + i]);
  }
}

// The values in the order of EigenOrder; put(from) writes the vector columns
// in the same order.
template <class Put>
void PutOrdered(Matrix *values, const double *wr, const double *wi, Put put) {
  std::vector<int> from = Order(values->rows, wr, wi);
  PutValues(values, wr, wi, &from);
  put(from);
}

// ---- dispatch ----------------------------------------------------------------

enum class Path { kReal, kRealValued, kComplex, kFailed };

bool ImagAllZero(Matrix *a) {
  const Complexd *e = Entries<Complexd>(a);
  for (long long k = 0; k < MatCount(a); k++)
    if (e[k].imag() != 0.0) return false;
  return true;
}

// The checks of every front, then the path its operand takes.
template <class F>
Path Route(const F &front, Matrix *a) {
  if (a->rows == 0 || a->cols == 0) {
    front.Fail("Zero-size matrix", a);
    return Path::kFailed;
  }
  if (a->rows != a->cols) {
    front.Fail("Not a square matrix", a);
    return Path::kFailed;
  }
  if (a->cls == kReal) return Path::kReal;
  if (a->cls == kComplex) return ImagAllZero(a) ? Path::kRealValued : Path::kComplex;
  front.BadClass(a);
  return Path::kFailed;
}

// The operand of the real kernel: a itself, or the real parts of a complex a
// under its name (so a kernel's report still names it).
Matrix *RealOperand(Matrix *a) {
  return a->cls == kReal ? a : MatSetName(MatRealPart(a), a->name);
}

Matrix *Empty() { return MatDef("", 0, 0); }

// A result of the real path brought to a complex operand's class.
Matrix *LikeOperand(Matrix *a, Matrix *m) {
  if (a->cls == kReal) return m;
  Matrix *c = MatRealToComp(m);
  MatUndef(m);
  return MatSetName(c, "");
}

void Give(Matrix **place, Matrix *m) {
  if (place != nullptr)
    *place = m;
  else
    MatUndef(m);
}

// The two results of a front: computed by run(x, y) on the path's operand,
// or empty when a check failed (reached only when a harness intercepts).
template <class F, class Run>
void TwoResults(const F &front, Matrix *a, Matrix **x, Matrix **y, Run run) {
  Path path = Route(front, a);
  Matrix *rx = nullptr, *ry = nullptr;
  if (path == Path::kFailed) {
    rx = Empty();
    ry = Empty();
  } else {
    Matrix *m = path == Path::kComplex ? a : RealOperand(a);
    run(path, m, rx, ry);
    if (m != a) MatUndef(m);
  }
  Give(x, rx);
  Give(y, ry);
}

}  // namespace

// ---- result records -------------------------------------------------------------

Matrix *MatEigValDef(Matrix *a) {
  MatCheckSquare(a, "MatEigValDef()");
  return C_MatDef("", a->rows, 1);
}

Matrix *MatEigVecDef(Matrix *a) {
  MatCheckSquare(a, "MatEigVecDef()");
  return C_MatDef("", a->rows, a->rows);
}

// ---- real kernels ------------------------------------------------------------------

void Mat_Eig(Matrix *values, Matrix *vectors, Matrix *a) {
  int n = a->rows, low, igh;
  Work work;
  double *h = work.Take(Square(n)), *z = work.Take(Square(n));
  double *wr = work.Take(n), *wi = work.Take(n), *scale = work.Take(n), *ort = work.Take(n);
  std::copy(MatReal(a), MatReal(a) + Square(n), h);
  balanc(n, h, true, &low, &igh, scale);
  orthes(n, low, igh, h, ort);
  ortran(n, low, igh, h, ort, z);
  if (hqr2(n, low, igh, h, wr, wi, z, eps, false) != 0)
    return NotConverge(work, "Mat_Eig()", "eig(%s(%dx%d))", a);
  balbak(n, low, igh, scale, n, z);
  PutOrdered(values, wr, wi, [&](const std::vector<int> &from) {
    PutRealVectors(vectors, from, z, wi);
  });
}

void Mat_EigVal(Matrix *values, Matrix *a) {
  int n = a->rows;
  Work work;
  double *h = work.Take(Square(n)), *wr = work.Take(n), *wi = work.Take(n);
  std::copy(MatReal(a), MatReal(a) + Square(n), h);
  if (RealEigenvalues(n, h, wr, wi, eps) != 0)
    return NotConverge(work, "Mat_EigVal()", "eigval(%s(%dx%d))", a);
  PutValues(values, wr, wi);
}

void Mat_Schur(Matrix *t, Matrix *u, Matrix *a) {
  int n = a->rows;
  Work work;
  double *z = work.Take(Square(n)), *wr = work.Take(n), *wi = work.Take(n), *ort = work.Take(n);
  double *h = MatReal(t);
  std::copy(MatReal(a), MatReal(a) + Square(n), h);
  orthes(n, 1, n, h, ort);
  ortran(n, 1, n, h, ort, z);
  if (hqr2(n, 1, n, h, wr, wi, z, eps, true) != 0)
    return NotConverge(work, "Mat_Schur()", "schur(%s(%dx%d))", a);
  FromColumns(u, z);
}

// ---- complex kernels ---------------------------------------------------------------

void C_Mat_Eig(Matrix *values, Matrix *vectors, Matrix *a) {
  int n = a->rows, low, igh;
  Work work;
  auto [hr, hi] = Parts(work, a);
  double *zr = work.Take(Square(n)), *zi = work.Take(Square(n));
  double *wr = work.Take(n), *wi = work.Take(n), *scale = work.Take(n);
  double *ortr = work.Take(n), *orti = work.Take(n);
  cbal(n, hr, hi, true, &low, &igh, scale);
  corth(n, low, igh, hr, hi, ortr, orti);
  if (comqr2(n, low, igh, ortr, orti, hr, hi, wr, wi, zr, zi, eps, false) != 0)
    return NotConverge(work, "C_Mat_Eig()", "eig(%s(%dx%d))", a);
  cbabk2(n, low, igh, scale, n, zr, zi);
  PutOrdered(values, wr, wi, [&](const std::vector<int> &from) {
    PutComplexVectors(vectors, from, zr, zi);
  });
}

void C_Mat_EigVal(Matrix *values, Matrix *a) {
  int n = a->rows;
  Work work;
  auto [hr, hi] = Parts(work, a);
  double *wr = work.Take(n), *wi = work.Take(n);
  if (ComplexEigenvalues(n, hr, hi, wr, wi, eps) != 0)
    return NotConverge(work, "C_Mat_EigVal()", "eigval(%s(%dx%d))", a);
  PutValues(values, wr, wi);
}

void C_Mat_Schur(Matrix *t, Matrix *u, Matrix *a) {
  int n = a->rows;
  Work work;
  auto [hr, hi] = Parts(work, a);
  double *zr = work.Take(Square(n)), *zi = work.Take(Square(n));
  double *wr = work.Take(n), *wi = work.Take(n), *ortr = work.Take(n), *orti = work.Take(n);
  corth(n, 1, n, hr, hi, ortr, orti);
  if (comqr2(n, 1, n, ortr, orti, hr, hi, wr, wi, zr, zi, eps, true) != 0)
    return NotConverge(work, "C_Mat_Schur()", "schur(%s(%dx%d))", a);
  Merge(t, hr, hi, 0);
  FromColumns(u, zr, zi);
}

void C_Mat_HermitEig(Matrix *values, Matrix *vectors, Matrix *a) {
  int n = a->rows;
  Work work;
  auto [ar, ai] = Parts(work, a);
  double *zr = work.Take(Square(n)), *zi = work.Take(Square(n));
  double *d = work.Take(n), *e = work.Take(n), *e2 = work.Take(n), *tau = work.Take(2 * n);
  htridi(n, ar, ai, d, e, e2, tau);
  std::fill(zr, zr + Square(n), 0.0);
  for (int j = 0; j < n; j++) zr[At(j, j, n)] = 1.0;
  if (tql2(n, d, e, zr, eps) != 0)
    return NotConverge(work, "C_Mat_HermitEig()", "heig(%s(%dx%d))", a);
  htribk(n, ar, ai, tau, n, zr, zi);
  PutOrdered(values, d, nullptr, [&](const std::vector<int> &from) {
    PutComplexVectors(vectors, from, zr, zi);
  });
}

// ---- fronts --------------------------------------------------------------------------

void MatEig(Matrix *a, Matrix **values, Matrix **vectors) {
  Front f{"MatEig()", [=] { Label1("eig(%s(%dx%d))", a); }};
  TwoResults(f, a, values, vectors, [&](Path path, Matrix *m, Matrix *&val, Matrix *&vec) {
    val = MatEigValDef(m);
    vec = MatEigVecDef(m);
    if (path == Path::kComplex)
      C_Mat_Eig(val, vec, m);
    else
      Mat_Eig(val, vec, m);
  });
}

Matrix *MatEigVal(Matrix *a) {
  Front f{"MatEigVal()", [=] { Label1("eigval(%s(%dx%d))", a); }};
  Path path = Route(f, a);
  if (path == Path::kFailed) return Empty();
  Matrix *m = path == Path::kComplex ? a : RealOperand(a);
  Matrix *val = MatEigValDef(m);
  if (path == Path::kComplex)
    C_Mat_EigVal(val, m);
  else
    Mat_EigVal(val, m);
  if (m != a) MatUndef(m);
  return val;
}

Matrix *MatEigVec(Matrix *a) {
  Front f{"MatEigVec()", [=] { Label1("eigvec(%s(%dx%d))", a); }};
  if (Route(f, a) == Path::kFailed) return Empty();
  Matrix *vec;
  MatEig(a, nullptr, &vec);
  return vec;
}

Matrix *MatEigValVec(Matrix *a) {
  Front f{"MatEigValVec()", [=] { Label1("eig(%s(%dx%d))", a); }};
  if (Route(f, a) == Path::kFailed) return Empty();
  Matrix *val, *vec;
  MatEig(a, &val, &vec);
  Matrix *joined = MatCatRow(val, vec);
  MatUndef(val);
  MatUndef(vec);
  return joined;
}

void MatHermitEig(Matrix *a, Matrix **values, Matrix **vectors) {
  Front f{"MatHermitEig()", [=] { Label1("heig(%s(%dx%d))", a); }};
  Matrix *val = nullptr, *vec = nullptr;
  if (a->rows == 0 || a->cols == 0) {
    val = f.Fail("Zero-size matrix", a);
  } else if (a->rows != a->cols) {
    val = f.Fail("Not a square matrix", a);
  } else if (a->cls != kComplex) {
    val = f.Fail("Not a complex matrix", a);
  } else {
    val = MatEigValDef(a);
    vec = MatEigVecDef(a);
    C_Mat_HermitEig(val, vec, a);
  }
  Give(values, val);
  Give(vectors, vec != nullptr ? vec : Empty());
}

void MatBalance(Matrix *a, Matrix **d, Matrix **b) {
  Front f{"MatBalance()", [=] { Label1("balance(%s(%dx%d))", a); }};
  TwoResults(f, a, d, b, [&](Path path, Matrix *m, Matrix *&rd, Matrix *&rb) {
    int n = m->rows, low, igh;
    Work work;
    double *scale = work.Take(n);
    if (path == Path::kComplex) {
      auto [ar, ai] = Parts(work, m);
      cbal(n, ar, ai, false, &low, &igh, scale);
      rb = C_MatDef("", n, n);
      Merge(rb, ar, ai, n);
    } else {
      rb = MatDup(m);
      balanc(n, MatReal(rb), false, &low, &igh, scale);
      rb = LikeOperand(a, MatSetName(rb, ""));
    }
    rd = MatZDef(n);
    for (int i = 0; i < n; i++) MatReal(rd)[At(i, i, n)] = scale[i];
  });
}

void MatHessenberg(Matrix *a, Matrix **h, Matrix **p) {
  Front f{"MatHessenberg()", [=] { Label1("hess(%s(%dx%d))", a); }};
  TwoResults(f, a, h, p, [&](Path path, Matrix *m, Matrix *&rh, Matrix *&rp) {
    int n = m->rows;
    Work work;
    if (path == Path::kComplex) {
      auto [ar, ai] = Parts(work, m);
      double *zr = work.Take(Square(n)), *zi = work.Take(Square(n));
      double *ortr = work.Take(n), *orti = work.Take(n);
      corth(n, 1, n, ar, ai, ortr, orti);
      corth_accumulate(n, 1, n, ar, ai, ortr, orti, zr, zi);
      rh = C_MatDef("", n, n);
      Merge(rh, ar, ai, 1);
      rp = C_MatDef("", n, n);
      FromColumns(rp, zr, zi);
      return;
    }
    double *z = work.Take(Square(n)), *ort = work.Take(n);
    Matrix *hr = MatDef("", n, n);
    std::copy(MatReal(m), MatReal(m) + Square(n), MatReal(hr));
    orthes(n, 1, n, MatReal(hr), ort);
    ortran(n, 1, n, MatReal(hr), ort, z);
    for (int i = 2; i < n; i++)
      for (int j = 0; j < i - 1; j++) MatReal(hr)[At(i, j, n)] = 0.0;
    Matrix *pr = MatDef("", n, n);
    FromColumns(pr, z);
    rh = LikeOperand(a, hr);
    rp = LikeOperand(a, pr);
  });
}

void MatSchur(Matrix *a, Matrix **t, Matrix **u) {
  Front f{"MatSchur()", [=] { Label1("schur(%s(%dx%d))", a); }};
  TwoResults(f, a, t, u, [&](Path path, Matrix *m, Matrix *&rt, Matrix *&ru) {
    int n = m->rows;
    if (path == Path::kComplex) {
      rt = C_MatDef("", n, n);
      ru = C_MatDef("", n, n);
      C_Mat_Schur(rt, ru, m);
      return;
    }
    rt = MatDef("", n, n);
    ru = MatDef("", n, n);
    Mat_Schur(rt, ru, m);
    rt = LikeOperand(a, rt);
    ru = LikeOperand(a, ru);
  });
}
