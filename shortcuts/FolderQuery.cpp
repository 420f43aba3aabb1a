#include "shortcuts/FolderQuery.h"

#include <memory>
#include <utility>

#include "access/Alerts.h"
#include "platform/Bundle.h"
#include "platform/DispatchSync.h"
#include "platform/Error.h"
#include "platform/Pipe.h"
#include "platform/UserScripts.h"
#include "platform/UserUnixTask.h"
#include "platform/values/Text.h"
#include "shortcuts/UserScript.h"

namespace quennel {

namespace {

/// What the script printed, without the line breaks around it; nothing when it is no UTF-8 text.
std::optional<std::string> readAnswer(const Pipe& pipe) {
  const std::string output = pipe.fileHandleForReading().readDataToEndOfFile();
  return isValidUTF8(output) ? std::optional(trimmingNewlines(output)) : std::nullopt;
}

}  // namespace

void FolderQuery::getFinderPathWithTemplate(const FileTemplate& template_,
                                            Handler completionHandler) const {
  Error error;
  const auto folder = _userScripts.applicationScriptsDirectory();
  const auto task = _userScripts.createTask(userScriptPath(folder), &error);
  if (!task) {
    _alerts.showAlert(_bundle.localizedStringForKey("Unable to run QuennelHelper.sh!"),
                      error.localizedDescription(_bundle), AlertStyle::Critical);
    return;
  }
  const auto pipe = std::make_shared<Pipe>();
  task->setStandardOutput(pipe->fileHandleForWriting());
  const auto script = _bundle.pathForResource("get-finder-path", "scpt");
  // The script may outlast this object, so its thread uses only what outlasts the script; `this` is
  // for the main queue, which drops its work when the program ends.
  task->executeWithArguments(
      {script.value_or("")},
      [this, &runLoop = _runLoop, pipe, completionHandler = std::move(completionHandler),
       template_](const std::optional<Error>& failure) {
        if (failure) {
          // The handler lives until the user has dismissed the alert: the query is not over before.
          runLoop.dispatchAsync([this, failure, completionHandler] { reportFailure(*failure); });
          return;
        }
        const auto path = readAnswer(*pipe);
        if (path && path->starts_with('/')) {
          completionHandler(*path, template_);
          return;
        }
        // Raised from this thread, which waits until the user has dismissed it; shown by the main
        // one, because no other may use the toolkit.
        dispatchSync(runLoop, [this, path] { reportInvalidFolder(path); });
      });
}

void FolderQuery::reportFailure(const Error& error) const {
  _alerts.showAlert(_bundle.localizedStringForKey("Unable to get current folder path!"),
                    error.localizedDescription(_bundle), AlertStyle::Critical);
}

void FolderQuery::reportInvalidFolder(const std::optional<std::string>& answer) const {
  _alerts.showAlert(_bundle.localizedStringForKey("Invalid directory path!"), answer,
                    AlertStyle::Critical);
}

}  // namespace quennel
