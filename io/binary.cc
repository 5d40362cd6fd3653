#include "io/binary.h"

#include <sys/socket.h>

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "core/alloc.h"
#include "core/matrix.h"
#include "core/registry.h"
#include "core/report.h"
#include "scalar/polynomial.h"
#include "scalar/rational.h"
#include "sys/sockets.h"

// ---- words, doubles and byte order ------------------------------------------

namespace {

constexpr uint32_t kMarker = 0xFFFFFFFFu;

uint32_t Swap32(uint32_t w) { return __builtin_bswap32(w); }

void SwapBytes(unsigned char *p, int size) {
  for (int i = 0, j = size - 1; i < j; i++, j--) std::swap(p[i], p[j]);
}

void WriteWord(FILE *stream, int word) { fwrite(&word, sizeof word, 1, stream); }

bool ReadWord(FILE *stream, int *word) { return fread(word, sizeof *word, 1, stream) == 1; }

}  // namespace

int DataByteOrderForeign(int t) {
  const uint32_t type = static_cast<uint32_t>(t);
  const uint32_t machine = static_cast<uint32_t>(kDataMachine);
  if (type & 0xF00000F0u) return (type & 0xFF000000u) != machine;
  if (type & 0x0F00000Fu) return machine == 0x20000000u;
  return machine != 0x20000000u;
}

void DataPrefixWrite(FILE *stream) {
  WriteWord(stream, static_cast<int>(kMarker));
  WriteWord(stream, 5);
  WriteWord(stream, 0);
}

// The header as DataHeaderRead gives it, and whether its byte order was foreign.
static int HeaderRead(int header[5], FILE *stream, int *version, bool *foreign) {
  int first;
  if (!ReadWord(stream, &first)) return 0;
  int words = 0;
  int raw_version = 4;
  bool prefixed = static_cast<uint32_t>(first) == kMarker;
  if (prefixed) {
    int reserved;
    if (!ReadWord(stream, &raw_version) || !ReadWord(stream, &reserved)) return 0;
  } else {
    header[words++] = first;  // no prefix: the word read is already the type word
  }
  for (; words < 5; words++)
    if (!ReadWord(stream, &header[words])) return 0;
  *foreign = DataByteOrderForeign(header[kDataType]) != 0;
  if (*foreign) {
    // Every word of a foreign record is swapped, the prefix's version included.
    for (int k = 0; k < 5; k++) header[k] = static_cast<int>(Swap32(static_cast<uint32_t>(header[k])));
    if (prefixed) raw_version = static_cast<int>(Swap32(static_cast<uint32_t>(raw_version)));
  }
  *version = raw_version;
  return 1;
}

int DataHeaderRead(int header[5], FILE *stream, int *version) {
  bool foreign;
  return HeaderRead(header, stream, version, &foreign);
}

void DataRecordBegin(FILE *stream, int kind, int precision, int rows, int cols, int cls,
                     const char *name) {
  if (name == nullptr) name = "";
  int length = static_cast<int>(strlen(name)) + 1;
  DataPrefixWrite(stream);
  WriteWord(stream, kDataMachine | precision | kind);
  WriteWord(stream, rows);
  WriteWord(stream, cols);
  WriteWord(stream, cls);
  WriteWord(stream, length);
  fwrite(name, 1, static_cast<size_t>(length), stream);
}

const char *DataRecordOpen(DataRecord *r, FILE *stream, int requested) {
  if (!HeaderRead(r->header, stream, &r->version, &r->foreign)) return "Data structure is broken";
  int expected = (r->version == 4 && requested == 7) ? 0 : requested;
  if ((r->header[kDataType] & 0xFF) != expected) return "Incorrect class datafile";
  int length = r->header[kDataNameLength];
  if (length > kDataNameMax || length < 0) return "Incorrect machine datafile";
  if (fread(r->name, 1, static_cast<size_t>(length), stream) != static_cast<size_t>(length))
    return "Variable name is too short";
  r->name[length] = '\0';
  return nullptr;
}

