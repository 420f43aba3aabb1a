#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/linux/bus/BusPropertyList.h"
#include "platform/linux/bus/BusTypes.h"
#include "tests/support/PrivateBus.h"

namespace quennel::test {
namespace {

using Dictionary = PropertyList::Dictionary;
using Array = PropertyList::Array;

class BusPropertyList : public testing::Test {
 protected:
  void SetUp() override {
    if (!PrivateBus::isAvailable()) {
      GTEST_SKIP() << PrivateBus::whatIsMissing;
    }
    _daemon = std::make_unique<PrivateBus>();
    ASSERT_GE(sd_bus_new(&_connection), 0);
    ASSERT_GE(sd_bus_set_address(_connection, _daemon->address().c_str()), 0);
    ASSERT_GE(sd_bus_set_bus_client(_connection, 1), 0);
    ASSERT_GE(sd_bus_start(_connection), 0);
    startMessage();
  }
  void TearDown() override {
    _message.reset();
    sd_bus_flush_close_unref(_connection);
  }

  void startMessage() {
    sd_bus_message* message = nullptr;
    ASSERT_GE(sd_bus_message_new_signal(_connection, &message, "/path", "a.b", "C"), 0);
    _message.reset(message);
  }
  sd_bus_message* message() { return _message.get(); }
  /// From now on the message is read.
  void seal() { ASSERT_GE(sd_bus_message_seal(message(), 1, 0), 0); }

  std::unique_ptr<PrivateBus> _daemon;
  sd_bus* _connection = nullptr;
  BusMessage _message;
};

TEST_F(BusPropertyList, IntegersOfEverySizeAreRead) {
  ASSERT_GE(sd_bus_message_append(message(), "ynqiuxt", 255, -1, 65535, -1, UINT32_MAX, INT64_MIN,
                                  UINT64_MAX),
            0);
  seal();
  EXPECT_EQ(readPropertyList(message()), PropertyList(255));
  EXPECT_EQ(readPropertyList(message()), PropertyList(-1));
  EXPECT_EQ(readPropertyList(message()), PropertyList(65535));
  EXPECT_EQ(readPropertyList(message()), PropertyList(-1));
  EXPECT_EQ(readPropertyList(message()), PropertyList(std::int64_t{UINT32_MAX}));
  EXPECT_EQ(readPropertyList(message()), PropertyList(INT64_MIN));
  EXPECT_EQ(readPropertyList(message()), PropertyList(std::uint64_t{UINT64_MAX}));
  EXPECT_EQ(readPropertyList(message()), std::nullopt);
}

TEST_F(BusPropertyList, ABooleanStaysABoolean) {
  ASSERT_GE(sd_bus_message_append(message(), "b", 1), 0);
  seal();
  const auto value = readPropertyList(message());
  ASSERT_TRUE(value && value->boolean());
  EXPECT_TRUE(*value->boolean());
}

TEST_F(BusPropertyList, ObjectPathsAndSignaturesAreReadAsTexts) {
  ASSERT_GE(sd_bus_message_append(message(), "og", "/a/b", "a{sv}"), 0);
  seal();
  EXPECT_EQ(readPropertyList(message()), PropertyList("/a/b"));
  EXPECT_EQ(readPropertyList(message()), PropertyList("a{sv}"));
}

TEST_F(BusPropertyList, StructuresAndTypedArraysAreReadAsArrays) {
  ASSERT_GE(sd_bus_message_append(message(), "(sd)as", "a", 0.5, 2, "b", "c"), 0);
  seal();
  EXPECT_EQ(readPropertyList(message()), PropertyList(Array{"a", 0.5}));
  EXPECT_EQ(readPropertyList(message()), PropertyList(Array{"b", "c"}));
}

TEST_F(BusPropertyList, DictionariesOfAnyValueTypeAreRead) {
  ASSERT_GE(sd_bus_message_append(message(), "a{su}", 1, "key", 7), 0);
  seal();
  EXPECT_EQ(readPropertyList(message()), PropertyList(Dictionary{{"key", 7}}));
}

TEST_F(BusPropertyList, WhatHasNoPropertyListFormIsLeftOutAndTheRestIsRead) {
  ASSERT_GE(sd_bus_message_append(message(), "a{sv}", 4, "descriptor", "h", 0, "numbered", "a{us}",
                                  1, 1, "one", "nested", "v", "s", "deep", "last", "i", 3),
            0);
  seal();
  EXPECT_EQ(readDictionary(message()), (Dictionary{{"nested", "deep"}, {"last", 3}}));
}

TEST_F(BusPropertyList, DatesAreLeftOut) {
  const PropertyList date(std::chrono::system_clock::now());
  const Dictionary dictionary{{"date", date}, {"array", Array{1, date}}, {"last", true}};
  ASSERT_GE(appendDictionary(message(), dictionary), 0);
  seal();
  EXPECT_EQ(readDictionary(message()), (Dictionary{{"array", Array{1}}, {"last", true}}));
}

TEST_F(BusPropertyList, TextThatIsNotUtf8IsRefused) {
  EXPECT_LT(appendDictionary(message(), {{"key", Array{"\xff"}}}), 0);
}

/// A text with a character that sd-bus neither writes nor reads, nor reads past, but the bus lets
/// through.
void appendUnreadableText(sd_bus_message* message) {
  constexpr std::string_view noncharacter = "\xEF\xB7\x90";
  char* space = nullptr;
  ASSERT_GE(sd_bus_message_append_string_space(message, noncharacter.size(), &space), 0);
  std::ranges::copy(noncharacter, space);
}

TEST_F(BusPropertyList, ATextThatCannotBeReadEndsTheReading) {
  for (const char* const type : {"as", "(s)"}) {
    SCOPED_TRACE(type);
    startMessage();
    ASSERT_GE(sd_bus_message_open_container(message(), type[0] == 'a' ? 'a' : 'r', "s"), 0);
    appendUnreadableText(message());
    ASSERT_GE(sd_bus_message_close_container(message()), 0);
    seal();
    EXPECT_EQ(readPropertyList(message()), std::nullopt);
  }
}

TEST_F(BusPropertyList, EntriesBeforeABrokenOneAreKept) {
  ASSERT_GE(sd_bus_message_open_container(message(), 'a', "{sv}"), 0);
  ASSERT_GE(sd_bus_message_append(message(), "{sv}", "before", "i", 1), 0);
  ASSERT_GE(sd_bus_message_open_container(message(), 'e', "sv"), 0);
  ASSERT_GE(sd_bus_message_append(message(), "s", "broken"), 0);
  ASSERT_GE(sd_bus_message_open_container(message(), 'v', "as"), 0);
  ASSERT_GE(sd_bus_message_open_container(message(), 'a', "s"), 0);
  appendUnreadableText(message());
  for (int depth = 0; depth < 4; ++depth) {
    ASSERT_GE(sd_bus_message_close_container(message()), 0);
  }
  seal();
  EXPECT_EQ(readDictionary(message()), (Dictionary{{"before", 1}}));
}

}  // namespace
}  // namespace quennel::test
