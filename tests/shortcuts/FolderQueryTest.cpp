#include <cerrno>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/Deadline.h"
#include "tests/support/DesktopTest.h"
#include "tests/support/ShortcutsRoom.h"

namespace quennel::test {
namespace {

/// The user script, and a user who presses a shortcut.
class FolderQuery : public DesktopTest {
 protected:
  FolderQuery() {
    fakes.mainBundle.resources["get-finder-path.scpt"] = "/app/get-finder-path.scpt";
    fakes.userInterface.whileShown = [this](const Alert&) {
      alertThread = std::this_thread::get_id();
      completionsAtAlert = fakes.userScripts.completions();
    };
  }

  void scriptPrints(const std::string& output) { fakes.userScripts.scripts[path] = {output, {}}; }
  void scriptFails(const Error& error) { fakes.userScripts.scripts[path] = {"/tmp\n", error}; }

  /// Starts the query, and no more.
  void ask() {
    room.folderQuery.getFinderPathWithTemplate(
        FileTemplate("the template"),
        [this](const std::string& folder, const FileTemplate& template_) {
          answer = folder;
          answeredTemplate = template_;
          answerThread = std::this_thread::get_id();
        });
  }

  /// The folder that the query finds. Returns when everything is over, alerts included.
  std::optional<std::string> folder() {
    ask();
    EXPECT_TRUE(fakes.runLoop.runUntil([this] { return fakes.userScripts.completions() == 1; }));
    fakes.runLoop.runUntilIdle();
    return answer;
  }

  void expectAlert(const std::string& title, const std::optional<std::string>& message) {
    ASSERT_EQ(fakes.userInterface.alerts.size(), 1u);
    const Alert& alert = fakes.userInterface.alerts.front();
    EXPECT_EQ(alert.messageText, title);
    EXPECT_EQ(alert.informativeText, message);
    EXPECT_EQ(alert.alertStyle, AlertStyle::Critical);
    EXPECT_TRUE(alert.buttons.empty());
    EXPECT_EQ(alertThread, std::this_thread::get_id());
    EXPECT_EQ(answer, std::nullopt);
  }

