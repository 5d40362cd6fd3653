// Typed binary records: exact bytes, round trips, foreign order, precisions,
// failures, and transfers over a real loopback connection.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "core/matrix.h"
#include "io/binary.h"
#include "scalar/polynomial.h"
#include "scalar/rational.h"
#include "support/exact.h"
#include "sys/sockets.h"
#include "sys/stream_table.h"

namespace {

// Bytes of a record under construction, in either byte order.
struct Bytes {
  std::vector<unsigned char> data;
  bool big = false;
  Bytes &Word(uint32_t w) {
    if (big) w = __builtin_bswap32(w);
    unsigned char b[4];
    memcpy(b, &w, 4);
    data.insert(data.end(), b, b + 4);
    return *this;
  }
  Bytes &Double(double d) {
    unsigned char b[8];
    memcpy(b, &d, 8);
    if (big) std::reverse(b, b + 8);
    data.insert(data.end(), b, b + 8);
    return *this;
  }
  template <class T>
  Bytes &Raw(T v) {
    unsigned char b[sizeof(T)];
    memcpy(b, &v, sizeof(T));
    if (big) std::reverse(b, b + sizeof(T));
    data.insert(data.end(), b, b + sizeof(T));
    return *this;
  }
  Bytes &Text(const char *s, size_t n) {
    data.insert(data.end(), s, s + n);
    return *this;
  }
  // A stream that reads these bytes.
  FILE *Stream() const {
    FILE *f = tmpfile();
    if (!data.empty()) fwrite(data.data(), 1, data.size(), f);
    rewind(f);
    return f;
  }
};

std::vector<unsigned char> Contents(FILE *f) {
  std::vector<unsigned char> out;
  rewind(f);
  int c;
  while ((c = fgetc(f)) != EOF) out.push_back(static_cast<unsigned char>(c));
  return out;
}

Matrix *Kept(Matrix *m) { return MatSetStatus(m, 5); }

TEST(BinaryTest, RealMatrixRecordLayout) {
  Matrix *a = Kept(MatDef("A", 2, 3));
  for (int k = 0; k < 6; k++) MatReal(a)[k] = k + 0.5;
  FILE *f = tmpfile();
  MatWrite(a, f, 7);
  std::vector<unsigned char> got = Contents(f);
  Bytes want;
  want.Word(0xFFFFFFFF).Word(5).Word(0).Word(0x20002007).Word(2).Word(3).Word(0).Word(2);
  want.Text("A", 2);
  for (int k = 0; k < 6; k++) want.Double(k + 0.5);
  EXPECT_EQ(got.size(), 82u);
  EXPECT_EQ(got, want.data);
  fclose(f);
  MatUndef(a);
  MatRegistryCheck();
}

TEST(BinaryTest, EveryClassRoundTrips) {
  Matrix *r = Kept(MatDef("r", 2, 2));
  for (int k = 0; k < 4; k++) MatReal(r)[k] = k * 1.25 - 1;
  Matrix *c = Kept(C_MatDef("", 1, 2));
  for (int k = 0; k < 4; k++) MatReal(c)[k] = -k - 0.75;
  Matrix *p = Kept(P_MatDef("p", 2, 1));
  // Elements of different degrees, so that the column-by-column order shows.
  Polynomial **ps = static_cast<Polynomial **>(p->elements);
  PolyRelease(ps[0]);
  ps[0] = PolyOwn(PolyDef("", 2, nullptr), 3);
  MatReal(ps[0]->coef)[2] = 3;
  PolyRelease(ps[1]);
  ps[1] = PolyOwn(PolyDef("", 0, nullptr), 3);
  MatReal(ps[1]->coef)[0] = -4;
  Matrix *q = Kept(MatSetClass(P_MatDef("q", 1, 1), kCompPoly));
  Polynomial **qs = static_cast<Polynomial **>(q->elements);
  PolyRelease(qs[0]);
  qs[0] = PolyOwn(C_PolyDef("", 1, nullptr), 3);
  MatReal(qs[0]->coef)[3] = 9;  // imaginary part of the s coefficient
  Matrix *rat = Kept(MatSameClassZDef(R_MatDef("", 1, 1), 1, 2));
  Rational **rs = static_cast<Rational **>(rat->elements);
  MatReal(rs[1]->nume->coef)[0] = 6;
  Matrix *crat = Kept(MatSameClassZDef(MatSetClass(R_MatDef("", 1, 1), kCompRat), 1, 1));

  for (Matrix *m : {r, c, p, q, rat, crat}) {
    FILE *f = tmpfile();
    MatWrite(m, f, 8);
    rewind(f);
    Matrix *back = Kept(MatDef("old", 0, 0));
    MatRead(back, f, 8);
    fclose(f);
    SCOPED_TRACE(m->cls);
    EXPECT_EQ(back->cls, m->cls);
    EXPECT_EQ(back->rows, m->rows);
    EXPECT_EQ(back->cols, m->cols);
    EXPECT_EQ(back->status, 5);
    EXPECT_STREQ(back->name, m->name[0] ? m->name : "ANS_MAT");
    if (m->cls <= kComplex) {
      EXPECT_EQ(memcmp(back->elements, m->elements, MatCount(m) * 8 * (m->cls + 1)), 0);
    }
    MatUndef(back);
  }
  FILE *f = tmpfile();
  MatWrite(p, f, 7);
  MatWrite(rat, f, 7);
  MatWrite(q, f, 7);
  rewind(f);
  Matrix *back = Kept(MatDef("", 0, 0));
  MatRead(back, f, 7);
  Polynomial **bp = static_cast<Polynomial **>(back->elements);
  EXPECT_EQ(bp[0]->degree, 2);
  EXPECT_EQ(MatReal(bp[0]->coef)[2], 3);
  EXPECT_EQ(bp[1]->degree, 0);
  EXPECT_EQ(MatReal(bp[1]->coef)[0], -4);
  EXPECT_EQ(bp[0]->status, 3);
  MatRead(back, f, 7);
  EXPECT_EQ(back->cls, kRat);
  Rational **br = static_cast<Rational **>(back->elements);
  EXPECT_EQ(MatReal(br[1]->nume->coef)[0], 6);
  EXPECT_EQ(MatReal(br[1]->deno->coef)[0], 1);
  EXPECT_EQ(br[1]->status, 2);
  MatRead(back, f, 7);
  EXPECT_EQ(back->cls, kCompPoly);
  EXPECT_EQ(MatReal(static_cast<Polynomial **>(back->elements)[0]->coef)[3], 9);
  fclose(f);
  for (Matrix *m : {r, c, p, q, rat, crat, back}) MatUndef(m);
  MatRegistryCheck();
}

TEST(BinaryTest, VersionFourAndForeignRecords) {
  // No prefix, low byte 0: a version 4 record, accepted for kind 7.
  Bytes v4;
  v4.Word(0).Word(1).Word(2).Word(0).Word(1).Text("", 1).Double(1.5).Double(-2);
  FILE *f = v4.Stream();
  Matrix *m = Kept(MatDef("", 0, 0));
  MatRead(m, f, 7);
  fclose(f);
  EXPECT_STREQ(m->name, "ANS_MAT");
  ASSERT_EQ(m->cols, 2);
  EXPECT_EQ(MatReal(m)[1], -2);

  // The same matrix from a machine of the other byte order, prefix included.
  Bytes be;
  be.big = true;
  be.Word(0xFFFFFFFF).Word(5).Word(0).Word(0x20002007).Word(2).Word(1).Word(0).Word(3);
  be.Text("XY", 3).Double(3.25).Double(-1e300);
  f = be.Stream();
  MatRead(m, f, 7);
  fclose(f);
  EXPECT_STREQ(m->name, "XY");
  ASSERT_EQ(m->rows, 2);
  EXPECT_EQ(MatReal(m)[0], 3.25);
  EXPECT_EQ(MatReal(m)[1], -1e300);

  Bytes bec;
  bec.big = true;
  bec.Word(0xFFFFFFFF).Word(5).Word(0).Word(0x20002009).Word(1).Word(1).Word(1).Word(1);
  bec.Text("", 1).Double(0.5).Double(-0.25);
  f = bec.Stream();
  MatRead(m, f, 9);
  fclose(f);
  EXPECT_EQ(m->cls, kComplex);
  EXPECT_EQ(MatReal(m)[1], -0.25);

  EXPECT_FALSE(DataByteOrderForeign(0x20002007));
  EXPECT_TRUE(DataByteOrderForeign(0x07200020));
  EXPECT_FALSE(DataByteOrderForeign(0));
  EXPECT_TRUE(DataByteOrderForeign(0x00000007));  // no machine mark, kind in the low nibble
  MatUndef(m);
}

TEST(BinaryTest, EveryPrecisionOfBothVersions) {
  struct Case {
    int version, precision;
    double a, b;  // what the reader must give
    void (*emit)(Bytes &, double, double);
  };
  auto as = [](auto sample) {
    return [](Bytes &out, double a, double b) {
      out.Raw(static_cast<decltype(sample)>(a)).Raw(static_cast<decltype(sample)>(b));
    };
  };
  const Case cases[] = {
      {5, 0x0200, 200, 7, as(uint8_t{})},    {5, 0x0300, -300, 5, as(int16_t{})},
      {5, 0x0400, 60000, 1, as(uint16_t{})}, {5, 0x0500, -70000, 3, as(int32_t{})},
      {5, 0x1000, 0.5, -8, as(float{})},     {5, 0x2000, 0.1, -1e-310, as(double{})},
      {4, 0x0000, 0.1, 2, as(double{})},     {4, 0x0100, 0.25, -3, as(float{})},
      {4, 0x0200, -9, 100000, as(int32_t{})}, {4, 0x0300, -2, 3, as(int16_t{})},
      {4, 0x0400, 65535, 0, as(uint16_t{})}, {4, 0x0500, 255, 1, as(uint8_t{})},
  };
  for (bool big : {false, true}) {
    for (const Case &c : cases) {
      SCOPED_TRACE(testing::Message() << "version " << c.version << " precision " << c.precision
                                      << (big ? " foreign" : ""));
      Bytes rec;
      rec.big = big;
      // A version 4 type word carries no machine mark, so its byte order cannot show.
      if (big && c.version == 4) continue;
      uint32_t type = (c.version == 5 ? 0x20000000u : 0u) | static_cast<uint32_t>(c.precision) |
                      (c.version == 5 ? 7u : 0u);
      if (c.version == 5) rec.Word(0xFFFFFFFF).Word(5).Word(0);
      rec.Word(type).Word(1).Word(2).Word(0).Word(2).Text("p", 2);
      c.emit(rec, c.a, c.b);
      FILE *f = rec.Stream();
      Matrix *m = Kept(MatDef("", 0, 0));
      MatRead(m, f, 7);
      fclose(f);
      ASSERT_EQ(m->cols, 2);
      double a = MatReal(m)[0], b = MatReal(m)[1];
      if (c.precision == 0x1000 || c.precision == 0x0100) {
        EXPECT_EQ(a, static_cast<float>(c.a));
        EXPECT_EQ(b, static_cast<float>(c.b));
      } else {
        EXPECT_EQ(a, c.a);
        EXPECT_EQ(b, c.b);
      }
      MatUndef(m);
    }
  }
  MatRegistryCheck();
}

std::string ReadFailure(const Bytes &b, int kind) {
  FILE *f = b.Stream();
  MatRead(MatDef("m", 0, 0), f, kind);
  return "";
}

TEST(BinaryDeathTest, EachReadingFailureHasItsMessage) {
  auto expect = [](const Bytes &b, int kind, const std::string &text) {
    EXPECT_EXIT(ReadFailure(b, kind), testing::ExitedWithCode(0), Exact(text));
  };
  const std::string tail = " in MatRead().\n";
  expect(Bytes{}, 7, "\nread <- \"\" : Data structure is broken" + tail);
  Bytes wrong;
  wrong.Word(0xFFFFFFFF).Word(5).Word(0).Word(0x20002004).Word(0).Word(0).Word(0).Word(1);
  expect(wrong, 7, "\nread <- \"\" : Incorrect class datafile" + tail);
  Bytes long_name;
  long_name.Word(0xFFFFFFFF).Word(5).Word(0).Word(0x20002007).Word(1).Word(1).Word(0).Word(1025);
  expect(long_name, 7, "\nread <- \"\" : Incorrect machine datafile" + tail);
  Bytes short_name;
  short_name.Word(0xFFFFFFFF).Word(5).Word(0).Word(0x20002007).Word(1).Word(1).Word(0).Word(9);
  short_name.Text("abc", 3);
  expect(short_name, 7, "\nread <- \"\" : Variable name is too short" + tail);
  Bytes short_data;
  short_data.Word(0xFFFFFFFF).Word(5).Word(0).Word(0x20002007).Word(1).Word(3).Word(0).Word(1);
  short_data.Text("", 1).Double(1).Double(2);
  expect(short_data, 7,
         "\nNot enough data in file for '(1 x 2)' in MatFread().\n"
         "\nread <- \"\" : Data is broken or too few" + tail);
  Bytes bad_precision;
  bad_precision.Word(0xFFFFFFFF).Word(5).Word(0).Word(0x20000007).Word(1).Word(1).Word(0).Word(1);
  bad_precision.Text("", 1).Double(1);
  expect(bad_precision, 7, "\nread <- \"\" : Data is broken or too few" + tail);
  Bytes float_complex;
  float_complex.Word(0xFFFFFFFF).Word(5).Word(0).Word(0x20001007).Word(1).Word(1).Word(1).Word(1);
  float_complex.Text("", 1).Double(1).Double(2);
  expect(float_complex, 7, "\nread <- \"\" : Data is broken or too few" + tail);
  Bytes empty_v4;
  empty_v4.Word(0).Word(0).Word(3).Word(0).Word(1).Text("", 1);
  expect(empty_v4, 7,
         "\nread <- \"\" : Data is broken or too few" + tail);
  // Headers that claim more than any stream holds fail without allocating it.
  Bytes huge;
  huge.Word(0xFFFFFFFF).Word(5).Word(0).Word(0x20002007).Word(0x7fffffff).Word(0x7fffffff);
  huge.Word(0).Word(1).Text("", 1).Double(1);
  expect(huge, 7, "\nread <- \"\" : Data is broken or too few" + tail);
  Bytes big_poly;
  big_poly.Word(0xFFFFFFFF).Word(5).Word(0).Word(0x20002007).Word(40000).Word(40000);
  big_poly.Word(2).Word(1).Text("", 1).Word(0x7ffffff0).Double(1);
  expect(big_poly, 7, "\nread <- \"\" : Data is broken or too few" + tail);
}

TEST(BinaryTest, AnEmptyVersionFiveRecordAndAnUnknownClass) {
  Bytes empty;
  empty.Word(0xFFFFFFFF).Word(5).Word(0).Word(0x20002007).Word(0).Word(4).Word(0).Word(2);
  empty.Text("E", 2);
  FILE *f = empty.Stream();
  Matrix *m = Kept(MatDef("", 1, 1));
  MatRead(m, f, 7);
  fclose(f);
  EXPECT_EQ(m->rows, 0);
  EXPECT_EQ(m->cols, 4);
  EXPECT_STREQ(m->name, "E");
  Bytes unknown;
  unknown.Word(0xFFFFFFFF).Word(5).Word(0).Word(0x20002007).Word(1).Word(1).Word(6).Word(2);
  unknown.Text("U", 2);
  f = unknown.Stream();
  MatRead(m, f, 7);
  fclose(f);
  EXPECT_STREQ(m->name, "E");  // a class this reader does not know leaves m as it was
  EXPECT_EQ(m->cols, 4);
  MatUndef(m);
}

TEST(BinaryTest, RawTransfersConvertAndSwap) {
  Matrix *v = Kept(MatDef("", 1, 6));
  const double values[] = {1.9, -1.9, 300, -300, 1e20, 65535.5};
  memcpy(v->elements, values, sizeof values);
  FILE *f = tmpfile();
  MatFwrite(f, v, "short");
  MatFwrite(f, v, "unsigned char");
  rewind(f);
  Matrix *s = MatFread(f, 6, "short", 0);
  EXPECT_EQ(MatReal(s)[0], 1);
  EXPECT_EQ(MatReal(s)[1], -1);  // truncation toward zero
  EXPECT_EQ(MatReal(s)[4], 32767);  // beyond the type: clamped
  Matrix *u = MatFread(f, -1, "unsigned char", 0);  // -1: to the end
  ASSERT_EQ(u->cols, 6);
  EXPECT_EQ(MatReal(u)[2], 255);
  EXPECT_EQ(MatReal(u)[3], 0);
  fclose(f);
  Bytes big;
  big.big = true;
  big.Raw(int32_t{-5}).Raw(int32_t{70000});
  f = big.Stream();
  Matrix *w = MatFread(f, 2, "long", 1);
  EXPECT_EQ(MatReal(w)[0], -5);
  EXPECT_EQ(MatReal(w)[1], 70000);
  fclose(f);
  testing::internal::CaptureStderr();
  f = big.Stream();
  Matrix *partial = MatFread(f, 5, "int", 0);
  fclose(f);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "\nNot enough data in file for '(1 x 2)' in MatFread().\n");
  EXPECT_EQ(partial->cols, 2);
  EXPECT_EXIT(MatFread(nullptr, 1, "int", 0), testing::ExitedWithCode(0),
              Exact("\nFile pointer is null in MatFread().\n"));
  EXPECT_EXIT(MatFread(stdin, 1, "quad", 0), testing::ExitedWithCode(0),
              Exact("\nFormat is not appropriate in MatFread().\n"));
  EXPECT_EXIT(MatFwrite(stdout, v, "bits"), testing::ExitedWithCode(0),
              Exact("\nFormat is not appropriate for '(1 x 6)' in MatFwrite().\n"));
  EXPECT_EXIT(MatSocketRead(0, 1, "int", 0), testing::ExitedWithCode(0),
              Exact("\nSocket is 0 in MatSocketRead().\n"));
  MatSweep();
  MatUndef(v);
  MatRegistryCheck();
}

