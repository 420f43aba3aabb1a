#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <map>
#include <string>
#include <vector>

#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/watch/InotifyKernelQueue.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Deadline.h"
#include "tests/support/LoopMount.h"
#include "tests/support/Sentence.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

using ::testing::HasSubstr;

constexpr std::uint32_t allNotes = 0x7f;

void write(const std::string& path, const std::string& text, int flags = 0) {
  const FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | flags, 0644));
  ASSERT_EQ(::write(file.get(), text.data(), text.size()), std::ssize(text)) << path;
}

void append(const std::string& path) { write(path, "x", O_APPEND); }

/// A queue, and by their names the files that it watches.
class WatchedFiles {
 public:
  explicit WatchedFiles(std::string folder) : _folder(std::move(folder)) {}

  std::string at(const std::string& name) const { return _folder + "/" + name; }
  KernelQueue& queue() { return *_queue; }

  int watch(const std::string& name, std::uint32_t notes = allNotes) {
    const int descriptor = _queue->open(SharedText(at(name)));
    const KernelEvent change{descriptor, EVFILT_VNODE, EV_ADD | EV_ENABLE | EV_CLEAR, notes, 0, {}};
    EXPECT_EQ(_queue->kevent(change), 0) << name;
    _names[descriptor] = name;
    return descriptor;
  }

  int watchNewFile(const std::string& name, std::uint32_t notes = allNotes) {
    write(at(name), "hello");
    return watch(name, notes);
  }

  /// The kinds that have fired for each file.
  std::map<std::string, std::uint32_t> fired() {
    std::map<std::string, std::uint32_t> notes;
    KernelEvent event;
    while (_queue->kevent(event, std::chrono::seconds(0)) > 0) {
      notes[_names.at(event.ident)] |= event.fflags;
    }
    return notes;
  }
  std::uint32_t fired(const std::string& name) { return fired()[name]; }

 private:
  std::string _folder;
  std::shared_ptr<KernelQueue> _queue = InotifyKernelQueue::create();
  std::map<int, std::string> _names;
};

class AnInotifyKernelQueue : public ::testing::Test {
 protected:
  TemporaryDirectory _folder;
  WatchedFiles _files{_folder.path()};
};

// Paths

TEST_F(AnInotifyKernelQueue, FollowsASymbolicLinkOnceAndStaysWithWhatItLedTo) {
  write(_folder / "target", "text");
  write(_folder / "other", "text");
  std::filesystem::create_symlink("target", _folder / "link");
  _files.watch("link");
  append(_folder / "target");
  EXPECT_EQ(_files.fired("link"), NOTE_WRITE | NOTE_EXTEND);

  std::filesystem::remove(_folder / "link");
  std::filesystem::create_symlink("other", _folder / "link");
  append(_folder / "other");
  EXPECT_EQ(_files.fired("link"), 0U);
  append(_folder / "target");
  EXPECT_EQ(_files.fired("link"), NOTE_WRITE | NOTE_EXTEND);
}

TEST_F(AnInotifyKernelQueue, DoesNotOpenADanglingLink) {
  std::filesystem::create_symlink("nothing", _folder / "link");
  Error error;
  EXPECT_EQ(_files.queue().open(SharedText(_folder / "link"), &error), -1);
  EXPECT_EQ(error.code, ENOENT);
}

TEST_F(AnInotifyKernelQueue, DoesNotOpenAnEmptyOrANullPath) {
  EXPECT_EQ(_files.queue().open(SharedText("")), -1);
  EXPECT_EQ(_files.queue().open(SharedText()), -1);
}

TEST_F(AnInotifyKernelQueue, KnowsAFileOpenedByARelativePathAfterTheWorkingDirectoryChanged) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(_folder.path());
  write("file", "text");
  const int descriptor = _files.queue().open(SharedText("file"));
  std::filesystem::current_path(before);
  ASSERT_EQ(_files.queue().kevent({descriptor, EVFILT_VNODE, EV_ADD, allNotes, 0, {}}), 0);
  append(_folder / "file");

  KernelEvent event;
  ASSERT_EQ(_files.queue().kevent(event, std::chrono::seconds(0)), 1);
  EXPECT_EQ(event.fflags, NOTE_WRITE | NOTE_EXTEND);
}

