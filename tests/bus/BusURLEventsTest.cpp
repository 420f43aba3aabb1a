#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/bus/BusURLEvents.h"
#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/events/EventRunLoop.h"
#include "tests/support/Deadline.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/Process.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

using namespace std::chrono_literals;
using Role = BusURLEvents::Role;
using Urls = std::vector<std::string>;

/// One process's part in the session, all in this process.
struct Participant {
  explicit Participant(const std::string& address) : bus(runLoop, address) {}

  void record() {
    registration = urlEvents.setEventHandler(
        [this](const URLEvent& event) { opened.push_back(event.directObject.value_or("")); });
  }
  bool runUntil(const std::function<bool()>& condition) {
    runLoop.dispatchAfter(Deadline::standard, [this] { runLoop.terminate(); });
    return runLoop.runUntil(condition);
  }

  void serveUntilEndOf(const Process& process) {
    EXPECT_TRUE(eventually([&] {
      runLoop.serve();
      return !process.isRunning();
    }));
  }

  EventRunLoop runLoop;
  SessionBus bus;
  BusURLEvents urlEvents{bus};
  std::unique_ptr<Registration> registration;
  Urls opened;
};

class BusURLEventsTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!PrivateBus::isAvailable()) {
      GTEST_SKIP() << PrivateBus::whatIsMissing;
    }
  }

  /// Starts the bus; it activates the test helper with the given lifetime.
  void startBus(const std::string& lifetime = "0") {
    _bus = std::make_unique<PrivateBus>(PrivateBus::Services{
        {BusURLEvents::busName, QUENNEL_BUS_TEST_HELPER " " + _log + " " + lifetime}});
  }

  Process startHelper(const std::string& lifetime, const Urls& urls = {},
                      Process::Environment environment = {}) {
    std::vector<std::string> arguments{QUENNEL_BUS_TEST_HELPER, _log, lifetime};
    arguments.insert(arguments.end(), urls.begin(), urls.end());
    environment.emplace("DBUS_SESSION_BUS_ADDRESS", _bus ? _bus->address() : "unix:path=/none");
    return Process(arguments, environment);
  }

  /// A call by another program; what it prints.
  std::string gdbus(const std::vector<std::string>& arguments) {
    std::vector<std::string> all{"gdbus"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    Process process(all, {{"DBUS_SESSION_BUS_ADDRESS", _bus->address()}});
    process.wait();
    return process.output() + process.errorOutput();
  }
  std::string call(const std::string& method, const std::vector<std::string>& parameters) {
    std::vector<std::string> arguments{"call", "--session", "--dest=net.brellow.QuennelHelper",
                                       "--object-path=/net/brellow/QuennelHelper",
                                       "--method=" + method};
    arguments.insert(arguments.end(), parameters.begin(), parameters.end());
    return gdbus(arguments);
  }

  Urls loggedLines() const {
    std::ifstream file(_log);
    Urls lines;
    for (std::string line; std::getline(file, line);) {
      lines.push_back(line);
    }
    return lines;
  }

  Urls sortedLines() const {
    auto lines = loggedLines();
    std::sort(lines.begin(), lines.end());
    return lines;
  }

  TemporaryDirectory _folder;
  std::string _log = _folder / "log";
  std::unique_ptr<PrivateBus> _bus;
};

TEST_F(BusURLEventsTest, TheFirstProcessIsTheHelperAndGetsItsOwnUrlsFirst) {
  startBus();
  Participant only(_bus->address());
  EXPECT_EQ(only.urlEvents.claim({"quennel:///a b?1", "quennel:///c"}), Role::Helper);
  only.record();
  ASSERT_TRUE(only.runUntil([&] { return only.opened.size() == 2; }));
  EXPECT_EQ(only.opened, (Urls{"quennel:///a%20b?1", "quennel:///c"}));
}

TEST_F(BusURLEventsTest, ASecondProcessHandsItsUrlsToTheFirstAndLeavesWithSuccess) {
  startBus();
  Participant first(_bus->address());
  ASSERT_EQ(first.urlEvents.claim({}), Role::Helper);
  first.record();
  auto second = startHelper("0", {"quennel:///a b?1", "quennel:///c"});
  ASSERT_TRUE(first.runUntil([&] { return first.opened.size() == 2; }));
  EXPECT_EQ(second.wait(), 0);
  EXPECT_EQ(first.opened, (Urls{"quennel:///a%20b?1", "quennel:///c"}));
  EXPECT_TRUE(loggedLines().empty());
}

TEST_F(BusURLEventsTest, ASecondProcessPassesItsLaunchTokenOn) {
  startBus();
  Participant first(_bus->address());
  ASSERT_EQ(first.urlEvents.claim({}), Role::Helper);
  std::string token;
  const auto registration = first.urlEvents.setEventHandler(
      [&](const URLEvent& event) { token = event.activationToken; });
  auto second = startHelper("0", {"quennel:///a"}, {{"XDG_ACTIVATION_TOKEN", "token-3"}});
  ASSERT_TRUE(first.runUntil([&] { return !token.empty(); }));
  EXPECT_EQ(token, "token-3");
}

