#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/watch/InotifyKernelQueueFactory.h"
#include "tests/contract/watch/WatchedFilesystem.h"

namespace quennel::test {
namespace {

constexpr std::uint32_t allNotes = 0x7f;

/// Which kinds each operation fires, on each of the filesystems that people have. What is prepared
/// exists before it is watched.
class VnodeEventsOn : public ::testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    if (!_filesystem.reason().empty()) {
      GTEST_SKIP() << GetParam() << ": " << _filesystem.reason();
    }
  }

  std::string prepared(const std::string& name) const { return _filesystem.source() + "/" + name; }
  std::string at(const std::string& name) const { return _filesystem.folder() + "/" + name; }

  bool isOverlayLower() const { return _filesystem.source() != _filesystem.folder(); }
  void prepareFile(const std::string& name) { std::ofstream(prepared(name)) << "hello"; }
  void prepareFolder(const std::string& name) {
    ASSERT_EQ(::mkdir(prepared(name).c_str(), 0755), 0);
  }
  void prepareLink(const std::string& name, const std::string& existing) {
    std::filesystem::create_hard_link(prepared(existing), prepared(name));
  }

  /// Starts watching; to be called after the preparation.
  void watch(const std::string& name, std::uint32_t notes = allNotes) {
    if (isOverlayLower()) {
      _filesystem.reveal();
    }
    const int descriptor = _queue->open(SharedText(at(name)));
    ASSERT_GE(descriptor, 0);
    _target = std::make_shared<KernelEventTarget>();
    ASSERT_EQ(_queue->kevent(
                  {descriptor, EVFILT_VNODE, EV_ADD | EV_ENABLE | EV_CLEAR, notes, 0, _target}),
              0);
  }

  /// All kinds that have fired.
  std::uint32_t fired() {
    std::uint32_t notes = 0;
    KernelEvent event;
    while (_queue->kevent(event, std::chrono::seconds(0)) > 0) {
      notes |= event.fflags;
    }
    return notes;
  }

  void write(const std::string& name, const std::string& text, int flags = 0) {
    const FileDescriptor file(::open(at(name).c_str(), O_WRONLY | O_CREAT | flags, 0644));
    ASSERT_EQ(::write(file.get(), text.data(), text.size()), std::ssize(text));
  }
  void append(const std::string& name) { write(name, "x", O_APPEND); }
  void rename(const std::string& name, const std::string& newName) {
    ASSERT_EQ(::rename(at(name).c_str(), at(newName).c_str()), 0);
  }

  WatchedFilesystem _filesystem{GetParam()};
  InotifyKernelQueueFactory _queues;
  std::shared_ptr<KernelQueue> _queue = _queues.kqueue();
  std::shared_ptr<KernelEventTarget> _target;
};

INSTANTIATE_TEST_SUITE_P(Filesystems, VnodeEventsOn,
                         ::testing::Values("here", "ext4", "xfs", "btrfs", "tmpfs", "overlay",
                                           "overlay-lower"),
                         [](const auto& suite) {
                           std::string name = suite.param;
                           std::erase(name, '-');
                           return name;
                         });

// Contents

TEST_P(VnodeEventsOn, OverwritingIsAWrite) {
  prepareFile("file");
  watch("file");
  write("file", "HELLO");
  EXPECT_EQ(fired(), NOTE_WRITE);
}

TEST_P(VnodeEventsOn, AppendingIsAWriteThatExtends) {
  prepareFile("file");
  watch("file");
  append("file");
  EXPECT_EQ(fired(), NOTE_WRITE | NOTE_EXTEND);
  append("file");
  EXPECT_EQ(fired(), NOTE_WRITE | NOTE_EXTEND);
}

TEST_P(VnodeEventsOn, AHundredAppendsAreOneEvent) {
  prepareFile("file");
  watch("file");
  for (int i = 0; i < 100; ++i) {
    append("file");
  }
  KernelEvent event;
  EXPECT_EQ(_queue->kevent(event, std::chrono::seconds(0)), 1);
  EXPECT_EQ(event.fflags, NOTE_WRITE | NOTE_EXTEND);
  EXPECT_EQ(_queue->kevent(event, std::chrono::seconds(0)), 0);
}

