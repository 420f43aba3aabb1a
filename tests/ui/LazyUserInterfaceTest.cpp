#include <gtest/gtest.h>
#include <malloc.h>

#include <chrono>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/linux/events/EventRunLoop.h"
#include "platform/linux/ui/LazyUserInterface.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/FakeBundle.h"
#include "tests/support/FreshSession.h"
#include "tests/support/XServer.h"

namespace quennel::test {
namespace {

using std::chrono::milliseconds;

constexpr int firstButton = UserInterface::alertFirstButtonReturn;

Alert criticalAlert() {
  return {"Unable to create file!", "No suitable file template found.", AlertStyle::Critical, {}};
}

Alert alertWithButtons(const std::vector<std::string>& buttons) {
  return {"Unable to install!", "Permission denied", AlertStyle::Critical, buttons};
}

/// What `body` writes to standard error.
std::string standardErrorOf(const std::function<void()>& body) {
  testing::internal::CaptureStderr();
  body();
  return testing::internal::GetCapturedStderr();
}

class WithoutDisplay : public testing::Test {
 protected:
  FreshSession session;
  EventRunLoop loop;
  FakeBundle bundle;
  LazyUserInterface userInterface{loop, bundle, USER_INTERFACE_MODULE};
};

class OnScreen : public testing::Test {
 protected:
  void SetUp() override {
    if (const auto program = XServer::missingProgram()) {
      GTEST_SKIP() << "no " << *program;
    }
    server.emplace();
  }

  /// Waits for an alert, other than the one named, and answers the window.
  std::string waitForAlert(const std::string& otherThan = {}) const {
    const std::string window = server->waitForActiveWindow("Quennel", otherThan);
    EXPECT_NE(window, "");
    return window;
  }

  /// Shows the alert to somebody who presses `key` when it has the keyboard.
  int answerAfterPressing(const std::string& key, const Alert& alert) {
    const std::string before = server->activeWindow();
    std::thread user([&] {
      waitForAlert(before);
      server->pressKey(key);
    });
    const int answer = userInterface.runModal(alert);
    user.join();
    return answer;
  }

