// The matrix text file, the save form, the listings and the number texts.
#include "io/text_format.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <string>
#include <vector>

#include "core/alloc.h"
#include "core/matrix.h"
#include "core/report.h"
#include "scalar/complex.h"
#include "tests/io/io_test_util.h"

namespace {

std::vector<double> Values(Matrix *m) {
  const double *d = MatReal(m);
  long long n = MatCount(m) * (m->cls == kComplex ? 2 : 1);
  return n > 0 ? std::vector<double>(d, d + n) : std::vector<double>();
}

Matrix *Filled(const char *name, int rows, int cols, std::vector<double> values, int cls = kReal) {
  Matrix *m = cls == kComplex ? C_MatDef(name, rows, cols) : MatDef(name, rows, cols);
  std::copy(values.begin(), values.end(), MatReal(m));
  return m;
}

class TextFormatTest : public TempDirTest {
 protected:
  void SetUp() override {
    TempDirTest::SetUp();
    MatInit();
    live_ = MatRegistryCheck();
  }
  void TearDown() override {
    // Every scenario gives back what it defined.
    EXPECT_EQ(MatRegistryCheck(), live_);
    TempDirTest::TearDown();
  }

  // Reads the file at path and checks its shape, class and values.
  void ExpectRead(const std::string &path, int rows, int cols, int cls,
                  const std::vector<double> &values) {
    Matrix *m = MatFileRead(path.c_str());
    EXPECT_EQ(m->rows, rows);
    EXPECT_EQ(m->cols, cols);
    EXPECT_EQ(m->cls, cls);
    EXPECT_STREQ(m->name, "");
    EXPECT_EQ(Values(m), values);
    MatUndef(m);
  }

