#include "platform/linux/files/Metadata.h"

#include <endian.h>
#include <fcntl.h>
#include <linux/posix_acl.h>
#include <linux/posix_acl_xattr.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/files/FileFailure.h"
#include "platform/linux/files/FileStatus.h"

namespace quennel {

namespace {

using Step = FileFailure::Step;

constexpr mode_t permissionBits = 07777;
constexpr int groupShift = 3;
constexpr std::string_view accessRules = "system.posix_acl_access";
constexpr std::string_view defaultRules = "system.posix_acl_default";

// What an item may not be given, because of who the process is or what the filesystem can keep (one
// without owners and permissions, as on a memory stick), it goes without.
void require(int result) {
  if (result != 0 && errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS) {
    throw FileFailure(errno, Step::ChangingAttributes);
  }
}

// Gives the copy the owner and group of its source, at least the group, where the process may.
void copyOwner(const struct stat& wanted, struct stat& present, int copy) {
  if (present.st_uid == wanted.st_uid && present.st_gid == wanted.st_gid) {
    return;
  }
  if (::fchown(copy, wanted.st_uid, wanted.st_gid) == 0 ||
      (present.st_gid != wanted.st_gid &&
       ::fchown(copy, static_cast<uid_t>(-1), wanted.st_gid) == 0)) {
    present = statusOf(copy, Step::ChangingAttributes);
  }
}

void copyPermissions(const struct stat& wanted, const struct stat& present, int copy) {
  mode_t permissions = wanted.st_mode & permissionBits;
  // A program must not run with the rights of an owner or group that never gave them.
  if (present.st_uid != wanted.st_uid) {
    permissions &= ~mode_t{S_ISUID};
  }
  if (present.st_gid != wanted.st_gid) {
    permissions &= ~mode_t{S_ISGID};
  }
  if ((present.st_mode & permissionBits) != permissions) {
    require(::fchmod(copy, permissions));
  }
}

// What a call of the form of flistxattr delivers, whatever its size. Most items have nothing or
// little, so the first try uses the stack.
template <typename Call>
std::optional<std::string> bytesOf(const Call& call) {
  std::array<char, 1024> few;
  ssize_t size = call(few.data(), few.size());
  if (size >= 0) {
    return std::string(few.data(), static_cast<std::size_t>(size));
  }
  std::string bytes;
  while (size < 0 && errno == ERANGE) {
    const ssize_t needed = call(nullptr, 0);
    if (needed < 0) {
      return std::nullopt;
    }
    bytes.resize(static_cast<std::size_t>(needed));
    size = call(bytes.data(), bytes.size());
  }
  if (size < 0) {
    return std::nullopt;
  }
  bytes.resize(static_cast<std::size_t>(size));
  return bytes;
}

// Labels that belong to a place rather than to the item: a security policy's, which gives new files
// their own, and a union mount's bookkeeping.
bool belongsToThePlace(std::string_view name) {
  return name == "security.selinux" || name.starts_with("trusted.overlay.");
}

// What the rules let the owning group do, as permission bits of the group.
mode_t groupPermissionsIn(std::string_view rules) {
  mode_t group = 0;
  mode_t mask = S_IRWXG;
  rules.remove_prefix(std::min(rules.size(), sizeof(posix_acl_xattr_header)));
  for (posix_acl_xattr_entry entry; rules.size() >= sizeof entry;
       rules.remove_prefix(sizeof entry)) {
    std::memcpy(&entry, rules.data(), sizeof entry);
    const mode_t permissions = mode_t{le16toh(entry.e_perm)} << groupShift & S_IRWXG;
    if (le16toh(entry.e_tag) == ACL_GROUP_OBJ) {
      group = permissions;
    } else if (le16toh(entry.e_tag) == ACL_MASK) {
      mask = permissions;
    }
  }
  return group & mask;
}

// ACLs are among them. What the process may not set or the filesystem has no room for is left out.
void copyExtendedAttributes(int source, int copy) {
  const auto names =
      bytesOf([=](char* to, std::size_t size) { return ::flistxattr(source, to, size); });
  if (!names) {
    return;
  }
  for (std::size_t start = 0; start < names->size(); start += std::strlen(&(*names)[start]) + 1) {
    const char* name = &(*names)[start];
    if (belongsToThePlace(name)) {
      continue;
    }
    const auto value =
        bytesOf([=](char* to, std::size_t size) { return ::fgetxattr(source, name, to, size); });
    const bool isKept = value && ::fsetxattr(copy, name, value->data(), value->size(), 0) == 0;
    if (value && !isKept && name == accessRules) {
      // The permission bits of the group stood for all that the rules allow to anybody.
      const mode_t others =
          statusOf(copy, Step::ChangingAttributes).st_mode & permissionBits & ~mode_t{S_IRWXG};
      require(::fchmod(copy, others | groupPermissionsIn(*value)));
    }
  }
}

void copyDates(const struct stat& status, int copy) {
  const std::array<timespec, 2> dates{status.st_atim, status.st_mtim};
  require(::futimens(copy, dates.data()));
}

void dropRules(int item, std::string_view rules) {
  if (::fgetxattr(item, rules.data(), nullptr, 0) > 0) {
    require(::fremovexattr(item, rules.data()));
  }
}

}  // namespace

void dropInheritedAccessRules(int item, FileManager::ItemKind kind) {
  dropRules(item, accessRules);
  if (kind == FileManager::ItemKind::Directory) {
    dropRules(item, defaultRules);
  }
}

void copyMetadata(int source, const struct stat& status, int copy) {
  struct stat present = statusOf(copy, Step::ChangingAttributes);
  copyOwner(status, present, copy);
  copyPermissions(status, present, copy);
  copyExtendedAttributes(source, copy);
  copyDates(status, copy);
}

void copyLinkMetadata(const struct stat& status, int folder, const char* name) {
  if (status.st_uid != ::geteuid() || status.st_gid != ::getegid()) {
    require(::fchownat(folder, name, status.st_uid, status.st_gid, AT_SYMLINK_NOFOLLOW));
  }
  const std::array<timespec, 2> dates{status.st_atim, status.st_mtim};
  require(::utimensat(folder, name, dates.data(), AT_SYMLINK_NOFOLLOW));
}

}  // namespace quennel
