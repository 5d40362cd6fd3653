// Delete and put back, block copy, the replacing commands and the file
// prompts, through a pty.
#include "tests/editor/editor_fixture.h"

namespace velk_test {
namespace {

using CommandsTest = EditorTest;

TEST_F(CommandsTest, DeleteAndPutBackRowsAndColumns) {
  WriteFile("a.mat", MatrixText(3, 2, Numbered(3, 2)));
  Open({"a.mat"});
  Keys("jjdr");  // the middle row
  EXPECT_EQ(Line(2), "  Size :  [   2,  2 ]");
  EXPECT_EQ(Cells(2, 2), (std::vector<double>{101, 102, 301, 302}));
  EXPECT_EQ(Line(7), "");
  EXPECT_EQ(Cursor(), At(1, 1));
  Keys("jp");  // back above row 2: the earlier order
  EXPECT_EQ(Cells(3, 2), Numbered(3, 2));
  EXPECT_EQ(Cursor(), At(1, 1));
  Keys("p");  // above row 1 this time
  EXPECT_EQ(Line(2), "  Size :  [   4,  2 ]");
  EXPECT_EQ(Cells(4, 2), (std::vector<double>{201, 202, 101, 102, 201, 202, 301, 302}));
  Keys("ldc");
  EXPECT_EQ(Line(2), "  Size :  [   4,  1 ]");
  EXPECT_EQ(Cells(4, 1), (std::vector<double>{201, 101, 201, 301}));
  Keys("\x7f" "c");  // a single column cannot go
  EXPECT_EQ(Line(2), "  Size :  [   4,  1 ]");
  Keys("p");
  EXPECT_EQ(Cells(4, 2), (std::vector<double>{202, 201, 102, 101, 202, 201, 302, 301}));
  Keys("jldx");  // any other key cancels, and the cursor still goes home
  EXPECT_EQ(Line(2), "  Size :  [   4,  2 ]");
  EXPECT_EQ(Cursor(), At(1, 1));
  Keys("\x0br");  // Ctrl-K r: the first row
  EXPECT_EQ(Cells(3, 2), (std::vector<double>{102, 101, 202, 201, 302, 301}));
  Keys(">\x19");  // Ctrl-Y on the last row
  EXPECT_EQ(Cells(4, 2), (std::vector<double>{102, 101, 202, 201, 202, 201, 302, 301}));
  EXPECT_EQ(Quit(), 0);
  EXPECT_EQ(ReadFile("a.mat"), MatrixText(4, 2, {102, 101, 202, 201, 202, 201, 302, 301}));
}

TEST_F(CommandsTest, BlockCopiedFromTheMarkOverwritesOnlyWhereItFits) {
  WriteFile("a.mat", MatrixText(4, 4, Numbered(4, 4)));
  Open({"a.mat"});
  Keys("jo");  // no block yet: nothing
  EXPECT_EQ(Cells(4, 4), Numbered(4, 4));
  Keys("mjli");
  Keys("jlo");
  EXPECT_EQ(Cursor(), At(3, 3));  // overwrite keeps the cursor
  std::vector<double> v = Numbered(4, 4);
  v[10] = 101, v[11] = 102, v[14] = 201, v[15] = 202;
  EXPECT_EQ(Cells(4, 4), v);
  Keys("lo");  // at (3, 4) the block would stick out
  EXPECT_EQ(Cells(4, 4), v);
  EXPECT_EQ(Quit(), 0);
  EXPECT_EQ(ReadFile("a.mat"), MatrixText(4, 4, v));
}

TEST_F(CommandsTest, ReplacingCommandsSendTheCursorHome) {
  WriteFile("a.mat", MatrixText(2, 3, Numbered(2, 3)));
  Open({"a.mat"});
  Keys("jlE");
  EXPECT_EQ(Cells(2, 3), (std::vector<double>{1, 0, 0, 0, 1, 0}));
  EXPECT_EQ(Cursor(), At(1, 1));
  Keys("lO");
  EXPECT_EQ(Cells(2, 3), std::vector<double>(6, 1));
  EXPECT_EQ(Cursor(), At(1, 1));
  Keys("lZ");
  EXPECT_EQ(Cells(2, 3), std::vector<double>(6, 0));
  Keys("lF");
  EXPECT_EQ(Line(2), "  Size :  [   2,  3 ]    Number to fill :");
  Keys("2.5\n");
  EXPECT_EQ(Line(2), "  Size :  [   2,  3 ]");
  EXPECT_EQ(Cells(2, 3), std::vector<double>(6, 2.5));
  EXPECT_EQ(Cursor(), At(1, 1));
  Keys("lT");
  EXPECT_EQ(Line(2), "  Size :  [   3,  2 ]");
  EXPECT_EQ(Cursor(), At(1, 1));
  Keys("Q");
  EXPECT_EQ(Line(2), "  Size :  [   3,  2 ]    Reset to initial matrix [y/n] ?");
  Keys("n");  // one character answers
  EXPECT_EQ(Line(2), "  Size :  [   3,  2 ]");
  EXPECT_EQ(Cells(3, 2), std::vector<double>(6, 2.5));
  Keys("Qy");
  EXPECT_EQ(Cells(2, 3), Numbered(2, 3));
  Keys("T");
  EXPECT_EQ(Cells(3, 2), (std::vector<double>{101, 201, 102, 202, 103, 203}));
  EXPECT_EQ(Quit(), 0);
  EXPECT_EQ(ReadFile("a.mat"), MatrixText(3, 2, {101, 201, 102, 202, 103, 203}));
}

TEST_F(CommandsTest, FillAnswerThatDoesNotConvertTakesTheLastReplacingResult) {
  WriteFile("a.mat", MatrixText(2, 2, {1, 2, 3, 4}));
  Open({"a.mat"});
  Keys("jFx\n");  // nothing replaced yet: the matrix stays
  EXPECT_EQ(Cells(2, 2), (std::vector<double>{1, 2, 3, 4}));
  Keys("Z7\n");  // entered into the zero matrix in place
  Keys("s3\n\njj5\n");
  EXPECT_EQ(Line(2), "  Size :  [   3,  2 ]");
  EXPECT_EQ(Cells(3, 2), (std::vector<double>{7, 0, 0, 0, 5, 0}));
  Keys("F\n");  // the size change and the later entry are undone
  EXPECT_EQ(Line(2), "  Size :  [   2,  2 ]");
  EXPECT_EQ(Cells(2, 2), (std::vector<double>{7, 0, 0, 0}));
  EXPECT_EQ(Line(7), "");
  EXPECT_EQ(Quit(), 0);
  EXPECT_EQ(ReadFile("a.mat"), MatrixText(2, 2, {7, 0, 0, 0}));
}

TEST_F(CommandsTest, ReadAndWritePromptTheFileName) {
  WriteFile("a.mat", MatrixText(2, 2, {1, 2, 3, 4}));
  WriteFile("other.mat", "8 9\n");
  Open({"a.mat"});
  Keys("jlwoutx");
  EXPECT_EQ(Line(2), "  Size :  [   2,  2 ]    Filename : outx");
  Keys("\x7f");
  EXPECT_EQ(Line(2), "  Size :  [   2,  2 ]    Filename : out");
  Keys(".mat\n");
  EXPECT_EQ(Line(2), "  Size :  [   2,  2 ]");
  EXPECT_EQ(Cursor(), At(1, 2));  // write does not move the cursor
  Keys("w\n");  // an empty name cancels
  Keys("r\n");
  EXPECT_EQ(Cells(2, 2), (std::vector<double>{1, 2, 3, 4}));
  Keys("lrother.mat\n");
  EXPECT_EQ(Line(1), "  Name :  [ a.mat ]");
  EXPECT_EQ(Line(2), "  Size :  [   1,  2 ]");
  EXPECT_EQ(Line(6), "");
  EXPECT_EQ(Cells(1, 2), (std::vector<double>{8, 9}));
  EXPECT_EQ(Cursor(), At(1, 1));
  EXPECT_EQ(Quit(), 0);
  EXPECT_EQ(ReadFile("out.mat"), MatrixText(2, 2, {1, 2, 3, 4}));
  EXPECT_EQ(ReadFile("a.mat"), MatrixText(1, 2, {8, 9}));
  EXPECT_EQ(ReadFile("other.mat"), "8 9\n");
}

TEST_F(CommandsTest, ReadingAMissingFileEndsWithTheReportInSight) {
  WriteFile("a.mat", MatrixText(1, 1, {1}));
  Open({"a.mat"});
  Keys("j2\nrnope\n");
  EXPECT_EQ(pty_.Finish(), 0);
  EXPECT_EQ(Line(4), "read << \"nope\" : Can't open file nope in MatFileRead().") << screen().All();
  EXPECT_EQ(screen().bells, 1);
  EXPECT_EQ(ReadFile("a.mat"), MatrixText(1, 1, {1}));
}

}  // namespace
}  // namespace velk_test
