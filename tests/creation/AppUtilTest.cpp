#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "creation/AppUtil.h"
#include "platform/DistributedNotificationCenter.h"
#include "platform/linux/files/PosixFileManager.h"
#include "tests/support/FakeDesktop.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

AppUtil::Services servicesWith(FakeDesktop& fakes, FileManager& files) {
  return {.fileManager = files,
          .securityScope = fakes.securityScope,
          .notifications = fakes.distributedNotificationCenter,
          .userInterface = fakes.userInterface};
}

class AppUtilTest : public ::testing::Test {
 protected:
  std::uint16_t mode(const std::string& path) {
    return files.attributesOfItemAtPath(path)->posixPermissions.value();
  }
  std::optional<std::string> contents(const std::string& path) {
    return files.contentsAtPath(path);
  }
  FileAttributes::Date date(const std::string& path) {
    return files.attributesOfItemAtPath(path)->modificationDate.value();
  }

  FakeDesktop fakes;
  FakeFileManager& files = fakes.fileManager;
  AppUtil util{servicesWith(fakes, fakes.fileManager)};
  Error error;
};

using NewPath = AppUtilTest;

TEST_F(NewPath, AFreePathIsReturnedAsItIs) {
  files.addDirectory("/d");
  EXPECT_EQ(util.genNewPathForPath("/d/a.txt"), "/d/a.txt");
  EXPECT_EQ(util.genNewPathForPath("/d//a.txt"), "/d//a.txt");
}

TEST_F(NewPath, ATakenPathGetsTheFirstFreeNumber) {
  files.addFile("/d/a.txt");
  EXPECT_EQ(util.genNewPathForPath("/d/a.txt"), "/d/a-1.txt");
  files.addFile("/d/a-1.txt");
  EXPECT_EQ(util.genNewPathForPath("/d/a.txt"), "/d/a-2.txt");
}

TEST_F(NewPath, ANameWithoutExtensionGetsTheNumberAtItsEnd) {
  files.addFile("/d/Makefile");
  files.addFile("/d/.bashrc");
  EXPECT_EQ(util.genNewPathForPath("/d/Makefile"), "/d/Makefile-1");
  EXPECT_EQ(util.genNewPathForPath("/d/.bashrc"), "/d/.bashrc-1");
}

TEST_F(NewPath, OnlyTheLastExtensionStaysBehindTheNumber) {
  files.addFile("/d/a.tar.gz");
  EXPECT_EQ(util.genNewPathForPath("/d/a.tar.gz"), "/d/a.tar-1.gz");
}

TEST_F(NewPath, ANumberedNameGetsANumberOfItsOwn) {
  files.addFile("/d/a-1.txt");
  EXPECT_EQ(util.genNewPathForPath("/d/a-1.txt"), "/d/a-1-1.txt");
}

TEST_F(NewPath, AFolderTakesAPathLikeAFile) {
  files.addDirectory("/d/a.txt");
  files.addDirectory("/d/a-1.txt");
  EXPECT_EQ(util.genNewPathForPath("/d/a.txt"), "/d/a-2.txt");
}

TEST_F(NewPath, ADanglingLinkLeavesAPathFree) {
  files.addLink("/d/a.txt", "nowhere");
  EXPECT_EQ(util.genNewPathForPath("/d/a.txt"), "/d/a.txt");
}

TEST_F(NewPath, IsInTheFolderOfTheTakenOne) {
  files.addFile("/a.txt");
  files.addFile("/d.d/a");
  EXPECT_EQ(util.genNewPathForPath("/a.txt"), "/a-1.txt");
  EXPECT_EQ(util.genNewPathForPath("/d.d/a"), "/d.d/a-1");
}

using Copying = AppUtilTest;

TEST_F(Copying, AnItemToItselfFailsAndTouchesNothing) {
  files.addFile("/d/x", "text");
  EXPECT_FALSE(util.copyItemAtPath("/d/x", "/d/./x", &error));
  EXPECT_FALSE(util.copyItemAtPath("/d/x", "/d//e/../x/", &error));
  EXPECT_EQ(contents("/d/x"), "text");
  EXPECT_THAT(files.calls, IsEmpty());
}

