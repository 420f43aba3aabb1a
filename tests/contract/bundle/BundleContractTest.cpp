// What every bundle does, run on a tree of files and on the fake.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <type_traits>

#include "platform/linux/bundle/PrefixBundle.h"
#include "tests/support/FakeBundle.h"
#include "tests/support/FreshSession.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

/// A prefix with an executable, some resources, and a German catalogue.
class RealBundle {
 public:
  RealBundle() {
    std::filesystem::create_directories(_prefix / "share/quennelhelper");
    std::filesystem::create_directories(_prefix / "share/locale");
    std::filesystem::create_directory_symlink(buildTree() / "share/locale/de",
                                              _prefix / "share/locale/de");
    setenv("LANGUAGE", "de", 1);
  }

  Bundle& get() { return _bundle; }
  std::string addResource(const std::string& file, const std::string& contents) {
    const std::string path = _prefix / ("share/quennelhelper/" + file);
    std::ofstream(path) << contents;
    return path;
  }
  std::string addDictionary(const std::string& file) {
    return addResource(file, R"(<plist version="1.0"><dict><key>on</key><true/></dict></plist>)");
  }

 private:
  /// The running test stands in the build tree, which is laid out like an installation.
  static std::filesystem::path buildTree() {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path();
  }

  FreshSession _session;
  TemporaryDirectory _prefix;
  PrefixBundle _bundle{_prefix / "bin/quennelhelper"};
};

class FakedBundle {
 public:
  FakedBundle() { _bundle.translations["Cancel"] = "Abbrechen"; }

  Bundle& get() { return _bundle; }
  std::string addResource(const std::string& file, const std::string&) {
    return _bundle.resources[file] = "/resources/" + file;
  }
  std::string addDictionary(const std::string& file) {
    const std::string path = addResource(file, "");
    _bundle.propertyLists[path] = {{"on", true}};
    return path;
  }

 private:
  FakeBundle _bundle;
};

template <typename Subject>
class BundleContract : public testing::Test {
 protected:
  Bundle& bundle() { return _subject.get(); }

  Subject _subject;
};

using Subjects = testing::Types<RealBundle, FakedBundle>;
struct SubjectNames {
  template <typename Subject>
  static std::string GetName(int) {
    return std::is_same_v<Subject, FakedBundle> ? "Fake" : "Prefix";
  }
};
TYPED_TEST_SUITE(BundleContract, Subjects, SubjectNames);

TYPED_TEST(BundleContract, AResourceIsFoundByItsNameAndItsType) {
  const auto script = this->_subject.addResource("QuennelHelper.sh", "#!/bin/sh\n");
  const auto sound = this->_subject.addResource("sound.oga", "sound");
  EXPECT_EQ(this->bundle().pathForResource("QuennelHelper", "sh"), script);
  EXPECT_EQ(this->bundle().pathForResource("sound", "oga"), sound);
}

TYPED_TEST(BundleContract, AResourceThatIsNotThereIsNothing) {
  this->_subject.addResource("sound.oga", "sound");
  EXPECT_EQ(this->bundle().pathForResource("sound", "wav"), std::nullopt);
  EXPECT_EQ(this->bundle().pathForResource("noise", "oga"), std::nullopt);
  EXPECT_EQ(this->bundle().pathForResource("", ""), std::nullopt);
}

TYPED_TEST(BundleContract, APathOfAResourceIsAbsolute) {
  this->_subject.addResource("sound.oga", "sound");
  EXPECT_EQ(this->bundle().pathForResource("sound", "oga").value_or("").substr(0, 1), "/");
}

TYPED_TEST(BundleContract, ADictionaryIsReadFromItsFile) {
  const auto path = this->_subject.addDictionary("Defaults.plist");
  EXPECT_EQ(this->bundle().dictionaryWithContentsOfFile(path),
            (PropertyList::Dictionary{{"on", true}}));
}

TYPED_TEST(BundleContract, AFileThatHoldsNoDictionaryIsNothing) {
  const auto path = this->_subject.addResource("sound.oga", "sound");
  EXPECT_EQ(this->bundle().dictionaryWithContentsOfFile(path), std::nullopt);
  EXPECT_EQ(this->bundle().dictionaryWithContentsOfFile("/no/such/file.plist"), std::nullopt);
}

TYPED_TEST(BundleContract, ATextIsTranslated) {
  EXPECT_EQ(this->bundle().localizedStringForKey("Cancel"), "Abbrechen");
}

TYPED_TEST(BundleContract, AnUnknownTextIsItsOwnTranslation) {
  EXPECT_EQ(this->bundle().localizedStringForKey("No such text"), "No such text");
  EXPECT_EQ(this->bundle().localizedStringForKey(""), "");
}

TYPED_TEST(BundleContract, AnyThreadMayAskForATranslation) {
  std::string translation;
  std::thread([&] { translation = this->bundle().localizedStringForKey("Cancel"); }).join();
  EXPECT_EQ(translation, "Abbrechen");
}

TYPED_TEST(BundleContract, TheExecutableIsNamedByAnAbsolutePath) {
  const auto path = this->bundle().executablePath();
  EXPECT_TRUE(path.starts_with("/") && path.ends_with("/quennelhelper")) << path;
}

TYPED_TEST(BundleContract, TheIdentifierIsTheNameOnTheBus) {
  EXPECT_EQ(this->bundle().bundleIdentifier(), "net.brellow.QuennelHelper");
}

}  // namespace
}  // namespace quennel::test
