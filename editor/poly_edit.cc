#include "editor/poly_edit.h"

#include <functional>
#include <utility>

#include "core/registry.h"
#include "editor/editor.h"

namespace {

// The coefficients a user left in the editor, as a new polynomial in p's
// variable, or null when the shape is not one row.
Polynomial *Edited(Polynomial *p) {
  // The editor replaces and undefines the matrix it is given: it works on a
  // registered copy, never on p's owned coefficients.
  Matrix *m = MatDup(p->coef);
  Matrix *e = p->kind == 1 ? MatEditAllowComplex(m) : MatEdit(m);
  Polynomial *q = nullptr;
  if (e->rows == 1 && e->cols > 0)
    q = PolyCoefDef(e, p->variable);
  else if (e->rows <= 1 && e->cols == 0)
    q = PolyZeroLike(p);
  MatUndef(e);
  return q;
}

}  // namespace

Polynomial *PolyEdit(Polynomial *p) {
  Polynomial *q = Edited(p);
  if (q == nullptr) return p;
  std::swap(p->coef, q->coef);
  std::swap(p->degree, q->degree);
  std::swap(p->kind, q->kind);
  PolyUndef(q);
  return p;
}

Polynomial *PolyKeyRead(const char *name) {
  return PolyEdit(PolySetName(PolyConst(0.0), name));
}

Rational *RatEdit(Rational *r) {
  for (Polynomial *&part : {std::ref(r->nume), std::ref(r->deno)}) {
    Polynomial *q = Edited(part);
    if (q == nullptr) continue;
    // The edited polynomial takes the part's place; a complex one makes the
    // whole rational complex.
    PolyRelease(part);
    part = PolyOwn(q, kOwnedPart);
  }
  if (r->nume->kind != r->deno->kind) {
    Rational *c = RatRealToComp(r);
    std::swap(r->nume, c->nume);
    std::swap(r->deno, c->deno);
    std::swap(r->kind, c->kind);
    RatUndef(c);
  }
  r->nume_degree = r->nume->degree;
  r->deno_degree = r->deno->degree;
  return r;
}

Rational *RatKeyRead(const char *name) {
  Rational *r = RatSetName(RatConst(0.0), name);
  return RatEdit(r);
}
