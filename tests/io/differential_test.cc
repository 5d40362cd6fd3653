// The fast reader and writer against the C library doing the same work the
// plain way, on many generated numbers and files.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "core/matrix.h"
#include "io/number_text.h"
#include "io/text_format.h"
#include "tests/io/io_test_util.h"
#include "tests/io/read_compare.h"
#include "tests/io/reference_reader.h"

namespace {

using Rng = std::mt19937_64;

// One of the choices; repeating a choice makes it more likely.
template <size_t N>
std::string OneOf(Rng &rng, const char *const (&choices)[N]) {
  return choices[rng() % N];
}

// Spellings that "%lf" treats in some special way, including every partial
// match we know of.
const char *const kOddTokens[] = {
    "inf", "-inf", "+INF", "Infinity", "-infinity", "INFINITYx", "infi", "infinit", "infx", "in",
    "nan", "NaN", "-nan", "+NAN", "nan(123)", "nan()", "nan(", "na", "nanx", "1e400", "-1e400",
    "1e-400", "-1e-400", "4.9e-324", "2.4703282292062327e-324", "2.2250738585072011e-308",
    "1.7976931348623157e308", "1.7976931348623159e308", "0x1p-1074", "0X1.FFFFFFFFFFFFFP+1023",
    "0x1p1024", "0x1.8p1", "0xe+1", "0x1e+1", "0x.8", "0x.", "0x", "0X", "0xp1", "0x1p", "0x1P+",
    "0x1g", "00x1", ".5", "5.", "+.5e-3", "-.5E+3", "00012", "1e", "1E", "1e+", "1e-", "1e+x", "-",
    "+", "-.", "+.", ".", ".e1", "1.e1", "1e5e5", "1-1", "1+1", "1.2.3", "--1", "+-1", "abc", "#",
    "1#", "1#2", "e5", "9.999999995E+10", "99999999999999999999999", "0.000000000000000000001",
    "1\v2", "\f3", "1,5", "1_000",
};

std::string FormatNumber(Rng &rng, double v) {
  char text[128];
  switch (rng() % 5) {
    case 0:
      snprintf(text, sizeof text, "%.17g", v);
      break;
    case 1:
      snprintf(text, sizeof text, "%.*e", static_cast<int>(rng() % 20), v);
      break;
    case 2:
      snprintf(text, sizeof text, "%a", v);
      break;
    case 3:
      snprintf(text, sizeof text, "%16.8E", v);
      break;
    default:
      snprintf(text, sizeof text, "%.*f", static_cast<int>(rng() % 6), std::fmod(v, 1e6));
  }
  return text;
}

double RandomDouble(Rng &rng) {
  switch (rng() % 4) {
    case 0: {  // any bit pattern: subnormals, huge exponents, NaN, infinities
      uint64_t bits = rng();
      double v;
      memcpy(&v, &bits, sizeof v);
      return v;
    }
    case 1:
      return std::ldexp(static_cast<double>(rng() % 2000000) - 1e6, static_cast<int>(rng() % 60) - 30);
    case 2:
      return static_cast<double>(static_cast<int>(rng() % 2001) - 1000);
    default:
      return std::uniform_real_distribution<double>(-1e3, 1e3)(rng);
  }
}

std::string RandomToken(Rng &rng) {
  if (rng() % 8 == 0) return OneOf(rng, kOddTokens);
  std::string t = FormatNumber(rng, RandomDouble(rng));
  if (rng() % 10 == 0 && t[0] != '-') t.insert(0, "+");
  return t;
}

std::string Separator(Rng &rng) {
  static const char *const kChoices[] = {"\t", "  ", " \t ", " ", " ", " ", " ", " ", " "};
  return OneOf(rng, kChoices);
}

std::string LineEnd(Rng &rng) {
  static const char *const kChoices[] = {"\r\n", "\r", " \n", "\n", "\n", "\n", "\n", "\n"};
  return OneOf(rng, kChoices);
}

// Text after the last element of a line, sized around the line skip's pieces.
std::string Tail(Rng &rng) {
  static const size_t kLengths[] = {1, 1021, 1022, 1023, 1024, 2046, 4094, 4095, 4096, 5000};
  std::string t(kLengths[rng() % std::size(kLengths)], ' ');
  if (rng() % 2 == 0)
    for (size_t k = 1; k < t.size(); k += 7) t[k] = static_cast<char>('0' + rng() % 10);
  return t;
}

std::string HeaderLine(Rng &rng, int rows, int cols, bool complex) {
  char text[128];
  switch (rng() % 16) {
    case 0:
      snprintf(text, sizeof text, "#%d %d%s", rows, cols, complex ? "C" : "");
      break;
    case 1:
      snprintf(text, sizeof text, "# %d %d %s", rows, cols, complex ? "Complex" : "complex");
      break;
    case 2:
      snprintf(text, sizeof text, "# %d", rows);
      break;
    case 3:
      snprintf(text, sizeof text, "# %d x", rows);
      break;
    case 4:
      snprintf(text, sizeof text, "# -%d %d", rows, cols);
      break;
    case 5:
      snprintf(text, sizeof text, "# %d 99999999999", rows);
      break;
    case 6:
      snprintf(text, sizeof text, "# 2000000000 2000000000");
      break;
    case 7:
      snprintf(text, sizeof text, "# %d %d %s", cols, rows, complex ? "C" : "");  // wrong way round
      break;
    default:
      snprintf(text, sizeof text, "# %d %d%s", rows, cols, complex ? " C" : "");
  }
  return text + LineEnd(rng);
}

std::string HeaderFile(Rng &rng) {
  int rows = static_cast<int>(rng() % 5), cols = static_cast<int>(rng() % 5);
  bool complex = rng() % 3 == 0;
  std::string f = HeaderLine(rng, rows, cols, complex);
  for (int k = 0; k < cols; k++) {
    while (rng() % 6 == 0) f += "# a comment" + LineEnd(rng);
    if (rng() % 12 == 0) f += LineEnd(rng);  // a blank line where a column should start
    int numbers = rows * (complex ? 2 : 1);
    if (rng() % 10 == 0) numbers += static_cast<int>(rng() % 3) - 1;
    for (int n = 0; n < numbers; n++) {
      if (n > 0) f += rng() % 15 == 0 ? LineEnd(rng) : Separator(rng);
      f += RandomToken(rng);
    }
    if (rng() % 6 == 0) f += Tail(rng);
    f += LineEnd(rng);
  }
  return f;
}

std::string HeaderlessFile(Rng &rng) {
  int rows = static_cast<int>(rng() % 5), cols = 1 + static_cast<int>(rng() % 5);
  std::string f;
  for (int i = 0; i < rows; i++) {
    if (rng() % 8 == 0) f += rng() % 2 ? " \t " + LineEnd(rng) : LineEnd(rng);
    int count = rng() % 15 == 0 ? cols + 1 : cols;
    if (rng() % 3 == 0) f += Separator(rng);
    for (int j = 0; j < count; j++) {
      if (j > 0) f += Separator(rng);
      f += RandomToken(rng);
    }
    if (rng() % 20 == 0) f += Tail(rng);
    f += LineEnd(rng);
  }
  return f;
}

// Damage of the kinds files really suffer: cut short, a stray byte, a lost one.
void Damage(Rng &rng, std::string *f) {
  if (f->empty()) return;
  size_t at = rng() % f->size();
  switch (rng() % 4) {
    case 0:
      f->resize(at);
      break;
    case 1:
      (*f)[at] = static_cast<char>(rng() % 256);
      break;
    case 2:
      f->erase(at, 1);
      break;
    default:
      f->insert(at, 1, "#\0\v\f-.xe"[rng() % 8]);
  }
}

class DifferentialTest : public TempDirTest {};

TEST(ScanDouble, AgreesWithSscanfOnEveryToken) {
  Rng rng(7);
  std::vector<std::string> texts(std::begin(kOddTokens), std::end(kOddTokens));
  for (int k = 0; k < 200000; k++) {
    std::string t = RandomToken(rng);
    if (rng() % 4 == 0) t += "xe+-.p0"[rng() % 7];  // what follows can matter to the look-ahead
    if (rng() % 4 == 0) t.insert(t.begin(), " \n\t\v"[rng() % 4]);
    texts.push_back(t);
  }
  for (const std::string &t : texts) {
    double expected = -12345.0, got = -12345.0;
    int used = -1;
    bool expected_ok = sscanf(t.c_str(), "%lf%n", &expected, &used) == 1;
    MemorySource src{t.data(), t.data() + t.size()};
    bool got_ok = ScanDouble(src, &got);
    ASSERT_EQ(expected_ok, got_ok) << "text \"" << t << "\"";
    if (!expected_ok) continue;
    ASSERT_EQ(memcmp(&expected, &got, sizeof got), 0) << "text \"" << t << "\": " << got;
    ASSERT_EQ(used, src.p - t.data()) << "text \"" << t << "\"";
  }
}

TEST(FormatE16, MatchesPrintfByteForByte) {
  Rng rng(11);
  std::vector<double> values = {0.0,        -0.0,           1.0,       -1.0,      9.999999995e10,
                                9.9999999949e10, 9.99999999500001e10, 1e100, 1e-100,   5e-324,
                                2.2250738585072014e-308, 1.7976931348623157e308, INFINITY,
                                -INFINITY, NAN,  -NAN,           0.5,       1.25e-5,   123456789.5};
  for (int k = 0; k < 500000; k++) values.push_back(RandomDouble(rng));
  // Halfway cases at the ninth significant digit, where rounding must be exact.
  for (int k = 0; k < 20000; k++) {
    double d = static_cast<double>(100000000 + rng() % 900000000) + 0.5;
    values.push_back(std::ldexp(d, static_cast<int>(rng() % 40) - 20));
    values.push_back(d * std::pow(10.0, static_cast<int>(rng() % 600) - 300));
  }
  for (double v : values) {
    char expected[64], got[64];
    int n = snprintf(expected, sizeof expected, "%16.8E", v);
    int m = FormatE16(v, got);
    ASSERT_EQ(std::string(expected, n), std::string(got, m)) << "bits " << std::hexfloat << v;
  }
}

// The plain writer, step by step with fprintf.
std::string PlainWrite(Matrix *m) {
  std::string out = m->cls == kComplex ? "# " + std::to_string(m->rows) + " " +
                                             std::to_string(m->cols) + " C\n"
                                       : "# " + std::to_string(m->rows) + " " +
                                             std::to_string(m->cols) + "\n";
  const int width = m->cls == kComplex ? 2 : 1;
  char text[64];
  for (int j = 0; j < m->cols; j++) {
    for (int i = 0; i < m->rows; i++) {
      const double *e = MatReal(m) + (static_cast<long long>(i) * m->cols + j) * width;
      if (i > 0) out += ' ';
      if (width == 1)
        snprintf(text, sizeof text, "%16.8E", e[0]);
      else
        snprintf(text, sizeof text, "%16.8E %16.8E", e[0], e[1]);
      out += text;
    }
    out += '\n';
  }
  return out;
}

TEST_F(DifferentialTest, WrittenFilesMatchThePlainWriterAndReadBack) {
  Rng rng(5);
  for (int trial = 0; trial < 60; trial++) {
    int rows = static_cast<int>(rng() % 40), cols = static_cast<int>(rng() % 40);
    Matrix *m = trial % 2 ? C_MatDef("", rows, cols) : MatDef("", rows, cols);
    long long n = MatCount(m) * (m->cls == kComplex ? 2 : 1);
    for (long long k = 0; k < n; k++) MatReal(m)[k] = RandomDouble(rng);
    std::string path = Path("w.txt");
    MatFileWrite(m, path.c_str());
    ASSERT_EQ(Contents(path), PlainWrite(m)) << rows << "x" << cols;
    // What was written reads back as the plain reader reads it.
    ASSERT_EQ(Disagreement(FastRead(path.c_str()), ReferenceRead(path.c_str())), "");
    MatUndef(m);
  }
  MatRegistryCheck();
}

TEST_F(DifferentialTest, GeneratedFilesReadAsThePlainReaderReadsThem) {
  Rng rng(3);
  long before = MatRegistryCheck();
  int accepted = 0, rejected = 0;
  for (int trial = 0; trial < 6000; trial++) {
    std::string f = trial % 2 ? HeaderFile(rng) : HeaderlessFile(rng);
    if (rng() % 3 == 0) Damage(rng, &f);
    std::string path = Write("g.txt", f);
    ReferenceMatrix expected = ReferenceRead(path.c_str());
    ReferenceMatrix got = FastRead(path.c_str());
    ASSERT_EQ(Disagreement(expected, got), "") << "file:\n" << testing::PrintToString(f);
    (expected.ok ? accepted : rejected)++;
    // Standard input goes through the stream, not memory: every fifth file that way too.
    if (trial % 5 == 0) {
      ASSERT_NE(freopen(path.c_str(), "r", stdin), nullptr);
      ASSERT_EQ(Disagreement(expected, FastRead("stdin")), "")
          << "stdin:\n" << testing::PrintToString(f);
    }
  }
  ASSERT_NE(freopen("/dev/null", "r", stdin), nullptr);
  // Both outcomes are well represented, or the comparison proves little.
  EXPECT_GT(accepted, 1000);
  EXPECT_GT(rejected, 1000);
  EXPECT_EQ(MatRegistryCheck(), before);
}

}  // namespace
