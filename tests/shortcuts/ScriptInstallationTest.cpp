#include <cerrno>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "installui/InstallScriptWindowController.h"
#include "tests/support/DesktopTest.h"
#include "tests/support/ShortcutsRoom.h"

namespace quennel::test {
namespace {

class ScriptInstallation : public DesktopTest {
 protected:
  ScriptInstallation() {
    fakes.fileManager.addDirectory(folder);
    fakes.fileManager.addFile(source, "#!/bin/sh\n", 0755);
    fakes.mainBundle.resources["QuennelHelper.sh"] = source;
    const auto noteCount = [this](const auto&) { counts.push_back(room.panelCount.value()); };
    fakes.userInterface.whilePanelShown = noteCount;
    fakes.userInterface.whileShown = noteCount;
  }

  void userChooses(const std::optional<std::string>& path) {
    fakes.userInterface.choices.push_back(path);
  }
  void copyingFails() {
    fakes.fileManager.failNext("copyItemAtPath", {ENOSPC, Error::Kind::Creating, installed});
  }
  const std::vector<Alert>& alerts() const { return fakes.userInterface.alerts; }

  ShortcutsRoom room{fakes};
  const std::string folder = "/home/user/Library/Application Scripts/net.brellow.QuennelHelper";
  const std::string installed = folder + "/QuennelHelper.sh";
  const std::string source = "/app/QuennelHelper.sh";
  /// `panelCount` while each panel and alert was up.
  std::vector<std::int64_t> counts;
};

TEST_F(ScriptInstallation, AnInstalledScriptIsEnough) {
  fakes.fileManager.addFile(installed, "whatever", 0);
  EXPECT_TRUE(room.installer.checkAndInstallScripts());
  EXPECT_TRUE(fakes.userInterface.openPanels.empty());
  EXPECT_TRUE(alerts().empty());
  EXPECT_EQ(fakes.userInterface.activations, 0);
  EXPECT_EQ(fakes.standardDefaults.storeCount(), 0);
  EXPECT_EQ(room.panelCount.value(), 0);
}

TEST_F(ScriptInstallation, AFolderThatCannotBeMadeIsReported) {
  fakes.userScripts.directory.reset();
  fakes.userScripts.directoryError = {EROFS, Error::Kind::Creating, folder};
  EXPECT_FALSE(room.installer.checkAndInstallScripts());
  ASSERT_EQ(alerts().size(), 1u);
  EXPECT_EQ(alerts()[0].messageText, "Error creating the scripts directory!");
  EXPECT_EQ(alerts()[0].informativeText,
            "“" + folder + "” could not be made: nothing can be changed there.");
  EXPECT_EQ(alerts()[0].alertStyle, AlertStyle::Critical);
  EXPECT_TRUE(fakes.userInterface.openPanels.empty());
  EXPECT_EQ(counts, std::vector<std::int64_t>{0});
}

TEST_F(ScriptInstallation, ThePanelAsksForTheScriptsFolder) {
  room.installer.checkAndInstallScripts();
  ASSERT_EQ(fakes.userInterface.openPanels.size(), 1u);
  const OpenPanel& panel = fakes.userInterface.openPanels.front();
  EXPECT_EQ(panel.title, "Select Scripts Directory");
  EXPECT_EQ(panel.message,
            "QuennelHelper would like to access \"~/Library/Application "
            "Scripts/net.brellow.QuennelHelper\" directory");
  EXPECT_EQ(panel.prompt, "Authorize");
  EXPECT_EQ(panel.directory, folder);
  EXPECT_TRUE(panel.canChooseDirectories);
  EXPECT_FALSE(panel.canChooseFiles);
  EXPECT_TRUE(panel.showsHiddenFiles);
  EXPECT_EQ(panel.level, PanelLevel::AboveOthers);
}

TEST_F(ScriptInstallation, TheFolderOfThePanelIsKeptInTheHelpersOwnSettings) {
  room.installer.checkAndInstallScripts();
  EXPECT_EQ(fakes.standardDefaults.stored(),
            (PropertyList::Dictionary{{"NSNavLastRootDirectory", folder},
                                      {"NSNavLastCurrentDirectory", folder}}));
}

TEST_F(ScriptInstallation, TheHelperComesToTheFrontBeforeThePanel) {
  userChooses(folder);
  room.installer.checkAndInstallScripts();
  EXPECT_EQ(fakes.log.calls(),
            (std::vector<std::string>{"activate", "open panel", "copyItemAtPath"}));
}

TEST_F(ScriptInstallation, AConfirmedPanelInstallsTheScriptWithItsPermissions) {
  userChooses(folder);
  EXPECT_TRUE(room.installer.checkAndInstallScripts());
  EXPECT_EQ(fakes.fileManager.contentsAtPath(installed), "#!/bin/sh\n");
  const auto attributes = fakes.fileManager.attributesOfItemAtPath(installed);
  ASSERT_TRUE(attributes);
  EXPECT_EQ(attributes->posixPermissions, 0755);
  EXPECT_TRUE(alerts().empty());
  EXPECT_EQ(counts, std::vector<std::int64_t>{1});
  EXPECT_EQ(room.panelCount.value(), 0);
}

/// The fake lets it be written there, as a confined helper, which has not been given that folder,
/// is not: see the end-to-end test.
TEST_F(ScriptInstallation, TheScriptIsToGoToItsFolderWhicheverIsChosen) {
  userChooses("/d");
  EXPECT_TRUE(room.installer.checkAndInstallScripts());
  EXPECT_TRUE(exists(installed));
  EXPECT_FALSE(exists("/d/QuennelHelper.sh"));
}

TEST_F(ScriptInstallation, TheFolderChosenIsAccessibleFromThenOn) {
  using Allowed = decltype(fakes.securityScope.allowed);
  userChooses("/d");
  room.installer.checkAndInstallScripts();
  EXPECT_EQ(fakes.securityScope.allowed, (Allowed{{"/d", SecurityScope::Extent::Folder}}));
}

TEST_F(ScriptInstallation, ACancelledPanelLeavesTheCountRaised) {
  EXPECT_FALSE(room.installer.checkAndInstallScripts());
  ASSERT_EQ(alerts().size(), 1u);
  EXPECT_EQ(alerts()[0].messageText,
            "You must install the QuennelHelper.sh script in order to use keyboard shortcuts!");
  EXPECT_EQ(alerts()[0].informativeText, std::nullopt);
  EXPECT_EQ(alerts()[0].alertStyle, AlertStyle::Critical);
  EXPECT_EQ(counts, (std::vector<std::int64_t>{1, 2}));
  EXPECT_EQ(room.panelCount.value(), 1);
  EXPECT_FALSE(exists(installed));
  EXPECT_TRUE(fakes.securityScope.allowed.empty());
}

TEST_F(ScriptInstallation, AFailedCopyOffersToInstallByHand) {
  userChooses(folder);
  copyingFails();
  EXPECT_FALSE(room.installer.checkAndInstallScripts());
  ASSERT_EQ(alerts().size(), 1u);
  EXPECT_EQ(alerts()[0].messageText,
            "Unable to install QuennelHelper.sh to the scripts directory!");
  EXPECT_EQ(alerts()[0].informativeText,
            "“" + installed + "” could not be made: there is no space left.");
  EXPECT_EQ(alerts()[0].alertStyle, AlertStyle::Critical);
  EXPECT_EQ(alerts()[0].buttons, (std::vector<std::string>{"Install manually", "Cancel"}));
}

TEST_F(ScriptInstallation, CancellingTheOfferPutsTheCountBack) {
  userChooses(folder);
  copyingFails();
  fakes.userInterface.answers = {UserInterface::alertFirstButtonReturn + 1};
  EXPECT_FALSE(room.installer.checkAndInstallScripts());
  EXPECT_TRUE(fakes.workspace.opened.empty());
  EXPECT_EQ(counts, (std::vector<std::int64_t>{1, 1}));
  EXPECT_EQ(room.panelCount.value(), 0);
}

TEST_F(ScriptInstallation, AResourceThatIsMissingFailsLikeAnyCopy) {
  fakes.mainBundle.resources.clear();
  userChooses(folder);
  EXPECT_FALSE(room.installer.checkAndInstallScripts());
  EXPECT_EQ(alerts().size(), 1u);
  EXPECT_EQ(room.panelCount.value(), 0);
}

class ManualInstallation : public ScriptInstallation {
 protected:
  void userDropsTheScriptInto(const std::string& path) {
    fakes.userInterface.windows.whileWindowShown = [this, path] {
      shown().icon.responder->namesOfPromisedFilesDroppedAtDestination(path);
    };
  }
  ShownInstallWindow& shown() { return fakes.userInterface.windows.installWindow; }
};

TEST_F(ManualInstallation, FollowsAFailedCopyWhenTheUserWantsIt) {
  userChooses(folder);
  copyingFails();
  fakes.userInterface.answers = {UserInterface::alertFirstButtonReturn};
  userDropsTheScriptInto(folder);
  EXPECT_TRUE(room.installer.checkAndInstallScripts());
  EXPECT_TRUE(exists(installed));
  EXPECT_EQ(room.panelCount.value(), 0);
}

TEST_F(ManualInstallation, ShowsTheFolderBesideTheWindow) {
  room.installer.installScriptManually();
  EXPECT_EQ(fakes.workspace.opened, std::vector<std::string>{folder});
  EXPECT_EQ(fakes.log.calls(), (std::vector<std::string>{"open", "window"}));
}

TEST_F(ManualInstallation, TellsTheWindowWhatToInstallWhere) {
  fakes.userInterface.windows.whileWindowShown = [this] {
    const auto& controller = room.installer.installScriptWindowController();
    ASSERT_NE(controller, nullptr);
    EXPECT_EQ(controller->scriptPath(), source);
    EXPECT_EQ(controller->destDir(), folder);
    EXPECT_EQ(shown().filename.text, "QuennelHelper.sh");
  };
  room.installer.installScriptManually();
}

TEST_F(ManualInstallation, EndsWhenTheScriptIsInItsFolder) {
  fakes.userInterface.windows.whileWindowShown = [this] {
    shown().icon.responder->namesOfPromisedFilesDroppedAtDestination("/d");
    EXPECT_TRUE(fakes.userInterface.windows.isModal);
    shown().icon.responder->namesOfPromisedFilesDroppedAtDestination(folder);
    EXPECT_FALSE(fakes.userInterface.windows.isModal);
  };
  EXPECT_TRUE(room.installer.installScriptManually());
}

TEST_F(ManualInstallation, FailsWhenTheWindowIsClosedBefore) {
  EXPECT_FALSE(room.installer.installScriptManually());
  EXPECT_TRUE(alerts().empty());
}

TEST_F(ManualInstallation, SucceedsHoweverTheScriptCameThere) {
  fakes.userInterface.windows.whileWindowShown = [this] {
    fakes.fileManager.addFile(installed, "copied in a terminal");
    fakes.userInterface.windows.installWindow.close();
  };
  EXPECT_TRUE(room.installer.installScriptManually());
}

TEST_F(ManualInstallation, ComesToTheFrontOnceTheFolderHasOpened) {
  fakes.userInterface.windows.whileWindowShown = [this] {
    fakes.runLoop.advance(299ms);
    EXPECT_EQ(fakes.userInterface.activations, 0);
    fakes.runLoop.advance(1ms);
    EXPECT_EQ(fakes.userInterface.activations, 1);
  };
  room.installer.installScriptManually();
  EXPECT_EQ(fakes.userInterface.activations, 1);
}

TEST_F(ManualInstallation, KeepsItsWindowALittleLonger) {
  room.installer.installScriptManually();
  fakes.runLoop.advance(299ms);
  EXPECT_NE(room.installer.installScriptWindowController(), nullptr);
  EXPECT_NE(shown().owner, nullptr);
  fakes.runLoop.advance(1ms);
  EXPECT_EQ(room.installer.installScriptWindowController(), nullptr);
  EXPECT_EQ(shown().owner, nullptr);
}

TEST_F(ManualInstallation, ReportsAFailureEvenWhenTheWindowIsClosedAtOnce) {
  fakes.fileManager.protectedPaths = {folder};
  userDropsTheScriptInto(folder);
  fakes.userInterface.whileShown = [this](const Alert&) { fakes.runLoop.advance(10s); };
  EXPECT_FALSE(room.installer.installScriptManually());
  fakes.runLoop.advance(10s);
  ASSERT_EQ(alerts().size(), 1u);
  EXPECT_EQ(alerts()[0].messageText, "Unable to install script!");
}

TEST_F(ManualInstallation, MayFollowAnotherAtOnce) {
  room.installer.installScriptManually();
  fakes.userInterface.windows.whileWindowShown = [this] {
    fakes.runLoop.advance(10s);
    EXPECT_NE(room.installer.installScriptWindowController(), nullptr);
    EXPECT_TRUE(shown().isOpen);
  };
  room.installer.installScriptManually();
  fakes.runLoop.advance(10s);
  EXPECT_EQ(room.installer.installScriptWindowController(), nullptr);
}

TEST_F(ManualInstallation, FailsAtOnceWithoutADisplay) {
  fakes.userInterface.windows.hasDisplay = false;
  EXPECT_FALSE(room.installer.installScriptManually());
  EXPECT_EQ(fakes.log.calls(), std::vector<std::string>{"open"});
}

TEST_F(ManualInstallation, FailsWithoutAScriptsFolder) {
  fakes.userScripts.directory.reset();
  EXPECT_FALSE(room.installer.installScriptManually());
  EXPECT_TRUE(fakes.workspace.opened.empty());
}

TEST_F(ScriptInstallation, TextsAreTranslated) {
  fakes.mainBundle.translations = {{"Select Scripts Directory", "Skriptordner auswählen"},
                                   {"Authorize", "Zugriff erlauben"},
                                   {"Install manually", "Manuell installieren"}};
  userChooses(folder);
  copyingFails();
  room.installer.checkAndInstallScripts();
  EXPECT_EQ(fakes.userInterface.openPanels.front().title, "Skriptordner auswählen");
  EXPECT_EQ(fakes.userInterface.openPanels.front().prompt, "Zugriff erlauben");
  EXPECT_EQ(alerts().front().buttons.front(), "Manuell installieren");
}

TEST_F(ScriptInstallation, TheCheckRunsAnewAtEveryCall) {
  EXPECT_FALSE(room.installer.checkAndInstallScripts());
  fakes.fileManager.addFile(installed);
  EXPECT_TRUE(room.installer.checkAndInstallScripts());
  EXPECT_EQ(fakes.userInterface.openPanels.size(), 1u);
}

/// Whatever stands on the screen for the installation: nothing but the front is given to it.
class PressDuringInstallation : public ScriptInstallation {
 protected:
  PressDuringInstallation() {
    auto templates = fakes.sharedDefaults.arrayForKey("fileTemplates").value();
    auto first = *templates[0].dictionary();
    first.insert_or_assign("shortcut", "Ctrl+Alt+N");
    templates[0] = first;
    auto second = *templates[1].dictionary();
    second.insert_or_assign("shortcut", "Ctrl+Alt+M");
    templates[1] = second;
    fakes.sharedDefaults.setObject(std::move(templates), "fileTemplates");
    room.shortcuts.bindHotKeys();
  }

