#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>
#include <tuple>

namespace quennel {

/// What changes when a file is replaced, or written to.
using FileIdentity = std::tuple<dev_t, ino_t, time_t, long>;

/// Nothing when there is no file.
inline std::optional<FileIdentity> identityOfFile(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    return std::nullopt;
  }
  return FileIdentity(status.st_dev, status.st_ino, status.st_ctim.tv_sec, status.st_ctim.tv_nsec);
}

}  // namespace quennel
