// The folder query with scripts that really run, in a scripts folder of their own.

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>

#include "access/Alerts.h"
#include "platform/linux/tasks/LinuxUserScripts.h"
#include "shortcuts/FolderQuery.h"
#include "tests/support/Deadline.h"
#include "tests/support/DesktopTest.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

class RealScript : public DesktopTest {
 protected:
  RealScript() {
    fakes.mainBundle.resources["get-finder-path.scpt"] = _home / "get-finder-path.scpt";
  }

  std::string path() const {
    return _scripts->applicationScriptsDirectory(nullptr).value_or("") + "/QuennelHelper.sh";
  }

  void install(const std::string& body) {
    std::ofstream(path()) << "#!/bin/sh\n" << body << "\n";
    std::filesystem::permissions(path(), std::filesystem::perms::owner_all);
  }

  /// The folder that is found, else the title of the alert.
  std::string outcome() {
    std::optional<std::string> folder;
    _query->getFinderPathWithTemplate({""}, [this, &folder](const std::string& found, const auto&) {
      fakes.runLoop.dispatchAsync([&folder, found] { folder = found; });
    });
    const auto isOver = [&] { return folder || !fakes.userInterface.alerts.empty(); };
    EXPECT_TRUE(fakes.runLoop.runUntil(isOver));
    return folder ? *folder : fakes.userInterface.alerts.back().messageText.value_or("");
  }

  /// The end of the program, in the order of the real one.
  void end() {
    fakes.runLoop.terminate();
    _query.reset();
    _scripts.reset();
  }

  TemporaryDirectory _home;
  EnvironmentVariable _homeVariable{"HOME", _home.path()};
  std::unique_ptr<LinuxUserScripts> _scripts = std::make_unique<LinuxUserScripts>(
      fakes.mainBundle,
      ScriptLimits{.time = std::chrono::seconds(2), .aftermath = std::chrono::milliseconds(100)});
  Alerts _alerts{fakes.userInterface, fakes.runLoop};
  std::unique_ptr<FolderQuery> _query =
      std::make_unique<FolderQuery>(fakes.runLoop, *_scripts, fakes.mainBundle, _alerts);
};

TEST_F(RealScript, AnswersTheFolder) {
  install("echo /tmp/folder");
  EXPECT_EQ(outcome(), "/tmp/folder");
}

TEST_F(RealScript, IsGivenThePathOfTheBundlesProgramAlone) {
  install("echo \"$1\"; [ $# = 1 ]");
  EXPECT_EQ(outcome(), _home / "get-finder-path.scpt");
}

TEST_F(RealScript, MayPrintNoLineBreak) {
  install("printf /tmp/folder");
  EXPECT_EQ(outcome(), "/tmp/folder");
}

TEST_F(RealScript, MayLeaveAChildThatHoldsItsOutput) {
  install("sleep 60 & echo /tmp/folder");
  EXPECT_EQ(outcome(), "/tmp/folder");
}

TEST_F(RealScript, MayCloseItsOutputEarly) {
  install("echo /tmp/folder; exec >&-; sleep 0.05");
  EXPECT_EQ(outcome(), "/tmp/folder");
}

TEST_F(RealScript, ThatPrintsNothingIsRefused) {
  install("exit 0");
  EXPECT_EQ(outcome(), "Invalid directory path!");
}

TEST_F(RealScript, ThatIsMissingCannotRun) {
  EXPECT_EQ(outcome(), "Unable to run QuennelHelper.sh!");
}

TEST_F(RealScript, ThatIsNotExecutableGetsNoFolder) {
  install("echo /tmp/folder");
  std::filesystem::permissions(path(), std::filesystem::perms::owner_read);
  EXPECT_EQ(outcome(), "Unable to get current folder path!");
  EXPECT_EQ(fakes.userInterface.alerts.back().informativeText,
            "“" + path() + "” could not be started: you are not allowed to.");
}

TEST_F(RealScript, ThatHangsGetsNoFolder) {
  install("echo /tmp/folder; sleep 60");
  EXPECT_EQ(outcome(), "Unable to get current folder path!");
}

TEST_F(RealScript, ThatPrintsMegabytesGetsNoFolder) {
  install("while :; do echo /tmp/folder; done");
  EXPECT_EQ(outcome(), "Unable to get current folder path!");
}

TEST_F(RealScript, ThatDiesOfASignalGetsNoFolder) {
  install("echo /tmp/folder; kill -KILL $$");
  EXPECT_EQ(outcome(), "Unable to get current folder path!");
}

TEST_F(RealScript, ThatFailsGetsNoFolder) {
  install("echo /tmp/folder; exit 1");
  EXPECT_EQ(outcome(), "Unable to get current folder path!");
}

TEST_F(RealScript, IsEndedWithTheProgram) {
  install("sleep 60");
  _query->getFinderPathWithTemplate({""}, [](const auto&, const auto&) { FAIL(); });
  end();
  EXPECT_TRUE(fakes.userInterface.alerts.empty());
}

TEST_F(RealScript, WhoseAnswerIsBeingRefusedDoesNotHoldUpTheEndOfTheProgram) {
  install("echo nonsense");
  _query->getFinderPathWithTemplate({""}, [](const auto&, const auto&) { FAIL(); });
  EXPECT_TRUE(eventually([this] { return fakes.runLoop.pendingCount() > 0; }));
  end();
  EXPECT_TRUE(fakes.userInterface.alerts.empty());
}

}  // namespace
}  // namespace quennel::test
