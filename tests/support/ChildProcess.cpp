#include "tests/support/ChildProcess.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace quennel::test {
namespace {

[[noreturn]] void answerAndExit(int descriptor, const std::function<std::string()>& body) {
  const std::string answer = body();
  const bool written =
      write(descriptor, answer.data(), answer.size()) == static_cast<ssize_t>(answer.size());
  _exit(written ? 0 : 1);
}

std::string readToEnd(int descriptor) {
  std::string contents;
  char buffer[4096];
  for (;;) {
    const ssize_t count = read(descriptor, buffer, sizeof buffer);
    if (count <= 0) {
      return contents;
    }
    contents.append(buffer, static_cast<std::size_t>(count));
  }
}

}  // namespace

std::string inChildProcess(const std::function<std::string()>& body) {
  int ends[2];
  if (pipe(ends) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe");
  }
  const pid_t child = fork();
  if (child < 0) {
    throw std::system_error(errno, std::generic_category(), "fork");
  }
  if (child == 0) {
    close(ends[0]);
    answerAndExit(ends[1], body);
  }
  close(ends[1]);
  std::string answer = readToEnd(ends[0]);
  close(ends[0]);
  int status = 0;
  if (waitpid(child, &status, 0) != child || status != 0) {
    return "died with status " + std::to_string(status);
  }
  return answer;
}

}  // namespace quennel::test