TEST_F(AnInotifyKernelQueue, KnowsAFolderOpenedInARoundaboutWay) {
  std::filesystem::create_directories(_folder / "folder/inner");
  const int descriptor = _files.queue().open(SharedText(_folder / "folder/inner/.."));
  ASSERT_EQ(_files.queue().kevent({descriptor, EVFILT_VNODE, EV_ADD, allNotes, 0, {}}), 0);
  std::filesystem::rename(_folder / "folder", _folder / "renamed");
  write(_folder / "renamed/file", "text");

  KernelEvent event;
  ASSERT_EQ(_files.queue().kevent(event, std::chrono::seconds(0)), 1);
  EXPECT_EQ(event.fflags, NOTE_RENAME | NOTE_WRITE);
}

TEST_F(AnInotifyKernelQueue, SaysNothingWhenAFolderOnThePathIsRenamedAndStillSeesTheFileChange) {
  std::filesystem::create_directory(_folder / "folder");
  _files.watchNewFile("folder/file");
  std::filesystem::rename(_folder / "folder", _folder / "renamed");
  EXPECT_EQ(_files.fired("folder/file"), 0U);
  append(_folder / "renamed/file");
  EXPECT_EQ(_files.fired("folder/file"), NOTE_WRITE | NOTE_EXTEND);
  std::filesystem::permissions(_folder / "renamed/file", std::filesystem::perms::owner_all);
  const std::uint32_t notes = _files.fired("folder/file");
  EXPECT_TRUE(notes & NOTE_ATTRIB);
  EXPECT_FALSE(notes & NOTE_DELETE);
}

TEST_F(AnInotifyKernelQueue, FindsManyFilesThatWereRenamedAtOnce) {
  for (int i = 0; i < 100; ++i) {
    _files.watchNewFile("file" + std::to_string(i));
  }
  for (int i = 0; i < 100; ++i) {
    std::filesystem::rename(_folder / ("file" + std::to_string(i)),
                            _folder / ("renamed" + std::to_string(i)));
  }
  EXPECT_EQ(_files.fired().size(), 100U);
  for (int i = 0; i < 100; ++i) {
    write(_folder / ("renamed" + std::to_string(i)), "HELLO");
  }
  const auto fired = _files.fired();
  EXPECT_EQ(fired.size(), 100U);
  for (const auto& [name, notes] : fired) {
    EXPECT_EQ(notes, NOTE_WRITE) << name;
  }
}

TEST_F(AnInotifyKernelQueue, TellsAFileFromOneThatWasGivenItsInodeNumber) {
  _files.watchNewFile("file");
  std::filesystem::remove(_folder / "file");
  write(_folder / "file", "a new one, often with the old number");
  EXPECT_EQ(_files.fired("file"), NOTE_DELETE | NOTE_LINK);
  std::filesystem::permissions(_folder / "file", std::filesystem::perms::owner_all);
  EXPECT_EQ(_files.fired("file"), 0U);
}

// Threads

TEST_F(AnInotifyKernelQueue, HandsEventsThatAnotherThreadFoundToTheOneThatWaits) {
  _files.watchNewFile("file");
  for (int round = 0; round < 100; ++round) {
    auto waited = std::async(std::launch::async, [this] {
      KernelEvent event;
      return _files.queue().kevent(event, Deadline::standard);
    });
    append(_folder / "file");
    // Opening a file that is watched already takes in what happened to it so far.
    const int descriptor = _files.queue().open(SharedText(_folder / "file"));
    EXPECT_EQ(waited.get(), 1);
    _files.queue().close(descriptor);
  }
}

