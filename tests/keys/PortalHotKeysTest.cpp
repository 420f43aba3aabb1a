#include <gtest/gtest.h>
#include <poll.h>

#include <cerrno>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/events/EventRunLoop.h"
#include "platform/linux/keys/DesktopHotKeyCenter.h"
#include "platform/linux/keys/PortalHotKeys.h"
#include "tests/support/Deadline.h"
#include "tests/support/HotKeyActions.h"
#include "tests/support/PortalStandIn.h"
#include "tests/support/PrivateBus.h"

namespace quennel::test {
namespace {

using Names = std::vector<std::string>;
using User = PortalStandIn::User;

class PortalHotKeysTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!PrivateBus::isAvailable()) {
      GTEST_SKIP() << PrivateBus::whatIsMissing;
    }
    _bus.emplace();
    _portalConnection.emplace(_loop, _bus->address());
    _connection.emplace(_loop, _bus->address());
    _portal.emplace(*_portalConnection);
    _center.emplace(_loop, [this](HotKeyListener& listener, Error* error) {
      return PortalHotKeys::open(*_connection, "net.brellow.QuennelHelper", listener, error);
    });
  }

  bool runUntil(const std::function<bool()>& condition) {
    const Deadline deadline;
    while (!condition()) {
      if (deadline.hasPassed()) {
        return false;
      }
      pollfd polled{_loop.descriptor(), POLLIN, 0};
      poll(&polled, 1, 1);
      _loop.serve();
    }
    return true;
  }

  bool bind(const std::string& name, const std::string& accelerator,
            const std::string& title = {}) {
    return _center->registerHotKey(
        PTHotKey::hotKeyWithIdentifier(name, accelerator, _actions, "press", title));
  }
  void unbind(const std::string& name) {
    for (const auto& hotKey : _center->allHotKeys()) {
      if (hotKey->identifier() == name) {
        return _center->unregisterHotKey(hotKey);
      }
    }
  }

  Names listed() const {
    Names names;
    for (const auto& hotKey : _center->allHotKeys()) {
      names.push_back(hotKey->identifier());
    }
    return names;
  }
  static Names boundBy(const PortalStandIn& portal) {
    Names names;
    for (const auto& shortcut : portal.bound()) {
      names.push_back(shortcut.identifier);
    }
    return names;
  }
  bool comesToBind(const Names& names) {
    return runUntil([&] { return boundBy(*_portal) == names; });
  }
  bool comesToList(const Names& names) {
    return runUntil([&] { return listed() == names; });
  }
  bool comesToSend(const std::string& trigger, const std::string& name) {
    _actions.received.clear();
    _portal->press(trigger);
    return runUntil([&] { return !_actions.received.empty(); }) &&
           _actions.received == Names{"press by " + name};
  }
  /// Until all that is under way between the two has arrived: the bus keeps the order.
  void settle() {
    for (int round = 0; round < 4; ++round) {
      _loop.serve();
      sd_bus_call_method(_connection->connection(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                         "org.freedesktop.DBus.Peer", "Ping", nullptr, nullptr, "");
      _loop.serve();
      sd_bus_call_method(_portalConnection->connection(), "org.freedesktop.DBus",
                         "/org/freedesktop/DBus", "org.freedesktop.DBus.Peer", "Ping", nullptr,
                         nullptr, "");
      _loop.serve();
    }
  }

  std::optional<PrivateBus> _bus;
  EventRunLoop _loop;
  HotKeyActions _actions;
  std::optional<SessionBus> _portalConnection;
  std::optional<SessionBus> _connection;
  std::optional<PortalStandIn> _portal;
  std::optional<DesktopHotKeyCenter> _center;
};

}  // namespace

TEST_F(PortalHotKeysTest, ProgramIntroducesItselfOnce) {
  bind("a", "Ctrl+Alt+N");
  ASSERT_TRUE(comesToBind({"a"}));
  bind("b", "Ctrl+Alt+M");
  ASSERT_TRUE(comesToBind({"a", "b"}));
  EXPECT_EQ(_portal->introducedPrograms(), Names{"net.brellow.QuennelHelper"});
}

