#include "tests/contract/scope/VolumeTest.h"

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/support/Sentence.h"

namespace quennel::test {

void makeFolder(const std::string& path) { std::filesystem::create_directories(path); }

void writeFile(const std::string& path, const std::string& contents) {
  std::ofstream(path) << contents;
}

std::string contentsOf(const std::string& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

bool exists(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0;
}

unsigned modeOf(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

bool isRoot() { return geteuid() == 0; }

void VolumeTest::mountFresh(Filesystem filesystem) {
  makeFolder(volume);
  makeFolder(elsewhere);
  mount = std::make_unique<Volume>(filesystem);
  ASSERT_TRUE(mount->mountAt(volume));
}

std::unique_ptr<SecurityScope> VolumeTest::newScope(int landlockVersion) const {
  return std::make_unique<LandlockSecurityScope>(temporary / "keys/key", landlockVersion);
}

void VolumeTest::grant(const std::string& path) {
  const auto token = scope->bookmarkDataForPath(path);
  ASSERT_TRUE(token);
  accesses.push_back(scope->startAccessing(*token));
  ASSERT_TRUE(accesses.back());
}

PropertyList::Data VolumeTest::bookmark(const std::string& path) const {
  Error error;
  const auto token = newScope()->bookmarkDataForPath(path, &error);
  EXPECT_TRUE(token) << sentenceOf(error);
  return token.value_or(PropertyList::Data{});
}

std::optional<std::string> VolumeTest::resolve(const PropertyList::Data& token) const {
  return newScope()->pathByResolvingBookmarkData(token);
}

}  // namespace quennel::test
