#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/linux/scope/LandlockSecurityScope.h"
#include "tests/support/FakeSecurityScope.h"
#include "tests/support/Sentence.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

using ::testing::Optional;
using Extent = SecurityScope::Extent;

/// A scope, and folders that it knows.
class World {
 public:
  virtual ~World() = default;
  virtual SecurityScope& scope() = 0;
  virtual std::string root() const = 0;
  virtual void addFolder(const std::string& path) = 0;
  virtual void removeFolder(const std::string& path) = 0;
  virtual void moveFolder(const std::string& path, const std::string& toPath) = 0;
};

class FakeWorld : public World {
 public:
  SecurityScope& scope() override { return _scope; }
  std::string root() const override { return "/world"; }
  void addFolder(const std::string& path) override { _scope.addFolder(path); }
  void removeFolder(const std::string& path) override { _scope.removeFolder(path); }
  void moveFolder(const std::string& path, const std::string& toPath) override {
    _scope.moveFolder(path, toPath);
  }

 private:
  FakeSecurityScope _scope;
};

template <int landlockVersion>
class LandlockWorld : public World {
 public:
  SecurityScope& scope() override { return _scope; }
  std::string root() const override { return _folder.path(); }
  void addFolder(const std::string& path) override { std::filesystem::create_directories(path); }
  void removeFolder(const std::string& path) override { std::filesystem::remove_all(path); }
  void moveFolder(const std::string& path, const std::string& toPath) override {
    std::filesystem::rename(path, toPath);
  }

 private:
  TemporaryDirectory _folder;
  LandlockSecurityScope _scope{_folder / "key", landlockVersion};
};

template <typename AnyWorld>
class SecurityScopeContract : public ::testing::Test {
 protected:
  SecurityScopeContract() {
    _world.addFolder(granted);
    _world.addFolder(granted + "/below");
    _world.addFolder(outside);
  }

  PropertyList::Data bookmark(const std::string& path) {
    const auto made = _scope.bookmarkDataForPath(path);
    EXPECT_TRUE(made) << path;
    return made.value_or(PropertyList::Data());
  }

  /// As a start of the program does it; the access lasts until the test ends.
  SecurityScope::Access* startAccess(const std::string& path) {
    _accesses.push_back(_scope.startAccessing(bookmark(path)));
    EXPECT_NE(_accesses.back(), nullptr) << path;
    return _accesses.back().get();
  }

  bool mayChange(const std::string& path) {
    return _scope.performConfined(path, [](const std::string&) { return true; });
  }

  AnyWorld _world;
  SecurityScope& _scope = _world.scope();
  const std::string granted = _world.root() + "/granted";
  const std::string outside = _world.root() + "/outside";
  std::vector<std::unique_ptr<SecurityScope::Access>> _accesses;
};

using Worlds = ::testing::Types<FakeWorld, LandlockWorld<99>, LandlockWorld<0>>;
class WorldNames {
 public:
  template <typename AnyWorld>
  static std::string GetName(int index) {
    constexpr const char* names[] = {"Fake", "Landlock", "WithoutLandlock"};
    return names[index];
  }
};
TYPED_TEST_SUITE(SecurityScopeContract, Worlds, WorldNames);

TYPED_TEST(SecurityScopeContract, ABookmarkResolvesToItsFolder) {
  const auto bookmark = this->_scope.bookmarkDataForPath(this->granted);
  ASSERT_TRUE(bookmark);
  EXPECT_THAT(this->_scope.pathByResolvingBookmarkData(*bookmark), Optional(this->granted));
}

TYPED_TEST(SecurityScopeContract, WithoutAFolderThereIsNoBookmark) {
  Error error;
  EXPECT_FALSE(this->_scope.bookmarkDataForPath(this->granted + "/missing", &error));
  EXPECT_NE(error.code, 0);
  EXPECT_NE(sentenceOf(error), "");
}

TYPED_TEST(SecurityScopeContract, ABookmarkFollowsAFolderThatIsRenamedOrGivesNothing) {
  const auto bookmark = this->_scope.bookmarkDataForPath(this->granted);
  ASSERT_TRUE(bookmark);
  this->_world.moveFolder(this->granted, this->granted + "-renamed");
  const auto path = this->_scope.pathByResolvingBookmarkData(*bookmark);
  EXPECT_EQ(path.value_or(this->granted + "-renamed"), this->granted + "-renamed");
}

TYPED_TEST(SecurityScopeContract, ABookmarkDoesNotResolveToAFolderThatTookThePlace) {
  const auto bookmark = this->_scope.bookmarkDataForPath(this->granted);
  ASSERT_TRUE(bookmark);
  this->_world.removeFolder(this->granted);
  EXPECT_FALSE(this->_scope.pathByResolvingBookmarkData(*bookmark));
  this->_world.addFolder(this->granted);
  EXPECT_FALSE(this->_scope.pathByResolvingBookmarkData(*bookmark));
}