TEST_P(VnodeEventsOn, TruncatingToLessChangesContentsAndAttributes) {
  prepareFile("file");
  watch("file");
  ASSERT_EQ(::truncate(at("file").c_str(), 2), 0);
  EXPECT_EQ(fired(), NOTE_WRITE | NOTE_ATTRIB);
}

TEST_P(VnodeEventsOn, TruncatingToMoreExtends) {
  prepareFile("file");
  watch("file");
  ASSERT_EQ(::truncate(at("file").c_str(), 100), 0);
  EXPECT_EQ(fired(), NOTE_WRITE | NOTE_EXTEND);
}

TEST_P(VnodeEventsOn, AllocatingMoreSpaceExtends) {
  prepareFile("file");
  watch("file");
  const FileDescriptor file(::open(at("file").c_str(), O_RDWR));
  ASSERT_EQ(::posix_fallocate(file.get(), 0, 8192), 0);
  EXPECT_EQ(fired(), NOTE_WRITE | NOTE_EXTEND);
}

TEST_P(VnodeEventsOn, OpeningReadingAndClosingIsNoEvent) {
  prepareFile("file");
  watch("file");
  char text[5];
  const FileDescriptor file(::open(at("file").c_str(), O_RDONLY));
  ASSERT_EQ(::read(file.get(), text, sizeof text), 5);
  EXPECT_EQ(fired(), 0U);
}

// Attributes

TEST_P(VnodeEventsOn, ANewModeIsAnAttribute) {
  prepareFile("file");
  watch("file");
  ASSERT_EQ(::chmod(at("file").c_str(), 0600), 0);
  EXPECT_EQ(fired(), NOTE_ATTRIB);
}

TEST_P(VnodeEventsOn, NewDatesAreAttributes) {
  prepareFile("file");
  watch("file");
  const timespec dates[2] = {{1, 0}, {1, 0}};
  ASSERT_EQ(::utimensat(AT_FDCWD, at("file").c_str(), dates, 0), 0);
  EXPECT_EQ(fired(), NOTE_ATTRIB);
}

TEST_P(VnodeEventsOn, AnExtendedAttributeIsAnAttribute) {
  prepareFile("file");
  watch("file");
  if (::setxattr(at("file").c_str(), "user.note", "1", 1, 0) != 0) {
    GTEST_SKIP() << GetParam() << ": no extended attributes for users";
  }
  EXPECT_EQ(fired(), NOTE_ATTRIB);
}

// Names

TEST_P(VnodeEventsOn, AnotherLinkCounts) {
  prepareFile("file");
  watch("file");
  ASSERT_EQ(::link(at("file").c_str(), at("link").c_str()), 0);
  EXPECT_EQ(fired(), NOTE_LINK);
}

TEST_P(VnodeEventsOn, UnlinkingAnotherNameDeletesALink) {
  prepareFile("file");
  prepareLink("link", "file");
  watch("file");
  if (isOverlayLower()) {
    return;  // where every name of a file is a file of its own
  }
  ASSERT_EQ(::unlink(at("link").c_str()), 0);
  EXPECT_EQ(fired(), NOTE_DELETE | NOTE_LINK);
}

TEST_P(VnodeEventsOn, UnlinkingTheWatchedNameDeletesALink) {
  prepareFile("file");
  prepareLink("link", "file");
  watch("file");
  ASSERT_EQ(::unlink(at("file").c_str()), 0);
  EXPECT_EQ(fired(), NOTE_DELETE | NOTE_LINK);
}

TEST_P(VnodeEventsOn, UnlinkingTheLastNameDeletes) {
  prepareFile("file");
  watch("file");
  ASSERT_EQ(::unlink(at("file").c_str()), 0);
  EXPECT_EQ(fired(), NOTE_DELETE | NOTE_LINK);
}