TEST_F(BusURLEventsTest, ASecondProcessWithNothingToOpenLeavesToo) {
  startBus();
  Participant first(_bus->address());
  ASSERT_EQ(first.urlEvents.claim({}), Role::Helper);
  auto second = startHelper("0");
  first.serveUntilEndOf(second);
  EXPECT_EQ(second.wait(), 0);
}

TEST_F(BusURLEventsTest, ASecondProcessTakesOverWhenTheOwnerLeavesWithoutAnswering) {
  startBus();
  auto owner = startHelper("0");
  ASSERT_TRUE(owner.waitForOutput("helper"));
  owner.sendSignal(SIGSTOP);
  auto second = startHelper("0", {"quennel:///a"});
  // The owner takes in nothing any more, so the second one is left waiting for its answer.
  ASSERT_FALSE(second.wait(Deadline(50ms)));
  owner.sendSignal(SIGKILL);
  EXPECT_TRUE(second.waitForOutput("helper"));
  EXPECT_TRUE(eventually([&] { return loggedLines() == Urls{"quennel:///a"}; }));
}

TEST_F(BusURLEventsTest, WithoutABusTheUrlsOfTheCommandLineAreHandled) {
  auto helper = startHelper("0", {"quennel:///a"});
  EXPECT_TRUE(helper.waitForOutput("alone"));
  EXPECT_TRUE(eventually([&] { return loggedLines() == Urls{"quennel:///a"}; }));
  EXPECT_EQ(helper.terminate(), 0);
}

TEST_F(BusURLEventsTest, TheHelperSurvivesTheEndOfTheBus) {
  startBus();
  auto helper = startHelper("0");
  ASSERT_TRUE(helper.waitForOutput("helper"));
  _bus->stop();
  EXPECT_FALSE(helper.wait(Deadline(50ms)));
  EXPECT_EQ(helper.terminate(), 0);
}

TEST_F(BusURLEventsTest, OpenIsAnsweredAtOnceWhileNobodyHandlesTheUrl) {
  startBus();
  Participant helper(_bus->address());
  ASSERT_EQ(helper.urlEvents.claim({}), Role::Helper);
  Process caller({"gdbus", "call", "--session", "--dest=net.brellow.QuennelHelper",
                  "--object-path=/net/brellow/QuennelHelper",
                  "--method=org.freedesktop.Application.Open", "['quennel:///a']", "{}"},
                 {{"DBUS_SESSION_BUS_ADDRESS", _bus->address()}});
  helper.serveUntilEndOf(caller);
  EXPECT_EQ(caller.wait(), 0);
  EXPECT_EQ(caller.output(), "()\n");
}

TEST_F(BusURLEventsTest, TheBusStartsTheHelperForAUrl) {
  startBus();
  EXPECT_EQ(call("org.freedesktop.Application.Open", {"['quennel:///a']", "{}"}), "()\n");
  EXPECT_TRUE(eventually([&] { return loggedLines() == Urls{"quennel:///a"}; }));
}

TEST_F(BusURLEventsTest, ActivateStartsTheHelperAndOpensNothing) {
  startBus();
  EXPECT_EQ(call("org.freedesktop.Application.Activate", {"{}"}), "()\n");
  EXPECT_EQ(call("org.freedesktop.Application.Open", {"['quennel:///a']", "{}"}), "()\n");
  EXPECT_TRUE(eventually([&] { return loggedLines() == Urls{"quennel:///a"}; }));
}

TEST_F(BusURLEventsTest, AnUnknownActionIsAnsweredWithAnError) {
  startBus();
  const auto answer = call("org.freedesktop.Application.ActivateAction", {"'new-3'", "[]", "{}"});
  EXPECT_NE(answer.find("org.freedesktop.DBus.Error.InvalidArgs"), std::string::npos) << answer;
  EXPECT_NE(answer.find("There is no action \"new-3\"."), std::string::npos) << answer;
}

TEST_F(BusURLEventsTest, OpenWithTheWrongParametersIsAnsweredWithAnError) {
  startBus();
  Participant caller(_bus->address());
  BusError error;
  EXPECT_LT(sd_bus_call_method(caller.bus.connection(), BusURLEvents::busName,
                               BusURLEvents::objectPath, BusURLEvents::interfaceName, "Open",
                               error.get(), nullptr, "s", "quennel:///a"),
            0);
  EXPECT_TRUE(error.hasName("org.freedesktop.DBus.Error.InvalidArgs"));
}

TEST_F(BusURLEventsTest, TheInterfaceCanBeIntrospected) {
  startBus();
  const auto text = gdbus({"introspect", "--session", "--dest=net.brellow.QuennelHelper",
                           "--object-path=/net/brellow/QuennelHelper"});
  for (const auto* const part :
       {"interface org.freedesktop.Application", "Open(in  as uris", "in  a{sv} platform_data",
        "Activate(in  a{sv} platform_data", "ActivateAction(in  s action_name"}) {
    EXPECT_NE(text.find(part), std::string::npos) << part << " is not in\n" << text;
  }
}

