#include "scalar/complex.h"

#include <utility>

#include "core/alloc.h"
#include "core/registry.h"
#include "core/scope.h"

char CompMessageBuffer[kMessageSize];

namespace {

Registry<Complex> reg;  // one pool stack for every complex record

void Describe(FILE *out, const void *object, bool second) {
  const Complex *c = static_cast<const Complex *>(object);
  const char *word = second ? " and" : " for";
  if (c->name != nullptr && c->name[0] != '\0')
    fprintf(out, "%s '%s(%g,%g)'", word, c->name, c->re, c->im);
  else
    fprintf(out, "%s '(%g,%g)'", word, c->re, c->im);
}

constexpr char kLogFailure[] = "Can't open logfile.\n";

// The operand in its save form after a logged report. Plain stdio rather
// than CompFileSave: a failure here must not report again from inside the
// reporter.
void LogAppend(const void *object) {
  FILE *log = fopen("Velk.log", "a");
  if (log == nullptr) {
    fputs(kLogFailure, stderr);
    return;
  }
  CompSaveText(log, const_cast<Complex *>(static_cast<const Complex *>(object)), 1);
  fclose(log);
}

const ReportKind kReport = {CompMessageBuffer, Describe, kLogFailure, LogAppend, false};

}  // namespace

VELK_DEFINE_REPORTERS(Comp, Complex, kReport)

void CompInit() {
  if (reg.Ready()) return;
  Complex *head = Registry<Complex>::NewRecord();
  head->name = StringDup("TOP_COMPLEX");
  head->status = kMark;
  reg.limit = EnvLimit("COMP_TABLE_MAX", 0, 0);
  reg.Start(head, 1);
  CompMessageBuffer[0] = '\0';
}

Complex *CompDef(const char *name, double re, double im) {
  CompInit();
  Complex *c = reg.Obtain(0);
  reg.Append(c);
  c->status = kTemporary;
  SetRecordName(&c->name, name);
  c->re = re;
  c->im = im;
  return c;
}

void CompDestroy(Complex *c) {
  reg.Destroy(c, [](Complex *) {}, [] {
    CompError("CompDestroy()", "Duplicate destroying", CompDef("", 0, 0));
  });
}

void CompUndef(Complex *c) {
  reg.Undef(c, 0, CompDestroy, [](Complex *) {}, [] {
    CompError("CompUndef()", "Duplicate undefing", CompDef("", 0, 0));
  });
}


Complex *CompDup(Complex *c) { return CompDef("", c->re, c->im); }

Complex *CompCopyValue(Complex *dst, Complex *src) {
  dst->re = src->re;
  dst->im = src->im;
  return dst;
}

Complex *CompCopyAll(Complex *dst, Complex *src) {
  CompCopyValue(dst, src);
  dst->status = src->status;
  return dst;
}

Complex *CompSwap(Complex *a, Complex *b) {
  std::swap(a->status, b->status);
  std::swap(a->re, b->re);
  std::swap(a->im, b->im);
  return a;
}

Complex *CompLet(Complex *dst, Complex *src) {
  if (dst == src) return dst;
  int status = dst->status;
  if (src->status == kTemporary) {
    CompSwap(dst, src);
    src->status = kTemporary;
  } else {
    CompCopyAll(dst, src);
  }
  dst->status = status;
  SweepInOrder({ObjectKind::kList, ObjectKind::kRational, ObjectKind::kPolynomial,
                ObjectKind::kMatrix, ObjectKind::kString, ObjectKind::kComplex});
  return dst;
}


void CompPrintAll() {
  CompInit();
  for (Complex *c = reg.head->next; c != nullptr; c = c->next) CompPrint(c);
}

int CompPoolCount() { return reg.Ready() ? reg.pool_count[0] : 0; }

VELK_DEFINE_REGISTRY_ENTRIES(Comp, Complex, reg)
VELK_REGISTER_KIND(ObjectKind::kComplex, Comp, Complex, CompDef("", 0, 0))
