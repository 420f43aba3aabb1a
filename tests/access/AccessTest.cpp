#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <optional>
#include <string>
#include <vector>

#include "access/AuthorizedDirectories.h"
#include "tests/support/DesktopTest.h"
#include "tests/support/PrintPropertyList.h"

namespace quennel::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

/// The recorded grants, in the settings as other processes see them.
class Access : public DesktopTest {
 protected:
  Access() {
    for (const char* path : {"/a", "/a/b", "/c"}) {
      fakes.securityScope.addFolder(path);
    }
    fakes.sharedDefaults.synchronize();
    _storesBefore = fakes.sharedDefaults.storeCount();
  }

  /// Starts access as the helper does when it starts up.
  AuthorizedDirectories& launch() {
    directories.emplace(fakes.securityScope, fakes.sharedDefaults);
    directories->startAccessingURLs();
    return *directories;
  }
  PropertyList::Dictionary record(const std::string& path) {
    return {{"path", path}, {"bookmarkData", *fakes.securityScope.bookmarkDataForPath(path)}};
  }
  void setRecords(PropertyList::Array records) {
    fakes.sharedDefaults.stored().insert_or_assign("authorizedDirs", std::move(records));
  }
  PropertyList::Array records() {
    const auto stored = fakes.sharedDefaults.stored().find("authorizedDirs");
    return stored == fakes.sharedDefaults.stored().end() ? PropertyList::Array()
                                                         : *stored->second.array();
  }
  std::vector<std::string> recordedPaths() {
    std::vector<std::string> paths;
    for (const PropertyList& entry : records()) {
      paths.push_back(*entry.objectForKey("path")->string());
    }
    return paths;
  }
  int stores() const { return fakes.sharedDefaults.storeCount() - _storesBefore; }

  std::optional<AuthorizedDirectories> directories;

 private:
  int _storesBefore = 0;
};

TEST_F(Access, WithoutRecordsOpensNothing) {
  EXPECT_THAT(launch().openedURLs(), IsEmpty());
  EXPECT_THAT(fakes.securityScope.started, IsEmpty());
}

TEST_F(Access, IsStartedWhereTheDirectoryIsNow) {
  setRecords({record("/a")});
  fakes.securityScope.moveFolder("/a", "/moved");
  EXPECT_THAT(launch().openedURLs(), ElementsAre("/moved"));
  EXPECT_THAT(recordedPaths(), ElementsAre("/a"));
}

TEST_F(Access, SkipsGarbageAtEveryStartAndNeverRemovesIt) {
  const PropertyList::Array kept{
      PropertyList::Dictionary{{"path", "/x"}, {"bookmarkData", PropertyList::Data{"garbage"}}},
      record("/a")};
  setRecords(kept);
  for (int start = 0; start < 3; ++start) {
    EXPECT_THAT(launch().openedURLs(), ElementsAre("/a"));
  }
  EXPECT_EQ(PropertyList(records()), PropertyList(kept));
  EXPECT_EQ(stores(), 0);
}

TEST_F(Access, SkipsWhatIsNoRecordAtAll) {
  setRecords({"text", 1, PropertyList::Array{}, PropertyList::Dictionary{},
              PropertyList::Dictionary{{"path", "/a"}},
              PropertyList::Dictionary{{"path", "/a"}, {"bookmarkData", "text"}}, record("/c")});
  EXPECT_THAT(launch().openedURLs(), ElementsAre("/c"));
}

TEST_F(Access, TakesAnythingButAnArrayForNoRecords) {
  fakes.sharedDefaults.stored().insert_or_assign("authorizedDirs", "text");
  EXPECT_THAT(launch().openedURLs(), IsEmpty());
  directories->saveAuthorizedURL("/a");
  EXPECT_THAT(recordedPaths(), ElementsAre("/a"));
}

TEST_F(Access, IsStartedToARecordWithoutAPath) {
  auto pathless = record("/a");
  pathless.erase("path");
  setRecords({pathless});
  EXPECT_THAT(launch().openedURLs(), ElementsAre("/a"));
}

TEST_F(Access, CountsADirectoryAsOpenedEvenIfStartingFailed) {
  setRecords({record("/a")});
  fakes.securityScope.refusesToStart = true;
  EXPECT_THAT(launch().openedURLs(), ElementsAre("/a"));
}

