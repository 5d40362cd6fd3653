// A program that includes only the umbrella header reaches every floor: it
// builds a matrix, does arithmetic on it, writes and reads it through a typed
// binary record over a stream of the file table, holds it in a list beside a
// string and a complex number, and compares it the way the editor does.
#include "velk.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

TEST(Umbrella, OneProgramReachesEveryFolder) {
  MatInit();
  ObjectScope(1);
  Matrix *a = MatAdd(MatIDef(2), MatFillDef(2, 2, 0.5));  // core/, matrix/

  std::string path = testing::TempDir() + "velk-umbrella-XXXXXX";
  int tmp = mkstemp(path.data());
  ASSERT_GE(tmp, 0);
  close(tmp);
  int fd = FileOpen(path.c_str(), "w");  // sys/
  ASSERT_GE(fd, 0);
  MatWrite(a, FilePointer(fd, 1), 7);  // io/
  FileClose(fd);
  fd = FileOpen(path.c_str(), "r");
  Matrix *b = MatRead(MatDef("", 0, 0), FilePointer(fd, 0), 7);
  FileClose(fd);
  unlink(path.c_str());
  EXPECT_TRUE(MatEqualExact(a, b));  // editor/

  List *l = ListDef("L", 3);  // container/, scalar/
  ListSetObject(l, 1, kListMatrix, MatDup(a));
  ListSetObject(l, 2, kListString, vkStringFromText("text"));
  ListSetObject(l, 3, kListComplex, CompDef("", 1, 2));
  EXPECT_STREQ(static_cast<String *>(l->values[1].object)->text, "text");
  char text[kComplexTextSize];
  EXPECT_STREQ(CompToString(static_cast<Complex *>(l->values[2].object), text, nullptr), "(1,2)");
  ObjectScope(0);
  EXPECT_EQ(ListRegistryCheck(), 0);
  EXPECT_EQ(MatRegistryCheck(), 0);
}
