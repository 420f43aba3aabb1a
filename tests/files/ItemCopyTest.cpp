#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "platform/linux/files/PosixFileManager.h"
#include "tests/files/FileTools.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/LoopMount.h"
#include "tests/support/Sentence.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class ItemCopy : public ::testing::Test {
 protected:
  std::string at(const std::string& name) { return _folder / name; }
  bool copy(const std::string& from, const std::string& to) {
    _error = Error();
    return _files.copyItemAtPath(from, to, &_error);
  }
  void expectFailure(const std::string& from, int code) {
    EXPECT_FALSE(copy(from, at("copy")));
    EXPECT_EQ(_error.code, code) << sentenceOf(_error);
    EXPECT_THAT(sentenceOf(_error), HasSubstr(from));
  }
  void makeSocket(const std::string& path) {
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    ASSERT_LT(path.size(), sizeof address.sun_path);
    path.copy(address.sun_path, path.size());
    ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ::close(socket);
  }
  std::string copyAsNobody(const std::string& from, const std::string& to) {
    return asNobody(_folder.path(), [&] {
      return copy(from, to) ? std::string("copied") : std::to_string(_error.code);
    });
  }

  TemporaryDirectory _folder;
  PosixFileManager _posixFiles;
  FileManager& _files = _posixFiles;
  Error _error;
};

TEST_F(ItemCopy, SpecialFilesFailAtOnce) {
  ASSERT_EQ(::mkfifo(at("fifo").c_str(), 0644), 0);
  makeSocket(at("socket"));
  expectFailure(at("fifo"), EOPNOTSUPP);
  expectFailure(at("socket"), ENXIO);
  expectFailure("/dev/null", EOPNOTSUPP);
  EXPECT_THAT(namesIn(_folder.path()), ElementsAre("fifo", "socket"));
}

TEST_F(ItemCopy, SpecialFilesInAFolderFailAtOnceAndLeaveNothing) {
  for (const std::string kind : {"fifo", "socket"}) {
    makeFolder(at(kind));
    makeFolder(at(kind + "/inner"));
    writeFile(at(kind + "/inner/file"), "text");
  }
  ASSERT_EQ(::mkfifo(at("fifo/inner/item").c_str(), 0644), 0);
  makeSocket(at("socket/inner/item"));
  for (const std::string kind : {"fifo", "socket"}) {
    expectFailure(at(kind), EOPNOTSUPP);
    EXPECT_THAT(sentenceOf(_error), HasSubstr(at(kind + "/inner/item")));
  }
  EXPECT_THAT(namesIn(_folder.path()), ElementsAre("fifo", "socket"));
}

TEST_F(ItemCopy, ADeviceInAFolderFailsAtOnceAndLeavesNothing) {
  makeFolder(at("template"));
  if (::mknod(at("template/zero").c_str(), S_IFCHR | 0644, makedev(1, 5)) != 0) {
    GTEST_SKIP() << "making a device takes root";
  }
  expectFailure(at("template"), EOPNOTSUPP);
  EXPECT_THAT(namesIn(_folder.path()), ElementsAre("template"));
}

TEST_F(ItemCopy, WhatCannotBeReadFailsAndLeavesNothing) {
  writeFile(at("secret"), "text");
  makeFolder(at("template"));
  makeFolder(at("template/locked"));
  makeFolder(at("other"));
  writeFile(at("other/secret"), "text");
  ASSERT_EQ(::chmod(at("secret").c_str(), 0), 0);
  ASSERT_EQ(::chmod(at("other/secret").c_str(), 0), 0);
  ASSERT_EQ(::chmod(at("template/locked").c_str(), 0), 0);
  EXPECT_EQ(copyAsNobody(at("secret"), at("copy")), std::to_string(EACCES));
  EXPECT_EQ(copyAsNobody(at("template"), at("copy")), std::to_string(EACCES));
  EXPECT_EQ(copyAsNobody(at("other"), at("copy")), std::to_string(EACCES));
  EXPECT_THAT(namesIn(_folder.path()), ElementsAre("other", "secret", "template"));
}

TEST_F(ItemCopy, APlaceThatCannotBeWrittenFails) {
  writeFile(at("template"), "text");
  makeFolder(at("folder"));
  makeFolder(at("place"));
  ASSERT_EQ(::chmod(at("place").c_str(), 0555), 0);
  EXPECT_EQ(copyAsNobody(at("template"), at("place/copy")), std::to_string(EACCES));
  EXPECT_EQ(copyAsNobody(at("folder"), at("place/copy")), std::to_string(EACCES));
}

