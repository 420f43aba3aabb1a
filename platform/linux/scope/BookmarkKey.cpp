#include "platform/linux/scope/BookmarkKey.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/base/HomeFolder.h"
#include "platform/values/Path.h"

namespace quennel {

namespace {

using Key = MessageAuthentication::Key;

bool belongsToUserAlone(const struct stat& status) {
  return S_ISREG(status.st_mode) && status.st_uid == geteuid() && (status.st_mode & 077U) == 0;
}

bool makeFolders(const std::filesystem::path& folder) {
  std::error_code failure;
  if (folder.empty() || std::filesystem::is_directory(folder, failure)) {
    return true;
  }
  return makeFolders(folder.parent_path()) &&
         (mkdir(folder.c_str(), S_IRWXU) == 0 || errno == EEXIST);
}

/// Writes a new key beside `path` and moves it there, on disk before it can be used.
bool writeNewKey(const std::string& path) {
  Key key;
  if (getrandom(key.data(), key.size(), 0) != static_cast<ssize_t>(key.size())) {
    return false;
  }
  const std::string temporary = path + ".new";
  unlink(temporary.c_str());  // left behind by one that was interrupted
  const FileDescriptor file(
      open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
  return file && write(file.get(), key.data(), key.size()) == static_cast<ssize_t>(key.size()) &&
         fsync(file.get()) == 0 && std::rename(temporary.c_str(), path.c_str()) == 0;
}

}  // namespace

std::string BookmarkKey::pathForUser() {
  // A relative path is to be ignored.
  const char* set = std::getenv("XDG_DATA_HOME");
  const std::string folder =
      set && *set == '/' ? set : appendingPathComponent(homeFolder().value_or("/"), ".local/share");
  return appendingPathComponent(folder, "net.brellow.QuennelHelper/bookmark-key");
}

std::optional<Key> BookmarkKey::read() const {
  const FileDescriptor file(open(_path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (!file || fstat(file.get(), &status) != 0 || !belongsToUserAlone(status) ||
      status.st_size != static_cast<off_t>(sizeof(Key))) {
    return std::nullopt;
  }
  Key key;
  const bool complete =
      ::read(file.get(), key.data(), key.size()) == static_cast<ssize_t>(key.size());
  return complete ? std::optional(key) : std::nullopt;
}

std::optional<Key> BookmarkKey::readOrMake(Error* error) const {
  auto key = read();
  if (!key && make()) {
    key = read();
  }
  if (!key && error) {
    *error = {errno, Error::Kind::Remembering, _path};
  }
  return key;
}

bool BookmarkKey::make() const {
  if (!makeFolders(std::filesystem::path(_path).parent_path())) {
    return false;
  }
  const FileDescriptor lock(open((_path + ".lock").c_str(),
                                 O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (!lock || flock(lock.get(), LOCK_EX) != 0) {
    return false;
  }
  // Another process may have made it while this one waited for the lock.
  return read() || writeNewKey(_path);
}

}  // namespace quennel
