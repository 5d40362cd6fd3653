#include "scalar/rational.h"

#include <utility>

#include "core/alloc.h"
#include "core/registry.h"
#include "core/scope.h"
#include "core/text.h"
#include "scalar/poly_coef.h"

char RatMessageBuffer[kMessageSize];

namespace {

Registry<Rational> reg;  // one stack for every rational, whatever the degrees

void Describe(FILE *out, const void *object, bool second) {
  const Rational *r = static_cast<const Rational *>(object);
  const char *word = second ? " and" : " for";
  if (r->name != nullptr && r->name[0] != '\0')
    fprintf(out, "%s '%s(s^%d/s^%d)'", word, r->name, r->nume_degree, r->deno_degree);
  else
    fprintf(out, "%s '(s^%d/s^%d)'", word, r->nume_degree, r->deno_degree);
}

constexpr char kLogFailure[] = "Can't open logfile\n";

// A defined operand in its save form after a logged report.
void LogAppend(const void *object) {
  Rational *r = const_cast<Rational *>(static_cast<const Rational *>(object));
  if (r->nume == nullptr || r->nume->degree == -1 || r->deno->degree == -1) return;
  if (FILE *log = LogOpenAppend(kLogFailure)) {
    RatSaveText(log, r, 1);
    fclose(log);
  }
}

const ReportKind kReport = {RatMessageBuffer, Describe, kLogFailure, LogAppend, false};

Polynomial *NewPart(int degree, int kind) {
  Polynomial *p = kind == 1 ? C_PolyDef("", degree, nullptr) : PolyDef("", degree, nullptr);
  return PolyOwn(p, kOwnedPart);
}

// Pooled rationals own no polynomials: a definition always makes new ones.
void ReleaseParts(Rational *r) {
  if (r->nume != nullptr) PolyRelease(r->nume);
  if (r->deno != nullptr) PolyRelease(r->deno);
  r->nume = r->deno = nullptr;
  r->nume_degree = r->deno_degree = 0;
}

Rational *Define(const char *name, int nd, int dd, int kind) {
  RatInit();
  Rational *r = reg.Obtain(0);
  reg.Append(r);
  r->status = kTemporary;
  r->kind = kind;
  SetRecordName(&r->name, name);
  if (nd < 0 || dd < 0) nd = dd = -1;
  r->nume_degree = nd;
  r->deno_degree = dd;
  r->nume = NewPart(nd, kind);
  r->deno = NewPart(dd, kind);
  return r;
}

bool Undefined(const Rational *r) { return r->nume->degree == -1 || r->deno->degree == -1; }

}  // namespace

VELK_DEFINE_REPORTERS(Rat, Rational, kReport)

void RatInit() {
  if (reg.Ready()) return;
  PolyInit();
  Rational *head = Registry<Rational>::NewRecord();
  head->name = StringDup("TOPRAT");
  head->status = kMark;
  head->nume = PolyOwn(PolySetName(PolyDef("", 0, nullptr), "TOPRAT-NUME"), kOwnedPart);
  head->deno = PolyOwn(PolySetName(PolyDef("", 0, nullptr), "TOPRAT-DENO"), kOwnedPart);
  reg.limit = EnvLimit("RATIONAL_TABLE_MAX", 0, 0);
  reg.Start(head, 1);
  RatMessageBuffer[0] = '\0';
}

Rational *RatDef(const char *name, int nd, int dd) { return Define(name, nd, dd, 0); }
Rational *C_RatDef(const char *name, int nd, int dd) { return Define(name, nd, dd, 1); }

void RatDestroy(Rational *r) {
  reg.Destroy(r, ReleaseParts, [] { RatError("RatDestroy()", "Duplicate destroying", nullptr); });
}

void RatUndef(Rational *r) {
  reg.Undef(r, 0, RatDestroy, ReleaseParts,
            [] { RatError("RatUndef()", "Duplicate undefining", nullptr); });
}


