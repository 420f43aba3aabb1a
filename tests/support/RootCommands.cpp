#include "tests/support/RootCommands.h"

#include <grp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string_view>
#include <system_error>

namespace quennel::test {
namespace {

constexpr uid_t nobody = 65534;

int server = -1;
std::string whyNone = "it takes root to make and mount volumes";

void require(bool done, const char* what) {
  if (!done) {
    throw std::system_error(errno, std::generic_category(), what);
  }
}

[[noreturn]] void serveCommands(int client) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  std::array<char, 8192> command;
  for (;;) {
    const ssize_t size = recv(client, command.data(), command.size() - 1, 0);
    if (size <= 0) {
      _exit(0);
    }
    command.at(static_cast<std::size_t>(size)) = '\0';
    const char done = std::system(command.data()) == 0 ? 'y' : 'n';
    if (send(client, &done, 1, MSG_NOSIGNAL) != 1) {
      _exit(0);
    }
  }
}

void startServer() {
  std::array<int, 2> ends{};
  require(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) == 0, "socketpair");
  const pid_t child = fork();
  require(child >= 0, "fork");
  if (child == 0) {
    close(ends[0]);
    serveCommands(ends[1]);
  }
  close(ends[1]);
  server = ends[0];
}

void becomeNobody() {
  require(setgroups(0, nullptr) == 0 && setresgid(nobody, nobody, nobody) == 0 &&
              setresuid(nobody, nobody, nobody) == 0,
          "becoming nobody");
  // As if started by that user: the process may look at and change itself through /proc.
  require(prctl(PR_SET_DUMPABLE, 1) == 0, "prctl");
}

}  // namespace

void RootCommands::start() {
  if (geteuid() != 0) {
    return;
  }
  if (unshare(CLONE_NEWNS) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0) {
    startServer();
    whyNone.clear();
  } else {
    whyNone = "this container's root may not mount volumes";
  }
  const char* user = std::getenv("QUENNEL_TEST_USER");
  if (user && std::string_view(user) == "nobody") {
    becomeNobody();
  }
}

std::string RootCommands::whyUnavailable() { return whyNone; }

bool RootCommands::run(const std::string& command) {
  char done = 'n';
  require(send(server, command.data(), command.size(), MSG_NOSIGNAL) >= 0, "send");
  return recv(server, &done, 1, 0) == 1 && done == 'y';
}

}  // namespace quennel::test
