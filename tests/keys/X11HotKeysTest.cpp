#include <gtest/gtest.h>
#include <poll.h>
#include <stdlib.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/events/EventRunLoop.h"
#include "platform/linux/keys/DesktopHotKeyCenter.h"
#include "platform/linux/keys/x11/X11HotKeys.h"
#include "tests/keys/OtherProgram.h"
#include "tests/support/Deadline.h"
#include "tests/support/HotKeyActions.h"
#include "tests/support/KeyboardDisplay.h"
#include "tests/support/Sentence.h"

namespace quennel::test {
namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;

// The keys by their places, named after what they give in the US layout: given a name that the
// layout in force has not, xdotool would change the keyboard.
constexpr xcb_keycode_t keyN = 57;
constexpr xcb_keycode_t keyY = 29;
constexpr xcb_keycode_t keyZ = 52;

constexpr int control = XCB_MOD_MASK_CONTROL;
constexpr int alt = XCB_MOD_MASK_1;
constexpr int capsLock = XCB_MOD_MASK_LOCK;
constexpr int numLock = XCB_MOD_MASK_2;

std::string controlAlt(xcb_keycode_t keycode) { return "ctrl+alt+" + std::to_string(keycode); }

class X11HotKeysTest : public testing::Test {
 protected:
  void SetUp() override {
    if (const char* const program = KeyboardDisplay::missingProgram()) {
      GTEST_SKIP() << program << " is not installed";
    }
    _display.emplace();
    setenv("DISPLAY", _display->name().c_str(), 1);
    _center.emplace(_loop, [this](HotKeyListener& listener, Error* error) {
      return X11HotKeys::open(_loop.handle(), _loop, listener, error);
    });
    ASSERT_TRUE(bind(marker)) << sentenceOf(_error);
  }
  void TearDown() override { unsetenv("DISPLAY"); }

  bool bind(const std::string& accelerator) {
    _error = {};
    return _center->registerHotKey(_actions.hotKey(accelerator, accelerator), &_error);
  }