// Limits

TEST_F(AnInotifyKernelQueue, HoldsNoDescriptorsOnWhatItWatches) {
  rlimit before;
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
  rlimit limited = before;
  limited.rlim_cur = 64;
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limited), 0);
  for (int i = 0; i < 500; ++i) {
    _files.watchNewFile(std::to_string(i));
  }
  append(_folder / "499");
  EXPECT_EQ(_files.fired("499"), NOTE_WRITE | NOTE_EXTEND);
  ::setrlimit(RLIMIT_NOFILE, &before);
}

// A program with threads cannot enter a user namespace, and this sanitizer has a thread of its own.
#ifndef __SANITIZE_THREAD__

/// Runs `body` in a user namespace, where the system's limits can be lowered for it alone.
std::string withLimit(const std::string& limit, int value,
                      const std::function<std::string()>& body) {
  return inChildProcess([&]() -> std::string {
    if (::unshare(CLONE_NEWUSER) != 0) {
      return "skip: no user namespaces";
    }
    std::ofstream("/proc/self/uid_map") << "0 0 1";
    std::ofstream file("/proc/sys/user/" + limit);
    file << value << std::flush;
    return file ? body() : "skip: " + limit + " cannot be lowered";
  });
}

TEST_F(AnInotifyKernelQueue, WatchesAsManyFilesAsTheSystemAllowsAndSaysWhenItCannotWatchMore) {
  const auto said = withLimit("max_inotify_watches", 20, [this]() -> std::string {
    WatchedFiles files(_folder.path());
    for (int i = 0; i < 20; ++i) {
      files.watchNewFile(std::to_string(i));
    }
    write(_folder / "more", "text");
    Error error;
    const bool isRefused = files.queue().open(SharedText(_folder / "more"), &error) == -1;
    append(_folder / "19");
    const bool isRest = files.fired("19") == (NOTE_WRITE | NOTE_EXTEND);
    files.queue().close(0);
    const bool isRoom = files.queue().open(SharedText(_folder / "more")) >= 0;
    return isRefused && isRest && isRoom ? sentenceOf(error) : "failed";
  });
  if (said.starts_with("skip")) {
    GTEST_SKIP() << said;
  }
  EXPECT_THAT(said, HasSubstr("fs.inotify.max_user_watches"));
}

TEST_F(AnInotifyKernelQueue, GivesUpWhatItOnlyNeedsForExactnessToWatchMore) {
  const auto said = withLimit("max_inotify_watches", 10, [this]() -> std::string {
    WatchedFiles files(_folder.path());
    for (int i = 0; i < 10; ++i) {  // each has a parent of its own
      const std::string name = "parent" + std::to_string(i) + "/folder";
      std::filesystem::create_directories(_folder / name);
      files.watch(name);
    }
    write(_folder / "parent9/folder/file", "text");
    return files.fired("parent9/folder") == NOTE_WRITE ? "watched" : "failed";
  });
  if (said.starts_with("skip")) {
    GTEST_SKIP() << said;
  }
  EXPECT_EQ(said, "watched");
}

TEST_F(AnInotifyKernelQueue, IsNotMadeWhenTheSystemHasNoInstanceLeft) {
  const auto said = withLimit("max_inotify_instances", 0, [] {
    return std::string(InotifyKernelQueue::create() ? "made" : "not made");
  });
  if (said.starts_with("skip")) {
    GTEST_SKIP() << said;
  }
  EXPECT_EQ(said, "not made");
}

#endif

TEST_F(AnInotifyKernelQueue, DoesNotOpenWhatTheUserMayNotRead) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "becoming another user takes root";
  }
  write(_folder / "file", "text");
  std::filesystem::permissions(_folder / "file", std::filesystem::perms::owner_all);
  std::filesystem::permissions(_folder.path(), std::filesystem::perms::all);
  const auto said = inChildProcess([this] {
    EXPECT_EQ(::seteuid(65534), 0);
    Error error;
    InotifyKernelQueue::create()->open(SharedText(_folder / "file"), &error);
    return std::to_string(error.code);
  });
  EXPECT_EQ(said, std::to_string(EACCES));
}

