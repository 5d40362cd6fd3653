// Reshape, left-right flip and area copy.
#include "matrix/rearrange.h"

#include "core/constructors.h"
#include "matrix/block.h"
#include "matrix/frontend.h"

using namespace velk_matrix;

Matrix *MatReshape(Matrix *a, int rows, int cols) {
  Front f{"MatReshape()", [=] {
            MatSetMessage("reshape(%s(%dx%d), %d, %d)", a->name, a->rows, a->cols, rows, cols);
          }};
  if (!IsValidClass(a->cls)) return f.BadClass(a);
  if (rows < 0 || cols < 0 || static_cast<long long>(rows) * cols != MatCount(a))
    return f.Fail("Inconsistent size", a);
  Matrix *c = MatSameClassDef(a, rows, cols);
  MatCopyElements(c, 0, a, 0, MatCount(a));
  return c;
}

Matrix *MatFlipLR(Matrix *a) {
  Front f{"MatFlipLR()", [=] { Label1("fliplr(%s(%dx%d))", a); }};
  if (!IsValidClass(a->cls)) return f.BadClass(a);
  Matrix *c = MatSameClassDef(a, a->rows, a->cols);
  for (int i = 0; i < a->rows; i++) {
    long long row = static_cast<long long>(i) * a->cols;
    for (int j = 0; j < a->cols; j++) MatCopyElements(c, row + j, a, row + a->cols - 1 - j, 1);
  }
  return c;
}

Matrix *MatAreaCopy(Matrix *dst, int i, int j, Matrix *src, int r1, int c1, int r2, int c2) {
  int rows = r2 - r1 + 1, cols = c2 - c1 + 1;
  Front f{"MatAreaCopy()", [=] {
            MatSetMessage("%s(%d:%d,%d:%d) = %s(%dx%d)(%d:%d,%d:%d)", dst->name, i, i + rows - 1, j,
                          j + cols - 1, src->name, src->rows, src->cols, r1, r2, c1, c2);
          }};
  if (!IsValidClass(dst->cls) || !IsValidClass(src->cls)) return f.BadClass(dst, src);
  if (r1 < 1 || c1 < 1 || rows < 0 || cols < 0 || r2 > src->rows || c2 > src->cols)
    return f.Fail("Source area out of range", dst, src);
  if (i < 1 || j < 1 || i + rows - 1 > dst->rows || j + cols - 1 > dst->cols)
    return f.Fail("Target area out of range", dst, src);
  if (!MatClassHolds(dst->cls, src->cls)) return f.Fail("Not appropriate class matrices", dst, src);
  if (rows == 0 || cols == 0) return dst;
  // Overlapping areas of one matrix are read from a copy.
  Matrix *from = dst == src ? MatCut(src, r1, c1, r2, c2) : src;
  int fr = dst == src ? 1 : r1, fc = dst == src ? 1 : c1;
  for (int r = 0; r < rows; r++)
    MatCopyElements(dst, static_cast<long long>(i - 1 + r) * dst->cols + (j - 1), from,
                    static_cast<long long>(fr - 1 + r) * from->cols + (fc - 1), cols);
  if (from != src) MatUndef(from);
  return dst;
}
