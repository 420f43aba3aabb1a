#include "platform/linux/tasks/LinuxUserScripts.h"

#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/Bundle.h"
#include "platform/linux/base/HomeFolder.h"
#include "platform/linux/tasks/LinuxUserUnixTask.h"
#include "platform/values/Path.h"

namespace quennel {
namespace {

constexpr unsigned mostAtOnce = 4;

void report(int code, Error::Kind kind, const std::string& path, Error* error) {
  if (error != nullptr) {
    *error = {code, kind, path};
  }
}

/// A program may inherit that its children's endings are thrown away; then nobody could tell how a
/// script ended, nor be sure that its process number is still its own.
void keepEndingsOfChildren() {
  struct sigaction action {};
  if (sigaction(SIGCHLD, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) {
    action.sa_handler = SIG_DFL;
    sigaction(SIGCHLD, &action, nullptr);
  }
}

}  // namespace

LinuxUserScripts::LinuxUserScripts(const Bundle& bundle, const ScriptLimits& limits)
    : _bundle(bundle), _limits(limits), _turns(mostAtOnce) {
  keepEndingsOfChildren();
}

LinuxUserScripts::~LinuxUserScripts() { _turns.close(); }

std::optional<std::string> LinuxUserScripts::applicationScriptsDirectory(Error* error) {
  const std::string home = homeFolder().value_or("");
  if (home.empty()) {
    report(ENOENT, Error::Kind::Reading, "~", error);
    return std::nullopt;
  }
  const std::string directory =
      appendingPathComponent(home, "Library/Application Scripts/" + _bundle.bundleIdentifier());
  std::error_code failure;
  std::filesystem::create_directories(directory, failure);
  if (failure) {
    report(failure.value(), Error::Kind::Creating, directory, error);
    return std::nullopt;
  }
  return directory;
}

std::unique_ptr<UserUnixTask> LinuxUserScripts::createTask(const std::string& path, Error* error) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    report(errno, Error::Kind::StartingScript, path, error);
    return nullptr;
  }
  if (!S_ISREG(status.st_mode)) {
    report(EACCES, Error::Kind::StartingScript, path, error);  // what executing it would answer
    return nullptr;
  }
  return std::make_unique<LinuxUserUnixTask>(
      [this](ScriptRun::Request request) { start(std::move(request)); }, path);
}

void LinuxUserScripts::start(ScriptRun::Request request) {
  _runs.remove_if([](const ScriptRun& run) { return run.isDone(); });
  const auto standardOutput = request.standardOutput;
  const auto completion = request.completion;
  const std::string path = request.path;
  try {
    _runs.emplace_back(std::move(request), _limits, _turns);
  } catch (const std::system_error& failure) {
    // There is no thread to be had: the caller's own has to do.
    if (standardOutput) {
      standardOutput->closeFile();
    }
    completion(Error{failure.code().value(), Error::Kind::StartingScript, path});
  }
}

}  // namespace quennel