TYPED_TEST(SecurityScopeContract, GarbageResolvesToNothing) {
  EXPECT_FALSE(this->_scope.pathByResolvingBookmarkData({""}));
  EXPECT_FALSE(this->_scope.pathByResolvingBookmarkData({std::string(100'000, '\xff')}));
}

TYPED_TEST(SecurityScopeContract, NothingIsAccessibleAtFirst) {
  EXPECT_FALSE(this->_scope.isAccessible(this->granted));
  EXPECT_FALSE(this->mayChange(this->granted + "/new"));
}

TYPED_TEST(SecurityScopeContract, AResolvedFolderAndAllBelowItIsAccessibleOnceStarted) {
  this->startAccess(this->granted);
  EXPECT_TRUE(this->_scope.isAccessible(this->granted));
  EXPECT_TRUE(this->_scope.isAccessible(this->granted + "/below"));
  EXPECT_TRUE(this->mayChange(this->granted + "/new"));
  EXPECT_TRUE(this->mayChange(this->granted + "/below/new"));
}

TYPED_TEST(SecurityScopeContract, WhatIsBesideOrAboveAGrantIsNotAccessible) {
  this->startAccess(this->granted);
  EXPECT_FALSE(this->_scope.isAccessible(this->outside));
  EXPECT_FALSE(this->_scope.isAccessible(this->_world.root()));
  EXPECT_FALSE(this->mayChange(this->outside + "/new"));
  EXPECT_FALSE(this->mayChange(this->granted));
}

TYPED_TEST(SecurityScopeContract, AnAccessKnowsWhereItsFolderIs) {
  EXPECT_EQ(this->startAccess(this->granted)->path(), this->granted);
}

TYPED_TEST(SecurityScopeContract, AccessCannotBeStartedToAFolderThatIsGone) {
  const auto bookmark = this->bookmark(this->granted);
  this->_world.removeFolder(this->granted);
  EXPECT_EQ(this->_scope.startAccessing(bookmark), nullptr);
  EXPECT_EQ(this->_scope.startAccessing({"garbage"}), nullptr);
}

TYPED_TEST(SecurityScopeContract, ResolvingATokenGivesNoAccess) {
  EXPECT_TRUE(this->_scope.pathByResolvingBookmarkData(this->bookmark(this->granted)));
  EXPECT_FALSE(this->_scope.isAccessible(this->granted));
}

TYPED_TEST(SecurityScopeContract, AFolderStaysAccessibleUntilItsLastAccessIsGone) {
  this->startAccess(this->granted);
  this->startAccess(this->granted);
  this->_accesses.pop_back();
  EXPECT_TRUE(this->_scope.isAccessible(this->granted));
  this->_accesses.pop_back();
  EXPECT_FALSE(this->_scope.isAccessible(this->granted));
  EXPECT_FALSE(this->mayChange(this->granted + "/new"));
}

TYPED_TEST(SecurityScopeContract, AGrantBelowAnotherOneOutlivesIt) {
  this->startAccess(this->granted);
  this->startAccess(this->granted + "/below");
  this->_accesses.erase(this->_accesses.begin());
  EXPECT_FALSE(this->_scope.isAccessible(this->granted));
  EXPECT_TRUE(this->_scope.isAccessible(this->granted + "/below"));
}

TYPED_TEST(SecurityScopeContract, ARenewedTokenLeadsToTheFolderThatWasAuthorizedInItsPlace) {
  const auto bookmark = this->bookmark(this->granted);
  this->_world.removeFolder(this->granted);
  this->_world.addFolder(this->granted);
  EXPECT_TRUE(this->_scope.renewBookmark(bookmark, this->granted));
  EXPECT_THAT(this->_scope.pathByResolvingBookmarkData(bookmark), Optional(this->granted));
  const auto access = this->_scope.startAccessing(bookmark);
  ASSERT_TRUE(access);
  EXPECT_EQ(access->path(), this->granted);
  EXPECT_TRUE(this->mayChange(this->granted + "/new"));
}

TYPED_TEST(SecurityScopeContract, ARenewedTokenLeadsToNoFolderThatComesLater) {
  const auto bookmark = this->bookmark(this->granted);
  for (int round = 0; round < 3; ++round) {
    this->_world.removeFolder(this->granted);
    this->_world.addFolder(this->granted);
    EXPECT_FALSE(this->_scope.pathByResolvingBookmarkData(bookmark)) << round;
    EXPECT_TRUE(this->_scope.renewBookmark(bookmark, this->granted));
  }
}

TYPED_TEST(SecurityScopeContract, WithoutAFolderThereIsNothingToRenewATokenFor) {
  const auto bookmark = this->bookmark(this->granted);
  this->_world.removeFolder(this->granted);
  Error error;
  EXPECT_FALSE(this->_scope.renewBookmark(bookmark, this->granted, &error));
  EXPECT_NE(error.code, 0);
}

TYPED_TEST(SecurityScopeContract, AFolderFromAPanelIsAccessibleWithAllBelowIt) {
  this->_scope.allowForThisRun(this->granted, Extent::Folder);
  EXPECT_TRUE(this->_scope.isAccessible(this->granted));
  EXPECT_TRUE(this->mayChange(this->granted + "/below/new"));
  EXPECT_FALSE(this->mayChange(this->outside + "/new"));
}

TYPED_TEST(SecurityScopeContract, AFolderFromAPanelCanBeTakenBackAndOtherGrantsOfItStay) {
  this->_scope.allowForThisRun(this->granted, Extent::Folder);
  this->_scope.allowForThisRun(this->granted + "/", Extent::Folder);
  this->_scope.allowForThisRun(this->outside, Extent::Folder);
  this->_scope.disallow(this->granted);
  EXPECT_FALSE(this->_scope.isAccessible(this->granted));
  EXPECT_TRUE(this->_scope.isAccessible(this->outside));
  this->startAccess(this->granted);
  this->_scope.disallow(this->granted);
  EXPECT_TRUE(this->_scope.isAccessible(this->granted));
}

TYPED_TEST(SecurityScopeContract, ALocationFromAPanelIsAccessibleAlone) {
  this->_scope.allowForThisRun(this->granted + "/new", Extent::Item);
  EXPECT_TRUE(this->mayChange(this->granted + "/new"));
  EXPECT_FALSE(this->mayChange(this->granted + "/newer"));
  EXPECT_FALSE(this->mayChange(this->granted + "/below/new"));
  EXPECT_FALSE(this->_scope.isAccessible(this->granted));
}

TYPED_TEST(SecurityScopeContract, AFolderAtALocationFromAPanelIsAccessibleWithAllBelowIt) {
  this->_scope.allowForThisRun(this->granted + "/below", Extent::Item);
  EXPECT_TRUE(this->_scope.isAccessible(this->granted + "/below"));
  EXPECT_TRUE(this->mayChange(this->granted + "/below/new"));
  EXPECT_FALSE(this->mayChange(this->granted + "/beside"));
}

TYPED_TEST(SecurityScopeContract, ARefusalSaysWhy) {
  Error error;
  EXPECT_FALSE(this->_scope.performConfined(
      this->outside + "/new", [](const std::string&) { return true; }, &error));
  EXPECT_EQ(error.code, EACCES);
  EXPECT_NE(sentenceOf(error), "");
}

TYPED_TEST(SecurityScopeContract, RefusedWorkIsNotCalled) {
  const auto work = [](const std::string&) -> bool { throw std::logic_error("called"); };
  EXPECT_FALSE(this->_scope.performConfined(this->outside + "/new", work));
  EXPECT_FALSE(this->_scope.performOnItem(this->outside, work));
}

TYPED_TEST(SecurityScopeContract, TheResultIsThatOfTheWork) {
  this->startAccess(this->granted);
  for (const bool result : {true, false}) {
    const auto work = [&](const std::string&) { return result; };
    EXPECT_EQ(this->_scope.performConfined(this->granted + "/new", work), result);
    EXPECT_EQ(this->_scope.performOnItem(this->granted, work), result);
  }
}

TYPED_TEST(SecurityScopeContract, ExceptionsOfTheWorkPassThrough) {
  this->startAccess(this->granted);
  const auto work = [](const std::string&) -> bool { throw std::runtime_error("of the work"); };
  EXPECT_THROW(this->_scope.performConfined(this->granted + "/new", work), std::runtime_error);
  EXPECT_THROW(this->_scope.performOnItem(this->granted, work), std::runtime_error);
  EXPECT_TRUE(this->mayChange(this->granted + "/new"));
}

TYPED_TEST(SecurityScopeContract, AThousandGrantsAreAllInForce) {
  constexpr int count = 1000;
  for (int index = 0; index < count; ++index) {
    const std::string folder = this->outside + "/" + std::to_string(index);
    this->_world.addFolder(folder);
    this->startAccess(folder);
  }
  for (int index = 0; index < count; ++index) {
    EXPECT_TRUE(this->mayChange(this->outside + "/" + std::to_string(index) + "/new"));
  }
  EXPECT_FALSE(this->mayChange(this->granted + "/new"));
  EXPECT_FALSE(this->mayChange(this->outside + "/new"));
}

}  // namespace
}  // namespace quennel::test
