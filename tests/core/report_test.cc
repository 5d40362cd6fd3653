// The reporters: exact texts, the message buffer, the log, the allocation guards.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <string>

#include "container/list.h"
#include "container/string.h"
#include "core/alloc.h"
#include "core/matrix.h"
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
  // A byte count no int can hold is refused before any allocation is tried.
  EXPECT_EXIT(emalloc_array(2000000000LL, 16), testing::ExitedWithCode(0),
              Exact("\nemalloc(32000000000) : Out of memory !!\n"));
  char *grown = static_cast<char *>(erealloc(StringDup("abc"), 100));
  EXPECT_STREQ(grown, "abc");
  efree(grown);
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
  // A warning returns, rings the bell on stdout and leaves the buffer empty.
  MatSetMessage("Real(A(1x2))");
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  MatWarning("MatGetValueOne()", "Not a one by one matrix", a);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "\a");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "\nReal(A(1x2)) : Not a one by one matrix in MatGetValueOne().\n");
  EXPECT_EQ(MatMessageBuffer[0], '\0');
  MatUndef(a);
  MatUndef(b);
}

TEST(MatCheckDeathTest, ChecksNameTheirOperands) {
  Matrix *e = MatDef("E", 0, 5), *s = MatDef("S", 2, 2), *w = MatDef("W", 2, 3);
  Matrix *c = C_MatDef("C", 2, 2), *p = P_MatDef("P", 1, 1);
  MatCheckSameSize(s, s, "f()");
  MatCheckSquare(s, "f()");
  MatCheckComplex(c, "f()");
  MatCheckPolynomial(p, "f()");
  struct Case {
    void (*check)(Matrix *, Matrix *);
    const char *text;
  } cases[] = {
      {[](Matrix *a, Matrix *) { MatCheckNonZeroSize(a, "f()"); }, "Zero-size matrix for 'E(0 x 5)'"},
      {[](Matrix *a, Matrix *b) { MatCheckNonZeroSize2(b, a, "f()"); },
       "Zero-size matrix for 'S(2 x 2)' and 'E(0 x 5)'"},
      {[](Matrix *, Matrix *b) { MatCheckSameClass(b, C_MatDef("C", 2, 2), "f()"); },
       "Not same class for 'S(2 x 2)' and 'C(2 x 2)'"},
      {[](Matrix *, Matrix *b) { MatCheckSquare2(b, MatDef("W", 2, 3), "f()"); },
       "Not square matrices for 'S(2 x 2)' and 'W(2 x 3)'"},
      {[](Matrix *, Matrix *b) { MatCheckReal(C_MatDef("", 1, 1), "f()"); (void)b; },
       "Not a real matrix for '(1 x 1)'"},
      {[](Matrix *, Matrix *b) { MatCheckComplex(b, "f()"); }, "Not a complex matrix for 'S(2 x 2)'"},
      {[](Matrix *, Matrix *) { MatCheckRealOrComplex(P_MatDef("P", 1, 1), "f()"); },
       "Not a real nor complex matrix for 'P(1 x 1)'"},
      {[](Matrix *, Matrix *b) { MatCheckRational(b, "f()"); }, "Not a rational matrix for 'S(2 x 2)'"},
      {[](Matrix *a, Matrix *b) { MatClassError2(b, a, "f()"); },
       "Not a real nor complex matrix for 'S(2 x 2)' and 'E(0 x 5)'"},
  };
  for (const Case &k : cases)
    EXPECT_EXIT(k.check(e, s), testing::ExitedWithCode(0),
                Exact("\n" + std::string(k.text) + " in f().\n"));
  for (Matrix *m : {e, s, w, c, p}) MatUndef(m);
}

TEST(KindReportDeathTest, EachKindDescribesItsOperands) {
  EXPECT_EXIT(CompError2("CompDiv()", "Can't divide by zero", CompDef("z", 1.5, -2),
                         CompDef("", 0, 1)),
              testing::ExitedWithCode(0),
              Exact("\nCan't divide by zero for 'z(1.5,-2)' and '(0,1)' in CompDiv().\n"));
  EXPECT_EXIT(PolyError2("PolyAdd()", "Variables are distinct", PolyDef("p", 2, nullptr),
                         PolyDef("", 1, "z")),
              testing::ExitedWithCode(0),
              Exact("\nVariables are distinct for 'p(s^2)' and '(z^1)' in PolyAdd().\n"));
  EXPECT_EXIT(RatError("RatAdd()", "Undefined rational", RatDef("r", 1, 3)),
              testing::ExitedWithCode(0),
              Exact("\nUndefined rational for 'r(s^1/s^3)' in RatAdd().\n"));
  EXPECT_EXIT(vkStringError("vkStringCut()", "Index is out of range", vkStringDef("s", 3)),
              testing::ExitedWithCode(0),
              Exact("\nIndex is out of range for 's(length=3)' in vkStringCut().\n"));
  // Lists put one blank after the message and none before "in".
  EXPECT_EXIT(ListError2("ListCopy()", "Confliction of length", ListDef("L", 2), ListDef("", 0)),
              testing::ExitedWithCode(0),
              Exact("\nConfliction of length in \"L (2 element(s))\" and \"(0 element(s))\" in "
                    "ListCopy().\n"));
  List *l = ListDef("L", 2);
  EXPECT_EXIT(
      {
        ListSetMessage("L(3) = \"\"");
        ListError("ListSetElement()", "Index is out of range", l);
      },
      testing::ExitedWithCode(0),
      Exact("\nL(3) = \"\" : Index is out of range  in ListSetElement().\n"));
}

TEST(LogTest, SwitchOnAppendsReportsToVelkLog) {
  char dir[] = "/tmp/velk-log-XXXXXX";
  ASSERT_NE(mkdtemp(dir), nullptr);
  char old[4096];
  ASSERT_NE(getcwd(old, sizeof old), nullptr);
  ASSERT_EQ(chdir(dir), 0);
  Matrix *small = MatDef("A", 1, 2), *big = MatDef("B", 10, 11);
  MatReal(small)[0] = 1.5;
  MatReal(small)[1] = -2;
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  LogSwitch = 1;
  MatWarning2("f()", "first", small, big);
  CompWarning("g()", "second", CompDef("", 1, 2));
  LogSwitch = 0;
  testing::internal::GetCapturedStdout();
  testing::internal::GetCapturedStderr();
  std::ifstream in("Velk.log");
  std::stringstream log;
  log << in.rdbuf();
  // After ctime's time stamp line: the report, then each operand of at most
  // 100 elements in the bracketed save form (the 10 x 11 one is left out).
  EXPECT_NE(log.str().find("\n\nfirst for 'A(1 x 2)' and 'B(10 x 11)' in f().\n\nA = [\n [  "),
            std::string::npos)
      << log.str();
  EXPECT_EQ(log.str().find("B = ["), std::string::npos);
  EXPECT_NE(log.str().find("\n\nsecond for '(1,2)' in g().\n\n"), std::string::npos);
  // A log that cannot be opened (here a directory) is named and the report goes on.
  unlink("Velk.log");
  ASSERT_EQ(mkdir("Velk.log", 0700), 0);
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  LogSwitch = 1;
  MatWarning("f()", "third", nullptr);
  RatWarning("h()", "fourth", nullptr);
  LogSwitch = 0;
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "\nthird in f().\nCan't open Velk.log.\n\nfourth in h().\nCan't open logfile\n");
  rmdir("Velk.log");
  ASSERT_EQ(chdir(old), 0);
  rmdir(dir);
  MatUndef(small);
  MatUndef(big);
}

}  // namespace
