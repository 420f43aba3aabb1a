#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string>

namespace quennel {

/// What tells one state of a file from the next without reading it. A file that is not there, or
/// cannot be looked at, has the default stamp.
struct FileStamp {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::int64_t size = 0;
  /// In nanoseconds since 1970.
  std::int64_t modificationTime = 0;
  std::int64_t changeTime = 0;

  FileStamp() = default;
  explicit FileStamp(const struct stat& status);

  static FileStamp ofFile(const std::string& path);

  /// Whether the file, looked at now, would have another stamp after any further change. A change
  /// within the same tick of the kernel's clock as the last one can go unseen.
  bool isSettled() const;

  bool operator==(const FileStamp&) const = default;
};

}  // namespace quennel
