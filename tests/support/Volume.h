#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {

/// A small fresh volume with a filesystem of its own, which can be mounted and unmounted. The top
/// folder belongs to the test's user. Needs `RootCommands`.
class Volume {
 public:
  /// Fuse is exFAT served by a program: without owners, permissions and links. It and ramfs give
  /// their volumes no name and their folders no birth time. Tmpfs and ramfs are empty again after
  /// they were mounted anew.
  enum class Filesystem { Ext4, Xfs, Btrfs, Tmpfs, Overlay, Ramfs, Fuse };

  static constexpr const char* nameOf(Filesystem filesystem) {
    constexpr const char* names[] = {"ext4", "xfs", "btrfs", "tmpfs", "overlay", "ramfs", "fuse"};
    return names[static_cast<int>(filesystem)];
  }

  /// Why such a volume cannot be made here; empty when it can.
  static std::string whyUnavailable(Filesystem filesystem);

  /// Makes the volume; throws std::runtime_error when that fails.
  explicit Volume(Filesystem filesystem);
  Volume(const Volume&) = delete;
  Volume& operator=(const Volume&) = delete;
  ~Volume();

  /// Mounts the volume on the existing folder at `point`.
  bool mountAt(const std::string& point);

  /// False when it is in use.
  bool unmountFrom(const std::string& point);

 private:
  std::string mountCommand(const std::string& point) const;

  Filesystem _filesystem;
  TemporaryDirectory _folder;
  std::vector<std::string> _points;
};

/// As test output shows it.
inline void PrintTo(Volume::Filesystem filesystem, std::ostream* output) {
  *output << Volume::nameOf(filesystem);
}

}  // namespace quennel::test