  long live_ = 0;
};

using TextFormatDeathTest = TextFormatTest;

TEST_F(TextFormatTest, HeaderlessFileIsReadByRowsAndWrittenByColumns) {
  std::string path = Write("plain.txt", "1 2 3\n4 5 6\n");
  ExpectRead(path, 2, 3, kReal, {1, 2, 3, 4, 5, 6});

  Matrix *m = MatFileRead(path.c_str());
  std::string out = Path("out.txt");
  EXPECT_EQ(MatFileWrite(m, out.c_str()), m);
  EXPECT_EQ(Contents(out),
            "# 2 3\n"
            "  1.00000000E+00   4.00000000E+00\n"
            "  2.00000000E+00   5.00000000E+00\n"
            "  3.00000000E+00   6.00000000E+00\n");
  ExpectRead(out, 2, 3, kReal, {1, 2, 3, 4, 5, 6});
  MatUndef(m);

  // Blank lines, lines of blanks and tabs, CR LF and no final line feed.
  ExpectRead(Write("loose.txt", "\n \t \r\n1\t2  3 \r\n\n\t\n4 5 6\r\n7 8 9"), 3, 3, kReal,
             {1, 2, 3, 4, 5, 6, 7, 8, 9});
  // Nothing at all is an empty matrix.
  ExpectRead(Write("empty.txt", " \n\n"), 0, 0, kReal, {});
}

TEST_F(TextFormatTest, HeaderFileHoldsOneColumnPerLine) {
  ExpectRead(Write("h.txt", "# 2 3\n1 4\n2 5\n3 6\n"), 2, 3, kReal, {1, 2, 3, 4, 5, 6});
  // Comments may stand before any column; numbers beyond the rows are ignored;
  // a column may run on over several lines.
  ExpectRead(Write("c.txt", "# 2 3\n# first\n1 4\n#a\n#b\n2 5 99 100\n3\n6\n"), 2, 3, kReal,
             {1, 2, 3, 4, 5, 6});
  // A short column takes its missing number from the next line, whose rest
  // is then skipped, so the following column starts in the wrong place.
  ExpectRead(Write("s.txt", "# 2 3\n1 4\n2\n5 -1 -2\n3 6\n7 8\n"), 2, 3, kReal,
             {1, 2, 3, 4, 5, 6});
  // A capital C anywhere on the header line makes the file complex.
  ExpectRead(Write("z.txt", "# 2 2 Complex\n1 2 3 4\n5 6 7 8\n"), 2, 2, kComplex,
             {1, 2, 5, 6, 3, 4, 7, 8});
  ExpectRead(Write("r.txt", "# 2 2 complex\n1 2 3 4\n5 6 7 8\n"), 2, 2, kReal, {1, 5, 2, 6});
  // Rows but no columns, and columns without rows (one empty line each).
  ExpectRead(Write("e.txt", "# 3 0\n"), 3, 0, kReal, {});
  ExpectRead(Write("f.txt", "# 0 4\n\n\n"), 0, 4, kReal, {});
}

TEST_F(TextFormatTest, LineSkipGoesOnOnlyAfterAPieceOf1023Characters) {
  // The rest of the first column's line is 1022 blanks and its line feed:
  // a piece of exactly 1023, so the skip swallows the next line as well.
  ExpectRead(Write("a.txt", "# 1 3\n1" + std::string(1022, ' ') + "\n2\n3\n4\n"), 1, 3, kReal,
             {1, 3, 4});
  ExpectRead(Write("b.txt", "# 1 3\n1" + std::string(1021, ' ') + "\n2\n3\n4\n"), 1, 3, kReal,
             {1, 2, 3});
  // A rest longer than a buffer loses only its first 4095 characters; the
  // remainder is read as data.
  ExpectRead(Write("c.txt", "# 1 2\n1" + std::string(4095, ' ') + "7\n8\n"), 1, 2, kReal, {1, 7});
  // The same rule skips comment lines.
  ExpectRead(Write("d.txt", "# 1 2\n#" + std::string(1021, 'x') + "\n5\n6\n7\n"), 1, 2, kReal,
             {6, 7});
}

TEST_F(TextFormatTest, SpecialValuesKeepTheLibraryFormInFilesAndOursOnScreen) {
  Matrix *m = Filled("S", 1, 4, {NAN, INFINITY, -INFINITY, -0.0});
  std::string path = Path("s.txt");
  MatFileWrite(m, path.c_str());
  EXPECT_EQ(Contents(path),
            "# 1 4\n"
            "             NAN\n"
            "             INF\n"
            "            -INF\n"
            " -0.00000000E+00\n");
  Matrix *back = MatFileRead(path.c_str());
  ASSERT_EQ(back->cols, 4);
  EXPECT_TRUE(std::isnan(MatReal(back)[0]));
  EXPECT_EQ(MatReal(back)[1], INFINITY);
  EXPECT_EQ(MatReal(back)[2], -INFINITY);
  EXPECT_TRUE(std::signbit(MatReal(back)[3]));
  MatUndef(back);

  testing::internal::CaptureStdout();
  MatPrint(m);
  MatFileSave(m, "stdout", 1, 1, "");
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            " ===  S  (   1  x   4)  Matrix  ===\n"
            "            (  1)           (  2)           (  3)           (  4)     \n"
            " (  1)             NaN             Inf            -Inf -0.00000000E+00\n"
            "S = [\n"
            " [             NaN,             Inf,            -Inf, -0.00000000E+00  ]];\n\n");
  MatUndef(m);
}

TEST_F(TextFormatTest, WritingToStandardOutputLeavesItOpen) {
  Matrix *m = Filled("", 2, 1, {0.5, -1.25e-300});
  testing::internal::CaptureStdout();
  MatFileWrite(m, "stdout");
  printf("after\n");
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "# 2 1\n  5.00000000E-01 -1.25000000E-300\nafter\n");
  MatUndef(m);

  // No columns: the header alone; no rows: one empty line per column.
  Matrix *wide = MatDef("", 0, 3);
  Matrix *tall = MatDef("", 2, 0);
  testing::internal::CaptureStdout();
  MatFileWrite(wide, "stdout");
  MatFileWrite(tall, "stdout");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "# 0 3\n\n\n\n# 2 0\n");
  MatUndef(wide);
  MatUndef(tall);
}

