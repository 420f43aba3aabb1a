#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <string>
#include <thread>

#include "platform/linux/files/PosixFileManager.h"
#include "tests/files/FileTools.h"
#include "tests/support/LoopMount.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

using ::testing::ElementsAre;
using Replacement = FileManager::Replacement;

/// Templates, a file and a folder, and an old item of either kind that they are to replace.
class ItemReplacement : public ::testing::Test {
 protected:
  ItemReplacement() {
    writeFile(at("file"), newText);
    makeTree(at("folder"), newText);
    makeFolder(at("place"));
  }

  std::string at(const std::string& name) { return _folder / name; }
  void makeTree(const std::string& path, const std::string& text) {
    makeFolder(path);
    for (int number = 0; number < 30; ++number) {
      writeFile(path + "/" + std::to_string(number), text);
    }
  }
  void makeOld(const std::string& kind) {
    if (kind == "file") {
      writeFile(at("place/item"), oldText);
    } else {
      makeTree(at("place/item"), oldText);
    }
  }
  void clearPlace() {
    ASSERT_EQ(run("rm -rf " + at("place")), 0);
    makeFolder(at("place"));
  }
  Replacement replace(const std::string& path, const std::string& source) {
    _error = Error();
    return _files.replaceItemAtPath(path, source, &_error);
  }
  /// The text in the item, or in every file of it; a word of complaint when they differ.
  std::string textIn(const std::string& path) {
    if (S_ISREG(statusAt(path).st_mode)) {
      return readFile(path);
    }
    const auto names = namesIn(path);
    const std::string text = names.empty() ? "" : readFile(path + "/" + names.front());
    for (const std::string& name : names) {
      if (readFile(path + "/" + name) != text) {
        return "mixed";
      }
    }
    return names.size() == 30 ? text : "incomplete";
  }
  std::string replaceAsNobody(const std::string& path, const std::string& source) {
    return asNobody(_folder.path(), [&] {
      const Replacement replacement = replace(path, source);
      return std::to_string(static_cast<int>(replacement)) + " " + std::to_string(_error.code);
    });
  }
  static std::string answer(Replacement replacement, int code) {
    return std::to_string(static_cast<int>(replacement)) + " " + std::to_string(code);
  }

  const std::string newText = someText(20'000);
  const std::string oldText = "old";
  TemporaryDirectory _folder;
  PosixFileManager _posixFiles;
  FileManager& _files = _posixFiles;
  Error _error;
};

TEST_F(ItemReplacement, TheOldItemOrTheNewOneIsThereAtEveryMoment) {
  for (const std::string source : {"file", "folder"}) {
    makeOld(source == "file" ? "folder" : "file");
    std::atomic<bool> isDone = false;
    std::thread watcher([&] {
      while (!isDone) {
        struct stat status;
        EXPECT_EQ(::lstat(at("place/item").c_str(), &status), 0);
      }
    });
    for (int round = 0; round < 100; ++round) {
      ASSERT_EQ(replace(at("place/item"), at(round % 2 == 0 ? "file" : "folder")),
                Replacement::Done)
          << _error.code;
    }
    isDone = true;
    watcher.join();
    EXPECT_THAT(namesIn(at("place")), ElementsAre("item"));
    clearPlace();
  }
}

TEST_F(ItemReplacement, AProcessThatIsKilledLeavesTheOldItemOrTheNewOneAndNothingToSee) {
  for (int round = 0; round < 200; ++round) {
    const std::string old = round % 2 == 0 ? "file" : "folder";
    const std::string source = round % 4 < 2 ? "file" : "folder";
    makeOld(old);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      ::_exit(replace(at("place/item"), at(source)) == Replacement::Done ? 0 : 1);
    }
    std::this_thread::sleep_for(std::chrono::microseconds(round * 20));
    ASSERT_EQ(::kill(child, SIGKILL), 0);
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);
    const auto names = namesIn(at("place"));
    ASSERT_THAT(names, ::testing::Contains("item")) << old << " by " << source;
    for (const std::string& name : names) {
      EXPECT_TRUE(name == "item" || name.starts_with(".")) << name;
    }
    EXPECT_THAT(textIn(at("place/item")), ::testing::AnyOf(oldText, newText))
        << old << " by " << source;
    clearPlace();
  }
}

