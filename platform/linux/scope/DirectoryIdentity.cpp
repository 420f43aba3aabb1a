#include "platform/linux/scope/DirectoryIdentity.h"

#include <fcntl.h>
#include <linux/btrfs.h>
#include <linux/magic.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <span>
#include <string_view>

#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/scope/FileHandle.h"

namespace quennel {

namespace {

constexpr std::string_view prefixForThisRun = "run:";
constexpr long xfsMagic = 0x58465342;

// The packaged kernel headers are older than the calls.
struct FilesystemUUID {
  std::uint8_t length;
  std::array<std::uint8_t, 16> bytes;
};
constexpr unsigned long getFilesystemUUID = _IOR(0x15, 0, FilesystemUUID);  // Linux 6.9
constexpr unsigned int uniqueMountId = 0x4000;                              // Linux 6.8

// From xfs_fs.h, which comes with the filesystem's tools.
struct XfsGeometry {
  std::array<std::uint32_t, 8> sizes;
  std::array<std::uint64_t, 4> blocks;
  std::array<std::uint8_t, 16> uuid;
  std::array<std::uint32_t, 2> units;
  std::int32_t version;
  std::uint32_t flags;
  std::array<std::uint32_t, 3> sectors;
};
static_assert(sizeof(XfsGeometry) == 112);
constexpr unsigned long getXfsGeometry = _IOR('X', 100, XfsGeometry);

std::string hexadecimal(std::span<const std::uint8_t> bytes) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text;
  for (const unsigned byte : bytes) {
    text += digits[byte >> 4U];
    text += digits[byte & 15U];
  }
  return text;
}

/// "kind:hexadecimal", or nothing when the bytes are all zero: no name at all.
std::string volumeName(const char* kind, std::span<const std::uint8_t> bytes) {
  const bool zero = std::all_of(bytes.begin(), bytes.end(), [](auto byte) { return byte == 0; });
  return zero ? std::string() : kind + hexadecimal(bytes);
}

/// Asks the filesystem of an O_PATH descriptor, which itself takes no such request.
template <typename Answer>
bool askFilesystem(int directory, unsigned long request, Answer& answer) {
  const FileDescriptor readable(
      openat(directory, ".", O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC));
  return readable && ioctl(readable.get(), request, &answer) == 0;
}

std::string xfsVolume(int directory) {
  XfsGeometry geometry{};
  return askFilesystem(directory, getXfsGeometry, geometry) ? volumeName("xfs:", geometry.uuid)
                                                            : std::string();
}

std::string btrfsVolume(int directory) {
  btrfs_ioctl_fs_info_args information{};
  return askFilesystem(directory, BTRFS_IOC_FS_INFO, information)
             ? volumeName("btrfs:", information.fsid)
             : std::string();
}

std::string otherVolume(int directory) {
  FilesystemUUID uuid{};
  return askFilesystem(directory, getFilesystemUUID, uuid)
             ? volumeName("uuid:",
                          std::span(uuid.bytes)
                              .first(std::min<std::size_t>(uuid.length, uuid.bytes.size())))
             : std::string();
}

/// The way that works on every kernel, so that an upgrade changes no name. Where the identifier
/// that statfs gives is made of the filesystem's own, that is the quickest one; elsewhere it holds
/// the device's number.
std::string namedVolume(int directory, const struct statfs& filesystem) {
  std::array<std::uint8_t, sizeof filesystem.f_fsid> identifier;
  std::memcpy(identifier.data(), &filesystem.f_fsid, identifier.size());
  switch (filesystem.f_type) {
    case EXT4_SUPER_MAGIC:
      return volumeName("ext4:", identifier);
    case TMPFS_MAGIC:
      return volumeName("tmpfs:", identifier);
    case BTRFS_SUPER_MAGIC:
      return btrfsVolume(directory);
    case xfsMagic:
      return xfsVolume(directory);
    default:
      return otherVolume(directory);
  }
}

/// Mounts are numbered anew when the system starts.
const std::string& systemStart() {
  static const std::string identifier = [] {
    const FileDescriptor file(open("/proc/sys/kernel/random/boot_id", O_RDONLY | O_CLOEXEC));
    std::array<char, 36> text{};
    const ssize_t count = file ? read(file.get(), text.data(), text.size()) : 0;
    return std::string(text.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
  }();
  return identifier;
}

/// The filesystem as it is mounted now, for one that has no name.
std::string mountedVolume(int directory) {
  struct statx status {};
  if (statx(directory, "", AT_EMPTY_PATH | AT_STATX_DONT_SYNC, STATX_MNT_ID | uniqueMountId,
            &status) != 0) {
    return {};
  }
  if ((status.stx_mask & uniqueMountId) != 0 && !systemStart().empty()) {
    return "mount:" + systemStart() + ":" + std::to_string(status.stx_mnt_id);
  }
  return std::string(prefixForThisRun) + std::to_string(status.stx_mnt_id) + ":" +
         std::to_string(status.stx_dev_major) + ":" + std::to_string(status.stx_dev_minor);
}

void addHandle(int directory, DirectoryIdentity& identity) {
  FileHandle handle;
  int mount = 0;
  if (name_to_handle_at(directory, "", handle.head(), &mount, AT_EMPTY_PATH) == 0) {
    identity.handleType = handle.type();
    identity.handle = handle.bytes();
  }
}

}  // namespace

bool DirectoryIdentity::outlivesThisRun() const { return !volume.starts_with(prefixForThisRun); }

std::optional<DirectoryIdentity> identityOfDirectory(int directory) {
  struct statx status {};
  if (statx(directory, "", AT_EMPTY_PATH | AT_STATX_DONT_SYNC, STATX_TYPE | STATX_INO | STATX_BTIME,
            &status) != 0 ||
      !S_ISDIR(status.stx_mode)) {
    return std::nullopt;
  }
  DirectoryIdentity identity;
  identity.volume = volumeOfDirectory(directory);
  if (identity.volume.empty()) {
    return std::nullopt;
  }
  identity.inode = status.stx_ino;
  if ((status.stx_mask & STATX_BTIME) != 0) {
    identity.birthTime =
        status.stx_btime.tv_sec * std::int64_t{1'000'000'000} + status.stx_btime.tv_nsec;
  }
  addHandle(directory, identity);
  return identity;
}

std::string volumeOfDirectory(int directory) {
  struct statfs filesystem {};
  if (fstatfs(directory, &filesystem) != 0) {
    return {};
  }
  const std::string name = namedVolume(directory, filesystem);
  return name.empty() ? mountedVolume(directory) : name;
}

}  // namespace quennel
