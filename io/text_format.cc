#include "io/text_format.h"

#include <sys/stat.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "core/alloc.h"
#include "io/number_text.h"
#include "io/output_file.h"

namespace {

// ---- Opening and closing ---------------------------------------------------

// The failures of opening and writing a file: the caller's label is set and
// the report made from the caller's location.
template <class SetLabel>
void FileFailure(const char *what, const char *file, const char *location, SetLabel set_label) {
  set_label();
  std::string message = std::string(what) + file;
  MatError(location, message.c_str(), nullptr);
}

// "stdin" stands for the standard input, which is never closed.
template <class SetLabel>
FILE *OpenInput(const char *file, const char *location, SetLabel set_label) {
  if (strcmp(file, "stdin") == 0) return stdin;
  FILE *fp = fopen(file, "r");
  if (fp == nullptr) FileFailure("Can't open file ", file, location, set_label);
  return fp;
}

// Output through OutputFile ("stdout" included): false after the open
// failure's report.
template <class SetLabel>
bool OpenOutput(OutputFile &out, const char *file, const char *location, SetLabel set_label) {
  if (out.stream() != nullptr) return true;
  FileFailure("Can't open file ", file, location, set_label);
  return false;
}

template <class SetLabel>
void FinishOutput(OutputFile &out, const char *file, const char *location, SetLabel set_label) {
  if (!out.Finish()) FileFailure("Can't write file ", file, location, set_label);
}

const char *NameOf(const Matrix *m) { return m->name != nullptr ? m->name : ""; }

// ---- Reading: the two inputs -------------------------------------------------

// The header line and the line skip read through a buffer of this size, as
// fgets does, so a longer line is taken in pieces of one byte less.
constexpr int kLineBuffer = 4096;
// The line skip goes on to the next piece only after a piece of exactly this
// length; a longer line usually leaves its tail to be read as data.
constexpr size_t kPieceContinues = 1023;

// A named file, read whole into memory and closed at once.
class MemoryInput {
 public:
  explicit MemoryInput(std::vector<char> data)
      : data_(std::move(data)), src_{data_.data(), data_.data() + data_.size()} {}

  MemorySource &Numbers() { return src_; }
  int Peek() const { return src_.Peek(); }
  int Get() { return src_.p < src_.end ? static_cast<unsigned char>(*src_.p++) : EOF; }
  // fgets into line (when given); returns the length strlen would see.
  size_t ReadPiece(char *line) {
    size_t avail = std::min<size_t>(src_.end - src_.p, kLineBuffer - 1);
    const char *nl = static_cast<const char *>(memchr(src_.p, '\n', avail));
    size_t n = nl != nullptr ? static_cast<size_t>(nl - src_.p) + 1 : avail;
    if (line != nullptr) {
      memcpy(line, src_.p, n);
      line[n] = '\0';
    }
    size_t len = strnlen(src_.p, n);
    src_.p += n;
    return len;
  }
  void Rewind() { src_.p = data_.data(); }
  long long Remaining() const { return src_.end - src_.p; }

 private:
  std::vector<char> data_;
  MemorySource src_;
};

// Standard input, read through the stream so that whatever follows the matrix
// stays there for the next reader.
class StreamInput {
 public:
  explicit StreamInput(FILE *fp) : fp_(fp) {}

  StreamInput &Numbers() { return *this; }
  int Peek() {
    int c = getc(fp_);
    ungetc(c, fp_);
    return c;
  }
  void Take() { token_.push_back(static_cast<char>(getc(fp_))); }
  void Begin() { token_.clear(); }
  std::string_view Token() const { return token_; }
  int Get() { return getc(fp_); }
  size_t ReadPiece(char *line) {
    char skipped[kLineBuffer];
    if (line == nullptr) line = skipped;
    line[0] = '\0';
    if (fgets(line, kLineBuffer, fp_) == nullptr) line[0] = '\0';
    return strlen(line);
  }
  void Rewind() { rewind(fp_); }
  // What is left when standard input is a regular file; -1 when unknown.
  long long Remaining() {
    struct stat st;
    if (fstat(fileno(fp_), &st) != 0 || !S_ISREG(st.st_mode)) return -1;
    long pos = ftell(fp_);
    if (pos < 0) return -1;
    return std::max<long long>(0, st.st_size - pos);
  }

