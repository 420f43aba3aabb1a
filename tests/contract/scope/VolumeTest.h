#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/files/PosixFileManager.h"
#include "platform/linux/scope/ConfinedFileManager.h"
#include "platform/linux/scope/LandlockSecurityScope.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/support/Volume.h"

namespace quennel::test {

using Filesystem = Volume::Filesystem;

// What the tests do themselves, past every scope.
void makeFolder(const std::string& path);
void writeFile(const std::string& path, const std::string& contents);
std::string contentsOf(const std::string& path);
bool exists(const std::string& path);
unsigned modeOf(const std::string& path);
bool isRoot();

/// A mounted volume of some filesystem, and the scope with which a run of the program begins.
class VolumeTest : public ::testing::Test {
 protected:
  /// Mounts a fresh volume at `volume`. Call it in SetUp, after a look at `whyUnavailable`.
  void mountFresh(Filesystem filesystem);

  /// What a new run of the program finds, `landlockVersion` of the kernel at the most.
  std::unique_ptr<SecurityScope> newScope(int landlockVersion = 99) const;

  /// Starts access to the folder in `scope` by way of a token; it lasts as long as `accesses`.
  void grant(const std::string& path);

  /// The token for the folder at `path`.
  PropertyList::Data bookmark(const std::string& path) const;

  /// Where a new run of the program finds the token's folder.
  std::optional<std::string> resolve(const PropertyList::Data& bookmark) const;

  TemporaryDirectory temporary;
  const std::string volume = temporary / "volume";
  const std::string elsewhere = temporary / "elsewhere";
  std::unique_ptr<Volume> mount;
  std::unique_ptr<SecurityScope> scope;
  std::vector<std::unique_ptr<SecurityScope::Access>> accesses;
  PosixFileManager posixFiles;
};

}  // namespace quennel::test
