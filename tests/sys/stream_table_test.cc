#include "sys/stream_table.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "sys_test_util.h"

namespace {

using velk_test::IsOpenDescriptor;
using velk_test::ReadWholeFile;
using velk_test::WriteWholeFile;

class StreamTableTest : public testing::Test {
 protected:
  void SetUp() override {
    dir_ = velk_test::MakeTempDir();
    ASSERT_FALSE(dir_.empty());
    path_ = dir_ + "/data.txt";
  }
  void TearDown() override {
    unlink(path_.c_str());
    rmdir(dir_.c_str());
  }
  std::string dir_;
  std::string path_;
};

std::string ModeWarning(const std::string &name, const std::string &mode) {
  return "FileOpen(\"" + name + "\", \"" + mode + "\"): mode does not start with 'r' nor 'w'\n";
}

TEST_F(StreamTableTest, EntryFollowsTheWholeModeString) {
  enum Streams { kNone, kRead, kWrite, kBoth };
  struct Case {
    const char *mode;
    Streams streams;
    bool warns;
  };
  const Case cases[] = {
      {"r", kRead, false},   {"rb", kRead, false},  {"w", kWrite, false},  {"wb", kWrite, false},
      {"a", kWrite, true},   {"ab", kWrite, true},  {"rw", kBoth, false},  {"rbw", kBoth, false},
      {"rwb", kBoth, false}, {"wr", kBoth, false},  {"wbr", kBoth, false}, {"wrb", kBoth, false},
      {"r+", kNone, false},  {"w+", kNone, false},  {"a+", kNone, true},   {"rb+", kNone, false},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.mode);
    WriteWholeFile(path_, "first\n");
    testing::internal::CaptureStderr();
    int fd = FileOpen(path_.c_str(), c.mode);
    std::string err = testing::internal::GetCapturedStderr();
    ASSERT_GE(fd, 0);
    EXPECT_EQ(err, c.warns ? ModeWarning(path_, c.mode) : "");
    EXPECT_TRUE(IsOpenDescriptor(fd));

    FILE *read = FilePointer(fd, 0);
    FILE *write = FilePointer(fd, 1);
    EXPECT_EQ(read != nullptr, c.streams == kRead || c.streams == kBoth);
    EXPECT_EQ(write != nullptr, c.streams == kWrite || c.streams == kBoth);
    EXPECT_EQ(FileIsOpen(fd), c.streams != kNone);
    if (c.streams == kBoth) {
      EXPECT_EQ(read, write);
    }
    if (read != nullptr) {
      EXPECT_EQ(fileno(read), fd);
    }
    if (write != nullptr) {
      EXPECT_EQ(fileno(write), fd);
    }

    if (c.streams == kRead) {
      char line[32] = {};
      ASSERT_NE(fgets(line, sizeof line, read), nullptr);
      EXPECT_STREQ(line, "first\n");
    }
    // Opening with 'w' truncates; what FilePrintf wrote is in the file at once.
    std::string expected_after = c.mode[0] == 'w' ? "" : "first\n";
    if (c.streams == kWrite) {
      EXPECT_EQ(FilePrintf(fd, "%s-%d\n", c.mode, 7), 0);
      expected_after += std::string(c.mode) + "-7\n";
      EXPECT_EQ(ReadWholeFile(path_), expected_after);
    }

    EXPECT_EQ(FileClose(fd), 0);
    EXPECT_FALSE(FileIsOpen(fd));
    EXPECT_FALSE(IsOpenDescriptor(fd));
    EXPECT_EQ(FilePointer(fd, 0), nullptr);
    EXPECT_EQ(FilePointer(fd, 1), nullptr);

    EXPECT_EQ(ReadWholeFile(path_), expected_after);
  }
}

