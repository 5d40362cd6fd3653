#include "io/poly_io.h"

#include <cstring>
#include <string>
#include <utility>

#include "core/registry.h"
#include "io/binary.h"
#include "io/output_file.h"
#include "io/text_format.h"

namespace {

constexpr int kPolynomialKind = 5;
constexpr int kRationalKind = 6;

const char *NameOf(const char *name) { return name != nullptr ? name : ""; }

// The save form through an output file; report(what) is called with "Can't
// open file " or "Can't write file ".
template <class Write, class Report>
void Save(const char *file, int append, Write write, Report report) {
  OutputFile out(file, append != 0);
  if (out.stream() == nullptr) {
    report("Can't open file ");
    return;
  }
  write(out.stream());
  if (!out.Finish()) report("Can't write file ");
}

void WriteVariable(FILE *stream, const char *variable) {
  int length = variable != nullptr ? static_cast<int>(strlen(variable)) + 1 : 0;
  fwrite(&length, sizeof length, 1, stream);
  if (length > 0) fwrite(variable, 1, static_cast<size_t>(length), stream);
}

// The variable of a record: null when none, "" (not allocated) on failure.
bool ReadVariable(FILE *stream, bool foreign, std::string *variable, bool *none) {
  int length;
  if (!DataReadWords(stream, &length, 1, foreign)) return false;
  if (length < 0 || length > kDataNameMax) return false;
  *none = length == 0;
  std::string text(static_cast<size_t>(length), '\0');
  if (length > 0 &&
      fread(&text[0], 1, static_cast<size_t>(length), stream) != static_cast<size_t>(length))
    return false;
  *variable = text.c_str();  // up to its NUL
  return true;
}

// The coefficient class word of a record: 0 real, 1 complex.
bool ComplexWord(int word, bool *complex) {
  if (word != 0 && word != 1) return false;
  *complex = word == 1;
  return true;
}

// p takes t's degree, kind, variable and coefficients; t goes back to the pool.
void TakeContents(Polynomial *p, Polynomial *t) {
  std::swap(p->degree, t->degree);
  std::swap(p->kind, t->kind);
  std::swap(p->variable, t->variable);
  std::swap(p->coef, t->coef);
  PolyUndef(t);
}

Polynomial *ReadPart(FILE *stream, int degree, bool complex, bool foreign, const std::string &v,
                     bool none) {
  Polynomial *p = DataReadCoefficients(stream, degree, complex, foreign);
  if (p != nullptr) PolySetVariable(p, none ? nullptr : v.c_str());
  return p;
}

}  // namespace

// ---- polynomials ----------------------------------------------------------------------

Polynomial *PolyFileRead(const char *file) {
  Matrix *m = MatFileRead(file);
  Polynomial *p = PolyCoefDef(m, nullptr);
  MatUndef(m);
  return p;
}

Polynomial *PolyFileWrite(Polynomial *p, const char *file) {
  MatFileWrite(p->coef, file);
  return p;
}

Polynomial *PolyFileSave(Polynomial *p, const char *file, int append, int terminate) {
  Save(
      file, append, [&](FILE *fp) { PolySaveText(fp, p, terminate); },
      [&](const char *what) {
        PolySetMessage("save %s(%s^%d), %s", NameOf(p->name), PolyVariableName(p), p->degree, file);
        PolyError("PolyFileSave()", (std::string(what) + file).c_str(), p);
      });
  return p;
}

Polynomial *PolyWrite(Polynomial *p, FILE *stream) {
  DataRecordBegin(stream, kPolynomialKind, kDataDouble, 1, p->degree + 1, p->kind, NameOf(p->name));
  WriteVariable(stream, p->variable);
  DataWriteCoefficients(stream, p, p->kind == 1);
  return p;
}

