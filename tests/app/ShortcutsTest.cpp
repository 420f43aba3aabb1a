#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/PTHotKey.h"
#include "settings/SharedSettings.h"
#include "tests/app/AppDelegateTest.h"

namespace quennel::test {
namespace {

using Names = std::vector<std::string>;
using Shortcuts = std::vector<std::optional<PropertyList>>;

/// The helper on a desktop whose file manager shows the folder /d, with the user script installed.
class ShortcutTest : public AppDelegateTest {
 protected:
  ShortcutTest() {
    fakes.mainBundle.resources["get-finder-path.scpt"] = "/app/get-finder-path.scpt";
    fakes.fileManager.addDirectory(scriptsFolder);
    fakes.fileManager.addFile(script, "#!/bin/sh\n");
    fakes.userScripts.scripts[script] = {"/d\n", {}};
  }

  /// Gives the first templates of the list these shortcuts.
  void setShortcuts(const Shortcuts& shortcuts) {
    auto templates = fakes.sharedDefaults.arrayForKey("fileTemplates").value();
    for (std::size_t index = 0; index < shortcuts.size(); ++index) {
      auto record = *templates[index].dictionary();
      record.erase("shortcut");
      if (shortcuts[index]) {
        record.emplace("shortcut", *shortcuts[index]);
      }
      templates[index] = std::move(record);
    }
    fakes.sharedDefaults.setObject(std::move(templates), "fileTemplates");
  }

  AppDelegate& launchWith(const Shortcuts& shortcuts) {
    setShortcuts(shortcuts);
    return launch();
  }

  Names identifiers() const {
    Names names;
    for (const auto& hotKey : fakes.hotKeyCenter.allHotKeys()) {
      names.push_back(hotKey->identifier());
    }
    return names;
  }

  /// Everything that the press leads to, the script included.
  void press(const std::string& accelerator) {
    fakes.hotKeyCenter.press(accelerator);
    finish();
  }
  void finish() {
    fakes.runLoop.runUntilIdle();
    const int started = static_cast<int>(fakes.userScripts.executions.size());
    EXPECT_TRUE(fakes.runLoop.runUntil([&] { return fakes.userScripts.completions() >= started; }));
    fakes.runLoop.runUntilIdle();
  }

