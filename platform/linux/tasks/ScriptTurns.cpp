#include "platform/linux/tasks/ScriptTurns.h"

namespace quennel {

void ScriptTurns::close() {
  const std::lock_guard lock(_mutex);
  _isClosed = true;
  _changed.notify_all();
}

unsigned ScriptTurns::take() {
  const std::lock_guard lock(_mutex);
  return _taken++;
}

ScriptTurns::Turn::Turn(ScriptTurns& turns) : _turns(turns), _number(turns.take()) {}

bool ScriptTurns::Turn::wait() {
  std::unique_lock lock(_turns._mutex);
  _turns._changed.wait(
      lock, [&] { return _turns._isClosed || _number < _turns._ended + _turns._mostAtOnce; });
  return !_turns._isClosed;
}

void ScriptTurns::Turn::end() {
  if (_isEnded) {
    return;
  }
  _isEnded = true;
  const std::lock_guard lock(_turns._mutex);
  ++_turns._ended;
  _turns._changed.notify_all();
}

}  // namespace quennel
