#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

#include "tests/contract/scope/VolumeTest.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Deadline.h"
#include "tests/support/RootCommands.h"

namespace quennel::test {
namespace {

using std::filesystem::remove_all;
using std::filesystem::rename;
using ::testing::Eq;
using ::testing::Optional;

/// Why the kernel does not let this user look for a folder by its own name; empty when it does.
std::string whyNoSearch() {
  if (isRoot()) {
    return {};
  }
  utsname system{};
  int major = 0;
  int minor = 0;
  uname(&system);
  if (std::sscanf(system.release, "%d.%d", &major, &minor) != 2 || major * 100 + minor < 611) {
    return "before Linux 6.11 only root may open by handle";
  }
  const auto enter = [] { return std::string(unshare(CLONE_NEWUSER) == 0 ? "" : "refused"); };
  return inChildProcess(enter).empty() ? "" : "users may not make namespaces of their own here";
}

/// Tokens for folders of a real volume; what a later run of the program makes of them.
class Bookmarks : public VolumeTest, public ::testing::WithParamInterface<Filesystem> {
 protected:
  void SetUp() override {
    if (const auto why = Volume::whyUnavailable(GetParam()); !why.empty()) {
      GTEST_SKIP() << Volume::nameOf(GetParam()) << ": " << why;
    }
    setenv("HOME", temporary.path().c_str(), 1);
    mountFresh(GetParam());
    makeFolder(folder);
  }

  /// Whether nothing but its present mount tells the volume from others.
  bool isKnownByMount() const {
    return GetParam() == Filesystem::Ramfs || GetParam() == Filesystem::Fuse;
  }

  /// Whether a folder of the volume is found again after that was mounted anew.
  bool outlivesMount() const { return GetParam() != Filesystem::Tmpfs && !isKnownByMount(); }

  /// Whether folders of this filesystem have a name of their own, which leads to them from
  /// anywhere.
  bool hasHandles() const { return GetParam() != Filesystem::Overlay && !isKnownByMount(); }

