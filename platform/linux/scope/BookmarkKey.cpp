#include "platform/linux/scope/BookmarkKey.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <system_error>

#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/base/FileLock.h"
#include "platform/linux/base/FileReplacement.h"
#include "platform/linux/base/HomeFolder.h"
#include "platform/values/Path.h"

namespace quennel {

namespace {

using Key = MessageAuthentication::Key;
using Kind = Error::Kind;

/// Another process holds the lock for as long as it takes to write a few bytes.
constexpr std::chrono::seconds patience{2};

/// Why what the file holds is no secret of this user's, if so.
std::optional<Error> whyUntrusted(const struct stat& status, const std::string& path) {
  if (!S_ISREG(status.st_mode) || status.st_size != static_cast<off_t>(sizeof(Key))) {
    return Error{EBADMSG, Kind::NoKeyOfGrants, path};
  }
  if (status.st_uid != geteuid()) {
    return Error{EPERM, Kind::KeyOfAnotherUser, path};
  }
  if ((status.st_mode & 077U) != 0) {
    return Error{EPERM, Kind::KeyOpenToOthers, path};
  }
  return std::nullopt;
}

/// What is in the way of reading the key, if anything.
std::optional<Error> readKey(const std::string& path, Key& key) {
  const FileDescriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (!file || fstat(file.get(), &status) != 0) {
    return Error{errno, Kind::Reading, path};
  }
  if (auto obstacle = whyUntrusted(status, path)) {
    return obstacle;
  }
  const ssize_t size = ::read(file.get(), key.data(), key.size());
  if (size != static_cast<ssize_t>(key.size())) {
    return Error{size < 0 ? errno : EIO, Kind::Reading, path};
  }
  return std::nullopt;
}

void writeNewKey(const std::string& path) {
  Key key;
  if (getrandom(key.data(), key.size(), 0) != static_cast<ssize_t>(key.size())) {
    throw std::system_error(errno, std::generic_category(), "getrandom");
  }
  replaceFile(path, {key.data(), key.size()});
}

}  // namespace

std::string BookmarkKey::pathForUser() {
  // A relative path is to be ignored.
  const char* set = std::getenv("XDG_DATA_HOME");
  const std::string folder =
      set && *set == '/' ? set : appendingPathComponent(homeFolder().value_or("/"), ".local/share");
  return appendingPathComponent(folder, "net.brellow.QuennelHelper/bookmark-key");
}

std::optional<Key> BookmarkKey::read(Error* error) const {
  Key key;
  if (auto obstacle = readKey(_path, key)) {
    if (error) {
      *error = std::move(*obstacle);
    }
    return std::nullopt;
  }
  return key;
}

std::optional<Key> BookmarkKey::readOrMake(Error* error) const {
  Error obstacle;
  auto key = read(&obstacle);
  if (!key && obstacle.code == ENOENT) {
    key = make(&obstacle);
  }
  if (!key && error) {
    *error = std::move(obstacle);
  }
  return key;
}

std::optional<Key> BookmarkKey::make(Error* error) const try {
  makeFolder(deletingLastPathComponent(_path));
  const FileLock lock(_path + ".lock", patience);
  // Another process may have made it while this one waited for the lock.
  const auto key = read(error);
  if (key || error->code != ENOENT) {
    return key;
  }
  writeNewKey(_path);
  return read(error);
} catch (const std::system_error& failure) {
  *error = {failure.code().value(), Kind::Remembering, _path};
  return std::nullopt;
}

}  // namespace quennel
