// Lists as text and as binary records, and formatted reading into lists.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "container/list.h"
#include "container/string.h"
#include "core/matrix.h"
#include "core/scope.h"
#include "io/binary.h"
#include "scalar/complex.h"
#include "scalar/polynomial.h"
#include "scalar/rational.h"
#include "sys/stream_table.h"
#include "list_values.h"
#include "support/exact.h"

namespace {

std::string TempPath(const std::string &leaf) {
  return testing::TempDir() + "velk_list_" + std::to_string(getpid()) + "_" + leaf;
}

std::string Slurp(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

// What ListWrite puts out for `l`.
std::string Bytes(List *l) {
  char *buffer = nullptr;
  size_t size = 0;
  FILE *f = open_memstream(&buffer, &size);
  ListWrite(l, f);
  fclose(f);
  std::string all(buffer, size);
  free(buffer);
  return all;
}

// The elements as text, one "class:value" each, nested lists in braces.
std::string Describe(List *l) {
  std::string s = "{";
  for (int k = 0; k < l->length; k++) {
    if (k > 0) s += " ";
    ListValue v = l->values[k];
    switch (l->classes[k]) {
      case kListInteger: s += "i:" + std::to_string(v.integer); break;
      case kListReal: s += "r:" + std::to_string(v.real); break;
      case kListString: s += "s:" + std::string(static_cast<String *>(v.object)->text); break;
      case kListList: s += Describe(static_cast<List *>(v.object)); break;
      default: s += "c" + std::to_string(l->classes[k]); break;
    }
  }
  return s + "}";
}

void SweepAll() { SweepInOrder(kSweepAllOrder); }

class ListIoTest : public testing::Test {
 protected:
  void SetUp() override {
    MatInit();
    SweepAll();
    lists_ = ListRegistryCheck();
  }
  void TearDown() override {
    SweepAll();
    EXPECT_EQ(ListRegistryCheck(), lists_);
    EXPECT_EQ(vkStringRegistryCheck(), 0);
  }
  long lists_ = 0;
};

// Every element kind whose record this build can write, nested lists among them.
List *Writable() {
  List *inner = ListDef("", 4);
  ListSetObject(inner, 1, kListString, vkStringFromText(""));
  ListSetElement(inner, 2, kListReal, Real(-0.25));  // element 3 stays undefined
  ListSetObject(inner, 4, kListComplex, CompDef("z", 0.5, -3));
  Matrix *m = MatDef("named", 2, 2);
  for (int k = 0; k < 4; k++) MatReal(m)[k] = k + 0.5;
  Matrix *c = C_MatDef("", 1, 1);
  MatReal(c)[0] = 1;
  MatReal(c)[1] = -1;
  Polynomial *p = PolyDef("", 2, nullptr);
  for (int k = 0; k < 3; k++) MatReal(p->coef)[k] = k - 1.5;
  Rational *r = RatDef("", 1, 0);
  MatReal(r->nume->coef)[0] = 1;
  MatReal(r->nume->coef)[1] = 2;
  MatReal(r->deno->coef)[0] = 4;
  List *l = ListDef("top", 8);
  ListSetObject(l, 7, kListPolynomial, p);
  ListSetObject(l, 8, kListRational, r);
  ListSetObject(l, 1, kListString, vkStringSetName(vkStringFromText("text"), "s"));
  ListSetElement(l, 2, kListInteger, Int(-7));
  ListSetObject(l, 3, kListMatrix, m);
  ListSetObject(l, 4, kListArray, c);
  ListSetObject(l, 5, kListIndex, MatDef("", 0, 3));
  ListSetObject(l, 6, kListList, inner);
  return l;
}

TEST_F(ListIoTest, PrintFormsOfEveryClass) {
  List *l = ListDef("", 4);
  ListSetElement(l, 1, kListInteger, Int(1));
  ListSetElement(l, 2, kListReal, Real(2.5));
  ListSetObject(l, 3, kListString, vkStringFromText("a"));
  ListSetObject(l, 4, kListList, ListMakeList(1, 1));
  ListSetElement(static_cast<List *>(l->values[3].object), 1, kListInteger, Int(1));
  List *every = ListDef("every", 9);
  ListSetObject(every, 1, kListComplex, CompDef("", 1, -2));
  ListSetObject(every, 2, kListPolynomial, PolyDef("", 1, nullptr));
  ListSetObject(every, 3, kListRational, RatDef("", 0, 0));
  ListSetObject(every, 4, kListMatrix, MatDef("", 1, 1));
  ListSetObject(every, 5, kListArray, MatDef("", 1, 1));
  ListSetObject(every, 6, kListIndex, MatDef("", 1, 1));
  ListSetElement(every, 7, kListReal, Real(1e300 * 1e300));
  ListSetElement(every, 8, kListBuiltinFunc, Int(0));
  testing::internal::CaptureStdout();
  ListPrint(l);
  ListPrint(every);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "ans = {1, 2.5, \"a\", {1}}\n"
            "every = {(1,-2), POLYNOMIAL, RATIONAL, MATRIX, ARRAY, INDEX, Inf, , UNDEF}\n");
  RatSweep();
}

TEST_F(ListIoTest, SaveFormNestsAndAppends) {
  std::string path = TempPath("save");
  List *l = Writable();
  ListFileSave(l, path.c_str(), 0, 1);
  ListFileSave(ListMakeList(1, 1), path.c_str(), 1, 0);
  EXPECT_EQ(Slurp(path),
            "top = {\"text\", -7, [[  5.00000000E-01,  1.50000000E+00  ]\n"
            " [  2.50000000E+00,  3.50000000E+00  ]], [[(  1.00000000E+00, -1.00000000E+00)]]"
            ", [], {\"\", -0.25, UNDEF, \"(0.5,-3)\"}, 0.5*s^2 - 0.5*s - 1.5, (2*s + 1)/\n(4)};\n\n{0}");
  unlink(path.c_str());
}

TEST_F(ListIoTest, BinaryRecordsRoundTripByteForByte) {
  std::string bytes = Bytes(Writable());
  FILE *f = fmemopen(bytes.data(), bytes.size(), "rb");
  List *read = ListSetStatus(ListDef("", 0), 4);
  ListRead(read, f);
  EXPECT_EQ(fgetc(f), EOF);  // every byte taken, no more
  fclose(f);
  EXPECT_STREQ(read->name, "top");
  EXPECT_EQ(read->status, 4);
  EXPECT_EQ(Describe(read), "{s:text i:-7 c7 c8 c9 {s: r:-0.250000 c261 c4} c5 c6}");
  // Elements go out and come back without names; values are checked by the
  // byte-for-byte second write.
  EXPECT_STREQ(static_cast<Complex *>(static_cast<List *>(read->values[5].object)->values[3].object)->name, "");
  EXPECT_STREQ(static_cast<Matrix *>(read->values[2].object)->name, "");
  EXPECT_EQ(Bytes(read), bytes);
  // The list's header: kind 10, the element count, and the element tags follow.
  int words[8];
  memcpy(words, bytes.data(), sizeof words);
  EXPECT_EQ(words[3], 0x20002010 - 0x10 + 10);
  EXPECT_EQ(words[4], 8);
  EXPECT_EQ(words[7], 4);  // "top" and its NUL
  int tag;
  memcpy(&tag, bytes.data() + 36, 4);
  EXPECT_EQ(tag, kListString);
  // An unnamed list reads back as ANS_LIST; single elements have their own forms.
  f = tmpfile();
  ListWrite(ListMakeList(1, 2), f);
  List *holder = ListDef("", 2);
  ListElementWrite(f, read, 6);
  rewind(f);
  ListRead(read, f);
  EXPECT_STREQ(read->name, "ANS_LIST");
  EXPECT_EQ(Describe(read), "{i:0 i:0}");
  ListElementRead(f, holder, 2);
  EXPECT_EQ(Describe(holder), "{c261 {s: r:-0.250000 c261 c4}}");
  fclose(f);
  ListUndef(read);
}

TEST_F(ListIoTest, TenThousandDeepIsWrittenReadAndPrintedWithoutRecursion) {
  const int kDepth = 10000;
  List *top = ListMakeList(1, 1);
  for (int d = 0; d < kDepth; d++) {
    List *outer = ListDef("", 1);
    ListSetObject(outer, 1, kListList, top);
    top = outer;
  }
  std::string bytes = Bytes(top);
  FILE *f = fmemopen(bytes.data(), bytes.size(), "rb");
  List *read = ListRead(ListDef("", 0), f);
  fclose(f);
  EXPECT_EQ(ListIsElemEqual(read, top), 1);
  testing::internal::CaptureStdout();
  ListPrint(read);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "ANS_LIST = " + std::string(kDepth + 1, '{') + "0" + std::string(kDepth + 1, '}') + "\n");
}

