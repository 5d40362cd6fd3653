#include "container/string.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "support/exact.h"

namespace {

TEST(StringHolder, JoinsThePreviousArgumentAndRefusesLongOnes) {
  EXPECT_STREQ(set_string("ab"), "ab");
  EXPECT_STREQ(set_string("cd"), "abcd");
  std::string longest(8191, 'x');
  EXPECT_EQ(strlen(set_string(longest.c_str())), 8193u);
  EXPECT_EQ(strlen(set_string("")), 8191u);
  EXPECT_EXIT(set_string(std::string(8192, 'x').c_str()), testing::ExitedWithCode(0),
              Exact("\nset_string(...) : String is too long\n"));
}

}  // namespace
