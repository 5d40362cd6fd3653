#include "editor/entry.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <vector>

#include "core/constructors.h"
#include "editor/editor.h"
#include "io/text_format.h"
#include "matrix/operations.h"

namespace {

constexpr const char *kUsage =
    "usage: velk-edit [--help] [--version] [--] [FILE...]\n"
    "Edits each matrix text FILE in turn and writes it back when it changed.\n"
    "A FILE that cannot be read starts as an empty matrix; with no FILE the\n"
    "editor opens on an empty matrix named tmp. A folder (anything but a\n"
    "regular file) is reported and skipped, and the exit status is then 1.\n"
    "On a hang-up, SIGTERM, SIGQUIT or a fatal report while editing, changed\n"
    "work is saved to FILE.save (FILE.save.1, ... if taken; else in $HOME or\n"
    "/tmp) and standard error says where.\n"
    "\n"
    "keys:\n"
    "  h l j k, arrows, ^B ^F ^N ^P   move (space and Enter move right)\n"
    "  ^ $ (^A ^E)   first, last column     < >   first, last element\n"
    "  g   go to an element                 s     change the size\n"
    "  0-9 - .   enter a number             ^L    redraw\n"
    "  d r, d c (^K, Delete)   delete row, column    p (^Y)   put it back\n"
    "  m i o   mark, copy block, overwrite with the block\n"
    "  E O Z F   identity, ones, zeros, fill   T   transpose\n"
    "  R I   show the real, imaginary part     Q   reset to the matrix read\n"
    "  r w   read, write a file                q, Esc   quit\n"
    "  u ^R   undo, redo (every change, many levels)\n"
    "\n"
    "The screen fills the window and follows a resize (60 x 10 at least).\n"
    "A failed w is shown on the screen and keeps the old file. Fields take\n"
    "what they show (17 characters, 4 digits); prompts take UTF-8. ^S is a\n"
    "key, not a freeze. In the R or I view, o writes only that part.\n"
    "\n"
    "environment: VELK_ESCDELAY   ms to wait for the rest of an arrow key (40)\n"
    "             VELK_UNDO_MAX   bytes the undo history keeps (256 MiB)\n";

// The three options end the run at once; everything else is a file name.
enum class Option { kNone, kHelp, kVersion };

Option ParseArguments(int argc, char **argv, std::vector<const char *> &files) {
  bool options = true;
  for (int k = 1; k < argc; k++) {
    const char *a = argv[k];
    if (options && strcmp(a, "--") == 0) {
      options = false;
    } else if (options && (strcmp(a, "--help") == 0 || strcmp(a, "-h") == 0)) {
      return Option::kHelp;
    } else if (options && strcmp(a, "--version") == 0) {
      return Option::kVersion;
    } else {
      files.push_back(a);
    }
  }
  return Option::kNone;
}

// Status of the matrix read from a file while it waits for the comparison:
// kept out of the sweeps that the editor's assignments run.
constexpr int kKept = 2;

// A name that is there but is no regular file (a folder, a device) cannot be
// edited as a matrix: it is reported and skipped. False then.
bool Editable(const char *file) {
  struct stat st;
  if (stat(file, &st) != 0 || S_ISREG(st.st_mode)) return true;
  fprintf(stderr, "velk-edit: %s: %s\n", file,
          S_ISDIR(st.st_mode) ? "Is a directory" : "Not a regular file");
  return false;
}

void EditFile(const char *file) {
  if (access(file, R_OK) != 0) {
    Matrix *m = MatSetName(MatZDef(0), file);
    Matrix *edited = MatEdit(m);
    MatFileWrite(edited, file);
    MatUndef(edited);
    return;
  }
  Matrix *original = MatSetStatus(MatFileRead(file), kKept);
  Matrix *copy = MatSetName(MatDup(original), file);
  Matrix *edited = MatEdit(copy);
  if (!MatEqualExact(original, edited)) MatFileWrite(edited, file);
  MatUndef(original);
  MatUndef(edited);
}

}  // namespace

bool MatEqualExact(Matrix *a, Matrix *b) {
  if (a->cls != b->cls || a->rows != b->rows || a->cols != b->cols) return false;
  long long n = MatCount(a) * (a->cls == kComplex ? 2 : 1);
  if (n == 0) return true;
  Matrix *d = MatSub(a, b);
  const double *v = MatReal(d);
  bool equal = true;
  for (long long k = 0; k < n && equal; k++) equal = v[k] == 0.0;
  MatUndef(d);
  return equal;
}

int VelkEditMain(int argc, char **argv) {
  std::vector<const char *> files;
  switch (ParseArguments(argc, argv, files)) {
    case Option::kHelp: fputs(kUsage, stdout); return 0;
    case Option::kVersion: printf("velk-edit %s\n", kVelkEditVersion); return 0;
    case Option::kNone: break;
  }
  // A frame leaves in one write: output is flushed before each key is read.
  static char frame[1 << 16];
  setvbuf(stdout, frame, _IOFBF, sizeof frame);
  MatInit();
  if (files.empty()) {
    MatEdit(MatSetName(MatZDef(0), "tmp"));
    return 0;
  }
  int status = 0;
  for (const char *file : files) {
    if (Editable(file))
      EditFile(file);
    else
      status = 1;
  }
  return status;
}
