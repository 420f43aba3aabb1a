#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <string>

#include "bench/files/Measurements.h"
#include "bench/files/Tools.h"
#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/files/PosixFileManager.h"
#include "tests/support/LoopMount.h"

namespace quennel::bench {

namespace {

constexpr std::size_t size = 4096;
constexpr int copiesInRound = 1000;

// The least that makes a copy with permissions and dates appear complete.
void copyBare(const std::string& folder, const std::string& path, const std::string& toPath) {
  std::array<char, size> buffer;
  struct stat status;
  const FileDescriptor source(checked(::open(path.c_str(), O_RDONLY | O_CLOEXEC), path));
  checked(::fstat(source.get(), &status), path);
  const FileDescriptor copy(checked(
      ::open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, status.st_mode & 0777), folder));
  const auto count = checked(::read(source.get(), buffer.data(), buffer.size()), path);
  checked(::write(copy.get(), buffer.data(), static_cast<std::size_t>(count)), toPath);
  const std::array<timespec, 2> dates{status.st_atim, status.st_mtim};
  checked(::futimens(copy.get(), dates.data()), toPath);
  const std::string self = "/proc/self/fd/" + std::to_string(copy.get());
  checked(::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, toPath.c_str(), AT_SYMLINK_FOLLOW), toPath);
}

// Microseconds for one copy; the copies are removed afterwards.
template <typename Copy>
double microsecondsOf(const std::string& folder, const Copy& copy) {
  const auto pathOf = [&](int number) { return folder + "/copy" + std::to_string(number); };
  const double milliseconds = millisecondsOf([&] {
    for (int number = 0; number < copiesInRound; ++number) {
      copy(pathOf(number));
    }
  });
  for (int number = 0; number < copiesInRound; ++number) {
    checked(::unlink(pathOf(number).c_str()), "copy");
  }
  return milliseconds * 1000 / copiesInRound;
}

}  // namespace

void measureSmallFile(Report& report) {
  const std::string name = "4 KiB file, tmpfs / bare calls";
  const test::LoopMount mount("tmpfs");
  if (!mount) {
    report.addNotMeasured(name, mount.reason());
    return;
  }
  const std::string path = mount / "template";
  writeFile(path, std::string(size, 'x'));
  PosixFileManager files;
  const Medians medians = compare(
      report.isSmoke() ? 3 : 51,
      [&] {
        return microsecondsOf(mount.path(),
                              [&](const std::string& copy) { copyItem(files, path, copy); });
      },
      [&] {
        return microsecondsOf(mount.path(),
                              [&](const std::string& copy) { copyBare(mount.path(), path, copy); });
      });
  report.add({name, "us", medians.ours, medians.reference, {Goal::Kind::RatioAtMost, 1.3}});
}

}  // namespace quennel::bench
