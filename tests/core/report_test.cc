// The reporters: exact texts, the message buffer, the log, the allocation guards.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "container/list.h"
#include "container/string.h"
#include "core/alloc.h"
#include "core/matrix.h"
#include "core/report.h"
#include "scalar/complex.h"
#include "scalar/polynomial.h"
#include "scalar/rational.h"
#include "support/exact.h"

namespace {

TEST(AllocDeathTest, GuardsReportAndExitWithStatusZero) {
  EXPECT_EQ(emalloc(0), nullptr);
  EXPECT_EXIT(efree(emalloc(0)), testing::ExitedWithCode(0),
              Exact("\nefree(0) : Invalid memory free\n"));
  EXPECT_EXIT(erealloc(nullptr, 24), testing::ExitedWithCode(0),
              Exact("\nerealloc(0, 24) : Invalid memory re-allocation\n"));
  EXPECT_EXIT(emalloc(-1), testing::ExitedWithCode(0),
              Exact("\nemalloc(-1) : Out of memory !!\n"));
  // A product no int can hold is refused before any allocation is tried.
  EXPECT_EXIT(emalloc_array(2000000000LL, 16), testing::ExitedWithCode(0),
              Exact("\nemalloc(32000000000) : Out of memory !!\n"));
  EXPECT_EXIT(RuntimeError("here()", "gone", 1), testing::ExitedWithCode(0),
              Exact("\nhere() : gone\n"));
}

TEST(AllocTest, StringDupAndNonFatalRuntimeError) {
  EXPECT_EQ(StringDup(nullptr), nullptr);
  char *empty = StringDup("");
  ASSERT_NE(empty, nullptr);
  EXPECT_EQ(empty[0], '\0');
  efree(empty);
  char *copy = StringDup("abc");
  EXPECT_STREQ(copy, "abc");
  void *grown = erealloc(copy, 100);
  EXPECT_STREQ(static_cast<char *>(grown), "abc");
  efree(grown);
  testing::internal::CaptureStderr();
  RuntimeError("warn()", "careful", 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "\nwarn() : careful\n");
}

TEST(MatReportDeathTest, OperandsOnlyWhenTheBufferIsEmpty) {
  Matrix *a = MatDef("", 3, 4);
  Matrix *b = MatDef("B", 3, 3);
  EXPECT_EXIT(MatError2("MatAdd()", "Not same size", a, b), testing::ExitedWithCode(0),
              Exact("\nNot same size for '(3 x 4)' and 'B(3 x 3)' in MatAdd().\n"));
  EXPECT_EXIT(
      {
        MatSetMessage("A(2x2) + B(3x3)");
        MatError2("MatAdd()", "Not same size", a, b);
      },
      testing::ExitedWithCode(0), Exact("\nA(2x2) + B(3x3) : Not same size in MatAdd().\n"));
  EXPECT_EXIT(MatError("MatUndef()", "Duplicate undefining", nullptr), testing::ExitedWithCode(0),
              Exact("\nDuplicate undefining in MatUndef().\n"));
  MatUndef(a);
  MatUndef(b);
}

TEST(MatReportTest, WarningReturnsEmptiesTheBufferAndRingsTheBell) {
  Matrix *a = MatDef("A", 1, 2);
  MatSetMessage("Real(%s(%dx%d))", a->name, a->rows, a->cols);
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  MatWarning("MatGetValueOne()", "Not a one by one matrix", a);
  std::string out = testing::internal::GetCapturedStdout();
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "\nReal(A(1x2)) : Not a one by one matrix in MatGetValueOne().\n");
  EXPECT_EQ(out, "\a");
  EXPECT_EQ(MatMessageBuffer[0], '\0');
  MatUndef(a);
}

TEST(MatCheckDeathTest, ChecksNameTheirOperands) {
  Matrix *empty = MatDef("E", 0, 5);
  Matrix *sq = MatDef("S", 2, 2);
  Matrix *wide = MatDef("W", 2, 3);
  Matrix *c = C_MatDef("C", 2, 2);
  MatCheckSameSize(sq, sq, "f()");
  MatCheckSquare(sq, "f()");
  MatCheckReal(sq, "f()");
  MatCheckComplex(c, "f()");
  EXPECT_EXIT(MatCheckNonZeroSize(empty, "f()"), testing::ExitedWithCode(0),
              Exact("\nZero-size matrix for 'E(0 x 5)' in f().\n"));
  EXPECT_EXIT(MatCheckNonZeroSize2(sq, empty, "f()"), testing::ExitedWithCode(0),
              Exact("\nZero-size matrix for 'S(2 x 2)' and 'E(0 x 5)' in f().\n"));
  EXPECT_EXIT(MatCheckSameClass(sq, c, "f()"), testing::ExitedWithCode(0),
              Exact("\nNot same class for 'S(2 x 2)' and 'C(2 x 2)' in f().\n"));
  EXPECT_EXIT(MatCheckSquare2(sq, wide, "f()"), testing::ExitedWithCode(0),
              Exact("\nNot square matrices for 'S(2 x 2)' and 'W(2 x 3)' in f().\n"));
  EXPECT_EXIT(MatCheckComplex(sq, "f()"), testing::ExitedWithCode(0),
              Exact("\nNot a complex matrix for 'S(2 x 2)' in f().\n"));
  EXPECT_EXIT(MatCheckRealOrComplex(P_MatDef("P", 1, 1), "f()"),
              testing::ExitedWithCode(0),
              Exact("\nNot a real nor complex matrix for 'P(1 x 1)' in f().\n"));
  EXPECT_EXIT(MatCheckPolynomial(sq, "f()"), testing::ExitedWithCode(0),
              Exact("\nNot a polynomial matrix for 'S(2 x 2)' in f().\n"));
  EXPECT_EXIT(MatCheckRational(sq, "f()"), testing::ExitedWithCode(0),
              Exact("\nNot a rational matrix for 'S(2 x 2)' in f().\n"));
  EXPECT_EXIT(MatClassError2(sq, wide, "f()"), testing::ExitedWithCode(0),
              Exact("\nNot a real nor complex matrix for 'S(2 x 2)' and 'W(2 x 3)' in f().\n"));
  for (Matrix *m : {empty, sq, wide, c}) MatUndef(m);
}

