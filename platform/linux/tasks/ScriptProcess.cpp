#include "platform/linux/tasks/ScriptProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace quennel {
namespace {

/// `error` is 0 or an errno value, as the functions of posix_spawn answer it.
void throwOnError(int error, const char* what) {
  if (error != 0) {
    throw std::system_error(error, std::generic_category(), what);
  }
}

class SpawnAttributes {
 public:
  SpawnAttributes() { throwOnError(posix_spawnattr_init(&_attributes), "posix_spawnattr_init"); }
  SpawnAttributes(const SpawnAttributes&) = delete;
  SpawnAttributes& operator=(const SpawnAttributes&) = delete;
  ~SpawnAttributes() { posix_spawnattr_destroy(&_attributes); }

  void startSessionWithDefaultSignals() {
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    throwOnError(posix_spawnattr_setsigmask(&_attributes, &none), "posix_spawnattr_setsigmask");
    throwOnError(posix_spawnattr_setsigdefault(&_attributes, &all),
                 "posix_spawnattr_setsigdefault");
    constexpr int flags = POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
    throwOnError(posix_spawnattr_setflags(&_attributes, static_cast<short>(flags)),
                 "posix_spawnattr_setflags");
  }
  const posix_spawnattr_t* get() const { return &_attributes; }

 private:
  posix_spawnattr_t _attributes;
};

class SpawnFileActions {
 public:
  SpawnFileActions() {
    throwOnError(posix_spawn_file_actions_init(&_actions), "posix_spawn_file_actions_init");
  }
  SpawnFileActions(const SpawnFileActions&) = delete;
  SpawnFileActions& operator=(const SpawnFileActions&) = delete;
  ~SpawnFileActions() { posix_spawn_file_actions_destroy(&_actions); }

  /// The output first: a program that was started with a closed standard input may have been given
  /// that number for its pipe.
  void redirectOutput(const FileDescriptor& output) {
    throwOnError(posix_spawn_file_actions_adddup2(&_actions, output.get(), STDOUT_FILENO),
                 "posix_spawn_file_actions_adddup2");
    throwOnError(
        posix_spawn_file_actions_addopen(&_actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0),
        "posix_spawn_file_actions_addopen");
    throwOnError(posix_spawn_file_actions_addclosefrom_np(&_actions, STDERR_FILENO + 1),
                 "posix_spawn_file_actions_addclosefrom_np");
  }
  const posix_spawn_file_actions_t* get() const { return &_actions; }

 private:
  posix_spawn_file_actions_t _actions;
};

struct Ends {
  FileDescriptor reading;
  FileDescriptor writing;
};

Ends makePipe() {
  std::array<int, 2> ends{};
  throwOnError(pipe2(ends.data(), O_CLOEXEC) == 0 ? 0 : errno, "pipe2");
  Ends result{FileDescriptor(ends[0]), FileDescriptor(ends[1])};
  throwOnError(fcntl(result.reading.get(), F_SETFL, O_NONBLOCK) == 0 ? 0 : errno, "F_SETFL");
  return result;
}

pid_t spawn(const std::string& path, const std::vector<std::string>& arguments,
            const FileDescriptor& output) {
  // posix_spawn takes its strings as not constant and leaves them as they are.
  std::vector<char*> pointers{const_cast<char*>(path.c_str())};
  for (const std::string& argument : arguments) {
    pointers.push_back(const_cast<char*>(argument.c_str()));
  }
  pointers.push_back(nullptr);

  SpawnAttributes attributes;
  attributes.startSessionWithDefaultSignals();
  SpawnFileActions actions;
  actions.redirectOutput(output);
  pid_t pid = -1;
  throwOnError(
      posix_spawn(&pid, path.c_str(), actions.get(), attributes.get(), pointers.data(), environ),
      "posix_spawn");
  return pid;
}

/// glibc 2.36 declares pidfd_open for C only.
FileDescriptor openProcess(pid_t pid) {
  return FileDescriptor(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
}

/// The process has been killed, but one that waits for a file system that does not answer ends only
/// when that does; the thread that waits for it must not.
void reap(pid_t pid, const FileDescriptor& handle) {
  constexpr int oneSecond = 1000;
  pollfd ended{handle.get(), POLLIN, 0};
  while (poll(&ended, 1, oneSecond) < 0 && errno == EINTR) {
  }
  while (waitpid(pid, nullptr, WNOHANG) < 0 && errno == EINTR) {
  }
}

}  // namespace

ScriptProcess::ScriptProcess(const std::string& path, const std::vector<std::string>& arguments) {
  Ends pipe = makePipe();
  _output = std::move(pipe.reading);
  _pid = spawn(path, arguments, pipe.writing);
  // Nothing but `reap` waits for this process, so its number cannot have been used again.
  _handle = openProcess(_pid);
  if (!_handle) {
    const int error = errno;
    kill(-_pid, SIGKILL);
    waitpid(_pid, nullptr, 0);
    throwOnError(error, "pidfd_open");
  }
}

ScriptProcess::~ScriptProcess() {
  // The script has not been reaped yet, ended or not, so the number of its group is still its own.
  kill(-_pid, SIGKILL);
  reap(_pid, _handle);
}

ScriptProcess::Ending ScriptProcess::ending() const {
  siginfo_t info{};
  throwOnError(
      waitid(P_PIDFD, static_cast<id_t>(_handle.get()), &info, WEXITED | WNOWAIT) == 0 ? 0 : errno,
      "waitid");
  const auto kind = info.si_code == CLD_EXITED ? Ending::Kind::Exited : Ending::Kind::Signaled;
  return {kind, info.si_status};
}

}  // namespace quennel