TEST_F(ItemCopy, WithoutPrivilegesTheCopyIsTheUsersOwnAndRunsAsNobodyElse) {
  writeFile(at("template"), "text");
  ASSERT_EQ(::chmod(at("template").c_str(), 06755), 0);
  if (::geteuid() != 0) {
    GTEST_SKIP() << "becoming another user takes root";
  }
  EXPECT_EQ(copyAsNobody(at("template"), at("copy")), "copied");
  EXPECT_EQ(statusAt(at("copy")).st_uid, nobody);
  EXPECT_EQ(statusAt(at("copy")).st_mode & 07777, 0755U);
}

TEST_F(ItemCopy, FoldersWithoutWritePermissionAreCopiedWithoutPrivileges) {
  const auto copyOwnFolder = [&]() -> std::string {
    makeFolder(at("template"));
    makeFolder(at("template/inner"));
    writeFile(at("template/inner/file"), "text");
    ::chmod(at("template/inner").c_str(), 0555);
    ::chmod(at("template").c_str(), 0500);
    return copy(at("template"), at("copy")) ? "copied" : sentenceOf(_error);
  };
  EXPECT_EQ(asNobody(_folder.path(), copyOwnFolder), "copied");
  EXPECT_EQ(statusAt(at("copy")).st_mode & 07777, 0500U);
  EXPECT_EQ(statusAt(at("copy/inner")).st_mode & 07777, 0555U);
}

TEST_F(ItemCopy, AFailureAmongFoldersWithoutWritePermissionLeavesNothing) {
  const auto copyOwnFolder = [&] {
    makeFolder(at("template"));
    for (int number = 0; number < 30; ++number) {
      const std::string inner = at("template/" + std::to_string(number));
      makeFolder(inner);
      writeFile(inner + "/file", "text");
      ::chmod(inner.c_str(), number % 2 == 0 ? 0555 : 0500);
    }
    makeFolder(at("template/last"));
    ::mkfifo(at("template/last/fifo").c_str(), 0644);
    ::chmod(at("template/last").c_str(), 0555);
    return std::to_string(copy(at("template"), at("copy")) ? 0 : _error.code);
  };
  EXPECT_EQ(asNobody(_folder.path(), copyOwnFolder), std::to_string(EOPNOTSUPP));
  EXPECT_THAT(namesIn(_folder.path()), ElementsAre("template"));
}

TEST_F(ItemCopy, AFileAppearsCompleteOrNotAtAll) {
  const std::string text = someText(std::size_t{2} * 1024 * 1024);
  writeFile(at("template"), text);
  ASSERT_EQ(::chmod(at("template").c_str(), 0751), 0);
  std::atomic<bool> isDone = false;
  std::atomic<int> seen = 0;
  std::thread watcher([&] {
    while (!isDone) {
      struct stat status;
      if (::stat(at("copy").c_str(), &status) == 0) {
        ++seen;
        EXPECT_EQ(status.st_size, static_cast<off_t>(text.size()));
        EXPECT_EQ(status.st_mode & 07777, 0751U);
      }
    }
  });
  for (int round = 0; round < 100 || seen == 0; ++round) {
    ASSERT_TRUE(copy(at("template"), at("copy"))) << sentenceOf(_error);
    ASSERT_EQ(::unlink(at("copy").c_str()), 0);
  }
  isDone = true;
  watcher.join();
}

TEST_F(ItemCopy, AFolderAppearsCompleteOrNotAtAll) {
  makeFolder(at("template"));
  for (int file = 0; file < 200; ++file) {
    writeFile(at("template/" + std::to_string(file)), "text");
  }
  ASSERT_EQ(::chmod(at("template").c_str(), 0751), 0);
  std::atomic<bool> isDone = false;
  std::atomic<int> seen = 0;
  std::thread watcher([&] {
    while (!isDone) {
      struct stat status;
      if (::stat(at("copy").c_str(), &status) == 0) {
        ++seen;
        EXPECT_EQ(status.st_mode & 07777, 0751U);
        EXPECT_EQ(namesIn(at("copy")).size(), 200U);
        isDone = true;
      }
    }
  });
  ASSERT_TRUE(copy(at("template"), at("copy"))) << sentenceOf(_error);
  watcher.join();
  EXPECT_EQ(seen, 1);
}

TEST_F(ItemCopy, TheProcessesMaskHasNoSay) {
  writeFile(at("template"), "text");
  makeFolder(at("folder"));
  ASSERT_EQ(::chmod(at("template").c_str(), 0666), 0);
  const mode_t mask = ::umask(0077);
  ASSERT_TRUE(copy(at("template"), at("copy")));
  ASSERT_TRUE(copy(at("folder"), at("other")));
  EXPECT_EQ(::umask(mask), 0077U);
  EXPECT_EQ(statusAt(at("copy")).st_mode & 07777, 0666U);
  EXPECT_EQ(statusAt(at("other")).st_mode & 07777, 0755U);
}