TEST(KindReportDeathTest, EachKindDescribesItsOperands) {
  Complex *z = CompDef("z", 1.5, -2);
  Complex *anon = CompDef("", 0, 1);
  EXPECT_EXIT(CompError2("CompDiv()", "Can't divide by zero", z, anon), testing::ExitedWithCode(0),
              Exact("\nCan't divide by zero for 'z(1.5,-2)' and '(0,1)' in CompDiv().\n"));
  Polynomial *p = PolySetVariable(PolyDef("p", 2, nullptr), nullptr);
  Polynomial *q = PolyDef("", 1, "z");
  EXPECT_EXIT(PolyError2("PolyAdd()", "Variables are distinct", p, q), testing::ExitedWithCode(0),
              Exact("\nVariables are distinct for 'p(s^2)' and '(z^1)' in PolyAdd().\n"));
  Rational *r = RatDef("r", 1, 3);
  EXPECT_EXIT(RatError("RatAdd()", "Undefined rational", r), testing::ExitedWithCode(0),
              Exact("\nUndefined rational for 'r(s^1/s^3)' in RatAdd().\n"));
  List *l = ListDef("L", 2);
  List *m = ListDef("", 0);
  EXPECT_EXIT(ListError2("ListCopy()", "Confliction of length", l, m), testing::ExitedWithCode(0),
              Exact("\nConfliction of length in \"L (2 element(s))\" and \"(0 element(s))\" in "
                    "ListCopy().\n"));
  EXPECT_EXIT(
      {
        ListSetMessage("L(3) = \"\"");
        ListError("ListSetElement()", "Index is out of range", l);
      },
      testing::ExitedWithCode(0), Exact("\nL(3) = \"\" : Index is out of range  in ListSetElement().\n"));
  String *s = vkStringDef("s", 3);
  EXPECT_EXIT(vkStringError("vkStringCut()", "Index is out of range", s),
              testing::ExitedWithCode(0),
              Exact("\nIndex is out of range for 's(length=3)' in vkStringCut().\n"));
}

std::string ReadFile(const char *path) {
  std::ifstream in(path);
  std::stringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

TEST(LogTest, SwitchOnAppendsReportsToVelkLog) {
  char dir[] = "/tmp/velk-log-XXXXXX";
  ASSERT_NE(mkdtemp(dir), nullptr);
  char old[4096];
  ASSERT_NE(getcwd(old, sizeof old), nullptr);
  ASSERT_EQ(chdir(dir), 0);
  LogSwitch = 1;
  Matrix *a = MatDef("A", 2, 2);
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  MatWarning("f()", "first", a);
  CompWarning("g()", "second", CompDef("", 1, 2));
  testing::internal::GetCapturedStdout();
  testing::internal::GetCapturedStderr();
  LogSwitch = 0;
  std::string log = ReadFile("Velk.log");
  // A time stamp line (ctime's form ends in the year and a newline), then the report.
  EXPECT_NE(log.find("\n\nfirst for 'A(2 x 2)' in f().\n\n"), std::string::npos) << log;
  EXPECT_NE(log.find("\n\nsecond for '(1,2)' in g().\n\n"), std::string::npos) << log;
  EXPECT_EQ(log.find("Velk.log"), std::string::npos);
  MatUndef(a);
  // A log that cannot be opened (here a directory of that name) is named and the report goes on.
  unlink("Velk.log");
  ASSERT_EQ(mkdir("Velk.log", 0700), 0);
  LogSwitch = 1;
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  Matrix *b = MatDef("", 1, 1);
  MatWarning("f()", "third", b);
  RatWarning("h()", "fourth", nullptr);
  testing::internal::GetCapturedStdout();
  std::string err = testing::internal::GetCapturedStderr();
  LogSwitch = 0;
  EXPECT_EQ(err, "\nthird for '(1 x 1)' in f().\nCan't open Velk.log.\n\nfourth in h().\nCan't open logfile\n");
  MatUndef(b);
  rmdir("Velk.log");
  ASSERT_EQ(chdir(old), 0);
  rmdir(dir);
}

}  // namespace