// n values of type T in the record's byte order.
template <class T>
static bool ReadValues(FILE *stream, T *values, long long n, bool foreign) {
  if (n <= 0) return n == 0;
  if (fread(values, sizeof(T), static_cast<size_t>(n), stream) != static_cast<size_t>(n))
    return false;
  if (foreign)
    for (long long k = 0; k < n; k++)
      SwapBytes(reinterpret_cast<unsigned char *>(&values[k]), sizeof(T));
  return true;
}

bool DataReadWords(FILE *stream, int *words, long long n, bool foreign) {
  return ReadValues(stream, words, n, foreign);
}

bool DataReadDoubles(FILE *stream, double *values, long long n, bool foreign) {
  return ReadValues(stream, values, n, foreign);
}

// ---- raw typed values ---------------------------------------------------------

namespace {

struct RawType {
  const char *name;
  int size;
  bool is_signed;
  bool is_float;
};

// The sizes of the 32-bit build: long is 4 bytes.
constexpr RawType kRawTypes[] = {
    {"double", 8, true, true},        {"float", 4, true, true},
    {"char", 1, true, false},         {"unsigned char", 1, false, false},
    {"short", 2, true, false},        {"unsigned short", 2, false, false},
    {"int", 4, true, false},          {"unsigned int", 4, false, false},
    {"long", 4, true, false},         {"unsigned long", 4, false, false},
};

const RawType *FindRawType(const char *name) {
  if (name == nullptr) return nullptr;
  for (const RawType &t : kRawTypes)
    if (strcmp(t.name, name) == 0) return &t;
  return nullptr;
}

double Decode(const unsigned char *p, const RawType &t) {
  if (t.is_float) {
    if (t.size == 8) {
      double d;
      memcpy(&d, p, 8);
      return d;
    }
    float f;
    memcpy(&f, p, 4);
    return f;
  }
  uint32_t u = 0;
  memcpy(&u, p, static_cast<size_t>(t.size));  // little-endian build
  if (!t.is_signed) return static_cast<double>(u);
  int shift = 32 - 8 * t.size;
  return static_cast<double>(static_cast<int32_t>(u << shift) >> shift);
}

// Truncation toward zero; values outside the type's range are clamped to it
// (and NaN becomes 0) rather than left to undefined conversions.
void Encode(double v, const RawType &t, unsigned char *p) {
  if (t.is_float) {
    if (t.size == 8) {
      memcpy(p, &v, 8);
    } else {
      float f = static_cast<float>(v);
      memcpy(p, &f, 4);
    }
    return;
  }
  double bits = 8.0 * t.size;
  double lo = t.is_signed ? -std::ldexp(1.0, static_cast<int>(bits) - 1) : 0.0;
  double hi = t.is_signed ? std::ldexp(1.0, static_cast<int>(bits) - 1) - 1
                          : std::ldexp(1.0, static_cast<int>(bits)) - 1;
  double x = std::isnan(v) ? 0.0 : std::trunc(v);
  if (x < lo) x = lo;
  if (x > hi) x = hi;
  int64_t i = static_cast<int64_t>(x);
  uint32_t u = static_cast<uint32_t>(i);
  memcpy(p, &u, static_cast<size_t>(t.size));
}

// Where raw values come from: a stream or a socket. Returns the bytes read;
// `ended` tells an end of data from an error.
struct RawSource {
  FILE *stream;
  int socket;
  size_t Read(void *buffer, size_t n, bool *ended) const {
    if (stream != nullptr) {
      size_t got = fread(buffer, 1, n, stream);
      *ended = got < n && feof(stream);
      return got;
    }
    int got = socket_readn(socket, buffer, static_cast<int>(n));
    if (got < 0) {
      *ended = false;
      return 0;
    }
    *ended = static_cast<size_t>(got) < n;
    return static_cast<size_t>(got);
  }
};

// Reads values in chunks, so that what is allocated follows what arrives, never
// what a count claims.
Matrix *ReadRaw(const RawSource &source, long long count, const RawType &t, bool swap,
                const char *location) {
  constexpr long long kChunk = 8192;
  std::vector<double> values;
  std::vector<unsigned char> bytes(static_cast<size_t>(kChunk * t.size));
  bool short_read = false, ended = false;
  while (count < 0 || static_cast<long long>(values.size()) < count) {
    long long want = kChunk;
    if (count >= 0 && count - static_cast<long long>(values.size()) < want)
      want = count - static_cast<long long>(values.size());
    size_t n = static_cast<size_t>(want) * static_cast<size_t>(t.size);
    size_t got = source.Read(bytes.data(), n, &ended);
    for (size_t k = 0; k + static_cast<size_t>(t.size) <= got; k += static_cast<size_t>(t.size)) {
      if (swap) SwapBytes(&bytes[k], t.size);
      values.push_back(Decode(&bytes[k], t));
    }
    if (got < n) {
      short_read = count >= 0 || !ended || got % static_cast<size_t>(t.size) != 0;
      break;
    }
  }
  if (values.size() > 0x7fffffffu) values.resize(0x7fffffffu);
  Matrix *m = MatDef("", 1, static_cast<int>(values.size()));
  if (!values.empty()) memcpy(m->elements, values.data(), values.size() * sizeof(double));
  if (short_read) MatWarning(location, ended ? "Not enough data in file" : "Data read error", m);
  return m;
}

Matrix *WriteRaw(Matrix *m, const RawType &t, FILE *stream, int socket) {
  long long n = MatCount(m) * (m->cls == kComplex ? 2 : 1);
  std::vector<unsigned char> bytes(static_cast<size_t>(n) * static_cast<size_t>(t.size));
  const double *v = MatReal(m);
  for (long long k = 0; k < n; k++) Encode(v[k], t, &bytes[static_cast<size_t>(k * t.size)]);
  if (stream != nullptr)
    fwrite(bytes.data(), 1, bytes.size(), stream);
  else
    socket_writen(socket, bytes.data(), static_cast<int>(bytes.size()));
  return m;
}

}  // namespace