TEST(BinaryTest, ScalarsRoundTripAndReportWithoutEnding) {
  FILE *f = tmpfile();
  IntegerWrite(-42, "n", f);
  RealWrite(2.5, "", f);
  rewind(f);
  std::vector<unsigned char> bytes = Contents(f);
  ASSERT_GE(bytes.size(), 16u);
  uint32_t type;
  memcpy(&type, &bytes[12], 4);
  EXPECT_EQ(type, 0x20000502u);
  rewind(f);
  int n = 0;
  double x = 0;
  EXPECT_EQ(IntegerRead(&n, f, "f"), 0);
  EXPECT_EQ(n, -42);
  EXPECT_EQ(RealRead(&x, f, "f"), 0);
  EXPECT_EQ(x, 2.5);
  rewind(f);
  testing::internal::CaptureStderr();
  EXPECT_EQ(RealRead(&x, f, "data.bin"), -1);
  FILE *empty = tmpfile();
  EXPECT_EQ(IntegerRead(&n, empty, "data.bin"), -1);
  fclose(empty);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "RealRead(): Incorrect class datafile in data.bin.\n"
            "IntegerRead(): Data structure is broken in data.bin.\n");
  fclose(f);
}

// A listening socket on a free loopback port.
int Listen(int *port) {
  int fd = socket_open("tcp");
  EXPECT_GE(socket_bind(fd, 0, "127.0.0.1"), 0);
  EXPECT_EQ(socket_listen(fd, 1), 0);
  sockaddr_in addr{};
  socklen_t len = sizeof addr;
  getsockname(fd, reinterpret_cast<sockaddr *>(&addr), &len);
  *port = ntohs(addr.sin_port);
  return fd;
}