  ShortcutsRoom room{fakes};
  const std::string path =
      "/home/user/Library/Application Scripts/net.brellow.QuennelHelper/QuennelHelper.sh";
  std::optional<std::string> answer;
  std::optional<FileTemplate> answeredTemplate;
  std::thread::id answerThread;
  std::thread::id alertThread;
  int completionsAtAlert = -1;
};

TEST_F(FolderQuery, AnswersThePathThatTheScriptPrints) {
  scriptPrints("/Users/me/Documents\n");
  EXPECT_EQ(folder(), "/Users/me/Documents");
  EXPECT_TRUE(fakes.userInterface.alerts.empty());
}

TEST_F(FolderQuery, RunsTheInstalledScriptWithTheBundlesProgram) {
  scriptPrints("/tmp\n");
  folder();
  ASSERT_EQ(fakes.userScripts.executions.size(), 1u);
  EXPECT_EQ(fakes.userScripts.executions[0].path, path);
  EXPECT_EQ(fakes.userScripts.executions[0].arguments,
            std::vector<std::string>{"/app/get-finder-path.scpt"});
}

TEST_F(FolderQuery, HandsBackTheTemplateThatItWasAskedFor) {
  scriptPrints("/tmp\n");
  folder();
  EXPECT_EQ(answeredTemplate, FileTemplate("the template"));
}

TEST_F(FolderQuery, AnswersOnTheThreadOfTheScriptsCompletion) {
  scriptPrints("/tmp\n");
  folder();
  EXPECT_NE(answerThread, std::this_thread::get_id());
}

TEST_F(FolderQuery, LineBreaksAroundThePathAreDroppedAndASlashAtItsEndStays) {
  scriptPrints("\n\n/Volumes/Disk/\r\n");
  EXPECT_EQ(folder(), "/Volumes/Disk/");
}

TEST_F(FolderQuery, AllKindsOfLineBreaksAreDropped) {
  scriptPrints("\u2028\v/tmp\f\u0085\u2029");
  EXPECT_EQ(folder(), "/tmp");
}

TEST_F(FolderQuery, LineBreaksInsideThePathAndSpacesAtItsEndStay) {
  scriptPrints("/tmp/two\nlines \t\n");
  EXPECT_EQ(folder(), "/tmp/two\nlines \t");
}

TEST_F(FolderQuery, WhetherThePathLeadsAnywhereIsNotAsked) {
  scriptPrints("/no/such/folder");
  EXPECT_EQ(folder(), "/no/such/folder");
}

TEST_F(FolderQuery, ASpaceBeforeThePathIsRefused) {
  scriptPrints(" /tmp\n");
  EXPECT_EQ(folder(), std::nullopt);
  expectAlert("Invalid directory path!", " /tmp");
}

TEST_F(FolderQuery, ARelativePathIsRefused) {
  scriptPrints("tmp\n");
  folder();
  expectAlert("Invalid directory path!", "tmp");
}

TEST_F(FolderQuery, EmptyOutputIsRefusedWithAnEmptyMessage) {
  scriptPrints("");
  folder();
  expectAlert("Invalid directory path!", "");
}

TEST_F(FolderQuery, LineBreaksAloneAreRefusedWithAnEmptyMessage) {
  scriptPrints("\n\r\n");
  folder();
  expectAlert("Invalid directory path!", "");
}

TEST_F(FolderQuery, OutputThatIsNotUTF8IsRefusedWithoutAMessage) {
  scriptPrints("/tmp/\xff\n");
  folder();
  expectAlert("Invalid directory path!", std::nullopt);
}

TEST_F(FolderQuery, TheCompletionOfARefusedAnswerLastsUntilItsAlertIsDismissed) {
  scriptPrints("nonsense");
  folder();
  EXPECT_EQ(completionsAtAlert, 0);
}

TEST_F(FolderQuery, AScriptThatFailsIsReportedWithItsError) {
  scriptFails({0, Error::Kind::ScriptFailed, "5"});
  EXPECT_EQ(folder(), std::nullopt);
  expectAlert("Unable to get current folder path!", "The script failed: exit status 5.");
}

TEST_F(FolderQuery, TheCompletionOfAFailedScriptDoesNotWaitForItsAlert) {
  scriptFails({0, Error::Kind::ScriptFailed, "5"});
  ask();
  EXPECT_TRUE(eventually([this] { return fakes.userScripts.completions() == 1; }));
  EXPECT_TRUE(fakes.userInterface.alerts.empty());
  fakes.runLoop.runUntilIdle();
  EXPECT_EQ(fakes.userInterface.alerts.size(), 1u);
}

TEST_F(FolderQuery, AMissingScriptIsReportedAtOnce) {
  ask();
  expectAlert("Unable to run QuennelHelper.sh!",
              "“" + path + "” could not be started: it does not exist.");
  EXPECT_TRUE(fakes.userScripts.executions.empty());
}

TEST_F(FolderQuery, AScriptsFolderThatCannotBeMadeIsAMissingScript) {
  scriptPrints("/tmp\n");
  fakes.userScripts.directory.reset();
  fakes.userScripts.directoryError = {EROFS};
  ask();
  expectAlert("Unable to run QuennelHelper.sh!", "No file is given.");
}

TEST_F(FolderQuery, NoAlertCountsAsAPanel) {
  scriptPrints("nonsense");
  fakes.userInterface.whileShown = [this](const Alert&) { EXPECT_EQ(room.panelCount.value(), 0); };
  folder();
  EXPECT_EQ(room.panelCount.value(), 0);
}

TEST_F(FolderQuery, TitlesAreTranslated) {
  fakes.mainBundle.translations["Invalid directory path!"] = "Ungültiger Ordnerpfad!";
  scriptPrints("nonsense");
  folder();
  expectAlert("Ungültiger Ordnerpfad!", "nonsense");
}

TEST_F(FolderQuery, ARefusedAnswerAtTheEndOfTheProgramIsDropped) {
  scriptPrints("nonsense");
  ask();
  fakes.runLoop.terminate();
  EXPECT_TRUE(eventually([this] { return fakes.userScripts.completions() == 1; }));
  EXPECT_TRUE(fakes.userInterface.alerts.empty());
}

}  // namespace
}  // namespace quennel::test