// The checks of the four raw transfers: an endpoint (stream or socket), then a
// known type. Reports and returns null when either fails.
static const RawType *RawTransferType(bool endpoint, const char *endpoint_failure,
                                      const char *type, const char *location, Matrix *m) {
  if (!endpoint) {
    MatError(location, endpoint_failure, m);
    return nullptr;
  }
  const RawType *t = FindRawType(type);
  if (t == nullptr) MatError(location, "Format is not appropriate", m);
  return t;
}

Matrix *MatFread(FILE *stream, int count, const char *type, int swap) {
  const RawType *t =
      RawTransferType(stream != nullptr, "File pointer is null", type, "MatFread()", nullptr);
  if (t == nullptr) return MatDef("", 0, 0);
  return ReadRaw(RawSource{stream, 0}, count, *t, swap != 0, "MatFread()");
}

Matrix *MatFwrite(FILE *stream, Matrix *m, const char *type) {
  const RawType *t =
      RawTransferType(stream != nullptr, "File pointer is null", type, "MatFwrite()", m);
  return t == nullptr ? m : WriteRaw(m, *t, stream, 0);
}

Matrix *MatSocketRead(int socket, int count, const char *type, int swap) {
  const RawType *t =
      RawTransferType(socket != 0, "Socket is 0", type, "MatSocketRead()", nullptr);
  if (t == nullptr) return MatDef("", 0, 0);
  return ReadRaw(RawSource{nullptr, socket}, count, *t, swap != 0, "MatSocketRead()");
}