  FreshSession session;
  std::optional<XServer> server;
  EventRunLoop loop;
  FakeBundle bundle;
  LazyUserInterface userInterface{loop, bundle, USER_INTERFACE_MODULE};
};

/// First of all: what is loaded stays loaded.
TEST(BeforeTheFirstUse, NothingIsLoaded) {
  EventRunLoop loop;
  FakeBundle bundle;
  LazyUserInterface userInterface(loop, bundle, USER_INTERFACE_MODULE);
  userInterface.activateIgnoringOtherApps();
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    EXPECT_EQ(line.find("libQt"), std::string::npos) << line;
  }
}

TEST_F(WithoutDisplay, AlertsGoToStandardError) {
  EXPECT_EQ(standardErrorOf([&] { userInterface.runModal(criticalAlert()); }),
            "Unable to create file!: No suitable file template found.\n");
}

TEST_F(WithoutDisplay, AnAlertAnswersItsLastButton) {
  standardErrorOf([&] {
    EXPECT_EQ(userInterface.runModal(criticalAlert()), firstButton);
    EXPECT_EQ(userInterface.runModal(alertWithButtons({"A", "B", "C"})), firstButton + 2);
  });
}

TEST_F(WithoutDisplay, OpenPanelsGoToStandardErrorAndAreDismissed) {
  const OpenPanel panel{
      .title = "Quennel", .message = "A folder is needed.", .prompt = "OK", .directory = "/d"};
  EXPECT_EQ(
      standardErrorOf([&] { EXPECT_EQ(userInterface.runModalOpenPanel(panel), std::nullopt); }),
      "Quennel: A folder is needed. (/d)\n");
}

TEST_F(WithoutDisplay, TextsThatAreAbsentLeaveNoTrace) {
  Alert alert;
  alert.messageText = "Only a title!";
  EXPECT_EQ(standardErrorOf([&] { userInterface.runModal(alert); }), "Only a title!\n");
  alert = {};
  alert.informativeText = "only a message";
  EXPECT_EQ(standardErrorOf([&] { userInterface.runModal(alert); }), "only a message\n");
}

TEST_F(WithoutDisplay, ADisplayThatCannotBeReachedIsNone) {
  const EnvironmentVariable display("DISPLAY", "unix:" + (session.home() / "no-server"));
  const EnvironmentVariable wayland("WAYLAND_DISPLAY", "wayland-0");
  EXPECT_EQ(standardErrorOf([&] { userInterface.runModal(criticalAlert()); }),
            "Unable to create file!: No suitable file template found.\n");
}

TEST_F(WithoutDisplay, AForcedPlatformIsNoReasonToTryWithoutADisplay) {
  const EnvironmentVariable platform("QT_QPA_PLATFORM", "xcb");
  EXPECT_EQ(standardErrorOf([&] { userInterface.runModal(criticalAlert()); }),
            "Unable to create file!: No suitable file template found.\n");
}

TEST_F(WithoutDisplay, FileTypesAreDescribedAllTheSame) {
  EXPECT_EQ(userInterface.localizedDescriptionOfFileExtension("txt"), "plain text document");
}

TEST_F(WithoutDisplay, FileTypesAreDescribedInTheLanguageOfTheUser) {
  EXPECT_EQ(inChildProcess([&] {
              setenv("LC_ALL", "de_DE.UTF-8", 1);
              return userInterface.localizedDescriptionOfFileExtension("txt").value_or("");
            }),
            "Einfaches Textdokument");
}

TEST_F(WithoutDisplay, ExtensionsWithoutATypeHaveNoDescription) {
  for (const char* const extension : {"", "no-such-extension", "/", "a/b.txt", ".", "t\nxt"}) {
    EXPECT_EQ(userInterface.localizedDescriptionOfFileExtension(extension), std::nullopt)
        << extension;
  }
}

TEST(LazyUserInterface, AMissingModuleIsNotedOnceAndAlertsGoToStandardError) {
  EventRunLoop loop;
  FakeBundle bundle;
  LazyUserInterface userInterface(loop, bundle, "/no/such/module.so");
  int answer = 0;
  const auto show = [&] { answer = userInterface.runModal(alertWithButtons({"First", "Last"})); };
  const std::string note = standardErrorOf(show);
  EXPECT_NE(note.find("/no/such/module.so"), std::string::npos) << note;
  EXPECT_TRUE(note.ends_with("Unable to install!: Permission denied\n")) << note;
  EXPECT_EQ(answer, firstButton + 1);
  EXPECT_EQ(standardErrorOf(show), "Unable to install!: Permission denied\n");
  EXPECT_EQ(userInterface.localizedDescriptionOfFileExtension("txt"), std::nullopt);
}

/// Before any other test shows something: a copy of a process that did lacks the toolkit's threads.
TEST_F(OnScreen, ADisplayThatGoesUnderAnAlertEndsTheProcess) {
  const std::string end = inChildProcess([&] {
    EventRunLoop ownLoop;
    ownLoop.dispatchAfter(milliseconds(50), [&] {
      waitForAlert();
      server->kill();
    });
    LazyUserInterface(ownLoop, FakeBundle(), USER_INTERFACE_MODULE).runModal(criticalAlert());
    return std::string("answered");
  });
  EXPECT_EQ(end, "died with status " + std::to_string(1 << 8)) << "by the toolkit's exit(1)";
}

TEST_F(OnScreen, ReturnPressesTheDefaultButton) {
  EXPECT_EQ(answerAfterPressing("Return", criticalAlert()), firstButton);
}

TEST_F(OnScreen, TheFirstButtonIsTheDefault) {
  EXPECT_EQ(answerAfterPressing("Return", alertWithButtons({"Install manually", "Cancel"})),
            firstButton);
}

TEST_F(OnScreen, EscapeAndClosingTheWindowCountAsTheLastButton) {
  const Alert alert = alertWithButtons({"Install manually", "Install later", "Cancel"});
  EXPECT_EQ(answerAfterPressing("Escape", alert), firstButton + 2);
  ASSERT_TRUE(server->waitForNoActiveWindow("Quennel"));
  EXPECT_EQ(answerAfterPressing("alt+F4", alert), firstButton + 2);
}

TEST_F(OnScreen, AnAlertStandsAboveNormalWindows) {
  std::string state;
  std::thread user([&] {
    state = server->windowProperty(waitForAlert(), "_NET_WM_STATE");
    server->pressKey("Return");
  });
  userInterface.runModal(criticalAlert());
  user.join();
  EXPECT_NE(state.find("_NET_WM_STATE_ABOVE"), std::string::npos) << state;
}

TEST_F(OnScreen, TheMainQueueIsServedWhileAnAlertIsUp) {
  std::vector<std::string> log;
  const auto queueWork = [&] {
    loop.dispatchAsync([&] {
      log.push_back("now");
      loop.dispatchAfter(milliseconds(30), [&] { log.push_back("late"); });
      loop.dispatchAfter(milliseconds(5), [&] { log.push_back("soon"); });
    });
    // Only work closes this alert.
    loop.dispatchAfter(milliseconds(200), [&] {
      waitForAlert();
      server->pressKey("Return");
    });
  };
  // From a later turn of the running loop, which is awake and waits for nothing.
  loop.dispatchAfter(milliseconds(1), [&] {
    queueWork();
    userInterface.runModal(criticalAlert());
    log.push_back("answered");
    loop.terminate();
  });
  loop.run();
  EXPECT_EQ(log, (std::vector<std::string>{"now", "soon", "late", "answered"}));
}

TEST_F(OnScreen, WorkQueuedByAnotherThreadRunsWhileAnAlertIsUp) {
  std::thread other([&] {
    waitForAlert();
    loop.dispatchAsync([&] { server->pressKey("Return"); });
  });
  EXPECT_EQ(userInterface.runModal(criticalAlert()), firstButton);
  other.join();
}

TEST_F(OnScreen, TerminatingDismissesTheAlert) {
  const Alert alert = alertWithButtons({"Install manually", "Cancel"});
  loop.dispatchAfter(milliseconds(100), [&] { loop.terminate(); });
  EXPECT_EQ(userInterface.runModal(alert), firstButton + 1);
  EXPECT_EQ(userInterface.runModal(alert), firstButton + 1) << "nothing is shown any more";
}

TEST_F(OnScreen, AnAlertWithinAnAlertIsAnsweredFirst) {
  std::vector<int> answers;
  std::thread user([&] {
    const std::string outer = waitForAlert();
    loop.dispatchAsync([&] {
      answers.push_back(userInterface.runModal(alertWithButtons({"A", "B"})));
    });
    const std::string inner = waitForAlert(outer);
    server->pressKey("Escape");
    EXPECT_EQ(waitForAlert(inner), outer);
    server->pressKey("Return");
  });
  answers.push_back(userInterface.runModal(alertWithButtons({"C", "D"})));
  user.join();
  EXPECT_EQ(answers, (std::vector<int>{firstButton + 1, firstButton}));
}

TEST_F(OnScreen, TerminatingDismissesAlertsWithinAlerts) {
  std::vector<int> answers;
  loop.dispatchAfter(milliseconds(50), [&] {
    loop.dispatchAfter(milliseconds(50), [&] { loop.terminate(); });
    answers.push_back(userInterface.runModal(alertWithButtons({"A", "B"})));
  });
  answers.push_back(userInterface.runModal(criticalAlert()));
  EXPECT_EQ(answers, (std::vector<int>{firstButton + 1, firstButton}));
}

TEST_F(OnScreen, ADisplayThatHasGoneIsNoDisplayAtTheNextAlert) {
  EXPECT_EQ(answerAfterPressing("Return", criticalAlert()), firstButton);
  server->kill();
  EXPECT_EQ(standardErrorOf([&] { userInterface.runModal(criticalAlert()); }),
            "Unable to create file!: No suitable file template found.\n");
}

TEST_F(OnScreen, NumbersAreReadInTheSameFormAfterAnAlert) {
  answerAfterPressing("Return", criticalAlert());
  EXPECT_STREQ(setlocale(LC_NUMERIC, nullptr), "C");
}

// The memory of the sanitizers themselves grows.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

/// The kilobytes of memory that the process has to itself.
long privateMemory() {
  std::ifstream rollup("/proc/self/smaps_rollup");
  long kilobytes = 0;
  for (std::string line; std::getline(rollup, line);) {
    long value = 0;
    if (std::sscanf(line.c_str(), "Private_Dirty: %ld", &value) == 1) {
      kilobytes += value;
    }
  }
  return kilobytes;
}

TEST_F(OnScreen, FreeMemoryIsGivenBackAfterAnAlert) {
  answerAfterPressing("Return", criticalAlert());
  const long after = privateMemory();
  malloc_trim(0);
  EXPECT_LT(after - privateMemory(), 200) << "kilobytes, from " << after;
}

TEST_F(OnScreen, AlertAfterAlertMemoryDoesNotGrow) {
  const auto showAlerts = [&](int count) {
    for (int shown = 0; shown < count; ++shown) {
      answerAfterPressing("Return", criticalAlert());
      ASSERT_TRUE(server->waitForNoActiveWindow("Quennel"));
    }
  };
  showAlerts(5);
  const long before = privateMemory();
  showAlerts(25);
  const long grown = privateMemory() - before;
  RecordProperty("grown_kilobytes", std::to_string(grown));
  EXPECT_LT(grown, 400) << "kilobytes, from " << before;
}

#endif

}  // namespace
}  // namespace quennel::test
