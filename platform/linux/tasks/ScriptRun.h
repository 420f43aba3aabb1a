#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/Error.h"
#include "platform/Pipe.h"
#include "platform/UserUnixTask.h"
#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/tasks/ScriptTurns.h"
#include "platform/linux/tasks/ScriptWatch.h"

namespace quennel {

/// A script and the thread that waits for it: first for its turn, then for its end.
class ScriptRun {
 public:
  struct Request {
    std::string path;
    std::vector<std::string> arguments;
    std::shared_ptr<Pipe::FileHandleForWriting> standardOutput;
    UserUnixTask::CompletionHandler completion;
  };

  /// Starts the thread. `turns` outlives the run. Throws std::system_error when the system refuses.
  ScriptRun(Request request, const ScriptLimits& limits, ScriptTurns& turns);
  ScriptRun(const ScriptRun&) = delete;
  ScriptRun& operator=(const ScriptRun&) = delete;
  /// Ends a script that still runs, without calling its completion; waits for a completion that
  /// already runs. One whose turn has not come must have been told that it does not.
  ~ScriptRun();

  /// Whether the completion has been called and has returned.
  bool isDone() const { return _done; }

 private:
  struct Result {
    std::optional<Error> error;
    std::string output;
    bool stopped = false;
  };

  void perform();
  Result runInTurn();
  Result runScript() const;
  Result watchScript() const;
  std::optional<Error> describe(ScriptWatch::Outcome outcome, const ScriptProcess& process) const;
  Error errorOfStart(int code) const;

  Request _request;
  ScriptLimits _limits;
  ScriptTurns::Turn _turn;
  FileDescriptor _stop;
  std::atomic<bool> _done = false;
  std::thread _thread;  // last: it uses all of the above
};

}  // namespace quennel