 private:
  FILE *fp_;
  std::string token_;
};

std::vector<char> ReadWhole(FILE *fp) {
  std::vector<char> data;
  struct stat st;
  if (fstat(fileno(fp), &st) == 0 && S_ISREG(st.st_mode) && st.st_size > 0)
    data.resize(static_cast<size_t>(st.st_size) + 1);  // one more to see a file that grew
  else
    data.resize(1 << 16);
  size_t size = 0;
  for (;;) {
    size += fread(data.data() + size, 1, data.size() - size, fp);
    if (size < data.size()) break;  // end of file, or an error that ends it as well
    data.resize(data.size() * 2);
  }
  data.resize(size);
  return data;
}

// ---- Reading: the format -----------------------------------------------------

struct Shape {
  long long rows = 0;
  long long cols = 0;
  bool complex = false;
  bool by_column = false;  // the header layout: one line per column
};

template <class Input>
void SkipLine(Input &in) {
  while (in.ReadPiece(nullptr) == kPieceContinues) {
  }
}

// "# rows cols"; a number that is missing, negative or beyond an int leaves
// no usable size, and that is broken data.
bool HeaderShape(const char *line, Shape *s) {
  long long rows, cols;
  if (sscanf(line, "# %lld %lld", &rows, &cols) != 2) return false;
  // A negative count is the definition's to report; counts no int can hold are broken.
  if (rows < INT_MIN || cols < INT_MIN || rows > INT_MAX || cols > INT_MAX) return false;
  s->rows = rows;
  s->cols = cols;
  s->complex = strchr(line, 'C') != nullptr;
  s->by_column = true;
  return true;
}

// A token converts when "%lf" takes a number from its text (up to a NUL).
bool TokenConverts(const char *token, size_t len) {
  MemorySource src{token, token + strnlen(token, len)};
  double x;
  return ScanDouble(src, &x);
}

// The counting pass of a file without a header: blanks and tabs separate
// tokens, a line feed or carriage return ends a line, empty lines do not
// count, and every other line must hold the same number of tokens.
template <class Input>
bool CountRows(Input &in, Shape *s) {
  char token[kLineBuffer];
  size_t len = 0;
  long long count = 0;
  for (;;) {
    int c = in.Get();
    bool line_end = c == '\n' || c == '\r' || c == EOF;
    if (!line_end && c != ' ' && c != '\t') {
      if (len == sizeof token - 1) return false;  // no number needs a token this long
      token[len++] = static_cast<char>(c);
      continue;
    }
    if (len > 0) {
      if (!TokenConverts(token, len)) return false;
      ++count;
      len = 0;
    }
    if (!line_end) continue;
    if (count > 0) {
      if (s->rows > 0 && count != s->cols) return false;
      s->cols = count;
      ++s->rows;
      count = 0;
    }
    if (c == EOF) return true;
  }
}

// Storage the allocator can give: its sizes are ints.
bool StorageFits(const Shape &s) {
  long long element = s.complex ? 2 * sizeof(double) : sizeof(double);
  return s.rows * s.cols <= INT_MAX / element;
}

// Reads the shape and the numbers, in the order the file holds them. Returns
// false for broken data.
template <class Input>
bool ParseMatrix(Input &in, Shape *s, std::vector<double> *values) {
  if (in.Peek() == '#') {
    char line[kLineBuffer];
    in.ReadPiece(line);
    if (!HeaderShape(line, s)) return false;
    if (s->rows < 0 || s->cols < 0) return true;  // MatDef reports it
  } else {
    if (!CountRows(in, s)) return false;
    in.Rewind();
  }
  if (!StorageFits(*s)) return false;
  const long long width = s->complex ? 2 : 1;
  const long long outer = s->by_column ? s->cols : s->rows;
  const long long inner = (s->by_column ? s->rows : s->cols) * width;
  const long long needed = s->rows * s->cols * width;
  // Every number takes at least one character, so a header asking for more
  // than the input holds is broken before anything is allocated for it.
  const long long room = in.Remaining();
  if (room >= 0 && needed > room) return false;
  values->reserve(static_cast<size_t>(room >= 0 ? needed : std::min(needed, 1LL << 16)));
  auto &numbers = in.Numbers();
  for (long long k = 0; k < outer; k++) {
    while (in.Peek() == '#') SkipLine(in);
    for (long long n = 0; n < inner; n++) {
      double x;
      if (!ScanDouble(numbers, &x)) return false;
      values->push_back(x);
    }
    SkipLine(in);
    // At the end with nothing to read, the remaining columns find nothing either.
    if (inner == 0 && in.Peek() == EOF) break;
  }
  return true;
}

Matrix *BuildMatrix(const Shape &s, const std::vector<double> &values) {
  int rows = static_cast<int>(s.rows), cols = static_cast<int>(s.cols);
  Matrix *m = s.complex ? C_MatDef("", rows, cols) : MatDef("", rows, cols);
  if (values.empty()) return m;
  double *d = MatReal(m);
  if (!s.by_column) {
    std::copy(values.begin(), values.end(), d);
    return m;
  }
  const double *from = values.data();
  const size_t stride = static_cast<size_t>(cols);
  for (size_t k = 0; k < stride; k++) {
    if (s.complex) {
      for (size_t n = 0; n < static_cast<size_t>(rows); n++, from += 2) {
        d[2 * (n * stride + k)] = from[0];
        d[2 * (n * stride + k) + 1] = from[1];
      }
    } else {
      for (size_t n = 0; n < static_cast<size_t>(rows); n++) d[n * stride + k] = *from++;
    }
  }
  return m;
}

Matrix *ReadFailure(const char *file, const char *message) {
  MatSetMessage("read << \"%s\"", file);
  MatError("MatFileRead()", message, nullptr);
  return MatDef("", 0, 0);
}

// ---- Writing -----------------------------------------------------------------

// Collects output and hands it to the stream in large pieces.
class OutBuffer {
 public:
  explicit OutBuffer(FILE *fp) : fp_(fp) {}
  ~OutBuffer() { Flush(); }
  // Room for n more bytes at the returned place; Commit says how many were used.
  char *Reserve(size_t n) {
    if (len_ + n > sizeof buf_) Flush();
    return buf_ + len_;
  }
  void Commit(size_t n) { len_ += n; }
  void Put(char c) { *Reserve(1) = c, Commit(1); }
  void Flush() {
    if (len_ > 0) fwrite(buf_, 1, len_, fp_);
    len_ = 0;
  }

