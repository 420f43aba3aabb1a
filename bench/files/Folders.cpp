#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <string>

#include "bench/files/Measurements.h"
#include "bench/files/Tools.h"
#include "platform/linux/files/PosixFileManager.h"
#include "tests/support/LoopMount.h"

namespace quennel::bench {

namespace {

enum class Shape { Flat, Nested };

// A file of up to 8 KiB with an old date; some are programs, some carry an extended attribute.
void makeSmallFile(const std::string& path, int number) {
  constexpr int sizes = 8192;
  writeFile(path, std::string(static_cast<std::size_t>(number * 37 % sizes), 'x'));
  checked(::chmod(path.c_str(), number % 10 == 0 ? 0755 : 0644), path);
  if (number % 10 == 0) {
    checked(::setxattr(path.c_str(), "user.origin", "template", 8, 0), path);
  }
  const timespec dates[2] = {{1'000'000'000 + number, 0}, {1'000'000'000 + number, 0}};
  checked(::utimensat(AT_FDCWD, path.c_str(), dates, 0), path);
}

void makeFolder(const std::string& path) { checked(::mkdir(path.c_str(), 0755), path); }

void makeTemplate(const std::string& path, int count, Shape shape) {
  constexpr int filesInFolder = 100;
  makeFolder(path);
  std::string folder = path;
  for (int number = 0; number < count; ++number) {
    if (shape == Shape::Nested && number % filesInFolder == 0) {
      folder = path + "/" + std::to_string(number / filesInFolder);
      makeFolder(folder);
    }
    makeSmallFile(folder + "/" + std::to_string(number) + ".txt", number);
  }
}

// Nothing is deleted between the rounds: ext4 makes new files many times slower for a while after
// many were removed.
void measureOn(Report& report, const std::string& type, Shape shape, double goal) {
  const int count = report.isSmoke() ? 200 : 10'000;
  const std::string name =
      std::to_string(count) +
      (shape == Shape::Flat ? " files in one folder, " : " files in folders, ") + type + " / cp -a";
  const test::LoopMount mount(type, report.isSmoke() ? 512 : 8192);
  if (!mount) {
    report.addNotMeasured(name, mount.reason());
    return;
  }
  const std::string source = mount / "template";
  makeTemplate(source, count, shape);
  PosixFileManager files;
  int copies = 0;
  const auto measured = [&](const auto& copy) {
    settle(mount.path());
    const std::string path = mount / ("copy" + std::to_string(copies++));
    return millisecondsOf([&] { copy(path); });
  };
  const Medians medians = compare(
      report.isSmoke() ? 2 : 9,
      [&] { return measured([&](const std::string& path) { copyItem(files, source, path); }); },
      [&] {
        return measured([&](const std::string& path) { runProgram({"cp", "-a", source, path}); });
      });
  report.add({name, "ms", medians.ours, medians.reference, {Goal::Kind::RatioAtMost, goal}});
}

}  // namespace

void measureFolders(Report& report) {
  for (const Shape shape : {Shape::Nested, Shape::Flat}) {
    measureOn(report, "ext4", shape, 0.8);
    measureOn(report, "btrfs", shape, 1.0);
    measureOn(report, "xfs", shape, 1.0);
    measureOn(report, "tmpfs", shape, 1.0);
  }
}

}  // namespace quennel::bench
