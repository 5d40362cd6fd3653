// The fixture of the pty-driven editor tests: a temporary directory for the
// files, one velk-edit session, and readers of the screen it paints.
#ifndef VELK_TESTS_EDITOR_EDITOR_FIXTURE_H
#define VELK_TESTS_EDITOR_EDITOR_FIXTURE_H

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/editor/pty_session.h"

namespace velk_test {

// The text file of a real (or, with pairs, complex) matrix in the header
// layout: one line per column, numbers in "%16.8E".
inline std::string MatrixText(int rows, int cols, const std::vector<double> &row_major,
                              bool complex = false) {
  std::string text = "# " + std::to_string(rows) + " " + std::to_string(cols) +
                     (complex ? " C\n" : "\n");
  int width = complex ? 2 : 1;
  char number[64];
  for (int j = 0; j < cols; j++) {
    for (int i = 0; i < rows; i++) {
      for (int p = 0; p < width; p++) {
        if (i > 0 || p > 0) text += " ";
        snprintf(number, sizeof number, "%16.8E",
                 row_major[static_cast<size_t>((i * cols + j) * width + p)]);
        text += number;
      }
    }
    text += "\n";
  }
  return text;
}

// r x c values 100 * row + column, row by row, so every cell tells where it
// came from.
inline std::vector<double> Numbered(int rows, int cols) {
  std::vector<double> v;
  for (int r = 1; r <= rows; r++)
    for (int c = 1; c <= cols; c++) v.push_back(100 * r + c);
  return v;
}

// One number as the editor shows it.
inline std::string Shown(double v) {
  char text[64];
  snprintf(text, sizeof text, "%16.8E", v);
  return text;
}

class EditorTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/velk-edit-test-XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    dir_ = pattern;
  }
  void TearDown() override { std::filesystem::remove_all(dir_); }

  std::string Path(const std::string &name) const { return dir_ + "/" + name; }
  void WriteFile(const std::string &name, const std::string &text) const {
    std::ofstream(Path(name)) << text;
  }
  std::string ReadFile(const std::string &name) const {
    std::ifstream in(Path(name));
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
  }
  bool Exists(const std::string &name) const { return std::filesystem::exists(Path(name)); }
  // Puts the file's modification time an hour back, so a rewrite shows.
  void AgeFile(const std::string &name) const {
    auto path = Path(name);
    std::filesystem::last_write_time(
        path, std::filesystem::last_write_time(path) - std::chrono::hours(1));
  }
  std::filesystem::file_time_type Stamp(const std::string &name) const {
    return std::filesystem::last_write_time(Path(name));
  }

  // Starts velk-edit with the arguments and waits for its first screen.
  void Open(const std::vector<std::string> &args) {
    ASSERT_TRUE(pty_.Start(VELK_EDIT_PATH, dir_, args));
    ASSERT_TRUE(pty_.Settle()) << "no first screen";
  }
  void Keys(const std::string &keys) { ASSERT_TRUE(pty_.Keys(keys)) << "stuck in: " << keys; }
  void Send(const std::string &bytes) { ASSERT_TRUE(pty_.Send(bytes)); }
  // Quits the editor on the last file and returns the exit status.
  int Quit() {
    pty_.Keys("q");
    return pty_.Finish();
  }

  const Screen &screen() const { return pty_.screen; }
  std::string Line(int line) const { return pty_.screen.Trimmed(line); }
  // Where the cursor sits, as "line,column".
  std::string Cursor() const {
    return std::to_string(pty_.screen.cursor_line()) + "," +
           std::to_string(pty_.screen.cursor_column());
  }
  // The cursor position of element (y, x) with the view's first row and
  // column at (top, left), on a real matrix.
  static std::string At(int y, int x, int top = 1, int left = 1) {
    return std::to_string(5 + y - top) + "," + std::to_string(16 * (x - left) + 8);
  }
  // The number shown in visible row k, number column j (both from 0).
  double Cell(int k, int j) const {
    return strtod(pty_.screen.Text(5 + k, 16 * j + 7, 16).c_str(), nullptr);
  }
  // The visible values of the first `rows` x `cols` cells, row by row.
  std::vector<double> Cells(int rows, int cols) const {
    std::vector<double> v;
    for (int k = 0; k < rows; k++)
      for (int j = 0; j < cols; j++) v.push_back(Cell(k, j));
    return v;
  }

  std::string dir_;
  PtySession pty_;
};

}  // namespace velk_test

#endif
