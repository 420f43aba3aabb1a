#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/app/AppDelegateTest.h"

namespace quennel::test {
namespace {

/// Requests for files in /Volumes/Data/Projects/App, where nothing may be changed yet.
class Authorization : public AppDelegateTest {
 protected:
  Authorization() {
    fakes.fileManager.addDirectory(dir);
    fakes.fileManager.addDirectory("/Volumes/Data/Other");
    for (const char* const folder : {"/Volumes/Data", "/Volumes/Data/Other"}) {
      fakes.securityScope.addFolder(folder);
    }
    fakes.securityScope.addFolder(dir);
    fakes.fileManager.protectedPaths = {"/Volumes", "/Users"};
  }

  /// The folder counts as writable from now on, as it does once access to it is granted.
  void answer(const std::optional<std::string>& choice) {
    fakes.fileManager.protectedPaths.clear();
    fakes.userInterface.answerBegunPanel(choice);
  }
  std::size_t records() const {
    const auto stored = fakes.sharedDefaults.objectForKey("authorizedDirs");
    return stored ? stored->array()->size() : 0;
  }

  const std::string dir = "/Volumes/Data/Projects/App";
};

TEST_F(Authorization, TheTokenOfTheRequestIsHandedOnToThePanel) {
  launch();
  fakes.urlEvents.receive({.directObject = "quennel://" + dir + "?0", .activationToken = "token"});
  fakes.runLoop.runUntilIdle();
  EXPECT_EQ(fakes.userInterface.activationTokens, std::vector<std::string>{"token"});
  EXPECT_EQ(fakes.userInterface.begunPanels(), 1u);
}

TEST_F(Authorization, ThePanelIsNotCountedAndTheQuitCheckFiresWhileItIsOpen) {
  launch();
  open("quennel://" + dir + "?0");
  EXPECT_EQ(fakes.userInterface.begunPanels(), 1u);
  EXPECT_EQ(delegate->panelCount(), 0);
  fakes.runLoop.advance(11s);
  EXPECT_TRUE(terminated());
}

TEST_F(Authorization, TheAlertOfARefusalIsNotCountedAndTheQuitCheckFiresDuringIt) {
  launch();
  open("quennel://" + dir + "?0");
  fakes.userInterface.whileShown = [this](const Alert&) {
    EXPECT_EQ(delegate->panelCount(), 0);
    fakes.runLoop.advance(11s);
    EXPECT_TRUE(terminated());
  };
  answer("/");
  fakes.runLoop.advance(300ms);
  EXPECT_EQ(fakes.userInterface.alerts.size(), 1u);
}

TEST_F(Authorization, TwoRequestsHaveAPanelEachWithTheirOwnFolderAndTemplate) {
  launch();
  open("quennel://" + dir + "?0");
  open("quennel:///Volumes/Data/Other?2");
  ASSERT_EQ(fakes.userInterface.begunPanels(), 2u);
  answer(dir);
  answer("/Volumes/Data/Other");
  EXPECT_TRUE(exists(dir + "/untitled.txt"));
  EXPECT_TRUE(exists("/Volumes/Data/Other/script.sh"));
  EXPECT_EQ(records(), 2u);
}

}  // namespace
}  // namespace quennel::test
