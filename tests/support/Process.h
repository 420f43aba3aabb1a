#pragma once

#include <sys/types.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/base/FileDescriptor.h"
#include "tests/support/Deadline.h"

namespace quennel::test {

/// A program run by a test. Its standard output and standard error are kept in memory, so it never
/// waits for a reader. When it still runs as this object goes, it is killed and waited for.
class Process {
 public:
  using Environment = std::map<std::string, std::string>;

  /// Starts `arguments[0]`, searched in PATH, with this process's environment and `environment` on
  /// top (an empty value removes the variable), an empty signal mask and `input` as its standard
  /// input. Throws std::system_error when it cannot be started.
  explicit Process(const std::vector<std::string>& arguments, const Environment& environment = {},
                   const std::string& input = {});
  Process(Process&& other) noexcept;
  Process& operator=(Process&&) = delete;
  ~Process();

  pid_t pid() const { return _pid; }
  bool isRunning() const;

  /// Waits for the end and answers the exit status, or minus the signal that ended it. Nothing when
  /// it has not ended by the deadline.
  std::optional<int> wait(Deadline deadline = Deadline());

  void sendSignal(int signal) const;
  /// Sends SIGTERM and waits.
  std::optional<int> terminate(Deadline deadline = Deadline());

  /// What it has written so far.
  std::string output() const;
  std::string errorOutput() const;

  /// Waits until its standard output holds `text`.
  [[nodiscard]] bool waitForOutput(const std::string& text, Deadline deadline = Deadline()) const;

 private:
  pid_t _pid = -1;
  FileDescriptor _processDescriptor;
  FileDescriptor _output;
  FileDescriptor _errorOutput;
  std::optional<int> _status;
};

/// Whether `name` is a program that PATH finds.
bool isInstalled(const std::string& name);

}  // namespace quennel::test
