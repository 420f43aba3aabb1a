#include "platform/linux/settings/FileStamp.h"

#include <chrono>

namespace quennel {
namespace {

std::int64_t nanoseconds(const timespec& time) {
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

}  // namespace

FileStamp::FileStamp(const struct stat& status)
    : device(status.st_dev),
      inode(status.st_ino),
      size(status.st_size),
      modificationTime(nanoseconds(status.st_mtim)),
      changeTime(nanoseconds(status.st_ctim)) {}

FileStamp FileStamp::ofFile(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? FileStamp(status) : FileStamp();
}

bool FileStamp::isSettled() const {
  // Two ticks of the slowest kernel clock.
  constexpr std::chrono::nanoseconds window = std::chrono::milliseconds(20);
  const std::chrono::nanoseconds now = std::chrono::system_clock::now().time_since_epoch();
  return changeTime < (now - window).count();
}

}  // namespace quennel
