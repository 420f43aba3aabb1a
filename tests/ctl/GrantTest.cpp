#include <sys/stat.h>

#include <filesystem>

#include "settings/AuthorizedDir.h"
#include "settings/SharedSettings.h"
#include "tests/ctl/QuennelctlTest.h"

namespace quennel::test {
namespace {

class GrantTest : public QuennelctlTest {
 protected:
  GrantTest() { environment["XDG_DATA_HOME"] = folder / "data"; }

  std::string makeFolder(const std::string& name) const {
    std::filesystem::create_directories(folder / name);
    return folder / name;
  }
  PropertyList::Array records() const {
    return authorizedDirsOf(settings.objectForKey(authorizedDirsKey));
  }
  Words paths() const {
    Words found;
    for (const AuthorizedDir& record : records()) {
      found.push_back(*authorizedPath(record));
    }
    return found;
  }
  /// Grants the folder and answers its path.
  std::string grant(const std::string& name) const {
    std::string path = makeFolder(name);
    EXPECT_EQ(run({"grant", path}).status, 0);
    return path;
  }
};

}  // namespace

TEST_F(GrantTest, GrantingIsSilentAndRecordsPathAndToken) {
  const Answer answer = run({"grant", makeFolder("work")});
  EXPECT_EQ(answer.status, 0);
  EXPECT_EQ(answer.output + answer.errors, "");
  ASSERT_EQ(records().size(), 1u);
  const auto record = *records().front().dictionary();
  EXPECT_EQ(record.size(), 2u);
  EXPECT_EQ(*record.at("path").string(), folder / "work");
  EXPECT_FALSE(record.at("bookmarkData").data()->bytes.empty());
}

TEST_F(GrantTest, GrantsKeepTheirOrderAndAFolderHasOne) {
  const std::string below = grant("a/b");
  const std::string above = grant("a");
  grant("a/b");
  EXPECT_EQ(paths(), (Words{below, above}));
}

TEST_F(GrantTest, GrantingAgainLeavesAGrantThatHoldsAsItIs) {
  grant("work");
  const auto before = records();
  grant("work");
  EXPECT_EQ(records(), before);
}

TEST_F(GrantTest, GrantingAFolderThatTookThePlaceOfTheGrantedOneRenewsTheGrant) {
  const std::string path = grant("work");
  std::filesystem::rename(path, folder / "old");
  std::filesystem::remove(folder / "old");
  grant("work");
  EXPECT_EQ(paths(), Words{path});
  EXPECT_EQ(run({"grants", "--plain"}).output, path + "\t" + path + "\n");
}

TEST_F(GrantTest, ARelativePathIsMadeAbsolute) {
  makeFolder("work/deep");
  Process shell(
      {"sh", "-c", "cd \"$0\" && \"$1\" grant deep/../deep/", folder / "work", QUENNELCTL},
      environment);
  EXPECT_EQ(shell.wait(), 0) << shell.errorOutput();
  EXPECT_EQ(paths(), Words{folder / "work/deep"});
}

TEST_F(GrantTest, WhatIsMissingOrNoFolderCannotBeGranted) {
  const Answer missing = run({"grant", folder / "missing"});
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.errors,
            "quennelctl: “" + folder / "missing” could not be read: it does not exist.\n");
  const Answer file = run({"grant", makeFile("file")});
  EXPECT_EQ(file.status, 1);
  EXPECT_EQ(file.errors, "quennelctl: " + (folder / "file is not a folder\n"));
  EXPECT_TRUE(records().empty());
}

TEST_F(GrantTest, GrantsAreListedWithWhatBecameOfThem) {
  EXPECT_EQ(run({"grants"}).output,
            "The helper may not write anywhere yet. Let it: quennelctl grant DIR\n");
  const std::string kept = grant("kept");
  const std::string removed = grant("removed");
  std::filesystem::remove(removed);
  EXPECT_EQ(run({"grants"}).output, "GRANTED" + std::string(removed.size() - 7, ' ') + "  NOW\n" +
                                        kept + "     there\n" + removed + "  not to be found\n");
  EXPECT_EQ(run({"grants", "--plain"}).output, kept + "\t" + kept + "\n" + removed + "\t\n");
}