TEST_F(Copying, AMissingSourceCountsAsCopiedAndRemovesTheDestination) {
  files.addFile("/d/old");
  EXPECT_TRUE(util.copyItemAtPath("/missing", "/d/old", &error));
  EXPECT_FALSE(files.fileExistsAtPath("/d/old"));
  EXPECT_TRUE(util.copyItemAtPath("/missing", "/d/new", &error));
  EXPECT_FALSE(files.fileExistsAtPath("/d/new"));
}

TEST_F(Copying, AFileKeepsItsContentsAndPermissions) {
  files.addFile("/t/script", "#!", 0755);
  EXPECT_TRUE(util.copyItemAtPath("/t/script", "/t/copy"));
  EXPECT_EQ(contents("/t/copy"), "#!");
  EXPECT_EQ(mode("/t/copy"), 0755);
}

TEST_F(Copying, AFolderGivesTheSameTreeWithThePermissionsOfWhatIsInside) {
  files.addDirectory("/t/inner/deeper");
  files.addDirectory("/t/private", 0700);
  files.addFile("/t/inner/deeper/script", "#!", 0755);
  files.addFile("/t/secret", "s", 0600);
  EXPECT_TRUE(util.copyItemAtPath("/t", "/new/parent/copy", &error));
  EXPECT_EQ(contents("/new/parent/copy/inner/deeper/script"), "#!");
  EXPECT_EQ(mode("/new/parent/copy/inner/deeper/script"), 0755);
  EXPECT_EQ(mode("/new/parent/copy/secret"), 0600);
  EXPECT_EQ(mode("/new/parent/copy/private"), 0700);
}

TEST_F(Copying, TheTopFolderDoesNotGetThePermissionsOfItsSource) {
  files.addDirectory("/t", 0700);
  EXPECT_TRUE(util.copyItemAtPath("/t", "/copy"));
  EXPECT_EQ(mode("/copy"), 0755);
}

TEST_F(Copying, DatesAreNotCarriedOver) {
  files.addFile("/t");
  files.now += std::chrono::hours(1);
  EXPECT_TRUE(util.copyItemAtPath("/t", "/copy"));
  EXPECT_EQ(date("/copy"), files.now);
}

TEST_F(Copying, ReplacesTheDestination) {
  files.addFile("/t", "new");
  files.addFile("/d/inner/old");
  EXPECT_TRUE(util.copyItemAtPath("/t", "/d", &error));
  EXPECT_EQ(contents("/d"), "new");
}

TEST_F(Copying, ADestinationThatCannotBeRemovedIsReportedAndStays) {
  files.addFile("/t", "new");
  files.addFile("/d", "old");
  files.failNext("removeItemAtPath", {EACCES, Error::Kind::Removing, "/d"});
  EXPECT_FALSE(util.copyItemAtPath("/t", "/d", &error));
  EXPECT_EQ(error, (Error{EACCES, Error::Kind::Removing, "/d"}));
  EXPECT_EQ(contents("/d"), "old");
}

TEST_F(Copying, AFileThatCannotBeReadOrWrittenFailsWithoutAnError) {
  files.addFile("/t", "new");
  files.failNext("contentsAtPath");
  EXPECT_FALSE(util.copyItemAtPath("/t", "/d", &error));
  files.failNext("writeContents");
  EXPECT_FALSE(util.copyItemAtPath("/t", "/d", &error));
  EXPECT_EQ(error.code, 0);
  EXPECT_FALSE(files.fileExistsAtPath("/d"));
}

TEST_F(Copying, AFailureInsideAFolderStopsItAndLeavesWhatWasCopied) {
  files.addFile("/t/a", "1");
  files.addFile("/t/b", "2");
  files.addFile("/t/c", "3");
  files.failNext("writeContents", {ENOSPC, Error::Kind::Creating, "/d/inner"}, 1);
  EXPECT_FALSE(util.copyItemAtPath("/t", "/d", &error));
  EXPECT_EQ(contents("/d/a"), "1");
  EXPECT_FALSE(files.fileExistsAtPath("/d/b"));
  EXPECT_FALSE(files.fileExistsAtPath("/d/c"));
  EXPECT_EQ(error.code, 0);
}

