#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "platform/linux/files/PosixFileManager.h"
#include "platform/linux/scope/ConfinedFileManager.h"
#include "platform/linux/scope/LandlockSecurityScope.h"
#include "tests/errors/BracketingBundle.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

using Kind = Error::Kind;

/// One way in which an operation fails.
struct Failure {
  std::string name;
  Kind kind;
  int code;
  /// Of the item that the sentence names.
  std::string item;
  std::function<bool(FileManager& files, Error* error)> operation;
};

std::size_t countOf(const std::string& part, const std::string& text) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

/// A folder with one item of each kind, the whole of which is granted but for "outside".
class FileFailures : public ::testing::Test {
 protected:
  void SetUp() override {
    std::ofstream(at("file")) << "text";
    std::filesystem::create_directories(at("folder/inner"));
    std::ofstream(at("folder/inner/file")) << "text";
    ASSERT_EQ(mkfifo(at("fifo").c_str(), 0600), 0);
    std::filesystem::create_directory(at("special"));
    ASSERT_EQ(mkfifo(at("special/fifo").c_str(), 0600), 0);
    ASSERT_EQ(symlink("loop", at("loop").c_str()), 0);
  }

  std::string at(const std::string& name) const { return _folder / name; }

  Failure copying(const std::string& from, const std::string& to, Kind kind, int code,
                  const std::string& item) const {
    const auto copy = [=, this](FileManager& files, Error* error) {
      return files.copyItemAtPath(at(from), at(to), error);
    };
    return {"copying " + from + " to " + to, kind, code, at(item), copy};
  }

  std::vector<Failure> failedCopies() const;
  std::vector<Failure> otherFailures() const;
  std::vector<Failure> failures() const {
    std::vector<Failure> all = failedCopies();
    const std::vector<Failure> others = otherFailures();
    all.insert(all.end(), others.begin(), others.end());
    return all;
  }

  /// The sentence is one of the table's, and names one path: the item's.
  void expectOneSentence(const Failure& failure, FileManager& files) const {
    SCOPED_TRACE(failure.name);
    Error error;
    EXPECT_FALSE(failure.operation(files, &error));
    EXPECT_EQ(error, (Error{failure.code, failure.kind, failure.item}));
    const std::string sentence = error.localizedDescription(BracketingBundle());
    EXPECT_THAT(sentence, ::testing::MatchesRegex("\\[[^][]*(\\[[^][]*\\]\\.)?\\]"));
    EXPECT_EQ(countOf(_folder.path(), sentence), 1u) << sentence;
    EXPECT_EQ(countOf("/proc/", sentence), 0u) << sentence;
  }

  TemporaryDirectory _folder;
  PosixFileManager _files;
};

std::vector<Failure> FileFailures::failedCopies() const {
  const std::string longName(300, 'x');
  return {
      copying("missing", "copy", Kind::Reading, ENOENT, "missing"),
      copying("loop", "copy", Kind::Reading, ELOOP, "loop"),
      copying("file/below", "copy", Kind::Reading, ENOTDIR, "file/below"),
      copying("fifo", "copy", Kind::CopyingSpecialFile, EOPNOTSUPP, "fifo"),
      copying("special", "copy", Kind::CopyingSpecialFile, EOPNOTSUPP, "special/fifo"),
      copying("folder", "folder/inner/copy", Kind::CopyingIntoItself, EINVAL, "folder/inner/copy"),
      copying("file", "folder", Kind::Creating, EEXIST, "folder"),
      copying("folder", "file", Kind::Creating, EEXIST, "file"),
      copying("file", longName, Kind::Creating, ENAMETOOLONG, longName),
  };
}

std::vector<Failure> FileFailures::otherFailures() const {
  return {
      {"removing what is missing", Kind::Removing, ENOENT, at("missing"),
       [this](FileManager& files, Error* error) {
         return files.removeItemAtPath(at("missing"), error);
       }},
      {"making a folder that is there", Kind::Creating, EEXIST, at("folder"),
       [this](FileManager& files, Error* error) {
         return files.createDirectoryAtPath(at("folder"), false, error);
       }},
      {"writing over a folder", Kind::Creating, EISDIR, at("folder"),
       [this](FileManager& files, Error* error) {
         return files.writeContents("text", at("folder"), error);
       }},
      {"replacing by what is missing", Kind::Reading, ENOENT, at("missing"),
       [this](FileManager& files, Error* error) {
         return files.replaceItemAtPath(at("file"), at("missing"), error) ==
                FileManager::Replacement::Done;
       }},
      {"setting the permissions of what is missing", Kind::ChangingAttributes, ENOENT,
       at("missing"),
       [this](FileManager& files, Error* error) {
         return files.setAttributes({.posixPermissions = 0600}, at("missing"), error);
       }},
      {"reading the attributes of what is missing", Kind::Reading, ENOENT, at("missing"),
       [this](FileManager& files, Error* error) {
         return files.attributesOfItemAtPath(at("missing"), error).has_value();
       }},
  };
}

TEST_F(FileFailures, AreOneSentenceOfTheTableEach) {
  for (const Failure& failure : failures()) {
    expectOneSentence(failure, _files);
  }
}

TEST_F(FileFailures, AreTheSameSentencesWhereTheHelperIsConfined) {
  for (const int landlockVersion : {0, 99}) {
    LandlockSecurityScope scope(at("key"), landlockVersion);
    scope.allowForThisRun(_folder.path(), SecurityScope::Extent::Folder);
    ConfinedFileManager confined(_files, scope);
    for (const Failure& failure : failures()) {
      expectOneSentence(failure, confined);
    }
  }
}

TEST_F(FileFailures, SayOfAPlaceThatWasNotGrantedThatItWasNot) {
  for (const int landlockVersion : {0, 99}) {
    LandlockSecurityScope scope(at("key"), landlockVersion);
    ConfinedFileManager confined(_files, scope);
    Failure failure = copying("file", "copy", Kind::ChangingUngranted, EACCES, "copy");
    expectOneSentence(failure, confined);
  }
}

}  // namespace
}  // namespace quennel::test
