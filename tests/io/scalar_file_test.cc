// The scalar text files: their forms, appending, and the open failures.
#include "io/scalar_file.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace {

std::string ReadText(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

TEST(ScalarFiles, SavesWriteTheTextFormsOrReportAndReturnMinusOne) {
  std::string dir = testing::TempDir() + "velk-scalar-XXXXXX";
  ASSERT_NE(mkdtemp(dir.data()), nullptr);
  std::string f = dir + "/values";
  std::string bad = dir + "/no/such/file";
  EXPECT_EQ(IntegerFileSave(5, f.c_str(), "n", 0, 1), 0);
  EXPECT_EQ(IntegerFileSave(-3, f.c_str(), "", 1, 0), 0);
  EXPECT_EQ(RealFileSave(NAN, f.c_str(), nullptr, 1, 0), 0);
  EXPECT_EQ(ReadText(f), "n = 5;\n\n-3             NaN");
  EXPECT_EQ(RealFileSave(1.5, f.c_str(), "x", 0, 1), 0);
  EXPECT_EQ(ReadText(f), "x =   1.50000000E+00;\n\n");
  EXPECT_EQ(StringFileWrite("s", "some text", f.c_str()), 0);
  EXPECT_EQ(ReadText(f), "some text");
  testing::internal::CaptureStderr();
  EXPECT_EQ(IntegerFileSave(1, bad.c_str(), "n", 0, 0), -1);
  EXPECT_EQ(IntegerFileSave(1, bad.c_str(), "n", 1, 0), -1);
  EXPECT_EQ(RealFileSave(1, bad.c_str(), "x", 1, 0), -1);
  EXPECT_EQ(StringFileWrite("s", "t", bad.c_str()), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "IntegerFileSave(): Can't open " + bad + ".\nIntegerFileSave(): Cann't open " + bad +
                ".\nRealFileSave(): Can't open " + bad + ".\nStringFileWrite(): Can not open " +
                bad + ".\n");
  std::filesystem::remove_all(dir);
}

}  // namespace
