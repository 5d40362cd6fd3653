// Typed binary records: exact bytes, round trips, foreign order, precisions,
// failures, and transfers over a real loopback connection.
#include "io/binary.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "core/matrix.h"
#include "scalar/polynomial.h"
#include "support/exact.h"
#include "sys/sockets.h"
#include "sys/stream_table.h"
#include "tests/io/read_compare.h"
#include "tests/io/record_bytes.h"

namespace {

// The record MatWrite makes of m.
std::vector<unsigned char> Written(Matrix *m, int kind) {
  char *buffer;
  size_t size;
  FILE *f = open_memstream(&buffer, &size);
  MatWrite(m, f, kind);
  fclose(f);
  std::vector<unsigned char> bytes(buffer, buffer + size);
  free(buffer);
  return bytes;
}

// m, or a new kept matrix, after reading the record in b.
Matrix *Read(Bytes b, int kind, Matrix *m = nullptr) {
  if (m == nullptr) m = MatSetStatus(MatDef("", 0, 0), 5);
  FILE *f = fmemopen(b.data.data(), b.data.size(), "r");
  MatRead(m, f, kind);
  fclose(f);
  return m;
}

TEST(BinaryTest, RecordLayoutAndRoundTripsOfEveryClass) {
  Matrix *r = MatDef("A", 2, 3), *c = C_MatDef("", 1, 3);
  for (int k = 0; k < 6; k++) MatReal(r)[k] = MatReal(c)[k] = k + 0.5;
  // 82 bytes: prefix, header, "A" and its NUL, six doubles row by row.
  Bytes want;
  want.Head(0x20002007, 2, 3, 0, 2).Put("A");
  for (double v : Elements(r)) want.Put(v);
  EXPECT_EQ(Written(r, 7), want.data);
  // Element (i, j) of degree i + 2j, so that the column-by-column order shows.
  Matrix *p = P_MatDef("p", 2, 2);
  Polynomial **ps = static_cast<Polynomial **>(p->elements);
  for (int k = 0; k < 4; k++) {
    PolyRelease(ps[k]);
    ps[k] = PolyOwn(PolyDef("", k / 2 + 2 * (k % 2), nullptr), 3);
    MatReal(ps[k]->coef)[0] = k + 1;
  }
  // After the header and "p": element (1, 1), degree 0 with its one double, then (2, 1).
  EXPECT_EQ(Written(p, 7)[34 + 4 + 8], 1);
  Matrix *q = MatSameClassZDef(MatSetClass(P_MatDef("q", 1, 1), kCompPoly), 1, 2);
  Matrix *rat = MatSameClassZDef(R_MatDef("", 1, 1), 1, 2);
  Matrix *crat = MatSameClassZDef(MatSetClass(R_MatDef("", 1, 1), kCompRat), 2, 1);
  for (Matrix *m : {r, c, p, q, rat, crat}) {
    SCOPED_TRACE(m->cls);
    const std::vector<unsigned char> written = Written(m, 8);
    Matrix *back = Read(Bytes{written}, 8);
    EXPECT_EQ(back->status, 5);
    EXPECT_STREQ(back->name, m->name[0] != '\0' ? m->name : "ANS_MAT");
    // Written again under the first name, the record comes out the same.
    EXPECT_EQ(Written(MatSetName(back, m->name), 8), written);
    MatUndef(back);
  }
  MatSweep();
  MatRegistryCheck();
}

TEST(BinaryTest, RecordsOfBothVersionsAndByteOrders) {
  // No prefix and kind 0: version 4, accepted for kind 7.
  Matrix *m = Read(Bytes().Put(0).Put(1).Put(2).Put(0).Put(2).Put("V").Put(1.5).Put(-2.0), 7);
  EXPECT_STREQ(m->name, "V");
  EXPECT_EQ(Elements(m), (std::vector<double>{1.5, -2}));
  Read(Bytes{{}, true}.Head(0x20002009, 1, 1, 1, 1).Put("").Put(0.5).Put(-0.25), 9, m);
  EXPECT_STREQ(m->name, "ANS_MAT");
  EXPECT_EQ(m->cls, kComplex);
  EXPECT_EQ(Elements(m), (std::vector<double>{0.5, -0.25}));
  // Version 5 allows no elements; a class this reader does not know leaves m as it was.
  Read(Bytes().Head(0x20002007, 0, 4, 0, 2).Put("E"), 7, m);
  Read(Bytes().Head(0x20002007, 1, 1, 6, 2).Put("U"), 7, m);
  EXPECT_STREQ(m->name, "E");
  EXPECT_EQ(m->cols, 4);
  MatUndef(m);
  EXPECT_TRUE(DataByteOrderForeign(0x00000007));  // no machine mark, a kind in the low nibble

  // Every precision code of both versions, in both byte orders where the order can show.
  auto as = [](auto sample) {
    return [](Bytes &out, double v) { out.Put(static_cast<decltype(sample)>(v)); };
  };
  const struct {
    int version, precision;
    double value;
    void (*put)(Bytes &, double);
  } cases[] = {
      {5, 0x0200, 200, as(uint8_t{})},     {5, 0x0300, -300, as(int16_t{})},
      {5, 0x0400, 60000, as(uint16_t{})},  {5, 0x0500, -70000, as(int32_t{})},
      {5, 0x1000, 0.5, as(float{})},       {5, 0x2000, -1e-310, as(double{})},
      {4, 0x0000, 0.1, as(double{})},      {4, 0x0100, -0.25, as(float{})},
      {4, 0x0200, -100000, as(int32_t{})}, {4, 0x0300, -2, as(int16_t{})},
      {4, 0x0400, 65535, as(uint16_t{})},  {4, 0x0500, 255, as(uint8_t{})},
  };
  for (bool big : {false, true}) {
    for (const auto &c : cases) {
      if (big && c.version == 4) continue;  // no machine mark: the byte order cannot show
      SCOPED_TRACE(testing::Message() << c.version << " " << c.precision << " " << big);
      Bytes b{{}, big};
      if (c.version == 5)
        b.Head(0x20000007 | c.precision, 1, 1, 0, 1);
      else
        b.Put(c.precision).Put(1).Put(1).Put(0).Put(1);
      c.put(b.Put(""), c.value);
      Matrix *m = Read(b, 7);
      EXPECT_EQ(Elements(m), std::vector<double>{c.value});
      MatUndef(m);
    }
  }
  MatRegistryCheck();
}

TEST(BinaryDeathTest, EachReadingFailureHasItsMessage) {
  const std::string broken = "Data is broken or too few";
  const struct {
    Bytes record;
    std::string message, before = "";
  } cases[] = {
      {Bytes().Put("ab"), "Data structure is broken"},
      {Bytes().Head(0x20002004, 0, 0, 0, 1), "Incorrect class datafile"},
      {Bytes().Head(0x20002007, 1, 1, 0, 1025), "Incorrect machine datafile"},
      {Bytes().Head(0x20002007, 1, 1, 0, 9).Put("abc"), "Variable name is too short"},
      {Bytes().Head(0x20002007, 1, 3, 0, 1).Put("").Put(1.0).Put(2.0), broken,
       "\nNot enough data in file for '(1 x 2)' in MatFread().\n"},
      {Bytes().Head(0x20000007, 1, 1, 0, 1).Put("").Put(1.0), broken},
      {Bytes().Head(0x20001007, 1, 1, 1, 1).Put("").Put(1.0).Put(2.0), broken},
      // A short complex record is broken data only: no raw read's warning first.
      {Bytes().Head(0x20002007, 1, 2, 1, 1).Put("").Put(1.0).Put(2.0).Put(3.0), broken},
      // A class this reader does not know with a precision other than double is broken.
      {Bytes().Head(0x20001007, 1, 1, 6, 1).Put("").Put(1.0f), broken},
      {Bytes().Put(0).Put(0).Put(3).Put(0).Put(1).Put(""), broken},  // version 4, no elements
      // Headers that claim more than any stream holds fail without allocating it.
      {Bytes().Head(0x20002007, 0x7fffffff, 0x7fffffff, 0, 1).Put("").Put(1.0), broken},
      {Bytes().Head(0x20002007, 40000, 40000, 2, 1).Put("").Put(0x7ffffff0).Put(1.0), broken},
  };
  for (const auto &c : cases)
    EXPECT_EXIT(Read(c.record, 7), testing::ExitedWithCode(0),
                Exact(c.before + "\nread <- \"\" : " + c.message + " in MatRead().\n"));
  EXPECT_EXIT(MatFread(nullptr, 1, "int", 0), testing::ExitedWithCode(0),
              Exact("\nFile pointer is null in MatFread().\n"));
  EXPECT_EXIT(MatFwrite(stdout, MatDef("", 1, 2), "quad"), testing::ExitedWithCode(0),
              Exact("\nFormat is not appropriate for '(1 x 2)' in MatFwrite().\n"));
  EXPECT_EXIT(MatSocketRead(0, 1, "int", 0), testing::ExitedWithCode(0),
              Exact("\nSocket is 0 in MatSocketRead().\n"));
}

TEST(BinaryTest, ScalarsRoundTripAndReportWithoutEnding) {
  FILE *f = tmpfile();
  IntegerWrite(-42, "n", f);
  RealWrite(2.5, "", f);
  fseek(f, 13, SEEK_SET);
  EXPECT_EQ(fgetc(f), 0x05);  // the integer's precision byte
  rewind(f);
  int n = 0;
  double x = 0;
  EXPECT_EQ(IntegerRead(&n, f, "f"), 0);
  EXPECT_EQ(RealRead(&x, f, "f"), 0);
  EXPECT_EQ(std::pair(n, x), std::pair(-42, 2.5));
  testing::internal::CaptureStderr();
  EXPECT_EQ(IntegerRead(&n, f, "data.bin"), -1);  // at the end
  rewind(f);
  EXPECT_EQ(RealRead(&x, f, "data.bin"), -1);  // the integer comes first
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "IntegerRead(): Data structure is broken in data.bin.\n"
            "RealRead(): Incorrect class datafile in data.bin.\n");
  fclose(f);
}

