// Files for the io tests: a private temporary directory per test.
#ifndef VELK_TESTS_IO_IO_TEST_UTIL_H
#define VELK_TESTS_IO_IO_TEST_UTIL_H

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

class TempDirTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "velk-io-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    dir_ = pattern;
  }
  void TearDown() override { std::filesystem::remove_all(dir_); }

  std::string Path(const std::string &name) const { return (dir_ / name).string(); }

  std::string Write(const std::string &name, const std::string &bytes) const {
    std::string path = Path(name);
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
  }

  static std::string Contents(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
  }

  std::filesystem::path dir_;
};

// A regex that matches exactly text (for death tests on the whole of stderr).
inline std::string Exactly(const std::string &text) {
  std::string re = "^";
  for (char c : text) {
    if (strchr("\\^$.|?*+()[]{}", c) != nullptr) re += '\\';
    re += c;
  }
  return re + "$";
}

#endif
