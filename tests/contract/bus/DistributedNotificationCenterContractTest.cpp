#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/contract/bus/Stages.h"

namespace quennel::test {
namespace {

template <typename Stage>
class DistributedNotificationCenterContract : public StageTest<Stage> {
 protected:
  Notification::Handler record() {
    return [this](const Notification& notification) { _received.push_back(notification); };
  }
  bool waitForCount(std::size_t count) {
    return this->_stage->runUntil([&] { return _received.size() >= count; });
  }

  std::vector<Notification> _received;
};
TYPED_TEST_SUITE(DistributedNotificationCenterContract, Stages, StageNames);

TYPED_TEST(DistributedNotificationCenterContract, AnObserverHearsAnotherProgramsNotification) {
  const auto observer = this->_stage->center().addObserver("the name", this->record());
  this->_stage->post({"the name", "quit", {}});
  ASSERT_TRUE(this->waitForCount(1));
  EXPECT_EQ(this->_received[0].name, "the name");
  EXPECT_EQ(this->_received[0].object, "quit");
}

TYPED_TEST(DistributedNotificationCenterContract, AnObserverHearsItsOwnProcessToo) {
  const auto observer = this->_stage->center().addObserver("the name", this->record());
  this->_stage->center().postNotification({"the name", "mine", {}}, false);
  ASSERT_TRUE(this->waitForCount(1));
  EXPECT_EQ(this->_received[0].object, "mine");
}

TYPED_TEST(DistributedNotificationCenterContract, PostingCallsNoObserverBeforeItReturns) {
  const auto observer = this->_stage->center().addObserver("the name", this->record());
  this->_stage->center().postNotification({"the name", {}, {}}, true);
  EXPECT_TRUE(this->_received.empty());
  EXPECT_TRUE(this->waitForCount(1));
}

TYPED_TEST(DistributedNotificationCenterContract, OnlyTheObservedNameIsHeard) {
  const auto observer = this->_stage->center().addObserver("a", this->record());
  const auto odd = this->_stage->center().addObserver("it's, odd\\", this->record());
  this->_stage->post({"b", "unheard", {}});
  this->_stage->post({"ab", "unheard", {}});
  this->_stage->post({"it's, odd\\", "heard", {}});
  this->_stage->post({"a", "heard", {}});
  ASSERT_TRUE(this->waitForCount(2));
  EXPECT_EQ(this->_received[0].name, "it's, odd\\");
  EXPECT_EQ(this->_received[1].name, "a");
}

TYPED_TEST(DistributedNotificationCenterContract, AllObserversOfANameHearIt) {
  const auto first = this->_stage->center().addObserver("the name", this->record());
  const auto second = this->_stage->center().addObserver("the name", this->record());
  this->_stage->post({"the name", {}, {}});
  EXPECT_TRUE(this->waitForCount(2));
}

TYPED_TEST(DistributedNotificationCenterContract, NotificationsArriveInTheOrderOfPosting) {
  const auto observer = this->_stage->center().addObserver("the name", this->record());
  for (int i = 0; i < 100; ++i) {
    this->_stage->post({"the name", std::to_string(i), {}});
  }
  ASSERT_TRUE(this->waitForCount(100));
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(this->_received[static_cast<std::size_t>(i)].object, std::to_string(i));
  }
}

TYPED_TEST(DistributedNotificationCenterContract, AnObserverThatIsGoneHearsNothing) {
  auto observer = this->_stage->center().addObserver("the name", this->record());
  this->_stage->post({"the name", "unheard", {}});
  observer.reset();
  std::vector<std::string> others;
  const auto other = this->_stage->center().addObserver(
      "another", [&](const Notification&) { others.emplace_back("heard"); });
  this->_stage->post({"another", {}, {}});
  ASSERT_TRUE(this->_stage->runUntil([&] { return !others.empty(); }));
  EXPECT_TRUE(this->_received.empty());
}

TYPED_TEST(DistributedNotificationCenterContract, AnObserverMayEndItselfWhileItIsCalled) {
  std::unique_ptr<Registration> observer;
  std::vector<std::string> heard;
  observer = this->_stage->center().addObserver("the name", [&](const Notification& notification) {
    observer.reset();
    heard.push_back(*notification.object);
  });
  this->_stage->post({"the name", "first", {}});
  this->_stage->post({"the name", "second", {}});
  const auto last = this->_stage->center().addObserver("last", this->record());
  this->_stage->post({"last", {}, {}});
  ASSERT_TRUE(this->waitForCount(1));
  EXPECT_EQ(heard, std::vector<std::string>{"first"});
}

TYPED_TEST(DistributedNotificationCenterContract, AnEmptyObjectIsAnAbsentOne) {
  const auto observer = this->_stage->center().addObserver("the name", this->record());
  this->_stage->post({"the name", "", {}});
  this->_stage->post({"the name", std::nullopt, {}});
  ASSERT_TRUE(this->waitForCount(2));
  EXPECT_EQ(this->_received[0].object, std::nullopt);
  EXPECT_EQ(this->_received[1].object, std::nullopt);
}

TYPED_TEST(DistributedNotificationCenterContract, UserInfoArrivesAsItWasSent) {
  const PropertyList::Dictionary userInfo{
      {"text", "täxt"},
      {"yes", true},
      {"negative", -5},
      {"large", std::uint64_t{1} << 63},
      {"real", 0.25},
      {"data", PropertyList::Data{std::string("\0\xff", 2)}},
      {"array", PropertyList::Array{1, "two", PropertyList::Array{}}},
      {"dictionary", PropertyList::Dictionary{{"key", PropertyList::Dictionary{}}}}};
  const auto observer = this->_stage->center().addObserver("the name", this->record());
  this->_stage->post({"the name", {}, userInfo});
  ASSERT_TRUE(this->waitForCount(1));
  EXPECT_EQ(this->_received[0].userInfo, userInfo);
}

}  // namespace
}  // namespace quennel::test
