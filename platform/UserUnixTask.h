#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Error.h"
#include "platform/Pipe.h"

namespace quennel {

/// One run of a script. Main thread only; whoever made it may let go of it while the script runs.
class UserUnixTask {
 public:
  /// Receives why the script did not run to a good end, or nothing. Called once, on a thread that
  /// may be blocked for as long as one likes; not at all when the program ends before the script.
  using CompletionHandler = std::function<void(const std::optional<Error>& error)>;

  virtual ~UserUnixTask() = default;

  /// Where the script's standard output goes: in whole, once the script has ended well, and closed
  /// before the completion is called in any case.
  virtual void setStandardOutput(std::shared_ptr<Pipe::FileHandleForWriting> standardOutput) = 0;

  /// Runs the script as a program of its own and returns at once. To be called once.
  virtual void executeWithArguments(const std::vector<std::string>& arguments,
                                    CompletionHandler completion) = 0;
};

}  // namespace quennel
