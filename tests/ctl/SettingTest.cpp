#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/ctl/QuennelctlTest.h"

namespace quennel::test {
namespace {

class SettingTest : public QuennelctlTest {
 protected:
  std::string get(const std::string& key) const { return run({"get", key}).output; }
};

constexpr const char* switches[] = {"skipFilename", "showFileOnCreation", "playSound",
                                    "openFileOnCreation", "runInBackground"};

}  // namespace

TEST_F(SettingTest, EverySwitchCanBeTurnedOnAndOff) {
  for (const char* key : switches) {
    EXPECT_EQ(run({"set", key, "yes"}).status, 0);
    EXPECT_EQ(get(key), "yes\n");
    EXPECT_EQ(run({"set", key, "no"}).status, 0);
    EXPECT_EQ(get(key), "no\n");
  }
}

TEST_F(SettingTest, OnAndOffCanBeSaidInSeveralWays) {
  for (const char* value : {"yes", "true", "1", "YES", "True"}) {
    EXPECT_EQ(run({"set", "playSound", "no"}).status, 0);
    const Answer answer = run({"set", "playSound", value});
    EXPECT_EQ(answer.status, 0) << value;
    EXPECT_EQ(answer.output, "");
    EXPECT_TRUE(settings.boolForKey("playSound")) << value;
  }
  for (const char* value : {"no", "false", "0"}) {
    EXPECT_EQ(run({"set", "playSound", "yes"}).status, 0);
    EXPECT_EQ(run({"set", "playSound", value}).status, 0) << value;
    EXPECT_FALSE(settings.boolForKey("playSound")) << value;
  }
}

TEST_F(SettingTest, HelpIsThereBehindASettingToo) {
  const Answer answer = run({"set", "runInBackground", "--help"});
  EXPECT_EQ(answer.status, 0);
  EXPECT_NE(
      answer.output.find("the helper never leaves by itself; shortcuts then outlast a request"),
      std::string::npos)
      << answer.output;
  EXPECT_FALSE(std::filesystem::exists(settingsPath));
}

TEST_F(SettingTest, ASwitchIsStoredAsABoolean) {
  ASSERT_EQ(run({"set", "playSound", "1"}).status, 0);
  ASSERT_NE(settings.objectForKey("playSound")->boolean(), nullptr);
}

TEST_F(SettingTest, OtherValuesAndKeysAreRefused) {
  EXPECT_EQ(run({"set", "playSound", "maybe"}).errors,
            "quennelctl: playSound is either yes or no, not 'maybe'\n"
            "See 'quennelctl set --help'.\n");
  EXPECT_EQ(run({"set", "playSound", ""}).status, 2);
  const Answer answer = run({"set", "playsound", "yes"});
  EXPECT_EQ(answer.status, 2);
  EXPECT_EQ(answer.errors,
            "quennelctl: there is no setting playsound to be set; did you mean playSound?\n"
            "See 'quennelctl set --help'.\n");
  EXPECT_EQ(run({"set", "fileTemplates", "yes"}).status, 2);
  EXPECT_FALSE(std::filesystem::exists(settingsPath));
}

TEST_F(SettingTest, GetShowsTheDefaultOfWhatWasNeverSet) {
  EXPECT_EQ(get("skipFilename"), "yes\n");
  EXPECT_EQ(get("runInBackground"), "no\n");
}

TEST_F(SettingTest, GetWithoutAKeyShowsEverySwitch) {
  ASSERT_EQ(run({"set", "playSound", "yes"}).status, 0);
  EXPECT_EQ(run({"get"}).output,
            "skipFilename        yes\n"
            "showFileOnCreation  yes\n"
            "playSound           yes\n"
            "openFileOnCreation  no\n"
            "runInBackground     no\n");
}

TEST_F(SettingTest, GetShowsOtherValuesOnOneLine) {
  settings.setObject(PropertyList::Dictionary{{"New %@", "Nouveau\n%@"}}, "localizedStrings");
  ASSERT_TRUE(settings.synchronize());
  EXPECT_EQ(get("localizedStrings"), "{New %@: \"Nouveau\\n%@\"}\n");
}

TEST_F(SettingTest, GetOfAnAbsentValueIsAFailure) {
  const Answer answer = run({"get", "authorizedDirs"});
  EXPECT_EQ(answer.status, 1);
  EXPECT_EQ(answer.errors, "quennelctl: nothing is set under authorizedDirs\n");
}

TEST_F(SettingTest, SettingsThatCannotBeReadAreSaidToBeAndNeverOverwritten) {
  std::filesystem::create_directory(config);
  std::ofstream(settingsPath) << "garbage";
  const Answer listed = run({"template", "list"});
  EXPECT_EQ(listed.status, 0);
  EXPECT_NE(listed.errors.find("it counts as empty"), std::string::npos);
  const Answer answer = run({"set", "playSound", "yes"});
  EXPECT_EQ(answer.status, 1);
  EXPECT_NE(answer.errors.find("repair it or move it away"), std::string::npos);
  std::ifstream file(settingsPath);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), "garbage");
}

}  // namespace quennel::test
