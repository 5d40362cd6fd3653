// The matrix text file, the save form and the listings; then the fast reader
// and writer against the C library doing the same work the plain way, on many
// generated numbers and files.
#include "io/text_format.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <bit>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "core/alloc.h"
#include "core/matrix.h"
#include "io/number_text.h"
#include "support/exact.h"
#include "tests/io/read_compare.h"

namespace {

// A private temporary directory per test.
class TextFormatTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(mkdtemp(dir_.data()), nullptr); }
  void TearDown() override { std::filesystem::remove_all(dir_); }
  std::string Write(const std::string &name, const std::string &bytes) const {
    std::ofstream(dir_ + "/" + name, std::ios::binary) << bytes;
    return dir_ + "/" + name;
  }

  std::string dir_ = testing::TempDir() + "velk-io-XXXXXX";
};
using TextFormatDeathTest = TextFormatTest;

TEST_F(TextFormatTest, ReadsAndWritesBothLayouts) {
  // A comment before a column; numbers beyond the rows are ignored; a short
  // column takes its missing number from the next line, whose rest is skipped.
  Matrix *h = MatFileRead(Write("h.txt", "# 2 3\n# note\n1 4 99\n2\n5 -1\n3 6\n").c_str());
  EXPECT_EQ(Elements(h), (std::vector<double>{1, 2, 3, 4, 5, 6}));
  // Standard input is read through the stream and left where the matrix ends.
  ASSERT_NE(freopen(Write("two.txt", "# 1 1\n1\n# 1 1\n2\n").c_str(), "r", stdin), nullptr);
  Matrix *first = MatFileRead("stdin"), *second = MatFileRead("stdin");
  ASSERT_NE(freopen("/dev/null", "r", stdin), nullptr);
  EXPECT_EQ(Elements(second), std::vector<double>{2});
  // Without a header, one line per row; written, one line per column.
  Matrix *m = MatFileRead(Write("m.txt", "1 2 3\n4 5 6\n").c_str());
  Matrix *z = MatFileRead(Write("z.txt", "# 1 2 C\n0.5 -1.25e-300\n-0 -inf\n").c_str());
  Matrix *wide = MatDef("", 0, 3), *big = MatDef("", 150, 90);
  for (int k = 0; k < 150 * 90; k++) MatReal(big)[k] = k - 7000.25;
  testing::internal::CaptureStdout();
  EXPECT_EQ(MatFileWrite(m, "stdout"), m);
  MatFileWrite(z, "stdout");
  MatFileWrite(wide, "stdout");  // one empty line per column
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "# 2 3\n"
            "  1.00000000E+00   4.00000000E+00\n"
            "  2.00000000E+00   5.00000000E+00\n"
            "  3.00000000E+00   6.00000000E+00\n"
            "# 1 2 C\n"
            "  5.00000000E-01 -1.25000000E-300\n"
            " -0.00000000E+00             -INF\n"
            "# 0 3\n\n\n\n");
  // Round trips, one of them far past the writer's buffer.
  const std::string path = Write("out.txt", "");
  for (Matrix *a : {m, z, wide, big}) {
    MatFileWrite(a, path.c_str());
    Matrix *back = MatFileRead(path.c_str());
    EXPECT_EQ(back->cls, a->cls);
    EXPECT_EQ(back->rows, a->rows);
    EXPECT_EQ(back->cols, a->cols);
    EXPECT_STREQ(back->name, "");
    EXPECT_EQ(Elements(back), Elements(a));
    MatUndef(back);
  }
  for (Matrix *a : {h, first, second, m, z, wide, big}) MatUndef(a);
}