// Copies one part into an owned polynomial of the destination.
static void AssignPart(Polynomial *&dst, Polynomial *src) {
  if (dst == nullptr) dst = NewPart(src->degree, src->kind);
  dst->degree = src->degree;
  dst->kind = src->kind;
  PolySetVariable(dst, src->variable);
  MatCopyResize(dst->coef, src->coef);
}

Rational *RatAssign(Rational *dst, Rational *src) {
  if (Undefined(src)) {
    RatError("RatAssign()", "Undefined rational", src);
    return dst;
  }
  if (dst == src) return dst;
  int status = dst->status;
  if (src->status == kTemporary) {
    std::swap(dst->kind, src->kind);
    std::swap(dst->nume_degree, src->nume_degree);
    std::swap(dst->deno_degree, src->deno_degree);
    std::swap(dst->nume, src->nume);
    std::swap(dst->deno, src->deno);
    src->status = kTemporary;
  } else {
    dst->kind = src->kind;
    dst->nume_degree = src->nume_degree;
    dst->deno_degree = src->deno_degree;
    AssignPart(dst->nume, src->nume);
    AssignPart(dst->deno, src->deno);
  }
  dst->status = status;
  SweepInOrder(kSweepAllOrder);
  return dst;
}

static bool Conforming(Rational *a, Rational *b, const char *location) {
  if (a->kind != b->kind) {
    RatError2(location, "Confliction of class", a, b);
    return false;
  }
  if (a->nume->degree != b->nume->degree || a->deno->degree != b->deno->degree) {
    RatError2(location, "Confliction of size", a, b);
    return false;
  }
  return true;
}

Rational *RatCopy(Rational *dst, Rational *src) {
  if (!Conforming(dst, src, "RatCopy()")) return dst;
  PolyCopy(dst->nume, src->nume);
  PolyCopy(dst->deno, src->deno);
  return dst;
}

Rational *RatDup(Rational *r) {
  Rational *d = Define("", r->nume->degree, r->deno->degree, r->kind);
  if (!Undefined(r)) {
    AssignPart(d->nume, r->nume);
    AssignPart(d->deno, r->deno);
  }
  d->nume_degree = r->nume_degree;
  d->deno_degree = r->deno_degree;
  return d;
}

Rational *RatSwap(Rational *a, Rational *b) {
  if (!Conforming(a, b, "RatSwap()")) return a;
  std::swap(a->nume, b->nume);
  std::swap(a->deno, b->deno);
  return a;
}


void RatPrintAll() {
  if (!reg.Ready()) return;
  for (Rational *r = reg.head->next; r != nullptr; r = r->next) RatPrint(r);
}

int RatPoolCount() { return reg.Ready() ? reg.pool_count[0] : 0; }

VELK_DEFINE_REGISTRY_ENTRIES(Rat, Rational, reg)
// Rationals serve as the elements of matrices of classes 4 and 5.
namespace {
void *MakeElement(int cls, bool zero) {
  if (!zero) return RatOwn(RatDef("", -1, -1), kOwnedPart);
  Rational *r = HasComplexValues(cls) ? C_RatDef("", 0, 0) : RatDef("", 0, 0);
  MatReal(r->deno->coef)[0] = 1.0;  // 0/1; for complex coefficients the real part of the pair
  return RatOwn(r, kOwnedPart);
}
void *DupElement(void *e) { return RatOwn(RatDup(static_cast<Rational *>(e)), kOwnedPart); }
void ReleaseElement(void *e) { RatRelease(static_cast<Rational *>(e)); }
[[maybe_unused]] const bool elements_lent =
    MatSetElementKind(ClassKind(kRat), {MakeElement, DupElement, ReleaseElement});
// Matrices of rationals are saved and listed with the rational texts.
[[maybe_unused]] const bool text_lent = [] {
  MatSetRatText({velk_poly::RatElementText, velk_poly::RatMatrixPrintBody});
  return true;
}();
}  // namespace

VELK_REGISTER_KIND(ObjectKind::kRational, Rat, Rational, RatDef("", -1, -1))
