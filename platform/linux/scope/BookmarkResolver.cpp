#include "platform/linux/scope/BookmarkResolver.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <iterator>
#include <string_view>
#include <vector>

#include "platform/linux/scope/DetachedChild.h"
#include "platform/linux/scope/OpenItem.h"
#include "platform/values/Path.h"

namespace quennel {

namespace {

constexpr int timeToAnswer = 1000;  // milliseconds
constexpr unsigned int mostSeconds = 2;
constexpr std::chrono::seconds timeNotAskedAgain{10};

/// Filesystems that another machine or program serves.
bool mayBeSilent(std::string_view filesystemType) {
  constexpr std::array served{"9p",     "afs", "autofs",   "ceph", "cifs",   "coda",    "fuse",
                              "lustre", "nfs", "orangefs", "smb3", "vboxsf", "virtiofs"};
  return std::any_of(served.begin(), served.end(),
                     [&](const char* type) { return filesystemType.starts_with(type); });
}

/// The table has no line for the root of a process in a changed root that is no mount itself.
/// Folders there are found by their paths alone.
Mount unlistedRoot() { return {.id = 0, .root = "/", .point = "/", .type = "", .source = ""}; }

bool leadsTo(const DirectoryIdentity& identity, const std::string& path) {
  const FileDescriptor directory = openDirectory(path);
  return directory && identityOfDirectory(directory.get()) == identity;
}

/// The mounts that show the bookmark's filesystem now. Mounts of other types are not touched: one
/// of them may be a server that does not answer.
std::vector<Mount> mountsOfVolume(const Bookmark& bookmark) {
  std::vector<Mount> found;
  const MountTable table = MountTable::current();
  std::copy_if(table.mounts().begin(), table.mounts().end(), std::back_inserter(found),
               [&](const Mount& mount) {
                 if (mount.type != bookmark.filesystemType) {
                   return false;
                 }
                 const FileDescriptor root = openDirectory(mount.point);
                 return root && volumeOfDirectory(root.get()) == bookmark.identity.volume;
               });
  return found;
}

bool belongsToUser(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid();
}

/// The uppermost folder of the mount that is reached from `path` upwards through the user's own
/// folders, leaving out what is not there any more.
std::optional<std::string> uppermostOwnFolder(std::string path, const Mount& mount) {
  std::optional<std::string> uppermost;
  while (mount.contains(path)) {
    if (belongsToUser(path)) {
      uppermost = path;
    } else if (uppermost || access(path.c_str(), F_OK) == 0) {
      break;
    }
    if (path == mount.point) {
      break;
    }
    path = deletingLastPathComponent(path);
  }
  return uppermost;
}

/// Where on the mount an ordinary user may be allowed to search.
std::vector<std::string> placesToSearch(const Bookmark& bookmark, const Mount& mount) {
  std::vector<std::string> places;
  const auto add = [&](std::optional<std::string> place) {
    if (place && std::find(places.begin(), places.end(), *place) == places.end()) {
      places.push_back(std::move(*place));
    }
  };
  if (auto oldPath = mount.pathOf(bookmark.relativePath)) {
    add(uppermostOwnFolder(std::move(*oldPath), mount));
  }
  if (const char* home = std::getenv("HOME")) {
    add(uppermostOwnFolder(home, mount));
  }
  add(mount.point);
  return places;
}

}  // namespace

std::optional<Bookmark> BookmarkResolver::bookmarkOfPath(const std::string& path) const {
  const FileDescriptor directory = openDirectory(path);
  auto identity = directory ? identityOfDirectory(directory.get()) : std::nullopt;
  struct statx status {};
  if (!identity || statx(directory.get(), "", AT_EMPTY_PATH, STATX_MNT_ID, &status) != 0) {
    return std::nullopt;
  }
  const auto realPath = pathOfDescriptor(directory.get());
  if (!realPath) {
    errno = ENOENT;
    return std::nullopt;
  }
  const MountTable table = MountTable::current();
  const Mount* const known = table.mountWithId(status.stx_mnt_id);
  const Mount mount = known ? *known : unlistedRoot();
  return Bookmark{path, mount.relativePathOf(*realPath), mount.type, std::move(*identity)};
}

std::optional<std::string> BookmarkResolver::pathOfBookmark(const Bookmark& bookmark) {
  return mayBeSilent(bookmark.filesystemType) ? findOnServedVolume(bookmark) : find(bookmark);
}

/// Whoever waits for a silent server cannot be woken, so a child does that.
std::optional<std::string> BookmarkResolver::findOnServedVolume(const Bookmark& bookmark) {
  const auto silent = _silentVolumes.find(bookmark.identity.volume);
  if (silent != _silentVolumes.end() && Clock::now() < silent->second + timeNotAskedAgain) {
    return std::nullopt;
  }
  const FileDescriptor child = startDetachedChild(mostSeconds, [&](int socket) {
    const std::string path = find(bookmark).value_or("");
    send(socket, path.data(), path.size(), MSG_NOSIGNAL);
  });
  if (!child || !waitForInput(child.get(), timeToAnswer)) {
    _silentVolumes.insert_or_assign(bookmark.identity.volume, Clock::now());
    return std::nullopt;
  }
  std::array<char, PATH_MAX> path;
  const ssize_t size = recv(child.get(), path.data(), path.size(), 0);
  return size > 0 ? std::optional<std::string>(std::in_place, path.data(),
                                               static_cast<std::size_t>(size))
                  : std::nullopt;
}

std::optional<std::string> BookmarkResolver::find(const Bookmark& bookmark) {
  if (leadsTo(bookmark.identity, bookmark.path)) {
    return bookmark.path;
  }
  const std::vector<Mount> mounts = mountsOfVolume(bookmark);
  for (const Mount& mount : mounts) {
    auto path = mount.pathOf(bookmark.relativePath);
    if (path && leadsTo(bookmark.identity, *path)) {
      return path;
    }
  }
  for (const Mount& mount : mounts) {
    if (auto path = pathAfterMove(bookmark, mount)) {
      return path;
    }
  }
  return std::nullopt;
}

std::optional<std::string> BookmarkResolver::pathAfterMove(const Bookmark& bookmark,
                                                           const Mount& mount) {
  for (const std::string& place : placesToSearch(bookmark, mount)) {
    auto path = _search.pathOfDirectory(bookmark.identity, place);
    if (path && leadsTo(bookmark.identity, *path)) {
      return path;
    }
  }
  return std::nullopt;
}

}  // namespace quennel
