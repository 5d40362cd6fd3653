// The registry and pool mechanism shared by the six object kinds.
//
// Live records of a kind form a doubly linked list that starts at a head node
// (status 1, never removed) and ends at `tail`. Undefined records are not
// freed: they wait on pool stacks (last in, first out, linked through next),
// one stack per slot, for the next definition of the same slot (shape).
//
// Invariant: a record is on exactly one list, the registry or one pool stack,
// except a record owned by another object (a polynomial's coefficients, a
// matrix's element polynomials, a list's elements), which is on none: owned
// records are invisible to sweeps and chains, so only their owner releases them.
#ifndef VELK_CORE_REGISTRY_H
#define VELK_CORE_REGISTRY_H

#include <cstdlib>
#include <cstring>

#include "core/alloc.h"
#include "core/scope.h"

// Status values shared by every kind.
constexpr int kTemporary = 0;
constexpr int kMark = 1;
// The status a program gives its variables (any status above 1 is kept).
constexpr int kKept = 2;
// Kept statuses of sub-objects owned by another object. Their values are
// observable (reports and list records show them), so they are fixed:
// a polynomial's coefficient matrix, a rational's two polynomials, the
// elements of a rational matrix, and the strings and complex numbers of a list;
constexpr int kOwnedPart = 2;
// the elements of a polynomial matrix, and the matrices, rationals and lists of a list;
constexpr int kOwnedElement = 3;
// the polynomials of a list.
constexpr int kOwnedListPolynomial = 4;

// Reads a decimal environment value: `absent` when the variable is not set,
// `negative` when it is below zero; text that is not a number reads as 0.
inline int EnvLimit(const char *variable, int absent, int negative) {
  const char *text = getenv(variable);
  if (text == nullptr) return absent;
  long value = strtol(text, nullptr, 10);
  if (value < 0) return negative;
  if (value > 0x7fffffffL) value = 0x7fffffffL;
  return static_cast<int>(value);
}

template <class R>
struct Registry {
  R *head = nullptr;
  R *tail = nullptr;
  int limit = 0;                // records a stack may exceed before undefining destroys; 0: no limit
  // Plain arrays, never freed: the pools live as long as the process, even
  // through the static destructors that run at exit.
  R **pool_head = nullptr;  // first record of each stack
  int *pool_count = nullptr;  // records on each stack
  int slots = 0;
  unsigned long appends = 0;  // lets a sweep notice records its undefinitions put back

  bool Ready() const { return head != nullptr; }

  void Start(R *h, int n) {
    head = tail = h;
    h->prev = h->next = nullptr;
    slots = n;
    pool_head = static_cast<R **>(calloc(static_cast<size_t>(n), sizeof(R *)));
    pool_count = static_cast<int *>(calloc(static_cast<size_t>(n), sizeof(int)));
    if (pool_head == nullptr || pool_count == nullptr) RuntimeError("calloc()", "Out of memory !!", 1);
  }

  void Append(R *r) {
    appends++;
    tail->next = r;
    r->prev = tail;
    r->next = nullptr;
    tail = r;
  }

  // Unlinks r from its list. Returns false, changing nothing, when r has
  // neither neighbour (it was undefined already, or is owned by another object).
  bool Unlink(R *r) {
    if (r->prev != nullptr && r->next != nullptr) {
      r->prev->next = r->next;
      r->next->prev = r->prev;
    } else if (r->next != nullptr) {
      r->next->prev = nullptr;
    } else if (r->prev != nullptr) {
      r->prev->next = nullptr;
      tail = r->prev;
    } else {
      return false;
    }
    r->prev = r->next = nullptr;
    return true;
  }

  // A stack over its limit makes undefining destroy; the test is strictly
  // greater, so a stack may reach limit + 1 records.
  bool Full(int slot) const { return limit != 0 && pool_count[slot] > limit; }

  R *Take(int slot) {
    if (slot < 0 || slot >= slots) return nullptr;
    R *r = pool_head[slot];
    if (r == nullptr) return nullptr;
    pool_head[slot] = r->next;
    if (r->next != nullptr) r->next->prev = nullptr;
    r->next = nullptr;
    pool_count[slot]--;
    return r;
  }

  void Push(int slot, R *r) {
    R *&first = pool_head[slot];
    r->prev = nullptr;
    r->next = first;
    if (first != nullptr) first->prev = r;
    first = r;
    pool_count[slot]++;
  }

  // A record for a definition: the first on the slot's stack, or a new zeroed one.
  R *Obtain(int slot) {
    R *r = Take(slot);
    if (r == nullptr) r = NewRecord();
    return r;
  }

  static R *NewRecord() {
    R *r = static_cast<R *>(emalloc(static_cast<int>(sizeof(R))));
    memset(static_cast<void *>(r), 0, sizeof(R));
    return r;
  }

