#include <gtest/gtest.h>

#include <limits>

#include "platform/values/Text.h"

namespace quennel::test {

TEST(Text, IntegerValueStopsAtTheFirstCharacterThatIsNoDigit) {
  EXPECT_EQ(integerValue("2x"), 2);
  EXPECT_EQ(integerValue("12.9"), 12);
  EXPECT_EQ(integerValue("0x10"), 0);
}

TEST(Text, IntegerValueSkipsWhiteSpaceAndTakesASign) {
  EXPECT_EQ(integerValue(" -1"), -1);
  EXPECT_EQ(integerValue("\t\n+7"), 7);
  EXPECT_EQ(integerValue("+7"), 7);
}

TEST(Text, IntegerValueWithoutDigitsIsZero) {
  EXPECT_EQ(integerValue("x"), 0);
  EXPECT_EQ(integerValue(""), 0);
  EXPECT_EQ(integerValue("  "), 0);
  EXPECT_EQ(integerValue("-"), 0);
  EXPECT_EQ(integerValue("- 1"), 0);
  EXPECT_EQ(integerValue("+-1"), 0);
}

TEST(Text, IntegerValueSaturatesAtTheLimits) {
  constexpr auto least = std::numeric_limits<std::int64_t>::min();
  constexpr auto most = std::numeric_limits<std::int64_t>::max();
  EXPECT_EQ(integerValue("9223372036854775806"), most - 1);
  EXPECT_EQ(integerValue("9223372036854775807"), most);
  EXPECT_EQ(integerValue("9223372036854775808"), most);
  EXPECT_EQ(integerValue("99999999999999999999"), most);
  EXPECT_EQ(integerValue("-9223372036854775807"), least + 1);
  EXPECT_EQ(integerValue("-9223372036854775808"), least);
  EXPECT_EQ(integerValue("-9223372036854775809"), least);
}

TEST(Text, ATextIsTrueWhenItStartsWithYOrTOrADigitThatIsNotZero) {
  for (const char* text : {"Y", "yes", "T", "true", "1", "+2", "-3", "007", " \tyes", "9x"}) {
    EXPECT_TRUE(textBoolValue(text)) << text;
  }
}

TEST(Text, EveryOtherTextIsFalse) {
  for (const char* text : {"", " ", "no", "false", "0", "000", "-0", "0x1", "- 1", "on", "+yes"}) {
    EXPECT_FALSE(textBoolValue(text)) << text;
  }
}

TEST(Text, RemovingPercentEscapesDecodesOnce) {
  EXPECT_EQ(removingPercentEscapes("/a%20b"), "/a b");
  EXPECT_EQ(removingPercentEscapes("%2520"), "%20");
  EXPECT_EQ(removingPercentEscapes("%C3%A9%c3%a9"), "éé");
  EXPECT_EQ(removingPercentEscapes(""), "");
}

TEST(Text, AnInvalidEscapeGivesNothing) {
  EXPECT_EQ(removingPercentEscapes("/100%"), std::nullopt);
  EXPECT_EQ(removingPercentEscapes("%4"), std::nullopt);
  EXPECT_EQ(removingPercentEscapes("%4g"), std::nullopt);
  EXPECT_EQ(removingPercentEscapes("%%20"), std::nullopt);
}

TEST(Text, EscapesOfBytesThatAreNotUTF8GiveNothing) {
  EXPECT_EQ(removingPercentEscapes("%FF"), std::nullopt);
  EXPECT_EQ(removingPercentEscapes("\xFF"), std::nullopt);
}

TEST(Text, TrimmingNewlinesTakesEveryNewlineCharacterFromBothEnds) {
  EXPECT_EQ(trimmingNewlines("\n\v\f\r\xC2\x85\xE2\x80\xA8\xE2\x80\xA9/d\n"), "/d");
  EXPECT_EQ(trimmingNewlines("/d\n\v\f\r\xC2\x85\xE2\x80\xA8\xE2\x80\xA9"), "/d");
  EXPECT_EQ(trimmingNewlines("\n\n"), "");
}

TEST(Text, TrimmingNewlinesLeavesSpacesTabsAndInnerNewlines) {
  EXPECT_EQ(trimmingNewlines(" /d\t\n"), " /d\t");
  EXPECT_EQ(trimmingNewlines("a\nb"), "a\nb");
  // U+2026 and U+00A0 share bytes with newline characters.
  EXPECT_EQ(trimmingNewlines("\xE2\x80\xA6\xC2\xA0"), "\xE2\x80\xA6\xC2\xA0");
}

TEST(Text, CharactersOfEveryLengthAreValidUTF8) {
  EXPECT_TRUE(isValidUTF8(""));
  EXPECT_TRUE(isValidUTF8("a\x7F"));
  EXPECT_TRUE(isValidUTF8("\xC2\x80\xDF\xBF"));
  EXPECT_TRUE(isValidUTF8("\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF"));
  EXPECT_TRUE(isValidUTF8("\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"));
}

TEST(Text, OverlongSurrogateTooLargeAndBrokenSequencesAreNotUTF8) {
  EXPECT_FALSE(isValidUTF8("\xC0\x80"));
  EXPECT_FALSE(isValidUTF8("\xC1\xBF"));
  EXPECT_FALSE(isValidUTF8("\xE0\x9F\xBF"));
  EXPECT_FALSE(isValidUTF8("\xED\xA0\x80"));
  EXPECT_FALSE(isValidUTF8("\xF0\x8F\xBF\xBF"));
  EXPECT_FALSE(isValidUTF8("\xF4\x90\x80\x80"));
  EXPECT_FALSE(isValidUTF8("\xF5\x80\x80\x80"));
  EXPECT_FALSE(isValidUTF8("\x80"));
  EXPECT_FALSE(isValidUTF8("\xC3"));
  EXPECT_FALSE(isValidUTF8("\xC3z"));
  EXPECT_FALSE(isValidUTF8("\xE2\x82"));
  EXPECT_FALSE(isValidUTF8("\xE2\x82z"));
}

TEST(Text, FormattedReplacesEachPlaceInOrder) {
  EXPECT_EQ(formatted("New %@", "Text"), "New Text");
  EXPECT_EQ(formatted("%@ of %@!", std::string("a"), "b"), "a of b!");
}

TEST(Text, FormattedReplacesNothingElse) {
  EXPECT_EQ(formatted("100% %d %s %% %@", "x"), "100% %d %s %% x");
  EXPECT_EQ(formatted("%@", "%@"), "%@");
  EXPECT_EQ(formatted("%@ %@", "%@", "b"), "%@ b");
}

TEST(Text, FormattedLeavesPlacesWithoutArgumentAndIgnoresArgumentsWithoutPlace) {
  EXPECT_EQ(formatted("%@ and %@", "a"), "a and %@");
  EXPECT_EQ(formatted("none", "a"), "none");
  EXPECT_EQ(formatted("%@"), "%@");
}

}  // namespace quennel::test
