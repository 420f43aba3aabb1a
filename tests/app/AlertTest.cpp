#include "creation/AppUtil.h"
#include "installui/InstallScriptWindowController.h"
#include "tests/app/AppDelegateTest.h"

namespace quennel::test {
namespace {

class Alerts : public AppDelegateTest {
 protected:
  AppUtil::Services utilServices() {
    return {.fileManager = fakes.fileManager,
            .securityScope = fakes.securityScope,
            .notifications = fakes.distributedNotificationCenter,
            .userInterface = fakes.userInterface};
  }
};

void expectTheSameAlertTwice(const std::vector<Alert>& alerts, const std::string& title) {
  ASSERT_EQ(alerts.size(), 2u);
  EXPECT_EQ(alerts[0].messageText, title);
  EXPECT_EQ(alerts[0].informativeText, "why");
  EXPECT_EQ(alerts[0].alertStyle, AlertStyle::Critical);
  EXPECT_TRUE(alerts[0].buttons.empty());
  EXPECT_EQ(alerts[1].messageText, std::nullopt);
  EXPECT_EQ(alerts[1].informativeText, std::nullopt);
  EXPECT_EQ(alerts[1].alertStyle, AlertStyle::Informational);
}

TEST_F(Alerts, OfAppUtilShowWhatTheyAreGiven) {
  const AppUtil util(utilServices());
  util.showAlert("Title!", "why", AlertStyle::Critical);
  util.showAlert(std::nullopt, std::nullopt, AlertStyle::Informational);
  expectTheSameAlertTwice(fakes.userInterface.alerts, "Title!");
}

TEST_F(Alerts, OfAppUtilAreInformationalWithoutAStyle) {
  AppUtil(utilServices()).showAlert("Title!", std::nullopt);
  EXPECT_EQ(fakes.userInterface.alerts.front().alertStyle, AlertStyle::Informational);
  EXPECT_EQ(fakes.userInterface.alerts.front().informativeText, std::nullopt);
}

TEST_F(Alerts, OfTheApplicationObjectShowWhatTheyAreGiven) {
  launch();
  delegate->showAlert("Title!", "why", AlertStyle::Critical);
  delegate->showAlert(std::nullopt, std::nullopt, AlertStyle::Informational);
  expectTheSameAlertTwice(fakes.userInterface.alerts, "Title!");
}

TEST_F(Alerts, OfTheInstallWindowShowWhatTheyAreGiven) {
  const InstallScriptWindowController controller({.runLoop = fakes.runLoop,
                                                  .fileManager = fakes.fileManager,
                                                  .securityScope = fakes.securityScope,
                                                  .workspace = fakes.workspace,
                                                  .userInterface = fakes.userInterface,
                                                  .bundle = fakes.mainBundle});
  controller.showAlert("Title!", "why", AlertStyle::Critical);
  controller.showAlert(std::nullopt, std::nullopt, AlertStyle::Informational);
  expectTheSameAlertTwice(fakes.userInterface.alerts, "Title!");
}

TEST_F(Alerts, NeverTouchThePanelCount) {
  launch();
  fakes.userInterface.whileShown = [this](const Alert&) { EXPECT_EQ(delegate->panelCount(), 0); };
  delegate->showAlert("Title!", "why", AlertStyle::Critical);
  EXPECT_EQ(delegate->panelCount(), 0);
}

}  // namespace
}  // namespace quennel::test
