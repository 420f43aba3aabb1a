#include "platform/linux/files/PathWalk.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <climits>

#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/files/FileStatus.h"

namespace quennel {

namespace {

constexpr int mostLinks = 40;  // what the kernel follows

FileDescriptor startOf(const std::string& path) {
  return FileDescriptor(
      ::open(path.starts_with('/') ? "/" : ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
}

// Takes the first name off a path; empty when there is none.
std::string takeName(std::string& path) {
  path.erase(0, path.find_first_not_of('/'));
  std::string name = path.substr(0, path.find('/'));
  path.erase(0, name.size());
  return name;
}

// Empty when it cannot be read.
std::string targetOfLink(int link) {
  std::array<char, PATH_MAX> target;
  const ssize_t size = ::readlinkat(link, "", target.data(), target.size());
  return size > 0 ? std::string(target.data(), static_cast<std::size_t>(size)) : std::string();
}

}  // namespace

bool leadsThrough(const std::string& path, const struct stat& item) {
  std::string rest = path;
  FileDescriptor folder = startOf(rest);
  int links = 0;
  for (std::string name = takeName(rest); folder && !name.empty(); name = takeName(rest)) {
    FileDescriptor next(::openat(folder.get(), name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    struct stat status;
    if (!next || ::fstat(next.get(), &status) != 0) {
      return false;
    }
    if (isSameItem(status, item)) {
      return true;
    }
    if (!S_ISLNK(status.st_mode)) {
      folder = std::move(next);
    } else if (++links <= mostLinks) {
      std::string target = targetOfLink(next.get());
      if (target.starts_with('/')) {
        folder = startOf(target);
      }
      rest = target.append("/").append(rest);
    } else {
      return false;
    }
  }
  return false;
}

}  // namespace quennel
