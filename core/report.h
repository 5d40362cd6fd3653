// The error reporter shared by every object kind.
//
// An operation that fails writes the expression it was evaluating into its
// kind's message buffer, then calls its kind's reporter with its location
// ("MatAdd()") and a fixed message. One body serves the six kinds; a kind
// contributes only how it describes an operand and what it appends to the log.
#ifndef VELK_CORE_REPORT_H
#define VELK_CORE_REPORT_H

#include <cstdio>

struct Matrix;

// When exactly 1, every report is also appended to Velk.log. Shared by all
// kinds; nothing in the program sets it, an embedding may.
extern int LogSwitch;

constexpr int kMessageSize = 256;

// What distinguishes one kind's reporter from another's.
struct ReportKind {
  char *buffer;  // the kind's message buffer, kMessageSize characters
  // Writes the description of an operand (second: it is the second one).
  void (*describe)(FILE *out, const void *object, bool second);
  const char *log_failure;  // written with fputs when Velk.log cannot be opened
  // Appends one operand to the log after the report, or does nothing.
  void (*log_append)(const void *object);
  bool list_style;  // lists: a trailing blank after the message, none before "in"
};

// The six-step report. Returns only when fatal is 0 (or a harness intercepts).
void ObjectReport(const ReportKind &kind, const char *location, const char *message,
                  const void *a, const void *b, int fatal);

// Velk.log opened for appending an operand's save form after a logged
// report, or null when it cannot be opened (failure, when not null, is then
// written to stderr). The caller closes it.
FILE *LogOpenAppend(const char *failure);

// Writes a printf-style text into a message buffer, bounded to its size.
void FormatMessage(char *buffer, const char *format, ...) __attribute__((format(printf, 2, 3)));

// Defines a kind's four reporter entries over its ReportKind table.
#define VELK_DEFINE_REPORTERS(Prefix, Type, table)                                         \
  void Prefix##Warning(const char *location, const char *message, Type *a) {               \
    ObjectReport(table, location, message, a, nullptr, 0);                                 \
  }                                                                                        \
  void Prefix##Warning2(const char *location, const char *message, Type *a, Type *b) {     \
    ObjectReport(table, location, message, a, b, 0);                                       \
  }                                                                                        \
  void Prefix##Error(const char *location, const char *message, Type *a) {                 \
    ObjectReport(table, location, message, a, nullptr, 1);                                 \
  }                                                                                        \
  void Prefix##Error2(const char *location, const char *message, Type *a, Type *b) {       \
    ObjectReport(table, location, message, a, b, 1);                                       \
  }

#define VELK_DECLARE_REPORTERS(Prefix, Type)                                          \
  void Prefix##Warning(const char *location, const char *message, Type *a);           \
  void Prefix##Warning2(const char *location, const char *message, Type *a, Type *b); \
  void Prefix##Error(const char *location, const char *message, Type *a);             \
  void Prefix##Error2(const char *location, const char *message, Type *a, Type *b);

// ---- Matrix reporter -------------------------------------------------------

extern char MatMessageBuffer[kMessageSize];
#define MatSetMessage(...) FormatMessage(MatMessageBuffer, __VA_ARGS__)

VELK_DECLARE_REPORTERS(Mat, Matrix)

// ---- Matrix argument checks: return on success, fatal report otherwise ----

void MatCheckNonZeroSize(Matrix *a, const char *location);
void MatCheckNonZeroSize2(Matrix *a, Matrix *b, const char *location);
void MatCheckSameSize(Matrix *a, Matrix *b, const char *location);
void MatCheckSameClass(Matrix *a, Matrix *b, const char *location);
void MatCheckSquare(Matrix *a, const char *location);
void MatCheckSquare2(Matrix *a, Matrix *b, const char *location);
void MatCheckReal(Matrix *a, const char *location);
void MatCheckComplex(Matrix *a, const char *location);
void MatCheckRealOrComplex(Matrix *a, const char *location);
void MatCheckPolynomial(Matrix *a, const char *location);
void MatCheckRational(Matrix *a, const char *location);
void MatClassError(Matrix *a, const char *location);
void MatClassError2(Matrix *a, Matrix *b, const char *location);

#endif
