#include <malloc.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

#include "bench/scope/GrantedWorld.h"
#include "bench/support/Figure.h"
#include "platform/linux/events/EventRunLoop.h"
#include "platform/linux/files/PosixFileManager.h"
#include "platform/linux/scope/ConfinedFileManager.h"

namespace quennel::bench {
namespace {

constexpr double microsecondsInMillisecond = 1000;

/// Microseconds for one creation; the file is removed afterwards.
double creationTime(FileManager& files, SecurityScope* scope, const GrantedWorld& world) {
  const std::string path = world.folder() + "/new";
  const double milliseconds =
      millisecondsOf([&] { createFile(files, scope, world.templateFile(), path); });
  unlink(path.c_str());
  return milliseconds * microsecondsInMillisecond;
}

/// What confining a creation adds to it, in a helper that is running.
void measureCreation(Report& report, int grants) {
  const GrantedWorld world(grants);
  LandlockSecurityScope scope(world.keyFile());
  const Accesses accesses = startAccessing(scope, world.bookmarks());
  PosixFileManager files;
  ConfinedFileManager confined(files, scope);
  const Medians medians = compare(
      report.isSmoke() ? 3 : 5001, [&] { return creationTime(confined, &scope, world); },
      [&] { return creationTime(files, nullptr, world); });
  report.add({"added to a creation, " + std::to_string(grants) + " grants / creation",
              "us",
              medians.ours - medians.reference,
              medians.reference,
              {Goal::Kind::OursAtMost, 150}});
}

/// What finding one granted folder again takes at a start, beside opening it.
void measureResolving(Report& report, int grants) {
  const GrantedWorld world(grants);
  LandlockSecurityScope landlock(world.keyFile());
  SecurityScope& scope = landlock;
  std::size_t turn = 0;
  const auto resolve = [&] {
    const auto& bookmark = world.bookmarks()[turn++ % world.bookmarks().size()];
    return microsecondsInMillisecond *
           millisecondsOf([&] { scope.pathByResolvingBookmarkData(bookmark); });
  };
  const auto open = [&] {
    return microsecondsInMillisecond * millisecondsOf([&] { openDirectory(world.folder()); });
  };
  const Medians medians = compare(report.isSmoke() ? 3 : 5001, resolve, open);
  report.add({"a token resolved, one of " + std::to_string(grants) + " / open",
              "us",
              medians.ours,
              medians.reference,
              {Goal::Kind::OursAtMost, 10}});
}

// A program that is started, makes one file and ends. Like the helper it has a run loop, whose
// library brings the cryptographic one with it.

constexpr const char* coldOption = "--cold";
constexpr const char* coldConfinedOption = "--cold-confined";

std::string tokenFile(const std::string& root, std::size_t number) {
  return root + "/token" + std::to_string(number);
}

/// Arguments: the option, the root, the folder, the template and the number of tokens.
int createCold(char** arguments) {
  mallopt(M_ARENA_MAX, 1);
  const EventRunLoop runLoop;
  const std::string root = arguments[2];
  const std::string path = std::string(arguments[3]) + "/new";
  PosixFileManager files;
  if (std::string_view(arguments[1]) == coldOption) {
    createFile(files, nullptr, arguments[4], path);
    return 0;
  }
  std::vector<PropertyList::Data> bookmarks;
  for (std::size_t number = 0; number < std::stoul(arguments[5]); ++number) {
    bookmarks.push_back({files.contentsAtPath(tokenFile(root, number)).value_or("")});
  }
  LandlockSecurityScope scope(root + "/key");
  const Accesses accesses = startAccessing(scope, bookmarks);
  ConfinedFileManager confined(files, scope);
  createFile(confined, &scope, arguments[4], path);
  return 0;
}

double coldTime(const GrantedWorld& world, const char* option) {
  const std::string count = std::to_string(world.bookmarks().size());
  std::string self = "/proc/self/exe";
  std::string mode = option;
  std::string root = world.root();
  std::string folder = world.folder();
  std::string templateFile = world.templateFile();
  std::string number = count;
  std::array<char*, 7> arguments{self.data(),         mode.data(),   root.data(), folder.data(),
                                 templateFile.data(), number.data(), nullptr};
  int status = -1;
  const double milliseconds = millisecondsOf([&] {
    pid_t child = 0;
    if (posix_spawn(&child, self.c_str(), nullptr, nullptr, arguments.data(), environ) == 0) {
      waitpid(child, &status, 0);
    }
  });
  if (status != 0 || unlink((folder + "/new").c_str()) != 0) {
    throw std::runtime_error("the started program made no file");
  }
  return milliseconds * microsecondsInMillisecond;
}

/// What grants add to a start that makes one file. An activated helper takes somewhat less than
/// three milliseconds for that; 15 % of it are allowed.
void measureColdCreation(Report& report, int grants) {
  const GrantedWorld world(grants);
  for (std::size_t number = 0; number < world.bookmarks().size(); ++number) {
    std::ofstream(tokenFile(world.root(), number)) << world.bookmarks()[number].bytes;
  }
  const Medians medians = compare(
      report.isSmoke() ? 3 : 201, [&] { return coldTime(world, coldConfinedOption); },
      [&] { return coldTime(world, coldOption); });
  report.add({"added to a start, " + std::to_string(grants) + " grants / bare start",
              "us",
              medians.ours - medians.reference,
              medians.reference,
              {Goal::Kind::OursAtMost, 400}});
}

}  // namespace
}  // namespace quennel::bench

int main(int argumentCount, char** arguments) {
  using namespace quennel::bench;
  try {
    if (argumentCount == 6 && std::string_view(arguments[1]).starts_with(coldOption)) {
      return createCold(arguments);
    }
    Report report(argumentCount, arguments);
    for (const int grants : {1, 10, 100, 1000}) {
      measureCreation(report, grants);
    }
    measureResolving(report, 1000);
    measureColdCreation(report, 10);
    return report.exitStatus();
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "bench scope: %s\n", failure.what());
    return 1;
  }
}
