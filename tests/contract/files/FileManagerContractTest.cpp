#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/files/PosixFileManager.h"
#include "tests/support/CallLog.h"
#include "tests/support/FakeFileManager.h"
#include "tests/support/Sentence.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Optional;
using ::testing::UnorderedElementsAre;

/// A file manager and an empty folder that it sees, with what its own operations cannot make.
class World {
 public:
  virtual ~World() = default;
  virtual FileManager& fileManager() = 0;
  virtual std::string folder() = 0;
  virtual void addLink(const std::string& path, const std::string& target) = 0;
  virtual void addFIFO(const std::string& path) = 0;
};

class FakeWorld : public World {
 public:
  FakeWorld() { _fileManager.addDirectory(folder()); }
  FileManager& fileManager() override { return _fileManager; }
  std::string folder() override { return "/tmp/world"; }
  void addLink(const std::string& path, const std::string& target) override {
    _fileManager.addLink(path, target);
  }
  void addFIFO(const std::string& path) override { _fileManager.addFIFO(path); }

 private:
  CallLog _log;
  FakeFileManager _fileManager{_log};
};

class PosixWorld : public World {
 public:
  FileManager& fileManager() override { return _fileManager; }
  std::string folder() override { return _folder.path(); }
  void addLink(const std::string& path, const std::string& target) override {
    ASSERT_EQ(::symlink(target.c_str(), path.c_str()), 0);
  }
  void addFIFO(const std::string& path) override { ASSERT_EQ(::mkfifo(path.c_str(), 0644), 0); }

 private:
  TemporaryDirectory _folder;
  PosixFileManager _fileManager;
};

template <typename AnyWorld>
class FileManagerContract : public ::testing::Test {
 protected:
  using Kind = FileManager::ItemKind;

  std::string at(const std::string& name) { return _world.folder() + "/" + name; }
  void addFile(const std::string& name, const std::string& contents = "text") {
    const std::size_t end = name.rfind('/');
    if (end != std::string::npos) {
      addFolder(name.substr(0, end));
    }
    ASSERT_TRUE(_files.writeContents(contents, at(name)));
  }
  void addFolder(const std::string& name) {
    ASSERT_TRUE(_files.createDirectoryAtPath(at(name), true));
  }
  std::vector<std::string> names(const std::string& folder) {
    std::vector<std::string> names;
    EXPECT_TRUE(
        _files.visitDirectory(folder, [&](const auto& entry) { names.emplace_back(entry.name); }));
    return names;
  }
  std::vector<std::string> itemsBelow(const std::string& folder) {
    std::vector<std::string> items;
    _files.enumerateItemsAtPath(folder, [&](const std::string& item) {
      items.push_back(item);
      return true;
    });
    return items;
  }
  FileAttributes attributes(const std::string& path) {
    return _files.attributesOfItemAtPath(path).value_or(FileAttributes());
  }

  AnyWorld _world;
  FileManager& _files = _world.fileManager();
  Error _error;
};

using Worlds = ::testing::Types<FakeWorld, PosixWorld>;
TYPED_TEST_SUITE(FileManagerContract, Worlds);

TYPED_TEST(FileManagerContract, TellsFilesAndFoldersApart) {
  this->addFile("file");
  this->addFolder("folder");
  EXPECT_EQ(this->_files.itemKindAtPath(this->at("file")), FileManager::ItemKind::File);
  EXPECT_EQ(this->_files.itemKindAtPath(this->at("folder")), FileManager::ItemKind::Directory);
  EXPECT_EQ(this->_files.itemKindAtPath(this->at("missing")), std::nullopt);
  EXPECT_EQ(this->_files.itemKindAtPath(this->at("file/below")), std::nullopt);
  EXPECT_EQ(this->_files.itemKindAtPath(""), std::nullopt);
}

TYPED_TEST(FileManagerContract, ExistenceFollowsLinks) {
  this->addFile("file");
  this->_world.addLink(this->at("link"), "file");
  this->_world.addLink(this->at("dangling"), "nowhere");
  this->_world.addLink(this->at("loop"), "loop");
  EXPECT_TRUE(this->_files.fileExistsAtPath(this->at("link")));
  EXPECT_FALSE(this->_files.fileExistsAtPath(this->at("dangling")));
  EXPECT_FALSE(this->_files.fileExistsAtPath(this->at("loop")));
}

