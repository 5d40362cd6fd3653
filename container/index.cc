#include "container/index.h"

#include <cmath>

#include "core/matrix.h"

bool IndexPositions(Matrix *index, int length, std::vector<int> *positions) {
  positions->clear();
  if (index == nullptr || !IsRealClass(index->cls)) return false;
  long long n = MatCount(index);
  const double *v = MatReal(index);
  positions->reserve(static_cast<size_t>(n));
  for (long long k = 0; k < n; k++) {
    double x = v[k];
    if (!(x >= 1 && x <= length) || x != std::floor(x)) return false;
    positions->push_back(static_cast<int>(x));
  }
  return true;
}
