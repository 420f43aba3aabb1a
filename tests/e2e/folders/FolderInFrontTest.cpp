// The user script and the program behind it, with windows of real file managers in front.

#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/tasks/LinuxUserScripts.h"
#include "tests/e2e/folders/FileManagerSession.h"
#include "tests/support/Deadline.h"
#include "tests/support/FakeBundle.h"
#include "tests/support/TaskOutcome.h"

namespace quennel::test {
namespace {

class FolderInFront : public testing::TestWithParam<FileManagerSession::FileManager> {
 protected:
  void SetUp() override {
    if (const auto missing = FileManagerSession::missingProgram(GetParam())) {
      GTEST_SKIP() << *missing << " is not installed";
    }
    session = std::make_unique<FileManagerSession>(GetParam());
  }

  /// What the script prints, without the line break behind it.
  static std::string answer() {
    Process process({QUENNEL_SCRIPT, QUENNEL_FINDER_PATH});
    EXPECT_EQ(process.wait(), 0);
    EXPECT_EQ(process.errorOutput(), "");
    std::string output = process.output();
    EXPECT_TRUE(output.ends_with('\n'));
    EXPECT_GT(output.size(), 1u);
    output.pop_back();
    return output;
  }
  /// The path that it prints; nothing when it says why it prints none.
  static std::optional<std::string> ask() {
    const std::string printed = answer();
    return printed.starts_with('/') ? std::optional(printed) : std::nullopt;
  }

  /// Asks until there is an answer: a window that has just come up may not take drops yet.
  static std::string told() {
    std::optional<std::string> answer;
    EXPECT_TRUE(eventually([&] { return (answer = ask()).has_value(); }));
    return answer.value_or("");
  }

  static std::string titleOf(const std::string& window) {
    Process process({"xdotool", "getwindowname", window});
    process.wait();
    return process.output();
  }

  static constexpr auto scriptsFolder = "Library/Application Scripts/net.brellow.QuennelHelper";
  std::string path(const std::string& name) const { return session->home() + "/" + name; }

  std::unique_ptr<FileManagerSession> session;
};

TEST_P(FolderInFront, IsTold) {
  session->openNewFolder("folder");
  EXPECT_EQ(told(), path("folder"));
}

TEST_P(FolderInFront, IsToldToTheHelper) {
  session->openNewFolder("folder");
  told();
  const FakeBundle bundle;
  LinuxUserScripts scripts(bundle);
  const std::string installed = *scripts.applicationScriptsDirectory(nullptr) + "/QuennelHelper.sh";
  std::filesystem::copy_file(QUENNEL_SCRIPT, installed);
  TaskOutcome outcome(scripts, installed, {QUENNEL_FINDER_PATH});
  EXPECT_EQ(outcome.output(), path("folder") + "\n");
}

TEST_P(FolderInFront, MayHaveANameOfAnyCharacters) {
  session->openNewFolder("Größe: 100% ?#&;\"'\\");
  EXPECT_EQ(told(), path("Größe: 100% ?#&;\"'\\"));
}

TEST_P(FolderInFront, MayHaveALineBreakInItsName) {
  session->openNewFolder("two\nlines");
  EXPECT_EQ(told(), path("two\nlines"));
}

TEST_P(FolderInFront, IsNotToldWhenItsNameCannotBe) {
  session->openNewFolder("folder");
  told();
  session->openNewFolder("end\n");
  EXPECT_TRUE(eventually([] { return !ask(); }));
  EXPECT_EQ(ask(), std::nullopt);
}

TEST_P(FolderInFront, MayBeTheHomeFolder) {
  session->openFolder(session->home());
  EXPECT_EQ(told(), session->home());
}

TEST_P(FolderInFront, MayBeFullOfFolders) {
  for (int i = 0; i < 150; ++i) {
    session->makeFolder("full/folder " + std::to_string(i));
  }
  session->openFolder(path("full"));
  EXPECT_EQ(told(), path("full"));
}

TEST_P(FolderInFront, MayHaveTheNameOfTheFolderAroundIt) {
  session->openNewFolder("same/same");
  EXPECT_EQ(told(), path("same/same"));
}

TEST_P(FolderInFront, IsThatOfTheWindowInFront) {
  const std::string first = session->openNewFolder("first");
  EXPECT_EQ(told(), path("first"));
  const std::string second = session->openNewFolder("second");
  // A window comes up before it shows its folder.
  EXPECT_TRUE(eventually([&] { return titleOf(second).find("second") != std::string::npos; }));
  EXPECT_EQ(told(), path("second"));
  session->activate(first);
  EXPECT_EQ(told(), path("first"));
}

TEST_P(FolderInFront, MayBeBehindAnotherProgram) {
  session->openNewFolder("folder");
  told();
  const Process other = session->openOtherProgram();
  EXPECT_EQ(told(), path("folder"));
}

TEST_P(FolderInFront, IsNotToldWhileItsWindowIsMinimized) {
  const std::string window = session->openNewFolder("folder");
  told();
  session->minimize(window);
  EXPECT_EQ(ask(), std::nullopt);
}

TEST_P(FolderInFront, IsNotToldWithoutAWindow) {
  EXPECT_EQ(answer(), "No window of a file manager that can be asked shows a folder.");
}

TEST_P(FolderInFront, IsNotTheOneOfTheScripts) {
  session->openNewFolder("folder");
  told();
  session->openNewFolder(scriptsFolder);
  EXPECT_EQ(told(), path("folder"));
}

TEST_P(FolderInFront, IsNotToldWhenThereIsOnlyTheOneOfTheScripts) {
  session->openNewFolder(scriptsFolder);
  EXPECT_TRUE(eventually(
      [] { return answer() == "No window of a file manager that can be asked shows a folder."; }));
}

TEST_P(FolderInFront, IsNotChangedByBeingAskedFor) {
  session->openNewFolder("folder");
  told();
  EXPECT_TRUE(std::filesystem::is_empty(path("folder")));
  EXPECT_EQ(session->countWindows(), 1u);
}

TEST_P(FolderInFront, MayHaveItemsSelected) {
  session->makeFolder("folder/child");
  session->openFolder(path("folder"));
  session->server().pressKey("ctrl+a");
  EXPECT_EQ(told(), path("folder"));
  EXPECT_EQ(ask(), path("folder"));
  EXPECT_EQ(session->countWindows(), 1u);
}

TEST_P(FolderInFront, IsNotWaitedForWhenTheFileManagerHangs) {
  const std::string window = session->openNewFolder("folder");
  told();
  const pid_t process = session->processOf(window);
  kill(process, SIGSTOP);
  EXPECT_EQ(ask(), std::nullopt);
  kill(process, SIGCONT);
  EXPECT_EQ(told(), path("folder"));
}

INSTANTIATE_TEST_SUITE_P(InARealFileManager, FolderInFront, testing::Values("thunar", "pcmanfm-qt"),
                         [](const auto& fileManager) {
                           return fileManager.param == "thunar" ? "Thunar" : "PCManFMQt";
                         });

}  // namespace
}  // namespace quennel::test
