#pragma once

#include <optional>
#include <string>

#include "tests/support/LoopMount.h"

namespace quennel::test {

/// A fresh filesystem of a kind that people have: "ext4", "xfs", "btrfs", "tmpfs", "overlay", or
/// "overlay-lower", where files come from the lower layer and are copied up when they change.
/// "here" is a folder where temporary files are, for those who may not mount.
class WatchedFilesystem {
 public:
  explicit WatchedFilesystem(const std::string& kind);
  ~WatchedFilesystem();

  /// Why there is none; empty when there is one.
  std::string reason() const;

  /// A folder of it.
  const std::string& folder() const { return _folder; }

  /// Where to put items for them to be in the folder at the next `reveal`.
  const std::string& source() const { return _source; }
  /// Makes what was put into the source appear in the folder. To be called once.
  void reveal();

 private:
  std::optional<TemporaryDirectory> _here;
  std::optional<LoopMount> _mount;
  bool _isOverlay;
  std::string _folder;
  std::string _source;
  std::string _reason;
};

}  // namespace quennel::test
