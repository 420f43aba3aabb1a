#include "platform/linux/files/ItemCopier.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/files/FileCopier.h"
#include "platform/linux/files/FileFailure.h"
#include "platform/linux/files/FileStatus.h"
#include "platform/linux/files/Metadata.h"
#include "platform/linux/files/PathWalk.h"
#include "platform/linux/files/Staging.h"
#include "platform/linux/files/TreeCopier.h"

namespace quennel {

namespace {

using Step = FileFailure::Step;

/// What is to become of an item that has the name of the copy.
enum class Existing { Stays, IsReplaced };

FileDescriptor openPlace(int start, const char* path) {
  return FileDescriptor(::openat(start, path, O_PATH | O_DIRECTORY | O_CLOEXEC));
}

// Goes up from the folder at `place` to the root and fails when it meets `folder`.
void refusePlaceInside(const struct stat& folder, const std::string& place) {
  struct stat last = {};
  for (FileDescriptor current = openPlace(AT_FDCWD, place.c_str()); current;
       current = openPlace(current.get(), "..")) {
    const struct stat status = statusOf(current.get(), Step::Creating);
    if (isSameItem(status, folder)) {
      throw FileFailure(EINVAL, Step::CopyingIntoItself);
    }
    if (isSameItem(status, last)) {
      return;
    }
    last = status;
  }
}

void copyFile(FileCopier& copier, const FileDescriptor& source, const struct stat& status,
              const std::string& toPath, Existing existing) {
  StagedFile staged(toPath, status.st_mode & accessPermissions);
  copier.copyContents(source.get(), status, staged.descriptor());
  copyMetadata(source.get(), status, staged.descriptor(),
               rulesOfPlace(FolderAndName(toPath).folder));
  if (existing == Existing::IsReplaced) {
    staged.takePlace();
  } else {
    staged.publish();
  }
}

void copyFolder(FileDescriptor source, const struct stat& status, const std::string& path,
                const std::string& toPath, Existing existing) {
  refusePlaceInside(status, FolderAndName(toPath).folder);
  StagedFolder staged(toPath);
  if (existing == Existing::Stays) {
    staged.refuseTakenName();
  }
  TreeCopier(path, toPath, rulesOfPlace(FolderAndName(toPath).folder))
      .copy(std::move(source), status, staged.descriptor());
  if (existing == Existing::IsReplaced) {
    staged.takePlace();
  } else {
    staged.publish();
  }
}

void copy(const std::string& path, const std::string& toPath, Existing existing) try {
  FileCopier copier;
  FileDescriptor source = copier.openSource(AT_FDCWD, path.c_str(), 0);
  const struct stat status = statusOf(source.get(), Step::Reading);
  if (S_ISREG(status.st_mode)) {
    copyFile(copier, source, status, toPath, existing);
  } else if (S_ISDIR(status.st_mode)) {
    copyFolder(std::move(source), status, path, toPath, existing);
  } else {
    throw FileFailure(EOPNOTSUPP, Step::CopyingSpecialFile);
  }
} catch (FileFailure& failure) {
  failure.locate(path, toPath);
  throw;
}

// The answer is the same as that of the removal would be, and comes before a long copy.
void refuseLockedPlace(const std::string& folder) {
  if (::faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) != 0) {
    throw FileFailure(errno, Step::Removing);
  }
}

}  // namespace

void copyItem(const std::string& path, const std::string& toPath) {
  copy(path, toPath, Existing::Stays);
}

void replaceItem(const std::string& path, const std::string& toPath) {
  const FolderAndName place(toPath);
  refuseLockedPlace(place.folder);
  struct stat present;
  const bool isTaken = ::lstat((place.folder + "/" + place.name).c_str(), &present) == 0;
  // What was to be copied would be gone with what it replaces.
  if (isTaken && leadsThrough(path, present)) {
    throw FileFailure(EEXIST, Step::Creating, toPath);
  }
  copy(path, toPath, Existing::IsReplaced);
}

}  // namespace quennel
