#include "io/complex_io.h"

#include <cstring>
#include <string>

#include "io/binary.h"
#include "io/output_file.h"

namespace {

constexpr int kComplexKind = 4;

bool Is(const char *file, const char *stream_name) { return strcmp(file, stream_name) == 0; }

}  // namespace

// ---- text ----------------------------------------------------------------------------

Complex *CompFileRead(const char *file) {
  FILE *fp = Is(file, "stdin") ? stdin : fopen(file, "r");
  if (fp == nullptr) {
    CompError("CompFileRead()", "Can't open file", nullptr);
    return CompDef("", 0, 0);
  }
  double re = 0, im = 0;
  if (fscanf(fp, "%lf %lf", &re, &im) < 2) {
    // A short file leaves the parts it did not reach at 0.
  }
  if (fp != stdin) fclose(fp);
  return CompDef("", re, im);
}

Complex *CompFileWrite(Complex *c, const char *file) {
  char text[kComplexTextSize];
  CompToString(c, text, nullptr);
  if (Is(file, "stdout")) {
    fputs(text, stdout);
    fclose(stdout);  // this writer ends standard output
    return c;
  }
  OutputFile out(file, false);
  if (out.stream() == nullptr) {
    fprintf(stderr, "CompFileWrite(): Can not open %s.\n", file);
    return c;
  }
  fputs(text, out.stream());
  if (!out.Finish()) fprintf(stderr, "CompFileWrite(): Can't write file %s.\n", file);
  return c;
}

Complex *CompFileSave(Complex *c, const char *file, int append, int terminate) {
  auto fail = [&](const char *what) {
    CompSetMessage("save %s(%G,%G), %s", c->name != nullptr ? c->name : "", c->re, c->im, file);
    CompError("CompFileSave()", (std::string(what) + file).c_str(), c);
  };
  OutputFile out(file, append != 0);
  if (out.stream() == nullptr) {
    fail("Can't open file ");
    return c;
  }
  CompSaveText(out.stream(), c, terminate);
  if (!out.Finish()) fail("Can't write file ");
  return c;
}

// ---- binary record -------------------------------------------------------------------

Complex *CompWrite(Complex *c, FILE *stream) {
  DataRecordBegin(stream, kComplexKind, kDataDouble, 0, 0, 0, c->name);
  const double parts[2] = {c->re, c->im};
  fwrite(parts, sizeof(double), 2, stream);
  return c;
}

Complex *CompRead(Complex *c, FILE *stream) {
  static DataRecord record;  // keeps a 1 KiB name buffer off the stack
  const char *failure = DataRecordOpen(&record, stream, kComplexKind);
  double parts[2];
  if (failure == nullptr && !DataReadDoubles(stream, parts, 2, record.foreign))
    failure = "Data is broken or too few";
  if (failure != nullptr) {
    // Records without prefix (version 4) name the wrong kind from the
    // reader's older name.
    bool old_kind = record.version == 4 && strcmp(failure, "Incorrect class datafile") == 0;
    CompSetMessage("read <- \"\"");
    CompError(old_kind ? "ComplexRead()" : "CompRead()", failure, c);
    return c;
  }
  CompSetName(c, record.header[kDataNameLength] == 1 ? "ANS_STR" : record.name);
  c->re = parts[0];
  c->im = parts[1];
  return c;
}
