#include "platform/linux/files/ItemCopier.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/FileManager.h"
#include "platform/linux/FileDescriptor.h"
#include "platform/linux/files/FileCopier.h"
#include "platform/linux/files/FileFailure.h"
#include "platform/linux/files/FileStatus.h"
#include "platform/linux/files/Metadata.h"
#include "platform/linux/files/Staging.h"
#include "platform/linux/files/TreeCopier.h"

namespace quennel {

namespace {

using Step = FileFailure::Step;

void copyFile(FileCopier& copier, const FileDescriptor& source, const struct stat& status,
              const std::string& toPath) {
  StagedFile staged(toPath, status.st_mode & accessPermissions);
  dropInheritedAccessRules(staged.descriptor(), FileManager::ItemKind::File);
  copier.copyContents(source.get(), status, staged.descriptor());
  copyMetadata(source.get(), status, staged.descriptor());
  staged.publish();
}

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

void copyFolder(FileDescriptor source, const struct stat& status, const std::string& path,
                const std::string& toPath) {
  refusePlaceInside(status, FolderAndName(toPath).folder);
  StagedFolder staged(toPath);
  dropInheritedAccessRules(staged.descriptor(), FileManager::ItemKind::Directory);
  TreeCopier(path, toPath).copy(std::move(source), status, staged.descriptor());
  staged.publish();
}

}  // namespace

void copyItem(const std::string& path, const std::string& toPath) try {
  FileCopier copier;
  FileDescriptor source = copier.openSource(AT_FDCWD, path.c_str(), 0);
  const struct stat status = statusOf(source.get(), Step::Reading);
  if (S_ISREG(status.st_mode)) {
    copyFile(copier, source, status, toPath);
  } else if (S_ISDIR(status.st_mode)) {
    copyFolder(std::move(source), status, path, toPath);
  } else {
    throw FileFailure(EOPNOTSUPP, Step::CopyingSpecialFile);
  }
} catch (FileFailure& failure) {
  failure.locate(path, toPath);
  throw;
}

}  // namespace quennel
