#include "tests/support/ChildProcess.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "platform/linux/base/FileDescriptor.h"

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

/// A process that runs a body.
class Child {
 public:
  explicit Child(const std::function<std::string()>& body) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
      throw std::system_error(errno, std::generic_category(), "pipe2");
    }
    _process = fork();
    if (_process < 0) {
      throw std::system_error(errno, std::generic_category(), "fork");
    }
    if (_process == 0) {
      answerAndExit(ends[1], body);
    }
    close(ends[1]);
    _output = FileDescriptor(ends[0]);
  }

  std::string answer() const {
    std::string answer = readToEnd(_output.get());
    int status = 0;
    if (waitpid(_process, &status, 0) != _process || status != 0) {
      return "died with status " + std::to_string(status);
    }
    return answer;
  }

 private:
  pid_t _process;
  FileDescriptor _output;
};

}  // namespace

std::string inChildProcess(const std::function<std::string()>& body) {
  return Child(body).answer();
}

std::vector<std::string> inChildProcesses(int count, const std::function<std::string()>& body) {
  std::vector<Child> children;
  for (int number = 0; number < count; ++number) {
    children.emplace_back(body);
  }
  std::vector<std::string> answers;
  for (const Child& child : children) {
    answers.push_back(child.answer());
  }
  return answers;
}

}  // namespace quennel::test
