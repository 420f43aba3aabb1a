#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/e2e/HelperTest.h"

namespace quennel::test {
namespace {

using namespace std::chrono_literals;
using LifecycleFlow = HelperTest;
using Clock = std::chrono::steady_clock;

TEST_F(LifecycleFlow, AUrlAsAnArgumentIsServed) {
  Process helper = startHelper({requestFor(folder(), "0"), requestFor(folder(), "1")});
  EXPECT_TRUE(eventuallyExists(in("note.txt")));
  EXPECT_TRUE(eventuallyExists(in("script.sh")));
}

TEST_F(LifecycleFlow, TheHelperLeavesTheFolderInWhichItWasStartedButKnowsWhatIsMeantBelowIt) {
  std::filesystem::create_directory(in("100% mine"));
  Process helper(
      {"sh", "-c", R"(cd "$1" && exec "$2" "100% mine?0")", "sh", folder(), QUENNEL_HELPER},
      environment());
  EXPECT_TRUE(eventuallyExists(in("100% mine/note.txt"))) << helper.errorOutput();
  EXPECT_EQ(std::filesystem::read_symlink("/proc/" + std::to_string(helper.pid()) + "/cwd"), "/");
}

TEST_F(LifecycleFlow, ASecondHelperHandsItsUrlsToTheFirstAndLeaves) {
  Process first = startReadyHelper();
  Process second = startHelper({requestFor(folder(), "0")});
  EXPECT_EQ(second.wait(), 0);
  EXPECT_TRUE(eventuallyExists(in("note.txt")));
  EXPECT_TRUE(first.isRunning());
}

TEST_F(LifecycleFlow, OfHelpersStartedAtOnceOneStaysAndEveryUrlIsServedOnce) {
  std::vector<Process> helpers;
  for (int count = 0; count < 8; ++count) {
    helpers.push_back(startHelper({requestFor(folder(), "0")}));
  }
  EXPECT_TRUE(eventuallyExists(in("note-7.txt")));
  const auto running = [&] {
    std::size_t count = 0;
    for (const auto& helper : helpers) {
      count += helper.isRunning() ? 1 : 0;
    }
    return count;
  };
  EXPECT_TRUE(eventually([&] { return running() == 1; }));
  EXPECT_EQ(countEntries(folder()), 8u);
}

TEST_F(LifecycleFlow, WithoutASessionBusTheArgumentsAreServed) {
  auto variables = environment();
  variables["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + (_root / "no-bus");
  Process helper({QUENNEL_HELPER, requestFor(folder(), "0")}, variables);
  EXPECT_TRUE(eventuallyExists(in("note.txt")));
}

/// What a launcher starts, as the desktop entry names it.
class HandOverFlow : public HelperTest {
 protected:
  static constexpr std::chrono::seconds sooner{8};  // than the helper leaves by itself

  Process launch(const Process::Environment& variables, const std::string& query = "0") {
    return Process({QUENNEL_HELPER, "--open", requestFor(folder(), query)}, variables);
  }
  Process launch() { return launch(environment()); }
};

TEST_F(HandOverFlow, WhatALauncherStartsHandsOverToAHelperThatTheBusStartsAndEndsAtOnce) {
  Process launched = launch();
  EXPECT_EQ(launched.wait(Deadline(sooner)), 0);
  EXPECT_TRUE(eventuallyExists(in("note.txt")));
  EXPECT_TRUE(ownsName());
}

TEST_F(HandOverFlow, ItEndsAtOnceWhenTheHelperStaysInTheBackground) {
  set("runInBackground", true);
  Process launched = launch();
  EXPECT_EQ(launched.wait(Deadline(sooner)), 0);
  EXPECT_TRUE(eventuallyExists(in("note.txt")));
}

TEST_F(HandOverFlow, ItHandsOverToTheHelperThatRuns) {
  Process helper = startReadyHelper();
  Process launched = launch();
  EXPECT_EQ(launched.wait(Deadline(sooner)), 0);
  EXPECT_TRUE(eventuallyExists(in("note.txt")));
  EXPECT_TRUE(helper.isRunning());
}

TEST_F(HandOverFlow, WithoutAUrlItOnlyStartsTheHelper) {
  Process launched({QUENNEL_HELPER, "--open"}, environment());
  EXPECT_EQ(launched.wait(Deadline(sooner)), 0);
  EXPECT_TRUE(ownsName());
  EXPECT_EQ(countEntries(folder()), 0u);
}

/// Serves in the background, in a process that becomes this one's child when its parent ends.
class BackgroundFlow : public HandOverFlow {
 protected:
  void SetUp() override {
    HandOverFlow::SetUp();
    ASSERT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0), 0);
  }
  void TearDown() override {
    std::ifstream children("/proc/self/task/" + std::to_string(getpid()) + "/children");
    for (pid_t child = 0; children >> child;) {
      std::ostringstream command;
      command << std::ifstream("/proc/" + std::to_string(child) + "/cmdline").rdbuf();
      if (command.str().find("quennel:") != std::string::npos) {
        kill(child, SIGTERM);
        waitpid(child, nullptr, 0);
      }
    }
  }
  void expectServedInTheBackground(const std::string& address) {
    auto variables = environment();
    variables["DBUS_SESSION_BUS_ADDRESS"] = address;
    Process launched = launch(variables);
    EXPECT_EQ(launched.wait(Deadline(sooner)), 0);
    EXPECT_TRUE(eventuallyExists(in("note.txt")));
  }
};

TEST_F(BackgroundFlow, WithoutASessionBusTheRequestIsServedInTheBackground) {
  expectServedInTheBackground("unix:path=" + (_root / "no-bus"));
}

TEST_F(BackgroundFlow, WhereTheBusCannotStartTheHelperTheRequestIsServedInTheBackground) {
  const PrivateBus bus;
  expectServedInTheBackground(bus.address());
}

TEST_F(LifecycleFlow, TheQuitCommandEndsTheHelper) {
  Process helper = startReadyHelper();
  command("quit");
  EXPECT_EQ(helper.wait(), 0);
}

TEST_F(LifecycleFlow, TheQuitCommandIsNeverLostHoweverEarlyItComes) {
  // Its own check would end the helper after eleven seconds.
  set("runInBackground", true);
  for (int round = 0; round < 40; ++round) {
    Process helper = startHelper();
    while (!ownsName()) {
    }
    command("quit");
    ASSERT_TRUE(eventually([&] { return !helper.isRunning(); })) << "in round " << round;
    EXPECT_EQ(helper.wait(), 0);
  }
}

TEST_F(LifecycleFlow, ASignalToEndIsObeyedCleanly) {
  Process helper = startReadyHelper();
  EXPECT_EQ(helper.terminate(), 0);
}

TEST_F(LifecycleFlow, TheFileTemplatesCommandLeavesTheHelperServing) {
  Process helper = startReadyHelper();
  command("fileTemplates");
  open({requestFor(folder(), "0")});
  EXPECT_TRUE(eventuallyExists(in("note.txt")));
  EXPECT_TRUE(helper.isRunning());
}

TEST_F(LifecycleFlow, SettingsChangedBetweenRequestsHoldForTheNextOne) {
  Process helper = startReadyHelper();
  open({requestFor(folder(), "0")});
  ASSERT_TRUE(eventuallyExists(in("note.txt")));
  set("fileTemplates", PropertyList::Array{templateRecord("letter", "md", "note.txt")});
  open({requestFor(folder(), "0")});
  EXPECT_TRUE(eventuallyExists(in("letter.md")));
}

TEST_F(LifecycleFlow, WhileSettingsAreGarbageTheLastOnesHoldAndTheFileIsLeftAlone) {
  const std::string whole = contents(settingsPath());
  Process helper = startReadyHelper();
  open({requestFor(folder(), "0")});
  ASSERT_TRUE(eventuallyExists(in("note.txt")));
  int count = 0;
  for (const auto& broken : {std::string("garbage"), whole.substr(0, whole.size() / 2),
                             std::string(), std::string("bplist00\xff\xff")}) {
    write(settingsPath(), broken);
    open({requestFor(folder(), "0")});
    EXPECT_TRUE(eventuallyExists(in("note-" + std::to_string(++count) + ".txt")));
    EXPECT_EQ(contents(settingsPath()), broken);
  }
  EXPECT_TRUE(helper.isRunning());
}

TEST_F(LifecycleFlow, SettingsThatAreGarbageFromTheStartAreServedOnceRepaired) {
  const std::string whole = contents(settingsPath());
  write(settingsPath(), "garbage");
  Process helper = startReadyHelper();
  const auto says = [&](const std::string& text) {
    return eventually([&] { return helper.errorOutput().find(text) != std::string::npos; });
  };
  open({requestFor(_root.path(), "0")});
  EXPECT_TRUE(says("No suitable file template found.")) << helper.errorOutput();
  EXPECT_EQ(contents(settingsPath()), "garbage");
  write(settingsPath(), whole);
  // The template is found now; what is missing is the leave to write in that folder.
  open({requestFor(_root.path(), "0")});
  EXPECT_TRUE(says("would like to access your working directory.")) << helper.errorOutput();
}

TEST_F(LifecycleFlow, WithNothingToDoTheHelperLeavesAfterElevenSeconds) {
  const auto start = Clock::now();
  Process helper = startHelper();
  EXPECT_EQ(helper.wait(), 0);
  const auto lasted = Clock::now() - start;
  EXPECT_GE(lasted, 11s);
  EXPECT_LT(lasted, 15s);
}

TEST_F(LifecycleFlow, TheHelperLeavesElevenSecondsAfterARequest) {
  Process helper = startReadyHelper();
  open({requestFor(folder(), "0")});
  const auto start = Clock::now();
  EXPECT_EQ(helper.wait(), 0);
  const auto lasted = Clock::now() - start;
  EXPECT_GE(lasted, 10'900ms);
  EXPECT_LT(lasted, 15s);
}

TEST_F(LifecycleFlow, APanelThatCouldNotBeShownDoesNotKeepTheHelper) {
  set("skipFilename", false);
  Process helper = startReadyHelper();
  open({requestFor(folder(), "0")});
  EXPECT_EQ(helper.wait(), 0);
  EXPECT_NE(helper.errorOutput().find("New note (" + folder() + ")"), std::string::npos)
      << helper.errorOutput();
}

TEST_F(LifecycleFlow, TheToolsFirstRequestOnAFreshMachineMakesAFile) {
  std::filesystem::remove(settingsPath());
  const auto run = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), QUENNEL_CTL);
    return Process(arguments, environment()).wait();
  };
  EXPECT_EQ(run({"template", "add", "--file", _root / "templates/note.txt"}), 0);
  EXPECT_EQ(run({"set", "skipFilename", "yes"}), 0);
  EXPECT_EQ(run({"grant", folder()}), 0);
  EXPECT_EQ(run({"new", "0", folder()}), 0);
  EXPECT_TRUE(eventuallyExists(in("note.txt")));
}

}  // namespace
}  // namespace quennel::test
