#pragma once

#include <spawn.h>
#include <sys/types.h>

#include <string>
#include <vector>

#include "platform/linux/base/FileDescriptor.h"

namespace quennel {

/// What a program that the helper starts is to be like: the leader of a session of its own, so that
/// it outlives the helper, with no signal blocked or ignored. Throws std::system_error.
class SpawnAttributes {
 public:
  SpawnAttributes();
  SpawnAttributes(const SpawnAttributes&) = delete;
  SpawnAttributes& operator=(const SpawnAttributes&) = delete;
  ~SpawnAttributes() { posix_spawnattr_destroy(&_attributes); }

  const posix_spawnattr_t* get() const { return &_attributes; }

 private:
  posix_spawnattr_t _attributes;
};

/// The descriptors that a program is given: an empty standard input, the helper's standard error
/// and nothing beyond. And its working folder: the user's home, or where that cannot be entered the
/// helper's own. Throws std::system_error.
class SpawnFileActions {
 public:
  /// Its standard output is that of the helper.
  SpawnFileActions();
  /// Its standard output goes to `output`.
  explicit SpawnFileActions(const FileDescriptor& output);
  SpawnFileActions(const SpawnFileActions&) = delete;
  SpawnFileActions& operator=(const SpawnFileActions&) = delete;
  ~SpawnFileActions() { posix_spawn_file_actions_destroy(&_actions); }

  const posix_spawn_file_actions_t* get() const { return &_actions; }

 private:
  void addStandardInputAndCloseTheRest();
  void addWorkingFolder();

  posix_spawn_file_actions_t _actions;
};

/// The arguments as posix_spawn takes them; they live as long as `arguments`.
std::vector<char*> spawnArguments(const std::vector<std::string>& arguments);

/// A descriptor that becomes readable when the process ends; none when the system refuses. glibc
/// 2.36 declares pidfd_open for C only.
FileDescriptor openProcess(pid_t pid);

}  // namespace quennel
