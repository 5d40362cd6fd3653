// Complex scalars as text (print, files, the log's save form) and as typed
// binary records (layout, round trips, foreign order, every failure).
#include "io/complex_io.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "io/output_file.h"
#include "support/exact.h"
#include "tests/io/record_bytes.h"

namespace {

std::string Slurp(const std::string &path) {
  std::ifstream in(path);
  return {std::istreambuf_iterator<char>(in), {}};
}

class ComplexFileTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(mkdtemp(dir_), nullptr); }
  void TearDown() override {
    std::string command = std::string("rm -rf ") + dir_;
    ASSERT_EQ(system(command.c_str()), 0);
  }
  std::string Path(const char *name) const { return std::string(dir_) + "/" + name; }

 private:
  char dir_[32] = "/tmp/velk-complex-XXXXXX";
};

TEST_F(ComplexFileTest, TextFormsPrintAndFiles) {
  Complex *z = CompSetStatus(CompDef("z", 1.5, -2), 5);
  Complex *anonymous = CompDef("", 1e-20, INFINITY);
  char text[64];
  EXPECT_STREQ(CompToString(z, text, "%.3f"), "(1.500,-2.000)");
  testing::internal::CaptureStdout();
  CompPrint(z);
  CompPrint(anonymous);
  CompPrintAll();
  std::string printed = testing::internal::GetCapturedStdout();
  // The two lines, then the whole registry ending with the same two records.
  const std::string two = "z = (1.5,-2)\nans = (1E-20,Inf)\n";
  EXPECT_EQ(printed.substr(0, two.size()), two);
  EXPECT_EQ(printed.substr(printed.size() - two.size()), two);
  EXPECT_GT(printed.size(), 2 * two.size() - 1);

  // CompFileWrite: the bare text form, no newline.
  std::string file = Path("w");
  EXPECT_EQ(CompFileWrite(z, file.c_str()), z);
  EXPECT_EQ(Slurp(file), "(1.5,-2)");
  testing::internal::CaptureStderr();
  EXPECT_EQ(CompFileWrite(z, Path("missing/w").c_str()), z);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "CompFileWrite(): Can not open " + Path("missing/w") + ".\n");

  // CompFileSave: always between double quotes, truncating or appending.
  file = Path("s");
  CompFileSave(anonymous, file.c_str(), 0, 0);
  EXPECT_EQ(Slurp(file), "\"(1E-20,Inf)\"");
  CompFileSave(z, file.c_str(), 0, 1);
  CompFileSave(anonymous, file.c_str(), 1, 1);
  EXPECT_EQ(Slurp(file), "z = \"(1.5,-2)\";\n\n\"(1E-20,Inf)\";\n\n");

  // CompFileRead: two numbers; what a short file lacks is 0.
  file = Path("r");
  std::ofstream(file) << "  -3.25e2\n 7 9\n";
  Complex *r = CompFileRead(file.c_str());
  EXPECT_EQ(std::tuple(r->re, r->im, r->status), std::tuple(-325.0, 7.0, 0));
  std::ofstream(file) << "4";
  r = CompFileRead(file.c_str());
  EXPECT_EQ(std::pair(r->re, r->im), std::pair(4.0, 0.0));
  CompUndef(z);
  CompSweep();
}

TEST_F(ComplexFileTest, LoggedReportsAppendTheSaveForm) {
  char old[4096];
  ASSERT_NE(getcwd(old, sizeof old), nullptr);
  ASSERT_EQ(chdir(Path("").c_str()), 0);
  testing::internal::CaptureStderr();
  testing::internal::CaptureStdout();
  LogSwitch = 1;
  CompWarning2("f()", "first", CompDef("a", 1, 2), CompDef("", -0.5, 0));
  LogSwitch = 0;
  testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr();
  std::string log = Slurp("Velk.log");
  EXPECT_NE(log.find(" in f().\n\na = \"(1,2)\";\n\n\"(-0.5,0)\";\n\n"), std::string::npos) << log;
  ASSERT_EQ(chdir(old), 0);
  CompSweep();
}

// Every write to a new temporary fails as on a full disk.
void WritesFail(int fd) {
  int full = open("/dev/full", O_WRONLY);
  dup2(full, fd);
  close(full);
}

TEST_F(ComplexFileTest, FailedWritesLeaveTheFileAsItWas) {
  std::string file = Path("kept");
  std::ofstream(file) << "old";
  Complex *z = CompDef("z", 1, 2);
  OutputFileSetTemporaryHook(WritesFail);
  testing::internal::CaptureStderr();
  CompFileWrite(z, file.c_str());
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "CompFileWrite(): Can't write file " + file + ".\n");
  EXPECT_EXIT(CompFileSave(z, file.c_str(), 0, 1), testing::ExitedWithCode(0),
              Exact("\nsave z(1,2), " + file + " : Can't write file " + file +
                    " in CompFileSave().\n"));
  OutputFileSetTemporaryHook(nullptr);
  EXPECT_EQ(Slurp(file), "old");
  CompSweep();
}

