#include "core/scope.h"

#include <vector>

#include "container/list.h"
#include "container/string.h"
#include "core/matrix.h"
#include "core/registry.h"
#include "scalar/complex.h"
#include "scalar/polynomial.h"
#include "scalar/rational.h"

void SweepInOrder(SweepOrder order) {
  for (ObjectKind kind : order) {
    switch (kind) {
      case ObjectKind::kMatrix: MatSweep(); break;
      case ObjectKind::kComplex: CompSweep(); break;
      case ObjectKind::kPolynomial: PolySweep(); break;
      case ObjectKind::kRational: RatSweep(); break;
      case ObjectKind::kList: ListSweep(); break;
      case ObjectKind::kString: vkStringSweep(); break;
    }
  }
}

namespace {

// The marks of one open scope, one per kind.
struct ScopeMarks {
  String *string;
  Complex *complex;
  Matrix *matrix;
  Polynomial *polynomial;
  Rational *rational;
  List *list;
};

std::vector<ScopeMarks> scopes;

}  // namespace

void ObjectScope(int flag) {
  if (flag == 1) {
    ScopeMarks m;
    m.string = vkStringDef("", -1);
    vkStringSetStatus(m.string, kMark);
    m.complex = CompSetStatus(CompDef("", 0, 0), kMark);
    m.matrix = MatSetStatus(MatDef("", 0, 0), kMark);
    m.polynomial = PolySetStatus(PolyDef("", -1, nullptr), kMark);
    m.rational = RatSetStatus(RatDef("", -1, -1), kMark);
    m.list = ListSetStatus(ListDef("", 0), kMark);
    scopes.push_back(m);
    return;
  }
  if (scopes.empty()) return;
  ScopeMarks m = scopes.back();
  scopes.pop_back();
  ListUndefChain(m.list);
  RatUndefChain(m.rational);
  PolyUndefChain(m.polynomial);
  MatUndefChain(m.matrix);
  CompUndefChain(m.complex);
  vkStringUndefChain(m.string);
}
