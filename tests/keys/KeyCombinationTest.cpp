#include <gtest/gtest.h>

#include <cmath>
#include <iterator>
#include <random>
#include <string>
#include <string_view>

#include "platform/keys/KeyCombination.h"

namespace quennel::test {
namespace {

constexpr std::int64_t eventShift = 1 << 17;
constexpr std::int64_t eventControl = 1 << 18;
constexpr std::int64_t eventOption = 1 << 19;
constexpr std::int64_t eventCommand = 1 << 20;

std::string readText(std::string_view text) {
  const auto combination = KeyCombination::fromAccelerator(text);
  return combination ? combination->acceleratorText() : "none";
}

std::string readFlags(std::int64_t code, std::int64_t flags) {
  const auto combination = KeyCombination::fromVirtualCode(code, flags);
  return combination ? combination->acceleratorText() : "none";
}

std::string read(const PropertyList& value) {
  const auto combination = KeyCombination::fromPropertyList(value);
  return combination ? combination->acceleratorText() : "none";
}

}  // namespace

TEST(KeyCombination, AcceleratorMayBeWrittenWithPluses) {
  EXPECT_EQ(readText("Ctrl+Shift+N"), "Ctrl+Shift+N");
  EXPECT_EQ(readText("shift+CONTROL+n"), "Ctrl+Shift+N");
  EXPECT_EQ(readText(" Ctrl + Alt + Del "), "Ctrl+Alt+Delete");
  EXPECT_EQ(readText("Meta+F5"), "Super+F5");
  EXPECT_EQ(readText("Cmd+Option+1"), "Alt+Super+1");
}

TEST(KeyCombination, AcceleratorMayBeWrittenWithBrackets) {
  EXPECT_EQ(readText("<Super><Shift>n"), "Shift+Super+N");
  EXPECT_EQ(readText("<Primary><Alt>Page_Up"), "Ctrl+Alt+Prior");
  EXPECT_EQ(readText("<ctl> <Mod1> t"), "Ctrl+Alt+T");
  EXPECT_EQ(readText("<Super>+n"), "none");
}

TEST(KeyCombination, SignsThatWriteAcceleratorsAreKeysAsWell) {
  EXPECT_EQ(readText("Ctrl++"), "Ctrl+plus");
  EXPECT_EQ(readText("Ctrl+Shift++"), "Ctrl+Shift+plus");
  EXPECT_EQ(readText("Ctrl+<"), "Ctrl+less");
  EXPECT_EQ(readText("<Control>>"), "Ctrl+greater");
  EXPECT_EQ(readText("<Control>plus"), "Ctrl+plus");
}

TEST(KeyCombination, KeyIsReadWithoutRegardToCapitals) {
  EXPECT_EQ(KeyCombination::fromAccelerator("Ctrl+N"), KeyCombination::fromAccelerator("Ctrl+n"));
  EXPECT_EQ(KeyCombination::fromAccelerator("Ctrl+N")->key, "n");
  EXPECT_EQ(KeyCombination::fromAccelerator("Ctrl+N")->modifiers, KeyCombination::control);
}

TEST(KeyCombination, TextThatIsNoAcceleratorIsRefused) {
  for (const char* text :
       {"",           " ",         "+",       "++",        "Ctrl",       "Ctrl+",
        "Ctrl+Shift", "Ctrl+Alt+", "+N",      "N+Ctrl",    "Ctrl-N",     "Ctrl+N+M",
        "<Ctrl",      "<Ctrl>",    "<>n",     "<Ctrl><n>", "<Nothing>n", "Hyper+Ctrl+N",
        "ctrl+nn",    "Ctrl+\xFF", "Ctrl+\n", "⌘N",        "{}",         "Ctrl N",
        "(null)"}) {
    EXPECT_EQ(readText(text), "none") << text;
  }
}

TEST(KeyCombination, OverlongTextIsRefused) {
  std::string text;
  while (text.size() < 1000) {
    text += "Ctrl+";
  }
  EXPECT_EQ(readText(text + "N"), "none");
  EXPECT_EQ(readText("Ctrl+Ctrl+Ctrl+N"), "Ctrl+N");
}

TEST(KeyCombination, TypingKeyNeedsMoreThanShift) {
  EXPECT_EQ(readText("n"), "none");
  EXPECT_EQ(readText("Shift+N"), "none");
  EXPECT_EQ(readText("Return"), "none");
  EXPECT_EQ(readText("Shift+Left"), "none");
  EXPECT_EQ(readText("Alt+N"), "Alt+N");
  EXPECT_EQ(readText("F9"), "F9");
  EXPECT_EQ(readText("Shift+F9"), "Shift+F9");
  EXPECT_EQ(readText("XF86Launch1"), "XF86Launch1");
}

TEST(KeyCombination, FlagsOfEventsAreModifiers) {
  EXPECT_EQ(readFlags(0x2D, eventCommand), "Super+N");
  EXPECT_EQ(readFlags(0x2D, eventShift | eventControl | eventOption | eventCommand),
            "Ctrl+Alt+Shift+Super+N");
  EXPECT_EQ(readFlags(0x60, 1 << 23), "F5");
}

TEST(KeyCombination, EventFlagsOfKeypadCapsLockAndSideOfTheKeyboardDoNotCount) {
  EXPECT_EQ(readFlags(0x2D, eventCommand | 0x108), "Super+N");
  EXPECT_EQ(readFlags(0x2D, eventCommand | 1 << 16 | 1 << 21 | 1 << 23), "Super+N");
  EXPECT_EQ(readFlags(0x2D, eventControl | 0x2900), "Ctrl+N");
}

TEST(KeyCombination, OlderFlagsAreModifiers) {
  EXPECT_EQ(readFlags(0x2D, 256), "Super+N");
  EXPECT_EQ(readFlags(0x2D, 256 + 512), "Shift+Super+N");
  EXPECT_EQ(readFlags(0x2D, 2048 + 4096), "Ctrl+Alt+N");
  EXPECT_EQ(readFlags(0x2D, 1024 + 4096), "Ctrl+N");
  EXPECT_EQ(readFlags(0x2D, 0x8000 + 0x4000 + 0x2000), "Ctrl+Alt+Shift+N");
  EXPECT_EQ(readFlags(0x60, 0), "F5");
}

TEST(KeyCombination, CodesAndFlagsOutOfRangeAreRefused) {
  EXPECT_EQ(readFlags(-1, eventCommand), "none");
  EXPECT_EQ(readFlags(200, eventCommand), "none");
  EXPECT_EQ(readFlags(0x37, eventCommand), "none");
  EXPECT_EQ(readFlags(0x2D, -1), "none");
  EXPECT_EQ(readFlags(0x2D, std::int64_t{1} << 40), "none");
  EXPECT_EQ(readFlags(0x2D, eventShift), "none");
}

TEST(KeyCombination, RecordIsFoundByTheNamesOfItsEntries) {
  using Record = PropertyList::Dictionary;
  EXPECT_EQ(read(Record{{"keyCode", 45}, {"modifierFlags", eventCommand}}), "Super+N");
  EXPECT_EQ(read(Record{{"keyCode", 45}, {"modifiers", 4096}}), "Ctrl+N");
  EXPECT_EQ(read(Record{{"KeyCode", 45}, {"Modifiers", eventControl}}), "Ctrl+N");
  EXPECT_EQ(read(Record{{"characters", "N"},
                        {"charactersIgnoringModifiers", "n"},
                        {"keyCode", 45},
                        {"modifierFlags", eventControl | eventShift}}),
            "Ctrl+Shift+N");
}

TEST(KeyCombination, NumbersOfARecordMayBeStoredAsReals) {
  using Record = PropertyList::Dictionary;
  EXPECT_EQ(read(Record{{"keyCode", 45.0}, {"modifiers", 256.0}}), "Super+N");
  EXPECT_EQ(read(Record{{"keyCode", 45.5}, {"modifiers", 256}}), "none");
  EXPECT_EQ(read(Record{{"keyCode", 1e300}, {"modifiers", 256}}), "none");
  EXPECT_EQ(read(Record{{"keyCode", std::nan("")}, {"modifiers", 256}}), "none");
}

TEST(KeyCombination, IncompleteRecordIsRefused) {
  using Record = PropertyList::Dictionary;
  EXPECT_EQ(read(Record{}), "none");
  EXPECT_EQ(read(Record{{"keyCode", 45}}), "none");
  EXPECT_EQ(read(Record{{"modifiers", 256}}), "none");
  EXPECT_EQ(read(Record{{"keyCode", "45"}, {"modifiers", 256}}), "none");
  EXPECT_EQ(read(Record{{"keyCode", true}, {"modifiers", 256}}), "none");
  EXPECT_EQ(read(Record{{"keyCode", 45}, {"modifiers", Record{}}}), "none");
}

TEST(KeyCombination, ValueOfAnotherKindIsRefused) {
  EXPECT_EQ(read(true), "none");
  EXPECT_EQ(read(45), "none");
  EXPECT_EQ(read(0.5), "none");
  EXPECT_EQ(read(PropertyList::Date()), "none");
  EXPECT_EQ(read(PropertyList::Array{"Ctrl+N"}), "none");
  EXPECT_EQ(read(PropertyList::Data{"Ctrl+N"}), "none");
  EXPECT_EQ(read("Ctrl+N"), "Ctrl+N");
}

TEST(KeyCombination, EveryCombinationReadsBackFromItsText) {
  for (std::int64_t code = 0; code < 128; ++code) {
    for (std::int64_t flags = 0; flags < 16; ++flags) {
      const auto combination = KeyCombination::fromVirtualCode(code, flags << 17);
      if (combination) {
        EXPECT_EQ(KeyCombination::fromAccelerator(combination->acceleratorText()), combination);
      }
    }
  }
}

TEST(KeyCombination, WhateverIsReadFromRandomTextReadsBack) {
  const std::string pieces[] = {"Ctrl", "<Super>", "shift", "+", "<",  ">",    "n",    "F",
                                "1",    " ",       "ö",     "U", "00", "\xC3", "Alt+", "Home"};
  std::mt19937 random(20261);
  std::uniform_int_distribution<std::size_t> piece(0, std::size(pieces) - 1);
  std::uniform_int_distribution<int> length(0, 6);
  int accepted = 0;
  for (int round = 0; round < 50000; ++round) {
    std::string text;
    for (int count = length(random); count >= 0; --count) {
      text += pieces[piece(random)];
    }
    if (const auto combination = KeyCombination::fromAccelerator(text)) {
      ++accepted;
      ASSERT_EQ(KeyCombination::fromAccelerator(combination->acceleratorText()), combination)
          << text;
    }
  }
  EXPECT_GT(accepted, 500);
}

}  // namespace quennel::test
