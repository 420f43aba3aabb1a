#include "platform/linux/tasks/ScriptWatch.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "platform/linux/tasks/ScriptProcess.h"

namespace quennel {
namespace {

/// What poll is told of a descriptor that it is no longer to look at.
constexpr int ignored = -1;

}  // namespace

ScriptWatch::ScriptWatch(const ScriptProcess& process, const FileDescriptor& stop,
                         const ScriptLimits& limits)
    : _limits(limits),
      _deadline(Clock::now() + limits.time),
      _events{{{stop.get(), POLLIN, 0},
               {process.output().get(), POLLIN, 0},
               {process.handle().get(), POLLIN, 0}}} {}

ScriptWatch::Outcome ScriptWatch::run() {
  while (_outputEvent.fd != ignored || _endEvent.fd != ignored) {
    if (!waitForEvent()) {
      return _endEvent.fd == ignored ? Outcome::Ended : Outcome::TookTooLong;
    }
    if (_stopEvent.revents != 0) {
      return Outcome::Stopped;
    }
    if (_outputEvent.revents != 0 && !readOutput()) {
      return Outcome::PrintedTooMuch;
    }
    if (_endEvent.revents != 0) {
      noteEnd();
    }
  }
  return Outcome::Ended;
}

/// False when the time is up.
bool ScriptWatch::waitForEvent() {
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(_deadline - Clock::now());
    const auto timeout = std::max(left, std::chrono::milliseconds::zero());
    const int count = poll(_events.data(), _events.size(), static_cast<int>(timeout.count()));
    if (count >= 0) {
      return count > 0;
    }
    if (errno != EINTR) {
      throw std::system_error(errno, std::generic_category(), "poll");
    }
  }
}

/// False when it is more than allowed.
bool ScriptWatch::readOutput() {
  std::array<char, 4096> buffer;
  const ssize_t count = read(_outputEvent.fd, buffer.data(), buffer.size());
  if (count > 0) {
    _output.append(buffer.data(), static_cast<std::size_t>(count));
  } else if (count == 0) {
    _outputEvent.fd = ignored;
  } else if (errno != EAGAIN && errno != EINTR) {
    throw std::system_error(errno, std::generic_category(), "read");
  }
  return _output.size() <= _limits.output;
}

void ScriptWatch::noteEnd() {
  _endEvent.fd = ignored;
  _deadline = std::min(_deadline, Clock::now() + _limits.aftermath);
}

}  // namespace quennel
