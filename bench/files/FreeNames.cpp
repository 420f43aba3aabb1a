#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "bench/files/Measurements.h"
#include "bench/files/Tools.h"
#include "creation/FreeName.h"
#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/files/PosixFileManager.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::bench {

namespace {

void takeNames(const std::string& folder, int count) {
  writeFile(folder + "/untitled.txt", "");
  for (int number = 1; number <= count; ++number) {
    writeFile(folder + "/untitled-" + std::to_string(number) + ".txt", "");
  }
}

// Reads every entry and looks at its length, as the least that a search has to do.
void scanOnce(const std::string& folder) {
  constexpr std::size_t capacity = std::size_t{64} * 1024;
  const auto buffer = std::make_unique_for_overwrite<char[]>(capacity);
  const FileDescriptor open(
      checked(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC), folder));
  std::size_t names = 0;
  while (const auto size = checked(::getdents64(open.get(), buffer.get(), capacity), folder)) {
    for (ssize_t position = 0; position < size;) {
      const auto* entry = reinterpret_cast<const dirent64*>(buffer.get() + position);
      names += entry->d_name[0] != '\0';
      position += entry->d_reclen;
    }
  }
  if (names < 2) {
    throw std::runtime_error("nothing scanned");
  }
}

void findName(const std::string& folder, const std::string& expected) {
  const PosixFileManager files;
  const std::string path = folder + "/untitled.txt";
  if (!files.fileExistsAtPath(path) || FreeName(files, path).find() != folder + expected) {
    throw std::runtime_error("a wrong free name");
  }
}

void measure(Report& report, const std::string& name, const std::string& folder,
             const std::string& expected) {
  const int rounds = report.isSmoke() ? 3 : 21;
  const Medians medians = compare(
      rounds, [&] { return millisecondsOf([&] { findName(folder, expected); }); },
      [&] { return millisecondsOf([&] { scanOnce(folder); }); });
  report.add({name, "ms", medians.ours, medians.reference, {Goal::Kind::RatioAtMost, 1.3}});
}

}  // namespace

void measureFreeNames(Report& report) {
  const int count = report.isSmoke() ? 1000 : 100'000;
  const test::TemporaryDirectory folder;
  takeNames(folder.path(), count);
  measure(report, "free name, " + std::to_string(count) + " taken / one scan", folder.path(),
          "/untitled-" + std::to_string(count + 1) + ".txt");
  const std::string gap = "/untitled-" + std::to_string(count / 2) + ".txt";
  checked(::unlink((folder.path() + gap).c_str()), gap);
  measure(report, "free name in a gap / one scan", folder.path(), gap);
}

}  // namespace quennel::bench