// Lost events

class AnOverflowingKernelQueue : public AnInotifyKernelQueue {
 protected:
  void SetUp() override {
    for (const char* name : {"busy", "busier"}) {
      _files.watchNewFile(name);
    }
  }

  /// Has more happen than the kernel keeps.
  void overflow() {
    int limit = 0;
    std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> limit;
    ASSERT_GT(limit, 0);
    const FileDescriptor one(::open((_folder / "busy").c_str(), O_WRONLY));
    const FileDescriptor two(::open((_folder / "busier").c_str(), O_WRONLY));
    for (int i = 0; i <= limit; i += 2) {  // by turns, or the kernel would take them together
      ASSERT_EQ(::write(one.get(), "x", 1), 1);
      ASSERT_EQ(::write(two.get(), "x", 1), 1);
    }
  }
};

TEST_F(AnOverflowingKernelQueue, StillTellsWhatHappenedToContentsAndAttributes) {
  for (const char* name : {"overwritten", "grown", "shortened", "mode", "linked", "untouched"}) {
    _files.watchNewFile(name);
  }
  std::filesystem::create_directory(_folder / "folder");
  _files.watch("folder");
  overflow();
  write(_folder / "overwritten", "HELLO");
  append(_folder / "grown");
  std::filesystem::resize_file(_folder / "shortened", 1);
  std::filesystem::permissions(_folder / "mode", std::filesystem::perms::owner_all);
  std::filesystem::create_hard_link(_folder / "linked", _folder / "link");
  std::filesystem::create_directory(_folder / "folder/inner");

  auto fired = _files.fired();
  EXPECT_EQ(fired["overwritten"], NOTE_WRITE);
  EXPECT_EQ(fired["grown"], NOTE_WRITE | NOTE_EXTEND);
  EXPECT_EQ(fired["shortened"], NOTE_WRITE | NOTE_ATTRIB);
  EXPECT_EQ(fired["mode"], NOTE_ATTRIB);
  EXPECT_EQ(fired["linked"], NOTE_LINK);
  EXPECT_EQ(fired["folder"], NOTE_WRITE | NOTE_LINK);
  EXPECT_EQ(fired["untouched"], 0U);
}

TEST_F(AnOverflowingKernelQueue, StillTellsWhatHappenedToNames) {
  for (const char* name : {"renamed", "renamed and grown", "moved", "deleted", "replaced"}) {
    _files.watchNewFile(name);
  }
  std::filesystem::create_directory(_folder / "elsewhere");
  std::filesystem::create_directory(_folder / "folder");
  _files.watch("folder");
  write(_folder / "new", "text");
  overflow();
  std::filesystem::rename(_folder / "renamed", _folder / "renamed.1");
  append(_folder / "renamed and grown");
  std::filesystem::rename(_folder / "renamed and grown", _folder / "renamed.2");
  std::filesystem::rename(_folder / "moved", _folder / "elsewhere/moved");
  std::filesystem::remove(_folder / "deleted");
  std::filesystem::rename(_folder / "new", _folder / "replaced");
  std::filesystem::remove(_folder / "folder");

  auto fired = _files.fired();
  EXPECT_EQ(fired["renamed"], NOTE_RENAME);
  EXPECT_EQ(fired["renamed and grown"], NOTE_RENAME | NOTE_WRITE | NOTE_EXTEND);
  EXPECT_TRUE(fired["moved"] & NOTE_RENAME);
  EXPECT_EQ(fired["deleted"], NOTE_DELETE | NOTE_LINK);
  EXPECT_EQ(fired["replaced"], NOTE_DELETE | NOTE_LINK);
  EXPECT_EQ(fired["folder"], NOTE_DELETE | NOTE_LINK);
}

