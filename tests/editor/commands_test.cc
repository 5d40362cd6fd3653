// Delete and put back, block copy, the replacing commands, the file prompts
// and complex matrices, through a pty.
#include "tests/editor/editor_fixture.h"

namespace velk_test {

TEST_F(EditorTest, DeleteAndPutBackThenCopyABlock) {
  WriteFile("a.mat", MatrixText(3, 2, Numbered(3, 2)));
  Open({"a.mat"});
  Run({{"jo", 3, 2, Numbered(3, 2)},         // no block yet: nothing
       {"jdr", 2, 2, {101, 102, 301, 302}},  // the middle row
       {"jp", 3, 2, Numbered(3, 2)},         // back above row 2: the earlier order
       {"p", 4, 2, {201, 202, 101, 102, 201, 202, 301, 302}},
       {"ldc", 4, 1, {201, 101, 201, 301}},
       {"\177c", 4, 1, {201, 101, 201, 301}},  // Delete; a single column cannot go
       {"p", 4, 2, {202, 201, 102, 101, 202, 201, 302, 301}},
       {"jldx", 4, 2, {202, 201, 102, 101, 202, 201, 302, 301}},   // other keys cancel
       {"\x0br", 3, 2, {102, 101, 202, 201, 302, 301}},            // Ctrl-K
       {">\x19", 4, 2, {102, 101, 202, 201, 202, 201, 302, 301}},  // Ctrl-Y on the last row
       // The block from the mark at (1, 2) to (2, 2), written at (3, 1); at
       // (4, 1) it would stick out.
       {"lmjihjo", 4, 2, {102, 101, 202, 201, 101, 201, 201, 301}, At(3, 1)},
       {"jo", 4, 2, {102, 101, 202, 201, 101, 201, 201, 301}, At(4, 1)}});
  EXPECT_EQ(Quit(), 0);
  EXPECT_EQ(ReadFile("a.mat"), MatrixText(4, 2, {102, 101, 202, 201, 101, 201, 201, 301}));
}

// Each replacing command sends the cursor home, whether or not it changed
// anything; then the file prompts, and a failed read ends the program.
TEST_F(EditorTest, ReplacingCommandsAndFilePrompts) {
  WriteFile("a.mat", MatrixText(2, 3, Numbered(2, 3)));
  WriteFile("other.mat", "8 9\n");
  Open({"a.mat"});
  Keys("jlF");
  EXPECT_EQ(Line(2), "  Size :  [   2,  3 ]    Number to fill :");
  std::vector<double> filled(6, 2.5);
  filled[0] = 7;
  std::vector<double> transposed = {101, 201, 102, 202, 103, 203};
  // A fill answer that does not convert keeps the matrix while nothing was
  // replaced. Later it takes back the result of the last replacing command,
  // the fill here, with the number entered into it in place, so the size
  // change since is undone. No views of a real matrix, and no conversion to
  // complex in velk-edit.
  Run({{"x\n", 2, 3, Numbered(2, 3)},
       {"lE", 2, 3, {1, 0, 0, 0, 1, 0}},
       {"lO", 2, 3, std::vector<double>(6, 1)},
       {"lZ", 2, 3, std::vector<double>(6, 0)},
       {"lF2.5\n", 2, 3, std::vector<double>(6, 2.5)},
       {"7\ns3\n\nFx\n", 2, 3, filled},
       {"lT", 3, 2, filled},
       {"lR", 3, 2, filled},
       {"lI", 3, 2, filled},
       {"lC", 3, 2, filled}});
  Keys("lQ");
  EXPECT_EQ(Line(2), "  Size :  [   3,  2 ]    Reset to initial matrix [y/n] ?");
  // The question takes one key, whatever it is: only "y" resets (the Tab
  // answers, so the "y" after it is a key of the editor, which has none).
  Run({{"n", 3, 2, filled},
       {"Q\ty", 3, 2, filled},
       {"Qy", 2, 3, Numbered(2, 3)},
       {"T", 3, 2, transposed}});
  Keys("lwoutx");
  EXPECT_EQ(Line(2), "  Size :  [   3,  2 ]    Filename : outx");
  Run({{"\177.mat\n", 3, 2, transposed, At(1, 2)},  // write keeps the cursor
       {"w\nr\n", 3, 2, transposed},                // an empty name cancels
       {"lrother.mat\n", 1, 2, {8, 9}}});
  EXPECT_EQ(Line(1), "  Name :  [ a.mat ]");
  EXPECT_EQ(ReadFile("out.mat"), MatrixText(3, 2, transposed));
  Keys("rnope\n");
  EXPECT_EQ(pty_.Finish(), 0);
  EXPECT_EQ(Line(4), "read << \"nope\" : Can't open file nope in MatFileRead().");  // in sight
}

// The rows of a complex matrix show both parts, then a stray E behind the last
// element; the cursor steps through the parts; T conjugates; the real and
// imaginary views join back.
TEST_F(EditorTest, ComplexLayoutMovementTransposeAndViews) {
  WriteFile("c.mat", MatrixText(2, 3, Numbered(2, 3, true), true));
  WriteFile("d.mat", MatrixText(1, 2, Numbered(1, 2, true), true));
  Open({"c.mat", "d.mat"});
  EXPECT_EQ(Line(4), "           (  1)-Real      (  1)-Imag      (  2)-Real      (  2)-Imag");
  EXPECT_EQ(Line(6), Row(2, {201, -201, 202, -202}) + "E");
  Keys("jllll");  // two elements across: the step onto column 3 scrolls one
  EXPECT_EQ(Line(5), Row(1, {102, -102, 103, -103}) + "E");
  EXPECT_EQ(Cursor(), "5,40");
  const struct {
    const char *keys;
    const char *at;
  } steps[] = {{"hh", "5,8"}, {"h", "5,24"}, {"hh", "2,12"}, {"jj", "6,8"},
               {"j", "5,24"}, {"j", "6,24"}, {"j", "5,40"},  {"k", "6,24"},
               {"k", "5,24"}, {"k", "6,8"},  {"k", "5,8"},   {"jl7\n", "6,40"}};
  for (const auto &s : steps) {
    SCOPED_TRACE(s.keys);
    Keys(s.keys);
    EXPECT_EQ(Cursor(), s.at);
  }
  Keys("T");
  EXPECT_EQ(Line(2), "  Size :  [   3,  2 ]");
  EXPECT_EQ(Line(5), Row(1, {101, 101, 201, -7}) + "E");  // conjugated
  Keys("R");
  EXPECT_EQ(Line(1), "  Name :  [ Re(c.mat) ]");
  EXPECT_EQ(Line(4), "             (  1)           (  2)");
  // Delete, read and size are not there while one part is shown.
  Run({{"5\ndrs", 3, 2, {5, 201, 102, 202, 103, 203}, At(1, 2)}});
  Keys("I");  // the real part goes back in, the imaginary part shows
  EXPECT_EQ(Line(1), "  Name :  [ Im(c.mat) ]");
  Run({{"-1\nCR", 3, 2, {5, 201, 102, 202, 103, 203}}});
  Keys("q");  // quitting in a view returns the whole matrix
  EXPECT_EQ(ReadFile("c.mat"),
            MatrixText(3, 2, {5, -1, 201, -7, 102, 102, 202, 202, 103, 103, 203, 203}, true));
  Keys("jE");  // the replacing commands keep the class
  EXPECT_EQ(Line(5), Row(1, {1, 0, 0, 0}) + "E");
  Keys("F3\ns\n1\n");
  EXPECT_EQ(Line(5), Row(1, {3, 0}) + "E");
  EXPECT_EQ(Quit(), 0);
  EXPECT_EQ(ReadFile("d.mat"), MatrixText(1, 1, {3, 0}, true));
}

}  // namespace velk_test