TEST_P(VnodeEventsOn, UnlinkingAFileThatAProgramHoldsOpenDeletesAtOnceAndOnlyOnce) {
  prepareFile("file");
  watch("file");
  FileDescriptor held(::open(at("file").c_str(), O_RDONLY));
  ASSERT_EQ(::unlink(at("file").c_str()), 0);
  EXPECT_EQ(fired(), NOTE_DELETE | NOTE_LINK);
  held.reset();
  EXPECT_EQ(fired(), 0U);
}

TEST_P(VnodeEventsOn, RenamingIsARename) {
  prepareFile("file");
  watch("file");
  rename("file", "renamed");
  EXPECT_EQ(fired(), NOTE_RENAME);
}

TEST_P(VnodeEventsOn, MovingToAnotherFolderIsARename) {
  prepareFile("file");
  prepareFolder("folder");
  watch("file");
  rename("file", "folder/file");
  EXPECT_EQ(fired(), NOTE_RENAME);
}

TEST_P(VnodeEventsOn, BeingReplacedByARenameDeletes) {
  prepareFile("file");
  prepareFile("new");
  watch("file");
  rename("new", "file");
  EXPECT_EQ(fired(), NOTE_DELETE | NOTE_LINK);
}

TEST_P(VnodeEventsOn, AHeldFileThatIsReplacedByARenameDeletes) {
  prepareFile("file");
  prepareFile("new");
  watch("file");
  const FileDescriptor held(::open(at("file").c_str(), O_RDONLY));
  rename("new", "file");
  EXPECT_EQ(fired(), NOTE_DELETE | NOTE_LINK);
}

// After a rename

TEST_P(VnodeEventsOn, ARenamedFileIsSeenAsExactlyAsBefore) {
  prepareFile("file");
  watch("file");
  rename("file", "renamed");
  ASSERT_EQ(fired(), NOTE_RENAME);
  append("renamed");
  EXPECT_EQ(fired(), NOTE_WRITE | NOTE_EXTEND);
  write("renamed", "HELLO");
  EXPECT_EQ(fired(), NOTE_WRITE);
  ASSERT_EQ(::chmod(at("renamed").c_str(), 0600), 0);
  EXPECT_EQ(fired(), NOTE_ATTRIB);
  rename("renamed", "again");
  EXPECT_EQ(fired(), NOTE_RENAME);
  ASSERT_EQ(::link(at("again").c_str(), at("link").c_str()), 0);
  EXPECT_EQ(fired(), NOTE_LINK);
  ASSERT_EQ(::unlink(at("again").c_str()), 0);
  EXPECT_EQ(fired(), NOTE_DELETE | NOTE_LINK);
}

TEST_P(VnodeEventsOn, ANewFileUnderTheOldNameIsNotWatched) {
  prepareFile("file");
  watch("file");
  rename("file", "renamed");
  ASSERT_EQ(fired(), NOTE_RENAME);
  write("file", "something else");
  append("file");
  ASSERT_EQ(::unlink(at("file").c_str()), 0);
  EXPECT_EQ(fired(), 0U);
}

TEST_P(VnodeEventsOn, WhatChangedBeforeARenameIsNotLost) {
  prepareFile("file");
  watch("file");
  append("file");
  ASSERT_EQ(::chmod(at("file").c_str(), 0600), 0);
  rename("file", "renamed");
  EXPECT_EQ(fired(), NOTE_WRITE | NOTE_EXTEND | NOTE_ATTRIB | NOTE_RENAME);
}

TEST_P(VnodeEventsOn, AFileInAnotherFolderFiresWhateverMayHaveHappened) {
  prepareFile("file");
  prepareFolder("folder");
  watch("file");
  rename("file", "folder/file");
  ASSERT_EQ(fired(), NOTE_RENAME);
  append("folder/file");
  EXPECT_EQ(fired(), NOTE_WRITE | NOTE_EXTEND);
  ASSERT_EQ(::chmod(at("folder/file").c_str(), 0600), 0);
  EXPECT_EQ(fired() & NOTE_ATTRIB, NOTE_ATTRIB);
  ASSERT_EQ(::unlink(at("folder/file").c_str()), 0);
  EXPECT_EQ(fired() & NOTE_DELETE, NOTE_DELETE);
}

