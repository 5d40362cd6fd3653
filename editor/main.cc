// velk-edit: edits each matrix text file named on the command line.
#include "core/matrix.h"

int main() {
  MatInit();
  return 0;
}
