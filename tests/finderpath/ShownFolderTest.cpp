#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <string>

#include "finderpath/ShownFolder.h"

namespace quennel::test {
namespace {

using Answer = std::optional<std::string>;

/// The places of the left column, upper and lower, then those of the right one.
Answer shown(const std::array<Answer, 4>& places, const std::string& title) {
  return folderShown({ColumnOfDrops{places[0], places[1]}, ColumnOfDrops{places[2], places[3]}},
                     title);
}

constexpr auto nothing = std::nullopt;

TEST(ShownFolder, IsWhereAllDropsGo) {
  EXPECT_EQ(shown({"/d/a", "/d/a", "/d/a", "/d/a"}, "a"), "/d/a");
}

TEST(ShownFolder, IsKnownWithoutItsNameWhenAllPlacesAgree) {
  EXPECT_EQ(shown({"/home/me", "/home/me", "/home/me", "/home/me"}, "Home"), "/home/me");
}

TEST(ShownFolder, MayBeTheRoot) { EXPECT_EQ(shown({"/", "/", "/", "/"}, "File System"), "/"); }

TEST(ShownFolder, HoldsTheItemsThatDropsFallOn) {
  EXPECT_EQ(shown({"/d/a/1", "/d/a/2", "/d/a/3", "/d/a/4"}, "a"), "/d/a");
  EXPECT_EQ(shown({"/d/a/1", "/d/a", "/d/a", "/d/a"}, "a"), "/d/a");
  EXPECT_EQ(shown({"/home/me/1", "/home/me/2", "/home/me", "/home/me"}, "Home"), "/home/me");
}

TEST(ShownFolder, IsNotTheOneItemThatLiesUnderAllPlacesOfAColumn) {
  EXPECT_EQ(shown({"/d/a/large", "/d/a/large", "/d/a", "/d/a"}, "a"), "/d/a");
}

TEST(ShownFolder, OfTheSameNameAsTheOneAroundItIsTheInnerOne) {
  EXPECT_EQ(shown({"/d/a/a", "/d/a/a", "/d/a/a", "/d/a/a"}, "a"), "/d/a/a");
}

TEST(ShownFolder, MayHoldAnItemOfItsOwnName) {
  EXPECT_EQ(shown({"/d/a/a", "/d/a", "/d/a", "/d/a"}, "a"), "/d/a");
}

TEST(ShownFolder, IsKnownByItsNameWhenSomePlacesTakeNothing) {
  EXPECT_EQ(shown({"/d/a", "/d/a", nothing, nothing}, "a"), "/d/a");
  EXPECT_EQ(shown({nothing, "/d/a/item", nothing, nothing}, "a"), "/d/a");
}

TEST(ShownFolder, IsNotKnownWithoutItsNameWhenSomePlacesTakeNothing) {
  EXPECT_EQ(shown({"/home/me", "/home/me", "/home/me", nothing}, "Home"), nothing);
  EXPECT_EQ(shown({"/home/me", "/home/me", nothing, nothing}, "Home"), nothing);
}

TEST(ShownFolder, IsThatOfThePaneThatTheTitleNames) {
  EXPECT_EQ(shown({"/d/a", "/d/a", "/d/b", "/d/b"}, "b - Thunar"), "/d/b");
  EXPECT_EQ(shown({"/d/a", "/d/a", "/d/b", "/d/b"}, "a - Thunar"), "/d/a");
  EXPECT_EQ(shown({"/d/a/1", "/d/a/2", "/d/b", "/d/b"}, "a"), "/d/a");
}

TEST(ShownFolder, MayBeShownBesideTheFolderAroundIt) {
  EXPECT_EQ(shown({"/d", "/d", "/d/a", "/d/a"}, "a"), "/d/a");
  EXPECT_EQ(shown({"/d", "/d", "/d/a", "/d/a"}, "d"), "/d");
}

TEST(ShownFolder, OfTwoPanesIsNotKnownWithoutATitleThatNamesIt) {
  EXPECT_EQ(shown({"/d/a", "/d/a", "/d/b", "/d/b"}, "Home"), nothing);
  EXPECT_EQ(shown({"/d", "/d", "/d/a", "/d/a"}, "Music"), nothing);
}

TEST(ShownFolder, OfTwoPanesWithTheSameNameIsNotKnown) {
  EXPECT_EQ(shown({"/d/a", "/d/a", "/e/a", "/e/a"}, "a"), nothing);
}

TEST(ShownFolder, IsNotKnownWhenTheDropsOfAColumnDoNotAgree) {
  EXPECT_EQ(shown({"/d/a", "/e/b", "/d/a", "/e/b"}, "c"), nothing);
}

}  // namespace
}  // namespace quennel::test
