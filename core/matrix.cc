#include "core/matrix.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "core/alloc.h"
#include "core/registry.h"
#include "core/scope.h"

double eps = 2.22044605e-16;

namespace {

constexpr int kClasses = 6;

Registry<Matrix> reg;
int bound = 1000;  // records with more elements than this are never pooled

// Classes 3 and 5 are definitions of classes 2 and 4 with the class set
// after, so they draw from and return to the same stacks.
int Slot(long long n, int cls) {
  if (n > bound || !IsValidClass(cls)) return -1;
  if (HasElementObjects(cls)) cls = ClassOf(ClassKind(cls), false);
  return static_cast<int>(n) * kClasses + cls;
}

int ElementSize(int cls) {
  if (cls == kReal) return sizeof(double);
  if (cls == kComplex) return 2 * sizeof(double);
  return sizeof(void *);
}

// ---- element objects of the polynomial and rational classes ----

// Indexed by ClassKind: nothing for the matrix classes, then polynomials and
// rationals once their files lend their operations.
MatElementKind element_kinds[3];

const MatElementKind &ElementKindOf(int cls) {
  const MatElementKind &k = element_kinds[ClassKind(cls)];
  if (k.make == nullptr) RuntimeError("MatDef()", "Element objects of this class are not linked in", 1);
  return k;
}

void *NewElement(int cls, bool zero) { return ElementKindOf(cls).make(cls, zero); }

void **Slots(Matrix *m) { return static_cast<void **>(m->elements); }

void ReleaseElements(Matrix *m) {
  if (!HasElementObjects(m->cls) || m->elements == nullptr) return;
  long long n = MatCount(m);
  for (long long k = 0; k < n; k++) {
    MatElementRelease(m->cls, Slots(m)[k]);
    Slots(m)[k] = nullptr;
  }
}

void *NewStorage(long long n, int cls, bool zero) {
  void *s = emalloc_array(n, ElementSize(cls));
  if (s == nullptr) return nullptr;
  if (HasElementObjects(cls)) {
    void **e = static_cast<void **>(s);
    for (long long k = 0; k < n; k++) e[k] = NewElement(cls, zero);
  } else if (zero) {
    memset(s, 0, static_cast<size_t>(n) * static_cast<size_t>(ElementSize(cls)));
  }
  return s;
}

void FreeStorage(Matrix *m) {
  ReleaseElements(m);
  if (m->elements != nullptr) efree(m->elements);
  m->elements = nullptr;
}

// Pushes a record that is on no list into the pool, or frees it when its
// shape is beyond the bound.
void PoolOrFree(Matrix *m) {
  int slot = Slot(MatCount(m), m->cls);
  m->status = kTemporary;
  if (slot < 0) {
    FreeStorage(m);
    if (m->name != nullptr) efree(m->name);
    efree(m);
    return;
  }
  reg.Push(slot, m);
}

Matrix *Define(const char *name, int rows, int cols, int cls, bool zero) {
  long long n = static_cast<long long>(rows) * cols;
  Matrix *m = reg.Take(Slot(n, cls));
  if (m != nullptr) {
    if (zero) {
      if (HasElementObjects(cls)) {
        ReleaseElements(m);
        for (long long k = 0; k < n; k++) Slots(m)[k] = NewElement(cls, true);
      } else if (n > 0) {
        memset(m->elements, 0, static_cast<size_t>(n) * static_cast<size_t>(ElementSize(cls)));
      }
    }
  } else {
    m = reg.Obtain(Slot(0, cls));
    m->elements = NewStorage(n, cls, zero);
  }
  reg.Append(m);
  m->rows = rows;
  m->cols = cols;
  m->status = kTemporary;
  m->cls = cls;
  SetRecordName(&m->name, name);
  return m;
}

Matrix *DefineChecked(const char *name, int rows, int cols, int cls, bool zero,
                      const char *location) {
  MatInit();
  if (rows < 0 || cols < 0) {
    if (strcmp(location, "MatDef()") == 0)
      MatSetMessage("MatDef(\"%s\", %d, %d)", name != nullptr ? name : "", rows, cols);
    MatError(location, "Not appropriate column or row number", nullptr);
    rows = cols = 0;
  }
  return Define(name, rows, cols, cls, zero);
}

}  // namespace

bool MatSetElementKind(int kind, const MatElementKind &ops) {
  element_kinds[kind] = ops;
  return true;
}

void *MatElementDup(int cls, void *e) { return ElementKindOf(cls).dup(e); }

