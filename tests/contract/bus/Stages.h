#pragma once

#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "platform/linux/bus/BusApplicationActions.h"
#include "platform/linux/bus/BusDistributedNotificationCenter.h"
#include "platform/linux/bus/BusURLEvents.h"
#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/events/EventRunLoop.h"
#include "tests/support/Deadline.h"
#include "tests/support/FakeApplicationActions.h"
#include "tests/support/FakeDistributedNotificationCenter.h"
#include "tests/support/FakeRunLoop.h"
#include "tests/support/FakeURLEvents.h"
#include "tests/support/PrivateBus.h"

namespace quennel::test {

/// What the contract suites play on: the ports under test, and how events come to them from
/// outside. One stage is made of fakes, the other of a private bus.
class FakeStage {
 public:
  static bool isAvailable() { return true; }

  RunLoop& runLoop() { return _runLoop; }
  DistributedNotificationCenter& center() { return _center; }
  URLEvents& urlEvents() { return _urlEvents; }
  ApplicationActions& actions() { return _actions; }

  /// Another program has the action performed and waits for the answer: whether there is such an
  /// action.
  bool activate(const std::string& name, const std::optional<PropertyList>& parameter = {}) {
    return _actions.activate(name, parameter);
  }

  [[nodiscard]] bool runUntil(const std::function<bool()>& condition) {
    return _runLoop.runUntil(condition);
  }
  void open(const std::vector<std::string>& urls, const std::string& token = {}) {
    for (const auto& url : urls) {
      _urlEvents.open(url, token);
    }
  }
  /// Another program posts.
  void post(const Notification& notification) { _center.postNotification(notification, true); }

 private:
  FakeRunLoop _runLoop;
  FakeDistributedNotificationCenter _center{_runLoop};
  FakeURLEvents _urlEvents{_runLoop};
  FakeApplicationActions _actions;
};

class BusStage {
 public:
  static bool isAvailable() { return PrivateBus::isAvailable(); }

  BusStage() {
    _urlEvents.setActions(_actions);
    _urlEvents.claim({});
  }

  RunLoop& runLoop() { return _runLoop; }
  DistributedNotificationCenter& center() { return _center; }
  URLEvents& urlEvents() { return _urlEvents; }
  ApplicationActions& actions() { return _actions; }

  bool activate(const std::string& name, const std::optional<PropertyList>& parameter = {}) {
    sd_bus_message* call = nullptr;
    sd_bus_message_new_method_call(_other.connection(), &call, BusURLEvents::busName,
                                   BusURLEvents::objectPath, BusURLEvents::interfaceName,
                                   "ActivateAction");
    const BusMessage owned(call);
    const std::string* const text = parameter ? parameter->string() : nullptr;
    sd_bus_message_append(call, "s", name.c_str());
    if (text) {
      sd_bus_message_append(call, "av", 1, "s", text->c_str());
    } else {
      sd_bus_message_append(call, "av", 0);
    }
    sd_bus_message_append(call, "a{sv}", 0);
    const BusMessage answer = _other.call(call);
    return answer && sd_bus_message_is_method_error(answer.get(), nullptr) == 0;
  }

  [[nodiscard]] bool runUntil(const std::function<bool()>& condition) {
    _runLoop.dispatchAfter(Deadline::standard, [this] { _runLoop.terminate(); });
    return _runLoop.runUntil(condition);
  }
  void open(const std::vector<std::string>& urls, const std::string& token = {}) {
    sd_bus_message* call = nullptr;
    sd_bus_message_new_method_call(_other.connection(), &call, BusURLEvents::busName,
                                   BusURLEvents::objectPath, BusURLEvents::interfaceName, "Open");
    const BusMessage owned(call);
    sd_bus_message_open_container(call, 'a', "s");
    for (const auto& url : urls) {
      sd_bus_message_append(call, "s", url.c_str());
    }
    sd_bus_message_close_container(call);
    sd_bus_message_append(call, "a{sv}", 1, "activation-token", "s", token.c_str());
    sd_bus_send(_other.connection(), call, nullptr);
  }
  void post(const Notification& notification) {
    waitUntilMatchesAreInPlace();
    _otherCenter.postNotification(notification, true);
  }

 private:
  /// The bus serves two connections in no given order, each of them in order.
  void waitUntilMatchesAreInPlace() {
    ASSERT_GE(
        sd_bus_call_method(_session.connection(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                           "org.freedesktop.DBus.Peer", "Ping", nullptr, nullptr, nullptr),
        0);
  }

  PrivateBus _bus;
  EventRunLoop _runLoop;
  SessionBus _session{_runLoop, _bus.address()};
  BusDistributedNotificationCenter _center{_session};
  BusApplicationActions _actions{_session};
  BusURLEvents _urlEvents{_session};
  SessionBus _other{_runLoop, _bus.address()};
  BusDistributedNotificationCenter _otherCenter{_other};
};

/// Skips where the stage cannot be had.
template <typename Stage>
class StageTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!Stage::isAvailable()) {
      GTEST_SKIP() << PrivateBus::whatIsMissing;
    }
    _stage = std::make_unique<Stage>();
  }

  std::unique_ptr<Stage> _stage;
};

using Stages = testing::Types<BusStage, FakeStage>;
struct StageNames {
  template <typename Stage>
  static std::string GetName(int) {
    return std::is_same_v<Stage, FakeStage> ? "Fake" : "Real";
  }
};

}  // namespace quennel::test