  bool runUntil(const std::function<bool()>& condition, Deadline deadline = Deadline()) {
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

  /// The keys whose actions have been received, in order. A key that is pressed for this purpose
  /// comes behind everything that the display has sent before.
  Names sent() {
    _display->press("ctrl+shift+F1");
    EXPECT_TRUE(runUntil([this] {
      return !_actions.received.empty() &&
             _actions.received.back() == std::string("press by ") + marker;
    }));
    Names names;
    for (const std::string& action : _actions.received) {
      names.push_back(action.substr(std::string("press by ").size()));
    }
    if (!names.empty()) {
      names.pop_back();
    }
    _actions.received.clear();
    return names;
  }

  Names sentBy(const std::string& keys) {
    _display->press(keys);
    return sent();
  }

  /// Presses the keys until they send this name: a change of layout takes effect a moment later.
  bool comesToSend(const std::string& keys, const std::string& name) {
    const Deadline deadline;
    while (!deadline.hasPassed()) {
      const Names names = sentBy(keys);
      if (names == Names{name}) {
        return true;
      }
    }
    return false;
  }

  Names listed() const {
    Names names;
    for (const auto& hotKey : _center->allHotKeys()) {
      names.push_back(hotKey->identifier());
    }
    std::erase(names, marker);
    return names;
  }

  static constexpr auto marker = "Ctrl+Shift+F1";

  EventRunLoop _loop;
  HotKeyActions _actions;
  std::optional<KeyboardDisplay> _display;
  std::optional<DesktopHotKeyCenter> _center;
  Error _error;
};

}  // namespace

TEST_F(X11HotKeysTest, OnlyExactlyTheseModifiersSend) {
  ASSERT_TRUE(bind("Ctrl+Alt+N"));
  EXPECT_EQ(sentBy("ctrl+alt+n"), Names{"Ctrl+Alt+N"});
  for (const char* keys : {"n", "ctrl+n", "alt+n", "ctrl+alt+shift+n", "ctrl+alt+super+n"}) {
    EXPECT_EQ(sentBy(keys), Names{}) << keys;
  }
}

TEST_F(X11HotKeysTest, EachModifierIsToldFromTheOthers) {
  for (const char* accelerator : {"Ctrl+F5", "Alt+F5", "Shift+F5", "Super+F5", "F5"}) {
    ASSERT_TRUE(bind(accelerator));
  }
  EXPECT_EQ(sentBy("super+F5"), Names{"Super+F5"});
  EXPECT_EQ(sentBy("alt+F5"), Names{"Alt+F5"});
  EXPECT_EQ(sentBy("shift+F5"), Names{"Shift+F5"});
  EXPECT_EQ(sentBy("F5"), Names{"F5"});
  EXPECT_EQ(sentBy("ctrl+F5"), Names{"Ctrl+F5"});
}

TEST_F(X11HotKeysTest, CapsLockAndNumLockDoNotCount) {
  ASSERT_TRUE(bind("Ctrl+Alt+N"));
  OtherProgram other(_display->name());
  for (const int locks : {0, capsLock, numLock, capsLock | numLock}) {
    other.lockModifiers(static_cast<unsigned>(locks));
    EXPECT_EQ(sentBy(controlAlt(keyN)), Names{"Ctrl+Alt+N"}) << locks;
  }
}

TEST_F(X11HotKeysTest, KeysOfTheNumberPadSendWithAndWithoutNumLock) {
  ASSERT_TRUE(bind("Ctrl+KP_5"));
  constexpr auto keyFive = "ctrl+84";
  OtherProgram other(_display->name());
  EXPECT_EQ(sentBy(keyFive), Names{"Ctrl+KP_5"});
  other.lockModifiers(numLock);
  EXPECT_EQ(sentBy(keyFive), Names{"Ctrl+KP_5"});
}

TEST_F(X11HotKeysTest, KeyThatIsHeldDownSendsOnce) {
  ASSERT_TRUE(bind("Ctrl+Alt+N"));
  _display->run({"xset", "r", "rate", "20", "200"});
  _display->keyDown(controlAlt(keyN));
  // Long enough for dozens of repetitions.
  EXPECT_TRUE(runUntil([this] { return !_actions.received.empty(); }));
  EXPECT_FALSE(runUntil([this] { return _actions.received.size() > 1; }, Deadline(400ms)));
  _display->keyUp(controlAlt(keyN));
  EXPECT_EQ(sent(), Names{"Ctrl+Alt+N"});
  EXPECT_EQ(sentBy(controlAlt(keyN)), Names{"Ctrl+Alt+N"});
}

TEST_F(X11HotKeysTest, KeyThatIsHeldWhileItIsBoundAnewSendsOnce) {
  ASSERT_TRUE(bind("Ctrl+Alt+N"));
  _display->run({"xset", "r", "rate", "20", "200"});
  _actions.onAction = [this] {
    const auto once = std::exchange(_actions.onAction, nullptr);
    for (const auto& hotKey : _center->allHotKeys()) {
      _center->unregisterHotKey(hotKey);
    }
    EXPECT_TRUE(bind(marker));
    EXPECT_TRUE(bind("Ctrl+Alt+N"));
  };
  _display->keyDown(controlAlt(keyN));
  EXPECT_TRUE(runUntil([this] { return !_actions.received.empty(); }));
  EXPECT_FALSE(runUntil([this] { return _actions.received.size() > 1; }, Deadline(400ms)));
  _display->keyUp(controlAlt(keyN));
  EXPECT_EQ(sent(), Names{"Ctrl+Alt+N"});
  EXPECT_EQ(sentBy(controlAlt(keyN)), Names{"Ctrl+Alt+N"});
}

TEST_F(X11HotKeysTest, SecondKeyMayBePressedWhileTheFirstIsHeld) {
  ASSERT_TRUE(bind("Ctrl+Alt+N"));
  ASSERT_TRUE(bind("Ctrl+Alt+Z"));
  _display->keyDown(controlAlt(keyN));
  _display->keyDown(std::to_string(keyZ));
  _display->keyUp(std::to_string(keyN));
  _display->keyUp(std::to_string(keyZ));
  _display->press(std::to_string(keyZ));
  _display->keyUp("ctrl+alt");
  EXPECT_EQ(sent(), (Names{"Ctrl+Alt+N", "Ctrl+Alt+Z", "Ctrl+Alt+Z"}));
  EXPECT_EQ(sentBy(controlAlt(keyN)), Names{"Ctrl+Alt+N"});
}

TEST_F(X11HotKeysTest, EveryOneOfManyQuickPressesSends) {
  ASSERT_TRUE(bind("Ctrl+Alt+N"));
  _display->pressTimes(controlAlt(keyN), 200);
  EXPECT_EQ(sent(), Names(200, "Ctrl+Alt+N"));
}

TEST_F(X11HotKeysTest, CombinationOfAnotherProgramIsRefused) {
  OtherProgram other(_display->name());
  ASSERT_TRUE(other.grabKey(keyN, control | alt));
  EXPECT_FALSE(bind("Ctrl+Alt+N"));
  EXPECT_EQ(_error.code, EBUSY);
  EXPECT_EQ(listed(), Names{});
  other.ungrabKey(keyN, control | alt);
  EXPECT_TRUE(bind("Ctrl+Alt+N"));
}

TEST_F(X11HotKeysTest, CombinationThatIsTakenInOneLockStateOnlyIsLeftToOthersInAll) {
  OtherProgram other(_display->name());
  ASSERT_TRUE(other.grabKey(keyN, control | alt | numLock));
  EXPECT_FALSE(bind("Ctrl+Alt+N"));
  for (const int locks : {0, capsLock, capsLock | numLock}) {
    EXPECT_TRUE(runUntil([&] { return other.grabKey(keyN, control | alt | locks); })) << locks;
  }
}

TEST_F(X11HotKeysTest, UnregisteredCombinationIsFreeForOthersInAllLockStates) {
  ASSERT_TRUE(bind("Ctrl+Alt+N"));
  OtherProgram other(_display->name());
  EXPECT_FALSE(other.grabKey(keyN, control | alt | numLock));
  _center->unregisterHotKey(_center->allHotKeys().back());
  for (const int locks : {0, capsLock, numLock, capsLock | numLock}) {
    EXPECT_TRUE(runUntil([&] { return other.grabKey(keyN, control | alt | locks); })) << locks;
  }
}

TEST_F(X11HotKeysTest, MenuOfAnotherProgramSilencesTheKeyWhileItIsOpen) {
  ASSERT_TRUE(bind("Ctrl+Alt+N"));
  OtherProgram other(_display->name());
  ASSERT_TRUE(other.grabKeyboard());
  _display->press(controlAlt(keyN));
  other.ungrabKeyboard();
  EXPECT_EQ(sent(), Names{});
  EXPECT_EQ(sentBy(controlAlt(keyN)), Names{"Ctrl+Alt+N"});
}

TEST_F(X11HotKeysTest, PressThatArrivesWithAReplyIsNotForgotten) {
  ASSERT_TRUE(bind("Ctrl+Alt+N"));
  _display->press(controlAlt(keyN));
  ASSERT_TRUE(bind("Ctrl+Alt+Z"));  // waits for replies, and so reads what comes before them
  EXPECT_TRUE(runUntil([this] { return _actions.received == Names{"press by Ctrl+Alt+N"}; }));
}

TEST_F(X11HotKeysTest, KeyIsBoundWhereTheLayoutHasIt) {
  _display->setLayout("de");
  ASSERT_TRUE(runUntil([this] { return sent().empty(); }));
  ASSERT_TRUE(bind("Ctrl+Alt+Z"));
  EXPECT_TRUE(comesToSend(controlAlt(keyY), "Ctrl+Alt+Z"));
  EXPECT_EQ(sentBy(controlAlt(keyZ)), Names{});
}

TEST_F(X11HotKeysTest, KeysFollowALayoutThatSwapsThem) {
  ASSERT_TRUE(bind("Ctrl+Alt+Z"));
  ASSERT_TRUE(bind("Ctrl+Alt+Y"));
  EXPECT_EQ(sentBy(controlAlt(keyZ)), Names{"Ctrl+Alt+Z"});
  _display->setLayout("de");
  EXPECT_TRUE(comesToSend(controlAlt(keyY), "Ctrl+Alt+Z"));
  EXPECT_EQ(sentBy(controlAlt(keyZ)), Names{"Ctrl+Alt+Y"});
  _display->setLayout("us");
  EXPECT_TRUE(comesToSend(controlAlt(keyZ), "Ctrl+Alt+Z"));
  EXPECT_EQ(sentBy(controlAlt(keyY)), Names{"Ctrl+Alt+Y"});
}

TEST_F(X11HotKeysTest, KeyThatMovedAwayLeavesItsOldPlaceToOthers) {
  ASSERT_TRUE(bind("Ctrl+Alt+Z"));
  _display->setLayout("de");
  ASSERT_TRUE(comesToSend(controlAlt(keyY), "Ctrl+Alt+Z"));
  OtherProgram other(_display->name());
  EXPECT_TRUE(other.grabKey(keyZ, control | alt));
}

TEST_F(X11HotKeysTest, LatinLetterStaysAtItsPlaceInALayoutWithoutLatinLetters) {
  ASSERT_TRUE(bind("Ctrl+Alt+N"));
  _display->setLayout("ru");
  OtherProgram other(_display->name());
  // Never free, not even while the keyboard changes.
  EXPECT_FALSE(runUntil([&] { return other.grabKey(keyN, control | alt); }, Deadline(400ms)));
  EXPECT_EQ(sentBy(controlAlt(keyN)), Names{"Ctrl+Alt+N"});
  ASSERT_TRUE(bind("Ctrl+Alt+Z"));
  EXPECT_EQ(sentBy(controlAlt(keyZ)), Names{"Ctrl+Alt+Z"});
}

TEST_F(X11HotKeysTest, KeySendsWhicheverOfSeveralLayoutsIsInForce) {
  _display->setLayout("us,ru");
  ASSERT_TRUE(bind("Ctrl+Alt+N"));
  OtherProgram other(_display->name());
  for (const unsigned layout : {0U, 1U}) {
    other.lockLayout(layout);
    EXPECT_TRUE(comesToSend(controlAlt(keyN), "Ctrl+Alt+N")) << layout;
  }
}

TEST_F(X11HotKeysTest, FirstLayoutThatHasTheSymbolDecides) {
  _display->setLayout("ru,gr,de,us");
  ASSERT_TRUE(bind("Ctrl+Alt+Z"));
  EXPECT_TRUE(comesToSend(controlAlt(keyY), "Ctrl+Alt+Z"));
  EXPECT_EQ(sentBy(controlAlt(keyZ)), Names{});
}

TEST_F(X11HotKeysTest, LettersOfOtherAlphabetsAreKeys) {
  EXPECT_FALSE(bind("Ctrl+Alt+ö"));
  EXPECT_EQ(_error.code, ENOENT);
  _display->setLayout("de");
  EXPECT_TRUE(runUntil([this] { return bind("Ctrl+Alt+ö"); }));
  EXPECT_EQ(sentBy(controlAlt(47)), Names{"Ctrl+Alt+ö"});
  _display->setLayout("ru");
  EXPECT_TRUE(runUntil([this] { return bind("Ctrl+Alt+т"); }));
  EXPECT_EQ(sentBy(controlAlt(keyN)), Names{"Ctrl+Alt+т"});
}

TEST_F(X11HotKeysTest, SymbolThatNeedsShiftIsBoundWithShift) {
  ASSERT_TRUE(bind("Ctrl+?"));
  EXPECT_EQ(sentBy("ctrl+shift+61"), Names{"Ctrl+?"});
  EXPECT_EQ(sentBy("ctrl+61"), Names{});
  EXPECT_FALSE(bind("Ctrl+Shift+slash"));
  _display->setLayout("de");
  EXPECT_TRUE(comesToSend("ctrl+shift+20", "Ctrl+?"));
}

TEST_F(X11HotKeysTest, DigitsStayInTheirRowWhereTheLayoutHasThemOnlyWithShift) {
  _display->setLayout("fr");
  ASSERT_TRUE(bind("Ctrl+Alt+1"));
  EXPECT_TRUE(comesToSend(controlAlt(10), "Ctrl+Alt+1"));
}

TEST_F(X11HotKeysTest, KeyThatMovesToATakenPlaceIsSilentUntilItMovesOn) {
  ASSERT_TRUE(bind("Ctrl+Alt+Z"));
  OtherProgram other(_display->name());
  ASSERT_TRUE(other.grabKey(keyY, control | alt));
  _display->setLayout("de");
  ASSERT_TRUE(runUntil([&] { return other.grabKey(keyZ, control | alt); }));
  EXPECT_EQ(sentBy(controlAlt(keyY)), Names{});
  EXPECT_EQ(listed(), Names{"Ctrl+Alt+Z"});
  other.ungrabKey(keyZ, control | alt);
  _display->setLayout("us");
  EXPECT_TRUE(comesToSend(controlAlt(keyZ), "Ctrl+Alt+Z"));
}

TEST_F(X11HotKeysTest, SilentKeyIsNotTriedAgainAsLongAsItStaysWhereItIs) {
  ASSERT_TRUE(bind("Ctrl+Alt+Z"));
  ASSERT_TRUE(bind("Ctrl+Alt+0"));
  OtherProgram other(_display->name());
  ASSERT_TRUE(other.grabKey(keyY, control | alt));
  _display->setLayout("de");
  ASSERT_TRUE(runUntil([&] { return other.grabKey(keyZ, control | alt); }));
  // A window manager lets go of its keys for a moment while the keyboard changes.
  other.ungrabKey(keyY, control | alt);
  _display->setLayout("hu");
  ASSERT_TRUE(comesToSend(controlAlt(49), "Ctrl+Alt+0"));
  EXPECT_TRUE(other.grabKey(keyY, control | alt));
}

TEST_F(X11HotKeysTest, RefusedCombinationIsNotTakenWhenTheLayoutChanges) {
  OtherProgram other(_display->name());
  ASSERT_TRUE(other.grabKey(keyZ, control | alt));
  ASSERT_FALSE(bind("Ctrl+Alt+Z"));
  ASSERT_TRUE(bind("Ctrl+Alt+Y"));
  other.ungrabKey(keyZ, control | alt);
  _display->setLayout("de");
  EXPECT_TRUE(comesToSend(controlAlt(keyZ), "Ctrl+Alt+Y"));
  EXPECT_TRUE(other.grabKey(keyY, control | alt));
}

TEST_F(X11HotKeysTest, DisplayThatGoesAwayLeavesNothingRegistered) {
  ASSERT_TRUE(bind("Ctrl+Alt+N"));
  _display->stop();
  EXPECT_TRUE(runUntil([this] { return _center->allHotKeys().empty(); }));
  EXPECT_FALSE(bind("Ctrl+Alt+N"));
  EXPECT_EQ(_error.code, ECONNREFUSED);
  EXPECT_TRUE(_actions.received.empty());
}

TEST_F(X11HotKeysTest, DisplayThatGoesAwayUnnoticedRefusesKeys) {
  ASSERT_TRUE(bind("Ctrl+Alt+N"));
  _display->stop();
  EXPECT_FALSE(bind("Ctrl+Alt+Z"));
  EXPECT_EQ(_error.code, ECONNREFUSED);
  EXPECT_TRUE(_center->allHotKeys().empty());
}

TEST_F(X11HotKeysTest, KeysCanBeBoundAgainOnTheNextDisplay) {
  ASSERT_TRUE(bind("Ctrl+Alt+N"));
  _display->stop();
  EXPECT_TRUE(runUntil([this] { return _center->allHotKeys().empty(); }));
  _display.emplace();
  setenv("DISPLAY", _display->name().c_str(), 1);
  ASSERT_TRUE(bind(marker));
  ASSERT_TRUE(bind("Ctrl+Alt+N"));
  EXPECT_EQ(sentBy(controlAlt(keyN)), Names{"Ctrl+Alt+N"});
}

TEST_F(X11HotKeysTest, NothingWakesTheProgramWhileNoKeyIsPressed) {
  ASSERT_TRUE(bind("Ctrl+Alt+N"));
  EXPECT_EQ(sentBy("n"), Names{});
  // Once what followed the key has been taken in, all is quiet.
  const auto isQuiet = [this] {
    pollfd polled{_loop.descriptor(), POLLIN, 0};
    return poll(&polled, 1, 500) == 0;
  };
  EXPECT_TRUE(runUntil(isQuiet));
  EXPECT_TRUE(isQuiet());
}

}  // namespace quennel::test
