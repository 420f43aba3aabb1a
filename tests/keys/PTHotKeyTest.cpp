#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "platform/PTHotKey.h"

namespace quennel::test {

class RecordingTarget : public ActionTarget {
 public:
  std::vector<std::pair<std::string, std::string>> actions;

  void performAction(const std::string& name, const PTHotKey& sender) override {
    actions.emplace_back(name, sender.identifier());
  }
};

TEST(PTHotKey, KeepsTheStoredCombinationAsItIs) {
  RecordingTarget target;
  const PropertyList stored = PropertyList::Dictionary{{"keyCode", 45}, {"anything", "else"}};
  const auto hotKey = PTHotKey::hotKeyWithIdentifier("shortcut3", stored, target, "act");
  EXPECT_EQ(hotKey->identifier(), "shortcut3");
  EXPECT_EQ(hotKey->keyCombo(), stored);
  EXPECT_EQ(hotKey->action(), "act");
  EXPECT_EQ(hotKey->title(), "");
}

TEST(PTHotKey, SendsItsActionWithItselfAsTheArgument) {
  RecordingTarget target;
  const auto hotKey =
      PTHotKey::hotKeyWithIdentifier("shortcut3", true, target, "shortcutAction3", "Plain text");
  hotKey->invoke();
  ASSERT_EQ(target.actions.size(), 1U);
  EXPECT_EQ(target.actions[0], std::pair(std::string("shortcutAction3"), std::string("shortcut3")));
  EXPECT_EQ(hotKey->title(), "Plain text");
}

}  // namespace quennel::test
