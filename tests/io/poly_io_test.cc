// Polynomials and rationals in files: round trips of every kind through the
// text files and the binary records (scalars and matrices of classes 2 to 5),
// the record layout, foreign order, the save forms, the log, each reading
// failure.
#include "io/poly_io.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "core/registry.h"
#include "io/binary.h"
#include "scalar/fill.h"
#include "support/exact.h"
#include "support/poly.h"
#include "tests/io/record_bytes.h"

namespace {

// Same kind, degree, variable and coefficient bits.
testing::AssertionResult SamePoly(Polynomial *a, Polynomial *b) {
  bool ok = a->kind == b->kind && a->degree == b->degree &&
            ((a->variable == nullptr && b->variable == nullptr) ||
             (a->variable != nullptr && b->variable != nullptr && !strcmp(a->variable, b->variable)));
  long long n = static_cast<long long>(a->degree + 1) * (a->kind == 1 ? 2 : 1);
  for (long long k = 0; ok && k < n; k++)
    ok = memcmp(&MatReal(a->coef)[k], &MatReal(b->coef)[k], sizeof(double)) == 0;
  if (ok) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "degrees " << a->degree << ", " << b->degree;
}

std::string Slurp(const std::string &path) {
  std::ifstream in(path);
  return {std::istreambuf_iterator<char>(in), {}};
}

template <class W>
std::vector<unsigned char> Written(W write) {
  char *buffer;
  size_t size;
  FILE *f = open_memstream(&buffer, &size);
  write(f);
  fclose(f);
  std::vector<unsigned char> bytes(buffer, buffer + size);
  free(buffer);
  return bytes;
}

template <class R>
void ReadFrom(const std::vector<unsigned char> &b, R read) {
  FILE *f = fmemopen(const_cast<unsigned char *>(b.data()), b.size(), "r");
  read(f);
  fclose(f);
}

class PolyFileTest : public testing::Test {
 protected:
  void SetUp() override {
    RatInit();
    ASSERT_NE(mkdtemp(dir_), nullptr);
  }
  void TearDown() override {
    std::string command = std::string("rm -rf ") + dir_;
    ASSERT_EQ(system(command.c_str()), 0);
    MatSweepAll();
    PolyRegistryCheck();
    RatRegistryCheck();
  }
  std::string Path(const char *name) const { return std::string(dir_) + "/" + name; }

