#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "platform/Error.h"
#include "platform/linux/bundle/PrefixBundle.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

/// The running test stands in the build tree, which is laid out like an installation.
std::string buildTree() {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path();
}

std::string inLanguage(const char* language, const std::function<std::string()>& text) {
  return inChildProcess([&] {
    setenv("LC_ALL", "C.UTF-8", 1);
    setenv("LANGUAGE", language, 1);
    return text();
  });
}

std::string translationFor(const char* language, const std::string& key) {
  return inLanguage(language, [&] { return PrefixBundle().localizedStringForKey(key); });
}

TEST(PrefixBundle, ItsExecutableIsTheRunningProgram) {
  EXPECT_EQ(PrefixBundle().executablePath(), std::filesystem::read_symlink("/proc/self/exe"));
}

TEST(PrefixBundle, ItIsNamedLikeTheHelperOnTheBus) {
  EXPECT_EQ(PrefixBundle().bundleIdentifier(), "net.brellow.QuennelHelper");
}

TEST(PrefixBundle, ResourcesAreFoundByNameAndType) {
  EXPECT_EQ(PrefixBundle().pathForResource("Defaults", "plist"),
            buildTree() + "/share/quennelhelper/Defaults.plist");
  EXPECT_EQ(PrefixBundle().pathForResource("sound", "oga"),
            buildTree() + "/share/quennelhelper/sound.oga");
}

TEST(PrefixBundle, AResourceThatIsNotThereIsNothing) {
  EXPECT_EQ(PrefixBundle().pathForResource("Defaults", "txt"), std::nullopt);
  EXPECT_EQ(PrefixBundle().pathForResource("", ""), std::nullopt);
}

TEST(PrefixBundle, AMovedTreeIsFoundWhereItIsNow) {
  const TemporaryDirectory prefix;
  std::filesystem::create_directories(prefix / "share/quennelhelper");
  std::ofstream(prefix / "share/quennelhelper/sound.oga") << "sound";
  const PrefixBundle bundle(prefix / "bin/quennelhelper");
  EXPECT_EQ(bundle.pathForResource("sound", "oga"), prefix / "share/quennelhelper/sound.oga");
  EXPECT_EQ(bundle.userInterfaceModulePath(), prefix / "lib/quennelhelper/libquennelhelper-ui.so");
  EXPECT_EQ(bundle.hotKeyModulePath(), prefix / "lib/quennelhelper/libquennelhelper-keys.so");
}

TEST(PrefixBundle, TheRegisteredDefaultsAreADictionaryOfBooleans) {
  const PrefixBundle bundle;
  const auto defaults =
      bundle.dictionaryWithContentsOfFile(bundle.pathForResource("Defaults", "plist").value());
  ASSERT_TRUE(defaults);
  const PropertyList::Dictionary expected = {{"skipFilename", true},
                                             {"showFileOnCreation", true},
                                             {"openFileOnCreation", false},
                                             {"playSound", false},
                                             {"runInBackground", false}};
  EXPECT_EQ(*defaults, expected);
}

TEST(PrefixBundle, AFileThatIsNoDictionaryIsNothing) {
  const PrefixBundle bundle;
  const TemporaryDirectory folder;
  std::ofstream(folder / "array.plist") << R"(<plist version="1.0"><array/></plist>)";
  EXPECT_EQ(bundle.dictionaryWithContentsOfFile(folder / "array.plist"), std::nullopt);
  EXPECT_EQ(bundle.dictionaryWithContentsOfFile(folder / "missing.plist"), std::nullopt);
  EXPECT_EQ(bundle.dictionaryWithContentsOfFile(buildTree() + "/share/quennelhelper/sound.oga"),
            std::nullopt);
}

TEST(PrefixBundle, TextsAreTranslated) {
  EXPECT_EQ(translationFor("de", "Cancel"), "Abbrechen");
  EXPECT_EQ(translationFor("es", "New %@"), "Nuevo: %@");
  EXPECT_EQ(translationFor("fr", "Unable to create file!"),
            "Impossible de créer le fichier\u00a0!");
}

TEST(PrefixBundle, AnUnknownTextIsItsOwnTranslation) {
  EXPECT_EQ(translationFor("de", "No such text"), "No such text");
  EXPECT_EQ(translationFor("de", ""), "");
}

TEST(PrefixBundle, EnglishNeedsNoCatalogue) { EXPECT_EQ(translationFor("en", "Cancel"), "Cancel"); }

TEST(PrefixBundle, AFailureIsToldWhollyInTheLanguageOfTheUser) {
  const Error error{ENOSPC, Error::Kind::Creating, "/d/neu.txt"};
  const auto told = [&] { return error.localizedDescription(PrefixBundle()); };
  EXPECT_EQ(inLanguage("de", told),
            "„/d/neu.txt“ konnte nicht angelegt werden: es ist kein Platz mehr frei.");
  EXPECT_EQ(inLanguage("es", told), "No se pudo crear «/d/neu.txt»: no queda espacio.");
  EXPECT_EQ(inLanguage("fr", told),
            "Impossible de créer «\u00a0/d/neu.txt\u00a0»\u00a0: il n’y a plus de place.");
}

}  // namespace
}  // namespace quennel::test