TEST_F(PortalHotKeysTest, PortalIsToldTitlesAndTriggers) {
  bind("a", "Ctrl+Alt+Shift+Super+N", "Plain text");
  bind("b", "<Super>Page_Up");
  ASSERT_TRUE(comesToBind({"a", "b"}));
  const auto bound = _portal->bound();
  EXPECT_EQ(bound[0].description, "Plain text");
  EXPECT_EQ(bound[0].trigger, "CTRL+ALT+SHIFT+LOGO+n");
  EXPECT_EQ(bound[1].description, "b");
  EXPECT_EQ(bound[1].trigger, "LOGO+Prior");
}

TEST_F(PortalHotKeysTest, WholeSetIsAskedForAtOnce) {
  const Names names = {"a", "b", "c"};
  for (const auto& name : names) {
    bind(name, "Ctrl+Alt+" + name);
  }
  ASSERT_TRUE(comesToBind(names));
  EXPECT_EQ(_portal->creationCount(), 1);
}

TEST_F(PortalHotKeysTest, SameSetBoundAnewTroublesNobody) {
  bind("a", "Ctrl+Alt+N");
  bind("b", "Ctrl+Alt+M");
  ASSERT_TRUE(comesToBind({"a", "b"}));
  unbind("a");
  unbind("b");
  bind("a", "Ctrl+Alt+N");
  bind("b", "Ctrl+Alt+M");
  settle();
  EXPECT_EQ(_portal->creationCount(), 1);
  EXPECT_TRUE(comesToSend("CTRL+ALT+m", "b"));
}

TEST_F(PortalHotKeysTest, AnotherSetTakesTheFirstOnesPlace) {
  bind("a", "Ctrl+Alt+N");
  ASSERT_TRUE(comesToBind({"a"}));
  unbind("a");
  bind("a", "Ctrl+Alt+M");
  ASSERT_TRUE(runUntil([this] {
    return _portal->bound().size() == 1 && _portal->bound()[0].trigger == "CTRL+ALT+m";
  }));
  EXPECT_EQ(_portal->sessionCount(), 1U);
  EXPECT_TRUE(comesToSend("CTRL+ALT+m", "a"));
}

TEST_F(PortalHotKeysTest, NoSessionIsLeftWithoutKeys) {
  bind("a", "Ctrl+Alt+N");
  ASSERT_TRUE(comesToBind({"a"}));
  unbind("a");
  EXPECT_TRUE(runUntil([this] { return _portal->sessionCount() == 0; }));
}

TEST_F(PortalHotKeysTest, NoSessionIsLeftByACenterThatGoes) {
  bind("a", "Ctrl+Alt+N");
  ASSERT_TRUE(comesToBind({"a"}));
  _center.reset();
  EXPECT_TRUE(runUntil([this] { return _portal->sessionCount() == 0; }));
}

TEST_F(PortalHotKeysTest, KeysOfTheSameNameAreBoundBothOfThem) {
  bind("a", "Ctrl+Alt+N");
  bind("a", "Ctrl+Alt+M");
  ASSERT_TRUE(comesToBind({"a", "a-2"}));
  EXPECT_TRUE(comesToSend("CTRL+ALT+m", "a"));
}

TEST_F(PortalHotKeysTest, KeysThatTheUserTurnsDownLeave) {
  _portal->user = User::Declines;
  EXPECT_TRUE(bind("a", "Ctrl+Alt+N"));
  EXPECT_TRUE(comesToList({}));
  EXPECT_TRUE(runUntil([this] { return _portal->sessionCount() == 0; }));
}

TEST_F(PortalHotKeysTest, RefusedKeyIsAskedForAgainWhenTheSetIsBoundAnew) {
  _portal->heldTriggers = {"CTRL+ALT+m"};
  bind("a", "Ctrl+Alt+N");
  bind("b", "Ctrl+Alt+M");
  ASSERT_TRUE(comesToList({"a"}));
  _portal->heldTriggers.clear();
  bind("b", "Ctrl+Alt+M");
  EXPECT_TRUE(comesToBind({"a", "b"}));
  EXPECT_EQ(listed(), (Names{"a", "b"}));
}