  const std::string scriptsFolder =
      "/home/user/Library/Application Scripts/net.brellow.QuennelHelper";
  const std::string script = scriptsFolder + "/QuennelHelper.sh";
};

using Binding = ShortcutTest;
using Action = ShortcutTest;

TEST_F(Binding, FileTemplatesCommandBindsAnew) {
  launchWith({"Ctrl+Alt+N"});
  setShortcuts({std::nullopt, "Ctrl+Alt+M"});
  command(sharedSuiteName, "fileTemplates");
  EXPECT_EQ(identifiers(), Names{"shortcut1"});
}

TEST_F(Binding, FileTemplatesCommandBindsAnewAfterARequestAndItsLaunchCheckDoesNothing) {
  launch();
  open("quennel:///d?0");
  delegate->setPanelCount(1);
  setShortcuts({"Ctrl+Alt+N"});
  command(sharedSuiteName, "fileTemplates");
  EXPECT_EQ(identifiers(), Names{"shortcut0"});
  setShortcuts({std::nullopt});
  command(sharedSuiteName, "fileTemplates");
  EXPECT_EQ(identifiers(), Names{});
  fakes.runLoop.advance(24h);
  EXPECT_FALSE(terminated());
}

TEST_F(Binding, LaunchCheckThatACommandArmsCountsTheKeysItBound) {
  fakes.sharedDefaults.setObject(true, "runInBackground");
  launch();
  fakes.sharedDefaults.setObject(false, "runInBackground");
  setShortcuts({"Ctrl+Alt+N"});
  command(sharedSuiteName, "fileTemplates");
  fakes.runLoop.advance(24h);
  EXPECT_FALSE(terminated());
}

TEST_F(Binding, LaunchCheckSparesAHelperWithABoundKey) {
  launchWith({"Ctrl+Alt+N"});
  fakes.runLoop.advance(24h);
  EXPECT_FALSE(terminated());
}

TEST_F(Binding, LaunchCheckDoesNotSpareAHelperWhoseKeysWereAllRefused) {
  fakes.hotKeyCenter.isAvailable = false;
  launchWith({"Ctrl+Alt+N"});
  fakes.runLoop.advance(11s);
  EXPECT_TRUE(terminated());
}

TEST_F(Binding, LaunchCheckCountsTheKeysWhenItFires) {
  launchWith({"Ctrl+Alt+N"});
  fakes.runLoop.advance(10s);
  fakes.sharedDefaults.removeObjectForKey("fileTemplates");
  delegate->bindHotKeys();
  fakes.runLoop.advance(1s);
  EXPECT_TRUE(terminated());
}

TEST_F(Binding, BoundKeyDoesNotSpareTheHelperAfterARequest) {
  launchWith({"Ctrl+Alt+N"});
  open("quennel:///d?0");
  EXPECT_TRUE(exists("/d/untitled.txt"));
  fakes.runLoop.advance(11s);
  EXPECT_TRUE(terminated());
}

TEST_F(Action, PressOfAKeyBoundAtLaunchMakesTheFile) {
  launchWith({"Ctrl+Alt+N"});
  press("Ctrl+Alt+N");
  EXPECT_TRUE(exists("/d/untitled.txt"));
}

TEST_F(ShortcutTest, KeysAreBoundAgainWhenADesktopAppears) {
  launchWith({"Ctrl+Alt+N"});
  fakes.hotKeyCenter.endDesktop();
  fakes.runLoop.serve();
  EXPECT_EQ(identifiers(), Names{});
  fakes.hotKeyCenter.startDesktop();
  fakes.runLoop.serve();
  EXPECT_EQ(identifiers(), Names{"shortcut0"});
  press("Ctrl+Alt+N");
  EXPECT_TRUE(exists("/d/untitled.txt"));
}

TEST_F(ShortcutTest, KeysThatWereRefusedForWantOfADesktopAreBoundWhenItAppears) {
  fakes.hotKeyCenter.isAvailable = false;
  launchWith({"Ctrl+Alt+N"});
  EXPECT_EQ(identifiers(), Names{});
  fakes.hotKeyCenter.startDesktop();
  fakes.runLoop.serve();
  EXPECT_EQ(identifiers(), Names{"shortcut0"});
}

TEST_F(ShortcutTest, HelperWhoseKeysAreLostLeavesAsOneWithoutKeys) {
  launchWith({"Ctrl+Alt+N"});
  fakes.runLoop.advance(std::chrono::minutes(1));
  EXPECT_FALSE(fakes.runLoop.isTerminating());
  fakes.hotKeyCenter.endDesktop();
  fakes.runLoop.advance(std::chrono::milliseconds(10'900));
  EXPECT_FALSE(fakes.runLoop.isTerminating());
  fakes.runLoop.advance(std::chrono::milliseconds(100));
  EXPECT_TRUE(fakes.runLoop.isTerminating());
}

TEST_F(ShortcutTest, HelperWhoseKeysComeBackInTimeStays) {
  launchWith({"Ctrl+Alt+N"});
  fakes.hotKeyCenter.endDesktop();
  fakes.runLoop.advance(std::chrono::seconds(5));
  fakes.hotKeyCenter.startDesktop();
  fakes.runLoop.advance(std::chrono::minutes(1));
  EXPECT_FALSE(fakes.runLoop.isTerminating());
}

TEST_F(ShortcutTest, HelperThatIsToStayStaysWithoutItsKeys) {
  fakes.sharedDefaults.setObject(true, "runInBackground");
  launchWith({"Ctrl+Alt+N"});
  fakes.hotKeyCenter.endDesktop();
  fakes.runLoop.advance(std::chrono::minutes(1));
  EXPECT_FALSE(fakes.runLoop.isTerminating());
}

}  // namespace
}  // namespace quennel::test
