// Window size, resizes and resumes, undo and redo, bounded fields, UTF-8 names and the
// overwrite of one part, through a pty.
#include <csignal>
#include <cstdlib>

#include "tests/editor/editor_fixture.h"

namespace velk_test {
namespace {

// The column labels of a real matrix from column `left`, `n` of them.
std::string Labels(int left, int n) {
  std::string line(13 + 16 * (n - 1) + 5, ' ');
  for (int i = 0; i < n; i++) {
    char label[8];
    snprintf(label, sizeof label, "(%3d)", left + i);
    line.replace(static_cast<size_t>(16 * i + 13), 5, label);
  }
  return line;
}

// Row r of Numbered(.., cols) from column left, n numbers.
std::string NumberedRow(int r, int left, int n) {
  std::vector<double> v;
  for (int c = left; c < left + n; c++) v.push_back(100.0 * r + c);
  return Row(r, v);
}

}  // namespace

// lines - 7 rows and (columns - 7) / 16 numbers; a resize repaints with the cursor in view,
// below 60 x 10 only a notice; a resume repaints. Nothing is written past the window.
TEST_F(EditorTest, TheLayoutFollowsTheWindow) {
  WriteFile("a.mat", MatrixText(30, 10, Numbered(30, 10)));
  Open({"a.mat"}, 30, 120);
  EXPECT_EQ(Line(4), Labels(1, 7));
  EXPECT_EQ(Line(27), NumberedRow(23, 1, 7));
  EXPECT_EQ(Line(28) + Line(29), "");
  Keys("j>");
  EXPECT_EQ(Cursor(), At(30, 10, 8, 4));
  EXPECT_EQ(Line(27), NumberedRow(30, 4, 7));

  ASSERT_TRUE(pty_.Resize(12, 60));
  EXPECT_EQ(Line(2), "  Size :  [  30, 10 ]");
  EXPECT_EQ(Line(4), Labels(8, 3));
  EXPECT_EQ(Line(9), NumberedRow(30, 8, 3));
  EXPECT_EQ(Line(10) + Line(11), "");
  EXPECT_EQ(Cursor(), At(30, 10, 26, 8));

  ASSERT_TRUE(pty_.Resize(8, 40));
  std::string notice = "velk-edit needs a window of 60 x 10 at least";
  EXPECT_EQ(pty_.screen.All(), notice.substr(0, 40) + std::string(8, '\n'));
  Keys("q<");  // nothing happens on a screen that cannot be seen
  EXPECT_EQ(pty_.screen.All(), notice.substr(0, 40) + std::string(8, '\n'));

  ASSERT_TRUE(pty_.Resize(20, 100));
  EXPECT_EQ(Line(4), Labels(6, 5));  // the larger window fills up
  EXPECT_EQ(Cursor(), At(30, 10, 18, 6));
  Keys("wab");
  ASSERT_TRUE(pty_.Resize(20, 90));
  EXPECT_EQ(Line(2), "  Size :  [  30, 10 ]    Filename : ab");
  EXPECT_EQ(Cursor(), "2,38");
  Keys("\177\177\n");
  EXPECT_EQ(pty_.screen.overflow, 0);
  EXPECT_EQ(pty_.screen.unknown, 0);

  // Stopped and resumed: painted again.
  kill(pty_.pid(), SIGSTOP);
  pty_.screen.Clear();
  ASSERT_TRUE(pty_.Signal(SIGCONT));
  EXPECT_EQ(Line(2), "  Size :  [  30, 10 ]");
  EXPECT_EQ(Line(17), NumberedRow(30, 6, 5));
  EXPECT_EQ(Quit(), 0);
}

// The stray E behind the last complex element is cut at a 71-column window's edge.
TEST_F(EditorTest, NothingIsWrittenPastTheLastColumn) {
  WriteFile("c.mat", MatrixText(1, 3, Numbered(1, 3, true), true));
  Open({"c.mat"}, 24, 71);
  EXPECT_EQ(Line(5), Row(1, {101, -101, 102, -102}));
  EXPECT_EQ(pty_.screen.overflow, 0);
  EXPECT_EQ(Quit(), 0);
}

// Every kind of change undoes and redoes, many levels deep; a new change drops the redo
// list; undone to the start, the file is not rewritten.
TEST_F(EditorTest, UndoAndRedoEveryChange) {
  WriteFile("a.mat", MatrixText(3, 2, Numbered(3, 2)));
  auto stamp = Stamp("a.mat", true);
  Open({"a.mat"});
  const std::vector<double> start = Numbered(3, 2), five = {5, 102, 201, 202, 301, 302},
                            eye = {1, 0, 0, 1, 0, 0};
  Run({{"j5\n", 3, 2, five, At(1, 2)},
       {"u", 3, 2, start, At(1, 1)},
       {"l\x12", 3, 2, five, At(1, 1)},
       {"E", 3, 2, eye},
       {"s4\n\n", 4, 2, {1, 0, 0, 1, 0, 0, 0, 0}},
       {"jdr", 3, 2, {1, 0, 0, 0, 0, 0}},
       {"mlijho", 3, 2, {1, 0, 1, 0, 0, 0}, At(2, 1)},
       {"<u", 3, 2, {1, 0, 0, 0, 0, 0}, At(2, 1)},
       {"u", 4, 2, {1, 0, 0, 1, 0, 0, 0, 0}},
       {"u", 3, 2, eye},
       {"u", 3, 2, five},
       {"uu", 3, 2, start},  // nothing older: a bell
       {"\x12\x12", 3, 2, eye},
       {"j7\n", 3, 2, {1, 0, 7, 1, 0, 0}, At(2, 2)},
       {"\x12", 3, 2, {1, 0, 7, 1, 0, 0}, At(2, 2)},  // the size change is gone
       {"uuu", 3, 2, start},
       {"s0\n", 0, 2, {}, "2,16"},
       {"u", 3, 2, start}});
  EXPECT_GE(pty_.screen.bells, 2);
  EXPECT_EQ(Quit(), 0);
  EXPECT_EQ(Stamp("a.mat"), stamp);
}

// VELK_UNDO_MAX caps the history, oldest first: here two number entries.
TEST_F(EditorTest, TheHistoryIsCappedOldestFirst) {
  WriteFile("a.mat", MatrixText(1, 3, {0, 0, 0}));
  setenv("VELK_UNDO_MAX", "150", 1);
  Open({"a.mat"});
  unsetenv("VELK_UNDO_MAX");
  Run({{"j1\n2\n3\n", 1, 3, {1, 2, 3}, At(1, 3)}, {"uuu", 1, 3, {1, 0, 0}, At(1, 2)}});
  EXPECT_EQ(Quit(), 0);
}

// 17 characters of a number, 4 digits of a count; further keys ring and are refused.
TEST_F(EditorTest, FieldsRefuseKeysPastTheirBound) {
  WriteFile("a.mat", MatrixText(2, 2, {1, 2, 3, 4}));
  Open({"a.mat"});
  Run({{"j" + std::string(20, '1') + "\n", 2, 2, {11111111111111111.0, 2, 3, 4}, At(1, 2)},
       {"s00012\n\n", 1, 2, {11111111111111111.0, 2}}});
  EXPECT_EQ(pty_.screen.bells, 4);
  EXPECT_EQ(Quit(), 0);
}

// A UTF-8 file name is kept whole; Backspace and the cursor count characters.
TEST_F(EditorTest, PromptsTakeUtf8) {
  WriteFile("a.mat", MatrixText(1, 1, {1}));
  Open({"a.mat"});
  Keys("jwdonn\xc3\xa9\xc3\xa9");
  EXPECT_EQ(Line(2), "  Size :  [   1,  1 ]    Filename : donn\xc3\xa9\xc3\xa9");
  Keys("\177");
  EXPECT_EQ(Line(2), "  Size :  [   1,  1 ]    Filename : donn\xc3\xa9");
  EXPECT_EQ(Cursor(), "2,41");
  Keys("es.mat\n");
  EXPECT_EQ(ReadFile("donn\xc3\xa9" "es.mat"), MatrixText(1, 1, {1}));
  EXPECT_EQ(Quit(), 0);
}

// In the real part's view a complex block writes its real part only; undo brings it back.
TEST_F(EditorTest, OverwriteInOnePartKeepsTheOther) {
  WriteFile("c.mat", MatrixText(2, 2, Numbered(2, 2, true), true));
  Open({"c.mat"});
  Keys("jmiR");
  Run({{">o", 2, 2, {101, 102, 201, 101}, At(2, 2)},
       {"u", 2, 2, {101, 102, 201, 202}, At(2, 2)},
       {"\x12", 2, 2, {101, 102, 201, 101}, At(2, 2)}});
  EXPECT_EQ(Quit(), 0);
  EXPECT_EQ(ReadFile("c.mat"),
            MatrixText(2, 2, {101, -101, 102, -102, 201, -201, 101, -202}, true));
}

}  // namespace velk_test