TEST_F(TextFormatTest, ListsAndSavesInBlocks) {
  Matrix *a = MatSetName(MatFileRead(Write("a.txt", "1 2 3 4 5\n6 nan -inf 9 10\n").c_str()), "A");
  Matrix *z = MatFileRead(Write("z.txt", "# 1 3 C\n1 -1\n2 0\ninf -0\n").c_str());
  Matrix *empty = MatDef("E", 0, 5), *no_cols = MatDef("", 3, 0);
  testing::internal::CaptureStdout();
  MatPrint(a);
  MatPrintIndex(empty);
  MatPrintArray(z);
  MatPrintIndex(z);  // the Index form lists real matrices only
  MatFileSave(a, "stdout", 0, 1, "");
  MatFileSave(z, "stdout", 1, 0, "f");
  MatFileSave(empty, "stdout", 0, 1, "g");
  MatFileSave(no_cols, "stdout", 0, 1, "");
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            " ===  A  (   2  x   5)  Matrix  ===\n"
            "            (  1)           (  2)           (  3)           (  4)     \n"
            " (  1)  1.00000000E+00  2.00000000E+00  3.00000000E+00  4.00000000E+00\n"
            " (  2)  6.00000000E+00             NaN            -Inf  9.00000000E+00\n"
            "            (  5)     \n"
            " (  1)  5.00000000E+00\n"
            " (  2)  1.00000000E+01\n"
            " ===  E  (   0  x   5)  Index  ===\n"
            " ===  ans  (   1  x   3)  CoArray  ===\n"
            "        [ (  1)-Real      (  1)-Imag ]  [ (  2)-Real      (  2)-Imag ]\n"
            " (  1)  1.00000000E+00 -1.00000000E+00  2.00000000E+00  0.00000000E+00\n"
            "        [ (  3)-Real      (  3)-Imag ]\n"
            " (  1)             Inf -0.00000000E+00\n"
            " ===  ans  (   1  x   3)    ===\n"
            "A = [\n"
            " [  1.00000000E+00,  2.00000000E+00,  3.00000000E+00,  4.00000000E+00,\n"
            "    5.00000000E+00  ]\n"
            " [  6.00000000E+00,             NaN,            -Inf,  9.00000000E+00,\n"
            "    1.00000000E+01  ]];\n\n"
            "f([[(  1.00000000E+00, -1.00000000E+00),  (  2.00000000E+00,  0.00000000E+00),  \n"
            "  (Inf, -0.00000000E+00)]])"
            "E = g([\n ];\n\n"
            "[  ");
  for (Matrix *m : {a, z, empty, no_cols}) MatUndef(m);
  // Without a format "%G"; without a buffer a new one.
  char *text = RealToString(1e20, nullptr, nullptr);
  EXPECT_STREQ(text, "1E+20");
  efree(text);
}

TEST_F(TextFormatDeathTest, EachFailureEndsWithItsReport) {
  const std::string broken = Write("broken", "1 2 3\n4 5\n"), p_file = Write("p", "");
  EXPECT_EXIT(MatFileRead("/no/m"), testing::ExitedWithCode(0),
              Exact("\nread << \"/no/m\" : Can't open file /no/m in MatFileRead().\n"));
  EXPECT_EXIT(MatFileRead(broken.c_str()), testing::ExitedWithCode(0),
              Exact("\nread << \"" + broken + "\" : Data may be broken. in MatFileRead().\n"));
  // A negative count in the header is the definition's to report.
  EXPECT_EXIT(MatFileRead(Write("neg", "# -1 3\n").c_str()), testing::ExitedWithCode(0),
              Exact("\nMatDef(\"\", -1, 3) : Not appropriate column or row number in MatDef().\n"));
  EXPECT_EXIT(MatFileRead(Write("negc", "# 2 -4 C\n1 2\n").c_str()), testing::ExitedWithCode(0),
              Exact("\nNot appropriate column or row number in C_MatDef().\n"));
  // A directory cannot be opened for writing.
  Matrix *a = MatDef("A", 2, 2), *p = P_MatDef("P", 1, 1);
  EXPECT_EXIT(MatFileWrite(a, "/"), testing::ExitedWithCode(0),
              Exact("\nprint A(2x2) >> \"/\" : Can't open file / in MatFileWrite().\n"));
  EXPECT_EXIT(MatFileSave(a, "/", 1, 1, ""), testing::ExitedWithCode(0),
              Exact("\nsave A(2x2), \"/\" : Can't open file / in MatFileSave().\n"));
  EXPECT_EXIT(MatFileWrite(p, p_file.c_str()), testing::ExitedWithCode(0),
              Exact("\nprint P(1x1) >> \"" + p_file +
                    "\" : Neither a real matrix nor a complex matrix in MatFileWrite().\n"));
  MatUndef(p);
  MatUndef(a);
}