 private:
  char dir_[32] = "/tmp/velk-poly-XXXXXX";
};

TEST_F(PolyFileTest, RecordLayoutAndRoundTrips) {
  Polynomial *p = PolySetName(P({1.5, -2}, "z"), "p");
  Bytes want;
  want.Head(0x20002005, 1, 2, 0, 2).Put("p").Put(2).Put("z").Put(1.5).Put(-2.0);
  EXPECT_EQ(Written([&](FILE *f) { PolyWrite(p, f); }), want.data);

  for (Polynomial *q : {p, CP({{1, 2}, {-0.0, NAN}, {3, 4}}, "w"), P({7}), PolyDef("", -1, nullptr)}) {
    Polynomial *t = PolySetStatus(PolyDef("old", 3, "x"), 9);
    ReadFrom(Written([&](FILE *f) { PolyWrite(q, f); }), [&](FILE *f) { PolyRead(t, f); });
    EXPECT_TRUE(SamePoly(t, q));
    EXPECT_EQ(std::pair(t->status, t->coef->cols), std::pair(9, t->degree + 1));
    EXPECT_STREQ(t->name, q == p ? "p" : "ANS_POLY");
    PolyUndef(t);
  }

  Rational *r = RatSetName(RatNumeDenoDef(P({1}, "z"), P({0, 0, 2})), "r");
  Bytes rwant;
  rwant.Head(0x20002006, 0, 2, 0, 2).Put("r").Put(2).Put("z").Put(1.0).Put(0.0).Put(0.0).Put(2.0);
  EXPECT_EQ(Written([&](FILE *f) { RatWrite(r, f); }), rwant.data);
  Rational *c = RatNumeDenoDef(CP({{1, 1}}, "w"), P({0, 1}));
  for (Rational *q : {r, c}) {
    Rational *t = RatSetStatus(RatDef("old", 1, 1), 9);
    ReadFrom(Written([&](FILE *f) { RatWrite(q, f); }), [&](FILE *f) { RatRead(t, f); });
    EXPECT_TRUE(SamePoly(t->nume, q->nume));
    EXPECT_TRUE(SamePoly(t->deno, q->deno));
    EXPECT_EQ(std::tuple(t->kind, t->status, t->nume_degree), std::tuple(q->kind, 9, q->nume->degree));
    // A stored empty name (length 1) stays empty for rationals.
    EXPECT_STREQ(t->name, q == r ? "r" : "");
    RatUndef(t);
  }
  // Length 0 is what gives ANS_RAT; the other byte order is swapped.
  Bytes foreign{{}, true};
  foreign.Head(0x20002006, 0, 0, 0, 0).Put(0).Put(3.0).Put(4.0);
  Rational *t = RatDef("t", 0, 0);
  ReadFrom(foreign.data, [&](FILE *f) { RatRead(t, f); });
  EXPECT_STREQ(t->name, "ANS_RAT");
  EXPECT_EQ(RatEval(t, 1), 0.75);
}

TEST_F(PolyFileTest, MatricesOfEveryObjectClassRoundTrip) {
  Polynomial *s1 = P({1, 1}), *cs = CP({{0, 1}, {2, 0}}, "w");
  Rational *r = RatNumeDenoDef(s1, P({0, 0, 1}));
  Matrix *ms[] = {P_MatFillDef(2, 3, s1), P_MatFillDef(1, 2, cs), R_MatFillDef(3, 1, r),
                  R_MatFillDef(2, 2, RatRealToComp(r))};
  int want_cls[] = {kPoly, kCompPoly, kRat, kCompRat};
  for (int k = 0; k < 4; k++) {
    Matrix *m = MatSetName(ms[k], "M");
    Matrix *t = MatDef("", 0, 0);
    ReadFrom(Written([&](FILE *f) { MatWrite(m, f, 7); }), [&](FILE *f) { MatRead(t, f, 7); });
    ASSERT_EQ(t->cls, want_cls[k]);
    ASSERT_EQ(MatCount(t), MatCount(m));
    for (long long e = 0; e < MatCount(m); e++) {
      if (IsPolyClass(m->cls)) {
        Polynomial *a = static_cast<Polynomial **>(t->elements)[e], *b = static_cast<Polynomial **>(m->elements)[e];
        EXPECT_EQ(std::pair(a->degree, a->kind), std::pair(b->degree, b->kind));
      } else {
        Rational *a = static_cast<Rational **>(t->elements)[e];
        EXPECT_EQ(std::pair(a->deno->degree, a->kind), std::pair(2, want_cls[k] & 1));
      }
    }
    MatUndef(t);
  }
}

TEST_F(PolyFileTest, TextFilesAndSaveForms) {
  Polynomial *p = PolySetName(P({1, -2, 0, 4}), "p");
  PolyFileWrite(p, Path("p").c_str());
  EXPECT_TRUE(SamePoly(PolyFileRead(Path("p").c_str()), P({1, -2, 0, 4})));
  Rational *r = RatNumeDenoDef(P({1, 1}), CP({{1, 0}, {0, 1}}, "w"));
  RatFileWrite(r, Path("r").c_str());
  EXPECT_NE(Slurp(Path("r.D")).find("# 1 2 C"), std::string::npos);
  Rational *rb = RatFileRead(Path("r").c_str());
  EXPECT_EQ(std::tuple(rb->kind, rb->deno->degree, rb->deno_degree), std::tuple(1, 1, 1));

  PolyFileSave(p, Path("save").c_str(), 0, 1);
  PolyFileSave(P({0, 1}), Path("save").c_str(), 1, 0);
  RatFileSave(RatSetName(RatInvPoly(P({1, 1})), "g"), Path("save").c_str(), 1, 1);
  EXPECT_EQ(Slurp(Path("save")),
            "p = 4*s^3 - 2*s + 1;\n\nPolynomial(\"s\")g = (1)/\n    (s + 1);\n\n");
  // A long text is broken at width 75 under the name.
  PolyFileSave(PolySetName(PolyOne(40, nullptr), "long"), Path("long").c_str(), 0, 0);
  std::string text = Slurp(Path("long"));
  size_t nl = text.find('\n');
  ASSERT_NE(nl, std::string::npos);
  EXPECT_LE(nl, 75u);
  EXPECT_EQ(text.substr(nl + 1, 8), "        ");
}

TEST_F(PolyFileTest, LoggedReportsAppendTheSaveForms) {
  char old[4096];
  ASSERT_NE(getcwd(old, sizeof old), nullptr);
  ASSERT_EQ(chdir(Path("").c_str()), 0);
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  LogSwitch = 1;
  PolyWarning2("f()", "first", PolySetName(P({1, 1}), "a"), PolyDef("", -1, nullptr));
  RatWarning("g()", "second", RatInvPoly(P({0, 1})));
  LogSwitch = 0;
  testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr();
  std::string log = Slurp("Velk.log");
  EXPECT_NE(log.find(" in f().\n\na = s + 1;\n\n"), std::string::npos) << log;
  EXPECT_EQ(log.find(" in f().\n\na = s + 1;\n\n0"), std::string::npos) << log;  // undefined: nothing
  EXPECT_NE(log.find(" in g().\n\n(1)/\n(Polynomial(\"s\"));\n\n"), std::string::npos) << log;
  ASSERT_EQ(chdir(old), 0);
}

TEST(PolyRecordDeathTest, EachReadingFailure) {
  const std::string read = "\nread <- \"\" : ";
  struct Case {
    Bytes bytes;
    const char *text;
    bool rational;
  } cases[] = {
      {Bytes().Put(0xFFFFFFFFu).Put(5), "Data structure is broken in PolyRead().", false},
      {Bytes().Head(0x20002006, 0, 0, 0, 1).Put('\0'), "Incorrect class datafile in PolyRead().", false},
      {Bytes().Head(0x20002005, 1, 1, 0, 1025), "Incorrect machine datafile in PolyRead().", false},
      {Bytes().Head(0x20002005, 1, 1, 0, 6).Put("ab"), "Variable name is too short in PolyRead().", false},
      {Bytes().Head(0x20002005, 1, 2, 0, 1).Put('\0').Put(0).Put(1.0),
       "Data is broken or too few in PolyRead().", false},
      {Bytes().Head(0x20002005, 1, 1, 7, 1).Put('\0').Put(0).Put(1.0),
       "Data is broken or too few in PolyRead().", false},
      {Bytes().Head(0x20002005, 1, 1, 0, 1).Put('\0').Put(-3), "Data is broken or too few in PolyRead().", false},
      {Bytes().Head(0x20002005, 1, 1, 0, 1).Put('\0'), "Incorrect class datafile in RatRead().", true},
      {Bytes().Head(0x20002006, 1, 1, 0, 1).Put('\0').Put(0).Put(1.0).Put(2.0).Put(3.0),
       "Data is broken or too few in RatRead().", true},
      {Bytes().Head(0x20002006, -2, 1, 0, 1).Put('\0').Put(0), "Data is broken or too few in RatRead().", true},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.text);
    auto read_one = [&](FILE *f) {
      c.rational ? (void)RatRead(RatDef("t", 0, 0), f) : (void)PolyRead(PolyDef("t", 0, nullptr), f);
    };
    EXPECT_EXIT(ReadFrom(c.bytes.data, read_one), testing::ExitedWithCode(0), Exact(read + c.text + "\n"));
  }
}

}  // namespace
