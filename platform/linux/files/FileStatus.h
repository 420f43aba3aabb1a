#pragma once

#include <sys/stat.h>

#include <cerrno>

#include "platform/linux/files/FileFailure.h"

namespace quennel {

/// What fstat tells of the open item; throws FileFailure with the step that needs to know it.
inline struct stat statusOf(int item, FileFailure::Step step) {
  struct stat status;
  if (::fstat(item, &status) != 0) {
    throw FileFailure(errno, step);
  }
  return status;
}

inline bool isSameItem(const struct stat& one, const struct stat& other) {
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

}  // namespace quennel
