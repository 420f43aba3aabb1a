#pragma once

#include <poll.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <string>

#include "platform/linux/base/FileDescriptor.h"

namespace quennel {

class ScriptProcess;

/// What a script may take.
struct ScriptLimits {
  /// From its start to its end: a script may ask the user something.
  std::chrono::milliseconds time = std::chrono::minutes(2);
  /// How long after the script's end what it left behind may still print.
  std::chrono::milliseconds aftermath{500};
  /// Bytes of output: many times what the longest path takes.
  std::size_t output = 65'536;
};

/// Waits for one script and takes in its output meanwhile, so that a script that prints more than
/// the system's pipe holds does not stall.
class ScriptWatch {
 public:
  enum class Outcome { Ended, TookTooLong, PrintedTooMuch, Stopped };

  /// `stop` becomes readable when waiting is to end early. All are used until `run` has returned.
  ScriptWatch(const ScriptProcess& process, const FileDescriptor& stop, const ScriptLimits& limits);
  ScriptWatch(const ScriptWatch&) = delete;
  ScriptWatch& operator=(const ScriptWatch&) = delete;

  /// Returns when the script has ended and its output is closed, or at a limit. Throws
  /// std::system_error when the system fails.
  Outcome run();

  /// What the script printed.
  const std::string& output() const { return _output; }

 private:
  using Clock = std::chrono::steady_clock;

  bool waitForEvent();
  bool readOutput();
  void noteEnd();

  ScriptLimits _limits;
  Clock::time_point _deadline;
  std::array<pollfd, 3> _events;
  pollfd& _stopEvent = _events[0];
  pollfd& _outputEvent = _events[1];
  pollfd& _endEvent = _events[2];
  std::string _output;
};

}  // namespace quennel
