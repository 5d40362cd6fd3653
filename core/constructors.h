// Matrix constructors and element access.
//
// Every constructor returns a new unnamed temporary (status 0); a negative row
// or column count is the fatal "Not appropriate column or row number". Indices
// are 1-based everywhere. Each real accessor has a complex twin (prefix C_)
// that works on (re, im) pairs and reports "Not a complex matrix" instead of
// "Not a real matrix".
#ifndef VELK_CORE_CONSTRUCTORS_H
#define VELK_CORE_CONSTRUCTORS_H

#include "core/matrix.h"

// ---- real constructors -------------------------------------------------------

Matrix *MatZDef(int n);                 // n x n zeros
Matrix *MatZDef2(int rows, int cols);   // zeros
Matrix *MatIDef(int n);                 // n x n identity
Matrix *MatIDef2(int rows, int cols);   // 1.0 at (k, k), k = 1 .. min(rows, cols)
Matrix *MatOneDef(int rows, int cols);  // every element 1.0
Matrix *MatFillDef(int rows, int cols, double value);

// ---- complex constructors ----------------------------------------------------

Matrix *C_MatZDef(int n);
Matrix *C_MatZDef2(int rows, int cols);
// The complex identity, ones and fill take their constant from a Complex
// scalar: they are declared in scalar/fill.h.

// The constant forms behind both layers' constructors: `one` is what an
// identity or a matrix of ones holds (zeros ignore it).
enum class MatConstantForm { kZeros, kSquareZeros, kIdentity, kSquareIdentity, kOnes };
Matrix *MatConstantDef(MatConstantForm form, int cls, int rows, int cols, const char *location,
                       ComplexValue one);

// Shaped for the product a x b ("Size Error" from their own location when b's
// rows differ from a's columns). C_: complex. P_, R_: polynomial (rational),
// with complex coefficients when either operand is of a complex class.
Matrix *C_MatMulDef(Matrix *a, Matrix *b);
Matrix *P_MatMulDef(Matrix *a, Matrix *b);
Matrix *R_MatMulDef(Matrix *a, Matrix *b);

// ---- vectors -----------------------------------------------------------------

// Column j as rows x 1, row i as 1 x columns, of m's class (any class).
Matrix *MatColumnVector(Matrix *m, int j);
Matrix *MatRowVector(Matrix *m, int i);

// ---- element access ----------------------------------------------------------

// Sets element (i, j); a position beyond m grows it to max(rows, i) x
// max(cols, j), zeros in the new places, name and status kept.
Matrix *MatSetValue(Matrix *m, int i, int j, double value);
Matrix *MatFillValue(Matrix *m, double value);
// Sets the k-th element in storage order. A k beyond the elements grows m:
// a matrix with one row, or without columns, becomes 1 x k; any other keeps
// its columns and takes ceil(k / cols) rows (a column vector becomes k x 1).
// The old elements keep their storage positions either way.
Matrix *MatSetVecValue(Matrix *m, int k, double value);
// Element (1, 1); a warning (not fatal) when m is not 1 x 1. An empty m gives 0.
double MatGetValueOne(Matrix *m);
double *MatGetPtr(Matrix *m, int i, int j);
double *MatGetVecPtr(Matrix *m, int k);

Matrix *C_MatSetValue(Matrix *m, int i, int j, ComplexValue value);
Matrix *C_MatFillValue(Matrix *m, ComplexValue value);
Matrix *C_MatSetVecValue(Matrix *m, int k, ComplexValue value);
ComplexValue C_MatGetValueOne(Matrix *m);
ComplexValue *C_MatGetPtr(Matrix *m, int i, int j);
ComplexValue *C_MatGetVecPtr(Matrix *m, int k);

// ---- element copy ------------------------------------------------------------

// True when every value of class src fits class dst unchanged: the kind
// (matrix < polynomial < rational) does not drop and a complex class is not
// put into a real one.
bool MatClassHolds(int dst, int src);
// The class that holds both a and b: the higher kind, complex if either is.
int MatCommonClass(int a, int b);
// Copies count elements in storage order from src (starting at entry l) into
// dst (starting at entry k): values, or new element objects owned by dst.
// REQUIRES: equal classes, or real into complex; both ranges inside storage.
// (MatCopyElements in matrix/elements.h converts between every class.)
void MatCopySameClass(Matrix *dst, long long k, Matrix *src, long long l, long long count);

#endif