TEST_F(TextFormatTest, RealListingComesInBlocksOfFourColumns) {
  Matrix *m = Filled("A", 2, 5, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
  testing::internal::CaptureStdout();
  MatPrint(m);
  MatPrintIndex(m);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            " ===  A  (   2  x   5)  Matrix  ===\n"
            "            (  1)           (  2)           (  3)           (  4)     \n"
            " (  1)  1.00000000E+00  2.00000000E+00  3.00000000E+00  4.00000000E+00\n"
            " (  2)  6.00000000E+00  7.00000000E+00  8.00000000E+00  9.00000000E+00\n"
            "            (  5)     \n"
            " (  1)  5.00000000E+00\n"
            " (  2)  1.00000000E+01\n"
            " ===  A  (   2  x   5)  Index  ===\n"
            "            (  1)           (  2)           (  3)           (  4)     \n"
            " (  1)  1.00000000E+00  2.00000000E+00  3.00000000E+00  4.00000000E+00\n"
            " (  2)  6.00000000E+00  7.00000000E+00  8.00000000E+00  9.00000000E+00\n"
            "            (  5)     \n"
            " (  1)  5.00000000E+00\n"
            " (  2)  1.00000000E+01\n");
  MatUndef(m);

  Matrix *empty = MatDef("", 0, 5);
  testing::internal::CaptureStdout();
  MatPrintArray(empty);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), " ===  ans  (   0  x   5)  Array  ===\n");
  MatUndef(empty);
}

TEST_F(TextFormatTest, ComplexListingComesInBlocksOfTwoColumns) {
  Matrix *m = Filled("", 1, 3, {1, -1, 2, 0, NAN, -INFINITY}, kComplex);
  testing::internal::CaptureStdout();
  MatPrintArray(m);
  MatPrintIndex(m);  // the Index form lists real matrices only
  MatPrint(m);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            " ===  ans  (   1  x   3)  CoArray  ===\n"
            "        [ (  1)-Real      (  1)-Imag ]  [ (  2)-Real      (  2)-Imag ]\n"
            " (  1)  1.00000000E+00 -1.00000000E+00  2.00000000E+00  0.00000000E+00\n"
            "        [ (  3)-Real      (  3)-Imag ]\n"
            " (  1)             NaN            -Inf\n"
            " ===  ans  (   1  x   3)    ===\n"
            " ===  ans  (   1  x   3)  CoMatrix  ===\n"
            "        [ (  1)-Real      (  1)-Imag ]  [ (  2)-Real      (  2)-Imag ]\n"
            " (  1)  1.00000000E+00 -1.00000000E+00  2.00000000E+00  0.00000000E+00\n"
            "        [ (  3)-Real      (  3)-Imag ]\n"
            " (  1)             NaN            -Inf\n");
  MatUndef(m);
}

TEST_F(TextFormatTest, SaveFormBracketsRowsInBlocks) {
  Matrix *a = Filled("A", 2, 5, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
  std::string path = Path("save.txt");
  MatFileSave(a, path.c_str(), 0, 1, "");
  const std::string saved_a =
      "A = [\n"
      " [  1.00000000E+00,  2.00000000E+00,  3.00000000E+00,  4.00000000E+00,\n"
      "    5.00000000E+00  ]\n"
      " [  6.00000000E+00,  7.00000000E+00,  8.00000000E+00,  9.00000000E+00,\n"
      "    1.00000000E+01  ]];\n\n";
  EXPECT_EQ(Contents(path), saved_a);

  // Unnamed, inside a function, not terminated; appended to what is there.
  Matrix *b = Filled("", 1, 2, {1, -2});
  MatFileSave(b, path.c_str(), 1, 0, "diag");
  EXPECT_EQ(Contents(path), saved_a + "diag([[  1.00000000E+00, -2.00000000E+00  ]])");
  // Without the append flag the file starts over.
  MatFileSave(b, path.c_str(), 0, 1, "");
  EXPECT_EQ(Contents(path), "[[  1.00000000E+00, -2.00000000E+00  ]];\n\n");

  Matrix *z = Filled("", 1, 2, {1, 2, NAN, -INFINITY}, kComplex);
  Matrix *no_rows = MatDef("Z", 0, 3);
  Matrix *no_cols = MatDef("", 3, 0);
  testing::internal::CaptureStdout();
  MatFileSave(z, "stdout", 0, 1, "");
  MatFileSave(no_rows, "stdout", 0, 1, "f");
  MatFileSave(no_cols, "stdout", 0, 1, "");
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "[[(  1.00000000E+00,  2.00000000E+00),        (NaN,-Inf)]];\n\n"
            "Z = f([\n ];\n\n"
            "[  ");
  for (Matrix *m : {a, b, z, no_rows, no_cols}) MatUndef(m);
}

