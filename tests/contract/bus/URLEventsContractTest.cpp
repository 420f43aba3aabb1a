#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/contract/bus/Stages.h"

namespace quennel::test {
namespace {

using Urls = std::vector<std::string>;

template <typename Stage>
class URLEventsContract : public StageTest<Stage> {
 protected:
  URLEvent::Handler record() {
    return [this](const URLEvent& event) {
      _opened.push_back(event.directObject.value_or("nothing"));
      _tokens.push_back(event.activationToken);
    };
  }
  bool waitForCount(std::size_t count) {
    return this->_stage->runUntil([&] { return _opened.size() >= count; });
  }

  Urls _opened;
  std::vector<std::string> _tokens;
};
TYPED_TEST_SUITE(URLEventsContract, Stages, StageNames);

TYPED_TEST(URLEventsContract, EachUrlIsAnEventOfItsOwnInTheOrderOfArrival) {
  const auto registration = this->_stage->urlEvents().setEventHandler(this->record());
  this->_stage->open({"quennel:///one?1", "quennel:///two?2"});
  this->_stage->open({"quennel:///three"});
  ASSERT_TRUE(this->waitForCount(3));
  EXPECT_EQ(this->_opened, (Urls{"quennel:///one?1", "quennel:///two?2", "quennel:///three"}));
}

TYPED_TEST(URLEventsContract, EventsAreKeptUntilThereIsAHandler) {
  this->_stage->open({"quennel:///one", "quennel:///two"});
  int settled = 0;
  this->_stage->runLoop().dispatchAsync([&] { ++settled; });
  ASSERT_TRUE(this->_stage->runUntil([&] { return settled == 1; }));
  const auto registration = this->_stage->urlEvents().setEventHandler(this->record());
  EXPECT_TRUE(this->_opened.empty());
  ASSERT_TRUE(this->waitForCount(2));
  EXPECT_EQ(this->_opened, (Urls{"quennel:///one", "quennel:///two"}));
}

TYPED_TEST(URLEventsContract, NoEventReachesAHandlerWhoseRegistrationIsGone) {
  auto registration = this->_stage->urlEvents().setEventHandler(this->record());
  this->_stage->open({"quennel:///one"});
  ASSERT_TRUE(this->waitForCount(1));
  registration.reset();
  Urls later;
  this->_stage->open({"quennel:///two"});
  const auto next = this->_stage->urlEvents().setEventHandler(
      [&](const URLEvent& event) { later.push_back(*event.directObject); });
  ASSERT_TRUE(this->_stage->runUntil([&] { return !later.empty(); }));
  EXPECT_EQ(later, Urls{"quennel:///two"});
  EXPECT_EQ(this->_opened, Urls{"quennel:///one"});
}

TYPED_TEST(URLEventsContract, ANewHandlerTakesThePlaceOfTheOldOne) {
  const auto first = this->_stage->urlEvents().setEventHandler(
      [](const URLEvent&) { ADD_FAILURE() << "the old handler was called"; });
  auto second = this->_stage->urlEvents().setEventHandler(this->record());
  this->_stage->open({"quennel:///one"});
  EXPECT_TRUE(this->waitForCount(1));
}

TYPED_TEST(URLEventsContract, LettingGoOfTheOldRegistrationKeepsTheNewHandler) {
  auto first = this->_stage->urlEvents().setEventHandler([](const URLEvent&) {});
  const auto second = this->_stage->urlEvents().setEventHandler(this->record());
  first.reset();
  this->_stage->open({"quennel:///one"});
  EXPECT_TRUE(this->waitForCount(1));
}

TYPED_TEST(URLEventsContract, CharactersThatLaunchersLeaveUnescapedAreEscaped) {
  const auto registration = this->_stage->urlEvents().setEventHandler(this->record());
  this->_stage->open({"quennel:///home/me/My Files/é?1", "quennel:///My%20Files?1"});
  ASSERT_TRUE(this->waitForCount(2));
  EXPECT_EQ(this->_opened,
            (Urls{"quennel:///home/me/My%20Files/%C3%A9?1", "quennel:///My%20Files?1"}));
}

TYPED_TEST(URLEventsContract, TheActivationTokenComesWithEachUrl) {
  const auto registration = this->_stage->urlEvents().setEventHandler(this->record());
  this->_stage->open({"quennel:///one", "quennel:///two"}, "token-7");
  this->_stage->open({"quennel:///three"});
  ASSERT_TRUE(this->waitForCount(3));
  EXPECT_EQ(this->_tokens, (std::vector<std::string>{"token-7", "token-7", ""}));
}

TYPED_TEST(URLEventsContract, AHandlerThatServesTheQueueGetsTheNextEventMeanwhile) {
  Urls log;
  const auto registration = this->_stage->urlEvents().setEventHandler([&](const URLEvent& event) {
    log.push_back("begin " + *event.directObject);
    if (log.size() == 1) {
      EXPECT_TRUE(this->_stage->runUntil([&] { return log.size() > 1; }));
    }
    log.push_back("end " + *event.directObject);
  });
  this->_stage->open({"a:/1", "a:/2"});
  ASSERT_TRUE(this->_stage->runUntil([&] { return log.size() == 4; }));
  EXPECT_EQ(log, (Urls{"begin a:/1", "begin a:/2", "end a:/2", "end a:/1"}));
}

}  // namespace
}  // namespace quennel::test
