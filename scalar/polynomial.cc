#include "scalar/polynomial.h"

#include <cstring>
#include <utility>

#include "core/alloc.h"
#include "core/registry.h"
#include "core/scope.h"
#include "core/text.h"
#include "scalar/poly_coef.h"

char PolyMessageBuffer[kMessageSize];

namespace {

Registry<Polynomial> reg;
int degree_max = 1000;  // polynomials of higher degree are never pooled

int Slot(int degree, int kind) {
  if (degree > degree_max || degree < -1 || kind < 0 || kind > 1) return -1;
  return (degree + 1) * 2 + kind;
}

const char *VariableOf(const Polynomial *p) { return p->variable != nullptr ? p->variable : "s"; }

void Describe(FILE *out, const void *object, bool second) {
  const Polynomial *p = static_cast<const Polynomial *>(object);
  const char *word = second ? " and" : " for";
  if (p->name != nullptr && p->name[0] != '\0')
    fprintf(out, "%s '%s(%s^%d)'", word, p->name, VariableOf(p), p->degree);
  else
    fprintf(out, "%s '(%s^%d)'", word, VariableOf(p), p->degree);
}

constexpr char kLogFailure[] = "Can't open logfile.\n";

// A defined operand in its save form after a logged report.
void LogAppend(const void *object) {
  Polynomial *p = const_cast<Polynomial *>(static_cast<const Polynomial *>(object));
  if (p->degree == -1) return;
  if (FILE *log = LogOpenAppend(kLogFailure)) {
    PolySaveText(log, p, 1);
    fclose(log);
  }
}

const ReportKind kReport = {PolyMessageBuffer, Describe, kLogFailure, LogAppend, false};

Matrix *ZeroCoefficients(int degree, int kind) {
  Matrix *m = MatDefClass("", 1, degree + 1, kind == 1 ? kComplex : kReal, "MatDef()");
  if (m->elements != nullptr)
    memset(m->elements, 0, static_cast<size_t>(degree + 1) * (kind == 1 ? 16 : 8));
  return MatOwn(m, kOwnedPart);
}

void FreeContents(Polynomial *p) {
  if (p->coef != nullptr) MatRelease(p->coef);
  p->coef = nullptr;
  if (p->variable != nullptr) efree(p->variable);
  p->variable = nullptr;
  p->degree = -1;
}

Polynomial *Define(const char *name, int degree, const char *variable, int kind) {
  PolyInit();
  if (degree < -1) degree = -1;
  Polynomial *p = reg.Take(Slot(degree, kind));
  if (p != nullptr) {
    if (degree >= 0)
      memset(p->coef->elements, 0, static_cast<size_t>(degree + 1) * (kind == 1 ? 16 : 8));
  } else {
    p = reg.Obtain(Slot(-1, kind));
    if (p->coef != nullptr) MatRelease(p->coef);
    p->coef = ZeroCoefficients(degree, kind);
  }
  reg.Append(p);
  p->degree = degree;
  p->status = kTemporary;
  p->kind = kind;
  SetRecordName(&p->name, name);
  PolySetVariable(p, variable);
  return p;
}

}  // namespace

VELK_DEFINE_REPORTERS(Poly, Polynomial, kReport)

int PolyDegreeMax() { return degree_max; }

void PolyInit() {
  if (reg.Ready()) return;
  MatInit();
  Polynomial *head = Registry<Polynomial>::NewRecord();
  head->name = StringDup("TOPPOLY");
  head->variable = StringDup("s");
  head->status = kMark;
  head->coef = MatOwn(MatSetName(MatDef("TOPPOLY", 1, 1), "TOPPOLY"), kOwnedPart);
  MatReal(head->coef)[0] = 0.0;
  reg.limit = EnvLimit("POLYNOMIAL_TABLE_MAX", 0, 0);
  degree_max = EnvLimit("POLYNOMIAL_DEGREE_MAX", 1000, 1000);
  reg.Start(head, (degree_max + 2) * 2);
  PolyMessageBuffer[0] = '\0';
}

Polynomial *PolyDef(const char *name, int degree, const char *variable) {
  return Define(name, degree, variable, 0);
}
Polynomial *C_PolyDef(const char *name, int degree, const char *variable) {
  return Define(name, degree, variable, 1);
}

