#include <cerrno>

#include "tests/support/CreationRoom.h"
#include "tests/support/DesktopTest.h"

namespace quennel::test {
namespace {

class DirectCreation : public DesktopTest {
 protected:
  void make(const PropertyList::Dictionary& record, const std::string& dir = "/d") {
    room.creation.makeFileAtDir(dir, record);
  }
  std::uint16_t mode(const std::string& path) {
    return fakes.fileManager.attributesOfItemAtPath(path)->posixPermissions.value();
  }
  void setMode(const std::string& path, std::uint16_t mode) {
    fakes.fileManager.setAttributes({.posixPermissions = mode}, path);
  }
  void switchOn(const std::vector<std::string>& keys) {
    for (const auto& key : keys) {
      fakes.sharedDefaults.setObject(true, key);
    }
  }

  CreationRoom room{fakes};
};

TEST_F(DirectCreation, EntersTheFolderOnceAndLeavesItAgain) {
  room.creation.createFileAtDir("/d", templateRecord("untitled", "txt"));
  EXPECT_TRUE(exists("/d/untitled.txt"));
  EXPECT_EQ(fakes.securityScope.entered, std::vector<std::string>{"/d"});
  EXPECT_EQ(fakes.securityScope.enteredNow, 0);
}

TEST_F(DirectCreation, ATakenNameGetsANumber) {
  fakes.fileManager.addFile("/d/untitled.txt", "old");
  make(templateRecord("untitled", "txt"));
  EXPECT_EQ(fakes.fileManager.contentsAtPath("/d/untitled-1.txt"), "Dear reader");
  EXPECT_EQ(fakes.fileManager.contentsAtPath("/d/untitled.txt"), "old");
}

TEST_F(DirectCreation, WithoutASuffixTheNameIsThePrefixAlone) {
  auto record = templateRecord("untitled", "txt");
  record.insert_or_assign("suffix", "");
  make(record);
  record.erase("suffix");
  room.creation.makeFileAtDir("/d", record);
  EXPECT_TRUE(exists("/d/untitled"));
  EXPECT_TRUE(exists("/d/untitled-1"));
}

TEST_F(DirectCreation, AnExecutableTemplateGetsAllExecuteBits) {
  auto record = templateRecord("untitled", "txt");
  record.insert_or_assign("executable", true);
  setMode("/templates/untitled.txt", 0644);
  make(record);
  EXPECT_EQ(mode("/d/untitled.txt"), 0755);
}

TEST_F(DirectCreation, AnyOtherTemplateLosesItsExecuteBits) {
  setMode("/templates/untitled.txt", 0755);
  make(templateRecord("untitled", "txt"));
  EXPECT_EQ(mode("/d/untitled.txt"), 0644);
}

TEST_F(DirectCreation, TheNewFileCarriesTheMomentOfItsCreation) {
  fakes.fileManager.setAttributes({.modificationDate = FileAttributes::Date(1h)},
                                  "/templates/untitled.txt");
  const auto before = std::chrono::system_clock::now();
  make(templateRecord("untitled", "txt"));
  const auto attributes = fakes.fileManager.attributesOfItemAtPath("/d/untitled.txt");
  EXPECT_GE(attributes->modificationDate.value(), before);
  EXPECT_LE(attributes->modificationDate.value(), std::chrono::system_clock::now());
}

TEST_F(DirectCreation, ExecuteBitsComeFirstAndThenOneDateForCreationAndModification) {
  make(templateRecord("untitled", "txt"));
  const auto& set = fakes.fileManager.attributesSet;
  ASSERT_EQ(set.size(), 2u);
  EXPECT_TRUE(set[0].posixPermissions);
  EXPECT_FALSE(set[0].creationDate || set[0].modificationDate);
  EXPECT_FALSE(set[1].posixPermissions);
  EXPECT_TRUE(set[1].modificationDate);
  EXPECT_EQ(set[1].creationDate, set[1].modificationDate);
}

TEST_F(DirectCreation, CopyExecuteBitsDateRevealSoundAndOpenFollowInThatOrder) {
  switchOn({"openFileOnCreation", "playSound", "showFileOnCreation"});
  make(templateRecord("untitled", "txt"));
  EXPECT_EQ(fakes.log.calls(),
            (std::vector<std::string>{"copyItemAtPath", "setAttributes", "setAttributes", "reveal",
                                      "sound", "open"}));
  EXPECT_EQ(fakes.workspace.revealed.front(), std::vector<std::string>{"/d/untitled.txt"});
  EXPECT_EQ(fakes.sound.played.front(), "sound");
  EXPECT_EQ(fakes.workspace.opened.front(), "/d/untitled.txt");
}

TEST_F(DirectCreation, EachSwitchIsReadWhenItsTurnComes) {
  fakes.log.during = [this](const std::string& call) {
    const auto set = [this](const char* key, bool on) { fakes.sharedDefaults.setObject(on, key); };
    call == "copyItemAtPath" ? set("showFileOnCreation", true) : void();
    call == "reveal" ? set("playSound", true) : void();
    call == "sound" ? set("openFileOnCreation", true) : void();
  };
  make(templateRecord("untitled", "txt"));
  EXPECT_EQ(fakes.log.calls(),
            (std::vector<std::string>{"copyItemAtPath", "setAttributes", "setAttributes", "reveal",
                                      "sound", "open"}));
}

TEST_F(DirectCreation, NothingFollowsThatIsNotSwitchedOn) {
  make(templateRecord("untitled", "txt"));
  EXPECT_EQ(fakes.log.calls(),
            (std::vector<std::string>{"copyItemAtPath", "setAttributes", "setAttributes"}));
}

TEST_F(DirectCreation, AFileMadeOnTheDesktopIsNotRevealed) {
  fakes.fileManager.loginName = "me";
  fakes.fileManager.addDirectory("/Users/me/Desktop/Sub");
  switchOn({"showFileOnCreation"});
  make(templateRecord("untitled", "txt"), "/Users/me/Desktop");
  EXPECT_TRUE(fakes.workspace.revealed.empty());
  room.creation.makeFileAtDir("/Users/me/Desktop/Sub", templateRecord("untitled", "txt"));
  EXPECT_EQ(fakes.workspace.revealed.front(),
            std::vector<std::string>{"/Users/me/Desktop/Sub/untitled.txt"});
}

TEST_F(DirectCreation, TheDesktopIsTheFolderItselfAndWhatIsDirectlyInIt) {
  fakes.fileManager.loginName = "me";
  EXPECT_TRUE(room.creation.isDesktopDir("/Users/me/Desktop"));
  EXPECT_TRUE(room.creation.isDesktopDir("/Users/me/Desktop/a.txt"));
  EXPECT_FALSE(room.creation.isDesktopDir("/Users/me/Desktop/Sub/a.txt"));
  EXPECT_FALSE(room.creation.isDesktopDir("/Users/me/desktop"));
  EXPECT_FALSE(room.creation.isDesktopDir("/Users/other/Desktop"));
}

TEST_F(DirectCreation, AFailedCopyIsReportedAfterThreeTenthsOfASecond) {
  make(templateRecord("missing", "txt"));
  fakes.runLoop.advance(299ms);
  EXPECT_TRUE(fakes.userInterface.alerts.empty());
  fakes.runLoop.advance(1ms);
  ASSERT_EQ(fakes.userInterface.alerts.size(), 1u);
  EXPECT_EQ(fakes.userInterface.alerts[0].messageText, "Error creating file!");
  EXPECT_FALSE(fakes.userInterface.alerts[0].informativeText.value().empty());
  EXPECT_EQ(fakes.userInterface.alerts[0].alertStyle, AlertStyle::Critical);
}

TEST_F(DirectCreation, NothingFollowsAFailedCopy) {
  switchOn({"openFileOnCreation", "playSound", "showFileOnCreation"});
  make(templateRecord("missing", "txt"));
  EXPECT_EQ(fakes.log.calls(), std::vector<std::string>{"copyItemAtPath"});
  EXPECT_FALSE(exists("/d/missing.txt"));
}

TEST_F(DirectCreation, ADiskThatIsFullIsSaidOfTheFileThatWasWanted) {
  fakes.fileManager.failNext("copyItemAtPath", {ENOSPC, Error::Kind::Creating, "/d/untitled.txt"});
  make(templateRecord("untitled", "txt"));
  fakes.runLoop.advance(300ms);
  EXPECT_EQ(fakes.userInterface.alerts.at(0).informativeText,
            "“/d/untitled.txt” could not be made: there is no space left.");
  EXPECT_FALSE(exists("/d/untitled.txt"));
}

TEST_F(DirectCreation, ExecuteBitsThatCannotBeSetLeaveTheFileAndSayNothing) {
  fakes.fileManager.failNext("setAttributes");
  make(templateRecord("untitled", "txt"));
  fakes.runLoop.advance(300ms);
  EXPECT_TRUE(exists("/d/untitled.txt"));
  EXPECT_TRUE(fakes.userInterface.alerts.empty());
}

TEST_F(DirectCreation, DatesThatCannotBeSetLeaveTheFileAndSayNothing) {
  fakes.fileManager.failNext("setAttributes", {EPERM}, 1);
  switchOn({"openFileOnCreation"});
  make(templateRecord("untitled", "txt"));
  fakes.runLoop.advance(300ms);
  EXPECT_TRUE(exists("/d/untitled.txt"));
  EXPECT_EQ(fakes.workspace.opened.size(), 1u);
  EXPECT_TRUE(fakes.userInterface.alerts.empty());
}

TEST_F(DirectCreation, ATemplateWithoutAFileEndsAsAFailedCopy) {
  auto record = templateRecord("untitled", "txt");
  record.erase("filePath");
  make(record);
  fakes.runLoop.advance(300ms);
  EXPECT_EQ(fakes.userInterface.alerts.at(0).messageText, "Error creating file!");
}

TEST_F(DirectCreation, AFolderWithALongerPathThanAnyHasIsRefusedAtOnce) {
  std::string dir;
  for (int level = 0; level < 500'000; ++level) {
    dir += "/d";
  }
  room.creation.createFileAtDir(dir, templateRecord("untitled", "txt"));
  fakes.runLoop.advance(300ms);
  EXPECT_TRUE(fakes.userInterface.openPanels.empty());
  ASSERT_EQ(fakes.userInterface.alerts.size(), 1u);
  EXPECT_EQ(fakes.userInterface.alerts[0].messageText, "Error creating file!");
  EXPECT_LT(fakes.userInterface.alerts[0].informativeText.value().size(), 200u);
}

TEST_F(DirectCreation, ATemplateWithoutANameMakesNothingBesideTheFolder) {
  room.creation.makeFileAtDir("/d", FileTemplate("not a record"));
  fakes.runLoop.advance(300ms);
  EXPECT_EQ(fakes.userInterface.alerts.at(0).messageText, "Error creating file!");
  EXPECT_EQ(fakes.userInterface.alerts.at(0).informativeText, "The template has no file name.");
  EXPECT_FALSE(exists("/d-1"));
}

TEST_F(DirectCreation, AFolderTemplateIsCopiedWhole) {
  fakes.fileManager.addFile("/templates/project/src/main.c", "int main;");
  auto record = templateRecord("project", "");
  record.insert_or_assign("filePath", "/templates/project");
  make(record);
  EXPECT_EQ(fakes.fileManager.contentsAtPath("/d/project/src/main.c"), "int main;");
}

}  // namespace
}  // namespace quennel::test
