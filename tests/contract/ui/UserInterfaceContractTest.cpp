#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <thread>

#include "platform/UserInterface.h"
#include "platform/linux/events/EventRunLoop.h"
#include "platform/linux/ui/LazyUserInterface.h"
#include "tests/support/CallLog.h"
#include "tests/support/FakeBundle.h"
#include "tests/support/FakeUserInterface.h"
#include "tests/support/FreshSession.h"
#include "tests/support/XServer.h"

namespace quennel::test {
namespace {

/// The fake, whose user presses the last button.
class Fake {
 public:
  Fake() { _userInterface.typeDescriptions["txt"] = "plain text document"; }

  static std::optional<std::string> missingProgram() { return std::nullopt; }

  UserInterface& userInterface() { return _userInterface; }
  int answerAfterDismissing(const Alert& alert) { return _userInterface.runModal(alert); }

 private:
  CallLog _log;
  FakeUserInterface _userInterface{_log};
};

class WithoutDisplay {
 public:
  static std::optional<std::string> missingProgram() { return std::nullopt; }

  UserInterface& userInterface() { return _userInterface; }
  int answerAfterDismissing(const Alert& alert) { return _userInterface.runModal(alert); }

 private:
  FreshSession _session;
  EventRunLoop _loop;
  FakeBundle _bundle;
  LazyUserInterface _userInterface{_loop, _bundle, USER_INTERFACE_MODULE};
};

class OnScreen {
 public:
  static std::optional<std::string> missingProgram() { return XServer::missingProgram(); }

  UserInterface& userInterface() { return _userInterface; }
  int answerAfterDismissing(const Alert& alert) {
    std::thread user([&] {
      _server.waitForActiveWindow("Quennel");
      _server.pressKey("Escape");
    });
    const int answer = _userInterface.runModal(alert);
    user.join();
    return answer;
  }

 private:
  FreshSession _session;
  XServer _server;
  EventRunLoop _loop;
  FakeBundle _bundle;
  LazyUserInterface _userInterface{_loop, _bundle, USER_INTERFACE_MODULE};
};

template <typename Subject>
class UserInterfaceContract : public testing::Test {
 protected:
  void SetUp() override {
    if (const auto program = Subject::missingProgram()) {
      GTEST_SKIP() << "no " << *program;
    }
    subject.emplace();
  }

  std::optional<Subject> subject;
};

using Subjects = testing::Types<Fake, WithoutDisplay, OnScreen>;

TYPED_TEST_SUITE(UserInterfaceContract, Subjects);

TYPED_TEST(UserInterfaceContract, AnAlertWithoutButtonsAnswersTheFirst) {
  EXPECT_EQ(this->subject->answerAfterDismissing({"Title!", "message", AlertStyle::Critical, {}}),
            UserInterface::alertFirstButtonReturn);
}

TYPED_TEST(UserInterfaceContract, AnAlertThatIsDismissedAnswersTheLastButton) {
  EXPECT_EQ(this->subject->answerAfterDismissing(
                {"Title!", "message", AlertStyle::Critical, {"First", "Second", "Third"}}),
            UserInterface::alertFirstButtonReturn + 2);
}

TYPED_TEST(UserInterfaceContract, TextsMayBeAbsent) {
  EXPECT_EQ(this->subject->answerAfterDismissing({}), UserInterface::alertFirstButtonReturn);
}

TYPED_TEST(UserInterfaceContract, AKnownExtensionHasADescription) {
  EXPECT_EQ(this->subject->userInterface().localizedDescriptionOfFileExtension("txt"),
            "plain text document");
}

TYPED_TEST(UserInterfaceContract, AnUnknownExtensionHasNone) {
  EXPECT_EQ(this->subject->userInterface().localizedDescriptionOfFileExtension("no-such-type"),
            std::nullopt);
}

TYPED_TEST(UserInterfaceContract, ActivatingIsPossibleWithNothingToShow) {
  this->subject->userInterface().activateIgnoringOtherApps();
  EXPECT_EQ(this->subject->answerAfterDismissing({}), UserInterface::alertFirstButtonReturn);
}

}  // namespace
}  // namespace quennel::test
