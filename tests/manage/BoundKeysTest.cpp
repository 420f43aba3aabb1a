#include <gtest/gtest.h>

#include "manage/BoundKeys.h"
#include "tests/support/FakeHelperConnection.h"

namespace quennel::test {

TEST(BoundKeysTest, KeyIsThatOfTheTemplatesPlace) {
  FakeHelperConnection helper;
  helper.boundKeys = {{"shortcut0", true, ""}, {"shortcut12", false, "taken"}};
  const BoundKeys keys(helper);
  ASSERT_NE(keys.keyOf(12), nullptr);
  EXPECT_FALSE(keys.keyOf(12)->isBound);
  EXPECT_EQ(keys.keyOf(12)->reason, "taken");
  EXPECT_TRUE(keys.keyOf(0)->isBound);
  EXPECT_EQ(keys.keyOf(1), nullptr);
  EXPECT_FALSE(keys.silence());
}

TEST(BoundKeysTest, HelperThatDoesNotAnswerLeavesAllKeysUnknown) {
  FakeHelperConnection helper;
  helper.silence = HelperSilence{HelperSilence::Reason::NotInstalled};
  const BoundKeys keys(helper);
  ASSERT_TRUE(keys.silence());
  EXPECT_EQ(keys.silence()->reason, HelperSilence::Reason::NotInstalled);
  EXPECT_EQ(keys.keyOf(0), nullptr);
}

TEST(BoundKeysTest, ShortcutIsWrittenAsPeopleDo) {
  EXPECT_EQ(shortcutText(PropertyList::Dictionary{{"shortcut", "<Alt>n"}}), "Alt+N");
  EXPECT_EQ(shortcutText(PropertyList::Dictionary{{"shortcut", "n"}}), std::nullopt);
  EXPECT_EQ(shortcutText(PropertyList::Dictionary{}), std::nullopt);
}

}  // namespace quennel::test
