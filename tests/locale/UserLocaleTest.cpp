#include <gtest/gtest.h>

#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <string>

#include "platform/linux/locale/UserLocale.h"
#include "tests/support/ChildProcess.h"

namespace quennel::test {
namespace {

/// The answer of `body` in a process of a user who has chosen `locale` and `language`.
std::string forUserOf(const char* locale, const char* language,
                      const std::function<std::string()>& body) {
  return inChildProcess([&] {
    setenv("LC_ALL", locale, 1);
    setenv("LANGUAGE", language, 1);
    return body();
  });
}

/// The C library's own catalogue serves as one that has many languages.
std::string noSuchFile() {
  return UserLocale::translation("No such file or directory", "libc", "/usr/share/locale");
}

TEST(UserLocale, TextsAreInTheLanguageOfTheUser) {
  if (!std::filesystem::exists("/usr/share/locale/de/LC_MESSAGES/libc.mo")) {
    GTEST_SKIP() << "no German messages of the C library: package locales";
  }
  EXPECT_EQ(forUserOf("C.UTF-8", "de", noSuchFile), "Datei oder Verzeichnis nicht gefunden");
  EXPECT_EQ(forUserOf("C.UTF-8", "fr", noSuchFile), "Aucun fichier ou dossier de ce type");
}

TEST(UserLocale, TextsAreEnglishWhereNoLanguageIsChosen) {
  EXPECT_EQ(forUserOf("C", "", noSuchFile), "No such file or directory");
}

TEST(UserLocale, ALocaleThatIsNotInstalledLeavesTheTextsEnglish) {
  EXPECT_EQ(forUserOf("xx_YY.UTF-8", "de", noSuchFile), "No such file or directory");
}

TEST(UserLocale, ATextWithoutACatalogueIsItsOwnTranslation) {
  const auto cancel = [] { return UserLocale::translation("Cancel", "no-such-domain", "/"); };
  EXPECT_EQ(forUserOf("C.UTF-8", "de", cancel), "Cancel");
}

TEST(UserLocale, TheEmptyTextStaysEmpty) {
  EXPECT_EQ(UserLocale::translation("", "no-such-domain", "/"), "");
}

TEST(UserLocale, TheProcessKeepsTheLocaleItStartedWith) {
  const auto processLocale = [] {
    noSuchFile();
    return std::string(std::setlocale(LC_ALL, nullptr)) + "/" + std::strerror(ENOENT);
  };
  EXPECT_EQ(forUserOf("C.UTF-8", "de", processLocale), "C/No such file or directory");
}

}  // namespace
}  // namespace quennel::test
