#include <gtest/gtest.h>

#include "ctl/Table.h"

namespace quennel::test {

TEST(Table, AlignsItsColumns) {
  EXPECT_EQ(table({{"a", "long", "x"}, {"bcd", "e", "y"}}), "a    long  x\nbcd  e     y\n");
}

TEST(Table, LinesDoNotEndInSpaces) {
  EXPECT_EQ(table({{"a", "b"}, {"long", ""}, {"c"}}), "a     b\nlong\nc\n");
}

TEST(Table, CountsColumnsOfTheTerminalNotBytes) {
  EXPECT_EQ(table({{"é", "x"}, {"文", "x"}, {"e\xCC\x81", "x"}}), "é   x\n文  x\ne\xCC\x81   x\n");
}

TEST(Table, WithoutRowsIsEmpty) { EXPECT_EQ(table({}), ""); }

}  // namespace quennel::test