TEST_F(ListIoTest, ScanfConvertsPieceByPiece) {
  auto scan = [](const char *text, const char *format) {
    return Describe(ListStringScanf(vkStringFromText(text), format));
  };
  EXPECT_EQ(scan("12 3.5 word", "%d %lf %s"), "{i:12 r:3.500000 s:word}");
  EXPECT_EQ(scan("12345678", "%2d%3s%c"), "{i:12 s:345 s:6}");
  EXPECT_EQ(scan("ab cd", "%4c"), "{s:ab c}");
  EXPECT_EQ(scan("x=1,y=-2;", "x=%d,y=%d;"), "{i:1 i:-2}");
  EXPECT_EQ(scan("70000 -1 ff 017", "%hd %ld %x %o"), "{i:4464 i:-1 i:255 i:15}");
  EXPECT_EQ(scan("0x1f 7 FF 1e2 2.5 -3E-1 4", "%i %u %X %le %lg %lE %lG"),
            "{i:31 i:7 i:255 r:100.000000 r:2.500000 r:-0.300000 r:4.000000}");
  // Without "l" a real is read in single precision and widened.
  EXPECT_EQ(ListStringScanf(vkStringFromText("0.1"), "%f")->values[0].real, static_cast<double>(0.1f));
  EXPECT_EQ(ListStringScanf(vkStringFromText("0.1"), "%lf")->values[0].real, 0.1);
  // %hf is skipped: nothing is read and the element stays as it was made.
  EXPECT_EQ(scan("5", "%hf%d"), "{c261 i:5}");
  EXPECT_EQ(scan("|=1", "x=%hf%1c"), "{c261 s:|}");
  // The input ends: the list is cut to what was read.
  EXPECT_EQ(scan("1 2", "%d %d %d"), "{i:1 i:2}");
  EXPECT_EQ(scan("", "%d"), "{}");
  EXPECT_EQ(scan("anything", "no conversion"), "{}");
}

