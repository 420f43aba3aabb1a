#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "platform/linux/files/PosixFileManager.h"
#include "tests/files/FileTools.h"
#include "tests/support/LoopMount.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

class Writability : public ::testing::Test {
 protected:
  std::string asNobodySees(const std::string& path) {
    return asNobody(folder.path(), [&] {
      return std::string(files.isWritableFileAtPath(path) ? "writable" : "not writable");
    });
  }
  void setMode(const std::string& path, mode_t mode) { ASSERT_EQ(::chmod(path.c_str(), mode), 0); }

  TemporaryDirectory folder;
  PosixFileManager files;
};

TEST_F(Writability, OfAFolderTakesThePermissionToSearchItToo) {
  makeFolder(folder / "open");
  makeFolder(folder / "unsearchable");
  makeFolder(folder / "readable");
  setMode(folder / "open", 0777);
  setMode(folder / "unsearchable", 0766);
  setMode(folder / "readable", 0755);
  EXPECT_EQ(asNobodySees(folder / "open"), "writable");
  EXPECT_EQ(asNobodySees(folder / "open/"), "writable");
  for (const std::string name : {"unsearchable", "unsearchable/", "readable", "readable/"}) {
    if (::geteuid() == 0) {
      EXPECT_EQ(asNobodySees(folder / name), "not writable") << name;
    }
  }
}

TEST_F(Writability, OfAFileTakesOnlyThePermissionToWrite) {
  writeFile(folder / "file", "text");
  setMode(folder / "file", 0666);
  EXPECT_EQ(asNobodySees(folder / "file"), "writable");
  setMode(folder / "file", 0444);
  EXPECT_EQ(asNobodySees(folder / "file"), "not writable");
}

TEST_F(Writability, EndsAtAFilesystemMountedForReading) {
  const LoopMount mount("tmpfs");
  if (!mount) {
    GTEST_SKIP() << mount.reason();
  }
  EXPECT_TRUE(files.isWritableFileAtPath(mount.path()));
  ASSERT_EQ(::mount(nullptr, mount.path().c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
  EXPECT_FALSE(files.isWritableFileAtPath(mount.path()));
}

}  // namespace
}  // namespace quennel::test
