// The display under a helper with shortcuts ends, comes back, or comes elsewhere.

#include <sys/mount.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

#include "tests/e2e/HelperTest.h"
#include "tests/support/KeyboardDisplay.h"
#include "tests/support/LoopMount.h"

namespace quennel::test {
namespace {

/// A template with the shortcut Ctrl, Alt and N, and a user script that always tells the test's
/// folder.
class DisplayFlow : public HelperTest {
 protected:
  void SetUp() override {
    if (const char* const program = KeyboardDisplay::missingProgram()) {
      GTEST_SKIP() << program << " is not installed";
    }
    HelperTest::SetUp();
    if (IsSkipped()) {
      return;
    }
    auto note = templateRecord("note", "txt", "note.txt");
    note.insert_or_assign("shortcut", "Ctrl+Alt+N");
    set("fileTemplates", PropertyList::Array{note});
    const std::string scripts =
        _root / "home/Library/Application Scripts/net.brellow.QuennelHelper";
    std::filesystem::create_directories(scripts);
    std::ofstream(scripts + "/QuennelHelper.sh") << "#!/bin/sh\necho '" << folder() << "'\n";
    std::filesystem::permissions(scripts + "/QuennelHelper.sh", std::filesystem::perms::owner_all);
  }

  void startDisplay(const std::string& name = {}) {
    _display.emplace(name);
    _name = _display->name();
  }

  /// Hides the displays of others, which come and go as they like, from this test and the helper.
  /// False when the system does not let it.
  bool hideOtherDisplays() {
    _sockets.emplace("tmpfs", 1);
    std::filesystem::create_directories("/tmp/.X11-unix");
    return *_sockets &&
           mount(_sockets->path().c_str(), "/tmp/.X11-unix", nullptr, MS_BIND, nullptr) == 0;
  }

  std::string keys() const {
    Process tool({QUENNEL_CTL, "shortcuts", "--plain"}, environment());
    EXPECT_EQ(tool.wait(), 0) << tool.errorOutput();
    return tool.output();
  }
  void waitForWorkingKey() const {
    EXPECT_TRUE(eventually([&] { return keys() == "0\tCtrl+Alt+N\tnote\tyes\t\n"; })) << keys();
  }
  /// Waits until the helper has moved to the display there is now. Asking for the keys meanwhile
  /// would have the bus start another helper in its place, on the display that it knows from its
  /// own start.
  void waitForMove(const Process& helper) const {
    EXPECT_TRUE(eventually([&] {
      std::ifstream file("/proc/" + std::to_string(helper.pid()) + "/environ");
      const std::string variables((std::istreambuf_iterator<char>(file)), {});
      const std::string wanted = "DISPLAY=" + _name;
      return variables.find(wanted + '\0') != std::string::npos && ownsName();
    }));
  }
  void waitForLostKey() const {
    EXPECT_TRUE(eventually([&] { return keys().starts_with("0\tCtrl+Alt+N\tnote\tno\t"); }))
        << keys();
  }
  void pressMakes(const std::string& name) const {
    _display->press("ctrl+alt+n");
    EXPECT_TRUE(eventuallyExists(in(name)));
  }

  Process::Environment environment() const override {
    auto variables = HelperTest::environment();
    for (auto& [name, value] : variables) {
      if (name == "DISPLAY") {
        value = _name;
      }
    }
    return variables;
  }

  std::optional<LoopMount> _sockets;
  std::optional<KeyboardDisplay> _display;
  std::string _name;
};

TEST_F(DisplayFlow, AKeyWorksAgainWhenItsDisplayComesBack) {
  startDisplay();
  Process helper = startReadyHelper();
  waitForWorkingKey();
  pressMakes("note.txt");
  _display->stop();
  waitForLostKey();
  startDisplay(_name);
  waitForWorkingKey();
  pressMakes("note-1.txt");
  EXPECT_TRUE(helper.isRunning());
}

TEST_F(DisplayFlow, AKeyWorksOnTheNextDisplayWhateverItsNumber) {
  if (!hideOtherDisplays()) {
    GTEST_SKIP() << _sockets->reason();
  }
  startDisplay();
  Process helper = startReadyHelper();
  waitForWorkingKey();
  const std::string before = _name;
  _display->stop();
  waitForLostKey();
  startDisplay(":" + std::to_string(std::stoi(before.substr(1)) + 40));
  ASSERT_NE(_name, before);
  waitForMove(helper);
  waitForWorkingKey();
  pressMakes("note.txt");
  EXPECT_TRUE(helper.isRunning());
}

TEST_F(DisplayFlow, AKeyWorksWhenTheHelperIsAskedForOnADisplayThatItDidNotKnow) {
  if (!hideOtherDisplays()) {
    GTEST_SKIP() << _sockets->reason();
  }
  Process helper = startReadyHelper();
  waitForLostKey();
  startDisplay();
  EXPECT_EQ(startHelper().wait(), 0);
  waitForMove(helper);
  waitForWorkingKey();
  pressMakes("note.txt");
}

TEST_F(DisplayFlow, AHelperWhoseDisplayIsGoneLeavesAsOneWithoutKeysDoes) {
  startDisplay();
  Process helper = startReadyHelper();
  waitForWorkingKey();
  _display->stop();
  EXPECT_EQ(helper.wait(Deadline(std::chrono::seconds(40))), 0);
}

}  // namespace
}  // namespace quennel::test