TEST(ComplexFileDeathTest, StandardOutputClosingAndOpenFailures) {
  // CompFileWrite ends standard output; CompFileSave leaves it open.
  auto fd1_open_after = [](std::function<void()> write) {
    write();
    exit(fcntl(1, F_GETFD) == -1 ? 3 : 4);
  };
  EXPECT_EXIT(fd1_open_after([] { CompFileWrite(CompDef("", 1, 2), "stdout"); }),
              testing::ExitedWithCode(3), "");
  EXPECT_EXIT(fd1_open_after([] { CompFileSave(CompDef("", 1, 2), "stdout", 0, 1); }),
              testing::ExitedWithCode(4), "");
  EXPECT_EXIT(CompFileSave(CompDef("z", 1.5, -2), "/nonexistent/s", 1, 1), testing::ExitedWithCode(0),
              Exact("\nsave z(1.5,-2), /nonexistent/s : Can't open file /nonexistent/s in CompFileSave().\n"));
  EXPECT_EXIT(CompFileRead("/nonexistent/r"), testing::ExitedWithCode(0),
              Exact("\nCan't open file in CompFileRead().\n"));
}

std::vector<unsigned char> Written(Complex *c) {
  char *buffer;
  size_t size;
  FILE *f = open_memstream(&buffer, &size);
  CompWrite(c, f);
  fclose(f);
  std::vector<unsigned char> bytes(buffer, buffer + size);
  free(buffer);
  return bytes;
}

Complex *Read(const Bytes &b, Complex *c) {
  FILE *f = fmemopen(const_cast<unsigned char *>(b.data.data()), b.data.size(), "r");
  CompRead(c, f);
  fclose(f);
  return c;
}

TEST(ComplexRecordTest, LayoutRoundTripsAndForeignOrder) {
  Complex *z = CompDef("z", 1.5, -2);
  Bytes want;
  want.Head(0x20002004, 0, 0, 0, 2).Put("z").Put(1.5).Put(-2.0);
  EXPECT_EQ(Written(z), want.data);

  Complex *target = CompSetStatus(CompDef("old", 0, 0), 7);
  Read(Bytes{Written(z)}, target);
  EXPECT_STREQ(target->name, "z");
  EXPECT_EQ(std::tuple(target->re, target->im, target->status), std::tuple(1.5, -2.0, 7));
  // An empty name comes back as ANS_STR; the record is the same once renamed.
  Complex *anonymous = CompDef("", -0.0, 1e-310);
  Read(Bytes{Written(anonymous)}, target);
  EXPECT_STREQ(target->name, "ANS_STR");
  EXPECT_TRUE(std::signbit(target->re) && target->im == 1e-310);
  EXPECT_EQ(Written(CompSetName(target, "")), Written(anonymous));

  // The other byte order: every word and both doubles swapped.
  Bytes foreign{{}, true};
  foreign.Head(0x20002004, 0, 0, 0, 1).Put('\0').Put(0.25).Put(-8.0);
  Read(foreign, target);
  EXPECT_EQ(std::pair(target->re, target->im), std::pair(0.25, -8.0));
  // Without prefix (version 4), the kind is still 4.
  Read(Bytes().Put(0x20002004).Put(0).Put(0).Put(0).Put(2).Put("v").Put(3.0).Put(4.0), target);
  EXPECT_STREQ(target->name, "v");
  EXPECT_EQ(target->im, 4);
  CompUndef(target);
  CompSweep();
}

TEST(ComplexRecordDeathTest, EachReadingFailure) {
  const std::string read = "\nread <- \"\" : ";
  struct Case {
    Bytes bytes;
    const char *text;
  } cases[] = {
      {Bytes().Put(0xFFFFFFFFu).Put(5), "Data structure is broken in CompRead()."},
      {Bytes().Head(0x20002007, 1, 1, 1, 1).Put('\0').Put(1.0).Put(2.0), "Incorrect class datafile in CompRead()."},
      {Bytes().Put(0x20002003).Put(0).Put(0).Put(0).Put(1).Put('\0').Put(1.0),
       "Incorrect class datafile in ComplexRead()."},
      {Bytes().Head(0x20002004, 0, 0, 0, 1025), "Incorrect machine datafile in CompRead()."},
      {Bytes().Head(0x20002004, 0, 0, 0, 6).Put("abc"), "Variable name is too short in CompRead()."},
      {Bytes().Head(0x20002004, 0, 0, 0, 1).Put('\0').Put(1.0), "Data is broken or too few in CompRead()."},
  };
  for (const Case &c : cases)
    EXPECT_EXIT(Read(c.bytes, CompDef("t", 1, 1)), testing::ExitedWithCode(0), Exact(read + c.text + "\n"));
}

}  // namespace
