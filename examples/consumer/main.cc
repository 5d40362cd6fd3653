// Built against an installed Velk: (I + J/2) - J/2 = I on a 3 x 3 matrix, printed
// and checked exactly (exit status 0 when it holds).
#include "velk.h"

int main() {
  MatInit();
  Matrix *ones = MatFillDef(3, 3, 0.5);
  Matrix *a = MatAdd(MatIDef(3), ones);
  Matrix *back = MatSub(a, ones);
  MatSetName(back, "I");
  MatPrint(back);
  return MatEqualExact(back, MatIDef(3)) ? 0 : 1;
}
