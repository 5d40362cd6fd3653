// The Parlett recurrence. The sum over k reads row i of t and f and column j
// of both; the columns are kept as rows of transposed copies, so every read
// of the O(n^3) loop has unit stride. The terms are added in the order of k,
// each as (t(i,k) f(k,j)) - (f(i,k) t(k,j)) with schoolbook products.
#include "linalg/funm.h"

#include <vector>

namespace velk_linalg {
namespace {

inline ComplexValue Mul(ComplexValue a, ComplexValue b) {
  return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}
inline ComplexValue Sub(ComplexValue a, ComplexValue b) { return {a.re - b.re, a.im - b.im}; }

}  // namespace

bool ParlettRecurrence(int n, const ComplexValue *t, ComplexValue *f, double floor,
                       ComplexDivide divide) {
  auto at = [n](int i, int j) { return static_cast<long long>(i) * n + j; };
  // tc(j, k) = t(k, j) and fc(j, k) = f(k, j), rows as the columns of t and f.
  std::vector<ComplexValue> tc(static_cast<size_t>(n) * n), fc(static_cast<size_t>(n) * n);
  for (int i = 0; i < n; i++) {
    for (int j = i; j < n; j++) tc[at(j, i)] = t[at(i, j)];
    fc[at(i, i)] = f[at(i, i)];
  }
  for (int p = 1; p < n; p++) {
    for (int i = 0; i + p < n; i++) {
      int j = i + p;
      const ComplexValue *ti = t + at(i, 0), *fi = f + at(i, 0);
      const ComplexValue *tj = tc.data() + at(j, 0), *fj = fc.data() + at(j, 0);
      ComplexValue s = Mul(ti[j], Sub(fj[j], fi[i]));
      for (int k = i + 1; k < j; k++) {
        ComplexValue term = Sub(Mul(ti[k], fj[k]), Mul(fi[k], tj[k]));
        s = {s.re + term.re, s.im + term.im};
      }
      ComplexValue d = Sub(t[at(j, j)], t[at(i, i)]);
      if (d.re == 0 && d.im == 0) d = {floor, 0};
      ComplexValue q;
      if (!divide(s, d, &q)) return false;
      f[at(i, j)] = q;
      fc[at(j, i)] = q;
    }
  }
  return true;
}

}  // namespace velk_linalg
