#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tests/e2e/desktop/DesktopTest.h"

namespace quennel::test {
namespace {

/// A file manager that shows the folder, and a helper with a key for each of two templates: Ctrl,
/// Alt and N for note.txt, Ctrl, Alt and M for script.sh.
class ShortcutFlow : public DesktopTest {
 protected:
  void SetUp() override {
    if (!isInstalled("thunar")) {
      GTEST_SKIP() << "thunar is not installed";
    }
    DesktopTest::SetUp();
    if (IsSkipped()) {
      return;
    }
    setShortcuts("Ctrl+Alt+N", "Ctrl+Alt+M");
    installScript();
    openFolder();
    _helper.emplace(startReadyHelper());
    waitForKeys("0\tCtrl+Alt+N\tnote\tyes\t\n1\tCtrl+Alt+M\tscript\tyes\t\n");
  }

  void setShortcuts(const std::string& first, const std::string& second) {
    auto note = templateRecord("note", "txt", "note.txt");
    auto program = templateRecord("script", "sh", "script.sh");
    note.insert_or_assign("shortcut", first);
    program.insert_or_assign("shortcut", second);
    set("fileTemplates", PropertyList::Array{note, program});
  }

  void installScript() const {
    std::filesystem::create_directories(scriptsFolder);
    std::filesystem::copy_file(QUENNEL_SCRIPT, script);
  }

  void openFolder() {
    _fileManager.emplace(std::vector<std::string>{"thunar", folder()}, environment());
    const auto isThere = [this] {
      Process query({QUENNEL_SCRIPT, QUENNEL_FINDER_PATH}, environment());
      query.wait();
      return query.output() == folder() + "\n";
    };
    ASSERT_TRUE(eventually(isThere)) << "the file manager shows no folder";
  }

  /// What quennelctl says of the keys.
  std::string keys() const {
    Process tool({QUENNEL_CTL, "shortcuts", "--plain"}, environment());
    EXPECT_EQ(tool.wait(), 0) << tool.errorOutput();
    return tool.output();
  }
  void waitForKeys(const std::string& expected) const {
    EXPECT_TRUE(eventually([&] { return keys() == expected; })) << keys();
  }
  void press(const std::string& key) const { desktop().pressKey("ctrl+alt+" + key); }
  void answer(const std::string& window, const std::string& key) const {
    waitForWindow(window);
    desktop().pressKey(key);
    waitUntilGone(window);
  }

