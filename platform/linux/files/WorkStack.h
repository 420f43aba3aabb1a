#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace quennel {

/// Tasks that a few threads share, the newest first. A task may push further ones; all is done when
/// none waits and none is being worked on. The first failure ends it for everybody.
template <typename Task>
class WorkStack {
 public:
  /// Answers how many tasks wait now.
  std::size_t push(Task task) {
    const std::lock_guard lock(_mutex);
    _waiting.push_back(std::move(task));
    _changed.notify_one();
    return _waiting.size();
  }

  /// The next task, to be followed by `finish`; nothing when all is done or something failed. Waits
  /// while others work on tasks that may push new ones.
  std::optional<Task> take() {
    std::unique_lock lock(_mutex);
    _changed.wait(lock, [this] { return !_waiting.empty() || _working == 0 || _failed; });
    if (_waiting.empty() || _failed) {
      return std::nullopt;
    }
    ++_working;
    Task task = std::move(_waiting.back());
    _waiting.pop_back();
    return task;
  }

  void finish() {
    const std::lock_guard lock(_mutex);
    if (--_working == 0) {
      _changed.notify_all();
    }
  }

  void fail(std::exception_ptr failure) {
    const std::lock_guard lock(_mutex);
    if (!_failed.exchange(true)) {
      _failure = std::move(failure);
    }
    _changed.notify_all();
  }

  /// Whether a task should be given up.
  bool hasFailed() const { return _failed.load(std::memory_order_relaxed); }

  /// Throws what the first failure threw. For after the work.
  void rethrowFailure() const {
    if (_failure) {
      std::rethrow_exception(_failure);
    }
  }

 private:
  std::mutex _mutex;
  std::condition_variable _changed;
  std::vector<Task> _waiting;
  std::size_t _working = 0;
  std::atomic<bool> _failed = false;
  std::exception_ptr _failure;
};

}  // namespace quennel
