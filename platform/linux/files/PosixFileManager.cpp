#include "platform/linux/files/PosixFileManager.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <new>
#include <utility>
#include <vector>

#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/files/DirectoryEntries.h"
#include "platform/linux/files/FileCopier.h"
#include "platform/linux/files/FileFailure.h"
#include "platform/linux/files/FileStatus.h"
#include "platform/linux/files/ItemCopier.h"
#include "platform/linux/files/Staging.h"
#include "platform/linux/files/TreeRemover.h"

namespace quennel {

namespace {

using Date = FileAttributes::Date;
using Step = FileFailure::Step;

constexpr mode_t permissionBits = 07777;
constexpr long nanosecondsInSecond = 1'000'000'000;

void report(Error* error, Error found) {
  if (error) {
    *error = std::move(found);
  }
}

// Runs the operation on the item at `path` and turns what it throws into an answer.
template <typename Operation>
bool succeeds(Error* error, const std::string& path, const Operation& operation) {
  try {
    operation();
    return true;
  } catch (FileFailure& failure) {
    failure.locate(path, path);
    report(error, failure.error());
  } catch (const std::bad_alloc&) {
    report(error, {ENOMEM, Step::Creating, path});
  }
  return false;
}

timespec timespecOf(Date date) {
  const auto count =
      std::chrono::duration_cast<std::chrono::nanoseconds>(date.time_since_epoch()).count();
  timespec time{count / nanosecondsInSecond, count % nanosecondsInSecond};
  if (time.tv_nsec < 0) {
    time.tv_nsec += nanosecondsInSecond;
    --time.tv_sec;
  }
  return time;
}

template <typename Timestamp>
Date dateOf(const Timestamp& time) {
  return Date(std::chrono::duration_cast<Date::duration>(std::chrono::seconds(time.tv_sec) +
                                                         std::chrono::nanoseconds(time.tv_nsec)));
}

FileDescriptor openFolder(const std::string& path, int flags) {
  return FileDescriptor(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | flags));
}

bool isFolder(const std::string& path) {
  struct stat status;
  return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

using Items = std::vector<std::pair<std::string, unsigned char>>;

// The names of an open folder, with their types; as many as can be read.
Items itemsOf(const FileDescriptor& folder) {
  Items items;
  try {
    DirectoryEntries entries;
    while (folder && entries.readNext(folder.get())) {
      for (const dirent64& entry : entries) {
        items.emplace_back(entry.d_name, entry.d_type);
      }
    }
  } catch (const FileFailure&) {
    // A walk has no way to report it.
  }
  return items;
}

// Visits what is below `folder`, itself empty or a path below `root`. Works on paths, so that depth
// does not cost descriptors.
bool enumerateFolder(const std::string& root, const std::string& folder, int flags,
                     const std::function<bool(const std::string&)>& visit) {
  const std::string start = folder.empty() ? folder : folder + "/";
  const Items items = itemsOf(openFolder(root + "/" + folder, flags));
  for (const auto& [name, type] : items) {
    // Opening refuses whatever turns out to be no folder.
    const bool mayBeFolder = type == DT_DIR || type == DT_UNKNOWN;
    const std::string item = start + name;
    if (!visit(item) || (mayBeFolder && !enumerateFolder(root, item, O_NOFOLLOW, visit))) {
      return false;
    }
  }
  return true;
}

// 0 or an errno value.
int makeFolder(const std::string& path) {
  constexpr mode_t allPermissions = 0777;
  return ::mkdir(path.c_str(), allPermissions) == 0 ? 0 : errno;
}

int makeFolderUnlessThere(const std::string& path) {
  const int code = makeFolder(path);
  return code == EEXIST && isFolder(path) ? 0 : code;
}

int makeFolderAndParents(const std::string& path) {
  const int code = makeFolderUnlessThere(path);
  if (code != ENOENT || path.empty()) {
    return code;
  }
  const int codeOfParent = makeFolderAndParents(FolderAndName(path).folder);
  return codeOfParent != 0 ? codeOfParent : makeFolderUnlessThere(path);
}

std::string readAll(int file, off_t expectedSize) {
  // One byte more than expected, so that the first read meets the end.
  std::string contents(static_cast<std::size_t>(expectedSize) + 1, '\0');
  std::size_t size = 0;
  while (const std::size_t count = readSome(file, std::span(contents).subspan(size))) {
    size += count;
    if (size == contents.size()) {
      contents.resize(2 * size);
    }
  }
  contents.resize(size);
  return contents;
}

}  // namespace

std::optional<FileManager::ItemKind> PosixFileManager::itemKindAtPath(
    const std::string& path) const {
  struct stat status;
  if (::stat(path.c_str(), &status) != 0) {
    return std::nullopt;
  }
  return S_ISDIR(status.st_mode) ? ItemKind::Directory : ItemKind::File;
}

bool PosixFileManager::visitDirectory(
    const std::string& path, const std::function<void(const DirectoryEntry&)>& visit) const {
  const FileDescriptor folder = openFolder(path, 0);
  if (!folder) {
    return false;
  }
  return succeeds(nullptr, path, [&] {
    DirectoryEntries entries;
    while (entries.readNext(folder.get())) {
      for (const dirent64& entry : entries) {
        visit({entry.d_name, entry.d_type == DT_LNK || entry.d_type == DT_UNKNOWN});
      }
    }
  });
}

void PosixFileManager::enumerateItemsAtPath(
    const std::string& path, const std::function<bool(const std::string&)>& visit) const {
  enumerateFolder(path, "", 0, visit);
}

bool PosixFileManager::copyItemAtPath(const std::string& path, const std::string& toPath,
                                      Error* error) {
  return succeeds(error, toPath, [&] { copyItem(path, toPath); });
}

FileManager::Replacement PosixFileManager::replaceItemAtPath(const std::string& path,
                                                             const std::string& withCopyOf,
                                                             Error* error) {
  Error failure;
  if (succeeds(&failure, path, [&] { replaceItem(withCopyOf, path); })) {
    return Replacement::Done;
  }
  report(error, failure);
  return failure.kind == Step::Removing ? Replacement::NotSetAside : Replacement::NotCopied;
}

bool PosixFileManager::removeItemAtPath(const std::string& path, Error* error) {
  const int code = removeTree(AT_FDCWD, path, LockedFolders::Fail);
  if (code != 0) {
    report(error, {code, Step::Removing, path});
  }
  return code == 0;
}

bool PosixFileManager::createDirectoryAtPath(const std::string& path,
                                             bool withIntermediateDirectories, Error* error) {
  const int code = withIntermediateDirectories ? makeFolderAndParents(path) : makeFolder(path);
  if (code != 0) {
    report(error, {code, Step::Creating, path});
  }
  return code == 0;
}

std::optional<std::string> PosixFileManager::contentsAtPath(const std::string& path) const {
  std::optional<std::string> contents;
  succeeds(nullptr, path, [&] {
    const FileDescriptor file = FileCopier().openSource(AT_FDCWD, path.c_str(), 0);
    const struct stat status = statusOf(file.get(), Step::Reading);
    if (S_ISREG(status.st_mode)) {
      contents = readAll(file.get(), status.st_size);
    }
  });
  return contents;
}

bool PosixFileManager::writeContents(std::string_view contents, const std::string& toPath,
                                     Error* error) {
  constexpr mode_t readAndWrite = 0666;
  return succeeds(error, toPath, [&] {
    StagedFile file(toPath, readAndWrite);
    writeAll(file.descriptor(), contents);
    file.publishReplacing();
  });
}

std::optional<FileAttributes> PosixFileManager::attributesOfItemAtPath(const std::string& path,
                                                                       Error* error) const {
  struct statx status;
  if (::statx(AT_FDCWD, path.c_str(), 0, STATX_BASIC_STATS | STATX_BTIME, &status) != 0) {
    const int code = errno;
    report(error, {code, Step::Reading, path});
    return std::nullopt;
  }
  FileAttributes attributes;
  attributes.posixPermissions = status.stx_mode & permissionBits;
  attributes.modificationDate = dateOf(status.stx_mtime);
  if (status.stx_mask & STATX_BTIME) {
    attributes.creationDate = dateOf(status.stx_btime);
  }
  return attributes;
}

bool PosixFileManager::setAttributes(const FileAttributes& attributes,
                                     const std::string& ofItemAtPath, Error* error) {
  int code = 0;
  if (attributes.posixPermissions &&
      ::chmod(ofItemAtPath.c_str(), *attributes.posixPermissions & permissionBits) != 0) {
    code = errno;
  }
  if (code == 0 && attributes.modificationDate) {
    const std::array<timespec, 2> dates{timespec{0, UTIME_OMIT},
                                        timespecOf(*attributes.modificationDate)};
    code = ::utimensat(AT_FDCWD, ofItemAtPath.c_str(), dates.data(), 0) == 0 ? 0 : errno;
  }
  if (code != 0) {
    report(error, {code, Step::ChangingAttributes, ofItemAtPath});
  }
  return code == 0;
}

bool PosixFileManager::isWritableFileAtPath(const std::string& path) const {
  // Making an entry in a folder takes the permission to search it as well.
  const bool mustBeFolder = path.ends_with('/');
  const int access = mustBeFolder || isFolder(path) ? W_OK | X_OK : W_OK;
  return ::faccessat(AT_FDCWD, path.c_str(), access, AT_EACCESS) == 0;
}

std::string PosixFileManager::userName() const {
  const uid_t user = ::getuid();
  passwd record;
  passwd* found = nullptr;
  std::string buffer(1024, '\0');
  while (::getpwuid_r(user, &record, buffer.data(), buffer.size(), &found) == ERANGE) {
    buffer.resize(2 * buffer.size());
  }
  return found ? found->pw_name : std::to_string(user);
}

}  // namespace quennel
