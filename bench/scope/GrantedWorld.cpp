#include "bench/scope/GrantedWorld.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "platform/values/Path.h"

namespace quennel::bench {

namespace {

void require(bool done, const char* what) {
  if (!done) {
    throw std::runtime_error(what);
  }
}

}  // namespace

GrantedWorld::GrantedWorld(int grants) {
  std::filesystem::create_directories(folder());
  std::ofstream(templateFile()) << std::string(4096, 'x');
  LandlockSecurityScope landlock(keyFile());
  SecurityScope& scope = landlock;
  for (int number = 1; number <= grants; ++number) {
    const std::string path =
        number == grants ? _root / "granted" : _root / ("other" + std::to_string(number));
    std::filesystem::create_directories(path);
    auto bookmark = scope.bookmarkDataForPath(path);
    require(bookmark.has_value(), "a token could not be made");
    _bookmarks.push_back(std::move(*bookmark));
  }
}

Accesses startAccessing(SecurityScope& scope, const std::vector<PropertyList::Data>& bookmarks) {
  Accesses accesses;
  for (const PropertyList::Data& bookmark : bookmarks) {
    accesses.push_back(scope.startAccessing(bookmark));
    require(accesses.back() != nullptr, "a token does not resolve");
  }
  return accesses;
}

void createFile(FileManager& files, SecurityScope* scope, const std::string& templateFile,
                const std::string& path) {
  const auto stay = scope ? scope->enterFolder(deletingLastPathComponent(path)) : nullptr;
  require(files.isWritableFileAtPath(deletingLastPathComponent(path) + "/"), "not writable");
  require(!files.fileExistsAtPath(path), "the name is taken");
  require(files.copyItemAtPath(templateFile, path), "the copy failed");
  const auto attributes = files.attributesOfItemAtPath(path);
  require(attributes.has_value(), "the attributes cannot be read");
  require(files.setAttributes({.posixPermissions = attributes->posixPermissions}, path),
          "the permissions cannot be set");
  const auto now = std::chrono::system_clock::now();
  require(files.setAttributes({.creationDate = now, .modificationDate = now}, path),
          "the dates cannot be set");
}

}  // namespace quennel::bench
