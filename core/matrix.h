// The Matrix record, its class codes, registry and pool.
#ifndef VELK_CORE_MATRIX_H
#define VELK_CORE_MATRIX_H

#include "core/report.h"

// Class codes. 3 and 5 share storage and dispatch with 2 and 4.
enum MatrixClass {
  kReal = 0,
  kComplex = 1,
  kPoly = 2,
  kCompPoly = 3,
  kRat = 4,
  kCompRat = 5,
};

// The bare pair a complex matrix stores per element (and the value of a
// complex scalar).
struct ComplexValue {
  double re;
  double im;
};

// Class predicates, the one place that knows how the codes are built: the
// kind (matrix, polynomial, rational) times two, plus one for complex values.
inline bool IsValidClass(int c) { return c >= kReal && c <= kCompRat; }
inline bool IsRealClass(int c) { return c == kReal; }
// Real or complex values stored inline (classes 0 and 1).
inline bool IsNumericClass(int c) { return c == kReal || c == kComplex; }
inline bool IsPolyClass(int c) { return c == kPoly || c == kCompPoly; }
inline bool IsRatClass(int c) { return c == kRat || c == kCompRat; }
// Elements are owned objects (polynomials, rationals): classes 2 to 5.
inline bool HasElementObjects(int c) { return IsPolyClass(c) || IsRatClass(c); }
// Complex values or coefficients: classes 1, 3 and 5.
inline bool HasComplexValues(int c) { return (c & 1) != 0; }
// 0 for matrix classes, 1 polynomial, 2 rational.
inline int ClassKind(int c) { return c / 2; }
// The class of a kind, with complex values or not.
inline int ClassOf(int kind, bool complex) { return kind * 2 + (complex ? 1 : 0); }

struct Matrix {
  char *name;      // empty for temporaries; kept across pooling
  int status;      // 0 temporary, 1 mark, anything else kept
  int cls;         // class code
  int rows;
  int cols;
  void *elements;  // rows * cols entries row by row; null when empty
  Matrix *prev;
  Matrix *next;
};

// The shared relative tolerance of the matrix layer (the decimal literal,
// deliberately not 2^-52).
extern double eps;

// Pool limits read at start (defaults 0 = unlimited and 1000 elements).
int MatPoolLimit();
int MatPoolBound();

void MatInit();

// Definitions: new temporaries with an empty or given name, elements unset
// (polynomial and rational elements are empty objects).
Matrix *MatDef(const char *name, int rows, int cols);
Matrix *C_MatDef(const char *name, int rows, int cols);
Matrix *P_MatDef(const char *name, int rows, int cols);
Matrix *R_MatDef(const char *name, int rows, int cols);
// Definition of any class code 0..5 with the location used for a negative size.
Matrix *MatDefClass(const char *name, int rows, int cols, int cls, const char *location);

Matrix *MatSetStatus(Matrix *m, int status);
Matrix *MatSetClass(Matrix *m, int cls);
Matrix *MatSetName(Matrix *m, const char *name);

Matrix *MatSameClassDef(Matrix *m, int rows, int cols);
Matrix *MatSameClassZDef(Matrix *m, int rows, int cols);
// Zeros of a class code 0..5 (zero polynomials and rationals for 2 to 5).
Matrix *MatZDefClass(int cls, int rows, int cols);
Matrix *MatSameClassZDefSize(Matrix *m);
Matrix *MatSameDef(Matrix *m);
Matrix *MatMulDef(Matrix *a, Matrix *b);
Matrix *MatTransDef(Matrix *m);

void MatUndef(Matrix *m);
void MatDestroy(Matrix *m);
void MatUndefChain(Matrix *m);
void MatSweep();
void MatUnmark(Matrix *m);
void MatSweepAll();

Matrix *MatCopy(Matrix *dst, Matrix *src);
Matrix *MatDup(Matrix *m);
Matrix *MatExchange(Matrix *a, Matrix *b);
Matrix *MatMove(Matrix *dst, Matrix *src);
Matrix *MatLet(Matrix *dst, Matrix *src);
Matrix *MatSwap(Matrix *a, Matrix *b);
// dst takes src's shape, class and values by copying (storage from the pool
// where it fits); dst keeps its status and no sweep runs.
Matrix *MatCopyResize(Matrix *dst, Matrix *src);

// Ownership by another object: an owned matrix (a polynomial's coefficients)
// leaves the registry so no sweep or chain reaches it; its owner releases it.
Matrix *MatOwn(Matrix *m, int status);
void MatRelease(Matrix *m);

// The element objects of classes 2 to 5 are polynomials and rationals, kinds
// of a higher floor: their files lend a matrix these operations (from a
// static initializer) when they are part of the program.
struct MatElementKind {
  // A new element for a matrix of class cls, owned by it: an empty object,
  // or (zero) the zero of the class.
  void *(*make)(int cls, bool zero);
  void *(*dup)(void *element);     // a new owned copy
  void (*release)(void *element);  // gives an owned element back to its kind
};
// kind: ClassKind of the classes served (1 polynomial, 2 rational). Returns true.
bool MatSetElementKind(int kind, const MatElementKind &ops);

// A new owned copy of an element object of a class 2..5 matrix.
void *MatElementDup(int cls, void *element);
// Gives an element object of a class 2..5 matrix back to its kind (null: nothing).
void MatElementRelease(int cls, void *element);

// Element helpers.
inline long long MatCount(const Matrix *m) { return static_cast<long long>(m->rows) * m->cols; }
inline double *MatReal(Matrix *m) { return static_cast<double *>(m->elements); }

// Debug walk over the matrix registry and pool (tests): aborts on a broken
// link or count, returns the number of live records besides the head.
long MatRegistryCheck();
// Records on the pool stack of (elements, class).
int MatPoolCount(long long elements, int cls);
Matrix *MatRegistryTail();

#endif