Matrix *MatSocketWrite(int socket, Matrix *m, const char *type) {
  const RawType *t = RawTransferType(socket != 0, "Socket is 0", type, "MatSocketWrite()", m);
  return t == nullptr ? m : WriteRaw(m, *t, nullptr, socket);
}

// ---- matrix records ---------------------------------------------------------

namespace {

// Coefficient k of a polynomial as a (re, im) pair, whatever its kind.
void Coefficient(const Polynomial *p, int k, double out[2]) {
  const double *c = static_cast<const double *>(p->coef->elements);
  if (p->kind == 1) {
    out[0] = c[2 * k];
    out[1] = c[2 * k + 1];
  } else {
    out[0] = c[k];
    out[1] = 0.0;
  }
}


template <class T>
T *Element(Matrix *m, int i, int j) {
  return static_cast<T **>(m->elements)[static_cast<long long>(i) * m->cols + j];
}

Polynomial *ReadPolynomial(FILE *stream, int degree, bool complex_class, bool foreign,
                           bool *ok) {
  Polynomial *p = DataReadCoefficients(stream, degree, complex_class, foreign);
  *ok = p != nullptr;
  return p;
}

}  // namespace

void DataWriteCoefficients(FILE *stream, const Polynomial *p, bool complex_class) {
  for (int k = 0; k <= p->degree; k++) {
    double c[2];
    Coefficient(p, k, c);
    fwrite(c, sizeof(double), complex_class ? 2 : 1, stream);
  }
}

Polynomial *DataReadCoefficients(FILE *stream, int degree, bool complex_class, bool foreign) {
  if (degree < -1) return nullptr;
  // Read into a growing buffer first: a garbage degree must not allocate more
  // than the stream can supply.
  long long n = (static_cast<long long>(degree) + 1) * (complex_class ? 2 : 1);
  std::vector<double> values;
  constexpr long long kChunk = 4096;
  while (static_cast<long long>(values.size()) < n) {
    long long want = std::min(kChunk, n - static_cast<long long>(values.size()));
    size_t at = values.size();
    values.resize(at + static_cast<size_t>(want));
    if (!DataReadDoubles(stream, values.data() + at, want, foreign)) return nullptr;
  }
  Polynomial *p = complex_class ? C_PolyDef("", degree, nullptr) : PolyDef("", degree, nullptr);
  if (n > 0) memcpy(p->coef->elements, values.data(), static_cast<size_t>(n) * sizeof(double));
  return p;
}

