// String operations: pieces, searches, comparisons, formatting, files and
// binary records, with the registries checked after each scenario.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "container/string.h"
#include "core/matrix.h"
#include "io/binary.h"
#include "io/output_file.h"
#include "sys/stream_table.h"
#include "support/exact.h"

namespace {

std::string Text(String *s) { return std::string(s->text, static_cast<size_t>(s->length)); }

std::vector<double> Row(Matrix *m) { return std::vector<double>(MatReal(m), MatReal(m) + MatCount(m)); }

Matrix *Index(std::vector<double> v) {
  Matrix *m = MatDef("", 1, static_cast<int>(v.size()));
  for (size_t k = 0; k < v.size(); k++) MatReal(m)[k] = v[k];
  return m;
}

std::string TempPath(const std::string &leaf) {
  return testing::TempDir() + "velk_string_" + std::to_string(getpid()) + "_" + leaf;
}

class StringTest : public testing::Test {
 protected:
  void SetUp() override { MatInit(); }
  void TearDown() override {
    MatSweep();
    vkStringSweep();
    EXPECT_EQ(vkStringRegistryCheck(), 0);
    EXPECT_EQ(MatRegistryCheck(), 0);
  }
};

TEST_F(StringTest, PiecesRepetitionAndSearches) {
  String *s = vkStringFromText("hello");
  EXPECT_EQ(Text(vkGetStringElem(s, 5)), "o");
  EXPECT_EQ(Text(vkStringCut(s, 2, 4)), "ell");
  EXPECT_EQ(Text(vkStringMul(s, 0)), "");
  EXPECT_EQ(Text(vkStringMul(vkStringFromText("ab"), 3)), "ababab");
  String *l = vkStringFromText("l");
  EXPECT_EQ(vkStringIndex(s, l), 3);
  EXPECT_EQ(vkStringLastIndex(s, l), 4);
  EXPECT_EQ(vkStringIndex(s, vkStringFromText("z")), 0);
  EXPECT_EQ(vkStringLastIndex(s, vkStringFromText("h")), 1);
  vkStringSetChar(s, 1, 'j');
  vkStringSetElem(s, 5, vkStringFromText("y"));
  EXPECT_EQ(Text(s), "jelly");
  vkStringPut(s, 2, vkStringFromText("ol"));
  EXPECT_EQ(Text(s), "jolly");
  vkStringPartCopy(s, vkStringFromText("ha"), 1);
  EXPECT_EQ(Text(s), "holly");
  String *t = vkStringFromText("12345");
  vkStringSwap(s, t);
  EXPECT_EQ(Text(s), "12345");
  EXPECT_EQ(Text(t), "holly");
  vkStringCopy(s, t);
  EXPECT_EQ(Text(s), "holly");
}

TEST_F(StringTest, IndexMatricesPickAndStorePositions) {
  String *s = vkStringFromText("abcdef");
  EXPECT_EQ(Text(vkStringGetSubString2(s, Index({6, 1, 1}))), "faa");
  EXPECT_EQ(Text(vkStringGetSubString2(s, MatDef("", 0, 0))), "");
  vkStringSetSubString2(s, Index({2, 4}), vkStringFromText("XY"));
  EXPECT_EQ(Text(s), "aXcYef");
  vkStringSetSubString2(s, Index({1, 6}), vkStringFromText("-"));
  EXPECT_EQ(Text(s), "-XcYe-");
  EXPECT_EQ(Text(MatMat2String(Index({104, 105}))), "hi");
}

TEST_F(StringTest, ComparisonsRepeatAOneCharacterOperand) {
  String *abc = vkStringFromText("abc");
  EXPECT_EQ(Row(vkStringCompareElem(abc, vkStringFromText("b"), "<")), (std::vector<double>{1, 0, 0}));
  EXPECT_EQ(Row(vkStringCompareElem(vkStringFromText("b"), abc, ">=")), (std::vector<double>{1, 1, 0}));
  EXPECT_EQ(Row(vkStringCompareElem(abc, vkStringFromText("abd"), "!=")), (std::vector<double>{0, 0, 1}));
  // Signed codes: a byte above 127 is below every ASCII character.
  EXPECT_EQ(Row(vkStringCompareElem(vkStringFromText("\xe9"), vkStringFromText("a"), "<")),
            (std::vector<double>{1}));
  // The repetitions made on the way are gone: only the three strings remain.
  EXPECT_EQ(vkStringRegistryCheck(), 6);
}

TEST_F(StringTest, SprintfMeasuresBeforeItRefuses) {
  EXPECT_EQ(Text(vkStringSprintf("%s-%d", "x", 42)), "x-42");
  EXPECT_EQ(vkStringSprintf("%s", std::string(4096, 'a').c_str())->length, 4096);
}

TEST_F(StringTest, TextFilesAndPrinting) {
  std::string path = TempPath("word");
  FILE *f = fopen(path.c_str(), "w");
  fputs("  first second\n", f);
  fclose(f);
  EXPECT_EQ(Text(vkStringFileRead(path.c_str())), "first");

  String *s = vkStringSetName(vkStringFromText("a b"), "s");
  vkStringFileSave(s, path.c_str(), 0, 1);
  vkStringFileSave(vkStringFromText("x"), path.c_str(), 1, 0);
  std::ifstream in(path, std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), "s = \"a b\";\n\n\"x\"");

