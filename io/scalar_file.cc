#include "io/scalar_file.h"

#include <cstdio>

#include "core/text.h"
#include "io/output_file.h"

namespace {

bool Named(const char *name) { return name != nullptr && name[0] != '\0'; }

// Opens file for one writer; the open failure's message names the file.
FILE *Open(OutputFile &out, const char *file, const char *message) {
  if (out.stream() == nullptr) fprintf(stderr, message, file);
  return out.stream();
}

int Finish(OutputFile &out, const char *file, const char *function) {
  if (out.Finish()) return 0;
  fprintf(stderr, "%s(): Can't write file %s.\n", function, file);
  return -1;
}

}  // namespace

int IntegerFileSave(int value, const char *file, const char *name, int append, int terminate) {
  OutputFile out(file, append != 0);
  FILE *f = Open(out, file,
                 append ? "IntegerFileSave(): Cann't open %s.\n" : "IntegerFileSave(): Can't open %s.\n");
  if (f == nullptr) return -1;
  if (Named(name))
    fprintf(f, "%s = %d", name, value);
  else
    fprintf(f, "%d", value);
  if (terminate) fputs(";\n\n", f);
  return Finish(out, file, "IntegerFileSave");
}

int RealFileSave(double value, const char *file, const char *name, int append, int terminate) {
  OutputFile out(file, append != 0);
  FILE *f = Open(out, file, "RealFileSave(): Can't open %s.\n");
  if (f == nullptr) return -1;
  char buffer[kRealTextSize];
  if (Named(name)) fprintf(f, "%s = ", name);
  fprintf(f, "%16s", RealToString(value, buffer, "%16.8E"));
  if (terminate) fputs(";\n\n", f);
  return Finish(out, file, "RealFileSave");
}

int StringFileWrite(const char *name, const char *text, const char *file) {
  (void)name;
  OutputFile out(file, false);
  FILE *f = Open(out, file, "StringFileWrite(): Can not open %s.\n");
  if (f == nullptr) return -1;
  fprintf(f, "%s", text);
  return Finish(out, file, "StringFileWrite");
}