TEST_F(ItemCopy, LinksInsideAFolderStayLinks) {
  makeFolder(at("template"));
  makeLink(at("template/self"), ".");
  makeLink(at("template/loop"), "loop");
  makeLink(at("template/outside"), "/etc/passwd");
  ASSERT_TRUE(copy(at("template"), at("copy"))) << sentenceOf(_error);
  EXPECT_THAT(namesIn(at("copy")), ElementsAre("loop", "outside", "self"));
  for (const std::string& name : namesIn(at("copy"))) {
    EXPECT_TRUE(S_ISLNK(statusAt(at("copy/" + name)).st_mode)) << name;
  }
}

TEST_F(ItemCopy, AFolderIsNotCopiedIntoItselfByDetours) {
  makeFolder(at("template"));
  makeFolder(at("template/inner"));
  makeLink(at("link"), "template/inner");
  EXPECT_FALSE(copy(at("template"), at("link/copy")));
  EXPECT_EQ(_error.code, EINVAL);
  EXPECT_FALSE(copy(at("template"), at("template/../template/copy")));
  EXPECT_EQ(_error.code, EINVAL);
  EXPECT_FALSE(copy("/", at("copy")));
  EXPECT_EQ(_error.code, EINVAL);
  EXPECT_THAT(namesIn(at("template")), ElementsAre("inner"));
  EXPECT_THAT(namesIn(at("template/inner")), IsEmpty());
}

TEST_F(ItemCopy, AFolderIsNotCopiedIntoItselfThroughASecondMount) {
  const LoopMount filesystem("tmpfs");
  if (!filesystem) {
    GTEST_SKIP() << filesystem.reason();
  }
  makeFolder(filesystem / "template");
  makeFolder(filesystem / "template/inner");
  makeFolder(filesystem / "elsewhere");
  ASSERT_EQ(::mount((filesystem / "template/inner").c_str(), (filesystem / "elsewhere").c_str(),
                    nullptr, MS_BIND, nullptr),
            0);
  EXPECT_FALSE(copy(filesystem / "template", filesystem / "elsewhere/copy"));
  EXPECT_EQ(_error.code, EINVAL) << sentenceOf(_error);
  EXPECT_THAT(namesIn(filesystem / "elsewhere"), IsEmpty());
  ::umount((filesystem / "elsewhere").c_str());
}

TEST_F(ItemCopy, AFileThatGrowsIsCopiedAsFarAsItWentAtFirst) {
  const std::string text = someText(1'000'000);
  writeFile(at("template"), text);
  std::atomic<bool> isDone = false;
  std::thread writer([&] {
    std::ofstream file(at("template"), std::ios::app | std::ios::binary);
    while (!isDone) {
      file << "more\n" << std::flush;
    }
  });
  for (int round = 0; round < 20; ++round) {
    const std::string name = at("copy" + std::to_string(round));
    EXPECT_TRUE(copy(at("template"), name)) << sentenceOf(_error);
    EXPECT_EQ(readFile(name).substr(0, text.size()), text);
  }
  isDone = true;
  writer.join();
}

TEST_F(ItemCopy, AFileThatShrinksIsNoFailure) {
  const std::string text = someText(1'000'000);
  writeFile(at("template"), text);
  std::atomic<bool> isDone = false;
  std::thread writer([&] {
    while (!isDone) {
      EXPECT_EQ(::truncate(at("template").c_str(), 10), 0);
      EXPECT_EQ(::truncate(at("template").c_str(), static_cast<off_t>(text.size())), 0);
    }
  });
  for (int round = 0; round < 100; ++round) {
    const std::string name = at("copy" + std::to_string(round));
    EXPECT_TRUE(copy(at("template"), name)) << sentenceOf(_error);
    EXPECT_LE(statusAt(name).st_size, static_cast<off_t>(text.size()));
  }
  isDone = true;
  writer.join();
}

TEST_F(ItemCopy, AFileThatDoesNotKnowItsSizeIsReadToItsEnd) {
  ASSERT_TRUE(copy("/proc/filesystems", at("copy"))) << sentenceOf(_error);
  EXPECT_EQ(readFile(at("copy")), readFile("/proc/filesystems"));
}

TEST_F(ItemCopy, APathWithASlashAtItsEndIsUnderstood) {
  makeFolder(at("template"));
  writeFile(at("template/file"), "text");
  ASSERT_TRUE(copy(at("template/"), at("copy/"))) << sentenceOf(_error);
  EXPECT_EQ(readFile(at("copy/file")), "text");
}

