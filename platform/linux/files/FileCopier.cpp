#include "platform/linux/files/FileCopier.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>

#include "platform/linux/files/FileFailure.h"

namespace quennel {

namespace {

using Step = FileFailure::Step;

// Plain reads and writes of this size beat copy_file_range on a local filesystem.
constexpr std::size_t bufferSize = std::size_t{256} * 1024;
// Files below this are copied through the stack.
constexpr std::size_t smallSize = std::size_t{16} * 1024;
// Looking for holes in a smaller file costs more than they can save.
constexpr off_t smallestWithHoles = off_t{64} * 1024;

/// Nothing when the file has no more data, or has meanwhile become shorter than `position`.
std::optional<off_t> seekBeforeEnd(int file, off_t position, int whence) {
  const off_t found = ::lseek(file, position, whence);
  if (found < 0 && errno != ENXIO) {
    throw FileFailure(errno, FileFailure::Step::Reading);
  }
  return found < 0 ? std::nullopt : std::optional(found);
}

off_t seek(int file, off_t position, int whence, FileFailure::Step step) {
  const off_t result = ::lseek(file, position, whence);
  if (result < 0) {
    throw FileFailure(errno, step);
  }
  return result;
}

// Copies `size` bytes from where the source stands, fewer when it ends before. A size of 0 is that
// of an empty file, or of one whose filesystem does not know: it is read to its end.
void copyThrough(std::span<char> buffer, int source, off_t size, int copy) {
  off_t copied = 0;
  while (size == 0 || copied < size) {
    const off_t left = size == 0 ? static_cast<off_t>(buffer.size()) : size - copied;
    const std::size_t count =
        readSome(source, buffer.first(std::min(buffer.size(), static_cast<std::size_t>(left))));
    if (count == 0) {
      return;
    }
    writeAll(copy, {buffer.data(), count});
    copied += static_cast<off_t>(count);
  }
}

}  // namespace

std::size_t readSome(int file, std::span<char> buffer) {
  for (;;) {
    const ssize_t count = ::read(file, buffer.data(), buffer.size());
    if (count >= 0) {
      return static_cast<std::size_t>(count);
    }
    if (errno != EINTR) {
      throw FileFailure(errno, Step::Reading);
    }
  }
}

void writeAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(file, bytes.data(), bytes.size());
    if (count >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      throw FileFailure(errno, Step::Writing);
    }
  }
}

FileDescriptor FileCopier::openSource(int folder, const char* name, int flags) {
  flags |= O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  FileDescriptor source;
  if (_mayKeepAccessDates) {
    source = FileDescriptor(::openat(folder, name, flags | O_NOATIME));
    // Only an item's owner may ask for it.
    _mayKeepAccessDates = source || errno != EPERM;
  }
  if (!_mayKeepAccessDates) {
    source = FileDescriptor(::openat(folder, name, flags));
  }
  if (!source) {
    throw FileFailure(errno, Step::Reading);
  }
  return source;
}

void FileCopier::copyContents(int source, const struct stat& status, int copy) {
  if (clone(source, status, copy)) {
    return;
  }
  constexpr off_t blockUnit = 512;
  const bool mayHaveHoles = status.st_blocks * blockUnit < status.st_size;
  if (mayHaveHoles && status.st_size >= smallestWithHoles) {
    copyAroundHoles(source, status.st_size, copy);
  } else {
    copyBytes(source, status.st_size, copy);
  }
}

bool FileCopier::clone(int source, const struct stat& status, int copy) {
  if (!_canClone || status.st_size < _smallestClone) {
    return false;
  }
  if (::ioctl(copy, FICLONE, source) == 0) {
    return true;
  }
  // Other failures are this file's own. Either way the bytes are copied instead, and what is really
  // wrong shows there.
  _canClone = errno != EOPNOTSUPP && errno != ENOTTY && errno != EXDEV;
  return false;
}

void FileCopier::copyBytes(int source, off_t size, int copy) {
  if (size <= static_cast<off_t>(smallSize)) {
    std::array<char, smallSize> small;
    copyThrough(small, source, size, copy);
  } else {
    copyThrough(buffer(), source, size, copy);
  }
}

void FileCopier::copyAroundHoles(int source, off_t size, int copy) {
  off_t position = 0;
  while (position < size) {
    const auto data = seekBeforeEnd(source, position, SEEK_DATA);
    const auto hole = data ? seekBeforeEnd(source, *data, SEEK_HOLE) : std::nullopt;
    if (!hole || *data >= size) {
      break;
    }
    position = std::min(*hole, size);
    seek(source, *data, SEEK_SET, Step::Reading);
    seek(copy, *data, SEEK_SET, Step::Writing);
    copyBytes(source, position - *data, copy);
  }
  const off_t end = std::min(seek(source, 0, SEEK_END, Step::Reading), size);
  if (::ftruncate(copy, end) != 0) {
    throw FileFailure(errno, Step::Writing);
  }
}

std::span<char> FileCopier::buffer() {
  if (!_buffer) {
    _buffer = std::make_unique_for_overwrite<char[]>(bufferSize);
  }
  return {_buffer.get(), bufferSize};
}

}  // namespace quennel