void MatElementRelease(int cls, void *e) {
  if (e != nullptr) ElementKindOf(cls).release(e);
}

void SetRecordName(char **name, const char *text) {
  if (text == nullptr) text = "";
  size_t n = strlen(text);
  if (*name != nullptr && strlen(*name) != n) {
    efree(*name);
    *name = nullptr;
  }
  if (*name == nullptr) *name = static_cast<char *>(emalloc(static_cast<int>(n + 1)));
  memcpy(*name, text, n + 1);
}

int MatPoolLimit() { return reg.limit; }
int MatPoolBound() { return bound; }

void MatInit() {
  if (reg.Ready()) return;
  Matrix *head = static_cast<Matrix *>(emalloc(sizeof(Matrix)));
  memset(head, 0, sizeof(Matrix));
  head->name = StringDup("TOPMAT");
  head->status = kMark;
  head->elements = emalloc(sizeof(double));  // allocated, never read
  reg.limit = EnvLimit("MATRIX_TABLE_MAX", 0, 0);
  bound = EnvLimit("MATRIX_SIZE_MAX", 1000, 1000);
  reg.Start(head, (bound + 1) * kClasses);
  MatMessageBuffer[0] = '\0';
}

Matrix *MatDefClass(const char *name, int rows, int cols, int cls, const char *location) {
  return DefineChecked(name, rows, cols, cls, false, location);
}
Matrix *MatDef(const char *name, int rows, int cols) {
  return DefineChecked(name, rows, cols, kReal, false, "MatDef()");
}
Matrix *C_MatDef(const char *name, int rows, int cols) {
  return DefineChecked(name, rows, cols, kComplex, false, "C_MatDef()");
}
Matrix *P_MatDef(const char *name, int rows, int cols) {
  return DefineChecked(name, rows, cols, kPoly, false, "P_MatDef()");
}
Matrix *R_MatDef(const char *name, int rows, int cols) {
  return DefineChecked(name, rows, cols, kRat, false, "R_MatDef()");
}
Matrix *MatSetClass(Matrix *m, int cls) {
  m->cls = cls;
  return m;
}
// Classes 3 and 5 come from a definition of 2 or 4 with the class set after.
static const char *const kDefLocation[kClasses] = {"MatDef()",   "C_MatDef()", "P_MatDef()",
                                                   "P_MatDef()", "R_MatDef()", "R_MatDef()"};

static Matrix *SameClass(Matrix *m, int rows, int cols, bool zero, const char *location) {
  if (!IsValidClass(m->cls)) {
    MatError(location, "Incorrect class matrix", m);
    return MatDef("", 0, 0);
  }
  return DefineChecked("", rows, cols, m->cls, zero, kDefLocation[m->cls]);
}

Matrix *MatZDefClass(int cls, int rows, int cols) {
  if (!IsValidClass(cls)) {
    MatError("MatZDefClass()", "Incorrect class matrix", nullptr);
    return MatDef("", 0, 0);
  }
  return DefineChecked("", rows, cols, cls, true, kDefLocation[cls]);
}

Matrix *MatSameClassDef(Matrix *m, int rows, int cols) {
  return SameClass(m, rows, cols, false, "MatSameClassDef()");
}
Matrix *MatSameClassZDef(Matrix *m, int rows, int cols) {
  return SameClass(m, rows, cols, true, "MatSameClassZDef()");
}
Matrix *MatSameClassZDefSize(Matrix *m) { return MatSameClassZDef(m, m->rows, m->cols); }
Matrix *MatSameDef(Matrix *m) { return SameClass(m, m->rows, m->cols, false, "MatSameDef()"); }
Matrix *MatTransDef(Matrix *m) { return SameClass(m, m->cols, m->rows, false, "MatTransDef()"); }

Matrix *MatMulDef(Matrix *a, Matrix *b) {
  if (b->rows != a->cols) {
    MatError2("MatMulDef()", "Size Error", a, b);
    return MatDef("", 0, 0);
  }
  // The higher kind (matrix, polynomial, rational), complex if either is.
  int kind = std::max(ClassKind(a->cls), ClassKind(b->cls));
  int cls = ClassOf(kind, HasComplexValues(a->cls) || HasComplexValues(b->cls));
  return DefineChecked("", a->rows, b->cols, cls, false, "MatMulDef()");
}

// ---- undefinition, destruction, sweeps ----

