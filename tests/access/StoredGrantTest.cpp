#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "access/AuthorizedDirectories.h"
#include "platform/linux/scope/LandlockSecurityScope.h"
#include "platform/linux/settings/PropertyListUserDefaults.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::string outputOf(const std::string& command) {
  std::string output;
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  for (int character = 0; pipe && (character = std::fgetc(pipe.get())) != EOF;) {
    output += static_cast<char>(character);
  }
  return output;
}

/// Grants in a real settings file, of real folders, from one run of the program to the next.
class StoredGrant : public ::testing::Test {
 protected:
  StoredGrant() { std::filesystem::create_directories(granted); }

  struct Run {
    explicit Run(const TemporaryDirectory& folder)
        : settings(folder / "settings.plist"), scope(folder / "key") {
      directories.startAccessingURLs();
    }
    ~Run() { directories.stopAccessingURLs(); }

    PropertyListUserDefaults settings;
    LandlockSecurityScope scope;
    AuthorizedDirectories directories{scope, settings};
  };

  TemporaryDirectory folder;
  const std::string granted = folder / "granted";
};

TEST_F(StoredGrant, IsInForceInTheNextRun) {
  Run(folder).directories.saveAuthorizedURL(granted);
  Run next(folder);
  EXPECT_THAT(next.directories.openedURLs(), ElementsAre(granted));
  EXPECT_TRUE(next.scope.isAccessible(granted));
}

TEST_F(StoredGrant, DoesNotPassToAFolderThatTookThePlace) {
  Run(folder).directories.saveAuthorizedURL(granted);
  std::filesystem::rename(granted, folder / "old");
  std::filesystem::remove_all(folder / "old");
  std::filesystem::create_directory(granted);
  Run next(folder);
  EXPECT_THAT(next.directories.openedURLs(), IsEmpty());
  EXPECT_FALSE(next.scope.isAccessible(granted));
}

TEST_F(StoredGrant, ThatIsAuthorizedAnewForSuchAFolderIsInForceInTheNextRun) {
  Run(folder).directories.saveAuthorizedURL(granted);
  std::filesystem::remove(granted);
  std::filesystem::create_directory(granted);
  Run(folder).directories.saveAuthorizedURL(granted);
  Run next(folder);
  EXPECT_THAT(next.directories.openedURLs(), ElementsAre(granted));
  EXPECT_TRUE(next.scope.isAccessible(granted));
}

TEST_F(StoredGrant, IsReadByPythonAsARecordOfTwoKeys) {
  if (std::system("python3 -c 'import plistlib' 2>/dev/null") != 0) {
    GTEST_SKIP() << "python3 is not installed";
  }
  Run(folder).directories.saveAuthorizedURL(granted);
  const std::string program =
      "import plistlib\n"
      "for record in plistlib.load(open(\"" +
      (folder / "settings.plist") +
      "\", \"rb\"))[\"authorizedDirs\"]:\n"
      "    print(sorted(record), record[\"path\"], type(record[\"bookmarkData\"]).__name__)\n";
  EXPECT_EQ(outputOf("python3 -c '" + program + "'"),
            "['bookmarkData', 'path'] " + granted + " bytes\n");
}

}  // namespace
}  // namespace quennel::test