/// Filesystems that lack what a copy is usually made with.
class PoorFilesystem : public ItemCopy {
 protected:
  /// A file, and a folder, copied to `place`, and what is in the way respected.
  void expectCopies(const std::string& place) {
    writeFile(at("template"), someText(100'000));
    makeFolder(at("folder"));
    makeFolder(at("folder/inner"));
    writeFile(at("folder/inner/file"), "text");
    ASSERT_TRUE(copy(at("template"), place + "/file")) << sentenceOf(_error);
    ASSERT_TRUE(copy(at("folder"), place + "/folder")) << sentenceOf(_error);
    EXPECT_EQ(readFile(place + "/file"), someText(100'000));
    EXPECT_EQ(readFile(place + "/folder/inner/file"), "text");
    EXPECT_THAT(namesIn(place), ElementsAre("file", "folder"));
    for (const std::string taken : {"/file", "/folder"}) {
      EXPECT_FALSE(copy(at("template"), place + taken));
      EXPECT_EQ(_error.code, EEXIST) << sentenceOf(_error);
      EXPECT_FALSE(copy(at("folder"), place + taken));
      EXPECT_EQ(_error.code, EEXIST) << sentenceOf(_error);
    }
    EXPECT_TRUE(_files.writeContents("new", place + "/file", &_error));
    EXPECT_EQ(readFile(place + "/file"), "new");
    EXPECT_THAT(namesIn(place), ElementsAre("file", "folder"));
  }
};

/// A second view of a folder, through a filesystem in user space that can neither make a file
/// without a name nor move without replacing.
class UserSpaceMount {
 public:
  explicit UserSpaceMount(const std::string& folder, const std::string& options = {}) {
    _isMounted = run("bindfs " + options + " " + folder + " " + _mount.path()) == 0;
  }
  ~UserSpaceMount() {
    if (_isMounted) {
      run("fusermount3 -u -z " + _mount.path());
    }
  }
  explicit operator bool() const { return _isMounted; }
  const std::string& path() const { return _mount.path(); }

 private:
  TemporaryDirectory _mount;
  bool _isMounted;
};

TEST_F(PoorFilesystem, OfAMemoryStickHoldsCopiesWithoutPermissions) {
  const LoopMount stick("exfat-fuse", 16);
  if (!stick) {
    GTEST_SKIP() << stick.reason();
  }
  writeFile(at("script"), "#!");
  ASSERT_EQ(::chmod(at("script").c_str(), 04711), 0);
  ASSERT_TRUE(copy(at("script"), stick / "script")) << sentenceOf(_error);
  ASSERT_EQ(::unlink((stick / "script").c_str()), 0);
  expectCopies(stick.path());
}

TEST_F(PoorFilesystem, OfAMemoryStickHoldsACopyForEachNameOfAFile) {
  const LoopMount stick("exfat-fuse", 16);
  if (!stick) {
    GTEST_SKIP() << stick.reason();
  }
  makeFolder(at("folder"));
  writeFile(at("folder/one"), "text");
  ASSERT_EQ(::link(at("folder/one").c_str(), at("folder/two").c_str()), 0);
  ASSERT_TRUE(copy(at("folder"), stick / "folder")) << sentenceOf(_error);
  EXPECT_EQ(readFile(stick / "folder/one"), "text");
  EXPECT_EQ(readFile(stick / "folder/two"), "text");
}

TEST_F(PoorFilesystem, OfAMemoryStickRefusesLinksAndIsLeftAsItWas) {
  const LoopMount stick("exfat-fuse", 16);
  if (!stick) {
    GTEST_SKIP() << stick.reason();
  }
  makeFolder(at("folder"));
  makeLink(at("folder/link"), "nowhere");
  EXPECT_FALSE(copy(at("folder"), stick / "folder"));
  EXPECT_THAT(sentenceOf(_error), HasSubstr(stick / "folder/link"));
  EXPECT_THAT(namesIn(stick.path()), IsEmpty());
}

TEST_F(PoorFilesystem, InUserSpaceHoldsCopies) {
  makeFolder(at("place"));
  const UserSpaceMount place(at("place"));
  if (!place) {
    GTEST_SKIP() << "bindfs failed or is missing";
  }
  expectCopies(place.path());
}

TEST_F(PoorFilesystem, WithoutAccessControlListsGivesTheGroupNoMoreThanItHad) {
  makeFolder(at("place"));
  const UserSpaceMount place(at("place"), "--xattr-none");
  if (!place) {
    GTEST_SKIP() << "bindfs failed or is missing";
  }
  writeFile(at("template"), "text");
  ASSERT_EQ(::chmod(at("template").c_str(), 0640), 0);
  ASSERT_EQ(run("setfacl -m u:1234:rwx " + at("template")), 0);
  ASSERT_EQ(statusAt(at("template")).st_mode & 07777, 0670U);
  ASSERT_TRUE(copy(at("template"), place.path() + "/copy")) << sentenceOf(_error);
  EXPECT_EQ(statusAt(at("place/copy")).st_mode & 07777, 0640U);
}

}  // namespace
}  // namespace quennel::test