Polynomial *PolyRead(Polynomial *p, FILE *stream) {
  static DataRecord record;  // keeps a 1 KiB name buffer off the stack
  const char *failure = DataRecordOpen(&record, stream, kPolynomialKind);
  Polynomial *t = nullptr;
  if (failure == nullptr) {
    bool complex = false, none = true;
    std::string variable;
    if (ComplexWord(record.header[kDataClass], &complex) && record.header[kDataColumns] >= 0 &&
        ReadVariable(stream, record.foreign, &variable, &none))
      t = ReadPart(stream, record.header[kDataColumns] - 1, complex, record.foreign, variable,
                   none);
    if (t == nullptr) failure = "Data is broken or too few";
  }
  if (failure != nullptr) {
    PolySetMessage("read <- \"\"");
    PolyError("PolyRead()", failure, p);
    return p;
  }
  TakeContents(p, t);
  PolySetName(p, record.header[kDataNameLength] <= 1 ? "ANS_POLY" : record.name);
  return p;
}

// ---- rationals ------------------------------------------------------------------------

Rational *RatFileWrite(Rational *r, const char *file) {
  PolyFileWrite(r->nume, (std::string(file) + ".N").c_str());
  PolyFileWrite(r->deno, (std::string(file) + ".D").c_str());
  return r;
}

Rational *RatFileRead(const char *file) {
  Polynomial *n = PolyFileRead((std::string(file) + ".N").c_str());
  Polynomial *d = PolyFileRead((std::string(file) + ".D").c_str());
  Rational *r = RatNumeDenoDef(n, d);
  PolyUndef(n);
  PolyUndef(d);
  return r;
}

Rational *RatFileSave(Rational *r, const char *file, int append, int terminate) {
  Save(
      file, append, [&](FILE *fp) { RatSaveText(fp, r, terminate); },
      [&](const char *what) {
        RatSetMessage("save %s(s^%d/s^%d), %s", NameOf(r->name), r->nume_degree, r->deno_degree,
                      file);
        RatError("RatFileSave()", (std::string(what) + file).c_str(), r);
      });
  return r;
}

Rational *RatWrite(Rational *r, FILE *stream) {
  // The polynomials' own degrees, so that the counts always match the data.
  DataRecordBegin(stream, kRationalKind, kDataDouble, r->nume->degree, r->deno->degree, r->kind,
                  NameOf(r->name));
  WriteVariable(stream, r->nume->variable);
  DataWriteCoefficients(stream, r->nume, r->kind == 1);
  DataWriteCoefficients(stream, r->deno, r->kind == 1);
  return r;
}

Rational *RatRead(Rational *r, FILE *stream) {
  static DataRecord record;
  const char *failure = DataRecordOpen(&record, stream, kRationalKind);
  Polynomial *n = nullptr, *d = nullptr;
  if (failure == nullptr) {
    bool complex = false, none = true;
    std::string variable;
    if (ComplexWord(record.header[kDataClass], &complex) &&
        ReadVariable(stream, record.foreign, &variable, &none) && record.header[kDataRows] >= 0 &&
        record.header[kDataColumns] >= 0) {
      n = ReadPart(stream, record.header[kDataRows], complex, record.foreign, variable, none);
      if (n != nullptr)
        d = ReadPart(stream, record.header[kDataColumns], complex, record.foreign, variable, none);
    }
    if (d == nullptr) failure = "Data is broken or too few";
  }
  if (failure != nullptr) {
    if (n != nullptr) PolyUndef(n);
    RatSetMessage("read <- \"\"");
    RatError("RatRead()", failure, r);
    return r;
  }
  Rational *t = RatNumeDenoDef(n, d);
  PolyUndef(n);
  PolyUndef(d);
  std::swap(r->kind, t->kind);
  std::swap(r->nume, t->nume);
  std::swap(r->deno, t->deno);
  std::swap(r->nume_degree, t->nume_degree);
  std::swap(r->deno_degree, t->deno_degree);
  RatUndef(t);
  RatSetName(r, record.header[kDataNameLength] == 0 ? "ANS_RAT" : record.name);
  return r;
}