  void press() {
    fakes.hotKeyCenter.press("Ctrl+Alt+N");
    fakes.runLoop.serve();
  }
  void pressAgain() {
    const int before = fakes.userInterface.activations;
    fakes.hotKeyCenter.press("Ctrl+Alt+N");
    fakes.hotKeyCenter.press("Ctrl+Alt+M");
    fakes.runLoop.serve();
    EXPECT_EQ(fakes.userInterface.activations, before + 2);
    ++pressedAgain;
  }

  int pressedAgain = 0;
};

TEST_F(PressDuringInstallation, BringsThePanelToTheFrontAndDoesNothingElse) {
  fakes.userInterface.whilePanelShown = [this](const auto&) { pressAgain(); };
  press();
  fakes.runLoop.serve();
  EXPECT_EQ(pressedAgain, 1);
  EXPECT_EQ(fakes.userInterface.openPanels.size(), 1u);
  EXPECT_EQ(alerts().size(), 1u);
}

TEST_F(PressDuringInstallation, BringsTheWindowToTheFrontAndDoesNothingElse) {
  userChooses(folder);
  copyingFails();
  fakes.userInterface.answers.push_back(UserInterface::alertFirstButtonReturn);
  fakes.userInterface.windows.whileWindowShown = [this] { pressAgain(); };
  press();
  fakes.runLoop.serve();
  EXPECT_EQ(pressedAgain, 1);
  EXPECT_EQ(fakes.userInterface.openPanels.size(), 1u);
  EXPECT_EQ(alerts().size(), 1u);
}

TEST_F(PressDuringInstallation, IsOverWithTheInstallation) {
  press();
  press();
  EXPECT_EQ(fakes.userInterface.openPanels.size(), 2u);
}

}  // namespace
}  // namespace quennel::test
