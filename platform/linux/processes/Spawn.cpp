#include "platform/linux/processes/Spawn.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>
#include <system_error>

namespace quennel {
namespace {

/// `error` is 0 or an errno value, as the functions of posix_spawn answer it.
void throwOnError(int error, const char* what) {
  if (error != 0) {
    throw std::system_error(error, std::generic_category(), what);
  }
}

}  // namespace

SpawnAttributes::SpawnAttributes() {
  throwOnError(posix_spawnattr_init(&_attributes), "posix_spawnattr_init");
  sigset_t none;
  sigset_t all;
  sigemptyset(&none);
  sigfillset(&all);
  throwOnError(posix_spawnattr_setsigmask(&_attributes, &none), "posix_spawnattr_setsigmask");
  throwOnError(posix_spawnattr_setsigdefault(&_attributes, &all), "posix_spawnattr_setsigdefault");
  constexpr int flags = POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
  throwOnError(posix_spawnattr_setflags(&_attributes, static_cast<short>(flags)),
               "posix_spawnattr_setflags");
}

SpawnFileActions::SpawnFileActions() {
  throwOnError(posix_spawn_file_actions_init(&_actions), "posix_spawn_file_actions_init");
  addStandardInputAndCloseTheRest();
}

SpawnFileActions::SpawnFileActions(const FileDescriptor& output) {
  throwOnError(posix_spawn_file_actions_init(&_actions), "posix_spawn_file_actions_init");
  // The output first: a program that was started with a closed standard input may have been given
  // that number for its pipe.
  throwOnError(posix_spawn_file_actions_adddup2(&_actions, output.get(), STDOUT_FILENO),
               "posix_spawn_file_actions_adddup2");
  addStandardInputAndCloseTheRest();
}

void SpawnFileActions::addStandardInputAndCloseTheRest() {
  throwOnError(posix_spawn_file_actions_addopen(&_actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0),
               "posix_spawn_file_actions_addopen");
  throwOnError(posix_spawn_file_actions_addclosefrom_np(&_actions, STDERR_FILENO + 1),
               "posix_spawn_file_actions_addclosefrom_np");
  addWorkingFolder();
}

/// That of the helper is of no use to anybody (it stays at the root, so that no volume is busy
/// because of it).
void SpawnFileActions::addWorkingFolder() {
  const char* const home = std::getenv("HOME");
  if (home != nullptr && *home == '/' && access(home, X_OK) == 0) {
    throwOnError(posix_spawn_file_actions_addchdir_np(&_actions, home),
                 "posix_spawn_file_actions_addchdir_np");
  }
}

std::vector<char*> spawnArguments(const std::vector<std::string>& arguments) {
  std::vector<char*> pointers;
  pointers.reserve(arguments.size() + 1);
  for (const std::string& argument : arguments) {
    // posix_spawn takes its strings as not constant and leaves them as they are.
    pointers.push_back(const_cast<char*>(argument.c_str()));
  }
  pointers.push_back(nullptr);
  return pointers;
}

FileDescriptor openProcess(pid_t pid) {
  return FileDescriptor(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
}

}  // namespace quennel
