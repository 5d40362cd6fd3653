#include "core/scope.h"

#include <array>
#include <vector>

namespace {

// Zero-initialised before any static initializer runs, so kinds may register
// in any order of initialisation.
KindEntries kinds[kObjectKinds];

KindEntries &Of(ObjectKind kind) { return kinds[static_cast<int>(kind)]; }

// The order marks are set in, and the reverse order their chains are undefined in.
constexpr ObjectKind kMarkOrder[] = {ObjectKind::kString,     ObjectKind::kComplex,
                                     ObjectKind::kMatrix,     ObjectKind::kPolynomial,
                                     ObjectKind::kRational,   ObjectKind::kList};

// The marks of one open scope, one per kind (null: the kind is not linked in).
using ScopeMarks = std::array<void *, kObjectKinds>;
std::vector<ScopeMarks> scopes;

}  // namespace

bool RegisterKind(ObjectKind kind, const KindEntries &entries) {
  Of(kind) = entries;
  return true;
}

void SweepInOrder(SweepOrder order) {
  for (ObjectKind kind : order)
    if (Of(kind).sweep != nullptr) Of(kind).sweep();
}

void ObjectScope(int flag) {
  if (flag == 1) {
    ScopeMarks marks{};
    for (ObjectKind kind : kMarkOrder)
      if (Of(kind).mark != nullptr) marks[static_cast<int>(kind)] = Of(kind).mark();
    scopes.push_back(marks);
    return;
  }
  if (scopes.empty()) return;
  ScopeMarks marks = scopes.back();
  scopes.pop_back();
  for (int k = kObjectKinds - 1; k >= 0; k--) {
    ObjectKind kind = kMarkOrder[k];
    void *mark = marks[static_cast<int>(kind)];
    if (mark != nullptr) Of(kind).undef_chain(mark);
  }
}
