#include "platform/linux/scope/DetachedChild.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>

namespace quennel {

namespace {

[[noreturn]] void runAlone(int socket, unsigned int mostSeconds,
                           const std::function<void(int socket)>& body) {
  constexpr int kept = STDIN_FILENO;
  if (dup2(socket, kept) < 0 || close_range(kept + 1, ~0U, 0) != 0) {
    _exit(EXIT_FAILURE);
  }
  alarm(mostSeconds);
  body(kept);
  _exit(EXIT_SUCCESS);
}

}  // namespace

FileDescriptor startDetachedChild(unsigned int mostSeconds,
                                  const std::function<void(int socket)>& body) {
  std::array<int, 2> sockets{};
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, sockets.data()) != 0) {
    return {};
  }
  FileDescriptor ours(sockets[0]);
  const FileDescriptor theirs(sockets[1]);
  const pid_t middle = fork();
  if (middle == 0) {
    // A child of the child has nobody to wait for its end.
    if (fork() == 0) {
      runAlone(theirs.get(), mostSeconds, body);
    }
    _exit(EXIT_SUCCESS);
  }
  if (middle < 0) {
    return {};
  }
  while (waitpid(middle, nullptr, 0) < 0 && errno == EINTR) {
  }
  return ours;
}

bool waitForInput(int descriptor, int milliseconds) {
  pollfd waiting{descriptor, POLLIN, 0};
  return poll(&waiting, 1, milliseconds) > 0;
}

}  // namespace quennel
