#include "platform/linux/scope/Grants.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>

namespace quennel {

/// The entry of a folder by which the way up came: known by its name at first, then as itself.
struct Grants::Child {
  std::string name;
  struct stat status {};

  bool isNamed(int folder, const std::string& candidate) const {
    if (!name.empty()) {
      return name == candidate;
    }
    struct stat other {};
    return status.st_ino != 0 &&
           fstatat(folder, candidate.c_str(), &other, AT_SYMLINK_NOFOLLOW) == 0 &&
           other.st_ino == status.st_ino && other.st_dev == status.st_dev;
  }
};

void Grants::remove(const Grant& grant) {
  const auto [first, last] = _byInode.equal_range(grant.folder.inode);
  const auto entry =
      std::find_if(first, last, [&](const auto& candidate) { return candidate.second == grant; });
  if (entry != last) {
    _byInode.erase(entry);
    ++_changes;
  }
}

FileDescriptor Grants::folderGranting(const ItemLocation& location) const {
  Child child{location.name};
  FileDescriptor folder(fcntl(location.folder.get(), F_DUPFD_CLOEXEC, 0));
  struct stat status {};
  while (folder && fstat(folder.get(), &status) == 0) {
    if (isGranted(folder.get(), status.st_ino, child)) {
      return folder;
    }
    const bool isRoot =
        child.status.st_ino == status.st_ino && child.status.st_dev == status.st_dev;
    if (isRoot) {
      break;
    }
    child = {"", status};
    folder = FileDescriptor(openat(folder.get(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
  }
  return {};
}

bool Grants::isGranted(int folder, std::uint64_t inode, const Child& child) const {
  // Another filesystem may have given out the same number: only a few, so the costly part is rare.
  const auto [first, last] = _byInode.equal_range(inode);
  if (first == last) {
    return false;
  }
  const auto identity = identityOfDirectory(folder);
  return std::any_of(first, last, [&](const auto& entry) {
    const Grant& grant = entry.second;
    return grant.folder == identity && (!grant.onlyItem || child.isNamed(folder, *grant.onlyItem));
  });
}

}  // namespace quennel
