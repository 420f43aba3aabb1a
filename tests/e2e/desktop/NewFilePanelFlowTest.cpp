#include <chrono>
#include <filesystem>

#include "tests/e2e/desktop/DesktopTest.h"

namespace quennel::test {
namespace {

using namespace std::chrono_literals;

/// Requests that let the user name the file first.
class NewFilePanelFlow : public DesktopTest {
 protected:
  void SetUp() override {
    DesktopTest::SetUp();
    if (!IsSkipped()) {
      set("skipFilename", false);
    }
  }

  /// Asks for a note and answers the panel's window.
  std::string request() { return request(folder(), "0", "New note"); }
  std::string request(const std::string& dir, const std::string& index, const std::string& title) {
    open({requestFor(dir, index)});
    return waitForWindow(title);
  }
  void press(const std::vector<std::string>& keys) const {
    for (const std::string& key : keys) {
      desktop().pressKey(key);
    }
  }
  /// Types over the proposed name.
  void typeAndAccept(const std::string& name) const {
    desktop().type(name);
    press({"Return"});
  }
  void expectMade(const std::string& name, const std::string& text = "Dear reader\n") const {
    EXPECT_TRUE(eventually([&] { return contents(in(name)) == text; })) << name;
  }
  /// The alert with the keyboard, dismissed.
  void dismissAlert() const {
    waitForWindow("Quennel");
    press({"Return"});
    waitUntilGone("Quennel");
  }
};

TEST_F(NewFilePanelFlow, ReturnMakesTheFileUnderTheProposedName) {
  request();
  press({"Return"});
  expectMade("note.txt");
  waitUntilGone("New note");
}

TEST_F(NewFilePanelFlow, ATakenNameIsProposedWithANumber) {
  write(in("note.txt"), "old");
  request();
  press({"Return"});
  expectMade("note-1.txt");
  EXPECT_EQ(contents(in("note.txt")), "old");
}

TEST_F(NewFilePanelFlow, ATypedNameTakesThePlaceOfTheProposedOne) {
  request();
  typeAndAccept("report");
  expectMade("report.txt");
  EXPECT_EQ(countEntries(folder()), 1u);
}

TEST_F(NewFilePanelFlow, DotsInATypedNameAreKept) {
  request();
  typeAndAccept("report.v2.final");
  expectMade("report.v2.final.txt");
}

TEST_F(NewFilePanelFlow, ANameThatIsNotASCIIIsKept) {
  ASSERT_EQ(Process({"setxkbmap", "-layout", "de"}).wait(), 0);
  request();
  typeAndAccept("größe");
  expectMade("größe.txt");
}

TEST_F(NewFilePanelFlow, ANameWithASlashLeadsIntoAFolder) {
  std::filesystem::create_directory(in("letters"));
  request();
  typeAndAccept("letters/report");
  expectMade("letters/report.txt");
}

TEST_F(NewFilePanelFlow, AnEmptyNameMakesNothing) {
  request();
  press({"BackSpace", "Return"});
  desktop().type("x");
  press({"Return"});
  expectMade("x.txt");
  EXPECT_EQ(countEntries(folder()), 1u);
}

TEST_F(NewFilePanelFlow, ANameThatIsTooLongMakesNothing) {
  request();
  typeAndAccept(std::string(256, 'n'));
  press({"ctrl+a"});
  typeAndAccept("short");
  expectMade("short.txt");
  EXPECT_EQ(countEntries(folder()), 1u);
}

TEST_F(NewFilePanelFlow, AnExistingFileIsReplacedWhenTheUserAgrees) {
  write(in("taken.txt"), "old");
  const std::string panel = request();
  typeAndAccept("taken");
  waitForWindow("New note", panel);
  press({"Escape"});
  EXPECT_EQ(waitForWindow("New note"), panel);
  EXPECT_EQ(contents(in("taken.txt")), "old");
  press({"Return"});
  waitForWindow("New note", panel);
  press({"alt+r"});
  expectMade("taken.txt");
}

TEST_F(NewFilePanelFlow, AnExistingFolderIsReplacedWhenTheUserAgrees) {
  std::filesystem::create_directories(in("old/src"));
  write(in("old/src/lost.c"), "");
  const std::string panel = request(folder(), "2", "New project");
  typeAndAccept("old");
  waitForWindow("New project", panel);
  press({"alt+r"});
  expectMade("old/src/main.c", "int main;\n");
  EXPECT_FALSE(exists(in("old/src/lost.c")));
}

TEST_F(NewFilePanelFlow, AnotherTemplateIsChosenByTheKeyboard) {
  request();
  press({"alt+t", "Down"});
  waitForWindow("New script");
  press({"Return"});
  expectMade("script.sh", "#!/bin/sh\n");
  EXPECT_TRUE(eventually([&] {
    const auto mode = std::filesystem::status(in("script.sh")).permissions();
    return (mode & std::filesystem::perms::owner_exec) != std::filesystem::perms::none;
  }));
}

TEST_F(NewFilePanelFlow, AnotherTemplateIsChosenFromTheMenuOfTheButton) {
  const std::string panel = request();
  const auto [width, height] = desktop().windowSize(panel);
  desktop().click(panel, width / 2, height - 45);
  press({"Down", "Down", "Return"});
  waitForWindow("New project");
  press({"Return"});
  expectMade("project/src/main.c", "int main;\n");
}

TEST_F(NewFilePanelFlow, SwitchingTemplatesTwiceProposesTheFirstNameAnew) {
  request();
  desktop().type("typed");
  press({"Tab", "Down"});
  waitForWindow("New script");
  press({"Up"});
  waitForWindow("New note");
  press({"Return"});
  expectMade("note.txt");
  EXPECT_EQ(countEntries(folder()), 1u);
}

TEST_F(NewFilePanelFlow, ADisabledTemplateThatIsAskedForIsOffered) {
  auto disabled = templateRecord("secret", "txt", "note.txt");
  disabled.insert_or_assign("enabled", false);
  set("fileTemplates", PropertyList::Array{disabled, templateRecord("script", "sh", "script.sh")});
  request(folder(), "0", "New secret");
  press({"alt+t", "Down"});
  waitForWindow("New script");
  press({"Up", "Return"});
  expectMade("secret.txt");
}

TEST_F(NewFilePanelFlow, SettingsThatChangeMeanwhileDoNotChangeThePanel) {
  request();
  set("fileTemplates", PropertyList::Array{});
  set("skipFilename", true);
  press({"Return"});
  expectMade("note.txt");
  open({requestFor(folder(), "0")});
  dismissAlert();
}

TEST_F(NewFilePanelFlow, AFolderOutsideEveryGrantIsAllowedByChoosingIt) {
  const auto granted = settings().objectForKey("authorizedDirs");
  request();
  typeAndAccept("../");
  typeAndAccept("report");
  EXPECT_TRUE(eventually([&] { return contents(_root / "report.txt") == "Dear reader\n"; }));
  EXPECT_EQ(settings().objectForKey("authorizedDirs"), granted);
}

TEST_F(NewFilePanelFlow, AFolderCanBeMadeInThePanel) {
  const std::string panel = request();
  const auto [width, height] = desktop().windowSize(panel);
  desktop().click(panel, width - 78, 23);
  ASSERT_TRUE(eventually([&] { return countEntries(folder()) == 1; }));
  typeAndAccept("letters");
  ASSERT_TRUE(eventuallyExists(in("letters")));
  press({"alt+n", "ctrl+a"});
  typeAndAccept("letters/report");
  expectMade("letters/report.txt");
}

TEST_F(NewFilePanelFlow, TheButtonsCanBeClicked) {
  const std::string panel = request();
  const auto [width, height] = desktop().windowSize(panel);
  desktop().click(panel, width - 50, height - 74);
  expectMade("note.txt");
}

TEST_F(NewFilePanelFlow, ARemovalThatFailsIsReported) {
  const std::string panel = request(folder(), "2", "New project");
  typeAndAccept("/proc/version");
  waitForWindow("New project", panel);
  press({"alt+r"});
  dismissAlert();
  EXPECT_TRUE(exists("/proc/version"));
}

TEST_F(NewFilePanelFlow, ACopyThatFailsIsReported) {
  set("fileTemplates", PropertyList::Array{templateRecord("note", "txt", "missing.txt")});
  request();
  press({"Return"});
  dismissAlert();
  EXPECT_EQ(countEntries(folder()), 0u);
}

TEST_F(NewFilePanelFlow, TwoRequestsHaveAPanelEach) {
  request();
  request(folder(), "1", "New script");
  press({"Return"});
  expectMade("script.sh", "#!/bin/sh\n");
  waitForWindow("New note");
  press({"Return"});
  expectMade("note.txt");
}

TEST_F(NewFilePanelFlow, AFolderOf5000FilesIsNoHindrance) {
  write(in("note.txt"), "");
  for (int number = 1; number < 5000; ++number) {
    write(in("note-" + std::to_string(number) + ".txt"), "");
  }
  request();
  press({"Return"});
  expectMade("note-5000.txt");
}

TEST_F(NewFilePanelFlow, ThePanelStandsAboveNormalWindowsWithTheKeyboard) {
  const std::string state = desktop().windowProperty(request(), "_NET_WM_STATE");
  EXPECT_NE(state.find("_NET_WM_STATE_ABOVE"), std::string::npos) << state;
}

TEST_F(NewFilePanelFlow, TheQuitCommandEndsTheHelperDuringThePanelAndItsQuestion) {
  write(in("taken.txt"), "old");
  Process helper = startReadyHelper();
  const std::string panel = request();
  typeAndAccept("taken");
  waitForWindow("New note", panel);
  command("quit");
  EXPECT_EQ(helper.wait(), 0);
  EXPECT_EQ(contents(in("taken.txt")), "old");
}

TEST_F(NewFilePanelFlow, AQuitCheckDuringThePanelLeavesItOpen) {
  Process helper = startReadyHelper();
  set("skipFilename", true);
  open({requestFor(folder(), "0")});  // arms a check
  ASSERT_TRUE(eventuallyExists(in("note.txt")));
  set("skipFilename", false);
  request();
  EXPECT_EQ(helper.wait(Deadline(12s)), std::nullopt);
  press({"Return"});
  expectMade("note-1.txt");
}

TEST_F(NewFilePanelFlow, AfterACancelTheHelperStays) {
  Process helper = startReadyHelper();
  request();
  press({"Escape"});
  waitUntilGone("New note");
  EXPECT_EQ(helper.wait(Deadline(12s)), std::nullopt);
  EXPECT_EQ(countEntries(folder()), 0u);
  request();
  press({"Return"});
  expectMade("note.txt");
}

}  // namespace
}  // namespace quennel::test
