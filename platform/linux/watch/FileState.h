#pragma once

#include <cstdint>
#include <optional>

namespace quennel {

/// What a look at a file-system object shows of it, kept small: there is one for every watched
/// file.
struct FileState {
  std::uint64_t inode = 0;
  /// Dates in nanoseconds since 1970. The date of birth tells an object from a later one that was
  /// given its inode number; it is 0 where the filesystem does not know it.
  std::int64_t birth = 0;
  std::int64_t contentChange = 0;
  std::int64_t attributeChange = 0;
  std::uint64_t size = 0;
  std::uint32_t device = 0;
  /// The mount that the path led through; 0 when the kernel does not tell.
  std::uint32_t mount = 0;
  std::uint32_t links = 0;
  std::uint32_t mode = 0;
  std::uint32_t owner = 0;
  std::uint32_t group = 0;

  /// The object that `path` names; a symbolic link is not followed. Nothing, and errno set, when
  /// there is none.
  static std::optional<FileState> atPath(const char* path);

  bool isDirectory() const;
  bool isSymbolicLink() const;
  bool isSameObject(const FileState& other) const;
};

/// The kinds of change (`NOTE_…`) that lie between two looks at an object, when the kernel has told
/// of these inotify events (`IN_…`) in between. `IN_ISDIR` among them says that a subdirectory was
/// made or removed.
std::uint32_t notesBetween(const FileState& before, const FileState& after, std::uint32_t events);

/// The same when the kernel's events were lost, from the two looks alone.
std::uint32_t notesBetween(const FileState& before, const FileState& after);

/// What the events alone tell of an object that cannot be looked at: where they leave two kinds
/// open, both.
std::uint32_t notesUnseen(std::uint32_t events);

}  // namespace quennel
