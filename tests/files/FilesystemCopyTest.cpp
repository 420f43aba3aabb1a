#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <string>

#include "platform/linux/files/PosixFileManager.h"
#include "tests/files/FileTools.h"
#include "tests/support/LoopMount.h"
#include "tests/support/Sentence.h"

namespace quennel::test {
namespace {

using ::testing::IsEmpty;

constexpr const char* accessRules = "system.posix_acl_access";
constexpr const char* defaultRules = "system.posix_acl_default";

/// What a copy keeps, on each of the filesystems that people have.
class CopyOn : public ::testing::TestWithParam<const char*> {
 protected:
  void SetUp() override {
    if (!_mount) {
      GTEST_SKIP() << GetParam() << ": " << _mount.reason();
    }
  }

  std::string at(const std::string& name) { return _mount / name; }
  void copy(const std::string& from, const std::string& to) {
    Error error;
    ASSERT_TRUE(_files.copyItemAtPath(at(from), at(to), &error)) << sentenceOf(error);
  }
  void setDates(const std::string& name) {
    const timespec dates[2] = {{1'000'000'000, 111'111'111}, {1'100'000'000, 222'222'222}};
    ASSERT_EQ(::utimensat(AT_FDCWD, at(name).c_str(), dates, AT_SYMLINK_NOFOLLOW), 0);
  }
  void expectSameStatus(const std::string& one, const std::string& other) {
    const struct stat first = statusAt(at(one));
    const struct stat second = statusAt(at(other));
    EXPECT_EQ(first.st_mode, second.st_mode);
    EXPECT_EQ(first.st_uid, second.st_uid);
    EXPECT_EQ(first.st_gid, second.st_gid);
    EXPECT_EQ(first.st_mtim.tv_sec, second.st_mtim.tv_sec);
    EXPECT_EQ(first.st_mtim.tv_nsec, second.st_mtim.tv_nsec);
  }

  void expectSameAccess(const std::string& one, const std::string& other) {
    EXPECT_EQ(statusAt(at(one)).st_mode, statusAt(at(other)).st_mode) << one;
    EXPECT_EQ(statusAt(at(one)).st_gid, statusAt(at(other)).st_gid) << one;
    for (const char* const rules : {accessRules, defaultRules}) {
      EXPECT_EQ(attributeAt(at(one), rules), attributeAt(at(other), rules)) << one << " " << rules;
    }
  }

