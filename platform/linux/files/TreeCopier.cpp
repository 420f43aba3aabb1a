#include "platform/linux/files/TreeCopier.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <system_error>

#include "platform/linux/files/FileFailure.h"
#include "platform/linux/files/FileStatus.h"

namespace quennel {

namespace {

using Step = FileFailure::Step;

// Several buffers for a large folder, so that both threads have their share of it.
constexpr std::size_t entriesCapacity = std::size_t{16} * 1024;

// The type of an entry whose filesystem does not tell it with the name.
unsigned char typeOf(int folder, const char* name) {
  struct stat status;
  if (::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
    throw FileFailure(errno, Step::Reading);
  }
  return static_cast<unsigned char>(IFTODT(status.st_mode));
}

// Makes a folder that is closed to everybody else until it has its metadata.
FileDescriptor makeFolder(int parent, const char* name) {
  if (::mkdirat(parent, name, S_IRWXU) != 0) {
    throw FileFailure(errno, Step::Creating);
  }
  FileDescriptor folder(::openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (!folder) {
    throw FileFailure(errno, Step::Creating);
  }
  return folder;
}

bool isOnBtrfs(int item) {
  struct statfs filesystem;
  return ::fstatfs(item, &filesystem) == 0 && filesystem.f_type == BTRFS_SUPER_MAGIC;
}

void copyLink(int source, int copy, const char* name, const PlaceRules& rules) {
  struct stat status;
  std::array<char, PATH_MAX + 1> target;
  const ssize_t length = ::readlinkat(source, name, target.data(), PATH_MAX);
  if (length < 0 || ::fstatat(source, name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
    throw FileFailure(errno, Step::Reading);
  }
  target[static_cast<std::size_t>(length)] = '\0';
  if (::symlinkat(target.data(), copy, name) != 0) {
    throw FileFailure(errno, Step::Creating);
  }
  copyLinkMetadata(status, copy, name, rules);
}

}  // namespace

struct TreeCopier::Folder {
  /// Below the top folder, with a slash at its end; empty for the top folder.
  std::string relativePath;
  FileDescriptor source;
  struct stat status;
  FileDescriptor copy;
  /// Tasks that need the folder open. With the last one gone it is complete but for its metadata.
  std::atomic<int> openTasks = 0;
};

template <typename Operation>
void TreeCopier::located(const Folder& folder, const char* name, const Operation& operation) {
  try {
    operation();
  } catch (FileFailure& failure) {
    const std::string relativePath = "/" + folder.relativePath + name;
    failure.locate(_sourcePath + relativePath, _copyPath + relativePath);
    throw;
  }
}

void TreeCopier::copy(FileDescriptor source, const struct stat& status, int copy) {
  _root = copy;
  if (isOnBtrfs(copy)) {
    // It keeps small files in its one tree of everything: two threads would mostly wait for each
    // other at its locks, and sharing blocks is the faster way at any size.
    _mayHaveHelper = false;
    _smallestClone = 1;
  }
  _rootStatus = statusOf(copy, Step::Creating);
  auto top = std::make_shared<Folder>();
  top->source = std::move(source);
  top->status = status;
  top->copy = FileDescriptor(::fcntl(copy, F_DUPFD_CLOEXEC, 0));
  if (!top->copy) {
    throw FileFailure(errno, Step::Creating, _copyPath);
  }
  readEntries(top);
  work();
  if (_helper.joinable()) {
    _helper.join();
  }
  _tasks.rethrowFailure();
}

TreeCopier::~TreeCopier() {
  if (_helper.joinable()) {
    _helper.join();
  }
}

void TreeCopier::add(Task task) {
  ++task.folder->openTasks;
  if (_tasks.push(std::move(task)) > 1 && _mayHaveHelper) {
    _mayHaveHelper = false;
    startHelper();
  }
}

void TreeCopier::startHelper() {
  try {
    _helper = std::thread([this] { work(); });
  } catch (const std::system_error&) {
    // One thread does it as well.
  }
}

void TreeCopier::work() {
  FileCopier copier(_smallestClone);
  while (const std::optional<Task> task = _tasks.take()) {
    try {
      perform(*task, copier);
      release(*task->folder);
    } catch (...) {
      _tasks.fail(std::current_exception());
    }
    _tasks.finish();
  }
}

void TreeCopier::perform(const Task& task, FileCopier& copier) {
  if (!task.entries) {
    located(*task.folder, task.subfolder.c_str(),
            [&] { startFolder(*task.folder, task.subfolder, copier); });
    return;
  }
  for (const dirent64& entry : *task.entries) {
    if (_tasks.hasFailed()) {
      return;
    }
    located(*task.folder, entry.d_name,
            [&] { copyEntry(task.folder, entry.d_name, entry.d_type, copier); });
  }
}

void TreeCopier::startFolder(const Folder& parent, const std::string& name, FileCopier& copier) {
  auto folder = std::make_shared<Folder>();
  folder->relativePath = parent.relativePath + name + "/";
  folder->source = copier.openSource(parent.source.get(), name.c_str(), O_DIRECTORY | O_NOFOLLOW);
  folder->status = statusOf(folder->source.get(), Step::Reading);
  if (isSameItem(folder->status, _rootStatus)) {
    throw FileFailure(EINVAL, Step::CopyingIntoItself, _copyPath);
  }
  folder->copy = makeFolder(parent.copy.get(), name.c_str());
  readEntries(folder);
}

void TreeCopier::readEntries(const std::shared_ptr<Folder>& folder) {
  // Holds the folder open until all of it is read.
  ++folder->openTasks;
  for (;;) {
    DirectoryEntries entries(entriesCapacity);
    if (!entries.readNext(folder->source.get())) {
      break;
    }
    add({folder, std::move(entries), {}});
  }
  release(*folder);
}

void TreeCopier::release(Folder& folder) {
  if (--folder.openTasks == 0) {
    located(folder, "",
            [&] { copyMetadata(folder.source.get(), folder.status, folder.copy.get(), _rules); });
    folder.source.reset();
    folder.copy.reset();
  }
}

void TreeCopier::copyEntry(const std::shared_ptr<Folder>& folder, const char* name,
                           unsigned char type, FileCopier& copier) {
  if (type == DT_UNKNOWN) {
    type = typeOf(folder->source.get(), name);
  }
  switch (type) {
    case DT_REG:
      copyFile(*folder, name, copier);
      return;
    case DT_DIR:
      add({folder, std::nullopt, name});
      return;
    case DT_LNK:
      copyLink(folder->source.get(), folder->copy.get(), name, _rules);
      return;
    default:
      throw FileFailure(EOPNOTSUPP, Step::CopyingSpecialFile);
  }
}

void TreeCopier::copyFile(const Folder& folder, const char* name, FileCopier& copier) {
  const FileDescriptor source = copier.openSource(folder.source.get(), name, O_NOFOLLOW);
  const struct stat status = statusOf(source.get(), Step::Reading);
  if (!S_ISREG(status.st_mode)) {
    throw FileFailure(EOPNOTSUPP, Step::CopyingSpecialFile);
  }
  if (status.st_nlink == 1) {
    fillFile(folder, name, source.get(), status, copier);
  } else {
    copyLinkedFile(folder, name, source.get(), status, copier);
  }
}

void TreeCopier::fillFile(const Folder& folder, const char* name, int source,
                          const struct stat& status, FileCopier& copier) {
  const FileDescriptor copy(::openat(folder.copy.get(), name,
                                     O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                                     status.st_mode & accessPermissions));
  if (!copy) {
    throw FileFailure(errno, Step::Creating);
  }
  copier.copyContents(source, status, copy.get());
  copyMetadata(source, status, copy.get(), _rules);
}

// One at a time, so that the other thread does not look for a first copy that is still being made.
void TreeCopier::copyLinkedFile(const Folder& folder, const char* name, int source,
                                const struct stat& status, FileCopier& copier) {
  const std::lock_guard lock(_linkedFilesMutex);
  std::string& firstCopy = _linkedFiles[{status.st_dev, status.st_ino}];
  if (!firstCopy.empty() && ::linkat(_root, firstCopy.c_str(), folder.copy.get(), name, 0) == 0) {
    return;
  }
  // The first name, or one more than the filesystem has room for, or it has no such links at all.
  fillFile(folder, name, source, status, copier);
  firstCopy = folder.relativePath + name;
}

}  // namespace quennel
