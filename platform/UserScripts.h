#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/Error.h"

namespace quennel {

class UserUnixTask;

/// The scripts that the user gives the helper to run: they may do what the helper itself may not,
/// because only the user can put them into their folder. Main thread only.
class UserScripts {
 public:
  virtual ~UserScripts() = default;

  /// The absolute path of the scripts folder, which is made if it is missing; nothing when that
  /// fails.
  virtual std::optional<std::string> applicationScriptsDirectory(Error* error = nullptr) = 0;

  /// A task that runs the script at `path`; null when no file is there.
  virtual std::unique_ptr<UserUnixTask> createTask(const std::string& path,
                                                   Error* error = nullptr) = 0;
};

}  // namespace quennel