TEST_F(Copying, AFolderInsideThatCannotBeMadeIsReported) {
  files.addDirectory("/t/inner");
  files.failNext("createDirectoryAtPath", {ENOSPC, Error::Kind::Creating, "/d/inner"}, 1);
  EXPECT_FALSE(util.copyItemAtPath("/t", "/d", &error));
  EXPECT_EQ(error, (Error{ENOSPC, Error::Kind::Creating, "/d/inner"}));
}

TEST_F(Copying, PermissionsThatCannotBeSetAreNoFailure) {
  files.addFile("/t", "text");
  files.failNext("setAttributes");
  EXPECT_TRUE(util.copyItemAtPath("/t", "/d", &error));
  EXPECT_EQ(error.code, 0);
}

TEST_F(Copying, AFolderIntoItselfComesToAnEnd) {
  files.addFile("/t/a", "1");
  EXPECT_TRUE(util.copyItemAtPath("/t", "/t/inner"));
  EXPECT_EQ(contents("/t/inner/a"), "1");
}

TEST_F(Copying, PermissionsAloneNeedBothItems) {
  files.addFile("/a", "", 0751);
  files.addFile("/b", "", 0600);
  EXPECT_TRUE(util.copyFilePermissionsAtPath("/a", "/b"));
  EXPECT_EQ(mode("/b"), 0751);
  EXPECT_FALSE(util.copyFilePermissionsAtPath("/missing", "/b"));
  EXPECT_FALSE(util.copyFilePermissionsAtPath("/a", "/missing"));
}

using ExecuteBits = AppUtilTest;

TEST_F(ExecuteBits, AreSetForOwnerGroupAndOthersTogether) {
  files.addFile("/a", "", 0644);
  files.addFile("/b", "", 0700);
  EXPECT_TRUE(util.makeItemExecutableAtPath("/a"));
  EXPECT_TRUE(util.makeItemExecutableAtPath("/b"));
  EXPECT_EQ(mode("/a"), 0755);
  EXPECT_EQ(mode("/b"), 0711);
}

TEST_F(ExecuteBits, AreRemovedAndAllOtherBitsKept) {
  files.addFile("/a", "", 04755);
  EXPECT_TRUE(util.removeExecutableFlagAtPath("/a"));
  EXPECT_EQ(mode("/a"), 04644);
}

TEST_F(ExecuteBits, FollowTheFlag) {
  files.addFile("/a", "", 0644);
  EXPECT_TRUE(util.makeItemExecutable(true, "/a"));
  EXPECT_EQ(mode("/a"), 0755);
  EXPECT_TRUE(util.makeItemExecutable(false, "/a"));
  EXPECT_EQ(mode("/a"), 0644);
}

TEST_F(ExecuteBits, OfAFolderOrOfNothingAreRefused) {
  files.addDirectory("/d", 0700);
  EXPECT_FALSE(util.makeItemExecutableAtPath("/d"));
  EXPECT_FALSE(util.removeExecutableFlagAtPath("/d"));
  EXPECT_FALSE(util.makeItemExecutableAtPath("/missing"));
  EXPECT_EQ(mode("/d"), 0700);
  EXPECT_THAT(files.calls, IsEmpty());
}

TEST_F(ExecuteBits, FailWhenAttributesCannotBeReadOrSet) {
  files.addFile("/a", "", 0644);
  files.failNext("attributesOfItemAtPath");
  EXPECT_FALSE(util.makeItemExecutableAtPath("/a"));
  files.failNext("setAttributes");
  EXPECT_FALSE(util.makeItemExecutableAtPath("/a"));
  EXPECT_EQ(mode("/a"), 0644);
}

using Writability = AppUtilTest;

