#pragma once

#include <functional>
#include <optional>
#include <string>

#include "settings/FileTemplate.h"

namespace quennel {

class Alerts;
class Bundle;
class RunLoop;
class UserScripts;
struct Error;

/// The question to the user script which folder the file manager shows. Main thread only; outlives
/// the work that it puts on the main queue.
class FolderQuery {
 public:
  /// Receives the absolute path of a folder, as the script printed it, and the template that it was
  /// asked for. Called on a thread of the script's own, where it must use nothing that may be gone
  /// before the script: it queues what it does on the main queue. Let go of when the query is over,
  /// one that fails when the user has been told.
  using Handler = std::function<void(const std::string& path, const FileTemplate& template_)>;

  FolderQuery(RunLoop& runLoop, UserScripts& userScripts, const Bundle& bundle,
              const Alerts& alerts)
      : _runLoop(runLoop), _userScripts(userScripts), _bundle(bundle), _alerts(alerts) {}
  FolderQuery(const FolderQuery&) = delete;
  FolderQuery& operator=(const FolderQuery&) = delete;

  /// Asks the script and returns at once. When the folder cannot be known the user is told why, and
  /// the handler is not called.
  void getFinderPathWithTemplate(const FileTemplate& template_, Handler completionHandler) const;

 private:
  void reportFailure(const Error& error) const;
  void reportInvalidFolder(const std::optional<std::string>& answer) const;

  RunLoop& _runLoop;
  UserScripts& _userScripts;
  const Bundle& _bundle;
  const Alerts& _alerts;
};

}  // namespace quennel
