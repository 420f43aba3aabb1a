#include <gtest/gtest.h>
#include <poll.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/bus/BusDistributedNotificationCenter.h"
#include "platform/linux/bus/BusTypes.h"
#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/events/EventRunLoop.h"
#include "tests/support/Deadline.h"
#include "tests/support/PrivateBus.h"

namespace quennel::test {
namespace {

/// Two programs of one session.
class SessionBusTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!PrivateBus::isAvailable()) {
      GTEST_SKIP() << PrivateBus::whatIsMissing;
    }
    _daemon = std::make_unique<PrivateBus>();
    _bus = std::make_unique<SessionBus>(_runLoop, _daemon->address());
    _otherBus = std::make_unique<SessionBus>(_otherRunLoop, _daemon->address());
  }

  /// When it returns the bus has dealt with all that was sent before over this connection.
  static void makeRoundTrip(const SessionBus& bus) {
    ASSERT_GE(sd_bus_call_method(bus.connection(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                 "org.freedesktop.DBus.Peer", "Ping", nullptr, nullptr, nullptr),
              0);
  }

  bool runUntil(const std::function<bool()>& condition) {
    _runLoop.dispatchAfter(Deadline::standard, [this] { _runLoop.terminate(); });
    return _runLoop.runUntil(condition);
  }

  bool isAwoken() const {
    pollfd polled{_runLoop.descriptor(), POLLIN, 0};
    return poll(&polled, 1, 0) == 1;
  }

  Notification::Handler record() {
    return [this](const Notification& notification) {
      _received.push_back(notification.object.value_or(""));
    };
  }

  std::unique_ptr<PrivateBus> _daemon;
  EventRunLoop _runLoop;
  EventRunLoop _otherRunLoop;
  std::unique_ptr<SessionBus> _bus;
  std::unique_ptr<SessionBus> _otherBus;
  std::vector<std::string> _received;
};

TEST_F(SessionBusTest, MessagesReadAheadByABlockingCallArriveWithoutFurtherTraffic) {
  BusDistributedNotificationCenter center(*_bus);
  BusDistributedNotificationCenter otherCenter(*_otherBus);
  const auto observer = center.addObserver("name", record());
  makeRoundTrip(*_bus);
  for (int i = 0; i < 200; ++i) {
    otherCenter.postNotification({"name", std::to_string(i), {}}, true);
  }
  makeRoundTrip(*_otherBus);
  makeRoundTrip(*_bus);  // takes in all of them before its own answer
  EXPECT_TRUE(runUntil([&] { return _received.size() == 200; }));
}

TEST_F(SessionBusTest, NotificationsThatNobodyObservesDoNotEvenReachTheProcess) {
  BusDistributedNotificationCenter center(*_bus);
  BusDistributedNotificationCenter otherCenter(*_otherBus);
  const auto observer = center.addObserver("observed", record());
  int reached = 0;
  const auto count = [](sd_bus_message* message, void* counter, sd_bus_error*) {
    *static_cast<int*>(counter) +=
        sd_bus_message_is_signal(message, BusDistributedNotificationCenter::interfaceName, nullptr);
    return 0;
  };
  ASSERT_GE(sd_bus_add_filter(_bus->connection(), nullptr, count, &reached), 0);
  makeRoundTrip(*_bus);
  otherCenter.postNotification({"unobserved", {}, {}}, true);
  otherCenter.postNotification({"observed", {}, {}}, true);
  ASSERT_TRUE(runUntil([&] { return !_received.empty(); }));
  EXPECT_EQ(reached, 1);
}

TEST_F(SessionBusTest, WhatIsPostedBetweenListeningAndTheFirstObserverReachesIt) {
  BusDistributedNotificationCenter center(*_bus);
  BusDistributedNotificationCenter otherCenter(*_otherBus);
  center.listen("name");
  makeRoundTrip(*_bus);
  for (const auto* const object : {"first", "second"}) {
    otherCenter.postNotification({"name", object, {}}, true);
  }
  makeRoundTrip(*_otherBus);
  makeRoundTrip(*_bus);
  ASSERT_TRUE(_runLoop.serve());
  auto observer = center.addObserver("name", record());
  EXPECT_TRUE(_received.empty()) << "they come through the main queue";
  ASSERT_TRUE(runUntil([&] { return _received.size() == 2; }));
  otherCenter.postNotification({"name", "third", {}}, true);
  ASSERT_TRUE(runUntil([&] { return _received.size() == 3; }));
  EXPECT_EQ(_received, (std::vector<std::string>{"first", "second", "third"}));
}

TEST_F(SessionBusTest, IsClosedOnceTheBusIsGoneAndStaysUsable) {
  makeRoundTrip(*_bus);
  EXPECT_TRUE(_bus->isOpen());
  _daemon->stop();
  EXPECT_TRUE(runUntil([&] { return !_bus->isOpen(); }));
  BusDistributedNotificationCenter center(*_bus);
  const auto observer = center.addObserver("name", record());
  center.postNotification({"name", {}, {}}, true);
  EXPECT_TRUE(_runLoop.serve());
  EXPECT_FALSE(isAwoken());
}

TEST_F(SessionBusTest, AnObserverOutlivesALostConnection) {
  BusDistributedNotificationCenter center(*_bus);
  auto observer = center.addObserver("name", record());
  makeRoundTrip(*_bus);
  _daemon->stop();
  ASSERT_TRUE(runUntil([&] { return !_bus->isOpen(); }));
  observer.reset();
}

TEST_F(SessionBusTest, ACallThatIsNotAnsweredInTimeEndsWithAnError) {
  makeRoundTrip(*_bus);
  makeRoundTrip(*_otherBus);
  const char* silent = nullptr;
  ASSERT_GE(sd_bus_get_unique_name(_otherBus->connection(), &silent), 0);
  int errors = 0;
  const auto answered = [](sd_bus_message* answer, void* counter, sd_bus_error*) {
    *static_cast<int*>(counter) += sd_bus_message_is_method_error(answer, SD_BUS_ERROR_NO_REPLY);
    return 0;
  };
  for (int i = 0; i < 2; ++i) {
    sd_bus_message* call = nullptr;
    ASSERT_GE(sd_bus_message_new_method_call(_bus->connection(), &call, silent, "/",
                                             "org.freedesktop.DBus.Peer", "Ping"),
              0);
    const BusMessage owned(call);
    ASSERT_GE(sd_bus_call_async(_bus->connection(), nullptr, call, answered, &errors, 10'000), 0);
    EXPECT_TRUE(runUntil([&] { return errors == i + 1; }));
  }
}

TEST_F(SessionBusTest, WithoutABusNothingIsOpenAndNothingArrives) {
  SessionBus none(_runLoop, "unix:path=/nonexistent/socket");
  EXPECT_FALSE(none.isOpen());
  BusDistributedNotificationCenter center(none);
  const auto observer = center.addObserver("name", record());
  center.postNotification({"name", {}, {}}, true);
  EXPECT_TRUE(_runLoop.serve());
  EXPECT_TRUE(_received.empty());
}

TEST_F(SessionBusTest, TextThatIsNotUtf8IsDropped) {
  BusDistributedNotificationCenter center(*_bus);
  const auto observer = center.addObserver("name", record());
  center.postNotification({"name", "\xff", {}}, true);
  center.postNotification({"name", {}, {{"key", "\xff"}}}, true);
  center.postNotification({"name", "whole", {}}, true);
  ASSERT_TRUE(runUntil([&] { return !_received.empty(); }));
  EXPECT_EQ(_received, std::vector<std::string>{"whole"});
}

}  // namespace
}  // namespace quennel::test