TYPED_TEST(FileManagerContract, VisitsEveryNameOfAFolderAndMarksLinks) {
  this->addFile("file");
  this->addFolder("folder/inner");
  this->_world.addLink(this->at("link"), "file");
  std::vector<std::string> links;
  std::vector<std::string> others;
  EXPECT_TRUE(this->_files.visitDirectory(this->_world.folder(), [&](const auto& entry) {
    (entry.isLink ? links : others).emplace_back(entry.name);
  }));
  EXPECT_THAT(links, UnorderedElementsAre("link"));
  EXPECT_THAT(others, UnorderedElementsAre("file", "folder"));
}

TYPED_TEST(FileManagerContract, VisitingWhatIsNoFolderFails) {
  this->addFile("file");
  const auto visit = [](const auto&) { FAIL(); };
  EXPECT_FALSE(this->_files.visitDirectory(this->at("file"), visit));
  EXPECT_FALSE(this->_files.visitDirectory(this->at("missing"), visit));
}

TYPED_TEST(FileManagerContract, EnumeratesEverythingBelowAFolderWithoutEnteringLinks) {
  this->addFolder("folder/a/b");
  this->addFile("folder/a/b/file");
  this->addFile("folder/other");
  this->_world.addLink(this->at("folder/link"), "a");
  EXPECT_THAT(this->itemsBelow(this->at("folder")),
              UnorderedElementsAre("a", "a/b", "a/b/file", "other", "link"));
}

TYPED_TEST(FileManagerContract, EnumeratesAFolderBeforeWhatItHolds) {
  this->addFolder("folder/a/b/c");
  EXPECT_THAT(this->itemsBelow(this->at("folder")), ElementsAre("a", "a/b", "a/b/c"));
}

TYPED_TEST(FileManagerContract, EnumerationStopsWhenTheVisitorSaysSo) {
  this->addFolder("folder/a/b/c");
  int visits = 0;
  this->_files.enumerateItemsAtPath(this->at("folder"),
                                    [&](const std::string&) { return ++visits < 2; });
  EXPECT_EQ(visits, 2);
}

TYPED_TEST(FileManagerContract, EnumeratingWhatIsNoFolderVisitsNothing) {
  this->addFile("file");
  EXPECT_TRUE(this->itemsBelow(this->at("file")).empty());
  EXPECT_TRUE(this->itemsBelow(this->at("missing")).empty());
}

