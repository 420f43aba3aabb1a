#include "platform/linux/files/Staging.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/linux/files/FileFailure.h"
#include "platform/linux/files/NameExchange.h"
#include "platform/linux/files/TemporaryName.h"
#include "platform/linux/files/TreeRemover.h"

namespace quennel {

namespace {

using Step = FileFailure::Step;

[[noreturn]] void failCreating(const std::string& path) {
  throw FileFailure(errno, Step::Creating, path);
}

}  // namespace

FolderAndName::FolderAndName(const std::string& path) {
  const std::size_t end = path.find_last_not_of('/') + 1;
  const std::size_t start = end == 0 ? 0 : path.rfind('/', end - 1) + 1;
  folder = start == 0 ? "." : path.substr(0, start);
  name = path.substr(start, end - start);
}

StagedFile::StagedFile(const std::string& path, mode_t permissions) : _path(path) {
  const std::string folder = FolderAndName(path).folder;
  _file = FileDescriptor(::open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, permissions));
  if (_file) {
    return;
  }
  if (!isUnsupported(errno)) {
    failCreating(path);
  }
  openUnderTemporaryName(permissions);
}

StagedFile::~StagedFile() {
  if (!_temporaryPath.empty()) {
    ::unlink(_temporaryPath.c_str());
  }
}

void StagedFile::openUnderTemporaryName(mode_t permissions) {
  const std::string path = FolderAndName(_path).folder + "/" + temporaryName();
  _file = FileDescriptor(::open(path.c_str(), O_CREAT | O_EXCL | O_NOFOLLOW | O_WRONLY | O_CLOEXEC,
                                permissions & S_IRWXU));
  if (!_file) {
    failCreating(_path);
  }
  _temporaryPath = path;
}

void StagedFile::publish() {
  if (_temporaryPath.empty()) {
    linkUnnamed(_path);
    return;
  }
  if (!moveWithoutReplacing() && !linkTemporary()) {
    moveOverPlaceholder();
  }
  _temporaryPath.clear();
}

void StagedFile::publishReplacing() {
  linkUnderTemporaryName();
  if (::rename(_temporaryPath.c_str(), _path.c_str()) != 0) {
    failCreating(_path);
  }
  _temporaryPath.clear();
}

void StagedFile::takePlace() {
  linkUnderTemporaryName();
  const FolderAndName place(_path);
  const FileDescriptor folder(::open(place.folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!folder) {
    failCreating(_path);
  }
  putInPlaceOf(folder.get(), FolderAndName(_temporaryPath).name, place.name);
  _temporaryPath.clear();
}

void StagedFile::linkUnderTemporaryName() {
  if (!_temporaryPath.empty()) {
    return;
  }
  const std::string path = FolderAndName(_path).folder + "/" + temporaryName();
  linkUnnamed(path);
  _temporaryPath = path;
}

void StagedFile::linkUnnamed(const std::string& path) {
  const std::string self = "/proc/self/fd/" + std::to_string(_file.get());
  if (::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) != 0) {
    failCreating(_path);
  }
}

bool StagedFile::moveWithoutReplacing() {
  if (::renameat2(AT_FDCWD, _temporaryPath.c_str(), AT_FDCWD, _path.c_str(), RENAME_NOREPLACE) ==
      0) {
    return true;
  }
  if (!isUnsupported(errno)) {
    failCreating(_path);
  }
  return false;
}

bool StagedFile::linkTemporary() {
  if (::link(_temporaryPath.c_str(), _path.c_str()) != 0) {
    if (!isUnsupported(errno) && errno != EPERM) {
      failCreating(_path);
    }
    return false;
  }
  // The file is there, complete; a second name that stays is no reason to call it a failure.
  static_cast<void>(::unlink(_temporaryPath.c_str()));
  return true;
}

// The last resort: the name is taken by an empty file, which the complete one replaces. Nothing of
// anybody else's can be lost, but for a moment the empty file shows.
void StagedFile::moveOverPlaceholder() {
  const FileDescriptor placeholder(
      ::open(_path.c_str(), O_CREAT | O_EXCL | O_NOFOLLOW | O_WRONLY | O_CLOEXEC, 0));
  if (!placeholder) {
    failCreating(_path);
  }
  if (::rename(_temporaryPath.c_str(), _path.c_str()) != 0) {
    const int code = errno;
    ::unlink(_path.c_str());
    throw FileFailure(code, Step::Creating, _path);
  }
}

StagedFolder::StagedFolder(const std::string& path)
    : _path(path),
      _place(path),
      _parent(::open(_place.folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)) {
  if (!_parent) {
    failCreating(path);
  }
  makeTemporary();
}

StagedFolder::~StagedFolder() {
  if (!_temporaryName.empty()) {
    _folder.reset();
    removeTree(_parent.get(), _temporaryName, LockedFolders::Unlock);
  }
}

void StagedFolder::refuseTakenName() const {
  struct stat present;
  if (::fstatat(_parent.get(), _place.name.c_str(), &present, AT_SYMLINK_NOFOLLOW) == 0) {
    throw FileFailure(EEXIST, Step::Creating, _path);
  }
  if (errno != ENOENT) {
    failCreating(_path);
  }
}

void StagedFolder::makeTemporary() {
  const std::string name = temporaryName();
  if (::mkdirat(_parent.get(), name.c_str(), S_IRWXU) != 0) {
    failCreating(_path);
  }
  _folder = FileDescriptor(
      ::openat(_parent.get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!_folder) {
    const int code = errno;
    ::unlinkat(_parent.get(), name.c_str(), AT_REMOVEDIR);
    throw FileFailure(code, Step::Creating, _path);
  }
  _temporaryName = name;
}

void StagedFolder::publish() {
  if (::renameat2(_parent.get(), _temporaryName.c_str(), _parent.get(), _place.name.c_str(),
                  RENAME_NOREPLACE) != 0) {
    if (!isUnsupported(errno)) {
      failCreating(_path);
    }
    moveOverPlaceholder();
  }
  _temporaryName.clear();
}

void StagedFolder::takePlace() {
  putInPlaceOf(_parent.get(), _temporaryName, _place.name);
  _temporaryName.clear();
}

// For a filesystem that cannot refuse to replace: the name is taken by an empty folder, which is
// all that the move can replace. For a moment the empty folder shows.
void StagedFolder::moveOverPlaceholder() {
  const char* name = _place.name.c_str();
  if (::mkdirat(_parent.get(), name, S_IRWXU) != 0) {
    failCreating(_path);
  }
  if (::renameat(_parent.get(), _temporaryName.c_str(), _parent.get(), name) != 0) {
    const int code = errno;
    ::unlinkat(_parent.get(), name, AT_REMOVEDIR);
    throw FileFailure(code, Step::Creating, _path);
  }
}

}  // namespace quennel