TEST_F(Writability, OfNoPathIsNo) {
  EXPECT_FALSE(util.isWritableFileAtPath(std::nullopt));
  EXPECT_THAT(files.askedWritable, IsEmpty());
}

TEST_F(Writability, OfAMissingPathIsThatOfItsNearestAncestor) {
  EXPECT_TRUE(util.isWritableFileAtPath("/missing/deeper/file"));
  files.addDirectory("/d");
  EXPECT_TRUE(util.isWritableFileAtPath("/d/missing/file"));
  EXPECT_THAT(files.askedWritable, ElementsAre("/", "/d/"));
}

TEST_F(Writability, OfAMissingItemOfOneLetterInTheRootFolderIsThatOfTheRootFolder) {
  EXPECT_TRUE(util.isWritableFileAtPath("/x"));
  EXPECT_THAT(files.askedWritable, ElementsAre("/"));
}

TEST_F(Writability, OfAFolderIsAskedWithASlash) {
  files.addDirectory("/d");
  EXPECT_TRUE(util.isWritableFileAtPath("/d"));
  EXPECT_TRUE(util.isWritableFileAtPath("/d/"));
  EXPECT_THAT(files.askedWritable, ElementsAre("/d/", "/d/"));
}

TEST_F(Writability, OfAFileIsAskedAsItIs) {
  files.addFile("/d/a", "", 0444);
  EXPECT_FALSE(util.isWritableFileAtPath("/d/a"));
  EXPECT_THAT(files.askedWritable, ElementsAre("/d/a", "/d/a"));
}

TEST_F(Writability, IsTriedOnceMoreWithoutPercentEscapes) {
  files.addDirectory("/d/a%20b", 0555);
  EXPECT_FALSE(util.isWritableFileAtPath("/d/a%20b"));
  files.addDirectory("/d/a b");
  EXPECT_TRUE(util.isWritableFileAtPath("/d/a%20b"));
  EXPECT_THAT(files.askedWritable, ElementsAre("/d/a%20b/", "/d/a b/", "/d/a%20b/", "/d/a b/"));
}

TEST_F(Writability, OfAPathWithABrokenEscapeIsDecidedAsWritten) {
  files.addDirectory("/100%", 0555);
  EXPECT_FALSE(util.isWritableFileAtPath("/100%"));
  EXPECT_THAT(files.askedWritable, ElementsAre("/100%/"));
}

TEST_F(Writability, OfARelativePathComesToAnEnd) {
  EXPECT_FALSE(util.isWritableFileAtPath("missing/file"));
  EXPECT_FALSE(util.isWritableFileAtPath("m"));
  EXPECT_FALSE(util.isWritableFileAtPath(""));
  EXPECT_THAT(files.askedWritable, ElementsAre("", "", "m", "m", "", ""));
}

TEST_F(Writability, ChangesWithTheAccessThatIsHeld) {
  files.addDirectory("/Volumes/Data");
  files.protectedPaths.insert("/Volumes/Data");
  EXPECT_FALSE(util.isWritableFileAtPath("/Volumes/Data"));
  files.protectedPaths.clear();
  EXPECT_TRUE(util.isWritableFileAtPath("/Volumes/Data"));
}

class Dates : public AppUtilTest {
 protected:
  const FileAttributes::Date newDate{std::chrono::hours(1000)};
};

TEST_F(Dates, OfAFileAreSetAndItsPermissionsKept) {
  files.addFile("/a", "", 0640);
  util.updateDateForFile(newDate, "/a");
  EXPECT_EQ(date("/a"), newDate);
  EXPECT_EQ(mode("/a"), 0640);
}

TEST_F(Dates, OfAFileAreWrittenThoughItsAttributesCannotBeRead) {
  files.addFile("/a", "", 0640);
  files.failNext("attributesOfItemAtPath");
  util.updateDateForFile(newDate, "/a");
  EXPECT_EQ(date("/a"), newDate);
}