TEST(BinaryTest, MatrixOverALoopbackConnection) {
  int port = 0;
  int server = Listen(&port);
  pid_t child = fork();
  if (child == 0) {
    alarm(10);
    int fd = socket_open("tcp");
    if (socket_connect(fd, port, "127.0.0.1") < 0) _exit(2);
    Matrix *m = MatSetName(C_MatDef("", 2, 2), "Z");
    for (int k = 0; k < 8; k++) MatReal(m)[k] = k - 3.5;
    MatWrite(m, FilePointer(fd, 1), 7);
    Matrix *raw = MatDef("", 1, 3);
    MatReal(raw)[0] = 7;
    MatReal(raw)[1] = -8.9;
    MatReal(raw)[2] = 1e9;
    MatSocketWrite(fd, raw, "int");
    socket_close(fd);
    _exit(0);
  }
  alarm(10);
  int conn = socket_accept(server);
  ASSERT_GE(conn, 0);
  Matrix *got = Kept(MatDef("", 0, 0));
  MatRead(got, FilePointer(conn, 0), 7);
  EXPECT_STREQ(got->name, "Z");
  ASSERT_EQ(got->cls, kComplex);
  for (int k = 0; k < 8; k++) EXPECT_EQ(MatReal(got)[k], k - 3.5);
  Matrix *raw = MatSocketRead(conn, -1, "int", 0);  // to the end of the connection
  ASSERT_EQ(raw->cols, 3);
  EXPECT_EQ(MatReal(raw)[1], -8);
  EXPECT_EQ(MatReal(raw)[2], 1e9);
  int status = 0;
  waitpid(child, &status, 0);
  alarm(0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  socket_close(conn);
  socket_close(server);
  MatSweep();
  MatUndef(got);
  MatRegistryCheck();
}

}  // namespace