TEST_F(TextFormatTest, ReporterAppendsSmallOperandsToTheLog) {
  Matrix *small = Filled("A", 1, 2, {1, 2});
  Matrix *large = MatDef("B", 10, 11);
  std::string here = std::filesystem::current_path().string();
  ASSERT_EQ(chdir(dir_.c_str()), 0);
  LogSwitch = 1;
  testing::internal::CaptureStdout();  // the bell
  testing::internal::CaptureStderr();
  MatWarning("MatTest()", "Just a test", small);
  MatWarning("MatTest()", "Too big to log", large);
  testing::internal::GetCapturedStderr();
  testing::internal::GetCapturedStdout();
  LogSwitch = 0;
  ASSERT_EQ(chdir(here.c_str()), 0);
  std::string log = Contents(Path("Velk.log"));
  const std::string first = "\nJust a test for 'A(1 x 2)' in MatTest().\n\n"
                            "A = [\n [  1.00000000E+00,  2.00000000E+00  ]];\n\n";
  const std::string second = "\nToo big to log for 'B(10 x 11)' in MatTest().\n\n";
  ASSERT_NE(log.find(first), std::string::npos) << log;
  EXPECT_EQ(log.substr(log.size() - second.size()), second) << log;
  MatUndef(small);
  MatUndef(large);
}

TEST_F(TextFormatTest, StandardInputIsReadThroughTheStreamAndLeftWhereTheMatrixEnds) {
  std::string path = Write("two.txt", "# 1 2\n1\n2\n# 2 1\n3 4\n5 6\n7 8\n");
  ASSERT_NE(freopen(path.c_str(), "r", stdin), nullptr);
  Matrix *first = MatFileRead("stdin");
  Matrix *second = MatFileRead("stdin");
  Matrix *rest = MatFileRead("stdin");  // no header: counted from the start of the file
  ASSERT_NE(freopen("/dev/null", "r", stdin), nullptr);
  EXPECT_EQ(Values(first), (std::vector<double>{1, 2}));
  EXPECT_EQ(second->rows, 2);
  EXPECT_EQ(Values(second), (std::vector<double>{3, 4}));
  // Without a header the stream is rewound to the start of the file after
  // counting: the comment-skipping fill then reads 1 2 and 3 4 from there.
  EXPECT_EQ(rest->rows, 2);
  EXPECT_EQ(Values(rest), (std::vector<double>{1, 2, 3, 4}));
  for (Matrix *m : {first, second, rest}) MatUndef(m);
}

