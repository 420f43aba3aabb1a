#include "platform/linux/base/FileReplacement.h"

#include <fcntl.h>
#include <limits.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <optional>

#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/base/FileError.h"
#include "platform/values/Path.h"

namespace quennel {
namespace {

[[noreturn]] void fail(int code, const std::string& path) { throw FileError(code, path); }

/// What the symbolic link at `path` holds; nothing when no link is there.
std::optional<std::string> linkAt(const std::string& path) {
  std::array<char, PATH_MAX> target;
  const ssize_t length = readlink(path.c_str(), target.data(), target.size());
  if (length >= 0) {
    return std::string(target.data(), static_cast<std::size_t>(length));
  }
  if (errno != EINVAL && errno != ENOENT) {
    fail(errno, path);
  }
  return std::nullopt;
}

/// Where the file is, or would be, that `path` leads to.
std::string followingLinks(std::string path) {
  constexpr int limit = 40;
  for (int count = 0; count < limit; ++count) {
    const auto target = linkAt(path);
    if (!target) {
      return path;
    }
    path = target->starts_with('/')
               ? *target
               : appendingPathComponent(deletingLastPathComponent(path), *target);
  }
  fail(ELOOP, path);
}

std::string folderOf(const std::string& path) {
  const std::string folder = deletingLastPathComponent(path);
  return folder.empty() ? "." : folder;
}

/// A file in the folder of the one that it will become; goes away again if it does not.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& destination)
      : _path(folderOf(destination) + "/." + lastPathComponent(destination) + ".XXXXXX"),
        _descriptor(mkostemp(_path.data(), O_CLOEXEC)) {
    if (!_descriptor) {
      fail(errno, folderOf(destination));
    }
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    if (!_path.empty()) {
      unlink(_path.c_str());
    }
  }

  void write(std::string_view contents) const {
    while (!contents.empty()) {
      const ssize_t count = ::write(_descriptor.get(), contents.data(), contents.size());
      if (count >= 0) {
        contents.remove_prefix(static_cast<std::size_t>(count));
      } else if (errno != EINTR) {
        fail(errno, _path);
      }
    }
  }

  void takeOwnerAndModeOf(const struct stat& model) const {
    const bool isOwnerKept = fchown(_descriptor.get(), model.st_uid, model.st_gid) == 0;
    // Bits that were meant for another owner's or group's file are not given to ours.
    const mode_t mode = model.st_mode & (isOwnerKept ? 07777U : 0777U);
    if (fchmod(_descriptor.get(), mode) != 0) {
      fail(errno, _path);
    }
  }

  void moveTo(const std::string& destination) {
    if (fsync(_descriptor.get()) != 0 || rename(_path.c_str(), destination.c_str()) != 0) {
      fail(errno, destination);
    }
    _path.clear();
  }

 private:
  std::string _path;
  FileDescriptor _descriptor;
};

/// Without this the new name could be lost with the power.
void storeNamesOf(const std::string& folder) {
  const FileDescriptor descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  // Some filesystems keep their names without being told and refuse to be.
  if (!descriptor || (fsync(descriptor.get()) != 0 && errno != EINVAL)) {
    fail(errno, folder);
  }
}

}  // namespace

void replaceFile(const std::string& path, std::string_view contents) {
  const std::string destination = followingLinks(path);
  TemporaryFile file(destination);
  struct stat existing {};
  if (stat(destination.c_str(), &existing) == 0) {
    file.takeOwnerAndModeOf(existing);
  }
  file.write(contents);
  file.moveTo(destination);
  storeNamesOf(folderOf(destination));
}

void makeFolder(const std::string& path) {
  if (mkdir(path.c_str(), 0700) == 0 || errno == EEXIST) {
    return;
  }
  if (errno != ENOENT || folderOf(path) == path) {
    fail(errno, path);
  }
  makeFolder(folderOf(path));
  if (mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) {
    fail(errno, path);
  }
}

}  // namespace quennel