TYPED_TEST(FileManagerContract, CopiesAFileWithPermissionsAndDates) {
  this->addFile("template", "contents");
  const FileAttributes::Date date{std::chrono::seconds(1'000'000'000)};
  ASSERT_TRUE(this->_files.setAttributes({0751, {}, date}, this->at("template")));
  ASSERT_TRUE(this->_files.copyItemAtPath(this->at("template"), this->at("copy"), &this->_error))
      << sentenceOf(this->_error);
  EXPECT_THAT(this->_files.contentsAtPath(this->at("copy")), Optional(std::string("contents")));
  EXPECT_EQ(this->attributes(this->at("copy")).posixPermissions, 0751);
  EXPECT_EQ(this->attributes(this->at("copy")).modificationDate, date);
}

TYPED_TEST(FileManagerContract, CopiesAFolderWithAllItHolds) {
  this->addFolder("template/inner/empty");
  this->addFile("template/inner/file", "contents");
  this->_world.addLink(this->at("template/link"), "inner/file");
  ASSERT_TRUE(this->_files.copyItemAtPath(this->at("template"), this->at("copy"), &this->_error))
      << sentenceOf(this->_error);
  EXPECT_THAT(this->itemsBelow(this->at("copy")),
              UnorderedElementsAre("inner", "inner/empty", "inner/file", "link"));
  ASSERT_TRUE(this->_files.removeItemAtPath(this->at("template")));
  EXPECT_THAT(this->_files.contentsAtPath(this->at("copy/link")),
              Optional(std::string("contents")));
}

TYPED_TEST(FileManagerContract, ACopyOfALinkIsACopyOfWhatItPointsTo) {
  this->addFile("template", "contents");
  this->_world.addLink(this->at("link"), "template");
  ASSERT_TRUE(this->_files.copyItemAtPath(this->at("link"), this->at("copy")));
  ASSERT_TRUE(this->_files.setAttributes({0700, {}, {}}, this->at("copy")));
  EXPECT_NE(this->attributes(this->at("template")).posixPermissions, 0700);
}

TYPED_TEST(FileManagerContract, ACopyNeverReplacesAnything) {
  this->addFile("template", "new");
  this->addFile("taken", "old");
  EXPECT_FALSE(this->_files.copyItemAtPath(this->at("template"), this->at("taken"), &this->_error));
  EXPECT_EQ(this->_error.code, EEXIST);
  EXPECT_THAT(this->_files.contentsAtPath(this->at("taken")), Optional(std::string("old")));
}

TYPED_TEST(FileManagerContract, ACopyOfAFolderNeverReplacesAnEmptyFolder) {
  this->addFolder("template");
  this->addFolder("taken");
  EXPECT_FALSE(this->_files.copyItemAtPath(this->at("template"), this->at("taken"), &this->_error));
  EXPECT_EQ(this->_error.code, EEXIST);
}

TYPED_TEST(FileManagerContract, ACopyNeverReplacesADanglingLink) {
  this->addFile("template");
  this->_world.addLink(this->at("taken"), "nowhere");
  EXPECT_FALSE(this->_files.copyItemAtPath(this->at("template"), this->at("taken"), &this->_error));
  EXPECT_EQ(this->_error.code, EEXIST);
}

TYPED_TEST(FileManagerContract, TheErrorOfACopyNamesTheItemThatFailedAlone) {
  EXPECT_FALSE(this->_files.copyItemAtPath(this->at("missing"), this->at("copy"), &this->_error));
  EXPECT_EQ(this->_error.code, ENOENT);
  EXPECT_THAT(sentenceOf(this->_error), HasSubstr(this->at("missing")));
  EXPECT_THAT(sentenceOf(this->_error), Not(HasSubstr(this->at("copy"))));
}

TYPED_TEST(FileManagerContract, AFailureThatNobodyAsksAboutIsNoTrouble) {
  EXPECT_FALSE(this->_files.copyItemAtPath(this->at("missing"), this->at("copy")));
  EXPECT_FALSE(this->_files.removeItemAtPath(this->at("missing")));
  EXPECT_FALSE(this->_files.createDirectoryAtPath(this->at("a/b"), false));
  EXPECT_FALSE(this->_files.writeContents("", this->at("a/b")));
  EXPECT_FALSE(this->_files.setAttributes({0644, {}, {}}, this->at("missing")));
  EXPECT_EQ(this->_files.attributesOfItemAtPath(this->at("missing")), std::nullopt);
}

TYPED_TEST(FileManagerContract, AFIFOIsNotCopied) {
  this->_world.addFIFO(this->at("fifo"));
  EXPECT_FALSE(this->_files.copyItemAtPath(this->at("fifo"), this->at("copy"), &this->_error));
  EXPECT_EQ(this->_error.code, EOPNOTSUPP);
  EXPECT_FALSE(this->_files.fileExistsAtPath(this->at("copy")));
}

TYPED_TEST(FileManagerContract, AFolderWithAFIFOIsNotCopiedAtAll) {
  this->addFolder("template/inner");
  this->addFile("template/inner/file");
  this->_world.addFIFO(this->at("template/inner/fifo"));
  EXPECT_FALSE(this->_files.copyItemAtPath(this->at("template"), this->at("copy"), &this->_error));
  EXPECT_EQ(this->_error.code, EOPNOTSUPP);
  EXPECT_THAT(this->names(this->_world.folder()), ElementsAre("template"));
}

TYPED_TEST(FileManagerContract, AFolderIsNotCopiedIntoItself) {
  this->addFolder("template/inner");
  EXPECT_FALSE(this->_files.copyItemAtPath(this->at("template"), this->at("template/inner/copy"),
                                           &this->_error));
  EXPECT_EQ(this->_error.code, EINVAL);
  EXPECT_THAT(this->itemsBelow(this->at("template")), ElementsAre("inner"));
}

TYPED_TEST(FileManagerContract, ACopyNeedsAFolderToBeIn) {
  this->addFile("template");
  this->addFile("file");
  EXPECT_FALSE(
      this->_files.copyItemAtPath(this->at("template"), this->at("no/copy"), &this->_error));
  EXPECT_EQ(this->_error.code, ENOENT);
  EXPECT_FALSE(
      this->_files.copyItemAtPath(this->at("template"), this->at("file/copy"), &this->_error));
  EXPECT_EQ(this->_error.code, ENOTDIR);
}

TYPED_TEST(FileManagerContract, ANameTooLongIsAnError) {
  this->addFile("template");
  this->addFolder("folder");
  const std::string longName(256, 'n');
  EXPECT_FALSE(
      this->_files.copyItemAtPath(this->at("template"), this->at(longName), &this->_error));
  EXPECT_EQ(this->_error.code, ENAMETOOLONG);
  EXPECT_FALSE(this->_files.copyItemAtPath(this->at("folder"), this->at(longName), &this->_error));
  EXPECT_EQ(this->_error.code, ENAMETOOLONG);
}

TYPED_TEST(FileManagerContract, NamesAreBytes) {
  const std::string name = "caf\xe9 \xff" + std::string(248, 'n');
  this->addFile(name, "contents");
  EXPECT_THAT(this->names(this->_world.folder()), ElementsAre(name));
  this->addFolder("folder");
  ASSERT_TRUE(this->_files.copyItemAtPath(this->at(name), this->at("folder/" + name)));
  ASSERT_TRUE(this->_files.copyItemAtPath(this->at("folder"), this->at("\xfe")));
  EXPECT_THAT(this->_files.contentsAtPath(this->at("\xfe/" + name)),
              Optional(std::string("contents")));
}

TYPED_TEST(FileManagerContract, AFileAndAFolderTakeThePlaceOfEither) {
  this->addFile("file", "new");
  this->addFile("folder/inner", "new");
  for (const std::string source : {"file", "folder"}) {
    this->addFile("taken file", "old");
    this->addFolder("taken folder/old");
    for (const std::string taken : {"taken file", "taken folder"}) {
      EXPECT_EQ(this->_files.replaceItemAtPath(this->at(taken), this->at(source), &this->_error),
                FileManager::Replacement::Done)
          << this->_error.code;
      const std::string file = source == "file" ? taken : taken + "/inner";
      EXPECT_THAT(this->_files.contentsAtPath(this->at(file)), Optional(std::string("new")));
      EXPECT_FALSE(this->_files.fileExistsAtPath(this->at(taken + "/old")));
      ASSERT_TRUE(this->_files.removeItemAtPath(this->at(taken)));
    }
  }
  EXPECT_THAT(this->names(this->_world.folder()), UnorderedElementsAre("file", "folder"));
}

TYPED_TEST(FileManagerContract, ACopyTakesAPlaceThatHasBecomeFree) {
  this->addFile("template", "new");
  EXPECT_EQ(this->_files.replaceItemAtPath(this->at("free"), this->at("template")),
            FileManager::Replacement::Done);
  EXPECT_THAT(this->_files.contentsAtPath(this->at("free")), Optional(std::string("new")));
}

TYPED_TEST(FileManagerContract, OfALinkTheLinkIsReplacedNotWhatItPointsTo) {
  this->addFile("template", "new");
  this->addFile("folder/file", "old");
  this->_world.addLink(this->at("link"), "folder");
  EXPECT_EQ(this->_files.replaceItemAtPath(this->at("link"), this->at("template")),
            FileManager::Replacement::Done);
  EXPECT_THAT(this->_files.contentsAtPath(this->at("link")), Optional(std::string("new")));
  EXPECT_THAT(this->_files.contentsAtPath(this->at("folder/file")), Optional(std::string("old")));
}

TYPED_TEST(FileManagerContract, WhatCannotBeReplacedByACopyStays) {
  this->addFile("taken", "old");
  this->_world.addFIFO(this->at("fifo"));
  for (const auto& [source, code] : {std::pair("missing", ENOENT), {"fifo", EOPNOTSUPP}}) {
    EXPECT_EQ(this->_files.replaceItemAtPath(this->at("taken"), this->at(source), &this->_error),
              FileManager::Replacement::NotCopied);
    EXPECT_EQ(this->_error.code, code);
    EXPECT_THAT(this->_files.contentsAtPath(this->at("taken")), Optional(std::string("old")));
  }
}

TYPED_TEST(FileManagerContract, WhatLeadsToTheSourceOfACopyIsNotReplacedByIt) {
  this->addFile("above/folder/template", "text");
  this->_world.addLink(this->at("link"), "above/folder");
  this->_world.addLink(this->at("long way"), "link/template");
  const std::string source = this->at("long way");
  for (const std::string taken :
       {"above/folder/template", "link/template", "long way", "link", "above/folder", "above"}) {
    EXPECT_EQ(this->_files.replaceItemAtPath(this->at(taken), source, &this->_error),
              FileManager::Replacement::NotCopied)
        << taken;
    EXPECT_EQ(this->_error.code, EEXIST) << taken;
    EXPECT_THAT(this->_files.contentsAtPath(source), Optional(std::string("text"))) << taken;
  }
}

TYPED_TEST(FileManagerContract, RemovesAFileAndAFolderWithAllItHolds) {
  this->addFile("file");
  this->addFolder("folder/inner/empty");
  this->addFile("folder/inner/file");
  EXPECT_TRUE(this->_files.removeItemAtPath(this->at("file"), &this->_error));
  EXPECT_TRUE(this->_files.removeItemAtPath(this->at("folder"), &this->_error));
  EXPECT_TRUE(this->names(this->_world.folder()).empty());
}

TYPED_TEST(FileManagerContract, RemovesALinkNotWhatItPointsTo) {
  this->addFolder("folder");
  this->addFile("folder/file");
  this->_world.addLink(this->at("link"), "folder");
  EXPECT_TRUE(this->_files.removeItemAtPath(this->at("link")));
  EXPECT_TRUE(this->_files.fileExistsAtPath(this->at("folder/file")));
  EXPECT_THAT(this->names(this->_world.folder()), ElementsAre("folder"));
}

TYPED_TEST(FileManagerContract, RemovingWhatIsMissingIsAnErrorThatNamesIt) {
  EXPECT_FALSE(this->_files.removeItemAtPath(this->at("missing"), &this->_error));
  EXPECT_EQ(this->_error.code, ENOENT);
  EXPECT_THAT(sentenceOf(this->_error), HasSubstr(this->at("missing")));
}

TYPED_TEST(FileManagerContract, MakesOneFolderAtATime) {
  EXPECT_TRUE(this->_files.createDirectoryAtPath(this->at("a"), false));
  EXPECT_FALSE(this->_files.createDirectoryAtPath(this->at("a"), false, &this->_error));
  EXPECT_EQ(this->_error.code, EEXIST);
  EXPECT_FALSE(this->_files.createDirectoryAtPath(this->at("b/c"), false, &this->_error));
  EXPECT_EQ(this->_error.code, ENOENT);
  EXPECT_THAT(sentenceOf(this->_error), HasSubstr(this->at("b/c")));
}

TYPED_TEST(FileManagerContract, MakesMissingParentsWhenAskedTo) {
  EXPECT_TRUE(this->_files.createDirectoryAtPath(this->at("a/b/c"), true));
  EXPECT_TRUE(this->_files.createDirectoryAtPath(this->at("a/b/c"), true));
  EXPECT_TRUE(this->_files.createDirectoryAtPath(this->at("a/b/d/"), true));
  EXPECT_THAT(this->itemsBelow(this->at("a")), UnorderedElementsAre("b", "b/c", "b/d"));
}

TYPED_TEST(FileManagerContract, AFileInTheWayOfAFolderIsAnError) {
  this->addFile("file");
  EXPECT_FALSE(this->_files.createDirectoryAtPath(this->at("file"), true, &this->_error));
  EXPECT_EQ(this->_error.code, EEXIST);
  EXPECT_FALSE(this->_files.createDirectoryAtPath(this->at("file/a/b"), true, &this->_error));
  EXPECT_EQ(this->_error.code, ENOTDIR);
}

TYPED_TEST(FileManagerContract, ReadsWhatWasWritten) {
  const std::string large(300'000, 'x');
  this->addFile("empty", "");
  this->addFile("large", large);
  EXPECT_THAT(this->_files.contentsAtPath(this->at("empty")), Optional(std::string()));
  EXPECT_THAT(this->_files.contentsAtPath(this->at("large")), Optional(large));
}

TYPED_TEST(FileManagerContract, OnlyARegularFileHasContents) {
  this->addFolder("folder");
  this->_world.addFIFO(this->at("fifo"));
  EXPECT_EQ(this->_files.contentsAtPath(this->at("folder")), std::nullopt);
  EXPECT_EQ(this->_files.contentsAtPath(this->at("fifo")), std::nullopt);
  EXPECT_EQ(this->_files.contentsAtPath(this->at("missing")), std::nullopt);
}

TYPED_TEST(FileManagerContract, WritingReplacesAFileAndLeavesNothingElse) {
  this->addFile("file", "old");
  EXPECT_TRUE(this->_files.writeContents("new", this->at("file")));
  EXPECT_THAT(this->_files.contentsAtPath(this->at("file")), Optional(std::string("new")));
  EXPECT_THAT(this->names(this->_world.folder()), ElementsAre("file"));
}

TYPED_TEST(FileManagerContract, AFolderIsNotReplacedByAFile) {
  this->addFolder("folder");
  EXPECT_FALSE(this->_files.writeContents("new", this->at("folder"), &this->_error));
  EXPECT_EQ(this->_error.code, EISDIR);
  EXPECT_THAT(this->names(this->_world.folder()), ElementsAre("folder"));
}

TYPED_TEST(FileManagerContract, SetsOnlyTheAttributesThatAreGiven) {
  this->addFile("file");
  const FileAttributes::Date date{std::chrono::milliseconds(-1'500)};
  ASSERT_TRUE(this->_files.setAttributes({04755, {}, date}, this->at("file")));
  EXPECT_EQ(this->attributes(this->at("file")).posixPermissions, 04755);
  EXPECT_EQ(this->attributes(this->at("file")).modificationDate, date);
  ASSERT_TRUE(this->_files.setAttributes({0600, {}, {}}, this->at("file")));
  EXPECT_EQ(this->attributes(this->at("file")).posixPermissions, 0600);
  EXPECT_EQ(this->attributes(this->at("file")).modificationDate, date);
  ASSERT_TRUE(this->_files.setAttributes({{}, {}, date + std::chrono::hours(1)}, this->at("file")));
  EXPECT_EQ(this->attributes(this->at("file")).posixPermissions, 0600);
}

TYPED_TEST(FileManagerContract, ACreationDateThatCannotBeSetIsNoError) {
  this->addFile("file");
  const auto before = this->attributes(this->at("file")).modificationDate;
  EXPECT_TRUE(this->_files.setAttributes({{}, FileAttributes::Date(), {}}, this->at("file")));
  EXPECT_EQ(this->attributes(this->at("file")).modificationDate, before);
}

TYPED_TEST(FileManagerContract, AttributesFollowLinks) {
  this->addFile("file");
  this->_world.addLink(this->at("link"), "file");
  ASSERT_TRUE(this->_files.setAttributes({0711, {}, {}}, this->at("link")));
  EXPECT_EQ(this->attributes(this->at("file")).posixPermissions, 0711);
  EXPECT_EQ(this->attributes(this->at("link")).posixPermissions, 0711);
}

TYPED_TEST(FileManagerContract, AttributesOfWhatIsMissingAreAnErrorThatNamesIt) {
  EXPECT_EQ(this->_files.attributesOfItemAtPath(this->at("missing"), &this->_error), std::nullopt);
  EXPECT_EQ(this->_error.code, ENOENT);
  EXPECT_THAT(sentenceOf(this->_error), HasSubstr(this->at("missing")));
  EXPECT_FALSE(this->_files.setAttributes({0644, {}, {}}, this->at("missing"), &this->_error));
  EXPECT_THAT(sentenceOf(this->_error), HasSubstr(this->at("missing")));
}

TYPED_TEST(FileManagerContract, TellsWhatCanBeWritten) {
  this->addFolder("folder");
  this->addFile("file");
  EXPECT_TRUE(this->_files.isWritableFileAtPath(this->at("folder")));
  EXPECT_TRUE(this->_files.isWritableFileAtPath(this->at("folder/")));
  EXPECT_TRUE(this->_files.isWritableFileAtPath(this->at("file")));
  EXPECT_FALSE(this->_files.isWritableFileAtPath(this->at("file/")));
  EXPECT_FALSE(this->_files.isWritableFileAtPath(this->at("missing")));
}

TYPED_TEST(FileManagerContract, KnowsTheLoginName) {
  EXPECT_FALSE(this->_files.userName().empty());
}

}  // namespace
}  // namespace quennel::test
