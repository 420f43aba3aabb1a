#include "platform/linux/base/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <thread>

#include "platform/linux/base/FileError.h"

namespace quennel {
namespace {

using Clock = std::chrono::steady_clock;

FileDescriptor opened(const std::string& path) {
  constexpr int flags = O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
  FileDescriptor descriptor(open(path.c_str(), flags, 0600));
  if (!descriptor) {
    throw FileError(errno, path);
  }
  return descriptor;
}

void waitForLock(int descriptor, const std::string& path, Clock::time_point deadline) {
  // There is no waiting with a deadline. Looking this often, a waiter finds its gap also between
  // processes that write one change after another.
  constexpr std::chrono::milliseconds interval(1);
  while (flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) {
      throw FileError(errno, path);
    }
    if (Clock::now() >= deadline) {
      throw FileError(ETIMEDOUT, path);
    }
    std::this_thread::sleep_for(interval);
  }
}

bool isFileAt(const std::string& path, int descriptor) {
  struct stat held {};
  struct stat there {};
  return fstat(descriptor, &held) == 0 && stat(path.c_str(), &there) == 0 &&
         held.st_dev == there.st_dev && held.st_ino == there.st_ino;
}

}  // namespace

FileLock::FileLock(const std::string& path, std::chrono::milliseconds patience) {
  const Clock::time_point deadline = Clock::now() + patience;
  do {
    _descriptor = opened(path);
    waitForLock(_descriptor.get(), path, deadline);
    // Somebody may have removed the file meanwhile; then the next one locks another.
  } while (!isFileAt(path, _descriptor.get()));
}

}  // namespace quennel
