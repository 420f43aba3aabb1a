#pragma once

#include <string>

#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {

/// A fresh filesystem, mounted for as long as this object lives; it takes root. This process and
/// those that it starts afterwards see it, and it is gone with them at the latest.
class LoopMount {
 public:
  /// `type` is "tmpfs", "ext4", "xfs", "btrfs", or "exfat-fuse": one without owners, permissions
  /// and links, as memory sticks have. The size is in MiB; xfs wants at least 300.
  explicit LoopMount(const std::string& type, int size = 320);
  LoopMount(const LoopMount&) = delete;
  LoopMount& operator=(const LoopMount&) = delete;
  ~LoopMount();

  /// Whether there is a filesystem; if not, `reason` says what was missing.
  explicit operator bool() const { return _reason.empty(); }
  const std::string& reason() const { return _reason; }

  const std::string& path() const { return _path; }
  /// The path of `name` in the filesystem.
  std::string operator/(const std::string& name) const { return _path + "/" + name; }

 private:
  bool makeImage(const std::string& type, int size);
  void mount(const std::string& command);

  TemporaryDirectory _folder;
  std::string _image;
  std::string _path;
  std::string _reason;
  bool _isMounted = false;
};

}  // namespace quennel::test