  const std::string folder = volume + "/some/folder";
};

TEST_P(Bookmarks, LeadToTheirFolderInALaterRun) {
  EXPECT_THAT(resolve(bookmark(folder)), Optional(folder));
}

TEST_P(Bookmarks, OfTheTopFolderOfAVolumeLeadThere) {
  EXPECT_THAT(resolve(bookmark(volume)), Optional(volume));
}

TEST_P(Bookmarks, KeepThePathThatTheUserNamedThroughALink) {
  std::filesystem::create_directory_symlink(volume + "/some", temporary / "link");
  EXPECT_THAT(resolve(bookmark(temporary / "link/folder")), Optional(temporary / "link/folder"));
}

TEST_P(Bookmarks, GiveNothingWhileTheVolumeIsAway) {
  const auto token = bookmark(folder);
  ASSERT_TRUE(mount->unmountFrom(volume));
  EXPECT_EQ(resolve(token), std::nullopt);
}

TEST_P(Bookmarks, GiveNothingForTheFolderUnderAMountPointWhileTheVolumeIsAway) {
  const auto token = bookmark(volume);
  ASSERT_TRUE(mount->unmountFrom(volume));
  EXPECT_EQ(resolve(token), std::nullopt);
  makeFolder(folder);
  EXPECT_EQ(resolve(token), std::nullopt);
}

TEST_P(Bookmarks, GiveNothingForAnotherFolderOfTheSamePathWhileTheVolumeIsAway) {
  const auto token = bookmark(folder);
  ASSERT_TRUE(mount->unmountFrom(volume));
  makeFolder(folder);
  EXPECT_EQ(resolve(token), std::nullopt);
}

TEST_P(Bookmarks, LeadToTheirFolderWhenTheVolumeIsBack) {
  const auto token = bookmark(folder);
  ASSERT_TRUE(mount->unmountFrom(volume));
  ASSERT_TRUE(mount->mountAt(volume));
  makeFolder(folder);
  EXPECT_EQ(resolve(token), outlivesMount() ? std::optional(folder) : std::nullopt);
}

TEST_P(Bookmarks, LeadToTheirFolderWhereverTheVolumeIsMountedNow) {
  const auto token = bookmark(folder);
  ASSERT_TRUE(mount->unmountFrom(volume));
  ASSERT_TRUE(mount->mountAt(elsewhere));
  makeFolder(elsewhere + "/some/folder");
  EXPECT_EQ(resolve(token),
            outlivesMount() ? std::optional(elsewhere + "/some/folder") : std::nullopt);
}

TEST_P(Bookmarks, GiveNothingForAnotherVolumeInTheSamePlace) {
  const auto token = bookmark(folder);
  const auto tokenOfTop = bookmark(volume);
  ASSERT_TRUE(mount->unmountFrom(volume));
  Volume other(GetParam());
  ASSERT_TRUE(other.mountAt(volume));
  makeFolder(folder);
  EXPECT_EQ(resolve(token), std::nullopt);
  EXPECT_EQ(resolve(tokenOfTop), std::nullopt);
}

TEST_P(Bookmarks, LeadToTheirVolumeWhenAnotherOneHasTakenItsPlace) {
  const auto token = bookmark(folder);
  ASSERT_TRUE(mount->unmountFrom(volume));
  ASSERT_TRUE(mount->mountAt(elsewhere));
  Volume other(GetParam());
  ASSERT_TRUE(other.mountAt(volume));
  makeFolder(folder);
  EXPECT_EQ(resolve(token),
            outlivesMount() ? std::optional(elsewhere + "/some/folder") : std::nullopt);
}

TEST_P(Bookmarks, LeadToTheFolderUnderAnotherMountOfItsVolume) {
  const auto token = bookmark(folder);
  ASSERT_TRUE(RootCommands::run("mount --bind " + volume + "/some " + elsewhere));
  ASSERT_TRUE(RootCommands::run("mount -t tmpfs none " + volume));
  const auto path = resolve(token);
  RootCommands::run("umount " + volume + " && umount " + elsewhere);
  // A filesystem without a name is known by its mount alone.
  EXPECT_EQ(path, isKnownByMount() ? std::nullopt : std::optional(elsewhere + "/folder"));
}

TEST_P(Bookmarks, FollowAFolderThatWasMovedIfItHasANameOfItsOwn) {
  const std::string why = hasHandles() ? whyNoSearch() : "";
  if (!why.empty()) {
    GTEST_SKIP() << why;
  }
  const auto token = bookmark(folder);
  rename(folder, volume + "/moved");
  const auto path = resolve(token);
  EXPECT_EQ(path.value_or(volume + "/moved"), volume + "/moved");
  EXPECT_TRUE(path || !hasHandles());
}

TEST_P(Bookmarks, GiveNothingForAFolderThatWasRemoved) {
  const auto token = bookmark(folder);
  remove_all(folder);
  EXPECT_EQ(resolve(token), std::nullopt);
}

TEST_P(Bookmarks, GiveNothingForANewFolderOfTheSamePath) {
  const auto token = bookmark(folder);
  // The new one may well get the number of the old one.
  for (int round = 0; round < 20; ++round) {
    remove_all(folder);
    makeFolder(folder);
    ASSERT_EQ(resolve(token), std::nullopt);
  }
}

TEST_P(Bookmarks, NeverLeadToTheFolderThatReplacedTheirs) {
  const auto token = bookmark(folder);
  rename(folder, volume + "/moved");
  makeFolder(folder);
  EXPECT_NE(resolve(token), std::optional(folder));
}

TEST_P(Bookmarks, NeverLeadToACopyOfTheirFolder) {
  const auto token = bookmark(folder);
  ASSERT_TRUE(posixFiles.copyItemAtPath(folder, volume + "/copy", nullptr));
  remove_all(folder);
  EXPECT_EQ(resolve(token), std::nullopt);
  rename(volume + "/copy", folder);
  EXPECT_EQ(resolve(token), std::nullopt);
}

TEST_P(Bookmarks, LeadToWhatWasAuthorizedInTheirPlaceUntilTheirVolumeIsBack) {
  const auto token = bookmark(folder);
  ASSERT_TRUE(mount->unmountFrom(volume));
  makeFolder(folder);
  ASSERT_TRUE(newScope()->renewBookmark(token, folder));
  EXPECT_THAT(resolve(token), Optional(folder));
  ASSERT_TRUE(mount->mountAt(elsewhere));
  makeFolder(elsewhere + "/some/folder");
  EXPECT_THAT(resolve(token), Optional(outlivesMount() ? elsewhere + "/some/folder" : folder));
  scope = newScope();
  const auto access = scope->startAccessing(token);
  EXPECT_TRUE(scope->isAccessible(folder));
  EXPECT_EQ(scope->isAccessible(elsewhere + "/some/folder"), outlivesMount());
  ASSERT_TRUE(mount->unmountFrom(elsewhere));
  EXPECT_THAT(resolve(token), Optional(folder));
}

TEST_P(Bookmarks, GiveAccessToTheirFolderThatWasMovedAndToTheOneAuthorizedInItsPlace) {
  const auto token = bookmark(folder);
  rename(folder, volume + "/moved");
  const bool isFollowed = resolve(token).has_value();
  makeFolder(folder);
  ASSERT_TRUE(newScope()->renewBookmark(token, folder));
  scope = newScope();
  const auto access = scope->startAccessing(token);
  ASSERT_TRUE(access);
  EXPECT_EQ(access->path(), isFollowed ? volume + "/moved" : folder);
  EXPECT_TRUE(scope->isAccessible(folder));
  EXPECT_EQ(scope->isAccessible(volume + "/moved"), isFollowed);
  EXPECT_FALSE(scope->isAccessible(volume + "/some"));
}

TEST_P(Bookmarks, SayOfTwoFoldersWhichIsWhich) {
  makeFolder(volume + "/other");
  const auto token = bookmark(folder);
  const auto otherToken = bookmark(volume + "/other");
  rename(folder, volume + "/temporary");
  rename(volume + "/other", folder);
  rename(volume + "/temporary", volume + "/other");
  EXPECT_THAT(resolve(token), ::testing::AnyOf(Eq(std::nullopt), Optional(volume + "/other")));
  EXPECT_THAT(resolve(otherToken), ::testing::AnyOf(Eq(std::nullopt), Optional(folder)));
}

TEST_P(Bookmarks, LeadToAFolderThatOnlyChangedItsPermissionsOrContents) {
  const auto token = bookmark(folder);
  writeFile(folder + "/file", "text");
  chmod(folder.c_str(), 0750);
  EXPECT_THAT(resolve(token), Optional(folder));
}

/// Where the root of the process is no mount, as in a build environment. Only root may go there.
class BookmarksInAChangedRoot : public VolumeTest {
 protected:
  void SetUp() override {
    if (const auto why = RootCommands::whyUnavailable(); !why.empty()) {
      GTEST_SKIP() << why;
    }
    makeFolder(root + "/proc");
    makeFolder(root + "/folder");
    ASSERT_TRUE(RootCommands::run("mount -t proc proc " + root + "/proc"));
  }