TEST(BinaryTest, MatrixOverALoopbackConnection) {
  const int server = socket_open("tcp");
  ASSERT_GE(socket_bind(server, 0, "127.0.0.1"), 0);
  ASSERT_EQ(socket_listen(server, 1), 0);
  sockaddr_in addr{};
  socklen_t length = sizeof addr;
  ASSERT_EQ(getsockname(server, reinterpret_cast<sockaddr *>(&addr), &length), 0);
  Matrix *m = MatSetName(C_MatDef("", 2, 2), "Z");
  for (int k = 0; k < 8; k++) MatReal(m)[k] = k - 3.5;
  const pid_t child = fork();  // writes the record, then the same values as raw ints
  if (child == 0) {
    const int fd = socket_open("tcp");
    if (socket_connect(fd, ntohs(addr.sin_port), "127.0.0.1") < 0) _exit(2);
    MatWrite(m, FilePointer(fd, 1), 7);
    MatSocketWrite(fd, m, "int");
    _exit(socket_close(fd));
  }
  alarm(10);
  const int connection = socket_accept(server);
  Matrix *got = MatRead(MatSetStatus(MatDef("", 0, 0), 5), FilePointer(connection, 0), 7);
  EXPECT_STREQ(got->name, "Z");
  EXPECT_EQ(Elements(got), Elements(m));
  // Then raw ints, truncated toward zero, read until the peer closes.
  Matrix *raw = MatSocketRead(connection, -1, "int", 0);
  EXPECT_EQ(Elements(raw), (std::vector<double>{-3, -2, -1, 0, 0, 1, 2, 3}));
  int status = -1;
  waitpid(child, &status, 0);
  alarm(0);
  EXPECT_EQ(status, 0);
  socket_close(connection);
  socket_close(server);
  MatSweep();
  MatUndef(got);
  MatRegistryCheck();
}

}  // namespace
