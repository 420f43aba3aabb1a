// What every set of user scripts does, run on real scripts and on the fake.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <type_traits>

#include "platform/linux/tasks/LinuxUserScripts.h"
#include "tests/support/FakeBundle.h"
#include "tests/support/FakeUserScripts.h"
#include "tests/support/Sentence.h"
#include "tests/support/TaskOutcome.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

class RealScripts {
 public:
  UserScripts& get() { return _scripts; }
  std::string printing(const std::string& text) { return write("printf '%s' '" + text + "'\n"); }
  std::string failing() { return write("echo /tmp; exit 3\n"); }

 private:
  std::string write(const std::string& body) {
    const std::string path = _folder / "script.sh";
    std::ofstream(path) << "#!/bin/sh\n" << body;
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return path;
  }

  TemporaryDirectory _folder;
  FakeBundle _bundle;
  LinuxUserScripts _scripts{_bundle};
};

class FakeScripts {
 public:
  UserScripts& get() { return _scripts; }
  std::string printing(const std::string& text) { return add({text, std::nullopt}); }
  std::string failing() { return add({"/tmp\n", Error{0, Error::Kind::ScriptFailed, "1"}}); }

 private:
  std::string add(const FakeUserScripts::Script& script) {
    _scripts.scripts["/scripts/script.sh"] = script;
    return "/scripts/script.sh";
  }

  FakeUserScripts _scripts;
};

template <typename Scripts>
class UserScriptsContract : public testing::Test {
 protected:
  Scripts _scripts;
};

using Subjects = testing::Types<RealScripts, FakeScripts>;
struct SubjectNames {
  template <typename Scripts>
  static std::string GetName(int) {
    return std::is_same_v<Scripts, FakeScripts> ? "Fake" : "Real";
  }
};
TYPED_TEST_SUITE(UserScriptsContract, Subjects, SubjectNames);

TYPED_TEST(UserScriptsContract, NoTaskIsMadeForAFileThatIsNotThere) {
  Error error;
  EXPECT_EQ(this->_scripts.get().createTask("/no/such/script.sh", &error), nullptr);
  EXPECT_EQ(error, (Error{ENOENT, Error::Kind::StartingScript, "/no/such/script.sh"}));
}

TYPED_TEST(UserScriptsContract, NobodyNeedsToAskWhyThereIsNoTask) {
  EXPECT_EQ(this->_scripts.get().createTask("/no/such/script.sh", nullptr), nullptr);
}

TYPED_TEST(UserScriptsContract, TheCompletionReadsWhatTheScriptPrinted) {
  TaskOutcome outcome(this->_scripts.get(), this->_scripts.printing("/home/user\n\n"));
  EXPECT_EQ(outcome.error(), std::nullopt);
  EXPECT_EQ(outcome.output(), "/home/user\n\n");
}

TYPED_TEST(UserScriptsContract, AScriptThatPrintsNothingGivesEmptyOutput) {
  TaskOutcome outcome(this->_scripts.get(), this->_scripts.printing(""));
  EXPECT_EQ(outcome.error(), std::nullopt);
  EXPECT_EQ(outcome.output(), "");
}

TYPED_TEST(UserScriptsContract, TheCompletionIsNotCalledOnTheMainThread) {
  TaskOutcome outcome(this->_scripts.get(), this->_scripts.printing("/"));
  EXPECT_NE(outcome.thread(), std::this_thread::get_id());
}

TYPED_TEST(UserScriptsContract, AScriptThatFailsGivesAnErrorAndNoOutput) {
  TaskOutcome outcome(this->_scripts.get(), this->_scripts.failing());
  ASSERT_TRUE(outcome.error());
  EXPECT_NE(sentenceOf(*outcome.error()), "");
  EXPECT_EQ(outcome.output(), "");
}

TYPED_TEST(UserScriptsContract, ATaskMayGoAwayWhileItsScriptRuns) {
  const std::string path = this->_scripts.printing("/");
  auto task = this->_scripts.get().createTask(path, nullptr);
  std::promise<bool> completed;
  task->executeWithArguments(
      {}, [&completed](const std::optional<Error>& error) { completed.set_value(!error); });
  task.reset();
  EXPECT_TRUE(completed.get_future().get());
}

TYPED_TEST(UserScriptsContract, ScriptsMayRunAtTheSameTime) {
  const std::string path = this->_scripts.printing("/");
  TaskOutcome first(this->_scripts.get(), path);
  TaskOutcome second(this->_scripts.get(), path);
  EXPECT_EQ(second.output(), "/");
  EXPECT_EQ(first.output(), "/");
}

}  // namespace
}  // namespace quennel::test
