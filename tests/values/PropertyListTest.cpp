#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "platform/values/PropertyList.h"

namespace quennel::test {

using Array = PropertyList::Array;
using Dictionary = PropertyList::Dictionary;
using Data = PropertyList::Data;

constexpr auto leastInteger = std::numeric_limits<std::int64_t>::min();
constexpr auto mostInteger = std::numeric_limits<std::int64_t>::max();
constexpr auto mostUnsigned = std::numeric_limits<std::uint64_t>::max();

TEST(PropertyList, GivesItsContentsByKind) {
  EXPECT_EQ(*PropertyList("text").string(), "text");
  EXPECT_EQ(PropertyList(Data{"bytes"}).data()->bytes, "bytes");
  EXPECT_EQ(PropertyList(Array{1, 2}).array()->size(), 2U);
  EXPECT_EQ(PropertyList(Dictionary{{"a", 1}}).dictionary()->size(), 1U);
  EXPECT_EQ(*PropertyList(true).boolean(), true);
  EXPECT_EQ(*PropertyList(7).integer(), 7);
  EXPECT_EQ(*PropertyList(0.5).real(), 0.5);
}

TEST(PropertyList, GivesNullForEveryOtherKind) {
  const PropertyList number = 1;
  EXPECT_EQ(number.string(), nullptr);
  EXPECT_EQ(number.data(), nullptr);
  EXPECT_EQ(number.array(), nullptr);
  EXPECT_EQ(number.dictionary(), nullptr);
  EXPECT_EQ(number.boolean(), nullptr);
  EXPECT_EQ(number.real(), nullptr);
  EXPECT_EQ(number.date(), nullptr);
  EXPECT_EQ(PropertyList("1").integer(), nullptr);
}

TEST(PropertyList, UnsignedNumbersThatFitAreIntegers) {
  EXPECT_EQ(*PropertyList(std::uint64_t{5}).integer(), 5);
  EXPECT_EQ(PropertyList(std::uint64_t{5}).largeInteger(), nullptr);
  EXPECT_EQ(*PropertyList(mostUnsigned).largeInteger(), mostUnsigned);
}

TEST(PropertyList, ACopySharesItsContents) {
  const PropertyList original = Array{"a"};
  const PropertyList copy = original;
  EXPECT_EQ(copy.array(), original.array());
}

TEST(PropertyList, ANumberIsTrueWhenItIsNotZero) {
  EXPECT_TRUE(PropertyList(true).boolValue());
  EXPECT_TRUE(PropertyList(-1).boolValue());
  EXPECT_TRUE(PropertyList(0.1).boolValue());
  EXPECT_TRUE(PropertyList(mostUnsigned).boolValue());
  EXPECT_FALSE(PropertyList(false).boolValue());
  EXPECT_FALSE(PropertyList(0).boolValue());
  EXPECT_FALSE(PropertyList(-0.0).boolValue());
}

TEST(PropertyList, ATextIsTrueByItsStart) {
  EXPECT_TRUE(PropertyList("YES").boolValue());
  EXPECT_TRUE(PropertyList(" 01").boolValue());
  EXPECT_FALSE(PropertyList("no").boolValue());
}

TEST(PropertyList, DataDatesAndContainersAreFalse) {
  EXPECT_FALSE(PropertyList(Data{"1"}).boolValue());
  EXPECT_FALSE(PropertyList(std::chrono::system_clock::now()).boolValue());
  EXPECT_FALSE(PropertyList(Array{1}).boolValue());
  EXPECT_FALSE(PropertyList(Dictionary{{"a", 1}}).boolValue());
}

TEST(PropertyList, IntegerValueOfNumbersCutsTheFractionAndStaysInRange) {
  EXPECT_EQ(PropertyList(true).integerValue(), 1);
  EXPECT_EQ(PropertyList(leastInteger).integerValue(), leastInteger);
  EXPECT_EQ(PropertyList(mostUnsigned).integerValue(), mostInteger);
  EXPECT_EQ(PropertyList(-2.9).integerValue(), -2);
  EXPECT_EQ(PropertyList(0x1p63).integerValue(), mostInteger);
  EXPECT_EQ(PropertyList(-0x1p63).integerValue(), leastInteger);
  EXPECT_EQ(PropertyList(-1e300).integerValue(), leastInteger);
  EXPECT_EQ(PropertyList(std::nan("")).integerValue(), 0);
}

TEST(PropertyList, IntegerValueOfATextIsItsLeadingInteger) {
  EXPECT_EQ(PropertyList("12 files").integerValue(), 12);
  EXPECT_EQ(PropertyList(Array{1}).integerValue(), 0);
}

TEST(PropertyList, NumbersAreEqualByValueWhateverTheirKind) {
  EXPECT_EQ(PropertyList(true), PropertyList(1));
  EXPECT_EQ(PropertyList(true), PropertyList(1.0));
  EXPECT_EQ(PropertyList(0), PropertyList(false));
  EXPECT_EQ(PropertyList(-0.0), PropertyList(0));
  EXPECT_EQ(PropertyList(mostUnsigned), PropertyList(mostUnsigned));
  EXPECT_EQ(PropertyList(0x1p63), PropertyList(std::uint64_t{1} << 63));
  EXPECT_EQ(PropertyList(-0x1p63), PropertyList(leastInteger));
  EXPECT_NE(PropertyList(true), PropertyList(2));
  EXPECT_NE(PropertyList(1), PropertyList(1.5));
}

TEST(PropertyList, NumbersAreComparedWithoutRounding) {
  EXPECT_NE(PropertyList(mostInteger), PropertyList(0x1p63));
  EXPECT_NE(PropertyList(mostUnsigned), PropertyList(0x1p64));
  EXPECT_NE(PropertyList((std::int64_t{1} << 53) + 1), PropertyList(0x1p53));
  EXPECT_NE(PropertyList(std::int64_t{-1}), PropertyList(mostUnsigned));
  EXPECT_NE(PropertyList(leastInteger), PropertyList(std::uint64_t{1} << 63));
  EXPECT_NE(PropertyList(1), PropertyList(std::numeric_limits<double>::infinity()));
}

TEST(PropertyList, AValueEqualsItsCopyEvenIfItIsNoNumber) {
  const PropertyList value = Array{std::nan("")};
  EXPECT_EQ(value, PropertyList(value));
  EXPECT_EQ(value, PropertyList(Array{std::nan("")}));
  EXPECT_NE(PropertyList(std::nan("")), PropertyList(0));
}

TEST(PropertyList, ValuesOfDifferentKindsDiffer) {
  EXPECT_NE(PropertyList("1"), PropertyList(1));
  EXPECT_NE(PropertyList("a"), PropertyList(Data{"a"}));
  EXPECT_NE(PropertyList(Array{}), PropertyList(Dictionary{}));
  EXPECT_NE(PropertyList(PropertyList::Date{}), PropertyList(0));
}

TEST(PropertyList, RecordsAreEqualDeeply) {
  const PropertyList record = Dictionary{{"on", true}, {"list", Array{1, "a"}}};
  EXPECT_EQ(record, PropertyList(Dictionary{{"list", Array{1.0, "a"}}, {"on", 1}}));
  EXPECT_NE(record, PropertyList(Dictionary{{"on", true}, {"list", Array{1, "b"}}}));
  EXPECT_NE(record, PropertyList(Dictionary{{"on", true}}));
  EXPECT_NE(record, PropertyList(Dictionary{{"off", true}, {"list", Array{1, "a"}}}));
}

TEST(PropertyList, DatesAndDataAreEqualByContents) {
  const PropertyList::Date date{std::chrono::seconds(5)};
  EXPECT_EQ(PropertyList(date), PropertyList(date));
  EXPECT_NE(PropertyList(date), PropertyList(date + std::chrono::seconds(1)));
  EXPECT_EQ(PropertyList(Data{"a"}), PropertyList(Data{"a"}));
  EXPECT_NE(PropertyList(Data{"a"}), PropertyList(Data{"b"}));
}

TEST(PropertyList, ObjectForKeyFindsTheEntryOfADictionary) {
  const PropertyList record = Dictionary{{"title", "Text"}};
  ASSERT_TRUE(record.objectForKey("title"));
  EXPECT_EQ(*record.objectForKey("title"), PropertyList("Text"));
  EXPECT_EQ(record.objectForKey("prefix"), nullptr);
  EXPECT_EQ(PropertyList(1).objectForKey("title"), nullptr);
}

TEST(PropertyList, DescriptionShowsScalarsPlainly) {
  EXPECT_EQ(PropertyList(true).description(), "yes");
  EXPECT_EQ(PropertyList(false).description(), "no");
  EXPECT_EQ(PropertyList(-5).description(), "-5");
  EXPECT_EQ(PropertyList(mostUnsigned).description(), "18446744073709551615");
  EXPECT_EQ(PropertyList(0.1).description(), "0.1");
  EXPECT_EQ(PropertyList("two words").description(), "two words");
  EXPECT_EQ(PropertyList(Data{"abc"}).description(), "<3 bytes>");
  EXPECT_EQ(PropertyList(Data{"a"}).description(), "<1 byte>");
}

TEST(PropertyList, DescriptionOfADateIsInUniversalTime) {
  EXPECT_EQ(PropertyList(PropertyList::Date{std::chrono::seconds(1'000'000'000)}).description(),
            "2001-09-09T01:46:40Z");
  EXPECT_EQ(PropertyList(PropertyList::Date{std::chrono::milliseconds(-1)}).description(),
            "1969-12-31T23:59:59Z");
  EXPECT_EQ(PropertyList(PropertyList::Date::min()).description(), "1677-09-21T00:12:43Z");
  EXPECT_EQ(PropertyList(PropertyList::Date::max()).description(), "2262-04-11T23:47:16Z");
}

TEST(PropertyList, DescriptionOfContainersIsOneLineWithQuotedTexts) {
  const PropertyList value = Dictionary{{"list", Array{1, "a \"b\" \\", true}}, {"empty", Array{}}};
  EXPECT_EQ(value.description(), R"({empty: [], list: [1, "a \"b\" \\", yes]})");
}

TEST(PropertyList, DescriptionNeverLetsControlCharactersThrough) {
  EXPECT_EQ(PropertyList("a\n\t\r\x1B[2J\x7F").description(), "a\\n\\t\\r\\x1b[2J\\x7f");
  EXPECT_EQ(PropertyList("é\xC2\x9B\xC2\xA0").description(), "é\\xc2\\x9b\xC2\xA0");
}

TEST(PropertyList, DescriptionShowsBytesThatAreNotUTF8AsEscapes) {
  EXPECT_EQ(PropertyList("caf\xE9").description(), "caf\\xe9");
  EXPECT_EQ(PropertyList(Array{"\xC2\x9B\xFF"}).description(), "[\"\\xc2\\x9b\\xff\"]");
}

}  // namespace quennel::test
