#pragma once

#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "platform/UserScripts.h"
#include "platform/UserUnixTask.h"

namespace quennel::test {

/// One run of a script, and what came of it.
class TaskOutcome {
 public:
  /// Runs the script at `path`, for which a task can be made.
  TaskOutcome(UserScripts& scripts, const std::string& path,
              const std::vector<std::string>& arguments = {}) {
    const auto task = scripts.createTask(path, nullptr);
    auto pipe = std::make_shared<Pipe>();
    auto promise = std::make_shared<std::promise<Completion>>();
    _completion = promise->get_future();
    task->setStandardOutput(pipe->fileHandleForWriting());
    task->executeWithArguments(arguments, [pipe, promise](const std::optional<Error>& error) {
      promise->set_value(
          {error, pipe->fileHandleForReading().readDataToEndOfFile(), std::this_thread::get_id()});
    });
  }

  /// Waits for the completion; throws when none comes.
  const std::optional<Error>& error() { return completion().error; }
  const std::string& output() { return completion().output; }
  std::thread::id thread() { return completion().thread; }

  /// Whether the completion comes within `time`. False also once it can come no more.
  bool completesWithin(std::chrono::milliseconds time) {
    return _result || _completion.wait_for(time) == std::future_status::ready;
  }

 private:
  struct Completion {
    std::optional<Error> error;
    std::string output;
    std::thread::id thread;
  };

  const Completion& completion() {
    if (!_result) {
      if (_completion.wait_for(std::chrono::seconds(20)) != std::future_status::ready) {
        throw std::runtime_error("the script's completion was not called");
      }
      _result = _completion.get();
    }
    return *_result;
  }

  std::future<Completion> _completion;
  std::optional<Completion> _result;
};

}  // namespace quennel::test
