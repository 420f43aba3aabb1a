#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <thread>
#include <vector>

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

using Choice = std::optional<std::string>;

/// What the user does with the panel, and a folder to choose.
enum class Deed { Dismiss, ChooseTheStartFolder };

OpenPanel panelFor(const std::string& folder) {
  return {.title = "Choose",
          .message = "A folder is needed.",
          .prompt = "Authorize",
          .directory = folder,
          .canChooseFiles = false,
          .canChooseDirectories = true};
}

class Fake {
 public:
  static constexpr bool hasUser = true;
  static std::optional<std::string> missingProgram() { return std::nullopt; }

  Choice runModal(const OpenPanel& panel, Deed deed) {
    _userInterface.choices = {choiceFor(panel, deed)};
    return _userInterface.runModalOpenPanel(panel);
  }
  std::vector<Choice> begin(const OpenPanel& panel, Deed deed) {
    std::vector<Choice> answers;
    _userInterface.beginOpenPanel(panel, [&](const Choice& choice) { answers.push_back(choice); });
    EXPECT_TRUE(answers.empty());
    _userInterface.answerBegunPanel(choiceFor(panel, deed));
    return answers;
  }

 private:
  static Choice choiceFor(const OpenPanel& panel, Deed deed) {
    return deed == Deed::Dismiss ? Choice() : Choice(panel.directory);
  }

  CallLog _log;
  FakeUserInterface _userInterface{_log};
};

/// The module's interface. What the user does is up to `act`, on a thread of its own.
class Module {
 public:
  virtual ~Module() = default;

  Choice runModal(const OpenPanel& panel, Deed deed) {
    std::thread user([&] { act(panel, deed); });
    Choice choice = _userInterface.runModalOpenPanel(panel);
    user.join();
    return choice;
  }
  std::vector<Choice> begin(const OpenPanel& panel, Deed deed) {
    std::vector<Choice> answers;
    std::thread user([&] { act(panel, deed); });
    _loop.dispatchAsync([&] {
      _userInterface.beginOpenPanel(panel, [&](const Choice& choice) {
        answers.push_back(choice);
        _loop.terminate();
      });
      EXPECT_TRUE(answers.empty());
    });
    _loop.run();
    user.join();
    return answers;
  }

 protected:
  virtual void act(const OpenPanel& panel, Deed deed) = 0;

 private:
  FreshSession _session;
  EventRunLoop _loop;
  FakeBundle _bundle;
  LazyUserInterface _userInterface{_loop, _bundle, USER_INTERFACE_MODULE};
};

class WithoutDisplay : public Module {
 public:
  static constexpr bool hasUser = false;
  static std::optional<std::string> missingProgram() { return std::nullopt; }

 private:
  void act(const OpenPanel&, Deed) override {}
};

class OnScreen : public Module {
 public:
  static constexpr bool hasUser = true;
  static std::optional<std::string> missingProgram() { return XServer::missingProgram(); }

 private:
  void act(const OpenPanel& panel, Deed deed) override {
    EXPECT_NE(_server.waitForActiveWindow(panel.title), "");
    _server.pressKey(deed == Deed::Dismiss ? "Escape" : "Return");
  }

  XServer _server;
};

template <typename Subject>
class OpenPanelContract : public testing::Test {
 protected:
  void SetUp() override {
    if (const auto program = Subject::missingProgram()) {
      GTEST_SKIP() << "no " << *program;
    }
    subject.emplace();
  }

  TemporaryDirectory folder;
  const OpenPanel panel = panelFor(folder.path());
  std::optional<Subject> subject;
};

using Subjects = testing::Types<Fake, WithoutDisplay, OnScreen>;

TYPED_TEST_SUITE(OpenPanelContract, Subjects);

TYPED_TEST(OpenPanelContract, OneThatIsDismissedAnswersNothing) {
  EXPECT_EQ(this->subject->runModal(this->panel, Deed::Dismiss), std::nullopt);
}

TYPED_TEST(OpenPanelContract, OneThatIsBegunAndDismissedAnswersNothingOnce) {
  EXPECT_EQ(this->subject->begin(this->panel, Deed::Dismiss), std::vector<Choice>{std::nullopt});
}

TYPED_TEST(OpenPanelContract, TheFolderThatIsShownIsTheChoiceUnlessAnotherOneIsMade) {
  const Choice expected = TypeParam::hasUser ? Choice(this->folder.path()) : std::nullopt;
  EXPECT_EQ(this->subject->runModal(this->panel, Deed::ChooseTheStartFolder), expected);
}

TYPED_TEST(OpenPanelContract, OneThatIsBegunAnswersItsChoiceOnce) {
  const Choice expected = TypeParam::hasUser ? Choice(this->folder.path()) : std::nullopt;
  EXPECT_EQ(this->subject->begin(this->panel, Deed::ChooseTheStartFolder),
            std::vector<Choice>{expected});
}

}  // namespace
}  // namespace quennel::test