TEST_F(Access, LeavesTheSetAsItIsWhenStopped) {
  setRecords({record("/a")});
  launch().stopAccessingURLs();
  EXPECT_THAT(directories->openedURLs(), ElementsAre("/a"));
  EXPECT_FALSE(fakes.securityScope.isAccessible("/a"));
}

TEST_F(Access, StartedAgainWithoutAStopForgetsTheEarlierSet) {
  setRecords({record("/a")});
  launch();
  setRecords({record("/c")});
  directories->startAccessingURLs();
  EXPECT_THAT(directories->openedURLs(), ElementsAre("/c"));
  EXPECT_THAT(fakes.securityScope.stopped, IsEmpty());
  EXPECT_TRUE(fakes.securityScope.isAccessible("/a"));
}

TEST_F(Access, IsHeldOnceForTwoRecordsOfOneDirectory) {
  setRecords({record("/a"), record("/a")});
  EXPECT_THAT(launch().openedURLs(), ElementsAre("/a"));
  EXPECT_EQ(fakes.securityScope.started.size() - fakes.securityScope.stopped.size(), 1U);
  EXPECT_TRUE(fakes.securityScope.isAccessible("/a"));
  directories->stopAccessingURLs();
  EXPECT_EQ(fakes.securityScope.stopped, fakes.securityScope.started);
  EXPECT_FALSE(fakes.securityScope.isAccessible("/a"));
}

TEST_F(Access, TakesUpAndEndsRecordsThatOthersHaveChanged) {
  setRecords({record("/c")});
  launch();
  setRecords({record("/a")});
  directories->recordsDidChange();
  EXPECT_THAT(directories->openedURLs(), ElementsAre("/a"));
  EXPECT_TRUE(fakes.securityScope.isAccessible("/a"));
  EXPECT_FALSE(fakes.securityScope.isAccessible("/c"));
}

TEST_F(Access, ThatAPanelGaveEndsWhenItsRecordIsWithdrawn) {
  launch();
  for (const char* path : {"/a", "/c"}) {
    fakes.securityScope.allowForThisRun(path, SecurityScope::Extent::Folder);
    directories->saveAuthorizedURL(path);
  }
  setRecords({record("/c")});
  directories->restartAccessingURLs();
  EXPECT_TRUE(fakes.securityScope.isAccessible("/a"));
  directories->recordsDidChange();
  EXPECT_FALSE(fakes.securityScope.isAccessible("/a"));
  EXPECT_TRUE(fakes.securityScope.isAccessible("/c"));
}

TEST_F(Access, ThatAPanelGaveAndNobodyCouldRecordLastsForTheRun) {
  fakes.securityScope.unbookmarkable.insert("/a");
  launch();
  fakes.securityScope.allowForThisRun("/a", SecurityScope::Extent::Folder);
  directories->saveAuthorizedURL("/a");
  directories->recordsDidChange();
  EXPECT_TRUE(fakes.securityScope.isAccessible("/a"));
}

TEST_F(Access, ToALocationThatTheUserChoseStaysWhenItsFolderIsWithdrawn) {
  setRecords({record("/a")});
  launch();
  fakes.securityScope.allowForThisRun("/a/new", SecurityScope::Extent::Item);
  setRecords({});
  directories->recordsDidChange();
  EXPECT_FALSE(fakes.securityScope.isAccessible("/a"));
  EXPECT_TRUE(fakes.securityScope.isAccessible("/a/new"));
}

TEST_F(Access, AuthorizedAnewToADirectoryThatTookThePlaceIsRememberedWithoutAChangeOfTheRecord) {
  const PropertyList::Array before{record("/a")};
  setRecords(before);
  fakes.securityScope.removeFolder("/a");
  fakes.securityScope.addFolder("/a");
  EXPECT_THAT(launch().openedURLs(), IsEmpty());
  directories->saveAuthorizedURL("/a");
  EXPECT_THAT(fakes.securityScope.renewed, ElementsAre("/a"));
  EXPECT_EQ(PropertyList(records()), PropertyList(before));
  EXPECT_EQ(stores(), 0);
  EXPECT_THAT(launch().openedURLs(), ElementsAre("/a"));
}

