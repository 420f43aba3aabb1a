#include <gtest/gtest.h>

#include "tests/support/RootCommands.h"

int main(int argc, char** argv) {
  quennel::test::RootCommands::start();
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