  void TearDown() override {
    if (!IsSkipped()) {
      RootCommands::run("umount " + root + "/proc");
    }
  }

  const std::string root = temporary / "root";
};

TEST_F(BookmarksInAChangedRoot, LeadToTheirFolderAndToNoOtherOne) {
  const auto found = inChildProcess([&]() -> std::string {
    bookmark(root);  // opens the library that is not to be found afterwards
    if (::chroot(root.c_str()) != 0 || ::chdir("/") != 0) {
      return "the root was not changed";
    }
    ::setenv("HOME", "/", 1);
    const auto token = bookmark("/folder");
    const std::string there = resolve(token).value_or("nothing");
    rename("/folder", "/moved");
    makeFolder("/folder");
    return there + " " + resolve(token).value_or("nothing");
  });
  EXPECT_EQ(found, "/folder nothing");
}

/// Folders on a volume whose server does not answer.
class BookmarksOnASilentVolume : public VolumeTest {
 protected:
  void SetUp() override {
    if (const auto why = Volume::whyUnavailable(Filesystem::Fuse); !why.empty()) {
      GTEST_SKIP() << "fuse: " << why;
    }
    mountFresh(Filesystem::Fuse);
    makeFolder(folder);
  }

  void TearDown() override {
    if (!IsSkipped()) {
      RootCommands::run("(umount -f " + volume + "; umount -l " + volume + ") 2>/dev/null; rm -f " +
                        ready);
    }
  }

  /// A server that never reads what it is asked; it ends with its mount.
  void mountSilentVolume() {
    ASSERT_TRUE(RootCommands::run(
        "(exec 9<>/dev/fuse && mount -i -t fuse -o fd=9,rootmode=40000,user_id=0,group_id=0,"
        "allow_other none " +
        volume + " && touch " + ready + " && while grep -q " + volume +
        " /proc/mounts; do sleep 0.1; done) >/dev/null 2>&1 & for try in $(seq 100); do [ -e " +
        ready + " ] && exit 0; sleep 0.02; done; exit 1"));
  }

  const std::string folder = volume + "/folder";
  const std::string ready = temporary / "ready";
};

/// How many processes of this test there are.
std::ptrdiff_t processCount() {
  namespace fs = std::filesystem;
  std::error_code ignored;
  const auto program = fs::read_symlink("/proc/self/exe");
  const auto mounts = fs::read_symlink("/proc/self/ns/mnt");
  return std::count_if(fs::directory_iterator("/proc"), {}, [&](const auto& process) {
    return fs::read_symlink(process.path() / "exe", ignored) == program &&
           fs::read_symlink(process.path() / "ns/mnt", ignored) == mounts;
  });
}

TEST_F(BookmarksOnASilentVolume, GiveNothingInTime) {
  const auto token = bookmark(folder);
  const auto tokenOfTop = bookmark(volume);
  ASSERT_TRUE(mount->unmountFrom(volume));
  mountSilentVolume();
  const auto run = newScope();
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(run->pathByResolvingBookmarkData(token), std::nullopt);
  for (int count = 0; count < 20; ++count) {
    EXPECT_EQ(run->pathByResolvingBookmarkData(tokenOfTop), std::nullopt);
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST_F(BookmarksOnASilentVolume, LeaveNoProcessWaiting) {
  const auto token = bookmark(folder);
  ASSERT_TRUE(mount->unmountFrom(volume));
  mountSilentVolume();
  const auto before = processCount();
  EXPECT_EQ(resolve(token), std::nullopt);
  EXPECT_TRUE(eventually([&] { return processCount() == before; }));
}

std::string nameOfParameter(const ::testing::TestParamInfo<Filesystem>& info) {
  return Volume::nameOf(info.param);
}

INSTANTIATE_TEST_SUITE_P(On, Bookmarks,
                         ::testing::Values(Filesystem::Ext4, Filesystem::Xfs, Filesystem::Btrfs,
                                           Filesystem::Tmpfs, Filesystem::Overlay,
                                           Filesystem::Ramfs, Filesystem::Fuse),
                         nameOfParameter);

}  // namespace
}  // namespace quennel::test
