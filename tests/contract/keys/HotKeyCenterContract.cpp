// What every hot-key center does, run on the fake and on the real ones.

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "tests/contract/keys/HotKeyDesktop.h"
#include "tests/support/HotKeyActions.h"
#include "tests/support/KeyboardDisplay.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/Sentence.h"

namespace quennel::test {
namespace {

using Names = std::vector<std::string>;

struct Kind {
  const char* name;
  MissingProgram missingProgram;
  MakeHotKeyDesktop make;
};

void PrintTo(const Kind& kind, std::ostream* stream) { *stream << kind.name; }

class HotKeyCenterContract : public testing::TestWithParam<Kind> {
 protected:
  void SetUp() override {
    if (const char* const program = GetParam().missingProgram()) {
      GTEST_SKIP() << program << " is not installed";
    }
    _desktop = GetParam().make();
  }

  PTHotKeyCenter& center() { return _desktop->center(); }
  bool add(const std::string& name, const PropertyList& keyCombo) {
    return center().registerHotKey(_actions.hotKey(name, keyCombo));
  }

  Names listed() {
    Names names;
    for (const auto& hotKey : center().allHotKeys()) {
      names.push_back(hotKey->identifier());
    }
    return names;
  }

  /// Refused at once, or taken off the list once the desktop has answered.
  bool isRefused(const std::string& name, const PropertyList& keyCombo) {
    const Names before = listed();
    return !add(name, keyCombo) ? listed() == before
                                : _desktop->runUntil([&] { return listed() == before; });
  }

  /// Whether exactly these actions arrive, in this order.
  bool receives(const Names& actions) {
    return _desktop->runUntil([&] { return _actions.received.size() >= actions.size(); }) &&
           _actions.received == actions;
  }

  void removeAll() {
    for (const auto& hotKey : center().allHotKeys()) {
      center().unregisterHotKey(hotKey);
    }
  }

