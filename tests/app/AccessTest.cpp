#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/app/AppDelegateTest.h"
#include "tests/support/FakePlatform.h"

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
};

TEST_F(Access, IsStartedToEveryRecordedDirectoryInOrderAtTheEndOfInit) {
  setRecords({record("/c"), record("/a/b"), record("/a")});
  delegate = std::make_unique<AppDelegate>(platformOf(fakes));
  EXPECT_THAT(fakes.securityScope.started, ElementsAre("/c", "/a/b", "/a"));
  EXPECT_THAT(delegate->openedURLs(), UnorderedElementsAre("/a", "/a/b", "/c"));
  EXPECT_TRUE(fakes.securityScope.isAccessible("/c"));
}

TEST_F(Access, EndsWithTheApplicationObjectToADirectoryOfTwoRecords) {
  setRecords({record("/a"), record("/a")});
  launch();
  EXPECT_TRUE(fakes.securityScope.isAccessible("/a"));
  delegate.reset();
  EXPECT_EQ(fakes.securityScope.stopped, fakes.securityScope.started);
  EXPECT_FALSE(fakes.securityScope.isAccessible("/a"));
}

TEST_F(Access, IsStoppedToEveryOpenedDirectoryWhenTheApplicationObjectGoes) {
  setRecords({record("/a"), record("/c")});
  launch();
  delegate.reset();
  EXPECT_THAT(fakes.securityScope.stopped, UnorderedElementsAre("/a", "/c"));
  EXPECT_FALSE(fakes.securityScope.isAccessible("/a"));
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

TEST_F(Access, TakesUpAndEndsRecordsAtOnceWhenAnotherProgramAsksForIt) {
  setRecords({record("/c")});
  launch();
  setRecords({record("/a")});
  EXPECT_TRUE(fakes.actions.activate("restart-access"));
  EXPECT_THAT(delegate->openedURLs(), ElementsAre("/a"));
  EXPECT_FALSE(fakes.securityScope.isAccessible("/c"));
}

TEST_F(Access, IsNotRestartedByOthersOnceTheApplicationTerminates) {
  launch();
  fakes.runLoop.terminate();
  EXPECT_FALSE(fakes.actions.activate("restart-access"));
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

}  // namespace
}  // namespace quennel::test
