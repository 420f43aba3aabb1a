#include "platform/linux/tasks/ScriptTurns.h"

namespace quennel {

unsigned ScriptTurns::take() {
  const std::lock_guard lock(_mutex);
  return _taken++;
}

bool ScriptTurns::wait(unsigned turn) {
  std::unique_lock lock(_mutex);
  _changed.wait(lock, [&] { return _isClosed || turn < _ended + _mostAtOnce; });
  return !_isClosed;
}

void ScriptTurns::end() {
  const std::lock_guard lock(_mutex);
  ++_ended;
  _changed.notify_all();
}

void ScriptTurns::close() {
  const std::lock_guard lock(_mutex);
  _isClosed = true;
  _changed.notify_all();
}

}  // namespace quennel
