#include "platform/linux/watch/FileState.h"

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>

#include "platform/KernelQueue.h"

namespace quennel {

namespace {

constexpr std::uint32_t entryEvents = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO;

std::int64_t nanoseconds(const statx_timestamp& date) {
  return date.tv_sec * 1'000'000'000 + date.tv_nsec;
}

std::uint32_t sizeNotes(const FileState& before, const FileState& after) {
  if (after.isDirectory() || after.size == before.size) {
    return 0;
  }
  return NOTE_WRITE | (after.size > before.size ? NOTE_EXTEND : NOTE_ATTRIB);
}

/// Of a file; a directory's count says how many subdirectories it has, on some filesystems.
std::uint32_t linkNotes(const FileState& before, const FileState& after) {
  if (after.isDirectory() || after.links == before.links) {
    return 0;
  }
  return NOTE_LINK | (after.links < before.links ? NOTE_DELETE : 0);
}

std::uint32_t ownershipNotes(const FileState& before, const FileState& after) {
  const bool same =
      after.mode == before.mode && after.owner == before.owner && after.group == before.group;
  return same ? 0 : NOTE_ATTRIB;
}

std::uint32_t entryNotes(std::uint32_t events) {
  return (events & entryEvents ? NOTE_WRITE : 0) | (events & IN_ISDIR ? NOTE_LINK : 0);
}

/// A subdirectory that was moved may have stayed below the same parent.
std::uint32_t movedSubdirectoryNotes(const FileState& before, const FileState& after,
                                     std::uint32_t events) {
  const bool counts = after.isDirectory() && events & (IN_MOVED_FROM | IN_MOVED_TO);
  return counts && after.links != before.links ? NOTE_LINK : 0;
}

}  // namespace

std::optional<FileState> FileState::atPath(const char* path) {
  struct statx status;
  if (statx(AT_FDCWD, path, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT,
            STATX_BASIC_STATS | STATX_BTIME | STATX_MNT_ID, &status) != 0) {
    return std::nullopt;
  }
  FileState state;
  state.inode = status.stx_ino;
  state.birth = status.stx_mask & STATX_BTIME ? nanoseconds(status.stx_btime) : 0;
  state.contentChange = nanoseconds(status.stx_mtime);
  state.attributeChange = nanoseconds(status.stx_ctime);
  state.size = status.stx_size;
  state.device = (status.stx_dev_major << 20) | status.stx_dev_minor;
  state.mount = status.stx_mask & STATX_MNT_ID ? static_cast<std::uint32_t>(status.stx_mnt_id) : 0;
  state.links = status.stx_nlink;
  state.mode = status.stx_mode;
  state.owner = status.stx_uid;
  state.group = status.stx_gid;
  return state;
}

bool FileState::isDirectory() const { return S_ISDIR(mode); }

bool FileState::isSymbolicLink() const { return S_ISLNK(mode); }

bool FileState::isSameObject(const FileState& other) const {
  return inode == other.inode && device == other.device && birth == other.birth;
}

std::uint32_t notesBetween(const FileState& before, const FileState& after, std::uint32_t events) {
  std::uint32_t notes = sizeNotes(before, after) | linkNotes(before, after) |
                        ownershipNotes(before, after) | entryNotes(events) |
                        movedSubdirectoryNotes(before, after, events);
  if (events & IN_MODIFY) {
    notes |= NOTE_WRITE;
  }
  // The kernel tells of a file's new link count by the same event.
  if (events & IN_ATTRIB && (after.isDirectory() || after.links == before.links)) {
    notes |= NOTE_ATTRIB;
  }
  return notes;
}

std::uint32_t notesBetween(const FileState& before, const FileState& after) {
  std::uint32_t notes = notesBetween(before, after, 0);
  if (after.contentChange != before.contentChange) {
    notes |= NOTE_WRITE;
  }
  if (after.isDirectory() && after.links != before.links) {
    notes |= NOTE_LINK;
  }
  if (notes == 0 && after.attributeChange != before.attributeChange) {
    notes |= NOTE_ATTRIB;
  }
  return notes;
}

std::uint32_t notesUnseen(std::uint32_t events) {
  return entryNotes(events) | (events & IN_MODIFY ? NOTE_WRITE | NOTE_EXTEND : 0) |
         (events & IN_ATTRIB ? NOTE_ATTRIB | NOTE_LINK : 0);
}

}  // namespace quennel
