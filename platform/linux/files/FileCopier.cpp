#include "platform/linux/files/FileCopier.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "platform/linux/files/FileFailure.h"

namespace quennel {

namespace {

// Plain reads and writes of this size beat copy_file_range on a local filesystem.
constexpr std::size_t bufferSize = std::size_t{256} * 1024;
// Files below this are copied through the stack.
constexpr std::size_t smallSize = std::size_t{16} * 1024;
// Sharing the blocks of a small file takes longer than copying it: the filesystem has to write the
// source out first and to change its trees.
constexpr off_t smallestClone = off_t{64} * 1024;

off_t seek(int file, off_t position, int whence, FileFailure::Step step) {
  const off_t result = ::lseek(file, position, whence);
  if (result < 0) {
    throw FileFailure(errno, step);
  }
  return result;
}

// Reads and writes until the source ends. A read that does not fill the buffer has met the end,
// unless the file was to be longer.
void copyThrough(std::span<char> buffer, int source, off_t expectedSize, int copy) {
  off_t copied = 0;
  for (;;) {
    const std::size_t count = readSome(source, buffer);
    writeAll(copy, {buffer.data(), count});
    copied += static_cast<off_t>(count);
    if (count == 0 || (count < buffer.size() && copied == expectedSize)) {
      return;
    }
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
      throw FileFailure(errno, FileFailure::Step::Reading);
    }
  }
}

void writeAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(file, bytes.data(), bytes.size());
    if (count >= 0) {
      bytes.remove_prefix(static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      throw FileFailure(errno, FileFailure::Step::Writing);
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
    throw FileFailure(errno, FileFailure::Step::Opening);
  }
  return source;
}

void FileCopier::copyContents(int source, const struct stat& status, int copy) {
  if (clone(source, status, copy)) {
    return;
  }
  constexpr off_t blockUnit = 512;
  const bool mayHaveHoles = status.st_blocks * blockUnit < status.st_size;
  if (mayHaveHoles && status.st_size >= smallestClone) {
    copyAroundHoles(source, copy);
  } else {
    copyBytes(source, status.st_size, copy);
  }
}

bool FileCopier::clone(int source, const struct stat& status, int copy) {
  if (!_canClone || status.st_size < smallestClone) {
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

void FileCopier::copyBytes(int source, off_t expectedSize, int copy) {
  if (expectedSize < static_cast<off_t>(smallSize)) {
    std::array<char, smallSize> small;
    copyThrough(small, source, expectedSize, copy);
  } else {
    copyThrough(buffer(), source, expectedSize, copy);
  }
}

void FileCopier::copyAroundHoles(int source, int copy) {
  off_t position = 0;
  for (;;) {
    const off_t data = ::lseek(source, position, SEEK_DATA);
    if (data < 0 && errno == ENXIO) {
      break;
    }
    if (data < 0) {
      throw FileFailure(errno, FileFailure::Step::Reading);
    }
    position = seek(source, data, SEEK_HOLE, FileFailure::Step::Reading);
    copyRange(source, data, position, copy);
  }
  const off_t size = seek(source, 0, SEEK_END, FileFailure::Step::Reading);
  if (::ftruncate(copy, size) != 0) {
    throw FileFailure(errno, FileFailure::Step::Writing);
  }
}

void FileCopier::copyRange(int source, off_t start, off_t end, int copy) {
  seek(source, start, SEEK_SET, FileFailure::Step::Reading);
  seek(copy, start, SEEK_SET, FileFailure::Step::Writing);
  while (start < end) {
    const std::size_t wanted = std::min(bufferSize, static_cast<std::size_t>(end - start));
    const std::size_t count = readSome(source, buffer().first(wanted));
    if (count == 0) {
      return;
    }
    writeAll(copy, {buffer().data(), count});
    start += static_cast<off_t>(count);
  }
}

std::span<char> FileCopier::buffer() {
  if (!_buffer) {
    _buffer = std::make_unique_for_overwrite<char[]>(bufferSize);
  }
  return {_buffer.get(), bufferSize};
}

}  // namespace quennel
