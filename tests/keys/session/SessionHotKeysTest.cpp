// This program links nothing that speaks to an X server.

#include <gtest/gtest.h>
#include <poll.h>
#include <stdlib.h>

#include <cerrno>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/events/EventRunLoop.h"
#include "platform/linux/keys/SessionHotKeys.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Deadline.h"
#include "tests/support/HotKeyActions.h"
#include "tests/support/KeyboardDisplay.h"
#include "tests/support/PortalStandIn.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/Sentence.h"

namespace quennel::test {
namespace {

constexpr auto modulePath = QUENNEL_KEYS_MODULE;

bool hasLoaded(const std::string& library) {
  std::ifstream maps("/proc/self/maps");
  const std::string text{std::istreambuf_iterator<char>(maps), {}};
  return text.find(library) != std::string::npos;
}

/// A program in a session, with its hot keys.
class Session {
 public:
  explicit Session(const std::string& busAddress = "unix:path=/nonexistent/bus",
                   const std::string& module = modulePath)
      : _bus(_loop, busAddress),
        _center(_loop, openHotKeysOfSession(_bus, "net.brellow.QuennelHelper", module)) {}

  bool bind(const std::string& accelerator) {
    error = {};
    return _center.registerHotKey(actions.hotKey(accelerator, accelerator), &error);
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
  EventRunLoop& loop() { return _loop; }

  HotKeyActions actions;
  Error error;

 private:
  EventRunLoop _loop;
  SessionBus _bus;
  DesktopHotKeyCenter _center;
};

class SessionHotKeysTest : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* const name : {"DISPLAY", "WAYLAND_DISPLAY", "XDG_SESSION_TYPE"}) {
      unsetenv(name);
    }
  }
};

}  // namespace

TEST_F(SessionHotKeysTest, EnvironmentTellsTheMeans) {
  EXPECT_EQ(hotKeyMeansOfSession(), HotKeyMeans::None);
  setenv("DISPLAY", ":0", 1);
  EXPECT_EQ(hotKeyMeansOfSession(), HotKeyMeans::XServer);
  setenv("XDG_SESSION_TYPE", "x11", 1);
  EXPECT_EQ(hotKeyMeansOfSession(), HotKeyMeans::XServer);
  setenv("WAYLAND_DISPLAY", "wayland-0", 1);
  EXPECT_EQ(hotKeyMeansOfSession(), HotKeyMeans::Portal);
  unsetenv("WAYLAND_DISPLAY");
  setenv("XDG_SESSION_TYPE", "wayland", 1);
  EXPECT_EQ(hotKeyMeansOfSession(), HotKeyMeans::Portal);
  setenv("DISPLAY", "", 1);
  setenv("XDG_SESSION_TYPE", "tty", 1);
  EXPECT_EQ(hotKeyMeansOfSession(), HotKeyMeans::None);
}

TEST_F(SessionHotKeysTest, SessionWithoutADesktopRefusesEveryKey) {
  Session session;
  EXPECT_FALSE(session.bind("Ctrl+Alt+N"));
  EXPECT_EQ(session.error.code, ENOTSUP);
  EXPECT_FALSE(hasLoaded("libxcb"));
}

TEST_F(SessionHotKeysTest, DisplayThatIsNotThereRefusesEveryKey) {
  setenv("DISPLAY", ":65000", 1);
  EXPECT_EQ(inChildProcess([] {
              Session session;
              return session.bind("Ctrl+Alt+N") ? "bound" : sentenceOf(session.error);
            }),
            "The display cannot be reached.");
}

TEST_F(SessionHotKeysTest, MissingModuleRefusesEveryKey) {
  setenv("DISPLAY", ":65000", 1);
  Session session("unix:path=/nonexistent/bus", "/nonexistent/module.so");
  EXPECT_FALSE(session.bind("Ctrl+Alt+N"));
  EXPECT_EQ(session.error.code, ENOENT);
}

TEST_F(SessionHotKeysTest, FirstCombinationLoadsTheModuleAndNothingBeforeIt) {
  if (const char* const program = KeyboardDisplay::missingProgram()) {
    GTEST_SKIP() << program << " is not installed";
  }
  const KeyboardDisplay display;
  setenv("DISPLAY", display.name().c_str(), 1);
  const auto binds = [&]() -> std::string {
    Session session;
    if (session.bind("nonsense") || hasLoaded("libxcb") || hasLoaded("libxkbcommon")) {
      return "loaded too early";
    }
    if (!session.bind("Ctrl+Alt+N") || !hasLoaded("libxcb")) {
      return sentenceOf(session.error);
    }
    display.press("ctrl+alt+n");
    return session.runUntil([&] { return session.actions.received.size() == 1; }) ? "sent"
                                                                                  : "not sent";
  };
  EXPECT_EQ(inChildProcess(binds), "sent");
}

TEST_F(SessionHotKeysTest, WaylandSessionAsksThePortalAndNotTheXServer) {
  if (!PrivateBus::isAvailable()) {
    GTEST_SKIP() << PrivateBus::whatIsMissing;
  }
  setenv("WAYLAND_DISPLAY", "wayland-0", 1);
  setenv("DISPLAY", ":65000", 1);
  const PrivateBus bus;
  Session session(bus.address());
  SessionBus portalConnection(session.loop(), bus.address());
  PortalStandIn portal(portalConnection);
  EXPECT_TRUE(session.bind("Ctrl+Alt+N"));
  EXPECT_TRUE(session.runUntil([&] { return portal.bound().size() == 1; }));
  portal.press("CTRL+ALT+n");
  EXPECT_TRUE(session.runUntil([&] { return session.actions.received.size() == 1; }));
  EXPECT_FALSE(hasLoaded("libxcb"));
}

}  // namespace quennel::test