TEST_F(PortalHotKeysTest, KeysStayListedWhileTheUserMakesUpHisMind) {
  _portal->user = User::IsAway;
  bind("a", "Ctrl+Alt+N");
  ASSERT_TRUE(runUntil([this] { return _portal->sessionCount() == 1; }));
  settle();
  EXPECT_EQ(listed(), Names{"a"});
  _portal->answer(User::Declines);
  EXPECT_TRUE(comesToList({}));
}

TEST_F(PortalHotKeysTest, KeysAddedWhileTheUserMakesUpHisMindAreAskedForAfterwards) {
  _portal->user = User::IsAway;
  bind("a", "Ctrl+Alt+N");
  ASSERT_TRUE(runUntil([this] { return _portal->sessionCount() == 1; }));
  settle();
  bind("b", "Ctrl+Alt+M");
  settle();
  EXPECT_EQ(_portal->creationCount(), 1);
  _portal->user = User::Agrees;
  _portal->answer(User::Declines);
  EXPECT_TRUE(comesToBind({"b"}));
  EXPECT_EQ(listed(), Names{"b"});
}

TEST_F(PortalHotKeysTest, KeyRemovedWhileTheUserMakesUpHisMindIsNotBound) {
  _portal->user = User::IsAway;
  bind("a", "Ctrl+Alt+N");
  ASSERT_TRUE(runUntil([this] { return _portal->sessionCount() == 1; }));
  settle();
  unbind("a");
  _portal->answer(User::Agrees);
  EXPECT_TRUE(runUntil([this] { return _portal->sessionCount() == 0; }));
}

TEST_F(PortalHotKeysTest, SessionThatTheDesktopEndsTakesItsKeysAlong) {
  bind("a", "Ctrl+Alt+N");
  ASSERT_TRUE(comesToBind({"a"}));
  settle();
  _portal->closeSessions();
  EXPECT_TRUE(comesToList({}));
  EXPECT_EQ(_portal->creationCount(), 1);
}

TEST_F(PortalHotKeysTest, PressThatIsMeantForAnotherSessionOrAnUnknownKeySendsNothing) {
  bind("a", "Ctrl+Alt+N");
  ASSERT_TRUE(comesToBind({"a"}));
  settle();
  const auto activate = [this](const char* session, const char* identifier) {
    return sd_bus_emit_signal(_portalConnection->connection(), PortalRequest::objectPath,
                              "org.freedesktop.portal.GlobalShortcuts", "Activated", "osta{sv}",
                              session, identifier, std::uint64_t{1}, 0);
  };
  ASSERT_GE(activate("/org/freedesktop/portal/desktop/session/other/other", "a"), 0);
  ASSERT_GE(activate(_portal->sessionPaths().front().c_str(), "b"), 0);
  EXPECT_TRUE(comesToSend("CTRL+ALT+n", "a"));
  settle();
  EXPECT_EQ(_actions.received, Names{"press by a"});
}

TEST_F(PortalHotKeysTest, PressOnItsWayWhileTheSetIsBoundAnewIsNotLost) {
  bind("a", "Ctrl+Alt+N");
  ASSERT_TRUE(comesToBind({"a"}));
  settle();
  _portal->press("CTRL+ALT+n");
  bind("b", "Ctrl+Alt+M");
  // The update is queued before the press is read.
  EXPECT_TRUE(comesToBind({"a", "b"}));
  settle();
  EXPECT_EQ(_actions.received, Names{"press by a"});
}

TEST_F(PortalHotKeysTest, NextPortalIsAskedForWhatTheLastOneHadBound) {
  bind("a", "Ctrl+Alt+N");
  ASSERT_TRUE(comesToBind({"a"}));
  settle();
  SessionBus nextConnection(_loop, _bus->address());
  PortalStandIn next(nextConnection);
  _portal.reset();
  EXPECT_TRUE(runUntil([&] { return boundBy(next) == Names{"a"}; }));
  EXPECT_EQ(next.introducedPrograms(), Names{"net.brellow.QuennelHelper"});
  EXPECT_EQ(listed(), Names{"a"});
}

