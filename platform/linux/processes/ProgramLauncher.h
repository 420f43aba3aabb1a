#pragma once

#include <list>
#include <string>
#include <vector>

#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/events/EventRunLoop.h"
#include "platform/linux/events/EventSource.h"

namespace quennel {

/// Starts programs that nobody waits for. They outlive the helper; one that ends before it does is
/// reaped at once. Main thread only.
class ProgramLauncher {
 public:
  /// The run loop is not owned and outlives this object.
  explicit ProgramLauncher(EventRunLoop& runLoop) : _runLoop(runLoop) {}
  ProgramLauncher(const ProgramLauncher&) = delete;
  ProgramLauncher& operator=(const ProgramLauncher&) = delete;

  /// Starts `arguments[0]`, searched in PATH. False when it cannot be started.
  bool start(const std::vector<std::string>& arguments);

  /// How many of them have not ended yet.
  std::size_t runningCount() const { return _running.size(); }

 private:
  struct Program {
    ProgramLauncher& launcher;
    std::list<Program>::iterator self;
    FileDescriptor handle;
    EventSource source;
  };

  static int reap(sd_event_source* source, int descriptor, std::uint32_t events, void* program);
  void watch(pid_t pid);

  EventRunLoop& _runLoop;
  std::list<Program> _running;
};

}  // namespace quennel
