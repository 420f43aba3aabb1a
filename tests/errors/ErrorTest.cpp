#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <map>
#include <string>

#include "platform/Error.h"
#include "tests/errors/BracketingBundle.h"
#include "tests/support/Sentence.h"

namespace quennel::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using Kind = Error::Kind;

constexpr int kinds = static_cast<int>(Kind::TooManyWatches) + 1;

TEST(AnErrorsSentence, SaysWhichItemAndWhatHappened) {
  EXPECT_EQ(sentenceOf({ENOSPC, Kind::Creating, "/d/new.txt"}),
            "“/d/new.txt” could not be made: there is no space left.");
}

TEST(AnErrorsSentence, IsWhollyFromTheStringTableForEveryKindOfFailure) {
  const BracketingBundle texts;
  std::map<std::string, int> sentences;
  for (int kind = 0; kind < kinds; ++kind) {
    const std::string sentence =
        Error{EACCES, static_cast<Kind>(kind), "/item"}.localizedDescription(texts);
    EXPECT_TRUE(sentence.starts_with("[") && sentence.ends_with("]")) << sentence;
    EXPECT_THAT(sentence, Not(HasSubstr("%@"))) << kind;
    ++sentences[sentence];
  }
  EXPECT_EQ(sentences.size(), static_cast<std::size_t>(kinds)) << "each kind says its own";
}

TEST(AnErrorsSentence, TakesEveryReasonFromTheStringTable) {
  constexpr int manyCodes = 200;
  for (int code = 0; code < manyCodes; ++code) {
    const std::string sentence =
        Error{code, Kind::Reading, "/item"}.localizedDescription(BracketingBundle());
    EXPECT_THAT(sentence, testing::MatchesRegex("\\[“/item” could not be read: \\[.+\\]\\.\\]"));
  }
}

TEST(AnErrorsSentence, GivesTheNumberOfAReasonThatIsRare) {
  EXPECT_EQ(sentenceOf({EXFULL, Kind::Writing, "/d/a"}),
            "“/d/a” could not be written: the system reports error 54.");
}

TEST(AnErrorsSentence, TellsAMissingItemFromAMissingFolder) {
  EXPECT_EQ(sentenceOf({ENOENT, Kind::Reading, "/d/a"}),
            "“/d/a” could not be read: it does not exist.");
  EXPECT_EQ(sentenceOf({ENOENT, Kind::Creating, "/d/a"}),
            "“/d/a” could not be made: its folder does not exist.");
}

TEST(AnErrorsSentence, SaysThatNoFileIsGiven) {
  EXPECT_EQ(sentenceOf({ENOENT, Kind::Reading, ""}), "No file is given.");
  EXPECT_EQ(sentenceOf({ENOENT, Kind::StartingScript, ""}), "No file is given.");
}

TEST(AnErrorsSentence, LeavesPlaceholdersInAPathAlone) {
  EXPECT_EQ(sentenceOf({EEXIST, Kind::Creating, "/d/%@ %s"}),
            "“/d/%@ %s” could not be made: something of that name is there already.");
}

}  // namespace
}  // namespace quennel::test
