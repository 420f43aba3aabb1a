#include "platform/linux/scope/OpenItem.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <string_view>

namespace quennel {

namespace {

constexpr int openPlace = O_PATH | O_CLOEXEC;
constexpr int mostLinks = 40;  // what the kernel follows

FileDescriptor openAt(int folder, const char* path, int flags) {
  return FileDescriptor(openat(folder, path, openPlace | flags));
}

/// What a path ends with: the folder ("" is the present one) and the name in it.
struct SplitPath {
  std::string folder;
  std::string name;
};

SplitPath split(std::string_view path) {
  path = withoutTrailingSlashes(path);
  const std::size_t slash = path.rfind('/');
  if (slash == std::string_view::npos) {
    return {"", std::string(path)};
  }
  return {std::string(path.substr(0, slash + 1)), std::string(path.substr(slash + 1))};
}

ItemLocation locationAt(int folder, std::string_view path) {
  SplitPath parts = split(path);
  if (parts.name.empty() || parts.name == "." || parts.name == "..") {
    errno = EINVAL;
    return {};
  }
  return {openAt(folder, parts.folder.empty() ? "." : parts.folder.c_str(), O_DIRECTORY),
          std::move(parts.name)};
}

/// Where the link points to; nothing when the item is no link.
std::optional<std::string> destinationOfLink(int item) {
  std::array<char, PATH_MAX> path;
  const ssize_t size = readlinkat(item, "", path.data(), path.size());
  return size > 0 ? std::optional<std::string>(std::in_place, path.data(),
                                               static_cast<std::size_t>(size))
                  : std::nullopt;
}

/// Follows the links at the end of `path` one by one, so that the folder of what they lead to is
/// known.
std::optional<OpenItem> openFile(std::string path) {
  FileDescriptor folder = openAt(AT_FDCWD, "/", O_DIRECTORY);
  for (int links = 0; links < mostLinks; ++links) {
    ItemLocation location = locationAt(folder.get(), path);
    FileDescriptor item = location.folder
                              ? openAt(location.folder.get(), location.name.c_str(), O_NOFOLLOW)
                              : FileDescriptor();
    if (!item) {
      return std::nullopt;
    }
    auto destination = destinationOfLink(item.get());
    if (!destination) {
      return OpenItem{std::move(item), std::move(location)};
    }
    path = std::move(*destination);
    folder = std::move(location.folder);
  }
  errno = ELOOP;
  return std::nullopt;
}

}  // namespace

std::string_view withoutTrailingSlashes(std::string_view path) {
  while (path.size() > 1 && path.ends_with('/')) {
    path.remove_suffix(1);
  }
  return path;
}

PathParts partsOfPath(std::string_view path) {
  path = withoutTrailingSlashes(path);
  const std::size_t slash = path.rfind('/');
  const std::string_view name = slash == std::string_view::npos ? path : path.substr(slash + 1);
  const bool isName = name != "." && name != "..";
  return {withoutTrailingSlashes(path.substr(0, path.size() - name.size())),
          isName ? name : std::string_view()};
}

FileDescriptor openUnlessLink(const FileDescriptor& folder, const std::string& name) {
  FileDescriptor item = openAt(folder.get(), name.c_str(), O_NOFOLLOW);
  struct stat status {};
  const bool isItem = item && fstat(item.get(), &status) == 0 && !S_ISLNK(status.st_mode);
  return isItem ? std::move(item) : FileDescriptor();
}

FileDescriptor duplicate(const FileDescriptor& place) {
  return FileDescriptor(fcntl(place.get(), F_DUPFD_CLOEXEC, 0));
}

FileDescriptor openDirectory(const std::string& path) {
  return openAt(AT_FDCWD, path.c_str(), O_DIRECTORY);
}

ItemLocation locationOfPath(const std::string& path) { return locationAt(AT_FDCWD, path); }

std::optional<OpenItem> openItem(const std::string& path) {
  FileDescriptor directory = openDirectory(path);
  if (!directory) {
    return errno == ENOTDIR ? openFile(path) : std::nullopt;
  }
  FileDescriptor folder = openAt(directory.get(), ".", O_DIRECTORY);
  if (!folder) {
    return std::nullopt;
  }
  return OpenItem{std::move(directory), {std::move(folder), ""}};
}

std::string pathThroughDescriptor(int descriptor) {
  return "/proc/self/fd/" + std::to_string(descriptor);
}

std::optional<std::string> pathOfDescriptor(int descriptor) {
  std::array<char, PATH_MAX> path;
  const ssize_t size =
      readlink(pathThroughDescriptor(descriptor).c_str(), path.data(), path.size());
  return size > 0 ? std::optional<std::string>(std::in_place, path.data(),
                                               static_cast<std::size_t>(size))
                  : std::nullopt;
}

}  // namespace quennel
