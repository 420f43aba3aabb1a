#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <string>

#include "bench/files/Measurements.h"
#include "bench/files/Tools.h"
#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/files/PosixFileManager.h"
#include "tests/support/LoopMount.h"

namespace quennel::bench {

namespace {

void writeLargeFile(const std::string& path, int mebibytes) {
  const std::string block(std::size_t{1024} * 1024, 'x');
  const FileDescriptor file(
      checked(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644), path));
  for (int written = 0; written < mebibytes; ++written) {
    checked(::write(file.get(), block.data(), block.size()), path);
  }
  checked(::fsync(file.get()), path);
}

// The least that makes such a copy.
void cloneBare(const std::string& path, const std::string& toPath) {
  const FileDescriptor source(checked(::open(path.c_str(), O_RDONLY | O_CLOEXEC), path));
  const FileDescriptor copy(
      checked(::open(toPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644), toPath));
  checked(::ioctl(copy.get(), FICLONE, source.get()), toPath);
}

// Both run in this process, so neither counts what starting one takes.
void measureOn(Report& report, const std::string& type) {
  const int mebibytes = report.isSmoke() ? 16 : 1024;
  const std::string name = std::to_string(mebibytes) + " MiB file, " + type + " / bare calls";
  const test::LoopMount mount(type, mebibytes + 1024);
  if (!mount) {
    report.addNotMeasured(name, mount.reason());
    return;
  }
  const std::string large = mount / "large";
  writeLargeFile(large, mebibytes);
  PosixFileManager files;
  int copies = 0;
  const auto measured = [&](const auto& copy) {
    const std::string path = mount / ("copy" + std::to_string(copies++));
    return millisecondsOf([&] { copy(large, path); });
  };
  const Medians medians = compare(
      report.isSmoke() ? 3 : 31,
      [&] {
        return measured(
            [&](const std::string& from, const std::string& to) { copyItem(files, from, to); });
      },
      [&] { return measured(cloneBare); });
  report.add({name, "ms", medians.ours, medians.reference, {Goal::Kind::OursAtMost, 1.0}});
}

}  // namespace

void measureSharedBlocks(Report& report) {
  measureOn(report, "btrfs");
  measureOn(report, "xfs");
}

}  // namespace quennel::bench