  testing::internal::CaptureStdout();
  vkStringPrint(s);
  vkStringPrint(vkStringFromText("t"));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "s = a b\nans = t\n");
  unlink(path.c_str());
}

TEST_F(StringTest, LinesFromTheStreamTableAndFromSockets) {
  std::string path = TempPath("lines");
  FILE *f = fopen(path.c_str(), "w");
  fputs("abcdef\nxy\n", f);
  fclose(f);
  int fd = FileOpen(path.c_str(), "r");
  ASSERT_GE(fd, 0);
  for (auto [size, line] : {std::pair{3, "abc"}, {10, "def\n"}, {10, "xy\n"}, {10, ""}})
    EXPECT_EQ(Text(vkStringFgets(fd, size)), line);
  FileClose(fd);
  unlink(path.c_str());

  int pair[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, pair), 0);
  ASSERT_EQ(write(pair[1], "abcdefgh\nz", 10), 10);
  close(pair[1]);
  // Cut by the size: the length is what was stored, not the reader's count.
  for (auto [size, line] : {std::pair{4, "abcd"}, {20, "efgh\n"}, {20, "z"}, {20, ""}})
    EXPECT_EQ(Text(vkStringSocketGets(pair[0], size)), line);
  close(pair[0]);
}

TEST_F(StringTest, BinaryRecordsRoundTripAndNameEmptyOnesAnsStr) {
  std::string path = TempPath("bin");
  FILE *f = fopen(path.c_str(), "w+b");
  vkStringWrite(vkStringSetName(vkStringFromText("hi"), "s"), f);
  vkStringWrite(vkStringFromText(""), f);
  EXPECT_EQ(ftell(f), 32 + 2 + 3 + 32 + 1 + 1);
  rewind(f);
  unsigned char head[16];
  ASSERT_EQ(fread(head, 1, 16, f), 16u);
  int type, rows;
  memcpy(&type, head + 12, 4);
  EXPECT_EQ(type, 0x20002001);
  ASSERT_EQ(fread(&rows, 4, 1, f), 1u);
  EXPECT_EQ(rows, 3);  // "hi" and its NUL
  rewind(f);
  String *a = vkStringSetStatus(vkStringDef("", -1), 7);
  vkStringRead(a, f);
  EXPECT_EQ(Text(a), "hi");
  EXPECT_STREQ(a->name, "s");
  EXPECT_EQ(a->status, 7);
  vkStringRead(a, f);
  EXPECT_EQ(Text(a), "");
  EXPECT_STREQ(a->name, "ANS_STR");
  fclose(f);
  vkStringUndef(a);
  unlink(path.c_str());
}