 private:
  FILE *fp_;
  size_t len_ = 0;
  char buf_[1 << 16];
};

void PutNumber(OutBuffer &out, double v) { out.Commit(static_cast<size_t>(FormatE16(v, out.Reserve(32)))); }

// One line per column, elements separated by one blank.
void WriteColumns(FILE *fp, Matrix *m) {
  OutBuffer out(fp);
  const double *d = MatReal(m);
  const size_t width = m->cls == kComplex ? 2 : 1;
  for (size_t k = 0; k < static_cast<size_t>(m->cols); k++) {
    for (size_t n = 0; n < static_cast<size_t>(m->rows); n++) {
      const double *e = d + (n * m->cols + k) * width;
      if (n > 0) out.Put(' ');
      PutNumber(out, e[0]);
      if (width == 2) {
        out.Put(' ');
        PutNumber(out, e[1]);
      }
    }
    out.Put('\n');
  }
}

// ---- The listings --------------------------------------------------------------

enum class PrintStyle { kMatrix, kArray, kIndex };

const char *ClassWord(PrintStyle style, int cls) {
  static const char *const kWords[2][4] = {{"Matrix", "CoMatrix", "PoMatrix", "RaMatrix"},
                                           {"Array", "CoArray", "PoArray", "RaArray"}};
  if (cls < kReal || cls > kCompRat) return "";
  if (style == PrintStyle::kIndex) return cls == kReal ? "Index" : "";
  int kind = cls == kReal ? 0 : cls == kComplex ? 1 : IsPolyClass(cls) ? 2 : 3;
  return kWords[style == PrintStyle::kMatrix ? 0 : 1][kind];
}

// Prints the columns in blocks of block_cols: a heading line of the block's
// column labels, then one line per row of the block's element texts.
template <class Label, class Element>
void PrintBlocks(Matrix *m, int block_cols, Label label, Element element) {
  for (int j0 = 0; j0 < m->cols; j0 += block_cols) {
    const int j1 = std::min(m->cols, j0 + block_cols);
    fputs("      ", stdout);
    for (int j = j0; j < j1; j++) label(j + 1);
    putchar('\n');
    for (int i = 0; i < m->rows; i++) {
      printf(" (%3d)", i + 1);
      for (int j = j0; j < j1; j++) element(static_cast<long long>(i) * m->cols + j);
      putchar('\n');
    }
  }
}

void PrintRealBody(Matrix *m) {
  const double *d = MatReal(m);
  char text[kRealTextSize];
  PrintBlocks(
      m, 4, [](int j) { printf("      (%3d)     ", j); },
      [&](long long k) { printf("%16s", RealToString(d[k], text, "%16.8E")); });
}

void PrintComplexBody(Matrix *m) {
  const double *d = MatReal(m);
  char re[kRealTextSize], im[kRealTextSize];
  PrintBlocks(
      m, 2, [](int j) { printf("  [ (%3d)-Real      (%3d)-Imag ]", j, j); },
      [&](long long k) {
        printf("%16s%16s", RealToString(d[2 * k], re, "%16.8E"),
               RealToString(d[2 * k + 1], im, "%16.8E"));
      });
}

void Print(Matrix *m, PrintStyle style) {
  if (NameOf(m)[0] != '\0')
    printf(" ===  %s  (%4d  x%4d)  ", NameOf(m), m->rows, m->cols);
  else
    printf(" ===  ans  (%4d  x%4d)  ", m->rows, m->cols);
  printf("%s  ===\n", ClassWord(style, m->cls));
  if (m->rows == 0 || m->cols == 0) return;
  if (style == PrintStyle::kIndex && m->cls != kReal) return;
  void (*body)(Matrix *) = nullptr;
  if (m->cls == kReal)
    body = PrintRealBody;
  else if (m->cls == kComplex)
    body = PrintComplexBody;
  else if (IsPolyClass(m->cls))
    body = MatGetPolyText().print_body;
  else if (IsRatClass(m->cls))
    body = MatGetRatText().print_body;
  if (body != nullptr) body(m);
}

}  // namespace

