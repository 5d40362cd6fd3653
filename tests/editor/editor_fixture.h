// The fixture of the pty-driven editor tests: a temporary directory for the
// files, one velk-edit session, and readers of the screen it paints.
#ifndef VELK_TESTS_EDITOR_EDITOR_FIXTURE_H
#define VELK_TESTS_EDITOR_EDITOR_FIXTURE_H

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/editor/pty_session.h"

namespace velk_test {

// One number as the editor shows it and as the header layout writes it.
inline std::string Shown(double v) {
  char text[32];
  snprintf(text, sizeof text, "%16.8E", v);
  return text;
}

// A visible row as the editor draws it: the row label, then the numbers.
inline std::string Row(int r, const std::vector<double> &numbers) {
  char label[16];
  snprintf(label, sizeof label, " (%3d) ", r);
  std::string row = label;
  for (double v : numbers) row += Shown(v);
  return row;
}

// The text file of a matrix in the header layout, one line per column, from
// its values row by row (for a complex matrix, the two parts of each element).
inline std::string MatrixText(int rows, int cols, const std::vector<double> &v,
                              bool complex = false) {
  int parts = complex ? 2 : 1;
  std::string text = "# " + std::to_string(rows) + " " + std::to_string(cols);
  text += complex ? " C\n" : "\n";
  for (int j = 0; j < cols; j++) {
    for (int k = 0; k < rows * parts; k++)
      text += (k > 0 ? " " : "") +
              Shown(v[static_cast<size_t>((k / parts * cols + j) * parts + k % parts)]);
    text += "\n";
  }
  return text;
}

// Element (r, c) is 100 r + c, so every cell tells where it came from; with
// `complex`, 100 r + c - (100 r + c) i.
inline std::vector<double> Numbered(int rows, int cols, bool complex = false) {
  std::vector<double> v;
  for (int k = 0; k < rows * cols; k++) {
    v.push_back(100 * (k / cols + 1) + k % cols + 1);
    if (complex) v.push_back(-v.back());
  }
  return v;
}

class EditorTest : public ::testing::Test {
 protected:
  // Keys to send, then what a real matrix shows: its size and cells, and
  // where the cursor is.
  struct Step {
    std::string keys;
    int rows, cols;
    std::vector<double> cells;
    std::string at = At(1, 1);
  };

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
  std::string ReadFile(const std::string &name) const { return ReadText(Path(name)); }
  bool Exists(const std::string &name) const { return std::filesystem::exists(Path(name)); }
  // The file's time stamp; with `age`, first put an hour back so that a
  // rewrite shows.
  std::filesystem::file_time_type Stamp(const std::string &name, bool age = false) const {
    if (age) std::filesystem::last_write_time(Path(name), Stamp(name) - std::chrono::hours(1));
    return std::filesystem::last_write_time(Path(name));
  }

  // Starts velk-edit with the arguments (on a window of the given size) and
  // waits for its first screen.
  void Open(const std::vector<std::string> &args, int lines = Screen::kLines,
            int columns = Screen::kColumns) {
    ASSERT_TRUE(pty_.Start(VELK_EDIT_PATH, dir_, args, lines, columns));
    ASSERT_TRUE(pty_.Settle()) << "no first screen";
  }
  // An escape sequence goes as one piece, other keys one at a time.
  void Keys(const std::string &keys) {
    ASSERT_TRUE(keys[0] == '\x1b' ? pty_.Send(keys) : pty_.Keys(keys)) << "stuck in: " << keys;
  }
  // Quits the editor on the last file and returns the exit status.
  int Quit() {
    pty_.Keys("q");
    return pty_.Finish();
  }

  std::string Line(int line) const { return pty_.screen.Trimmed(line); }
  // Where the cursor sits, as "line,column".
  std::string Cursor() const {
    return std::to_string(pty_.screen.line) + "," + std::to_string(pty_.screen.column);
  }
  // The cursor position of element (y, x) of a real matrix with the view's
  // first row and column at (top, left).
  static std::string At(int y, int x, int top = 1, int left = 1) {
    return std::to_string(5 + y - top) + "," + std::to_string(16 * (x - left) + 8);
  }
  // Runs the steps on a small real matrix (at most 4 columns and 16 rows):
  // after a change of shape nothing may be left beside or below the rows.
  void Run(const std::vector<Step> &steps) {
    for (const Step &s : steps) {
      SCOPED_TRACE("after keys: " + s.keys);
      Keys(s.keys);
      char size[32];
      snprintf(size, sizeof size, "  Size :  [ %3d,%3d ]", s.rows, s.cols);
      EXPECT_EQ(Line(2), size);
      for (int k = 0; k < s.rows; k++) {
        auto first = s.cells.begin() + k * s.cols;
        EXPECT_EQ(Line(5 + k), Row(k + 1, {first, first + s.cols}));
      }
      EXPECT_EQ(Line(5 + s.rows), "");
      EXPECT_EQ(Cursor(), s.at);
    }
  }

  std::string dir_;
  PtySession pty_;
};

}  // namespace velk_test

#endif