TEST_F(ItemReplacement, AFullFilesystemLeavesTheOldItem) {
  const LoopMount filesystem("tmpfs");
  if (!filesystem) {
    GTEST_SKIP() << filesystem.reason();
  }
  writeFile(at("large"), someText(std::size_t{2} * 1024 * 1024));
  writeFile(filesystem / "item", oldText);
  fillFilesystem(filesystem / "filler");
  EXPECT_EQ(replace(filesystem / "item", at("large")), Replacement::NotCopied);
  EXPECT_EQ(_error.code, ENOSPC) << _error.code;
  EXPECT_EQ(readFile(filesystem / "item"), oldText);
  EXPECT_THAT(namesIn(filesystem.path()), ElementsAre("filler", "item"));
}

TEST_F(ItemReplacement, AFolderThatCannotBeReadToItsEndLeavesTheOldItem) {
  ASSERT_EQ(::mkfifo(at("folder/fifo").c_str(), 0644), 0);
  makeOld("folder");
  EXPECT_EQ(replace(at("place/item"), at("folder")), Replacement::NotCopied);
  EXPECT_EQ(textIn(at("place/item")), oldText);
  EXPECT_THAT(namesIn(at("place")), ElementsAre("item"));
}

/// What takes a user without privileges to refuse.
class ItemOfOthers : public ItemReplacement {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) {
      GTEST_SKIP() << "becoming another user takes root";
    }
  }
};

TEST_F(ItemOfOthers, InALockedFolderIsNotSetAsideEvenIfThereIsNothingToCopy) {
  makeOld("file");
  for (const std::string source : {"file", "missing"}) {
    EXPECT_EQ(replaceAsNobody(at("place/item"), at(source)),
              answer(Replacement::NotSetAside, EACCES));
  }
  EXPECT_EQ(textIn(at("place/item")), oldText);
}

TEST_F(ItemOfOthers, InAFolderForEverybodyIsNotSetAside) {
  for (const std::string old : {"file", "folder"}) {
    makeOld(old);
    ASSERT_EQ(::chmod(at("place").c_str(), 01777), 0);
    EXPECT_EQ(replaceAsNobody(at("place/item"), at("file")),
              answer(Replacement::NotSetAside, EPERM));
    EXPECT_EQ(textIn(at("place/item")), oldText);
    EXPECT_THAT(namesIn(at("place")), ElementsAre("item"));
    clearPlace();
  }
}

TEST_F(ItemOfOthers, ThatCannotBeRemovedGoesBackToItsPlace) {
  makeOld("folder");
  ASSERT_EQ(::chmod(at("place").c_str(), 0777), 0);
  EXPECT_EQ(replaceAsNobody(at("place/item"), at("file")),
            answer(Replacement::NotSetAside, EACCES));
  EXPECT_EQ(textIn(at("place/item")), oldText);
  EXPECT_THAT(namesIn(at("place")), ElementsAre("item"));
}

TEST_F(ItemReplacement, WorksWhereTheFilesystemCannotExchangeNames) {
  TemporaryDirectory mount;
  if (run("bindfs " + at("place") + " " + mount.path()) != 0) {
    GTEST_SKIP() << "bindfs failed or is missing";
  }
  for (const std::string old : {"file", "folder"}) {
    for (const std::string source : {"file", "folder"}) {
      makeOld(old);
      EXPECT_EQ(replace(mount / "item", at(source)), Replacement::Done) << _error.code;
      EXPECT_EQ(textIn(at("place/item")), newText);
      EXPECT_THAT(namesIn(at("place")), ElementsAre("item"));
      ASSERT_TRUE(_files.removeItemAtPath(at("place/item")));
    }
  }
  run("fusermount3 -u -z " + mount.path());
}

}  // namespace
}  // namespace quennel::test