TEST_F(GrantTest, RevokingRemovesTheRecordOfExactlyThatFolder) {
  const std::string above = grant("a");
  const std::string below = grant("a/b");
  const Answer answer = run({"revoke", above});
  EXPECT_EQ(answer.status, 0);
  EXPECT_EQ(answer.output + answer.errors, "");
  EXPECT_EQ(paths(), Words{below});
}

TEST_F(GrantTest, AFolderThatIsGoneCanBeRevoked) {
  std::filesystem::remove(grant("work"));
  EXPECT_EQ(run({"revoke", folder / "work/"}).status, 0);
  EXPECT_TRUE(records().empty());
}

TEST_F(GrantTest, RevokingWhatWasNotGrantedIsAFailure) {
  grant("work");
  const Answer answer = run({"revoke", folder / "wrk"});
  EXPECT_EQ(answer.status, 1);
  EXPECT_EQ(answer.errors, "quennelctl: " + (folder / "wrk was not granted; did you mean ") +
                               (folder / "work?\n"));
  EXPECT_EQ(records().size(), 1u);
}

TEST_F(GrantTest, RecordsOfOthersAndOtherSettingsAreKept) {
  const PropertyList::Array odd{PropertyList("odd"), PropertyList::Dictionary{{"path", 7}}};
  settings.setObject(odd, authorizedDirsKey);
  settings.setObject(true, "other");
  ASSERT_TRUE(settings.synchronize());
  const std::string path = grant("work");
  EXPECT_EQ(records().size(), 3u);
  EXPECT_NE(run({"grants"}).output.find("(no path)"), std::string::npos);
  EXPECT_EQ(run({"revoke", path}).status, 0);
  EXPECT_EQ(records(), odd);
  EXPECT_TRUE(settings.boolForKey("other"));
}

TEST_F(GrantTest, SomethingElseInThePlaceOfTheGrantsIsNeverOverwritten) {
  settings.setObject("odd", authorizedDirsKey);
  ASSERT_TRUE(settings.synchronize());
  for (const Words& words :
       {Words{"grants"}, Words{"revoke", "/d"}, Words{"grant", makeFolder("work")}}) {
    const Answer answer = run(words);
    EXPECT_EQ(answer.status, 1);
    EXPECT_EQ(answer.errors,
              "quennelctl: the settings hold something else than a list under authorizedDirs\n");
  }
  EXPECT_EQ(settings.objectForKey(authorizedDirsKey), PropertyList("odd"));
}

TEST_F(GrantTest, AKeyThatOthersMayReadIsNamedAndNeitherItNorAnyGrantIsChanged) {
  const std::string path = grant("work");
  const auto before = records();
  const std::string key = folder / "data/net.brellow.QuennelHelper/bookmark-key";
  ASSERT_EQ(chmod(key.c_str(), 0644), 0);
  const std::string reason =
      "quennelctl: “" + key +
      "”, the key of your grants, can be read or changed by other users (chmod 600 ends that).\n";
  const Answer listed = run({"grants"});
  EXPECT_EQ(listed.status, 1);
  EXPECT_NE(listed.output.find(path + "  not to be known\n"), std::string::npos);
  EXPECT_EQ(listed.errors, reason);
  EXPECT_EQ(run({"grants", "--plain"}).errors, reason);
  for (const std::string& granted : {path, makeFolder("other")}) {
    const Answer answer = run({"grant", granted});
    EXPECT_EQ(answer.status, 1);
    EXPECT_EQ(answer.errors, reason);
  }
  EXPECT_EQ(records(), before);
  ASSERT_EQ(chmod(key.c_str(), 0600), 0);
  EXPECT_EQ(run({"grants", "--plain"}).output, path + "\t" + path + "\n");
}

TEST_F(GrantTest, TheKeyOfTheTokensIsTheUsersAlone) {
  grant("work");
  struct stat status {};
  ASSERT_EQ(stat((folder / "data/net.brellow.QuennelHelper/bookmark-key").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0600u);
}

}  // namespace quennel::test
