#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "settings/SharedSettings.h"
#include "tests/app/AppDelegateTest.h"
#include "tests/support/Deadline.h"
#include "tests/support/FakePlatform.h"

namespace quennel::test {
namespace {

using Lifecycle = AppDelegateTest;

constexpr const char* helperName = "net.brellow.QuennelHelper";

TEST_F(Lifecycle, WithNothingToDoTheHelperLeavesElevenSecondsAfterLaunch) {
  launch();
  fakes.runLoop.advance(10'999ms);
  EXPECT_FALSE(terminated());
  fakes.runLoop.advance(1ms);
  EXPECT_TRUE(terminated());
}

TEST_F(Lifecycle, AUserWhoWantsItInTheBackgroundKeepsTheHelperForever) {
  fakes.sharedDefaults.setObject(true, "runInBackground");
  launch();
  open("quennel:///d?0");
  fakes.runLoop.advance(24h);
  EXPECT_FALSE(terminated());
}

TEST_F(Lifecycle, TheLaunchCheckDoesNotReadRunInBackgroundAgain) {
  launch();
  fakes.sharedDefaults.setObject(true, "runInBackground");
  fakes.runLoop.advance(11s);
  EXPECT_TRUE(terminated());
}

TEST_F(Lifecycle, TheLaunchCheckDoesNotLookAtOpenPanels) {
  launch().setPanelCount(1);
  fakes.runLoop.advance(11s);
  EXPECT_TRUE(terminated());
}

TEST_F(Lifecycle, AUrlDisablesTheLaunchCheckForGood) {
  launch();
  delegate->setPanelCount(1);
  fakes.runLoop.advance(5s);
  open("quennel:///d?0");
  fakes.runLoop.advance(24h);
  EXPECT_FALSE(terminated());
}

TEST_F(Lifecycle, TheHelperLeavesElevenSecondsAfterARequest) {
  launch();
  fakes.runLoop.advance(5s);
  open("quennel:///d?0");
  EXPECT_TRUE(exists("/d/untitled.txt"));
  fakes.runLoop.advance(10'999ms);
  EXPECT_FALSE(terminated());
  fakes.runLoop.advance(1ms);
  EXPECT_TRUE(terminated());
}

TEST_F(Lifecycle, AnOpenPanelSparesTheHelperAtTheRequestCheck) {
  launch();
  open("quennel:///d?0");
  delegate->setPanelCount(1);
  fakes.runLoop.advance(11s);
  delegate->setPanelCount(0);
  fakes.runLoop.advance(24h);
  EXPECT_FALSE(terminated()) << "the check is not armed again when the panel closes";
}

TEST_F(Lifecycle, ANegativePanelCountDoesNotSpareTheHelper) {
  launch();
  open("quennel:///d?0");
  delegate->setPanelCount(-1);
  fakes.runLoop.advance(11s);
  EXPECT_TRUE(terminated());
}

TEST_F(Lifecycle, EveryRequestArmsACheckOfItsOwn) {
  launch();
  delegate->setPanelCount(1);
  open("quennel:///d?0");
  fakes.runLoop.advance(5s);
  open("quennel:///d?0");
  fakes.runLoop.advance(6s);
  EXPECT_FALSE(terminated());
  delegate->setPanelCount(0);
  fakes.runLoop.advance(5s);
  EXPECT_TRUE(terminated());
}

TEST_F(Lifecycle, ALaterRequestDoesNotPutOffTheCheckOfAnEarlierOne) {
  launch();
  open("quennel:///d?0");
  fakes.runLoop.advance(10s);
  open("quennel:///d?0");
  fakes.runLoop.advance(1s);
  EXPECT_TRUE(terminated());
}

TEST_F(Lifecycle, AQuitCheckThatFallsDueDuringAnAlertFiresDuringIt) {
  launch();
  fakes.userInterface.whileShown = [this](const Alert&) {
    delegate->setPanelCount(0);
    fakes.runLoop.advance(11s);
    EXPECT_TRUE(terminated());
  };
  open("quennel:///d?0");
  open("quennel:///d?7");
  EXPECT_EQ(fakes.userInterface.alerts.size(), 1u);
}

TEST_F(Lifecycle, TheQuitCommandEndsTheHelperAtOnce) {
  launch();
  command(helperName, "quit");
  EXPECT_TRUE(terminated());
}

TEST_F(Lifecycle, TheQuitCommandIsHeardUnderTheNameOfTheSuiteToo) {
  launch();
  command(sharedSuiteName, "quit");
  EXPECT_TRUE(terminated());
}

TEST_F(Lifecycle, TheQuitCommandEndsAHelperThatIsToStayInTheBackground) {
  fakes.sharedDefaults.setObject(true, "runInBackground");
  launch();
  command(helperName, "quit");
  EXPECT_TRUE(terminated());
}

TEST_F(Lifecycle, OtherCommandsAreIgnored) {
  fakes.sharedDefaults.setObject(true, "runInBackground");
  launch();
  fakes.sharedDefaults.setObject(false, "runInBackground");
  command(sharedSuiteName, "/home/me/Documents");
  command(helperName, "");
  command(helperName, "Quit");
  command("net.brellow.Other", "quit");
  fakes.runLoop.advance(24h);
  EXPECT_FALSE(terminated());
}

TEST_F(Lifecycle, ACommandWithoutAnObjectIsIgnored) {
  launch();
  fakes.distributedNotificationCenter.postNotification(
      {.name = helperName, .object = std::nullopt, .userInfo = {}}, true);
  fakes.runLoop.runUntilIdle();
  EXPECT_FALSE(terminated());
}

TEST_F(Lifecycle, TheFileTemplatesCommandArmsTheLaunchCheckAgain) {
  fakes.sharedDefaults.setObject(true, "runInBackground");
  launch();
  fakes.runLoop.advance(1h);
  fakes.sharedDefaults.setObject(false, "runInBackground");
  command(helperName, "fileTemplates");
  fakes.runLoop.advance(10'999ms);
  EXPECT_FALSE(terminated());
  fakes.runLoop.advance(1ms);
  EXPECT_TRUE(terminated());
}

TEST_F(Lifecycle, TheFileTemplatesCommandAfterARequestEndsNothing) {
  launch();
  open("quennel:///d?0");
  delegate->setPanelCount(1);
  command(helperName, "fileTemplates");
  fakes.runLoop.advance(24h);
  EXPECT_FALSE(terminated());
}

TEST_F(Lifecycle, AUrlThatArrivesBeforeLaunchingFinishesIsNotLost) {
  fakes.urlEvents.open("quennel:///d?0");
  launch();
  EXPECT_TRUE(exists("/d/untitled.txt"));
}

/// With a grant in the defaults and a key in the settings, and a look at what stands while the one
/// is started and the other registered.
class StartUp : public AppDelegateTest {
 protected:
  StartUp() {
    fakes.securityScope.addFolder("/granted");
    const auto token = fakes.securityScope.bookmarkDataForPath("/granted").value();
    const PropertyList::Dictionary grant{{"path", "/granted"}, {"bookmarkData", token}};
    fakes.mainBundle.resources["Defaults.plist"] = "/share/Defaults.plist";
    fakes.mainBundle.propertyLists["/share/Defaults.plist"] = {
        {"authorizedDirs", PropertyList::Array{grant}}};
    auto record = templateRecord("untitled", "txt");
    record.insert_or_assign("shortcut", "Ctrl+Alt+N");
    fakes.sharedDefaults.setObject(PropertyList::Array{record}, "fileTemplates");
  }
};

TEST_F(StartUp, StartsAccessOnceTheDefaultsAreRegisteredAndEveryObserverStands) {
  int count = 0;
  fakes.securityScope.whileStarting = [&] {
    ++count;
    EXPECT_EQ(fakes.distributedNotificationCenter.observerCount(), 2u);
    EXPECT_EQ(fakes.volumeEvents.observerCount(), 1u);
    EXPECT_FALSE(fakes.urlEvents.hasEventHandler());
  };
  launch();
  EXPECT_EQ(count, 1) << "the defaults grant a folder";
  EXPECT_EQ(delegate->openedURLs().count("/granted"), 1u);
}

TEST_F(StartUp, ObservesTheHelpersOwnNameFirstAndThenThatOfTheSuite) {
  launch();
  EXPECT_EQ(fakes.distributedNotificationCenter.observedNames,
            (std::vector<std::string>{helperName, sharedSuiteName}));
}

TEST_F(StartUp, TakesUrlsBeforeItFinishesLaunching) {
  delegate = std::make_unique<AppDelegate>(platformOf(fakes));
  EXPECT_FALSE(fakes.urlEvents.hasEventHandler());
  delegate->applicationWillFinishLaunching();
  EXPECT_TRUE(fakes.urlEvents.hasEventHandler());
  EXPECT_TRUE(fakes.hotKeyCenter.allHotKeys().empty());
}

TEST_F(StartUp, BindsTheKeysThenArmsTheCheckThenWatchesTheExecutable) {
  std::vector<std::string> order;
  fakes.hotKeyCenter.whileRegistering = [&] {
    EXPECT_EQ(fakes.runLoop.pendingCount(), 0u) << "the check is armed";
    order.emplace_back("key");
  };
  fakes.kernelQueues.whileAsked = [&] {
    EXPECT_EQ(fakes.runLoop.pendingCount(), 1u) << "the check is not armed";
    order.emplace_back("watch");
  };
  launch();
  EXPECT_EQ(order, (std::vector<std::string>{"key", "watch"}));
}

/// With an executable whose fate is the test's to decide.
class SelfWatch : public AppDelegateTest {
 protected:
  SelfWatch() { kernel().addFile(executable); }

  FakeKernelQueue& kernel() { return fakes.kernelQueues.queue(); }
  bool isEnded() {
    return fakes.runLoop.runUntil([this] { return terminated(); });
  }
  std::vector<std::uint32_t> masks() {
    std::vector<std::uint32_t> masks;
    for (const KernelEvent& change : kernel().changes()) {
      masks.push_back(change.fflags);
    }
    return masks;
  }

  const std::string executable = "/opt/quennel/bin/quennelhelper";
};

TEST_F(SelfWatch, TheExecutableIsWatchedForItsEndAndForWrites) {
  launch();
  EXPECT_EQ(masks(), std::vector<std::uint32_t>{35});
}

TEST_F(SelfWatch, AReplacedExecutableEndsTheHelper) {
  launch();
  kernel().addFile("/opt/quennel/bin/new");
  kernel().renameFile("/opt/quennel/bin/new", executable);
  EXPECT_TRUE(isEnded());
}

TEST_F(SelfWatch, AnExecutableThatIsWrittenToEndsTheHelper) {
  launch();
  kernel().touch(executable, NOTE_WRITE);
  EXPECT_TRUE(isEnded());
}

TEST_F(SelfWatch, ARenamedExecutableEndsTheHelper) {
  launch();
  kernel().renameFile(executable, executable + ".old");
  EXPECT_TRUE(isEnded());
}

TEST_F(SelfWatch, ADeletedExecutableEndsTheHelper) {
  launch();
  kernel().removeFile(executable);
  EXPECT_TRUE(isEnded());
}

TEST_F(SelfWatch, AMovedBundleEndsTheHelper) {
  kernel().addFile("/opt/quennel");
  launch();
  kernel().touch("/opt/quennel", NOTE_WRITE);  // of no interest
  kernel().renameFile("/opt/quennel", "/opt/moved");
  EXPECT_TRUE(isEnded());
  EXPECT_EQ(masks(), (std::vector<std::uint32_t>{35, NOTE_RENAME}));
}

TEST_F(SelfWatch, AHelperThatIsToStayInTheBackgroundIsEndedToo) {
  fakes.sharedDefaults.setObject(true, "runInBackground");
  launch();
  kernel().removeFile(executable);
  EXPECT_TRUE(isEnded());
}

TEST_F(SelfWatch, TerminationStopsTheWatching) {
  launch();
  fakes.runLoop.terminate();
  EXPECT_EQ(kernel().openDescriptorCount(), 0u);
}

TEST_F(SelfWatch, WhatTheWatcherHasSeenBeforeTheEndIsToldToNobodyAfterIt) {
  launch();
  const auto pending = fakes.runLoop.pendingCount();
  kernel().touch(executable, NOTE_WRITE);
  ASSERT_TRUE(eventually([&] { return fakes.runLoop.pendingCount() > pending; }));
  delegate->applicationWillTerminate();
  fakes.runLoop.runUntilIdle();
  EXPECT_FALSE(terminated());
}

TEST_F(SelfWatch, WithoutAKernelQueueTheHelperServesUnwatched) {
  fakes.kernelQueues.refuses = true;
  launch();
  open("quennel:///d?0");
  EXPECT_TRUE(exists("/d/untitled.txt"));
}

TEST_F(SelfWatch, AnExecutableThatCannotBeWatchedLeavesTheHelperServing) {
  kernel().removeFile(executable);
  launch();
  open("quennel:///d?0");
  EXPECT_TRUE(exists("/d/untitled.txt"));
}

TEST_F(Lifecycle, AfterTerminationCommandsAreNoLongerHeard) {
  launch();
  EXPECT_EQ(fakes.distributedNotificationCenter.observerCount(), 2u);
  fakes.runLoop.terminate();
  EXPECT_EQ(fakes.distributedNotificationCenter.observerCount(), 0u);
}

}  // namespace
}  // namespace quennel::test
