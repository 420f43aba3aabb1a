#include "tests/support/Process.h"

#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <sstream>
#include <system_error>
#include <utility>

namespace quennel::test {
namespace {

void throwOnFailure(int error, const std::string& what) {
  if (error != 0) {
    throw std::system_error(error, std::generic_category(), what);
  }
}

FileDescriptor makeMemoryFile(const std::string& contents = {}) {
  FileDescriptor file(memfd_create("quennel-test", MFD_CLOEXEC));
  if (!file) {
    throwOnFailure(errno, "memfd_create");
  }
  if (pwrite(file.get(), contents.data(), contents.size(), 0) < 0) {
    throwOnFailure(errno, "pwrite");
  }
  return file;
}

std::string contentsOf(const FileDescriptor& file) {
  std::string contents;
  char buffer[4096];
  for (;;) {
    const ssize_t count =
        pread(file.get(), buffer, sizeof buffer, static_cast<off_t>(contents.size()));
    if (count <= 0) {
      return contents;
    }
    contents.append(buffer, static_cast<std::size_t>(count));
  }
}

/// The environment of the child, as "NAME=value".
std::vector<std::string> mergedEnvironment(const Process::Environment& changes) {
  std::vector<std::string> merged;
  for (char** entry = environ; *entry; ++entry) {
    const std::string text(*entry);
    if (!changes.contains(text.substr(0, text.find('=')))) {
      merged.push_back(text);
    }
  }
  for (const auto& [name, value] : changes) {
    if (!value.empty()) {
      merged.push_back(name + "=" + value);
    }
  }
  return merged;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (auto& text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

class SpawnSettings {
 public:
  SpawnSettings() {
    throwOnFailure(posix_spawn_file_actions_init(&actions), "posix_spawn_file_actions_init");
    throwOnFailure(posix_spawnattr_init(&attributes), "posix_spawnattr_init");
    sigset_t none;
    sigemptyset(&none);
    throwOnFailure(posix_spawnattr_setsigmask(&attributes, &none), "posix_spawnattr_setsigmask");
    throwOnFailure(posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK),
                   "posix_spawnattr_setflags");
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;
  ~SpawnSettings() {
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
  }

  void redirect(const FileDescriptor& from, int to) {
    throwOnFailure(posix_spawn_file_actions_adddup2(&actions, from.get(), to),
                   "posix_spawn_file_actions_adddup2");
  }

  posix_spawn_file_actions_t actions{};
  posix_spawnattr_t attributes{};
};

}  // namespace

Process::Process(const std::vector<std::string>& arguments, const Environment& environment,
                 const std::string& input)
    : _output(makeMemoryFile()), _errorOutput(makeMemoryFile()) {
  const auto inputFile = makeMemoryFile(input);
  SpawnSettings settings;
  settings.redirect(inputFile, STDIN_FILENO);
  settings.redirect(_output, STDOUT_FILENO);
  settings.redirect(_errorOutput, STDERR_FILENO);
  auto argumentTexts = arguments;
  auto environmentTexts = mergedEnvironment(environment);
  throwOnFailure(
      posix_spawnp(&_pid, arguments.at(0).c_str(), &settings.actions, &settings.attributes,
                   pointersTo(argumentTexts).data(), pointersTo(environmentTexts).data()),
      arguments.at(0));
  // Not glibc's pidfd_open: its header does not give it C linkage before version 2.37.
  _processDescriptor.reset(static_cast<int>(syscall(SYS_pidfd_open, _pid, 0)));
  if (!_processDescriptor) {
    throwOnFailure(errno, "pidfd_open");
  }
}

Process::Process(Process&& other) noexcept
    : _pid(std::exchange(other._pid, -1)),
      _processDescriptor(std::move(other._processDescriptor)),
      _output(std::move(other._output)),
      _errorOutput(std::move(other._errorOutput)),
      _status(other._status) {}

Process::~Process() {
  if (_pid > 0 && !_status) {
    kill(_pid, SIGKILL);
    waitpid(_pid, nullptr, 0);
  }
}

bool Process::isRunning() const {
  pollfd ended{_processDescriptor.get(), POLLIN, 0};
  return !_status && poll(&ended, 1, 0) == 0;
}

std::optional<int> Process::wait(Deadline deadline) {
  if (_status) {
    return _status;
  }
  pollfd ended{_processDescriptor.get(), POLLIN, 0};
  int status = 0;
  if (poll(&ended, 1, deadline.milliseconds()) == 1 && waitpid(_pid, &status, 0) == _pid) {
    _status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }
  return _status;
}

void Process::sendSignal(int signal) const {
  if (!_status) {
    kill(_pid, signal);
  }
}

std::optional<int> Process::terminate(Deadline deadline) {
  sendSignal(SIGTERM);
  return wait(deadline);
}

std::string Process::output() const { return contentsOf(_output); }

std::string Process::errorOutput() const { return contentsOf(_errorOutput); }

bool Process::waitForOutput(const std::string& text, Deadline deadline) const {
  return eventually([&] { return output().find(text) != std::string::npos; }, deadline);
}

bool isInstalled(const std::string& name) {
  const char* const path = getenv("PATH");
  std::istringstream folders(path ? path : "/usr/bin:/bin");
  for (std::string folder; std::getline(folders, folder, ':');) {
    if (access((folder + "/" + name).c_str(), X_OK) == 0) {
      return true;
    }
  }
  return false;
}

}  // namespace quennel::test
