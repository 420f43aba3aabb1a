#include "platform/linux/files/DirectoryEntries.h"

#include <cerrno>

#include "platform/linux/files/FileFailure.h"

namespace quennel {

bool DirectoryEntries::readNext(int folder) {
  const ssize_t size = getdents64(folder, _buffer.get(), _capacity);
  if (size < 0) {
    throw FileFailure(errno, FileFailure::Step::Reading);
  }
  _size = static_cast<std::size_t>(size);
  return size > 0;
}

}  // namespace quennel
