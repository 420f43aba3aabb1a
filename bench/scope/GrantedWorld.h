#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/FileManager.h"
#include "platform/linux/scope/LandlockSecurityScope.h"
#include "platform/values/PropertyList.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::bench {

/// A template, a folder five levels below a granted one, and tokens of that and of others.
class GrantedWorld {
 public:
  /// In memory, so that the disk does not blur the figures.
  explicit GrantedWorld(int grants);

  const std::string& root() const { return _root.path(); }
  std::string folder() const { return _root / "granted/a/b/c/d/e"; }
  std::string keyFile() const { return _root / "key"; }
  std::string templateFile() const { return _root / "template"; }
  const std::vector<PropertyList::Data>& bookmarks() const { return _bookmarks; }

 private:
  test::TemporaryDirectory _root{"/dev/shm"};
  std::vector<PropertyList::Data> _bookmarks;
};

using Accesses = std::vector<std::unique_ptr<SecurityScope::Access>>;

/// As the helper does it when it starts.
Accesses startAccessing(SecurityScope& scope, const std::vector<PropertyList::Data>& bookmarks);

/// Everything that a request changes or asks of the file system, from the question whether the
/// folder can be written to the dates of the finished file.
/// Unconfined without a scope.
void createFile(FileManager& files, SecurityScope* scope, const std::string& templateFile,
                const std::string& path);

}  // namespace quennel::bench
