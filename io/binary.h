// The typed binary record format shared by every object kind, and raw typed
// transfers of matrix elements over files and sockets.
//
// A record: an optional prefix (0xFFFFFFFF, version 5, 0), a five-word header
// (type word, rows, columns, class, name length), the name with its NUL, the
// data. Words and doubles are in the writer's byte order; a reader that finds
// a foreign order in the type word swaps every word and double it reads.
#ifndef VELK_IO_BINARY_H
#define VELK_IO_BINARY_H

#include <cstdio>

struct Matrix;
struct Polynomial;

// The machine mark this build writes into the top byte of every type word.
constexpr int kDataMachine = 0x20000000;
constexpr int kDataDouble = 0x2000;   // precision byte of doubles
constexpr int kDataInteger = 0x0500;  // precision byte of the integer scalar
constexpr int kDataNameMax = 1024;    // longer names mark a foreign or garbage header

// Header words, in file order.
enum DataHeaderWord { kDataType, kDataRows, kDataColumns, kDataClass, kDataNameLength };

void DataPrefixWrite(FILE *stream);
// Reads the optional prefix and the five header words, swapped when foreign.
// Stores the version (the prefix's, or 4 without a prefix). Returns 1, or 0 on
// a short read.
int DataHeaderRead(int header[5], FILE *stream, int *version);
int DataByteOrderForeign(int type);

// Writes the prefix, the header (type word from kind and precision) and the name.
void DataRecordBegin(FILE *stream, int kind, int precision, int rows, int cols, int cls,
                     const char *name);

// The opening of a record as every kind's reader needs it: the header, the
// kind check and the name. On failure returns the report's message and reads
// no further; on success returns null.
struct DataRecord {
  int header[5];
  int version;
  bool foreign;
  char name[kDataNameMax + 1];
};
const char *DataRecordOpen(DataRecord *record, FILE *stream, int expected_kind);

// Reads n words or doubles, swapping when foreign; false on a short read.
bool DataReadWords(FILE *stream, int *words, long long n, bool foreign);
bool DataReadDoubles(FILE *stream, double *values, long long n, bool foreign);

// The coefficients of p from the constant up: one double each, or a (re, im)
// pair each when complex_class (a real p then writes zero imaginary parts).
void DataWriteCoefficients(FILE *stream, const Polynomial *p, bool complex_class);
// A new temporary polynomial of the degree (real, or complex when
// complex_class) holding the doubles read; null when the stream runs short
// or the degree is below -1. Reads in chunks: a garbage degree never
// allocates more than the stream supplies.
Polynomial *DataReadCoefficients(FILE *stream, int degree, bool complex_class, bool foreign);

// Matrices: records of kind 7, 8 or 9 (the three roles a list can give them).
Matrix *MatWrite(Matrix *m, FILE *stream, int kind);
Matrix *MatRead(Matrix *m, FILE *stream, int kind);

// Raw typed transfers: "double", "float", "char", "unsigned char", "short",
// "unsigned short", "int", "unsigned int", "long", "unsigned long" (the last
// two of 4 bytes). A count of -1 reads to the end of the stream.
Matrix *MatFread(FILE *stream, int count, const char *type, int swap);
Matrix *MatFwrite(FILE *stream, Matrix *m, const char *type);
// Over a socket; a count of -1 reads until the peer closes.
Matrix *MatSocketRead(int socket, int count, const char *type, int swap);
Matrix *MatSocketWrite(int socket, Matrix *m, const char *type);

// Integer and real scalars; the readers report on stderr and return -1.
int IntegerWrite(int value, const char *name, FILE *stream);
int IntegerRead(int *value, FILE *stream, const char *file);
int RealWrite(double value, const char *name, FILE *stream);
int RealRead(double *value, FILE *stream, const char *file);

#endif
