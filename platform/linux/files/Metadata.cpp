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
constexpr int ownerShift = 6;
constexpr std::string_view accessRules = "system.posix_acl_access";
constexpr std::string_view defaultRules = "system.posix_acl_default";

// Under either of their names: XFS shows its ACLs to root as what they are stored in, too.
bool areRules(std::string_view name) {
  return name == accessRules || name == defaultRules || name == "trusted.SGI_ACL_FILE" ||
         name == "trusted.SGI_ACL_DEFAULT";
}

// What an item may not be given, because of who the process is or what the filesystem can keep (one
// without owners and permissions, as on a memory stick), it goes without.
void require(int result) {
  if (result != 0 && errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS) {
    throw FileFailure(errno, Step::ChangingAttributes);
  }
}

// Gives the copy the owner and group of its source, at least the group, where the process may.
void copyOwner(const struct stat& wanted, struct stat& present, int copy, const PlaceRules& rules) {
  const gid_t group = rules.givesGroup ? present.st_gid : wanted.st_gid;
  if (present.st_uid == wanted.st_uid && present.st_gid == group) {
    return;
  }
  if (::fchown(copy, wanted.st_uid, group) == 0 ||
      (present.st_gid != group && ::fchown(copy, static_cast<uid_t>(-1), group) == 0)) {
    present = statusOf(copy, Step::ChangingAttributes);
  }
}

mode_t permissionsOfCopy(const struct stat& wanted, const struct stat& present,
                         const PlaceRules& rules) {
  mode_t permissions = wanted.st_mode & permissionBits;
  // A program must not run with the rights of an owner or group that never gave them.
  if (present.st_uid != wanted.st_uid) {
    permissions &= ~mode_t{S_ISUID};
  }
  if (present.st_gid != wanted.st_gid) {
    permissions &= ~mode_t{S_ISGID};
  }
  if (rules.mostPermissions) {
    permissions &= *rules.mostPermissions;
  }
  // A folder that hands its group on passes that on, too.
  if (rules.givesGroup && S_ISDIR(present.st_mode)) {
    permissions |= present.st_mode & S_ISGID;
  }
  return permissions;
}

void copyPermissions(const struct stat& wanted, const struct stat& present, int copy,
                     const PlaceRules& rules) {
  const mode_t permissions = permissionsOfCopy(wanted, present, rules);
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

/// The entries of an ACL that permission bits can tell, each as the bits of its class.
struct BasicRules {
  mode_t owner = 0;
  mode_t group = 0;
  mode_t others = 0;
  /// What is the most for anybody but owner and others, where there is such an entry.
  std::optional<mode_t> mask;
};

BasicRules basicRulesIn(std::string_view rules) {
  BasicRules basic;
  rules.remove_prefix(std::min(rules.size(), sizeof(posix_acl_xattr_header)));
  for (posix_acl_xattr_entry entry; rules.size() >= sizeof entry;
       rules.remove_prefix(sizeof entry)) {
    std::memcpy(&entry, rules.data(), sizeof entry);
    const mode_t permissions = mode_t{le16toh(entry.e_perm)} & S_IRWXO;
    switch (le16toh(entry.e_tag)) {
      case ACL_USER_OBJ:
        basic.owner = permissions << ownerShift;
        break;
      case ACL_GROUP_OBJ:
        basic.group = permissions << groupShift;
        break;
      case ACL_MASK:
        basic.mask = permissions << groupShift;
        break;
      case ACL_OTHER:
        basic.others = permissions;
        break;
      default:
        break;
    }
  }
  return basic;
}

// What the rules let the owning group do.
mode_t groupPermissionsIn(std::string_view rules) {
  const BasicRules basic = basicRulesIn(rules);
  return basic.group & basic.mask.value_or(S_IRWXG);
}

// ACLs are among them. What the process may not set or the filesystem has no room for is left out.
void copyExtendedAttributes(int source, int copy, const PlaceRules& place) {
  const auto names =
      bytesOf([=](char* to, std::size_t size) { return ::flistxattr(source, to, size); });
  if (!names) {
    return;
  }
  for (std::size_t start = 0; start < names->size(); start += std::strlen(&(*names)[start]) + 1) {
    const char* name = &(*names)[start];
    if (belongsToThePlace(name) || (place.mostPermissions && areRules(name))) {
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

}  // namespace

PlaceRules rulesOfPlace(const std::string& path) {
  PlaceRules place;
  struct stat status;
  place.givesGroup = ::stat(path.c_str(), &status) == 0 && (status.st_mode & S_ISGID) != 0;
  const auto rules = bytesOf([&](char* to, std::size_t size) {
    return ::getxattr(path.c_str(), defaultRules.data(), to, size);
  });
  if (rules) {
    const BasicRules basic = basicRulesIn(*rules);
    place.givesGroup = true;
    place.mostPermissions = basic.owner | basic.mask.value_or(basic.group) | basic.others;
  }
  return place;
}

void copyMetadata(int source, const struct stat& status, int copy, const PlaceRules& rules) {
  struct stat present = statusOf(copy, Step::ChangingAttributes);
  copyOwner(status, present, copy, rules);
  copyPermissions(status, present, copy, rules);
  copyExtendedAttributes(source, copy, rules);
  copyDates(status, copy);
}

void copyLinkMetadata(const struct stat& status, int folder, const char* name,
                      const PlaceRules& rules) {
  const gid_t group = rules.givesGroup ? static_cast<gid_t>(-1) : status.st_gid;
  if (status.st_uid != ::geteuid() || group != ::getegid()) {
    require(::fchownat(folder, name, status.st_uid, group, AT_SYMLINK_NOFOLLOW));
  }
  const std::array<timespec, 2> dates{status.st_atim, status.st_mtim};
  require(::utimensat(folder, name, dates.data(), AT_SYMLINK_NOFOLLOW));
}

}  // namespace quennel
