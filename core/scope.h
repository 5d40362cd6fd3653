// Sweeps across all six object kinds, and scopes bounded by marks.
#ifndef VELK_CORE_SCOPE_H
#define VELK_CORE_SCOPE_H

#include <initializer_list>

enum class ObjectKind { kMatrix, kComplex, kPolynomial, kRational, kList, kString };

using SweepOrder = std::initializer_list<ObjectKind>;

// Each assignment reclaims temporaries of every kind, each in its own order.
inline constexpr SweepOrder kSweepAllOrder = {ObjectKind::kRational, ObjectKind::kPolynomial,
                                              ObjectKind::kList,     ObjectKind::kString,
                                              ObjectKind::kComplex,  ObjectKind::kMatrix};

// Runs the sweep of each kind in the given order (a kind not started yet has
// nothing to sweep).
void SweepInOrder(SweepOrder order);

// flag 1: puts a mark object into every registry; any other flag: undefines
// the latest marks together with everything defined after them.
void ObjectScope(int flag);

#endif
