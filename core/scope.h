// Sweeps across every object kind, and scopes bounded by marks.
//
// The kinds live on higher floors (scalar/, container/), so the scope layer
// knows them only through the entries each kind registers when its file is
// part of the program (a static initializer): a kind that is not linked in
// has no objects to sweep or mark. Registration happens before main runs, so
// a scope opened before a kind's first use still holds a mark of it.
#ifndef VELK_CORE_SCOPE_H
#define VELK_CORE_SCOPE_H

#include <initializer_list>

enum class ObjectKind { kMatrix, kComplex, kPolynomial, kRational, kList, kString };
constexpr int kObjectKinds = 6;

using SweepOrder = std::initializer_list<ObjectKind>;

// Each assignment reclaims temporaries of every kind, each in its own order.
inline constexpr SweepOrder kSweepAllOrder = {ObjectKind::kRational, ObjectKind::kPolynomial,
                                              ObjectKind::kList,     ObjectKind::kString,
                                              ObjectKind::kComplex,  ObjectKind::kMatrix};

// What the scopes and sweeps need of a kind.
struct KindEntries {
  void (*sweep)();
  void *(*mark)();              // defines a new mark record (status 1) and returns it
  void (*undef_chain)(void *);  // undefines a record and everything after it
};

// Records a kind's entries; returns true so that a kind can register from the
// initializer of a namespace-scope constant.
bool RegisterKind(ObjectKind kind, const KindEntries &entries);

// Runs the sweep of each kind in the given order (a kind that is not linked
// in, or not started yet, has nothing to sweep).
void SweepInOrder(SweepOrder order);

// flag 1: puts a mark object into every registry; any other flag: undefines
// the latest marks together with everything defined after them.
void ObjectScope(int flag);

#endif