TEST(StringDeathTest, ReportsOfEveryOperation) {
  MatInit();
  String *s = vkStringSetName(vkStringFromText("hello"), "h");
  String *u = vkStringSetName(vkStringDef("", -1), "u");
  auto die = [](auto body, const std::string &text) {
    EXPECT_EXIT(body(), testing::ExitedWithCode(0), Exact(text));
  };
  for (int k : {0, 6})
    die([&] { vkGetStringElem(s, k); }, "\nIndex is out ouf range for 'h(length=5)' in vkGetStringElem().\n");
  die([&] { vkStringSetElem(s, 6, s); }, "\nIndex is out ouf range for 'h(length=5)' in vkStringSetElem().\n");
  die([&] { vkStringSetChar(s, 9, 'x'); }, "\nh(5)(9) = x : Index is not appropriate in vkStringSetChar().\n");
  die([&] { vkStringCut(s, 3, 2); }, "\nIndex is out of range for 'h(length=5)' in vkStringCut().\n");
  die([&] { vkStringMul(s, -1); }, "\nNumber must be positive for 'h(length=5)' in vkStringMul().\n");
  die([&] { vkStringIndex(s, vkStringFromText("ll")); },
      "\nKeyword is too long for 'h(length=5)' and '(length=2)' in vkStringIndex().\n");
  die([&] { vkStringCompareElem(s, vkStringFromText("ab"), "<"); },
      "\nLength mismatch for 'h(length=5)' and '(length=2)' in vkStringCompareElem().\n");
  die([&] { vkStringCompareElem(s, s, "<>"); },
      "\nIncorrect operator for 'h(length=5)' and 'h(length=5)' in vkStringCompareElem().\n");
  const std::string conflict = "\nConfliction of length for 'h(length=5)' and '(length=2)' in ";
  die([&] { vkStringCopy(s, vkStringFromText("ab")); }, conflict + "vkStringCopy().\n");
  die([&] { vkStringPut(s, 5, vkStringFromText("ab")); }, conflict + "vkStringPut().\n");
  die([&] { vkStringSwap(s, vkStringFromText("ab")); }, conflict + "vkStringSwap().\n");
  die([&] { vkStringCut(u, 1, 1); }, "\nUndefined string for 'u(length=-1)' in vkStringCut().\n");
  die([&] { vkStringGetSubString2(s, MatDef("", 1, 1)); },  // 0 is no position
      "\nNot a suitable index for 'h(length=5)' in vkStringGetSubString2().\n");
  die([&] { MatMat2String(C_MatDef("", 1, 1)); }, "\nNot a real matrix for '(1 x 1)' in MatMat2String().\n");
  die([&] { vkStringSprintf("%4097s", ""); }, "\nNot enough buffer size in vkStringSprintf().\n");
  die([&] { vkStringFgets(4000, 3); }, "\nFile is not opened in vkStringFgets().\n");
  die([&] { vkStringSocketGets(-1, 3); }, "\nCan't read message in vkStringSocketGets().\n");
  die([&] { vkStringFileRead("/nonexistent/x"); }, "\nCan't open file in vkStringFileRead().\n");
  die([&] { vkStringFileSave(s, "/nonexistent/x", 0, 0); },
      "\nsave h(#5), /nonexistent/x : Can't open file /nonexistent/x in vkStringFileSave().\n");
}

TEST(StringDeathTest, BrokenRecordsAreReportedNotTrusted) {
  MatInit();
  auto read = [](const std::string &bytes) {
    FILE *f = fmemopen(const_cast<char *>(bytes.data()), bytes.size(), "rb");
    vkStringRead(vkStringDef("", -1), f);
  };
  auto record = [](int type, int rows, const std::string &name_and_text, int name_length) {
    int words[8] = {-1, 5, 0, type, rows, 0, 0, name_length};
    return std::string(reinterpret_cast<char *>(words), sizeof words) + name_and_text;
  };
  const std::pair<std::string, std::string> cases[] = {
      {std::string(6, '\xff'), "Data structure is broken"},
      {record(0x20002007, 2, std::string("\0a\0", 3), 1), "Incorrect class datafile"},
      {record(0x20002001, 2, "", 1025), "Incorrect machine datafile"},
      {record(0x20002001, 2, "ab", 5), "Variable name is too short"},
      // A length the stream does not hold, and a text without its NUL.
      {record(0x20002001, 0x7fffffff, std::string("\0abc", 4), 1), "Data is broken or too few"},
      {record(0x20002001, 2, std::string("\0ab", 3), 1), "Data is broken or too few"},
  };
  for (const auto &[bytes, text] : cases)
    EXPECT_EXIT(read(bytes), testing::ExitedWithCode(0), Exact("\nread <- \"\" : " + text + " in vkStringRead().\n"));
}

TEST(StringDeathTest, TheLogReceivesDefinedOperands) {
  EXPECT_EXIT(
      {
        MatInit();
        std::string dir = TempPath("log");
        mkdir(dir.c_str(), 0700);
        if (chdir(dir.c_str()) != 0) exit(3);
        LogSwitch = 1;
        String *s = vkStringSetName(vkStringFromText("abc"), "s");
        vkStringWarning("f()", "warned", s);
        vkStringWarning("f()", "again", vkStringDef("", -1));
        FILE *log = fopen("Velk.log", "r");
        std::string all;
        for (int c; (c = getc(log)) != EOF;) all.push_back(static_cast<char>(c));
        bool saved = all.find("warned for 's(length=3)' in f().\n\ns = \"abc\";\n\n") != std::string::npos;
        bool undefined_left_out = all.rfind("in f().\n\n") + 9 == all.size();
        exit(saved && undefined_left_out ? 0 : 2);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
