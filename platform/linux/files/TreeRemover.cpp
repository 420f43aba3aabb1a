#include "platform/linux/files/TreeRemover.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/files/DirectoryEntries.h"
#include "platform/linux/files/FileFailure.h"

namespace quennel {

namespace {

[[noreturn]] void fail() { throw FileFailure(errno, FileFailure::Step::Removing); }

// Goes down into folders and back up through "..", so that the depth of a tree does not cost
// descriptors.
class TreeRemover {
 public:
  TreeRemover(int parent, LockedFolders locked) : _parent(parent), _locked(locked) {}

  void remove(const std::string& name) {
    enter(name);
    while (!_levels.empty()) {
      auto& folders = _levels.back().folders;
      if (folders.empty()) {
        leave();
      } else {
        const std::string next = std::move(folders.back());
        folders.pop_back();
        enter(next);
      }
    }
  }

 private:
  struct Level {
    std::string name;
    struct stat status;
    /// The folders in it that are still to be removed.
    std::vector<std::string> folders;
  };

  int current() const { return _levels.empty() ? _parent : _folder.get(); }
  void enter(const std::string& name);
  void leave();
  void removeFiles(Level& level);
  FileDescriptor open(const std::string& name) const;

  int _parent;
  LockedFolders _locked;
  std::vector<Level> _levels;
  FileDescriptor _folder;
};

FileDescriptor TreeRemover::open(const std::string& name) const {
  constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
  FileDescriptor folder(::openat(current(), name.c_str(), flags));
  if (!folder && errno == EACCES && _locked == LockedFolders::Unlock &&
      ::fchmodat(current(), name.c_str(), S_IRWXU, 0) == 0) {
    folder = FileDescriptor(::openat(current(), name.c_str(), flags));
  }
  if (!folder) {
    fail();
  }
  return folder;
}

void TreeRemover::enter(const std::string& name) {
  FileDescriptor folder = open(name);
  Level level{name, {}, {}};
  if (::fstat(folder.get(), &level.status) != 0) {
    fail();
  }
  if (_locked == LockedFolders::Unlock && (level.status.st_mode & S_IRWXU) != S_IRWXU) {
    static_cast<void>(::fchmod(folder.get(), S_IRWXU));
  }
  _folder = std::move(folder);
  removeFiles(level);
  _levels.push_back(std::move(level));
}

void TreeRemover::removeFiles(Level& level) {
  std::vector<std::string> names;
  DirectoryEntries entries;
  while (entries.readNext(_folder.get())) {
    for (const dirent64& entry : entries) {
      (entry.d_type == DT_DIR ? level.folders : names).emplace_back(entry.d_name);
    }
  }
  for (std::string& name : names) {
    if (::unlinkat(_folder.get(), name.c_str(), 0) == 0) {
      continue;
    }
    if (errno != EISDIR) {
      fail();
    }
    level.folders.push_back(std::move(name));
  }
}

void TreeRemover::leave() {
  const std::string name = std::move(_levels.back().name);
  _levels.pop_back();
  if (!_levels.empty()) {
    _folder = FileDescriptor(::openat(_folder.get(), "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    struct stat status;
    if (!_folder || ::fstat(_folder.get(), &status) != 0) {
      fail();
    }
    // Somebody has moved the folder meanwhile: what is above it now is not ours to touch.
    if (status.st_dev != _levels.back().status.st_dev ||
        status.st_ino != _levels.back().status.st_ino) {
      errno = ESTALE;
      fail();
    }
  }
  if (::unlinkat(current(), name.c_str(), AT_REMOVEDIR) != 0) {
    fail();
  }
}

}  // namespace

int removeTree(int parent, const std::string& name, LockedFolders locked) {
  if (::unlinkat(parent, name.c_str(), 0) == 0) {
    return 0;
  }
  if (errno != EISDIR) {
    return errno;
  }
  try {
    TreeRemover(parent, locked).remove(name);
    return 0;
  } catch (const FileFailure& failure) {
    return failure.error().code;
  }
}

}  // namespace quennel
