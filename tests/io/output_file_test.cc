// Writers of named files never lose the file that was there: a failing write
// leaves it byte for byte, with its permission bits, and is reported; devices,
// links, appends and standard output keep their plain behaviour.
#include "io/output_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "core/constructors.h"
#include "io/scalar_file.h"
#include "io/text_format.h"
#include "support/exact.h"

namespace {

// Every write to a new temporary fails as on a full disk.
void WritesFail(int fd) {
  int full = open("/dev/full", O_WRONLY);
  ASSERT_GE(full, 0);
  dup2(full, fd);
  close(full);
}

class OutputFileTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(mkdtemp(dir_.data()), nullptr); }
  void TearDown() override {
    OutputFileSetTemporaryHook(nullptr);
    std::filesystem::permissions(dir_, std::filesystem::perms::owner_all,
                                 std::filesystem::perm_options::add);
    std::filesystem::remove_all(dir_);
  }
  std::string Path(const std::string &name) const { return dir_ + "/" + name; }
  std::string Write(const std::string &name, const std::string &bytes) const {
    std::ofstream(Path(name), std::ios::binary) << bytes;
    return Path(name);
  }
  static std::string Read(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
  }
  // Names in the folder: a failed or finished write leaves no temporary behind.
  int Entries() const {
    int n = 0;
    for (auto &e : std::filesystem::directory_iterator(dir_)) n += e.exists() ? 1 : 0;
    return n;
  }

  std::string dir_ = testing::TempDir() + "velk-out-XXXXXX";
};
using OutputFileDeathTest = OutputFileTest;

const std::string kOld = "# 1 1\n  7.00000000E+00\n";

TEST_F(OutputFileDeathTest, FullDiskKeepsTheOldFileAndReports) {
  std::string a = Write("a.mat", kOld);
  chmod(a.c_str(), 0640);
  Matrix *m = MatSetName(MatFillDef(2, 2, 1.5), "A");
  EXPECT_EXIT(
      {
        OutputFileSetTemporaryHook(WritesFail);
        MatFileWrite(m, a.c_str());
      },
      testing::ExitedWithCode(0),
      Exact("\nprint A(2x2) >> \"" + a + "\" : Can't write file " + a + " in MatFileWrite().\n"));
  EXPECT_EXIT(
      {
        OutputFileSetTemporaryHook(WritesFail);
        MatFileSave(m, a.c_str(), 0, 1, "");
      },
      testing::ExitedWithCode(0),
      Exact("\nsave A(2x2), \"" + a + "\" : Can't write file " + a + " in MatFileSave().\n"));
  EXPECT_EQ(Read(a), kOld);
  EXPECT_EQ(Entries(), 1);
  struct stat st;
  ASSERT_EQ(stat(a.c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 07777, 0640u);

  // The scalar writers say so on standard error and return -1.
  OutputFileSetTemporaryHook(WritesFail);
  testing::internal::CaptureStderr();
  EXPECT_EQ(IntegerFileSave(5, a.c_str(), "n", 0, 1), -1);
  EXPECT_EQ(RealFileSave(5, a.c_str(), "x", 0, 1), -1);
  EXPECT_EQ(StringFileWrite("s", "text", a.c_str()), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "IntegerFileSave(): Can't write file " + a + ".\nRealFileSave(): Can't write file " +
                a + ".\nStringFileWrite(): Can't write file " + a + ".\n");
  EXPECT_EQ(Read(a), kOld);
  EXPECT_EQ(Entries(), 1);
  MatUndef(m);
}

TEST_F(OutputFileDeathTest, AppendsAndDevicesAreWrittenInPlaceAndChecked) {
  // An append never truncates; a failing one (a full device) is reported.
  std::string log = Write("log", "kept\n");
  EXPECT_EQ(IntegerFileSave(1, log.c_str(), "", 1, 0), 0);
  EXPECT_EQ(Read(log), "kept\n1");
  Matrix *m = MatSetName(MatIDef(1), "I");
  EXPECT_EXIT(MatFileSave(m, "/dev/full", 1, 1, ""), testing::ExitedWithCode(0),
              Exact("\nsave I(1x1), \"/dev/full\" : Can't write file /dev/full in MatFileSave().\n"));
  // A device is written through, never replaced by a regular file.
  EXPECT_EXIT(MatFileWrite(m, "/dev/full"), testing::ExitedWithCode(0),
              Exact("\nprint I(1x1) >> \"/dev/full\" : Can't write file /dev/full in MatFileWrite().\n"));
  MatFileWrite(m, "/dev/null");
  struct stat st;
  ASSERT_EQ(stat("/dev/null", &st), 0);
  EXPECT_TRUE(S_ISCHR(st.st_mode));
  MatUndef(m);
}

TEST_F(OutputFileTest, ReplacementKeepsBitsFollowsLinksAndCreatesWithTheUmask) {
  std::string a = Write("a.mat", kOld);
  chmod(a.c_str(), 0604);
  std::string link = Path("link.mat");
  ASSERT_EQ(symlink(a.c_str(), link.c_str()), 0);
  Matrix *m = MatFillDef(1, 2, 2.0);
  MatFileWrite(m, link.c_str());
  EXPECT_EQ(Read(a), "# 1 2\n  2.00000000E+00\n  2.00000000E+00\n");
  struct stat st;
  ASSERT_EQ(lstat(link.c_str(), &st), 0);
  EXPECT_TRUE(S_ISLNK(st.st_mode));
  ASSERT_EQ(stat(a.c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 07777, 0604u);
  EXPECT_EQ(Entries(), 2);

  mode_t old = umask(027);
  std::string fresh = Path("fresh.mat");
  MatFileWrite(m, fresh.c_str());
  umask(old);
  ASSERT_EQ(stat(fresh.c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 07777, 0640u);
  MatUndef(m);
}

TEST_F(OutputFileDeathTest, ReadOnlyFolderWithAWritableFileIsWrittenInPlace) {
  std::string a = Write("a.mat", kOld);
  chmod(a.c_str(), 0666);
  chmod(dir_.c_str(), 0555);
  // As an ordinary user, for whom the folder's bits hold (root ignores them).
  EXPECT_EXIT(
      {
        if (geteuid() == 0 && setuid(65534) != 0) _exit(2);
        Matrix *m = MatFillDef(1, 1, 3.0);
        MatFileWrite(m, a.c_str());
        // A distinct status: a fatal report would end with 0.
        _exit(Read(a) == "# 1 1\n  3.00000000E+00\n" ? 3 : 1);
      },
      testing::ExitedWithCode(3), "");
  EXPECT_EQ(Entries(), 1);
}

}  // namespace
