#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace quennel {

/// What tells one folder from every other one, whatever names lead to it.
struct DirectoryIdentity {
  /// The filesystem it lives on, named by what its maker wrote into it. One without such a name
  /// (FUSE, FAT and others) is named by its present mount, so that nothing on it is taken for the
  /// same once it was mounted again.
  std::string volume;
  std::uint64_t inode = 0;
  /// In nanoseconds; 0 where the filesystem keeps none.
  std::int64_t birthTime = 0;
  /// The filesystem's own name for the folder, which is not given to another one when the inode
  /// number is; empty where there is none.
  std::int32_t handleType = 0;
  std::string handle;

  bool operator==(const DirectoryIdentity&) const = default;

  /// Whether another run of the program can compare with it. False on kernels that do not number
  /// mounts uniquely, for a filesystem without a name.
  bool outlivesThisRun() const;
};

/// The identity of an open folder (an O_PATH descriptor will do); nothing when it is none.
std::optional<DirectoryIdentity> identityOfDirectory(int directory);

/// The `volume` of the identities on the filesystem of an open folder; empty when it is none.
std::string volumeOfDirectory(int directory);

}  // namespace quennel