  HotKeyActions _actions;
  std::unique_ptr<HotKeyDesktop> _desktop;
};

const char* nothing() { return nullptr; }
const char* missingBus() { return PrivateBus::isAvailable() ? nullptr : "dbus-daemon"; }

INSTANTIATE_TEST_SUITE_P(
    , HotKeyCenterContract,
    testing::Values(Kind{"Fake", nothing, makeFakeDesktop},
                    Kind{"X11", KeyboardDisplay::missingProgram, makeX11Desktop},
                    Kind{"Portal", missingBus, makePortalDesktop},
                    Kind{"RealPortal", missingForRealPortal, makeRealPortalDesktop}),
    [](const auto& kind) { return kind.param.name; });

}  // namespace

TEST_P(HotKeyCenterContract, ListsNothingAtFirst) { EXPECT_EQ(listed(), Names{}); }

TEST_P(HotKeyCenterContract, ListsRegisteredKeysInTheirOrder) {
  EXPECT_TRUE(add("b", "Ctrl+Alt+N"));
  EXPECT_TRUE(add("a", "Ctrl+Alt+M"));
  EXPECT_EQ(listed(), (Names{"b", "a"}));
}

TEST_P(HotKeyCenterContract, ListIsASnapshot) {
  add("a", "Ctrl+Alt+N");
  const auto before = center().allHotKeys();
  removeAll();
  EXPECT_EQ(before.size(), 1U);
  EXPECT_EQ(listed(), Names{});
}

TEST_P(HotKeyCenterContract, ListsTheVeryObjectThatWasRegistered) {
  const auto hotKey = _actions.hotKey("a", "Ctrl+Alt+N");
  ASSERT_TRUE(center().registerHotKey(hotKey));
  EXPECT_EQ(center().allHotKeys(), PTHotKeyCenter::HotKeys{hotKey});
}

TEST_P(HotKeyCenterContract, EachPressSendsTheActionOfItsKeyOnce) {
  ASSERT_TRUE(add("a", "Ctrl+Alt+N"));
  ASSERT_TRUE(add("b", "Ctrl+Alt+M"));
  for (const char* keys : {"Ctrl+Alt+M", "Ctrl+Alt+N", "Ctrl+Alt+N"}) {
    _desktop->press(keys);
  }
  EXPECT_TRUE(receives({"press by b", "press by a", "press by a"}));
}

TEST_P(HotKeyCenterContract, ActionRunsOnTheMainQueueAndNotBefore) {
  ASSERT_TRUE(add("a", "Ctrl+Alt+N"));
  bool isServing = false;
  bool wasServing = false;
  _actions.onAction = [&] { wasServing = isServing; };
  _desktop->press("Ctrl+Alt+N");
  EXPECT_TRUE(_actions.received.empty());
  isServing = true;
  EXPECT_TRUE(receives({"press by a"}));
  EXPECT_TRUE(wasServing);
}

TEST_P(HotKeyCenterContract, ActionMayServeTheMainQueueAndTakeFurtherPresses) {
  ASSERT_TRUE(add("a", "Ctrl+Alt+N"));
  ASSERT_TRUE(add("b", "Ctrl+Alt+M"));
  _actions.onAction = [this] {
    if (_actions.received.size() == 1) {
      _desktop->press("Ctrl+Alt+M");
      EXPECT_TRUE(_desktop->runUntil([this] { return _actions.received.size() == 2; }));
    }
  };
  _desktop->press("Ctrl+Alt+N");
  EXPECT_TRUE(receives({"press by a", "press by b"}));
}

TEST_P(HotKeyCenterContract, UnregisteredKeySendsNothing) {
  ASSERT_TRUE(add("a", "Ctrl+Alt+N"));
  ASSERT_TRUE(add("b", "Ctrl+Alt+M"));
  center().unregisterHotKey(center().allHotKeys().front());
  EXPECT_EQ(listed(), Names{"b"});
  _desktop->press("Ctrl+Alt+N");
  _desktop->press("Ctrl+Alt+M");
  EXPECT_TRUE(receives({"press by b"}));
}

TEST_P(HotKeyCenterContract, PressThatWaitsInTheQueueSendsNothingOnceItsKeyIsUnregistered) {
  ASSERT_TRUE(add("a", "Ctrl+Alt+N"));
  ASSERT_TRUE(add("b", "Ctrl+Alt+M"));
  ASSERT_TRUE(add("c", "Ctrl+Alt+O"));
  const auto second = center().allHotKeys()[1];
  _actions.onAction = [&] { center().unregisterHotKey(second); };
  for (const char* keys : {"Ctrl+Alt+N", "Ctrl+Alt+M", "Ctrl+Alt+O"}) {
    _desktop->press(keys);
  }
  EXPECT_TRUE(receives({"press by a", "press by c"}));
}

TEST_P(HotKeyCenterContract, PressThatWaitsInTheQueueSendsNothingOnceTheCenterIsGone) {
  ASSERT_TRUE(add("a", "Ctrl+Alt+N"));
  ASSERT_TRUE(add("b", "Ctrl+Alt+M"));
  _actions.onAction = [this] { _desktop->destroyCenter(); };
  _desktop->press("Ctrl+Alt+N");
  _desktop->press("Ctrl+Alt+M");
  EXPECT_TRUE(receives({"press by a"}));
  bool isBehindThem = false;
  _desktop->runLoop().dispatchAsync([&] { isBehindThem = true; });
  EXPECT_TRUE(_desktop->runUntil([&] { return isBehindThem; }));
  EXPECT_TRUE(receives({"press by a"}));
}

TEST_P(HotKeyCenterContract, KeyMayUnregisterItself) {
  ASSERT_TRUE(add("a", "Ctrl+Alt+N"));
  _actions.onAction = [this] { removeAll(); };
  _desktop->press("Ctrl+Alt+N");
  EXPECT_TRUE(receives({"press by a"}));
  EXPECT_EQ(listed(), Names{});
}

TEST_P(HotKeyCenterContract, UnregisteringAKeyThatIsNotRegisteredDoesNothing) {
  ASSERT_TRUE(add("a", "Ctrl+Alt+N"));
  center().unregisterHotKey(_actions.hotKey("a", "Ctrl+Alt+N"));
  center().unregisterHotKey(nullptr);
  EXPECT_EQ(listed(), Names{"a"});
}

TEST_P(HotKeyCenterContract, WholeSetCanBeBoundAnewAnyNumberOfTimes) {
  for (int round = 0; round < 3; ++round) {
    removeAll();
    ASSERT_TRUE(add("a", "Ctrl+Alt+N"));
    ASSERT_TRUE(add("b", "Ctrl+Alt+M"));
  }
  _desktop->press("Ctrl+Alt+M");
  _desktop->press("Ctrl+Alt+N");
  EXPECT_TRUE(receives({"press by b", "press by a"}));
}

TEST_P(HotKeyCenterContract, CombinationOfAKeyGoesToTheOneThatTakesItsPlace) {
  ASSERT_TRUE(add("a", "Ctrl+Alt+N"));
  removeAll();
  ASSERT_TRUE(add("b", "Ctrl+Alt+N"));
  _desktop->press("Ctrl+Alt+N");
  EXPECT_TRUE(receives({"press by b"}));
}

TEST_P(HotKeyCenterContract, ValueThatSaysNoCombinationIsRefused) {
  using Dictionary = PropertyList::Dictionary;
  for (const PropertyList& value : std::vector<PropertyList>{
           "", "Ctrl", "nonsense", "N", 45, true, PropertyList::Data{"Ctrl+Alt+N"},
           PropertyList::Array{"Ctrl+Alt+N"}, Dictionary{}, Dictionary{{"keyCode", 45}}}) {
    EXPECT_TRUE(isRefused("a", value)) << value.description();
  }
}

TEST_P(HotKeyCenterContract, EveryFormOfACombinationIsAccepted) {
  ASSERT_TRUE(add("a", "<Control><Alt>n"));
  ASSERT_TRUE(add("b", PropertyList::Dictionary{{"keyCode", 46}, {"modifiers", 4096 + 2048}}));
  _desktop->press("Ctrl+Alt+N");
  _desktop->press("Ctrl+Alt+M");
  EXPECT_TRUE(receives({"press by a", "press by b"}));
}

TEST_P(HotKeyCenterContract, CombinationOfAnotherProgramIsRefused) {
  _desktop->holdByAnotherProgram("Ctrl+Alt+N");
  EXPECT_TRUE(isRefused("a", "Ctrl+Alt+N"));
  EXPECT_TRUE(add("b", "Ctrl+Alt+M"));
  EXPECT_TRUE(isRefused("a", "Ctrl+Alt+N"));
  EXPECT_EQ(listed(), Names{"b"});
}

TEST_P(HotKeyCenterContract, SecondKeyOfTheSameCombinationIsRefused) {
  ASSERT_TRUE(add("a", "Ctrl+Alt+N"));
  EXPECT_TRUE(isRefused("b", "<Control><Alt>n"));
  _desktop->press("Ctrl+Alt+N");
  EXPECT_TRUE(receives({"press by a"}));
}

TEST_P(HotKeyCenterContract, RefusalSaysWhyOnlyWhenItHappens) {
  Error error;
  EXPECT_FALSE(center().registerHotKey(_actions.hotKey("a", "nonsense"), &error));
  EXPECT_NE(error.code, 0);
  EXPECT_NE(sentenceOf(error), "");
  error = {};
  EXPECT_TRUE(center().registerHotKey(_actions.hotKey("a", "Ctrl+Alt+N"), &error));
  EXPECT_EQ(error.code, 0);
}

TEST_P(HotKeyCenterContract, EndOfTheDesktopLeavesNothingRegistered) {
  ASSERT_TRUE(add("a", "Ctrl+Alt+N"));
  _desktop->end();
  EXPECT_TRUE(_desktop->runUntil([this] { return listed().empty(); }));
  EXPECT_TRUE(isRefused("a", "Ctrl+Alt+N"));
  EXPECT_TRUE(_actions.received.empty());
}

TEST_P(HotKeyCenterContract, ObserverHearsThatKeysHaveLeftByThemselves) {
  ASSERT_TRUE(add("a", "Ctrl+Alt+N"));
  int calls = 0;
  auto observer = center().addObserver([] {}, [&] { ++calls; });
  removeAll();
  ASSERT_TRUE(add("a", "Ctrl+Alt+N"));
  _desktop->end();
  EXPECT_TRUE(_desktop->runUntil([&] { return calls == 1; }));
  EXPECT_EQ(listed(), Names{});
}

TEST_P(HotKeyCenterContract, ObserverThatIsGoneHearsNothing) {
  ASSERT_TRUE(add("a", "Ctrl+Alt+N"));
  int calls = 0;
  auto gone = center().addObserver([] {}, [&] { ++calls; });
  bool isTold = false;
  const auto observer = center().addObserver([] {}, [&] { isTold = true; });
  gone.reset();
  _desktop->end();
  EXPECT_TRUE(_desktop->runUntil([&] { return isTold; }));
  EXPECT_EQ(calls, 0);
}

TEST_P(HotKeyCenterContract, DesktopThatHasEndedRefusesEverything) {
  _desktop->end();
  EXPECT_TRUE(isRefused("a", "Ctrl+Alt+N"));
  removeAll();
  EXPECT_EQ(listed(), Names{});
}

}  // namespace quennel::test
