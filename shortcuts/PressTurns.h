#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>

#include "platform/RunLoop.h"

namespace quennel {

/// Which presses are served. Of each key it is one at a time, and one more that came meanwhile; the
/// others are dropped, so that a key whose presses come faster than files can be made does not go
/// on making files when nobody presses it any more. Main thread only.
class PressTurns {
 public:
  /// Whether the press may be served now. If not, it is kept, unless one is kept already.
  bool begin(const std::string& key) {
    const auto [served, isFirst] = _served.try_emplace(key, false);
    served->second = !isFirst;
    return isFirst;
  }

  /// The press that was served is over. Answers whether the kept one is to be served now.
  bool end(const std::string& key) {
    const auto served = _served.find(key);
    if (served != _served.end() && std::exchange(served->second, false)) {
      return true;
    }
    _served.erase(key);
    return false;
  }

  void forgetKept() {
    for (auto& [key, isOneKept] : _served) {
      isOneKept = false;
    }
  }

 private:
  /// The keys a press of which is being served, and whether another one is kept.
  std::map<std::string, bool> _served;
};

/// The serving of one press, for all that takes part in it, on whatever thread: when the last of
/// them lets go, or one says so, it is over.
class PressTurn {
 public:
  /// `whenOver` is called once, from the main queue.
  PressTurn(RunLoop& runLoop, std::function<void()> whenOver)
      : _runLoop(runLoop), _whenOver(std::move(whenOver)) {}
  PressTurn(const PressTurn&) = delete;
  PressTurn& operator=(const PressTurn&) = delete;
  ~PressTurn() { end(); }

  /// Main thread only.
  void end() {
    if (_whenOver) {
      _runLoop.dispatchAsync(std::exchange(_whenOver, nullptr));
    }
  }

 private:
  RunLoop& _runLoop;
  std::function<void()> _whenOver;
};

}  // namespace quennel
