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
#include "platform/linux/locale/UserLocale.h"
#include "platform/linux/tasks/LinuxUserUnixTask.h"
#include "platform/values/Path.h"

namespace quennel {
namespace {

constexpr unsigned mostAtOnce = 4;

Error errorWithCode(int code) { return {code, UserLocale::errorDescription(code)}; }

void report(int code, Error* error) {
  if (error != nullptr) {
    *error = errorWithCode(code);
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
    report(ENOENT, error);
    return std::nullopt;
  }
  const std::string directory =
      appendingPathComponent(home, "Library/Application Scripts/" + _bundle.bundleIdentifier());
  std::error_code failure;
  std::filesystem::create_directories(directory, failure);
  if (failure) {
    report(failure.value(), error);
    return std::nullopt;
  }
  return directory;
}

std::unique_ptr<UserUnixTask> LinuxUserScripts::createTask(const std::string& path, Error* error) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    report(errno, error);
    return nullptr;
  }
  if (!S_ISREG(status.st_mode)) {
    report(EACCES, error);  // what executing it would answer
    return nullptr;
  }
  return std::make_unique<LinuxUserUnixTask>(
      [this](ScriptRun::Request request) { start(std::move(request)); }, path);
}

void LinuxUserScripts::start(ScriptRun::Request request) {
  _runs.remove_if([](const ScriptRun& run) { return run.isDone(); });
  const auto standardOutput = request.standardOutput;
  const auto completion = request.completion;
  try {
    _runs.emplace_back(std::move(request), _limits, _bundle, _turns);
  } catch (const std::system_error& failure) {
    // There is no thread to be had: the caller's own has to do.
    if (standardOutput) {
      standardOutput->closeFile();
    }
    completion(errorWithCode(failure.code().value()));
  }
}

}  // namespace quennel
