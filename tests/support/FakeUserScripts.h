#pragma once

#include <atomic>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/UserScripts.h"
#include "platform/UserUnixTask.h"

namespace quennel::test {

/// Scripts whose outcome the test writes down. Each run completes at once, on a thread of its own;
/// going away waits for these threads.
class FakeUserScripts final : public UserScripts {
 public:
  struct Script {
    /// What it prints.
    std::string output;
    /// Why it does not come to a good end.
    std::optional<Error> error;
  };
  struct Execution {
    std::string path;
    std::vector<std::string> arguments;
  };

  /// Nothing: asking for it fails with `directoryError`.
  std::optional<std::string> directory =
      "/home/user/Library/Application Scripts/net.brellow.QuennelHelper";
  Error directoryError;
  /// The files that a task can be made for.
  std::map<std::string, Script> scripts;
  std::vector<Execution> executions;

  ~FakeUserScripts() override;

  std::optional<std::string> applicationScriptsDirectory(Error* error) override;
  std::unique_ptr<UserUnixTask> createTask(const std::string& path, Error* error) override;

  /// How many completions have been called and have returned.
  int completions() const { return _completions; }

 private:
  class Task;

  std::atomic<int> _completions = 0;
  std::list<std::thread> _threads;
};

}  // namespace quennel::test
