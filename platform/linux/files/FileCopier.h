#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>

#include "platform/linux/base/FileDescriptor.h"

namespace quennel {

/// Fills `buffer` as far as one read does; 0 at the end. Throws FileFailure.
std::size_t readSome(int file, std::span<char> buffer);

/// Writes all of `bytes` at the descriptor's position; throws FileFailure.
void writeAll(int file, std::string_view bytes);

/// Copies regular files. One for each thread; it remembers what the filesystem cannot do and keeps
/// its buffer. Throws FileFailure.
class FileCopier {
 public:
  /// Files of at least that size, in bytes, share their blocks with the copy where they can.
  explicit FileCopier(off_t smallestClone = defaultSmallestClone) : _smallestClone(smallestClone) {}

  /// Sharing the blocks of a small file usually takes longer than copying it: the filesystem has to
  /// write the source out first, and to change its trees.
  static constexpr off_t defaultSmallestClone = off_t{64} * 1024;

  /// Opens what is to be copied, never waiting for another program as a FIFO would, and leaves its
  /// date of last access alone where the process may. `flags` are added to those of the call.
  FileDescriptor openSource(int folder, const char* name, int flags);

  /// Fills the empty file `copy` with what the file `source`, of that status, holds: by sharing
  /// blocks where the filesystem can, else byte by byte, holes kept. What the
  /// source gains meanwhile is left out.
  void copyContents(int source, const struct stat& status, int copy);

 private:
  bool clone(int source, const struct stat& status, int copy);
  void copyBytes(int source, off_t size, int copy);
  void copyAroundHoles(int source, off_t size, int copy);
  std::span<char> buffer();

  off_t _smallestClone;
  bool _canClone = true;
  bool _mayKeepAccessDates = true;
  std::unique_ptr<char[]> _buffer;
};

}  // namespace quennel