TEST(RealToString, SpecialValuesThenTheFormat) {
  char buf[kRealTextSize];
  EXPECT_STREQ(RealToString(1.5, buf, nullptr), "1.5");
  EXPECT_STREQ(RealToString(1e20, buf, nullptr), "1E+20");
  EXPECT_STREQ(RealToString(3.14159265, buf, "%10.3f"), "     3.142");
  EXPECT_STREQ(RealToString(NAN, buf, "%10.3f"), "NaN");
  EXPECT_STREQ(RealToString(-NAN, buf, nullptr), "NaN");
  EXPECT_STREQ(RealToString(INFINITY, buf, "%f"), "Inf");
  EXPECT_STREQ(RealToString(-INFINITY, buf, nullptr), "-Inf");
  char *own = RealToString(-0.25, nullptr, "%16.8E");
  EXPECT_STREQ(own, " -2.50000000E-01");
  efree(own);

  Complex *c = CompDef("z", 1, -2);
  EXPECT_STREQ(CompToString(c, buf, nullptr), "(1,-2)");
  EXPECT_STREQ(CompToString(c, buf, "%.2f"), "(1.00,-2.00)");
  ComplexValue v{INFINITY, NAN};
  char *text = ComplexValueToString(&v, nullptr, "%16.8E");
  EXPECT_STREQ(text, "(Inf,NaN)");
  efree(text);
  CompUndef(c);
}

// ---- Reports -------------------------------------------------------------------

TEST_F(TextFormatDeathTest, EachFailureEndsWithItsReport) {
  std::string missing = Path("missing.txt");
  EXPECT_EXIT(MatFileRead(missing.c_str()), testing::ExitedWithCode(0),
              Exactly("\nread << \"" + missing + "\" : Can't open file " + missing +
                      " in MatFileRead().\n"));

  Matrix *a = Filled("A", 2, 2, {1, 2, 3, 4});
  std::string dir = dir_.string();  // a directory cannot be opened for writing
  EXPECT_EXIT(MatFileWrite(a, dir.c_str()), testing::ExitedWithCode(0),
              Exactly("\nprint A(2x2) >> \"" + dir + "\" : Can't open file " + dir +
                      " in MatFileWrite().\n"));
  EXPECT_EXIT(MatFileSave(a, dir.c_str(), 1, 1, ""), testing::ExitedWithCode(0),
              Exactly("\nsave A(2x2), \"" + dir + "\" : Can't open file " + dir +
                      " in MatFileSave().\n"));

  // The wrong class is found after the file was made; it is left empty.
  Matrix *p = P_MatDef("P", 1, 1);
  std::string out = Path("p.txt");
  EXPECT_EXIT(MatFileWrite(p, out.c_str()), testing::ExitedWithCode(0),
              Exactly("\nprint P(1x1) >> \"" + out +
                      "\" : Neither a real matrix nor a complex matrix in MatFileWrite().\n"));
  EXPECT_TRUE(std::filesystem::exists(out));
  EXPECT_EQ(Contents(out), "");
  MatUndef(p);
  MatUndef(a);
}

TEST_F(TextFormatDeathTest, BrokenDataEndsWithOneReport) {
  const std::vector<std::string> broken = {
      "1 2 3\n4 5\n",                // rows of different lengths
      "1 2\n# not a comment here\n",  // without a header "#" is data
      "1 2\nx 4\n",                  // a token that is no number
      "1 2\r3 4\n",                  // a lone CR ends a counted line, but the skip runs on to LF
      "1 " + std::string(4096, '1') + "\n",  // a token longer than any line buffer
      "# 2 3\n1 4\n2\n5 3 6\n",      // a column short at the end of the file
      "# 2 2 C\n1 2 3\n",            // a complex element without its imaginary part
      "# x y\n1\n",                  // no size on the header line
      "# 2\n1 2\n",                  // half a size
      "# -1 2\n",                    // a negative size
      "# 3000000000 1\n1 2 3\n",     // a size beyond an int
      "# 2000000000 2000000000\n1\n",  // storage no allocation can give
      "# 1000 1000\n1 2 3\n",          // far more numbers than the file holds
  };
  for (size_t k = 0; k < broken.size(); k++) {
    std::string path = Write("broken" + std::to_string(k) + ".txt", broken[k]);
    EXPECT_EXIT(MatFileRead(path.c_str()), testing::ExitedWithCode(0),
                Exactly("\nread << \"" + path + "\" : Data may be broken. in MatFileRead().\n"))
        << testing::PrintToString(broken[k]);
  }
}

}  // namespace
