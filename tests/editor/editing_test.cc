// Number entry, movement, scrolling, size mode and goto, through a pty.
#include "tests/editor/editor_fixture.h"

namespace velk_test {
namespace {

using EditingTest = EditorTest;

TEST_F(EditingTest, NumberEntryStoresInPlaceAndMovesOn) {
  WriteFile("a.mat", MatrixText(2, 2, {1, 2, 3, 4}));
  Open({"a.mat"});
  Keys("j");
  EXPECT_EQ(Cursor(), At(1, 1));
  Keys("1");
  // A 17-character field at the cursor, written over the number.
  EXPECT_EQ(screen().Text(5, 8, 17), "1" + std::string(16, ' '));
  EXPECT_EQ(Cursor(), "5,9");
  Keys(".5");
  EXPECT_EQ(screen().Text(5, 8, 17), "1.5" + std::string(14, ' '));
  Keys("\n");
  EXPECT_EQ(Cell(0, 0), 1.5);
  EXPECT_EQ(Line(5), " (  1)   1.50000000E+00  2.00000000E+00");
  EXPECT_EQ(Cursor(), At(1, 2));
  Keys("2\n");  // the last column wraps to the next row
  EXPECT_EQ(Cursor(), At(2, 1));
  Keys("-2.5e1\r");
  EXPECT_EQ(Cell(1, 0), -25);
  EXPECT_EQ(Cursor(), At(2, 2));
  Keys("9\x7f" "3x\n");  // 127 erases in the field; letters other than e are ignored
  EXPECT_EQ(Cell(1, 1), 3);
  EXPECT_EQ(Cursor(), At(2, 2));  // the last element stays
  Keys("5\b\n");  // the first character can be erased too: empty is 0
  EXPECT_EQ(Cell(1, 1), 0);
  Keys("-\n");
  EXPECT_EQ(Cell(1, 1), 0);
  EXPECT_EQ(Quit(), 0);
  EXPECT_EQ(ReadFile("a.mat"), MatrixText(2, 2, {1.5, 2, -25, 0}));
}

TEST_F(EditingTest, MovementWrapsScrollsAndFallsIntoSizeMode) {
  WriteFile("a.mat", MatrixText(3, 6, Numbered(3, 6)));
  Open({"a.mat"});
  Keys("jlll");
  EXPECT_EQ(Cursor(), At(1, 4));
  EXPECT_EQ(screen().Text(4, 13, 5), "(  1)");
  Keys("l");  // leaving the view scrolls one column
  EXPECT_EQ(Cursor(), At(1, 5, 1, 2));
  EXPECT_EQ(Line(4), "             (  2)           (  3)           (  4)           (  5)");
  EXPECT_EQ(Cell(0, 0), 102);
  Keys("l");
  EXPECT_EQ(Cursor(), At(1, 6, 1, 3));
  Keys("l");  // wrap to the next row, view back to column 1
  EXPECT_EQ(Cursor(), At(2, 1));
  EXPECT_EQ(Cell(1, 0), 201);
  Keys("h");
  EXPECT_EQ(Cursor(), At(1, 6, 1, 3));
  Keys("jjj");  // down stops at the last element
  EXPECT_EQ(Cursor(), At(3, 6, 1, 3));
  Keys("kkk");  // up from row 1 wraps to the last row of the previous column
  EXPECT_EQ(Cursor(), At(3, 5, 1, 3));
  Keys("j");  // down from the last row wraps to row 1 of the next column
  EXPECT_EQ(Cursor(), At(1, 6, 1, 3));
  Keys("<");
  EXPECT_EQ(Cursor(), At(1, 1));
  EXPECT_EQ(Cell(0, 0), 101);
  Keys("k");  // up from (1, 1) is the size fields
  EXPECT_EQ(Cursor(), "2,12");
  Keys("j");
  EXPECT_EQ(Cursor(), At(1, 1));
  Keys("h");  // so is left
  EXPECT_EQ(Cursor(), "2,12");
  Keys("ll");
  EXPECT_EQ(Cursor(), At(1, 1));
  Keys("$");
  EXPECT_EQ(Cursor(), At(1, 6, 1, 3));
  Keys("^");
  EXPECT_EQ(Cursor(), At(1, 1));
  Keys(">");
  EXPECT_EQ(Cursor(), At(3, 6, 1, 3));
  Keys("\x10\x02");  // Ctrl-P, Ctrl-B
  EXPECT_EQ(Cursor(), At(2, 5, 1, 3));
  Keys("\x0e\x06");  // Ctrl-N, Ctrl-F
  EXPECT_EQ(Cursor(), At(3, 6, 1, 3));
  Keys("\x01");  // Ctrl-A
  EXPECT_EQ(Cursor(), At(3, 1));
  Keys(" \r");  // space and Enter move right
  EXPECT_EQ(Cursor(), At(3, 3));
  Keys("\x05");  // Ctrl-E
  EXPECT_EQ(Cursor(), At(3, 6, 1, 3));
  Keys("xyz\x07");  // unbound keys change nothing
  EXPECT_EQ(Cursor(), At(3, 6, 1, 3));
  EXPECT_EQ(Line(2), "  Size :  [   3,  6 ]");
  EXPECT_EQ(screen().unknown, 0);
  EXPECT_EQ(Quit(), 0);
}

TEST_F(EditingTest, RowsScrollOneAtATime) {
  WriteFile("a.mat", MatrixText(20, 2, Numbered(20, 2)));
  Open({"a.mat"});
  Keys("j" + std::string(16, 'j'));
  EXPECT_EQ(Cursor(), At(17, 1));
  EXPECT_EQ(Line(21).substr(0, 6), " ( 17)");
  EXPECT_EQ(Line(22), "");  // 17 rows are visible
  Keys("j");
  EXPECT_EQ(Cursor(), At(18, 1, 2));
  EXPECT_EQ(Line(5).substr(0, 6), " (  2)");
  EXPECT_EQ(Cell(16, 1), 1802);
  Keys("jjj");  // from the last row to row 1 of the next column
  EXPECT_EQ(Cursor(), At(1, 2));
  EXPECT_EQ(Line(5).substr(0, 6), " (  1)");
  Keys("k");  // up from row 1 of column 2 wraps to the last rows of column 1
  EXPECT_EQ(Cursor(), At(20, 1, 4));
  Keys("k");
  EXPECT_EQ(Cursor(), At(19, 1, 4));
  Keys(">");
  EXPECT_EQ(Cursor(), At(20, 2, 4));
  Keys("<k");
  EXPECT_EQ(Cursor(), "2,12");
  EXPECT_EQ(Quit(), 0);
}

TEST_F(EditingTest, SizeModeResizesKeepingTheTopLeftElements) {
  WriteFile("a.mat", MatrixText(2, 2, {1, 2, 3, 4}));
  Open({"a.mat"});
  Keys("3");
  EXPECT_EQ(Line(2), "  Size :  [ 3  ,  2 ]");
  int clears = screen().clears;
  Keys("\n");
  EXPECT_EQ(screen().clears, clears + 1);
  EXPECT_EQ(Line(2), "  Size :  [   3,  2 ]");
  EXPECT_EQ(Cursor(), "2,16");  // on to the column field
  EXPECT_EQ(Cells(3, 2), (std::vector<double>{1, 2, 3, 4, 0, 0}));
  Keys("1\n");  // after the column field, editing starts at (1, 1)
  EXPECT_EQ(Line(2), "  Size :  [   3,  1 ]");
  EXPECT_EQ(Line(5), " (  1)   1.00000000E+00");
  EXPECT_EQ(Line(6), " (  2)   3.00000000E+00");
  EXPECT_EQ(Cursor(), At(1, 1));
  Keys("shlh");
  EXPECT_EQ(Cursor(), "2,12");
  clears = screen().clears;
  Keys("3\n");  // the same size: only the header is redrawn
  EXPECT_EQ(screen().clears, clears);
  EXPECT_EQ(Line(2), "  Size :  [   3,  1 ]");
  EXPECT_EQ(Cursor(), "2,16");
  Keys("4\x7f" "2\n");
  EXPECT_EQ(Line(2), "  Size :  [   3,  2 ]");
  EXPECT_EQ(Cells(3, 2), (std::vector<double>{1, 0, 3, 0, 0, 0}));
  Keys("s0\n");
  EXPECT_EQ(Line(2), "  Size :  [   0,  2 ]");
  Keys("j");  // an empty matrix keeps the size fields
  EXPECT_EQ(Cursor(), "2,12");
  Keys("1\n\n");
  EXPECT_EQ(Cursor(), At(1, 1));
  Keys("7\nsq");  // q leaves size mode and quits at once
  EXPECT_EQ(pty_.Finish(), 0);
  EXPECT_EQ(ReadFile("a.mat"), MatrixText(1, 2, {7, 0}));
}

TEST_F(EditingTest, GotoCentresClampsAndGoesBackToTheRowField) {
  WriteFile("a.mat", MatrixText(30, 10, Numbered(30, 10)));
  Open({"a.mat"});
  Keys("jg");
  EXPECT_EQ(Line(2), "  Size :  [  30, 10 ]    Goto : [   1,  1 ]");
  EXPECT_EQ(Cursor(), "2,34");
  Keys("x2");  // other keys are ignored; a digit opens the field
  EXPECT_EQ(screen().Text(2, 34, 3), "2  ");
  Keys("0\n");
  EXPECT_EQ(Cursor(), "2,38");
  Keys("7\n");
  EXPECT_EQ(Line(2), "  Size :  [  30, 10 ]");
  EXPECT_EQ(Cursor(), At(20, 7, 12, 5));
  EXPECT_EQ(Line(5).substr(0, 6), " ( 12)");
  EXPECT_EQ(screen().Text(4, 13, 5), "(  5)");
  EXPECT_EQ(Cell(8, 2), 2007);
  Keys("g0\n99\n");  // 0 is row 1; past the end is the last column
  EXPECT_EQ(Cursor(), At(1, 10, 1, 7));
  Keys("g29\n2\n");  // near the end the last rows show
  EXPECT_EQ(Cursor(), At(29, 2, 14, 1));
  Keys("g5\nh3\n2\n");
  EXPECT_EQ(Cursor(), At(3, 2));
  EXPECT_EQ(Quit(), 0);
}

TEST_F(EditingTest, ArrowKeysMoveAndOtherSequencesAreIgnored) {
  WriteFile("a.mat", MatrixText(2, 3, Numbered(2, 3)));
  Open({"a.mat"});
  Send("\x1b[B");  // down: out of the size fields
  EXPECT_EQ(Cursor(), At(1, 1));
  Send("\x1b[C");
  Send("\x1bOC");
  EXPECT_EQ(Cursor(), At(1, 3));
  Send("\x1b[B");
  Send("\x1b[D");
  EXPECT_EQ(Cursor(), At(2, 2));
  Send("\x1bOA");
  EXPECT_EQ(Cursor(), At(1, 2));
  Send("\x1b[2~");  // not an arrow: consumed, no quit
  Send("\x1b[15;2~");
  EXPECT_EQ(Cursor(), At(1, 2));
  EXPECT_FALSE(pty_.exited());
  Keys("5\n");
  EXPECT_EQ(Cell(0, 1), 5);
  Keys("\x1b");  // a lone Escape quits
  EXPECT_EQ(pty_.Finish(), 0);
  std::vector<double> v = Numbered(2, 3);
  v[1] = 5;
  EXPECT_EQ(ReadFile("a.mat"), MatrixText(2, 3, v));
}

TEST_F(EditingTest, CtrlLRepaintsTheWholeScreen) {
  WriteFile("a.mat", MatrixText(2, 5, Numbered(2, 5)));
  Open({"a.mat"});
  Keys("jllll");
  std::string before = screen().All();
  pty_.screen.Clear();
  Keys("\x0c");
  EXPECT_EQ(screen().All(), before);
  EXPECT_EQ(Cursor(), At(1, 5, 1, 2));
  EXPECT_EQ(Quit(), 0);
}

}  // namespace
}  // namespace velk_test