TEST_F(Dates, OfAFolderAreThoseOfAllItHolds) {
  files.addFile("/d/inner/file");
  files.addFile("/d/other");
  files.addFile("/beside");
  util.updateDateForPath(newDate, "/d");
  for (const char* path : {"/d", "/d/inner", "/d/inner/file", "/d/other"}) {
    EXPECT_EQ(date(path), newDate) << path;
  }
  EXPECT_NE(date("/beside"), newDate);
  EXPECT_EQ(files.calls.front(), "setAttributes /d");
}

TEST_F(Dates, OfAFolderAloneLeaveWhatItHolds) {
  files.addFile("/d/file");
  util.updateDateForFile(newDate, "/d");
  EXPECT_EQ(date("/d"), newDate);
  EXPECT_NE(date("/d/file"), newDate);
}

TEST_F(Dates, OfNothingAreNotSet) {
  util.updateDateForPath(newDate, "/missing");
  EXPECT_THAT(files.calls, IsEmpty());
}

TEST_F(Dates, GoOnAfterAFailure) {
  files.addFile("/d/file");
  files.failNext("setAttributes");
  util.updateDateForPath(newDate, "/d");
  EXPECT_EQ(date("/d/file"), newDate);
}

/// Records what is posted, and how.
class RecordingCenter : public DistributedNotificationCenter {
 public:
  struct Post {
    Notification notification;
    bool deliverImmediately;
  };
  std::vector<Post> posts;

  std::unique_ptr<Registration> addObserver(const std::string&, Notification::Handler) override {
    return nullptr;
  }
  void postNotification(const Notification& notification, bool deliverImmediately) override {
    posts.push_back({notification, deliverImmediately});
  }
};

TEST_F(AppUtilTest, ARefreshIsPostedAtOnceUnderTheNameOfTheSharedSettings) {
  RecordingCenter center;
  AppUtil({.fileManager = files,
           .securityScope = fakes.securityScope,
           .notifications = center,
           .userInterface = fakes.userInterface})
      .postRefreshNotification("/d/a.txt");
  ASSERT_EQ(center.posts.size(), 1U);
  const Notification& posted = center.posts.front().notification;
  EXPECT_EQ(posted.name, "Q4T7N2W9X5.net.brellow.Quennel");
  EXPECT_EQ(posted.object, "/d/a.txt");
  EXPECT_TRUE(posted.userInfo.empty());
  EXPECT_TRUE(center.posts.front().deliverImmediately);
}

TEST_F(AppUtilTest, AFileTypeIsDescribedByItsExtension) {
  fakes.userInterface.typeDescriptions["txt"] = "plain text document";
  EXPECT_EQ(util.humanReadableFileTypeForFileExtension("txt"), "plain text document");
  EXPECT_EQ(util.humanReadableFileTypeForFileExtension("nothing"), std::nullopt);
}

TEST_F(AppUtilTest, OnlyAFolderThatExistsIsADirectory) {
  files.addFile("/d/file");
  files.addLink("/link", "d");
  EXPECT_TRUE(util.isDir("/d"));
  EXPECT_TRUE(util.isDir("/link"));
  EXPECT_FALSE(util.isDir("/d/file"));
  EXPECT_FALSE(util.isDir("/missing"));
}

TEST_F(AppUtilTest, AnAlertShowsItsTextsAndStyleWithTheDefaultButton) {
  util.showAlert("Title!", "Message.", AlertStyle::Critical);
  ASSERT_EQ(fakes.userInterface.alerts.size(), 1U);
  const Alert& alert = fakes.userInterface.alerts.front();
  EXPECT_EQ(alert.messageText, "Title!");
  EXPECT_EQ(alert.informativeText, "Message.");
  EXPECT_EQ(alert.alertStyle, AlertStyle::Critical);
  EXPECT_THAT(alert.buttons, IsEmpty());
}

TEST_F(AppUtilTest, AnAlertWithoutAStyleIsInformational) {
  util.showAlert("Title!", std::nullopt);
  ASSERT_EQ(fakes.userInterface.alerts.size(), 1U);
  EXPECT_EQ(fakes.userInterface.alerts.front().alertStyle, AlertStyle::Informational);
  EXPECT_EQ(fakes.userInterface.alerts.front().informativeText, std::nullopt);
}

