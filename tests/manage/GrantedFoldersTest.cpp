#include <gtest/gtest.h>

#include <string>

#include "manage/GrantedFolders.h"
#include "settings/SharedSettings.h"
#include "tests/support/FakeFileInspector.h"
#include "tests/support/FakeHelperConnection.h"
#include "tests/support/FakeSecurityScope.h"
#include "tests/support/FakeUserDefaults.h"
#include "tests/support/PrintPropertyList.h"

namespace quennel::test {
namespace {

using Reason = Failure::Reason;

class GrantedFoldersTest : public testing::Test {
 protected:
  GrantedFoldersTest() {
    for (const char* path : {"/work", "/play"}) {
      files.items[path] = {.kind = FileFacts::Kind::Folder};
      scope.addFolder(path);
    }
    files.items["/file"] = {};
  }

  FakeUserDefaults settings;
  FakeSecurityScope scope;
  FakeFileInspector files;
  FakeHelperConnection helper;
  GrantedFolders grants{settings, scope, files, helper};
};

}  // namespace

TEST_F(GrantedFoldersTest, FolderIsGrantedOnce) {
  ASSERT_TRUE(grants.grant("/work"));
  ASSERT_TRUE(grants.grant("/work"));
  ASSERT_TRUE(grants.grant("/play"));
  const auto all = grants.all();
  ASSERT_TRUE(all);
  ASSERT_EQ(all->size(), 2U);
  EXPECT_EQ(all->at(0).path, "/work");
  EXPECT_TRUE(all->at(0).isInItsPlace());
  EXPECT_EQ(all->at(1).path, "/play");
}

TEST_F(GrantedFoldersTest, FolderThatWasMovedIsShownWhereItIs) {
  ASSERT_TRUE(grants.grant("/work"));
  scope.moveFolder("/work", "/elsewhere");
  const GrantedFolder folder = grants.all()->at(0);
  EXPECT_EQ(folder.place, "/elsewhere");
  EXPECT_FALSE(folder.isInItsPlace());
}

TEST_F(GrantedFoldersTest, FolderThatTookThePlaceOfAnotherIsGrantedInItsStead) {
  ASSERT_TRUE(grants.grant("/work"));
  scope.removeFolder("/work");
  EXPECT_EQ(grants.all()->at(0).place, std::nullopt);
  scope.addFolder("/work");
  ASSERT_TRUE(grants.grant("/work"));
  ASSERT_EQ(grants.all()->size(), 1U);
  EXPECT_TRUE(grants.all()->at(0).isInItsPlace());
}

TEST_F(GrantedFoldersTest, WhatIsNoFolderIsRefusedWithItsReason) {
  EXPECT_EQ(grants.grant("/missing").failure().reason, Reason::UnreadableItem);
  EXPECT_EQ(grants.grant("/file").failure().reason, Reason::NotAFolder);
  scope.unbookmarkable.insert("/work");
  EXPECT_EQ(grants.grant("/work").failure().reason, Reason::NotGrantable);
  EXPECT_EQ(settings.storeCount(), 0);
}

TEST_F(GrantedFoldersTest, RevokeTakesTheGrantOfEitherSpellingAndNoOther) {
  ASSERT_TRUE(grants.grant("/work"));
  ASSERT_TRUE(grants.grant("/play"));
  ASSERT_TRUE(grants.revoke("work", "/work"));
  ASSERT_EQ(grants.all()->size(), 1U);
  EXPECT_EQ(grants.all()->at(0).path, "/play");
}

TEST_F(GrantedFoldersTest, RevokeOfWhatWasNotGrantedStoresNothing) {
  const auto revoked = grants.revoke("/work", "/work");
  ASSERT_FALSE(revoked);
  EXPECT_EQ(revoked.failure().reason, Reason::NotGranted);
  EXPECT_EQ(settings.storeCount(), 0);
}

TEST_F(GrantedFoldersTest, HelperThatIsRunningIsToldOfEveryChangeAndOfNothingElse) {
  ASSERT_TRUE(grants.grant("/work"));
  EXPECT_EQ(helper.performed, std::vector<std::string>{"restart-access"});
  ASSERT_TRUE(grants.revoke("/work", "/work"));
  EXPECT_EQ(helper.performed.size(), 2U);
  EXPECT_FALSE(grants.revoke("/work", "/work"));
  EXPECT_FALSE(grants.grant("/missing"));
  EXPECT_TRUE(grants.all());
  EXPECT_EQ(helper.performed.size(), 2U);
}

TEST_F(GrantedFoldersTest, ChangeThatTheHelperDoesNotTakeUpIsMadeAndSaysSo) {
  helper.silence = HelperSilence{HelperSilence::Reason::Refused, "not today"};
  const auto granted = grants.grant("/work");
  ASSERT_FALSE(granted);
  EXPECT_EQ(granted.failure().reason, Reason::HelperNotTold);
  EXPECT_EQ(granted.failure().silence.detail, "not today");
  EXPECT_EQ(grants.all()->size(), 1U);
}

TEST_F(GrantedFoldersTest, RecordsOfOthersAreShownAndKept) {
  const PropertyList odd = PropertyList::Dictionary{{"theirs", true}};
  settings.stored().insert_or_assign(authorizedDirsKey, PropertyList::Array{odd});
  ASSERT_TRUE(grants.grant("/work"));
  EXPECT_EQ(grants.all()->at(0).path, std::nullopt);
  EXPECT_EQ(settings.arrayForKey(authorizedDirsKey)->at(0), odd);
}

}  // namespace quennel::test
