#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/AppDelegateTest.h"
#include "tests/support/PrintPropertyList.h"

namespace quennel::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

/// The recorded grants, in the settings as other processes see them.
class Access : public AppDelegateTest {
 protected:
  Access() {
    for (const char* path : {"/a", "/a/b", "/c"}) {
      fakes.securityScope.addFolder(path);
    }
    fakes.sharedDefaults.synchronize();
    _storesBefore = fakes.sharedDefaults.storeCount();
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

 private:
  int _storesBefore = 0;
};

TEST_F(Access, WithoutRecordsOpensNothing) {
  EXPECT_THAT(launch().openedURLs(), IsEmpty());
  EXPECT_THAT(fakes.securityScope.started, IsEmpty());
}

TEST_F(Access, IsStartedToEveryRecordedDirectoryInOrderAtTheEndOfInit) {
  setRecords({record("/c"), record("/a/b"), record("/a")});
  delegate = std::make_unique<AppDelegate>(platformOf(fakes));
  EXPECT_THAT(fakes.securityScope.started, ElementsAre("/c", "/a/b", "/a"));
  EXPECT_THAT(delegate->openedURLs(), UnorderedElementsAre("/a", "/a/b", "/c"));
  EXPECT_TRUE(fakes.securityScope.isAccessible("/c"));
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
    delegate.reset();
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
  delegate->saveAuthorizedURL("/a");
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

TEST_F(Access, IsStartedAndStoppedOnceForTwoRecordsOfOneDirectory) {
  setRecords({record("/a"), record("/a")});
  launch();
  EXPECT_THAT(fakes.securityScope.started, ElementsAre("/a"));
  delegate.reset();
  EXPECT_THAT(fakes.securityScope.stopped, ElementsAre("/a"));
  EXPECT_FALSE(fakes.securityScope.isAccessible("/a"));
}

TEST_F(Access, IsStoppedToEveryOpenedDirectoryWhenTheApplicationObjectGoes) {
  setRecords({record("/a"), record("/c")});
  launch();
  delegate.reset();
  EXPECT_THAT(fakes.securityScope.stopped, UnorderedElementsAre("/a", "/c"));
  EXPECT_FALSE(fakes.securityScope.isAccessible("/a"));
}

TEST_F(Access, LeavesTheSetAsItIsWhenStopped) {
  setRecords({record("/a")});
  launch().stopAccessingURLs();
  EXPECT_THAT(delegate->openedURLs(), ElementsAre("/a"));
  EXPECT_FALSE(fakes.securityScope.isAccessible("/a"));
}

TEST_F(Access, StartedAgainWithoutAStopForgetsTheEarlierSet) {
  setRecords({record("/a")});
  launch();
  setRecords({record("/c")});
  delegate->startAccessingURLs();
  EXPECT_THAT(delegate->openedURLs(), ElementsAre("/c"));
  EXPECT_THAT(fakes.securityScope.stopped, IsEmpty());
}

TEST_F(Access, IsStoppedAndStartedOnceForEveryRecordWhenAnyVolumeIsMounted) {
  setRecords({record("/a"), record("/c")});
  launch();
  fakes.volumeEvents.mountVolume();
  EXPECT_THAT(fakes.securityScope.stopped, UnorderedElementsAre("/a", "/c"));
  EXPECT_THAT(fakes.securityScope.started, ElementsAre("/a", "/c", "/a", "/c"));
  fakes.volumeEvents.unmountVolume();
  EXPECT_EQ(fakes.securityScope.started.size(), 6U);
  EXPECT_EQ(fakes.securityScope.stopped.size(), 4U);
  EXPECT_TRUE(fakes.securityScope.isAccessible("/a"));
}

TEST_F(Access, BeginsWhenTheVolumeOfARecordIsMounted) {
  setRecords({record("/c")});
  fakes.securityScope.hide("/c");
  EXPECT_THAT(launch().openedURLs(), IsEmpty());
  fakes.securityScope.showAt("/media/c");
  fakes.volumeEvents.mountVolume();
  EXPECT_THAT(delegate->openedURLs(), ElementsAre("/media/c"));
  EXPECT_TRUE(fakes.securityScope.isAccessible("/media/c"));
}

TEST_F(Access, EndsWhenTheVolumeOfARecordIsUnmounted) {
  setRecords({record("/a"), record("/c")});
  launch();
  fakes.securityScope.hide("/c");
  fakes.volumeEvents.unmountVolume();
  EXPECT_THAT(delegate->openedURLs(), ElementsAre("/a"));
  EXPECT_FALSE(fakes.securityScope.isAccessible("/c"));
  EXPECT_EQ(records().size(), 2U);
}

TEST_F(Access, IsNotRestartedByVolumesOnceTheApplicationTerminates) {
  setRecords({record("/a")});
  launch();
  EXPECT_EQ(fakes.volumeEvents.observerCount(), 1U);
  fakes.runLoop.terminate();
  fakes.volumeEvents.mountVolume();
  EXPECT_THAT(fakes.securityScope.started, ElementsAre("/a"));
  EXPECT_EQ(fakes.volumeEvents.observerCount(), 0U);
}

TEST_F(Access, TakesUpRecordsOfOtherProcessesAtTheNextVolumeEventOnly) {
  launch();
  setRecords({record("/a")});
  command("net.brellow.QuennelHelper", "fileTemplates");
  command("net.brellow.QuennelHelper", "authorizedDirs");
  EXPECT_THAT(delegate->openedURLs(), IsEmpty());
  fakes.volumeEvents.mountVolume();
  EXPECT_THAT(delegate->openedURLs(), ElementsAre("/a"));
}

TEST_F(Access, FirstGrantedMakesTheArrayWithOneRecordOfTwoKeys) {
  launch().saveAuthorizedURL("/a");
  const PropertyList::Array expected{record("/a")};
  EXPECT_EQ(PropertyList(records()), PropertyList(expected));
  EXPECT_EQ(stores(), 1);
}

TEST_F(Access, GrantedTwiceToADirectoryWritesNothingTheSecondTime) {
  launch().saveAuthorizedURL("/a");
  delegate->saveAuthorizedURL("/a");
  delegate->saveAuthorizedURL("/a/");
  EXPECT_THAT(recordedPaths(), ElementsAre("/a"));
  EXPECT_EQ(stores(), 1);
}

TEST_F(Access, KeepsBothGrantsOfADirectoryAndOfItsParentInTheirOrder) {
  launch().saveAuthorizedURL("/a/b");
  delegate->saveAuthorizedURL("/a");
  EXPECT_THAT(recordedPaths(), ElementsAre("/a/b", "/a"));
}

TEST_F(Access, KeepsBothGrantsOfADirectoryAndOfOneInItInTheirOrder) {
  launch().saveAuthorizedURL("/a");
  delegate->saveAuthorizedURL("/a/b");
  EXPECT_THAT(recordedPaths(), ElementsAre("/a", "/a/b"));
}

TEST_F(Access, ComparesPathsExactly) {
  fakes.securityScope.addFolder("/A");
  launch().saveAuthorizedURL("/a");
  delegate->saveAuthorizedURL("/A");
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

TEST_F(Access, GrantedInThisRunIsNotOpenedUntilARestart) {
  launch().saveAuthorizedURL("/a");
  EXPECT_THAT(delegate->openedURLs(), IsEmpty());
  EXPECT_THAT(fakes.securityScope.started, IsEmpty());
  fakes.volumeEvents.mountVolume();
  EXPECT_THAT(delegate->openedURLs(), ElementsAre("/a"));
  delegate.reset();
  EXPECT_THAT(launch().openedURLs(), ElementsAre("/a"));
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
  delegate->saveAuthorizedURL("/a");
  EXPECT_THAT(recordedPaths(), ElementsAre("/c", "/a"));
}

TEST_F(Access, ThatCannotBeStoredIsNoReasonForAnAlert) {
  launch();
  fakes.sharedDefaults.setStoreError(Error{28, "No space left on device"});
  delegate->saveAuthorizedURL("/a");
  EXPECT_THAT(records(), IsEmpty());
  EXPECT_THAT(fakes.userInterface.alerts, IsEmpty());
}

}  // namespace
}  // namespace quennel::test
