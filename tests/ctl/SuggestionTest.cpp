#include <gtest/gtest.h>

#include <array>

#include "ctl/Suggestion.h"

namespace quennel::test {
namespace {

constexpr std::array<std::string_view, 3> known = {"skipFilename", "playSound", "set"};

}  // namespace

TEST(Suggestion, NamesTheWordThatWasProbablyMeant) {
  EXPECT_EQ(suggestion("playsound", known), "; did you mean playSound?");
  EXPECT_EQ(suggestion("skipFilname", known), "; did you mean skipFilename?");
  EXPECT_EQ(suggestion("sett", known, "--"), "; did you mean --set?");
}

TEST(Suggestion, IsEmptyForAWordLikeNone) {
  EXPECT_EQ(suggestion("colour", known), "");
  EXPECT_EQ(suggestion("get it", known), "");
  EXPECT_EQ(suggestion("", known), "");
  EXPECT_EQ(suggestion("set", {}), "");
}

}  // namespace quennel::test
