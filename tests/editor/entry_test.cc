// The program's flow over its arguments, driven through a pseudo-terminal.
#include "tests/editor/editor_fixture.h"

namespace velk_test {
namespace {

using EntryTest = EditorTest;

TEST_F(EntryTest, ShipsExamplesThatOpenWithTheExactLayout) {
  std::filesystem::copy_file(std::string(VELK_SOURCE_DIR) + "/examples/real.mat", Path("real.mat"));
  Open({"real.mat"});
  EXPECT_EQ(Line(0), "");
  EXPECT_EQ(Line(1), "  Name :  [ real.mat ]");
  EXPECT_EQ(Line(2), "  Size :  [   4,  5 ]");
  EXPECT_EQ(Line(3), "");
  EXPECT_EQ(Line(4), "             (  1)           (  2)           (  3)           (  4)");
  EXPECT_EQ(Line(5), " (  1)   1.00000000E+00  0.00000000E+00  3.14159265E+00 -1.00000000E+00");
  EXPECT_EQ(Line(8), " (  4)   4.00000000E-01  0.00000000E+00  1.73205081E+00 -4.00000000E+00");
  EXPECT_EQ(Line(9), "");
  EXPECT_EQ(Cursor(), "2,12");  // every run starts on the row count field
  EXPECT_EQ(screen().unknown, 0);
  EXPECT_EQ(Quit(), 0);
  std::ifstream shipped(std::string(VELK_SOURCE_DIR) + "/examples/real.mat");
  std::stringstream text;
  text << shipped.rdbuf();
  EXPECT_EQ(ReadFile("real.mat"), text.str());
}

TEST_F(EntryTest, NoArgumentEditsTmpAndWritesOnlyWhatTheUserSaves) {
  Open({});
  EXPECT_EQ(Line(1), "  Name :  [ tmp ]");
  EXPECT_EQ(Line(2), "  Size :  [   0,  0 ]");
  Keys("2\n2\n");
  EXPECT_EQ(Line(2), "  Size :  [   2,  2 ]");
  Keys("w");
  EXPECT_EQ(Line(2), "  Size :  [   2,  2 ]    Filename :");
  Keys("saved.mat\n");
  EXPECT_EQ(Quit(), 0);
  EXPECT_EQ(ReadFile("saved.mat"), MatrixText(2, 2, {0, 0, 0, 0}));
  EXPECT_FALSE(Exists("tmp"));
}

TEST_F(EntryTest, NewFileIsWrittenEvenWhenLeftEmpty) {
  Open({"empty.mat", "grown.mat"});
  EXPECT_EQ(Line(1), "  Name :  [ empty.mat ]");
  EXPECT_EQ(Line(2), "  Size :  [   0,  0 ]");
  Keys("q");
  EXPECT_EQ(Line(1), "  Name :  [ grown.mat ]");
  Keys("3\n2\n");
  EXPECT_EQ(Cursor(), At(1, 1));
  EXPECT_EQ(Quit(), 0);
  EXPECT_EQ(ReadFile("empty.mat"), "# 0 0\n");
  EXPECT_EQ(ReadFile("grown.mat"), MatrixText(3, 2, {0, 0, 0, 0, 0, 0}));
}

TEST_F(EntryTest, UnchangedFileKeepsItsBytesAndTimeStamp) {
  std::string text = MatrixText(2, 2, {1, 2, 3, 4}) + "# a comment that a rewrite would drop\n";
  WriteFile("a.mat", text);
  AgeFile("a.mat");
  auto stamp = Stamp("a.mat");
  Open({"a.mat"});
  Keys("jlljk<");
  EXPECT_EQ(Quit(), 0);
  EXPECT_EQ(ReadFile("a.mat"), text);
  EXPECT_EQ(Stamp("a.mat"), stamp);
}

TEST_F(EntryTest, ValuesChangedAndChangedBackLeaveTheFileAlone) {
  WriteFile("a.mat", MatrixText(2, 2, {1.5, 2, 3, 4}));
  AgeFile("a.mat");
  auto stamp = Stamp("a.mat");
  Open({"a.mat"});
  Keys("j9\n");
  EXPECT_EQ(Cell(0, 0), 9);
  Keys("h1.5\n");
  EXPECT_EQ(Cell(0, 0), 1.5);
  EXPECT_EQ(Quit(), 0);
  EXPECT_EQ(Stamp("a.mat"), stamp);
}

TEST_F(EntryTest, HeaderlessFileIsReadByRowsAndWrittenBackInTheHeaderLayout) {
  WriteFile("plain.mat", "1 2 3\n4 5 6\n");
  WriteFile("kept.mat", "1 2\n\n3 4\n");
  Open({"plain.mat", "kept.mat"});
  EXPECT_EQ(Line(2), "  Size :  [   2,  3 ]");
  EXPECT_EQ(Cells(2, 3), (std::vector<double>{1, 2, 3, 4, 5, 6}));
  Keys("j7\nq");
  EXPECT_EQ(Line(1), "  Name :  [ kept.mat ]");
  EXPECT_EQ(Quit(), 0);
  EXPECT_EQ(ReadFile("plain.mat"), MatrixText(2, 3, {7, 2, 3, 4, 5, 6}));
  EXPECT_EQ(ReadFile("kept.mat"), "1 2\n\n3 4\n");
}

TEST_F(EntryTest, SeveralFilesAreEditedInTurn) {
  WriteFile("a.mat", MatrixText(1, 1, {5}));
  WriteFile("b.mat", MatrixText(1, 2, {1, 2}));
  Open({"a.mat", "b.mat", "c.mat"});
  EXPECT_EQ(Line(1), "  Name :  [ a.mat ]");
  Keys("j6\nq");
  EXPECT_EQ(Line(1), "  Name :  [ b.mat ]");
  EXPECT_EQ(Line(2), "  Size :  [   1,  2 ]");
  EXPECT_EQ(Cursor(), "2,12");
  Keys("q");
  EXPECT_EQ(Line(1), "  Name :  [ c.mat ]");
  Keys("1\n1\n4\n");
  EXPECT_EQ(Quit(), 0);
  EXPECT_EQ(ReadFile("a.mat"), MatrixText(1, 1, {6}));
  EXPECT_EQ(ReadFile("b.mat"), MatrixText(1, 2, {1, 2}));
  EXPECT_EQ(ReadFile("c.mat"), MatrixText(1, 1, {4}));
}

TEST_F(EntryTest, BrokenFileEndsTheProgramBeforeEditingWithStatusZero) {
  WriteFile("ok.mat", MatrixText(1, 1, {1}));
  WriteFile("bad.mat", "1 2\n3\n");
  Open({"ok.mat", "bad.mat", "never.mat"});
  Keys("q");
  EXPECT_EQ(pty_.Finish(), 0);
  EXPECT_NE(pty_.output.find("Data may be broken."), std::string::npos) << pty_.output;
  EXPECT_NE(pty_.output.find("in MatFileRead()."), std::string::npos);
  EXPECT_EQ(screen().bells, 1);
  EXPECT_EQ(ReadFile("bad.mat"), "1 2\n3\n");
  EXPECT_FALSE(Exists("never.mat"));
}

}  // namespace
}  // namespace velk_test
