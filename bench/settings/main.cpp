// Settings with twenty templates, read and changed, against the bare calls that do the same.

#include <fcntl.h>
#include <plist/plist.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>

#include "bench/support/Figure.h"
#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/settings/FileStamp.h"
#include "platform/linux/settings/PropertyListUserDefaults.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::bench {
namespace {

constexpr auto key = "skipFilename";

void check(bool succeeded, const char* what) {
  if (!succeeded) {
    throw std::runtime_error(what);
  }
}

/// Where writing costs no disk.
std::string memoryFolder() {
  return std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : std::string();
}

void store(PropertyListUserDefaults& settings) {
  PropertyList::Array templates;
  for (int number = 0; number < 20; ++number) {
    const std::string name = "template " + std::to_string(number);
    templates.push_back(PropertyList::Dictionary{{"title", name},
                                                 {"prefix", name},
                                                 {"suffix", "txt"},
                                                 {"filePath", "/home/me/Templates/" + name},
                                                 {"executable", false},
                                                 {"enabled", true}});
  }
  settings.setObject(templates, "fileTemplates");
  settings.setObject(true, key);
  check(settings.synchronize(), "the settings cannot be stored");
}

/// Until the file's stamp is trusted, which that of a file that has just changed is not.
void waitUntilSettled(const std::string& path) {
  while (!FileStamp::ofFile(path).isSettled()) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

template <typename Operation>
double microsecondsOf(int times, const Operation& operation) {
  const double milliseconds = millisecondsOf([&] {
    for (int count = 0; count < times; ++count) {
      operation();
    }
  });
  return milliseconds * 1000 / times;
}

void measureWarmRead(Report& report, const std::string& path) {
  const PropertyListUserDefaults settings(path);
  struct stat status {};
  const int times = report.isSmoke() ? 10 : 10'000;
  const Medians medians = compare(
      report.isSmoke() ? 3 : 101,
      [&] { return microsecondsOf(times, [&] { check(settings.boolForKey(key), "not set"); }); },
      [&] {
        return microsecondsOf(times, [&] { check(stat(path.c_str(), &status) == 0, "no file"); });
      });
  report.add({"setting read, file unchanged / one stat",
              "us",
              medians.ours,
              medians.reference,
              {Goal::Kind::RatioAtMost, 1.8}});
}

std::string bareContents(const std::string& path) {
  const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  struct stat status {};
  check(fstat(file.get(), &status) == 0, "no file");
  std::string contents(static_cast<std::size_t>(status.st_size), '\0');
  check(read(file.get(), contents.data(), contents.size()) == status.st_size, "cannot read");
  return contents;
}

plist_t bareTree(const std::string& path) {
  const std::string contents = bareContents(path);
  plist_t tree = nullptr;
  plist_from_xml(contents.data(), static_cast<std::uint32_t>(contents.size()), &tree);
  check(tree, "cannot parse");
  return tree;
}

void measureFirstRead(Report& report, const std::string& path) {
  const auto ours = [&] { check(PropertyListUserDefaults(path).boolForKey(key), "not set"); };
  const auto bare = [&] {
    const plist_t tree = bareTree(path);
    std::uint8_t value = 0;
    plist_get_bool_val(plist_dict_get_item(tree, key), &value);
    plist_free(tree);
    check(value != 0, "not set");
  };
  const Medians medians = compare(
      report.isSmoke() ? 3 : 5001, [&] { return microsecondsOf(1, ours); },
      [&] { return microsecondsOf(1, bare); });
  report.add({"setting read first / parsed and no more",
              "us",
              medians.ours,
              medians.reference,
              {Goal::Kind::RatioAtMost, 2}});
}

/// Locks, parses, changes, writes beside and moves into place.
void changeBarely(const std::string& path, bool value) {
  const FileDescriptor lock(open((path + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  check(flock(lock.get(), LOCK_EX) == 0, "cannot lock");
  const plist_t tree = bareTree(path);
  plist_dict_set_item(tree, key, plist_new_bool(value ? 1 : 0));
  char* text = nullptr;
  std::uint32_t length = 0;
  plist_to_xml(tree, &text, &length);
  const std::string temporary = path + ".new";
  const FileDescriptor file(
      open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  check(write(file.get(), text, length) == static_cast<ssize_t>(length), "cannot write");
  check(fsync(file.get()) == 0 && rename(temporary.c_str(), path.c_str()) == 0, "cannot store");
  std::free(text);
  plist_free(tree);
}

void measureChange(Report& report, const std::string& path) {
  bool value = false;
  PropertyListUserDefaults settings(path);
  const auto ours = [&] {
    value = !value;
    check(settings.updateObjectForKey(key, [&](const auto&) { return PropertyList(value); }),
          "cannot store");
  };
  const auto bare = [&] {
    value = !value;
    changeBarely(path, value);
  };
  const Medians medians = compare(
      report.isSmoke() ? 3 : 2001, [&] { return microsecondsOf(1, ours); },
      [&] { return microsecondsOf(1, bare); });
  report.add({"setting changed / rewritten without checks",
              "us",
              medians.ours,
              medians.reference,
              {Goal::Kind::RatioAtMost, 3.5}});
}

void measure(Report& report) {
  const test::TemporaryDirectory folder(memoryFolder());
  const std::string path = folder / "settings.plist";
  PropertyListUserDefaults settings(path);
  store(settings);
  waitUntilSettled(path);
  measureWarmRead(report, path);
  measureFirstRead(report, path);
  measureChange(report, path);
}

}  // namespace
}  // namespace quennel::bench

int main(int argumentCount, char** arguments) {
  quennel::bench::Report report(argumentCount, arguments);
  try {
    quennel::bench::measure(report);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "settings: %s\n", error.what());
    return 1;
  }
  return report.exitStatus();
}
