#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <ostream>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "tests/contract/scope/VolumeTest.h"
#include "tests/support/RootCommands.h"
#include "tests/support/Sentence.h"

namespace quennel::test {
namespace {

using std::filesystem::create_directory_symlink;
using std::filesystem::create_hard_link;
using std::filesystem::create_symlink;
using std::filesystem::rename;
using Extent = SecurityScope::Extent;

enum class Kernel { AsItIs, FirstLandlock, WithoutLandlock };

void PrintTo(Kernel kernel, std::ostream* output) {
  constexpr const char* names[] = {"as it is", "the first with Landlock", "without Landlock"};
  *output << names[static_cast<int>(kernel)];
}

int versionOf(Kernel kernel) {
  constexpr int versions[] = {99, 1, 0};
  return versions[static_cast<int>(kernel)];
}

/// One folder of a real volume is granted, one beside it is not; the file manager is the confined
/// one of the helper.
class Confinement : public VolumeTest,
                    public ::testing::WithParamInterface<std::tuple<Filesystem, Kernel>> {
 protected:
  void SetUp() override {
    const auto [filesystem, kernel] = GetParam();
    if (const auto why = Volume::whyUnavailable(filesystem); !why.empty()) {
      GTEST_SKIP() << Volume::nameOf(filesystem) << ": " << why;
    }
    if (kernel != Kernel::WithoutLandlock && LandlockRuleset::kernelVersion() == 0) {
      GTEST_SKIP() << "this kernel has no Landlock";
    }
    mountFresh(filesystem);
    makeFolder(granted + "/below");
    makeFolder(outside);
    writeFile(outside + "/file", "outside");
    writeFile(templateFile, "template");
    scope = newScope(versionOf(kernel));
    files = std::make_unique<ConfinedFileManager>(posixFiles, *scope);
    grant(granted);
  }

  bool hasLandlock() const { return std::get<Kernel>(GetParam()) != Kernel::WithoutLandlock; }

  bool copyTo(const std::string& path) { return files->copyItemAtPath(templateFile, path, &error); }
  FileManager::Replacement replace(const std::string& path) {
    return files->replaceItemAtPath(path, templateFile, &error);
  }
  bool setMode(const std::string& path, std::uint16_t mode) {
    FileAttributes attributes;
    attributes.posixPermissions = mode;
    return files->setAttributes(attributes, path, &error);
  }

  /// Nothing has changed where nothing may.
  void expectOutsideUntouched() const {
    EXPECT_EQ(contentsOf(outside + "/file"), "outside");
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(outside)) {
      names.push_back(entry.path().filename());
    }
    EXPECT_THAT(names, ::testing::ElementsAre("file"));
  }

