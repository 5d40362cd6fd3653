// Class conversions and the promotion of two operands to a common class.
#include <cstdio>

#include "core/constructors.h"
#include "matrix/frontend.h"
#include "matrix/operations.h"

using namespace velk_matrix;

namespace {

// A new temporary of class cls holding m's values, named like m.
Matrix *Convert(Matrix *m, int cls, const char *location, bool accepted) {
  if (!accepted) {
    MatError(location, "Incorrect class matrix", m);
    return MatDef("", 0, 0);
  }
  Matrix *c = MatDefClass("", m->rows, m->cols, cls, location);
  MatCopyElements(c, 0, m, 0, MatCount(m));
  return MatSetName(c, m->name);
}


// ---- promotion -------------------------------------------------------------------

enum Step : unsigned char { kKeep, kToComp, kToPoly, kCompToPoly, kToRat, kCompToRat, kPolyToRat };

Matrix *(*const kConversion[])(Matrix *) = {
    nullptr, MatRealToComp, MatRealToPoly, MatCompToPoly, MatRealToRat, MatCompToRat, MatPolyToRat};

// What each operand goes through, innermost conversion first.
struct Cell {
  Step a[2];
  Step b[2];
};

// Row: class of a, column: class of b. Row 0 converts a real operand with the
// complex-source conversions (cells (0, 3) and (0, 5)) where column 0 uses the
// real ones; both roads end in the same class and values, and the table is
// kept as it is.
// clang-format off
constexpr Cell kPromotion[6][6] = {
    {{}, {{kToComp}, {}}, {{kToPoly}, {}}, {{kCompToPoly, kToComp}, {}}, {{kToRat}, {}},
     {{kCompToRat, kToComp}, {}}},
    {{{}, {kToComp}}, {}, {{kCompToPoly}, {kToComp}}, {{kCompToPoly}, {}},
     {{kCompToRat}, {kToComp}}, {{kCompToRat}, {}}},
    {{{}, {kToPoly}}, {{kToComp}, {kCompToPoly}}, {}, {{kToComp}, {}}, {{kPolyToRat}, {}},
     {{kPolyToRat, kToComp}, {}}},
    {{{}, {kToPoly, kToComp}}, {{}, {kCompToPoly}}, {{}, {kToComp}}, {},
     {{kPolyToRat}, {kToComp}}, {{kPolyToRat}, {}}},
    {{{}, {kToRat}}, {{kToComp}, {kCompToRat}}, {{}, {kPolyToRat}}, {{kToComp}, {kPolyToRat}}, {},
     {{kToComp}, {}}},
    {{{}, {kToRat, kToComp}}, {{}, {kCompToRat}}, {{}, {kPolyToRat, kToComp}}, {{}, {kPolyToRat}},
     {{}, {kToComp}}, {}},
};
// clang-format on

Matrix *Apply(const Step (&steps)[2], Matrix *m) {
  for (Step s : steps)
    if (s != kKeep) m = kConversion[s](m);
  return m;
}

}  // namespace

namespace velk_matrix {

Operands Promote(Matrix *a, Matrix *b) {
  const Cell &cell = kPromotion[a->cls][b->cls];
  return {Apply(cell.a, a), Apply(cell.b, b)};
}

Matrix *FailWith(const char *location, const char *message, Matrix *a, Matrix *b) {
  MatError2(location, message, a, b);
  return MatDef("", 0, 0);
}

}  // namespace velk_matrix

// ---- conversions ------------------------------------------------------------------

Matrix *MatRealToComp(Matrix *m) {
  return Convert(m, ClassOf(ClassKind(m->cls), true), "MatRealToComp()", IsValidClass(m->cls));
}
Matrix *MatRealToPoly(Matrix *m) {
  return Convert(m, ClassOf(ClassKind(kPoly), HasComplexValues(m->cls)), "MatRealToPoly()", IsNumericClass(m->cls));
}
Matrix *MatCompToPoly(Matrix *m) {
  return Convert(m, kCompPoly, "MatCompToPoly()", IsNumericClass(m->cls));
}
Matrix *MatRealToRat(Matrix *m) {
  return Convert(m, ClassOf(ClassKind(kRat), HasComplexValues(m->cls)), "MatRealToRat()", IsNumericClass(m->cls));
}
Matrix *MatCompToRat(Matrix *m) {
  return Convert(m, kCompRat, "MatCompToRat()", IsNumericClass(m->cls));
}
Matrix *MatPolyToRat(Matrix *m) {
  return Convert(m, ClassOf(ClassKind(kRat), HasComplexValues(m->cls)), "MatPolyToRat()", IsPolyClass(m->cls));
}
