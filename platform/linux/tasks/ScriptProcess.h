#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "platform/linux/base/FileDescriptor.h"

namespace quennel {

/// A running script. It leads a session, and so a process group, of its own: whatever it starts and
/// does not set apart on purpose ends with it.
class ScriptProcess {
 public:
  /// How a script ended: by itself with a status, or by a signal.
  struct Ending {
    enum class Kind { Exited, Signaled } kind;
    int statusOrSignal;
  };

  /// Executes the file at `path` with its standard output going to `output` and an empty standard
  /// input. Standard error is that of this program. Nothing else is handed down: no other
  /// descriptor, no signal mask, no ignored signal. Throws std::system_error when the system
  /// refuses.
  ScriptProcess(const std::string& path, const std::vector<std::string>& arguments);
  ScriptProcess(const ScriptProcess&) = delete;
  ScriptProcess& operator=(const ScriptProcess&) = delete;
  /// Ends what is left of the process group.
  ~ScriptProcess();

  /// The reading end of its standard output; it never blocks.
  const FileDescriptor& output() const { return _output; }
  /// Becomes readable when the script itself has ended; what it started may still run.
  const FileDescriptor& handle() const { return _handle; }

  /// How the script ended; to be asked once `handle` is readable. Throws std::system_error when the
  /// system has not kept it.
  Ending ending() const;

 private:
  FileDescriptor _output;
  pid_t _pid = -1;
  FileDescriptor _handle;
};

}  // namespace quennel