TEST_F(BusURLEventsTest, UrlsThatNobodyHandledGoToTheNextHelperWhenThisOneLeaves) {
  startBus();
  {
    Participant leaving(_bus->address());
    ASSERT_EQ(leaving.urlEvents.claim({"quennel:///one", "quennel:///two"}), Role::Helper);
    leaving.runLoop.terminate();
    leaving.runLoop.run();
    EXPECT_TRUE(leaving.urlEvents.release().empty());
  }
  EXPECT_TRUE(eventually([&] {
    return loggedLines() == (Urls{"quennel:///one", "quennel:///two"});
  }));
}

TEST_F(BusURLEventsTest, AProcessThatIsTerminatedWhileItStartsHandsItsUrlsOn) {
  startBus();
  {
    Participant leaving(_bus->address());
    leaving.runLoop.terminate();
    EXPECT_EQ(leaving.urlEvents.claim({"quennel:///one"}), Role::Terminated);
  }
  EXPECT_TRUE(eventually([&] { return loggedLines() == Urls{"quennel:///one"}; }));
}

TEST_F(BusURLEventsTest, UrlsThatNoOtherHelperCanTakeAreAnswered) {
  _bus = std::make_unique<PrivateBus>();
  Participant leaving(_bus->address());
  ASSERT_EQ(leaving.urlEvents.claim({"quennel:///one"}), Role::Helper);
  leaving.runLoop.terminate();
  EXPECT_EQ(leaving.urlEvents.release(), Urls{"quennel:///one"});
}

TEST_F(BusURLEventsTest, TheNameIsFreeOnceReleaseHasReturned) {
  _bus = std::make_unique<PrivateBus>();
  Participant first(_bus->address());
  Participant second(_bus->address());
  ASSERT_EQ(first.urlEvents.claim({}), Role::Helper);
  EXPECT_TRUE(first.urlEvents.release().empty());
  EXPECT_EQ(second.urlEvents.claim({}), Role::Helper);
}

/// Asks for URLs as fast as it may, always with some calls on their way.
class Asker {
 public:
  Asker(Participant& participant, int count) : _participant(participant), _count(count) {}

  /// Answers whether every call was answered with success.
  bool run() {
    for (int i = 0; i < 8; ++i) {
      askNext();
    }
    return _participant.runUntil([&] { return _answered == _count; }) && _errors.empty();
  }
  const std::string& errors() const { return _errors; }

 private:
  void askNext() {
    if (_asked == _count) {
      return;
    }
    const auto url = "quennel:///" + std::to_string(_asked++);
    const auto answer = [](sd_bus_message* message, void* self, sd_bus_error*) {
      static_cast<Asker*>(self)->take(message);
      return 0;
    };
    ASSERT_GE(
        sd_bus_call_method_async(_participant.bus.connection(), nullptr, BusURLEvents::busName,
                                 BusURLEvents::objectPath, BusURLEvents::interfaceName, "Open",
                                 answer, this, "asa{sv}", 1, url.c_str(), 0),
        0);
  }
  void take(sd_bus_message* answer) {
    ++_answered;
    if (const auto* const error = sd_bus_message_get_error(answer)) {
      _errors += std::string(error->name) + ": " + error->message + "\n";
    }
    askNext();
  }

  Participant& _participant;
  const int _count;
  int _asked = 0;
  int _answered = 0;
  std::string _errors;
};

/// The sorted lines 0 … count - 1.
Urls urlsUpTo(int count) {
  Urls urls;
  for (int i = 0; i < count; ++i) {
    urls.push_back("quennel:///" + std::to_string(i));
  }
  std::sort(urls.begin(), urls.end());
  return urls;
}

class Lifetime : public BusURLEventsTest, public testing::WithParamInterface<const char*> {};

TEST_P(Lifetime, EveryUrlIsHandledExactlyOnceWhileHelpersComeAndGo) {
  startBus(GetParam());
  Participant participant(_bus->address());
  constexpr int count = 2000;
  Asker asker(participant, count);
  EXPECT_TRUE(asker.run()) << asker.errors();
  EXPECT_TRUE(eventually([&] { return loggedLines().size() >= count; }));
  EXPECT_EQ(sortedLines(), urlsUpTo(count));
}

TEST_P(Lifetime, EveryUrlIsHandledExactlyOnceWhenManyHelpersAreStartedByHandAtOnce) {
  startBus(GetParam());
  constexpr int count = 60;
  std::vector<Process> processes;
  for (int i = 0; i < count; ++i) {
    processes.push_back(startHelper(GetParam(), {"quennel:///" + std::to_string(i)}));
  }
  for (auto& process : processes) {
    EXPECT_EQ(process.wait(), 0);
  }
  EXPECT_TRUE(eventually([&] { return loggedLines().size() >= count; }));
  EXPECT_EQ(sortedLines(), urlsUpTo(count));
}

INSTANTIATE_TEST_SUITE_P(Microseconds, Lifetime, testing::Values("1", "50", "300", "2000"));

}  // namespace
}  // namespace quennel::test
