#pragma once

#include <condition_variable>
#include <mutex>

namespace quennel {

/// Lets a few scripts run at a time, in the order in which they came. Any thread.
class ScriptTurns {
 public:
  explicit ScriptTurns(unsigned mostAtOnce) : _mostAtOnce(mostAtOnce) {}
  ScriptTurns(const ScriptTurns&) = delete;
  ScriptTurns& operator=(const ScriptTurns&) = delete;

  /// The turn of a script that came after all others. It must come to `end`, whatever becomes of
  /// the script.
  unsigned take();
  /// Waits until the turn has come; false when none comes any more.
  bool wait(unsigned turn);
  /// Gives up one turn, whether it was waited for or not.
  void end();
  /// No turn comes any more: everybody stops waiting.
  void close();

 private:
  const unsigned _mostAtOnce;
  std::mutex _mutex;
  std::condition_variable _changed;
  // Guarded by the mutex.
  unsigned _taken = 0;
  unsigned _ended = 0;
  bool _isClosed = false;
};

}  // namespace quennel