TEST_F(Access, FirstGrantedMakesTheArrayWithOneRecordOfTwoKeys) {
  launch().saveAuthorizedURL("/a");
  const PropertyList::Array expected{record("/a")};
  EXPECT_EQ(PropertyList(records()), PropertyList(expected));
  EXPECT_EQ(stores(), 1);
}

TEST_F(Access, GrantedTwiceToADirectoryWritesNothingTheSecondTime) {
  launch().saveAuthorizedURL("/a");
  directories->saveAuthorizedURL("/a");
  directories->saveAuthorizedURL("/a/");
  EXPECT_THAT(recordedPaths(), ElementsAre("/a"));
  EXPECT_EQ(stores(), 1);
}

TEST_F(Access, KeepsBothGrantsOfADirectoryAndOfItsParentInTheirOrder) {
  launch().saveAuthorizedURL("/a/b");
  directories->saveAuthorizedURL("/a");
  EXPECT_THAT(recordedPaths(), ElementsAre("/a/b", "/a"));
}

TEST_F(Access, KeepsBothGrantsOfADirectoryAndOfOneInItInTheirOrder) {
  launch().saveAuthorizedURL("/a");
  directories->saveAuthorizedURL("/a/b");
  EXPECT_THAT(recordedPaths(), ElementsAre("/a", "/a/b"));
}

TEST_F(Access, ComparesPathsExactly) {
  fakes.securityScope.addFolder("/A");
  launch().saveAuthorizedURL("/a");
  directories->saveAuthorizedURL("/A");
  EXPECT_THAT(recordedPaths(), ElementsAre("/a", "/A"));
}

TEST_F(Access, GrantedToTheRootDirectoryIsRecordedAsASlash) {
  fakes.securityScope.addFolder("/");
  launch().saveAuthorizedURL("/");
  EXPECT_THAT(recordedPaths(), ElementsAre("/"));
}

TEST_F(Access, IsNotRecordedWhenNoBookmarkCanBeMade) {
  fakes.securityScope.unbookmarkable.insert("/a");
  launch().saveAuthorizedURL("/a");
  EXPECT_THAT(records(), IsEmpty());
  EXPECT_EQ(stores(), 0);
  EXPECT_THAT(fakes.userInterface.alerts, IsEmpty());
}

TEST_F(Access, LeavesAllOtherSettingsAndRecordsAsTheyAre) {
  auto odd = record("/c");
  odd.insert_or_assign("note", "of another version");
  setRecords({"text", odd});
  auto before = fakes.sharedDefaults.stored();
  launch().saveAuthorizedURL("/a");
  auto after = fakes.sharedDefaults.stored();
  const PropertyList::Array expected{"text", odd, record("/a")};
  EXPECT_EQ(after.at("authorizedDirs"), PropertyList(expected));
  before.erase("authorizedDirs");
  after.erase("authorizedDirs");
  EXPECT_EQ(PropertyList(after), PropertyList(before));
}

TEST_F(Access, KeepsARecordThatAnotherProcessAddsMeanwhile) {
  launch();
  setRecords({record("/c")});
  directories->saveAuthorizedURL("/a");
  EXPECT_THAT(recordedPaths(), ElementsAre("/c", "/a"));
}

TEST_F(Access, GrantedByAnotherProcessJustNowIsNotRecordedAgain) {
  launch();
  fakes.sharedDefaults.beforeUpdate = [this] { setRecords({record("/a")}); };
  directories->saveAuthorizedURL("/a");
  EXPECT_THAT(recordedPaths(), ElementsAre("/a"));
}

TEST_F(Access, GrantedWithASlashAtTheEndIsRecordedWithoutIt) {
  launch().saveAuthorizedURL("/a/");
  EXPECT_THAT(recordedPaths(), ElementsAre("/a"));
}

TEST_F(Access, ThatCannotBeStoredIsNoReasonForAnAlert) {
  launch();
  fakes.sharedDefaults.setStoreError(Error{ENOSPC});
  directories->saveAuthorizedURL("/a");
  EXPECT_THAT(records(), IsEmpty());
  EXPECT_THAT(fakes.userInterface.alerts, IsEmpty());
}

}  // namespace
}  // namespace quennel::test