// ---- Public entries --------------------------------------------------------------

Matrix *MatFileRead(const char *file) {
  FILE *fp = OpenInput(file, "MatFileRead()", [&] { MatSetMessage("read << \"%s\"", file); });
  if (fp == nullptr) return MatDef("", 0, 0);
  Shape shape;
  std::vector<double> values;
  bool ok;
  if (fp == stdin) {
    StreamInput in(fp);
    ok = ParseMatrix(in, &shape, &values);
  } else {
    MemoryInput in(ReadWhole(fp));
    fclose(fp);
    ok = ParseMatrix(in, &shape, &values);
  }
  if (!ok) {
    std::vector<double>().swap(values);  // nothing held over a report that may not return
    return ReadFailure(file, "Data may be broken.");
  }
  return BuildMatrix(shape, values);
}

void MatWriteText(FILE *fp, Matrix *m) {
  fprintf(fp, m->cls == kComplex ? "# %d %d C\n" : "# %d %d\n", m->rows, m->cols);
  WriteColumns(fp, m);
}

Matrix *MatFileWrite(Matrix *m, const char *file) {
  auto label = [&] {
    MatSetMessage("print %s(%dx%d) >> \"%s\"", NameOf(m), m->rows, m->cols, file);
  };
  OutputFile out(file, false);
  if (!OpenOutput(out, file, "MatFileWrite()", label)) return m;
  if (!IsNumericClass(m->cls)) {
    // Nothing is written: the file stays as it was.
    label();
    out.Abandon();
    MatError("MatFileWrite()", "Neither a real matrix nor a complex matrix", m);
    return m;
  }
  MatWriteText(out.stream(), m);
  FinishOutput(out, file, "MatFileWrite()", label);
  return m;
}

Matrix *MatFileSave(Matrix *m, const char *file, int append, int terminate,
                    const char *function_name) {
  auto label = [&] { MatSetMessage("save %s(%dx%d), \"%s\"", NameOf(m), m->rows, m->cols, file); };
  OutputFile out(file, append != 0);
  if (!OpenOutput(out, file, "MatFileSave()", label)) return m;
  MatWriteSaveForm(out.stream(), m, terminate, function_name);
  FinishOutput(out, file, "MatFileSave()", label);
  return m;
}

void MatPrint(Matrix *m) { Print(m, PrintStyle::kMatrix); }
void MatPrintArray(Matrix *m) { Print(m, PrintStyle::kArray); }
void MatPrintIndex(Matrix *m) { Print(m, PrintStyle::kIndex); }