namespace {

// Reads one element of a class 2 to 5 record as a new owned object, or null
// when the data is short or broken.
void *ReadElement(FILE *stream, int cls, bool foreign) {
  bool complex_class = HasComplexValues(cls);
  bool ok = true;
  if (IsPolyClass(cls)) {
    int degree;
    if (!DataReadWords(stream, &degree, 1, foreign)) return nullptr;
    Polynomial *p = ReadPolynomial(stream, degree, complex_class, foreign, &ok);
    return ok ? PolyOwn(p, kOwnedElement) : nullptr;
  }
  int degrees[2];
  if (!DataReadWords(stream, degrees, 2, foreign)) return nullptr;
  Polynomial *nume = ReadPolynomial(stream, degrees[0], complex_class, foreign, &ok);
  if (!ok) return nullptr;
  PolyOwn(nume, kOwnedPart);
  Polynomial *deno = ReadPolynomial(stream, degrees[1], complex_class, foreign, &ok);
  if (!ok) {
    PolyRelease(nume);
    return nullptr;
  }
  Rational *r = complex_class ? C_RatDef("", -1, -1) : RatDef("", -1, -1);
  PolyRelease(r->nume);
  PolyRelease(r->deno);
  r->nume = nume;
  r->deno = PolyOwn(deno, kOwnedPart);
  r->nume_degree = degrees[0];
  r->deno_degree = degrees[1];
  return RatOwn(r, kOwnedPart);
}

void ReleaseElement(int cls, void *e) {
  if (IsPolyClass(cls))
    PolyRelease(static_cast<Polynomial *>(e));
  else
    RatRelease(static_cast<Rational *>(e));
}

// A class 2 to 5 matrix read column by column. The elements are read before
// the matrix is made, so a garbage shape fails at the end of the data instead
// of allocating what the header claims.
Matrix *ReadElements(FILE *stream, int rows, int cols, int cls, bool foreign) {
  std::vector<void *> read;  // column by column
  long long n = static_cast<long long>(rows) * cols;
  for (long long k = 0; k < n; k++) {
    void *e = ReadElement(stream, cls, foreign);
    if (e == nullptr) {
      for (void *x : read) ReleaseElement(cls, x);
      return nullptr;
    }
    read.push_back(e);
  }
  Matrix *m = MatDefClass("", rows, cols, cls & ~1, "MatRead()");
  MatSetClass(m, cls);
  void **slots = static_cast<void **>(m->elements);
  for (long long k = 0; k < n; k++) {
    long long i = k % rows, j = k / rows;
    ReleaseElement(cls, slots[i * cols + j]);
    slots[i * cols + j] = read[static_cast<size_t>(k)];
  }
  return m;
}

const char *RealTypeName(int precision, int version) {
  if (version == 4) {
    switch (precision) {
      case 0x0000: return "double";
      case 0x0100: return "float";
      case 0x0200: return "long";
      case 0x0300: return "short";
      case 0x0400: return "unsigned short";
      case 0x0500: return "unsigned char";
      default: return nullptr;
    }
  }
  switch (precision) {
    case 0x0200: return "unsigned char";
    case 0x0300: return "short";
    case 0x0400: return "unsigned short";
    case 0x0500: return "long";
    case 0x1000: return "float";
    case 0x2000: return "double";
    default: return nullptr;
  }
}

// The data of a matrix record as a new temporary, or null when it is broken.
// `unchanged` is set for a class code this reader does not know.
Matrix *ReadMatrixData(FILE *stream, const DataRecord &r, bool *unchanged) {
  int rows = r.header[kDataRows], cols = r.header[kDataColumns], cls = r.header[kDataClass];
  int precision = r.header[kDataType] & 0xFF00;
  // A non-zero class with another precision than double is broken, before a
  // class this reader does not know leaves the matrix unchanged.
  if (cls != kReal && precision != (r.version == 4 ? 0 : kDataDouble)) return nullptr;
  if (!IsValidClass(cls)) {
    *unchanged = true;
    return nullptr;
  }
  if (rows < 0 || cols < 0) return nullptr;
  long long n = static_cast<long long>(rows) * cols;
  if (n > 0x7fffffffLL) return nullptr;
  if (cls == kReal) {
    const char *type = RealTypeName(precision, r.version);
    if (type == nullptr) return nullptr;
    Matrix *m = MatFread(stream, static_cast<int>(n), type, r.foreign);
    bool empty = m->rows == 0 || m->cols == 0;
    if ((r.version == 4 && empty) || (r.version != 4 && n != 0 && empty) || MatCount(m) != n) {
      MatUndef(m);
      return nullptr;
    }
    m->rows = rows;  // the 1 x n result takes the record's shape
    m->cols = cols;
    return m;
  }
  if (cls == kComplex) {
    // Straight into storage, so a short record is only broken data (no raw
    // read's warning). Read in pieces first: a count the data does not back
    // costs no allocation of its size.
    std::vector<double> pairs;
    for (long long done = 0; done < 2 * n;) {
      long long piece = std::min(2 * n - done, 1LL << 16);
      pairs.resize(static_cast<size_t>(done + piece));
      if (!DataReadDoubles(stream, pairs.data() + done, piece, r.foreign)) return nullptr;
      done += piece;
    }
    Matrix *m = C_MatDef("", rows, cols);
    if (n > 0) memcpy(m->elements, pairs.data(), static_cast<size_t>(2 * n) * sizeof(double));
    return m;
  }
  return ReadElements(stream, rows, cols, cls, r.foreign);
}

}  // namespace

