#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

#include <cerrno>
#include <chrono>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/linux/bus/BusDistributedNotificationCenter.h"
#include "platform/linux/bus/BusURLEvents.h"
#include "platform/linux/keys/BusHotKeyList.h"
#include "tests/support/FakeBundle.h"
#include "tests/support/HotKeyActions.h"
#include "tests/support/PrivateBus.h"

namespace quennel::test {
namespace {

/// A desktop on which some keys are taken, and which may withdraw others.
class SomeKeys final : public HotKeyBackend {
 public:
  explicit SomeKeys(HotKeyListener& listener) : _listener(listener) {}

  std::set<std::string> taken;

  bool bind(const Request& request, Error* error) override {
    _last = request.number;
    return !taken.contains(request.combination.key) ||
           failWith(error, EBUSY, Error::Kind::CombinationInUse);
  }
  void unbind(HotKeyNumber) override {}
  bool isAlive() const override { return true; }
  void withdrawLast() { _listener.hotKeyLost(_last); }

 private:
  HotKeyListener& _listener;
  HotKeyNumber _last = 0;
};

class BusHotKeyListTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!PrivateBus::isAvailable()) {
      GTEST_SKIP() << PrivateBus::whatIsMissing;
    }
    _bus.emplace();
    _helper.emplace(_loop, _bus->address());
    _asker.emplace(_loop, _bus->address());
    _list.emplace(*_helper);
    _list->setCenter(_center, _texts);
  }

  void add(const std::string& name, const PropertyList& keyCombo) {
    _center.registerHotKey(_actions.hotKey(name, keyCombo));
  }

  /// "name yes" and "name no reason".
  std::vector<std::string> listed() {
    sd_bus_message* message = nullptr;
    const char* name = nullptr;
    sd_bus_get_unique_name(_helper->connection(), &name);
    sd_bus_message_new_method_call(_asker->connection(), &message, name, BusURLEvents::objectPath,
                                   BusHotKeyList::interfaceName, "List");
    const BusMessage call(message);
    const BusMessage answer = _asker->call(message);
    std::vector<std::string> lines;
    sd_bus_message_enter_container(answer.get(), SD_BUS_TYPE_ARRAY, "(sbs)");
    const char* identifier = nullptr;
    const char* reason = nullptr;
    int isBound = 0;
    while (sd_bus_message_read(answer.get(), "(sbs)", &identifier, &isBound, &reason) > 0) {
      lines.push_back(std::string(identifier) + (isBound ? " yes" : " no ") + reason);
    }
    return lines;
  }

  EventRunLoop _loop;
  HotKeyActions _actions;
  FakeBundle _texts;
  SomeKeys* _keys = nullptr;
  DesktopHotKeyCenter _center{_loop, [this](HotKeyListener& listener, Error*) {
                                auto keys = std::make_unique<SomeKeys>(listener);
                                keys->taken = {"n"};
                                _keys = keys.get();
                                return keys;
                              }};
  std::optional<PrivateBus> _bus;
  std::optional<SessionBus> _helper;
  std::optional<SessionBus> _asker;
  std::optional<BusHotKeyList> _list;
};

using Lines = std::vector<std::string>;

TEST_F(BusHotKeyListTest, KeepsQuestionsThatComeBeforeTheKeys) {
  _list.reset();
  _list.emplace(*_helper);
  _loop.dispatchAfter(std::chrono::milliseconds(20), [this] {
    add("key", "Ctrl+Alt+M");
    _list->setCenter(_center, _texts);
  });
  EXPECT_EQ(listed(), Lines{"key yes"});
}

TEST_F(BusHotKeyListTest, IsEmptyBeforeTheFirstKey) { EXPECT_EQ(listed(), Lines{}); }

TEST_F(BusHotKeyListTest, TellsWhichKeysWorkAndWhyOthersDoNotInTheUsersLanguage) {
  _texts.translations["Another program has this key combination."] = "Es ist vergeben.";
  add("works", "Ctrl+Alt+M");
  add("taken", "Ctrl+Alt+N");
  add("nonsense", false);
  add("twice", "Ctrl+Alt+M");
  EXPECT_EQ(listed(), (Lines{"works yes", "nonsense no This is not a key combination.",
                             "taken no Es ist vergeben.",
                             "twice no Another key of this program has this combination."}));
}

TEST_F(BusHotKeyListTest, ForgetsWhyAKeyDidNotWorkWhenItDoes) {
  add("key", "Ctrl+Alt+N");
  _keys->taken.clear();
  add("key", "Ctrl+Alt+N");
  EXPECT_EQ(listed(), Lines{"key yes"});
}

TEST_F(BusHotKeyListTest, TellsOfAKeyThatTheDesktopWithdrew) {
  add("key", "Ctrl+Alt+M");
  _keys->withdrawLast();
  EXPECT_EQ(listed(),
            Lines{"key no The desktop has withdrawn the key, or was not allowed to give it."});
}

TEST_F(BusHotKeyListTest, AnswersBehindACommandThatCameBeforeTheQuestion) {
  EXPECT_EQ(listed(), Lines{});
  BusDistributedNotificationCenter commands(*_helper);
  const auto observer =
      commands.addObserver("command", [this](const Notification&) { add("key", "Ctrl+Alt+M"); });
  BusDistributedNotificationCenter(*_asker).postNotification({"command", {}, {}}, true);
  EXPECT_EQ(listed(), Lines{"key yes"});
}

}  // namespace
}  // namespace quennel::test