  const std::string scriptsFolder =
      _root / "home/Library/Application Scripts/net.brellow.QuennelHelper";
  const std::string script = scriptsFolder + "/QuennelHelper.sh";
  std::optional<Process> _fileManager;
  std::optional<Process> _helper;
};

TEST_F(ShortcutFlow, AKeyMakesTheFileInTheFolderInFront) {
  press("m");
  EXPECT_TRUE(eventuallyExists(in("script.sh")));
  EXPECT_EQ(countEntries(folder()), 1u);
}

TEST_F(ShortcutFlow, TheSameKeyTwiceMakesTwoFiles) {
  press("n");
  press("n");
  EXPECT_TRUE(eventuallyExists(in("note.txt")));
  EXPECT_TRUE(eventuallyExists(in("note-1.txt")));
}

TEST_F(ShortcutFlow, TheSameKeyForTwoTemplatesIsTheFirstOnes) {
  setShortcuts("Ctrl+Alt+N", "Ctrl+Alt+N");
  command("fileTemplates");
  EXPECT_EQ(keys(),
            "0\tCtrl+Alt+N\tnote\tyes\t\n"
            "1\tCtrl+Alt+N\tscript\tno\tAnother key of this program has this combination.\n");
  press("n");
  EXPECT_TRUE(eventuallyExists(in("note.txt")));
  EXPECT_FALSE(exists(in("script.sh")));
}

TEST_F(ShortcutFlow, AKeyThatIsGivenUpIsFreeAgain) {
  setShortcuts("Ctrl+Alt+X", "Ctrl+Alt+M");
  command("fileTemplates");
  waitForKeys("0\tCtrl+Alt+X\tnote\tyes\t\n1\tCtrl+Alt+M\tscript\tyes\t\n");
  press("n");
  press("x");
  EXPECT_TRUE(eventuallyExists(in("note.txt")));
  EXPECT_EQ(countEntries(folder()), 1u);
}

TEST_F(ShortcutFlow, FiftyPressesMakeFiftyFiles) {
  for (std::size_t count = 1; count <= 50; ++count) {
    press("n");
    ASSERT_TRUE(eventually([&] { return countEntries(folder()) == count; })) << count;
  }
  EXPECT_TRUE(exists(in("note-49.txt")));
  EXPECT_TRUE(_helper->isRunning());
}

TEST_F(ShortcutFlow, PressesFasterThanFilesAreMadeLeaveNoneBehind) {
  Process keyboard({"xdotool", "key", "--repeat", "200", "--delay", "1", "ctrl+alt+n"},
                   environment());
  EXPECT_EQ(keyboard.wait(Deadline(std::chrono::seconds(60))), 0);
  const std::size_t made = countEntries(folder());
  press("m");
  EXPECT_TRUE(eventuallyExists(in("script.sh")));
  // One that was being served, one behind it, and the other key's.
  EXPECT_LE(countEntries(folder()), made + 3);
  EXPECT_LT(made, 150u);
}

TEST_F(ShortcutFlow, TheFirstPressWithoutTheScriptInstallsIt) {
  std::filesystem::remove(script);
  press("n");
  answer("Select Scripts Directory", "Return");
  EXPECT_TRUE(eventuallyExists(script));
  EXPECT_TRUE(eventuallyExists(in("note.txt")));
  press("n");
  EXPECT_TRUE(eventuallyExists(in("note-1.txt")));
}

TEST_F(ShortcutFlow, APressWithoutTheScriptThatIsCancelledMakesNothing) {
  std::filesystem::remove(script);
  press("n");
  answer("Select Scripts Directory", "Escape");
  answer("Quennel", "Return");
  EXPECT_FALSE(exists(script));
  EXPECT_EQ(countEntries(folder()), 0u);
}

TEST_F(ShortcutFlow, AnotherFolderChosenLetsTheScriptBeWrittenNowhere) {
  std::filesystem::remove(script);
  const std::string other = _root / "other";
  std::filesystem::create_directories(other);
  press("n");
  waitForWindow("Select Scripts Directory");
  desktop().type(other);
  desktop().pressKey("Return");
  answer("Quennel", "Escape");
  EXPECT_FALSE(exists(script));
  EXPECT_EQ(countEntries(other), 0u);
  EXPECT_EQ(countEntries(folder()), 0u);
  press("n");
  answer("Select Scripts Directory", "Return");
  EXPECT_TRUE(eventuallyExists(script));
}

TEST_F(ShortcutFlow, FurtherPressesDuringTheInstallationDoNothing) {
  std::filesystem::remove(script);
  press("n");
  waitForWindow("Select Scripts Directory");
  press("n");
  press("m");
  answer("Select Scripts Directory", "Return");
  EXPECT_TRUE(eventuallyExists(in("note.txt")));
  EXPECT_FALSE(isShown("Select Scripts Directory"));
  EXPECT_EQ(countEntries(folder()), 1u);
}

TEST_F(ShortcutFlow, WhetherToAskForANameIsReadAtEveryPress) {
  press("n");
  ASSERT_TRUE(eventuallyExists(in("note.txt")));
  set("skipFilename", false);
  press("m");
  answer("New script", "Return");
  EXPECT_TRUE(eventuallyExists(in("script.sh")));
  set("skipFilename", true);
  press("n");
  EXPECT_TRUE(eventuallyExists(in("note-1.txt")));
}

TEST_F(ShortcutFlow, APressWhileAPanelIsOpenMakesItsFile) {
  set("skipFilename", false);
  press("m");
  waitForWindow("New script");
  set("skipFilename", true);
  press("n");
  EXPECT_TRUE(eventuallyExists(in("note.txt")));
  EXPECT_TRUE(isShown("New script"));
  answer("New script", "Return");
  EXPECT_TRUE(eventuallyExists(in("script.sh")));
}

TEST_F(ShortcutFlow, ATemplateThatWasRemovedSinceIsReported) {
  set("fileTemplates", PropertyList::Array{});
  press("n");
  answer("Quennel", "Return");
  EXPECT_EQ(countEntries(folder()), 0u);
}

TEST_F(ShortcutFlow, ADisabledTemplatesKeyMakesItsFile) {
  auto record = templateRecord("note", "txt", "note.txt");
  record.insert_or_assign("shortcut", "Ctrl+Alt+N");
  record.insert_or_assign("enabled", false);
  set("fileTemplates", PropertyList::Array{record});
  command("fileTemplates");
  waitForKeys("0\tCtrl+Alt+N\tnote\tyes\t\n");
  press("n");
  EXPECT_TRUE(eventuallyExists(in("note.txt")));
}

TEST_F(ShortcutFlow, TheToolGivesAKeyThatWorksAtOnce) {
  Process tool({QUENNEL_CTL, "template", "edit", "1", "--shortcut", "Ctrl+Alt+X"}, environment());
  EXPECT_EQ(tool.wait(), 0);
  EXPECT_EQ(tool.output(),
            "Changed template 1: script (script.sh)\nIts shortcut Ctrl+Alt+X works now\n");
  press("x");
  EXPECT_TRUE(eventuallyExists(in("script.sh")));
}

TEST_F(ShortcutFlow, TheToolStartsTheHelperWhichThenStays) {
  command("quit");
  EXPECT_EQ(_helper->wait(), 0);
  EXPECT_EQ(keys(), "0\tCtrl+Alt+N\tnote\tyes\t\n1\tCtrl+Alt+M\tscript\tyes\t\n");
  press("n");
  EXPECT_TRUE(eventuallyExists(in("note.txt")));
}

}  // namespace
}  // namespace quennel::test