Matrix *MatWrite(Matrix *m, FILE *stream, int kind) {
  DataRecordBegin(stream, kind, kDataDouble, m->rows, m->cols, m->cls, m->name);
  long long n = MatCount(m);
  if (m->cls == kReal || m->cls == kComplex) {
    // An empty matrix has no storage to hand to fwrite.
    if (n > 0)
      fwrite(m->elements, sizeof(double), static_cast<size_t>(n * (m->cls == kComplex ? 2 : 1)),
             stream);
    return m;
  }
  if (n == 0) return m;  // 0 x 2^31 has no element: no loop over its columns
  bool complex_class = HasComplexValues(m->cls);
  for (int j = 0; j < m->cols; j++) {
    for (int i = 0; i < m->rows; i++) {
      if (IsPolyClass(m->cls)) {
        Polynomial *p = Element<Polynomial>(m, i, j);
        WriteWord(stream, p->degree);
        DataWriteCoefficients(stream, p, complex_class);
      } else if (IsRatClass(m->cls)) {
        Rational *r = Element<Rational>(m, i, j);
        WriteWord(stream, r->nume->degree);
        WriteWord(stream, r->deno->degree);
        DataWriteCoefficients(stream, r->nume, complex_class);
        DataWriteCoefficients(stream, r->deno, complex_class);
      }
    }
  }
  return m;
}

Matrix *MatRead(Matrix *m, FILE *stream, int kind) {
  static DataRecord record;  // keeps a 1 KiB name buffer off the stack
  const char *failure = DataRecordOpen(&record, stream, kind);
  bool unchanged = false;
  Matrix *data = nullptr;
  if (failure == nullptr) {
    data = ReadMatrixData(stream, record, &unchanged);
    if (data == nullptr && !unchanged) failure = "Data is broken or too few";
  }
  if (failure != nullptr) {
    MatSetMessage("read <- \"\"");
    MatError("MatRead()", failure, m);
    return m;
  }
  if (unchanged) return m;
  MatMove(m, data);
  MatUndef(data);
  MatSetName(m, record.header[kDataNameLength] == 1 ? "ANS_MAT" : record.name);
  return m;
}

// ---- integer and real scalars ---------------------------------------------------

namespace {

int ScalarWrite(FILE *stream, int kind, int precision, const char *name, const void *value,
                size_t size) {
  DataRecordBegin(stream, kind, precision, 0, 0, 0, name);
  fwrite(value, size, 1, stream);
  return 0;
}

// Reads one scalar record's value; reports on stderr and returns -1 on failure.
int ScalarRead(FILE *stream, int kind, void *value, size_t size, const char *location,
               const char *file) {
  DataRecord record;
  const char *failure = DataRecordOpen(&record, stream, kind);
  if (failure == nullptr && fread(value, size, 1, stream) != 1) failure = "Data is broken or too few";
  if (failure != nullptr) {
    fprintf(stderr, "%s: %s in %s.\n", location, failure, file != nullptr ? file : "");
    return -1;
  }
  if (record.foreign) SwapBytes(static_cast<unsigned char *>(value), static_cast<int>(size));
  return 0;
}

}  // namespace

int IntegerWrite(int value, const char *name, FILE *stream) {
  return ScalarWrite(stream, 2, kDataInteger, name, &value, sizeof value);
}
int IntegerRead(int *value, FILE *stream, const char *file) {
  return ScalarRead(stream, 2, value, sizeof *value, "IntegerRead()", file);
}
int RealWrite(double value, const char *name, FILE *stream) {
  return ScalarWrite(stream, 3, kDataDouble, name, &value, sizeof value);
}
int RealRead(double *value, FILE *stream, const char *file) {
  return ScalarRead(stream, 3, value, sizeof *value, "RealRead()", file);
}
