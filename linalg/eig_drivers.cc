// The eigenvalue kernels in sequence on raw arrays, and the one order in which
// every eigen routine gives its values.
#include <initializer_list>
#include <utility>

#include "core/alloc.h"
#include "linalg/eigen_kernels.h"

void EigenOrder(int n, const double *wr, const double *wi, int *from) {
  for (int j = 0; j < n; j++) from[j] = j;
  for (const double *key : {wi, wr}) {
    if (key == nullptr) continue;
    for (int sweep = 1; sweep < n; sweep++)
      for (int j = 0; j + 1 < n; j++)
        if (key[from[j]] < key[from[j + 1]]) std::swap(from[j], from[j + 1]);
  }
}

namespace {

// Puts wr, wi into the order of EigenOrder, using work (2 n doubles, n ints).
void Reorder(int n, double *wr, double *wi, double *work, int *from) {
  EigenOrder(n, wr, wi, from);
  for (int j = 0; j < n; j++) {
    work[j] = wr[from[j]];
    work[n + j] = wi[from[j]];
  }
  for (int j = 0; j < n; j++) {
    wr[j] = work[j];
    wi[j] = work[n + j];
  }
}

}  // namespace

int RealEigenvalues(int n, double *a, double *wr, double *wi, double machep) {
  if (n == 0) return 0;
  double *work = static_cast<double *>(emalloc_array(4LL * n, sizeof(double)));
  int *from = static_cast<int *>(emalloc_array(n, sizeof(int)));
  int low, igh;
  balanc(n, a, true, &low, &igh, work);
  orthes(n, low, igh, a, work + n);
  int ierr = hqr(n, low, igh, a, wr, wi, machep);
  if (ierr == 0) Reorder(n, wr, wi, work, from);
  efree(from);
  efree(work);
  return ierr;
}

int ComplexEigenvalues(int n, double *ar, double *ai, double *wr, double *wi, double machep) {
  if (n == 0) return 0;
  double *work = static_cast<double *>(emalloc_array(3LL * n, sizeof(double)));
  int *from = static_cast<int *>(emalloc_array(n, sizeof(int)));
  int low, igh;
  cbal(n, ar, ai, true, &low, &igh, work);
  corth(n, low, igh, ar, ai, work + n, work + 2 * n);
  int ierr = comqr(n, low, igh, ar, ai, wr, wi, machep);
  if (ierr == 0) Reorder(n, wr, wi, work, from);
  efree(from);
  efree(work);
  return ierr;
}