// ---- The fast reader and writer against the plain ones ------------------------

using Rng = std::mt19937_64;

template <size_t N>
const char *OneOf(Rng &rng, const char *const (&choices)[N]) {
  return choices[rng() % N];
}

// Spellings that "%lf" treats in some special way, including every partial
// match we know of.
// clang-format off
const char *const kOddTokens[] = {
    "inf", "-inf", "+INF", "Infinity", "-infinity", "INFINITYx", "infi", "infinit", "infx", "in",
    "nan", "NaN", "-nan", "+NAN", "nan(123)", "nan()", "nan(", "na", "nanx", "1e400", "-1e400",
    "1e-400", "-1e-400", "4.9e-324", "2.4703282292062327e-324", "2.2250738585072011e-308",
    "1.7976931348623157e308", "1.7976931348623159e308", "0x1p-1074", "0X1.FFFFFFFFFFFFFP+1023",
    "0x1p1024", "0x1.8p1", "0xe+1", "0x1e+1", "0x.8", "0x.", "0x", "0X", "0xp1", "0x1p", "0x1P+",
    "0x1g", "00x1", ".5", "5.", "+.5e-3", "-.5E+3", "00012", "1e", "1E", "1e+", "1e-", "1e+x", "-",
    "+", "-.", "+.", ".", ".e1", "1.e1", "1e5e5", "1-1", "1+1", "1.2.3", "--1", "+-1", "abc", "#",
    "1#", "1#2", "e5", "9.999999995E+10", "99999999999999999999999", "0.000000000000000000001",
    "1\v2", "\f3", "1,5", "1_000"};
// clang-format on
const char *const kFormats[] = {"%.17g", "%+.17g", "%+.3E", "%a", "%16.8E", "%.2f", "%.25g"};
const char *const kSeparators[] = {"\t", "  ", " \t ", " ", " ", " ", " "};
const char *const kLineEnds[] = {"\r\n", "\r", " \n", "\n", "\n", "\n", "\n"};
const char *const kLoneLines[] = {"\n", " \t \r\n", "# a comment\n", "#\r\n"};
// Header lines: rows, columns and "C" (complex) or "c"; then broken ones.
const char *const kHeaders[] = {
    "# %d %d",   "# %d %d %s", "#%d %d%s",         "# %d %d %somplex",
    "# %d x %d", "# -%d %d",   "# %d 99999999999", "# 2000000000 2000000000"};

// Any bit pattern (subnormals, huge exponents, NaN, infinities) or a full
// mantissa of moderate size.
double RandomDouble(Rng &rng) {
  if (rng() % 2 == 0) return std::bit_cast<double>(static_cast<uint64_t>(rng()));
  const double mantissa = std::uniform_real_distribution<double>(-1, 1)(rng);
  return std::ldexp(mantissa, static_cast<int>(rng() % 80) - 40);
}

// A number in one of many spellings; sometimes followed by a character that
// matters to the conversion's look-ahead.
std::string RandomToken(Rng &rng) {
  char text[512];
  snprintf(text, sizeof text, OneOf(rng, kFormats), RandomDouble(rng));
  std::string t = rng() % 8 == 0 ? OneOf(rng, kOddTokens) : text;
  if (rng() % 16 == 0) t += "xe+-.p0"[rng() % 7];
  return t;
}