TEST_F(ListIoTest, FileScanfReadsLineAfterLine) {
  std::string path = TempPath("scan");
  FILE *f = fopen(path.c_str(), "w");
  fputs("1 2.5 a\n2 -1 bb\n3", f);
  fclose(f);
  int fd = FileOpen(path.c_str(), "r");
  for (const char *line : {"{i:1 r:2.500000 s:a}", "{i:2 r:-1.000000 s:bb}", "{i:3}", "{}"})
    EXPECT_EQ(Describe(ListFileScanf(fd, "%d %lf %s")), line);
  FileClose(fd);
  // Words longer than any buffer of the reader come whole, whatever their length.
  for (size_t n : {4094u, 4095u, 4096u, 10000u}) {
    std::string word(n, 'w');
    word[n - 1] = 'z';
    f = fopen(path.c_str(), "w");
    fprintf(f, "7 %s next\n", word.c_str());
    fclose(f);
    fd = FileOpen(path.c_str(), "r");
    List *l = ListFileScanf(fd, "%d %s");
    EXPECT_EQ(std::string(static_cast<String *>(l->values[1].object)->text), word) << n;
    EXPECT_EQ(Describe(ListFileScanf(fd, "%s")), "{s:next}") << n;
    FileClose(fd);
  }
  unlink(path.c_str());
}

using ListIoDeathTest = ListIoTest;

TEST_F(ListIoDeathTest, ReportsOfScanfAndOfElementsThisBuildCannotWrite) {
  auto die = [](auto body, const std::string &text) {
    EXPECT_EXIT(body(), testing::ExitedWithCode(0), Exact(text));
  };
  String *s = vkStringFromText("abc");
  for (const char *format : {"%d", "%ls", "%%d", "%[a]"})
    die([&] { ListStringScanf(s, format); }, std::string("\nString is not matched for the format in \"(") +
                                                  (format[1] == '%' ? "2" : "1") + " element(s))\" in ListStringScanf().\n");
  die([&] { ListStringScanf(vkStringSetName(vkStringDef("", -1), "u"), "%d"); },
      "\nsscanf(u, \"%d\") : String is too short  in ListStringScanf().\n");
  die([&] { ListFileScanf(4000, "%d"); }, "\nfscanf(4000, \"%d\") : File is not opened  in ListFileScanf().\n");
  List *l = ListDef("", 1);
  ListSetElement(l, 1, kListDynamicProc, Int(0));
  die([&] { Bytes(l); }, "\nNot appropriate element in \"(1 element(s))\" in ListElementWrite().\n");
}

TEST_F(ListIoDeathTest, BrokenRecordsAreReported) {
  auto read = [](const std::string &bytes) {
    FILE *f = fmemopen(const_cast<char *>(bytes.data()), bytes.size(), "rb");
    ListRead(ListDef("", 0), f);
  };
  auto header = [](int count) {
    int words[9] = {-1, 5, 0, 0x2000200a, count, 0, 0, 1, 0};
    return std::string(reinterpret_cast<char *>(words), 32) + std::string(1, '\0');
  };
  auto word = [](int w) { return std::string(reinterpret_cast<char *>(&w), 4); };
  const std::pair<std::string, std::string> cases[] = {
      {header(2), "Class data is broken"},
      {header(1) + word(11), "Not appropriate element"},
      {header(-1), "Data structure is broken"},
      {header(0x7fffffff) + word(261), "Class data is broken"},  // no allocation of that size
  };
  for (const auto &[bytes, text] : cases)
    EXPECT_EXIT(read(bytes), testing::ExitedWithCode(0), Exact("\nread <- \"\" : " + text + "  in ListRead().\n"));
  EXPECT_EXIT(read(header(1) + word(2) + "xy"), testing::ExitedWithCode(0),
              Exact("IntegerRead(): Data structure is broken in list.\n"
                    "\nread <- \"\" : Data broken  in ListRead().\n"));
}

}  // namespace