TEST_F(AppUtilTest, AnAlertMayHaveNoTextAtAll) {
  util.showAlert(std::nullopt, std::nullopt, AlertStyle::Critical);
  ASSERT_EQ(fakes.userInterface.alerts.size(), 1U);
  EXPECT_EQ(fakes.userInterface.alerts.front().messageText, std::nullopt);
}

/// The same operations on real files.
class AppUtilOnDisk : public ::testing::Test {
 protected:
  std::string at(const std::string& name) { return folder / name; }
  void write(const std::string& name, const std::string& contents, std::uint16_t mode = 0644) {
    ASSERT_TRUE(files.writeContents(contents, at(name)));
    ASSERT_TRUE(files.setAttributes({.posixPermissions = mode}, at(name)));
  }
  std::uint16_t mode(const std::string& name) {
    return files.attributesOfItemAtPath(at(name))->posixPermissions.value();
  }

  TemporaryDirectory folder;
  PosixFileManager posixFiles;
  FileManager& files = posixFiles;
  FakeDesktop fakes;
  AppUtil util{servicesWith(fakes, files)};
};

TEST_F(AppUtilOnDisk, ATakenPathGetsTheFirstFreeNumber) {
  EXPECT_EQ(util.genNewPathForPath(at("a.tar.gz")), at("a.tar.gz"));
  write("a.tar.gz", "");
  write("a.tar-1.gz", "");
  EXPECT_EQ(util.genNewPathForPath(at("a.tar.gz")), at("a.tar-2.gz"));
}

TEST_F(AppUtilOnDisk, AnItemCopiedToItselfIsNotTouched) {
  write("x", "text");
  EXPECT_FALSE(util.copyItemAtPath(at("x"), at("./x")));
  EXPECT_EQ(files.contentsAtPath(at("x")), "text");
}

TEST_F(AppUtilOnDisk, AMissingSourceCountsAsCopiedAndRemovesTheDestination) {
  ASSERT_TRUE(files.createDirectoryAtPath(at("old/inner"), true));
  EXPECT_TRUE(util.copyItemAtPath(at("missing"), at("old")));
  EXPECT_FALSE(files.fileExistsAtPath(at("old")));
}

TEST_F(AppUtilOnDisk, AFolderIsCopiedWithThePermissionsOfWhatIsInside) {
  ASSERT_TRUE(files.createDirectoryAtPath(at("t/inner"), true));
  write("t/inner/script", "#!", 0755);
  EXPECT_TRUE(util.copyItemAtPath(at("t"), at("new/copy")));
  EXPECT_EQ(files.contentsAtPath(at("new/copy/inner/script")), "#!");
  EXPECT_EQ(mode("new/copy/inner/script"), 0755);
}

TEST_F(AppUtilOnDisk, ExecuteBitsAreSetAndRemovedTogether) {
  write("a", "", 0644);
  write("b", "", 04755);
  EXPECT_TRUE(util.makeItemExecutableAtPath(at("a")));
  EXPECT_TRUE(util.removeExecutableFlagAtPath(at("b")));
  EXPECT_EQ(mode("a"), 0755);
  EXPECT_EQ(mode("b"), 04644);
}

TEST_F(AppUtilOnDisk, WritabilityIsThatOfTheNearestAncestor) {
  EXPECT_TRUE(util.isWritableFileAtPath(at("missing/deeper/file")));
  EXPECT_TRUE(util.isWritableFileAtPath(folder.path()));
}

TEST_F(AppUtilOnDisk, DatesReachEverythingInAFolder) {
  ASSERT_TRUE(files.createDirectoryAtPath(at("d/inner"), true));
  write("d/inner/file", "");
  const FileAttributes::Date date{std::chrono::hours(1000)};
  util.updateDateForPath(date, at("d"));
  for (const char* name : {"d", "d/inner", "d/inner/file"}) {
    EXPECT_EQ(files.attributesOfItemAtPath(at(name))->modificationDate, date) << name;
  }
}

}  // namespace
}  // namespace quennel::test
