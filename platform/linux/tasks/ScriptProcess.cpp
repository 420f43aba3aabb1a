#include "platform/linux/tasks/ScriptProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

#include "platform/linux/processes/Spawn.h"

namespace quennel {
namespace {

/// `error` is 0 or an errno value, as the functions of posix_spawn answer it.
void throwOnError(int error, const char* what) {
  if (error != 0) {
    throw std::system_error(error, std::generic_category(), what);
  }
}

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
  std::vector<std::string> words{path};
  words.insert(words.end(), arguments.begin(), arguments.end());
  const SpawnAttributes attributes;
  const SpawnFileActions actions(output);
  pid_t pid = -1;
  throwOnError(posix_spawn(&pid, path.c_str(), actions.get(), attributes.get(),
                           spawnArguments(words).data(), environ),
               "posix_spawn");
  return pid;
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