  LoopMount _mount{GetParam()};
  PosixFileManager _posixFiles;
  FileManager& _files = _posixFiles;
};

INSTANTIATE_TEST_SUITE_P(Filesystems, CopyOn, ::testing::Values("ext4", "xfs", "btrfs", "tmpfs"),
                         [](const auto& suite) { return suite.param; });

TEST_P(CopyOn, AFileKeepsItsOwnerPermissionsAndDates) {
  writeFile(at("template"), "text");
  ASSERT_EQ(::chown(at("template").c_str(), 1234, 2345), 0);
  ASSERT_EQ(::chmod(at("template").c_str(), 06751), 0);
  setDates("template");
  copy("template", "copy");
  expectSameStatus("template", "copy");
  EXPECT_EQ(statusAt(at("copy")).st_atim.tv_sec, 1'000'000'000);
}

TEST_P(CopyOn, AFolderKeepsTheOwnersPermissionsAndDatesOfAllItHolds) {
  makeFolder(at("template"));
  makeFolder(at("template/inner"));
  writeFile(at("template/inner/file"), "text");
  makeLink(at("template/link"), "nowhere");
  for (const std::string name :
       {"template/inner/file", "template/link", "template/inner", "template"}) {
    ASSERT_EQ(::lchown(at(name).c_str(), 1234, 2345), 0);
    setDates(name);
  }
  ASSERT_EQ(::chmod(at("template/inner").c_str(), 02570), 0);
  setDates("template");
  copy("template", "copy");
  for (const std::string name : {"", "/inner", "/inner/file", "/link"}) {
    expectSameStatus("template" + name, "copy" + name);
  }
}

TEST_P(CopyOn, ExtendedAttributesAreKept) {
  makeFolder(at("template"));
  writeFile(at("template/file"), "text");
  const std::string large = someText(2000);
  for (const std::string name : {"template", "template/file"}) {
    ASSERT_TRUE(setAttributeAt(at(name), "trusted.large", large));
    ASSERT_TRUE(setAttributeAt(at(name), "trusted.empty", ""));
  }
  copy("template", "copy");
  copy("template/file", "file");
  for (const std::string name : {"copy", "copy/file", "file"}) {
    EXPECT_EQ(attributeAt(at(name), "trusted.large"), large);
    EXPECT_EQ(attributeAt(at(name), "trusted.empty"), "");
  }
}

TEST_P(CopyOn, AccessControlListsAreKept) {
  makeFolder(at("template"));
  writeFile(at("template/file"), "text");
  ASSERT_EQ(run("setfacl -m u:1234:rw,g:2345:r " + at("template/file")), 0);
  ASSERT_EQ(run("setfacl -d -m u:1234:rwx " + at("template")), 0);
  copy("template", "copy");
  copy("template/file", "file");
  const auto rules = attributeAt(at("template/file"), accessRules);
  ASSERT_TRUE(rules);
  EXPECT_EQ(attributeAt(at("copy/file"), accessRules), rules);
  EXPECT_EQ(attributeAt(at("file"), accessRules), rules);
  EXPECT_EQ(attributeAt(at("copy"), defaultRules), attributeAt(at("template"), defaultRules));
  expectSameStatus("template/file", "file");
}

TEST_P(CopyOn, WhereAFolderHasRulesForNewItemsTheseHoldAsTheyDoForCp) {
  makeFolder(at("place"));
  makeFolder(at("template"));
  makeFolder(at("template/inner"));
  writeFile(at("template/inner/file"), "text");
  ASSERT_EQ(::chmod(at("template/inner/file").c_str(), 06744), 0);
  ASSERT_EQ(run("setfacl -m u:3456:rw " + at("template/inner/file")), 0);
  ASSERT_EQ(run("setfacl -d -m u:3456:rwx " + at("template")), 0);
  ASSERT_TRUE(setAttributeAt(at("template/inner/file"), "trusted.name", "value"));
  for (const std::string rules : {"u:1234:rwx,g:2345:r,o::-", "u::rw,g::r,o::-"}) {
    ASSERT_EQ(run("setfacl -b -d -m " + rules + " " + at("place")), 0);
    copy("template", "place/copy");
    copy("template/inner/file", "place/copied file");
    ASSERT_EQ(run("cp -r " + at("template") + " " + at("place/model")), 0);
    ASSERT_EQ(run("cp " + at("template/inner/file") + " '" + at("place/model file'")), 0);
    for (const auto& [name, model] : {std::pair("copy", "model"),
                                      {"copy/inner", "model/inner"},
                                      {"copy/inner/file", "model/inner/file"},
                                      {"copied file", "model file"}}) {
      expectSameAccess(std::string("place/") + name, std::string("place/") + model);
    }
    EXPECT_EQ(attributeAt(at("place/copied file"), "trusted.name"), "value");
    ASSERT_EQ(run("rm -r " + at("place") + "/*"), 0);
  }
}

TEST_P(CopyOn, WhereAFolderHandsItsGroupOnAllBelongsToThatGroup) {
  makeFolder(at("place"));
  makeFolder(at("template"));
  writeFile(at("template/file"), "text");
  makeLink(at("template/link"), "file");
  ASSERT_EQ(run("chown -hR 1234:1111 " + at("template")), 0);
  ASSERT_EQ(run("setfacl -m u:3456:rw " + at("template/file")), 0);
  ASSERT_EQ(::chown(at("place").c_str(), 0, 2345), 0);
  ASSERT_EQ(::chmod(at("place").c_str(), 02775), 0);
  setDates("template/file");
  copy("template", "place/copy");
  copy("template/file", "place/file");
  for (const std::string name : {"copy", "copy/file", "copy/link", "file"}) {
    EXPECT_EQ(statusAt(at("place/" + name)).st_gid, 2345U) << name;
  }
  EXPECT_EQ(statusAt(at("place/copy")).st_mode & 07777, 02755U);
  EXPECT_EQ(statusAt(at("place/file")).st_mode & 07777, 0664U);
  EXPECT_EQ(attributeAt(at("place/file"), accessRules),
            attributeAt(at("template/file"), accessRules));
  EXPECT_EQ(statusAt(at("place/file")).st_mtim.tv_sec, 1'100'000'000);
}

TEST_P(CopyOn, HolesAreKept) {
  constexpr off_t size = off_t{8} * 1024 * 1024;
  writeFile(at("template"), someText(100'000));
  ASSERT_EQ(::truncate(at("template").c_str(), size), 0);
  {
    std::fstream file(at("template"), std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(size / 2) << "in the middle";
  }
  copy("template", "copy");
  EXPECT_EQ(readFile(at("copy")), readFile(at("template")));
  EXPECT_LT(statusAt(at("copy")).st_blocks, 2048);
}

TEST_P(CopyOn, ContentsOfAnySizeAreKept) {
  makeFolder(at("template"));
  for (const std::size_t size :
       {0, 1, 4095, 4096, 4097, 16384, 16385, 65535, 65536, 262'145, 3'000'001}) {
    const std::string name = std::to_string(size);
    const std::string text = someText(size);
    writeFile(at("template/" + name), text);
    copy("template/" + name, name);
    EXPECT_EQ(readFile(at(name)), text);
  }
  copy("template", "copy");
  for (const std::string& name : namesIn(at("template"))) {
    EXPECT_EQ(readFile(at("copy/" + name)), readFile(at("template/" + name)));
  }
}

TEST_P(CopyOn, NamesOfOneFileStillShareIt) {
  makeFolder(at("template"));
  for (const std::string folder : {"template/a", "template/b", "template/b/c"}) {
    makeFolder(at(folder));
    writeFile(at("template/file"), "text");
    ASSERT_EQ(::link(at("template/file").c_str(), at(folder + "/one").c_str()), 0);
    ASSERT_EQ(::link(at("template/file").c_str(), at(folder + "/two").c_str()), 0);
    ASSERT_EQ(::unlink(at("template/file").c_str()), 0);
  }
  ASSERT_EQ(::link(at("template/a/one").c_str(), at("template/b/c/three").c_str()), 0);
  ASSERT_EQ(::link(at("template/a/one").c_str(), at("outside").c_str()), 0);
  copy("template", "copy");
  const auto number = [this](const std::string& name) {
    return statusAt(at("copy/" + name)).st_ino;
  };
  EXPECT_EQ(number("a/one"), number("a/two"));
  EXPECT_EQ(number("a/one"), number("b/c/three"));
  EXPECT_EQ(number("b/one"), number("b/two"));
  EXPECT_NE(number("a/one"), number("b/one"));
  EXPECT_EQ(statusAt(at("copy/a/one")).st_nlink, 3U);
  EXPECT_EQ(statusAt(at("outside")).st_nlink, 4U);
}

TEST_P(CopyOn, ManyFilesInManyFoldersAreAllKept) {
  makeFolder(at("template"));
  for (int folder = 0; folder < 40; ++folder) {
    const std::string name = "template/" + std::to_string(folder);
    makeFolder(at(name));
    for (int file = 0; file < 50; ++file) {
      writeFile(at(name + "/" + std::to_string(file)),
                someText(static_cast<std::size_t>(folder * file)));
    }
    ASSERT_EQ(::chmod(at(name).c_str(), 0555), 0);
  }
  copy("template", "copy");
  EXPECT_EQ(run("diff -r " + at("template") + " " + at("copy")), 0);
  EXPECT_EQ(statusAt(at("copy/7")).st_mode & 07777, 0555U);
}

TEST_P(CopyOn, LongNamesAndBytesThatAreNoTextAreKept) {
  const std::string name = "\xff\xfe" + std::string(253, 'n');
  makeFolder(at(name));
  writeFile(at(name + "/" + name), "text");
  const std::string other = std::string(255, 'm');
  copy(name, other);
  EXPECT_EQ(readFile(at(other + "/" + name)), "text");
}

TEST_P(CopyOn, ADeepFolderIsCopiedAndRemoved) {
  constexpr int depth = 1500;
  makeFolder(at("template"));
  std::string path = "template";
  for (int level = 0; level < depth; ++level) {
    path += "/d";
    makeFolder(at(path));
  }
  copy("template", "copy");
  EXPECT_TRUE(S_ISDIR(statusAt(at("copy" + path.substr(8))).st_mode));
  EXPECT_TRUE(_files.removeItemAtPath(at("copy")));
  EXPECT_THAT(namesIn(at("")), ::testing::Not(::testing::Contains("copy")));
}

TEST_P(CopyOn, AFullFilesystemFailsAndIsLeftAsItWas) {
  const TemporaryDirectory elsewhere;
  makeFolder(elsewhere / "template");
  writeFile(elsewhere / "template/small", "text");
  writeFile(elsewhere / "template/large", someText(std::size_t{2} * 1024 * 1024));
  makeFolder(at("place"));
  fillFilesystem(at("filler"));
  for (const std::string source : {"template", "template/large"}) {
    Error error;
    EXPECT_FALSE(_files.copyItemAtPath(elsewhere / source, at("place/copy"), &error));
    EXPECT_EQ(error.code, ENOSPC) << sentenceOf(error);
    EXPECT_THAT(namesIn(at("place")), IsEmpty());
  }
}

}  // namespace
}  // namespace quennel::test
