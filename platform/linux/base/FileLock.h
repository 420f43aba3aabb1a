#pragma once

#include <chrono>
#include <string>

#include "platform/linux/base/FileDescriptor.h"

namespace quennel {

/// Holds a lock between processes, as long as it lives. The lock is on a file of its own, which is
/// made when missing and stays: the file that it protects is replaced by every change.
class FileLock {
 public:
  /// Waits for other holders, up to `patience`. Throws a FileError (ETIMEDOUT after that).
  FileLock(const std::string& path, std::chrono::milliseconds patience);

 private:
  FileDescriptor _descriptor;
};

}  // namespace quennel
