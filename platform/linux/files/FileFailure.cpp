#include "platform/linux/files/FileFailure.h"

#include <cerrno>

namespace quennel {

namespace {

bool isAtSource(FileFailure::Step step) {
  return step == FileFailure::Step::Reading || step == FileFailure::Step::CopyingSpecialFile;
}

}  // namespace

bool isUnsupported(int code) {
  return code == EINVAL || code == ENOSYS || code == EOPNOTSUPP || code == EISDIR;
}

void FileFailure::locate(const std::string& source, const std::string& copy) {
  if (_error.item.empty()) {
    _error.item = isAtSource(_error.kind) ? source : copy;
  }
}

}  // namespace quennel
