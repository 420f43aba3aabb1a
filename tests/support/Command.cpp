#include "tests/support/Command.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <system_error>

#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

constexpr int cannotStart = 127;

std::string contentsOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void replaceStream(int stream, const std::string& path, int flags) {
  const int descriptor = open(path.c_str(), flags | O_CLOEXEC, 0600);
  if (descriptor < 0 || dup2(descriptor, stream) < 0) {
    _exit(cannotStart);
  }
}

[[noreturn]] void become(const std::vector<std::string>& arguments,
                         const std::map<std::string, std::string>& environment) {
  for (const auto& [name, value] : environment) {
    if (value.empty()) {
      unsetenv(name.c_str());
    } else {
      setenv(name.c_str(), value.c_str(), 1);
    }
  }
  std::vector<char*> pointers;
  for (const std::string& argument : arguments) {
    pointers.push_back(const_cast<char*>(argument.c_str()));
  }
  pointers.push_back(nullptr);
  execvp(pointers.front(), pointers.data());
  _exit(cannotStart);
}

}  // namespace

CommandResult runCommand(const std::vector<std::string>& arguments,
                         const std::map<std::string, std::string>& environment,
                         const std::string& input) {
  const TemporaryDirectory folder;
  std::ofstream(folder / "in", std::ios::binary) << input;
  const pid_t child = fork();
  if (child < 0) {
    throw std::system_error(errno, std::generic_category(), "fork");
  }
  if (child == 0) {
    replaceStream(STDIN_FILENO, folder / "in", O_RDONLY);
    replaceStream(STDOUT_FILENO, folder / "out", O_WRONLY | O_CREAT);
    replaceStream(STDERR_FILENO, folder / "err", O_WRONLY | O_CREAT);
    become(arguments, environment);
  }
  int status = 0;
  if (waitpid(child, &status, 0) != child) {
    throw std::system_error(errno, std::generic_category(), arguments.front());
  }
  const int code = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
  if (code == cannotStart) {
    throw std::system_error(ENOENT, std::generic_category(), arguments.front());
  }
  return {code, contentsOf(folder / "out"), contentsOf(folder / "err")};
}

bool hasCommand(const std::string& name) {
  std::istringstream folders(std::getenv("PATH") ? std::getenv("PATH") : "");
  for (std::string folder; std::getline(folders, folder, ':');) {
    if (access((folder + "/" + name).c_str(), X_OK) == 0) {
      return true;
    }
  }
  return false;
}

}  // namespace quennel::test
