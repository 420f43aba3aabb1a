#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/tasks/LinuxUserScripts.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Deadline.h"
#include "tests/support/FakeBundle.h"
#include "tests/support/Sentence.h"
#include "tests/support/TaskOutcome.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;

/// Long enough for what has to end first on a busy machine, too long to wait for.
constexpr ScriptLimits patient{.time = 60s, .aftermath = 60s, .output = 65'536};
/// For scripts that have to be ended.
constexpr ScriptLimits strict{.time = 300ms, .aftermath = 300ms, .output = 65'536};

class LinuxUserScriptsTest : public testing::Test {
 protected:
  /// A script for the shell with `body`.
  std::string script(const std::string& body) { return file("#!/bin/sh\n" + body + "\n"); }

  std::string file(const std::string& contents) {
    const std::string path = _folder / "script.sh";
    std::ofstream(path) << contents;
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return path;
  }

  std::optional<std::string> contents(const std::string& name) const {
    std::ifstream stream(_folder / name);
    if (!stream) {
      return std::nullopt;
    }
    return std::string(std::istreambuf_iterator<char>(stream), {});
  }

  /// The process number that a script has written, with a line break behind it, into a file.
  std::optional<pid_t> processIn(const std::string& name) const {
    const auto text = contents(name);
    return text && text->ends_with('\n') ? std::optional(std::stoi(*text)) : std::nullopt;
  }

  /// Whether the process whose number a script has written into a file is gone, or soon will be.
  bool isGone(const std::string& name) const {
    const auto process = processIn(name);
    return process && eventually([&] { return !runs(*process); });
  }

  static bool runs(pid_t process) {
    std::ifstream stream("/proc/" + std::to_string(process) + "/stat");
    std::string line;
    return std::getline(stream, line) && line.find(") Z ") == std::string::npos;
  }

  static long openDescriptors() {
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return std::distance(begin(descriptors), end(descriptors));
  }

  TemporaryDirectory _folder;
  FakeBundle _bundle;
};

TEST_F(LinuxUserScriptsTest, ArgumentsArriveAsTheyAre) {
  LinuxUserScripts scripts(_bundle, patient);
  TaskOutcome outcome(scripts, script("printf '[%s]' \"$@\""), {"", "a  b", "\xff*", "$HOME"});
  EXPECT_EQ(outcome.output(), "[][a  b][\xff*][$HOME]");
}

TEST_F(LinuxUserScriptsTest, OutputWithoutALineBreakArrives) {
  LinuxUserScripts scripts(_bundle, patient);
  EXPECT_EQ(TaskOutcome(scripts, script("printf /tmp")).output(), "/tmp");
}

TEST_F(LinuxUserScriptsTest, OutputUpToTheLimitArrives) {
  LinuxUserScripts scripts(_bundle, patient);
  TaskOutcome outcome(scripts, script("head -c 65536 /dev/zero"));
  EXPECT_EQ(outcome.error(), std::nullopt);
  EXPECT_EQ(outcome.output().size(), 65'536u);
}

TEST_F(LinuxUserScriptsTest, AScriptThatPrintsMegabytesIsEndedAtOnce) {
  LinuxUserScripts scripts(_bundle, patient);
  TaskOutcome outcome(scripts, script("echo $$ > '" + _folder / "pid" + "'; exec cat /dev/zero"));
  ASSERT_TRUE(outcome.error());
  EXPECT_EQ(sentenceOf(*outcome.error()), "The script printed too much.");
  EXPECT_EQ(outcome.output(), "");
  EXPECT_TRUE(isGone("pid"));
}

TEST_F(LinuxUserScriptsTest, AScriptThatHangsIsEndedAtTheTimeLimit) {
  LinuxUserScripts scripts(_bundle, strict);
  TaskOutcome outcome(scripts, script("echo $$ > '" + _folder / "pid" + "'; echo /tmp; sleep 60"));
  ASSERT_TRUE(outcome.error());
  EXPECT_EQ(outcome.error()->code, ETIMEDOUT);
  EXPECT_EQ(sentenceOf(*outcome.error()), "The script took longer than 1 seconds.");
  EXPECT_TRUE(isGone("pid"));
}

TEST_F(LinuxUserScriptsTest, AScriptThatRefusesToEndIsEnded) {
  LinuxUserScripts scripts(_bundle, strict);
  TaskOutcome outcome(scripts, script("trap '' TERM HUP INT; echo $$ > '" + _folder / "pid" +
                                      "'; while :; do sleep 60; done"));
  EXPECT_TRUE(outcome.error());
  EXPECT_TRUE(isGone("pid"));
}

TEST_F(LinuxUserScriptsTest, WhatAHangingScriptHasStartedEndsWithIt) {
  LinuxUserScripts scripts(_bundle, strict);
  TaskOutcome outcome(scripts, script("sleep 60 & echo $! > '" + _folder / "pid" + "'; wait"));
  EXPECT_TRUE(outcome.error());
  EXPECT_TRUE(isGone("pid"));
}

TEST_F(LinuxUserScriptsTest, StartingAScriptThatHangsDoesNotWait) {
  LinuxUserScripts scripts(_bundle, patient);
  const auto start = std::chrono::steady_clock::now();
  TaskOutcome outcome(scripts, script("sleep 60"));
  EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
  EXPECT_FALSE(outcome.completesWithin(20ms));
}

TEST_F(LinuxUserScriptsTest, AScriptThatClosesItsOutputEarlyIsWaitedFor) {
  LinuxUserScripts scripts(_bundle, patient);
  TaskOutcome outcome(scripts,
                      script("echo /tmp; exec >&-; sleep 0.1; echo > '" + _folder / "end" + "'"));
  EXPECT_EQ(outcome.error(), std::nullopt);
  EXPECT_EQ(outcome.output(), "/tmp\n");
  EXPECT_TRUE(contents("end"));
}

TEST_F(LinuxUserScriptsTest, AChildThatKeepsTheOutputOpenIsEnded) {
  LinuxUserScripts scripts(_bundle, {.time = 60s, .aftermath = 100ms, .output = 65'536});
  TaskOutcome outcome(scripts, script("sleep 60 & echo $! > '" + _folder / "pid" + "'; echo /tmp"));
  EXPECT_EQ(outcome.error(), std::nullopt);
  EXPECT_EQ(outcome.output(), "/tmp\n");
  EXPECT_TRUE(isGone("pid"));
}

TEST_F(LinuxUserScriptsTest, AChildThatClosedItsOutputEndsWithTheScript) {
  LinuxUserScripts scripts(_bundle, patient);
  TaskOutcome outcome(scripts,
                      script("sleep 60 >&- & echo $! > '" + _folder / "pid" + "'; echo /tmp"));
  EXPECT_EQ(outcome.output(), "/tmp\n");
  EXPECT_TRUE(isGone("pid"));
}

TEST_F(LinuxUserScriptsTest, WhatAChildPrintsJustAfterTheScriptsEndCounts) {
  LinuxUserScripts scripts(_bundle, patient);
  TaskOutcome outcome(scripts, script("(sleep 0.1; echo /tmp) &"));
  EXPECT_EQ(outcome.error(), std::nullopt);
  EXPECT_EQ(outcome.output(), "/tmp\n");
}

TEST_F(LinuxUserScriptsTest, ADetachedProgramThatKeepsTheOutputOpenIsNotWaitedFor) {
  LinuxUserScripts scripts(_bundle, {.time = 60s, .aftermath = 100ms, .output = 65'536});
  TaskOutcome outcome(scripts, script("setsid sh -c 'echo $$ > \"" + _folder / "pid" +
                                      "\"; exec sleep 60' & while [ ! -s '" + _folder / "pid" +
                                      "' ]; do sleep 0.01; done; echo /tmp"));
  EXPECT_EQ(outcome.error(), std::nullopt);
  EXPECT_EQ(outcome.output(), "/tmp\n");
  const auto detached = processIn("pid");
  ASSERT_TRUE(detached);
  EXPECT_TRUE(runs(*detached));
  kill(*detached, SIGKILL);
}

TEST_F(LinuxUserScriptsTest, AFileThatIsNotExecutableGivesAnError) {
  const std::string path = script("echo /tmp");
  std::filesystem::permissions(path, std::filesystem::perms::owner_read);
  LinuxUserScripts scripts(_bundle, patient);
  TaskOutcome outcome(scripts, path);
  ASSERT_TRUE(outcome.error());
  EXPECT_EQ(outcome.error()->code, EACCES);
  EXPECT_EQ(sentenceOf(*outcome.error()),
            "“" + path + "” could not be started: you are not allowed to.");
}

TEST_F(LinuxUserScriptsTest, AMissingInterpreterIsNotAMissingScript) {
  LinuxUserScripts scripts(_bundle, patient);
  TaskOutcome outcome(scripts, file("#!/no/such/interpreter\n"));
  ASSERT_TRUE(outcome.error());
  EXPECT_EQ(sentenceOf(*outcome.error()),
            "The program that the script is written for was not found.");
}

TEST_F(LinuxUserScriptsTest, AFileThatNamesNoInterpreterGivesAnError) {
  LinuxUserScripts scripts(_bundle, patient);
  TaskOutcome outcome(scripts, file("echo /tmp\n"));
  ASSERT_TRUE(outcome.error());
  EXPECT_EQ(outcome.error()->code, ENOEXEC);
}

TEST_F(LinuxUserScriptsTest, AScriptRemovedBeforeItRunsGivesAnError) {
  const std::string path = script("echo /tmp");
  LinuxUserScripts scripts(_bundle, patient);
  const auto task = scripts.createTask(path, nullptr);
  std::filesystem::remove(path);
  std::promise<std::optional<Error>> completed;
  task->executeWithArguments({}, [&](const auto& error) { completed.set_value(error); });
  const auto error = completed.get_future().get();
  ASSERT_TRUE(error);
  EXPECT_EQ(*error, (Error{ENOENT, Error::Kind::StartingScript, path}));
}

TEST_F(LinuxUserScriptsTest, AScriptThatDiesOfASignalGivesAnErrorThatNamesIt) {
  LinuxUserScripts scripts(_bundle, patient);
  TaskOutcome outcome(scripts, script("echo /tmp; kill -SEGV $$"));
  ASSERT_TRUE(outcome.error());
  EXPECT_EQ(sentenceOf(*outcome.error()), "The script was ended by a signal: SIGSEGV.");
}

TEST_F(LinuxUserScriptsTest, AnExitStatusGivesAnErrorThatNamesIt) {
  LinuxUserScripts scripts(_bundle, patient);
  TaskOutcome outcome(scripts, script("echo /tmp; exit 69"));
  ASSERT_TRUE(outcome.error());
  EXPECT_EQ(sentenceOf(*outcome.error()), "The script failed: exit status 69.");
}

TEST_F(LinuxUserScriptsTest, NoTaskIsMadeForAFolderOrAFIFO) {
  LinuxUserScripts scripts(_bundle, patient);
  Error error;
  EXPECT_EQ(scripts.createTask(_folder.path(), &error), nullptr);
  EXPECT_EQ(error.code, EACCES);
  ASSERT_EQ(mkfifo((_folder / "fifo").c_str(), 0700), 0);
  EXPECT_EQ(scripts.createTask(_folder / "fifo", &error), nullptr);
  EXPECT_EQ(error.code, EACCES);
}

TEST_F(LinuxUserScriptsTest, ALinkToAScriptIsAScript) {
  std::filesystem::create_symlink(script("echo /tmp"), _folder / "link");
  LinuxUserScripts scripts(_bundle, patient);
  EXPECT_EQ(TaskOutcome(scripts, _folder / "link").output(), "/tmp\n");
}

TEST_F(LinuxUserScriptsTest, TheScriptHasAnEmptyStandardInput) {
  LinuxUserScripts scripts(_bundle, patient);
  EXPECT_EQ(TaskOutcome(scripts, script("cat && echo end")).output(), "end\n");
}

TEST_F(LinuxUserScriptsTest, TheScriptInheritsNoDescriptor) {
  const int inheritable = fcntl(STDERR_FILENO, F_DUPFD, 77);
  ASSERT_GE(inheritable, 77);
  LinuxUserScripts scripts(_bundle, patient);
  TaskOutcome outcome(scripts, script("ls /proc/$$/fd"));
  // 10 is where the shell keeps the script itself.
  EXPECT_EQ(outcome.output(), "0\n1\n10\n2\n");
  close(inheritable);
}

TEST_F(LinuxUserScriptsTest, TheScriptHasNoBlockedAndNoIgnoredSignals) {
  sigset_t blocked;
  sigset_t before;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &blocked, &before);
  const auto handlerBefore = signal(SIGPIPE, SIG_IGN);
  LinuxUserScripts scripts(_bundle, patient);
  // The signals 1 to 28; the C library keeps two above these for itself.
  TaskOutcome outcome(
      scripts,
      script("exec sed -n 's/^\\(Sig...\\):.*\\(.......\\)$/\\1 \\2/p' /proc/self/status"));
  EXPECT_THAT(outcome.output(), testing::HasSubstr("SigBlk 0000000\nSigIgn 0000000\n"));
  signal(SIGPIPE, handlerBefore);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST_F(LinuxUserScriptsTest, TheScriptLeadsASessionAndAProcessGroup) {
  LinuxUserScripts scripts(_bundle, patient);
  TaskOutcome outcome(scripts,
                      script("set -- $(cat /proc/$$/stat); echo $(($5 - $$)) $(($6 - $$))"));
  EXPECT_EQ(outcome.output(), "0 0\n");
}

TEST_F(LinuxUserScriptsTest, AProgramStartedWithClosedDescriptorsReadsItsScript) {
  const std::string path = script("cat; echo /tmp");
  const std::string output = inChildProcess([&] {
    // What the answer is written to must not be one of the three.
    close(STDIN_FILENO);
    close(STDOUT_FILENO);
    close(STDERR_FILENO);
    LinuxUserScripts scripts(_bundle, patient);
    return TaskOutcome(scripts, path).output();
  });
  EXPECT_EQ(output, "/tmp\n");
}

TEST_F(LinuxUserScriptsTest, AProgramThatInheritedIgnoredChildrenLearnsHowItsScriptEnded) {
  const std::string path = script("exit 7");
  const std::string description = inChildProcess([&] {
    signal(SIGCHLD, SIG_IGN);
    LinuxUserScripts scripts(_bundle, patient);
    return sentenceOf(TaskOutcome(scripts, path).error().value_or(Error()));
  });
  EXPECT_EQ(description, "The script failed: exit status 7.");
}

TEST_F(LinuxUserScriptsTest, NothingIsLeftOfManyRuns) {
  LinuxUserScripts scripts(_bundle, strict);
  const std::string good = script("echo /tmp");
  TaskOutcome(scripts, good).output();
  TaskOutcome(scripts, good).output();
  const long before = openDescriptors();
  const std::vector<std::string> bodies{"echo /tmp",     "exit 1",   "kill -KILL $$",
                                        "cat /dev/zero", "sleep 60", "exec >&-; sleep 0.01"};
  for (const std::string& body : bodies) {
    TaskOutcome(scripts, script(body)).output();
  }
  TaskOutcome(scripts, file("#!/no/such/interpreter\n")).output();
  TaskOutcome(scripts, script("echo /tmp")).output();
  // A run that was just about to end goes when the next one begins.
  EXPECT_TRUE(eventually([&] {
    TaskOutcome(scripts, good).output();
    return openDescriptors() <= before;
  }));
  EXPECT_EQ(waitid(P_ALL, 0, nullptr, WEXITED | WNOHANG | WNOWAIT), -1);
  EXPECT_EQ(errno, ECHILD);
}

TEST_F(LinuxUserScriptsTest, TheEndOfTheProgramEndsItsScriptsWithoutACompletion) {
  auto scripts = std::make_unique<LinuxUserScripts>(_bundle, patient);
  const auto task =
      scripts->createTask(script("echo $$ > '" + _folder / "pid" + "'; sleep 60"), nullptr);
  bool completed = false;
  task->executeWithArguments({}, [&completed](const auto&) { completed = true; });
  ASSERT_TRUE(eventually([&] { return processIn("pid").has_value(); }));
  scripts.reset();
  EXPECT_FALSE(completed);
  EXPECT_TRUE(isGone("pid"));
}

/// Scripts that are started one right after the other, more than run at a time.
class ManyUserScripts : public LinuxUserScriptsTest {
 protected:
  std::unique_ptr<TaskOutcome> startScript(LinuxUserScripts& scripts, int number) const {
    return std::make_unique<TaskOutcome>(scripts, _path, std::vector{std::to_string(number)});
  }
  void letEnd(int number) const { std::ofstream(_folder / ("go-" + std::to_string(number))); }
  std::vector<int> started() const {
    std::ifstream stream(_folder / "started");
    return {std::istream_iterator<int>(stream), {}};
  }
  bool areStarted(std::size_t count) const {
    return eventually([&] { return started().size() == count; });
  }

 private:
  /// Notes its number in "started" and ends once there is a file "go-NUMBER".
  const std::string _path =
      script("cd '" + _folder.path() +
             "'; echo $1 >> started; while [ ! -e go-$1 ]; do sleep 0.01; done; echo $1");
};

TEST_F(ManyUserScripts, RunFourAtATimeInTheOrderInWhichTheyCame) {
  LinuxUserScripts scripts(_bundle, patient);
  std::vector<std::unique_ptr<TaskOutcome>> outcomes;
  for (int number = 0; number < 7; ++number) {
    outcomes.push_back(startScript(scripts, number));
  }
  ASSERT_TRUE(areStarted(4));
  std::size_t mostStarted = 4;
  for (const int number : {2, 0, 4, 1, 3, 6, 5}) {
    letEnd(number);
    EXPECT_EQ(outcomes.at(static_cast<std::size_t>(number))->output(),
              std::to_string(number) + "\n");
    mostStarted = std::min<std::size_t>(7, mostStarted + 1);
    ASSERT_TRUE(areStarted(mostStarted));
  }
  const std::vector<int> order = started();
  EXPECT_THAT(std::vector(order.begin(), order.begin() + 4), UnorderedElementsAre(0, 1, 2, 3));
  EXPECT_THAT(std::vector(order.begin() + 4, order.end()), ElementsAre(4, 5, 6));
}

TEST_F(ManyUserScripts, HaveTheirTimeFromWhenTheyRun) {
  constexpr ScriptLimits limits{.time = 2s, .aftermath = 2s, .output = 65'536};
  LinuxUserScripts scripts(_bundle, limits);
  std::vector<std::unique_ptr<TaskOutcome>> outcomes;
  for (int number = 0; number < 4; ++number) {
    outcomes.push_back(startScript(scripts, number));
  }
  letEnd(4);
  EXPECT_EQ(startScript(scripts, 4)->output(), "4\n");
  EXPECT_TRUE(outcomes[0]->error());
}

TEST_F(ManyUserScripts, DoNotRunAnyMoreWhenTheProgramEnds) {
  std::vector<std::unique_ptr<TaskOutcome>> outcomes;
  {
    LinuxUserScripts scripts(_bundle, patient);
    for (int number = 0; number < 7; ++number) {
      outcomes.push_back(startScript(scripts, number));
    }
    ASSERT_TRUE(areStarted(4));
  }
  EXPECT_EQ(started().size(), 4U);
  for (const auto& outcome : outcomes) {
    EXPECT_THROW(outcome->error(), std::future_error) << "the completion was called";
  }
}

class ScriptsFolder : public LinuxUserScriptsTest {
 protected:
  void SetUp() override {
    const char* home = std::getenv("HOME");
    _homeBefore = home ? std::optional<std::string>(home) : std::nullopt;
    setenv("HOME", _folder.path().c_str(), 1);
  }
  void TearDown() override {
    _homeBefore ? setenv("HOME", _homeBefore->c_str(), 1) : unsetenv("HOME");
  }

  LinuxUserScripts _scripts{_bundle};

 private:
  std::optional<std::string> _homeBefore;
};

TEST_F(ScriptsFolder, IsMadeInTheUsersHomeFolder) {
  const auto directory = _scripts.applicationScriptsDirectory(nullptr);
  EXPECT_EQ(directory, _folder / "Library/Application Scripts/net.brellow.QuennelHelper");
  EXPECT_TRUE(std::filesystem::is_directory(directory.value_or("")));
}

TEST_F(ScriptsFolder, MayBeThereAlready) {
  const auto first = _scripts.applicationScriptsDirectory(nullptr);
  EXPECT_EQ(_scripts.applicationScriptsDirectory(nullptr), first);
}

TEST_F(ScriptsFolder, AFileInItsPlaceIsAnError) {
  std::ofstream(_folder / "Library") << "a file";
  Error error;
  EXPECT_EQ(_scripts.applicationScriptsDirectory(&error), std::nullopt);
  EXPECT_EQ(error.code, ENOTDIR);
  EXPECT_EQ(error.kind, Error::Kind::Creating);
}

TEST_F(ScriptsFolder, AHomeFolderWrittenWithASlashAtTheEndGivesTheSamePath) {
  const auto directory = _scripts.applicationScriptsDirectory(nullptr);
  setenv("HOME", (_folder.path() + "/").c_str(), 1);
  EXPECT_EQ(_scripts.applicationScriptsDirectory(nullptr), directory);
}

}  // namespace
}  // namespace quennel::test
