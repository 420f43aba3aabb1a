#include "platform/linux/files/NameExchange.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/linux/files/FileFailure.h"
#include "platform/linux/files/TemporaryName.h"
#include "platform/linux/files/TreeRemover.h"

namespace quennel {

namespace {

// 0 or an errno value.
int rename(int folder, const std::string& name, const std::string& newName) {
  return ::renameat(folder, name.c_str(), folder, newName.c_str()) == 0 ? 0 : errno;
}

// For a filesystem that cannot exchange names. What has the name `other` is without it for a
// moment, but not hidden: should the process be killed right then, its user can find it.
int exchangeInSteps(int folder, const std::string& one, const std::string& other) {
  const std::string aside = other + temporaryName();
  if (const int code = rename(folder, other, aside)) {
    return code;
  }
  if (const int code = rename(folder, one, other)) {
    rename(folder, aside, other);
    return code;
  }
  const int code = rename(folder, aside, one);
  if (code != 0) {
    rename(folder, other, one);
    rename(folder, aside, other);
  }
  return code;
}

int exchangeNames(int folder, const std::string& one, const std::string& other) {
  if (::renameat2(folder, one.c_str(), folder, other.c_str(), RENAME_EXCHANGE) == 0) {
    return 0;
  }
  return isUnsupported(errno) ? exchangeInSteps(folder, one, other) : errno;
}

// The mode of the item; 0 when there is none.
mode_t modeOf(int folder, const std::string& name) {
  struct stat status;
  return ::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 ? status.st_mode : 0;
}

// Whether a plain rename of `one` to `other` leaves nothing of that.
bool mayRename(int folder, const std::string& one, const std::string& other) {
  const mode_t mode = modeOf(folder, other);
  return mode == 0 || (!S_ISDIR(mode) && !S_ISDIR(modeOf(folder, one)));
}

}  // namespace

void putInPlaceOf(int folder, const std::string& staged, const std::string& name) {
  const bool isOneStep = mayRename(folder, staged, name);
  int code = isOneStep ? rename(folder, staged, name) : exchangeNames(folder, staged, name);
  if (code == 0 && !isOneStep) {
    code = removeTree(folder, staged, LockedFolders::Fail);
    // What cannot be removed goes back. If even that fails, the new item is what is there to see.
    if (code != 0 && exchangeNames(folder, staged, name) != 0) {
      code = 0;
    }
  }
  if (code != 0) {
    throw FileFailure(code, FileFailure::Step::Removing);
  }
}

}  // namespace quennel
