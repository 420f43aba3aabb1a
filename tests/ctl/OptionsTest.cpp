#include <gtest/gtest.h>

#include <array>

#include "ctl/CommandError.h"
#include "ctl/Options.h"

namespace quennel::test {
namespace {

constexpr std::array known{Option{"title", "TEXT", ""}, Option{"on", "", ""},
                           Option{"off", "", ""}};

Options parse(const std::vector<std::string>& words) { return Options::parse(words, known); }

std::string refusalOf(const std::vector<std::string>& words) {
  try {
    parse(words);
    return "accepted";
  } catch (const UsageError& error) {
    return error.what();
  }
}

}  // namespace

TEST(Options, TakeTheirValueWithASpaceOrAnEqualsSign) {
  EXPECT_EQ(parse({"--title", "a b"}).valueOf("title"), "a b");
  EXPECT_EQ(parse({"--title=a=b"}).valueOf("title"), "a=b");
  EXPECT_EQ(parse({"--title="}).valueOf("title"), "");
  EXPECT_EQ(parse({"--title", "--on"}).valueOf("title"), "--on");
  EXPECT_EQ(parse({}).valueOf("title"), std::nullopt);
}

TEST(Options, MayStandAnywhereBetweenArguments) {
  const Options options = parse({"a", "--on", "b"});
  EXPECT_TRUE(options.has("on"));
  EXPECT_EQ(options.arguments(), (std::vector<std::string>{"a", "b"}));
}

TEST(Options, EndAtTwoDashes) {
  const Options options = parse({"--", "--on", "--"});
  EXPECT_TRUE(options.hasNone());
  EXPECT_EQ(options.arguments(), (std::vector<std::string>{"--on", "--"}));
}

TEST(Options, ANumberBelowZeroAndASingleDashAreArguments) {
  EXPECT_EQ(parse({"-1", "-"}).arguments(), (std::vector<std::string>{"-1", "-"}));
}

TEST(Options, TheLastOfSeveralCounts) {
  EXPECT_EQ(parse({"--title=a", "--title=b"}).valueOf("title"), "b");
  EXPECT_EQ(parse({"--on", "--off"}).choice("on", "off"), false);
  EXPECT_EQ(parse({"--off", "--on"}).choice("on", "off"), true);
  EXPECT_EQ(parse({}).choice("on", "off"), std::nullopt);
}

TEST(Options, WhatIsNotUnderstoodIsRefused) {
  EXPECT_EQ(refusalOf({"--titel=a"}), "there is no option --titel; did you mean --title?");
  EXPECT_EQ(refusalOf({"-on"}), "there is no option -on; did you mean --on?");
  EXPECT_EQ(refusalOf({"--unlike-any"}), "there is no option --unlike-any");
  EXPECT_EQ(refusalOf({"--title"}), "--title needs a value");
  EXPECT_EQ(refusalOf({"--on=yes"}), "--on takes no value");
}

}  // namespace quennel::test