TEST_F(StreamTableTest, OpenFailures) {
  WriteWholeFile(path_, "x");

  // The mode warning comes first; fopen then refuses the mode.
  testing::internal::CaptureStderr();
  EXPECT_EQ(FileOpen(path_.c_str(), "x"), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), ModeWarning(path_, "x"));

  std::string missing = dir_ + "/missing.txt";
  testing::internal::CaptureStderr();
  EXPECT_EQ(FileOpen(missing.c_str(), "r"), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(StreamTableTest, DescriptorPastTheTableIsRefusedAndClosed) {
  WriteWholeFile(path_, "x");
  testing::internal::CaptureStderr();
  int fd;
  {
    velk_test::DescriptorFloor floor(kStreamTableSize);
    if (!floor.ok()) {
      testing::internal::GetCapturedStderr();
      GTEST_SKIP() << "cannot hold 4096 descriptors here";
    }
    fd = FileOpen(path_.c_str(), "r");
    // Had the file stayed open, it would still hold the first descriptor past the table.
    EXPECT_FALSE(IsOpenDescriptor(kStreamTableSize));
  }
  std::string err = testing::internal::GetCapturedStderr();
  EXPECT_EQ(fd, -1);
  EXPECT_EQ(err, "FileOpen(\"" + path_ + "\", \"r\"): file descriptor is too large.\n");
}

TEST(StreamTable, FilePointerStandardStreamsAndArgumentChecks) {
  EXPECT_EQ(FilePointer(0, 0), stdin);
  EXPECT_EQ(FilePointer(1, 1), stdout);
  EXPECT_EQ(FilePointer(2, 1), stderr);
  EXPECT_EQ(FilePointer(0, 1), nullptr);
  EXPECT_EQ(FilePointer(1, 0), nullptr);
  EXPECT_TRUE(FileIsOpen(0));
  EXPECT_TRUE(FileIsOpen(1));
  EXPECT_TRUE(FileIsOpen(2));

  testing::internal::CaptureStderr();
  EXPECT_EQ(FilePointer(4096, 0), nullptr);
  EXPECT_EQ(FilePointer(5000, 1), nullptr);
  EXPECT_EQ(FilePointer(1, 2), nullptr);
  EXPECT_EQ(FilePointer(0, -1), nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "FilePointer(4096, 0): file descriptor is too large.\n"
            "FilePointer(5000, 1): file descriptor is too large.\n"
            "FilePointer(1, 2): rw flag is 0 or 1\n"
            "FilePointer(0, -1): rw flag is 0 or 1\n");

  // What a failed open returned finds nothing, quietly.
  testing::internal::CaptureStderr();
  EXPECT_EQ(FilePointer(-1, 0), nullptr);
  EXPECT_FALSE(FileIsOpen(-1));
  EXPECT_FALSE(FileIsOpen(kStreamTableSize));
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(StreamTableTest, FilePrintfTargets) {
  // Standard output needs no open call.
  testing::internal::CaptureStdout();
  EXPECT_EQ(FilePrintf(1, "%d-%s|%5.2f\n", 42, "ok", 3.14159), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "42-ok| 3.14\n");

  testing::internal::CaptureStderr();
  EXPECT_EQ(FilePrintf(2, "to %s\n", "stderr"), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "to stderr\n");

  // A read-only file and a number nobody opened have no write stream.
  WriteWholeFile(path_, "data");
  int fd = FileOpen(path_.c_str(), "r");
  ASSERT_GE(fd, 0);
  testing::internal::CaptureStderr();
  EXPECT_EQ(FilePrintf(fd, "x=%d", 1), -1);
  EXPECT_EQ(FilePrintf(4000, "%s\n", "y"), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "FilePrintf(" + std::to_string(fd) + ", \"x=%d\", ...): file is not opened.\n" +
                "FilePrintf(4000, \"%s\n\", ...): file is not opened.\n");
  EXPECT_EQ(FileClose(fd), 0);
  EXPECT_EQ(ReadWholeFile(path_), "data");
}

TEST_F(StreamTableTest, FlushAndEof) {
  int out = FileOpen(path_.c_str(), "w");
  ASSERT_GE(out, 0);
  // Written around FilePrintf, the text sits in the stream's buffer until flushed.
  ASSERT_GE(fputs("buffered text", FilePointer(out, 1)), 0);
  struct stat info;
  ASSERT_EQ(stat(path_.c_str(), &info), 0);
  EXPECT_EQ(info.st_size, 0);
  FileFlush(out);
  ASSERT_EQ(stat(path_.c_str(), &info), 0);
  EXPECT_EQ(info.st_size, 13);
  EXPECT_EQ(FileEof(out), 0);  // no read stream
  EXPECT_EQ(FileClose(out), 0);

  int in = FileOpen(path_.c_str(), "rb");
  ASSERT_GE(in, 0);
  FILE *read = FilePointer(in, 0);
  EXPECT_EQ(FileEof(in), 0);
  int bytes = 0;
  while (fgetc(read) != EOF && bytes < 100) ++bytes;
  EXPECT_EQ(bytes, 13);
  EXPECT_NE(FileEof(in), 0);
  EXPECT_EQ(FileClose(in), 0);
  EXPECT_EQ(FileEof(in), 0);
  EXPECT_EQ(FileEof(kStreamTableSize), 0);
}

TEST_F(StreamTableTest, CloseOfABareDescriptorReturnsTheCloseResult) {
  WriteWholeFile(path_, "x");
  int fd = open(path_.c_str(), O_RDONLY);
  ASSERT_GE(fd, 0);
  EXPECT_FALSE(FileIsOpen(fd));
  EXPECT_EQ(FileClose(fd), 0);
  EXPECT_FALSE(IsOpenDescriptor(fd));
  EXPECT_EQ(FileClose(fd), -1);
}

TEST(StreamTable, ModeBits) {
  struct Case {
    const char *mode;
    int bits;
  };
  const Case cases[] = {{"", 4},   {"r", 4},   {"w", 2},    {"x", 1},   {"rw", 6},
                        {"wr", 6}, {"rx", 5},  {"wx", 3},   {"rwx", 7}, {"xwr", 7},
                        {"a", 0},  {"ab", 0},  {"r+", 4},   {"RWX", 0}, {"abxc", 1}};
  for (const Case &c : cases) EXPECT_EQ(FileModeBits(c.mode), c.bits) << "mode \"" << c.mode << "\"";
}

}  // namespace
