#include <gtest/gtest.h>

#include <string>

#include "platform/keys/KeyTable.h"

namespace quennel::test {

TEST(KeyTable, KnowsTheVirtualKeyCodes) {
  EXPECT_EQ(keyWithVirtualCode(0)->name, "a");
  EXPECT_EQ(keyWithVirtualCode(0x2D)->name, "n");
  EXPECT_EQ(keyWithVirtualCode(0x1D)->name, "0");
  EXPECT_EQ(keyWithVirtualCode(0x7A)->name, "F1");
  EXPECT_EQ(keyWithVirtualCode(0x6F)->name, "F12");
  EXPECT_EQ(keyWithVirtualCode(0x24)->name, "Return");
  EXPECT_EQ(keyWithVirtualCode(0x33)->name, "BackSpace");
  EXPECT_EQ(keyWithVirtualCode(0x75)->name, "Delete");
  EXPECT_EQ(keyWithVirtualCode(0x4C)->name, "KP_Enter");
}

TEST(KeyTable, CodesOfModifiersAndOfNoKeyNameNothing) {
  for (const std::int64_t code :
       {-1LL, 0x37LL, 0x38LL, 0x3BLL, 0x7FLL, 0x80LL, 65535LL, 0x100000000LL}) {
    EXPECT_EQ(keyWithVirtualCode(code), nullptr) << code;
  }
}

TEST(KeyTable, EveryVirtualKeyCodeNamesOneKey) {
  int count = 0;
  for (std::int64_t code = 0; code < 128; ++code) {
    if (const KeyInformation* key = keyWithVirtualCode(code)) {
      ++count;
      EXPECT_EQ(keyNamed(key->name), key);
    }
  }
  EXPECT_EQ(count, 103);
}

TEST(KeyTable, TextsThatPeopleWriteNameKeys) {
  EXPECT_EQ(keyNameForText("N"), "n");
  EXPECT_EQ(keyNameForText("7"), "7");
  EXPECT_EQ(keyNameForText("f12"), "F12");
  EXPECT_EQ(keyNameForText("F35"), "F35");
  EXPECT_EQ(keyNameForText("Enter"), "Return");
  EXPECT_EQ(keyNameForText("PgUp"), "Prior");
  EXPECT_EQ(keyNameForText("Page_Down"), "Next");
  EXPECT_EQ(keyNameForText("SPACE"), "space");
  EXPECT_EQ(keyNameForText(","), "comma");
  EXPECT_EQ(keyNameForText("+"), "plus");
  EXPECT_EQ(keyNameForText("?"), "question");
  EXPECT_EQ(keyNameForText("KP_Add"), "KP_Add");
  EXPECT_EQ(keyNameForText("XF86Launch1"), "XF86Launch1");
}

TEST(KeyTable, EveryPrintableASCIICharacterIsTheTextOfAKey) {
  for (char character = ' '; character < 0x7F; ++character) {
    EXPECT_NE(keyNameForText(std::string(1, character)), "") << character;
  }
}

TEST(KeyTable, CharactersAboveASCIIAreKeys) {
  EXPECT_EQ(keyNameForText("ö"), "U00F6");
  EXPECT_EQ(keyNameForText("т"), "U0442");
  EXPECT_EQ(keyNameForText("€"), "U20AC");
  EXPECT_EQ(keyNameForText("😀"), "U1F600");
  EXPECT_EQ(keyNameForText("U00f6"), "U00F6");
}

TEST(KeyTable, OtherTextsNameNoKey) {
  for (const char* text :
       {"", "F0", "F36", "nn", "öö", "\xC3", "\xFF", "\t", "\x7F", "\xC2\x85", "\xC2\xA0", "U0020",
        "U110000", "UD800", "U00G6", "XF86", "XF86-Mail", "Shift", "Control_L"}) {
    EXPECT_EQ(keyNameForText(text), "") << text;
  }
}

TEST(KeyTable, FunctionAndMediaKeysAreNotForTyping) {
  EXPECT_FALSE(isTypingKey("F5"));
  EXPECT_FALSE(isTypingKey("Print"));
  EXPECT_FALSE(isTypingKey("XF86Launch1"));
  EXPECT_TRUE(isTypingKey("n"));
  EXPECT_TRUE(isTypingKey("Return"));
  EXPECT_TRUE(isTypingKey("Left"));
  EXPECT_TRUE(isTypingKey("KP_5"));
  EXPECT_TRUE(isTypingKey("U00F6"));
}

}  // namespace quennel::test
