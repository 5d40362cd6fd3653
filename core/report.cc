#include "core/report.h"

#include <sys/time.h>
#include <unistd.h>

#include <cstdarg>
#include <ctime>

#include "core/alloc.h"
#include "core/matrix.h"
#include "core/text.h"

int LogSwitch = 0;
char MatMessageBuffer[kMessageSize];

static const char kLogFile[] = "Velk.log";

void FormatMessage(char *buffer, const char *format, ...) {
  va_list ap;
  va_start(ap, format);
  vsnprintf(buffer, kMessageSize, format, ap);
  va_end(ap);
}

// Step 1 of a report: the expression (or the message and the operands).
static void WriteHead(FILE *out, const ReportKind &kind, const char *message, const void *a,
                      const void *b) {
  const char *blank = kind.list_style ? " " : "";
  if (kind.buffer[0] != '\0') {
    fprintf(out, "\n%s : %s%s", kind.buffer, message, blank);
    return;
  }
  fprintf(out, "\n%s%s", message, blank);
  if (a != nullptr) kind.describe(out, a, false);
  if (b != nullptr) kind.describe(out, b, true);
}

void ObjectReport(const ReportKind &kind, const char *location, const char *message,
                  const void *a, const void *b, int fatal) {
  WriteHead(stderr, kind, message, a, b);
  fprintf(stderr, " in %s.\n", location);
  fflush(stderr);
  const char bell = 7;
  if (write(1, &bell, 1) < 0) {
    // A closed terminal cannot ring; the report goes on.
  }
  if (LogSwitch == 1) {
    FILE *log = fopen(kLogFile, "a");
    if (log != nullptr) {
      struct timeval now;
      gettimeofday(&now, nullptr);
      time_t seconds = now.tv_sec;
      fputs(ctime(&seconds), log);
      WriteHead(log, kind, message, a, b);
      fprintf(log, " in %s.\n\n", location);
      fclose(log);
      if (kind.log_append != nullptr) {
        if (a != nullptr) kind.log_append(a);
        if (b != nullptr) kind.log_append(b);
      }
    } else if (kind.log_failure != nullptr) {
      fputs(kind.log_failure, stderr);
    } else {
      fprintf(stderr, "Can't open %s.\n", kLogFile);
    }
  }
  kind.buffer[0] = '\0';
  if (fatal) VelkFatalExit();
}

// ---- Matrix reporter -------------------------------------------------------

static void DescribeMatrix(FILE *out, const void *object, bool second) {
  const Matrix *m = static_cast<const Matrix *>(object);
  const char *word = second ? " and" : " for";
  if (m->name != nullptr && m->name[0] != '\0')
    fprintf(out, "%s '%s(%d x %d)'", word, m->name, m->rows, m->cols);
  else
    fprintf(out, "%s '(%d x %d)'", word, m->rows, m->cols);
}

FILE *LogOpenAppend(const char *failure) {
  FILE *log = fopen(kLogFile, "a");
  if (log == nullptr && failure != nullptr) fputs(failure, stderr);
  return log;
}

static void AppendMatrix(const void *object) {
  Matrix *m = const_cast<Matrix *>(static_cast<const Matrix *>(object));
  if (m->rows == 0 || m->cols == 0 || static_cast<long long>(m->rows) * m->cols > 100) return;
  FILE *log = fopen(kLogFile, "a");
  if (log == nullptr) return;
  MatWriteSaveForm(log, m, 1, "");
  fclose(log);
}

static const ReportKind kMatrixReport = {MatMessageBuffer, DescribeMatrix, nullptr, AppendMatrix,
                                         false};

VELK_DEFINE_REPORTERS(Mat, Matrix, kMatrixReport)

// ---- Matrix argument checks ------------------------------------------------

void MatCheckNonZeroSize(Matrix *a, const char *location) {
  if (a->rows == 0 || a->cols == 0) MatError(location, "Zero-size matrix", a);
}
void MatCheckNonZeroSize2(Matrix *a, Matrix *b, const char *location) {
  if (a->rows == 0 || a->cols == 0 || b->rows == 0 || b->cols == 0)
    MatError2(location, "Zero-size matrix", a, b);
}
void MatCheckSameSize(Matrix *a, Matrix *b, const char *location) {
  if (a->rows != b->rows || a->cols != b->cols) MatError2(location, "Not same size", a, b);
}
void MatCheckSameClass(Matrix *a, Matrix *b, const char *location) {
  if (a->cls != b->cls) MatError2(location, "Not same class", a, b);
}
void MatCheckSquare(Matrix *a, const char *location) {
  if (a->rows != a->cols) MatError(location, "Not a square matrix", a);
}
void MatCheckSquare2(Matrix *a, Matrix *b, const char *location) {
  if (a->rows != a->cols || b->rows != b->cols) MatError2(location, "Not square matrices", a, b);
}
void MatCheckReal(Matrix *a, const char *location) {
  if (!IsRealClass(a->cls)) MatError(location, "Not a real matrix", a);
}
void MatCheckComplex(Matrix *a, const char *location) {
  if (a->cls != kComplex) MatError(location, "Not a complex matrix", a);
}
void MatCheckRealOrComplex(Matrix *a, const char *location) {
  if (!IsNumericClass(a->cls)) MatError(location, "Not a real nor complex matrix", a);
}
void MatCheckPolynomial(Matrix *a, const char *location) {
  if (!IsPolyClass(a->cls)) MatError(location, "Not a polynomial matrix", a);
}
void MatCheckRational(Matrix *a, const char *location) {
  if (!IsRatClass(a->cls)) MatError(location, "Not a rational matrix", a);
}
void MatClassError(Matrix *a, const char *location) {
  MatError(location, "Not a real nor complex matrix", a);
}
void MatClassError2(Matrix *a, Matrix *b, const char *location) {
  MatError2(location, "Not a real nor complex matrix", a, b);
}