  const std::string granted = volume + "/granted";
  const std::string outside = volume + "/outside";
  const std::string templateFile = temporary / "template";
  std::unique_ptr<FileManager> files;
  Error error;
};

TEST_P(Confinement, LetsEveryOperationWorkInAGrant) {
  EXPECT_TRUE(copyTo(granted + "/copy")) << sentenceOf(error);
  EXPECT_EQ(contentsOf(granted + "/copy"), "template");
  EXPECT_TRUE(setMode(granted + "/copy", 0711)) << sentenceOf(error);
  EXPECT_EQ(modeOf(granted + "/copy"), 0711U);
  EXPECT_TRUE(files->writeContents("new", granted + "/copy")) << sentenceOf(error);
  EXPECT_EQ(contentsOf(granted + "/copy"), "new");
  EXPECT_TRUE(files->createDirectoryAtPath(granted + "/a/b/c", true, &error)) << sentenceOf(error);
  EXPECT_TRUE(files->removeItemAtPath(granted + "/a", &error)) << sentenceOf(error);
  EXPECT_FALSE(exists(granted + "/a"));
}

TEST_P(Confinement, LetsAFolderBeCopiedIntoAGrantByTwoThreads) {
  const std::string tree = temporary / "tree";
  for (int index = 0; index < 600; ++index) {
    makeFolder(tree + "/" + std::to_string(index % 20));
    writeFile(tree + "/" + std::to_string(index % 20) + "/" + std::to_string(index), "text");
  }
  create_hard_link(tree + "/0/0", tree + "/1/linked");
  EXPECT_TRUE(files->copyItemAtPath(tree, granted + "/tree", &error)) << sentenceOf(error);
  EXPECT_EQ(contentsOf(granted + "/tree/19/599"), "text");
  EXPECT_EQ(contentsOf(granted + "/tree/1/linked"), "text");
}

TEST_P(Confinement, RefusesEveryOperationOutsideAGrant) {
  EXPECT_FALSE(copyTo(outside + "/copy"));
  EXPECT_EQ(error.code, EACCES);
  EXPECT_FALSE(setMode(outside + "/file", 0600));
  EXPECT_EQ(error.code, EACCES);
  EXPECT_FALSE(files->writeContents("new", outside + "/file"));
  EXPECT_FALSE(files->createDirectoryAtPath(outside + "/a/b", true));
  EXPECT_FALSE(files->createDirectoryAtPath(outside + "/a", false));
  EXPECT_FALSE(files->removeItemAtPath(outside + "/file"));
  EXPECT_FALSE(files->removeItemAtPath(outside));
  EXPECT_EQ(modeOf(outside + "/file") & 0044U, 0044U);
  expectOutsideUntouched();
}

TEST_P(Confinement, DoesNotFollowALinkOutOfAGrant) {
  create_directory_symlink(outside, granted + "/link");
  create_symlink(outside + "/file", granted + "/link-to-file");
  EXPECT_FALSE(copyTo(granted + "/link/copy"));
  EXPECT_FALSE(setMode(granted + "/link/file", 0600));
  EXPECT_FALSE(setMode(granted + "/link-to-file", 0600));
  EXPECT_FALSE(files->removeItemAtPath(granted + "/link/file"));
  EXPECT_FALSE(files->createDirectoryAtPath(granted + "/link/a/b", true));
  EXPECT_FALSE(files->isWritableFileAtPath(granted + "/link"));
  EXPECT_FALSE(files->isWritableFileAtPath(granted + "/link-to-file"));
  EXPECT_NE(modeOf(outside + "/file"), 0600U);
  expectOutsideUntouched();
}

TEST_P(Confinement, ReplacesOrRemovesALinkAndNotWhatItPointsTo) {
  create_symlink(outside + "/file", granted + "/link");
  EXPECT_TRUE(files->writeContents("new", granted + "/link"));
  EXPECT_EQ(contentsOf(granted + "/link"), "new");
  create_symlink(outside + "/file", granted + "/other-link");
  EXPECT_TRUE(files->removeItemAtPath(granted + "/other-link"));
  expectOutsideUntouched();
}

TEST_P(Confinement, LetsFilesFoldersAndLinksBeReplacedInAGrantByWhatIsCopied) {
  using Replacement = FileManager::Replacement;
  writeFile(granted + "/file", "old");
  makeFolder(granted + "/folder/inner");
  create_directory_symlink(outside, granted + "/link");
  for (const std::string name : {"/file", "/folder", "/link"}) {
    EXPECT_EQ(replace(granted + name), Replacement::Done) << error.code;
    EXPECT_EQ(contentsOf(granted + name), "template");
  }
  scope->allowForThisRun(outside + "/file", Extent::Item);
  EXPECT_EQ(replace(outside + "/file"), Replacement::Done) << error.code;
  EXPECT_EQ(contentsOf(outside + "/file"), "template");
}

TEST_P(Confinement, LeavesWhatIsNotInAGrantInItsPlace) {
  create_directory_symlink(outside, granted + "/link");
  for (const std::string& path : {outside + "/file", granted + "/link/file"}) {
    EXPECT_EQ(replace(path), FileManager::Replacement::NotSetAside);
    EXPECT_EQ(error.code, EACCES);
  }
  expectOutsideUntouched();
}

TEST_P(Confinement, FollowsALinkIntoAGrant) {
  create_directory_symlink(granted, outside + "/link");
  EXPECT_TRUE(copyTo(outside + "/link/copy")) << sentenceOf(error);
  EXPECT_TRUE(setMode(outside + "/link/copy", 0600));
  EXPECT_TRUE(files->isWritableFileAtPath(outside + "/link"));
  EXPECT_EQ(modeOf(granted + "/copy"), 0600U);
}

TEST_P(Confinement, FollowsRelativeLinksAndTellsLinksThatGoRound) {
  create_symlink("../granted/target", granted + "/first");
  create_symlink("first", granted + "/second");
  writeFile(granted + "/target", "text");
  EXPECT_TRUE(setMode(granted + "/second", 0600)) << sentenceOf(error);
  EXPECT_EQ(modeOf(granted + "/target"), 0600U);
  create_symlink("round", granted + "/round");
  EXPECT_FALSE(setMode(granted + "/round", 0600));
  EXPECT_EQ(error.code, ELOOP);
}

TEST_P(Confinement, ResolvesParentReferencesBeforeItDecides) {
  EXPECT_FALSE(copyTo(granted + "/../outside/copy"));
  EXPECT_FALSE(setMode(granted + "/../outside/file", 0600));
  EXPECT_FALSE(files->removeItemAtPath(granted + "/below/../../outside/file"));
  EXPECT_FALSE(copyTo(granted + "/below/.."));
  expectOutsideUntouched();
  EXPECT_TRUE(copyTo(granted + "/below/../copy")) << sentenceOf(error);
  EXPECT_TRUE(exists(granted + "/copy"));
}

TEST_P(Confinement, ReachesAFileInAGrantThatHasAnotherNameOutside) {
  create_hard_link(outside + "/file", granted + "/linked");
  EXPECT_TRUE(setMode(granted + "/linked", 0640));
  EXPECT_FALSE(setMode(outside + "/file", 0600));
  EXPECT_EQ(modeOf(outside + "/file"), 0640U);
}

TEST_P(Confinement, ReachesAnotherVolumeThatIsMountedInAGrant) {
  Volume inner(Filesystem::Tmpfs);
  ASSERT_TRUE(inner.mountAt(granted + "/below"));
  EXPECT_TRUE(copyTo(granted + "/below/copy")) << sentenceOf(error);
  EXPECT_TRUE(setMode(granted + "/below/copy", 0600));
  EXPECT_TRUE(files->isWritableFileAtPath(granted + "/below"));
}

TEST_P(Confinement, KnowsAGrantedFolderUnderABindMountAndNothingAroundIt) {
  ASSERT_TRUE(RootCommands::run("mount --bind " + granted + " " + elsewhere));
  EXPECT_TRUE(copyTo(elsewhere + "/copy")) << sentenceOf(error);
  ASSERT_TRUE(RootCommands::run("umount " + elsewhere));
  ASSERT_TRUE(RootCommands::run("mount --bind " + outside + " " + elsewhere));
  EXPECT_FALSE(copyTo(elsewhere + "/copy"));
  expectOutsideUntouched();
  ASSERT_TRUE(RootCommands::run("umount " + elsewhere));
}

TEST_P(Confinement, FollowsAGrantedFolderThatIsRenamedWhileTheProgramRuns) {
  rename(granted, volume + "/renamed");
  makeFolder(granted);
  EXPECT_TRUE(copyTo(volume + "/renamed/copy")) << sentenceOf(error);
  EXPECT_FALSE(copyTo(granted + "/copy"));
}

TEST_P(Confinement, LosesWhatIsMovedOutOfAGrant) {
  rename(granted + "/below", outside + "/moved");
  EXPECT_FALSE(copyTo(outside + "/moved/copy"));
}

TEST_P(Confinement, EndsWithTheGrant) {
  accesses.clear();
  EXPECT_FALSE(copyTo(granted + "/copy"));
  EXPECT_FALSE(setMode(granted, 0700));
  EXPECT_FALSE(files->isWritableFileAtPath(granted));
}

TEST_P(Confinement, IsNotInTheWayOfUnmountingTheVolume) {
  grant(volume);
  EXPECT_TRUE(copyTo(granted + "/copy"));
  EXPECT_TRUE(setMode(granted + "/copy", 0600));
  EXPECT_TRUE(files->isWritableFileAtPath(granted));
  EXPECT_TRUE(mount->unmountFrom(volume));
  EXPECT_FALSE(files->isWritableFileAtPath(volume));
  EXPECT_FALSE(copyTo(volume + "/copy"));
}

TEST_P(Confinement, KnowsTheFolderAgainWhenTheVolumeIsBackOrElseRefuses) {
  ASSERT_TRUE(mount->unmountFrom(volume));
  ASSERT_TRUE(mount->mountAt(elsewhere));
  const bool kept = exists(elsewhere + "/granted");
  makeFolder(elsewhere + "/granted");
  EXPECT_EQ(copyTo(elsewhere + "/granted/copy"), kept);
  EXPECT_FALSE(copyTo(elsewhere + "/copy"));
}

TEST_P(Confinement, LeavesTheCallerFree) {
  EXPECT_TRUE(copyTo(granted + "/copy"));
  writeFile(outside + "/file", "changed");
  EXPECT_EQ(contentsOf(outside + "/file"), "changed");
}

TEST_P(Confinement, KeepsNoDescriptorOpen) {
  const auto count = [] {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
  };
  const auto before = count();
  EXPECT_TRUE(copyTo(granted + "/copy"));
  EXPECT_TRUE(setMode(granted + "/copy", 0600));
  EXPECT_FALSE(copyTo(outside + "/copy"));
  EXPECT_TRUE(files->isWritableFileAtPath(granted));
  grant(granted + "/below");
  scope->allowForThisRun(outside, Extent::Folder);
  scope->enterFolder(granted).reset();
  EXPECT_EQ(count(), before);
}

TEST_P(Confinement, SpeaksOfThePathThatTheCallerKnows) {
  EXPECT_TRUE(copyTo(granted + "/copy"));
  for (const std::string& path : {granted + "/copy", outside + "/copy"}) {
    EXPECT_FALSE(copyTo(path));
    EXPECT_THAT(sentenceOf(error), ::testing::HasSubstr(path));
  }
  EXPECT_THAT(sentenceOf(error), ::testing::Not(::testing::HasSubstr("/proc")));
}

TEST_P(Confinement, SetsAttributesOfFoldersAndOfFilesThatCannotBeWritten) {
  EXPECT_TRUE(copyTo(granted + "/copy"));
  EXPECT_TRUE(setMode(granted + "/copy", 0400));
  EXPECT_TRUE(setMode(granted + "/copy", 0500));
  EXPECT_EQ(modeOf(granted + "/copy"), 0500U);
  EXPECT_TRUE(setMode(granted + "/below", 0700));
  EXPECT_EQ(modeOf(granted + "/below"), 0700U);
  EXPECT_TRUE(setMode(granted, 0750));
  EXPECT_EQ(modeOf(granted), 0750U);
}

TEST_P(Confinement, AnswersTruthfullyWhatIsWritable) {
  writeFile(granted + "/file", "text");
  const std::vector<std::string> paths{granted,     granted + "/below",   granted + "/file",
                                       outside,     outside + "/file",    volume,
                                       "/",         granted + "/missing", granted + "/file/below",
                                       "/proc/self"};
  for (const std::string& path : paths) {
    const bool isFolder = std::filesystem::is_directory(path);
    const bool could = exists(path) && (isFolder ? copyTo(path + "/probe") : setMode(path, 0644));
    EXPECT_EQ(files->isWritableFileAtPath(path), could) << path;
  }
}

TEST_P(Confinement, FindsAFolderUnwritableThatItsPermissionsClose) {
  if (isRoot()) {
    EXPECT_TRUE(files->isWritableFileAtPath(granted));  // nothing is closed to root
    return;
  }
  chmod((granted + "/below").c_str(), 0555);
  EXPECT_FALSE(files->isWritableFileAtPath(granted + "/below"));
  chmod((granted + "/below").c_str(), 0755);
}

TEST_P(Confinement, FindsAFolderUnwritableOnAVolumeThatIsMountedReadOnly) {
  ASSERT_TRUE(RootCommands::run("mount -o remount,ro,bind " + volume));
  EXPECT_FALSE(files->isWritableFileAtPath(granted));
  EXPECT_FALSE(copyTo(granted + "/copy"));
}

TEST_P(Confinement, AllowsTheSavePanelsLocationAndNothingElse) {
  const std::string location = outside + "/chosen";
  scope->allowForThisRun(location, Extent::Item);
  EXPECT_TRUE(copyTo(location)) << sentenceOf(error);
  EXPECT_TRUE(setMode(location, 0600));
  EXPECT_TRUE(files->removeItemAtPath(location));
  EXPECT_FALSE(copyTo(outside + "/other"));
  EXPECT_FALSE(files->removeItemAtPath(outside + "/file"));
  EXPECT_FALSE(setMode(outside + "/file", 0600));
  EXPECT_FALSE(files->isWritableFileAtPath(outside));
  expectOutsideUntouched();
}

TEST_P(Confinement, AllowsWhatIsInAFolderAtTheSavePanelsLocation) {
  const std::string location = outside + "/chosen";
  scope->allowForThisRun(location, Extent::Item);
  ASSERT_TRUE(files->createDirectoryAtPath(location, false, &error)) << sentenceOf(error);
  EXPECT_TRUE(copyTo(location + "/copy")) << sentenceOf(error);
  EXPECT_TRUE(setMode(location + "/copy", 0600));
  EXPECT_TRUE(setMode(location, 0700));
  EXPECT_TRUE(files->removeItemAtPath(location));
  expectOutsideUntouched();
}

// A folder that a request has entered stands for itself until the request is over.

TEST_P(Confinement, LetsEveryOperationWorkInAFolderThatWasEntered) {
  const auto stay = scope->enterFolder(granted + "/below");
  EXPECT_TRUE(files->isWritableFileAtPath(granted + "/below/"));
  EXPECT_TRUE(copyTo(granted + "/below/copy")) << sentenceOf(error);
  EXPECT_TRUE(setMode(granted + "/below/copy", 0711)) << sentenceOf(error);
  EXPECT_EQ(modeOf(granted + "/below/copy"), 0711U);
  create_symlink("copy", granted + "/below/link");
  EXPECT_TRUE(setMode(granted + "/below/link", 0640)) << sentenceOf(error);
  EXPECT_EQ(modeOf(granted + "/below/copy"), 0640U);
  EXPECT_TRUE(copyTo(granted + "/beside")) << sentenceOf(error);
  EXPECT_TRUE(files->removeItemAtPath(granted + "/below/copy"));
}

TEST_P(Confinement, IsNotWidenedByEnteringAFolder) {
  create_symlink(outside + "/file", granted + "/link");
  create_directory_symlink(outside, granted + "/link-to-folder");
  for (const std::string& entered : {outside, granted, granted + "/link-to-folder"}) {
    const auto stay = scope->enterFolder(entered);
    EXPECT_FALSE(files->isWritableFileAtPath(outside));
    EXPECT_FALSE(copyTo(outside + "/copy"));
    EXPECT_FALSE(setMode(granted + "/link", 0600));
    EXPECT_FALSE(copyTo(granted + "/link-to-folder/copy"));
    EXPECT_FALSE(copyTo(granted + "/../outside/copy"));
    EXPECT_FALSE(setMode(granted + "/..", 0700));
  }
  EXPECT_NE(modeOf(outside + "/file"), 0600U);
  expectOutsideUntouched();
}

TEST_P(Confinement, KeepsToTheFolderThatWasEnteredWhateverTakesItsPath) {
  const auto stay = scope->enterFolder(granted + "/below");
  writeFile(granted + "/below/file", "inside");
  rename(granted + "/below", granted + "/renamed");
  create_directory_symlink(outside, granted + "/below");
  EXPECT_TRUE(setMode(granted + "/below/file", 0600));
  EXPECT_EQ(modeOf(granted + "/renamed/file"), 0600U);
  EXPECT_EQ(copyTo(granted + "/below/copy"), !hasLandlock());
  EXPECT_EQ(exists(granted + "/renamed/copy"), !hasLandlock());
  expectOutsideUntouched();
}

TEST_P(Confinement, EndsWithTheGrantEvenInAFolderThatWasEntered) {
  const auto stay = scope->enterFolder(granted);
  accesses.clear();
  EXPECT_FALSE(copyTo(granted + "/copy"));
  EXPECT_FALSE(setMode(granted, 0700));
  EXPECT_FALSE(files->isWritableFileAtPath(granted));
}

TEST_P(Confinement, BeginsWithTheGrantEvenInAFolderThatWasEntered) {
  const auto stay = scope->enterFolder(outside);
  scope->allowForThisRun(outside, Extent::Folder);
  EXPECT_TRUE(copyTo(outside + "/copy")) << sentenceOf(error);
}

TEST_P(Confinement, KnowsTheOuterFolderAgainWhenAnInnerOneIsLeft) {
  const auto outer = scope->enterFolder(granted);
  scope->enterFolder(granted + "/below").reset();
  rename(granted, volume + "/renamed");
  EXPECT_TRUE(setMode(granted, 0700)) << sentenceOf(error);
  EXPECT_EQ(modeOf(volume + "/renamed"), 0700U);
}

TEST_P(Confinement, LetsGoOfTheVolumeWhenTheFolderIsLeft) {
  scope->enterFolder(granted).reset();
  EXPECT_TRUE(mount->unmountFrom(volume));
}

/// What confined work tries beyond its item, the kernel refuses. Without the kernel's help the work
/// itself has to keep to its path.
class ConfinementByTheKernel : public Confinement {};

TEST_P(ConfinementByTheKernel, StopsWorkThatReachesElsewhere) {
  const FileDescriptor openOutside(open(outside.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  const std::string stray = outside + "/stray";
  const std::string file = outside + "/file";
  std::vector<int> codes;
  const auto attempt = [&](int result) { codes.push_back(result < 0 ? errno : 0); };
  ASSERT_TRUE(scope->performConfined(granted + "/x", [&](const std::string&) {
    attempt(open(file.c_str(), O_WRONLY));
    attempt(open(stray.c_str(), O_WRONLY | O_CREAT, 0600));
    attempt(openat(openOutside.get(), "stray", O_WRONLY | O_CREAT, 0600));
    attempt(open(outside.c_str(), O_TMPFILE | O_WRONLY, 0600));
    attempt(mkdir(stray.c_str(), 0700));
    attempt(symlink("x", stray.c_str()));
    attempt(mkfifo(stray.c_str(), 0600));
    attempt(unlink(file.c_str()));
    attempt(::rename(file.c_str(), (granted + "/stolen").c_str()));
    attempt(link(file.c_str(), (granted + "/stolen").c_str()));
    attempt(::rename((granted + "/below").c_str(), stray.c_str()));
    return true;
  }));
  EXPECT_THAT(codes, ::testing::Each(::testing::AnyOf(EACCES, EXDEV)));
  expectOutsideUntouched();
}

TEST_P(Confinement, RefusesToMoveBetweenTwoGrants) {
  const std::string other = volume + "/other";
  makeFolder(other);
  grant(other);
  writeFile(granted + "/file", "text");
  const auto move = [&](const std::string& place) {
    return ::rename((granted + "/file").c_str(), place.c_str()) == 0;
  };
  EXPECT_EQ(scope->performConfined(other + "/file", move), !hasLandlock());
}

TEST_P(ConfinementByTheKernel, HoldsForThreadsThatTheWorkStarts) {
  int code = 0;
  scope->performConfined(granted + "/x", [&](const std::string&) {
    std::thread([&] { code = mkdir((outside + "/x").c_str(), 0700) == 0 ? 0 : errno; }).join();
    return true;
  });
  EXPECT_EQ(code, EACCES);
}

TEST_P(Confinement, RunsTheWorkBesideTheCallersThread) {
  std::thread::id thread;
  scope->performConfined(granted + "/x", [&](const std::string&) {
    thread = std::this_thread::get_id();
    return true;
  });
  EXPECT_EQ(thread == std::this_thread::get_id(), !hasLandlock());
}

TEST_P(Confinement, DoesNotOutlastAReplacedFolder) {
  // The folder that was granted is gone; one that took its path and, maybe, its number is another.
  for (int round = 0; round < 10; ++round) {
    std::filesystem::remove_all(granted);
    makeFolder(granted);
    ASSERT_FALSE(copyTo(granted + "/copy"));
    ASSERT_FALSE(exists(granted + "/copy"));
  }
}

std::string nameOfParameters(const ::testing::TestParamInfo<std::tuple<Filesystem, Kernel>>& info) {
  constexpr const char* kernels[] = {"", "_with_the_first_landlock", "_without_landlock"};
  return std::string(Volume::nameOf(std::get<0>(info.param))) +
         kernels[static_cast<int>(std::get<1>(info.param))];
}

using ::testing::Combine;
using ::testing::Values;

INSTANTIATE_TEST_SUITE_P(On, Confinement,
                         Combine(Values(Filesystem::Ext4, Filesystem::Xfs, Filesystem::Btrfs,
                                        Filesystem::Tmpfs, Filesystem::Overlay),
                                 Values(Kernel::AsItIs)),
                         nameOfParameters);

INSTANTIATE_TEST_SUITE_P(OnOlderKernels, Confinement,
                         Combine(Values(Filesystem::Ext4, Filesystem::Overlay),
                                 Values(Kernel::FirstLandlock, Kernel::WithoutLandlock)),
                         nameOfParameters);

INSTANTIATE_TEST_SUITE_P(On, ConfinementByTheKernel,
                         Combine(Values(Filesystem::Ext4, Filesystem::Xfs, Filesystem::Btrfs,
                                        Filesystem::Tmpfs, Filesystem::Overlay),
                                 Values(Kernel::AsItIs)),
                         nameOfParameters);

INSTANTIATE_TEST_SUITE_P(OnOlderKernels, ConfinementByTheKernel,
                         Combine(Values(Filesystem::Ext4, Filesystem::Overlay),
                                 Values(Kernel::FirstLandlock)),
                         nameOfParameters);

}  // namespace
}  // namespace quennel::test