void MatUndef(Matrix *m) {
  long long n = MatCount(m);
  reg.Undef(
      m, Slot(n, m->cls), MatDestroy,
      [n](Matrix *r) {
        if (!HasElementObjects(r->cls)) return;
        // Pooled records keep empty element objects for the next definition.
        for (long long k = 0; k < n; k++) {
          MatElementRelease(r->cls, Slots(r)[k]);
          Slots(r)[k] = NewElement(r->cls, false);
        }
      },
      [] { MatError("MatUndef()", "Duplicate undefining", nullptr); });
}

void MatDestroy(Matrix *m) {
  reg.Destroy(m, FreeStorage, [] { MatError("MatDestroy()", "Duplicate destroying", MatDef("", 0, 0)); });
}

void MatSweepAll() { SweepInOrder(kSweepAllOrder); }



// ---- copy, exchange, assignment ----

Matrix *MatCopy(Matrix *dst, Matrix *src) {
  if (dst->cls != src->cls) {
    MatError2("MatCopy()", "Not same class", src, dst);
    return MatDef("", 0, 0);
  }
  if (dst->rows != src->rows || dst->cols != src->cols) {
    MatError2("MatCopy()", "Not same size", src, dst);
    return MatDef("", 0, 0);
  }
  long long n = MatCount(src);
  switch (src->cls) {
    case kReal:
    case kComplex:
      if (n > 0)
        memcpy(dst->elements, src->elements,
               static_cast<size_t>(n) * static_cast<size_t>(ElementSize(src->cls)));
      break;
    case kPoly:
    case kCompPoly:
    case kRat:
    case kCompRat:
      for (long long k = 0; k < n; k++) {
        MatElementRelease(dst->cls, Slots(dst)[k]);
        Slots(dst)[k] = ElementKindOf(src->cls).dup(Slots(src)[k]);
      }
      break;
    default:
      MatError2("MatCopy()", "Incorrect class matrix", src, dst);
      return MatDef("", 0, 0);
  }
  return dst;
}

Matrix *MatDup(Matrix *m) { return MatCopy(MatSameDef(m), m); }

Matrix *MatExchange(Matrix *a, Matrix *b) {
  std::swap(a->rows, b->rows);
  std::swap(a->cols, b->cols);
  std::swap(a->status, b->status);
  std::swap(a->cls, b->cls);
  std::swap(a->elements, b->elements);
  return a;
}

Matrix *MatMove(Matrix *dst, Matrix *src) {
  int status = dst->status;
  MatExchange(dst, src);
  dst->status = status;
  src->status = kTemporary;
  return dst;
}

Matrix *MatCopyResize(Matrix *dst, Matrix *src) {
  int status = dst->status;
  if (HasElementObjects(dst->cls)) {
    FreeStorage(dst);
    dst->rows = dst->cols = 0;
  }
  long long n = MatCount(src);
  if (MatCount(dst) != n || dst->cls != src->cls) {
    Matrix *p = reg.Take(Slot(n, src->cls));
    if (p != nullptr) {
      MatExchange(dst, p);
      PoolOrFree(p);
    } else {
      FreeStorage(dst);
      dst->elements = NewStorage(n, src->cls, false);
    }
  } else if (dst->elements == nullptr && n > 0) {
    dst->elements = NewStorage(n, src->cls, false);
  }
  dst->rows = src->rows;
  dst->cols = src->cols;
  dst->cls = src->cls;
  MatCopy(dst, src);
  dst->status = status;
  return dst;
}

Matrix *MatLet(Matrix *dst, Matrix *src) {
  if (dst == src) return dst;
  int status = dst->status;
  if (src->status == kTemporary) {
    // Take the temporary's storage; it now holds dst's old contents and is swept.
    MatExchange(dst, src);
    src->status = kTemporary;
  } else {
    MatCopyResize(dst, src);
  }
  dst->status = status;
  MatSweepAll();
  return dst;
}

Matrix *MatSwap(Matrix *a, Matrix *b) {
  if (a->cls != b->cls) {
    MatError2("MatSwap()", "Not same class", a, b);
    return a;
  }
  if (a->rows != b->rows || a->cols != b->cols) {
    MatError2("MatSwap()", "Not same size", a, b);
    return a;
  }
  std::swap(a->elements, b->elements);
  return a;
}

int MatPoolCount(long long elements, int cls) {
  int slot = Slot(elements, cls);
  return slot < 0 ? 0 : reg.pool_count[slot];
}
Matrix *MatRegistryTail() { return reg.tail; }

VELK_DEFINE_REGISTRY_ENTRIES(Mat, Matrix, reg)
VELK_REGISTER_KIND(ObjectKind::kMatrix, Mat, Matrix, MatDef("", 0, 0))