  // Undefinition shared by the kinds: a record beyond the bound (slot < 0) or
  // whose stack is full is destroyed; otherwise it is unlinked (a record on no
  // list is reported by `duplicate`), its contents prepared for reuse by
  // `release`, and pushed.
  template <class Destroy, class Release, class Duplicate>
  void Undef(R *r, int slot, Destroy destroy, Release release, Duplicate duplicate) {
    if (slot < 0 || Full(slot)) {
      destroy(r);
      return;
    }
    if (!Unlink(r)) {
      duplicate();
      return;
    }
    release(r);
    r->status = kTemporary;
    Push(slot, r);
  }

  // Destruction: unlink (or report), free the contents, free the record.
  template <class Free, class Duplicate>
  void Destroy(R *r, Free free_contents, Duplicate duplicate) {
    if (!Unlink(r)) {
      duplicate();
      return;
    }
    free_contents(r);
    if (r->name != nullptr) efree(r->name);
    memset(static_cast<void *>(r), 0, sizeof(R));
    efree(r);
  }

  // An owned record leaves the registry; release puts it back so that the
  // kind's own undefine can pool it.
  R *Own(R *r, int status) {
    Unlink(r);
    r->status = static_cast<decltype(r->status)>(status);
    return r;
  }

  // From the tail back: temporaries are undefined, a mark ends the walk,
  // anything else is passed over. The head is a mark. Undefining a record may
  // put records it owned back at the tail as temporaries (a list's nested
  // lists); the walk then starts again from the tail so none is left behind.
  template <class Undef>
  void Sweep(Undef undef) {
    for (R *r = tail; r != nullptr;) {
      R *prev = r->prev;
      if (r->status == kTemporary) {
        unsigned long before = appends;
        undef(r);
        if (appends != before) prev = tail;
      } else if (r->status == kMark) {
        break;
      }
      r = prev;
    }
  }

  // Undefines r and every record after it. Records that the undefinitions
  // put back at the tail are after r's predecessor too, so they go as well.
  template <class Undef>
  static void UndefChain(R *r, Undef undef) {
    R *before = r != nullptr ? r->prev : nullptr;
    while (r != nullptr) {
      R *next = r->next;
      undef(r);
      r = next;
      if (r == nullptr && before != nullptr) r = before->next;
    }
  }

  static void Unmark(R *r) {
    for (; r != nullptr; r = r->next)
      if (r->status == kMark) r->status = kTemporary;
  }

  // Debug walk for tests: links agree both ways on the registry and on every
  // stack, counts match, the tail is last. Returns the number of live records.
  long Check() const {
    long live = 0;
    const R *last = nullptr;
    for (const R *r = head; r != nullptr; r = r->next) {
      if (r->prev != last) abort();
      last = r;
      live++;
    }
    if (last != tail) abort();
    for (int s = 0; s < slots; s++) {
      int n = 0;
      const R *before = nullptr;
      for (const R *r = pool_head[s]; r != nullptr; r = r->next) {
        if (r->prev != before || r->status != kTemporary) abort();
        before = r;
        n++;
      }
      if (n != pool_count[s]) abort();
    }
    return live - 1;
  }
};

// The thin entries every kind offers over its registry `reg` and its undefine
// `Prefix##Undef`: naming, status, chains, sweeps, marks, ownership and the
// debug walk.
#define VELK_DEFINE_REGISTRY_ENTRIES(Prefix, Type, reg)              \
  Type *Prefix##SetName(Type *r, const char *name) {                 \
    SetRecordName(&r->name, name);                                   \
    return r;                                                        \
  }                                                                  \
  Type *Prefix##SetStatus(Type *r, int status) {                     \
    r->status = static_cast<decltype(r->status)>(status);            \
    return r;                                                        \
  }                                                                  \
  void Prefix##UndefChain(Type *r) { Registry<Type>::UndefChain(r, Prefix##Undef); } \
  void Prefix##Sweep() {                                             \
    if (reg.Ready()) reg.Sweep(Prefix##Undef);                       \
  }                                                                  \
  void Prefix##Unmark(Type *r) { Registry<Type>::Unmark(r); }        \
  Type *Prefix##Own(Type *r, int status) { return reg.Own(r, status); } \
  void Prefix##Release(Type *r) {                                    \
    reg.Append(r);                                                   \
    Prefix##Undef(r);                                                \
  }                                                                  \
  long Prefix##RegistryCheck() { return reg.Ready() ? reg.Check() : 0; }

// Registers a kind with the scopes (core/scope.h): its sweep, a mark made
// from the new record `make_record`, and its chain undefinition.
#define VELK_REGISTER_KIND(kind, Prefix, Type, make_record)                                 \
  namespace {                                                                               \
  [[maybe_unused]] const bool kind_registered = RegisterKind(                               \
      kind, {Prefix##Sweep, []() -> void * { return Prefix##SetStatus(make_record, kMark); }, \
             [](void *r) { Prefix##UndefChain(static_cast<Type *>(r)); }});                \
  }

// Replaces *name by a copy of text, keeping the old buffer when the lengths
// agree (a pooled record's name buffer is reused that way).
void SetRecordName(char **name, const char *text);

#endif
