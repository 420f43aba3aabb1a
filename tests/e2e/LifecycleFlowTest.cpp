#include <chrono>
#include <filesystem>
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

TEST_F(LifecycleFlow, TheQuitCommandEndsTheHelper) {
  Process helper = startReadyHelper();
  command("quit");
  EXPECT_EQ(helper.wait(), 0);
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
