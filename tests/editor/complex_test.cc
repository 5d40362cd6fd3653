// Complex matrices on the screen: the two-part layout, movement through the
// parts, the conjugate transpose and the real and imaginary views.
#include "tests/editor/editor_fixture.h"

namespace velk_test {
namespace {

using ComplexTest = EditorTest;

// Element (r, c) is (100 r + c) - (100 r + c) i; pairs row by row.
std::vector<double> Pairs(int rows, int cols) {
  std::vector<double> v;
  for (int r = 1; r <= rows; r++)
    for (int c = 1; c <= cols; c++) {
      v.push_back(100 * r + c);
      v.push_back(-(100 * r + c));
    }
  return v;
}

TEST_F(ComplexTest, ElementsShowBothPartsWithTheStrayE) {
  WriteFile("c.mat", MatrixText(2, 3, Pairs(2, 3), true));
  Open({"c.mat"});
  EXPECT_EQ(Line(2), "  Size :  [   2,  3 ]");
  EXPECT_EQ(Line(4),
            "           (  1)-Real      (  1)-Imag      (  2)-Real      (  2)-Imag");
  EXPECT_EQ(Line(5), " (  1) " + Shown(101) + Shown(-101) + Shown(102) + Shown(-102) + "E");
  EXPECT_EQ(Line(6), " (  2) " + Shown(201) + Shown(-201) + Shown(202) + Shown(-202) + "E");
  EXPECT_EQ(Quit(), 0);
}

TEST_F(ComplexTest, MovementStepsThroughTheTwoParts) {
  WriteFile("c.mat", MatrixText(2, 3, Pairs(2, 3), true));
  Open({"c.mat"});
  const char *const right[] = {"5,8", "5,24", "5,40", "5,56"};
  Keys("j");
  EXPECT_EQ(Cursor(), right[0]);
  for (int k = 1; k < 4; k++) {
    Keys("l");
    EXPECT_EQ(Cursor(), right[k]);
  }
  Keys("l");  // two elements across: the view scrolls one element
  EXPECT_EQ(Cursor(), "5,40");
  EXPECT_EQ(Line(4),
            "           (  2)-Real      (  2)-Imag      (  3)-Real      (  3)-Imag");
  EXPECT_EQ(Line(5), " (  1) " + Shown(102) + Shown(-102) + Shown(103) + Shown(-103) + "E");
  Keys("hh");
  EXPECT_EQ(Cursor(), "5,8");
  Keys("h");  // the imaginary part of (1, 1), scrolled back into view
  EXPECT_EQ(Cursor(), "5,24");
  Keys("hh");
  EXPECT_EQ(Cursor(), "2,12");
  const char *const down[] = {"6,8", "5,24", "6,24", "5,40"};
  Keys("j");
  for (const char *at : down) {
    Keys("j");
    EXPECT_EQ(Cursor(), at);
  }
  const char *const up[] = {"6,24", "5,24", "6,8", "5,8"};
  for (const char *at : up) {
    Keys("k");
    EXPECT_EQ(Cursor(), at);
  }
  Keys("jl7\n");  // into the imaginary part of (2, 1)
  EXPECT_EQ(screen().Text(6, 23, 16), Shown(7));
  EXPECT_EQ(Cursor(), "6,40");
  EXPECT_EQ(Quit(), 0);
  std::vector<double> v = Pairs(2, 3);
  v[7] = 7;
  EXPECT_EQ(ReadFile("c.mat"), MatrixText(2, 3, v, true));
}

TEST_F(ComplexTest, TransposeConjugatesAndViewsJoinBack) {
  WriteFile("c.mat", MatrixText(2, 3, Pairs(2, 3), true));
  Open({"c.mat"});
  Keys("jT");
  EXPECT_EQ(Line(2), "  Size :  [   3,  2 ]");
  EXPECT_EQ(Line(5), " (  1) " + Shown(101) + Shown(101) + Shown(201) + Shown(201) + "E");
  EXPECT_EQ(Line(7), " (  3) " + Shown(103) + Shown(103) + Shown(203) + Shown(203) + "E");
  Keys("R");
  EXPECT_EQ(Line(1), "  Name :  [ Re(c.mat) ]");
  EXPECT_EQ(Line(4), "             (  1)           (  2)");
  EXPECT_EQ(Cells(3, 2), (std::vector<double>{101, 201, 102, 202, 103, 203}));
  Keys("5\n");
  Keys("drs");  // delete, read and size are not there while one part is shown
  EXPECT_EQ(Line(2), "  Size :  [   3,  2 ]");
  EXPECT_EQ(Cursor(), At(1, 2));
  Keys("I");  // the real part goes back in, the imaginary part shows
  EXPECT_EQ(Line(1), "  Name :  [ Im(c.mat) ]");
  EXPECT_EQ(Cells(3, 2), (std::vector<double>{101, 201, 102, 202, 103, 203}));
  Keys("-1\nC");  // no conversion in velk-edit
  EXPECT_EQ(Line(1), "  Name :  [ Im(c.mat) ]");
  Keys("R");
  EXPECT_EQ(Cells(3, 2), (std::vector<double>{5, 201, 102, 202, 103, 203}));
  EXPECT_EQ(Quit(), 0);  // quitting in a view returns the whole matrix
  EXPECT_EQ(ReadFile("c.mat"), MatrixText(3, 2,
                                          {5, -1, 201, 201, 102, 102, 202, 202, 103, 103, 203, 203},
                                          true));
}

TEST_F(ComplexTest, WholeMatrixCommandsKeepTheClass) {
  WriteFile("c.mat", MatrixText(1, 2, Pairs(1, 2), true));
  Open({"c.mat"});
  Keys("jE");
  EXPECT_EQ(Line(5), " (  1) " + Shown(1) + Shown(0) + Shown(0) + Shown(0) + "E");
  Keys("F3\n");
  EXPECT_EQ(Line(5), " (  1) " + Shown(3) + Shown(0) + Shown(3) + Shown(0) + "E");
  Keys("s\n1\n");
  EXPECT_EQ(Line(4), "           (  1)-Real      (  1)-Imag");
  EXPECT_EQ(Line(5), " (  1) " + Shown(3) + Shown(0) + "E");
  EXPECT_EQ(Quit(), 0);
  EXPECT_EQ(ReadFile("c.mat"), MatrixText(1, 1, {3, 0}, true));
}

}  // namespace
}  // namespace velk_test
