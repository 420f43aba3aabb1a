#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/bus/BusURLEvents.h"
#include "platform/linux/bus/HandOver.h"
#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/events/EventRunLoop.h"
#include "tests/support/Deadline.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/Process.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

/// Hands over on a bus that may know how to start a helper that writes its URLs down.
class HandOverTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!PrivateBus::isAvailable()) {
      GTEST_SKIP() << PrivateBus::whatIsMissing;
    }
  }
  void useBus(const PrivateBus::Services& services) {
    _bus = std::make_unique<PrivateBus>(services);
    _address = std::make_unique<EnvironmentVariable>("DBUS_SESSION_BUS_ADDRESS", _bus->address());
  }
  PrivateBus::Services services() const {
    return {{BusURLEvents::busName, QUENNEL_BUS_TEST_HELPER " " + _log + " 0"}};
  }
  bool eventuallyLogged(const std::string& url) const {
    return eventually([&] {
      std::ifstream file(_log);
      std::string line;
      return std::getline(file, line) && line == url;
    });
  }

  TemporaryDirectory _folder;
  std::string _log = _folder / "log";
  std::unique_ptr<PrivateBus> _bus;
  std::unique_ptr<EnvironmentVariable> _address;
};

TEST_F(HandOverTest, TheBusStartsAHelperThatTakesTheUrl) {
  useBus(services());
  EXPECT_EQ(handOverToHelper({"quennel:///a b?1"}), HandOver::Accepted);
  EXPECT_TRUE(eventuallyLogged("quennel:///a%20b?1"));
}

TEST_F(HandOverTest, TheLaunchTokenGoesAlong) {
  useBus({});
  EventRunLoop runLoop;
  SessionBus bus(runLoop, _bus->address());
  BusURLEvents helper(bus);
  ASSERT_EQ(helper.claim({}), BusURLEvents::Role::Helper);
  std::string token;
  const auto registration =
      helper.setEventHandler([&](const URLEvent& event) { token = event.activationToken; });
  const EnvironmentVariable given("XDG_ACTIVATION_TOKEN", "token-3");
  auto handed = std::async(std::launch::async, [] { return handOverToHelper({"quennel:///a"}); });
  EXPECT_TRUE(eventually([&] {
    runLoop.serve();
    return !token.empty();
  }));
  EXPECT_EQ(handed.get(), HandOver::Accepted);
  EXPECT_EQ(token, "token-3");
}

TEST_F(HandOverTest, TheNextHelperTakesWhatOneThatDiedHasNotAnswered) {
  useBus(services());
  Process owner({QUENNEL_BUS_TEST_HELPER, _folder / "other log", "0"});
  ASSERT_TRUE(owner.waitForOutput("helper"));
  owner.sendSignal(SIGSTOP);
  auto handed = std::async(std::launch::async, [] { return handOverToHelper({"quennel:///a"}); });
  // It takes in nothing any more, so there is no answer until it is gone.
  EXPECT_EQ(handed.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
  owner.sendSignal(SIGKILL);
  EXPECT_EQ(handed.get(), HandOver::Accepted);
  EXPECT_TRUE(eventuallyLogged("quennel:///a"));
}

TEST_F(HandOverTest, NobodyIsThereWhereTheBusKnowsNoHelper) {
  useBus({});
  EXPECT_EQ(handOverToHelper({"quennel:///a"}), HandOver::NobodyThere);
}

TEST_F(HandOverTest, NobodyIsThereWhenTheHelperCannotBeStarted) {
  useBus({{BusURLEvents::busName, "/no/such/program"}});
  EXPECT_EQ(handOverToHelper({"quennel:///a"}), HandOver::NobodyThere);
}

TEST_F(HandOverTest, NobodyIsThereWithoutABus) {
  const EnvironmentVariable none("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + (_folder / "no-bus"));
  EXPECT_EQ(handOverToHelper({"quennel:///a"}), HandOver::NobodyThere);
}

}  // namespace
}  // namespace quennel::test