TEST_P(VnodeEventsOn, AFileThatCameBackIsSeenAgain) {
  prepareFile("file");
  prepareFolder("folder");
  watch("file");
  rename("file", "folder/file");
  rename("folder/file", "file");
  ASSERT_EQ(fired(), NOTE_RENAME);
  write("file", "HELLO");
  EXPECT_EQ(fired(), NOTE_WRITE);
}

// Folders

TEST_P(VnodeEventsOn, AnEntryThatComesChangesOrGoesIsAWriteToItsFolder) {
  prepareFolder("folder");
  watch("folder");
  write("folder/file", "text");
  EXPECT_EQ(fired(), NOTE_WRITE);
  rename("folder/file", "folder/renamed");
  EXPECT_EQ(fired(), NOTE_WRITE);
  ASSERT_EQ(::unlink(at("folder/renamed").c_str()), 0);
  EXPECT_EQ(fired(), NOTE_WRITE);
}

TEST_P(VnodeEventsOn, ASubfolderIsALinkToItsParent) {
  prepareFolder("folder");
  watch("folder");
  ASSERT_EQ(::mkdir(at("folder/inner").c_str(), 0755), 0);
  EXPECT_EQ(fired(), NOTE_WRITE | NOTE_LINK);
  ASSERT_EQ(::rmdir(at("folder/inner").c_str()), 0);
  EXPECT_EQ(fired(), NOTE_WRITE | NOTE_LINK);
}

TEST_P(VnodeEventsOn, ASubfolderThatIsRenamedIsNoNewLink) {
  prepareFolder("folder");
  watch("folder");
  ASSERT_EQ(::mkdir(at("folder/inner").c_str(), 0755), 0);
  static_cast<void>(fired());
  rename("folder/inner", "folder/renamed");
  EXPECT_EQ(fired(), NOTE_WRITE);
}

TEST_P(VnodeEventsOn, TheContentsOfAFileAreNotItsFoldersBusiness) {
  prepareFolder("folder");
  prepareFile("folder/file");
  watch("folder");
  append("folder/file");
  ASSERT_EQ(::chmod(at("folder/file").c_str(), 0600), 0);
  EXPECT_EQ(fired(), 0U);
}

TEST_P(VnodeEventsOn, AFoldersOwnModeIsAnAttribute) {
  prepareFolder("folder");
  watch("folder");
  ASSERT_EQ(::chmod(at("folder").c_str(), 0700), 0);
  EXPECT_EQ(fired(), NOTE_ATTRIB);
}

TEST_P(VnodeEventsOn, ARemovedFolderIsDeleted) {
  prepareFolder("folder");
  watch("folder");
  ASSERT_EQ(::rmdir(at("folder").c_str()), 0);
  EXPECT_EQ(fired(), NOTE_DELETE | NOTE_LINK);
}

TEST_P(VnodeEventsOn, AFolderThatAProgramHoldsOpenIsDeletedAtOnceAndOnlyOnce) {
  prepareFolder("folder");
  watch("folder");
  FileDescriptor held(::open(at("folder").c_str(), O_RDONLY | O_DIRECTORY));
  ASSERT_EQ(::rmdir(at("folder").c_str()), 0);
  EXPECT_EQ(fired(), NOTE_DELETE | NOTE_LINK);
  held.reset();
  EXPECT_EQ(fired(), 0U);
}

TEST_P(VnodeEventsOn, ARenamedFolderIsStillSeen) {
  prepareFolder("folder");
  watch("folder");
  if (isOverlayLower()) {
    return;  // whose folders cannot be renamed
  }
  rename("folder", "renamed");
  EXPECT_EQ(fired(), NOTE_RENAME);
  write("renamed/file", "text");
  EXPECT_EQ(fired(), NOTE_WRITE);
  ASSERT_EQ(::unlink(at("renamed/file").c_str()), 0);
  static_cast<void>(fired());
  const FileDescriptor held(::open(at("renamed").c_str(), O_RDONLY | O_DIRECTORY));
  ASSERT_EQ(::rmdir(at("renamed").c_str()), 0);
  EXPECT_EQ(fired(), NOTE_DELETE | NOTE_LINK);
}

}  // namespace
}  // namespace quennel::test
