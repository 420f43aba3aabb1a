#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/CreationRoom.h"
#include "tests/support/DesktopTest.h"

namespace quennel::test {
namespace {

using Allowed = std::vector<std::pair<std::string, SecurityScope::Extent>>;

/// Requests for files in /Volumes/Data/Projects/App, where nothing may be changed yet.
class Authorization : public DesktopTest {
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

  void request(const std::string& folder) { room.creation.createFileAtDir(folder, record); }
  void request() { request(dir); }

  /// The folder counts as writable from now on, as it does once access to it is granted.
  void answer(const std::optional<std::string>& choice) {
    fakes.fileManager.protectedPaths.clear();
    fakes.userInterface.answerBegunPanel(choice);
  }
  std::size_t records() const {
    const auto stored = fakes.sharedDefaults.objectForKey("authorizedDirs");
    return stored ? stored->array()->size() : 0;
  }
  std::string remembered(const std::string& key) const {
    return *fakes.standardDefaults.objectForKey(key)->string();
  }
  void expectRefusal(const std::string& choice) {
    request();
    answer(choice);
    EXPECT_TRUE(fakes.userInterface.alerts.empty());
    fakes.runLoop.advance(299ms);
    EXPECT_TRUE(fakes.userInterface.alerts.empty());
    fakes.runLoop.advance(1ms);
    ASSERT_EQ(fakes.userInterface.alerts.size(), 1u) << choice;
    const Alert& alert = fakes.userInterface.alerts.front();
    EXPECT_EQ(alert.messageText, "Unable to create file!");
    EXPECT_EQ(alert.informativeText,
              "Please select \"/Volumes/Data/Projects/App\" or one of its parent directories.");
    EXPECT_EQ(alert.alertStyle, AlertStyle::Critical);
    EXPECT_EQ(records(), 0u);
    EXPECT_TRUE(fakes.securityScope.allowed.empty());
    EXPECT_FALSE(exists(dir + "/untitled.txt"));
    EXPECT_EQ(fakes.userInterface.begunPanels(), 0u) << "the panel is not shown again";
  }

