// Size mode, number entry, movement, scrolling, goto and the arrow keys,
// through a pty.
#include "tests/editor/editor_fixture.h"

namespace velk_test {

TEST_F(EditorTest, SizeModeResizesAndNumberEntryStoresInPlace) {
  WriteFile("a.mat", MatrixText(2, 2, {1, 2, 3, 4}));
  Open({"a.mat"});
  Keys("3");
  EXPECT_EQ(Line(2), "  Size :  [ 3  ,  2 ]");
  // The top left elements stay. From the column field editing starts at
  // (1, 1). Delete (\177) erases like backspace in every field.
  Run({{"\n", 3, 2, {1, 2, 3, 4, 0, 0}, "2,16"},
       {"1\n", 3, 1, {1, 3, 0}},
       {"shlh3\n", 3, 1, {1, 3, 0}, "2,16"},
       {"24\177\n", 3, 2, {1, 0, 3, 0, 0, 0}}});
  Keys("s0\nj");  // an empty matrix keeps the size fields
  EXPECT_EQ(Line(2), "  Size :  [   0,  2 ]");
  EXPECT_EQ(Cursor(), "2,12");
  Run({{"2\n\n", 2, 2, {0, 0, 0, 0}}});
  Keys("1");
  // A 17-character field at the cursor, written over the number.
  EXPECT_EQ(Line(5), " (  1)  1" + std::string(16, ' ') + "0.00000000E+00");
  EXPECT_EQ(Cursor(), "5,9");
  Keys(".5");
  EXPECT_EQ(Line(5), " (  1)  1.5" + std::string(14, ' ') + "0.00000000E+00");
  Run({{"\n", 2, 2, {1.5, 0, 0, 0}, At(1, 2)},
       {"8\n", 2, 2, {1.5, 8, 0, 0}, At(2, 1)},  // the last column wraps to the next row
       {"-2.5e1\r", 2, 2, {1.5, 8, -25, 0}, At(2, 2)},
       // Letters other than e are ignored, the last element keeps the
       // cursor, and the first character can be erased too.
       {"3x9\177\n", 2, 2, {1.5, 8, -25, 3}, At(2, 2)},
       {"5\b\n", 2, 2, {1.5, 8, -25, 0}, At(2, 2)}});
  Keys("sq");  // q leaves size mode and quits at once
  EXPECT_EQ(pty_.Finish(), 0);
  EXPECT_EQ(ReadFile("a.mat"), MatrixText(2, 2, {1.5, 8, -25, 0}));
}

TEST_F(EditorTest, MovementWrapsScrollsGoesToAndTakesTheArrowKeys) {
  WriteFile("a.mat", MatrixText(30, 10, Numbered(30, 10)));
  Open({"a.mat"});
  Keys("jg");
  EXPECT_EQ(Line(2), "  Size :  [  30, 10 ]    Goto : [   1,  1 ]");
  EXPECT_EQ(Cursor(), "2,34");
  Keys("x2");  // other keys are ignored; a digit opens the field
  EXPECT_EQ(Line(2).substr(34, 3), "2  ");
  Keys("0\n");
  EXPECT_EQ(Cursor(), "2,38");
  // Keys, then the cursor on element (y, x) with the view's first row and
  // column at (top, left); y = 0 for the size fields.
  struct Move {
    std::string keys;
    int y, x, top, left;
  };
  // Goto centres, takes row 0 as 1 and a column past the end as the last,
  // shows the last rows near the end, and h goes back to its row field.
  // Leaving the view scrolls one column; the last column wraps to the next
  // row, and back. Up and left from (1, 1) go to the size fields. 17 rows
  // show, then they scroll one at a time; up from row 1 wraps to the last row
  // of the previous column, and down from there back.
  const std::vector<Move> moves = {
      {"7\n", 20, 7, 12, 5},       {"g0\n99\n", 1, 10, 1, 7}, {"g29\n2\n", 29, 2, 14, 1},
      {"g5\nh3\n2\n", 3, 2, 1, 1}, {"<lll", 1, 4, 1, 1},      {"l", 1, 5, 1, 2},
      {"$", 1, 10, 1, 7},          {"l", 2, 1, 1, 1},         {"h", 1, 10, 1, 7},
      {"^", 1, 1, 1, 1},           {"k", 0, 0, 0, 0},         {"j", 1, 1, 1, 1},
      {"h", 0, 0, 0, 0},           {"ll", 1, 1, 1, 1},        {"jjjjjjjjjjjjjjjj", 17, 1, 1, 1},
      {"j", 18, 1, 2, 1},          {"<lk", 30, 1, 14, 1},     {"j", 1, 2, 1, 1}};
  // Nothing after the last element. The control keys ^P ^B, ^N ^F, ^A, space
  // and Enter, ^E; unbound keys, and Ctrl-Z where there is no job control, do
  // nothing. The arrow keys in both forms; other sequences are read whole and
  // ignored.
  const std::vector<Move> keys = {
      {">", 30, 10, 14, 7},        {"jl", 30, 10, 14, 7},          {"\x10\x02", 29, 9, 14, 7},
      {"\x0e\x06", 30, 10, 14, 7}, {"\x01", 30, 1, 14, 1},         {" \r", 30, 3, 14, 1},
      {"\x05", 30, 10, 14, 7},     {"xyz\x07\x1a", 30, 10, 14, 7}, {"\x1b[A", 29, 10, 14, 7},
      {"\x1b[D", 29, 9, 14, 7},    {"\x1bOB", 30, 9, 14, 7},       {"\x1b[C", 30, 10, 14, 7},
      {"\x1b[2~", 30, 10, 14, 7},  {"\x1b[15;2~", 30, 10, 14, 7},  {"<", 1, 1, 1, 1},
      {"\x1bOC", 1, 2, 1, 1},      {"\x1bOD", 1, 1, 1, 1},         {"\x1bOA", 0, 0, 0, 0},
      {"\x1b[B", 1, 1, 1, 1}};
  for (const auto *table : {&moves, &keys}) {
    for (const Move &s : *table) {
      SCOPED_TRACE("after keys: " + s.keys);
      Keys(s.keys);
      if (s.y == 0) {
        EXPECT_EQ(Cursor(), "2,12");
        continue;
      }
      EXPECT_EQ(Cursor(), At(s.y, s.x, s.top, s.left));
      // The column label and the row of the first column shown.
      EXPECT_EQ(Line(4).substr(13, 5), Row(s.left, {}).substr(1, 5));
      EXPECT_EQ(Line(5 + s.y - s.top).substr(0, 23), Row(s.y, {100.0 * s.y + s.left}));
    }
  }
  EXPECT_EQ(Line(2), "  Size :  [  30, 10 ]");
  std::string before = pty_.screen.All();
  pty_.screen.Clear();
  Keys("\x0c");  // Ctrl-L paints it all again
  EXPECT_EQ(pty_.screen.All(), before);
  EXPECT_EQ(Cursor(), At(1, 1));
  EXPECT_EQ(pty_.screen.unknown, 0);
  Keys("\x1b");  // a lone Escape quits
  EXPECT_EQ(pty_.Finish(), 0);
}

}  // namespace velk_test