TEST_F(AnOverflowingKernelQueue, TellsOfADeletedFileThatAProgramHoldsOpen) {
  _files.watchNewFile("file");
  const FileDescriptor held(::open((_folder / "file").c_str(), O_RDONLY));
  overflow();
  std::filesystem::remove(_folder / "file");
  EXPECT_EQ(_files.fired("file") & (NOTE_DELETE | NOTE_LINK), NOTE_DELETE | NOTE_LINK);
}

TEST_F(AnOverflowingKernelQueue, GoesOnWatching) {
  _files.watchNewFile("renamed");
  overflow();
  std::filesystem::rename(_folder / "renamed", _folder / "renamed.1");
  static_cast<void>(_files.fired());
  append(_folder / "renamed.1");
  append(_folder / "busy");
  auto fired = _files.fired();
  EXPECT_EQ(fired["renamed"], NOTE_WRITE | NOTE_EXTEND);
  EXPECT_EQ(fired["busy"], NOTE_WRITE | NOTE_EXTEND);
}

// Volumes

class AKernelQueueOnAVolume : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!_volume) {
      GTEST_SKIP() << _volume.reason();
    }
    _files.emplace(_volume.path());
  }

  LoopMount _volume{"ext4", 16};
  std::optional<WatchedFiles> _files;
};

TEST_F(AKernelQueueOnAVolume, DoesNotKeepItFromBeingUnmountedAndTellsOfIt) {
  std::filesystem::create_directory(_volume / "folder");
  _files->watchNewFile("file");
  _files->watch("folder");
  ASSERT_EQ(::umount(_volume.path().c_str()), 0);
  auto fired = _files->fired();
  EXPECT_EQ(fired["file"], NOTE_REVOKE);
  EXPECT_EQ(fired["folder"], NOTE_REVOKE);
  EXPECT_TRUE(_files->fired().empty());
}

TEST_F(AKernelQueueOnAVolume, TellsOnceOfALazyUnmountWhileAProgramHoldsTheVolume) {
  const int descriptor = _files->watchNewFile("file");
  FileDescriptor held(::open((_volume / "file").c_str(), O_RDONLY));
  ASSERT_EQ(::umount2(_volume.path().c_str(), MNT_DETACH), 0);
  EXPECT_EQ(_files->fired("file"), NOTE_REVOKE);
  held.reset();
  EXPECT_EQ(_files->fired("file"), 0U);
  _files->queue().close(descriptor);
}

TEST_F(AKernelQueueOnAVolume,
       TellsWhenTheMountItLooksThroughGoesAndTheVolumeStaysMountedElsewhere) {
  const TemporaryDirectory elsewhere;
  write(_volume / "file", "text");
  ASSERT_EQ(::mount(_volume.path().c_str(), elsewhere.path().c_str(), nullptr, MS_BIND, nullptr),
            0);
  WatchedFiles files(elsewhere.path());
  _files->watch("file");
  files.watch("file");
  ASSERT_EQ(::umount(elsewhere.path().c_str()), 0);
  EXPECT_EQ(files.fired("file"), NOTE_REVOKE);
  EXPECT_EQ(_files->fired("file"), 0U);
}

TEST_F(AKernelQueueOnAVolume, SaysNothingOfMountsToThoseWhoDoNotAsk) {
  _files->watchNewFile("file", allNotes & ~NOTE_REVOKE);
  ASSERT_EQ(::umount(_volume.path().c_str()), 0);
  EXPECT_TRUE(_files->fired().empty());
}

TEST_F(AKernelQueueOnAVolume, SaysNothingWhenAnotherVolumeIsMountedOrUnmounted) {
  _files->watchNewFile("file");
  {
    const LoopMount other("tmpfs", 1);
    EXPECT_TRUE(_files->fired().empty());
  }
  EXPECT_TRUE(_files->fired().empty());
}

}  // namespace
}  // namespace quennel::test