TEST_F(PortalHotKeysTest, PortalThatGoesAwayOverTheQuestionIsNotAskedTwice) {
  _portal->user = User::IsAway;
  bind("a", "Ctrl+Alt+N");
  ASSERT_TRUE(runUntil([this] { return _portal->sessionCount() == 1; }));
  settle();
  SessionBus nextConnection(_loop, _bus->address());
  PortalStandIn next(nextConnection);
  _portal.reset();
  EXPECT_TRUE(comesToList({}));
  EXPECT_EQ(next.creationCount(), 0);
}

TEST_F(PortalHotKeysTest, WithoutAPortalEveryKeyLeaves) {
  _portal.reset();
  bind("a", "Ctrl+Alt+N");
  EXPECT_TRUE(comesToList({}));
}

TEST_F(PortalHotKeysTest, KeysMayBeHadAgainWhenThePortalReappears) {
  const auto observer = _center->addObserver([this] { bind("a", "Ctrl+Alt+N"); }, [] {});
  _portal.reset();
  bind("a", "Ctrl+Alt+N");
  ASSERT_TRUE(comesToList({}));
  settle();
  _portal.emplace(*_portalConnection);
  EXPECT_TRUE(comesToBind({"a"}));
  EXPECT_EQ(listed(), Names{"a"});
  EXPECT_TRUE(comesToSend("CTRL+ALT+n", "a"));
}

TEST_F(PortalHotKeysTest, PortalThatTakesTheNameFromAnotherIsAskedForWhatThatRefused) {
  const auto observer = _center->addObserver([this] { bind("a", "Ctrl+Alt+N"); }, [] {});
  _portal->user = User::Declines;
  bind("a", "Ctrl+Alt+N");
  ASSERT_TRUE(comesToList({}));
  SessionBus nextConnection(_loop, _bus->address());
  PortalStandIn next(nextConnection);
  _portal.reset();
  EXPECT_TRUE(runUntil([&] { return boundBy(next) == Names{"a"}; }));
}

TEST_F(PortalHotKeysTest, ObserverHearsOnceOfAllKeysThatLeaveTogether) {
  int calls = 0;
  const auto observer = _center->addObserver([] {}, [&] { ++calls; });
  bind("a", "Ctrl+Alt+N");
  bind("b", "Ctrl+Alt+M");
  ASSERT_TRUE(comesToBind({"a", "b"}));
  settle();
  _portal->closeSessions();
  ASSERT_TRUE(comesToList({}));
  settle();
  EXPECT_EQ(calls, 1);
}

TEST_F(PortalHotKeysTest, PortalThatDoesNotKnowShortcutsBindsNone) {
  _portal.reset();
  ASSERT_GE(sd_bus_request_name(_portalConnection->connection(), PortalRequest::busName, 0), 0);
  bind("a", "Ctrl+Alt+N");
  EXPECT_TRUE(comesToList({}));
}

TEST_F(PortalHotKeysTest, EndOfTheBusLeavesNothingRegistered) {
  bind("a", "Ctrl+Alt+N");
  ASSERT_TRUE(comesToBind({"a"}));
  _bus->stop();
  EXPECT_TRUE(comesToList({}));
  Error error;
  EXPECT_FALSE(_center->registerHotKey(_actions.hotKey("a", "Ctrl+Alt+N"), &error));
  EXPECT_EQ(error.code, ECONNREFUSED);
}

TEST_F(PortalHotKeysTest, WithoutABusEveryKeyIsRefused) {
  SessionBus none(_loop, "unix:path=/nonexistent/bus");
  DesktopHotKeyCenter center(_loop, [&](HotKeyListener& listener, Error* error) {
    return PortalHotKeys::open(none, "net.brellow.QuennelHelper", listener, error);
  });
  EXPECT_FALSE(center.registerHotKey(_actions.hotKey("a", "Ctrl+Alt+N")));
}

}  // namespace quennel::test