  CreationRoom room{fakes};
  const std::string dir = "/Volumes/Data/Projects/App";
  const PropertyList::Dictionary record = templateRecord("untitled", "txt");
};

TEST_F(Authorization, IsAskedForAfterTheFolderWasLeftWhichIsEnteredAgainForTheFile) {
  request();
  EXPECT_EQ(fakes.securityScope.entered, std::vector<std::string>{dir});
  EXPECT_EQ(fakes.securityScope.enteredNow, 0);
  answer(dir);
  EXPECT_TRUE(exists(dir + "/untitled.txt"));
  EXPECT_EQ(fakes.securityScope.entered, (std::vector<std::string>{dir, dir}));
  EXPECT_EQ(fakes.securityScope.enteredNow, 0);
}

TEST_F(Authorization, IsNotAskedForWhereFilesMayBeMade) {
  request("/d");
  EXPECT_TRUE(exists("/d/untitled.txt"));
  EXPECT_TRUE(fakes.userInterface.openPanels.empty());
  EXPECT_EQ(fakes.userInterface.activations, 0);
}

TEST_F(Authorization, IsAskedForInAPanelOfFoldersAboveNormalWindows) {
  request();
  ASSERT_EQ(fakes.userInterface.openPanels.size(), 1u);
  const OpenPanel& panel = fakes.userInterface.openPanels.front();
  EXPECT_EQ(panel.title, "Quennel");
  EXPECT_EQ(panel.message, "Quennel would like to access your working directory.");
  EXPECT_EQ(panel.prompt, "Authorize");
  EXPECT_EQ(panel.directory, dir);
  EXPECT_TRUE(panel.canChooseDirectories);
  EXPECT_FALSE(panel.canChooseFiles);
  EXPECT_EQ(panel.level, PanelLevel::AboveOthers);
}

TEST_F(Authorization, TheHelperComesToTheFrontBeforeThePanel) {
  request();
  EXPECT_EQ(fakes.log.calls(), (std::vector<std::string>{"activate", "open panel"}));
}

TEST_F(Authorization, TheTitleMayBeReplacedTheOtherTextsAreTranslated) {
  const PropertyList::Dictionary replacements{
      {"Quennel", "Feder"},
      {"Authorize", "not replaced"},
      {"Quennel would like to access your working directory.", "not replaced"}};
  fakes.sharedDefaults.setObject(replacements, "localizedStrings");
  fakes.mainBundle.translations["Authorize"] = "Erlauben";
  request();
  const OpenPanel& panel = fakes.userInterface.openPanels.front();
  EXPECT_EQ(panel.title, "Feder");
  EXPECT_EQ(panel.prompt, "Erlauben");
  EXPECT_EQ(panel.message, "Quennel would like to access your working directory.");
}

TEST_F(Authorization, ThePanelStartsInTheRequestedFolderAndThatIsRemembered) {
  request();
  EXPECT_EQ(remembered("NSNavLastRootDirectory"), dir);
  EXPECT_EQ(remembered("NSNavLastCurrentDirectory"), dir);
}

TEST_F(Authorization, TheStartFolderIsRememberedBeforeThePanelOpens) {
  int shown = 0;
  fakes.userInterface.whilePanelShown = [&](const OpenPanel&) {
    ++shown;
    for (const char* const key : {"NSNavLastRootDirectory", "NSNavLastCurrentDirectory"}) {
      EXPECT_EQ(fakes.standardDefaults.objectForKey(key), PropertyList(dir));
      EXPECT_TRUE(fakes.standardDefaults.stored().contains(key)) << "for the next run, too";
    }
  };
  request();
  EXPECT_EQ(shown, 1);
}

TEST_F(Authorization, BelowTheHomeFolderThePanelStartsInTheHomeFolder) {
  fakes.fileManager.addDirectory("/Users/me/Work");
  request("/Users/me/Work");
  EXPECT_EQ(fakes.userInterface.openPanels.front().directory, "/Users/me/");
  EXPECT_EQ(remembered("NSNavLastRootDirectory"), "/Users/me/");
  EXPECT_EQ(remembered("NSNavLastCurrentDirectory"), "/Users/me/");
}

TEST_F(Authorization, TheHomeFolderItselfAndThoseOfOthersAreStartFoldersAsTheyAre) {
  for (const std::string folder : {"/Users/me", "/Users/other/Work", "/Users/me2/Work"}) {
    fakes.fileManager.addDirectory(folder);
    request(folder);
    EXPECT_EQ(fakes.userInterface.openPanels.back().directory, folder);
  }
}

TEST_F(Authorization, OfTheFolderItselfMakesTheFile) {
  request();
  answer(dir);
  EXPECT_TRUE(exists(dir + "/untitled.txt"));
  EXPECT_EQ(records(), 1u);
}

TEST_F(Authorization, OfAFolderAboveMakesTheFileAndIsRecordedAsChosen) {
  request();
  answer("/Volumes/Data");
  EXPECT_TRUE(exists(dir + "/untitled.txt"));
  const auto stored = fakes.sharedDefaults.objectForKey("authorizedDirs");
  ASSERT_EQ(records(), 1u);
  EXPECT_EQ(*stored->array()->front().objectForKey("path")->string(), "/Volumes/Data");
}

TEST_F(Authorization, LastsForTheRunBeforeTheFileIsMade) {
  request();
  answer("/Volumes/Data");
  EXPECT_EQ(fakes.securityScope.allowed,
            (Allowed{{"/Volumes/Data", SecurityScope::Extent::Folder}}));
  EXPECT_TRUE(room.directories.openedURLs().empty());
}

TEST_F(Authorization, IsRecordedBeforeTheFileIsMade) {
  std::size_t recordsAtTheCopy = 0;
  fakes.fileManager.beforeChange = [&](const std::string& operation) {
    if (operation == "copyItemAtPath") {
      recordsAtTheCopy = records();
    }
  };
  request();
  answer(dir);
  EXPECT_EQ(recordsAtTheCopy, 1u);
}

TEST_F(Authorization, ThatCannotBeRecordedStillMakesTheFile) {
  fakes.securityScope.unbookmarkable.insert(dir);
  request();
  answer(dir);
  EXPECT_TRUE(exists(dir + "/untitled.txt"));
  EXPECT_EQ(records(), 0u);
  EXPECT_TRUE(fakes.userInterface.alerts.empty());
}

TEST_F(Authorization, OfAFolderBesideIsRefused) { expectRefusal("/Volumes/Data/Other"); }

TEST_F(Authorization, OfAFolderWhoseNameOnlyBeginsAlikeIsRefused) {
  expectRefusal("/Volumes/Data/Pro");
}

TEST_F(Authorization, OfAVolumeWhoseNameOnlyBeginsAlikeIsRefused) {
  expectRefusal("/Volumes/DataX");
}

TEST_F(Authorization, OfAFolderBelowIsRefused) { expectRefusal(dir + "/src"); }

TEST_F(Authorization, OfTheRootFolderIsRefused) { expectRefusal("/"); }

TEST_F(Authorization, OfTheRootFolderIsAcceptedForTheRootFolderItself) {
  fakes.fileManager.protectedPaths = {"/"};
  request("/");
  answer("/");
  EXPECT_TRUE(exists("/untitled.txt"));
}

TEST_F(Authorization, ThatIsCancelledLeavesNothingBehind) {
  request();
  answer(std::nullopt);
  fakes.runLoop.advance(1s);
  EXPECT_FALSE(exists(dir + "/untitled.txt"));
  EXPECT_EQ(records(), 0u);
  EXPECT_TRUE(fakes.securityScope.allowed.empty());
  EXPECT_TRUE(fakes.userInterface.alerts.empty());
}

TEST_F(Authorization, IsKeptWhenTheCopyFails) {
  fakes.fileManager.removeItemAtPath("/templates/untitled.txt");
  request();
  answer(dir);
  fakes.runLoop.advance(300ms);
  ASSERT_EQ(fakes.userInterface.alerts.size(), 1u);
  EXPECT_EQ(fakes.userInterface.alerts[0].messageText, "Error creating file!");
  EXPECT_EQ(records(), 1u);
  EXPECT_FALSE(exists(dir + "/untitled.txt"));
}

TEST_F(Authorization, ARequestWithoutAFolderIsAcceptedByNoChoice) {
  room.creation.createFileAtDir(std::nullopt, record);
  answer("/d");
  fakes.runLoop.advance(300ms);
  EXPECT_EQ(fakes.userInterface.alerts.at(0).messageText, "Unable to create file!");
  EXPECT_FALSE(exists("/d/untitled.txt"));
}

}  // namespace
}  // namespace quennel::test
