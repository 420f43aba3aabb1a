#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/AccessRoom.h"
#include "tests/support/DesktopTest.h"

namespace quennel::test {
namespace {

/// The panel alone: what follows an answer is counted.
class AuthorizationPanelTest : public DesktopTest {
 protected:
  AuthorizationPanelTest() {
    fakes.securityScope.addFolder("/granted");
    fakes.securityScope.addFolder("/granted/folder");
  }

  void askFor(const std::string& dir) {
    room.authorizationPanel.askFor(dir, [this] {
      ++followed;
      allowedThen = fakes.securityScope.allowed.size();
    });
  }
  std::size_t records() const {
    const auto stored = fakes.sharedDefaults.objectForKey("authorizedDirs");
    return stored ? stored->array()->size() : 0;
  }

  AccessRoom room{fakes};
  int followed = 0;
  std::size_t allowedThen = 0;
};

TEST_F(AuthorizationPanelTest, ReturnsWhileItStands) {
  askFor("/granted/folder");
  EXPECT_EQ(fakes.userInterface.begunPanels(), 1U);
  EXPECT_EQ(followed, 0);
}

TEST_F(AuthorizationPanelTest, AllowsAndRecordsTheChoiceBeforeWhatFollows) {
  askFor("/granted/folder");
  fakes.userInterface.answerBegunPanel("/granted");
  EXPECT_EQ(followed, 1);
  EXPECT_EQ(allowedThen, 1U);
  EXPECT_EQ(fakes.securityScope.allowed[0], (std::pair<std::string, SecurityScope::Extent>(
                                                "/granted", SecurityScope::Extent::Folder)));
  EXPECT_EQ(records(), 1U);
}

TEST_F(AuthorizationPanelTest, NothingFollowsARefusedChoiceButAnAlert) {
  askFor("/granted");
  fakes.userInterface.answerBegunPanel("/granted/folder");
  EXPECT_TRUE(fakes.userInterface.alerts.empty());
  fakes.runLoop.advance(300ms);
  ASSERT_EQ(fakes.userInterface.alerts.size(), 1U);
  EXPECT_EQ(fakes.userInterface.alerts[0].informativeText,
            "Please select \"/granted\" or one of its parent directories.");
  EXPECT_EQ(followed, 0);
  EXPECT_EQ(records(), 0U);
}

TEST_F(AuthorizationPanelTest, NothingFollowsADismissedPanel) {
  askFor("/granted");
  fakes.userInterface.answerBegunPanel(std::nullopt);
  fakes.runLoop.advance(1s);
  EXPECT_EQ(followed, 0);
  EXPECT_TRUE(fakes.userInterface.alerts.empty());
}

}  // namespace
}  // namespace quennel::test