Polynomial *PolySetVariable(Polynomial *p, const char *variable) {
  if (p->variable != nullptr) efree(p->variable);
  p->variable = (variable != nullptr && variable[0] != '\0') ? StringDup(variable) : nullptr;
  return p;
}

void PolyDestroy(Polynomial *p) {
  reg.Destroy(p, FreeContents, [] {
    PolyError("PolyDestroy()", "Duplicate destroying", nullptr);
  });
}

void PolyUndef(Polynomial *p) {
  // Pooled with its coefficient matrix, so the next definition of the same
  // degree and kind reuses both.
  reg.Undef(p, Slot(p->degree, p->kind), PolyDestroy, [](Polynomial *) {}, [] {
    PolyError("PolyUndef()", "Duplicate undefining", nullptr);
  });
}


Polynomial *PolyAssign(Polynomial *dst, Polynomial *src) {
  if (src->degree == -1) {
    PolyError("PolyAssign()", "Undefined polynomial", src);
    return dst;
  }
  if (dst == src) return dst;
  int status = dst->status;
  if (src->status == kTemporary) {
    std::swap(dst->degree, src->degree);
    std::swap(dst->status, src->status);
    std::swap(dst->kind, src->kind);
    std::swap(dst->variable, src->variable);
    std::swap(dst->coef, src->coef);
    src->status = kTemporary;
  } else {
    dst->degree = src->degree;
    dst->kind = src->kind;
    PolySetVariable(dst, src->variable);
    MatCopyResize(dst->coef, src->coef);
  }
  dst->status = status;
  SweepInOrder({ObjectKind::kRational, ObjectKind::kList, ObjectKind::kString,
                ObjectKind::kPolynomial, ObjectKind::kComplex, ObjectKind::kMatrix});
  return dst;
}

// Equal kind and degree are required of the two polynomials.
static bool Conforming(Polynomial *a, Polynomial *b, const char *location) {
  if (a->kind != b->kind) {
    PolyError2(location, "Confliction of class", a, b);
    return false;
  }
  if (a->degree != b->degree) {
    PolyError2(location, "Confliction of size", a, b);
    return false;
  }
  return true;
}

Polynomial *PolyCopy(Polynomial *dst, Polynomial *src) {
  if (!Conforming(dst, src, "PolyCopy()")) return dst;
  MatCopy(dst->coef, src->coef);
  return dst;
}

Polynomial *PolyDup(Polynomial *p) {
  Polynomial *d = Define("", p->degree, p->variable, p->kind);
  MatCopy(d->coef, p->coef);
  return d;
}

Polynomial *PolySwap(Polynomial *a, Polynomial *b) {
  if (!Conforming(a, b, "PolySwap()")) return a;
  std::swap(a->coef, b->coef);
  std::swap(a->variable, b->variable);
  return a;
}


void PolyPrintAll() {
  if (!reg.Ready()) return;
  for (Polynomial *p = reg.head->next; p != nullptr; p = p->next) PolyPrint(p);
}

int PolyPoolCount(int degree, int kind) {
  int slot = Slot(degree, kind);
  return reg.Ready() && slot >= 0 ? reg.pool_count[slot] : 0;
}

VELK_DEFINE_REGISTRY_ENTRIES(Poly, Polynomial, reg)
// Polynomials serve as the elements of matrices of classes 2 and 3.
namespace {
void *MakeElement(int cls, bool zero) {
  Polynomial *p = !zero                      ? PolyDef("", -1, nullptr)
                  : HasComplexValues(cls) ? C_PolyDef("", 0, nullptr)
                                          : PolyDef("", 0, nullptr);
  return PolyOwn(p, kOwnedElement);
}
void *DupElement(void *e) { return PolyOwn(PolyDup(static_cast<Polynomial *>(e)), kOwnedElement); }
void ReleaseElement(void *e) { PolyRelease(static_cast<Polynomial *>(e)); }
[[maybe_unused]] const bool elements_lent =
    MatSetElementKind(ClassKind(kPoly), {MakeElement, DupElement, ReleaseElement});
// Matrices of polynomials are saved and listed with the polynomial texts.
[[maybe_unused]] const bool text_lent = [] {
  MatSetPolyText({velk_poly::ElementText, velk_poly::MatrixPrintBody});
  return true;
}();
}  // namespace

VELK_REGISTER_KIND(ObjectKind::kPolynomial, Poly, Polynomial, PolyDef("", -1, nullptr))
