#include <algorithm>
#include <cerrno>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/PTHotKey.h"
#include "tests/support/Deadline.h"
#include "tests/support/DesktopTest.h"
#include "tests/support/ShortcutsRoom.h"

namespace quennel::test {
namespace {

using Names = std::vector<std::string>;
using Shortcuts = std::vector<std::optional<PropertyList>>;

/// The helper on a desktop whose file manager shows the folder /d, with the user script installed.
class ShortcutTest : public DesktopTest {
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

  void launch() { room.shortcuts.bindHotKeys(); }
  void launchWith(const Shortcuts& shortcuts) {
    setShortcuts(shortcuts);
    launch();
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
  /// The same for an action that is sent by name.
  void send(const std::string& action) {
    const auto sender = PTHotKey::hotKeyWithIdentifier("any", true, room.shortcuts, action);
    room.shortcuts.performAction(action, *sender);
    finish();
  }
  void finish() {
    fakes.runLoop.runUntilIdle();
    while (fakes.userScripts.completions() < started()) {
      const int current = started();
      ASSERT_TRUE(
          fakes.runLoop.runUntil([&] { return fakes.userScripts.completions() >= current; }));
      fakes.runLoop.runUntilIdle();
    }
  }
  int started() const { return static_cast<int>(fakes.userScripts.executions.size()); }

  const std::vector<Alert>& alerts() const { return fakes.userInterface.alerts; }
  void expectMissingTemplate() const {
    ASSERT_EQ(alerts().size(), 1U);
    EXPECT_EQ(alerts()[0].messageText, "Unable to create file!");
    EXPECT_EQ(alerts()[0].informativeText, "No suitable file template found.");
    EXPECT_EQ(alerts()[0].alertStyle, AlertStyle::Critical);
    EXPECT_TRUE(fakes.userScripts.executions.empty());
  }

  ShortcutsRoom room{fakes};
  const std::string scriptsFolder =
      "/home/user/Library/Application Scripts/net.brellow.QuennelHelper";
  const std::string script = scriptsFolder + "/QuennelHelper.sh";
};

using Binding = ShortcutTest;
using Action = ShortcutTest;

TEST_F(Binding, TemplatesWithAShortcutAreBoundUnderTheirPositions) {
  launchWith({"Ctrl+Alt+N", std::nullopt, "Ctrl+Alt+M"});
  const auto hotKeys = fakes.hotKeyCenter.allHotKeys();
  ASSERT_EQ(hotKeys.size(), 2U);
  EXPECT_EQ(hotKeys[0]->identifier(), "shortcut0");
  EXPECT_EQ(hotKeys[0]->action(), "shortcutAction0");
  EXPECT_EQ(hotKeys[0]->title(), "A untitled");
  EXPECT_EQ(hotKeys[1]->identifier(), "shortcut2");
  EXPECT_EQ(hotKeys[1]->action(), "shortcutAction2");
}

TEST_F(Binding, StoredCombinationIsHandedOnUnchanged) {
  const PropertyList stored =
      PropertyList::Dictionary{{"keyCode", 45}, {"modifierFlags", 1 << 20}, {"characters", "n"}};
  launchWith({stored});
  ASSERT_EQ(identifiers(), Names{"shortcut0"});
  EXPECT_EQ(fakes.hotKeyCenter.allHotKeys()[0]->keyCombo(), stored);
}

TEST_F(Binding, EmptyOrMissingListUnbindsEverything) {
  const auto list = fakes.sharedDefaults.objectForKey("fileTemplates").value();
  for (const std::optional<PropertyList>& without :
       {std::optional<PropertyList>(PropertyList::Array{}), std::optional<PropertyList>(),
        std::optional<PropertyList>("no list")}) {
    fakes.sharedDefaults.setObject(list, "fileTemplates");
    launchWith({"Ctrl+Alt+N"});
    ASSERT_EQ(identifiers(), Names{"shortcut0"});
    without ? fakes.sharedDefaults.setObject(*without, "fileTemplates")
            : fakes.sharedDefaults.removeObjectForKey("fileTemplates");
    room.shortcuts.bindHotKeys();
    EXPECT_EQ(identifiers(), Names{});
    EXPECT_TRUE(!room.shortcuts.templates() || room.shortcuts.templates()->empty());
  }
}

TEST_F(Binding, KeysThatOthersRegisteredAreReplacedToo) {
  launch();
  fakes.hotKeyCenter.registerHotKey(
      PTHotKey::hotKeyWithIdentifier("foreign", "Ctrl+Alt+X", room.shortcuts, "other"));
  setShortcuts({"Ctrl+Alt+N"});
  room.shortcuts.bindHotKeys();
  EXPECT_EQ(identifiers(), Names{"shortcut0"});
}

TEST_F(Binding, TemplatesAreTheListThatWasBound) {
  launchWith({"Ctrl+Alt+N"});
  const auto bound = fakes.sharedDefaults.arrayForKey("fileTemplates");
  EXPECT_EQ(room.shortcuts.templates(), bound);
  fakes.sharedDefaults.setObject(PropertyList::Array{}, "fileTemplates");
  EXPECT_EQ(room.shortcuts.templates(), bound);
}

TEST_F(Binding, RefusedCombinationIsLeftOutSilently) {
  fakes.hotKeyCenter.holdByAnotherProgram("Ctrl+Alt+N");
  launchWith({"Ctrl+Alt+N", false, "Ctrl+Alt+M"});
  EXPECT_EQ(identifiers(), Names{"shortcut2"});
  EXPECT_TRUE(alerts().empty());
}

TEST_F(Binding, SecondTemplateOfTheSameCombinationIsLeftOut) {
  launchWith({"Ctrl+Alt+N", "<Control><Alt>n"});
  EXPECT_EQ(identifiers(), Names{"shortcut0"});
}

TEST_F(Binding, EntryThatIsNoTemplateHasNoShortcutButAPosition) {
  fakes.sharedDefaults.setObject(
      PropertyList::Array{"no template", PropertyList::Dictionary{{"shortcut", "Ctrl+Alt+N"}}},
      "fileTemplates");
  launch();
  EXPECT_EQ(identifiers(), Names{"shortcut1"});
}

TEST_F(Action, PressMakesTheFileInTheFolderThatTheScriptNames) {
  launchWith({"Ctrl+Alt+N", std::nullopt, "Ctrl+Alt+M"});
  press("Ctrl+Alt+M");
  EXPECT_TRUE(exists("/d/script.sh"));
  EXPECT_FALSE(exists("/d/untitled.txt"));
  EXPECT_TRUE(alerts().empty());
}

TEST_F(Action, DisabledTemplateWithAShortcutIsBoundAndMakesItsFile) {
  launchWith({std::nullopt, "Ctrl+Alt+N"});
  press("Ctrl+Alt+N");
  EXPECT_TRUE(exists("/d/disabled.txt"));
}

TEST_F(Action, TemplateRemovedSinceTheBindingIsReported) {
  launchWith({std::nullopt, std::nullopt, "Ctrl+Alt+N"});
  fakes.sharedDefaults.setObject(PropertyList::Array{}, "fileTemplates");
  press("Ctrl+Alt+N");
  expectMissingTemplate();
  EXPECT_EQ(room.panelCount.value(), 0);
}

TEST_F(Action, MissingTemplateIsReportedInTheUsersLanguageWithoutTheSettingsReplacements) {
  fakes.mainBundle.translations = {{"Unable to create file!", "Keine Datei!"},
                                   {"No suitable file template found.", "Keine Vorlage."}};
  fakes.sharedDefaults.setObject(PropertyList::Dictionary{{"Unable to create file!", "replaced"}},
                                 "localizedStrings");
  launch();
  send("shortcutAction9");
  ASSERT_EQ(alerts().size(), 1U);
  EXPECT_EQ(alerts()[0].messageText, "Keine Datei!");
  EXPECT_EQ(alerts()[0].informativeText, "Keine Vorlage.");
}

TEST_F(Action, ReorderedTemplatesAreFoundByTheirNewPositions) {
  launchWith({"Ctrl+Alt+N"});
  auto templates = fakes.sharedDefaults.arrayForKey("fileTemplates").value();
  std::swap(templates[0], templates[2]);
  fakes.sharedDefaults.setObject(templates, "fileTemplates");
  press("Ctrl+Alt+N");
  EXPECT_TRUE(exists("/d/script.sh"));
}

TEST_F(Action, EveryNameWithThePrefixLeadsToTheHandler) {
  launch();
  for (const char* name : {"shortcutAction0", "shortcutActionx", "shortcutAction",
                           "shortcutAction 0", "shortcutAction+0z", "shortcutAction-0"}) {
    fakes.fileManager.removeItemAtPath("/d/untitled.txt");
    send(name);
    EXPECT_TRUE(exists("/d/untitled.txt")) << name;
  }
  send("shortcutAction2 of them");
  EXPECT_TRUE(exists("/d/script.sh"));
}

TEST_F(Action, NumberOutsideTheListNamesNoTemplate) {
  launch();
  const Names names = {"shortcutAction3", "shortcutAction-1", "shortcutAction99999999999999999999"};
  for (const auto& name : names) {
    send(name);
  }
  EXPECT_EQ(alerts().size(), names.size());
  EXPECT_TRUE(fakes.userScripts.executions.empty());
}

TEST_F(Action, OtherNamesLeadNowhere) {
  launch();
  for (const char* name : {"", "shortcutActio", "ShortcutAction0", " shortcutAction0", "quit"}) {
    EXPECT_FALSE(room.shortcuts.resolveInstanceMethod(name)) << name;
    send(name);
  }
  EXPECT_TRUE(alerts().empty());
  EXPECT_TRUE(fakes.userScripts.executions.empty());
  EXPECT_TRUE(room.shortcuts.resolveInstanceMethod("shortcutAction7"));
  EXPECT_TRUE(room.shortcuts.resolveInstanceMethod("shortcutAction7"));
}

TEST_F(Action, WithoutTheScriptOnlyItsInstallationIsTalkedAbout) {
  fakes.fileManager.removeItemAtPath(script);
  launch();
  send("shortcutAction9");  // no such template either
  ASSERT_EQ(alerts().size(), 1U);
  EXPECT_EQ(alerts()[0].messageText,
            "You must install the QuennelHelper.sh script in order to use keyboard shortcuts!");
}

TEST_F(Action, ScriptThatThePressInstallsIsRunAtOnce) {
  fakes.fileManager.removeItemAtPath(script);
  fakes.fileManager.addFile("/app/QuennelHelper.sh", "#!/bin/sh\n");
  fakes.mainBundle.resources["QuennelHelper.sh"] = "/app/QuennelHelper.sh";
  fakes.userInterface.choices.push_back(scriptsFolder);
  launchWith({"Ctrl+Alt+N"});
  press("Ctrl+Alt+N");
  EXPECT_TRUE(exists("/d/untitled.txt"));
}

TEST_F(Action, FailedQueryMakesNoFile) {
  fakes.userScripts.scripts[script] = {"nonsense\n", {}};
  launchWith({"Ctrl+Alt+N"});
  press("Ctrl+Alt+N");
  EXPECT_FALSE(exists("/d/untitled.txt"));
  ASSERT_EQ(alerts().size(), 1U);
  EXPECT_EQ(alerts()[0].messageText, "Invalid directory path!");
}

TEST_F(Action, FileIsMadeByTheMainQueueAfterTheScriptHasEnded) {
  launchWith({"Ctrl+Alt+N"});
  fakes.hotKeyCenter.press("Ctrl+Alt+N");
  fakes.runLoop.serve();
  EXPECT_TRUE(eventually([this] { return fakes.userScripts.completions() == 1; }));
  EXPECT_FALSE(exists("/d/untitled.txt"));
  fakes.runLoop.runUntilIdle();
  EXPECT_TRUE(exists("/d/untitled.txt"));
}

TEST_F(Action, WhetherToAskForTheNameIsReadAtThePress) {
  launchWith({"Ctrl+Alt+N"});
  fakes.hotKeyCenter.press("Ctrl+Alt+N");
  fakes.runLoop.serve();
  fakes.sharedDefaults.setObject(false, "skipFilename");
  finish();
  EXPECT_TRUE(exists("/d/untitled.txt"));
  int panels = 0;
  fakes.userInterface.whileSavePanelShown = [&](FakeSavePanel&) {
    ++panels;
    return ModalResponse::Cancel;
  };
  press("Ctrl+Alt+N");
  EXPECT_EQ(panels, 1);
  EXPECT_FALSE(exists("/d/untitled-1.txt"));
  fakes.sharedDefaults.setObject(true, "skipFilename");
  press("Ctrl+Alt+N");
  EXPECT_EQ(panels, 1);
  EXPECT_TRUE(exists("/d/untitled-1.txt"));
}

TEST_F(Action, WhetherToAskForTheNameIsReadWhenTheScriptIsThereAndNotBefore) {
  fakes.mainBundle.resources["QuennelHelper.sh"] = "/app/QuennelHelper.sh";
  fakes.fileManager.addFile("/app/QuennelHelper.sh", "#!/bin/sh\n", 0755);
  fakes.fileManager.removeItemAtPath(script);
  fakes.userInterface.choices.push_back(scriptsFolder);
  fakes.userInterface.whilePanelShown = [this](const auto&) {
    fakes.sharedDefaults.setObject(false, "skipFilename");
  };
  int panels = 0;
  fakes.userInterface.whileSavePanelShown = [&](FakeSavePanel&) {
    ++panels;
    return ModalResponse::Cancel;
  };
  launchWith({"Ctrl+Alt+N"});
  press("Ctrl+Alt+N");
  EXPECT_EQ(panels, 1);
  EXPECT_FALSE(exists("/d/untitled.txt"));
}

TEST_F(Action, PressThatAsksForTheNameMakesTheFileThatTheUserNames) {
  fakes.sharedDefaults.setObject(false, "skipFilename");
  fakes.userInterface.whileSavePanelShown = [](FakeSavePanel& panel) {
    panel.name = "mine.txt";
    return ModalResponse::OK;
  };
  launchWith({"Ctrl+Alt+N"});
  press("Ctrl+Alt+N");
  EXPECT_TRUE(exists("/d/mine.txt"));
}

TEST_F(Action, PressWhileAPanelIsOpenMakesItsFileBesideIt) {
  launchWith({"Ctrl+Alt+N"});
  fakes.sharedDefaults.setObject(false, "skipFilename");
  fakes.userInterface.whileSavePanelShown = [this](FakeSavePanel&) {
    fakes.sharedDefaults.setObject(true, "skipFilename");
    press("Ctrl+Alt+N");
    EXPECT_TRUE(exists("/d/untitled.txt"));
    return ModalResponse::Cancel;
  };
  press("Ctrl+Alt+N");
  EXPECT_TRUE(exists("/d/untitled.txt"));
  EXPECT_FALSE(exists("/d/untitled-1.txt"));
}

TEST_F(Action, PressesFasterThanFilesCanBeMadeKeepOneBehindTheOneThatIsServed) {
  launchWith({"Ctrl+Alt+N"});
  for (int count = 0; count < 10; ++count) {
    fakes.hotKeyCenter.press("Ctrl+Alt+N");
  }
  finish();
  EXPECT_EQ(fakes.userScripts.executions.size(), 2u);
  EXPECT_TRUE(exists("/d/untitled-1.txt"));
  EXPECT_FALSE(exists("/d/untitled-2.txt"));
  press("Ctrl+Alt+N");
  EXPECT_TRUE(exists("/d/untitled-2.txt"));
}

TEST_F(Action, PressesOfOtherKeysDoNotWait) {
  launchWith({"Ctrl+Alt+N", "Ctrl+Alt+M"});
  fakes.hotKeyCenter.press("Ctrl+Alt+N");
  fakes.hotKeyCenter.press("Ctrl+Alt+M");
  fakes.runLoop.serve();
  EXPECT_EQ(fakes.userScripts.executions.size(), 2u);
  finish();
}

TEST_F(Action, PressAfterAQueryThatFailedIsServed) {
  launchWith({"Ctrl+Alt+N"});
  fakes.userScripts.scripts[script] = {"", Error{EPERM}};
  press("Ctrl+Alt+N");
  fakes.userScripts.scripts[script] = {"no folder\n", {}};
  press("Ctrl+Alt+N");
  fakes.userScripts.scripts.erase(script);
  press("Ctrl+Alt+N");
  fakes.userScripts.scripts[script] = {"/d\n", {}};
  press("Ctrl+Alt+N");
  EXPECT_EQ(fakes.userInterface.alerts.size(), 3u);
  EXPECT_TRUE(exists("/d/untitled.txt"));
}

TEST_F(Action, PressesDuringAnAlertOfTheirKeyShowNoFurtherOnesBesideIt) {
  launchWith({"Ctrl+Alt+N"});
  fakes.userScripts.scripts[script] = {"", Error{EPERM}};
  int shown = 0;
  int most = 0;
  int presses = 0;
  fakes.userInterface.whileShown = [&](const Alert&) {
    most = std::max(most, ++shown);
    if (++presses == 1) {
      for (int count = 0; count < 5; ++count) {
        press("Ctrl+Alt+N");
      }
    }
    --shown;
  };
  press("Ctrl+Alt+N");
  EXPECT_EQ(most, 1);
  EXPECT_EQ(fakes.userInterface.alerts.size(), 2u);
}

TEST_F(Action, KeptPressGoesWithTheKeysThatAreBoundAnew) {
  launchWith({"Ctrl+Alt+N"});
  fakes.hotKeyCenter.press("Ctrl+Alt+N");
  fakes.hotKeyCenter.press("Ctrl+Alt+N");
  fakes.runLoop.serve();
  room.shortcuts.bindHotKeys();
  finish();
  EXPECT_EQ(fakes.userScripts.executions.size(), 1u);
}

}  // namespace
}  // namespace quennel::test
