#include "platform/linux/processes/ProgramLauncher.h"

#include <spawn.h>
#include <sys/epoll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <system_error>
#include <utility>

#include "platform/linux/processes/Spawn.h"

namespace quennel {

bool ProgramLauncher::start(const std::vector<std::string>& arguments) {
  try {
    const SpawnAttributes attributes;
    const SpawnFileActions actions;
    pid_t pid = -1;
    if (posix_spawnp(&pid, arguments.front().c_str(), actions.get(), attributes.get(),
                     spawnArguments(arguments).data(), environ) != 0) {
      return false;
    }
    watch(pid);
    return true;
  } catch (const std::system_error&) {
    return false;
  }
}

/// A process that cannot be watched is left to the system, which reaps it after the helper.
void ProgramLauncher::watch(pid_t pid) {
  FileDescriptor handle = openProcess(pid);
  if (!handle) {
    return;
  }
  _running.push_back({*this, {}, std::move(handle), nullptr});
  Program& program = _running.back();
  program.self = std::prev(_running.end());
  sd_event_source* source = nullptr;
  if (sd_event_add_io(_runLoop.handle(), &source, program.handle.get(), EPOLLIN, reap, &program) <
      0) {
    _running.pop_back();
    return;
  }
  program.source.reset(source);
}

int ProgramLauncher::reap(sd_event_source*, int descriptor, std::uint32_t, void* program) {
  auto& ended = *static_cast<Program*>(program);
  siginfo_t status{};
  if (waitid(P_PIDFD, static_cast<id_t>(descriptor), &status, WEXITED | WNOHANG) == 0) {
    ended.launcher._running.erase(ended.self);
  }
  return 0;
}

}  // namespace quennel