// A file with or without a header, with blank and comment lines, long tails
// around the line skip's pieces, short and long lines, sometimes damaged.
std::string RandomFile(Rng &rng) {
  const bool header = rng() % 2 == 0, complex = header && rng() % 3 == 0;
  const int rows = static_cast<int>(rng() % 5), cols = static_cast<int>(rng() % 5);
  char line[128];
  snprintf(line, sizeof line, OneOf(rng, kHeaders), rows, cols, complex ? "C" : "c");
  std::string f = header ? line + std::string(OneOf(rng, kLineEnds)) : "";
  const int per_line = (header ? rows : cols) * (complex ? 2 : 1);
  for (int k = 0; k < (header ? cols : rows); k++) {
    while (rng() % 8 == 0) f += OneOf(rng, kLoneLines);
    const int count = per_line + (rng() % 10 == 0 ? static_cast<int>(rng() % 3) - 1 : 0);
    for (int n = 0; n < count; n++) {
      if (n > 0) f += rng() % 15 == 0 ? OneOf(rng, kLineEnds) : OneOf(rng, kSeparators);
      f += RandomToken(rng);
    }
    static const size_t kTails[] = {1021, 1022, 1023, 1024, 4094, 4095, 4096, 5000};
    if (rng() % 8 == 0) f += std::string(kTails[rng() % 8], ' ') + (rng() % 2 ? "5" : "");
    f += OneOf(rng, kLineEnds);
  }
  // Damage of the kinds files really suffer: cut short, or a stray byte.
  if (!f.empty() && rng() % 6 == 0) f.resize(rng() % f.size());
  if (!f.empty() && rng() % 6 == 0)
    f[rng() % f.size()] = rng() % 2 ? static_cast<char>(rng()) : "#\0\v\f-.xe"[rng() % 8];
  return f;
}

TEST(DifferentialTest, GeneratedFilesReadAsThePlainReaderReadsThem) {
  Rng rng(3);
  const long live = MatRegistryCheck();
  const std::string path = testing::TempDir() + "velk-io-" + std::to_string(getpid());
  int accepted = 0, rejected = 0;
  for (int trial = 0; trial < 8000; trial++) {
    const std::string f = RandomFile(rng);
    std::ofstream(path, std::ios::binary) << f;
    ASSERT_NE(freopen(path.c_str(), "r", stdin), nullptr);
    const ReferenceMatrix expected = ReferenceRead(path.c_str());
    // Standard input goes through the stream, not memory: every fourth file that way.
    ASSERT_EQ(Disagreement(expected, FastRead(trial % 4 == 0 ? "stdin" : path.c_str())), "")
        << testing::PrintToString(f);
    (expected.ok ? accepted : rejected)++;
  }
  ASSERT_NE(freopen("/dev/null", "r", stdin), nullptr);
  unlink(path.c_str());
  // Both outcomes are well represented, or the comparison proves little.
  EXPECT_GT(accepted, 1500);
  EXPECT_GT(rejected, 1500);
  EXPECT_EQ(MatRegistryCheck(), live);
}

TEST(FormatE16, MatchesPrintfByteForByte) {
  Rng rng(11);
  // Signed zeros and specials, round-ups to a new exponent, the smallest subnormal.
  std::vector<double> values({0.0, -0.0, INFINITY, -INFINITY, NAN, -NAN, 9.999999995e10,
                              9.9999999949e10, 9.99999999500001e10, 5e-324});
  for (int k = 0; k < 500000; k++) values.push_back(RandomDouble(rng));
  // Halfway cases at the ninth significant digit, where rounding must be exact.
  for (int k = 0; k < 20000; k++) {
    double d = static_cast<double>(100000000 + rng() % 900000000) + 0.5;
    values.push_back(std::ldexp(d, static_cast<int>(rng() % 40) - 20));
    values.push_back(d * std::pow(10.0, static_cast<int>(rng() % 600) - 300));
  }
  for (double v : values) {
    char expected[64], got[64];
    const int n = snprintf(expected, sizeof expected, "%16.8E", v);
    ASSERT_EQ(std::string(expected, n), std::string(got, FormatE16(v, got))) << std::hexfloat << v;
  }
}

}  // namespace
