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

  /// No turn comes any more: everybody stops waiting.
  void close();

  /// The turn of one script, which comes after those of all others until now.
  class Turn {
   public:
    explicit Turn(ScriptTurns& turns);
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    /// Ends it, unless that was done.
    ~Turn() { end(); }

    /// Waits until it has come; false when none comes any more.
    bool wait();
    /// Makes way for another one.
    void end();

   private:
    ScriptTurns& _turns;
    const unsigned _number;
    bool _isEnded = false;
  };

 private:
  unsigned take();

  const unsigned _mostAtOnce;
  std::mutex _mutex;
  std::condition_variable _changed;
  // Guarded by the mutex.
  unsigned _taken = 0;
  unsigned _ended = 0;
  bool _isClosed = false;
};

}  // namespace quennel
