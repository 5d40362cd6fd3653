#include "sys/process.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "sys/stream_table.h"
#include "sys_test_util.h"

namespace {

using velk_test::ChildrenBecome;
using velk_test::IsOpenDescriptor;
using velk_test::WaitReadable;

// One line from the child's output, or "<timeout>" when none comes in time.
std::string ReadLineFrom(int fd) {
  FILE *in = FilePointer(fd, 0);
  if (in == nullptr || !WaitReadable(fileno(in))) return "<timeout>";
  char line[256];
  return fgets(line, sizeof line, in) != nullptr ? std::string(line) : std::string("<eof>");
}

// Everything the child writes until it closes its output.
std::string ReadToEnd(int fd) {
  FILE *in = FilePointer(fd, 0);
  std::string all;
  for (int i = 0; i < 10000; ++i) {
    if (!WaitReadable(fileno(in))) return all + "<timeout>";
    int c = fgetc(in);
    if (c == EOF) break;
    all += static_cast<char>(c);
  }
  return all;
}

TEST(Process, CatFromThePathEchoesEachLine) {
  int fd = ProcessOpen("cat");
  ASSERT_GE(fd, 0);
  ASSERT_TRUE(FileIsOpen(fd));
  FILE *read = FilePointer(fd, 0);
  FILE *write = FilePointer(fd, 1);
  ASSERT_NE(read, nullptr);
  ASSERT_NE(write, nullptr);
  // The entry is the write end's; the read stream is the other pipe.
  EXPECT_EQ(fileno(write), fd);
  EXPECT_NE(fileno(read), fd);

  for (int i = 1; i <= 3; ++i) {
    ASSERT_EQ(FilePrintf(fd, "line %d of %s\n", i, "three"), 0);
    EXPECT_EQ(ReadLineFrom(fd), "line " + std::to_string(i) + " of three\n");
  }
  // Unbuffered both ways: a bare fputs reaches the child without a flush.
  ASSERT_GE(fputs("no flush\n", write), 0);
  EXPECT_EQ(ReadLineFrom(fd), "no flush\n");

  int read_fd = fileno(read);
  EXPECT_EQ(ProcessClose(fd), 0);
  EXPECT_FALSE(FileIsOpen(fd));
  EXPECT_FALSE(IsOpenDescriptor(fd));
  EXPECT_FALSE(IsOpenDescriptor(read_fd));
  EXPECT_TRUE(ChildrenBecome(0, 0));
}

TEST(Process, AbsolutePathAndWordSplitting) {
  int fd = ProcessOpen("/bin/echo   one\t\ttwo \t three  ");
  ASSERT_GE(fd, 0);
  EXPECT_EQ(ReadToEnd(fd), "one two three\n");
  EXPECT_NE(FileEof(fd), 0);
  EXPECT_EQ(ProcessClose(fd), 0);
  EXPECT_TRUE(ChildrenBecome(0, 0));
}

TEST(Process, ProgramThatCannotRunStillGivesADescriptor) {
  for (const char *command : {"velk-no-such-program --flag", "/velk/no/such/program", ""}) {
    SCOPED_TRACE(command);
    int fd = ProcessOpen(command);
    ASSERT_GE(fd, 0);
    // The child exits at once, so its output ends without a byte.
    EXPECT_EQ(ReadToEnd(fd), "");
    EXPECT_NE(FileEof(fd), 0);
    EXPECT_EQ(ProcessClose(fd), 0);
  }
  EXPECT_TRUE(ChildrenBecome(0, 0));
}

TEST(Process, EachChildEndsWhenItsOwnPipeCloses) {
  // If the second child inherited the first one's input, the first would never
  // see the end of it; and nobody but the reaper waits for either.
  int first = ProcessOpen("cat");
  ASSERT_GE(first, 0);
  int second = ProcessOpen("cat");
  ASSERT_GE(second, 0);
  ASSERT_TRUE(ChildrenBecome(2, 0));
  EXPECT_EQ(ProcessClose(first), 0);
  EXPECT_TRUE(ChildrenBecome(1, 0));
  ASSERT_EQ(FilePrintf(second, "still here\n"), 0);
  EXPECT_EQ(ReadLineFrom(second), "still here\n");
  EXPECT_EQ(ProcessClose(second), 0);
  EXPECT_TRUE(ChildrenBecome(0, 0));
}

TEST(Process, TableBoundIsOnTheFirstPipe) {
  std::string err;
  {
    // Every number below 4096 taken: the first pipe's read end is past the table.
    testing::internal::CaptureStderr();
    velk_test::DescriptorFloor floor(kStreamTableSize);
    if (!floor.ok()) {
      testing::internal::GetCapturedStderr();
      GTEST_SKIP() << "cannot hold 4096 descriptors here";
    }
    EXPECT_EQ(ProcessOpen("cat -u"), -1);
    EXPECT_FALSE(IsOpenDescriptor(kStreamTableSize));
    EXPECT_FALSE(IsOpenDescriptor(kStreamTableSize + 1));
    err = testing::internal::GetCapturedStderr();
  }
  EXPECT_EQ(err, "ProcessOpen(\"cat -u\"): Too many processes are opened.\n");

  {
    // Only 4094 and 4095 free: the first pipe fits, the second lands past the
    // table, which is allowed since only its read end is kept, as a stream.
    velk_test::DescriptorFloor floor(kStreamTableSize - 2);
    ASSERT_TRUE(floor.ok());
    int fd = ProcessOpen("cat");
    ASSERT_EQ(fd, kStreamTableSize - 1);
    EXPECT_GE(fileno(FilePointer(fd, 0)), kStreamTableSize);
    ASSERT_EQ(FilePrintf(fd, "edge\n"), 0);
    EXPECT_EQ(ReadLineFrom(fd), "edge\n");
    EXPECT_EQ(ProcessClose(fd), 0);
  }

  {
    // Only 4095 free: the write end, which names the entry, would be 4096.
    testing::internal::CaptureStderr();
    velk_test::DescriptorFloor floor(kStreamTableSize - 1);
    ASSERT_TRUE(floor.ok());
    EXPECT_EQ(ProcessOpen("cat"), -1);
    EXPECT_FALSE(IsOpenDescriptor(kStreamTableSize - 1));
    EXPECT_FALSE(IsOpenDescriptor(kStreamTableSize));
    err = testing::internal::GetCapturedStderr();
  }
  EXPECT_EQ(err, "ProcessOpen(\"cat\"): Too many processes are opened.\n");
  EXPECT_TRUE(ChildrenBecome(0, 0));
}

}  // namespace
