#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "installui/InstallScriptWindowController.h"
#include "tests/support/FakeDesktop.h"

namespace quennel::test {
namespace {

using namespace std::chrono_literals;

class InstallScriptWindow : public testing::Test {
 protected:
  InstallScriptWindow() {
    controller->setScriptPath("/A/B/QuennelHelper.sh");
    controller->setDestDir(folder);
  }

  void load() { ASSERT_NE(controller->window(), nullptr); }
  const ShownInstallWindow& shown() const { return fakes.userInterface.windows.installWindow; }
  bool isOpen() const { return shown().isOpen; }
  const std::vector<Alert>& alerts() const { return fakes.userInterface.alerts; }

  const std::string folder = "/U/Library/Application Scripts/net.brellow.QuennelHelper";
  FakeDesktop fakes;
  std::shared_ptr<InstallScriptWindowController> controller =
      std::make_shared<InstallScriptWindowController>(
          InstallScriptWindowController::Services{.runLoop = fakes.runLoop,
                                                  .fileManager = fakes.fileManager,
                                                  .securityScope = fakes.securityScope,
                                                  .workspace = fakes.workspace,
                                                  .userInterface = fakes.userInterface,
                                                  .bundle = fakes.mainBundle});
  const FakeView help{{{10, 20}, {30, 40}}};
};

TEST_F(InstallScriptWindow, IsLoadedOnce) {
  EXPECT_EQ(fakes.userInterface.windows.loadedWindows, 0);
  load();
  load();
  EXPECT_EQ(fakes.userInterface.windows.loadedWindows, 1);
}

TEST_F(InstallScriptWindow, ShowsTheNameOfTheScript) {
  load();
  EXPECT_EQ(shown().filename.text, "QuennelHelper.sh");
  EXPECT_EQ(shown().filename.tip, "/A/B/QuennelHelper.sh");
}

TEST_F(InstallScriptWindow, ShowsTheIconOfTheScript) {
  load();
  ASSERT_NE(shown().icon.shown, nullptr);
  EXPECT_EQ(descriptionOf(shown().icon.shown), "icon of /A/B/QuennelHelper.sh");
  EXPECT_EQ(shown().icon.shown->size(), (Size{128, 128}));
  EXPECT_EQ(shown().icon.toolTip, "/A/B/QuennelHelper.sh");
  EXPECT_EQ(controller->imageView()->path(), "/A/B/QuennelHelper.sh");
}

TEST_F(InstallScriptWindow, SaysWhereTheScriptBelongs) {
  load();
  EXPECT_EQ(shown().message.text,
            "Please drag and drop the above script into the \"net.brellow.QuennelHelper\" dir.");
  EXPECT_EQ(shown().expectedDestination, folder);
}

TEST_F(InstallScriptWindow, SpeaksTheLanguageOfTheUser) {
  fakes.mainBundle.translations["Please drag and drop the above script into the \"%@\" dir."] =
      "Ziehen Sie das Skript in den Ordner „%@“.";
  load();
  EXPECT_EQ(shown().message.text,
            "Ziehen Sie das Skript in den Ordner „net.brellow.QuennelHelper“.");
}

TEST_F(InstallScriptWindow, LetsTheIconBeDraggedOutOnly) {
  load();
  EXPECT_TRUE(controller->imageView()->allowDrag());
  EXPECT_FALSE(controller->imageView()->allowDrop());
  EXPECT_EQ(controller->imageView()->delegate(), controller.get());
  EXPECT_EQ(controller->imageView()->destDir(), std::nullopt);
}

TEST_F(InstallScriptWindow, IsNotThereWithoutADisplay) {
  fakes.userInterface.windows.hasDisplay = false;
  EXPECT_EQ(controller->window(), nullptr);
  EXPECT_EQ(controller->imageView(), nullptr);
}

TEST_F(InstallScriptWindow, HelpShowsTheCommandBelowTheButton) {
  load();
  controller->didClickHelp(&help);
  ASSERT_EQ(shown().popovers.size(), 1u);
  EXPECT_EQ(shown().popovers[0].command,
            "cp '/A/B/QuennelHelper.sh' '/U/Library/Application "
            "Scripts/net.brellow.QuennelHelper/'");
  EXPECT_EQ(shown().popovers[0].rect, (Rect{{10, 20}, {30, 40}}));
  EXPECT_EQ(shown().popovers[0].edge, RectEdge::MinY);
  EXPECT_EQ(shown().behavior, PopoverBehavior::Transient);
  EXPECT_EQ(shown().fontSize, 12);
}

TEST_F(InstallScriptWindow, HelpWithoutAButtonStandsAtTheOrigin) {
  load();
  controller->didClickHelp(nullptr);
  EXPECT_EQ(shown().popovers.at(0).rect, Rect());
}

TEST_F(InstallScriptWindow, FurtherClicksShowTheSamePopover) {
  load();
  EXPECT_EQ(controller->myPopover(), nullptr);
  controller->didClickHelp(&help);
  const auto* const popover = controller->myPopover();
  controller->didClickHelp(&help);
  controller->didClickHelp(&help);
  EXPECT_EQ(controller->myPopover(), popover);
  EXPECT_EQ(shown().madePopovers, 1);
  ASSERT_EQ(shown().popovers.size(), 3u);
  EXPECT_EQ(shown().popovers[2].command, shown().popovers[0].command);
}

TEST_F(InstallScriptWindow, QuotesInPathsAreNotEscapedInTheCommand) {
  controller->setScriptPath("/it's/s.sh");
  controller->setDestDir("/d'");
  load();
  controller->didClickHelp(&help);
  EXPECT_EQ(shown().command, "cp '/it's/s.sh' '/d'/'");
}

TEST_F(InstallScriptWindow, AFurtherCommandReplacesTheText) {
  load();
  controller->didClickHelp(&help);
  controller->installScriptCmdViewController()->setCommandString("other");
  EXPECT_EQ(shown().command, "other");
  controller->installScriptCmdViewController()->setCommandString(std::nullopt);
  EXPECT_EQ(shown().command, "other");
}

TEST_F(InstallScriptWindow, CopiesThePathOfTheScript) {
  load();
  controller->copyPath(nullptr);
  EXPECT_EQ(fakes.userInterface.windows.pasteboard.calls,
            (std::vector<std::string>{"clear", "public.utf8-plain-text: /A/B/QuennelHelper.sh"}));
}

TEST_F(InstallScriptWindow, CopiesNothingWithoutAScript) {
  controller->setScriptPath(std::nullopt);
  load();
  controller->copyPath(nullptr);
  EXPECT_TRUE(fakes.userInterface.windows.pasteboard.calls.empty());
}

TEST_F(InstallScriptWindow, OpensTheDestination) {
  load();
  controller->openDestination(nullptr);
  EXPECT_EQ(fakes.workspace.opened, (std::vector<std::string>{folder}));
}

TEST_F(InstallScriptWindow, ADropIntoTheRightFolderClosesTheWindow) {
  load();
  fakes.userInterface.windows.isModal = true;
  controller->dropComplete(folder + "/QuennelHelper.sh");
  EXPECT_FALSE(isOpen());
  EXPECT_FALSE(fakes.userInterface.windows.isModal);
}

TEST_F(InstallScriptWindow, ADropIntoAnotherFolderSaysNothing) {
  load();
  controller->dropComplete("/U/Library/QuennelHelper.sh");
  controller->dropComplete(folder + "/below/QuennelHelper.sh");
  controller->dropComplete(std::nullopt);
  fakes.runLoop.advance(10s);
  EXPECT_TRUE(isOpen());
  EXPECT_TRUE(alerts().empty());
}

TEST_F(InstallScriptWindow, ADestinationWithASlashAtItsEndMatchesNothing) {
  controller->setDestDir(folder + "/");
  load();
  controller->dropComplete(folder + "/QuennelHelper.sh");
  EXPECT_TRUE(isOpen());
}

TEST_F(InstallScriptWindow, ClosingItEndsTheModalSession) {
  load();
  fakes.userInterface.windows.isModal = true;
  controller->window()->close();
  EXPECT_FALSE(fakes.userInterface.windows.isModal);
}

TEST_F(InstallScriptWindow, ADropThatFailsIsReportedOnceTheDragHasEnded) {
  load();
  controller->dropFail("/ro/QuennelHelper.sh");
  fakes.runLoop.advance(299ms);
  EXPECT_TRUE(alerts().empty());
  fakes.runLoop.advance(1ms);
  ASSERT_EQ(alerts().size(), 1u);
  EXPECT_EQ(alerts()[0].messageText, "Unable to install script!");
  EXPECT_EQ(alerts()[0].informativeText, "Unable to write to: /ro/QuennelHelper.sh");
  EXPECT_EQ(alerts()[0].alertStyle, AlertStyle::Critical);
  EXPECT_TRUE(isOpen());
}

TEST_F(InstallScriptWindow, AFailureWithoutAPathIsNotReported) {
  load();
  controller->dropFail(std::nullopt);
  fakes.runLoop.advance(10s);
  EXPECT_TRUE(alerts().empty());
}

// The icon and the window together.

TEST_F(InstallScriptWindow, DraggingTheIconIntoTheFolderInstallsTheScript) {
  fakes.fileManager.addFile("/A/B/QuennelHelper.sh", "#!/bin/sh\n", 0644);
  fakes.fileManager.addDirectory(folder);
  load();
  shown().icon.responder->namesOfPromisedFilesDroppedAtDestination(folder);
  EXPECT_EQ(fakes.fileManager.contentsAtPath(folder + "/QuennelHelper.sh"), "#!/bin/sh\n");
  EXPECT_FALSE(isOpen());
}

TEST_F(InstallScriptWindow, DraggingTheIconIntoAProtectedFolderIsReported) {
  fakes.fileManager.addFile("/A/B/QuennelHelper.sh", "#!/bin/sh\n", 0644);
  fakes.fileManager.addDirectory(folder);
  fakes.fileManager.protectedPaths = {folder};
  load();
  shown().icon.responder->namesOfPromisedFilesDroppedAtDestination(folder);
  fakes.runLoop.advance(300ms);
  ASSERT_EQ(alerts().size(), 1u);
  EXPECT_EQ(alerts()[0].informativeText, "Unable to write to: " + folder + "/QuennelHelper.sh");
  EXPECT_TRUE(isOpen());
}

}  // namespace
}  // namespace quennel::test
